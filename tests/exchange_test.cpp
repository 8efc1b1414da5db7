#include "exchange/layoutfile.h"
#include "exchange/npyreader.h"
#include "exchange/sourcefile.h"
#include "exchange/textreader.h"

#include "programsupport.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace seamrevise;

namespace
{

/// A NumPy file; the length of its header may be told wrongly.
QByteArray npyFile(const QByteArray &dictionary, const QByteArray &data, int version = 1,
                   int moreLength = 0)
{
    QByteArray length(version == 1 ? 2 : 4, '\0');
    for (int i = 0; i < length.size(); ++i)
        length[i] = static_cast<char>((dictionary.size() + moreLength) >> (8 * i));
    return QByteArray("\x93NUMPY", 6) + static_cast<char>(version) + '\0' + length + dictionary
        + data;
}

QByteArray dictionary(const QByteArray &type, const QByteArray &shape, bool fortran = false)
{
    return "{'descr': '" + type + "', 'fortran_order': " + (fortran ? "True" : "False")
        + ", 'shape': " + shape + ", }\n";
}

/// A reader's faults, a line each.
std::string faultsOf(QStringList (*read)(QIODevice &, const WantedCoefficients &, Coefficients &),
                     QByteArray bytes, const WantedCoefficients &wanted, Coefficients &result)
{
    QBuffer file(&bytes);
    file.open(QIODevice::ReadOnly);
    return read(file, wanted, result).join('\n').toStdString();
}

template <typename Value>
QByteArray bytesOf(const std::vector<Value> &values, bool bigEndian)
{
    QByteArray bytes(static_cast<int>(values.size() * sizeof(Value)), '\0');
    const auto count = static_cast<qsizetype>(values.size());
    bigEndian ? qToBigEndian<Value>(values.data(), count, bytes.data())
              : qToLittleEndian<Value>(values.data(), count, bytes.data());
    return bytes;
}

TEST(Npy, FilesThatAreNoCoefficientsAreRefusedWithWhatTheyAre)
{
    const QByteArray good = dictionary("<u2", "(2, 3, 9)");
    const QByteArray data(2 * 3 * 9 * 2, '\1');
    const struct
    {
        QByteArray file;
        const char *says;
    } cases[] = {
        {npyFile(good, data.chopped(1)), "needs 108 bytes, 107 follow"},
        {npyFile(good, data + 'x'), "needs 108 bytes, 109 follow"},
        {npyFile(good, data).left(7), "ends within its header"},
        {npyFile(good, data).left(9), "ends within its header"},
        {npyFile(good, data).left(30), "ends within its header"},
        {npyFile(good, data, 0), "version 0; versions 1 to 3"},
        {npyFile(good, data, 4), "version 4; versions 1 to 3"},
        {npyFile(good, data, 2, 0x7FFF0000), "longer than that of any array"},
        {npyFile(good, data, 1, -3), "is missing at byte"},
        {npyFile(good, data, 1, 3), "the end is missing"},
        {npyFile("", data), "\"{\" is missing"},
        {npyFile("{}", data), "its header has no descr"},
        {npyFile("{'descr': '<u2', 'shape': (2, 3, 9)}", data), "has no fortran_order"},
        {npyFile("{'descr': '<u2', 'descr': '<u2'}", data), "has descr twice"},
        {npyFile("{'desc': '<u2'}", data), "a member desc that arrays do not have"},
        {npyFile("{'descr': '<u2'", data), "\",\" or \"}\" is missing"},
        {npyFile("{'descr': '<u2}", data), "a type in quotes is missing"},
        {npyFile("{'descr': '\\u2'}", data), "a type in quotes is missing"},
        {npyFile("{descr: '<u2'}", data), "a name in quotes is missing"},
        {npyFile("{'descr' '<u2'}", data), "\":\" is missing"},
        {npyFile("{'fortran_order': 1}", data), "True or False is missing"},
        {npyFile(dictionary("<u2", "[2, 3, 9]"), data), "\"(\" is missing"},
        {npyFile(dictionary("<u2", "(-2, 3, 9)"), data), "a number that fits 64 bits"},
        {npyFile(dictionary("<u2", "(9999999999999999999, 3, 9)"), data), "that fits 64 bits"},
        {npyFile(dictionary("<u2", "(2 3)"), data), "\",\" is missing"},
        {npyFile(dictionary("<u2", "(54)"), data), "\",\" is missing"},
        {npyFile(dictionary("<u2", "(" + QByteArray("1,").repeated(65) + ")"), data), "too many"},
        {npyFile(dictionary("<u2", "(54,)"), data), "its shape is (54), the zone needs (2, 3,"},
        {npyFile(dictionary("<u2", "()"), data), "its shape is ()"},
        {npyFile(dictionary("<u2", "(3, 2, 9)"), data), "its shape is (3, 2, 9)"},
        {npyFile(dictionary("<u2", "(2, 3, 9, 1)"), data), "its shape is (2, 3, 9, 1)"},
        {npyFile(dictionary("<u2", "(2, 3, 0)"), ""), "it holds 0 16-bit unsigned"},
        {npyFile(dictionary("<u2", "(2, 3, 4611686018427387904)"), data), "4611686018427387904"},
        {npyFile(dictionary("<f8", "(2, 3, 4611686018427387903)"), data), "4611686018427387903"},
        {npyFile(dictionary("<u2", "(2, 3, 6)"), data), "it holds 6 16-bit unsigned"},
        {npyFile(dictionary("<i4", "(2, 3, 3, 3)"), data), "it holds 9 32-bit signed"},
        {npyFile(dictionary("<i4", "(2, 3, 8)"), data), "it holds 8 32-bit signed"},
        {npyFile(dictionary("<f4", "(2, 3, 195)"), data), "1 to 64 layers"},
        {npyFile(dictionary("<i4", "(2, 3, 12)"), data),
         "holds coefficients with a layer count of 4, not single"},
        {npyFile(dictionary("=u2", "(2, 3, 9)"), data), "it holds 16-bit unsigned integers;"},
        {npyFile(dictionary("|u1", "(2, 3, 9)"), data), "it holds 8-bit unsigned integers;"},
        {npyFile(dictionary("<i8", "(2, 3, 9)"), data), "it holds 64-bit signed integers;"},
        {npyFile(dictionary("<i9223372036854775807", "(2, 3, 9)"), data), "0-bit signed"},
        {npyFile(dictionary("<f2", "(1, 3, 9)"), data), "16-bit floats"},
        {npyFile(dictionary("<f2", "(1, 3, 9)"), data), "its shape is (1, 3, 9)"},
        {npyFile(dictionary("<c16", "(2, 3, 9)"), data), "128-bit complex numbers"},
        {npyFile(dictionary("|b1", "(2, 3, 9)"), data), "truth values"},
        {npyFile(dictionary("<U7", "(2, 3, 9)"), data), "it holds texts"},
        {npyFile(dictionary("|O", "(2, 3, 9)"), data), "Python objects"},
        {npyFile(dictionary("<M8[ns]", "(2, 3, 9)"), data), "dates"},
        {npyFile(dictionary("?", "(2, 3, 9)"), data), "the unknown type \"?\""},
        {npyFile("{'descr': [('r', '<u2'), (\"]\", '<u2', (3,))], 'fortran_order': False, 'shape':"
                 " (2, 3)}",
                 data),
         "records of several values"},
        {npyFile("{'descr': [('r', '<u2'", data), "a closing bracket is missing"},
    };
    Coefficients result;
    for (const auto &row : cases) {
        const std::string faults = faultsOf(readNpy, row.file, {2, 3, 0}, result);
        EXPECT_NE(faults.find(row.says), std::string::npos) << row.says << '\n' << faults;
    }
}

TEST(Npy, GainsAreRoundedHalfToEvenAndRefusedOutOfRange)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const struct
    {
        double gain;
        int layers;
        qint64 coefficient; ///< -1: refused
    } cases[] = {
        {1.0, 0, 2048},
        {1.0, 1, 4096},
        {0.0, 0, 0},
        {-0.0, 0, 0},
        {0.5 / 2048, 0, 0},
        {1.5 / 2048, 0, 2},
        {2.5 / 2048, 0, 2},
        {std::nextafter(2.5 / 2048, 1.0), 0, 3},
        {65535.0 / 2048, 0, 65535},
        {65535.49 / 2048, 0, 65535},
        {65535.5 / 2048, 0, -1},
        {-1e-300, 0, -1},
        {nan, 0, -1},
        {infinity, 0, -1},
        {1e308, 1, -1},
        {2147483647.0 / 4096, 1, 2147483647},
        {2147483648.0 / 4096, 1, -1},
        {-1.0, 1, -1},
    };
    for (const auto &row : cases) {
        const int pixelValues = valuesPerPixel(row.layers);
        std::vector<double> gains(2 * static_cast<std::size_t>(pixelValues), 1.0);
        gains[static_cast<std::size_t>(pixelValues) + 1] = row.gain;
        const QByteArray shape = "(1, 2, " + QByteArray::number(pixelValues) + ")";
        Coefficients result;
        const std::string faults = faultsOf(
            readNpy, npyFile(dictionary(">f8", shape), bytesOf(gains, true)), {1, 2, {}}, result);
        if (row.coefficient < 0) {
            EXPECT_EQ(faults.find("[0, 1, 1] is "), 0U) << row.gain << faults;
            continue;
        }
        const auto at = static_cast<std::size_t>(pixelValues) + 1;
        EXPECT_EQ(faults, "") << row.gain;
        EXPECT_EQ(row.layers == 0 ? result.single.at(at) : result.layered.at(at), row.coefficient);
    }
    // The index of the first one, also where the first index runs fastest, and how many more.
    std::vector<float> gains(2 * 3 * 9, 1.0F);
    gains[1 + 2 * 2 + 6 * (2 + 3 * 1)] = -1.0F;
    gains.back() = -1.0F;
    Coefficients result;
    EXPECT_EQ(faultsOf(readNpy,
                       npyFile(dictionary("<f4", "(2, 3, 3, 3)", true), bytesOf(gains, false)),
                       {2, 3, {}}, result),
              "[1, 2, 2, 1] is -1, which is no gain from 0 to 31.9995, nor are 1 more values");
}

