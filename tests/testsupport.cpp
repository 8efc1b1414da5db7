#include "testsupport.h"

#include "records/des.h"
#include "records/localconfig.h"

#include <QDir>
#include <QFile>

#include <stdexcept>

namespace
{

QStringList &capturedLines()
{
    static QStringList lines;
    return lines;
}

void capture(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    const char *const level = type == QtCriticalMsg ? "C " : type == QtWarningMsg ? "W " : "D ";
    capturedLines() << QLatin1String(level) + text;
}

} // namespace

LogCapture::LogCapture()
{
    capturedLines().clear();
    qInstallMessageHandler(capture);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(nullptr);
}

QStringList LogCapture::take()
{
    QStringList lines;
    lines.swap(capturedLines());
    return lines;
}

ExportTo::ExportTo(const QString &directory)
{
    LocalConfig::getInstance().setExportDataDir(directory);
    LocalConfig::getInstance().setExportData(true);
}

ExportTo::~ExportTo()
{
    LocalConfig::getInstance().setExportData(false);
}

int MemoryDatabase::listed()
{
    if (fault == Fault::ListThrows)
        throw std::runtime_error("database gone");
    return fault == Fault::ListFails ? 1 : 0;
}

int MemoryDatabase::ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones)
{
    // Zones handed out before a failure are the caller's too.
    for (const auto &entry : stored)
        zones.insert(entry.first, new CoefsZoneInfo());
    return listed();
}

int MemoryDatabase::ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers)
{
    for (const auto &entry : stored)
        numbers.push_back(entry.first);
    return listed();
}

int MemoryDatabase::found(int number, ZoneBaseInfo &zone)
{
    if (fault == Fault::ReadThrows)
        throw std::bad_alloc();
    const auto entry = stored.find(number);
    if (fault == Fault::ReadFails || entry == stored.end())
        return -1;
    setRect(zone, entry->second.rect);
    return 0;
}

int MemoryDatabase::readAreaCoefficients(int number, CoefsZoneInfo &zone)
{
    const int code = found(number, zone);
    if (code == 0)
        zone.m_arrayData = flat(stored.at(number).pixels);
    return code;
}

int MemoryDatabase::readMultiLayerAreaCoefficients(const unsigned int &layerSize,
                                                   const unsigned int &number,
                                                   MultiLayerCoefZoneInfo &zone)
{
    askedLayers = layerSize;
    const int code = found(static_cast<int>(number), zone);
    if (code == 0)
        zone.m_multiLayerCoefs = stored.at(static_cast<int>(number)).pixels;
    return code;
}

Partitions::Partitions(const std::map<int, wallmodel::Rect> &rects)
{
    for (const auto &[number, rect] : rects) {
        m_records.push_back(std::make_unique<AreaInfoBase>(number - 1, rect.top, rect.left,
                                                           rect.bottom, rect.right));
        map.insert(QString::number(number), m_records.back().get());
    }
}

void setRect(ZoneBaseInfo &zone, const wallmodel::Rect &rect)
{
    zone.setBegPixRow(rect.top);
    zone.setBegPixCol(rect.left);
    zone.setEndPixRow(rect.bottom);
    zone.setEndPixCol(rect.right);
}

std::vector<unsigned short> flat(const wallmodel::Pixels &pixels)
{
    std::vector<unsigned short> values;
    for (const std::vector<int> &pixel : pixels)
        values.insert(values.end(), pixel.begin(), pixel.end());
    return values;
}

wallmodel::Pixels pixelsOf(const std::vector<unsigned short> &values)
{
    wallmodel::Pixels pixels;
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
