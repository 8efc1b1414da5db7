#include "numbers/inputfindings.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <set>

namespace seamrevise
{

namespace
{

constexpr qint64 most = std::numeric_limits<int>::max();

class InputCheck
{
public:
    InputCheck(const StoredInventory &inventory, const ScreenLayout &layout, int layerCount,
               const baseCommon::NQSize &band)
        : m_inventory(inventory)
        , m_layout(layout)
        , m_layerCount(layerCount)
        , m_band(band)
    {
    }

    Findings runLayout()
    {
        checkScreen();
        checkNumbers();
        for (const auto &[number, rect] : m_layout.partitions)
            checkPlace(number, rect);
        return m_findings;
    }

    Findings run()
    {
        runLayout();
        checkLayers();
        for (const auto &row : m_inventory.coefficients) {
            if (row.layerCount == m_layerCount)
                checkZone(row);
        }
        return m_findings;
    }

private:
    void checkScreen();
    void checkNumbers();
    void checkDuplicates();
    void checkMissing();
    void checkPlace(int number, const NQRect &rect);
    void checkEdge(int number, const char *edge, qint64 is, qint64 wanted, const QString &why);
    void checkLayers();
    void checkZone(const StoredInventory::Coefficients &row);
    void checkCover(const StoredInventory::Coefficients &row, const NQRect &partition);
    QString bandAdvice() const;

    bool isInGrid(int number) const { return number >= 1 && number <= gridCount(); }
    qint64 gridCount() const { return qint64{m_layout.grid.width()} * m_layout.grid.height(); }

    void add(const char *kind, std::optional<int> partition, const QString &message,
             std::optional<double> value = {})
    {
        Finding finding;
        finding.kind = QString::fromLatin1(kind);
        finding.partition = partition;
        finding.value = value;
        finding.message = message;
        m_findings.push_back(finding);
    }

    const StoredInventory &m_inventory;
    const ScreenLayout &m_layout;
    const int m_layerCount;
    const baseCommon::NQSize m_band;
    std::set<int> m_seenZones;
    Findings m_findings;
};

void InputCheck::checkScreen()
{
    const NQRect &screen = m_layout.screen;
    if (m_inventory.screenRows != 1)
        add("screen-rows", {},
            QStringLiteral("the table screen has %1 rows; keep the right one")
                .arg(m_inventory.screenRows),
            m_inventory.screenRows);
    if (pixelsOf(screen) == 0 || pixelsOf(screen) > most)
        add("screen-size", {},
            QStringLiteral("the screen has no pixel, or too many: %1; correct its edges")
                .arg(sizeText(columnsOf(screen), rowsOf(screen))));
    if (screen.right() == most || screen.bottom() == most)
        add("screen-edge", {},
            QStringLiteral("the screen ends at pixel %1, behind which none can be counted; let it"
                           " start near 0")
                .arg(most));
    if (m_layout.grid.width() < 1 || m_layout.grid.height() < 1 || gridCount() > most)
        add("grid-size", {},
            QStringLiteral("the partition grid has no partition, or too many: %1")
                .arg(sizeText(m_layout.grid.width(), m_layout.grid.height())));
    if (m_layout.band.width() < 0 || m_layout.band.height() < 0)
        add("band-negative", {},
            QStringLiteral("the band is negative: %1")
                .arg(sizeText(m_layout.band.width(), m_layout.band.height())));
}

void InputCheck::checkNumbers()
{
    checkDuplicates();
    for (const auto &entry : m_layout.partitions) {
        if (!isInGrid(entry.first))
            add("partition-extra", entry.first,
                QStringLiteral("it is not in the grid of %1; remove it or correct the grid")
                    .arg(sizeText(m_layout.grid.width(), m_layout.grid.height())));
    }
    checkMissing();
}

void InputCheck::checkDuplicates()
{
    const auto &rows = m_inventory.partitions;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i].number == rows[i - 1].number)
            add("partition-duplicate", rows[i].number,
                QStringLiteral("it is there more than once; keep one row of it"));
    }
}

