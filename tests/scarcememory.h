#pragma once

#include <cstddef>
#include <cstdint>

/// Makes operator new fail on demand, in every test of the program; nothing fails by default.
namespace scarcememory
{

/// How many non-throwing allocations succeed before all fail; none fails while it is negative.
inline int nothrowAllocationsLeft = -1;
/// Larger ones find no memory.
inline std::size_t largestAllocation = SIZE_MAX;

} // namespace scarcememory
