#pragma once

#include "records/areainfobase.h"
#include "records/coefszoneinfo.h"
#include "records/multilayercoefzoneinfo.h"
#include "records/screendatabasemanager.h"
#include "wallmodel.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>
#include <ostream>

/// What several tests share.

/// Prints readable text where a comparison fails.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << text.toStdString();
}

/// Collects log lines, "D ", "W " or "C " and the text, while it lives.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// The lines so far; the next call starts anew.
    QStringList take();
};

/// Switches dumps on for a directory while it lives.
class ExportTo
{
public:
    explicit ExportTo(const QString &directory);
    ~ExportTo();
    ExportTo(const ExportTo &) = delete;
    ExportTo &operator=(const ExportTo &) = delete;
};

/// A screen database in memory, with faults on demand.
class MemoryDatabase : public ScreenDataBaseManager
{
public:
    enum class Fault
    {
        None,
        ListFails,
        ListThrows,
        ReadFails,
        ReadThrows
    };

    explicit MemoryDatabase(std::map<int, wallmodel::Zone> zones = {})
        : stored(std::move(zones))
    {
    }

    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override;
    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override;
    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers) override;
    int readMultiLayerAreaCoefficients(const unsigned int &layerSize, const unsigned int &number,
                                       MultiLayerCoefZoneInfo &zone) override;

    std::map<int, wallmodel::Zone> stored;
    Fault fault = Fault::None;
    unsigned int askedLayers = 0;

private:
    int listed();
    int found(int number, ZoneBaseInfo &zone);
};

/// The host's records of a wall's partitions, with their map.
class Partitions
{
public:
    explicit Partitions(const std::map<int, wallmodel::Rect> &rects);

    QMap<QString, AreaInfoBase *> map;

private:
    std::vector<std::unique_ptr<AreaInfoBase>> m_records;
};

void setRect(ZoneBaseInfo &zone, const wallmodel::Rect &rect);
std::vector<unsigned short> flat(const wallmodel::Pixels &pixels);
wallmodel::Pixels pixelsOf(const std::vector<unsigned short> &values);

QByteArray readFile(const QString &path);
void writeFile(const QString &path, const QByteArray &content);
/// The files of a directory with their contents.
std::map<QString, QByteArray> filesIn(const QString &directory);
/// The plaintext of a coefficient file, through the library's cipher; empty if it does not decrypt.
QByteArray decrypted(const QByteArray &content);
