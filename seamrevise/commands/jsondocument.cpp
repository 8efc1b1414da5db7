#include "commands/jsondocument.h"

#include "exchange/walldocument.h"

namespace seamrevise
{

void beginDocument(const ScreenLayout &layout, const std::set<int> &corrected, JsonWriter &json)
{
    json.beginObject();
    json.member("schema", "seamrevise/1");
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

} // namespace seamrevise
