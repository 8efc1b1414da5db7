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
    if (!m_store.open(m_options.database) || !m_store.readInventory(inventory) || !readRevisions())
        return false;
    for (const auto &row : inventory.coefficients) {
        if (row.layerCount == m_options.layerCount)
            m_storedZones.emplace(row.number, row.rect);
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

bool WallRun::readRevisions()
{
    std::vector<PartitionRevision> revisions;
    if (!m_store.listRevisions(revisions))
        return false;
    for (const PartitionRevision &revision : revisions) {
        if (revision.layerCount == m_options.layerCount)
            m_revisions.emplace(revision.number, revision);
    }
    return true;
}

std::set<int> WallRun::corrected() const
{
    std::set<int> numbers;
    for (const auto &entry : m_storedZones)
        numbers.insert(entry.first);
    return numbers;
}

void WallRun::blend(const Blending &blending)
{
    const auto seams = static_cast<int>(seamsOf(layout().grid).size());
    EngineProgress progress(m_progress, static_cast<int>(m_storedZones.size()), seams,
                            static_cast<int>(layout().partitions.size()));
    bool isSaved = false;
    const auto onRevised = [&](const RevisedZones &zones) {
        reckon();
        isSaved = blending.onMeasured(zones);
        return isSaved;
    };
    m_kind->run({m_store, layout(), corrected(), m_report.band, m_options.margin, m_options.weights,
                 blending.outputDir, blending.toFiles, blending.deliveredCap, blending.hashing,
                 [&](EngineStep step) { progress.begin(step); }, onRevised, blending.onFilesWritten,
                 blending.onSavingEnded});
    m_report.parts.push_back({isSaved ? "saving" : "closing", m_kind->times().saving});
    if (isSaved && blending.toFiles)
        m_report.parts.push_back({"reading back", m_kind->times().checking});
    m_partStart = static_cast<double>(m_sinceStart.nsecsElapsed()) * 1e-9;
}

Manifest WallRun::manifest() const
{
    const std::map<int, QByteArray> storedHashes = m_kind->storedHashes();
    Manifest manifest;
    manifest.database = m_options.database;
    manifest.screen = m_report.screen;
    manifest.grid = m_report.grid;
    manifest.band = m_report.band;
    manifest.margin = m_report.margin;
    manifest.layerCount = m_report.layerCount;
    for (const auto &[number, rect] : layout().partitions)
        manifest.partitions.push_back(manifestPartition(number, rect, storedHashes));
    return manifest;
}

ManifestPartition WallRun::manifestPartition(int number, const NQRect &rect,
                                             const std::map<int, QByteArray> &storedHashes) const
{
    ManifestPartition partition;
    partition.number = number;
    partition.rect = rect;
    partition.isCorrected = isCorrected(number);
    if (partition.isCorrected) {
        partition.zone = m_storedZones.at(number);
        partition.storedSha256 = storedHashes.at(number);
    }
    const auto revision = m_revisions.find(number);
    if (revision != m_revisions.end()) {
        partition.revision = revision->second.revision;
        partition.written = revision->second.written;
        partition.station = revision->second.station;
    }
    return partition;
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
                        corrected(), stepLimit(),   m_kind->cap()};
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
