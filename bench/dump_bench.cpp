#include "benchwall.h"
#include "cases.h"
#include "coeffiles/textdump.h"
#include "figures.h"
#include <seamrevision/localconfig.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <limits>

namespace bench
{

namespace
{

/// The yardsticks: value by value through a text stream.
class StreamDump
{
public:
    explicit StreamDump(const QString &path)
        : m_file(path)
    {
        m_file.open(QIODevice::WriteOnly);
        m_stream.setDevice(&m_file);
        endLine();
    }

    template <typename Value>
    void value(Value value)
    {
        m_stream << value << QStringLiteral(",");
    }
    void endLine() { m_stream << "\r\n"; }

private:
    QFile m_file;
    QTextStream m_stream;
};

void streamDump(const std::vector<unsigned short> &values, const QString &path)
{
    StreamDump dump(path);
    for (std::size_t first = 0; first < values.size(); first += 9) {
        for (std::size_t k = first; k < first + 9; ++k)
            dump.value(values[k]);
        dump.endLine();
    }
}

void streamDump(const std::vector<std::vector<int>> &table, const QString &path)
{
    StreamDump dump(path);
    for (const std::vector<int> &row : table) {
        for (const int value : row)
            dump.value(value);
        dump.endLine();
    }
}

void ourDump(const std::vector<unsigned short> &values)
{
    outData(values, QStringLiteral("ours.txt"), QStringLiteral(","), 9, QString());
}

void ourDump(const std::vector<std::vector<int>> &table)
{
    outData(table, QStringLiteral("ours.txt"), QStringLiteral(","), QString());
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

template <typename Data>
void dump(benchmark::State &state, const char *name, const Data &data)
{
    const QTemporaryDir directory;
    LocalConfig &config = LocalConfig::getInstance();
    config.setExportDataDir(directory.path());
    config.setExportData(true);
    const QString streamPath = directory.filePath(QStringLiteral("stream.txt"));
    ourDump(data);
    streamDump(data, streamPath);
    const QString ourPath = directory.filePath(QStringLiteral("ours.txt"));
    // To cut the file of an earlier round takes the file system longer than to write one.
    const auto removeBoth = [&] {
        QFile::remove(ourPath);
        QFile::remove(streamPath);
    };
    if (bytesOf(ourPath) == bytesOf(streamPath)) {
        report(
            state, {name, 8, Figure::AtLeast},
            timeInTurns([&] { ourDump(data); }, [&] { streamDump(data, streamPath); }, removeBoth));
    } else {
        state.SkipWithError("the bytes differ");
    }
    config.setExportData(false);
}

void dumpSingleLayer(benchmark::State &state)
{
    const MemoryDatabase database(Wall::ofSize(3840, 2160), MemoryDatabase::Kind::SingleLayer);
    std::vector<unsigned short> values = database.stored.at(1).m_arrayData;
    values[0] = 9999;
    values[1] = 65535;
    dump(state, "6 dump, 16-bit", values);
}

void dumpLayered(benchmark::State &state)
{
    const MemoryDatabase database(Wall::ofSize(1920, 1080), MemoryDatabase::Kind::Layered);
    std::vector<std::vector<int>> table = database.stored.at(1).m_multiLayerCoefs;
    table[0] = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), -7};
    dump(state, "6 dump, layered", table);
}

/// A dump that is off, for what a test of the switch takes; many of each.
void dumpOff(benchmark::State &state)
{
    constexpr int calls = 100000;
    const std::vector<unsigned short> values(9);
    const QString name = QStringLiteral("ours.txt");
    const QString separator = QStringLiteral(",");
    const auto ours = [&] {
        for (int i = 0; i < calls; ++i)
            benchmark::DoNotOptimize(outData(values, name, separator, 9, QString()).size());
    };
    const auto yardstick = [&] {
        for (int i = 0; i < calls; ++i) {
            benchmark::DoNotOptimize(LocalConfig::getInstance().isExportData());
            benchmark::ClobberMemory();
        }
    };
    const PairedTimes times = timeInTurns(ours, yardstick);
    state.counters["ours_ns"] = times.oursMs * 1e6 / calls;
    report(state, {"6 dump that is off, to a test of the switch", 12}, times);
}

} // namespace

void registerDumpCases()
{
    registerFigure("Figure6_Dump/16bit", dumpSingleLayer);
    registerFigure("Figure6_Dump/layered", dumpLayered);
    registerFigure("Figure6_Dump/off", dumpOff);
}

} // namespace bench
