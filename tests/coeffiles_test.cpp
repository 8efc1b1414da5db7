#include "testsupport.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <csignal>
#include <numeric>
#include <sys/resource.h>

using wallmodel::Pixels;

namespace
{

using Values = std::vector<unsigned short>;
using Bytes = std::vector<unsigned char>;

/// No file of this process grows beyond some bytes while it lives.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*const m_handler)(int);
};

/// A directory, partition "1" of 2 x 1 pixels and "2" with a null record; one layer.
class CoefFiles : public ::testing::Test
{
protected:
    CoefFiles()
    {
        host.areas.insert("2", nullptr);
        single.m_areas = host.areas;
        layered.m_areas = host.areas;
        layered.setLayerSize(1);
        zone.setAreaID("1");
        zone.m_arrayData = {0x1234, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 2048, 65535};
        rows.setAreaID("1");
        rows.m_multiLayerCoefs = {{0x01020304, -1, 4096, 5}, {INT_MIN}};
        rows.m_zipCoefs = {1, 2, 3, 4, 255, 254, 253, 252};
    }

    bool saveBoth()
    {
        return single.saveCombineAreaCoef(host.path(), &zone)
            && layered.saveCombineAreaCoef(host.path(), &rows);
    }

    /// Reads into what the readers must leave alone when they fail.
    std::pair<bool, bool> readBoth(const char *id)
    {
        values = {7};
        table = {{7}, {8, 8, 8, 8}, {9}};
        packed = {7};
        const bool isRead = single.readCoef(host.path(), id, values);
        singleSays = log.take().last();
        const bool isReadToo = layered.readCoef(host.path(), id, table, packed);
        layeredSays = log.take().last();
        return {isRead, isReadToo};
    }

    Host host{evenWall(1, 2, 1, 0, {0})};
    SingleLayer single;
    Layered layered;
    CoefsZoneInfo zone;
    MultiLayerCoefZoneInfo rows;
    Values values;
    Pixels table;
    Bytes packed;
    LogCapture log;
    QString singleSays, layeredSays;
};

TEST_F(CoefFiles, WhatIsWrittenIsReadBackAndReplacesWhatWasThere)
{
    CoefsZoneInfo larger = zone;
    larger.m_arrayData.resize(900, 3000);
    ASSERT_TRUE(single.saveCombineAreaCoef(host.path(), &larger));
    ASSERT_TRUE(saveBoth());
    EXPECT_EQ(readFile(host.path("1")).size(), 40); // 36 bytes and four of padding
    EXPECT_EQ(decrypted(readFile(host.path("1"))).left(4), QByteArray("\x34\x12\x01\x00", 4));
    EXPECT_EQ(decrypted(readFile(host.path("1_m"))).left(8), "\x04\x03\x02\x01\xff\xff\xff\xff");
    EXPECT_EQ(readBoth("1"), std::make_pair(true, true));
    EXPECT_EQ(values, zone.m_arrayData);
    EXPECT_EQ(table, (Pixels{{0x01020304, -1, 4096}, {INT_MIN, 0, 0, 8}}));
    EXPECT_EQ(packed, rows.m_zipCoefs);
    const int *const firstRow = table[0].data();
    table[0].assign(2, 7); // its memory still holds three
    EXPECT_TRUE(layered.readCoef(host.path(), "1", table, packed));
    EXPECT_EQ(table, (Pixels{{0x01020304, -1, 4096}, {INT_MIN, 0, 0, 8}}));
    EXPECT_EQ(table[0].data(), firstRow); // what has room is filled in place
    zone.m_arrayData.clear();
    ASSERT_TRUE(saveBoth());
    EXPECT_EQ(readFile(host.path("1")).size(), 8);
}

TEST_F(CoefFiles, TheDocumentedFileIsReadAndWrittenByteForByte)
{
    QByteArray documented = readFile(TEST_DATA_DIR "/tiny-coefficient-file.hex");
    documented = QByteArray::fromHex(documented.mid(documented.indexOf('\n'))); // behind its source
    writeFile(host.path("1"), documented);
    const Host onePixel(evenWall(1, 1, 1, 0, {0}));
    single.m_areas = onePixel.areas;
    readBoth("1");
    EXPECT_EQ(values, (Values{2048, 0, 0, 0, 2048, 0, 0, 0, 2048}));
    zone.m_arrayData = values;
    ASSERT_TRUE(saveBoth());
    EXPECT_EQ(readFile(host.path("1")).toHex(), documented.toHex());
}

TEST_F(CoefFiles, OpensslCommandDecryptsThem)
{
    const QString openssl = QStandardPaths::findExecutable("openssl");
    if (openssl.isEmpty())
        GTEST_SKIP() << "no openssl command";
    zone.m_arrayData.resize(9001);
    std::iota(zone.m_arrayData.begin(), zone.m_arrayData.end(), 40000);
    ASSERT_TRUE(saveBoth());
    QProcess process;
    process.start(openssl,
                  {"enc", "-d", "-des-cbc", "-provider", "legacy", "-provider", "default", "-K",
                   "71616c7665746f72", "-iv", "71616c7665746f72", "-in", host.path("1")});
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.readAllStandardOutput(),
              QByteArray(reinterpret_cast<const char *>(zone.m_arrayData.data()), 2 * 9001));
}