TEST(Npy, NineFloatsAPixelAreThreeLayersOnlyIfTheseAreWanted)
{
    const QByteArray file
        = npyFile(dictionary("<f4", "(1, 1, 9)"), bytesOf(std::vector<float>(9, 1.0F), false));
    Coefficients result;
    EXPECT_EQ(faultsOf(readNpy, file, {1, 1, {}}, result), "");
    EXPECT_EQ(result.single, std::vector<unsigned short>(9, 2048));
    EXPECT_EQ(faultsOf(readNpy, file, {1, 1, 3}, result), "");
    EXPECT_EQ(result.layered, std::vector<qint32>(9, 4096));
    EXPECT_NE(faultsOf(readNpy, file, {1, 1, 2}, result), "");
}

/// Headers with bytes changed, put in or taken out, wrong lengths, files cut: whatever they say, no
/// reader crashes, and what one takes for coefficients is as large as it should be.
TEST(Npy, MutatedHeadersAreReadOrRefused)
{
    constexpr int rounds = 100'000;
    const std::pair<QByteArray, int> seeds[] = {
        {dictionary("<u2", "(2, 3, 9)"), 2 * 3 * 9 * 2},
        {dictionary(">f8", "(2, 3, 3, 3)", true), 2 * 3 * 9 * 8},
        {dictionary(">i4", "(2L, 3L, 6L)"), 2 * 3 * 6 * 4},
        {"{'descr': [('r', '<u2'), ('g', '<u2')], 'fortran_order': False, 'shape': (2, 3), }", 99},
    };
    constexpr char bytes[] = "{}()[],:'\"\\ L0123456789<>|=uif\n\0\xFF";
    const QByteArray letters(bytes, sizeof(bytes) - 1);
    std::mt19937 random(7);
    const auto below = [&random](int count) { return static_cast<int>(random() % count); };
    int readCount = 0;
    for (int round = 0; round < rounds; ++round) {
        auto [text, dataBytes] = seeds[round % 4];
        for (int change = below(4); change > 0; --change) {
            const int place = below(text.size());
            const char letter = letters[below(letters.size())];
            text.replace(place, below(3), QByteArray(below(2), letter));
        }
        QByteArray file = npyFile(text, QByteArray(dataBytes, '\0'), 1 + round / 4 % 3,
                                  below(8) == 0 ? below(99) - 50 : 0);
        if (below(8) == 0)
            file[below(12)] = letters[below(letters.size())];
        if (below(8) == 0)
            file.truncate(below(file.size()));
        Coefficients result;
        if (!faultsOf(readNpy, file, {2, 3, {}}, result).empty())
            continue;
        ++readCount;
        EXPECT_EQ(result.single.size() + result.layered.size(),
                  6U * static_cast<unsigned>(valuesPerPixel(result.layerCount)));
    }
    EXPECT_GT(readCount, rounds / 10);
    EXPECT_LT(readCount, rounds / 2);
}

