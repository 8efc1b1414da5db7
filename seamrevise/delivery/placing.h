#pragma once

#include "delivery/place.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace seamrevise
{

/// How a whole, synced set in the staging directory takes its place.
struct Placing
{
    static constexpr int keepAll = -1;

    QByteArray manifestSha256; ///< of the new set's manifest file: which of two sets is the new one
    QString keptName;          ///< what the set that is replaced is called from then on
    int keep = keepAll;        ///< how many replaced sets may stay, the newest ones
    QString from;              ///< the kept set that is put back; empty for a new one
};

/// Puts the staged set in place of the directory at a place in one step and renames what it
/// replaces. Where the process dies on the way, recoverPlace() finishes or undoes it. The caller
/// has the lock. Empty, or why nothing has changed; what went wrong after the step is in notes.
QString putInPlace(const Place &place, const Placing &placing, QStringList &notes);

/// Whether an earlier run left something at a place.
bool hasLeftovers(const Place &place);

/// Clears up what a run left that was killed: a set that was not put in place is removed, or gets
/// the name again that it had as a kept set; one that was replaced becomes a kept set; a step that
/// took two renames is completed. The caller has the lock. Empty, or why not; notes say what was
/// done.
QString recoverPlace(const Place &place, QStringList &notes);

} // namespace seamrevise
