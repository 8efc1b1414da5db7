#include "delivery/placing.h"

#include "delivery/filesystem.h"
#include "delivery/manifest.h"
#include "exchange/jsonwriter.h"
#include "process/interruption.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <optional>

namespace seamrevise
{

namespace
{

// The mark: a file beside the place that says what a run was about to do. It is complete and on
// the disk before the first rename, so one that cannot be read means that none was done.

QString writeMark(const Place &place, const Placing &placing)
{
    JsonWriter json;
    json.beginObject();
    json.member("schema", "seamrevise/1");
    json.member("kind", "mark");
    json.member("manifest_sha256", QString::fromLatin1(placing.manifestSha256));
    json.member("kept", placing.keptName);
    json.member("keep", placing.keep);
    json.member("from", placing.from);
    json.endObject();
    const QString fault = writeSynced(place.mark(), json.text());
    return fault.isEmpty() ? syncToDisk(place.parent) : fault;
}

std::optional<Placing> readMark(const Place &place)
{
    QFile file(place.mark());
    if (entryKind(file.fileName()) != EntryKind::File || !file.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject mark = QJsonDocument::fromJson(file.readAll()).object();
    Placing placing;
    placing.manifestSha256 = mark.value(QLatin1String("manifest_sha256")).toString().toLatin1();
    placing.keptName = mark.value(QLatin1String("kept")).toString();
    placing.keep = mark.value(QLatin1String("keep")).toInt();
    placing.from = mark.value(QLatin1String("from")).toString();
    if (placing.manifestSha256.isEmpty() || placing.keptName.isEmpty())
        return {};
    return placing;
}

QString removeMark(const Place &place)
{
    if (entryKind(place.mark()) != EntryKind::Missing && !QFile::remove(place.mark()))
        return place.mark() + QStringLiteral(": cannot be removed");
    return syncToDisk(place.parent);
}

QString renamed(const QString &from, const QString &to, RenameFlag flag)
{
    const int error = renameEntry(from, to, flag);
    return error == 0 ? QString() : systemFault(to, error);
}

/// Removes a kept set under the staging name: what is left of it when the process dies is no kept
/// set then, and the next run removes the rest.
QString discardKept(const Place &place, const QString &name)
{
    const QString fault = renamed(place.sibling(name), place.staging(), Rename_KeepOther);
    return fault.isEmpty() ? removeTree(place.staging()) : fault;
}

/// After the step: gives the replaced set, if it has the staging name, its own, and removes those
/// that need not stay.
QString settle(const Place &place, const Placing &placing)
{
    if (placing.keep == 0 || !isDelivery(place.staging())) {
        const QString fault = removeTree(place.staging());
        if (!fault.isEmpty())
            return fault;
    } else {
        const QString fault
            = renamed(place.staging(), place.sibling(placing.keptName), Rename_KeepOther);
        if (!fault.isEmpty())
            return fault;
    }
    if (placing.keep == Placing::keepAll)
        return {};
    for (const QString &name : keptSets(place).mid(placing.keep)) {
        const QString fault = discardKept(place, name);
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

/// Without exchange: the place is empty between the two renames.
int replaceByTwoRenames(const Place &place, const Placing &placing)
{
    const QString kept = place.sibling(placing.keptName);
    if (const int error = renameEntry(place.path(), kept, Rename_KeepOther))
        return error;
    const int error = renameEntry(place.staging(), place.path(), Rename_KeepOther);
    if (error != 0)
        renameEntry(kept, place.path(), Rename_KeepOther);
    return error;
}

/// The step itself; 0 or the error's number.
int replace(const Place &place, const Placing &placing)
{
    if (entriesOf(place.path()).isEmpty())
        return renameEntry(place.staging(), place.path(), Rename_Replace);
    const int error = renameEntry(place.staging(), place.path(), Rename_Exchange);
    return error == EINVAL || error == ENOSYS ? replaceByTwoRenames(place, placing) : error;
}

/// After a step that failed: all is as it was, and the mark goes.
QString takeBack(const Place &place, const Placing &placing)
{
    if (entryKind(place.path()) == EntryKind::Missing
        && isDelivery(place.sibling(placing.keptName)))
        return QStringLiteral("the next run puts back what is now ") + placing.keptName;
    const QString fault = placing.from.isEmpty()
        ? QString()
        : renamed(place.staging(), place.sibling(placing.from), Rename_KeepOther);
    return fault.isEmpty() ? removeMark(place) : fault;
}

/// A run died between its two renames: nothing is at the place.
QString completeTwoRenames(const Place &place, const Placing &placing, bool isNewStaged,
                           QStringList &notes)
{
    const QString kept = place.sibling(placing.keptName);
    if (!isDelivery(kept))
        return {}; // nothing was there before either
    if (!isNewStaged) {
        notes += QStringLiteral("an interrupted run had moved the old set away; it is back");
        return renamed(kept, place.path(), Rename_KeepOther);
    }
    notes += QStringLiteral("an interrupted run had not put its set in place; now it is, and the"
                            " one before is %1")
                 .arg(placing.keptName);
    const QString fault = renamed(place.staging(), place.path(), Rename_KeepOther);
    return fault.isEmpty() ? settle(place, placing) : fault;
}

/// The replaced set still has the staging name, or sets remain that need not stay.
QString finishSettling(const Place &place, Placing placing, QStringList &notes)
{
    if (isDelivery(place.staging())) {
        if (entryKind(place.sibling(placing.keptName)) != EntryKind::Missing)
            placing.keptName = newKeptName(place);
        notes += placing.keep == 0
            ? QStringLiteral("removed the set that an interrupted run had replaced")
            : QStringLiteral("the set that an interrupted run had replaced is now %1")
                  .arg(placing.keptName);
    }
    return settle(place, placing);
}

QString finishPlacing(const Place &place, const Placing &placing, QStringList &notes)
{
    const auto isNew = [&](const QString &directory) {
        return sha256OfFile(manifestPath(directory)) == placing.manifestSha256;
    };
    const bool isNewStaged = isNew(place.staging());
    if (entryKind(place.path()) == EntryKind::Missing) {
        const QString fault = completeTwoRenames(place, placing, isNewStaged, notes);
        if (!fault.isEmpty() || entryKind(place.path()) != EntryKind::Missing)
            return fault;
    }
    if (isNewStaged && !placing.from.isEmpty()) {
        notes += QStringLiteral("an interrupted run had not put %1 back; it is a kept set again")
                     .arg(placing.from);
        return renamed(place.staging(), place.sibling(placing.from), Rename_KeepOther);
    }
    if (!isNewStaged && (isNew(place.path()) || isDelivery(place.staging())))
        return finishSettling(place, placing, notes);
    return {};
}

} // namespace

QString putInPlace(const Place &place, const Placing &placing, QStringList &notes)
{
    const Uninterrupted held;
    QString fault = writeMark(place, placing);
    if (!fault.isEmpty()) {
        QFile::remove(place.mark());
        return fault;
    }
    if (!placing.from.isEmpty())
        fault = renamed(place.sibling(placing.from), place.staging(), Rename_KeepOther);
    if (fault.isEmpty()) {
        if (const int error = replace(place, placing)) {
            const QString other = takeBack(place, placing);
            return systemFault(place.path(), error)
                + (other.isEmpty() ? QString() : QStringLiteral("; ") + other);
        }
    } else {
        removeMark(place);
        return fault;
    }
    for (const QString &late : {syncToDisk(place.parent), settle(place, placing)}) {
        if (!late.isEmpty())
            notes += late;
    }
    fault = removeMark(place);
    if (!fault.isEmpty())
        notes += fault;
    return {};
}

bool hasLeftovers(const Place &place)
{
    return entryKind(place.mark()) != EntryKind::Missing
        || entryKind(place.staging()) != EntryKind::Missing;
}

QString recoverPlace(const Place &place, QStringList &notes)
{
    if (!hasLeftovers(place))
        return {};
    const Uninterrupted held;
    QString fault;
    if (const std::optional<Placing> mark = readMark(place))
        fault = finishPlacing(place, *mark, notes);
    if (!fault.isEmpty())
        return fault;
    if (entryKind(place.staging()) != EntryKind::Missing) {
        notes += QStringLiteral("removed what an interrupted run had left unfinished");
        fault = removeTree(place.staging());
    }
    return fault.isEmpty() ? removeMark(place) : fault;
}

} // namespace seamrevise
