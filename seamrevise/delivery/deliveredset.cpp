#include "delivery/deliveredset.h"

#include "delivery/filesystem.h"
#include "delivery/place.h"
#include "delivery/placing.h"
#include "store/screenlayout.h"

#include <QFile>
#include <QtEndian>

namespace seamrevise
{

namespace
{

void append(const QByteArray &bytes, qint64 bytesPerValue, std::vector<qint32> &values)
{
    const char *const end = bytes.constData() + bytes.size();
    for (const char *at = bytes.constData(); at != end; at += bytesPerValue)
        values.push_back(bytesPerValue == 2 ? qint32{qFromLittleEndian<quint16>(at)}
                                            : qFromLittleEndian<qint32>(at));
}

/// The rows of a partition out of a table; what stands before the table's values is skipped.
QString readTable(const QString &path, const Manifest &manifest, const NQRect &rect,
                  const CoefficientFormat &format, std::vector<qint32> &values)
{
    QFile file(path);
    const qint64 header = file.size() - tableBytes(manifest, format);
    if (entryKind(path) != EntryKind::File || !file.open(QIODevice::ReadOnly))
        return path + QStringLiteral(": ") + file.errorString();
    if (header < 0)
        return path + QStringLiteral(": is too short for the screen");
    const NQRect &screen = manifest.screen;
    const qint64 rowBytes = columnsOf(rect) * format.bytesPerPixel();
    values.clear();
    values.reserve(static_cast<std::size_t>(pixelsOf(rect) * format.valuesPerPixel));
    for (qint64 row = rect.top(); row <= rect.bottom(); ++row) {
        const qint64 pixel = (row - screen.top()) * columnsOf(screen) + rect.left() - screen.left();
        QByteArray bytes;
        if (file.seek(header + pixel * format.bytesPerPixel()))
            bytes = file.read(rowBytes);
        if (bytes.size() != rowBytes)
            return path + QStringLiteral(": cannot be read: ") + file.errorString();
        append(bytes, format.bytesPerValue, values);
    }
    return {};
}

} // namespace

QString fileNameOf(const Manifest &manifest, int number, const CoefficientFormat &format)
{
    return manifest.isTable ? format.tableName : format.fileName(number);
}

qint64 tableBytes(const Manifest &manifest, const CoefficientFormat &format)
{
    return pixelsOf(manifest.screen) * format.bytesPerPixel();
}

DeliveredSet::State DeliveredSet::fail(State state, const QString &message)
{
    m_message = message;
    return state;
}

/// Under the lock of a writer, which is given back. Where this user may not clear up, the set that
/// is there is still a whole one.
bool DeliveredSet::clearUp(const QString &directory)
{
    Place place;
    m_message = findPlace(directory, place);
    if (!m_message.isEmpty())
        return true; // the caller finds no manifest
    m_path = place.path();
    bool busy = false;
    if (hasLeftovers(place) && m_lock.lock(place.lockFile(), busy).isEmpty())
        m_message = recoverPlace(place, m_notes);
    m_lock.release();
    if (!busy && m_message.isEmpty())
        m_lock.lockForReading(place.lockFile(), busy);
    if (busy)
        m_message = m_path + QStringLiteral(": another run is at work there");
    return m_message.isEmpty();
}

DeliveredSet::State DeliveredSet::open(const QString &directory)
{
    m_path = directory;
    if (!clearUp(directory))
        return State::Busy;
    if (entryKind(m_path) != EntryKind::Directory)
        return fail(State::Missing, m_path + QStringLiteral(": there is no such directory"));
    if (entryKind(manifestPath(m_path)) == EntryKind::Missing)
        return fail(State::Missing,
                    m_path + QStringLiteral(": has no manifest.json; it is not a whole delivery"));
    const QString fault = readManifest(m_path, m_manifest);
    return fault.isEmpty() ? State::Ready : fail(State::Damaged, fault);
}

QString DeliveredSet::read(const ManifestPartition &partition, const CoefficientFormat &format,
                           std::vector<qint32> &values) const
{
    const QString path
        = m_path + QLatin1Char('/') + fileNameOf(m_manifest, partition.number, format);
    if (m_manifest.isTable)
        return readTable(path, m_manifest, partition.rect, format, values);
    return readCoefficientFile(path, pixelsOf(partition.rect), format, values);
}

} // namespace seamrevise
