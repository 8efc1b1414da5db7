#pragma once

#include "numbers/finding.h"
#include "store/inventory.h"

namespace seamrevise
{

/// What keeps a layout, stored or not, from being a complete grid.
Findings layoutFindings(const ScreenLayout &layout);

/// What keeps a wall from being revised: everything that is wrong with its layout and with the
/// stored zones of one layer count (0: single layer), seen from what is stored and without reading
/// the coefficients themselves.
///
/// @param layout  as it is stored; of a number that is there twice, either place
Findings inputFindings(const StoredInventory &inventory, const ScreenLayout &layout, int layerCount,
                       const baseCommon::NQSize &band);

/// The layer counts that are stored.
std::vector<int> storedLayerCounts(const StoredInventory &inventory);

} // namespace seamrevise
