#pragma once

#include <QString>
#include <QtGlobal>

namespace seamrevise
{

/// What a text dump holds: a line for each pixel, or for each byte of packed codes.
struct DumpShape
{
    qint64 lines;
    qint64 valuesPerLine; ///< each followed by a comma; 0: one number alone
};

/// Whether a text dump was written to its end, which the library does not check: all lines are
/// there with all their values, and every line has its end. Empty, or what is wrong with the file's
/// name.
QString dumpFault(const QString &path, const DumpShape &shape);

} // namespace seamrevise
