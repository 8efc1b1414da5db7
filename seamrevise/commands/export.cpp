#include "commands/export.h"

#include "commands/exitcode.h"
#include "commands/jsondocument.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "commands/progress.h"
#include "commands/storedcoefficients.h"
#include "delivery/stagedfiles.h"
#include "exchange/layoutfile.h"
#include "exchange/npywriter.h"
#include "process/interruption.h"
#include "store/databaseaddress.h"
#include "store/sqlscreenstore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace seamrevise
{

namespace
{

const QString layoutName = QStringLiteral("layout.json");

class WallExport
{
public:
    WallExport(const ExportOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
        , m_progress(options.common.showProgress ? &err : nullptr)
    {
    }

    int run();

private:
    int prepareDirectory();
    int writeCoefficients();
    int writeLayout();
    int commit();
    int report();
    QString pathOf(const QString &name) const;
    QString fileName(const StoredKind &kind) const;
    int fail(ExitCode code, const QString &message);

    const ExportOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    Progress m_progress;
    SqlScreenStore m_store;
    StagedFiles m_files;
    std::vector<StoredKind> m_kinds;
    ImportLayout m_layout;
    QStringList m_written; ///< names in the directory
};

int WallExport::run()
{
    if (!m_store.open(m_options.database) || !listStored(m_store, m_kinds))
        return fail(Exit_Input, m_store.errorText());
    m_layout.layout = m_store.layout();
    int code = prepareDirectory();
    if (code == Exit_Done)
        code = writeCoefficients();
    if (code == Exit_Done)
        code = writeLayout();
    if (code == Exit_Done)
        code = commit();
    return code == Exit_Done ? report() : code;
}

int WallExport::prepareDirectory()
{
    const QString &dir = m_options.outputDir;
    if (!m_options.overwrite && QDir(dir).exists() && !QDir(dir).isEmpty())
        return fail(Exit_Output,
                    dir + QStringLiteral(" is not empty; --force replaces files in it"));
    Place place;
    QString fault = findPlace(dir, place);
    if (fault.isEmpty() && QFileInfo::exists(dir) && !QFileInfo(dir).isDir())
        fault = dir + QStringLiteral(": is not a directory");
    if (fault.isEmpty())
        fault = m_files.begin({place.path(), QStringLiteral("export")},
                              isUrl(m_options.database) ? QStringList()
                                                        : QStringList(m_options.database));
    return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
}

/// Where a file is written.
QString WallExport::pathOf(const QString &name) const
{
    return m_files.path() + QLatin1Char('/') + name;
}

int WallExport::writeCoefficients()
{
    Coefficients coefficients;
    for (const StoredKind &kind : m_kinds) {
        m_progress.show("exporting", m_written.size() + 1, static_cast<int>(m_kinds.size()));
        if (!getCoefficients(m_store, kind, coefficients))
            return fail(Exit_Input, m_store.errorText());
        const QString name = fileName(kind);
        m_written += name;
        const QString wrong
            = writeSource(pathOf(name), m_options.format, kind.zone.rect, coefficients);
        if (!wrong.isEmpty())
            return fail(Exit_Output, wrong);
        m_layout.sources[kind.zone.number].push_back(
            {name, kind.zone.rect, kind.layerCount, QString()});
    }
    return Exit_Done;
}

int WallExport::writeLayout()
{
    m_written += layoutName;
    const QByteArray text = layoutText(m_layout);
    const QString wrong = writeChecked(pathOf(layoutName), [&text](const BlockSink &sink) {
        return sink(text.constData(), text.size());
    });
    return wrong.isEmpty() ? int{Exit_Done} : fail(Exit_Output, wrong);
}

/// Without its layout an export is none: the old one goes before the first file changes, the new
/// one comes last.
int WallExport::commit()
{
    const Uninterrupted held;
    QString fault = m_files.refusal(m_written);
    if (fault.isEmpty())
        QFile::remove(QDir(m_options.outputDir).filePath(layoutName));
    if (fault.isEmpty())
        fault = m_files.commit(m_written);
    return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
}

int WallExport::report()
{
    m_progress.clear();
    if (m_options.common.showsText())
        m_out << m_written.size() << " files in " << m_options.outputDir.toStdString()
              << ", read back and compared; import them with "
              << QDir(m_options.outputDir).filePath(layoutName).toStdString() << '\n';
    std::set<int> corrected;
    for (const auto &entry : m_layout.sources)
        corrected.insert(entry.first);
    JsonWriter json;
    beginDocument(json, "export");
    addLayout(json, m_layout.layout, corrected);
    json.beginArray("files");
    for (const QString &name : m_written)
        json.value(name);
    json.endArray();
    json.endObject();
    const QString wrong = writeDocument(m_options.common, json, m_out);
    return wrong.isEmpty() ? int{Exit_Done} : fail(Exit_Output, wrong);
}

/// "7.npy", "7_layers4.txt".
QString WallExport::fileName(const StoredKind &kind) const
{
    const QString number = QString::number(kind.zone.number);
    const QString suffix
        = m_options.format == SourceFormat::Npy ? QStringLiteral(".npy") : QStringLiteral(".txt");
    return kind.layerCount == 0
        ? number + suffix
        : QStringLiteral("%1_layers%2").arg(number).arg(kind.layerCount) + suffix;
}

int WallExport::fail(ExitCode code, const QString &message)
{
    m_progress.clear();
    return reportFault(code, message, m_err);
}

std::optional<SourceFormat> parseFormat(const QString &text)
{
    if (text == QLatin1String("npy"))
        return SourceFormat::Npy;
    if (text == QLatin1String("text"))
        return SourceFormat::Text;
    return {};
}

} // namespace

void declareExport(CLI::App &app, ExportOptions &options)
{
    addDatabase(app, options.database);
    addPath(app, "-o,--output", "DIR", options.outputDir,
            "directory of the files and their layout, made if missing")
        ->required();
    addParsed(app, "--format", {"npy|text", QStringLiteral("npy or text")}, options.format,
              parseFormat, "write NumPy arrays or text dumps")
        ->default_str("npy");
    addFlag(app, "--force", options.overwrite, "replace files in a directory that is not empty");
}

int exportCoefficients(const ExportOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(
            options.common,
            {{options.database, "the database"}, {options.outputDir, "the output directory"}}, err))
        return code;
    return WallExport(options, out, err).run();
}

} // namespace seamrevise
