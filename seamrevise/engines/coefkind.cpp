#include "engines/coefkind.h"

namespace seamrevise
{

CoefKind::~CoefKind() = default;

QString CoefKind::fillNeutral(const NQRect &)
{
    return {};
}

QMap<QString, AreaInfoBase *> CoefKind::makeAreas(const ScreenLayout &layout)
{
    QMap<QString, AreaInfoBase *> areas;
    m_areas.clear();
    m_areas.reserve(layout.partitions.size());
    for (const auto &[number, rect] : layout.partitions) {
        m_areas.emplace_back(number - 1, rect.top(), rect.left(), rect.bottom(), rect.right());
        areas.insert(m_areas.back().getAreaNum(), &m_areas.back());
    }
    return areas;
}

} // namespace seamrevise
