#pragma once

#include <QString>

#include <utility>
#include <vector>

namespace seamrevise
{

/// Where a wall is kept, as users write it: the path of an SQLite file, or the URL of a wall in a
/// PostgreSQL database,
///     postgresql://[USER@][HOST][:PORT]/DATABASE/WALL[?KEY=VALUE&...]
/// What a URL leaves out comes from the environment, as libpq takes it (PGHOST, PGUSER, ...).
/// Passwords never stand in one; they come from PGPASSFILE or PGPASSWORD.
struct DatabaseAddress
{
    QString text; ///< as it was written; no password is in it
    bool isUrl = false;

    QString user;
    QString host; ///< a name, an address, or the directory of a socket
    int port = -1;
    QString database;
    QString wall;
    std::vector<std::pair<QString, QString>> parameters; ///< for libpq
};

/// Reads an address. What is wrong with it is in fault, which quotes nothing that may be secret;
/// empty if nothing is.
DatabaseAddress parseAddress(const QString &text, QString &fault);

bool isUrl(const QString &address);

/// Whether a word of a command line carries a URL with a password. Such a word is to be refused
/// and never shown.
bool carriesPassword(const QString &word);

} // namespace seamrevise
