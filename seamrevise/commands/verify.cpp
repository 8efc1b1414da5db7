#include "commands/verify.h"

#include "commands/delivered.h"
#include "commands/deliverydocument.h"
#include "commands/jsondocument.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "commands/wallrun.h"
#include "delivery/verification.h"
#include "store/sqlscreenstore.h"

#include <QFile>

#include <algorithm>

namespace seamrevise
{

namespace
{

Difference freshDifference(const Manifest &manifest, int number, const CoefficientFormat &format,
                           const ValueMismatch &mismatch)
{
    const QString name = fileNameOf(manifest, number, format);
    return {
        QStringLiteral("fresh"), name, number,
        QStringLiteral("%1: %2 values of partition %3 are not those of a new revision, the first"
                       " at row %4, column %5")
            .arg(name)
            .arg(mismatch.values)
            .arg(number)
            .arg(mismatch.row)
            .arg(mismatch.column)};
}

/// One run of the command: its data and its steps.
class VerifyRun
{
public:
    VerifyRun(const VerifyOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
        , m_progress(options.common.showProgress ? &err : nullptr)
    {
    }

    int run()
    {
        using Step = int (VerifyRun::*)();
        const Step steps[] = {&VerifyRun::checkFiles, &VerifyRun::checkDatabase,
                              &VerifyRun::checkFresh, &VerifyRun::checkNumbers, &VerifyRun::report};
        for (const Step step : steps) {
            if (const int code = (this->*step)())
                return code;
        }
        return isAsAgreed() ? Exit_Done : Exit_Different;
    }

private:
    int checkFiles();
    int checkDatabase();
    int checkFresh();
    void compareWith(const RevisedZones &revised, WallRun &wall);
    int checkNumbers();
    int report();

    void printText() const;
    JsonWriter document() const;

    int fail(ExitCode code, const QString &message)
    {
        m_progress.clear();
        return reportFault(code, message, m_err);
    }
    bool isAsAgreed() const
    {
        return m_differences.empty()
            && std::all_of(m_verdicts.begin(), m_verdicts.end(),
                           [](const LimitVerdict &verdict) { return verdict.holds(); });
    }

    const VerifyOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    Progress m_progress;
    DeliveredSet m_set;
    bool m_hasManifest = true; ///< one that can be believed
    std::vector<Difference> m_differences;
    std::vector<LimitVerdict> m_verdicts;
};

int VerifyRun::checkFiles()
{
    const DeliveredSet::State state = m_set.open(m_options.directory);
    reportNotes(m_options.common, m_set.notes(), m_err);
    if (state == DeliveredSet::State::Missing)
        return fail(Exit_Input, m_set.message());
    if (state == DeliveredSet::State::Busy)
        return fail(Exit_Output, m_set.message());
    m_hasManifest = state == DeliveredSet::State::Ready;
    m_differences = verifyFiles(m_set.path());
    return Exit_Done;
}

int VerifyRun::checkDatabase()
{
    if (m_options.database.isEmpty() || !m_hasManifest)
        return Exit_Done;
    SqlScreenStore store;
    if (!store.open(m_options.database))
        return fail(Exit_Input, store.errorText());
    QString fault;
    const std::vector<Difference> found = verifyStored(m_set.manifest(), store, fault);
    if (!fault.isEmpty())
        return fail(Exit_Input, fault);
    m_differences.insert(m_differences.end(), found.begin(), found.end());
    return Exit_Done;
}

/// Revises the database's wall once more as the manifest says, in memory.
int VerifyRun::checkFresh()
{
    if (!m_options.fresh || !m_hasManifest)
        return Exit_Done;
    const Manifest &manifest = m_set.manifest();
    WallOptions options;
    options.database = m_options.database;
    options.band = manifest.band;
    options.margin = manifest.margin;
    options.layerCount = manifest.layerCount;
    WallRun wall("verify", options, m_progress);
    if (!wall.open())
        return fail(Exit_Input, wall.errorText());
    if (!wall.isRevisable()) {
        for (const Finding &finding : wall.report().findings)
            fail(Exit_Input, options.database + QStringLiteral(": ") + findingText(finding));
        return Exit_Input;
    }
    Blending blending;
    blending.onMeasured = [&](const RevisedZones &revised) {
        compareWith(revised, wall);
        return false;
    };
    wall.blend(blending);
    m_progress.clear();
    return wall.kind().result().errCode == ErrCode_Success ? int{Exit_Done}
                                                           : fail(Exit_Input, wall.failureText());
}

/// Partitions that lie elsewhere in the database are told of already, and so are files that cannot
/// be read.
void VerifyRun::compareWith(const RevisedZones &revised, WallRun &wall)
{
    const Manifest &manifest = m_set.manifest();
    std::vector<qint32> values;
    for (const ManifestPartition &partition : manifest.partitions) {
        const auto place = wall.layout().partitions.find(partition.number);
        if (place == wall.layout().partitions.end() || !isSameRect(place->second, partition.rect))
            continue;
        for (const CoefficientFormat &format : coefficientFormats(manifest.layerCount)) {
            if (!m_set.read(partition, format, values).isEmpty())
                continue;
            const int cap = manifest.isTable ? wall.kind().cap() : noCap;
            const ValueMismatch mismatch = revised.compare(partition.number, format, values, cap);
            if (mismatch.values > 0)
                m_differences.push_back(
                    freshDifference(manifest, partition.number, format, mismatch));
        }
    }
}

int VerifyRun::checkNumbers()
{
    if (m_options.limitsFile.isEmpty() || !m_hasManifest)
        return Exit_Done;
    QFile limits(m_options.limitsFile);
    if (!limits.open(QIODevice::ReadOnly))
        return fail(Exit_Input, limits.fileName() + QStringLiteral(": ") + limits.errorString());
    QFile numbers(m_set.path() + QStringLiteral("/numbers.json"));
    const bool isThere = m_set.manifest().file(QStringLiteral("numbers.json")) != nullptr
        && numbers.open(QIODevice::ReadOnly);
    if (!isThere)
        m_differences.push_back(
            {QStringLiteral("missing"), QStringLiteral("numbers.json"), 0,
             QStringLiteral("numbers.json: is missing; nothing to hold against the limits")});
    const QString fault
        = checkLimits(limits.readAll(), isThere ? numbers.readAll() : QByteArray(), m_verdicts);
    return fault.isEmpty() ? int{Exit_Done}
                           : fail(Exit_Input, limits.fileName() + QStringLiteral(": ") + fault);
}

int VerifyRun::report()
{
    if (m_options.common.showsText())
        printText();
    const QString fault = writeDocument(m_options.common, document(), m_out);
    return fault.isEmpty() ? int{Exit_Done} : fail(Exit_Output, fault);
}

void VerifyRun::printText() const
{
    for (const Difference &difference : m_differences)
        m_out << difference.message.toStdString() << '\n';
    for (const LimitVerdict &verdict : m_verdicts) {
        m_out << "limit        " << verdict.name.toStdString() << ' ';
        if (verdict.value)
            m_out << *verdict.value;
        else
            m_out << "nothing to measure";
        m_out << ", limit " << verdict.limit << (verdict.holds() ? ": holds\n" : ": exceeded\n");
    }
    const Manifest &manifest = m_set.manifest();
    if (m_hasManifest)
        m_out << "delivered    " << manifest.when.toStdString() << ", " << manifest.files.size()
              << " files, " << manifest.partitions.size() << " partitions\n";
    m_out << "differences  " << m_differences.size() << '\n';
}

JsonWriter VerifyRun::document() const
{
    const Manifest &manifest = m_set.manifest();
    JsonWriter json;
    beginDocument(json, "verify");
    json.member("directory", m_set.path());
    json.member("same", isAsAgreed());
    if (m_hasManifest) {
        writeWall(json, manifest);
        writeFiles(json, manifest.files);
    }
    writeFindings(json, m_differences);
    json.beginArray("limits");
    for (const LimitVerdict &verdict : m_verdicts) {
        json.beginObject(nullptr, JsonWriter::Inline);
        json.member("name", verdict.name);
        json.member("limit", verdict.limit);
        json.member("value", verdict.value);
        json.member("holds", verdict.holds());
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json;
}

} // namespace

void declareVerify(CLI::App &app, VerifyOptions &options)
{
    addPath(app, "DIR", "", options.directory, "the delivery")->required();
    addPath(app, "DATABASE", "", options.database,
            "also check that its coefficients are still those that were delivered");
    addFlag(app, "--fresh", options.fresh,
            "also revise DATABASE once more as the manifest says, and compare every value");
    addPath(app, "--limits", "LIMITS.json", options.limitsFile,
            "also hold the delivery's numbers against these limits");
    app.final_callback([&options] {
        if (options.fresh && options.database.isEmpty())
            refuse(QStringLiteral("--fresh needs the DATABASE"));
    });
}

int verify(const VerifyOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(options.common,
                                            {{options.directory, "the set of files"},
                                             {options.database, "the database"},
                                             {options.limitsFile, "the file of the limits"}},
                                            err))
        return code;
    return VerifyRun(options, out, err).run();
}

} // namespace seamrevise
