#pragma once

#include "exchange/jsonwriter.h"
#include "numbers/wallnumbers.h"

#include <QString>
#include <QStringList>

#include <ostream>
#include <vector>

namespace seamrevise
{

struct DeliveredFile
{
    QString name;
    qint64 bytes;
    QString sha256; ///< in hexadecimal digits
};

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
    QStringList fileNames;            ///< in outputDir
    std::vector<DeliveredFile> files; ///< the same, for the document
    QString filledWith;               ///< what the program put in place of uncorrected partitions
    int cap = 0;
    std::vector<PartTime> parts;
    double seconds = 0.0; ///< of the whole run
};

void printReport(const RunReport &report, std::ostream &out);

/// One document of the schema seamrevise/1.
JsonWriter reportDocument(const RunReport &report);

} // namespace seamrevise
