#include "delivery/verification.h"

#include "delivery/deliveredset.h"
#include "delivery/filesystem.h"
#include "exchange/npyheader.h"
#include "process/parallel.h"
#include "store/inventory.h"
#include "store/sqlscreenstore.h"
#include "store/storedhashes.h"

#include <seamrevision/multilayercoefzoneinfo.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <set>

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
    QFile file(path);
    NpyHeader header;
    if (!file.open(QIODevice::ReadOnly) || !readNpyHeader(file, header).isEmpty())
        return {};
    return file.pos();
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

/// Adds the hashes of stored zones. False where one cannot be read.
bool hashStored(SqlScreenStore &store, int layerCount, const std::set<int> &numbers,
                StoredHashes &hashes)
{
    CoefsZoneInfo single;
    MultiLayerCoefZoneInfo layered;
    for (const int number : numbers) {
        if (layerCount == 0) {
            if (store.readAreaCoefficients(number, single) != 0)
                return false;
            hashes.add(number, single.m_arrayData);
        } else {
            if (store.readMultiLayerAreaCoefficients(static_cast<unsigned int>(layerCount),
                                                     static_cast<unsigned int>(number), layered)
                != 0)
                return false;
            hashes.add(number, layered.m_multiLayerCoefs);
        }
    }
    return true;
}

/// What is stored of a partition now, beside what its manifest says.
std::optional<Difference> storedDifference(const ManifestPartition &known, const StoredZone *zone,
                                           const std::map<int, QByteArray> &hashes)
{
    if (known.isCorrected != (zone != nullptr))
        return partitionDifference("stored", known.number,
                                   zone ? QStringLiteral("it has coefficients now")
                                        : QStringLiteral("its coefficients are no longer stored"));
    if (zone
        && (hashes.at(known.number) != known.storedSha256 || !isSameRect(zone->rect, known.zone)))
        return partitionDifference("stored", known.number,
                                   QStringLiteral("other coefficients are stored now"));
    return std::nullopt;
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
        return {{QStringLiteral("manifest"), manifestName, 0, fault}};

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
        if (name != manifestName && !manifest.file(name))
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
    const auto zoneOf = [&](const ManifestPartition &partition) -> const StoredZone * {
        const auto zone = std::find_if(zones.begin(), zones.end(), [&](const StoredZone &entry) {
            return entry.number == partition.number;
        });
        return zone == zones.end() ? nullptr : &*zone;
    };
    std::set<int> numbers;
    for (const ManifestPartition &partition : manifest.partitions) {
        if (partition.isCorrected && zoneOf(partition))
            numbers.insert(partition.number);
    }
    BackgroundWork work;
    StoredHashes hashes(work, pixelsOf(manifest.screen) * storedPixelBytes(manifest.layerCount));
    if (!hashStored(store, manifest.layerCount, numbers, hashes)) {
        fault = store.errorText();
        return differences;
    }
    const std::map<int, QByteArray> now = hashes.finish();
    for (const ManifestPartition &partition : manifest.partitions) {
        const auto difference = storedDifference(partition, zoneOf(partition), now);
        if (difference)
            differences.push_back(*difference);
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
