#include "seamrevise/borderstep.h"
#include "seamrevise/coefkind.h"
#include "seamrevise/commandline.h"
#include "seamrevise/loglines.h"
#include "seamrevise/readback.h"
#include "seamrevise/sqlscreenstore.h"

#include "records/coefszoneinfo.h"
#include "records/localconfig.h"
#include "records/multilayercoefzoneinfo.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextCodec>

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <sstream>

using namespace seamrevise;

namespace
{

/// What every host program has.
void ensureApplication()
{
    static int argc = 1;
    static char name[] = "seamrevise";
    static char *argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

struct Outcome
{
    int code;
    std::string out;
    std::string err;
};

Outcome run(const QString &words)
{
    std::ostringstream out;
    std::ostringstream err;
    const QStringList arguments
        = QStringLiteral("seamrevise %1").arg(words).split(QLatin1Char(' '));
    const int code = runCommandLine(arguments, false, out, err);
    return {code, out.str(), err.str()};
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void overwrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

/// Runs a statement on a database; the first value that it yields.
QVariant execute(const QString &path, const QString &sql)
{
    QVariant value;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), "test");
        db.setDatabaseName(path);
        EXPECT_TRUE(db.open());
        QSqlQuery query(db);
        EXPECT_TRUE(query.exec(sql)) << sql.toStdString();
        if (query.next())
            value = query.value(0);
    }
    QSqlDatabase::removeDatabase("test");
    return value;
}

class Seamrevise : public ::testing::Test
{
protected:
    Seamrevise() { ensureApplication(); }

    /// "%d" in a text is the directory of the test.
    QString in(QString text) const { return text.replace("%d", m_dir.path()); }
    Outcome runIn(const char *words) const { return run(in(QString::fromUtf8(words))); }
    QStringList files(const char *dir) const
    {
        return QDir(in(dir)).entryList(QDir::Files, QDir::Name);
    }
    void makeWall() const
    {
        ASSERT_EQ(runIn("simulate %d/w.db --size 101x62 --grid 3x2 --band 6x5 --uncorrected 5"
                        " --layers 2")
                      .code,
                  0);
    }

    const QTemporaryDir m_dir;
};

TEST_F(Seamrevise, CommandLinesEndWithTheirCodes)
{
    makeWall();
    const struct
    {
        int code;
        const char *words;
        const char *says;
    } cases[] = {
        {0, "--help", "Usage"},
        {0, "revise --help", "--margin"},
        {0, "simulate -h", "--seed"},
        {0, "revise --version", "seamrevise "},
        {2, "", "name a command"},
        {2, "polish", "polish"},
        {2, "revise", "name a database"},
        {2, "revise %d/w.db", "--output"},
        {2, "revise %d/w.db other -o %d/o", "other"},
        {2, "revise %d/w.db -o %d/o --frob", "frob"},
        {2, "revise %d/w.db -o %d/o --files --table", "exclude"},
        {2, "revise %d/w.db -o %d/o --margin -1", "--margin"},
        {2, "revise %d/w.db -o %d/o --band 3", "--band"},
        {2, "simulate %d/v.db --size 0x0 --grid 1x1", "0x0"},
        {2, "simulate %d/v.db --size 99999999999x1 --grid 1x1", "--size"},
        {2, "simulate %d/v.db --size 65535x65535 --grid 1x1", "pixels"},
        {2, "simulate %d/v.db --size 30000x30000 --grid 1x1", "finer grid"},
        {2, "simulate %d/v.db --size 9x9 --grid 10x1", "--grid"},
        {2, "simulate %d/v.db --size 9x9 --grid 2x2 --uncorrected 1,5", "1,5"},
        {3, "revise %d/none.db -o %d/o", "none.db"},
        {3, "revise %d -o %d/o", "not a file"},
        {3, "revise %d/w.db -o %d/o --layers 3", "partition 1"},
        {3, "revise %d/w.db -o %d/o --band 7x5", "partition 1: its zone lacks 36 of"},
        {4, "simulate %d/w.db --size 9x9 --grid 2x2", "--force"},
        {4, "simulate %d/none/v.db --size 9x9 --grid 2x2", "v.db: "},
        {4, "revise %d/w.db -o %d/w.db", "w.db"},
        {4, "revise %d/w.db -o %d/o --dumps %d/w.db", "w.db"},
    };
    for (const auto &row : cases) {
        const Outcome outcome = runIn(row.words);
        EXPECT_EQ(outcome.code, row.code) << row.words << '\n' << outcome.err;
        EXPECT_NE((outcome.out + outcome.err).find(row.says), std::string::npos)
            << row.words << '\n'
            << outcome.out << outcome.err;
    }
    EXPECT_EQ(files("%d"), QStringList("w.db"));
    EXPECT_TRUE(files("%d/o").isEmpty());
}