TEST(TextDump, FaultsAreToldWithTheirLines)
{
    const QByteArray pixel = "2048,0,0,0,2048,0,0,0,65535,\r\n";
    const struct
    {
        QByteArray text;
        std::optional<int> layers;
        const char *says;
    } cases[] = {
        {"\r\n" + pixel + pixel, {}, ""},
        {"\n" + pixel + "1,2,3,4,5,6,7,8,9,\n", {}, ""},
        {"\r\n" + pixel + "-2147483648,2147483647,3,4,5,6,7,8,9,\n", 3, ""},
        {"\r\n1,2,3,\r\n1,2,3,\r\n", {}, ""},
        {"", {}, "neither a NumPy array file nor a text dump"},
        {pixel + pixel, {}, "neither a NumPy array file nor a text dump"},
        {"\r\n", {}, "it has 0 pixels, the zone 1 rows of 2"},
        {"\r\n" + pixel, {}, "it has 1 pixels"},
        {"\r\n" + pixel + pixel + pixel, {}, "it has 3 pixels"},
        {"\r\n" + pixel + pixel.chopped(1), {}, "line 3: it has no end"},
        {"\r\n" + pixel + "1,2,3,\r\n", {}, "line 3: it has 3 values, the lines before 9"},
        {"\r\n" + pixel + "1,2,x,\r\n4\r\n",
         {},
         "line 3: value 3 is no whole number with a comma"
         " behind it\nline 4: value 1 is no whole"},
        {"\r\n" + pixel + "1,2,3.5,\r\n", {}, "line 3: value 3 is no whole"},
        {"\r\n" + pixel + "1,99999999999999999999,\r\n", {}, "line 3: value 2 is no whole"},
        {"\r\n" + pixel + "1,2,3,4,5,6,7,8,65536,\r\n", {}, "line 3: value 9 is 65536, which is"},
        {"\r\n" + pixel + "1,-1,3,4,5,6,7,8,9,\r\n", {}, "line 3: value 2 is -1, which is not"},
        {"\r\n1,2,2147483648,\r\n1,2,3,\r\n", {}, "value 3 is 2147483648, which is not from"},
        {"\r\n1,2,\r\n" + pixel, {}, "line 2: it has 2 values; a single layer has 9"},
        {"\r\n" + QByteArray("1,").repeated(195) + "\r\n", {}, "line 2: it has 195 values"},
        {"\r\n" + QByteArray(9999, '1') + "\r\n", {}, "line 2: it is longer than any pixel's"},
        {"\r\n" + pixel + pixel, 2,
         "it holds single-layer coefficients, not coefficients with a layer count"},
        {"\r\n" + pixel + QByteArray("x\n").repeated(12),
         {},
         "line 12: value 1 is no whole number"
         " with a comma behind it\nit has 13"},
        {"\r\n" + pixel + QByteArray("x\n").repeated(12), {}, "2 more lines are wrong"},
    };
    for (const auto &row : cases) {
        Coefficients result;
        const std::string faults = faultsOf(readText, row.text, {1, 2, row.layers}, result);
        EXPECT_EQ(faults.empty(), *row.says == '\0') << faults;
        EXPECT_NE(faults.find(row.says), std::string::npos) << row.says << '\n' << faults;
        if (faults.empty()) {
            EXPECT_EQ((result.single.size() + result.layered.size()) % 6, 0U);
        }
    }
}

