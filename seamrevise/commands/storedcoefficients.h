#pragma once

#include "exchange/coefficients.h"
#include "store/screenlayout.h"

#include <vector>

/// The coefficients of a screen database, whatever their kind.
namespace seamrevise
{

class SqlScreenStore;

/// That a partition has coefficients, and of which kind.
struct StoredKind
{
    StoredZone zone;
    int layerCount = 0; ///< 0: single layer
};

// What fails here is in the store's errorText().

/// Lists what is stored, by number and layer count, without reading it.
bool listStored(SqlScreenStore &store, std::vector<StoredKind> &kinds);
bool getCoefficients(SqlScreenStore &store, const StoredKind &kind, Coefficients &coefficients);
bool putCoefficients(SqlScreenStore &store, const StoredZone &zone,
                     const Coefficients &coefficients);

} // namespace seamrevise
