#include "commands/runreport.h"

#include "commands/jsondocument.h"
#include "exchange/walldocument.h"

namespace seamrevise
{

namespace
{

void addWall(JsonWriter &json, const RunReport &report)
{
    json.beginObject("wall");
    addScreenSize(json, report.screen);
    addGridAndBand(json, report.grid, report.band);
    json.member("margin", report.margin);
    addLayers(json, report.layerCount);
    addInts(json, "stored_layers", report.storedLayerCounts);
    json.endObject();
}

void addStep(JsonWriter &json, const char *key, const std::optional<Step> &step)
{
    json.beginObject(key, JsonWriter::Inline);
    json.member("worst", step ? std::optional<double>(step->worst) : std::nullopt);
    json.member("mean", step ? std::optional<double>(step->mean) : std::nullopt);
    json.member("worst_line", step ? std::optional<int>(step->worstLine) : std::nullopt);
    json.endObject();
}

void addSeam(JsonWriter &json, const SeamReport &seam)
{
    const SeamNumbers &numbers = seam.numbers;
    json.beginObject();
    json.member("current", seam.strip.seam.current);
    json.member("next", seam.strip.seam.next);
    json.member("direction", seam.strip.isHorizontal() ? "horizontal" : "vertical");
    json.member("revised", seam.revised);
    json.member("reason", seam.reason.isEmpty() ? std::optional<QString>() : seam.reason);
    json.member("strip_width", seam.strip.width);
    json.member("dark_pixels", numbers.darkPixels);
    addDisagreement(json, "disagreement", numbers.disagreement);
    json.beginObject("step");
    addStep(json, "before", numbers.before);
    addStep(json, "after", numbers.after);
    json.endObject();
    json.member("width_needed", numbers.widthNeeded);
    json.endObject();
}

void addChanges(JsonWriter &json, const RunReport &report)
{
    if (!report.numbers) {
        json.member("changes", std::optional<int>());
        return;
    }
    const ChangeAccount &changes = report.numbers->changes;
    json.beginObject("changes");
    json.member("values", changes.values);
    json.member("changed", changes.changed);
    json.member("largest", changes.largest);
    json.member("mean", changes.mean());
    json.member("cap", report.cap);
    json.member("above_cap", changes.aboveCap);
    json.member("pixels_outside_strips", changes.changedOutside);
    const bool isPacked = report.layerCount > 0;
    json.member("packed_codes", isPacked ? std::optional<qint64>(changes.codes) : std::nullopt);
    json.member("saturated_codes",
                isPacked ? std::optional<qint64>(changes.saturatedCodes) : std::nullopt);
    json.endObject();
}

void addFinding(JsonWriter &json, const Finding &finding)
{
    json.beginObject();
    json.member("kind", finding.kind);
    json.member("severity", severityText(finding.severity));
    if (finding.partition)
        json.member("partition", *finding.partition);
    if (finding.seam)
        addInts(json, "seam", {finding.seam->current, finding.seam->next});
    json.member("value", finding.value);
    json.member("message", finding.message);
    json.endObject();
}

void addTimes(JsonWriter &json, const RunReport &report)
{
    json.beginObject("seconds_of_parts", JsonWriter::Inline);
    for (const PartTime &part : report.parts)
        json.member(part.name, part.seconds);
    json.endObject();
    json.member("seconds", report.seconds);
}

void addWallNumbers(JsonWriter &json, const RunReport &report)
{
    addWall(json, report);
    addPartitions(json, report.corrected, report.uncorrected);
    json.beginArray("seams");
    if (report.numbers) {
        for (const SeamReport &seam : report.numbers->seams)
            addSeam(json, seam);
    }
    json.endArray();
    addChanges(json, report);
}

std::optional<QString> textOrNone(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional<QString>(text);
}

/// What became of the files; of a run that delivers.
void addDelivery(JsonWriter &json, const RunReport &report)
{
    if (report.outputDir.isEmpty())
        return;
    json.beginObject("delivery");
    json.member("directory", report.outputDir);
    json.member("dry_run", report.isDryRun);
    json.member("differences", textOrNone(report.differences));
    json.member("kept", textOrNone(report.keptName));
    json.endObject();
}

} // namespace

JsonWriter reportDocument(const RunReport &report)
{
    JsonWriter json;
    beginDocument(json, report.command);
    addWallNumbers(json, report);
    json.beginArray("findings");
    for (const Finding &finding : report.findings)
        addFinding(json, finding);
    json.endArray();
    writeFiles(json, report.files);
    addDelivery(json, report);
    addTimes(json, report);
    json.endObject();
    return json;
}

JsonWriter numbersDocument(const RunReport &report)
{
    JsonWriter json;
    json.beginObject();
    json.member("schema", "seamrevise/1");
    json.member("kind", "numbers");
    addWallNumbers(json, report);
    json.endObject();
    return json;
}

} // namespace seamrevise
