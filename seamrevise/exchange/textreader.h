#pragma once

#include "exchange/coefficients.h"

#include <QIODevice>
#include <QStringList>

namespace seamrevise
{

/// Reads the coefficients of a rectangle from a text dump: an empty line, then a line a pixel, row
/// by row, each value followed by a comma. Lines end in CR LF or LF. Nine values a line are a
/// single layer unless three layers are wanted, other multiples of three are layers.
/// Returns what is wrong: the first ten lines that are, and how many more; the coefficients are
/// then of no use.
QStringList readText(QIODevice &file, const WantedCoefficients &wanted, Coefficients &coefficients);

} // namespace seamrevise