TEST(Layout, FaultsAreToldWithTheirPlaces)
{
    // %p: the partitions.
    const QByteArray wall = R"({"screen": [0, 0, 9, 5], "grid": [2, 1], "band": [1, 1], )";
    const auto partitions
        = [&wall](const char *list) { return wall + "\"partitions\": " + list + '}'; };
    const struct
    {
        QByteArray text;
        std::vector<const char *> says; ///< every line
    } cases[] = {
        {"", {"line 1, column 1: "}},
        {"{\n  \"screen\": [0, 0,\n  oops", {"line 3, column "}},
        {"[]", {"it is a list; a layout is an object"}},
        {"{}", {"screen: a list of 4", "grid: a list of 2", "band: a list of 2"}},
        {R"({"screen": [0, 0, 9], "grid": [0, 1], "band": [-1, 1], "schema": 2, "sceen": 1})",
         {"sceen: there is no such member; there are schema, screen", "schema: \"seamrevise-lay",
          "screen: a list of 4 whole numbers is", "grid: a list of 2 whole numbers from 1",
          "band: a list of 2 whole numbers from 0"}},
        {R"({"screen": [9, 0, 0, 9], "grid": [1.5, 1], "band": [1, 99999999999]})",
         {"screen: [9, 0, 0, 9] has no pixel", "grid: a list", "band: a list"}},
        {R"({"screen": [0, 0, 99999, 99999], "grid": [99999, 99999], "band": [1, 1]})",
         {"screen: it has too many pixels", "grid: it has more than 1000000 partitions"}},
        {R"({"screen": [0, 0, 9, 5], "grid": [11, 1], "band": [1, 1]})",
         {"grid: it has more partitions than the screen has pixels"}},
        {partitions("{}"), {"partitions: a list is wanted"}},
        {partitions("[7, {}, {\"number\": 3}, {\"number\": 1, \"sorce\": 1}, {\"number\": 1}]"),
         {"partitions[0]: an object is wanted",
          "partitions[1].number: a whole number from 1 to 2 is wanted",
          "partitions[2].number: a whole number from 1 to 2 is wanted",
          "partitions[3].sorce: there is no such member; there are number, rect, source",
          "partitions[4]: partition 1 is there already"}},
        {partitions(R"([{"number": 1, "rect": [0, 0, 4]}, {"number": 2}])"),
         {"partitions[0].rect: a list of 4", "partitions[1].rect: it is missing, while other"}},
        {partitions(R"([{"number": 2, "source": [7, "", [], {"zone": [0, 0, 1, 1], "layers": 65},
                     {"file": "a", "zone": [6, 0, 9, 5]}, {"file": "a", "zone": [5, 0, 10, 5]}]}])"),
         {"partitions[0].source[0]: a file name, an object", "partitions[0].source[1]: it names no",
          "partitions[0].source[2]: a list within a list",
          "partitions[0].source[3].layers: a whole number from 0 to 64",
          "partitions[0].source[3]: it names no file",
          ("partitions[0].source[4].zone: the zone [6, 0, 9, 5] does not hold partition 2, which is"
           " [5, 0, 9, 5]"),
          "partitions[0].source[5].zone: the zone [5, 0, 10, 5] reaches beyond the screen"}},
    };
    for (const auto &row : cases) {
        ImportLayout layout;
        const QStringList faults = readLayout(row.text, layout);
        ASSERT_EQ(faults.size(), static_cast<int>(row.says.size()))
            << row.text.toStdString() << '\n'
            << faults.join('\n').toStdString();
        for (int i = 0; i < faults.size(); ++i)
            EXPECT_TRUE(faults[i].startsWith(row.says[i])) << faults[i].toStdString();
    }
}

