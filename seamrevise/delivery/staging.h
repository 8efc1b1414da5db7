#pragma once

#include "delivery/filelock.h"
#include "delivery/place.h"
#include "process/interruption.h"

#include <QString>

#include <memory>
#include <vector>

namespace seamrevise
{

/// An empty directory beside the place where files are to appear, on the same file system, which
/// one run at a time has. What is in it when the object goes, is removed with it; where a process
/// was killed, the next run there removes it.
class Staging
{
public:
    Staging() = default;
    ~Staging();
    Staging(const Staging &) = delete;
    Staging &operator=(const Staging &) = delete;

    /// Makes the directories above the place that are missing, and locks the place. Empty, or why
    /// not.
    QString lock(const Place &place);
    /// Makes the directory. What lies there from before is removed: whoever wants it looks between
    /// the two calls.
    QString make();

    const Place &place() const { return m_place; }
    QString path() const { return m_place.staging(); }

    /// The files have got their final place: gives the lock back. The directories above the place
    /// stay, and whatever has the name of the staging directory now.
    void setDone();

private:
    QString makeParents();
    void giveUp();

    Place m_place;
    QStringList m_madeParents; ///< the topmost first
    FileLock m_lock;
    std::vector<std::unique_ptr<Unfinished>> m_unfinished;
    bool m_isMade = false;
    bool m_isDone = false;
};

} // namespace seamrevise
