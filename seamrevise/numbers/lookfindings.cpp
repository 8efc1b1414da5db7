#include "numbers/median.h"
#include "numbers/wallnumbers.h"

#include <algorithm>
#include <cmath>

namespace seamrevise
{

namespace
{

constexpr double largeDisagreement = 0.10;
constexpr double largeDeviation = 0.10; ///< of a partition's mean from the wall's
constexpr double noticeableGrowth = 0.001;
constexpr double noticeablePart = 0.001; ///< of the values
constexpr double nearlyAll = 0.95;

bool exceeds(const std::optional<double> &step, double limit)
{
    return step && *step > limit;
}

class LookCheck
{
public:
    LookCheck(const WallPlan &plan, const WallMeasurements &measured, const WallNumbers &numbers)
        : m_plan(plan)
        , m_measured(measured)
        , m_numbers(numbers)
    {
    }

    Findings run()
    {
        for (const SeamReport &seam : m_numbers.seams)
            checkSeam(seam);
        checkMeans();
        for (const auto &[number, looks] : m_measured.looks)
            checkValues(number, looks, m_measured.changes.at(number));
        return m_findings;
    }

private:
    void checkSeam(const SeamReport &seam);
    void checkStep(const SeamReport &seam);
    int uncorrectedBeyond(const SeamReport &seam, bool atFirstLine) const;
    bool isAtEnd(const SeamReport &seam, const BlockNumbers &block, bool atFirstLine) const;
    QString bandAdvice(const SeamReport &seam) const;
    void checkMeans();
    void checkValues(int number, const PartitionLooks &looks, const ChangeAccount &changes);

    Finding &add(const char *kind, const QString &message, std::optional<double> value)
    {
        Finding finding;
        finding.kind = QString::fromLatin1(kind);
        finding.severity = Severity::Warning;
        finding.value = value;
        finding.message = message;
        m_findings.push_back(finding);
        return m_findings.back();
    }
    void add(const char *kind, const SeamReport &seam, const QString &message,
             std::optional<double> value)
    {
        add(kind, message, value).seam = seam.strip.seam;
    }
    void add(const char *kind, int partition, const QString &message, double value)
    {
        add(kind, message, value).partition = partition;
    }