TEST(Layout, TheDocumentedOneReadsAsDescribedAndComesBack)
{
    const QByteArray page = readFile(QStringLiteral(TEST_DATA_DIR "/../../docs/import.md"));
    const int start = page.indexOf("```json\n") + 8;
    ImportLayout layout;
    ASSERT_EQ(readLayout(page.mid(start, page.indexOf("```", start) - start), layout).join('\n'),
              QString());
    EXPECT_EQ(layout.layout.partitions.size(), 6U);
    const auto describe = [&layout](int number) {
        QStringList texts;
        for (const LayoutSource &source : layout.sources[number])
            texts += QStringLiteral("%1 %2,%3,%4,%5 %6")
                         .arg(source.file)
                         .arg(source.zone.left())
                         .arg(source.zone.top())
                         .arg(source.zone.right())
                         .arg(source.zone.bottom())
                         .arg(source.layerCount.value_or(-1));
        return texts.join(';').toStdString();
    };
    EXPECT_EQ(describe(1), "cabinet1.npy 0,0,335,285 -1");
    EXPECT_EQ(describe(2), "shots/cabinet2.npy 300,0,655,289 -1");
    EXPECT_EQ(describe(4), "cabinet4.txt 0,254,335,539 0;cabinet4-layers.txt 0,254,335,539 3");
    EXPECT_EQ(layout.sources.size(), 3U);

    ImportLayout again;
    EXPECT_EQ(readLayout(layoutText(layout), again).join('\n'), QString());
    EXPECT_EQ(layoutText(again), layoutText(layout));
}

