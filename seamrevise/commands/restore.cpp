#include "commands/restore.h"

#include "commands/delivered.h"
#include "commands/jsondocument.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "delivery/delivery.h"
#include "delivery/place.h"

namespace seamrevise
{

namespace
{

void printText(const RestoreOptions &options, const Restoration &restoration, std::ostream &out)
{
    out << "restored     " << restoration.restoredName().toStdString() << " to "
        << options.directory.toStdString() << '\n';
    if (!restoration.keptName().isEmpty())
        out << "kept         " << restoration.keptName().toStdString() << '\n';
}

JsonWriter document(const RestoreOptions &options, const Restoration &restoration)
{
    JsonWriter json;
    beginDocument(json, "restore");
    json.member("directory", options.directory);
    json.member("restored", restoration.restoredName());
    if (restoration.keptName().isEmpty())
        json.member("kept", std::optional<int>());
    else
        json.member("kept", restoration.keptName());
    json.endObject();
    return json;
}

/// The delivery, and all sets that could take its place.
std::vector<UsedPath> setsOf(const QString &directory)
{
    std::vector<UsedPath> sets{{directory, "the set of files"}};
    Place place;
    if (!findPlace(directory, place).isEmpty())
        return sets;
    for (const QString &name : keptSets(place))
        sets.push_back({place.sibling(name), "a kept set"});
    return sets;
}

} // namespace

void declareRestore(CLI::App &app, RestoreOptions &options)
{
    addPath(app, "DIR", "", options.directory, "the delivery that is replaced")->required();
    addPath(app, "--from", "NAME", options.from, "the kept set to put back (the newest)");
}

int restore(const RestoreOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(options.common, setsOf(options.directory), err))
        return code;
    Restoration restoration;
    const Restoration::Fault fault = restoration.run(options.directory, options.from);
    reportNotes(options.common, restoration.notes(), err);
    if (fault != Restoration::Fault::None)
        return reportFault(fault == Restoration::Fault::NoSet ? Exit_Input : Exit_Output,
                           restoration.message(), err);
    if (options.common.showsText())
        printText(options, restoration, out);
    const QString jsonFault = writeDocument(options.common, document(options, restoration), out);
    return jsonFault.isEmpty() ? int{Exit_Done} : reportFault(Exit_Output, jsonFault, err);
}

} // namespace seamrevise
