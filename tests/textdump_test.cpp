#include "coeffiles/textdump.h"
#include "records/funcrunningstate.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <climits>

TEST(TextDump, LinesAreWrittenByteForByte)
{
    const QTemporaryDir directory;
    const ExportTo exporting(directory.path());
    using Bytes = std::vector<unsigned char>;
    using Words = std::vector<unsigned short>;
    using Table = std::vector<std::vector<int>>;
    const Words words{0, 1, 9, 10, 99, 2048, 65535};
    struct Row
    {
        QString path;
        const char *content;
    };
    const Row rows[] = {
        {outData(words, "a", ",", 9, QString()), "\r\n0,1,9,10,99,2048,65535,\r\n"},
        {outData(words, "b", ",", 3, QString()), "\r\n0,1,9,\r\n10,99,2048,\r\n65535,\r\n"},
        {outData(words, "c", QString::fromUtf8("→"), 7, QString::fromUtf8("Köpfe")),
         "Köpfe\r\n0→1→9→10→99→2048→65535→\r\n"},
        {outData(words, "d", ",", 0, QString()), "\r\n"},
        {outData(words, "d", ",", -1, "again"), "again\r\n"},
        {outData(Words(), "e", ",", 9, QString()), "\r\n"},
        {outData(Bytes{0, 255}, "f", QString(), 1, QString()), "\r\n0\r\n255\r\n"},
        {outData(Table{{-1, 4096}, {}, {INT_MIN, INT_MAX}}, "g", ",", QString()),
         "\r\n-1,4096,\r\n\r\n-2147483648,2147483647,\r\n"},
    };
    const std::map<QString, QByteArray> files = filesIn(directory.path());
    for (const Row &row : rows) {
        if (row.path == rows[3].path && row.content == rows[3].content)
            continue; // overwritten by the row after it
        EXPECT_EQ(readFile(row.path).toStdString(), row.content);
    }
    EXPECT_EQ(files.size(), 7U);
}

TEST(TextDump, BlocksAreJoinedWithoutASeam)
{
    const QTemporaryDir directory;
    const ExportTo exporting(directory.path());
    std::vector<unsigned short> values(300000);
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
    std::vector<QString> events;
    FuncRunningState::setObserver([&](const char *event, const QString &function) {
        events.push_back(QLatin1String(event) + QLatin1Char(' ') + function);
    });
    EXPECT_EQ(outData(std::vector<unsigned char>{1}, "a", ",", 1, QString()), QString());
    EXPECT_TRUE(events.empty());
    {
        const ExportTo exporting(directory.path() + "/missing");
        EXPECT_EQ(outData(std::vector<unsigned char>{1}, "a", ",", 1, QString()),
                  directory.path() + "/missing/a");
    }
    FuncRunningState::setObserver(nullptr);
    EXPECT_EQ(events, (std::vector<QString>{"entered outData", "left outData"}));
    EXPECT_TRUE(filesIn(directory.path()).empty());
}