/// A grid may be said to be huge: numbers that follow each other are one finding.
void InputCheck::checkMissing()
{
    const auto report = [this](qint64 first, qint64 last) {
        if (first > last)
            return;
        const QString message = first == last
            ? QStringLiteral("it is missing from the grid; add it or correct the grid")
            : QStringLiteral("it and all up to partition %1 are missing from the grid; add them or"
                             " correct the grid")
                  .arg(last);
        add("partition-missing", static_cast<int>(first), message,
            static_cast<double>(last - first + 1));
    };
    if (gridCount() > most)
        return;
    qint64 expected = 1;
    for (const auto &entry : m_layout.partitions) {
        if (!isInGrid(entry.first))
            continue;
        report(expected, qint64{entry.first} - 1);
        expected = qint64{entry.first} + 1;
    }
    report(expected, gridCount());
}

void InputCheck::checkPlace(int number, const NQRect &rect)
{
    const NQRect &screen = m_layout.screen;
    if (!isInGrid(number))
        return;
    if (pixelsOf(rect) == 0) {
        add("partition-empty", number, QStringLiteral("it has no pixel; correct its edges"));
        return;
    }
    if (pixelsOf(shared(rect, screen)) != pixelsOf(rect))
        add("partition-off-screen", number,
            QStringLiteral("it reaches beyond the screen by %1 pixels; correct its edges")
                .arg(pixelsOf(rect) - pixelsOf(shared(rect, screen))),
            static_cast<double>(pixelsOf(rect) - pixelsOf(shared(rect, screen))));

    const int columns = m_layout.grid.width();
    const int col = (number - 1) % columns;
    const auto neighbour = [&](bool exists, int other) {
        const auto found = m_layout.partitions.find(other);
        return exists && found != m_layout.partitions.end() ? &found->second : nullptr;
    };
    const QString edgeOfScreen = QStringLiteral("the edge of the screen");
    if (const NQRect *const left = neighbour(col > 0, number - 1)) {
        const QString name = QStringLiteral("partition %1").arg(number - 1);
        checkEdge(number, "first column", rect.left(), qint64{left->right()} + 1, name);
        checkEdge(number, "first row", rect.top(), left->top(), name);
        checkEdge(number, "last row", rect.bottom(), left->bottom(), name);
    } else if (col == 0) {
        checkEdge(number, "first column", rect.left(), screen.left(), edgeOfScreen);
    }
    if (const NQRect *const above = neighbour(number > columns, number - columns)) {
        const QString name = QStringLiteral("partition %1").arg(number - columns);
        checkEdge(number, "first row", rect.top(), qint64{above->bottom()} + 1, name);
        checkEdge(number, "first column", rect.left(), above->left(), name);
        checkEdge(number, "last column", rect.right(), above->right(), name);
    } else if (number <= columns) {
        checkEdge(number, "first row", rect.top(), screen.top(), edgeOfScreen);
    }
    if (col + 1 == columns)
        checkEdge(number, "last column", rect.right(), screen.right(), edgeOfScreen);
    if (number > gridCount() - columns)
        checkEdge(number, "last row", rect.bottom(), screen.bottom(), edgeOfScreen);
}

/// Partitions overlap, leave a gap or are shifted against each other where an edge is not where its
/// neighbour or the screen puts it.
void InputCheck::checkEdge(int number, const char *edge, qint64 is, qint64 wanted,
                           const QString &why)
{
    if (is == wanted)
        return;
    const QString way = QString::fromLatin1(edge).startsWith(QLatin1String("first"))
        ? (is < wanted ? QStringLiteral("overlaps") : QStringLiteral("leaves a gap to"))
        : QStringLiteral("does not end with");
    add("partition-place", number,
        QStringLiteral("it %1 %2: its %3 is %4 and should be %5")
            .arg(way, why, QString::fromLatin1(edge))
            .arg(is)
            .arg(wanted),
        static_cast<double>(std::abs(is - wanted)));
}

void InputCheck::checkLayers()
{
    std::set<int> numbers;      // with coefficients of the kind
    std::set<int> otherNumbers; // with layered coefficients of any layer count
    for (const auto &row : m_inventory.coefficients) {
        if (row.layerCount == m_layerCount)
            numbers.insert(row.number);
        else if (row.layerCount != 0 && m_layerCount != 0)
            otherNumbers.insert(row.number);
    }
    const QString stored = listText(storedLayerCounts(m_inventory));
    const QString advice = stored.isEmpty() ? QStringLiteral("no layered ones are stored")
                                            : QStringLiteral("layer counts stored: ") + stored;
    if (numbers.empty() && otherNumbers.empty())
        add("no-coefficients", {},
            QStringLiteral("no partition has coefficients of this kind; %1").arg(advice));
    for (const int number : otherNumbers) {
        if (numbers.count(number) == 0)
            add("layers-missing", number,
                QStringLiteral("it has no coefficients with a layer count of %1; %2")
                    .arg(m_layerCount)
                    .arg(advice),
                m_layerCount);
    }
}

