#pragma once

#include <QByteArray>
#include <QtEndian>

#include <vector>

/// Coefficients as bytes, as they are stored: little-endian.
namespace seamrevise
{

template <typename Value>
QByteArray storedBytes(const std::vector<Value> &values)
{
    QByteArray bytes(static_cast<int>(values.size() * sizeof(Value)), Qt::Uninitialized);
    qToLittleEndian<Value>(values.data(), static_cast<qsizetype>(values.size()), bytes.data());
    return bytes;
}

/// Of rows that are all as long as the first.
inline QByteArray storedBytes(const std::vector<std::vector<int>> &rows)
{
    const std::size_t rowBytes = rows.empty() ? 0 : rows.front().size() * sizeof(int);
    QByteArray bytes(static_cast<int>(rows.size() * rowBytes), Qt::Uninitialized);
    char *next = bytes.data();
    for (const std::vector<int> &row : rows) {
        qToLittleEndian<int>(row.data(), static_cast<qsizetype>(row.size()), next);
        next += rowBytes;
    }
    return bytes;
}

} // namespace seamrevise