TEST_F(CoefFiles, ReadersCheckInTheirOrderAndLeaveTheirOutputsAlone)
{
    for (const char *const name : {"9", "9_m", "2"})
        writeFile(host.path(name), "12345678");
    QDir(host.path()).mkpath("1");
    QDir(host.path()).mkpath("1_m");
    const struct
    {
        const char *id, *single, *layered;
    } cases[] = {
        {"5", "Coefs file not exists!", "Area's id is error!"},
        {"9", "Area's id is error!", "Area's id is error!"},
        {"2", "Area's id is error!", "Area's id is error!"},
        {"1", "Coefs file open failed!", "Coefs file open failed!"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(readBoth(row.id), std::make_pair(false, false));
        EXPECT_TRUE(singleSays.startsWith("C ") && singleSays.endsWith(row.single)) << row.id;
        EXPECT_TRUE(layeredSays.startsWith("C ") && layeredSays.endsWith(row.layered)) << row.id;
        EXPECT_EQ(values, Values{7});
        EXPECT_EQ(table.size(), 3U);
        EXPECT_EQ(packed, Bytes{7});
    }
}

TEST_F(CoefFiles, CutOrDamagedFilesNeverCrashAndNeverGiveHalfAPartition)
{
    ASSERT_TRUE(saveBoth());
    for (const QByteArray name : {"1", "1_m", "1_zip"}) {
        const QByteArray whole = readFile(host.path(name));
        const auto isReadWhole = [&](const QByteArray &content) {
            writeFile(host.path(name), content);
            const auto isRead = readBoth("1");
            EXPECT_EQ(values.size(), isRead.first ? 18U : 1U);
            EXPECT_EQ(table.size(), isRead.second || name == "1_zip" ? 2U : 3U); // is read first
            EXPECT_EQ(packed == Bytes{7}, !isRead.second);
            return isRead.first && isRead.second;
        };
        for (int length = 0; length < whole.size(); ++length) {
            EXPECT_FALSE(isReadWhole(whole.left(length)));
            EXPECT_TRUE((name == "1" ? singleSays : layeredSays).contains("too short!"));
        }
        for (int bit = 0; bit < 8 * whole.size(); ++bit) {
            QByteArray damaged = whole;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            isReadWhole(damaged);
        }
        writeFile(host.path(name), whole);
    }
    // Without a layer, no packed byte is missed.
    layered.setLayerSize(0);
    writeFile(host.path("1_zip"), QByteArray());
    EXPECT_TRUE(readBoth("1").second);
    EXPECT_EQ(packed, Bytes());
}

TEST_F(CoefFiles, WritersFailWithoutLeavingAnythingBehind)
{
    writeFile(host.path("file"), "in the way");
    QDir(host.path()).mkpath("1");
    QDir(host.path()).mkpath("1_zip");
    EXPECT_FALSE(single.saveCombineAreaCoef(host.path("new"), nullptr));
    EXPECT_FALSE(layered.saveCombineAreaCoef(host.path("new"), nullptr));
    EXPECT_FALSE(QDir(host.path("new")).exists());
    for (const char *const below : {"file/below", ""}) {
        const char *const says = *below ? "mkpath failed!" : "Save encryptFile failed!";
        EXPECT_FALSE(single.saveCombineAreaCoef(host.path(below), &zone));
        EXPECT_TRUE(log.take().last().endsWith(says));
        EXPECT_FALSE(layered.saveCombineAreaCoef(host.path(below), &rows));
        EXPECT_TRUE(log.take().last().endsWith(says));
    }
    // The table was written before its packed form failed.
    EXPECT_EQ(filesIn(host.path()).size(), 2U);
    EXPECT_EQ(decrypted(readFile(host.path("1_m"))).size(), 24);
}

TEST_F(CoefFiles, WhatTheDiskDoesNotTakeIsNotWritten)
{
    const auto expectFailures = [&] {
        EXPECT_FALSE(single.saveCombineAreaCoef(host.path(), &zone));
        EXPECT_TRUE(log.take().last().endsWith("Save encryptFile failed!"));
        EXPECT_FALSE(layered.saveCombineAreaCoef(host.path(), &rows));
        EXPECT_TRUE(log.take().last().endsWith("Save encryptFile failed!"));
    };
    // A full device: nothing is taken at the flush.
    QFile::link("/dev/full", host.path("1"));
    QFile::link("/dev/full", host.path("1_zip"));
    expectFailures();
    EXPECT_EQ(decrypted(readFile(host.path("1_m"))).size(), 24);
    QFile::remove(host.path("1"));
    QFile::remove(host.path("1_zip"));
    // A full quota: the first bytes are taken, in one piece or from the buffer.
    const FileSizeLimit limit(16);
    expectFailures();
    zone.m_arrayData.resize(90000);
    expectFailures();
    EXPECT_EQ(readFile(host.path("1")).size(), 16);
}

TEST_F(CoefFiles, ARelativeDirectoryIsAlsoMadeBeneathItself)
{
    const QString before = QDir::currentPath();
    QDir::setCurrent(host.path());
    EXPECT_TRUE(single.saveCombineAreaCoef("out/coefs", &zone));
    QDir::setCurrent(before);
    EXPECT_TRUE(QFile::exists(host.path("out/coefs/1")));
    EXPECT_TRUE(QDir(host.path("out/coefs/out/coefs")).exists());
}

} // namespace
