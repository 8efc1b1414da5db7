#pragma once

#include "benchwall.h"

/// The yardsticks of the engines: the movement of memory that no revision can avoid, from the
/// first allocation to the last release, without a zone, a seam, a check or a message.
namespace bench
{

/// The database copies every stored zone; every value is written once, capped, into a table that
/// grows row by row of the screen.
void moveSingleLayer(const Wall &wall, const MemoryDatabase &database);

/// The database fills a zone in its manner; the rows of the partitions' own pixels, copied where
/// the database wants them back and exchanged where it does not, are capped and packed.
void moveLayered(const Wall &wall, const MemoryDatabase &database);

} // namespace bench
