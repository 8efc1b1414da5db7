#include "commands/upgrade.h"

#include "commands/exitcode.h"
#include "commands/jsondocument.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "store/schema.h"
#include "store/sqlscreenstore.h"

namespace seamrevise
{

void declareUpgrade(CLI::App &app, UpgradeOptions &options)
{
    addDatabase(app, options.database);
}

int upgrade(const UpgradeOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code
        = checkDocumentPlace(options.common, {{options.database, "the database"}}, err))
        return code;
    SqlScreenStore store;
    if (!store.upgrade(options.database))
        return reportFault(Exit_Input, store.errorText(), err);
    const int before = store.schemaVersion();
    if (options.common.showsText())
        out << options.database.toStdString() << ": schema version " << currentSchemaVersion
            << (before == currentSchemaVersion ? ", as before" : ", was " + std::to_string(before))
            << '\n';

    JsonWriter json;
    beginDocument(json, "upgrade");
    json.member("database", options.database);
    json.member("version_before", before);
    json.member("version", currentSchemaVersion);
    json.endObject();
    const QString fault = writeDocument(options.common, json, out);
    return fault.isEmpty() ? int{Exit_Done} : reportFault(Exit_Output, fault, err);
}

} // namespace seamrevise
