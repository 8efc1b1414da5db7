#pragma once

#include "delivery/filesystem.h"
#include "delivery/manifest.h"
#include "delivery/staging.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>
#include <mutex>

namespace seamrevise
{

/// Delivers a set of files into a directory, whole or not at all.
///
///     Delivery delivery;
///     fault = delivery.begin({"out", force, keep, {database}});
///     ... files are written into delivery.path(), read back and finished ...
///     fault = delivery.addFile("numbers.json", text);
///     fault = delivery.seal(manifest); // all that a dry run does
///     fault = delivery.commit();
///
/// Until commit() the directory is as it was; an object that goes without it leaves nothing. Each
/// call returns an empty text, or why it failed, with the file and the cause.
class Delivery
{
public:
    struct Request
    {
        QString directory;  ///< made if missing
        bool force = false; ///< replace the delivery that is there
        int keep = 1;       ///< how many replaced sets stay beside it, the newest ones
        QStringList inputs; ///< files that must not be hit, under whatever name
    };

    /// Checks the directory, locks it, clears up after a run that was killed, and makes the
    /// staging directory.
    QString begin(const Request &request);

    /// Where the files of the set are written.
    QString path() const { return m_staging.path(); }

    QString addFile(const QString &name, const QByteArray &bytes) const;

    /// Waits until a file that was read back is on the disk; seal() does so with all others. Calls
    /// for different files may run at once.
    /// @param sha256  of what was read, in hexadecimal digits
    /// @param before  the file before it was read; seal() fails if it is touched later
    QString finishFile(const QString &name, const QByteArray &sha256, const FileStamp &before);

    /// Lists all files in the manifest, writes it, and waits until everything is on the disk.
    QString seal(Manifest &manifest);

    /// Puts the set in place. The manifest that was sealed says what it holds.
    QString commit();

    /// What was done about an interrupted run; after commit() also what could not be cleared up.
    const QStringList &notes() const { return m_notes; }
    /// After commit(): the name of the set that was replaced; empty if there was none, or if it
    /// does not stay.
    const QString &keptName() const { return m_keptName; }
    /// After commit(): what the set changes against the one before; empty if that is not known.
    const QString &changes() const { return m_changes; }

private:
    struct FinishedFile
    {
        ManifestFile file;
        FileStamp stamp;
    };
    QString listFiles(std::vector<ManifestFile> &files);

    Request m_request;
    Staging m_staging;
    QByteArray m_manifestSha256;
    Manifest m_manifest;
    std::mutex m_finishedMutex;
    std::map<QString, FinishedFile> m_finished;
    QStringList m_notes;
    QString m_keptName;
    QString m_changes;
};

/// Puts a kept set back in place of a directory; the set that is there becomes a kept one. `from`
/// is the name of a kept set or its time alone; empty for the newest.
class Restoration
{
public:
    enum class Fault
    {
        None,
        NoSet,    ///< nothing that could be put back
        CannotPut ///< the directory cannot be replaced
    };
    Fault run(const QString &directory, const QString &from);

    const QString &message() const { return m_message; } ///< of a fault
    const QStringList &notes() const { return m_notes; }
    const QString &restoredName() const { return m_restoredName; }
    const QString &keptName() const { return m_keptName; } ///< empty if nothing was replaced

private:
    Fault fail(Fault fault, const QString &message);

    QString m_message;
    QStringList m_notes;
    QString m_restoredName;
    QString m_keptName;
};

} // namespace seamrevise
