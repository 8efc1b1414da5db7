#pragma once

#include "delivery/manifest.h"
#include "exchange/jsonwriter.h"
#include "numbers/wallnumbers.h"

#include <QString>

#include <ostream>
#include <vector>

namespace seamrevise
{

/// How long a part of a run took.
struct PartTime
{
    const char *name;
    double seconds;
};

/// What a run over a wall came to: the one source of its text and of its JSON document.
struct RunReport
{
    const char *command = "";
    NQRect screen;
    baseCommon::NQSize grid;
    baseCommon::NQSize band;
    int margin = 0;
    int layerCount = 0; ///< 0: single layer
    std::vector<int> storedLayerCounts;
    std::vector<int> corrected;
    std::vector<int> uncorrected;
    std::optional<WallNumbers> numbers; ///< none if the wall cannot be revised
    Findings findings;
    QString outputDir;
    std::vector<ManifestFile> files; ///< in outputDir
    bool isDryRun = false;           ///< they were written, but not put there
    QString differences;             ///< "3 of 48 files differ"; empty if nothing was replaced
    QString keptName;                ///< of the set that was replaced, if it stays
    QString filledWith;              ///< what the program put in place of uncorrected partitions
    int cap = 0;
    std::vector<PartTime> parts;
    double seconds = 0.0; ///< of the whole run
};

void printReport(const RunReport &report, std::ostream &out);

/// One document of the schema seamrevise/1.
JsonWriter reportDocument(const RunReport &report);

/// What of that document depends on the wall and the options alone: the same input gives the same
/// bytes.
JsonWriter numbersDocument(const RunReport &report);

} // namespace seamrevise
