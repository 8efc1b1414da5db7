#include "commands/importpartition.h"

#include "commands/exitcode.h"
#include "commands/jsondocument.h"
#include "commands/outputfiles.h"
#include "commands/storedcoefficients.h"
#include "exchange/layoutfile.h"
#include "exchange/sourcefile.h"
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
    int finish(const QString &text);
    int fail(ExitCode code, const QString &message);

    const ImportOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    SqlScreenStore m_store;
};

int PartitionImport::open(int number)
{
    if (!m_store.openForWriting(m_options.database, {m_options.station, m_options.overwrite}))
        return fail(Exit_Input, m_store.errorText());
    const QString wrong = layoutFault(m_store.layout());
    if (!wrong.isEmpty())
        return fail(Exit_Input, m_options.database + QStringLiteral(": ") + wrong);
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

    Coefficients coefficients;
    const QStringList faults
        = readSource(m_options.file,
                     {rowsOf(zone.rect), columnsOf(zone.rect), m_options.layerCount}, coefficients);
    for (const QString &text : faults)
        fail(Exit_Input, m_options.file + QStringLiteral(": ") + text);
    if (!faults.isEmpty())
        return Exit_Input;
    if (!putCoefficients(m_store, zone, coefficients))
        return fail(Exit_Input, m_store.errorText());
    return finish(QStringLiteral("partition %1 has new %2")
                      .arg(number)
                      .arg(kindText(coefficients.layerCount)));
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
    if (m_options.common.showsText())
        m_out << text.toStdString() << '\n';
    std::set<int> corrected;
    for (const StoredKind &kind : kinds)
        corrected.insert(kind.zone.number);
    JsonWriter json;
    beginDocument(m_store.layout(), corrected, json);
    json.endObject();
    const QString wrong = writeDocument(m_options.common, json, m_out);
    return wrong.isEmpty() ? int{Exit_Done} : fail(Exit_Output, wrong);
}

int PartitionImport::fail(ExitCode code, const QString &message)
{
    m_err << "seamrevise: " << message.toStdString() << '\n';
    return code;
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
