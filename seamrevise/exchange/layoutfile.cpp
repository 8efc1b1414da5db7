#include "exchange/layoutfile.h"

#include "exchange/coefficients.h"
#include "exchange/walldocument.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>

namespace seamrevise
{

namespace
{

const char *const schemaName = "seamrevise-layout/1";
constexpr int mostPartitions = 1'000'000;
constexpr int anyInt = std::numeric_limits<int>::max();

QString memberPath(const QString &path, const char *name)
{
    return path.isEmpty() ? QString::fromLatin1(name)
                          : path + QLatin1Char('.') + QLatin1String(name);
}

QString elementPath(const QString &path, int index)
{
    return QStringLiteral("%1[%2]").arg(path).arg(index);
}

NQRect moved(const NQRect &rect, const NQRect &screen)
{
    return NQRect(rect.left() + screen.left(), rect.top() + screen.top(),
                  rect.right() + screen.left(), rect.bottom() + screen.top());
}

QString rectText(const NQRect &rect)
{
    return QStringLiteral("[%1, %2, %3, %4]")
        .arg(rect.left())
        .arg(rect.top())
        .arg(rect.right())
        .arg(rect.bottom());
}

bool isWithin(const NQRect &inner, const NQRect &outer)
{
    return pixelsOf(shared(inner, outer)) == pixelsOf(inner);
}

NQRect rectOf(const std::vector<int> &edges)
{
    return NQRect(edges[0], edges[1], edges[2], edges[3]);
}

std::optional<int> intOf(const QJsonValue &value, int least, int most)
{
    const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!(number >= least && number <= most) || number != std::floor(number))
        return {};
    return static_cast<int>(number);
}

/// Reads a document and collects its mistakes.
class LayoutReader
{
public:
    explicit LayoutReader(ImportLayout &result)
        : m_result(result)
    {
    }

    QStringList read(const QByteArray &text);

private:
    /// A partition whose rectangle and sources are not judged yet.
    struct Entry
    {
        QString path;
        bool hasRect;
        std::optional<NQRect> rect; ///< none also if it is wrong
        QJsonValue source;
    };

    void readWall(const QJsonObject &wall);
    void checkSizes();
    void readEntry(const QJsonValue &value, const QString &path);
    void placePartitions();
    void placeRegularPartitions();
    void readSources(int number, const QJsonValue &value, const QString &path);
    void readSourceObject(int number, const QJsonObject &object, const QString &path);
    void addSource(int number, const LayoutSource &source);

    void checkMembers(const QJsonObject &object, const QString &path, const QStringList &known);
    std::optional<int> number(const QJsonObject &object, const QString &path, const char *name,
                              int least, int most);
    std::optional<std::vector<int>> numbers(const QJsonObject &object, const QString &path,
                                            const char *name, int count, int least);
    std::optional<NQRect> rect(const QJsonObject &object, const QString &path, const char *name);
    void fault(const QString &path, const QString &text);

    ScreenLayout &layout() { return m_result.layout; }

    ImportLayout &m_result;
    std::map<int, Entry> m_entries; ///< under the numbers of their partitions
    int m_mostNumber = anyInt;      ///< of a partition
    bool m_isWallKnown = false;     ///< screen, grid and band
    QStringList m_faults;
};

QStringList LayoutReader::read(const QByteArray &text)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        const QByteArray before = text.left(error.offset);
        return {QStringLiteral("line %1, column %2: %3")
                    .arg(before.count('\n') + 1)
                    .arg(before.size() - before.lastIndexOf('\n'))
                    .arg(error.errorString())};
    }
    if (!document.isObject())
        return {QStringLiteral("it is a list; a layout is an object")};

    readWall(document.object());
    const QJsonValue partitions = document.object().value(QLatin1String("partitions"));
    if (!partitions.isArray() && !partitions.isUndefined())
        fault(QStringLiteral("partitions"), QStringLiteral("a list is wanted"));
    for (int i = 0; i < partitions.toArray().size(); ++i)
        readEntry(partitions.toArray().at(i), elementPath(QStringLiteral("partitions"), i));
    if (m_isWallKnown)
        placePartitions();
    for (const auto &[number, entry] : m_entries) {
        if (!entry.source.isUndefined())
            readSources(number, entry.source, memberPath(entry.path, "source"));
    }
    return m_faults;
}