TEST_F(Seamrevise, FaultyDatabasesAreRefusedBeforeAnythingIsWritten)
{
    const struct
    {
        const char *sql;
        const char *says;
    } cases[] = {
        {"PRAGMA user_version = 2", "version 2"},
        {"DROP TABLE layered_coefficients", "layered_coefficients is missing"},
        {"DELETE FROM screen", "screen is empty"},
        {"DELETE FROM partitions WHERE number = 4", "partition 4 is missing"},
        {"INSERT INTO partitions VALUES (7, 0, 0, 1, 1)", "partition 7 is not in"},
        {"UPDATE partitions SET first_row = 'x' WHERE number = 2", "partition 2: a number"},
        {"UPDATE partitions SET last_col = last_col - 1 WHERE number = 2", "partition 3 does not"},
        {"UPDATE partitions SET last_row = last_row + 1 WHERE number = 6", "partition 6"},
        {"UPDATE screen SET grid_cols = 2000000000", "grid"},
        {"UPDATE screen SET last_col = 2147483647", "screen"},
        {"UPDATE coefficients SET data = 'text' WHERE number = 3", "partition 3: its zone of"},
        {"UPDATE coefficients SET data = zeroblob(18) WHERE number = 3", "18 are stored"},
        {"UPDATE coefficients SET last_row = 2147483647 WHERE number = 3", "larger than"},
        {"UPDATE coefficients SET last_row = first_row - 1 WHERE number = 3", "no pixel"},
        {"UPDATE coefficients SET first_col = 1, last_col = last_col + 1 WHERE number = 1",
         "partition 1: its zone lacks 36 of the 1404 pixels"},
        {"INSERT INTO coefficients SELECT 9, first_col, first_row, last_col, last_row, data"
         " FROM coefficients WHERE number = 1",
         "partition 9"},
        {"DELETE FROM coefficients", "no partition has coefficients"},
    };
    for (const auto &row : cases) {
        QFile::remove(in("%d/w.db"));
        makeWall();
        execute(in("%d/w.db"), row.sql);
        const Outcome outcome = runIn("revise %d/w.db -o %d/o");
        EXPECT_EQ(outcome.code, 3) << row.sql;
        EXPECT_NE(outcome.err.find(row.says), std::string::npos) << row.sql << '\n' << outcome.err;
        EXPECT_NE(outcome.err.find("w.db"), std::string::npos) << outcome.err;
    }
    EXPECT_FALSE(QDir(in("%d/o")).exists());
}

TEST_F(Seamrevise, ADatabaseCutAnywhereIsRefused)
{
    makeWall();
    const QByteArray whole = contents(in("%d/w.db"));
    for (int size = 0; size < whole.size(); size += 997) {
        overwrite(in("%d/cut.db"), whole.left(size));
        EXPECT_EQ(runIn("revise %d/cut.db -o %d/o").code, 3) << size;
    }
    EXPECT_FALSE(QDir(in("%d/o")).exists());
}