/// Everything that a database holds but times, stations and revisions: places, and sums of values.
std::string contentOf(const QString &path)
{
    const QString rect = "first_col || ',' || first_row || ',' || last_col || ',' || last_row";
    std::string content;
    for (const QString table :
         {"SELECT '', grid_cols || 'x' || grid_rows || ' ' || band_cols || 'x' || band_rows || ' '"
          " || %1 FROM screen",
          "SELECT '', number || ' ' || %1 FROM partitions ORDER BY number",
          "SELECT hex(data), number || ' ' || %1 FROM coefficients ORDER BY number",
          "SELECT hex(data), number || '/' || layers || ' ' || %1 FROM layered_coefficients"
          " ORDER BY number, layers"}) {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), "content");
        db.setDatabaseName(path);
        EXPECT_TRUE(db.open());
        for (QSqlQuery query(table.arg(rect), db); query.next();) {
            const QByteArray data = query.value(0).toByteArray();
            const QByteArray sum = QCryptographicHash::hash(data, QCryptographicHash::Md5);
            content += query.value(1).toString().toStdString() + ' ' + sum.toHex().data() + '\n';
        }
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase("content");
    }
    return content;
}

TEST_F(Seamrevise, AnExportComesBackAsAnEqualDatabase)
{
    makeWall();
    execute(in("%d/w.db"), "DELETE FROM coefficients WHERE number = 2");
    execute(in("%d/w.db"),
            "UPDATE layered_coefficients SET layers = 4, data = CAST(data || data AS BLOB)"
            " WHERE number = 3");
    // A zone of its own, a screen that does not begin at 0, a partition that is gone.
    execute(in("%d/w.db"), "UPDATE screen SET first_col = -5");
    execute(in("%d/w.db"), "UPDATE partitions SET first_col = -5 WHERE number IN (1, 4)");
    execute(in("%d/w.db"),
            "UPDATE coefficients SET first_col = -5, last_col = last_col - 5 WHERE number = 1");
    execute(in("%d/w.db"),
            "UPDATE layered_coefficients SET first_col = -5, last_col = last_col - 5 WHERE number"
            " IN (1, 4)");
    execute(in("%d/w.db"), "DELETE FROM coefficients WHERE number = 4");
    const std::string content = contentOf(in("%d/w.db"));
    for (const QString format : {"npy", "text"}) {
        const QString dir = "%d/" + format;
        expect(0, "export %d/w.db -o " + dir + " --format " + format, "9 files in ");
        expect(0, "import " + dir + "/layout.json " + dir + ".db", "5 corrected, 1 not");
        EXPECT_EQ(contentOf(in(dir + ".db")), content);
    }
    EXPECT_EQ(files("%d/text").join(' '),
              "1.txt 1_layers2.txt 2_layers2.txt 3.txt 3_layers4.txt"
              " 4_layers2.txt 6.txt 6_layers2.txt layout.json");
    expect(4, "export %d/w.db -o %d/npy", "is not empty; --force");
    expect(0, "export %d/w.db -o %d/npy --force --format text -q");
    expect(4, "export %d/w.db -o %d/w.db", "w.db");
    expect(2, "export %d/w.db -o %d/x --format csv", "takes npy or text");

    // A whole import leaves nothing of what was there, in whatever layout.
    makeWall("%d/v.db");
    expect(0, "import %d/npy/layout.json %d/v.db --force");
    EXPECT_EQ(contentOf(in("%d/v.db")), content);
}

