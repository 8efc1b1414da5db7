#include "commands/simulate.h"

#include "commands/exitcode.h"
#include "commands/optiontable.h"
#include "commands/progress.h"
#include "simulation/wallsimulation.h"
#include "store/sqlscreenstore.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

namespace seamrevise
{

namespace
{

/// A file under a passing name beside its final one: renamed when it is whole, else removed.
class PassingFile
{
public:
    explicit PassingFile(const QString &finalPath)
        : m_finalPath(finalPath)
        , m_path(finalPath + QStringLiteral(".%1.part").arg(QCoreApplication::applicationPid()))
    {
        remove();
    }
    ~PassingFile() { remove(); }
    PassingFile(const PassingFile &) = delete;
    PassingFile &operator=(const PassingFile &) = delete;

    const QString &path() const { return m_path; }

    /// Replaces the file of the final name, if there is one. Empty, or what went wrong.
    std::string moveToFinalName() const
    {
        std::error_code error;
        std::filesystem::rename(QFile::encodeName(m_path).toStdString(),
                                QFile::encodeName(m_finalPath).toStdString(), error);
        return error ? error.message() : std::string();
    }

private:
    void remove() const
    {
        QFile::remove(m_path);
        QFile::remove(m_path + QStringLiteral("-journal"));
    }

    const QString m_finalPath;
    const QString m_path;
};

/// The number of the first partition whose zone one database value does not hold; 0 if none.
int firstTooLarge(const ScreenLayout &layout, int layerCount)
{
    const qint64 bytesPerPixel = std::max(9 * 2, layerCount * 3 * 4);
    for (const auto &entry : layout.partitions) {
        const NQRect rect = zoneOf(layout, entry.first).rect;
        if (pixelsOf(rect) > largestZoneBytes / bytesPerPixel)
            return entry.first;
    }
    return 0;
}

/// Fills the store; what fails is in its errorText().
bool addPartitions(const SimulateOptions &options, const ScreenLayout &layout,
                   const std::set<int> &uncorrected, SqlScreenStore &store, Progress &progress)
{
    const WallSimulation wall(options.seed);
    for (const auto &entry : layout.partitions) {
        const int number = entry.first;
        progress.show("simulating", number, static_cast<int>(layout.partitions.size()));
        if (uncorrected.count(number) != 0)
            continue;
        const StoredZone zone = zoneOf(layout, number);
        if (!store.add(zone, wall.coefficients(zone)))
            return false;
        if (options.layerCount > 0
            && !store.addLayered(zone, options.layerCount,
                                 wall.layeredCoefficients(zone, options.layerCount)))
            return false;
    }
    return true;
}

bool fillDatabase(const SimulateOptions &options, const ScreenLayout &layout,
                  const std::set<int> &uncorrected, const QString &path, std::ostream &err)
{
    Progress progress(options.common.showProgress ? &err : nullptr);
    SqlScreenStore store;
    if (store.create(path, options.database, layout)
        && addPartitions(options, layout, uncorrected, store, progress) && store.commit())
        return true;
    progress.clear();
    err << "seamrevise: " << store.errorText().toStdString() << '\n';
    return false;
}

void printSummary(const SimulateOptions &options, const ScreenLayout &layout,
                  std::size_t uncorrectedCount, std::ostream &out)
{
    const auto text = [](const baseCommon::NQSize &size) {
        return sizeText(size.width(), size.height()).toStdString();
    };
    out << "wall         " << text(options.size) << " pixels, " << text(options.grid)
        << " partitions, band " << text(options.band) << ", seed " << options.seed << '\n';
    out << "partitions   " << layout.partitions.size() - uncorrectedCount << " corrected, "
        << uncorrectedCount << " not\n";
    if (options.layerCount > 0)
        out << "layers       " << options.layerCount << '\n';
    out << "database     " << options.database.toStdString() << ", "
        << (QFileInfo(options.database).size() + 500'000) / 1'000'000 << " MB\n";
}

/// What the values of several options must be together.
void checkTogether(const SimulateOptions &options)
{
    if (qint64{options.size.width()} * options.size.height() > std::numeric_limits<int>::max())
        refuse(QStringLiteral("--size has too many pixels"));
    if (options.grid.width() > options.size.width()
        || options.grid.height() > options.size.height())
        refuse(QStringLiteral("--grid has more partitions than --size has pixels"));
    const int partitionCount = options.grid.width() * options.grid.height();
    for (const int number : options.uncorrected) {
        if (number > partitionCount)
            refuse(QStringLiteral("--uncorrected takes numbers from 1 to %1, not %2")
                       .arg(partitionCount)
                       .arg(number));
    }
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
    addNumber(app, "--seed", "NUMBER", options.seed, 0, std::numeric_limits<int>::max(),
              "another number, another wall");
    addNumbers(app, "--uncorrected", options.uncorrected, std::numeric_limits<int>::max(),
               "numbers of partitions without coefficients: 5,9");
    addLayers(app, options.layerCount, "store layered coefficients too");
    addFlag(app, "--force", options.overwrite, "overwrite the database");
    app.final_callback([&options] { checkTogether(options); });
}

int simulate(const SimulateOptions &options, std::ostream &out, std::ostream &err)
{
    const std::string name = options.database.toStdString();
    if (QFileInfo::exists(options.database) && !options.overwrite) {
        err << "seamrevise: " << name << " exists; --force overwrites it\n";
        return Exit_Output;
    }
    if (QFileInfo(options.database).isDir()) {
        err << "seamrevise: " << name << " is a directory\n";
        return Exit_Output;
    }
    const ScreenLayout layout = regularLayout(options.size, options.grid, options.band);
    if (const int number = firstTooLarge(layout, options.layerCount)) {
        err << "seamrevise: partition " << number
            << " is larger than one database value holds; use a finer grid\n";
        return Exit_Usage;
    }

    const std::set<int> uncorrected(options.uncorrected.begin(), options.uncorrected.end());
    const PassingFile passing(options.database);
    if (!fillDatabase(options, layout, uncorrected, passing.path(), err))
        return Exit_Output;
    const std::string fault = passing.moveToFinalName();
    if (!fault.empty()) {
        err << "seamrevise: " << name << ": " << fault << '\n';
        return Exit_Output;
    }
    if (options.common.showsText())
        printSummary(options, layout, uncorrected.size(), out);
    return Exit_Done;
}

} // namespace seamrevise
