#pragma once

#include <seamrevision/nqsize.h>

#include <QString>

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

} // namespace seamrevise
