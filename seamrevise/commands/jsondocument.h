#pragma once

#include "exchange/jsonwriter.h"
#include "numbers/seamnumbers.h"
#include "store/screenlayout.h"

#include <optional>
#include <set>

/// What the JSON documents of the commands have in common.
namespace seamrevise
{

/// Begins the document of a command: its schema, and its name.
void beginDocument(JsonWriter &json, const char *command);

/// The members `wall` and `partitions` of a layout.
void addLayout(JsonWriter &json, const ScreenLayout &layout, const std::set<int> &corrected);

/// Null members where there is none.
void addDisagreement(JsonWriter &json, const char *key,
                     const std::optional<Disagreement> &disagreement);

} // namespace seamrevise
