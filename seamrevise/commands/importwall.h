#pragma once

#include "commands/import.h"

namespace seamrevise
{

/// Takes the coefficients of a whole wall, whose layout file the options name, into a new database
/// or in place of all that an old one holds.
int importWall(const ImportOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