void InputCheck::checkZone(const StoredInventory::Coefficients &row)
{
    if (!m_seenZones.insert(row.number).second)
        add("zone-duplicate", row.number,
            QStringLiteral("its coefficients are there more than once; keep one row of them"));
    const QString size = sizeText(columnsOf(row.rect), rowsOf(row.rect));
    const qint64 pixels = pixelsOf(row.rect);
    const qint64 pixelBytes = storedPixelBytes(m_layerCount);
    if (row.bytes == 0)
        add("zone-type", row.number,
            QStringLiteral("its coefficients are empty, or stored as another type than BLOB; store"
                           " the bytes themselves"));
    if (pixels == 0)
        add("zone-empty", row.number, QStringLiteral("its zone has no pixel; correct its edges"));
    else if (pixels > largestZoneBytes / pixelBytes)
        add("zone-too-large", row.number,
            QStringLiteral("its zone of %1 pixels is larger than one database value holds")
                .arg(size));
    else if (row.bytes != 0 && row.bytes != pixels * pixelBytes)
        add("zone-bytes", row.number,
            QStringLiteral("its zone of %1 pixels needs %2 bytes, %3 are stored")
                .arg(size)
                .arg(pixels * pixelBytes)
                .arg(row.bytes),
            static_cast<double>(row.bytes));
    const auto partition = m_layout.partitions.find(row.number);
    if (partition == m_layout.partitions.end())
        add("zone-without-partition", row.number,
            QStringLiteral("it has coefficients but no place; remove them or add the partition"));
    else
        checkCover(row, partition->second);
}

void InputCheck::checkCover(const StoredInventory::Coefficients &row, const NQRect &partition)
{
    const NQRect needed = grown(partition, m_band, m_layout.screen);
    const qint64 missing = pixelsOf(needed) - pixelsOf(shared(needed, row.rect));
    if (missing != 0)
        add("zone-too-small", row.number,
            QStringLiteral("its zone lacks %1 of the %2 pixels of the partition with a band of %3;"
                           " %4")
                .arg(missing)
                .arg(pixelsOf(needed))
                .arg(sizeText(m_band.width(), m_band.height()), bandAdvice()),
            static_cast<double>(missing));
}

QString InputCheck::bandAdvice() const
{
    qint64 columns = columnsOf(m_layout.screen);
    qint64 rows = rowsOf(m_layout.screen);
    for (const auto &row : m_inventory.coefficients) {
        const auto found = m_layout.partitions.find(row.number);
        if (row.layerCount != m_layerCount || found == m_layout.partitions.end())
            continue;
        const NQRect &partition = found->second;
        const NQRect &screen = m_layout.screen;
        // A side on which the zone reaches the end of the screen carries any band.
        if (row.rect.left() > screen.left())
            columns = std::min(columns, qint64{partition.left()} - row.rect.left());
        if (row.rect.right() < screen.right())
            columns = std::min(columns, qint64{row.rect.right()} - partition.right());
        if (row.rect.top() > screen.top())
            rows = std::min(rows, qint64{partition.top()} - row.rect.top());
        if (row.rect.bottom() < screen.bottom())
            rows = std::min(rows, qint64{row.rect.bottom()} - partition.bottom());
    }
    if (columns < 0 || rows < 0)
        return QStringLiteral("no band helps: a zone does not cover its own partition");
    return QStringLiteral("all zones carry --band %1").arg(sizeText(columns, rows));
}

} // namespace

Findings layoutFindings(const ScreenLayout &layout)
{
    StoredInventory nothing;
    nothing.screenRows = 1;
    return InputCheck(nothing, layout, 0, layout.band).runLayout();
}

Findings inputFindings(const StoredInventory &inventory, const ScreenLayout &layout, int layerCount,
                       const baseCommon::NQSize &band)
{
    return InputCheck(inventory, layout, layerCount, band).run();
}

std::vector<int> storedLayerCounts(const StoredInventory &inventory)
{
    std::set<int> counts;
    for (const auto &row : inventory.coefficients) {
        if (row.layerCount != 0)
            counts.insert(row.layerCount);
    }
    return {counts.begin(), counts.end()};
}

} // namespace seamrevise
