#pragma once

#include <seamrevision/nqrect.h>
#include <seamrevision/nqsize.h>

#include <QString>

#include <array>
#include <optional>
#include <vector>

/// Values of the command line. Empty if the text is not exactly such a value in its range.
namespace seamrevise
{

/// "1920x1080": two decimal numbers from `least` to 65535.
std::optional<baseCommon::NQSize> parseSize(const QString &text, int least);

std::optional<int> parseInt(const QString &text, int least, int most);

/// "5,9": decimal numbers from 1 to `most`.
std::optional<std::vector<int>> parseNumbers(const QString &text, int most);

/// "0.5%" or "0.005": a part of 1, not negative.
std::optional<double> parsePercent(const QString &text);

/// "C0,R0,C1,R1": first column and row, last column and row, all from 0; not inverted.
std::optional<NQRect> parseRect(const QString &text);

/// "R,G,B": positive numbers, returned scaled to the sum 1.
std::optional<std::array<double, 3>> parseWeights(const QString &text);

} // namespace seamrevise
