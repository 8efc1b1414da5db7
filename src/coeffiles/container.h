#pragma once

#include <QString>

#include <vector>

/// The container of every coefficient file: DES-CBC over the whole plaintext, nothing around it.
/// Part of the file format: key and initialisation vector are both the eight letters "qalvetor".
///
/// Running out of memory passes through as an exception.
namespace seamrevision
{

/// Makes a directory with all its parents unless it exists. A relative one is resolved against
/// itself, so it is also created once more beneath itself.
bool ensureDirectory(const QString &directory);

/// Where a partition's file lies; the layered engine has two, told apart by a suffix.
inline QString filePath(const QString &directory, const QString &areaId,
                        const QString &suffix = QString())
{
    return directory + QLatin1Char('/') + areaId + suffix;
}

/// Encrypts and writes one file, replacing what was there. False if it cannot be opened, or if the
/// system did not take all of it (a full disk); what it took stays.
bool writeEncrypted(const QString &path, const std::vector<unsigned char> &plaintext);

/// Reads and decrypts one file. False if it cannot be opened; a file that does not decrypt gives
/// an empty plaintext.
bool readDecrypted(const QString &path, std::vector<unsigned char> &plaintext);

} // namespace seamrevision
