#include "engines/coefkind.h"

namespace seamrevise
{

CoefKind::~CoefKind() = default;

QString CoefKind::fillNeutral(const NQRect &)
{
    return {};
}

std::vector<DumpFile> CoefKind::dumps(const DumpPlan &plan) const
{
    std::vector<DumpFile> files;
    for (const DumpKind &kind : dumpKinds()) {
        if (kind.what == Dumped::Screen)
            files.push_back({kind.name, dumpShape(kind.what, {}, {}, plan)});
        if (kind.what == Dumped::Screen || (kind.what == Dumped::PackedBytes && !plan.withFiles))
            continue;
        for (const auto &[number, stored] : plan.storedZones)
            files.push_back(
                {kind.name.arg(number),
                 dumpShape(kind.what, stored, plan.layout.partitions.at(number), plan)});
    }
    return files;
}

DumpShape CoefKind::dumpShape(Dumped what, const NQRect &stored, const NQRect &own,
                              const DumpPlan &plan) const
{
    const std::vector<CoefficientFormat> formats = coefficientFormats(layerCount());
    const qint64 perPixel = formats.front().valuesPerPixel;
    switch (what) {
    case Dumped::StoredZone:
        return {pixelsOf(stored), perPixel};
    case Dumped::OwnPixels:
        return {pixelsOf(own), perPixel};
    case Dumped::Zone:
        return {pixelsOf(grown(own, plan.band, plan.layout.screen)), perPixel};
    case Dumped::PackedBytes:
        return {pixelsOf(own) * formats.back().bytesPerPixel(), 0};
    case Dumped::Screen:
        break;
    }
    return {pixelsOf(plan.layout.screen), perPixel};
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
