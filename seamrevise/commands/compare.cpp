#include "commands/compare.h"

#include "commands/delivered.h"
#include "commands/deliverydocument.h"
#include "commands/jsondocument.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "delivery/comparison.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

void printChange(const PartitionChange &change, std::ostream &out)
{
    out << "partition " << change.number << ": ";
    if (change.values > 0)
        out << change.pixels << " pixels, " << change.values << " values differ, largest "
            << change.largest << " at row " << change.row << ", column " << change.column
            << ", value " << change.index + 1 << ", mean " << change.mean;
    if (change.packedWords > 0)
        out << (change.values > 0 ? "; " : "") << change.packedWords << " packed words differ";
    out << '\n';
}

void printText(const SetComparison &comparison, std::ostream &out)
{
    for (const Difference &difference : comparison.differences)
        out << difference.message.toStdString() << '\n';
    std::ptrdiff_t differentCount = 0;
    for (const PartitionChange &change : comparison.partitions) {
        if (change.isSame())
            continue;
        ++differentCount;
        printChange(change, out);
    }
    out << "partitions   " << differentCount << " of " << comparison.partitions.size()
        << " differ\n";
}

void writeChange(JsonWriter &json, const PartitionChange &change)
{
    json.beginObject(nullptr, JsonWriter::Inline);
    json.member("partition", change.number);
    json.member("pixels", change.pixels);
    json.member("values", change.values);
    json.member("packed_words", change.packedWords);
    json.member("largest", change.largest);
    json.member("mean", change.mean);
    const bool hasLargest = change.values > 0;
    json.member("row", hasLargest ? std::optional<int>(change.row) : std::nullopt);
    json.member("column", hasLargest ? std::optional<int>(change.column) : std::nullopt);
    json.member("value", hasLargest ? std::optional<int>(change.index + 1) : std::nullopt);
    json.endObject();
}

JsonWriter document(const DeliveredSet &first, const DeliveredSet &second,
                    const SetComparison &comparison)
{
    JsonWriter json;
    beginDocument(json, "compare");
    json.beginArray("directories", JsonWriter::Inline);
    json.value(first.path());
    json.value(second.path());
    json.endArray();
    json.member("same", comparison.isSame());
    writeWall(json, first.manifest());
    json.beginArray("compared");
    for (const PartitionChange &change : comparison.partitions)
        writeChange(json, change);
    json.endArray();
    writeFindings(json, comparison.differences);
    json.endObject();
    return json;
}

} // namespace

void declareCompare(CLI::App &app, CompareOptions &options)
{
    addPath(app, "DIR1", "", options.first, "a delivery")->required();
    addPath(app, "DIR2", "", options.second, "the delivery to hold against it")->required();
}

int compare(const CompareOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(
            options.common,
            {{options.first, "a set that is compared"}, {options.second, "a set that is compared"}},
            err))
        return code;
    DeliveredSet first;
    DeliveredSet second;
    const std::pair<const QString *, DeliveredSet *> sets[]
        = {{&options.first, &first}, {&options.second, &second}};
    for (const auto &[directory, set] : sets) {
        // A set that cannot be read is no difference.
        if (const int code = openDelivered(*directory, options.common, *set, err))
            return code == Exit_Different ? int{Exit_Input} : code;
    }
    SetComparison comparison;
    QString fault = compareSets(first, second, comparison);
    if (!fault.isEmpty())
        return reportFault(Exit_Input, fault, err);
    if (options.common.showsText())
        printText(comparison, out);
    fault = writeDocument(options.common, document(first, second, comparison), out);
    if (!fault.isEmpty())
        return reportFault(Exit_Output, fault, err);
    return comparison.isSame() ? Exit_Done : Exit_Different;
}

} // namespace seamrevise
