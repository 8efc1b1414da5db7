#include "delivery/manifest.h"

#include "delivery/filesystem.h"
#include "exchange/walldocument.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace seamrevise
{

namespace
{

const QByteArray beginning = "{\n  \"schema\": \"seamrevise/1\",\n  \"kind\": \"delivery\"";
const QByteArray checksumKey = ",\n  \"sha256\": \"";
const QByteArray ending = "\"\n}\n";

QByteArray sha256(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

void writeWall(JsonWriter &json, const Manifest &manifest)
{
    json.beginObject("wall");
    json.member("database", manifest.database);
    addRect(json, "screen", manifest.screen);
    addScreenSize(json, manifest.screen);
    addGridAndBand(json, manifest.grid, manifest.band);
    json.member("margin", manifest.margin);
    addLayers(json, manifest.layerCount);
    json.endObject();
}

void writePartition(JsonWriter &json, const ManifestPartition &partition)
{
    json.beginObject(nullptr, JsonWriter::Inline);
    json.member("number", partition.number);
    addRect(json, "rect", partition.rect);
    json.member("state", partition.isCorrected ? "corrected" : "uncorrected");
    if (partition.isCorrected) {
        addRect(json, "zone", partition.zone);
        json.member("stored_sha256", QString::fromLatin1(partition.storedSha256));
    }
    if (partition.revision) {
        json.member("revision", *partition.revision);
        json.member("written", partition.written);
        json.member("station", partition.station);
    }
    json.endObject();
}

void writeFile(JsonWriter &json, const ManifestFile &file)
{
    json.beginObject(nullptr, JsonWriter::Inline);
    json.member("name", file.name);
    json.member("bytes", file.bytes);
    json.member("sha256", QString::fromLatin1(file.sha256));
    json.endObject();
}

/// Takes values out of a document and remembers whether all of them were of their kind.
class Reader
{
public:
    QString text(const QJsonObject &object, const char *key)
    {
        return checked(object, key, QJsonValue::String).toString();
    }
    qint64 number(const QJsonObject &object, const char *key)
    {
        return wholeNumber(checked(object, key, QJsonValue::Double));
    }
    int integer(const QJsonObject &object, const char *key) { return inRange(number(object, key)); }
    bool flag(const QJsonObject &object, const char *key)
    {
        return checked(object, key, QJsonValue::Bool).toBool();
    }
    QJsonArray array(const QJsonObject &object, const char *key)
    {
        return checked(object, key, QJsonValue::Array).toArray();
    }
    QJsonObject object(const QJsonObject &object, const char *key)
    {
        return checked(object, key, QJsonValue::Object).toObject();
    }
    NQRect rect(const QJsonObject &object, const char *key)
    {
        const std::vector<int> edges = integers(object, key, 4);
        return {edges[0], edges[1], edges[2], edges[3]};
    }
    baseCommon::NQSize size(const QJsonObject &object, const char *key)
    {
        const std::vector<int> sides = integers(object, key, 2);
        return {sides[0], sides[1]};
    }
    void require(bool isRight) { m_isRight &= isRight; }
    bool isRight() const { return m_isRight; }

private:
    QJsonValue checked(const QJsonObject &object, const char *key, QJsonValue::Type type)
    {
        const QJsonValue value = object.value(QLatin1String(key));
        require(value.type() == type);
        return value;
    }
    qint64 wholeNumber(const QJsonValue &value)
    {
        constexpr double mostExact = 9007199254740992.0; // 2^53
        const double number = value.toDouble(-mostExact);
        const bool isWhole = number > -mostExact && number < mostExact
            && number == static_cast<double>(static_cast<qint64>(number));
        require(isWhole);
        return isWhole ? static_cast<qint64>(number) : 0;
    }
    int inRange(qint64 number)
    {
        require(number == static_cast<int>(number));
        return static_cast<int>(number);
    }
    std::vector<int> integers(const QJsonObject &object, const char *key, int count)
    {
        std::vector<int> values;
        for (const QJsonValue value : array(object, key))
            values.push_back(inRange(wholeNumber(value)));
        require(values.size() == static_cast<std::size_t>(count));
        values.resize(static_cast<std::size_t>(count));
        return values;
    }

    bool m_isRight = true;
};

void readWall(Reader &reader, const QJsonObject &wall, Manifest &manifest)
{
    manifest.database = reader.text(wall, "database");
    manifest.screen = reader.rect(wall, "screen");
    manifest.grid = reader.size(wall, "grid");
    manifest.band = reader.size(wall, "band");
    manifest.margin = reader.integer(wall, "margin");
    manifest.layerCount
        = wall.value(QLatin1String("layers")).isNull() ? 0 : reader.integer(wall, "layers");
    reader.require(manifest.layerCount >= 0);
}

ManifestPartition readPartition(Reader &reader, const QJsonObject &object, const NQRect &screen)
{
    ManifestPartition partition;
    partition.number = reader.integer(object, "number");
    partition.rect = reader.rect(object, "rect");
    const QString state = reader.text(object, "state");
    partition.isCorrected = state == QLatin1String("corrected");
    reader.require(partition.isCorrected || state == QLatin1String("uncorrected"));
    // What is read of a table lies where the partition does.
    const NQRect &rect = partition.rect;
    reader.require(rect.left() <= rect.right() && rect.top() <= rect.bottom()
                   && rect.left() >= screen.left() && rect.top() >= screen.top()
                   && rect.right() <= screen.right() && rect.bottom() <= screen.bottom());
    if (partition.isCorrected) {
        partition.zone = reader.rect(object, "zone");
        partition.storedSha256 = reader.text(object, "stored_sha256").toLatin1();
    }
    if (object.contains(QLatin1String("revision"))) {
        partition.revision = reader.number(object, "revision");
        partition.written = reader.text(object, "written");
        partition.station = reader.text(object, "station");
    }
    return partition;
}

ManifestFile readFile(Reader &reader, const QJsonObject &object)
{
    ManifestFile file;
    file.name = reader.text(object, "name");
    file.bytes = reader.number(object, "bytes");
    file.sha256 = reader.text(object, "sha256").toLatin1();
    reader.require(!file.name.isEmpty() && !file.name.contains(QLatin1Char('/')));
    return file;
}

bool isChecksumRight(const QByteArray &text)
{
    const int keyPosition = text.lastIndexOf(checksumKey);
    if (keyPosition < 0)
        return false;
    const QByteArray before = text.left(keyPosition);
    return text.mid(keyPosition) == checksumKey + sha256(before) + ending;
}

} // namespace

bool holdsCoefficients(const ManifestFile &file)
{
    return !file.name.endsWith(QLatin1String(".json"));
}

const ManifestPartition *Manifest::partition(int number) const
{
    const auto found = std::find_if(partitions.begin(), partitions.end(),
                                    [&](const auto &entry) { return entry.number == number; });
    return found == partitions.end() ? nullptr : &*found;
}

const ManifestFile *Manifest::file(const QString &name) const
{
    const auto found = std::find_if(files.begin(), files.end(),
                                    [&](const auto &entry) { return entry.name == name; });
    return found == files.end() ? nullptr : &*found;
}

QString manifestPath(const QString &directory)
{
    return directory + QLatin1Char('/') + manifestName;
}

void writeFiles(JsonWriter &json, const std::vector<ManifestFile> &files)
{
    json.beginArray("files");
    for (const ManifestFile &file : files)
        writeFile(json, file);
    json.endArray();
}

QByteArray manifestText(const Manifest &manifest)
{
    JsonWriter json;
    json.beginObject();
    json.member("schema", "seamrevise/1");
    json.member("kind", "delivery");
    json.member("version", manifest.version);
    json.beginArray("command", JsonWriter::Inline);
    for (const QString &word : manifest.command)
        json.value(word);
    json.endArray();
    json.member("when", manifest.when);
    writeWall(json, manifest);
    json.member("table", manifest.isTable);
    json.beginArray("partitions");
    for (const ManifestPartition &partition : manifest.partitions)
        writePartition(json, partition);
    json.endArray();
    writeFiles(json, manifest.files);
    const QByteArray before = json.text();
    json.member("sha256", QString::fromLatin1(sha256(before)));
    json.endObject();
    return json.text();
}

QString parseManifest(const QByteArray &text, Manifest &manifest)
{
    if (!text.startsWith(beginning))
        return QStringLiteral("is no manifest that this version reads");
    if (!isChecksumRight(text))
        return QStringLiteral("is damaged: its checksum is not that of its text");

    manifest = Manifest();
    Reader reader;
    const QJsonObject document = QJsonDocument::fromJson(text).object();
    manifest.version = reader.text(document, "version");
    for (const QJsonValue word : reader.array(document, "command"))
        manifest.command.push_back(word.toString());
    manifest.when = reader.text(document, "when");
    readWall(reader, reader.object(document, "wall"), manifest);
    manifest.isTable = reader.flag(document, "table");
    for (const QJsonValue entry : reader.array(document, "partitions"))
        manifest.partitions.push_back(readPartition(reader, entry.toObject(), manifest.screen));
    for (const QJsonValue entry : reader.array(document, "files"))
        manifest.files.push_back(readFile(reader, entry.toObject()));
    return reader.isRight() ? QString() : QStringLiteral("lacks something, or has it wrong");
}

QString readManifest(const QString &directory, Manifest &manifest)
{
    const QString path = manifestPath(directory);
    QFile file(path);
    if (entryKind(path) != EntryKind::File)
        return path + QStringLiteral(": the file is missing");
    if (!file.open(QIODevice::ReadOnly))
        return path + QStringLiteral(": ") + file.errorString();
    const QString fault = parseManifest(file.readAll(), manifest);
    return fault.isEmpty() ? QString() : path + QStringLiteral(": ") + fault;
}

bool isDelivery(const QString &directory)
{
    QFile file(manifestPath(directory));
    return entryKind(file.fileName()) == EntryKind::File && file.open(QIODevice::ReadOnly)
        && file.read(beginning.size()) == beginning;
}

QString changesText(const Manifest &before, const Manifest &after)
{
    QStringList different;
    int count = 0;
    for (const ManifestFile &file : after.files) {
        if (!holdsCoefficients(file))
            continue;
        ++count;
        const ManifestFile *const old = before.file(file.name);
        if (!old || old->sha256 != file.sha256)
            different.push_back(file.name);
    }
    const QString text = QStringLiteral("%1 of %2 files differ").arg(different.size()).arg(count);
    return different.isEmpty() ? text
                               : text + QStringLiteral(": ") + different.join(QStringLiteral(", "));
}

} // namespace seamrevise
