#include "commands/wallrun.h"

#include "numbers/inputfindings.h"

namespace seamrevise
{

WallRun::WallRun(const char *command, const WallOptions &options, Progress &progress)
    : m_options(options)
    , m_progress(progress)
    , m_kind(options.layerCount > 0 ? layeredKind(options.layerCount) : singleLayerKind())
{
    m_report.command = command;
    m_report.margin = options.margin;
    m_report.layerCount = options.layerCount;
    m_report.cap = m_kind->cap();
    m_sinceStart.start();
}

bool WallRun::open()
{
    StoredInventory inventory;
    if (!m_store.open(m_options.database) || !m_store.readInventory(inventory))
        return false;
    for (const auto &row : inventory.coefficients) {
        if (row.layerCount == m_options.layerCount)
            m_corrected.insert(row.number);
    }
    m_report.screen = layout().screen;
    m_report.grid = layout().grid;
    m_report.band = m_options.band.value_or(layout().band);
    m_report.storedLayerCounts = storedLayerCounts(inventory);
    for (const auto &entry : layout().partitions)
        (isCorrected(entry.first) ? m_report.corrected : m_report.uncorrected)
            .push_back(entry.first);
    m_report.findings = inputFindings(inventory, layout(), m_options.layerCount, m_report.band);
    endPart("opening");
    return true;
}

void WallRun::blend(const QString &outputDir, bool toFiles, int deliveredCap,
                    const std::function<bool()> &onMeasured)
{
    const auto seams = static_cast<int>(seamsOf(layout().grid).size());
    const EngineProgress progress(m_progress, static_cast<int>(m_corrected.size()), seams,
                                  static_cast<int>(layout().partitions.size()));
    bool isSaved = false;
    m_kind->run({m_store, layout(), m_corrected, m_report.band, m_options.margin, m_options.weights,
                 outputDir, toFiles, deliveredCap,
                 [&] {
                     reckon();
                     isSaved = onMeasured();
                     return isSaved;
                 },
                 [] {}});
    m_report.parts.push_back({isSaved ? "saving" : "closing", m_kind->times().saving});
    m_partStart = static_cast<double>(m_sinceStart.nsecsElapsed()) * 1e-9;
}

QString WallRun::failureText()
{
    if (!errorText().isEmpty())
        return errorText();
    const ST_ReviseResult &result = m_kind->result();
    const QString place
        = result.errMsg.isEmpty() ? QString() : QStringLiteral(" at partition ") + result.errMsg;
    return m_options.database
        + QStringLiteral(": the revision stopped%1 with code %2; -v tells more")
              .arg(place)
              .arg(int{result.errCode});
}

void WallRun::reckon()
{
    QElapsedTimer timer;
    timer.start();
    const WallPlan plan{layout(),    m_report.band, m_options.margin,
                        m_corrected, stepLimit(),   m_kind->cap()};
    m_report.numbers = wallNumbers(plan, m_kind->measured());
    for (Finding &finding : lookFindings(plan, m_kind->measured(), *m_report.numbers))
        m_report.findings.push_back(std::move(finding));
    const EngineTimes &times = m_kind->times();
    const double reckoning = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    m_report.parts.push_back({"reading", times.reading});
    m_report.parts.push_back({"revising", times.revising});
    m_report.parts.push_back({"numbers", times.measuring + reckoning});
}

void WallRun::endPart(const char *name)
{
    const double now = static_cast<double>(m_sinceStart.nsecsElapsed()) * 1e-9;
    m_report.parts.push_back({name, now - m_partStart});
    m_partStart = now;
}

bool WallRun::failsStepLimit() const
{
    const auto &seams = m_report.numbers->seams;
    return std::any_of(seams.begin(), seams.end(), [this](const SeamReport &seam) {
        return failsLimit(seam.numbers, stepLimit());
    });
}

RunReport &WallRun::report()
{
    m_report.seconds = static_cast<double>(m_sinceStart.nsecsElapsed()) * 1e-9;
    return m_report;
}

} // namespace seamrevise
