#include "coeffiles/textdump.h"
#include "testsupport.h"
#include <seamrevision/funcrunningstate.h>

#include <gtest/gtest.h>

using Bytes = std::vector<unsigned char>;
using Words = std::vector<unsigned short>;

TEST(TextDump, LinesAreWrittenByteForByte)
{
    const QTemporaryDir directory;
    const ExportTo exporting(directory.path());
    const Words words{0, 1, 9, 10, 99, 2048, 65535};
    outData(words, "d", ",", 3, "overwritten");
    const std::pair<QString, const char *> rows[] = {
        {outData(words, "a", ",", 9, QString()), "\r\n0,1,9,10,99,2048,65535,\r\n"},
        {outData(words, "b", ",", 3, QString()), "\r\n0,1,9,\r\n10,99,2048,\r\n65535,\r\n"},
        {outData(words, "c", QString::fromUtf8("→"), 7, QString::fromUtf8("Köpfe")),
         "Köpfe\r\n0→1→9→10→99→2048→65535→\r\n"},
        {outData(words, "d", ",", 0, QString()), "\r\n"},
        {outData(words, "e", ",", -1, "none"), "none\r\n"},
        {outData(Words(), "f", ",", 9, QString()), "\r\n"},
        {outData(Bytes{0, 255}, "g", QString(), 1, QString()), "\r\n0\r\n255\r\n"},
        {outData({{-1, 4096}, {}, {INT_MIN, INT_MAX}}, "h", ",", QString()),
         "\r\n-1,4096,\r\n\r\n-2147483648,2147483647,\r\n"},
    };
    for (const auto &[path, content] : rows)
        EXPECT_EQ(readFile(path).toStdString(), content);
    EXPECT_EQ(filesIn(directory.path()).size(), 8U);
}

TEST(TextDump, BlocksAreJoinedWithoutASeam)
{
    const QTemporaryDir directory;
    const ExportTo exporting(directory.path());
    Words values(300000);
    QByteArray expected("\r\n");
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = static_cast<unsigned short>(i * 7919);
        expected += QByteArray::number(values[i]) + ", " + (i % 9 == 8 ? "\r\n" : "");
    }
    expected += "\r\n"; // the last line has three values
    EXPECT_EQ(readFile(outData(values, "long", ", ", 9, QString())), expected);
}

TEST(TextDump, NothingHappensWhileExportIsOffOrTheDirectoryIsMissing)
{
    const QTemporaryDir directory;
    QStringList events;
    FuncRunningState::setObserver([&](const char *event, const QString &) { events << event; });
    EXPECT_EQ(outData(Bytes{1}, "a", ",", 1, QString()), QString());
    EXPECT_TRUE(events.empty());
    const QString missing = directory.filePath("missing");
    const ExportTo exporting(missing);
    EXPECT_EQ(outData(Bytes{1}, "a", ",", 1, QString()), missing + "/a");
    FuncRunningState::setObserver(nullptr);
    EXPECT_EQ(events, QStringList({"entered", "left"}));
    EXPECT_TRUE(filesIn(directory.path()).empty());
}