TEST_F(Seamrevise, AllMistakesOfAnImportAreToldAndNothingIsImported)
{
    makeWall();
    expect(0, "export %d/w.db -o %d/out");
    const std::string content = contentOf(in("%d/w.db"));
    writeFile(in("%d/out/bad.txt"), "\r\n1,2\r\n3,\r\n");
    writeFile(in("%d/out/bad.npz"), "PK\3\4");
    writeFile(in("%d/out/layout.json"), R"({
        "screen": [0, 0, 100, 61], "grid": [3, 2], "band": [6, 5], "bond": 1, "partitions": [
            {"number": 1, "source": "1.npy"}, {"number": 2, "source": "none.npy"},
            {"number": 3, "source": ["3.npy", "3.npy", "1.npy"]}, {"number": 4, "source": "."},
            {"number": 5, "source": "bad.txt"}, {"number": 6, "source": "bad.npz"}]})");
    const char *const lines[] = {
        ": bond: there is no such member",
        ": partitions[1].source: none.npy: No such file",
        ": partitions[2].source[1]: 3.npy: partition 3 has single-layer coefficients already",
        ": partitions[2].source[2]: 1.npy: its shape is (36, 39, 9), the zone needs (36, 40, ",
        ": partitions[3].source: .: it is a directory",
        ": partitions[4].source: bad.txt: line 2: value 2 is no whole number",
        ": partitions[5].source: bad.npz: it is an archive",
    };
    for (const char *const db : {"%d/w.db", "%d/new.db"}) {
        for (const char *const line : lines)
            expect(3, QStringLiteral("import %d/out/layout.json %1").arg(db), line);
    }
    writeFile(in("%d/out/gap.json"), R"({"screen": [0, 0, 9, 5], "grid": [2, 1], "band": [1, 1],
        "partitions": [{"number": 1, "rect": [0, 0, 4, 5], "source": "1.npy"},
                       {"number": 2, "rect": [6, 0, 8, 5]}]})");
    for (const char *const line : {
             "gap.json: partitions: partition 2: it leaves a gap to partition 1: its first column",
             "gap.json: partitions: partition 2: it does not end with the edge of the screen",
             "gap.json: partitions[0].source: 1.npy: its shape is (36, 39, 9), the zone needs (6, "
             "6",
         })
        expect(3, "import %d/out/gap.json %d/new.db", line);
    expect(3, "import %d/none.json %d/new.db", "none.json: No such file");
    expect(3, "import %d %d/new.db", "it is a directory");
    EXPECT_EQ(contentOf(in("%d/w.db")), content);
    EXPECT_EQ(files("%d"), QStringList("w.db"));
}

TEST_F(Seamrevise, OnePartitionIsReplacedOrRemoved)
{
    makeWall();
    expect(0, "export %d/w.db -o %d/out");
    const char *const state = "SELECT group_concat(number || '/' || layers || ':' || revision || "
                              "station) FROM revisions";
    const QString layered
        = "SELECT group_concat(number || '/' || layers) FROM layered_coefficients";
    const struct
    {
        int code;
        const char *words, *says;
    } cases[] = {
        {0, "--partition 3 --from %d/out/3.npy %d/w.db --station a", "3 has new single-layer"},
        {0, "--partition 3 --from %d/out/3.npy %d/w.db --station a", "3 has new single-layer"},
        {3, "--partition 3 --from %d/out/3.npy %d/w.db --station b", "station a wrote it at 20"},
        {3, "--remove 3 %d/w.db --station b", "station a wrote it at 20"},
        {0, "--partition 3 --from %d/out/3.npy %d/w.db --station b --force", "new single-layer"},
        {0, "--remove 3 %d/w.db --layers 2 --station c", "3 has lost its coefficients with a lay"},
        {0, "--remove 3 %d/w.db --layers 2 --station c", "3 has no such coefficients"},
        {0, "--partition 5 --from %d/out/2_layers2.npy --rect 27,26,72,61 %d/w.db --station d",
         "5 has new coefficients with a layer count of 2"},
        {3, "--partition 5 --from %d/out/2.npy --rect 28,31,73,61 %d/w.db",
         "needs (31, 46, values"},
        {2, "--partition 5 --from %d/out/2.npy --rect 35,31,73,61 %d/w.db", "does not hold par"},
        {2, "--partition 5 --from %d/out/2.npy --rect 28,31,73,62 %d/w.db", "beyond the screen"},
        {2, "--partition 5 --from %d/out/2.npy --rect 28,31,20,62 %d/w.db", "--rect takes four"},
        {2, "--partition 7 --from %d/out/1.npy %d/w.db", "has no partition 7, only 1 to 6"},
        {3, "--partition 1 --from %d/out/2.npy %d/w.db", "out/2.npy: its shape is (36, 46, 9)"},
        {3, "--partition 1 --from %d/out/1.npy %d/w.db --layers 2", "it holds single-layer"},
        {3, "--partition 1 --from %d/out/1.npy %d/none.db", "none.db"},
        {2, "--partition 1 %d/w.db", "--partition and --from need each other"},
        {2, "--from %d/out/1.npy %d/l.json %d/w.db", "--partition and --from need each other"},
        {2, "--partition 1 --remove 1 %d/w.db", "exclude each other"},
        {2, "--partition 1 --from %d/out/1.npy %d/l.json %d/w.db", "unexpected argument"},
        {2, "--rect 0,0,1,1 %d/l.json %d/w.db", "--rect needs --partition"},
        {2, "--layers 2 %d/l.json %d/w.db", "--layers needs"},
        {2, "%d/l.json", "name a database"},
    };
    for (const auto &row : cases)
        expect(row.code, QStringLiteral("import ") + row.words, row.says);
    EXPECT_EQ(execute(in("%d/w.db"), state).toString(), "3/0:3b,3/2:1c,5/2:1d");
    EXPECT_EQ(execute(in("%d/w.db"), layered).toString(), "1/2,2/2,4/2,5/2,6/2");
}

