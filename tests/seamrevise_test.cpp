#include "commands/loglines.h"
#include "engines/coefkind.h"
#include "engines/readback.h"
#include "exchange/jsonwriter.h"
#include "numbers/borderstep.h"
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

TEST_F(Seamrevise, FaultyDatabasesAreRefusedBeforeAnythingIsWritten)
{
    const std::pair<const char *, const char *> cases[] = {
        {"PRAGMA user_version = 3", "version 3"},
        {"DROP TABLE layered_coefficients", "layered_coefficients is missing"},
        {"DELETE FROM screen", "screen is empty"},
        {"DELETE FROM partitions WHERE number = 4", "partition 4 is missing"},
        {"INSERT INTO partitions VALUES (7, 0, 0, 1, 1)", "partition 7 is not in"},
        {"UPDATE partitions SET first_row = 'x' WHERE number = 2", "partition 2: a number"},
        {"UPDATE partitions SET last_col = last_col - 1 WHERE number = 2", "partition 3 does not"},
        {"UPDATE partitions SET last_col = last_col + 1 WHERE number = 2", "partition 3 does not"},
        {"UPDATE partitions SET last_row = last_row + 1 WHERE number = 6", "partition 6"},
        {"UPDATE screen SET last_row = last_row - 1", "partition 4 does not end"},
        {"UPDATE screen SET grid_cols = 2000000000", "no partition, or too many"},
        {"UPDATE screen SET last_col = 2147483647", "no pixel, or too many"},
        {"UPDATE coefficients SET data = 'text' WHERE number = 3", "partition 3: its zone of"},
        {"UPDATE coefficients SET data = zeroblob(18) WHERE number = 3", "18 are stored"},
        {"UPDATE coefficients SET last_row = 2147483647 WHERE number = 3", "larger than"},
        {"UPDATE coefficients SET last_row = first_row - 1 WHERE number = 3", "no pixel"},
        {"UPDATE coefficients SET number = 9 WHERE number = 1", "partition 9"},
        {"DELETE FROM coefficients", "no partition has coefficients"},
    };
    for (const auto &[sql, says] : cases) {
        makeWall("%d/w.db --force");
        execute(in("%d/w.db"), sql);
        const std::string printed = expect(3, "revise %d/w.db -o %d/o", says);
        EXPECT_NE(printed.find("w.db"), std::string::npos) << printed;
    }
    // Cut anywhere.
    makeWall("%d/w.db --force");
    const QByteArray whole = contents("%d/w.db");
    for (int size = 0; size < whole.size(); size += 997) {
        writeFile(in("%d/cut.db"), whole.left(size));
        expect(3, "revise %d/cut.db -o %d/o");
    }
    EXPECT_FALSE(QDir(in("%d/o")).exists());
}

TEST_F(Seamrevise, StoredValuesAreLittleEndianAndComeBack)
{
    const StoredZone zone{1, NQRect(3, 4, 3, 4)};
    {
        SqlScreenStore store;
        ASSERT_TRUE(store.create(in("%d/s.db"), ScreenLayout(), Writer()));
        ASSERT_TRUE(store.put(zone, {0x1234, 0, 0, 0, 0, 0, 0, 0, 0xFFFE}));
        ASSERT_TRUE(store.putLayered(zone, 1, {0x12345678, -2, 0}));
        ASSERT_TRUE(store.commit());
    }
    const char *const sql
        = "SELECT hex(c.data) || hex(l.data) FROM coefficients c, layered_coefficients l";
    EXPECT_EQ(execute(in("%d/s.db"), sql).toString(),
              "34120000000000000000000000000000FEFF78563412FEFFFFFF00000000");
    SqlScreenStore store;
    ASSERT_TRUE(store.open(in("%d/s.db")));
    MultiLayerCoefZoneInfo layered;
    ASSERT_EQ(store.readMultiLayerAreaCoefficients(1, 1, layered), 0);
    EXPECT_EQ(layered.m_multiLayerCoefs, (std::vector<std::vector<int>>{{0x12345678, -2, 0}}));
    EXPECT_EQ(layered.getBegPixRow(), 4);
    CoefsZoneInfo single;
    ASSERT_EQ(store.readAreaCoefficients(1, single), 0);
    EXPECT_EQ(single.m_arrayData.back(), 0xFFFE);
    EXPECT_NE(store.readAreaCoefficients(2, single), 0);
    EXPECT_NE(store.errorText().indexOf("partition 2"), -1);
}

TEST(BorderStep, IsTheLargestOfTheBlocksAlongASeam)
{
    // The 8 pixels on each side count; of 40 lines the first 16 are a block, the others another.
    const auto light = [](int row, int col) {
        return (col < 2 ? 50.0 : 1.0) + (col == 2 ? 2.0 : 0.0) + (col > 9 && row < 16 ? 0.5 : 0.0)
            + (col > 9 && row > 33 ? 0.7 : 0.0);
    };
    const auto turned = [&](int row, int col) { return light(col, row); };
    EXPECT_NEAR(borderStep(ReviseDirection_Horizontal, edgeProfile(NQRect(0, 0, 9, 39), light),
                           edgeProfile(NQRect(10, 0, 12, 39), light)),
                2 * 0.25 / 2.75, 1e-12);
    EXPECT_NEAR(borderStep(ReviseDirection_Vertical, edgeProfile(NQRect(0, 0, 39, 9), turned),
                           edgeProfile(NQRect(0, 10, 39, 12), turned)),
                2 * 0.25 / 2.75, 1e-12);
}

TEST_F(Seamrevise, RevisedWallsAreWrittenAndTheirBordersFade)
{
    expect(0, "simulate %d/w.db --size 301x202 --grid 4x3 --uncorrected 5,12 --layers 2");
    // A value above the caps: files keep it, tables do not.
    for (const QString table : {"coefficients", "layered_coefficients"})
        execute(in("%d/w.db"),
                "UPDATE " + table + " SET data = CAST(X'FFFF0000' || substr(data, 5) AS BLOB)");
    const struct
    {
        const char *options;
        int fileCount;
        bool fades;
    } cases[] = {
        {"--files", 12, true},           {"--table", 1, true},      {"--layers 2", 24, true},
        {"--layers 2 --table", 2, true}, {"--band 0x0", 12, false}, {"--margin 16", 12, false},
    };
    for (const auto &row : cases) {
        QDir(in("%d/o")).removeRecursively();
        const std::string printed = expect(
            0, QStringLiteral("revise %d/w.db -o %d/o ") + row.options, "10 corrected, 2 not");
        EXPECT_EQ(files("%d/o").size(), row.fileCount) << row.options;
        EXPECT_NE(printed.find("12 revised, 5 skipped"), std::string::npos) << printed;
        double before = 0.0; // the largest border steps, per cent
        double after = 0.0;
        const char *const seams = printed.c_str() + printed.rfind("seams");
        EXPECT_EQ(std::sscanf(seams, "seams %lf %% %lf", &before, &after), 2) << printed;
        EXPECT_TRUE(before > 2.0 && before < 10.0) << printed;
        EXPECT_EQ(after < before / 2, row.fades) << printed;
    }
}

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
        row.kind->engine().setPScreenDb(&host);
        row.kind->result() = row.kind->engine().boundaryModifying(
            host.path(), ScreenType_PartitionFile, host.areas, {2, 1}, {0, 0, 5, 1}, {2, 2}, 0);
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
