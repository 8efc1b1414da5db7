#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

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
    int top;
    int left;
    int bottom;
    int right;

    int width() const { return right - left + 1; }
    int height() const { return bottom - top + 1; }
    int area() const { return width() * height(); }
    bool contains(int row, int col) const
    {
        return row >= top && row <= bottom && col >= left && col <= right;
    }
};

struct Zone
{
    Rect rect;
    Pixels pixels;
};

struct Wall
{
    bool layered;
    int layers;
    Rect screen;
    int gridCols;
    int gridRows;
    int bandCols;
    int bandRows;
    int margin;
    int screenType;
    std::map<int, Rect> partitions; ///< every number of the grid
    std::map<int, Zone> stored;     ///< the corrected ones, as in the database

    int valuesPerPixel() const { return layered ? 3 * layers : 9; }
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

/// One value of a ramp across a strip.
int blend(int a, int b, int position, int width, bool layered);

} // namespace wallmodel
