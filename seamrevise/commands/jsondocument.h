#pragma once

#include "exchange/jsonwriter.h"
#include "store/screenlayout.h"

#include <set>

/// What the JSON documents of the commands have in common.
namespace seamrevise
{

/// Begins a document: its schema, the wall, and which partitions are corrected.
void beginDocument(const ScreenLayout &layout, const std::set<int> &corrected, JsonWriter &json);

} // namespace seamrevise
