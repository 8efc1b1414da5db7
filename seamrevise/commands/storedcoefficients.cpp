#include "commands/storedcoefficients.h"

#include "store/sqlscreenstore.h"

#include <seamrevision/coefszoneinfo.h>
#include <seamrevision/multilayercoefzoneinfo.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace seamrevise
{

namespace
{

bool getLayered(SqlScreenStore &store, const StoredKind &kind, std::vector<qint32> &values)
{
    MultiLayerCoefZoneInfo zone;
    if (store.readMultiLayerAreaCoefficients(static_cast<unsigned int>(kind.layerCount),
                                             static_cast<unsigned int>(kind.zone.number), zone)
        != 0)
        return false;
    values.clear();
    values.reserve(zone.m_multiLayerCoefs.size()
                   * static_cast<std::size_t>(valuesPerPixel(kind.layerCount)));
    for (const std::vector<int> &pixel : zone.m_multiLayerCoefs)
        values.insert(values.end(), pixel.begin(), pixel.end());
    return true;
}

} // namespace

bool listStored(SqlScreenStore &store, std::vector<StoredKind> &kinds)
{
    kinds.clear();
    StoredInventory inventory;
    if (!store.readInventory(inventory))
        return false;
    for (const StoredInventory::Coefficients &stored : inventory.coefficients)
        kinds.push_back({{stored.number, stored.rect}, stored.layerCount});
    std::sort(kinds.begin(), kinds.end(), [](const StoredKind &first, const StoredKind &second) {
        return std::tie(first.zone.number, first.layerCount)
            < std::tie(second.zone.number, second.layerCount);
    });
    return true;
}

bool getCoefficients(SqlScreenStore &store, const StoredKind &kind, Coefficients &coefficients)
{
    coefficients = Coefficients();
    coefficients.layerCount = kind.layerCount;
    if (kind.layerCount != 0)
        return getLayered(store, kind, coefficients.layered);
    CoefsZoneInfo zone;
    if (store.readAreaCoefficients(kind.zone.number, zone) != 0)
        return false;
    coefficients.single = std::move(zone.m_arrayData);
    return true;
}

bool putCoefficients(SqlScreenStore &store, const StoredZone &zone,
                     const Coefficients &coefficients)
{
    return coefficients.layerCount == 0
        ? store.put(zone, coefficients.single)
        : store.putLayered(zone, coefficients.layerCount, coefficients.layered);
}

} // namespace seamrevise
