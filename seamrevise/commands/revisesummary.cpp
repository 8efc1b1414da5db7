#include "commands/revisesummary.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

constexpr std::size_t worstCount = 5;

std::string fixed(double value, int decimals, int width)
{
    return QString::number(value, 'f', decimals).rightJustified(width).toStdString();
}

void printStep(const std::string &name, double before, double after, std::ostream &out)
{
    out << "  " << QString::fromStdString(name).leftJustified(18).toStdString()
        << fixed(before * 100.0, 2, 7) << " % " << fixed(after * 100.0, 2, 7) << " %\n";
}

void printSteps(const std::vector<SeamStep> &steps, std::ostream &out)
{
    if (steps.empty())
        return;
    out << "border step, largest along a seam\n"
        << "                       before     after\n";
    double worstBefore = 0.0;
    double worstAfter = 0.0;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const SeamStep &step = steps[i];
        worstBefore = std::max(worstBefore, step.before);
        worstAfter = std::max(worstAfter, step.after);
        if (i < worstCount)
            printStep("seam " + std::to_string(step.seam.current) + " - "
                          + std::to_string(step.seam.next),
                      step.before, step.after, out);
    }
    if (steps.size() > worstCount)
        printStep("all " + std::to_string(steps.size()) + " seams", worstBefore, worstAfter, out);
}

} // namespace

void printSummary(const ReviseSummary &summary, std::ostream &out)
{
    const auto revisedCount = static_cast<int>(summary.steps.size());
    if (summary.layerCount > 0)
        out << "layers       " << summary.layerCount << '\n';
    out << "partitions   " << summary.correctedCount << " corrected, " << summary.uncorrectedCount
        << " not\n"
        << "seams        " << revisedCount << " revised, " << summary.seamCount - revisedCount
        << " skipped\n"
        << "files        " << summary.files.size() << " in " << summary.outputDir.toStdString()
        << ", read back and compared\n";
    if (!summary.filledWith.isEmpty())
        out << "             uncorrected partitions are filled with "
            << summary.filledWith.toStdString() << '\n';
    out << "time         " << fixed(summary.reviseSeconds, 2, 0) << " s, checks "
        << fixed(summary.checkSeconds, 2, 0) << " s\n";
    printSteps(summary.steps, out);
}

} // namespace seamrevise
