#pragma once

#include "wallmodel.h"
#include <seamrevision/localconfig.h>
#include <seamrevision/multilayercoefzoneinfo.h>
#include <seamrevision/multilayerpartitionmerge.h>
#include <seamrevision/screendatabasemanager.h>

#include <QTemporaryDir>

#include <functional>
#include <ostream>
#include <type_traits>
#include <utility>

/// What several tests share; testsupport.cpp also has their main().

/// Prints readable text where a comparison fails.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << text.toStdString();
}

/// Collects log lines, "D ", "W " or "C " and the text, while it lives; one at a time.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture() { qInstallMessageHandler(nullptr); }

    /// The lines so far; the next call starts anew.
    QStringList take() { return std::exchange(s_lines, {}); }

private:
    inline static QStringList s_lines;
};

/// Switches dumps on for a directory while it lives.
class ExportTo
{
public:
    explicit ExportTo(const QString &directory)
    {
        LocalConfig::getInstance().setExportDataDir(directory);
        LocalConfig::getInstance().setExportData(true);
    }
    ~ExportTo() { LocalConfig::getInstance().setExportData(false); }
};

/// A wall of partitions of one size, one for each value; every zone is the whole screen and has
/// that value throughout.
wallmodel::Wall evenWall(int gridCols, int partitionWidth, int partitionHeight, int band,
                         const std::vector<int> &values, int layers = 0);

/// How a database fills the zone that it is handed.
enum class Filling
{
    Replace,    ///< with a table of its own
    InPlace,    ///< value by value, into the rows that are there
    BySize,     ///< the same, with new rows where the size differs
    SkipRepeats ///< not at all where the partition is the one that it read last
};

/// A host of a wall: its screen database, with faults on demand, the records of its partitions and
/// an output directory.
class Host : public ScreenDataBaseManager
{
public:
    explicit Host(const wallmodel::Wall &wall);

    /// Runs an engine and collects what can be seen.
    wallmodel::Outcome revise(PartitionMerge &engine);
    QString path(const char *name = "") const { return m_directory.filePath(name); }

    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override;
    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override;
    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers) override;
    int readMultiLayerAreaCoefficients(const unsigned int &layerSize, const unsigned int &number,
                                       MultiLayerCoefZoneInfo &zone) override;

    wallmodel::Wall wall;
    QMap<QString, AreaInfoBase *> areas;
    bool hasDatabase = true;
    std::function<int()> onList = [] { return 0; }; ///< what the database answers at last
    std::function<int()> onRead = onList;
    unsigned int askedLayers = 0;
    Filling filling = Filling::Replace;

private:
    template <typename AnyZone>
    int read(int number, AnyZone &zone);

    int m_lastRead = 0;
    const QTemporaryDir m_directory;
    std::map<int, AreaInfoBase> m_records;
};

/// The engines with their steps in the open, and what differs between them in tests.
struct SingleLayer : PartitionMerge
{
    using PartitionMerge::AreaInfoToCoefZoneInfo;
    using PartitionMerge::m_areas;
    using PartitionMerge::m_screenRect;
    using PartitionMerge::partitionCoefRevise;
    using PartitionMerge::readCofficients;
    using PartitionMerge::saveCombineAreaCoef;
    using PartitionMerge::saveRevisedCoef;
    using PartitionMerge::startRevise;
    using PartitionMerge::subInfoCoefToAreaCoef;
    using Zone = CoefsZoneInfo;
    static constexpr int layers = 0;
};

struct Layered : MultiLayerPartitionMerge
{
    Layered()
        : MultiLayerPartitionMerge({})
    {
    }
    using MultiLayerPartitionMerge::partitionCoefRevise;
    using MultiLayerPartitionMerge::readCofficients;
    using MultiLayerPartitionMerge::saveCombineAreaCoef;
    using MultiLayerPartitionMerge::saveRevisedCoef;
    using MultiLayerPartitionMerge::startRevise;
    using MultiLayerPartitionMerge::subInfoCoefToAreaCoef;
    using PartitionMerge::AreaInfoToCoefZoneInfo;
    using PartitionMerge::m_areas;
    using PartitionMerge::m_screenRect;
    using Zone = MultiLayerCoefZoneInfo;
    static constexpr int layers = 4;
};

/// The layer count of any engine as it is made; 0 for the single-layer one.
template <typename Engine>
constexpr int layersOf = std::is_base_of_v<MultiLayerPartitionMerge, Engine> ? 4 : 0;

/// A new engine of any class, also of exactly the library's own ones.
template <typename Engine>
Engine makeEngine()
{
    if constexpr (std::is_same_v<Engine, MultiLayerPartitionMerge>)
        return Engine({});
    else
        return Engine();
}

void setRect(ZoneBaseInfo &zone, const wallmodel::Rect &rect);
void setPixels(CoefsZoneInfo &zone, const wallmodel::Pixels &pixels);
void setPixels(MultiLayerCoefZoneInfo &zone, const wallmodel::Pixels &pixels);
void setPixelsInPlace(CoefsZoneInfo &zone, const wallmodel::Pixels &pixels, Filling filling);
void setPixelsInPlace(MultiLayerCoefZoneInfo &zone, const wallmodel::Pixels &pixels,
                      Filling filling);
wallmodel::Pixels pixelsOf(const std::vector<unsigned short> &values);

QByteArray readFile(const QString &path);
void writeFile(const QString &path, const QByteArray &content);
/// The files of a directory with their contents.
std::map<QString, QByteArray> filesIn(const QString &directory);
/// The plaintext of a coefficient file, through the library's cipher; empty if it does not decrypt.
QByteArray decrypted(const QByteArray &content);
