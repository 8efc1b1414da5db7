#pragma once

#include "seamrevision/export.h"

#include <string>
#include <vector>

/// The cipher of the coefficient files: DES (FIPS 46-3) in the cipher block chaining mode (FIPS
/// 81), padded as in RFC 5652, section 6.3: one to eight bytes, each of which tells their number.
///
/// Mode and padding are assumptions about the encryption library of the host product, kept in
/// this one class. `openssl enc -des-cbc -provider legacy -provider default` with key and vector
/// 71616c7665746f72 (hex) reads and writes the same files.
///
/// DES is obsolete and protects nothing against an attacker of today; it is here so that files
/// stay readable. There is no check of integrity either: a changed file is noticed at most by its
/// padding.
///
/// A value without state: any thread may use any object at any time.
class SEAMREVISION_EXPORT DES
{
public:
    /// Enciphers in; out is up to eight bytes longer, a multiple of eight. Key and vector are
    /// eight bytes each, with any bytes; the parity bits of the key are ignored. in and out may
    /// be the same vector. False, with out empty, when key or vector have another length. When
    /// memory runs out, the exception (std::bad_alloc) goes to the caller and out is as it was.
    bool DESEncrypt(const std::string &key, const std::string &iv,
                    const std::vector<unsigned char> &in, std::vector<unsigned char> &out) const;

    /// Deciphers what DESEncrypt() made, under the same terms. False, with out empty, also when
    /// in is empty or no multiple of eight bytes long, or when the padding is not as it must be:
    /// another key, another vector for a single block, or a damaged end.
    bool DESDecrypt(const std::string &key, const std::string &iv,
                    const std::vector<unsigned char> &in, std::vector<unsigned char> &out) const;
};
