#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// What is asked of the file system beyond reading and writing. A fault is a text that names the
/// path and the cause; empty if there is none.
namespace seamrevise
{

/// "path: No space left on device".
QString systemFault(const QString &path, int errorNumber);

enum class EntryKind
{
    Missing,
    File,
    Directory,
    Link, ///< a symbolic link, to whatever
    Other ///< a pipe, a socket, a device
};

/// What a name is itself; links are not followed.
EntryKind entryKind(const QString &path);

/// All names in a directory, hidden ones too.
QStringList entriesOf(const QString &directory);

/// Whether two names, links followed, lead to one file. False where one does not exist.
bool isSameInode(const QString &first, const QString &second);

/// The first of the paths that leads to the same file; empty if none does.
QString sameInodeAmong(const QStringList &paths, const QString &path);

bool isMountPoint(const QString &directory);

/// Makes a directory that does not exist yet, with the permissions of another one if that exists.
QString makeDirectory(const QString &path, const QString &likeThis);

/// Removes a directory with what is in it; the manifest first, so that what is left of it when the
/// process dies does not look whole. No fault if there is none.
QString removeTree(const QString &path);

/// Which file a name leads to, and in what state. Equal as long as nobody touches it.
struct FileStamp
{
    quint64 inode = 0; ///< 0: there is none
    qint64 bytes = 0;
    qint64 modified = 0; ///< ns
    qint64 changed = 0;  ///< ns
};
bool operator==(const FileStamp &first, const FileStamp &second);
FileStamp stampOf(const QString &path);

/// Waits until what was written to a file, or the names in a directory, are on the disk.
QString syncToDisk(const QString &path);

/// Writes a file, in place of the one of that name, and syncs it.
QString writeSynced(const QString &path, const QByteArray &bytes);

/// Why a file cannot have that many bytes: after a write that failed without saying why. It is
/// made, and left with that size if it can.
QString sizeFault(const QString &path, qint64 bytes);

/// The SHA-256 of a file's content in hexadecimal digits; empty if it cannot be read.
QByteArray sha256OfFile(const QString &path);

/// What renameat2(2) does; the numbers are the kernel's.
enum RenameFlag : unsigned
{
    Rename_Replace = 0,   ///< a file, or an empty directory, of the new name
    Rename_KeepOther = 1, ///< fails where the new name exists
    Rename_Exchange = 2   ///< both must exist; each gets the other's name
};

/// Renames; 0 or the error's number.
int renameEntry(const QString &from, const QString &to, RenameFlag flag);

/// Stands in for renameat2(2) until it is set to nothing again, so that tests can have a file
/// system without exchange and a process that dies between two renames.
using RenameCall = std::function<int(const char *from, const char *to, unsigned flag)>;
void setRenameCall(RenameCall call);

} // namespace seamrevise