TEST_F(Seamrevise, NewCoefficientsAreHeldAgainstTheNeighboursOnes)
{
    // Flat zones: the disagreement is what the values say.
    const auto write = [this](const char *path, int value) {
        const QByteArray pixel = (QByteArray::number(value) + ',').repeated(9) + "\r\n";
        writeFile(in(path), "\r\n" + pixel.repeated(8 * 6));
    };
    write("%d/a.txt", 2000);
    write("%d/b.txt", 2200);
    write("%d/c.txt", 2100);
    writeFile(in("%d/w.json"), R"({"screen": [0, 0, 7, 7], "grid": [2, 1], "band": [2, 2],
        "partitions": [{"number": 1, "source": "a.txt"}, {"number": 2, "source": "b.txt"}]})");
    expect(0, "import %d/w.json %d/w.db -q");
    const std::pair<const char *, const char *> cases[] = {
        {"--partition 2 --from %d/c.txt %d/w.db", "seam 1 - 2            10.00 %     5.00 %"},
        {"--partition 1 --from %d/b.txt %d/w.db", "seam 1 - 2             5.00 %    -4.55 %"},
        {"--remove 1 %d/w.db", "partition 1 has lost its single-layer coefficients"},
        {"--partition 1 --from %d/a.txt %d/w.db", "seam 1 - 2                -       5.00 %"},
        {"--remove 2 %d/w.db --layers 0", "partition 2 has lost"},
        {"--partition 1 --from %d/a.txt %d/w.db", "no neighbour has coefficients of this kind"},
    };
    for (const auto &[words, says] : cases)
        expect(0, QStringLiteral("import ") + words, says);
}

TEST_F(Seamrevise, InfoTellsWhatIsStoredAndByWhom)
{
    writeFile(in("%d/w.txt"), "\r\n1024,0,0,0,2048,0,0,0,4096,\r\n2048,0,0,0,2048,0,0,0,4096,\r\n");
    writeFile(in("%d/l.txt"), "\r\n4096,0,-4096,8192,0,0,\r\n4096,0,0,0,0,0,\r\n");
    writeFile(in("%d/w.json"), R"({"screen": [3, 0, 6, 0], "grid": [2, 1], "band": [0, 1],
        "partitions": [{"number": 2, "source": ["w.txt", "l.txt"]}]})");
    expect(0, "import %d/w.json %d/w.db --station north");
    const std::string text = expect(0, "info %d/w.db", "4x1 pixels, columns 3 to 6, rows 0 to 0");
    for (const char *const line : {
             "partition 1: columns 3 to 4, rows 0 to 0, uncorrected",
             "red 0.7500 (0.5000 to 1.0000), green 1.0000 (1.0000 to 1.0000), blue 2.0000 (2.0",
             "red 1.0000 (0.0000 to 2.0000), green 0.0000 (0.0000 to 0.0000), blue -0.2500 (-1.0",
             " by north",
         })
        EXPECT_NE(text.find(line), std::string::npos) << text;
    expect(0, "info %d/w.db --json %d/info.json -q");
    const QByteArray json = contents("%d/info.json");
    for (const char *const member :
         {R"("uncorrected": [1])", R"("red": {"mean": 0.75, "least": 0.5, "most": 1})",
          R"({"partition": 2, "layers": 2, "revision": 1, "written": "20)",
          R"(, "station": "north"})"})
        EXPECT_NE(json.indexOf(member), -1) << json.toStdString();
    expect(3, "info %d/none.db", "none.db");
}

} // namespace
