#include "numbers/wallnumbers.h"

namespace seamrevise
{

namespace
{

/// What keeps a seam from being blended; empty if nothing does.
QString hindrance(const WallPlan &plan, const Strip &strip)
{
    std::vector<int> uncorrected;
    for (const int number : {strip.seam.current, strip.seam.next}) {
        if (plan.corrected.count(number) == 0)
            uncorrected.push_back(number);
    }
    if (!uncorrected.empty())
        return QStringLiteral("not corrected: partition ") + listText(uncorrected);
    if (strip.width == 0)
        return QStringLiteral("no strip: with a band of %1 the zones share no pixel")
            .arg(sizeText(plan.band.width(), plan.band.height()));
    if (blendedPositions(strip, plan.margin) == 0)
        return QStringLiteral("nothing to blend: a margin of %1 leaves none of %2 positions")
            .arg(plan.margin)
            .arg(strip.width);
    return {};
}

} // namespace

WallNumbers wallNumbers(const WallPlan &plan, const WallMeasurements &measured)
{
    WallNumbers numbers;
    auto next = measured.strips.begin();
    for (const SeamPair &seam : seamsOf(plan.layout.grid)) {
        SeamReport report;
        report.strip = stripOf(plan.layout, seam, plan.band);
        report.reason = hindrance(plan, report.strip);
        report.revised = report.reason.isEmpty();
        const bool isMeasured = next != measured.strips.end()
            && next->strip.seam.current == seam.current && next->strip.seam.next == seam.next;
        if (isMeasured) {
            report.numbers = seamNumbers(next->strip, next->light, plan.margin, plan.stepLimit);
            report.shift = misregistration(next->strip, next->light);
            ++next;
        }
        numbers.seams.push_back(report);
    }
    for (const auto &entry : measured.changes)
        numbers.changes += entry.second;
    return numbers;
}

} // namespace seamrevise
