#pragma once

#include "commands/commonoptions.h"
#include "exchange/jsonwriter.h"
#include "store/screenlayout.h"

#include <QStringList>

#include <set>

/// What the JSON documents of the commands have in common.
namespace seamrevise
{

/// Begins a document: its schema, the wall, and which partitions are corrected.
void beginDocument(const ScreenLayout &layout, const std::set<int> &corrected, JsonWriter &json);

/// Refuses a command line whose document would replace one of the command's inputs.
void refuseInputs(const CommonOptions &common, const QStringList &inputs);

} // namespace seamrevise
