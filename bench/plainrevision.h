#pragma once

#include "benchwall.h"

/// A revision as plainly as it can be said, to check results before they are timed.
namespace bench
{

/// Whether the result of an engine is success and holds the table of a plain revision.
bool isPlainSingleLayer(const Wall &wall, const MemoryDatabase &database,
                        const ST_ReviseResult &result);

/// The same for the layered table and its packed bytes.
bool isPlainLayered(const Wall &wall, const MemoryDatabase &database,
                    const ST_ReviseResult &result);

/// One value of a ramp across a strip.
int plainRamp(int a, int b, int position, int width);

} // namespace bench
