#pragma once

#include <QString>

namespace seamrevise
{

/// A lock in the form of a file, which is free as soon as its process ends, however it ends. The
/// file is removed with the lock; where a process was killed it stays and does no harm.
class FileLock
{
public:
    FileLock() = default;
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    /// Locks against everybody; the file is made. Does not wait. Empty, or the fault: `busy` is
    /// set where another process has the lock.
    QString lock(const QString &path, bool &busy);

    /// Locks against writers only. Without a file there is no writer, and nothing to lock.
    QString lockForReading(const QString &path, bool &busy);

    void release();

private:
    QString take(const QString &path, int openFlags, int operation, bool &busy);

    QString m_path;
    int m_descriptor = -1;
    bool m_isExclusive = false;
};

} // namespace seamrevise
