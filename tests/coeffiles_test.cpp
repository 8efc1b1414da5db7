#include "coeffiles/coefcontainer.h"
#include "multilayer/multilayerpartitionmerge.h"
#include "testsupport.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

using wallmodel::Pixels;

namespace
{

using Values = std::vector<unsigned short>;

struct SingleLayer : PartitionMerge
{
    using PartitionMerge::m_areas;
    using PartitionMerge::saveCombineAreaCoef;
};

struct Layered : MultiLayerPartitionMerge
{
    Layered()
        : MultiLayerPartitionMerge({})
    {
    }
    using MultiLayerPartitionMerge::saveCombineAreaCoef;
    using PartitionMerge::m_areas;
};

QByteArray hexFile(const char *name)
{
    QByteArray hex = readFile(QStringLiteral(TEST_DATA_DIR "/") + name);
    hex.remove(0, hex.indexOf('\n')); // the first line names the source
    return QByteArray::fromHex(hex);
}

} // namespace

/// A directory and partitions "1" of 2 x 1 pixels and "2" with a null record.
class CoefFiles : public ::testing::Test
{
protected:
    CoefFiles()
        : partitions({{1, {0, 0, 0, 1}}})
    {
        partitions.map.insert("2", nullptr);
        single.m_areas = partitions.map;
        layered.m_areas = partitions.map;
        layered.setLayerSize(1);
        zone.setAreaID("1");
        zone.m_arrayData = {0x1234, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 2048, 65535};
        rows.setAreaID("1");
        rows.m_multiLayerCoefs = {{0x01020304, -1, 4096}, {INT_MIN, INT_MAX, 0}};
        rows.m_zipCoefs = {1, 2, 3, 4, 255, 254, 253, 252};
    }

    QString dir() const { return directory.path(); }
    QString path(const char *name) const { return dir() + QLatin1Char('/') + QLatin1String(name); }

    QTemporaryDir directory;
    Partitions partitions;
    SingleLayer single;
    Layered layered;
    CoefsZoneInfo zone;
    MultiLayerCoefZoneInfo rows;
    LogCapture log;
};

TEST_F(CoefFiles, WhatIsWrittenIsReadBackAndReplacesWhatWasThere)
{
    zone.m_arrayData.resize(900, 3000);
    ASSERT_TRUE(single.saveCombineAreaCoef(dir(), &zone));
    zone.m_arrayData.resize(18);
    ASSERT_TRUE(single.saveCombineAreaCoef(dir(), &zone));
    EXPECT_EQ(readFile(path("1")).size(), 40); // 36 bytes and four of padding
    EXPECT_EQ(decrypted(readFile(path("1"))).left(4), QByteArray("\x34\x12\x01\x00", 4));
    Values values(99, 7);
    EXPECT_TRUE(single.readCoef(dir(), "1", values));
    EXPECT_EQ(values, zone.m_arrayData);
    zone.m_arrayData.clear();
    ASSERT_TRUE(single.saveCombineAreaCoef(dir(), &zone));
    EXPECT_EQ(readFile(path("1")).size(), 8);

    ASSERT_TRUE(layered.saveCombineAreaCoef(dir(), &rows));
    EXPECT_EQ(decrypted(readFile(path("1_m"))).left(8),
              QByteArray("\x04\x03\x02\x01\xff\xff\xff\xff", 8));
    Pixels table{{7}, {8, 8, 8, 8}, {9}};
    std::vector<unsigned char> packed;
    EXPECT_TRUE(layered.readCoef(dir(), "1", table, packed));
    EXPECT_EQ(table, (Pixels{{0x01020304, -1, 4096}, {INT_MIN, INT_MAX, 0, 8}}));
    EXPECT_EQ(packed, rows.m_zipCoefs);
}

TEST_F(CoefFiles, LayeredRowsAreCutOrFilledToTheLayerCount)
{
    rows.m_multiLayerCoefs = {{1, 2, 3, 4, 5}, {6}};
    ASSERT_TRUE(layered.saveCombineAreaCoef(dir(), &rows));
    Pixels table;
    std::vector<unsigned char> packed;
    EXPECT_TRUE(layered.readCoef(dir(), "1", table, packed));
    EXPECT_EQ(table, (Pixels{{1, 2, 3}, {6, 0, 0}}));
}

TEST_F(CoefFiles, TheDocumentedFileIsReadAndWrittenByteForByte)
{
    const QByteArray documented = hexFile("tiny-coefficient-file.hex");
    writeFile(path("1"), documented);
    const Partitions onePixel({{1, {0, 0, 0, 0}}});
    single.m_areas = onePixel.map;
    Values values;
    ASSERT_TRUE(single.readCoef(dir(), "1", values));
    EXPECT_EQ(values, (Values{2048, 0, 0, 0, 2048, 0, 0, 0, 2048}));
    zone.m_arrayData = values;
    ASSERT_TRUE(single.saveCombineAreaCoef(dir(), &zone));
    EXPECT_EQ(readFile(path("1")).toHex(), documented.toHex());
}

TEST_F(CoefFiles, OpensslCommandDecryptsThem)
{
    const QString openssl = QStandardPaths::findExecutable("openssl");
    if (openssl.isEmpty())
        GTEST_SKIP() << "no openssl command";
    ASSERT_TRUE(single.saveCombineAreaCoef(dir(), &zone));
    QProcess process;
    process.start(openssl,
                  {"enc", "-d", "-des-cbc", "-provider", "legacy", "-provider", "default", "-K",
                   "71616c7665746f72", "-iv", "71616c7665746f72", "-in", path("1")});
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.readAllStandardOutput(),
              QByteArray(reinterpret_cast<const char *>(zone.m_arrayData.data()), 36));
}

