#include "commands/loglines.h"
#include "engines/coefkind.h"
#include "engines/readback.h"
#include "exchange/jsonwriter.h"
#include "store/sqlscreenstore.h"

#include "programsupport.h"
#include <seamrevision/localconfig.h>

#include <QDir>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>

using namespace seamrevise;

namespace
{

TEST_F(Seamrevise, TablesAreNumPyArraysWithNeutralUncorrectedPartitions)
{
    makeWall();
    const std::size_t pixel = 61 * 101 + 50; // of partition 5
    expect(0, "revise %d/w.db -o %d/o --table");
    const QByteArray single = contents("%d/o/coefficients.npy");
    EXPECT_EQ(single.left(10), QByteArray("\x93NUMPY\x01\x00\x76\x00", 10));
    EXPECT_EQ(single.mid(10, 118).trimmed().toStdString(),
              "{'descr': '<u2', 'fortran_order': False, 'shape': (62, 101, 9), }");
    EXPECT_EQ(single.size(), 128 + 62 * 101 * 9 * 2);
    EXPECT_EQ(single.mid(128 + pixel * 18, 18).toHex(), "000800000000000000080000000000000008");

    expect(0, "revise %d/w.db -o %d/o --table --layers 2");
    const QByteArray layered = contents("%d/o/coefficients.npy");
    EXPECT_EQ(layered.mid(10, 118).trimmed().toStdString(),
              "{'descr': '<i4', 'fortran_order': False, 'shape': (62, 101, 6), }");
    EXPECT_EQ(layered.mid(128 + pixel * 24, 24).toHex(), QByteArray("00100000").repeated(6));
    const QByteArray packed = contents("%d/o/packed.bin");
    EXPECT_EQ(packed.size(), 62 * 101 * 8);
    EXPECT_EQ(packed.mid(pixel * 8, 8).toHex(), "ffffff3fffffff3f");
}

TEST(ReadBack, FilesThatAreNotWhatWasRevisedAreFound)
{
    // Partition 2 is not corrected.
    const struct
    {
        std::unique_ptr<CoefKind> kind;
        int layers;
        QStringList suffixes;
    } rows[] = {{singleLayerKind(), 0, {""}}, {layeredKind(2), 2, {"_m", "_zip"}}};
    for (const auto &row : rows) {
        const LogLines silence(nullptr);
        Host host(evenWall(2, 3, 2, 2, {2000, 0}, row.layers));
        host.wall.stored.erase(2);
        ScreenLayout layout;
        layout.screen = NQRect(0, 0, 5, 1);
        layout.grid = {2, 1};
        layout.partitions = {{1, NQRect(0, 0, 2, 1)}, {2, NQRect(3, 0, 5, 1)}};
        row.kind->run({host, layout, {1}, {2, 2}, 0, usualWeights, host.path(), true});
        for (const QString key : {"1", "2"}) {
            const auto fault = [&] {
                const int left = key == "1" ? 0 : 3;
                return checkFiles(*row.kind, host.path(), key.toInt(), {left, 0, left + 2, 1},
                                  key == "1");
            };
            EXPECT_EQ(fault(), "");
            for (const QString &suffix : row.suffixes) {
                const QString path = host.path() + '/' + key + suffix;
                const QByteArray good = readFile(path);
                QByteArray flipped = good;
                flipped[good.size() / 2] = static_cast<char>(~good[good.size() / 2]);
                for (const QByteArray &bad : {flipped, good.left(good.size() - 8), good + good}) {
                    writeFile(path, bad);
                    EXPECT_TRUE(fault().contains(host.path() + '/' + key)) << path.toStdString();
                }
                writeFile(path, good);
            }
        }
    }
}

TEST_F(Seamrevise, OutputThatCannotBeWrittenIsNamed)
{
    makeWall();
    QDir().mkpath(in("%d/o/3"));
    expect(4, "revise %d/w.db -o %d/o", "/o/3: cannot be written");
    QDir().mkpath(in("%d/o/coefficients.npy"));
    expect(4, "revise %d/w.db -o %d/o --table");
    QDir().mkpath(in("%d/d/normal_area_1_before.txt"));
    expect(4, "revise %d/w.db -o %d/t --dumps %d/d");
    QFile::copy(in("%d/w.db"), in("%d/1"));
    expect(4, "revise %d/1 -o %d", "overwritten");
}

TEST_F(Seamrevise, DumpsAreWrittenForTheRunOnly)
{
    makeWall();
    expect(0, "revise %d/w.db -o %d/o --dumps %d/d");
    EXPECT_EQ(files("%d/d").size(), 5 * 3 + 2);
    EXPECT_TRUE(files("%d/d").contains(QString::fromUtf8("分区融合后系数.txt")));
    expect(0, "revise %d/w.db -o %d/o --dumps %d/m --layers 2");
    EXPECT_EQ(files("%d/m").size(), 5 * 4 + 1);
    EXPECT_FALSE(LocalConfig::getInstance().isExportData());
}

TEST(JsonWriter, KeepsTheOrderAndEscapesWhatMustBe)
{
    JsonWriter json;
    json.beginObject();
    json.member("z", QString::fromUtf8("a\"b\\\n\tü"));
    json.beginArray("a", JsonWriter::Inline);
    json.value(0.1);
    json.value(std::nan(""));
    json.value(true);
    json.beginObject();
    json.member("n", qint64{1} << 40);
    json.endObject();
    json.endArray();
    json.beginArray("e");
    json.endArray();
    json.member("o", std::optional<int>());
    json.endObject();
    EXPECT_EQ(json.text().toStdString(),
              "{\n  \"z\": \"a\\\"b\\\\\\u000a\\u0009\xC3\xBC\",\n"
              "  \"a\": [0.1, null, true, {\"n\": 1099511627776}],\n"
              "  \"e\": [],\n  \"o\": null\n}\n");
}

} // namespace
