#include "commands/deliverydocument.h"

#include "commands/outputfiles.h"
#include "delivery/filesystem.h"
#include "exchange/walldocument.h"

#include <QFileInfo>

namespace seamrevise
{

QString writeDocument(const CommonOptions &options, const DocumentSurroundings &around,
                      const JsonWriter &json, std::ostream &out)
{
    const QString &path = options.jsonFile;
    const bool isFile = !path.isEmpty() && path != QLatin1String("-");
    const QString input = isFile ? sameInodeAmong(around.inputs, path) : QString();
    if (!input.isEmpty())
        return path + QStringLiteral(": is the same file as ") + input;
    if (isFile && !sameInodeAmong(around.directories, QFileInfo(path).absolutePath()).isEmpty())
        return path + QStringLiteral(": lies inside a set of files; use another place");
    return writeDocument(options, json, out);
}

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
