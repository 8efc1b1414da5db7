#pragma once

#include <QByteArray>
#include <QString>
#include <QtEndian>

#include <algorithm>
#include <functional>
#include <vector>

/// Files that are written in blocks and read back.
namespace seamrevise
{

/// Takes the next bytes of a file; false ends it.
using BlockSink = std::function<bool(const char *bytes, qint64 count)>;
/// Hands all bytes of a file, the same ones at every call, to a sink until it returns false;
/// returns whether the sink took all.
using BlockSource = std::function<bool(const BlockSink &sink)>;

/// Replaces a file as a whole. Empty, or what went wrong with the file's name.
QString writeWhole(const QString &path, const BlockSource &source);
/// Compares a file with what it was written from. Empty, or what is wrong with the file's name.
/// @param sha256  gets the hash of what was compared, in hexadecimal digits, unless it is null
QString comparisonFault(const QString &path, const BlockSource &source,
                        QByteArray *sha256 = nullptr);
/// Writes and compares.
QString writeChecked(const QString &path, const BlockSource &source);

/// Hands values to a sink, little-endian.
template <typename Value>
bool sendLittleEndian(const std::vector<Value> &values, const BlockSink &sink)
{
    constexpr std::size_t blockValues = 1U << 16;
    std::vector<char> block(std::min(blockValues, values.size()) * sizeof(Value));
    for (std::size_t first = 0; first < values.size(); first += blockValues) {
        const std::size_t count = std::min(blockValues, values.size() - first);
        qToLittleEndian<Value>(values.data() + first, static_cast<qsizetype>(count), block.data());
        if (!sink(block.data(), static_cast<qint64>(count) * qint64{sizeof(Value)}))
            return false;
    }
    return true;
}

} // namespace seamrevise
