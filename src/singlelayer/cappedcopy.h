#pragma once

#include <cstddef>

namespace seamrevision
{

/// Copies values, each at most coefficientCap; the two runs do not overlap. For any processor.
void copyCappedPlainly(const unsigned short *values, std::size_t count, unsigned short *target);

/// The same past the caches where the processor can: a whole-screen table does not fit them, and
/// its lines need not be read before they are overwritten. Whatever reads the target later, on any
/// thread, finds the values.
void copyCapped(const unsigned short *values, std::size_t count, unsigned short *target);

} // namespace seamrevision
