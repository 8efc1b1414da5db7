#include "commands/deliverydocument.h"

#include "commands/outputfiles.h"
#include "delivery/filesystem.h"
#include "store/screenlayout.h"

#include <QFileInfo>

namespace seamrevise
{

namespace
{

void writeNumbers(JsonWriter &json, const char *key, const Manifest &manifest, bool isCorrected)
{
    json.beginArray(key, JsonWriter::Inline);
    for (const ManifestPartition &partition : manifest.partitions) {
        if (partition.isCorrected == isCorrected)
            json.value(partition.number);
    }
    json.endArray();
}

void writePair(JsonWriter &json, const char *key, const baseCommon::NQSize &size)
{
    json.beginArray(key, JsonWriter::Inline);
    json.value(size.width());
    json.value(size.height());
    json.endArray();
}

} // namespace

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
    json.member("width", columnsOf(manifest.screen));
    json.member("height", rowsOf(manifest.screen));
    writePair(json, "grid", manifest.grid);
    writePair(json, "band", manifest.band);
    json.member("margin", manifest.margin);
    if (manifest.layerCount > 0)
        json.member("layers", manifest.layerCount);
    else
        json.member("layers", std::optional<int>());
    json.endObject();
    json.beginObject("partitions");
    writeNumbers(json, "corrected", manifest, true);
    writeNumbers(json, "uncorrected", manifest, false);
    json.endObject();
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
