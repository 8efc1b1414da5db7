#pragma once

#include "commands/commonoptions.h"
#include "exchange/jsonwriter.h"

#include <QString>

#include <ostream>

/// Files that a command writes beside what it is for.
namespace seamrevise
{

/// Whether two names, of files that need not exist, are those of one file.
bool isSameFile(const QString &first, const QString &second);

/// Whether a file or directory lies in a directory or below it, under whatever names; neither need
/// exist.
bool isInside(const QString &path, const QString &directory);

/// What speaks against the place where --json says that the document goes: it must neither replace
/// what the command reads nor lie among what it delivers. Empty if nothing does.
///
/// @param outputDir  what is delivered, and need not exist yet; empty: nothing
QString documentFault(const CommonOptions &options, const QString &input,
                      const QString &outputDir = QString());

/// Writes a command's document where --json says, if it does: to out, or to a file, which is
/// replaced as a whole unless it is a pipe or a device. Empty, or what went wrong with its name.
QString writeDocument(const CommonOptions &options, const JsonWriter &json, std::ostream &out);

} // namespace seamrevise
