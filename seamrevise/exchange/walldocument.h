#pragma once

#include "exchange/jsonwriter.h"

#include <seamrevision/nqrect.h>
#include <seamrevision/nqsize.h>

#include <vector>

/// What JSON documents say of a wall, written alike in all of them. Each document chooses its
/// members; an object must be open.
namespace seamrevise
{

/// A member that is an array on one line.
void addInts(JsonWriter &json, const char *key, const std::vector<int> &numbers);

/// [width, height].
void addSize(JsonWriter &json, const char *key, const baseCommon::NQSize &size);

/// [first column, first row, last column, last row].
void addRect(JsonWriter &json, const char *key, const NQRect &rect);

/// The members `width` and `height` of a screen.
void addScreenSize(JsonWriter &json, const NQRect &screen);

/// The members `grid` and `band`.
void addGridAndBand(JsonWriter &json, const baseCommon::NQSize &grid,
                    const baseCommon::NQSize &band);

/// The member `layers`, which is null for a single layer, a count of 0.
void addLayers(JsonWriter &json, int layerCount);

/// The member `partitions`: the numbers of those that are corrected, and of those that are not.
void addPartitions(JsonWriter &json, const std::vector<int> &corrected,
                   const std::vector<int> &uncorrected);

} // namespace seamrevise
