#pragma once

#include <QIODevice>
#include <QString>

#include <vector>

/// The headers of NumPy's array files, versions 1 to 3.
namespace seamrevise
{

/// What every NumPy array file begins with.
constexpr char npyMagic[] = "\x93NUMPY";
constexpr int npyMagicBytes = 6;

struct NpyHeader
{
    QString type; ///< of the values, "<u2"; empty: several values in one, with names
    bool isFortranOrder = false;
    std::vector<qint64> shape; ///< sides of 0 and more
};

/// Reads a header; the file then stands at the first value. Nothing that the file says about its
/// own lengths is trusted. Returns what is wrong, empty if nothing.
QString readNpyHeader(QIODevice &file, NpyHeader &header);

/// What values of a type are: "64-bit signed integers".
QString typeText(const QString &type);

/// "(12, 20, 9)".
QString shapeText(const std::vector<qint64> &shape);

} // namespace seamrevise
