#include "commands/importpartition.h"

#include "commands/disagreements.h"
#include "commands/exitcode.h"
#include "commands/jsondocument.h"
#include "commands/outputfiles.h"
#include "commands/storedcoefficients.h"
#include "exchange/layoutfile.h"
#include "exchange/sourcefile.h"
#include "numbers/inputfindings.h"
#include "store/sqlscreenstore.h"

#include <set>

namespace seamrevise
{

namespace
{

/// One partition of a wall that is open for writing.
class PartitionImport
{
public:
    PartitionImport(const ImportOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
    {
    }

    int import();
    int remove();

private:
    int open(int number);
    bool measure(const ZoneCoefficients &after);
    int finish(const QString &text);
    int fail(ExitCode code, const QString &message);

    const ImportOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    SqlScreenStore m_store;
    std::vector<ChangedSeam> m_seams; ///< of the imported partition
};

int PartitionImport::open(int number)
{
    if (!m_store.openForWriting(m_options.database, {m_options.station, m_options.overwrite}))
        return fail(Exit_Input, m_store.errorText());
    const Findings findings = layoutFindings(m_store.layout());
    for (const Finding &finding : findings)
        fail(Exit_Input, m_options.database + QStringLiteral(": ") + findingText(finding));
    if (!findings.empty())
        return Exit_Input;
    const auto count = static_cast<int>(m_store.layout().partitions.size());
    return number <= count
        ? int{Exit_Done}
        : fail(Exit_Usage,
               QStringLiteral("the wall has no partition %1, only 1 to %2").arg(number).arg(count));
}

int PartitionImport::import()
{
    const int number = m_options.number;
    if (const int code = open(number))
        return code;
    const StoredZone zone{number, m_options.zone.value_or(zoneOf(m_store.layout(), number).rect)};
    const QString wrong = zoneFault(m_store.layout(), number, zone.rect);
    if (!wrong.isEmpty())
        return fail(Exit_Usage, QStringLiteral("--rect: ") + wrong);

    ZoneCoefficients after{zone.rect, {}};
    const QStringList faults = readSource(
        m_options.file, {rowsOf(zone.rect), columnsOf(zone.rect), m_options.layerCount},
        after.coefficients);
    for (const QString &text : faults)
        fail(Exit_Input, m_options.file + QStringLiteral(": ") + text);
    if (!faults.isEmpty())
        return Exit_Input;
    if (!measure(after) || !putCoefficients(m_store, zone, after.coefficients))
        return fail(Exit_Input, m_store.errorText());
    return finish(QStringLiteral("partition %1 has new %2")
                      .arg(number)
                      .arg(kindText(after.coefficients.layerCount)));
}

/// Holds the new coefficients, and those that they replace, against the neighbours' ones.
bool PartitionImport::measure(const ZoneCoefficients &after)
{
    std::vector<StoredKind> stored;
    if (!listStored(m_store, stored))
        return false;
    ZoneCoefficients before;
    for (const StoredKind &kind : stored) {
        if (kind.zone.number != m_options.number
            || kind.layerCount != after.coefficients.layerCount)
            continue;
        before.zone = kind.zone.rect;
        if (!getCoefficients(m_store, kind, before.coefficients))
            return false;
    }
    return findChangedSeams(m_store, m_options.number, stored, before, after, m_seams);
}

int PartitionImport::remove()
{
    const int number = m_options.removed;
    if (const int code = open(number))
        return code;
    std::vector<StoredKind> kinds;
    if (!listStored(m_store, kinds))
        return fail(Exit_Input, m_store.errorText());
    QStringList removed;
    for (const StoredKind &kind : kinds) {
        if (kind.zone.number != number
            || m_options.layerCount.value_or(kind.layerCount) != kind.layerCount)
            continue;
        removed += kindText(kind.layerCount);
        if (!m_store.remove(number, kind.layerCount))
            return fail(Exit_Input, m_store.errorText());
    }
    return finish(removed.isEmpty()
                      ? QStringLiteral("partition %1 has no such coefficients").arg(number)
                      : QStringLiteral("partition %1 has lost its %2")
                            .arg(number)
                            .arg(removed.join(QStringLiteral(" and its "))));
}

/// Commits and says what came of it.
int PartitionImport::finish(const QString &text)
{
    std::vector<StoredKind> kinds;
    if (!listStored(m_store, kinds) || !m_store.commit())
        return fail(Exit_Input, m_store.errorText());
    const bool isImport = m_options.number != 0;
    if (m_options.common.showsText())
        m_out << text.toStdString() << '\n';
    if (m_options.common.showsText() && isImport)
        printSeams(m_seams, m_out);
    std::set<int> corrected;
    for (const StoredKind &kind : kinds)
        corrected.insert(kind.zone.number);
    JsonWriter json;
    beginDocument(json, "import");
    addLayout(json, m_store.layout(), corrected);
    if (isImport)
        addSeams(m_seams, json);
    json.endObject();
    const QString wrong = writeDocument(m_options.common, json, m_out);
    return wrong.isEmpty() ? int{Exit_Done} : fail(Exit_Output, wrong);
}

int PartitionImport::fail(ExitCode code, const QString &message)
{
    return reportFault(code, message, m_err);
}

} // namespace

int importPartition(const ImportOptions &options, std::ostream &out, std::ostream &err)
{
    return PartitionImport(options, out, err).import();
}

int removePartition(const ImportOptions &options, std::ostream &out, std::ostream &err)
{
    return PartitionImport(options, out, err).remove();
}

} // namespace seamrevise
