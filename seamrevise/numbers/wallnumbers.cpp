#include "numbers/wallnumbers.h"

#include "process/parallel.h"

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

bool isSame(const SeamPair &one, const SeamPair &other)
{
    return one.current == other.current && one.next == other.next;
}

/// A seam before anything is measured of it.
SeamReport reportOf(const WallPlan &plan, const Strip &strip)
{
    SeamReport report;
    report.strip = strip;
    report.reason = hindrance(plan, strip);
    report.revised = report.reason.isEmpty();
    return report;
}

} // namespace

WallNumbers wallNumbers(const WallPlan &plan, const WallMeasurements &measured)
{
    WallNumbers numbers;
    std::vector<std::size_t> places; // of the measured strips among the seams
    for (const SeamPair &seam : seamsOf(plan.layout.grid)) {
        const Strip strip = stripOf(plan.layout, seam, plan.band);
        if (places.size() < measured.strips.size()
            && isSame(measured.strips[places.size()].strip.seam, seam))
            places.push_back(numbers.seams.size());
        numbers.seams.push_back(reportOf(plan, strip));
    }
    forEachInParallel(static_cast<int>(places.size()), [&](int i) {
        const auto &[strip, light] = measured.strips[static_cast<std::size_t>(i)];
        SeamReport &report = numbers.seams[places[static_cast<std::size_t>(i)]];
        report.numbers = seamNumbers(strip, light, plan.margin, plan.stepLimit);
        report.shift = misregistration(strip, light);
    });
    for (const auto &entry : measured.changes)
        numbers.changes += entry.second;
    return numbers;
}

} // namespace seamrevise
