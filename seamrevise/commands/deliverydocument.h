#pragma once

#include "delivery/manifest.h"
#include "delivery/verification.h"
#include "exchange/jsonwriter.h"

#include <vector>

/// The JSON documents of commands that are about deliveries, as far as they share something.
namespace seamrevise
{

/// The members `wall` and `partitions` of a delivered wall.
void writeWall(JsonWriter &json, const Manifest &manifest);

/// The member `findings` of differences, which are errors all.
void writeFindings(JsonWriter &json, const std::vector<Difference> &differences);

} // namespace seamrevise
