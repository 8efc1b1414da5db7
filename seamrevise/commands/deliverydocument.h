#pragma once

#include "commands/commonoptions.h"
#include "delivery/manifest.h"
#include "delivery/verification.h"
#include "exchange/jsonwriter.h"

#include <QString>
#include <QStringList>

#include <ostream>
#include <vector>

/// The JSON documents of commands that are about deliveries, as far as they share something.
namespace seamrevise
{

/// What a document must not be put over or into.
struct DocumentSurroundings
{
    QStringList inputs;
    QStringList directories;
};

/// Puts a document where --json says, if it does. Empty, or why it failed, with the file's name.
QString writeDocument(const CommonOptions &options, const DocumentSurroundings &around,
                      const JsonWriter &json, std::ostream &out);

/// The members `wall` and `partitions` of a delivered wall.
void writeWall(JsonWriter &json, const Manifest &manifest);

/// The member `findings` of differences, which are errors all.
void writeFindings(JsonWriter &json, const std::vector<Difference> &differences);

} // namespace seamrevise