    const WallPlan &m_plan;
    const WallMeasurements &m_measured;
    const WallNumbers &m_numbers;
    Findings m_findings;
};

QString lineText(const Strip &strip, int line)
{
    return (strip.isHorizontal() ? QStringLiteral("row %1") : QStringLiteral("column %1"))
        .arg(line);
}

void LookCheck::checkSeam(const SeamReport &seam)
{
    const bool bothCorrected = m_plan.corrected.count(seam.strip.seam.current) != 0
        && m_plan.corrected.count(seam.strip.seam.next) != 0;
    if (bothCorrected && !seam.revised)
        add(seam.strip.width == 0 ? "no-strip" : "margin", seam,
            seam.reason + QStringLiteral("; the step stays as it is: use a wider --band")
                + (seam.strip.width == 0 ? QString() : QStringLiteral(" or a smaller --margin")),
            seam.strip.width == 0 ? 0.0 : m_plan.margin);
    const auto &disagreement = seam.numbers.disagreement;
    if (disagreement && std::fabs(disagreement->worst) > largeDisagreement)
        add("disagreement", seam,
            QStringLiteral("the two shots disagree by %1, worst at %2; correct one of them anew")
                .arg(percentText(disagreement->worst),
                     lineText(seam.strip, disagreement->worstLine)),
            disagreement->worst);
    checkStep(seam);
    if (seam.shift)
        add("shift", seam,
            QStringLiteral("the ratios scatter by %1, and by %2 where partition %3 is read %4 to"
                           " the right and %5 down: one of the shots seems to be registered so"
                           " many pixels off; register it anew")
                .arg(percentText(seam.shift->scatter), percentText(seam.shift->scatterThere))
                .arg(seam.strip.seam.next)
                .arg(seam.shift->columns)
                .arg(seam.shift->rows),
            seam.shift->scatter);
}

/// A step where the seam ends beside an uncorrected partition has another reason than the rest: the
/// blend across the seam's end reaches only one of its sides.
void LookCheck::checkStep(const SeamReport &seam)
{
    const SeamNumbers &numbers = seam.numbers;
    std::optional<double> worst;
    int worstLine = 0;
    const BlockNumbers *worstAtEnd[2] = {};
    const int beyond[2] = {uncorrectedBeyond(seam, true), uncorrectedBeyond(seam, false)};
    for (const BlockNumbers &block : numbers.blocks) {
        bool isAtOpenEnd = false;
        for (const int end : {0, 1}) {
            if (beyond[end] == 0 || !isAtEnd(seam, block, end == 0))
                continue;
            isAtOpenEnd = true;
            if (exceeds(block.after, m_plan.stepLimit)
                && (!worstAtEnd[end] || *block.after > *worstAtEnd[end]->after))
                worstAtEnd[end] = &block;
        }
        if (!isAtOpenEnd && block.after && (!worst || *block.after > *worst)) {
            worst = block.after;
            worstLine = seam.strip.firstLine() + block.firstLine;
        }
    }
    if (exceeds(worst, m_plan.stepLimit))
        add("step", seam,
            QStringLiteral("a step of %1 is left at %2, above the limit of %3; %4")
                .arg(percentText(*worst), lineText(seam.strip, worstLine),
                     percentText(m_plan.stepLimit), bandAdvice(seam)),
            *worst);
    for (const int end : {0, 1}) {
        if (!worstAtEnd[end])
            continue;
        add("seam-end", seam,
            QStringLiteral("a step of %1 is left at %2, where the seam ends beside partition %3,"
                           " which is not corrected; correct that one")
                .arg(percentText(*worstAtEnd[end]->after),
                     lineText(seam.strip, seam.strip.firstLine() + worstAtEnd[end]->firstLine))
                .arg(beyond[end]),
            *worstAtEnd[end]->after);
    }
    if (numbers.before && numbers.after
        && numbers.after->worst > numbers.before->worst + noticeableGrowth)
        add("step-grew", seam,
            QStringLiteral("the step grows from %1 to %2; %3")
                .arg(percentText(numbers.before->worst), percentText(numbers.after->worst),
                     bandAdvice(seam)),
            numbers.after->worst);
}

/// Beyond an end of a seam lie two partitions. The number of the one that is not corrected if the
/// other is; else 0.
int LookCheck::uncorrectedBeyond(const SeamReport &seam, bool atFirstLine) const
{
    const int columns = m_plan.layout.grid.width();
    const int way = (seam.strip.isHorizontal() ? columns : 1) * (atFirstLine ? -1 : 1);
    const int current = seam.strip.seam.current;
    const int col = (current - 1) % columns;
    const bool isAtScreenEdge = seam.strip.isHorizontal()
        ? m_plan.layout.partitions.count(current + way) == 0
        : (atFirstLine ? col == 0 : col + 1 == columns);
    if (isAtScreenEdge)
        return 0;
    const int one = current + way;
    const int other = seam.strip.seam.next + way;
    const bool isOneCorrected = m_plan.corrected.count(one) != 0;
    if (isOneCorrected == (m_plan.corrected.count(other) != 0))
        return 0;
    return isOneCorrected ? other : one;
}

/// Whether a block has lines that the strips across the seam's end reach.
bool LookCheck::isAtEnd(const SeamReport &seam, const BlockNumbers &block, bool atFirstLine) const
{
    const int reach = seam.strip.isHorizontal() ? m_plan.band.height() : m_plan.band.width();
    return atFirstLine ? block.firstLine < reach
                       : block.firstLine + block.lineCount > seam.strip.lineCount - reach;
}

QString LookCheck::bandAdvice(const SeamReport &seam) const
{
    const double shortBy = seam.numbers.widthNeeded.value_or(0.0) - seam.strip.width;
    if (!(shortBy > 0.0))
        return QStringLiteral("the band is wide enough for the disagreement: what is left is"
                              " scatter; look at the shots");
    const bool isHorizontal = seam.strip.isHorizontal();
    const double band
        = (isHorizontal ? m_plan.band.width() : m_plan.band.height()) + std::ceil(shortBy / 2.0);
    return QStringLiteral("a band of %1 %2 would do, if scatter adds nothing%3")
        .arg(band, 0, 'f', 0)
        .arg(isHorizontal ? QStringLiteral("columns") : QStringLiteral("rows"),
             m_plan.margin > 0 ? QStringLiteral(", or a smaller --margin") : QString());
}

void LookCheck::checkMeans()
{
    std::vector<double> means;
    for (const auto &entry : m_measured.looks)
        means.push_back(entry.second.meanLuminance());
    const std::optional<double> usual = median(means);
    if (!usual || !(*usual > 0.0))
        return;
    for (const auto &[number, looks] : m_measured.looks) {
        const double deviation = looks.meanLuminance() / *usual - 1.0;
        if (std::fabs(deviation) > largeDeviation)
            add("mean", number,
                QStringLiteral("its coefficients lie %1 from the wall's middle; look at its shot")
                    .arg(percentText(deviation)),
                deviation);
    }
}

void LookCheck::checkValues(int number, const PartitionLooks &looks, const ChangeAccount &changes)
{
    const auto count = [](qint64 value) { return static_cast<double>(value); };
    const double nearCap = count(looks.nearCap) / count(looks.values);
    if (nearCap > noticeablePart)
        add("cap", number,
            QStringLiteral("%1 of its values are at or near the cap of %2, %3 are above it: files"
                           " keep them, a table cuts them; aim the correction lower")
                .arg(percentText(nearCap))
                .arg(m_plan.cap)
                .arg(changes.aboveCap),
            nearCap);
    const struct
    {
        const char *kind;
        qint64 pixels;
        QString what;
    } rows[] = {
        {"dark", looks.dark, QStringLiteral("have coefficients that give no light")},
        {"dead", looks.dead, QStringLiteral("have no coefficient but 0")},
        {"saturated", looks.saturated, QStringLiteral("have the largest value that can be stored")},
    };
    for (const auto &row : rows) {
        if (row.pixels > 0)
            add(row.kind, number,
                QStringLiteral("%1 of its pixels %2; look at these LEDs or correct it anew")
                    .arg(row.pixels)
                    .arg(row.what),
                count(row.pixels));
    }
    if (changes.codes > 0 && count(changes.saturatedCodes) > nearlyAll * count(changes.codes))
        add("packed-saturated", number,
            QStringLiteral("%1 of its packed codes lie at 0 or 1023 and say next to nothing; use"
                           " values from 514 to 2557")
                .arg(percentText(count(changes.saturatedCodes) / count(changes.codes))),
            count(changes.saturatedCodes) / count(changes.codes));
}

} // namespace

Findings lookFindings(const WallPlan &plan, const WallMeasurements &measured,
                      const WallNumbers &numbers)
{
    return LookCheck(plan, measured, numbers).run();
}

bool failsLimit(const SeamNumbers &numbers, double stepLimit)
{
    if (!numbers.after)
        return false;
    const bool grew
        = numbers.before && numbers.after->worst > numbers.before->worst + noticeableGrowth;
    return grew || numbers.after->worst > stepLimit;
}

} // namespace seamrevise
