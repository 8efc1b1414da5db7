#include "commands/runreport.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

constexpr std::size_t shownSeams = 5;
constexpr int shownNames = 8;

std::string padded(const QString &text, int width)
{
    return text.rightJustified(width).toStdString();
}

/// "5.86 %", or a dash where there is nothing.
QString percentOrDash(const std::optional<double> &fraction)
{
    return fraction ? percentText(*fraction) : QStringLiteral("-");
}

std::optional<double> worstOf(const std::optional<Step> &step)
{
    return step ? std::optional<double>(step->worst) : std::nullopt;
}

struct SeamLine
{
    QString name;
    std::optional<double> median;
    std::optional<double> worst;
    std::optional<double> before;
    std::optional<double> after;
    QString afterLine;
    std::optional<double> widthNeeded;
};

SeamLine lineOf(const SeamReport &seam)
{
    const SeamNumbers &numbers = seam.numbers;
    SeamLine line;
    line.name
        = QStringLiteral("seam %1 - %2").arg(seam.strip.seam.current).arg(seam.strip.seam.next);
    if (numbers.disagreement) {
        line.median = numbers.disagreement->median;
        line.worst = numbers.disagreement->worst;
    }
    line.before = worstOf(numbers.before);
    line.after = worstOf(numbers.after);
    if (numbers.after)
        line.afterLine
            = (seam.strip.isHorizontal() ? QStringLiteral("row %1") : QStringLiteral("column %1"))
                  .arg(numbers.after->worstLine);
    line.widthNeeded = numbers.widthNeeded;
    return line;
}

void printLine(const SeamLine &line, std::ostream &out)
{
    const QString needed
        = line.widthNeeded ? QString::number(*line.widthNeeded, 'f', 0) : QStringLiteral("-");
    out << "  " << line.name.leftJustified(15).toStdString()
        << padded(percentOrDash(line.median), 10) << padded(percentOrDash(line.worst), 10)
        << padded(percentOrDash(line.before), 10) << padded(percentOrDash(line.after), 10)
        << padded(needed, 8);
    if (!line.afterLine.isEmpty())
        out << "  " << line.afterLine.toStdString();
    out << '\n';
}

/// The worst of all seams in each column; a disagreement's sign is kept.
SeamLine worstLine(const std::vector<SeamLine> &lines)
{
    SeamLine all;
    all.name = QStringLiteral("all %1 seams").arg(lines.size());
    const auto keepLarger = [](std::optional<double> &kept, const std::optional<double> &other) {
        if (other && (!kept || std::abs(*other) > std::abs(*kept)))
            kept = other;
    };
    for (const SeamLine &line : lines) {
        keepLarger(all.median, line.median);
        keepLarger(all.worst, line.worst);
        keepLarger(all.before, line.before);
        keepLarger(all.after, line.after);
        keepLarger(all.widthNeeded, line.widthNeeded);
    }
    return all;
}

void printSeams(const std::vector<SeamReport> &seams, std::ostream &out)
{
    std::vector<SeamLine> lines;
    for (const SeamReport &seam : seams) {
        if (seam.numbers.disagreement)
            lines.push_back(lineOf(seam));
    }
    if (lines.empty())
        return;
    std::stable_sort(lines.begin(), lines.end(), [](const SeamLine &one, const SeamLine &other) {
        return one.after.value_or(0.0) > other.after.value_or(0.0);
    });
    out << "worst seams         disagreement      largest step       width  worst\n"
           "                   median     worst    before     after  needed  behind\n";
    for (std::size_t i = 0; i < std::min(lines.size(), shownSeams); ++i)
        printLine(lines[i], out);
    if (lines.size() > shownSeams)
        printLine(worstLine(lines), out);
}

/// "4-5, 5-6, 5-11", or how many there are if that would be long.
QString seamNames(const std::vector<SeamReport> &seams, const QString &reason)
{
    QStringList names;
    for (const SeamReport &seam : seams) {
        if (seam.reason == reason)
            names.push_back(
                QStringLiteral("%1-%2").arg(seam.strip.seam.current).arg(seam.strip.seam.next));
    }
    return names.size() > shownNames ? QStringLiteral("%1 seams").arg(names.size())
                                     : names.join(QStringLiteral(", "));
}

/// Why seams are not revised; those that share a reason are one line.
void printSkipped(const std::vector<SeamReport> &seams, std::ostream &out)
{
    QStringList reasons;
    for (const SeamReport &seam : seams) {
        if (!seam.revised && !reasons.contains(seam.reason))
            reasons.push_back(seam.reason);
    }
    for (const QString &reason : reasons)
        out << "             " << seamNames(seams, reason).toStdString() << ": "
            << reason.toStdString() << '\n';
}

void printChanges(const RunReport &report, std::ostream &out)
{
    const ChangeAccount &changes = report.numbers->changes;
    out << "changes      " << changes.changed << " of " << changes.values << " values, largest "
        << changes.largest << ", mean " << QString::number(changes.mean(), 'f', 1).toStdString()
        << "; " << changes.aboveCap << " above " << report.cap << '\n';
    if (changes.codes > 0)
        out << "packed       " << changes.saturatedCodes << " of " << changes.codes
            << " codes at 0 or 1023\n";
}

void printFiles(const RunReport &report, std::ostream &out)
{
    int count = 0;
    qint64 bytes = 0;
    for (const ManifestFile &file : report.files) {
        if (!holdsCoefficients(file))
            continue;
        ++count;
        bytes += file.bytes;
    }
    out << "files        " << count << " in " << report.outputDir.toStdString() << ", " << bytes
        << " bytes, read back and compared\n";
    if (report.isDryRun)
        out << "             dry run: nothing of it is left\n";
    if (!report.differences.isEmpty())
        out << "             " << report.differences.toStdString() << '\n';
    if (!report.keptName.isEmpty())
        out << "kept         " << report.keptName.toStdString() << '\n';
}

void printTimes(const RunReport &report, std::ostream &out)
{
    out << "time         " << QString::number(report.seconds, 'f', 2).toStdString() << " s";
    const char *separator = ": ";
    for (const PartTime &part : report.parts) {
        out << separator << part.name << ' ' << QString::number(part.seconds, 'f', 2).toStdString();
        separator = ", ";
    }
    out << '\n';
}

} // namespace

void printReport(const RunReport &report, std::ostream &out)
{
    if (report.layerCount > 0)
        out << "layers       " << report.layerCount << '\n';
    if (!report.storedLayerCounts.empty())
        out << "stored       layer counts " << listText(report.storedLayerCounts).toStdString()
            << '\n';
    out << "partitions   " << report.corrected.size() << " corrected, " << report.uncorrected.size()
        << " not\n";
    if (report.numbers) {
        const auto &seams = report.numbers->seams;
        const auto revised = std::count_if(seams.begin(), seams.end(),
                                           [](const SeamReport &seam) { return seam.revised; });
        out << "seams        " << revised << " revised, "
            << static_cast<std::ptrdiff_t>(seams.size()) - revised << " skipped\n";
        printSkipped(seams, out);
    }
    if (!report.files.empty())
        printFiles(report, out);
    if (!report.filledWith.isEmpty())
        out << "             uncorrected partitions are filled with "
            << report.filledWith.toStdString() << '\n';
    if (report.numbers)
        printChanges(report, out);
    printTimes(report, out);
    if (report.numbers)
        printSeams(report.numbers->seams, out);
}

} // namespace seamrevise
