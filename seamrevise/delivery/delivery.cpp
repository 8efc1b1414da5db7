#include "delivery/delivery.h"

#include "delivery/filesystem.h"
#include "delivery/placing.h"
#include "delivery/verification.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <tuple>

namespace seamrevise
{

namespace
{

/// Why a directory as such cannot be replaced; empty if it can, or if there is none.
QString directoryFault(const Place &place)
{
    const QString path = place.path();
    const EntryKind kind = entryKind(path);
    if (kind == EntryKind::Missing)
        return {};
    if (kind != EntryKind::Directory)
        return path + QStringLiteral(": is not a directory");
    if (isSameInode(path, QDir::currentPath()))
        return path + QStringLiteral(": is the current directory; it cannot be replaced");
    if (isMountPoint(path))
        return path + QStringLiteral(": is a mount point; use a directory below it");
    return {};
}

/// The first entry that no delivery would have there; what the manifest says, if it can be read.
QString foreignEntry(const QString &directory, const QStringList &inputs)
{
    Manifest manifest;
    const bool isKnown = readManifest(directory, manifest).isEmpty();
    const bool isAny = isDelivery(directory);
    for (const QString &name : entriesOf(directory)) {
        const QString path = directory + QLatin1Char('/') + name;
        const QString input = sameInodeAmong(inputs, path);
        if (!input.isEmpty())
            return path + QStringLiteral(": is the same file as ") + input;
        if (isAny && entryKind(path) != EntryKind::File)
            return path + QStringLiteral(": is not a regular file; move it away");
        if (!isAny || (isKnown && name != manifestName && !manifest.file(name)))
            return path + QStringLiteral(": does not belong to a delivery; move it away");
    }
    return {};
}

/// Why what is at a place cannot be replaced, under these terms.
QString targetFault(const Place &place, const QStringList &inputs, bool force)
{
    QString fault = directoryFault(place);
    if (fault.isEmpty())
        fault = foreignEntry(place.path(), inputs);
    if (fault.isEmpty() && !force && isDelivery(place.path()))
        fault = place.path() + QStringLiteral(": holds a delivery; --force replaces it");
    return fault;
}

/// By number, then by suffix; names without a number come last.
bool comesBefore(const QString &first, const QString &second)
{
    const auto key = [](const QString &name) {
        int digits = 0;
        while (digits < name.size() && name[digits].isDigit())
            ++digits;
        return std::make_tuple(digits == 0, name.left(digits).toLongLong(), name);
    };
    return key(first) < key(second);
}

/// What a file holds; its hash is empty if it cannot be read. It is on the disk then.
ManifestFile syncedFile(const QString &directory, const QString &name, QString &fault)
{
    const QString path = directory + QLatin1Char('/') + name;
    fault = entryKind(path) == EntryKind::File ? syncToDisk(path)
                                               : path + QStringLiteral(": is not a regular file");
    const ManifestFile file{name, QFileInfo(path).size(),
                            fault.isEmpty() ? sha256OfFile(path) : QByteArray()};
    if (fault.isEmpty() && file.sha256.isEmpty())
        fault = path + QStringLiteral(": was written but cannot be read");
    return file;
}

} // namespace

QString Delivery::begin(const Request &request)
{
    m_request = request;
    Place place;
    QString fault = findPlace(request.directory, place);
    // Before the lock, which would leave its file beside what is none of ours.
    if (fault.isEmpty())
        fault = directoryFault(place);
    if (fault.isEmpty())
        fault = m_staging.lock(place);
    if (fault.isEmpty())
        fault = recoverPlace(place, m_notes);
    if (fault.isEmpty())
        fault = targetFault(place, request.inputs, request.force);
    return fault.isEmpty() ? m_staging.make() : fault;
}

QString Delivery::addFile(const QString &name, const QByteArray &bytes) const
{
    return writeSynced(path() + QLatin1Char('/') + name, bytes);
}

QString Delivery::finishFile(const QString &name, const QByteArray &sha256, const FileStamp &before)
{
    const QString fault = syncToDisk(path() + QLatin1Char('/') + name);
    if (!fault.isEmpty())
        return fault;
    const std::lock_guard<std::mutex> lock(m_finishedMutex);
    m_finished[name] = {{name, before.bytes, sha256}, before};
    return {};
}

/// Lists all files that are there, each of them on the disk.
QString Delivery::listFiles(std::vector<ManifestFile> &files)
{
    for (const auto &[name, finished] : m_finished) {
        const QString file = path() + QLatin1Char('/') + name;
        if (!(stampOf(file) == finished.stamp))
            return file + QStringLiteral(": was touched after it was read back");
    }
    QStringList names = entriesOf(path());
    std::sort(names.begin(), names.end(), comesBefore);
    for (const QString &name : names) {
        const auto finished = m_finished.find(name);
        QString fault;
        files.push_back(finished != m_finished.end() ? finished->second.file
                                                     : syncedFile(path(), name, fault));
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

QString Delivery::seal(Manifest &manifest)
{
    QString fault = listFiles(manifest.files);
    if (!fault.isEmpty())
        return fault;
    const QByteArray text = manifestText(manifest);
    m_manifest = manifest;
    m_manifestSha256 = QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex();
    fault = addFile(manifestName, text);
    return fault.isEmpty() ? syncToDisk(path()) : fault;
}

QString Delivery::commit()
{
    const Uninterrupted held;
    const Place &place = m_staging.place();
    QString fault = targetFault(place, m_request.inputs, m_request.force);
    if (!fault.isEmpty())
        return fault;
    Manifest before;
    const bool replaces = isDelivery(place.path());
    const bool isKnown = replaces && readManifest(place.path(), before).isEmpty();
    const Placing placing{m_manifestSha256, newKeptName(place), m_request.keep, QString()};
    fault = putInPlace(place, placing, m_notes);
    if (!fault.isEmpty())
        return fault;
    m_staging.setDone();
    if (replaces && m_request.keep > 0)
        m_keptName = placing.keptName;
    if (isKnown)
        m_changes = changesText(before, m_manifest);
    return {};
}

Restoration::Fault Restoration::fail(Fault fault, const QString &message)
{
    m_message = message;
    return fault;
}

Restoration::Fault Restoration::run(const QString &directory, const QString &from)
{
    Place place;
    QString fault = findPlace(directory, place);
    if (fault.isEmpty())
        fault = directoryFault(place);
    if (!fault.isEmpty())
        return fail(Fault::CannotPut, fault);
    if (entryKind(place.parent) != EntryKind::Directory)
        return fail(Fault::NoSet, place.path() + QStringLiteral(": there is no kept set of it"));
    Staging staging;
    fault = staging.lock(place);
    if (fault.isEmpty())
        fault = recoverPlace(place, m_notes);
    if (!fault.isEmpty())
        return fail(Fault::CannotPut, fault);

    const QStringList names = keptSets(place);
    if (names.isEmpty())
        return fail(Fault::NoSet, place.path() + QStringLiteral(": there is no kept set of it"));
    const QString wanted = QFileInfo(from).fileName();
    m_restoredName = from.isEmpty() ? names.first() : wanted;
    if (!names.contains(m_restoredName))
        m_restoredName = place.name + QLatin1Char('.') + wanted;
    if (!names.contains(m_restoredName))
        return fail(Fault::NoSet,
                    QStringLiteral("%1: is no kept set; there are %2")
                        .arg(from, names.join(QStringLiteral(", "))));
    const QString source = place.sibling(m_restoredName);
    const std::vector<Difference> damage = verifyFiles(source);
    if (!damage.empty())
        return fail(Fault::NoSet,
                    QStringLiteral("%1: is not whole: %2").arg(source, damage.front().message));

    fault = targetFault(place, {}, true);
    if (!fault.isEmpty())
        return fail(Fault::CannotPut, fault);
    const bool replaces = isDelivery(place.path());
    const Placing placing{sha256OfFile(manifestPath(source)), newKeptName(place), Placing::keepAll,
                          m_restoredName};
    fault = putInPlace(place, placing, m_notes);
    if (!fault.isEmpty())
        return fail(Fault::CannotPut, fault);
    if (replaces)
        m_keptName = placing.keptName;
    return Fault::None;
}

} // namespace seamrevise
