#include "delivery/stagedfiles.h"

#include "delivery/filesystem.h"

namespace seamrevise
{

namespace
{

QString fileRefusal(const QString &path, const QStringList &inputs)
{
    const QString input = sameInodeAmong(inputs, path);
    if (!input.isEmpty())
        return path + QStringLiteral(": is the same file as ") + input;
    switch (entryKind(path)) {
    case EntryKind::Missing:
    case EntryKind::File:
        return {};
    case EntryKind::Directory:
        return path + QStringLiteral(": is a directory");
    default:
        return path + QStringLiteral(": is not a regular file");
    }
}

} // namespace

QString StagedFiles::begin(const Place &place, const QStringList &inputs)
{
    m_inputs = inputs;
    const QString fault = m_staging.lock(place);
    return fault.isEmpty() ? m_staging.make() : fault;
}

QString StagedFiles::refusal(const QStringList &names) const
{
    for (const QString &name : names) {
        const QString fault = fileRefusal(m_staging.place().sibling(name), m_inputs);
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

QString StagedFiles::commit(const QStringList &names)
{
    const Uninterrupted held;
    QString fault = refusal(names);
    for (const QString &name : names) {
        if (fault.isEmpty())
            fault = syncToDisk(path() + QLatin1Char('/') + name);
    }
    for (const QString &name : names) {
        if (!fault.isEmpty())
            return fault;
        const QString target = m_staging.place().sibling(name);
        const int error = renameEntry(path() + QLatin1Char('/') + name, target, Rename_Replace);
        fault = error == 0 ? QString() : systemFault(target, error);
    }
    if (fault.isEmpty())
        fault = syncToDisk(m_staging.place().parent);
    return fault;
}

QString WholeFile::begin(const QString &path, const QStringList &inputs)
{
    Place place;
    QString fault = findPlace(path, place);
    if (fault.isEmpty())
        fault = fileRefusal(place.path(), inputs);
    if (fault.isEmpty() && entryKind(place.parent) != EntryKind::Directory)
        fault = path + QStringLiteral(": there is no directory ") + place.parent;
    m_name = place.name;
    return fault.isEmpty() ? m_files.begin(place, inputs) : fault;
}

} // namespace seamrevise
