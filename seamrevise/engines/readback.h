#pragma once

#include "engines/revisedzones.h"

#include <QString>

namespace seamrevise
{

/// Reads a partition's coefficient files from the disk, without an engine, and compares them with
/// the zones that they were written from, value by value. Calls for different partitions may run at
/// once. Empty, or the first fault with the file's name.
QString readBackFault(const QString &dir, int number, const NQRect &partition,
                      const std::vector<CoefficientFormat> &formats, const RevisedZones &revised);

} // namespace seamrevise
