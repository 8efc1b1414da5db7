#include "commands/walloptions.h"

#include "commands/optiontable.h"

namespace seamrevise
{

namespace
{

/// A limit of 0 would need a strip of any width.
std::optional<double> parseLimit(const QString &text)
{
    const std::optional<double> limit = parsePercent(text);
    return limit && *limit > 0.0 ? limit : std::nullopt;
}

} // namespace

void declareWallOptions(CLI::App &app, WallOptions &options)
{
    addLayers(app, options.layerCount, "take the layered coefficients of that layer count");
    addSize(app, "--band", "WIDTHxHEIGHT", options.band, 0,
            "pixels by which zones reach beyond partitions (the database's)");
    addNumber(app, "--margin", "PIXELS", options.margin, 0, std::numeric_limits<int>::max(),
              "pixels left as they are at both ends of a blended strip");
    addParsed(
        app, "--step-limit", {"PERCENT", QStringLiteral("a part of 1 like 0.5% or 0.005")},
        options.stepLimit, parseLimit,
        "the largest step that a seam may keep (0.5%); if given, a larger one ends revise with 1");
    addParsed(app, "--weights", {"R,G,B", QStringLiteral("three numbers above 0 like 1,1,1")},
              options.weights, parseWeights,
              "how much red, green and blue count (0.2126,0.7152,0.0722)");
}

} // namespace seamrevise
