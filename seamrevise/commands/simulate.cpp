#include "commands/simulate.h"

#include "commands/exitcode.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "commands/progress.h"
#include "exchange/npywriter.h"
#include "store/databaseaddress.h"
#include "store/sqlscreenstore.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <set>

namespace seamrevise
{

namespace
{

/// Beyond that, coefficients no longer fit.
constexpr double largestBatchRange = 0.5;

/// "5=-1,2": the shot of partition 5.
bool takeShift(const QString &text, std::map<int, PixelShift> &shifts)
{
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("([1-9][0-9]{0,8})=(-?[0-9]{1,3}),(-?[0-9]{1,3})")));
    const QRegularExpressionMatch match = form.match(text);
    if (match.hasMatch())
        shifts[match.captured(1).toInt()] = {match.captured(2).toInt(), match.captured(3).toInt()};
    return match.hasMatch();
}

/// "780,2300".
bool takeLayerGains(const QString &text, WallTraits &traits)
{
    const std::vector<int> gains = parseNumbers(text, 65535).value_or(std::vector<int>());
    if (gains.size() != 2)
        return false;
    traits.lowestLayer = gains[0];
    traits.highestLayer = gains[1];
    return true;
}

void checkPartition(const char *option, int number, int count)
{
    if (number > count)
        refuse(QStringLiteral("%1 takes partitions from 1 to %2, not %3")
                   .arg(QLatin1String(option))
                   .arg(count)
                   .arg(number));
}

/// What the values of several options must be together, and the default that depends on others.
void settle(SimulateOptions &options)
{
    WallTraits &traits = options.traits;
    if (qint64{options.size.width()} * options.size.height() > std::numeric_limits<int>::max())
        refuse(QStringLiteral("--size has too many pixels"));
    if (options.grid.width() > options.size.width()
        || options.grid.height() > options.size.height())
        refuse(QStringLiteral("--grid has more partitions than --size has pixels"));
    if (traits.batchRange > largestBatchRange)
        refuse(QStringLiteral("--batch takes up to 50%"));
    if (traits.deadPart + traits.outlyingPart > 1.0)
        refuse(QStringLiteral("--dead and --outlying are more than all LEDs"));

    const int partitionCount = options.grid.width() * options.grid.height();
    for (const int number : options.uncorrected)
        checkPartition("--uncorrected", number, partitionCount);
    for (const auto &entry : traits.shifts)
        checkPartition("--shift", entry.first, partitionCount);
    if (traits.shifts.empty() && !traits.oneShot)
        traits.shifts[partitionCount] = {1, 0};
}

void declareTraits(CLI::App &app, WallTraits &traits)
{
    addNumber(app, "--seed", "NUMBER", traits.seed, 0, std::numeric_limits<int>::max(),
              "another number, another wall");
    addSize(app, "--cabinet", "WIDTHxHEIGHT", traits.cabinet, 1,
            "pixels of a cabinet, whose LEDs come from one batch");
    addPercent(app, "--batch", traits.batchRange,
               "how far the brightness of a cabinet lies from the mean at most");
    addPercent(app, "--dead", traits.deadPart, "LEDs without light; their coefficients are 0");
    addPercent(app, "--outlying", traits.outlyingPart, "LEDs that are far too dim or too bright");
    CLI::Option *const shift = addOption(
        app, "--shift",
        {"PARTITION=DX,DY", QStringLiteral("a partition and two numbers of pixels like 5=-1,2"),
         true},
        [&traits](const QString &text) { return takeShift(text, traits.shifts); },
        "register the shot of a partition so many pixels further right and down; may be given"
        " several times (the last partition by 1,0, unless a shift is given: 1=0,0 for none)");
    addFlag(app, "--one-shot", traits.oneShot,
            "one shot for the whole wall, so that there are no seams")
        ->excludes(shift);
    addOption(
        app, "--layer-gains",
        {"LOW,HIGH", QStringLiteral("two coefficients from 1 to 65535 like 780,2300")},
        [&traits](const QString &text) { return takeLayerGains(text, traits); },
        "mean coefficients of the first layer, and of the last or only one")
        ->default_str(std::to_string(traits.lowestLayer) + ','
                      + std::to_string(traits.highestLayer));
}

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
    QString writeLight() const;
    int report() const;
    void printSummary() const;
    JsonWriter document() const;
    void addPartitionLists(JsonWriter &json) const;
    void addTraits(JsonWriter &json) const;

    int fail(ExitCode code, const QString &message) const
    {
        m_err << "seamrevise: " << message.toStdString() << '\n';
        return code;
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
    const auto clash = [](const QString &first, const QString &second) {
        return !first.isEmpty() && !second.isEmpty() && isSameFile(first, second);
    };
    if (clash(m_options.database, m_options.lightFile)
        || clash(m_options.database, m_options.common.jsonFile)
        || clash(m_options.lightFile, m_options.common.jsonFile))
        return QStringLiteral("the database, --light and --json must be different files");
    return {};
}

