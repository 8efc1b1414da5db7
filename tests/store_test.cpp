#include "numbers/inputfindings.h"
#include "store/databaseaddress.h"
#include "store/sqlscreenstore.h"
#include "store/storedbytes.h"

#include "postgressupport.h"
#include <seamrevision/multilayercoefzoneinfo.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace seamrevise;

namespace
{

constexpr int partitionCount = 8;
const ScreenLayout smallWall = regularLayout({64, 32}, {4, 2}, {2, 2});
const ScreenLayout largeWall = regularLayout({800, 400}, {4, 2}, {2, 2}); // no cache holds it

/// How often what comes at random moments is tried.
int roundCount(int few, int many)
{
    return qEnvironmentVariableIsSet("SEAMREVISE_LONG_TESTS") ? many : few;
}

/// Puts a partition's single-layer and layered coefficients, all of one value.
bool putBoth(SqlScreenStore &store, int number, int value)
{
    const StoredZone zone = zoneOf(store.layout(), number);
    const std::size_t pixels = static_cast<std::size_t>(pixelsOf(zone.rect));
    return store.put(zone, std::vector<unsigned short>(pixels * 9, value))
        && store.putLayered(zone, 1, std::vector<qint32>(pixels * 3, value));
}

bool putAll(SqlScreenStore &store, int value)
{
    for (int number = 1; number <= partitionCount; ++number) {
        if (!putBoth(store, number, value))
            return false;
    }
    return true;
}

/// The value that all coefficients of a partition have; -1 if they differ, or cannot be read.
int valueOf(SqlScreenStore &store, int number)
{
    CoefsZoneInfo single;
    MultiLayerCoefZoneInfo layered;
    if (store.readAreaCoefficients(number, single) != 0
        || store.readMultiLayerAreaCoefficients(1, number, layered) != 0)
        return -1;
    const int value = single.m_arrayData.front();
    for (const unsigned short other : single.m_arrayData) {
        if (other != value)
            return -1;
    }
    for (const std::vector<int> &pixel : layered.m_multiLayerCoefs) {
        if (pixel != std::vector<int>(3, value))
            return -1;
    }
    return value;
}

/// The value that a whole wall has; -1 as above.
int valueOfWall(const QString &address)
{
    SqlScreenStore store;
    if (!store.open(address))
        return -1;
    const int value = valueOf(store, 1);
    for (int number = 2; number <= partitionCount; ++number) {
        if (valueOf(store, number) != value)
            return -1;
    }
    return value;
}

/// Gives all partitions of a wall one value. Empty, or what went wrong.
QString import(const QString &address, const ScreenLayout &layout, int value,
               const QString &station = "anna")
{
    SqlScreenStore store;
    const bool isDone = store.openOrCreate(address, layout, {station, false})
        && putAll(store, value) && store.commit();
    EXPECT_NE(isDone, store.errorText() != "");
    return store.errorText();
}

/// Every test of the store, on both databases.
class Store : public Seamrevise, public ::testing::WithParamInterface<const char *>
{
protected:
    void SetUp() override
    {
        if (isServer() && !m_server.absence().empty())
            GTEST_SKIP() << m_server.absence();
    }
    bool isServer() const { return QLatin1String(GetParam()) == "postgres"; }
    /// A wall of the test's own on the common server has the name of its directory.
    QString wall() const { return QDir(m_dir.path()).dirName(); }
    QString address() const { return isServer() ? m_server.address(wall()) : in("%d/w.db"); }
    QVariant sql(const QString &statement) const
    {
        return isServer() ? executeOnServer(m_server.socketDir(), wall(), statement)
                          : execute(address(), statement);
    }