TEST_F(CoefFiles, ReadersCheckInTheirOrderAndLeaveTheirOutputsAlone)
{
    writeFile(path("9"), "12345678");
    writeFile(path("9_m"), "12345678");
    writeFile(path("2"), "12345678");
    QDir(dir()).mkdir("1");
    QDir(dir()).mkdir("1_m");
    struct Row
    {
        const char *areaId;
        const char *single;
        const char *layered;
    };
    const Row rowsOfTable[] = {
        {"5", "Coefs file not exists!", "Area's id is error!"},
        {"9", "Area's id is error!", "Area's id is error!"},
        {"2", "Area's id is error!", "Area's id is error!"},
        {"1", "Coefs file open failed!", "Coefs file open failed!"},
    };
    for (const Row &row : rowsOfTable) {
        Values values{7};
        Pixels table{{7}};
        std::vector<unsigned char> packed{7};
        EXPECT_FALSE(single.readCoef(dir(), row.areaId, values));
        const QString singleLine = log.take().last();
        EXPECT_FALSE(layered.readCoef(dir(), row.areaId, table, packed));
        const QString layeredLine = log.take().last();
        EXPECT_TRUE(singleLine.startsWith("C ") && singleLine.endsWith(row.single)) << row.areaId;
        EXPECT_TRUE(layeredLine.startsWith("C ") && layeredLine.endsWith(row.layered))
            << row.areaId;
        EXPECT_EQ(values, Values{7});
        EXPECT_EQ(table, Pixels{{7}});
        EXPECT_EQ(packed, std::vector<unsigned char>{7});
    }
}

TEST_F(CoefFiles, CutOrDamagedFilesNeverCrashAndNeverGiveHalfAPartition)
{
    ASSERT_TRUE(single.saveCombineAreaCoef(dir(), &zone));
    ASSERT_TRUE(layered.saveCombineAreaCoef(dir(), &rows));
    const QByteArray whole = readFile(path("1"));
    const QByteArray wholeTable = readFile(path("1_m"));
    const auto readBoth = [&](const QByteArray &content, const QByteArray &tableContent) {
        writeFile(path("1"), content);
        writeFile(path("1_m"), tableContent);
        Values values{7};
        Pixels table{{7}};
        std::vector<unsigned char> packed;
        const bool readSingle = single.readCoef(dir(), "1", values);
        const bool readLayered = layered.readCoef(dir(), "1", table, packed);
        EXPECT_EQ(values.size(), readSingle ? 18U : 1U);
        EXPECT_EQ(table.size(), readLayered ? 2U : 1U);
        return std::make_pair(readSingle, readLayered);
    };
    for (int length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(readBoth(whole.left(length), wholeTable.left(std::min(length, 24))),
                  std::make_pair(false, false));
        EXPECT_TRUE(log.take().last().endsWith("Coefs file is too short!")) << length;
    }
    for (int byte = 0; byte < whole.size(); ++byte) {
        QByteArray damaged = whole;
        QByteArray damagedTable = wholeTable;
        damaged[byte] = static_cast<char>(damaged[byte] ^ 0x40);
        damagedTable[byte % wholeTable.size()] = static_cast<char>(byte);
        readBoth(damaged, damagedTable);
    }
}

TEST_F(CoefFiles, WritersFailWithoutLeavingAnythingBehind)
{
    writeFile(path("file"), "in the way");
    QDir(dir()).mkdir("1");
    QDir(dir()).mkdir("1_zip");
    EXPECT_FALSE(single.saveCombineAreaCoef(path("file/below"), &zone));
    EXPECT_TRUE(log.take().last().endsWith("mkpath failed!"));
    EXPECT_FALSE(single.saveCombineAreaCoef(dir(), &zone));
    EXPECT_TRUE(log.take().last().endsWith("Save encryptFile failed!"));
    EXPECT_FALSE(single.saveCombineAreaCoef(path("new"), nullptr));
    EXPECT_FALSE(layered.saveCombineAreaCoef(path("file/below"), &rows));
    EXPECT_TRUE(log.take().last().endsWith("mkpath failed!"));
    EXPECT_FALSE(layered.saveCombineAreaCoef(path("new"), nullptr));
    EXPECT_FALSE(QDir(path("new")).exists());
    EXPECT_FALSE(layered.saveCombineAreaCoef(dir(), &rows));
    EXPECT_TRUE(log.take().last().endsWith("Save encryptFile failed!"));
    // The table was written before its packed form failed.
    EXPECT_EQ(filesIn(dir()).size(), 2U);
    EXPECT_EQ(decrypted(readFile(path("1_m"))).size(), 24);
}

TEST_F(CoefFiles, ARelativeDirectoryIsAlsoMadeBeneathItself)
{
    const QString before = QDir::currentPath();
    QDir::setCurrent(dir());
    EXPECT_TRUE(single.saveCombineAreaCoef("out/coefs", &zone));
    QDir::setCurrent(before);
    EXPECT_TRUE(QFile::exists(path("out/coefs/1")));
    EXPECT_TRUE(QDir(path("out/coefs/out/coefs")).exists());
}