/// The number of the first partition whose zone one database value does not hold; 0 if none.
int SimulateRun::firstTooLarge() const
{
    const qint64 bytesPerPixel = std::max(9 * 2, m_options.layerCount * 3 * 4);
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
    QString fault;
    const bool isFilled
        = store.create(m_options.database, m_layout, {QString(), m_options.overwrite})
        && fill(store, progress);
    progress.clear();
    if (isFilled && !m_options.lightFile.isEmpty())
        fault = writeLight();
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

QString SimulateRun::writeLight() const
{
    const NQRect &screen = m_layout.screen;
    return writeNpy(m_options.lightFile, "<f4", {rowsOf(screen), columnsOf(screen), 3},
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

void addPair(JsonWriter &json, const char *key, const baseCommon::NQSize &size)
{
    json.beginArray(key, JsonWriter::Inline);
    json.value(size.width());
    json.value(size.height());
    json.endArray();
}

JsonWriter SimulateRun::document() const
{
    JsonWriter json;
    json.beginObject();
    json.member("schema", "seamrevise/1");
    json.beginObject("wall");
    json.member("width", m_options.size.width());
    json.member("height", m_options.size.height());
    addPair(json, "grid", m_options.grid);
    addPair(json, "band", m_options.band);
    json.member("layers",
                m_options.layerCount > 0 ? std::optional<int>(m_options.layerCount) : std::nullopt);
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
    json.beginObject("partitions");
    for (const bool uncorrected : {false, true}) {
        json.beginArray(uncorrected ? "uncorrected" : "corrected", JsonWriter::Inline);
        for (const auto &entry : m_layout.partitions) {
            if ((m_uncorrected.count(entry.first) != 0) == uncorrected)
                json.value(entry.first);
        }
        json.endArray();
    }
    json.endObject();
}

void SimulateRun::addTraits(JsonWriter &json) const
{
    const WallTraits &traits = m_options.traits;
    json.beginObject("simulation");
    json.member("seed", static_cast<qint64>(traits.seed));
    addPair(json, "cabinet", traits.cabinet);
    json.member("batch", traits.batchRange);
    json.member("dead", traits.deadPart);
    json.member("outlying", traits.outlyingPart);
    addPair(json, "layer_gains", {traits.lowestLayer, traits.highestLayer});
    json.member("one_shot", traits.oneShot);
    json.beginArray("shifts");
    for (const auto &[number, shift] : traits.shifts) {
        json.beginObject(nullptr, JsonWriter::Inline);
        json.member("partition", number);
        addPair(json, "by", {shift.columns, shift.rows});
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

} // namespace

void declareSimulate(CLI::App &app, SimulateOptions &options)
{
    addDatabase(app, options.database);
    addSize(app, "--size", "WIDTHxHEIGHT", options.size, 1, "pixels of the wall")
        ->required()
        ->default_str("");
    addSize(app, "--grid", "COLUMNSxROWS", options.grid, 1,
            "partitions of the wall; they need not divide its size evenly")
        ->required()
        ->default_str("");
    addSize(app, "--band", "WIDTHxHEIGHT", options.band, 0,
            "pixels by which stored zones reach beyond partitions");
    addNumbers(app, "--uncorrected", options.uncorrected, std::numeric_limits<int>::max(),
               "numbers of partitions without coefficients: 5,9");
    addLayers(app, options.layerCount, "store layered coefficients too");
    declareTraits(app, options.traits);
    addPath(app, "--light", "FILE", options.lightFile,
            "write the true relative light of every LED there, as a NumPy array of rows x columns x"
            " 3");
    addFlag(app, "--force", options.overwrite, "overwrite the files");
    app.final_callback([&options] { settle(options); });
}

int simulate(const SimulateOptions &options, std::ostream &out, std::ostream &err)
{
    return SimulateRun(options, out, err).run();
}

} // namespace seamrevise
