#pragma once

#include "commands/import.h"

namespace seamrevise
{

/// Takes the coefficients of one partition into a wall that is there.
int importPartition(const ImportOptions &options, std::ostream &out, std::ostream &err);

/// Makes a partition uncorrected.
int removePartition(const ImportOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
