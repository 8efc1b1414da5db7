#pragma once

#include <QString>

#include <string>
#include <vector>

/// The same cipher in another library, the yardstick of ours; only where that library is installed.
namespace bench
{

using Bytes = std::vector<unsigned char>;

/// Key and vector of the coefficient files.
const std::string fileKey = "qalvetor";

/// Whether it is there to stand beside.
bool haveLibcrypto();

/// Enciphers or deciphers with DES-CBC; false where it cannot.
bool cryptWithLibcrypto(bool encrypts, const Bytes &in, Bytes &out);

/// The plaintexts of the coefficient files in a directory.
std::vector<Bytes> plaintextsIn(const QString &directory);

/// The yardstick of a revision into files: the same bytes enciphered, one file after another.
void encryptOneByOne(const std::vector<Bytes> &plaintexts);

} // namespace bench
