#pragma once

#include "revision/pixelwindow.h"

#include <cstddef>
#include <vector>

/// The layout of single-layer coefficients: see CoefsZoneInfo.
namespace seamrevision
{

constexpr std::size_t valuesPerPixel = 9;
constexpr unsigned short gainOne = 2048;
/// The largest value that the whole-screen table may hold after saving.
constexpr unsigned short coefficientCap = 0x999;

/// Values of pixelCount pixels; throws std::length_error where no array could hold them.
std::size_t valueCount(std::size_t pixelCount);

/// pixelCount times the identity matrix.
std::vector<unsigned short> identityCoefs(std::size_t pixelCount);

/// Writes the diagonal of the identity matrix into pixelCount pixels; the rest stays.
void setIdentityDiagonal(unsigned short *values, std::size_t pixelCount);

/// Whether a zone's array holds all nine values of every pixel of a window.
bool holdsWindow(const std::vector<unsigned short> &zoneCoefs, const PixelWindow &window);

/// The values of a window that the array holds, row by row without gaps.
std::vector<unsigned short> cutOut(const std::vector<unsigned short> &zoneCoefs,
                                   const PixelWindow &window);

} // namespace seamrevision
