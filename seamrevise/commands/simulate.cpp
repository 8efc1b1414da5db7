#include "commands/simulate.h"

#include "commands/exitcode.h"
#include "commands/jsondocument.h"
#include "commands/outputfiles.h"
#include "commands/progress.h"
#include "delivery/stagedfiles.h"
#include "exchange/npywriter.h"
#include "exchange/walldocument.h"
#include "process/interruption.h"
#include "store/databaseaddress.h"
#include "store/inventory.h"
#include "store/sqlscreenstore.h"

#include <QFileInfo>

#include <algorithm>
#include <set>

namespace seamrevise
{

namespace
{

/// One run of the command: its data and its steps.
class SimulateRun
{
public:
    SimulateRun(const SimulateOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
        , m_layout(regularLayout(options.size, options.grid, options.band))
        , m_wall(options.traits, m_layout.screen)
        , m_uncorrected(options.uncorrected.begin(), options.uncorrected.end())
    {
    }

    int run();

private:
    QString outputFault() const;
    int firstTooLarge() const;
    int makeDatabase() const;
    bool fill(SqlScreenStore &store, Progress &progress) const;
    QString writeLight(WholeFile &file) const;
    int report() const;
    void printSummary() const;
    JsonWriter document() const;
    void addPartitionLists(JsonWriter &json) const;
    void addTraits(JsonWriter &json) const;

    int fail(ExitCode code, const QString &message) const
    {
        return reportFault(code, message, m_err);
    }

    const SimulateOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    const ScreenLayout m_layout;
    const WallSimulation m_wall;
    const std::set<int> m_uncorrected;
};

int SimulateRun::run()
{
    const QString fault = outputFault();
    if (!fault.isEmpty())
        return fail(Exit_Output, fault);
    if (const int number = firstTooLarge())
        return fail(Exit_Usage,
                    QStringLiteral("partition %1 is larger than one database value holds; use a"
                                   " finer grid")
                        .arg(number));
    const int code = makeDatabase();
    return code == Exit_Done ? report() : code;
}

/// What speaks against writing the files that were asked for.
QString SimulateRun::outputFault() const
{
    for (const QString &name : {m_options.database, m_options.lightFile}) {
        const QFileInfo file(name);
        if (name.isEmpty() || !file.exists())
            continue;
        if (!m_options.overwrite)
            return name + QStringLiteral(" exists; --force overwrites it");
        if (!file.isFile())
            return name
                + (file.isDir() ? QStringLiteral(" is a directory")
                                : QStringLiteral(" is not a file"));
    }
    if (!m_options.lightFile.isEmpty() && isSameFile(m_options.database, m_options.lightFile))
        return QStringLiteral("the database and --light must be different files");
    return {};
}

/// The number of the first partition whose zone one database value does not hold; 0 if none.
int SimulateRun::firstTooLarge() const
{
    const qint64 bytesPerPixel
        = std::max(storedPixelBytes(0), storedPixelBytes(m_options.layerCount));
    for (const auto &entry : m_layout.partitions) {
        const NQRect rect = zoneOf(m_layout, entry.first).rect;
        if (pixelsOf(rect) > largestZoneBytes / bytesPerPixel)
            return entry.first;
    }
    return 0;
}

/// The database is committed last: when it is there, everything is. It remembers no station, so
/// that the same options make the same bytes.
int SimulateRun::makeDatabase() const
{
    Progress progress(m_options.common.showProgress ? &m_err : nullptr);
    SqlScreenStore store;
    WholeFile light;
    QString fault;
    const bool isFilled
        = store.create(m_options.database, m_layout, {QString(), m_options.overwrite})
        && fill(store, progress);
    progress.clear();
    if (isFilled && !m_options.lightFile.isEmpty())
        fault = writeLight(light);
    const Uninterrupted held; // light and database belong together
    if (isFilled && !m_options.lightFile.isEmpty() && fault.isEmpty())
        fault = light.commit();
    if (!fault.isEmpty())
        return fail(Exit_Output, fault);
    if (isFilled && store.commit())
        return Exit_Done;
    // A file is output; what keeps a server from taking it is told as it is to a reader.
    return fail(isUrl(m_options.database) ? Exit_Input : Exit_Output, store.errorText());
}

/// Adds every zone; what fails is in the store's errorText().
bool SimulateRun::fill(SqlScreenStore &store, Progress &progress) const
{
    for (const auto &entry : m_layout.partitions) {
        const int number = entry.first;
        progress.show("simulating", number, static_cast<int>(m_layout.partitions.size()));
        if (m_uncorrected.count(number) != 0)
            continue;
        const StoredZone zone = zoneOf(m_layout, number);
        if (!store.put(zone, m_wall.coefficients(zone)))
            return false;
        if (m_options.layerCount > 0
            && !store.putLayered(zone, m_options.layerCount,
                                 m_wall.layeredCoefficients(zone, m_options.layerCount)))
            return false;
    }
    return true;
}

/// Writes the light, which is not put in place yet.
QString SimulateRun::writeLight(WholeFile &file) const
{
    const QString fault = file.begin(m_options.lightFile, {});
    if (!fault.isEmpty())
        return fault;
    const NQRect &screen = m_layout.screen;
    return writeNpy(file.path(), "<f4", {rowsOf(screen), columnsOf(screen), 3},
                    [&](const BlockSink &sink) {
                        for (int row = screen.top(); row <= screen.bottom(); ++row) {
                            if (!sendLittleEndian(m_wall.light(row), sink))
                                return false;
                        }
                        return true;
                    });
}

int SimulateRun::report() const
{
    if (m_options.common.showsText())
        printSummary();
    const QString fault = writeDocument(m_options.common, document(), m_out);
    return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
}

void SimulateRun::printSummary() const
{
    const auto text = [](const baseCommon::NQSize &size) {
        return sizeText(size.width(), size.height()).toStdString();
    };
    m_out << "wall         " << text(m_options.size) << " pixels, " << text(m_options.grid)
          << " partitions, band " << text(m_options.band) << ", seed " << m_options.traits.seed
          << '\n';
    m_out << "partitions   " << m_layout.partitions.size() - m_uncorrected.size() << " corrected, "
          << m_uncorrected.size() << " not\n";
    if (m_options.layerCount > 0)
        m_out << "layers       " << m_options.layerCount << '\n';
    m_out << "shots        " << (m_options.traits.oneShot ? "one for the wall" : "one a partition");
    for (const auto &[number, shift] : m_options.traits.shifts)
        m_out << ", " << number << " off by " << shift.columns << ',' << shift.rows;
    m_out << "\ndatabase     " << m_options.database.toStdString();
    if (!isUrl(m_options.database))
        m_out << ", " << (QFileInfo(m_options.database).size() + 500'000) / 1'000'000 << " MB";
    m_out << '\n';
    if (!m_options.lightFile.isEmpty())
        m_out << "light        " << m_options.lightFile.toStdString() << '\n';
}

JsonWriter SimulateRun::document() const
{
    JsonWriter json;
    beginDocument(json, "simulate");
    json.beginObject("wall");
    addScreenSize(json, m_layout.screen);
    addGridAndBand(json, m_layout.grid, m_layout.band);
    addLayers(json, m_options.layerCount);
    json.endObject();
    addPartitionLists(json);
    addTraits(json);
    json.beginObject("database");
    json.member("name", m_options.database);
    json.member("bytes", QFileInfo(m_options.database).size());
    json.endObject();
    json.endObject();
    return json;
}

void SimulateRun::addPartitionLists(JsonWriter &json) const
{
    std::vector<int> corrected;
    for (const auto &entry : m_layout.partitions) {
        if (m_uncorrected.count(entry.first) == 0)
            corrected.push_back(entry.first);
    }
    addPartitions(json, corrected, {m_uncorrected.begin(), m_uncorrected.end()});
}

void SimulateRun::addTraits(JsonWriter &json) const
{
    const WallTraits &traits = m_options.traits;
    json.beginObject("simulation");
    json.member("seed", static_cast<qint64>(traits.seed));
    addSize(json, "cabinet", traits.cabinet);
    json.member("batch", traits.batchRange);
    json.member("dead", traits.deadPart);
    json.member("outlying", traits.outlyingPart);
    addInts(json, "layer_gains", {traits.lowestLayer, traits.highestLayer});
    json.member("one_shot", traits.oneShot);
    json.beginArray("shifts");
    for (const auto &[number, shift] : traits.shifts) {
        json.beginObject(nullptr, JsonWriter::Inline);
        json.member("partition", number);
        addInts(json, "by", {shift.columns, shift.rows});
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

} // namespace

int simulate(const SimulateOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(
            options.common, {{options.database, "the database"}, {options.lightFile, "the light"}},
            err))
        return code;
    return SimulateRun(options, out, err).run();
}

} // namespace seamrevise
