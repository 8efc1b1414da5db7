#include "commands/jsondocument.h"

#include "commands/optiontable.h"
#include "commands/outputfiles.h"

namespace seamrevise
{

namespace
{

void addNumbers(const char *key, const std::vector<int> &numbers, JsonWriter &json)
{
    json.beginArray(key, JsonWriter::Inline);
    for (const int number : numbers)
        json.value(number);
    json.endArray();
}

} // namespace

void beginDocument(const ScreenLayout &layout, const std::set<int> &corrected, JsonWriter &json)
{
    json.beginObject();
    json.member("schema", "seamrevise/1");
    json.beginObject("wall");
    json.member("width", columnsOf(layout.screen));
    json.member("height", rowsOf(layout.screen));
    addRect("screen", layout.screen, json);
    addNumbers("grid", {layout.grid.width(), layout.grid.height()}, json);
    addNumbers("band", {layout.band.width(), layout.band.height()}, json);
    json.endObject();

    std::vector<int> uncorrected;
    for (const auto &entry : layout.partitions) {
        if (corrected.count(entry.first) == 0)
            uncorrected.push_back(entry.first);
    }
    json.beginObject("partitions");
    addNumbers("corrected", {corrected.begin(), corrected.end()}, json);
    addNumbers("uncorrected", uncorrected, json);
    json.endObject();
}

void addRect(const char *key, const NQRect &rect, JsonWriter &json)
{
    addNumbers(key, {rect.left(), rect.top(), rect.right(), rect.bottom()}, json);
}

void refuseInputs(const CommonOptions &common, const QStringList &inputs)
{
    for (const QString &input : inputs) {
        if (!common.jsonFile.isEmpty() && !input.isEmpty() && isSameFile(common.jsonFile, input))
            refuse(QStringLiteral("--json would replace %1, which is read").arg(input));
    }
}

} // namespace seamrevise
