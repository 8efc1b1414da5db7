#include "commands/import.h"

#include "commands/exitcode.h"
#include "commands/importpartition.h"
#include "commands/importwall.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "exchange/coefficients.h"
#include "store/databaseaddress.h"
#include "store/sqlscreenstore.h"

#include <limits>
#include <utility>

namespace seamrevise
{

namespace
{

/// What the options must be together. The only argument of an import of one partition is the
/// database.
void checkTogether(ImportOptions &options)
{
    const bool isPart = options.number != 0 || options.removed != 0;
    if (isPart && !options.database.isEmpty())
        refuse(QStringLiteral("unexpected argument ") + options.database
               + QStringLiteral("; one partition needs no layout"));
    if (isPart)
        std::swap(options.layout, options.database);
    if (options.database.isEmpty())
        refuse(QStringLiteral("name a database"));
    QString fault;
    parseAddress(options.database, fault);
    if (!fault.isEmpty())
        refuse(fault);
    if (options.number != 0 && options.removed != 0)
        refuse(QStringLiteral("--partition and --remove exclude each other"));
    if ((options.number != 0) != !options.file.isEmpty())
        refuse(QStringLiteral("--partition and --from need each other"));
    if (options.zone && options.number == 0)
        refuse(QStringLiteral("--rect needs --partition"));
    if (options.layerCount && !isPart)
        refuse(QStringLiteral("--layers needs --partition or --remove"));
    if (options.station.isEmpty())
        options.station = defaultStation();
}

} // namespace

void declareImport(CLI::App &app, ImportOptions &options)
{
    constexpr int anyNumber = std::numeric_limits<int>::max();
    addPath(app, "LAYOUT", "", options.layout,
            "the layout file of a whole wall; left out with --partition and --remove")
        ->required();
    addPath(app, "DATABASE", "", options.database,
            "the screen database; made if it is not there and a whole wall is imported");
    addNumber(app, "--partition", "NUMBER", options.number, 1, anyNumber,
              "import only this partition, into a wall that is there")
        ->default_str("");
    addPath(app, "--from", "FILE", options.file,
            "the partition's coefficients: a NumPy array or a text dump");
    addParsed(app, "--rect", {"C0,R0,C1,R1", QStringLiteral("four numbers like 0,0,335,285")},
              options.zone, parseRect,
              "first and last column and row that FILE covers (the partition and the band)");
    addNumber(app, "--layers", "COUNT", options.layerCount, 0, mostLayers,
              "layers that FILE must have, or that are removed; 0: single layer");
    addNumber(app, "--remove", "NUMBER", options.removed, 1, anyNumber,
              "make this partition uncorrected")
        ->default_str("");
    addPath(app, "--station", "NAME", options.station, "who imports (user@host)");
    addFlag(app, "--force", options.overwrite, "overwrite also what other stations have written");
    app.final_callback([&options] { checkTogether(options); });
}

int importCoefficients(const ImportOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(options.common,
                                            {{options.database, "the database"},
                                             {options.layout, "the layout"},
                                             {options.file, "a file that is imported"}},
                                            err))
        return code;
    if (options.removed != 0)
        return removePartition(options, out, err);
    return options.number != 0 ? importPartition(options, out, err) : importWall(options, out, err);
}

} // namespace seamrevise
