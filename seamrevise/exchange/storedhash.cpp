#include "exchange/storedhash.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <algorithm>

namespace seamrevise
{

namespace
{

/// Hashes values in blocks.
template <typename Value>
class ValueHash
{
public:
    ValueHash() { m_block.reserve(blockValues); }

    void add(const Value *values, std::size_t count)
    {
        while (count > 0) {
            const std::size_t taken = std::min(count, blockValues - m_block.size());
            m_block.insert(m_block.end(), values, values + taken);
            values += taken;
            count -= taken;
            if (m_block.size() == blockValues)
                flush();
        }
    }
    QByteArray result()
    {
        flush();
        return m_hash.result().toHex();
    }

private:
    static constexpr std::size_t blockValues = 1U << 14;

    void flush()
    {
        qToLittleEndian<Value>(m_block.data(), static_cast<qsizetype>(m_block.size()),
                               m_block.data());
        m_hash.addData(reinterpret_cast<const char *>(m_block.data()),
                       static_cast<int>(m_block.size() * sizeof(Value)));
        m_block.clear();
    }

    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    std::vector<Value> m_block;
};

} // namespace

QByteArray storedSha256(const std::vector<unsigned short> &values)
{
    ValueHash<unsigned short> hash;
    hash.add(values.data(), values.size());
    return hash.result();
}

QByteArray storedSha256(const std::vector<std::vector<int>> &rows)
{
    ValueHash<int> hash;
    for (const std::vector<int> &row : rows)
        hash.add(row.data(), row.size());
    return hash.result();
}

} // namespace seamrevise
