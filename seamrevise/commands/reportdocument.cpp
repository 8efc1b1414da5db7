#include "commands/runreport.h"

namespace seamrevise
{

namespace
{

void addPair(JsonWriter &json, const char *key, const baseCommon::NQSize &size)
{
    json.beginArray(key, JsonWriter::Inline);
    json.value(size.width());
    json.value(size.height());
    json.endArray();
}

void addNumbers(JsonWriter &json, const char *key, const std::vector<int> &numbers)
{
    json.beginArray(key, JsonWriter::Inline);
    for (const int number : numbers)
        json.value(number);
    json.endArray();
}

void addWall(JsonWriter &json, const RunReport &report)
{
    json.beginObject("wall");
    json.member("width", columnsOf(report.screen));
    json.member("height", rowsOf(report.screen));
    addPair(json, "grid", report.grid);
    addPair(json, "band", report.band);
    json.member("margin", report.margin);
    json.member("layers",
                report.layerCount > 0 ? std::optional<int>(report.layerCount) : std::nullopt);
    addNumbers(json, "stored_layers", report.storedLayerCounts);
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

void addDisagreement(JsonWriter &json, const std::optional<Disagreement> &disagreement)
{
    const bool isThere = disagreement.has_value();
    json.beginObject("disagreement", JsonWriter::Inline);
    json.member("median", isThere ? std::optional<double>(disagreement->median) : std::nullopt);
    json.member("worst", isThere ? std::optional<double>(disagreement->worst) : std::nullopt);
    json.member("worst_line", isThere ? std::optional<int>(disagreement->worstLine) : std::nullopt);
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
    addDisagreement(json, numbers.disagreement);
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
        addPair(json, "seam", {finding.seam->current, finding.seam->next});
    json.member("value", finding.value);
    json.member("message", finding.message);
    json.endObject();
}

void addFile(JsonWriter &json, const ManifestFile &file)
{
    json.beginObject(nullptr, JsonWriter::Inline);
    json.member("name", file.name);
    json.member("bytes", file.bytes);
    json.member("sha256", QString::fromLatin1(file.sha256));
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
    json.beginObject("partitions");
    addNumbers(json, "corrected", report.corrected);
    addNumbers(json, "uncorrected", report.uncorrected);
    json.endObject();
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
    json.beginObject();
    json.member("schema", "seamrevise/1");
    json.member("command", report.command);
    addWallNumbers(json, report);
    json.beginArray("findings");
    for (const Finding &finding : report.findings)
        addFinding(json, finding);
    json.endArray();
    json.beginArray("files");
    for (const ManifestFile &file : report.files)
        addFile(json, file);
    json.endArray();
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
