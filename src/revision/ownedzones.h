#pragma once

#include <QMap>

#include <memory>

namespace seamrevision
{

/// Owns the zones of a map keyed by partition number. The steps take such maps with plain
/// pointers; this holder frees the zones on every path, through their exact type.
template <typename Zone>
class OwnedZones
{
public:
    OwnedZones() = default;
    OwnedZones(const OwnedZones &) = delete;
    OwnedZones &operator=(const OwnedZones &) = delete;
    ~OwnedZones() { clear(); }

    /// Takes a zone; one that is already there under the number is freed.
    void insert(int number, std::unique_ptr<Zone> zone)
    {
        Zone *&place = m_zones[number];
        delete place;
        place = zone.release();
    }

    /// Frees every zone and empties the map.
    void clear()
    {
        for (const Zone *zone : qAsConst(m_zones))
            delete zone;
        m_zones.clear();
    }

    /// The map itself; whatever is put into it with new is owned too.
    QMap<int, Zone *> &map() { return m_zones; }

private:
    QMap<int, Zone *> m_zones;
};

} // namespace seamrevision
