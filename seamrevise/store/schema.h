#pragma once

#include <QString>
#include <QStringList>

/// The tables in which a wall is stored, the same in every database.
namespace seamrevise
{

/// Part of the file format. Every version has all tables of the one before it.
constexpr int currentSchemaVersion = 2;

/// The statements that make the tables that came with a version or later.
/// @param bytesType  the database's type for bytes
QStringList createTables(int sinceVersion, const QString &bytesType);

/// The first table of a version that is not there; empty if all are.
QString missingTable(int version, const QStringList &present);

} // namespace seamrevise
