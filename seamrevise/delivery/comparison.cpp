#include "delivery/comparison.h"

#include "store/screenlayout.h"

#include <algorithm>
#include <cstdlib>

namespace seamrevise
{

namespace
{

/// Both hold the same number of values.
PartitionChange compareValues(const std::vector<qint32> &first, const std::vector<qint32> &second,
                              const NQRect &rect, qint64 valuesPerPixel)
{
    PartitionChange change;
    qint64 lastPixel = -1;
    qint64 largestAt = 0;
    double sum = 0.0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        const qint64 difference = std::abs(qint64{second[i]} - first[i]);
        if (difference == 0)
            continue;
        const qint64 pixel = static_cast<qint64>(i) / valuesPerPixel;
        ++change.values;
        change.pixels += pixel == lastPixel ? 0 : 1;
        lastPixel = pixel;
        sum += static_cast<double>(difference);
        if (difference > change.largest) {
            change.largest = difference;
            largestAt = static_cast<qint64>(i);
        }
    }
    if (change.values > 0)
        change.mean = sum / static_cast<double>(change.values);
    const qint64 pixel = largestAt / valuesPerPixel;
    change.row = rect.top() + static_cast<int>(pixel / columnsOf(rect));
    change.column = rect.left() + static_cast<int>(pixel % columnsOf(rect));
    change.index = static_cast<int>(largestAt % valuesPerPixel);
    return change;
}

qint64 countDifferent(const std::vector<qint32> &first, const std::vector<qint32> &second)
{
    qint64 count = 0;
    for (std::size_t i = 0; i < first.size(); ++i)
        count += first[i] != second[i] ? 1 : 0;
    return count;
}

QString comparePartition(const DeliveredSet &first, const DeliveredSet &second,
                         const ManifestPartition &partition, PartitionChange &change)
{
    const std::vector<CoefficientFormat> formats = coefficientFormats(first.manifest().layerCount);
    for (const CoefficientFormat &format : formats) {
        std::vector<qint32> one;
        std::vector<qint32> other;
        QString fault = first.read(partition, format, one);
        if (fault.isEmpty())
            fault = second.read(partition, format, other);
        if (!fault.isEmpty())
            return fault;
        if (&format == &formats.front())
            change = compareValues(one, other, partition.rect, format.valuesPerPixel);
        else
            change.packedWords = countDifferent(one, other);
    }
    change.number = partition.number;
    return {};
}

bool hasSamePlace(const ManifestPartition &one, const ManifestPartition *other)
{
    return other != nullptr && isSameRect(one.rect, other->rect);
}

Difference lacking(const ManifestPartition &partition, const DeliveredSet &set)
{
    return {QStringLiteral("layout"), QString(), partition.number,
            QStringLiteral("partition %1: is not at the same place in %2")
                .arg(partition.number)
                .arg(set.path())};
}

} // namespace

bool SetComparison::isSame() const
{
    return differences.empty()
        && std::all_of(partitions.begin(), partitions.end(),
                       [](const PartitionChange &change) { return change.isSame(); });
}

QString compareSets(const DeliveredSet &first, const DeliveredSet &second,
                    SetComparison &comparison)
{
    if (first.manifest().layerCount != second.manifest().layerCount) {
        comparison.differences.push_back(
            {QStringLiteral("layers"), QString(), 0,
             QStringLiteral("the sets hold different kinds of coefficients: %1 and %2 layers")
                 .arg(first.manifest().layerCount)
                 .arg(second.manifest().layerCount)});
        return {};
    }
    for (const ManifestPartition &partition : first.manifest().partitions) {
        if (!hasSamePlace(partition, second.manifest().partition(partition.number))) {
            comparison.differences.push_back(lacking(partition, second));
            continue;
        }
        PartitionChange change;
        const QString fault = comparePartition(first, second, partition, change);
        if (!fault.isEmpty())
            return fault;
        comparison.partitions.push_back(change);
    }
    for (const ManifestPartition &partition : second.manifest().partitions) {
        if (!first.manifest().partition(partition.number))
            comparison.differences.push_back(lacking(partition, first));
    }
    return {};
}

} // namespace seamrevise
