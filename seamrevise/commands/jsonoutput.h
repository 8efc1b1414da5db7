#pragma once

#include "commands/commonoptions.h"
#include "delivery/manifest.h"
#include "delivery/verification.h"
#include "exchange/jsonwriter.h"

#include <QByteArray>
#include <QStringList>

#include <ostream>
#include <vector>

/// The JSON documents of commands, as far as they share something.
namespace seamrevise
{

/// What a document must not be put over or into.
struct JsonSurroundings
{
    QStringList inputs;
    QStringList directories;
};

/// Puts a document where --json wants it, if it was given. Empty, or why it failed, with the file's
/// name. A regular file is replaced.
QString writeDocument(const CommonOptions &options, const JsonSurroundings &around,
                      const QByteArray &document, std::ostream &out);

/// The members `wall` and `partitions` of a delivered wall.
void writeWall(JsonWriter &json, const Manifest &manifest);

/// The member `findings` of differences, which are errors all.
void writeFindings(JsonWriter &json, const std::vector<Difference> &differences);

} // namespace seamrevise
