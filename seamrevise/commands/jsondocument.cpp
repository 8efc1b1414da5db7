#include "commands/jsondocument.h"

#include "exchange/walldocument.h"

namespace seamrevise
{

void beginDocument(JsonWriter &json, const char *command)
{
    json.beginObject();
    json.member("schema", "seamrevise/1");
    json.member("command", command);
}

void addLayout(JsonWriter &json, const ScreenLayout &layout, const std::set<int> &corrected)
{
    json.beginObject("wall");
    addScreenSize(json, layout.screen);
    addRect(json, "screen", layout.screen);
    addGridAndBand(json, layout.grid, layout.band);
    json.endObject();

    std::vector<int> uncorrected;
    for (const auto &entry : layout.partitions) {
        if (corrected.count(entry.first) == 0)
            uncorrected.push_back(entry.first);
    }
    addPartitions(json, {corrected.begin(), corrected.end()}, uncorrected);
}

void addDisagreement(JsonWriter &json, const char *key,
                     const std::optional<Disagreement> &disagreement)
{
    const auto member = [&](const char *name, auto part) {
        json.member(name, disagreement ? std::optional((*disagreement).*part) : std::nullopt);
    };
    json.beginObject(key, JsonWriter::Inline);
    member("median", &Disagreement::median);
    member("worst", &Disagreement::worst);
    member("worst_line", &Disagreement::worstLine);
    json.endObject();
}

} // namespace seamrevise
