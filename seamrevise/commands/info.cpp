#include "commands/info.h"

#include "commands/exitcode.h"
#include "commands/jsondocument.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "commands/progress.h"
#include "commands/storedcoefficients.h"
#include "exchange/walldocument.h"
#include "numbers/primarygains.h"
#include "store/sqlscreenstore.h"

#include <iterator>
#include <map>
#include <utility>

namespace seamrevise
{

namespace
{

const char *const primaryNames[] = {"red", "green", "blue"};

/// What is told of one kind of coefficients of a partition.
struct KindInfo
{
    StoredKind kind;
    std::array<PrimaryGain, 3> gains;
};

std::string rectText(const NQRect &rect)
{
    return QStringLiteral("columns %1 to %2, rows %3 to %4")
        .arg(rect.left())
        .arg(rect.right())
        .arg(rect.top())
        .arg(rect.bottom())
        .toStdString();
}

std::string gainText(const PrimaryGain &gain)
{
    return QStringLiteral("%1 (%2 to %3)")
        .arg(gain.mean, 0, 'f', 4)
        .arg(gain.least, 0, 'f', 4)
        .arg(gain.most, 0, 'f', 4)
        .toStdString();
}

void addKind(const KindInfo &info, JsonWriter &json)
{
    json.beginObject();
    json.member("partition", info.kind.zone.number);
    addLayers(json, info.kind.layerCount);
    addRect(json, "zone", info.kind.zone.rect);
    for (std::size_t i = 0; i < std::size(primaryNames); ++i) {
        json.beginObject(primaryNames[i], JsonWriter::Inline);
        json.member("mean", info.gains[i].mean);
        json.member("least", info.gains[i].least);
        json.member("most", info.gains[i].most);
        json.endObject();
    }
    json.endObject();
}

void addRevision(const PartitionRevision &revision, JsonWriter &json)
{
    json.beginObject(nullptr, JsonWriter::Inline);
    json.member("partition", revision.number);
    addLayers(json, revision.layerCount);
    json.member("revision", revision.revision);
    json.member("written", revision.written);
    json.member("station", revision.station);
    json.endObject();
}

class WallInfo
{
public:
    WallInfo(const InfoOptions &options, std::ostream &out, std::ostream &err)
        : m_options(options)
        , m_out(out)
        , m_err(err)
        , m_progress(options.common.showProgress ? &err : nullptr)
    {
    }

    int run()
    {
        if (!m_store.open(m_options.database) || !read()) {
            m_progress.clear();
            return reportFault(Exit_Input, m_store.errorText(), m_err);
        }
        m_progress.clear();
        if (m_options.common.showsText())
            printWall();
        const QString wrong = writeDocument(m_options.common, document(), m_out);
        return wrong.isEmpty() ? int{Exit_Done} : reportFault(Exit_Output, wrong, m_err);
    }

private:
    bool read();
    void printWall();
    void printPartition(int number, const NQRect &rect);
    JsonWriter document() const;

    const ScreenLayout &layout() const { return m_store.layout(); }

    const InfoOptions &m_options;
    std::ostream &m_out;
    std::ostream &m_err;
    Progress m_progress;
    SqlScreenStore m_store;
    std::map<int, std::vector<KindInfo>> m_kinds; ///< under the numbers of partitions
    std::map<std::pair<int, int>, PartitionRevision> m_revisions; ///< of numbers and layer counts
    std::set<int> m_corrected;
};

bool WallInfo::read()
{
    std::vector<StoredKind> kinds;
    std::vector<PartitionRevision> revisions;
    if (!listStored(m_store, kinds) || !m_store.listRevisions(revisions))
        return false;
    for (const PartitionRevision &revision : revisions)
        m_revisions[{revision.number, revision.layerCount}] = revision;
    Coefficients coefficients;
    int done = 0;
    for (const StoredKind &kind : kinds) {
        m_progress.show("reading", ++done, static_cast<int>(kinds.size()));
        if (!getCoefficients(m_store, kind, coefficients))
            return false;
        m_kinds[kind.zone.number].push_back({kind,
                                             kind.layerCount == 0
                                                 ? primaryGains(coefficients.single)
                                                 : primaryGains(coefficients.layered)});
        m_corrected.insert(kind.zone.number);
    }
    return true;
}

void WallInfo::printWall()
{
    const NQRect &screen = layout().screen;
    m_out << "screen       " << sizeText(columnsOf(screen), rowsOf(screen)).toStdString()
          << " pixels, " << rectText(screen) << "\ngrid         "
          << sizeText(layout().grid.width(), layout().grid.height()).toStdString()
          << "\nband         "
          << sizeText(layout().band.width(), layout().band.height()).toStdString()
          << "\npartitions   " << m_corrected.size() << " corrected, "
          << layout().partitions.size() - m_corrected.size() << " not\ndatabase     schema version "
          << m_store.schemaVersion() << '\n';
    for (const auto &[number, rect] : layout().partitions)
        printPartition(number, rect);
}

void WallInfo::printPartition(int number, const NQRect &rect)
{
    m_out << "partition " << number << ": " << rectText(rect)
          << (m_corrected.count(number) == 0 ? ", uncorrected\n" : "\n");
    for (const KindInfo &info : m_kinds[number]) {
        m_out << "  " << kindText(info.kind.layerCount).toStdString() << ", "
              << rectText(info.kind.zone.rect) << "\n    gain";
        for (std::size_t i = 0; i < info.gains.size(); ++i)
            m_out << (i == 0 ? " " : ", ") << primaryNames[i] << ' ' << gainText(info.gains[i]);
        m_out << '\n';
    }
    for (auto entry = m_revisions.lower_bound({number, 0});
         entry != m_revisions.end() && entry->first.first == number; ++entry) {
        const PartitionRevision &revision = entry->second;
        m_out << "  revision " << revision.revision << " of its "
              << kindText(revision.layerCount).toStdString() << ": "
              << revision.written.toStdString() << " by " << revision.station.toStdString() << '\n';
    }
}

JsonWriter WallInfo::document() const
{
    JsonWriter json;
    beginDocument(json, "info");
    addLayout(json, layout(), m_corrected);
    json.member("schema_version", m_store.schemaVersion());
    json.beginArray("coefficients");
    for (const auto &[number, infos] : m_kinds) {
        for (const KindInfo &info : infos)
            addKind(info, json);
    }
    json.endArray();
    json.beginArray("revisions");
    for (const auto &entry : m_revisions)
        addRevision(entry.second, json);
    json.endArray();
    json.endObject();
    return json;
}

} // namespace

void declareInfo(CLI::App &app, InfoOptions &options)
{
    addDatabase(app, options.database);
}

int info(const InfoOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code
        = checkDocumentPlace(options.common, {{options.database, "the database"}}, err))
        return code;
    return WallInfo(options, out, err).run();
}

} // namespace seamrevise
