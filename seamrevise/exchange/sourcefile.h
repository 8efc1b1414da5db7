#pragma once

#include "exchange/coefficients.h"
#include "store/screenlayout.h"

#include <QString>
#include <QStringList>

/// Files that coefficients of a zone come from and go to: NumPy arrays and text dumps.
namespace seamrevise
{

enum class SourceFormat
{
    Npy,
    Text
};

/// Reads a file of either format, told by how it begins. Returns what is wrong, without the file's
/// name; the coefficients are then of no use.
QStringList readSource(const QString &path, const WantedCoefficients &wanted,
                       Coefficients &coefficients);

/// Writes the coefficients of a zone and reads the file back; a file that exists is replaced.
/// Empty, or what went wrong with the file's name.
QString writeSource(const QString &path, SourceFormat format, const NQRect &zone,
                    const Coefficients &coefficients);

} // namespace seamrevise
