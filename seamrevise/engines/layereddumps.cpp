#include "engines/layereddumps.h"

#include "engines/zonevalues.h"
#include "store/screenlayout.h"

#include <seamrevision/areainfobase.h>
#include <seamrevision/localconfig.h>

#include <QFile>

#include <vector>

namespace seamrevise
{

namespace
{

/// A dump of rows, one a line.
class RowDump
{
public:
    explicit RowDump(const QString &name)
        : m_file(LocalConfig::getInstance().exportDataDir() + QLatin1Char('/') + name)
    {
        if (m_file.open(QIODevice::WriteOnly))
            m_file.write("\r\n");
    }

    void line(const std::vector<int> &row)
    {
        if (!m_file.isOpen())
            return;
        m_line.clear();
        for (const int value : row) {
            m_line += QByteArray::number(value);
            m_line += ',';
        }
        m_line += "\r\n";
        m_file.write(m_line);
    }

private:
    QFile m_file;
    QByteArray m_line;
};

} // namespace

void dumpStored(const MultiLayerCoefZoneInfo &stored, const AreaInfoBase &area, int layerCount)
{
    if (!LocalConfig::getInstance().isExportData())
        return;
    const QString key = area.getAreaNum();
    {
        RowDump dump(QStringLiteral("areaEx_%1_before.txt").arg(key));
        for (const std::vector<int> &row : stored.m_multiLayerCoefs)
            dump.line(row);
    }
    RowDump dump(QStringLiteral("area_%1_before.txt").arg(key));
    const NQRect zone = rectOf(stored);
    const NQRect own(area.getAreaStartCol(), area.getAreaStartRow(), area.getAreaEndCol(),
                     area.getAreaEndRow());
    const NQRect held = shared(zone, own);
    for (qint64 row = held.top(); row <= held.bottom(); ++row) {
        for (qint64 col = held.left(); col <= held.right(); ++col)
            dump.line(stored.m_multiLayerCoefs[pixelIndex(zone, row, col)]);
    }
    const std::vector<int> missing(static_cast<std::size_t>(layerCount) * 3, 0);
    for (qint64 pixel = pixelsOf(held); pixel < pixelsOf(own); ++pixel)
        dump.line(missing);
}

} // namespace seamrevise
