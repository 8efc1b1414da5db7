#include "exchange/coefficientfile.h"

#include "programsupport.h"

#include <gtest/gtest.h>

using namespace seamrevise;

namespace
{

/// openssl enc -des-cbc -provider legacy -provider default -K 71616c7665746f72
///     -iv 71616c7665746f72, of the bytes 78563412 feffffff ffffff3f.
const QByteArray openSslFile = QByteArray::fromHex("779797c6d8be44f82130ca64e8e66f2f");

TEST_F(Seamrevise, CoefficientFilesAreReadWithoutAnEngine)
{
    std::vector<quint16> single;
    const QString tiny = in("%d/tiny");
    QByteArray hex = readFile(QStringLiteral(TEST_DATA_DIR "/tiny-coefficient-file.hex"));
    hex = hex.mid(hex.indexOf('\n'));
    writeFile(tiny, QByteArray::fromHex(hex));
    EXPECT_EQ(readCoefficientFile(tiny, 9, single), "");
    EXPECT_EQ(single, (std::vector<quint16>{2048, 0, 0, 0, 2048, 0, 0, 0, 2048}));

    writeFile(in("%d/1_m"), openSslFile);
    std::vector<qint32> layered;
    EXPECT_EQ(readCoefficientFile(in("%d/1_m"), 3, layered), "");
    EXPECT_EQ(layered, (std::vector<qint32>{0x12345678, -2, 0x3FFFFFFF}));
    std::vector<quint32> words;
    EXPECT_EQ(readCoefficientFile(in("%d/1_m"), 3, words), "");
    EXPECT_EQ(words, (std::vector<quint32>{0x12345678, 0xFFFFFFFE, 0x3FFFFFFF}));

    QByteArray badEnd = openSslFile;
    badEnd[badEnd.size() - 1] = static_cast<char>(~badEnd[badEnd.size() - 1]);
    QDir().mkpath(in("%d/dir"));
    const struct
    {
        const char *name;
        QByteArray content;
        const char *says;
    } cases[] = {
        {"none", {}, "missing"},
        {"dir", {}, "is not a file"},
        {"empty", "", "has 0 bytes instead of 16"},
        {"cut", openSslFile.left(8), "has 8 bytes instead of 16"},
        {"long", openSslFile + openSslFile, "has 32 bytes instead of 16"},
        {"end", badEnd, "does not decrypt to the 12 bytes"},
    };
    for (const auto &row : cases) {
        const QString path = in("%d/") + row.name;
        if (!row.content.isNull())
            writeFile(path, row.content);
        const QString fault = readCoefficientFile(path, 3, layered);
        EXPECT_TRUE(fault.startsWith(path) && fault.contains(row.says)) << fault.toStdString();
    }
}

} // namespace
