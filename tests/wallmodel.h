#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <map>
#include <vector>

/// The whole road of a revision once more, as plainly as it can be said: a pixel is a vector of
/// ints, every loop visits one pixel, nothing is clever. It serves both engines.
namespace wallmodel
{

using Pixels = std::vector<std::vector<int>>;

/// Edges in screen pixels, all included.
struct Rect
{
    int top, left, bottom, right;

    int width() const { return std::max(0, right - left + 1); }
    int height() const { return std::max(0, bottom - top + 1); }
    int area() const { return width() * height(); }
    /// Where a pixel comes, row by row; pixels before the first come behind every table.
    std::size_t index(int row, int col) const
    {
        return static_cast<std::size_t>((row - top) * width() + col - left);
    }
};

struct Zone
{
    Rect rect;
    Pixels pixels;
};

struct Wall
{
    int layers = 0; ///< none with the single-layer engine
    Rect screen{};
    int gridCols = 1, gridRows = 1;
    int bandCols = 0, bandRows = 0;
    int margin = 0;
    int screenType = 0;
    std::map<int, Rect> partitions; ///< every number of the grid
    std::map<int, Zone> stored;     ///< the corrected ones, as in the database

    int valuesPerPixel() const { return layers > 0 ? 3 * layers : 9; }
};

/// Everything that a host can see of a revision.
struct Outcome
{
    int code = 0;
    QString text;
    std::map<int, int> states;
    Pixels table;
    std::vector<unsigned char> packed;
    std::map<QString, QByteArray> files; ///< plaintexts by file name
    std::map<QString, QByteArray> dumps; ///< by file name
    QStringList log;                     ///< "D ", "W " or "C " and the text
};

Outcome revise(const Wall &wall);

} // namespace wallmodel
