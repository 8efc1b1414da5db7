#include "delivery/filelock.h"

#include "delivery/filesystem.h"

#include <QFile>

#include <cerrno>
#include <new>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace seamrevise
{

namespace
{

/// Whether a name still leads to an open file: another process may have removed it.
bool isStillThere(int descriptor, const QByteArray &name)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(descriptor, &opened) == 0 && stat(name.constData(), &named) == 0
        && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

FileLock::~FileLock()
{
    release();
}

QString FileLock::lock(const QString &path, bool &busy)
{
    const QString fault = take(path, O_RDWR | O_CREAT, LOCK_EX, busy);
    m_isExclusive = fault.isEmpty();
    return fault;
}

QString FileLock::lockForReading(const QString &path, bool &busy)
{
    if (entryKind(path) == EntryKind::Missing)
        return {};
    return take(path, O_RDONLY, LOCK_SH, busy);
}

QString FileLock::take(const QString &path, int openFlags, int operation, bool &busy)
{
    const QByteArray name = QFile::encodeName(path);
    busy = false;
    for (;;) {
        release();
        m_path = path;
        const int flags = openFlags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): as it is declared
        m_descriptor = open(name.constData(), flags, 0666);
        if (m_descriptor < 0 && errno == ENOENT && (openFlags & O_CREAT) == 0)
            return {}; // the writer has just ended
        if (m_descriptor < 0)
            return systemFault(path, errno);
        if (flock(m_descriptor, operation | LOCK_NB) != 0) {
            const int error = errno;
            busy = error == EWOULDBLOCK;
            release();
            return busy ? QStringLiteral("another run is at work there") : systemFault(path, error);
        }
        if (isStillThere(m_descriptor, name))
            return {};
    }
}

void FileLock::release()
{
    if (m_descriptor < 0)
        return;
    try {
        if (m_isExclusive)
            unlink(QFile::encodeName(m_path).constData());
    } catch (const std::bad_alloc &) { // the file may stay, it is the lock that must go
    }
    close(m_descriptor);
    m_descriptor = -1;
    m_isExclusive = false;
}

} // namespace seamrevise
