#pragma once

#include "commands/progress.h"
#include "commands/runreport.h"
#include "commands/walloptions.h"
#include "engines/coefkind.h"
#include "store/sqlscreenstore.h"

#include <QElapsedTimer>

#include <functional>
#include <memory>

namespace seamrevise
{

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

    /// Runs the engine on a revisable wall. onMeasured is called when all seams are blended, with
    /// numbers and findings in the report and nothing saved yet; it returns whether to save.
    void blend(const QString &outputDir, bool toFiles, int deliveredCap,
               const std::function<bool()> &onMeasured);

    /// Adds a part of the time that ends now, since the last part.
    void endPart(const char *name);
    /// Whether some seam's step exceeds the limit or grew.
    bool failsStepLimit() const;

    const ScreenLayout &layout() const { return m_store.layout(); }
    bool isCorrected(int number) const { return m_corrected.count(number) != 0; }
    const std::set<int> &corrected() const { return m_corrected; }
    CoefKind &kind() { return *m_kind; }
    const QString &errorText() const { return m_store.errorText(); }
    /// Why the engine did not come to an end: errorText(), or what the engine says.
    QString failureText();
    /// The time is that of this call.
    RunReport &report();

private:
    void reckon();
    double stepLimit() const { return m_options.stepLimit.value_or(usualStepLimit); }

    const WallOptions &m_options;
    Progress &m_progress;
    SqlScreenStore m_store;
    const std::unique_ptr<CoefKind> m_kind;
    std::set<int> m_corrected;
    RunReport m_report;
    QElapsedTimer m_sinceStart;
    double m_partStart = 0.0;
};

} // namespace seamrevise
