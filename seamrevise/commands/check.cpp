#include "commands/check.h"

#include "commands/exitcode.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "commands/wallrun.h"

namespace seamrevise
{

namespace
{

void printFindings(const Findings &findings, std::ostream &out)
{
    if (findings.empty())
        out << "findings     none\n";
    for (const Finding &finding : findings)
        out << severityText(finding.severity).toStdString() << ": "
            << findingText(finding).toStdString() << '\n';
}

int fail(ExitCode code, const QString &message, Progress &progress, std::ostream &err)
{
    progress.clear();
    return reportFault(code, message, err);
}

} // namespace

void declareCheck(CLI::App &app, CheckOptions &options)
{
    addDatabase(app, options.database);
    declareWallOptions(app, options);
}

int check(const CheckOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code
        = checkDocumentPlace(options.common, {{options.database, "the database"}}, err))
        return code;
    Progress progress(options.common.showProgress ? &err : nullptr);
    WallRun run("check", options, progress);
    if (!run.open())
        return fail(Exit_Input, run.errorText(), progress, err);
    if (run.isRevisable()) {
        run.blend({});
        if (run.kind().result().errCode != ErrCode_Success)
            return fail(Exit_Input, run.failureText(), progress, err);
    }
    progress.clear();
    const RunReport &report = run.report();
    if (options.common.showsText()) {
        printReport(report, out);
        printFindings(report.findings, out);
    }
    const QString fault = writeDocument(options.common, reportDocument(report), out);
    if (!fault.isEmpty())
        return fail(Exit_Output, fault, progress, err);
    return report.findings.empty() ? Exit_Done : Exit_Different;
}

} // namespace seamrevise
