#include "commands/revise.h"

#include "commands/delivered.h"
#include "commands/outputfiles.h"
#include "commands/wallrun.h"
#include "delivery/delivery.h"
#include "delivery/filesystem.h"
#include "delivery/stagedfiles.h"
#include "engines/readback.h"
#include "process/backgroundwork.h"
#include "process/interruption.h"
#include "store/databaseaddress.h"

#include <seamrevision/localconfig.h>

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

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

/// One run of the command: its data and its steps.
class ReviseRun
{
public:
    ReviseRun(const ReviseOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
        , m_progress(options.common.showProgress ? &err : nullptr)
        , m_wall("revise", options, m_progress)
    {
    }

    /// All steps in their order; the first that fails ends the run.
    int run()
    {
        using Step = int (ReviseRun::*)();
        const Step steps[]
            = {&ReviseRun::open,        &ReviseRun::stageOutput,   &ReviseRun::reviseSeams,
               &ReviseRun::finishFiles, &ReviseRun::seal,          &ReviseRun::commit,
               &ReviseRun::report,      &ReviseRun::checkStepLimit};
        for (const Step step : steps) {
            if (const int code = (this->*step)())
                return code;
        }
        return Exit_Done;
    }

private:
    int open();
    int stageOutput();
    int reviseSeams();
    int finishFiles();
    int seal();
    int commit();
    int report();
    int checkStepLimit();

    QString stageDumps(const QStringList &inputs);
    bool judge();
    void checkBeside(std::function<QString()> check);
    QString finishChecks();
    QString checkFiles(int number, const RevisedZones &revised);
    QString checkTable(const QString &path, const TableFile &table);
    int reviseFailure();
    QString writeFault();
    QString writeTables();
    void fillUncorrected();
    std::vector<DumpFile> dumps();
    QStringList dumpNames();
    QString checkDumps();
    void reportNewNotes();
    QString writeReport();

    const ScreenLayout &layout() const { return m_wall.layout(); }
    CoefKind &kind() { return m_wall.kind(); }
    bool hasDumps() const { return !m_options.dumpDir.isEmpty(); }

    int fail(ExitCode code, const QString &message)
    {
        m_progress.clear();
        return reportFault(code, message, m_err);
    }
    /// Done, or output that cannot be written.
    int outcome(const QString &fault)
    {
        return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
    }

    const ReviseOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    Progress m_progress;
    WallRun m_wall;
    Delivery m_delivery;
    StagedFiles m_dumps;
    int m_reportedNotes = 0;
    std::vector<TableFile> m_tables;
    std::deque<QString> m_checkFaults; ///< empty where a check finds none
    BackgroundWork m_work;             ///< ends before what it works on goes
};

int ReviseRun::open()
{
    if (!m_wall.open())
        return fail(Exit_Input, m_wall.errorText());
    m_wall.report().outputDir = m_options.outputDir;
    m_wall.report().isDryRun = m_options.dryRun;
    if (m_wall.isRevisable())
        return Exit_Done;
    for (const Finding &finding : m_wall.report().findings)
        fail(Exit_Input, m_options.database + QStringLiteral(": ") + findingText(finding));
    const QString fault = writeReport();
    return fault.isEmpty() ? int{Exit_Input} : fail(Exit_Input, fault);
}

int ReviseRun::stageOutput()
{
    const QStringList inputs
        = isUrl(m_options.database) ? QStringList() : QStringList(m_options.database);
    QString fault
        = m_delivery.begin({m_options.outputDir, m_options.force, m_options.keep, inputs});
    reportNewNotes();
    if (fault.isEmpty() && hasDumps())
        fault = stageDumps(inputs);
    return outcome(fault);
}

QString ReviseRun::stageDumps(const QStringList &inputs)
{
    const QString &dir = m_options.dumpDir;
    if (isWithin(dir, m_options.outputDir))
        return dir + QStringLiteral(": lies in the output directory; use another --dumps");
    Place place;
    QString fault = findPlace(dir, place);
    if (fault.isEmpty() && QFileInfo::exists(dir) && !QFileInfo(dir).isDir())
        fault = dir + QStringLiteral(": is not a directory");
    if (fault.isEmpty())
        fault = m_dumps.begin({place.path(), QStringLiteral("dumps")}, inputs);
    return fault.isEmpty() ? m_dumps.refusal(dumpNames()) : fault;
}

int ReviseRun::reviseSeams()
{
    const DumpSwitch dumps(hasDumps() ? m_dumps.path() : QString());
    Blending blending;
    blending.onMeasured = [this](const RevisedZones &) { return judge(); };
    blending.outputDir = m_delivery.path();
    blending.toFiles = !m_options.table;
    blending.deliveredCap = m_options.table ? kind().cap() : noCap;
    blending.hashing = &m_work;
    blending.onFilesWritten = [this](int number, const RevisedZones &zones) {
        checkBeside([this, number, &zones] { return checkFiles(number, zones); });
    };
    blending.onSavingEnded = [this] { m_work.finish(); };
    m_wall.blend(blending);
    if (kind().result().errCode != ErrCode_Success)
        return reviseFailure();
    const qint64 changedOutside = m_wall.report().numbers->changes.changedOutside;
    if (changedOutside > 0)
        return fail(Exit_Internal,
                    QStringLiteral("pixels outside every strip would change, on lines of %1 pixels;"
                                   " nothing is delivered")
                        .arg(changedOutside));
    const QString fault = finishChecks();
    const QString cause = fault.isEmpty() ? QString() : writeFault();
    return outcome(cause.isEmpty() ? fault : cause);
}

/// Says what looks wrong; whether to go on.
bool ReviseRun::judge()
{
    const RunReport &report = m_wall.report();
    if (!m_options.common.quiet) {
        m_progress.clear();
        for (const Finding &finding : report.findings)
            m_err << "seamrevise: warning: " << findingText(finding).toStdString() << '\n';
    }
    return report.numbers->changes.changedOutside == 0;
}

/// Checks something while the run goes on; finishChecks() waits for it.
void ReviseRun::checkBeside(std::function<QString()> check)
{
    QString &fault = m_checkFaults.emplace_back();
    m_work.add(0, [&fault, check = std::move(check)] { fault = check(); });
}

/// Empty, or the first fault.
QString ReviseRun::finishChecks()
{
    m_work.finish();
    const auto first = std::find_if(m_checkFaults.begin(), m_checkFaults.end(),
                                    [](const QString &fault) { return !fault.isEmpty(); });
    return first == m_checkFaults.end() ? QString() : *first;
}

/// Reads a partition's files back and finishes them.
QString ReviseRun::checkFiles(int number, const RevisedZones &revised)
{
    const NQRect &rect = layout().partitions.at(number);
    for (const CoefficientFormat &format : coefficientFormats(m_options.layerCount)) {
        const QString name = format.fileName(number);
        const QString path = m_delivery.path() + QLatin1Char('/') + name;
        const FileStamp before = stampOf(path);
        QByteArray sha256;
        QString fault = readBackFault(path, number, rect, format, revised, sha256);
        if (fault.isEmpty())
            fault = m_delivery.finishFile(name, sha256, before);
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

/// Compares a table and finishes it.
QString ReviseRun::checkTable(const QString &path, const TableFile &table)
{
    const FileStamp before = stampOf(path);
    QByteArray sha256;
    const QString fault = comparisonFault(path, table.bytes, &sha256);
    return fault.isEmpty() ? m_delivery.finishFile(table.name, sha256, before) : fault;
}

int ReviseRun::reviseFailure()
{
    if (!m_wall.errorText().isEmpty() || kind().result().errCode != ErrCode_SaveCombineCoefFailed)
        return fail(Exit_Input, m_wall.failureText());
    const QString cause = writeFault();
    return fail(Exit_Output,
                cause.isEmpty() ? m_options.outputDir + QStringLiteral(": cannot be written")
                                : cause);
}

/// The engine says that a file could not be written, or not even that: which one, and why.
QString ReviseRun::writeFault()
{
    for (const auto &[number, rect] : layout().partitions) {
        for (const CoefficientFormat &format : coefficientFormats(m_options.layerCount)) {
            const QFileInfo file(m_delivery.path() + QLatin1Char('/') + format.fileName(number));
            const qint64 bytes = encryptedBytes(pixelsOf(rect) * format.bytesPerPixel());
            if (file.size() == bytes)
                continue;
            const QString fault = sizeFault(file.filePath(), bytes);
            if (!fault.isEmpty())
                return fault;
        }
    }
    return {};
}

/// Tables and dumps; the files are there already.
int ReviseRun::finishFiles()
{
    QString fault;
    if (m_options.table) {
        fillUncorrected();
        fault = writeTables();
        m_wall.endPart("writing");
    }
    if (fault.isEmpty() && hasDumps())
        fault = checkDumps();
    return outcome(fault);
}

/// Each table is compared and hashed, which takes longest, beside what else is to be done.
QString ReviseRun::writeTables()
{
    m_tables = kind().tables();
    for (const TableFile &table : m_tables) {
        const QString path = m_delivery.path() + QLatin1Char('/') + table.name;
        const QString fault = writeWhole(path, table.bytes);
        if (!fault.isEmpty())
            return fault;
        checkBeside([this, path, &table] { return checkTable(path, table); });
    }
    return {};
}

void ReviseRun::fillUncorrected()
{
    for (const auto &[number, rect] : layout().partitions) {
        if (!m_wall.isCorrected(number))
            m_wall.report().filledWith = kind().fillNeutral(rect);
    }
}

std::vector<DumpFile> ReviseRun::dumps()
{
    return kind().dumps({layout(), m_wall.report().band, m_wall.storedZones(), !m_options.table});
}

QStringList ReviseRun::dumpNames()
{
    QStringList names;
    for (const DumpFile &dump : dumps())
        names.push_back(dump.name);
    return names;
}

QString ReviseRun::checkDumps()
{
    for (const DumpFile &dump : dumps()) {
        const QString fault = dumpFault(m_dumps.path() + QLatin1Char('/') + dump.name, dump.shape);
        if (!fault.isEmpty())
            return fault;
    }
    m_wall.endPart("dumps");
    return {};
}

int ReviseRun::seal()
{
    Manifest manifest = m_wall.manifest();
    manifest.version = QStringLiteral(SEAMREVISE_VERSION);
    manifest.command = resolvedCommand(m_options, manifest.band);
    manifest.when = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    manifest.isTable = m_options.table;
    QString fault = finishChecks();
    if (fault.isEmpty())
        fault = m_delivery.addFile(QStringLiteral("numbers.json"),
                                   numbersDocument(m_wall.report()).text());
    if (fault.isEmpty())
        fault = m_delivery.seal(manifest);
    m_wall.report().files = manifest.files;
    m_wall.endPart("sealing");
    return outcome(fault);
}

int ReviseRun::commit()
{
    if (m_options.dryRun)
        return Exit_Done;
    const Uninterrupted held; // dumps and delivery belong together
    QString fault = hasDumps() ? m_dumps.commit(dumpNames()) : QString();
    if (fault.isEmpty())
        fault = m_delivery.commit();
    reportNewNotes();
    m_wall.report().differences = m_delivery.changes();
    m_wall.report().keptName = m_delivery.keptName();
    return outcome(fault);
}

void ReviseRun::reportNewNotes()
{
    reportNotes(m_options.common, m_delivery.notes().mid(m_reportedNotes), m_err);
    m_reportedNotes = m_delivery.notes().size();
}

int ReviseRun::report()
{
    m_progress.clear();
    if (m_options.common.showsText())
        printReport(m_wall.report(), m_out);
    return outcome(writeReport());
}

/// Empty, or what went wrong.
QString ReviseRun::writeReport()
{
    if (m_options.common.jsonFile.isEmpty())
        return {};
    return writeDocument(m_options.common, reportDocument(m_wall.report()), m_out);
}

int ReviseRun::checkStepLimit()
{
    if (!m_options.stepLimit || !m_wall.failsStepLimit())
        return Exit_Done;
    return fail(Exit_Different,
                QStringLiteral("a seam's step exceeds --step-limit %1, or grew by more than 0.1 %")
                    .arg(percentText(*m_options.stepLimit)));
}

} // namespace

int revise(const ReviseOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(options.common,
                                            {{options.database, "the database"},
                                             {options.outputDir, "the output directory"},
                                             {options.dumpDir, "the directory of the dumps"}},
                                            err))
        return code;
    return ReviseRun(options, out, err).run();
}

} // namespace seamrevise
