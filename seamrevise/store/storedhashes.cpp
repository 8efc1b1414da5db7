#include "store/storedhashes.h"

#include "store/storedbytes.h"

#include <QCryptographicHash>

namespace seamrevise
{

StoredHashes::StoredHashes(BackgroundWork &work, qint64 screenBytes)
    : m_work(work)
    , m_mostWaitingBytes(screenBytes / 10)
{
}

void StoredHashes::add(int number, const std::vector<unsigned short> &values)
{
    addBytes(number, storedBytes(values));
}

void StoredHashes::add(int number, const std::vector<std::vector<int>> &rows)
{
    addBytes(number, storedBytes(rows));
}

void StoredHashes::addBytes(int number, const QByteArray &bytes)
{
    const auto hash = std::make_shared<QByteArray>();
    m_hashes[number] = hash;
    m_work.add(bytes.size(), [hash, bytes] {
        *hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    });
    m_work.helpUntil(m_mostWaitingBytes);
}

std::map<int, QByteArray> StoredHashes::finish()
{
    m_work.finish();
    std::map<int, QByteArray> hashes;
    for (const auto &[number, hash] : m_hashes)
        hashes.emplace(number, *hash);
    return hashes;
}

} // namespace seamrevise