TEST_F(Seamrevise, StoredValuesAreLittleEndianAndComeBack)
{
    const StoredZone zone{1, NQRect(3, 4, 3, 4)};
    {
        SqlScreenStore store;
        ASSERT_TRUE(store.create(in("%d/s.db"), "s.db", ScreenLayout()));
        ASSERT_TRUE(store.add(zone, {0x1234, 0, 0, 0, 0, 0, 0, 0, 0xFFFE}));
        ASSERT_TRUE(store.addLayered(zone, 1, {0x12345678, -2, 0}));
        EXPECT_FALSE(store.add({2, zone.rect}, {1, 2, 3}));
        EXPECT_EQ(store.errorText().toStdString(),
                  "s.db, partition 2: its zone of 1x1 pixels needs 18 bytes, 6 are stored");
        ASSERT_TRUE(store.commit());
    }
    EXPECT_EQ(execute(in("%d/s.db"), "SELECT hex(data) FROM coefficients").toString(),
              "34120000000000000000000000000000FEFF");
    EXPECT_EQ(execute(in("%d/s.db"), "SELECT hex(data) FROM layered_coefficients").toString(),
              "78563412FEFFFFFF00000000");
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

TEST_F(Seamrevise, ASeedMakesTheSameWallOnEveryCompiler)
{
    makeWall();
    ASSERT_EQ(runIn("simulate %d/v.db --size 101x62 --grid 3x2 --band 6x5 --uncorrected 5"
                    " --layers 2 --seed 1 --force")
                  .code,
              0);
    EXPECT_EQ(contents(in("%d/v.db")), contents(in("%d/w.db")));
    // What gcc and clang agree on.
    const auto md5 = [&](const QString &table) {
        const QString sql = QStringLiteral("SELECT data FROM %1 WHERE number = 4").arg(table);
        const QByteArray data = execute(in("%d/w.db"), sql).toByteArray();
        return QCryptographicHash::hash(data, QCryptographicHash::Md5).toHex().toStdString();
    };
    EXPECT_EQ(md5("coefficients"), "b750619ec9353bfed577becc4567e2af");
    EXPECT_EQ(md5("layered_coefficients"), "368f451cc4619456f4927604d8dea341");
}

TEST(BorderStep, IsTheLargestOfTheBlocksAlongASeam)
{
    // The 8 pixels on each side count; of 40 lines the first 16 are a block, the others another.
    const auto light = [](int row, int col) {
        return (col < 2 ? 50.0 : 1.0) + (col > 9 && row < 16 ? 0.5 : 0.0)
            + (col > 9 && row > 33 ? 0.7 : 0.0);
    };
    const auto turned = [&](int row, int col) { return light(col, row); };
    EXPECT_NEAR(borderStep(ReviseDirection_Horizontal, edgeProfile(NQRect(0, 0, 9, 39), light),
                           edgeProfile(NQRect(10, 0, 12, 39), light)),
                2 * 0.5 / 2.5, 1e-12);
    EXPECT_NEAR(borderStep(ReviseDirection_Vertical, edgeProfile(NQRect(0, 0, 39, 9), turned),
                           edgeProfile(NQRect(0, 10, 39, 12), turned)),
                2 * 0.5 / 2.5, 1e-12);
}

/// The largest border steps before and after, per cent, as a summary prints them.
std::pair<double, double> printedSteps(const std::string &summary)
{
    double before = 0.0;
    double after = 0.0;
    std::sscanf(summary.c_str() + summary.rfind("seams"), "seams %lf %% %lf", &before, &after);
    return {before, after};
}

TEST_F(Seamrevise, RevisedWallsAreWrittenAndTheirBordersFade)
{
    ASSERT_EQ(
        runIn("simulate %d/w.db --size 301x202 --grid 4x3 --uncorrected 5,12 --layers 2").code, 0);
    // A value above the caps: files keep it, tables do not.
    for (const QString table : {"coefficients", "layered_coefficients"})
        execute(in("%d/w.db"),
                QStringLiteral("UPDATE %1 SET data = CAST(X'FFFF0000' ||"
                               " substr(data, 5) AS BLOB) WHERE number = 1")
                    .arg(table));
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
        const Outcome outcome = run(in("revise %d/w.db -o %d/o ") + row.options);
        ASSERT_EQ(outcome.code, 0) << row.options << outcome.err;
        EXPECT_EQ(files("%d/o").size(), row.fileCount) << row.options;
        EXPECT_NE(outcome.out.find("10 corrected, 2 not"), std::string::npos) << outcome.out;
        EXPECT_NE(outcome.out.find("12 revised, 5 skipped"), std::string::npos) << outcome.out;
        const auto [before, after] = printedSteps(outcome.out);
        EXPECT_GT(before, 2.0) << outcome.out;
        EXPECT_LT(before, 10.0) << outcome.out;
        EXPECT_EQ(after < before / 2, row.fades) << outcome.out;
    }
}

