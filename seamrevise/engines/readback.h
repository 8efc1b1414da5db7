#pragma once

#include "engines/revisedzones.h"

#include <QString>

namespace seamrevise
{

/// Reads one of a partition's coefficient files from the disk, without an engine, and compares it
/// with the zone that it was written from, value by value. Calls may run at once. Empty, or what is
/// wrong with the file's name.
/// @param sha256  gets the hash of the bytes that were compared
QString readBackFault(const QString &path, int number, const NQRect &partition,
                      const CoefficientFormat &format, const RevisedZones &revised,
                      QByteArray &sha256);

} // namespace seamrevise