void LayoutReader::readWall(const QJsonObject &wall)
{
    checkMembers(wall, QString(), {"schema", "screen", "grid", "band", "partitions"});
    const QJsonValue schema = wall.value(QLatin1String("schema"));
    if (!schema.isUndefined() && schema != QJsonValue(QLatin1String(schemaName)))
        fault(QStringLiteral("schema"),
              QStringLiteral("\"%1\" is wanted, if anything").arg(QLatin1String(schemaName)));
    const auto screen = rect(wall, QString(), "screen");
    const auto grid = numbers(wall, QString(), "grid", 2, 1);
    const auto band = numbers(wall, QString(), "band", 2, 0);
    if (!screen || !grid || !band)
        return;
    layout().screen = *screen;
    layout().grid = baseCommon::NQSize(grid->at(0), grid->at(1));
    layout().band = baseCommon::NQSize(band->at(0), band->at(1));
    checkSizes();
}

void LayoutReader::checkSizes()
{
    const qint64 count = qint64{layout().grid.width()} * layout().grid.height();
    const bool hasTooManyPixels = pixelsOf(layout().screen) > anyInt;
    if (hasTooManyPixels)
        fault(QStringLiteral("screen"), QStringLiteral("it has too many pixels"));
    if (count > mostPartitions)
        fault(QStringLiteral("grid"),
              QStringLiteral("it has more than %1 partitions").arg(mostPartitions));
    m_isWallKnown = !hasTooManyPixels && count <= mostPartitions;
    if (m_isWallKnown)
        m_mostNumber = static_cast<int>(count);
}

void LayoutReader::readEntry(const QJsonValue &value, const QString &path)
{
    if (!value.isObject()) {
        fault(path, QStringLiteral("an object is wanted"));
        return;
    }
    const QJsonObject object = value.toObject();
    checkMembers(object, path, {"number", "rect", "source"});
    Entry entry{
        path, object.contains(QLatin1String("rect")), {}, object.value(QLatin1String("source"))};
    if (entry.hasRect)
        entry.rect = rect(object, path, "rect");
    const std::optional<int> number = this->number(object, path, "number", 1, m_mostNumber);
    if (number && !m_entries.emplace(*number, entry).second)
        fault(path, QStringLiteral("partition %1 is there already").arg(*number));
}

/// Either all partitions have a rectangle, or none; whether they fit together is not judged here.
void LayoutReader::placePartitions()
{
    const bool isGiven = std::any_of(m_entries.begin(), m_entries.end(),
                                     [](const auto &entry) { return entry.second.hasRect; });
    if (!isGiven) {
        placeRegularPartitions();
        return;
    }
    for (const auto &[number, entry] : m_entries) {
        if (entry.rect)
            layout().partitions[number] = *entry.rect;
        else if (!entry.hasRect)
            fault(memberPath(entry.path, "rect"),
                  QStringLiteral("it is missing, while other partitions have one"));
    }
}

void LayoutReader::placeRegularPartitions()
{
    const NQRect screen = layout().screen;
    const baseCommon::NQSize size(static_cast<int>(columnsOf(screen)),
                                  static_cast<int>(rowsOf(screen)));
    const baseCommon::NQSize grid = layout().grid;
    if (grid.width() > size.width() || grid.height() > size.height()) {
        fault(QStringLiteral("grid"),
              QStringLiteral("it has more partitions than the screen has pixels"));
        return;
    }
    for (const auto &[number, rect] : regularLayout(size, grid, layout().band).partitions)
        layout().partitions[number] = moved(rect, screen);
}

void LayoutReader::readSources(int number, const QJsonValue &value, const QString &path)
{
    if (value.isString()) {
        addSource(number, {value.toString(), NQRect(), {}, path});
    } else if (value.isObject()) {
        readSourceObject(number, value.toObject(), path);
    } else if (value.isArray()) {
        const QJsonArray sources = value.toArray();
        for (int i = 0; i < sources.size(); ++i) {
            if (sources.at(i).isArray())
                fault(elementPath(path, i), QStringLiteral("a list within a list"));
            else
                readSources(number, sources.at(i), elementPath(path, i));
        }
    } else {
        fault(path, QStringLiteral("a file name, an object or a list of these is wanted"));
    }
}

void LayoutReader::readSourceObject(int number, const QJsonObject &object, const QString &path)
{
    checkMembers(object, path, {"file", "zone", "layers"});
    LayoutSource source{object.value(QLatin1String("file")).toString(), NQRect(), {}, path};
    if (object.contains(QLatin1String("layers")))
        source.layerCount = this->number(object, path, "layers", 0, mostLayers);
    if (object.contains(QLatin1String("zone"))) {
        const std::optional<NQRect> zone = rect(object, path, "zone");
        if (!zone)
            return;
        source.zone = *zone;
    }
    addSource(number, source);
}

