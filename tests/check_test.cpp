#include "commands/loglines.h"
#include "engines/coefkind.h"
#include "store/sqlscreenstore.h"

#include "programsupport.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <atomic>
#include <new>

using namespace seamrevise;

namespace
{

/// A wall whose shots see nothing but noise, so that nothing is found; else the same as makeWall.
const char *const goodWall = "simulate %d/w.db --size 101x62 --grid 3x2 --band 6x5 --layers 2"
                             " --one-shot --dead 0 --outlying 0 --batch 0 --force";

class Check : public Seamrevise
{
protected:
    QJsonObject document(int code, const QString &words) const
    {
        const std::string text = expect(code, words + " -q --json %d/doc.json");
        EXPECT_EQ(text.find("warning"), std::string::npos);
        return QJsonDocument::fromJson(contents("%d/doc.json")).object();
    }

    /// "zone-bytes 3, ": kind and place of every finding.
    static std::string kinds(const QJsonObject &document)
    {
        QString text;
        for (const QJsonValue finding : document["findings"].toArray()) {
            const QJsonArray seam = finding["seam"].toArray();
            text += finding["kind"].toString() + ' '
                + (seam.isEmpty()
                       ? QString::number(finding["partition"].toInt())
                       : QStringLiteral("%1-%2").arg(seam[0].toInt()).arg(seam[1].toInt()))
                + ", ";
        }
        return text.toStdString();
    }
};

TEST_F(Check, EveryFaultOfADatabaseIsFoundAndKeepsItFromBeingRevised)
{
    const char *const looseTables
        = "CREATE TABLE p AS SELECT * FROM partitions;"
          "DROP TABLE partitions; ALTER TABLE p RENAME TO partitions;"
          "CREATE TABLE c AS SELECT * FROM coefficients;"
          "DROP TABLE coefficients; ALTER TABLE c RENAME TO coefficients;";
    const struct
    {
        QString sql;
        const char *options, *finds, *says;
    } rows[] = {
        {"INSERT INTO screen SELECT * FROM screen", "", "screen-rows 0, ", "has 2 rows"},
        {"UPDATE screen SET first_col = 2147483547, last_col = 2147483647", "", "screen-edge 0, ",
         "ends at pixel 2147483647"},
        {"UPDATE screen SET last_col = 2147483647", "", "screen-size 0, screen-edge 0, ",
         "no pixel, or too many"},
        {"UPDATE screen SET grid_cols = 2000000000", "", "grid-size 0, ", "2000000000x2"},
        {"UPDATE screen SET grid_rows = 500000000", "", "partition-missing 7, ",
         "up to partition 1500000000"},
        {"UPDATE screen SET band_rows = -1", "", "band-negative 0, ", "negative"},
        {"DELETE FROM partitions WHERE number IN (4, 6)", "",
         "partition-missing 4, partition-missing 6, ", "partition 4: it is missing"},
        {"INSERT INTO partitions VALUES (7, 0, 0, 1, 1)", "", "partition-extra 7, ", "grid of 3x2"},
        {"UPDATE partitions SET last_col = last_col - 1 WHERE number = 2", "",
         "partition-place 3, partition-place 5, ",
         "leaves a gap to partition 2: its first column is 67 and should be 66"},
        {"UPDATE partitions SET first_col = first_col - 4 WHERE number = 3", "",
         "partition-place 3, partition-place 6, ", "partition 3: it overlaps partition 2"},
        {"UPDATE partitions SET last_row = last_row + 3 WHERE number = 6", "",
         "partition-off-screen 6, partition-place 6, ", "beyond the screen by 102 pixels"},
        {"UPDATE partitions SET last_row = 2147483647 WHERE number = 1", "",
         "partition-off-screen 1, partition-place 2, partition-place 4, ", "should be 2147483648"},
        {"UPDATE partitions SET last_row = -5 WHERE number = 1", "", "partition-empty 1, ",
         "no pixel"},
        {looseTables
             + QString("INSERT INTO partitions SELECT * FROM partitions WHERE number = 2;"
                       "INSERT INTO coefficients SELECT * FROM coefficients"
                       " WHERE number IN (1, 4)"),
         "", "partition-duplicate 2, zone-duplicate 1, zone-duplicate 4, ", "more than once"},
        {"UPDATE coefficients SET data = 'text' WHERE number IN (3, 5)", "",
         "zone-type 3, zone-type 5, ", "another type than BLOB"},
        {"UPDATE coefficients SET data = zeroblob(18) WHERE number = 3", "", "zone-bytes 3, ",
         "18 are stored"},
        {"UPDATE coefficients SET last_row = 2147483647 WHERE number = 3", "", "zone-too-large 3, ",
         "larger than"},
        {"UPDATE coefficients SET last_row = first_row - 1 WHERE number = 3", "",
         "zone-empty 3, zone-too-small 3, ", "no band helps"},
        {"UPDATE coefficients SET number = 9 WHERE number = 1", "", "zone-without-partition 9, ",
         "partition 9: it has coefficients but no place"},
        {"DELETE FROM coefficients", "", "no-coefficients 0, ", "layer counts stored: 2"},
        {"UPDATE layered_coefficients SET layers = 4 WHERE number > 4", "--layers 2",
         "layers-missing 5, layers-missing 6, ", "layer counts stored: 2, 4"},
        {"SELECT 1", "--layers 3", "layers-missing 1, ", "layer count of 3"},
        {"SELECT 1", "--band 7x5", "zone-too-small 1, ",
         "partition 1: its zone lacks 36 of the 1440 pixels of the partition with a band of 7x5;"
         " all zones carry --band 6x5"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.finds);
        expect(0, goodWall);
        for (const QString &statement : row.sql.split(';', Qt::SkipEmptyParts))
            execute(in("%d/w.db"), statement);
        const QString words = QStringLiteral("%d/w.db ") + row.options;
        const std::string found = kinds(document(1, "check " + words));
        std::size_t at = 0; // other findings may stand in between
        for (const QString &kind : QString(row.finds).split(", ", Qt::SkipEmptyParts)) {
            at = found.find(kind.toStdString() + ',', at);
            EXPECT_NE(at, std::string::npos) << kind.toStdString() << " is not in " << found;
        }
        expect(1, "check " + words, row.says);
        expect(3, "revise -o %d/o " + words, row.says);
    }
    EXPECT_FALSE(QDir(in("%d/o")).exists());
}

TEST_F(Check, WhatCannotBeReadIsSaidAndEndsWithThree)
{
    const std::pair<const char *, const char *> rows[] = {
        {"PRAGMA user_version = 99", "version 99"},
        {"DROP TABLE layered_coefficients", "layered_coefficients is missing"},
        {"DELETE FROM screen", "screen is empty"},
        {"UPDATE partitions SET first_row = 'x' WHERE number = 2", "partition 2: a number"},
    };
    for (const auto &[sql, says] : rows) {
        expect(0, goodWall);
        execute(in("%d/w.db"), sql);
        expect(3, "check %d/w.db", says);
        expect(3, "revise %d/w.db -o %d/o", says);
    }
    expect(0, goodWall);
    const QByteArray whole = contents("%d/w.db");
    for (int size = 0; size < whole.size(); size += 30011) {
        writeFile(in("%d/cut.db"), whole.left(size));
        expect(3, "check %d/cut.db");
        expect(3, "revise %d/cut.db -o %d/o");
    }
    EXPECT_FALSE(QDir(in("%d/o")).exists());
}

TEST_F(Check, GoodWallsAreCleanAndNothingIsWritten)
{
    expect(0, goodWall);
    const QByteArray before = contents("%d/w.db");
    expect(0, "check %d/w.db", "findings     none");
    EXPECT_EQ(expect(0, "check -q %d/w.db"), "");
    EXPECT_EQ(contents("%d/w.db"), before);
    EXPECT_EQ(files("%d"), QStringList("w.db"));
}

TEST_F(Check, WhatLooksWrongIsFoundAndWarnedOf)
{
    const char *const shots = " --dead 0 --outlying 0 --shift 1=0,0";
    const struct
    {
        const char *wall, *sql, *options;
        int revises;
        const char *finds, *says;
    } rows[] = {
        {" --one-shot --dead 0", "SELECT 1", "--band 0x0", 0, "no-strip 1-2, no-strip 2-3,",
         "seam 1 - 2: no strip: with a band of 0x0"},
        {" --one-shot --dead 0", "SELECT 1", "--margin 6", 0, "margin 1-2,",
         "a margin of 6 leaves none of 12 positions"},
        {" --one-shot --dead 0", // 50 pixels of the zone, whose rows are 39 wide: 33 + 11 own ones
         "UPDATE coefficients SET data = CAST(zeroblob(900) || substr(data, 901) AS BLOB)"
         " WHERE number = 1",
         "", 0, "dead 1,", "partition 1: 44 of its pixels have no coefficient but 0"},
        {" --one-shot --dead 0",
         "UPDATE coefficients SET data = CAST(X'FFFF' || substr(data, 3) AS BLOB) WHERE number = 1",
         "", 0, "saturated 1,", "1 of its pixels have the largest value"},
        {" --one-shot --dead 0 --layer-gains 3000,3100", "SELECT 1", "--layers 2", 0,
         "packed-saturated 1, packed-saturated 2,", "of its packed codes lie at 0 or 1023"},
        {" --one-shot --dead 0",
         "UPDATE coefficients SET data = (SELECT CAST(substr(hex(zeroblob(length(data) / 2)), 1,"
         " length(data)) AS BLOB) FROM coefficients WHERE number = 6) WHERE number = 6",
         "", 0, "disagreement 3-6,", "partition 6: its coefficients lie"},
        {shots, "SELECT 1", "--step-limit 0.01%", 1, "step 1-2,", "above the limit of 0.01 %"},
        {shots, "SELECT 1", "--step-limit 50%", 0, "", "revised"},
        {" --one-shot --dead 0",
         "UPDATE coefficients SET data = CAST(replace(hex(data), 'F', '0') AS BLOB),"
         " last_row = 2 * last_row - first_row + 1 WHERE number = 2;"
         "DELETE FROM coefficients WHERE number = 5",
         "--step-limit 5000%", 1, "step-grew 3-6,", "the step grows from"},
        {shots, "DELETE FROM coefficients WHERE number = 5", "--step-limit 0.1%", 1,
         "seam-end 3-6,", "where the seam ends beside partition 5, which is not corrected"},
        {" --dead 0 --outlying 0 --shift 6=1,0", "SELECT 1", "", 0, "shift 3-6,",
         "where partition 6 is read 1 to the right and 0 down"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.says);
        expect(0,
               QString("simulate %d/w.db --force --size 101x62 --grid 3x2 --band 6x5 --layers 2")
                   + row.wall);
        for (const QString &statement : QString(row.sql).split(';'))
            execute(in("%d/w.db"), statement);
        const QString words = QStringLiteral("%d/w.db ") + row.options;
        const int code = row.finds[0] == '\0' ? 0 : 1;
        const QJsonObject checked = document(code, "check " + words);
        EXPECT_NE(kinds(checked).find(row.finds), std::string::npos) << kinds(checked);
        expect(code, "check " + words, row.says);
        expect(row.revises, "revise --force -o %d/o " + words, row.says);
    }
}

TEST_F(Check, DocumentsSayWhatIsDelivered)
{
    makeWall();
    const struct
    {
        const char *options;
        int fileCount;
        bool fades;
    } rows[] = {
        {"--files", 6, true},     {"--table", 1, true},
        {"--layers 2", 12, true}, {"--layers 2 --table", 2, true},
        {"--band 0x0", 6, false}, {"--margin 6", 6, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.options);
        QDir(in("%d/o")).removeRecursively();
        const QJsonObject said
            = document(0, QStringLiteral("revise %d/w.db -o %d/o ") + row.options);
        EXPECT_EQ(said["partitions"]["uncorrected"].toArray(), QJsonArray{5});
        EXPECT_EQ(said["seams"].toArray().size(), 7);
        int revised = 0;
        double before = 0.0;
        double after = 0.0;
        for (const QJsonValue seam : said["seams"].toArray()) {
            revised += seam["revised"].toBool();
            EXPECT_EQ(seam["reason"].isNull(), seam["revised"].toBool());
            before = std::max(before, seam["step"]["before"]["worst"].toDouble());
            after = std::max(after, seam["step"]["after"]["worst"].toDouble());
        }
        EXPECT_EQ(revised, row.fades ? 4 : 0);
        EXPECT_EQ(after < before, row.fades) << before << ' ' << after;
        ASSERT_EQ(said["files"].toArray().size(), row.fileCount + 1); // and numbers.json
        for (const QJsonValue file : said["files"].toArray()) {
            const QByteArray bytes = readFile(in("%d/o/") + file["name"].toString());
            EXPECT_EQ(file["bytes"].toInt(), bytes.size());
            EXPECT_EQ(
                file["sha256"].toString(),
                QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().constData());
        }
    }
}

TEST_F(Check, AnyNumberOfJobsFindsTheSame)
{
    makeWall();
    const auto found = [&](const QString &jobs) {
        QJsonObject document = this->document(1, "check %d/w.db --layers 2" + jobs);
        document.remove("seconds");
        document.remove("seconds_of_parts");
        return QJsonDocument(document).toJson().toStdString();
    };
    const std::string one = found(" --jobs 1");
    EXPECT_EQ(found(" --jobs 7"), one);
    EXPECT_EQ(found(""), one);
    expect(2, "check %d/w.db --jobs 0", "--jobs takes a number from 1");
}

TEST_F(Check, DocumentsReplaceNothingThatIsReadOrWritten)
{
    makeWall();
    expect(0, "revise %d/w.db -o %d/set -q");
    expect(0, "revise %d/w.db -o %d/set -q --force --margin 1");
    expect(0, "export %d/w.db -o %d/files -q");
    writeFile(in("%d/limits"), "{}");
    const QString kept = "%d/" + QDir(in("%d")).entryList({"set.*"}).value(0);
    const auto nameOf = [this](const char *path) { return QFile::encodeName(in(path)); };
    EXPECT_EQ(link(nameOf("%d/w.db"), nameOf("%d/hard.db")), 0);
    EXPECT_EQ(link(nameOf("%d/set/1"), nameOf("%d/hard1")), 0);
    EXPECT_EQ(symlink("w.db", nameOf("%d/soft.db")), 0);
    EXPECT_EQ(symlink("set", nameOf("%d/softset")), 0);
    EXPECT_EQ(symlink("out/1", nameOf("%d/nowhere")), 0);
    EXPECT_EQ(symlink("../limits", nameOf("%d/files/away")), 0);
    const QString wall = "import %d/files/layout.json %d/v.db --json ";
    const QString part = "import --partition 1 --from %d/files/1.npy %d/w.db --json ";
    const QString revise = "revise %d/w.db -o %d/out --dumps %d/dumps --json ";
    const QString simulate = "simulate %d/v.db --light %d/l.npy --size 9x9 --grid 1x1 --json ";
    const QString verify = "verify %d/set %d/w.db --limits %d/limits --json ";
    const std::pair<QString, const char *> rows[] = {
        {"check %d/w.db --json %d/w.db", "is the database"},
        {"info %d/w.db --json %d/hard.db", "is the database"},
        {"upgrade %d/soft.db --json %d/w.db", "is the database"},
        {"import --remove 1 %d/w.db --json %d/soft.db", "is the database"},
        {"export %d/w.db -o %d/out --json %d/hard.db", "is the database"},
        {"export %d/w.db -o %d/out --json %d/out/below/a", "lies in the output directory"},
        {"export %d/w.db --force -o %d/files --json %d/files/away", "lies in the output directory"},
        {wall + "%d/./v.db", "is the database"},
        {wall + "%d/files/layout.json", "is the layout"},
        {wall + "%d/files/6.npy", "is a file that is imported"},
        {part + "%d/w.db", "is the database"},
        {part + "%d/files/1.npy", "is a file that is imported"},
        {revise + "%d/hard.db", "is the database"},
        {revise + "%d/out", "is the output directory"},
        {revise + "%d/out/a", "lies in the output directory"},
        {revise + "%d/nowhere", "is a link to nothing"},
        {revise + "%d/dumps/a", "lies in the directory of the dumps"},
        {simulate + "%d/v.db", "is the database"},
        {simulate + "%d/./l.npy", "is the light"},
        {verify + "%d/w.db", "is the database"},
        {verify + "%d/limits", "is the file of the limits"},
        {verify + "%d/softset/a", "lies in the set of files"},
        {verify + "%d/hard1", "lies in the set of files"},
        {"compare %d/set " + kept + " --json " + kept + "/a", "lies in a set that is compared"},
        {"compare %d/set " + kept + " --json %d/set/1", "lies in a set that is compared"},
        {"restore %d/set --json %d/set/a", "lies in the set of files"},
        {"restore %d/set --json " + kept + "/a", "lies in a kept set"},
        {"show %d/set 1 --json %d/softset/manifest.json", "lies in the set of files"},
        {"show %d/set 1 --npy %d/a --json %d/a", "is the array"},
    };
    const auto state = [this] {
        return shell("cd %d && find . -type f -exec sha256sum {} + -o -ls | sort").printed;
    };
    const std::string before = state();
    for (const auto &[words, says] : rows)
        expect(4, words, (std::string(says) + "; use another --json\n").c_str());
    EXPECT_EQ(state(), before);
}

TEST_F(Check, DocumentsReplaceAFileOrAreThePrintedText)
{
    makeWall();
    writeFile(in("%d/a.json"), "old");
    expect(0, "revise %d/w.db -o %d/o --json %d/a.json");
    EXPECT_TRUE(contents("%d/a.json").startsWith("{\n  \"schema\": \"seamrevise/1\","));
    const std::string printed = expect(1, "check %d/w.db --json -");
    EXPECT_TRUE(QJsonDocument::fromJson(QByteArray::fromStdString(printed)).isObject()) << printed;
}

/// Reads through a store, and lets something happen behind every zone.
class Interrupted : public ScreenDataBaseManager
{
public:
    Interrupted(ScreenDataBaseManager &store, std::function<void(int)> between)
        : m_store(store)
        , m_between(std::move(between))
    {
    }
    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override
    {
        return m_store.ReadAllIDAreaCoefIDs(zones);
    }
    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override
    {
        ++reads[number];
        const int code = m_store.readAreaCoefficients(number, zone);
        m_between(number);
        return code;
    }
    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &) override { return 1; }
    int readMultiLayerAreaCoefficients(const unsigned int &, const unsigned int &,
                                       MultiLayerCoefZoneInfo &) override
    {
        return 1;
    }
    std::map<int, int> reads;

private:
    ScreenDataBaseManager &m_store;
    const std::function<void(int)> m_between;
};

