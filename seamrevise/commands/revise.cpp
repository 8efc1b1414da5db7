#include "commands/revise.h"

#include "commands/exitcode.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "commands/wallrun.h"
#include "engines/readback.h"

#include <seamrevision/localconfig.h>

#include <QCryptographicHash>
#include <QDir>
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
        , m_wall("revise", options, m_progress)
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
            = {&ReviseRun::open,    &ReviseRun::prepareOutput, &ReviseRun::reviseSeams,
               &ReviseRun::deliver, &ReviseRun::report,        &ReviseRun::checkStepLimit};
        for (const Step step : steps) {
            if (const int code = (this->*step)())
                return code;
        }
        return Exit_Done;
    }

private:
    int open();
    int prepareOutput();
    int reviseSeams();
    int deliver();
    int report();
    int checkStepLimit();

    bool judge();
    int reviseFailure();
    QStringList fileNames(int number);
    QString firstUnwritable();
    QString checkAllFiles();
    QString checkDumps();
    void fillUncorrected();
    void describeFiles();
    QString writeReport();

    const ScreenLayout &layout() const { return m_wall.layout(); }
    CoefKind &kind() { return m_wall.kind(); }

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
    WallRun m_wall;
    const QString m_outputDir;
    const QString m_dumpDir;
};

int ReviseRun::open()
{
    const QString clash = documentFault(m_options.common, m_options.database, m_outputDir);
    if (!clash.isEmpty())
        return fail(Exit_Output, clash);
    if (!m_wall.open())
        return fail(Exit_Input, m_wall.errorText());
    if (m_wall.isRevisable())
        return Exit_Done;
    for (const Finding &finding : m_wall.report().findings)
        fail(Exit_Input, m_options.database + QStringLiteral(": ") + findingText(finding));
    const QString fault = writeReport();
    return fault.isEmpty() ? int{Exit_Input} : fail(Exit_Input, fault);
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
    const DumpSwitch dumps(m_dumpDir);
    m_wall.blend(m_outputDir, !m_options.table, m_options.table ? kind().cap() : noCap,
                 [this] { return judge(); });
    if (kind().result().errCode != ErrCode_Success)
        return reviseFailure();
    const qint64 changedOutside = m_wall.report().numbers->changes.changedOutside;
    if (changedOutside > 0)
        return fail(Exit_Internal,
                    QStringLiteral("pixels outside every strip would change, on lines of %1 pixels;"
                                   " nothing is delivered")
                        .arg(changedOutside));
    return Exit_Done;
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

int ReviseRun::reviseFailure()
{
    if (m_wall.errorText().isEmpty() && kind().result().errCode == ErrCode_SaveCombineCoefFailed)
        return fail(Exit_Output, firstUnwritable() + QStringLiteral(": cannot be written"));
    return fail(Exit_Input, m_wall.failureText());
}

QStringList ReviseRun::fileNames(int number)
{
    QStringList names;
    for (const CoefKind::FileKind &kind : kind().fileKinds())
        names.push_back(QString::number(number) + kind.suffix);
    return names;
}

/// After a failure: the first of the files that cannot be opened for writing.
QString ReviseRun::firstUnwritable()
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

int ReviseRun::deliver()
{
    RunReport &report = m_wall.report();
    report.outputDir = m_options.outputDir;
    if (m_options.table)
        fillUncorrected();
    QString fault
        = m_options.table ? kind().writeTables(m_outputDir, report.fileNames) : checkAllFiles();
    if (fault.isEmpty() && !m_dumpDir.isEmpty())
        fault = checkDumps();
    m_wall.endPart(m_options.table ? "writing" : "reading back");
    return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
}

void ReviseRun::fillUncorrected()
{
    for (const auto &entry : layout().partitions) {
        if (!m_wall.isCorrected(entry.first))
            m_wall.report().filledWith = kind().fillNeutral(entry.second);
    }
}

QString ReviseRun::checkAllFiles()
{
    for (const auto &entry : layout().partitions) {
        m_progress.show("reading back", entry.first, static_cast<int>(layout().partitions.size()));
        QString fault = checkFiles(kind(), m_outputDir, entry.first, entry.second,
                                   m_wall.isCorrected(entry.first));
        if (!fault.isEmpty())
            return fault;
        m_wall.report().fileNames += fileNames(entry.first);
    }
    return {};
}

QString ReviseRun::checkDumps()
{
    QStringList names = kind().screenDumps();
    for (const int number : m_wall.corrected()) {
        for (const QString &name : kind().partitionDumps(!m_options.table))
            names += name.arg(number);
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
    if (!m_options.common.jsonFile.isEmpty())
        describeFiles();
    if (m_options.common.showsText())
        printReport(m_wall.report(), m_out);
    const QString fault = writeReport();
    return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
}

void ReviseRun::describeFiles()
{
    RunReport &report = m_wall.report();
    for (const QString &name : report.fileNames) {
        QFile file(m_outputDir + QLatin1Char('/') + name);
        QCryptographicHash hash(QCryptographicHash::Sha256);
        if (file.open(QIODevice::ReadOnly) && hash.addData(&file))
            report.files.push_back({name, file.size(), QString::fromLatin1(hash.result().toHex())});
    }
    m_wall.endPart("checksums");
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
    declareWallOptions(app, options);
    addPath(app, "--dumps", "DIR", options.dumpDir, "write text dumps there, made if missing");
}

int revise(const ReviseOptions &options, std::ostream &out, std::ostream &err)
{
    return ReviseRun(options, out, err).run();
}

} // namespace seamrevise