/// Adds a source whose zone may be left open.
void LayoutReader::addSource(int number, const LayoutSource &source)
{
    if (source.file.isEmpty())
        fault(source.place, QStringLiteral("it names no file"));
    if (source.file.isEmpty() || layout().partitions.count(number) == 0)
        return;
    LayoutSource placed = source;
    if (pixelsOf(placed.zone) == 0)
        placed.zone = zoneOf(layout(), number).rect;
    const QString wrong = zoneFault(layout(), number, placed.zone);
    if (wrong.isEmpty())
        m_result.sources[number].push_back(placed);
    else
        fault(memberPath(source.place, "zone"), wrong);
}

void LayoutReader::checkMembers(const QJsonObject &object, const QString &path,
                                const QStringList &known)
{
    for (const QString &name : object.keys()) {
        if (!known.contains(name))
            fault(path.isEmpty() ? name : path + QLatin1Char('.') + name,
                  QStringLiteral("there is no such member; there are %1")
                      .arg(known.join(QStringLiteral(", "))));
    }
}

/// What is missing or wrong is a mistake.
std::optional<int> LayoutReader::number(const QJsonObject &object, const QString &path,
                                        const char *name, int least, int most)
{
    const std::optional<int> value = intOf(object.value(QLatin1String(name)), least, most);
    if (!value)
        fault(memberPath(path, name),
              QStringLiteral("a whole number from %1 to %2 is wanted").arg(least).arg(most));
    return value;
}

std::optional<std::vector<int>> LayoutReader::numbers(const QJsonObject &object,
                                                      const QString &path, const char *name,
                                                      int count, int least)
{
    const QJsonArray list = object.value(QLatin1String(name)).toArray();
    std::vector<int> values;
    for (const QJsonValue &value : list) {
        if (const std::optional<int> number = intOf(value, least, anyInt))
            values.push_back(*number);
    }
    if (list.size() == count && static_cast<int>(values.size()) == count)
        return values;
    fault(memberPath(path, name),
          QStringLiteral("a list of %1 whole numbers%2 is wanted")
              .arg(count)
              .arg(least > -anyInt ? QStringLiteral(" from %1").arg(least) : QString()));
    return {};
}

std::optional<NQRect> LayoutReader::rect(const QJsonObject &object, const QString &path,
                                         const char *name)
{
    const auto edges = numbers(object, path, name, 4, -anyInt);
    if (!edges)
        return {};
    const NQRect value = rectOf(*edges);
    if (pixelsOf(value) > 0)
        return value;
    fault(memberPath(path, name),
          QStringLiteral("%1 has no pixel; first column, first row, last column and last row are"
                         " wanted")
              .arg(rectText(value)));
    return {};
}

void LayoutReader::fault(const QString &path, const QString &text)
{
    m_faults += path + QStringLiteral(": ") + text;
}

void addSources(const std::vector<LayoutSource> &sources, JsonWriter &json)
{
    json.beginArray("source");
    for (const LayoutSource &source : sources) {
        json.beginObject();
        json.member("file", source.file);
        addRect(json, "zone", source.zone);
        if (source.layerCount)
            json.member("layers", *source.layerCount);
        json.endObject();
    }
    json.endArray();
}

} // namespace

QString zoneFault(const ScreenLayout &layout, int number, const NQRect &zone)
{
    const NQRect &partition = layout.partitions.at(number);
    if (!isWithin(partition, zone))
        return QStringLiteral("the zone %1 does not hold partition %2, which is %3")
            .arg(rectText(zone))
            .arg(number)
            .arg(rectText(partition));
    if (!isWithin(zone, layout.screen))
        return QStringLiteral("the zone %1 reaches beyond the screen, which is %2")
            .arg(rectText(zone), rectText(layout.screen));
    return {};
}

QStringList readLayout(const QByteArray &text, ImportLayout &layout)
{
    layout = ImportLayout();
    return LayoutReader(layout).read(text);
}

QByteArray layoutText(const ImportLayout &layout)
{
    JsonWriter json;
    json.beginObject();
    json.member("schema", schemaName);
    addRect(json, "screen", layout.layout.screen);
    addGridAndBand(json, layout.layout.grid, layout.layout.band);
    json.beginArray("partitions");
    for (const auto &[number, rect] : layout.layout.partitions) {
        json.beginObject(nullptr, JsonWriter::Inline);
        json.member("number", number);
        addRect(json, "rect", rect);
        const auto sources = layout.sources.find(number);
        if (sources != layout.sources.end())
            addSources(sources->second, json);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.text();
}

} // namespace seamrevise
