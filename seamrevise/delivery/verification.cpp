#include "delivery/verification.h"

#include "delivery/deliveredset.h"
#include "delivery/filesystem.h"
#include "exchange/storedhash.h"
#include "process/parallel.h"
#include "store/sqlscreenstore.h"

#include <seamrevision/multilayercoefzoneinfo.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace seamrevise
{

namespace
{

Difference fileDifference(const char *kind, const QString &name, const QString &message)
{
    return {QString::fromLatin1(kind), name, 0, name + QStringLiteral(": ") + message};
}

Difference partitionDifference(const char *kind, int number, const QString &message)
{
    return {QString::fromLatin1(kind), QString(), number,
            QStringLiteral("partition %1: %2").arg(number).arg(message)};
}

/// Presence, size and content of one file.
std::optional<Difference> checkFile(const QString &directory, const ManifestFile &file)
{
    const QString path = directory + QLatin1Char('/') + file.name;
    const EntryKind kind = entryKind(path);
    if (kind == EntryKind::Missing)
        return fileDifference("missing", file.name, QStringLiteral("is missing"));
    if (kind != EntryKind::File)
        return fileDifference("kind", file.name, QStringLiteral("is not a regular file"));
    if (QFileInfo(path).size() != file.bytes)
        return fileDifference("size", file.name,
                              QStringLiteral("has %1 bytes instead of %2")
                                  .arg(QFileInfo(path).size())
                                  .arg(file.bytes));
    if (sha256OfFile(path) != file.sha256)
        return fileDifference("content", file.name,
                              QStringLiteral("has other content than was delivered"));
    return {};
}

/// What stands before the values of a table.
std::optional<qint64> headerBytes(const QString &path)
{
    if (!path.endsWith(QLatin1String(".npy")))
        return 0;
    constexpr int fixedBytes = 10; // magic, version, length of the text
    QFile file(path);
    const QByteArray start = file.open(QIODevice::ReadOnly) ? file.read(fixedBytes) : QByteArray();
    if (start.size() != fixedBytes || !start.startsWith("\x93NUMPY"))
        return {};
    return fixedBytes + qFromLittleEndian<quint16>(start.constData() + fixedBytes - 2);
}

/// Whether a file that is as it was delivered holds what its rectangle needs.
std::optional<Difference> checkValues(const QString &directory, const Manifest &manifest,
                                      const ManifestFile &file, const NQRect &rect,
                                      const CoefficientFormat &format)
{
    const QString path = directory + QLatin1Char('/') + file.name;
    if (manifest.isTable) {
        const std::optional<qint64> header = headerBytes(path);
        if (header && file.bytes == *header + tableBytes(manifest, format))
            return {};
        return fileDifference("values", file.name,
                              QStringLiteral("is no table of the screen's pixels"));
    }
    const QString fault = decryptionFault(path, pixelsOf(rect) * format.bytesPerPixel());
    if (fault.isEmpty())
        return {};
    return Difference{QStringLiteral("values"), file.name, 0, file.name + fault.mid(path.size())};
}

/// What is to be checked of one file: alone, and as the values of a rectangle if it holds any.
struct FileCheck
{
    const ManifestFile *file;
    NQRect rect;
    const CoefficientFormat *format = nullptr;
};

/// The checks of all files, and the files that the manifest ought to name and does not.
std::vector<FileCheck> listChecks(const Manifest &manifest,
                                  const std::vector<CoefficientFormat> &formats,
                                  std::vector<Difference> &differences)
{
    std::vector<FileCheck> checks;
    for (const ManifestFile &file : manifest.files)
        checks.push_back({&file, NQRect()});
    for (const ManifestPartition &partition : manifest.partitions) {
        for (const CoefficientFormat &format : formats) {
            const QString name = fileNameOf(manifest, partition.number, format);
            const auto check = std::find_if(checks.begin(), checks.end(), [&](const auto &entry) {
                return entry.file->name == name;
            });
            if (check == checks.end()) {
                differences.push_back(partitionDifference(
                    "unlisted", partition.number,
                    QStringLiteral("the manifest does not name its file ") + name));
            } else {
                check->rect = partition.rect;
                check->format = &format;
            }
        }
    }
    return checks;
}

/// The hash of a stored zone; empty where it cannot be read.
QByteArray readStored(SqlScreenStore &store, int layerCount, int number)
{
    if (layerCount == 0) {
        CoefsZoneInfo zone;
        return store.readAreaCoefficients(number, zone) == 0 ? storedSha256(zone.m_arrayData)
                                                             : QByteArray();
    }
    MultiLayerCoefZoneInfo zone;
    return store.readMultiLayerAreaCoefficients(static_cast<unsigned int>(layerCount),
                                                static_cast<unsigned int>(number), zone)
            == 0
        ? storedSha256(zone.m_multiLayerCoefs)
        : QByteArray();
}

/// Screen and partitions; what is missing on one of the two sides too.
std::vector<Difference> compareLayout(const Manifest &manifest, const ScreenLayout &layout)
{
    std::vector<Difference> differences;
    if (!isSameRect(manifest.screen, layout.screen))
        differences.push_back({QStringLiteral("layout"), QString(), 0,
                               QStringLiteral("the database has another screen")});
    for (const auto &[number, rect] : layout.partitions) {
        const ManifestPartition *const known = manifest.partition(number);
        if (!known)
            differences.push_back(partitionDifference(
                "layout", number, QStringLiteral("is in the database, but was not delivered")));
        else if (!isSameRect(known->rect, rect))
            differences.push_back(partitionDifference(
                "layout", number, QStringLiteral("lies elsewhere in the database now")));
    }
    for (const ManifestPartition &partition : manifest.partitions) {
        if (layout.partitions.count(partition.number) == 0)
            differences.push_back(partitionDifference(
                "layout", partition.number, QStringLiteral("is not in the database any more")));
    }
    return differences;
}

std::optional<double> largest(const QJsonArray &seams, const QStringList &keys)
{
    std::optional<double> most;
    for (const QJsonValue seam : seams) {
        QJsonValue value = seam;
        for (const QString &key : keys)
            value = value.toObject().value(key);
        if (value.isDouble())
            most = std::max(most.value_or(0.0), std::abs(value.toDouble()));
    }
    return most;
}

/// The number of a delivery that a limit is about.
std::optional<double> measured(const QString &limit, const QJsonObject &numbers)
{
    const QJsonArray seams = numbers.value(QLatin1String("seams")).toArray();
    if (limit == QLatin1String("step_after"))
        return largest(seams, {"step", "after", "worst"});
    if (limit == QLatin1String("disagreement"))
        return largest(seams, {"disagreement", "worst"});
    const QJsonValue value
        = numbers.value(QLatin1String("changes")).toObject().value(QLatin1String("above_cap"));
    return value.isDouble() ? std::optional<double>(value.toDouble()) : std::nullopt;
}

} // namespace

std::vector<Difference> verifyFiles(const QString &directory)
{
    Manifest manifest;
    const QString fault = readManifest(directory, manifest);
    if (!fault.isEmpty())
        return {{QStringLiteral("manifest"), QStringLiteral("manifest.json"), 0, fault}};

    std::vector<Difference> differences;
    const std::vector<CoefficientFormat> formats = coefficientFormats(manifest.layerCount);
    const std::vector<FileCheck> checks = listChecks(manifest, formats, differences);
    std::vector<std::optional<Difference>> found(checks.size());
    forEachInParallel(static_cast<int>(checks.size()), [&](int i) {
        const FileCheck &check = checks[static_cast<std::size_t>(i)];
        std::optional<Difference> &difference = found[static_cast<std::size_t>(i)];
        difference = checkFile(directory, *check.file);
        if (!difference && check.format)
            difference = checkValues(directory, manifest, *check.file, check.rect, *check.format);
    });
    for (const std::optional<Difference> &difference : found) {
        if (difference)
            differences.push_back(*difference);
    }
    for (const QString &name : entriesOf(directory)) {
        if (name != QLatin1String("manifest.json") && !manifest.file(name))
            differences.push_back(
                fileDifference("besides", name, QStringLiteral("does not belong to the delivery")));
    }
    return differences;
}

std::vector<Difference> verifyStored(const Manifest &manifest, SqlScreenStore &store,
                                     QString &fault)
{
    std::vector<StoredZone> zones;
    const bool isListed = manifest.layerCount > 0
        ? store.listLayeredZones(manifest.layerCount, zones)
        : store.listZones(zones);
    if (!isListed) {
        fault = store.errorText();
        return {};
    }
    std::vector<Difference> differences = compareLayout(manifest, store.layout());
    for (const ManifestPartition &partition : manifest.partitions) {
        const auto zone = std::find_if(zones.begin(), zones.end(), [&](const StoredZone &entry) {
            return entry.number == partition.number;
        });
        if ((zone != zones.end()) != partition.isCorrected) {
            differences.push_back(partitionDifference(
                "stored", partition.number,
                partition.isCorrected ? QStringLiteral("its coefficients are no longer stored")
                                      : QStringLiteral("it has coefficients now")));
            continue;
        }
        if (!partition.isCorrected)
            continue;
        const QByteArray hash = readStored(store, manifest.layerCount, partition.number);
        if (hash.isEmpty()) {
            fault = store.errorText();
            return differences;
        }
        if (hash != partition.storedSha256 || !isSameRect(zone->rect, partition.zone))
            differences.push_back(partitionDifference(
                "stored", partition.number, QStringLiteral("other coefficients are stored now")));
    }
    return differences;
}

QString checkLimits(const QByteArray &limits, const QByteArray &numbers,
                    std::vector<LimitVerdict> &verdicts)
{
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(limits, &error);
    if (!document.isObject())
        return QStringLiteral("is no JSON object: ") + error.errorString();
    const QStringList known{"step_after", "disagreement", "above_cap"};
    const QJsonObject wanted = document.object();
    for (const QString &name : wanted.keys()) {
        if (!known.contains(name))
            return QStringLiteral("there is no limit %1; there are %2")
                .arg(name, known.join(QStringLiteral(", ")));
        if (!wanted.value(name).isDouble() || wanted.value(name).toDouble() < 0.0)
            return name + QStringLiteral(": the limit is no number from 0 up");
    }
    const QJsonObject measuredNumbers = QJsonDocument::fromJson(numbers).object();
    for (const QString &name : known) {
        if (wanted.contains(name))
            verdicts.push_back(
                {name, wanted.value(name).toDouble(), measured(name, measuredNumbers)});
    }
    return {};
}

} // namespace seamrevise