TEST_F(Seamrevise, TablesAreNumPyArraysWithNeutralUncorrectedPartitions)
{
    makeWall();
    const std::size_t pixel = 61 * 101 + 50; // of partition 5
    ASSERT_EQ(runIn("revise %d/w.db -o %d/o --table").code, 0);
    const QByteArray single = contents(in("%d/o/coefficients.npy"));
    EXPECT_EQ(single.left(10), QByteArray("\x93NUMPY\x01\x00\x76\x00", 10));
    EXPECT_EQ(single.mid(10, 118).trimmed().toStdString(),
              "{'descr': '<u2', 'fortran_order': False, 'shape': (62, 101, 9), }");
    EXPECT_EQ(single.size(), 128 + 62 * 101 * 9 * 2);
    EXPECT_EQ(single.mid(128 + pixel * 18, 18).toHex(), "000800000000000000080000000000000008");

    ASSERT_EQ(runIn("revise %d/w.db -o %d/o --table --layers 2").code, 0);
    const QByteArray layered = contents(in("%d/o/coefficients.npy"));
    EXPECT_EQ(layered.mid(10, 118).trimmed().toStdString(),
              "{'descr': '<i4', 'fortran_order': False, 'shape': (62, 101, 6), }");
    EXPECT_EQ(layered.mid(128 + pixel * 24, 24).toHex(), QByteArray("00100000").repeated(6));
    const QByteArray packed = contents(in("%d/o/packed.bin"));
    EXPECT_EQ(packed.size(), 62 * 101 * 8);
    EXPECT_EQ(packed.mid(pixel * 8, 8).toHex(), "ffffff3fffffff3f");
}

TEST_F(Seamrevise, FilesThatAreNotWhatWasRevisedAreFound)
{
    makeWall();
    const LogLines silence(nullptr);
    SqlScreenStore store;
    ASSERT_TRUE(store.open(in("%d/w.db")));
    std::vector<AreaInfoBase> records;
    for (const auto &[number, rect] : store.layout().partitions)
        records.emplace_back(number - 1, rect.top(), rect.left(), rect.bottom(), rect.right());
    QMap<QString, AreaInfoBase *> areas;
    for (AreaInfoBase &record : records)
        areas.insert(record.getAreaNum(), &record);

    const struct
    {
        std::unique_ptr<CoefKind> kind;
        QStringList suffixes;
    } engines[] = {{singleLayerKind(), {""}}, {layeredKind(2), {"_m", "_zip"}}};
    for (const auto &row : engines) {
        row.kind->engine().setPScreenDb(&store);
        row.kind->result() = row.kind->engine().boundaryModifying(
            in("%d/o"), ScreenType_PartitionFile, areas, store.layout().grid, store.layout().screen,
            store.layout().band, 0);
        for (const int number : {4, 5}) { // corrected, not corrected
            const auto fault = [&] {
                return checkFiles(*row.kind, in("%d/o"), number,
                                  store.layout().partitions.at(number), number == 4);
            };
            EXPECT_EQ(fault().toStdString(), "");
            for (const QString &suffix : row.suffixes) {
                const QString path = in("%d/o/%1%2").arg(number).arg(suffix);
                const QByteArray good = contents(path);
                QByteArray flipped = good;
                flipped[flipped.size() / 2] = static_cast<char>(~flipped[flipped.size() / 2]);
                for (const QByteArray &bad : {flipped, good.left(good.size() - 8), good + good}) {
                    overwrite(path, bad);
                    EXPECT_TRUE(fault().contains(in("%d/o/%1").arg(number))) << path.toStdString();
                }
                overwrite(path, good);
            }
        }
    }
}

TEST_F(Seamrevise, OutputThatCannotBeWrittenIsNamed)
{
    makeWall();
    QDir().mkpath(in("%d/o/3"));
    const Outcome outcome = runIn("revise %d/w.db -o %d/o");
    EXPECT_EQ(outcome.code, 4);
    EXPECT_EQ(outcome.err, in("seamrevise: %d/o/3: cannot be written\n").toStdString());
    QDir().mkpath(in("%d/o/coefficients.npy"));
    EXPECT_EQ(runIn("revise %d/w.db -o %d/o --table").code, 4);
    QDir().mkpath(in("%d/d/normal_area_1_before.txt"));
    EXPECT_EQ(runIn("revise %d/w.db -o %d/t --dumps %d/d").code, 4);
    QFile::copy(in("%d/w.db"), in("%d/1"));
    EXPECT_EQ(runIn("revise %d/1 -o %d").code, 4) << "the database would be overwritten";
}

TEST_F(Seamrevise, DumpsAreWrittenForTheRunOnly)
{
    makeWall();
    ASSERT_EQ(runIn("revise %d/w.db -o %d/o --dumps %d/d").code, 0);
    EXPECT_EQ(files("%d/d").size(), 5 * 3 + 2);
    EXPECT_TRUE(files("%d/d").contains(QString::fromUtf8("分区融合后系数.txt")));
    ASSERT_EQ(runIn("revise %d/w.db -o %d/o --dumps %d/m --layers 2").code, 0);
    EXPECT_EQ(files("%d/m").size(), 5 * 4 + 1);
    EXPECT_FALSE(LocalConfig::getInstance().isExportData());
}

} // namespace
