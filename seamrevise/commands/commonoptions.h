#pragma once

#include <QString>

#include <optional>

namespace seamrevise
{

/// What every command can be told; the `common` member of its Options.
struct CommonOptions
{
    bool quiet = false;        ///< no summary, no progress and no warnings
    bool verbose = false;      ///< the log lines of the library on err
    QString jsonFile;          ///< where the JSON document goes: "-" is out; empty: nowhere
    std::optional<int> jobs;   ///< threads for work beside the engine; one a processor if not given
    bool showProgress = false; ///< err is a terminal, and quiet is off

    /// Whether out gets text to read; not when it gets the document.
    bool showsText() const { return !quiet && jsonFile != QLatin1String("-"); }
};

} // namespace seamrevise
