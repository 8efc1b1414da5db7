#pragma once

#include "commands/progress.h"
#include "commands/runreport.h"
#include "commands/walloptions.h"
#include "delivery/manifest.h"
#include "engines/coefkind.h"
#include "store/sqlscreenstore.h"

#include <QElapsedTimer>

#include <functional>
#include <map>
#include <memory>
#include <set>

namespace seamrevise
{

/// What is to become of a wall while an engine runs over it.
struct Blending
{
    /// All seams are blended, numbers and findings are in the report, and nothing is saved yet;
    /// returns whether to save.
    std::function<bool(const RevisedZones &)> onMeasured
        = [](const RevisedZones &) { return false; };
    /// The files of a partition are written; the zones stay as they are until onSavingEnded.
    std::function<void(int number, const RevisedZones &)> onFilesWritten
        = [](int, const RevisedZones &) {};
    std::function<void()> onSavingEnded = [] {}; ///< well or not
    QString outputDir;                           ///< of files
    bool toFiles = false;                        ///< else into the table of the result
    int deliveredCap = noCap;          ///< of the values that the numbers take as delivered
    BackgroundWork *hashing = nullptr; ///< takes the hashes for a manifest
};

/// One run of an engine over the wall of a database: the database is opened and judged, the seams
/// are blended and measured. What becomes of the values is the command's.
class WallRun
{
public:
    WallRun(const char *command, const WallOptions &options, Progress &progress);

    /// Reads what is stored and looks for faults in it. False if it cannot be read at all: the
    /// reason is errorText().
    bool open();
    /// Whether open() found nothing that keeps the wall from being revised.
    bool isRevisable() const { return !hasErrors(m_report.findings); }

    /// Runs the engine on a revisable wall.
    void blend(const Blending &blending);

    /// Adds a part of the time that ends now, since the last part.
    void endPart(const char *name);
    /// Whether some seam's step exceeds the limit or grew.
    bool failsStepLimit() const;

    const ScreenLayout &layout() const { return m_store.layout(); }
    bool isCorrected(int number) const { return m_storedZones.count(number) != 0; }
    /// The zones that are stored for the corrected partitions.
    const std::map<int, NQRect> &storedZones() const { return m_storedZones; }
    /// After a blend that took the hashes: what a delivery's manifest says of the wall and of each
    /// partition.
    Manifest manifest() const;
    CoefKind &kind() { return *m_kind; }
    const QString &errorText() const { return m_store.errorText(); }
    /// Why the engine did not come to an end: errorText(), or what the engine says.
    QString failureText();
    /// The time is that of this call.
    RunReport &report();

private:
    bool readRevisions();
    std::set<int> corrected() const;
    ManifestPartition manifestPartition(int number, const NQRect &rect,
                                        const std::map<int, QByteArray> &storedHashes) const;
    void reckon();
    double stepLimit() const { return m_options.stepLimit.value_or(usualStepLimit); }

    const WallOptions &m_options;
    Progress &m_progress;
    SqlScreenStore m_store;
    const std::unique_ptr<CoefKind> m_kind;
    std::map<int, NQRect> m_storedZones;
    std::map<int, PartitionRevision> m_revisions; ///< where the database records them
    RunReport m_report;
    QElapsedTimer m_sinceStart;
    double m_partStart = 0.0;
};

} // namespace seamrevise
