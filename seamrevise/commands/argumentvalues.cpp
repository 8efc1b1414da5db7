#include "commands/argumentvalues.h"

#include <QStringList>

#include <algorithm>

namespace seamrevise
{

namespace
{

constexpr int longestSide = 65535;

bool isDigits(const QString &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar letter) {
        return letter >= QLatin1Char('0') && letter <= QLatin1Char('9');
    });
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

} // namespace seamrevise
