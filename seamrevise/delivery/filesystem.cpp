#include "delivery/filesystem.h"

#include "delivery/manifest.h"
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace seamrevise
{

namespace
{

int renameByKernel(const char *from, const char *to, unsigned flag)
{
    return renameat2(AT_FDCWD, from, AT_FDCWD, to, flag) == 0 ? 0 : errno;
}

RenameCall &renameCall()
{
    static RenameCall call = renameByKernel;
    return call;
}

/// A descriptor that is closed again.
class Descriptor
{
public:
    Descriptor(const QString &path, int flags)
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): as it is declared
        : m_number(open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, 0666))
    {
    }
    ~Descriptor()
    {
        if (m_number >= 0)
            close(m_number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    bool isOpen() const { return m_number >= 0; }
    int number() const { return m_number; }

private:
    const int m_number;
};

} // namespace

QString systemFault(const QString &path, int errorNumber)
{
    return path + QStringLiteral(": ") + qt_error_string(errorNumber);
}

EntryKind entryKind(const QString &path)
{
    struct stat status = {};
    if (lstat(QFile::encodeName(path).constData(), &status) != 0)
        return EntryKind::Missing;
    switch (status.st_mode & S_IFMT) {
    case S_IFREG:
        return EntryKind::File;
    case S_IFDIR:
        return EntryKind::Directory;
    case S_IFLNK:
        return EntryKind::Link;
    default:
        return EntryKind::Other;
    }
}

QStringList entriesOf(const QString &directory)
{
    return QDir(directory).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

bool isSameInode(const QString &first, const QString &second)
{
    struct stat one = {};
    struct stat other = {};
    return stat(QFile::encodeName(first).constData(), &one) == 0
        && stat(QFile::encodeName(second).constData(), &other) == 0 && one.st_dev == other.st_dev
        && one.st_ino == other.st_ino;
}

QString sameInodeAmong(const QStringList &paths, const QString &path)
{
    for (const QString &candidate : paths) {
        if (isSameInode(candidate, path))
            return candidate;
    }
    return {};
}

bool operator==(const FileStamp &first, const FileStamp &second)
{
    return first.inode == second.inode && first.bytes == second.bytes
        && first.modified == second.modified && first.changed == second.changed;
}

FileStamp stampOf(const QString &path)
{
    struct stat status = {};
    if (lstat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    const auto nanoseconds
        = [](const timespec &time) { return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec; };
    return {status.st_ino, status.st_size, nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim)};
}

bool isMountPoint(const QString &directory)
{
    struct statx status = {};
    if (statx(AT_FDCWD, QFile::encodeName(directory).constData(), 0, STATX_BASIC_STATS, &status)
        != 0)
        return false;
    if ((status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0)
        return (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    // An older kernel: its parent lies on another device, or it is the root.
    struct stat own = {};
    struct stat parent = {};
    return stat(QFile::encodeName(directory).constData(), &own) == 0
        && stat(QFile::encodeName(directory + QStringLiteral("/..")).constData(), &parent) == 0
        && (own.st_dev != parent.st_dev || own.st_ino == parent.st_ino);
}

QString makeDirectory(const QString &path, const QString &likeThis)
{
    const QByteArray name = QFile::encodeName(path);
    if (mkdir(name.constData(), 0777) != 0)
        return systemFault(path, errno);
    struct stat status = {};
    if (stat(QFile::encodeName(likeThis).constData(), &status) == 0
        && chmod(name.constData(), status.st_mode & 07777) != 0)
        return systemFault(path, errno);
    return {};
}

QString removeTree(const QString &path)
{
    QFile::remove(manifestPath(path));
    std::error_code error;
    std::filesystem::remove_all(QFile::encodeName(path).toStdString(), error);
    return error ? systemFault(path, error.value()) : QString();
}

QString syncToDisk(const QString &path)
{
    const Descriptor file(path, O_RDONLY);
    // EINVAL: nothing that this file system could sync.
    if (!file.isOpen() || (fsync(file.number()) != 0 && errno != EINVAL))
        return systemFault(path, errno);
    return {};
}

QString writeSynced(const QString &path, const QByteArray &bytes)
{
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK);
    if (!file.isOpen())
        return systemFault(path, errno);
    for (int written = 0; written < bytes.size();) {
        const ssize_t count = write(file.number(), bytes.constData() + written,
                                    static_cast<std::size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR)
            return systemFault(path, errno);
        written += static_cast<int>(std::max<ssize_t>(0, count));
    }
    return syncToDisk(path);
}

QString sizeFault(const QString &path, qint64 bytes)
{
    const Descriptor file(path, O_WRONLY | O_CREAT | O_NONBLOCK);
    const int error = file.isOpen() ? posix_fallocate(file.number(), 0, bytes) : errno;
    return error == 0 ? QString() : systemFault(path, error);
}

QByteArray sha256OfFile(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool isRead = QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly)
        && hash.addData(&file) && file.error() == QFileDevice::NoError;
    return isRead ? hash.result().toHex() : QByteArray();
}

int renameEntry(const QString &from, const QString &to, RenameFlag flag)
{
    const QByteArray oldName = QFile::encodeName(from);
    const QByteArray newName = QFile::encodeName(to);
    const int error = renameCall()(oldName.constData(), newName.constData(), flag);
    if (flag != Rename_KeepOther || (error != EINVAL && error != ENOSYS))
        return error;
    // Without the flag: look first. Who renames holds the lock.
    if (entryKind(to) != EntryKind::Missing)
        return EEXIST;
    return renameCall()(oldName.constData(), newName.constData(), Rename_Replace);
}

void setRenameCall(RenameCall call)
{
    renameCall() = call ? std::move(call) : renameByKernel;
}

} // namespace seamrevise
