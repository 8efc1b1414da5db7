#include "testsupport.h"

#include <seamrevision/des.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextCodec>

#include <gtest/gtest.h>

#include <stdexcept>

using wallmodel::Pixels;
using wallmodel::Rect;
using wallmodel::Wall;

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    // As hosts do: dumps have Chinese names, and the tests run in the plain C locale.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return RUN_ALL_TESTS();
}

LogCapture::LogCapture()
{
    s_lines.clear();
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
        s_lines << (type == QtCriticalMsg ? "C " : type == QtWarningMsg ? "W " : "D ") + text;
    });
}

Wall evenWall(int gridCols, int partitionWidth, int partitionHeight, int band,
              const std::vector<int> &values, int layers)
{
    Wall wall;
    wall.layers = layers;
    wall.gridCols = gridCols;
    wall.gridRows = static_cast<int>(values.size()) / gridCols;
    wall.bandCols = wall.bandRows = band;
    wall.screen = {0, 0, wall.gridRows * partitionHeight - 1, gridCols * partitionWidth - 1};
    for (int i = 0; i < gridCols * wall.gridRows; ++i) {
        const int top = i / gridCols * partitionHeight;
        const int left = i % gridCols * partitionWidth;
        const std::vector<int> pixel(wall.valuesPerPixel(), values[i]);
        wall.partitions[i + 1] = {top, left, top + partitionHeight - 1, left + partitionWidth - 1};
        wall.stored[i + 1] = {wall.screen, Pixels(wall.screen.area(), pixel)};
    }
    return wall;
}

Host::Host(const Wall &hostWall)
    : wall(hostWall)
{
    for (const auto &[number, rect] : wall.partitions) {
        const AreaInfoBase area(number - 1, rect.top, rect.left, rect.bottom, rect.right);
        areas[QString::number(number)] = &m_records.emplace(number, area).first->second;
    }
}

wallmodel::Outcome Host::revise(PartitionMerge &engine)
{
    const QTemporaryDir dumps;
    const ExportTo exporting(dumps.path());
    LogCapture log;
    const Rect &screen = wall.screen;
    engine.setPScreenDb(hasDatabase ? this : nullptr);
    const ST_ReviseResult result = engine.boundaryModifying(
        path(), enum_ScreenType(wall.screenType), areas, {wall.gridCols, wall.gridRows},
        {screen.left, screen.top, screen.right, screen.bottom}, {wall.bandCols, wall.bandRows},
        wall.margin);

    wallmodel::Outcome outcome;
    outcome.log = log.take();
    outcome.code = result.errCode;
    outcome.text = result.errMsg;
    EXPECT_EQ(result.isSuccess, result.errCode == ErrCode_Success);
    EXPECT_EQ(result.rect.left(), screen.left);
    outcome.table = wall.layers > 0 ? result.multiLayerCoefData : pixelsOf(result.coefData);
    EXPECT_TRUE(wall.layers > 0 ? result.coefData.empty() : result.multiLayerCoefData.empty());
    outcome.packed = result.zipCoefData;
    outcome.dumps = filesIn(dumps.path());
    for (const auto &[name, content] : filesIn(path()))
        outcome.files[name] = decrypted(content);
    for (const auto &[number, record] : m_records)
        outcome.states[number] = record.getCorrectAreaStateType();
    return outcome;
}

int Host::ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones)
{
    // Zones handed out before a failure are the caller's too.
    for (const auto &entry : wall.stored) {
        CoefsZoneInfo *&zone = zones[entry.first]; // first, or without memory for it a zone leaks
        zone = new CoefsZoneInfo();
    }
    return onList();
}

int Host::ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers)
{
    for (const auto &entry : wall.stored)
        numbers.push_back(entry.first);
    return onList();
}

template <typename AnyZone>
int Host::read(int number, AnyZone &zone)
{
    const auto stored = wall.stored.find(number);
    if (stored == wall.stored.end())
        return -1;
    if (filling == Filling::SkipRepeats && std::exchange(m_lastRead, number) == number)
        return onRead();
    setRect(zone, stored->second.rect);
    if (filling == Filling::InPlace || filling == Filling::BySize)
        setPixelsInPlace(zone, stored->second.pixels, filling);
    else
        setPixels(zone, stored->second.pixels);
    return onRead();
}

int Host::readAreaCoefficients(int number, CoefsZoneInfo &zone)
{
    return read(number, zone);
}

int Host::readMultiLayerAreaCoefficients(const unsigned int &layerSize, const unsigned int &number,
                                         MultiLayerCoefZoneInfo &zone)
{
    askedLayers = layerSize;
    return read(static_cast<int>(number), zone);
}

void setRect(ZoneBaseInfo &zone, const Rect &rect)
{
    zone.setBegPixRow(rect.top);
    zone.setBegPixCol(rect.left);
    zone.setEndPixRow(rect.bottom);
    zone.setEndPixCol(rect.right);
}

void setPixels(CoefsZoneInfo &zone, const Pixels &pixels)
{
    zone.m_arrayData.clear();
    for (const std::vector<int> &pixel : pixels)
        zone.m_arrayData.insert(zone.m_arrayData.end(), pixel.begin(), pixel.end());
}

void setPixels(MultiLayerCoefZoneInfo &zone, const Pixels &pixels)
{
    zone.m_multiLayerCoefs = pixels;
}

void setPixelsInPlace(CoefsZoneInfo &zone, const Pixels &pixels, Filling filling)
{
    if (filling == Filling::BySize && zone.m_arrayData.size() != 9 * pixels.size())
        zone.m_arrayData.clear();
    zone.m_arrayData.resize(9 * pixels.size());
    for (std::size_t i = 0; i < zone.m_arrayData.size(); ++i)
        zone.m_arrayData.at(i) = static_cast<unsigned short>(pixels[i / 9][i % 9]);
}

void setPixelsInPlace(MultiLayerCoefZoneInfo &zone, const Pixels &pixels, Filling filling)
{
    Pixels &rows = zone.m_multiLayerCoefs;
    if (filling == Filling::BySize && rows.size() != pixels.size())
        rows.clear();
    rows.resize(pixels.size(), std::vector<int>(pixels.at(0).size()));
    for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel)
        for (std::size_t k = 0; k < pixels[pixel].size(); ++k)
            rows[pixel].at(k) = pixels[pixel][k];
}

Pixels pixelsOf(const std::vector<unsigned short> &values)
{
    Pixels pixels;
    for (std::size_t first = 0; first < values.size(); first += 9)
        pixels.emplace_back(values.begin() + first, values.begin() + first + 9);
    return pixels;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

std::map<QString, QByteArray> filesIn(const QString &directory)
{
    std::map<QString, QByteArray> files;
    for (const QString &name : QDir(directory).entryList(QDir::Files))
        files[name] = readFile(directory + QLatin1Char('/') + name);
    return files;
}

QByteArray decrypted(const QByteArray &content)
{
    const std::vector<unsigned char> in(content.begin(), content.end());
    std::vector<unsigned char> out;
    DES().DESDecrypt("qalvetor", "qalvetor", in, out);
    return QByteArray(reinterpret_cast<const char *>(out.data()), static_cast<int>(out.size()));
}
