#pragma once

#include "commands/storedcoefficients.h"
#include "exchange/jsonwriter.h"
#include "numbers/seamnumbers.h"

#include <optional>
#include <ostream>
#include <vector>

/// How well a partition agrees with its neighbours, with old and with new coefficients.
namespace seamrevise
{

/// Of one seam; empty where a side has no coefficients, or not in the whole strip.
struct ChangedSeam
{
    SeamPair seam{};
    std::optional<Disagreement> before;
    std::optional<Disagreement> after;
};

/// The coefficients of a zone; without any pixel if there are none.
struct ZoneCoefficients
{
    NQRect zone;
    Coefficients coefficients;
};

/// Finds the seams of a partition whose neighbours have stored coefficients of the same kind as
/// `after`. False if a neighbour cannot be read; the store's errorText() says why.
bool findChangedSeams(SqlScreenStore &store, int number, const std::vector<StoredKind> &stored,
                      const ZoneCoefficients &before, const ZoneCoefficients &after,
                      std::vector<ChangedSeam> &seams);

void printSeams(const std::vector<ChangedSeam> &seams, std::ostream &out);
void addSeams(const std::vector<ChangedSeam> &seams, JsonWriter &json);

} // namespace seamrevise
