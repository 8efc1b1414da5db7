#pragma once

#include "engines/coefkind.h"

namespace seamrevise
{

/// Reads a partition's coefficient files back and compares them with the result of the revision,
/// or with neutral values if the partition is not corrected; their sizes too. The engine must be
/// the one that wrote them. Empty, or the first fault with the file's name.
QString checkFiles(CoefKind &kind, const QString &dir, int number, const NQRect &partition,
                   bool isCorrected);

/// Whether a text dump was written to its end, which the library does not check.
bool isWholeDump(const QString &path);

} // namespace seamrevise
