#pragma once

#include <QtGlobal>

#include <algorithm>

namespace seamrevise
{

/// What a revision did to the own pixels of corrected partitions, reckoned before any cap.
struct ChangeAccount
{
    qint64 values = 0;         ///< all that there are
    qint64 changed = 0;        ///< values
    qint64 largest = 0;        ///< change of a value, without its sign
    qint64 sum = 0;            ///< of all changes, without their signs
    qint64 aboveCap = 0;       ///< values that files keep and the table cuts
    qint64 changedOutside = 0; ///< pixels of the lines that changed outside every strip
    qint64 codes = 0;          ///< packed ones; none for single layer
    qint64 saturatedCodes = 0; ///< of them those at 0 or 1023

    /// Of the values that changed.
    double mean() const
    {
        return changed == 0 ? 0.0 : static_cast<double>(sum) / static_cast<double>(changed);
    }

    ChangeAccount &operator+=(const ChangeAccount &other)
    {
        values += other.values;
        changed += other.changed;
        largest = std::max(largest, other.largest);
        sum += other.sum;
        aboveCap += other.aboveCap;
        changedOutside += other.changedOutside;
        codes += other.codes;
        saturatedCodes += other.saturatedCodes;
        return *this;
    }
};

/// How the stored coefficients of a partition's own pixels look.
struct PartitionLooks
{
    qint64 pixels = 0;
    double luminanceSum = 0.0;
    qint64 values = 0;
    qint64 nearCap = 0;   ///< values from 99 % of the cap on
    qint64 dark = 0;      ///< pixels whose luminance is not above 0, but that are not dead
    qint64 dead = 0;      ///< pixels without any value but 0
    qint64 saturated = 0; ///< pixels with a value that is the largest that can be stored

    double meanLuminance() const { return luminanceSum / static_cast<double>(pixels); }
};

} // namespace seamrevise
