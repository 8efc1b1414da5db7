#pragma once

#include <QtEndian>

#include <cstddef>
#include <vector>

/// The plaintext of coefficient files: values one after the other, little-endian.
namespace seamrevision
{

template <typename Value>
std::vector<unsigned char> littleEndianBytes(const std::vector<Value> &values)
{
    std::vector<unsigned char> bytes(values.size() * sizeof(Value));
    if (!values.empty()) // Qt copies without asking, and there is nothing to point at
        qToLittleEndian<Value>(values.data(), static_cast<qsizetype>(values.size()), bytes.data());
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
