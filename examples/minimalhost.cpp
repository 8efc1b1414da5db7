// The smallest host: a screen of 8 x 2 pixels, two partitions side by side, corrected with
// different gains. Revises their seam and prints the gain of every pixel of the upper row.

#include <seamrevision/multilayercoefzoneinfo.h>
#include <seamrevision/partitionmerge.h>
#include <seamrevision/screendatabasemanager.h>

#include <QLoggingCategory>

#include <iostream>

namespace
{

constexpr int columns = 8;
constexpr int rows = 2;

/// Holds no numbers at all: partition 1 has gain 1, partition 2 a gain of 1.1 everywhere. A stored
/// zone covers its partition and the band around it, here simply the whole screen.
class TwoGains : public ScreenDataBaseManager
{
public:
    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override
    {
        zones.insert(1, new CoefsZoneInfo);
        zones.insert(2, new CoefsZoneInfo);
        return 0;
    }

    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override
    {
        const unsigned short gain = number == 1 ? 2048 : 2253;
        zone.setEndPixCol(columns - 1);
        zone.setEndPixRow(rows - 1);
        zone.m_arrayData.clear();
        for (int pixel = 0; pixel < columns * rows; ++pixel)
            zone.m_arrayData.insert(zone.m_arrayData.end(), {gain, 0, 0, 0, gain, 0, 0, 0, gain});
        return 0;
    }

    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &) override { return 1; }

    int readMultiLayerAreaCoefficients(const unsigned int &, const unsigned int &,
                                       MultiLayerCoefZoneInfo &) override
    {
        return 1;
    }
};

} // namespace

int main()
{
    // The engine reports every step to Qt's message handler; without this line one sees them.
    QLoggingCategory::setFilterRules("default.debug=false");

    TwoGains database;
    const NQRect screen(0, 0, columns - 1, rows - 1);
    AreaInfoBase left(0, 0, 0, rows - 1, columns / 2 - 1);
    AreaInfoBase right(1, 0, columns / 2, rows - 1, columns - 1);

    PartitionMerge engine;
    engine.setPScreenDb(&database);
    const baseCommon::NQSize grid(2, 1); // columns and rows of partitions
    const baseCommon::NQSize band(2, 2); // pixels beyond each partition in which seams are blended
    const ST_ReviseResult result = engine.boundaryModifying(
        QString(), enum_ScreenType(0), {{"1", &left}, {"2", &right}}, grid, screen, band, 0);
    if (result.errCode != ErrCode_Success)
        return result.errCode;
    for (int column = 0; column < columns; ++column)
        std::cout << result.coefData[std::size_t(column) * 9] << ' ';
    std::cout << '\n';
    return 0;
}
