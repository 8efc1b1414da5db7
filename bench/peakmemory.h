#pragma once

/// The peak memory of a revision, above what the process held before it. A process of its own runs
/// it, since memory that earlier cases left in the allocator would hide it.
namespace bench
{

constexpr const char *peakMemoryArgument = "--peak-memory-of";

/// What that process does: one revision of the engine of that name. Prints the peak, in bytes.
int runForPeakMemory(const char *engine);

} // namespace bench
