#include "commands/deliverydocument.h"

#include "exchange/walldocument.h"

namespace seamrevise
{

void writeWall(JsonWriter &json, const Manifest &manifest)
{
    json.beginObject("wall");
    addScreenSize(json, manifest.screen);
    addGridAndBand(json, manifest.grid, manifest.band);
    json.member("margin", manifest.margin);
    addLayers(json, manifest.layerCount);
    json.endObject();

    std::vector<int> corrected;
    std::vector<int> uncorrected;
    for (const ManifestPartition &partition : manifest.partitions)
        (partition.isCorrected ? corrected : uncorrected).push_back(partition.number);
    addPartitions(json, corrected, uncorrected);
}

void writeFindings(JsonWriter &json, const std::vector<Difference> &differences)
{
    json.beginArray("findings");
    for (const Difference &difference : differences) {
        json.beginObject(nullptr, JsonWriter::Inline);
        json.member("kind", difference.kind);
        json.member("severity", "error");
        if (difference.partition > 0)
            json.member("partition", difference.partition);
        if (!difference.file.isEmpty())
            json.member("file", difference.file);
        json.member("message", difference.message);
        json.endObject();
    }
    json.endArray();
}

} // namespace seamrevise
