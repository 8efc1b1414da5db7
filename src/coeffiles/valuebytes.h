#pragma once

#include <QtEndian>

#include <cstddef>
#include <vector>

/// The plaintext of coefficient files: values one after the other, little-endian.
namespace seamrevision
{

template <typename Value>
void writeLittleEndian(const Value *values, std::size_t valueCount, unsigned char *bytes)
{
    if (valueCount > 0) // Qt copies without asking, and there may be nothing to point at
        qToLittleEndian<Value>(values, static_cast<qsizetype>(valueCount), bytes);
}

template <typename Value>
std::vector<unsigned char> littleEndianBytes(const std::vector<Value> &values)
{
    std::vector<unsigned char> bytes(values.size() * sizeof(Value));
    writeLittleEndian(values.data(), values.size(), bytes.data());
    return bytes;
}

/// Reads values from the start of a run of bytes that holds all of them.
template <typename Value>
void readLittleEndian(const unsigned char *bytes, std::size_t valueCount, Value *values)
{
    if (valueCount > 0)
        qFromLittleEndian<Value>(bytes, static_cast<qsizetype>(valueCount), values);
}

} // namespace seamrevision
