#include "singlelayer/coefs.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace seamrevision
{

std::size_t valueCount(std::size_t pixelCount)
{
    if (pixelCount > std::numeric_limits<std::size_t>::max() / valuesPerPixel)
        throw std::length_error("too many pixels");
    return pixelCount * valuesPerPixel;
}

std::vector<unsigned short> identityCoefs(std::size_t pixelCount)
{
    std::vector<unsigned short> coefs(valueCount(pixelCount), 0);
    setIdentityDiagonal(coefs.data(), pixelCount);
    return coefs;
}

void setIdentityDiagonal(unsigned short *values, std::size_t pixelCount)
{
    for (std::size_t pixel = 0; pixel < pixelCount; ++pixel, values += valuesPerPixel)
        values[0] = values[4] = values[8] = gainOne;
}

bool holdsWindow(const std::vector<unsigned short> &zoneCoefs, const PixelWindow &window)
{
    if (window.rowCount == 0)
        return true;
    const quint64 lastPixel
        = window.rowStart(window.rowCount - 1) + static_cast<quint64>(window.colCount) - 1;
    return lastPixel < zoneCoefs.size() / valuesPerPixel;
}

std::vector<unsigned short> cutOut(const std::vector<unsigned short> &zoneCoefs,
                                   const PixelWindow &window)
{
    const quint64 size = zoneCoefs.size();
    const auto valueAt = [&](quint64 pixel) {
        return zoneCoefs.data() + std::min(std::min(pixel, size) * valuesPerPixel, size);
    };
    // Rows as wide as the zone follow each other without gaps: one run, which copies faster than
    // many.
    const bool wholeRows = window.colCount == window.zoneWidth;
    const qint64 runCount = wholeRows ? std::min<qint64>(1, window.rowCount) : window.rowCount;
    const quint64 runPixels
        = wholeRows ? window.pixelCount() : static_cast<quint64>(window.colCount);
    std::vector<unsigned short> own;
    own.reserve(std::min(size, window.pixelCount() * valuesPerPixel));
    for (qint64 run = 0; run < runCount; ++run) {
        const quint64 start = window.rowStart(run);
        own.insert(own.end(), valueAt(start), valueAt(start + runPixels));
    }
    return own;
}

} // namespace seamrevision
