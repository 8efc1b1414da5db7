#include "commands/importwall.h"

#include "commands/exitcode.h"
#include "commands/jsondocument.h"
#include "commands/outputfiles.h"
#include "commands/progress.h"
#include "commands/storedcoefficients.h"
#include "exchange/layoutfile.h"
#include "exchange/sourcefile.h"
#include "numbers/inputfindings.h"
#include "store/sqlscreenstore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <set>
#include <utility>

namespace seamrevise
{

namespace
{

constexpr int mostFaults = 100;

class WallImport
{
public:
    WallImport(const ImportOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
        , m_progress(options.common.showProgress ? &err : nullptr)
    {
    }

    int run();

private:
    bool readLayoutFile();
    std::vector<UsedPath> sourceFiles() const;
    bool importSources();
    bool importSource(int number, const LayoutSource &source);
    bool removeOthers();
    int report();
    QString pathOf(const LayoutSource &source) const;
    int fail(ExitCode code, const QString &message);
    int showFaults();
    void fault(const LayoutSource &source, const QString &text);

    const ImportOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    Progress m_progress;
    SqlScreenStore m_store;
    ImportLayout m_layout;
    QStringList m_faults;
    std::set<std::pair<int, int>> m_kinds; ///< numbers and layer counts that were there
    std::set<int> m_corrected;
};

int WallImport::run()
{
    const bool isLayoutRight = readLayoutFile();
    if (const int code = checkDocumentPlace(m_options.common, sourceFiles(), m_err))
        return code;
    if (isLayoutRight
        && !m_store.openOrCreate(m_options.database, m_layout.layout,
                                 {m_options.station, m_options.overwrite}))
        return fail(Exit_Input, m_store.errorText());
    // Also if there are mistakes already: then for those in the files.
    if (!importSources())
        return fail(Exit_Input, m_store.errorText());
    if (!m_faults.isEmpty())
        return showFaults();
    if (!removeOthers() || !m_store.commit())
        return fail(Exit_Input, m_store.errorText());
    return report();
}

bool WallImport::readLayoutFile()
{
    QFile file(m_options.layout);
    if (QFileInfo(m_options.layout).isDir())
        m_faults += QStringLiteral("it is a directory");
    else if (!file.open(QIODevice::ReadOnly))
        m_faults += file.errorString();
    else
        m_faults += readLayout(file.readAll(), m_layout);
    // Of a layout that could not be read there is nothing to say.
    if (!m_layout.layout.partitions.empty()) {
        for (const Finding &finding : layoutFindings(m_layout.layout))
            m_faults += QStringLiteral("partitions: ") + findingText(finding);
    }
    return m_faults.isEmpty();
}

std::vector<UsedPath> WallImport::sourceFiles() const
{
    std::vector<UsedPath> files;
    for (const auto &entry : m_layout.sources) {
        for (const LayoutSource &source : entry.second)
            files.push_back({pathOf(source), "a file that is imported"});
    }
    return files;
}

/// Stores all sources, or looks for mistakes in them; false if the database failed.
bool WallImport::importSources()
{
    int done = 0;
    for (const auto &[number, sources] : m_layout.sources) {
        m_progress.show("importing", ++done, static_cast<int>(m_layout.sources.size()));
        for (const LayoutSource &source : sources) {
            if (!importSource(number, source))
                return false;
        }
    }
    return true;
}

bool WallImport::importSource(int number, const LayoutSource &source)
{
    const WantedCoefficients wanted{rowsOf(source.zone), columnsOf(source.zone), source.layerCount};
    Coefficients coefficients;
    const QStringList wrong = readSource(pathOf(source), wanted, coefficients);
    for (const QString &text : wrong)
        fault(source, text);
    if (wrong.isEmpty() && !m_kinds.emplace(number, coefficients.layerCount).second)
        fault(source,
              QStringLiteral("partition %1 has %2 already")
                  .arg(number)
                  .arg(kindText(coefficients.layerCount)));
    m_corrected.insert(number);
    return !m_faults.isEmpty() || putCoefficients(m_store, {number, source.zone}, coefficients);
}

/// What the database holds beside the import.
bool WallImport::removeOthers()
{
    std::vector<StoredKind> stored;
    if (!listStored(m_store, stored))
        return false;
    return std::all_of(stored.begin(), stored.end(), [this](const StoredKind &kind) {
        const int number = kind.zone.number;
        return m_kinds.count({number, kind.layerCount}) != 0
            || m_store.remove(number, kind.layerCount);
    });
}

int WallImport::report()
{
    m_progress.clear();
    const ScreenLayout &layout = m_layout.layout;
    if (m_options.common.showsText())
        m_out << "wall         "
              << sizeText(columnsOf(layout.screen), rowsOf(layout.screen)).toStdString()
              << " pixels, " << sizeText(layout.grid.width(), layout.grid.height()).toStdString()
              << " partitions, band "
              << sizeText(layout.band.width(), layout.band.height()).toStdString()
              << "\npartitions   " << m_corrected.size() << " corrected, "
              << layout.partitions.size() - m_corrected.size() << " not\nfiles        "
              << m_kinds.size() << " imported\ndatabase     " << m_options.database.toStdString()
              << '\n';
    JsonWriter json;
    beginDocument(json, "import");
    addLayout(json, layout, m_corrected);
    json.endObject();
    const QString wrong = writeDocument(m_options.common, json, m_out);
    return wrong.isEmpty() ? int{Exit_Done} : fail(Exit_Output, wrong);
}

QString WallImport::pathOf(const LayoutSource &source) const
{
    return QDir(QFileInfo(m_options.layout).path()).filePath(source.file);
}

int WallImport::fail(ExitCode code, const QString &message)
{
    m_progress.clear();
    return reportFault(code, message, m_err);
}

int WallImport::showFaults()
{
    for (const QString &text : m_faults.mid(0, mostFaults))
        fail(Exit_Input, m_options.layout + QStringLiteral(": ") + text);
    if (m_faults.size() > mostFaults)
        fail(Exit_Input,
             QStringLiteral("%1: %2 more mistakes")
                 .arg(m_options.layout)
                 .arg(m_faults.size() - mostFaults));
    return Exit_Input;
}

void WallImport::fault(const LayoutSource &source, const QString &text)
{
    m_faults += QStringLiteral("%1: %2: %3").arg(source.place, source.file, text);
}

} // namespace

int importWall(const ImportOptions &options, std::ostream &out, std::ostream &err)
{
    return WallImport(options, out, err).run();
}

} // namespace seamrevise
