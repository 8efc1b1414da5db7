#include "store/schema.h"

namespace seamrevise
{

namespace
{

/// Part of the file format. The type of a column of bytes goes in for %1.
const struct
{
    const char *name, *columns;
    int since;
} tables[] = {
    {"screen",
     "first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
     " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL,"
     " grid_cols INTEGER NOT NULL, grid_rows INTEGER NOT NULL,"
     " band_cols INTEGER NOT NULL, band_rows INTEGER NOT NULL",
     1},
    {"partitions",
     "number INTEGER PRIMARY KEY,"
     " first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
     " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL",
     1},
    {"coefficients",
     "number INTEGER PRIMARY KEY,"
     " first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
     " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL,"
     " data %1 NOT NULL",
     1},
    {"layered_coefficients",
     "number INTEGER NOT NULL, layers INTEGER NOT NULL,"
     " first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
     " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL,"
     " data %1 NOT NULL, PRIMARY KEY (number, layers)",
     1},
    {"revisions",
     "number INTEGER NOT NULL, layers INTEGER NOT NULL, revision INTEGER NOT NULL,"
     " written TEXT NOT NULL, station TEXT NOT NULL, PRIMARY KEY (number, layers)",
     2},
};

} // namespace

QStringList createTables(int sinceVersion, const QString &bytesType)
{
    QStringList statements;
    for (const auto &table : tables) {
        if (table.since >= sinceVersion)
            statements += QStringLiteral("CREATE TABLE %1 (%2)")
                              .arg(QLatin1String(table.name),
                                   QString::fromLatin1(table.columns)
                                       .replace(QLatin1String("%1"), bytesType));
    }
    return statements;
}

QString missingTable(int version, const QStringList &present)
{
    for (const auto &table : tables) {
        if (table.since <= version && !present.contains(QLatin1String(table.name)))
            return QLatin1String(table.name);
    }
    return {};
}

} // namespace seamrevise
