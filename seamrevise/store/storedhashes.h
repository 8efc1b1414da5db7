#pragma once

#include "process/backgroundwork.h"

#include <QByteArray>

#include <map>
#include <memory>
#include <vector>

namespace seamrevise
{

/// The SHA-256 of coefficients as they are stored, in hexadecimal digits, taken beside the caller's
/// other work.
class StoredHashes
{
public:
    /// @param work         must live as long
    /// @param screenBytes  what the coefficients of the whole screen take; a tenth of it may wait
    ///                     to be hashed
    StoredHashes(BackgroundWork &work, qint64 screenBytes);

    /// Takes the coefficients of a partition, each number once.
    void add(int number, const std::vector<unsigned short> &values);
    void add(int number, const std::vector<std::vector<int>> &rows);

    /// By the numbers of the partitions, when all are done.
    std::map<int, QByteArray> finish();

private:
    void addBytes(int number, const QByteArray &bytes);

    BackgroundWork &m_work;
    const qint64 m_mostWaitingBytes;
    std::map<int, std::shared_ptr<QByteArray>> m_hashes; ///< shared with the pieces of work
};

} // namespace seamrevise
