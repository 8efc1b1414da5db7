#pragma once

#include <cstddef>
#include <cstdint>

/// Makes allocations fail on demand, in every test of the program; nothing fails by default.
/// Without sanitizers, which have a malloc of their own, this is true of malloc as well, from which
/// Qt takes what its strings and lists hold.
namespace scarcememory
{

/// How many allocations succeed before the next ones fail; none fails while it is negative.
inline int allocationsLeft = -1;
/// Whether only one allocation fails.
inline bool failsOnce = false;
/// The same for non-throwing ones by themselves; after the last of these all fail.
inline int nothrowAllocationsLeft = -1;
/// Larger ones find no memory.
inline std::size_t largestAllocation = SIZE_MAX;

} // namespace scarcememory
