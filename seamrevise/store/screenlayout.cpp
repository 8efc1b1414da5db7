#include "store/screenlayout.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

qint64 extent(int first, int last)
{
    return std::max<qint64>(0, qint64{last} - first + 1);
}

int clamped(qint64 value, int low, int high)
{
    return static_cast<int>(std::clamp<qint64>(value, low, std::max(low, high)));
}

/// The first pixel of part number `part` when a side is cut into parts of nearly equal length.
int partStart(int side, int parts, int part)
{
    return static_cast<int>(qint64{side} * part / parts);
}

} // namespace

qint64 columnsOf(const NQRect &rect)
{
    return extent(rect.left(), rect.right());
}

qint64 rowsOf(const NQRect &rect)
{
    return extent(rect.top(), rect.bottom());
}

qint64 pixelsOf(const NQRect &rect)
{
    constexpr qint64 most = qint64{1} << 48;
    const qint64 columns = columnsOf(rect);
    return columns != 0 && rowsOf(rect) > most / columns ? most : columns * rowsOf(rect);
}

bool isSameRect(const NQRect &first, const NQRect &second)
{
    return first.left() == second.left() && first.top() == second.top()
        && first.right() == second.right() && first.bottom() == second.bottom();
}

NQRect shared(const NQRect &first, const NQRect &second)
{
    return NQRect(std::max(first.left(), second.left()), std::max(first.top(), second.top()),
                  std::min(first.right(), second.right()),
                  std::min(first.bottom(), second.bottom()));
}

NQRect grown(const NQRect &rect, const baseCommon::NQSize &band, const NQRect &screen)
{
    return NQRect(clamped(qint64{rect.left()} - band.width(), screen.left(), screen.right()),
                  clamped(qint64{rect.top()} - band.height(), screen.top(), screen.bottom()),
                  clamped(qint64{rect.right()} + band.width(), screen.left(), screen.right()),
                  clamped(qint64{rect.bottom()} + band.height(), screen.top(), screen.bottom()));
}

QString sizeText(qint64 width, qint64 height)
{
    return QStringLiteral("%1x%2").arg(width).arg(height);
}

ScreenLayout regularLayout(const baseCommon::NQSize &size, const baseCommon::NQSize &grid,
                           const baseCommon::NQSize &band)
{
    ScreenLayout layout;
    layout.screen = NQRect(0, 0, size.width() - 1, size.height() - 1);
    layout.grid = grid;
    layout.band = band;
    for (int row = 0; row < grid.height(); ++row) {
        for (int col = 0; col < grid.width(); ++col) {
            layout.partitions[row * grid.width() + col + 1]
                = NQRect(partStart(size.width(), grid.width(), col),
                         partStart(size.height(), grid.height(), row),
                         partStart(size.width(), grid.width(), col + 1) - 1,
                         partStart(size.height(), grid.height(), row + 1) - 1);
        }
    }
    return layout;
}

StoredZone zoneOf(const ScreenLayout &layout, int number)
{
    return {number, grown(layout.partitions.at(number), layout.band, layout.screen)};
}

std::vector<SeamPair> seamsOf(const baseCommon::NQSize &grid)
{
    std::vector<SeamPair> seams;
    const auto addSeams = [&](enum_ReviseDirection direction, int rows, int cols, int distance) {
        for (int row = 0; row < rows; ++row) {
            for (int col = 0; col < cols; ++col) {
                const int number = row * grid.width() + col + 1;
                seams.push_back({number, number + distance, direction});
            }
        }
    };
    addSeams(ReviseDirection_Horizontal, grid.height(), grid.width() - 1, 1);
    addSeams(ReviseDirection_Vertical, grid.height() - 1, grid.width(), grid.width());
    return seams;
}

std::vector<SeamPair> seamsInEngineOrder(const baseCommon::NQSize &grid)
{
    std::vector<SeamPair> seams = seamsOf(grid);
    const auto column = [&](const SeamPair &seam) { return (seam.current - 1) % grid.width(); };
    const auto vertical = std::find_if(seams.begin(), seams.end(), [](const SeamPair &seam) {
        return seam.direction == ReviseDirection_Vertical;
    });
    std::stable_sort(vertical, seams.end(), [&](const SeamPair &one, const SeamPair &other) {
        return column(one) < column(other);
    });
    return seams;
}

} // namespace seamrevise
