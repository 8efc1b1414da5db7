#include "exchange/walldocument.h"

#include "store/screenlayout.h"

namespace seamrevise
{

void addInts(JsonWriter &json, const char *key, const std::vector<int> &numbers)
{
    json.beginArray(key, JsonWriter::Inline);
    for (const int number : numbers)
        json.value(number);
    json.endArray();
}

void addSize(JsonWriter &json, const char *key, const baseCommon::NQSize &size)
{
    addInts(json, key, {size.width(), size.height()});
}

void addRect(JsonWriter &json, const char *key, const NQRect &rect)
{
    addInts(json, key, {rect.left(), rect.top(), rect.right(), rect.bottom()});
}

void addScreenSize(JsonWriter &json, const NQRect &screen)
{
    json.member("width", columnsOf(screen));
    json.member("height", rowsOf(screen));
}

void addGridAndBand(JsonWriter &json, const baseCommon::NQSize &grid,
                    const baseCommon::NQSize &band)
{
    addSize(json, "grid", grid);
    addSize(json, "band", band);
}

void addLayers(JsonWriter &json, int layerCount)
{
    json.member("layers", layerCount > 0 ? std::optional<int>(layerCount) : std::nullopt);
}

void addPartitions(JsonWriter &json, const std::vector<int> &corrected,
                   const std::vector<int> &uncorrected)
{
    json.beginObject("partitions");
    addInts(json, "corrected", corrected);
    addInts(json, "uncorrected", uncorrected);
    json.endObject();
}

} // namespace seamrevise
