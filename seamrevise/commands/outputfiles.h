#pragma once

#include "commands/commonoptions.h"
#include "exchange/jsonwriter.h"

#include <QString>

#include <ostream>
#include <vector>

/// Files that a command writes beside what it is for.
namespace seamrevise
{

/// Whether two names, of files that need not exist, are those of one file.
bool isSameFile(const QString &first, const QString &second);

/// Whether a path is a directory or lies in it or below it, under whatever names; neither need
/// exist.
bool isWithin(const QString &path, const QString &directory);

/// A file that a command reads or writes, or a directory whose files it does.
struct UsedPath
{
    QString path;     ///< need not exist; empty: there is none
    const char *what; ///< "the database"
};

/// Whether the document may go where --json says: it is none of these files, under whatever name,
/// and lies in none of these directories. Before a command does anything. Returns Exit_Done, or
/// Exit_Output with a line on err.
int checkDocumentPlace(const CommonOptions &options, const std::vector<UsedPath> &usedPaths,
                       std::ostream &err);

/// Writes a command's document where --json says, if it does: to out, or to a file, which is
/// replaced as a whole unless it is a pipe or a device. Empty, or what went wrong with its name.
QString writeDocument(const CommonOptions &options, const JsonWriter &json, std::ostream &out);

} // namespace seamrevise
