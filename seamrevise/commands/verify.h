#pragma once

#include "commands/commonoptions.h"

#include <QString>

#include <ostream>

namespace CLI
{
class App;
}

namespace seamrevise
{

struct VerifyOptions
{
    QString directory;
    QString database; ///< empty: the manifest alone
    QString limitsFile;
    bool fresh = false; ///< also compare with a new revision of the database
    CommonOptions common;
};

void declareVerify(CLI::App &app, VerifyOptions &options);

/// Holds a delivery against its manifest, and against the database, a new revision and agreed
/// limits if that is asked for; lists every difference. Returns an ExitCode.
int verify(const VerifyOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
