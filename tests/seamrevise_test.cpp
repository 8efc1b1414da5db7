#include "commands/loglines.h"
#include "delivery/filesystem.h"
#include "engines/coefkind.h"
#include "engines/readback.h"
#include "exchange/jsonwriter.h"
#include "store/sqlscreenstore.h"

#include "programsupport.h"
#include <seamrevision/des.h>
#include <seamrevision/localconfig.h>

#include <QDir>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
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

    expect(0, "revise %d/w.db -o %d/o --table --layers 2 --force");
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
    // Partition 2 is not corrected; the values of partition 1 are above the cap of the table.
    const struct
    {
        std::unique_ptr<CoefKind> kind;
        int layers, value;
        QStringList suffixes;
    } rows[] = {{singleLayerKind(), 0, 2500, {""}}, {layeredKind(2), 2, 5000, {"_m", "_zip"}}};
    for (const auto &row : rows) {
        const LogLines silence(nullptr);
        Host host(evenWall(2, 3, 2, 2, {row.value, 0}, row.layers));
        host.wall.stored.erase(2);
        ScreenLayout layout;
        layout.screen = NQRect(0, 0, 5, 1);
        layout.grid = {2, 1};
        layout.partitions = {{1, NQRect(0, 0, 2, 1)}, {2, NQRect(3, 0, 5, 1)}};
        int faults = 0;
        EngineRequest request{host, layout, {1}, {2, 2}, 0, usualWeights, host.path(), true};
        const RevisedZones *revised = nullptr;
        std::map<QString, QByteArray> written;
        request.onFilesWritten = [&](int number, const RevisedZones &zones) {
            revised = &zones;
            for (const QString &suffix : row.suffixes) {
                const QString path = host.path() + '/' + QString::number(number) + suffix;
                EXPECT_TRUE(written.emplace(path, readFile(path)).second);
            }
        };
        request.onSavingEnded = [&] {
            ASSERT_EQ(written.size(), layout.partitions.size() * row.suffixes.size());
            for (const auto &[path, bytes] : written)
                EXPECT_EQ(readFile(path), bytes) << path.toStdString();
            for (const auto &[number, rect] : layout.partitions) {
                for (int i = 0; i < row.suffixes.size(); ++i) {
                    const QString path
                        = host.path() + '/' + QString::number(number) + row.suffixes[i];
                    QByteArray sha256;
                    const auto fault = [&, place = rect, key = number] {
                        return readBackFault(
                            path, key, place,
                            coefficientFormats(row.layers)[static_cast<std::size_t>(i)], *revised,
                            sha256);
                    };
                    EXPECT_EQ(fault(), "");
                    EXPECT_EQ(sha256, sha256OfFile(path));
                    const QByteArray good = readFile(path);
                    const QByteArray plain = decrypted(good);
                    std::vector<unsigned char> changed(plain.begin(), plain.end());
                    changed[0] ^= 1;
                    ASSERT_TRUE(DES().DESEncrypt("qalvetor", "qalvetor", changed, changed));
                    const QByteArray other(reinterpret_cast<const char *>(changed.data()),
                                           static_cast<int>(changed.size()));
                    for (const QByteArray &bad : {other, good.left(good.size() - 8), good + good}) {
                        writeFile(path, bad);
                        EXPECT_TRUE(fault().startsWith(path + ": ")) << path.toStdString();
                        ++faults;
                    }
                    writeFile(path, good);
                }
            }
        };
        row.kind->run(request);
        EXPECT_EQ(faults, 2 * 3 * row.suffixes.size());

        // Where a file cannot be written the zones are there until what works on them has ended.
        QFile::remove(host.path() + "/1" + row.suffixes.back());
        QDir().mkpath(host.path() + "/1" + row.suffixes.back());
        bool hasEnded = false;
        request.onFilesWritten = [&](int, const RevisedZones &zones) { revised = &zones; };
        request.onSavingEnded = [&] {
            hasEnded = true;
            const std::vector<qint32> none(64, -1);
            EXPECT_GT(
                revised->compare(1, coefficientFormats(row.layers).front(), none, noCap).values, 0);
        };
        row.kind->run(request);
        EXPECT_EQ(row.kind->result().errCode, ErrCode_SaveCombineCoefFailed);
        EXPECT_TRUE(hasEnded);
    }
}

TEST_F(Seamrevise, OutputThatCannotBeWrittenIsNamed)
{
    makeWall();
    expect(4, "revise %d/w.db -o %d", "w.db: is the same file as");
    QDir().mkpath(in("%d/d/normal_area_1_before.txt"));
    expect(4, "revise %d/w.db -o %d/o --dumps %d/d", "normal_area_1_before.txt: is a directory");
    expect(4, "revise %d/w.db -o %d/o --dumps %d/o/d", "lies in the output directory");
    expect(4, "revise %d/w.db -o %d/o --dumps %d/o", "lies in the output directory");
    const struct
    {
        const char *option;
        int mostBlocks; ///< of 512 bytes a file
        const char *says;
    } rows[] = {{"--files", 16, "/1: File too large"},
                {"--table", 40, "/coefficients.npy: File too large"},
                {"--dumps %d/e", 40, "/normal_areaEx_1_before.txt: is not whole"}};
    for (const auto &row : rows) {
        const Outcome outcome = shell(QString("ulimit -f %1; %p revise -q %d/w.db -o %d/o ")
                                          .replace("%1", QString::number(row.mostBlocks))
                                      + row.option);
        EXPECT_EQ(outcome.code, 4) << row.option;
        EXPECT_NE(outcome.printed.find(row.says), std::string::npos) << outcome.printed;
    }
    EXPECT_EQ(entriesOf(in("%d")), (QStringList{"d", "w.db"}));
}

TEST_F(Seamrevise, DumpsAreWrittenForTheRunOnly)
{
    makeWall();
    expect(0, "revise %d/w.db -o %d/o --dumps %d/d");
    EXPECT_EQ(files("%d/d").size(), 5 * 3 + 2);
    EXPECT_TRUE(files("%d/d").contains(QString::fromUtf8("分区融合后系数.txt")));
    expect(0, "revise %d/w.db -o %d/o --dumps %d/m --layers 2 --force");
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
