#pragma once

#include "delivery/deliveredset.h"
#include "delivery/verification.h"

#include <QString>

#include <vector>

namespace seamrevise
{

/// How much a partition's coefficients differ between two sets.
struct PartitionChange
{
    int number = 0;
    qint64 pixels = 0;      ///< with at least one value that differs
    qint64 values = 0;      ///< that differ
    qint64 packedWords = 0; ///< that differ; only of layers
    qint64 largest = 0;     ///< magnitude of the largest difference
    double mean = 0.0;      ///< magnitude, over the values that differ
    int row = 0;            ///< where the largest is: the pixel on the screen
    int column = 0;
    int index = 0; ///< and its coefficient, from 0

    bool isSame() const { return values == 0 && packedWords == 0; }
};

/// Two sets held against each other, value by value.
struct SetComparison
{
    std::vector<Difference> differences; ///< what cannot be compared at all
    std::vector<PartitionChange> partitions;

    bool isSame() const;
};

/// Empty, or which file cannot be read.
QString compareSets(const DeliveredSet &first, const DeliveredSet &second,
                    SetComparison &comparison);

} // namespace seamrevise
