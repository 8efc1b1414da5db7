#include "commands/revise.h"

#include "commands/exitcode.h"
#include "commands/optiontable.h"
#include "commands/progress.h"
#include "commands/revisesummary.h"
#include "engines/coefkind.h"
#include "engines/readback.h"
#include "numbers/borderstep.h"
#include "store/sqlscreenstore.h"

#include <seamrevision/localconfig.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace seamrevise
{

namespace
{

/// Switches the library's text dumps on while it lives.
class DumpSwitch
{
public:
    explicit DumpSwitch(const QString &dir)
        : m_wasOn(LocalConfig::getInstance().isExportData())
        , m_previousDir(LocalConfig::getInstance().exportDataDir())
    {
        LocalConfig::getInstance().setExportData(!dir.isEmpty());
        LocalConfig::getInstance().setExportDataDir(dir);
    }
    ~DumpSwitch()
    {
        LocalConfig::getInstance().setExportData(m_wasOn);
        LocalConfig::getInstance().setExportDataDir(m_previousDir);
    }
    DumpSwitch(const DumpSwitch &) = delete;
    DumpSwitch &operator=(const DumpSwitch &) = delete;

private:
    const bool m_wasOn;
    const QString m_previousDir;
};

/// Makes a directory with its parents unless it exists; whether files can be made in it.
bool makeDirectory(const QString &path)
{
    return QDir().mkpath(path) && QFileInfo(path).isDir() && QFileInfo(path).isWritable();
}

/// One run of the command: its data and its steps.
class ReviseRun
{
public:
    ReviseRun(const ReviseOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
        , m_progress(options.common.showProgress ? &err : nullptr)
        , m_kind(options.layerCount > 0 ? layeredKind(options.layerCount) : singleLayerKind())
        , m_outputDir(QFileInfo(options.outputDir).absoluteFilePath())
        , m_dumpDir(options.dumpDir.isEmpty() ? QString()
                                              : QFileInfo(options.dumpDir).absoluteFilePath())
    {
    }

    /// All steps in their order; the first that fails ends the run.
    int run()
    {
        using Step = int (ReviseRun::*)();
        const Step steps[]
            = {&ReviseRun::open,          &ReviseRun::checkZones,  &ReviseRun::measureBefore,
               &ReviseRun::prepareOutput, &ReviseRun::reviseSeams, &ReviseRun::measureAfter,
               &ReviseRun::deliver,       &ReviseRun::report};
        for (const Step step : steps) {
            if (const int code = (this->*step)())
                return code;
        }
        return Exit_Done;
    }

private:
    int open();
    int checkZones();
    int measureBefore();
    int prepareOutput();
    int reviseSeams();
    int measureAfter();
    int deliver();
    int report();

    int reviseFailure();
    QStringList fileNames(int number) const;
    QString firstUnwritable() const;
    QString checkAllFiles();
    QString checkDumps() const;
    void fillUncorrected();

    const ScreenLayout &layout() const { return m_store.layout(); }
    bool isCorrected(int number) const { return m_before.count(number) != 0; }

    int fail(ExitCode code, const QString &message)
    {
        m_progress.clear();
        m_err << "seamrevise: " << message.toStdString() << '\n';
        return code;
    }

    const ReviseOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    Progress m_progress;
    SqlScreenStore m_store;
    const std::unique_ptr<CoefKind> m_kind;
    const QString m_outputDir;
    const QString m_dumpDir;
    baseCommon::NQSize m_band;
    std::vector<StoredZone> m_zones;
    std::vector<AreaInfoBase> m_areas; ///< the engine keeps pointers to them
    EdgeProfiles m_before;             ///< of the corrected partitions
    ReviseSummary m_summary;
};

int ReviseRun::open()
{
    if (!m_store.open(m_options.database))
        return fail(Exit_Input, m_store.errorText());
    const QString fault = layoutFault(layout());
    if (!fault.isEmpty())
        return fail(Exit_Input, m_options.database + QStringLiteral(": ") + fault);
    if (!m_kind->listZones(m_store, m_zones))
        return fail(Exit_Input, m_store.errorText());
    if (m_zones.empty())
        return fail(Exit_Input,
                    m_options.database
                        + QStringLiteral(": no partition has coefficients of this kind"));
    m_band = m_options.band.value_or(layout().band);
    return Exit_Done;
}

int ReviseRun::checkZones()
{
    for (const StoredZone &zone : m_zones) {
        const QString name
            = m_options.database + QStringLiteral(", partition %1: ").arg(zone.number);
        const auto partition = layout().partitions.find(zone.number);
        if (partition == layout().partitions.end())
            return fail(Exit_Input, name + QStringLiteral("it has coefficients but no place"));
        const NQRect needed = grown(partition->second, m_band, layout().screen);
        const qint64 missing = pixelsOf(needed) - pixelsOf(shared(needed, zone.rect));
        if (missing != 0)
            return fail(Exit_Input,
                        name
                            + QStringLiteral("its zone lacks %1 of the %2 pixels of the partition"
                                             " with a band of %3; use a smaller --band")
                                  .arg(missing)
                                  .arg(pixelsOf(needed))
                                  .arg(sizeText(m_band.width(), m_band.height())));
    }
    return Exit_Done;
}

int ReviseRun::measureBefore()
{
    QElapsedTimer timer;
    timer.start();
    for (const StoredZone &zone : m_zones) {
        m_progress.show("checking", static_cast<int>(m_before.size()) + 1,
                        static_cast<int>(m_zones.size()));
        if (!m_kind->readZone(m_store, zone.number))
            return fail(Exit_Input, m_store.errorText());
        m_before[zone.number]
            = edgeProfile(layout().partitions.at(zone.number), [&](int row, int col) {
                  return m_kind->zoneLuminance(pixelIndex(zone.rect, row, col));
              });
    }
    m_kind->releaseZone();
    m_summary.checkSeconds += static_cast<double>(timer.elapsed()) / 1000.0;
    return Exit_Done;
}

int ReviseRun::prepareOutput()
{
    for (const QString &dir : {m_outputDir, m_dumpDir}) {
        if (!dir.isEmpty() && !makeDirectory(dir))
            return fail(Exit_Output,
                        dir + QStringLiteral(": cannot be made, or not be written to"));
    }
    const QFileInfo database(m_options.database);
    if (database.canonicalPath() != QFileInfo(m_outputDir).canonicalFilePath())
        return Exit_Done;
    for (const auto &entry : layout().partitions) {
        if (fileNames(entry.first).contains(database.fileName()))
            return fail(Exit_Output,
                        m_options.database
                            + QStringLiteral(": would be overwritten; use another -o"));
    }
    return Exit_Done;
}

int ReviseRun::reviseSeams()
{
    QMap<QString, AreaInfoBase *> areas;
    m_areas.reserve(layout().partitions.size());
    for (const auto &entry : layout().partitions) {
        const NQRect &rect = entry.second;
        m_areas.emplace_back(entry.first - 1, rect.top(), rect.left(), rect.bottom(), rect.right());
        areas.insert(m_areas.back().getAreaNum(), &m_areas.back());
    }
    const auto corrected = static_cast<int>(m_zones.size());
    const auto seams = static_cast<int>(seamsOf(layout().grid).size());
    const EngineProgress progress(m_progress, corrected, seams, static_cast<int>(m_areas.size()));
    const DumpSwitch dumps(m_dumpDir);
    const auto screenType
        = m_options.table ? static_cast<enum_ScreenType>(0) : ScreenType_PartitionFile;

    QElapsedTimer timer;
    timer.start();
    m_kind->engine().setPScreenDb(&m_store);
    m_kind->result() = m_kind->engine().boundaryModifying(
        m_outputDir, screenType, areas, layout().grid, layout().screen, m_band, m_options.margin);
    m_summary.reviseSeconds = static_cast<double>(timer.elapsed()) / 1000.0;
    return m_kind->result().errCode == ErrCode_Success ? int{Exit_Done} : reviseFailure();
}

int ReviseRun::reviseFailure()
{
    const QString partition = m_kind->result().errMsg.isEmpty()
        ? QString()
        : QStringLiteral(" at partition ") + m_kind->result().errMsg;
    if (!m_store.errorText().isEmpty())
        return fail(Exit_Input, m_store.errorText());
    switch (m_kind->result().errCode) {
    case ErrCode_SaveCombineCoefFailed:
        return fail(Exit_Output, firstUnwritable() + QStringLiteral(": cannot be written"));
    case ErrCode_Failed:
    case ErrCode_CorrectedAreaEmpty:
    case ErrCode_ReadAreaCoefFailed:
    case ErrCode_IndexOutOfRange:
    case ErrCode_ReadScreenDbFailed:
        return fail(Exit_Input,
                    m_options.database
                        + QStringLiteral(": the revision stopped%1 with code %2; -v tells more")
                              .arg(partition)
                              .arg(int{m_kind->result().errCode}));
    default:
        return fail(Exit_Internal,
                    QStringLiteral("the revision stopped%1 with an unknown code").arg(partition));
    }
}

QStringList ReviseRun::fileNames(int number) const
{
    QStringList names;
    for (const CoefKind::FileKind &kind : m_kind->fileKinds())
        names.push_back(QString::number(number) + kind.suffix);
    return names;
}

/// After a failure: the first of the files that cannot be opened for writing.
QString ReviseRun::firstUnwritable() const
{
    for (const auto &entry : layout().partitions) {
        for (const QString &name : fileNames(entry.first)) {
            QFile file(m_outputDir + QLatin1Char('/') + name);
            const bool isNew = !file.exists();
            if (!file.open(QIODevice::ReadWrite | QIODevice::Append))
                return file.fileName();
            if (isNew)
                file.remove();
        }
    }
    return m_outputDir;
}

int ReviseRun::measureAfter()
{
    EdgeProfiles after;
    for (const StoredZone &zone : m_zones)
        after[zone.number]
            = edgeProfile(layout().partitions.at(zone.number), [&](int row, int col) {
                  return m_kind->resultLuminance(pixelIndex(layout().screen, row, col));
              });
    m_summary.steps = seamSteps(seamsOf(layout().grid), m_before, after);
    return Exit_Done;
}

int ReviseRun::deliver()
{
    QElapsedTimer timer;
    timer.start();
    if (m_options.table)
        fillUncorrected();
    QString fault
        = m_options.table ? m_kind->writeTables(m_outputDir, m_summary.files) : checkAllFiles();
    if (fault.isEmpty() && !m_dumpDir.isEmpty())
        fault = checkDumps();
    m_summary.checkSeconds += static_cast<double>(timer.elapsed()) / 1000.0;
    return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
}

void ReviseRun::fillUncorrected()
{
    for (const auto &entry : layout().partitions) {
        if (!isCorrected(entry.first))
            m_summary.filledWith = m_kind->fillNeutral(entry.second);
    }
}

QString ReviseRun::checkAllFiles()
{
    for (const auto &entry : layout().partitions) {
        m_progress.show("reading back", entry.first, static_cast<int>(m_areas.size()));
        QString fault
            = checkFiles(*m_kind, m_outputDir, entry.first, entry.second, isCorrected(entry.first));
        if (!fault.isEmpty())
            return fault;
        m_summary.files += fileNames(entry.first);
    }
    return {};
}

QString ReviseRun::checkDumps() const
{
    QStringList names = m_kind->screenDumps();
    for (const StoredZone &zone : m_zones) {
        for (const QString &name : m_kind->partitionDumps(!m_options.table))
            names += name.arg(zone.number);
    }
    for (const QString &name : names) {
        const QString path = m_dumpDir + QLatin1Char('/') + name;
        if (!isWholeDump(path))
            return path + QStringLiteral(": it could not be written whole; is the disk full?");
    }
    return {};
}

int ReviseRun::report()
{
    m_progress.clear();
    m_summary.layerCount = m_options.layerCount;
    m_summary.correctedCount = static_cast<int>(m_zones.size());
    m_summary.uncorrectedCount = static_cast<int>(m_areas.size() - m_zones.size());
    m_summary.seamCount = static_cast<int>(seamsOf(layout().grid).size());
    m_summary.outputDir = m_options.outputDir;
    if (m_options.common.showsText())
        printSummary(m_summary, m_out);
    return Exit_Done;
}

} // namespace

void declareRevise(CLI::App &app, ReviseOptions &options)
{
    addDatabase(app, options.database);
    addPath(app, "-o,--output", "DIR", options.outputDir,
            "directory of the output, made if missing")
        ->required();
    CLI::Option *const table
        = addFlag(app, "--table", options.table,
                  "write the whole screen instead of files: coefficients.npy, and packed.bin for"
                  " layered coefficients");
    addFlag(app, "--files", options.files,
            "write encrypted coefficient files, a set per partition (the default)")
        ->excludes(table);
    addLayers(app, options.layerCount, "revise the layered coefficients of that layer count");
    addSize(app, "--band", "WIDTHxHEIGHT", options.band, 0,
            "pixels by which zones reach beyond partitions (the database's)");
    addNumber(app, "--margin", "PIXELS", options.margin, 0, std::numeric_limits<int>::max(),
              "pixels left as they are at both ends of a blended strip");
    addPath(app, "--dumps", "DIR", options.dumpDir, "write text dumps there, made if missing");
}

int revise(const ReviseOptions &options, std::ostream &out, std::ostream &err)
{
    return ReviseRun(options, out, err).run();
}

} // namespace seamrevise
