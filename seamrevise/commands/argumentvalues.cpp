#include "commands/argumentvalues.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>

namespace seamrevise
{

namespace
{

constexpr int longestSide = 65535;

bool isDigit(QChar letter)
{
    return letter >= QLatin1Char('0') && letter <= QLatin1Char('9');
}

bool isDigits(const QString &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), isDigit);
}

/// "12", "0.5" or ".5", whatever the locale; no sign.
std::optional<double> parseDecimal(const QString &text)
{
    const bool isPlain = std::all_of(text.begin(), text.end(), [](QChar letter) {
        return isDigit(letter) || letter == QLatin1Char('.');
    });
    bool fits = false;
    const double value = text.toDouble(&fits);
    if (!isPlain || !fits || !std::isfinite(value))
        return {};
    return value;
}

} // namespace

std::optional<int> parseInt(const QString &text, int least, int most)
{
    bool fits = false;
    const int value = text.toInt(&fits);
    if (!fits || !isDigits(text) || value < least || value > most)
        return {};
    return value;
}

std::optional<baseCommon::NQSize> parseSize(const QString &text, int least)
{
    const QStringList sides = text.split(QLatin1Char('x'));
    if (sides.size() != 2)
        return {};
    const std::optional<int> width = parseInt(sides[0], least, longestSide);
    const std::optional<int> height = parseInt(sides[1], least, longestSide);
    if (!width || !height)
        return {};
    return baseCommon::NQSize(*width, *height);
}

std::optional<std::vector<int>> parseNumbers(const QString &text, int most)
{
    std::vector<int> numbers;
    for (const QString &part : text.split(QLatin1Char(','))) {
        const std::optional<int> number = parseInt(part, 1, most);
        if (!number)
            return {};
        numbers.push_back(*number);
    }
    return numbers;
}

std::optional<double> parsePercent(const QString &text)
{
    const bool hasSign = text.endsWith(QLatin1Char('%'));
    const std::optional<double> value = parseDecimal(hasSign ? text.chopped(1) : text);
    return value && hasSign ? *value / 100.0 : value;
}

std::optional<NQRect> parseRect(const QString &text)
{
    std::vector<int> edges;
    for (const QString &part : text.split(QLatin1Char(',')))
        edges.push_back(parseInt(part, 0, std::numeric_limits<int>::max()).value_or(-1));
    if (edges.size() != 4 || edges[0] < 0 || edges[1] < 0 || edges[2] < edges[0]
        || edges[3] < edges[1])
        return {};
    return NQRect(edges[0], edges[1], edges[2], edges[3]);
}

std::optional<std::array<double, 3>> parseWeights(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    std::array<double, 3> weights{};
    if (parts.size() != static_cast<int>(weights.size()))
        return {};
    std::transform(parts.begin(), parts.end(), weights.begin(),
                   [](const QString &part) { return parseDecimal(part).value_or(0.0); });
    const double sum = weights[0] + weights[1] + weights[2];
    if (*std::min_element(weights.begin(), weights.end()) <= 0.0 || !std::isfinite(sum))
        return {};
    for (double &weight : weights)
        weight /= sum;
    return weights;
}

} // namespace seamrevise