TEST_F(Check, ARunReadsEachZoneOnceAndFromOneState)
{
    const LogLines silence(nullptr);
    makeWall();
    execute(in("%d/w.db"), "PRAGMA journal_mode = WAL");
    const auto run = [&](const std::function<void(int)> &between) {
        SqlScreenStore store;
        EXPECT_TRUE(store.open(in("%d/w.db")));
        Interrupted interrupted(store, between);
        const auto kind = singleLayerKind();
        kind->run({interrupted,
                   store.layout(),
                   {1, 2, 3, 4, 6},
                   {6, 5},
                   0,
                   usualWeights,
                   QString(),
                   false});
        EXPECT_EQ(interrupted.reads, (std::map<int, int>{{1, 1}, {2, 1}, {3, 1}, {4, 1}, {6, 1}}));
        return kind->result().coefData;
    };
    const auto undisturbed = run([](int) {});
    const auto disturbed = run([&](int) {
        execute(in("%d/w.db"),
                "UPDATE coefficients SET last_row = last_row - 9,"
                " data = zeroblob(18)");
        execute(in("%d/w.db"), "DELETE FROM coefficients WHERE number > 2");
    });
    EXPECT_EQ(disturbed, undisturbed);
    EXPECT_NE(execute(in("%d/w.db"), "SELECT count(*) FROM coefficients").toInt(), 5);
}

} // namespace
