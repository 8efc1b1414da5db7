#pragma once

#include "benchwall.h"

/// The yardsticks of the engines: the movement of memory that no revision can avoid, from the
/// first allocation to the last release, without a seam, a check or a message.
namespace bench
{

void moveSingleLayer(const Wall &wall, const MemoryDatabase &database);

void moveLayered(const Wall &wall, const MemoryDatabase &database);

} // namespace bench
