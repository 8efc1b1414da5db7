#pragma once

#include "process/interruption.h"

#include <QString>

namespace seamrevise
{

/// A file under a passing name beside its final one: renamed when it is whole, else removed.
/// An interruption removes it; a process that is killed leaves it behind, and the next one for the
/// same final name clears it away.
class PassingFile
{
public:
    explicit PassingFile(const QString &finalPath);
    ~PassingFile() { remove(); }
    PassingFile(const PassingFile &) = delete;
    PassingFile &operator=(const PassingFile &) = delete;

    const QString &path() const { return m_path; }

    /// Replaces the file of the final name, if there is one and that is wanted. Empty, or what
    /// went wrong.
    QString moveToFinalName(bool mayReplace) const;

private:
    void removeStale() const;
    void remove() const;

    const QString m_finalPath;
    const QString m_path;
    const QString m_journal; ///< that SQLite has beside it
    const Unfinished m_unfinished;
    const Unfinished m_unfinishedJournal;
};

} // namespace seamrevise
