#pragma once

#include "exchange/coefficients.h"

#include <QIODevice>
#include <QStringList>

namespace seamrevise
{

/// Reads the coefficients of a rectangle from a NumPy array file of either byte order, in C or
/// Fortran order:
///     uint16            rows x columns x 9, or rows x columns x 3 x 3
///     int32             rows x columns x 3 * layers
///     float32, float64  any of these shapes; gains, of which 1 is neutral. Nine values a pixel
///                       are a single layer unless three layers are wanted. A gain is rounded to
///                       the nearest coefficient, half to even.
/// Returns what is wrong, all of it; the coefficients are then of no use.
QStringList readNpy(QIODevice &file, const WantedCoefficients &wanted, Coefficients &coefficients);

} // namespace seamrevise