    const PostgresServer m_server;
};
INSTANTIATE_TEST_SUITE_P(Databases, Store, ::testing::Values("sqlite", "postgres"),
                         [](const auto &row) { return std::string(row.param); });

TEST_P(Store, KeepsValuesLittleEndianAndWhoWroteThem)
{
    const StoredZone zone{1, NQRect(3, 4, 3, 4)};
    {
        SqlScreenStore store;
        ASSERT_TRUE(store.create(address(), smallWall, {"anna@north", false}));
        ASSERT_TRUE(store.put(zone, {0x1234, 0, 0, 0, 0, 0, 0, 0, 0xFFFE}));
        ASSERT_TRUE(store.putLayered(zone, 1, {0x12345678, -2, 0}));
        ASSERT_TRUE(store.commit());
    }
    const QString hex = isServer() ? "upper(encode(%1.data, 'hex'))" : "hex(%1.data)";
    EXPECT_EQ(sql("SELECT " + hex.arg("c") + " || " + hex.arg("l")
                  + " FROM coefficients c, layered_coefficients l"),
              "34120000000000000000000000000000FEFF78563412FEFFFFFF00000000");
    SqlScreenStore store;
    ASSERT_TRUE(store.open(address()));
    EXPECT_TRUE(layoutFindings(store.layout()).empty());
    EXPECT_EQ(store.layout().band.height(), 2);
    MultiLayerCoefZoneInfo layered;
    ASSERT_EQ(store.readMultiLayerAreaCoefficients(1, 1, layered), 0);
    EXPECT_EQ(layered.m_multiLayerCoefs, (std::vector<std::vector<int>>{{0x12345678, -2, 0}}));
    EXPECT_EQ(layered.getBegPixRow(), 4);
    CoefsZoneInfo single;
    ASSERT_EQ(store.readAreaCoefficients(1, single), 0);
    EXPECT_EQ(single.m_arrayData.back(), 0xFFFE);
    EXPECT_NE(store.readAreaCoefficients(2, single), 0);
    EXPECT_TRUE(store.errorText().contains("partition 2"));

    std::vector<PartitionRevision> revisions;
    ASSERT_TRUE(store.listRevisions(revisions));
    ASSERT_EQ(revisions.size(), 2U);
    for (int kind = 0; kind < 2; ++kind) {
        EXPECT_EQ(revisions[kind].layerCount, kind);
        EXPECT_EQ(revisions[kind].revision, 1);
        EXPECT_EQ(revisions[kind].station, "anna@north");
        const QDateTime written = QDateTime::fromString(revisions[kind].written, Qt::ISODate);
        EXPECT_EQ(written.timeSpec(), Qt::UTC);
        EXPECT_LT(std::abs(written.secsTo(QDateTime::currentDateTimeUtc())), 60);
    }
}

TEST_P(Store, OverwritesOtherStationsByForceOnly)
{
    ScreenLayout moved = smallWall;
    moved.band = {1, 1};
    moved.partitions[3] = NQRect(32, 0, 46, 15);
    ASSERT_EQ(import(address(), smallWall, 1), "");
    enum Deed
    {
        Put,
        Remove,
        Move
    };
    const struct
    {
        const char *station;
        bool force;
        Deed deed;
        const char *says; ///< empty: it is done
        int revision;
        int value; ///< -1: none
    } steps[] = {
        {"anna", false, Put, "", 2, 20},
        {"ben", false, Put, "partition 3: station anna wrote it at 20", 2, 20},
        {"ben", false, Remove, "partition 3: station anna", 2, 20},
        {"ben", false, Move, "partition 3: station anna", 2, 20},
        {"ben", true, Put, "", 3, 60},
        {"anna", false, Put, "partition 3: station ben", 3, 60},
        {"ben", false, Remove, "", 4, -1},
        {"anna", false, Put, "partition 3: station ben", 4, -1},
        {"anna", true, Put, "", 5, 100},
        {"anna", false, Move, "", 6, -1},
    };
    int at = 0;
    for (const auto &step : steps) {
        ++at;
        SqlScreenStore store;
        const Writer writer{step.station, step.force};
        bool isDone = step.deed == Move ? store.openOrCreate(address(), moved, writer)
                                        : store.openForWriting(address(), writer);
        if (step.deed == Put)
            isDone = isDone && putBoth(store, 3, 10 * at + 10);
        if (step.deed == Remove)
            isDone = isDone && store.remove(3, 0) && store.remove(3, 1);
        EXPECT_EQ(store.commit(), isDone);
        EXPECT_EQ(isDone, *step.says == 0) << at << store.errorText().toStdString();
        EXPECT_TRUE(store.errorText().contains(step.says)) << store.errorText().toStdString();

        SqlScreenStore reader;
        std::vector<PartitionRevision> revisions;
        ASSERT_TRUE(reader.open(address()) && reader.listRevisions(revisions));
        EXPECT_EQ(revisions.size(), 2U * partitionCount);
        EXPECT_EQ(revisions[4].revision, step.revision) << at; // of 3, single layer
        EXPECT_EQ(valueOf(reader, 3), step.value) << at;
        EXPECT_EQ(valueOf(reader, 4), 1) << at;
    }
}

TEST_P(Store, AReaderSeesOneStateWhateverIsWritten)
{
    ASSERT_EQ(import(address(), smallWall, 1), "");
    auto reader = std::make_unique<SqlScreenStore>();
    ASSERT_TRUE(reader->open(address()));
    std::thread writer([&] { EXPECT_EQ(import(address(), smallWall, 2), ""); });
    if (isServer())
        writer.join(); // nobody waits for a reader
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(valueOf(*reader, 1), 1);
    EXPECT_EQ(valueOf(*reader, 8), 1);
    reader.reset();
    if (writer.joinable())
        writer.join();
    EXPECT_EQ(valueOfWall(address()), 2);
}

/// The first value that a delivered table of the small wall has in the middle of a partition.
int deliveredValue(const QByteArray &table, int number)
{
    const NQRect rect = smallWall.partitions.at(number);
    const int pixel = (rect.top() + 8) * 64 + rect.left() + 8;
    return qFromLittleEndian<quint16>(table.constData() + 128 + pixel * 18); // behind the header
}

TEST_P(Store, EightStationsAndADeliveryLoseNothing)
{
    const int rounds = roundCount(5, 50);
    ASSERT_EQ(import(address(), smallWall, 0, ""), "");
    std::atomic<int> atWork{partitionCount};
    std::vector<std::thread> stations;
    for (int number = 1; number <= partitionCount; ++number) {
        stations.emplace_back([&, number] {
            for (int round = 1; round <= rounds; ++round) {
                SqlScreenStore store;
                EXPECT_TRUE(store.openForWriting(address(), {QString::number(number), false})
                            && putBoth(store, number, round) && store.commit())
                    << store.errorText().toStdString();
            }
            --atWork;
        });
    }
    // The value of an import is its revision: what is delivered, and what is said of it, must
    // agree.
    std::vector<int> seen(partitionCount + 1, 0);
    bool wasLast = false;
    while (!wasLast) {
        wasLast = atWork == 0;
        expect(0, "revise " + address() + " -o %d/o --table --force --keep 0 -q");
        const QByteArray table = contents("%d/o/coefficients.npy");
        const QJsonObject manifest
            = QJsonDocument::fromJson(contents("%d/o/manifest.json")).object();
        for (int number = 1; number <= partitionCount; ++number) {
            const QJsonObject partition = manifest["partitions"].toArray()[number - 1].toObject();
            const int revision = partition["revision"].toInt();
            const auto values
                = static_cast<std::size_t>(pixelsOf(zoneOf(smallWall, number).rect)) * 9;
            EXPECT_EQ(deliveredValue(table, number), revision);
            EXPECT_EQ(
                partition["stored_sha256"].toString().toLatin1(),
                QCryptographicHash::hash(storedBytes(std::vector<unsigned short>(values, revision)),
                                         QCryptographicHash::Sha256)
                    .toHex());
            EXPECT_GE(revision, seen[number]);
            seen[number] = revision;
        }
    }
    for (std::thread &station : stations)
        station.join();
    for (int number = 1; number <= partitionCount; ++number)
        EXPECT_EQ(seen[number], rounds);
}

TEST_P(Store, WritersWaitOnlyForThoseWhoMustGoFirst)
{
    ASSERT_EQ(import(address(), smallWall, 0, ""), "");
    SqlScreenStore first;
    ASSERT_TRUE(first.openForWriting(address(), {"anna", false}) && putBoth(first, 1, 7));
    if (isServer()) { // another partition does not wait
        SqlScreenStore second;
        EXPECT_TRUE(second.openForWriting(address(), {"ben", false}) && putBoth(second, 2, 8)
                    && second.commit());
    }
    std::thread waiting([&] { // and then it sees who was first
        SqlScreenStore second;
        EXPECT_FALSE(second.openForWriting(address(), {"ben", false}) && putBoth(second, 1, 9));
        EXPECT_TRUE(second.errorText().contains("station anna wrote it"))
            << second.errorText().toStdString();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(first.commit());
    waiting.join();
    SqlScreenStore reader;
    ASSERT_TRUE(reader.open(address()));
    EXPECT_EQ(valueOf(reader, 1), 7);
    EXPECT_EQ(valueOf(reader, 2), isServer() ? 8 : 0);
}

TEST_P(Store, AWriterWaitsHalfAMinuteAtMost)
{
    ASSERT_EQ(import(address(), smallWall, 0, ""), "");
    SqlScreenStore first;
    ASSERT_TRUE(first.openForWriting(address(), {"anna", false}) && putBoth(first, 1, 7));
    QElapsedTimer timer;
    timer.start();
    SqlScreenStore second;
    EXPECT_FALSE(second.openForWriting(address(), {"ben", false}) && putBoth(second, 1, 9));
    EXPECT_TRUE(second.errorText().contains("has kept it locked for 30 seconds"))
        << second.errorText().toStdString();
    EXPECT_NEAR(timer.elapsed(), 30'000, 5'000);
    EXPECT_TRUE(first.commit());
}

TEST_P(Store, WhatIsNoWallOfTodayIsNamedAndLeftAlone)
{
    const char *const noWall = isServer() ? "no wall is stored there" : "no such file";
    expect(3, "revise " + address() + " -o %d/o", noWall);
    const QString setVersion
        = isServer() ? "UPDATE schema_version SET version = " : "PRAGMA user_version = ";
    const std::pair<QString, const char *> cases[] = {
        {setVersion + '3', "schema version 3, this program reads 1 to 2"},
        {setVersion + "2", ""},
        {"UPDATE coefficients SET last_col = last_col + 1 WHERE number = 3", "partition 3: its"},
        {"UPDATE coefficients SET last_col = last_col - 1 WHERE number = 3", ""},
        {"DELETE FROM screen", "the table screen is empty"},
        {"DROP TABLE revisions", "the table revisions is missing"},
    };
    expect(0, "simulate " + address() + " --size 64x32 --grid 4x2 --band 2x2");
    expect(isServer() ? 3 : 4, "simulate " + address() + " --size 9x9 --grid 1x1", "--force");
    expect(0, "simulate " + address() + " --size 64x32 --grid 4x2 --band 2x2 --force");
    for (const auto &[statement, says] : cases) {
        sql(statement);
        expect(*says == 0 ? 0 : 3, "revise --force " + address() + " -o %d/o", says);
    }
    SqlScreenStore store;
    EXPECT_FALSE(store.openForWriting(address(), {"anna", true}));
    EXPECT_FALSE(store.commit());
}

TEST_P(Store, GivesTheSameDeliveryFromBoth)
{
    for (const QString &wall : {address(), in("%d/other.db")})
        expect(0, "simulate " + wall + " --size 301x202 --grid 4x3 --uncorrected 5 --layers 2");
    for (const QString options : {" --force", " --force --layers 2", " --force --table"}) {
        expect(0, "revise " + address() + " -o %d/o" + options);
        expect(0, "revise %d/other.db -o %d/p" + options);
        EXPECT_EQ(files("%d/o"), files("%d/p"));
        for (const QString &name : files("%d/o")) {
            EXPECT_TRUE(name == "manifest.json"
                        || readFile(in("%d/o/") + name) == readFile(in("%d/p/") + name))
                << name.toStdString();
        }
    }
}

using StorePostgres = Seamrevise;

TEST_F(StorePostgres, RefusalsOfTheServerSayWhyAndNoPassword)
{
    const PostgresServer server;
    if (!server.absence().empty())
        GTEST_SKIP() << server.absence();
    const QString wall = QDir(m_dir.path()).dirName();
    const QString socketDir = server.socketDir();
    ASSERT_EQ(import(server.address(wall), smallWall, 1), "");
    executeOnServer(socketDir, wall,
                    "DO $$ BEGIN CREATE ROLE guest LOGIN; CREATE ROLE guarded LOGIN PASSWORD 'x';"
                    " EXCEPTION WHEN duplicate_object THEN NULL; END $$");
    const QByteArray secret = "aber-sesam";
    qputenv("PGPASSWORD", secret);
    const struct
    {
        int code;
        QString address;
        const char *says;
    } cases[] = {
        {3, server.address(wall, "guest"), "permission denied"},
        {3, server.address(wall, "guarded"), "password authentication failed"},
        {3, server.address(wall, "nobody"), "role \"nobody\" does not exist"},
        {3, server.address(wall).replace("/postgres/", "/nowhere/"), "\"nowhere\" does not exist"},
        {3, server.address(wall).replace("host=", "host=/none"), "connection to server"},
        {3, server.address(wall + "-other"), "no wall is stored there"},
        {3, server.address("public"), "no wall is stored there"},
        {2, "postgresql://u:" + secret + "@/postgres/w", "carries a password"},
        {2, "postgresql://u@/postgres/w?passwd=" + secret, "not known here"},
        {2, "wall.db postgresql://u:" + secret + "@/postgres/w", "carries a password"},
        {2, "--wall=postgresql://u@/postgres/w?sslpassword=" + secret, "carries a password"},
    };
    for (const auto &row : cases) {
        for (const QString &command : {QString("revise -v -o %d/o "), QString("upgrade -v ")}) {
            const LogCapture log;
            const std::string printed = expect(row.code, command + row.address, row.says);
            EXPECT_EQ(printed.find(secret.toStdString()), std::string::npos) << printed;
        }
    }
    qunsetenv("PGPASSWORD");
    EXPECT_FALSE(QDir(in("%d/o")).exists());
    executeOnServer(socketDir, wall,
                    QString("GRANT USAGE ON SCHEMA \"%1\" TO guest; GRANT SELECT ON ALL TABLES IN"
                            " SCHEMA \"%1\" TO guest")
                        .arg(wall));
    EXPECT_EQ(valueOfWall(server.address(wall, "guest")), 1);
    EXPECT_NE(import(server.address(wall, "guest"), smallWall, 2), "");
}

TEST_F(StorePostgres, AServerThatCrashesLeavesWhatWasCommitted)
{
    const PostgresServer server(m_dir.path());
    if (!server.absence().empty())
        GTEST_SKIP() << server.absence();
    const QString wall = server.address("wall");
    ASSERT_EQ(import(wall, largeWall, 1), "");
    std::mt19937 random(1);
    int value = 1;
    for (int round = 0; round < roundCount(4, 40); ++round) {
        const auto delay = std::chrono::milliseconds(random() % 300);
        std::thread crash([&] {
            std::this_thread::sleep_for(delay);
            server.tell("crash");
        });
        if (round % 2 == 0) {
            while (import(wall, largeWall, value + 1) == "")
                ++value;
        } else {
            int code = 0;
            while (code == 0)
                code = shell("%p revise '" + wall + "' -o %d/o --table --force -q").code;
            EXPECT_EQ(code, 3);
        }
        crash.join();
        server.tell("again");
        expect(0, "revise " + wall + " -o %d/o --table --force -q");
        expect(0, "verify %d/o " + wall);
        const int after = valueOfWall(wall);
        EXPECT_TRUE(after == value || (round % 2 == 0 && after == value + 1)) << after;
        value = after + 1;
        EXPECT_EQ(import(wall, largeWall, value), "");
    }
}

/// The commands of a document; the comment at the end of a line is the exit code that it names.
QString documentedScript(const QString &path)
{
    QString script;
    const QStringList blocks = QString::fromUtf8(readFile(path)).split("```");
    for (int i = 1; i < blocks.size(); i += 2) {
        for (const QString &line : blocks[i].section('\n', 1).split('\n', Qt::SkipEmptyParts)) {
            const QString code = line.section("  # exit code ", 1);
            script += line + "\n[ $? = " + (code.isEmpty() ? "0" : code) + " ] || exit 99\n";
        }
    }
    return script;
}

TEST_F(StorePostgres, EveryDocumentedCommandDoesWhatIsSaid)
{
    const PostgresServer server(m_dir.path());
    if (!server.absence().empty())
        GTEST_SKIP() << server.absence();
    const QString script = documentedScript(QStringLiteral(SOURCE_DIR "/docs/several-stations.md"));
    EXPECT_GT(script.count("seamrevise"), 10);
    const Outcome outcome = shell("cd %d; set -x; export PGUSER=station PGHOST="
                                  + server.socketDir() + "; PATH=$(dirname %p):$PATH\n"
                                  + QString(script).replace("wallserver", server.socketDir()));
    EXPECT_EQ(outcome.code, 0) << outcome.printed;
    EXPECT_TRUE(QFile::exists(in("%d/delivery/8")));
}

/// Runs a function in a process that is killed after some time, or has come to its end.
void runKilled(std::chrono::milliseconds delay, const std::function<void()> &function)
{
    const pid_t child = fork();
    if (child == 0) {
        function();
        _exit(0);
    }
    std::this_thread::sleep_for(delay);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

using StoreSqlite = Seamrevise;

TEST_F(StoreSqlite, AWriterThatIsKilledLeavesWhatWasCommitted)
{
    const QString wall = in("%d/w.db");
    ASSERT_EQ(import(wall, largeWall, 1), "");
    std::mt19937 random(1);
    int value = 1;
    for (int round = 0; round < roundCount(4, 40); ++round) {
        runKilled(std::chrono::milliseconds(random() % 200), [&] {
            for (int next = value + 1; import(wall, largeWall, next) == "";)
                ++next;
        });
        const int after = valueOfWall(wall);
        EXPECT_GE(after, value);
        value = after + 1;
        EXPECT_EQ(import(wall, largeWall, value), "");
    }
}

/// What the first version of the program wrote.
void makeVersionOne(const QString &path)
{
    ASSERT_EQ(import(path, largeWall, 5), "");
    for (const char *const statement :
         {"DROP TABLE revisions", "PRAGMA user_version = 1", "CREATE TABLE notes (text)",
          "INSERT INTO notes VALUES ('kept')"})
        execute(path, statement);
    // Pages of the size that they had.
    execute(path, "PRAGMA page_size = 4096; ");
    execute(path, QStringLiteral("VACUUM INTO '%1.old'").arg(path));
    EXPECT_EQ(rename((path + ".old").toUtf8(), path.toUtf8()), 0);
}

TEST_F(StoreSqlite, OldFilesAreReadAndUpgradedWholeOrNotAtAll)
{
    const QString wall = in("%d/w.db");
    makeVersionOne(wall);
    const QByteArray old = readFile(wall);
    EXPECT_EQ(valueOfWall(wall), 5);
    EXPECT_TRUE(import(wall, largeWall, 6).contains("seamrevise upgrade"));
    QFile::setPermissions(wall, QFile::ReadOwner | QFile::WriteOwner);
    std::mt19937 random(1);
    for (int round = 0; round < roundCount(6, 60); ++round) {
        writeFile(wall, old);
        runKilled(std::chrono::milliseconds(random() % 60), [&] {
            SqlScreenStore store;
            store.upgrade(wall);
        });
        EXPECT_TRUE(execute(wall, "PRAGMA user_version").toInt() == 2 || readFile(wall) == old);
        EXPECT_EQ(valueOfWall(wall), 5);
    }
    writeFile(wall, old);
    expect(0, "upgrade %d/w.db", "schema version 2, was 1");
    expect(0, "upgrade %d/w.db", "as before");
    EXPECT_EQ(execute(wall, "PRAGMA page_size").toInt(), 65536);
    EXPECT_EQ(execute(wall, "SELECT text FROM notes"), "kept");
    EXPECT_EQ(QFile::permissions(wall) & QFile::ReadGroup, 0);
    EXPECT_EQ(valueOfWall(wall), 5);
    EXPECT_EQ(import(wall, largeWall, 6), ""); // nobody is known to have written it
    EXPECT_EQ(files("%d"), QStringList("w.db"));
    writeFile(wall, old.left(old.size() - 1000));
    expect(3, "upgrade %d/w.db", "cut short");
    expect(3, "upgrade %d/none.db", "no such file");
}

TEST(DatabaseAddress, IsAFileOrAUrl)
{
    const struct
    {
        const char *text, *parts; ///< user, host, port, database, wall; or "!" and a fault
    } cases[] = {
        {"wall.db", "file"},
        {"mysql://host/a/b", "file"},
        {"postgresql://station@host:5432/walls/north", "station|host|5432|walls|north"},
        {"postgres://h/walls/north%20side", "|h|-1|walls|north side"},
        {"postgresql:///walls/north", "||-1|walls|north"},
        {"postgresql://s@/w/n?host=/run/pg&port=6000&sslmode=require", "s|/run/pg|6000|w|n"},
        {"postgresql://%2Frun%2Fpg/w/n", "|/run/pg|-1|w|n"},
        {"postgresql://s@[::1]:7/w/n", "s|::1|7|w|n"},
        {"postgresql://host/walls", "!names no DATABASE/WALL"},
        {"postgresql://host/walls/north/east", "!names no DATABASE/WALL"},
        {"postgresql://host:99999/w/n", "!port"},
        {"postgresql://host:x/w/n", "!port"},
        {"postgresql://h[1]/w/n", "!is not postgresql://"},
        {"postgresql://host/w/pg_catalog", "!cannot have the name"},
        {"postgresql://host/w/n?dbname=x", "!parameter"},
        {"postgresql://u:p@host/w/n", "!password"},
        {"postgresql://u:p/?@@host/w/n", "!password"},
        {"postgresql://host/w/n?p%61ssword=x", "!password"},
    };
    for (const auto &row : cases) {
        QString fault;
        const DatabaseAddress address = parseAddress(row.text, fault);
        const QString parts = QStringList{address.user, address.host, QString::number(address.port),
                                          address.database, address.wall}
                                  .join('|');
        if (*row.parts == '!')
            EXPECT_TRUE(fault.contains(row.parts + 1)) << row.text << fault.toStdString();
        else
            EXPECT_EQ(fault + (address.isUrl ? parts : "file"), row.parts) << row.text;
    }
}

/// How long a process of its own takes to read a wall, as a command does: in milliseconds.
double readingTime(const QString &wall)
{
    QElapsedTimer timer;
    timer.start();
    const pid_t child = fork();
    if (child == 0) {
        SqlScreenStore store;
        CoefsZoneInfo zone;
        bool isRead = store.open(wall);
        for (int number = 1; number <= 48; ++number)
            isRead = isRead && store.readAreaCoefficients(number, zone) == 0;
        _exit(isRead ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return timer.nsecsElapsed() / 1e6;
}

TEST_F(StorePostgres, ReadsAWallInTwiceTheTimeOfAFile)
{
    const PostgresServer server;
    if (!server.absence().empty())
        GTEST_SKIP() << server.absence();
    if (!qEnvironmentVariableIsSet("SEAMREVISE_LONG_TESTS"))
        GTEST_SKIP() << "a measurement, with SEAMREVISE_LONG_TESTS only";
    const QString walls[] = {in("%d/w.db"), server.address(QDir(m_dir.path()).dirName())};
    double best[] = {1e9, 1e9};
    for (const QString &wall : walls)
        EXPECT_EQ(shell("%p simulate '" + wall + "' --size 3840x2160 --grid 8x6").code, 0);
    for (int round = 0; round < 20; ++round)
        best[round % 2] = std::min(best[round % 2], readingTime(walls[round % 2]));
    std::cout << "file " << best[0] << " ms, server " << best[1] << " ms\n";
    EXPECT_LE(best[1], 2.0 * best[0]);
}

} // namespace
