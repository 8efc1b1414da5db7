#pragma once

#include <seamrevision/nqrect.h>
#include <seamrevision/nqsize.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace seamrevise
{

class JsonWriter;

struct ManifestPartition
{
    int number = 0;
    NQRect rect;
    bool isCorrected = false;
    // Of the coefficients that are stored; only of a corrected partition.
    NQRect zone;
    QByteArray storedSha256;
    // Where the database records them.
    std::optional<qint64> revision;
    QString written; ///< when, UTC
    QString station;
};

struct ManifestFile
{
    QString name;
    qint64 bytes = 0;
    QByteArray sha256;
};

/// Whether a file is one of coefficients, and not one that says something about them.
bool holdsCoefficients(const ManifestFile &file);

/// What a set of coefficient files says of itself: what it was made of, how, and what belongs to
/// it. Written last into its directory, so that it marks a whole set; its last member is the
/// SHA-256 of what stands before it.
struct Manifest
{
    QString version;     ///< of the program
    QStringList command; ///< the command line with every option resolved
    QString when;        ///< UTC
    QString database;
    NQRect screen;
    baseCommon::NQSize grid;
    baseCommon::NQSize band;
    int margin = 0;
    int layerCount = 0;   ///< 0: single layer
    bool isTable = false; ///< the whole screen in tables instead of files for each partition
    std::vector<ManifestPartition> partitions;
    std::vector<ManifestFile> files; ///< all but the manifest itself

    const ManifestPartition *partition(int number) const; ///< null if there is none
    const ManifestFile *file(const QString &name) const;  ///< null if there is none
};

inline const QString manifestName = QStringLiteral("manifest.json");
QString manifestPath(const QString &directory);

/// The member `files` of a document.
void writeFiles(JsonWriter &json, const std::vector<ManifestFile> &files);

QByteArray manifestText(const Manifest &manifest);

/// Reads a manifest's text. Empty, or what is wrong with it.
QString parseManifest(const QByteArray &text, Manifest &manifest);

/// Reads a directory's manifest. Empty, or what is wrong with the file's name.
QString readManifest(const QString &directory, Manifest &manifest);

/// Whether a directory has a manifest, be it damaged: whether it begins like one.
bool isDelivery(const QString &directory);

/// "3 of 48 files differ: 5, 6, 11": what a set changes against the one before it. Only the files
/// of coefficients count.
QString changesText(const Manifest &before, const Manifest &after);

} // namespace seamrevise
