#include "commands/disagreements.h"

#include "commands/jsondocument.h"
#include "numbers/finding.h"
#include "numbers/luminance.h"
#include "store/sqlscreenstore.h"

#include <algorithm>
#include <utility>

namespace seamrevise
{

namespace
{

double luminanceAt(const ZoneCoefficients &stored, int row, int col)
{
    const Coefficients &coefficients = stored.coefficients;
    const auto values = static_cast<std::size_t>(valuesPerPixel(coefficients.layerCount));
    const std::size_t first = pixelIndex(stored.zone, row, col) * values;
    return coefficients.layerCount == 0
        ? matrixLuminance(&coefficients.single[first], usualWeights)
        : layeredLuminance(&coefficients.layered[first], values, usualWeights);
}

std::vector<double> lightOf(const Strip &strip, const ZoneCoefficients &stored)
{
    std::vector<double> light(strip.pixelCount());
    for (int row = strip.rect.top(); row <= strip.rect.bottom(); ++row) {
        for (int col = strip.rect.left(); col <= strip.rect.right(); ++col)
            light[strip.indexOfPixel(row, col)] = luminanceAt(stored, row, col);
    }
    return light;
}

/// Of two sides of a seam, of which `own` is that of the partition that changes.
std::optional<Disagreement> disagreementOf(const Strip &strip, bool isOwnCurrent,
                                           const ZoneCoefficients &own,
                                           const ZoneCoefficients &other)
{
    const auto holdsStrip = [&strip](const ZoneCoefficients &side) {
        return pixelsOf(shared(side.zone, strip.rect)) == pixelsOf(strip.rect);
    };
    if (strip.width == 0 || !holdsStrip(own) || !holdsStrip(other))
        return {};
    StripLight light{lightOf(strip, own), lightOf(strip, other), {}};
    if (!isOwnCurrent)
        std::swap(light.current, light.next);
    light.delivered = light.current; // nothing is revised yet
    constexpr double anyStep = 1.0;
    return seamNumbers(strip, light, 0, anyStep).disagreement;
}

const StoredKind *kindOf(const std::vector<StoredKind> &stored, int number, int layerCount)
{
    const auto found = std::find_if(stored.begin(), stored.end(), [&](const StoredKind &kind) {
        return kind.zone.number == number && kind.layerCount == layerCount;
    });
    return found == stored.end() ? nullptr : &*found;
}

std::string percent(const std::optional<Disagreement> &disagreement)
{
    const QString text = disagreement ? percentText(disagreement->median) : QStringLiteral("-  ");
    return text.rightJustified(11).toStdString();
}

} // namespace

bool findChangedSeams(SqlScreenStore &store, int number, const std::vector<StoredKind> &stored,
                      const ZoneCoefficients &before, const ZoneCoefficients &after,
                      std::vector<ChangedSeam> &seams)
{
    for (const SeamPair &seam : seamsOf(store.layout().grid)) {
        if (seam.current != number && seam.next != number)
            continue;
        const bool isCurrent = seam.current == number;
        const StoredKind *const kind
            = kindOf(stored, isCurrent ? seam.next : seam.current, after.coefficients.layerCount);
        if (!kind)
            continue;
        ZoneCoefficients other{kind->zone.rect, {}};
        if (!getCoefficients(store, *kind, other.coefficients))
            return false;
        const Strip strip = stripOf(store.layout(), seam, store.layout().band);
        seams.push_back({seam, disagreementOf(strip, isCurrent, before, other),
                         disagreementOf(strip, isCurrent, after, other)});
    }
    return true;
}

void printSeams(const std::vector<ChangedSeam> &seams, std::ostream &out)
{
    if (seams.empty()) {
        out << "no neighbour has coefficients of this kind\n";
        return;
    }
    out << "disagreement with the neighbours, median along a seam\n"
           "                       before      after\n";
    for (const ChangedSeam &seam : seams) {
        const QString name
            = QStringLiteral("  seam %1 - %2").arg(seam.seam.current).arg(seam.seam.next);
        out << name.leftJustified(20).toStdString() << percent(seam.before) << percent(seam.after)
            << '\n';
    }
}

void addSeams(const std::vector<ChangedSeam> &seams, JsonWriter &json)
{
    json.beginArray("seams");
    for (const ChangedSeam &seam : seams) {
        json.beginObject();
        json.member("current", seam.seam.current);
        json.member("next", seam.seam.next);
        json.member("direction",
                    seam.seam.direction == ReviseDirection_Horizontal ? "horizontal" : "vertical");
        addDisagreement(json, "before", seam.before);
        addDisagreement(json, "after", seam.after);
        json.endObject();
    }
    json.endArray();
}

} // namespace seamrevise
