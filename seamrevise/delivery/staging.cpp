#include "delivery/staging.h"

#include "delivery/filesystem.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <exception>

namespace seamrevise
{

Staging::~Staging()
{
    const Uninterrupted held;
    try {
        giveUp();
    } catch (const std::exception &) { // no memory: what is left the next run removes
    }
    m_lock.release();
    m_unfinished.clear();
}

/// Removes what was made, unless it is done.
void Staging::giveUp()
{
    if (m_isDone)
        return;
    if (m_isMade)
        removeTree(path());
    m_lock.release();
    for (auto parent = m_madeParents.rbegin(); parent != m_madeParents.rend(); ++parent)
        QDir().rmdir(*parent);
}

QString Staging::makeParents()
{
    QStringList missing;
    for (QString parent = m_place.parent; entryKind(parent) == EntryKind::Missing;
         parent = QFileInfo(parent).path())
        missing.push_front(parent);
    for (const QString &parent : missing) {
        const QString fault = makeDirectory(parent, QString());
        if (!fault.isEmpty())
            return fault;
        m_madeParents.push_back(parent);
        m_unfinished.push_back(std::make_unique<Unfinished>(parent, Unfinished::EmptyDirectory));
    }
    return {};
}

QString Staging::lock(const Place &place)
{
    const Uninterrupted held;
    m_place = place;
    QString fault = makeParents();
    if (!fault.isEmpty())
        return fault;
    bool busy = false;
    fault = m_lock.lock(place.lockFile(), busy);
    if (busy)
        return place.path() + QStringLiteral(": ") + fault;
    if (!fault.isEmpty())
        return fault;
    m_unfinished.push_back(std::make_unique<Unfinished>(place.lockFile(), Unfinished::Files));
    return {};
}

QString Staging::make()
{
    const Uninterrupted held;
    const QString fault = removeTree(path());
    if (!fault.isEmpty())
        return fault;
    m_unfinished.push_back(std::make_unique<Unfinished>(path(), Unfinished::Files));
    m_isMade = true;
    return makeDirectory(path(), m_place.path());
}

void Staging::setDone()
{
    const Uninterrupted held;
    m_isDone = true;
    m_lock.release();
    m_unfinished.clear();
}

} // namespace seamrevise
