#include "commands/optiontable.h"
#include "commands/simulate.h"

#include <QRegularExpression>

#include <limits>

/// What can be said on the command line about a simulation.
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

} // namespace seamrevise
