#pragma once

#include "numbers/borderstep.h"

#include <QString>
#include <QStringList>

#include <ostream>
#include <vector>

namespace seamrevise
{

/// What a revision came to.
struct ReviseSummary
{
    int layerCount = 0; ///< 0: single layer
    int correctedCount = 0;
    int uncorrectedCount = 0;
    int seamCount = 0;
    std::vector<SeamStep> steps; ///< of the revised seams, the worst before first
    QString outputDir;
    QStringList files;  ///< names in outputDir
    QString filledWith; ///< what the program put in place of uncorrected partitions
    double reviseSeconds = 0.0;
    double checkSeconds = 0.0; ///< of reading and measuring
};

void printSummary(const ReviseSummary &summary, std::ostream &out);

} // namespace seamrevise
