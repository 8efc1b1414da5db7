#pragma once

#include "delivery/filelock.h"
#include "delivery/manifest.h"
#include "exchange/coefficientfile.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace seamrevise
{

/// A delivery as its readers see it: its manifest and its values. What a run left there that was
/// killed is cleared up first, and no run replaces the set while the object lives.
class DeliveredSet
{
public:
    enum class State
    {
        Ready,
        Missing, ///< no such directory, or no manifest in it
        Damaged, ///< the manifest cannot be believed
        Busy     ///< a run is at work there, or an interrupted one cannot be cleared up
    };
    State open(const QString &directory);

    const QString &message() const { return m_message; } ///< of a set that is not ready
    const QStringList &notes() const { return m_notes; } ///< what was cleared up
    const QString &path() const { return m_path; }
    const Manifest &manifest() const { return m_manifest; }

    /// Reads a partition's values of one kind, from its file or out of the table of the screen;
    /// packed words are the same 32 bits. Empty, or what is wrong with the file's name.
    QString read(const ManifestPartition &partition, const CoefficientFormat &format,
                 std::vector<qint32> &values) const;

private:
    bool clearUp(const QString &directory);
    State fail(State state, const QString &message);

    FileLock m_lock;
    QString m_path;
    Manifest m_manifest;
    QString m_message;
    QStringList m_notes;
};

/// The name of the file that holds a partition's values of one kind: its own, or the table.
QString fileNameOf(const Manifest &manifest, int number, const CoefficientFormat &format);

/// Bytes of a table of the whole screen, without its header.
qint64 tableBytes(const Manifest &manifest, const CoefficientFormat &format);

} // namespace seamrevise
