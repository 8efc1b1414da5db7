#pragma once

#include <QByteArray>

#include <vector>

namespace seamrevise
{

/// The SHA-256 of coefficients as they are stored, little-endian, in hexadecimal digits.
QByteArray storedSha256(const std::vector<unsigned short> &values);
QByteArray storedSha256(const std::vector<std::vector<int>> &rows);

} // namespace seamrevise
