#pragma once

#include <QString>

/// The rectangle that a packed coefficient block covers: screen pixels, both ends included.
class ST_LedZoneInfo
{
public:
    QString areaId;
    int begPixRow = 0;
    int begPixCol = 0;
    int endPixRow = 0;
    int endPixCol = 0;
};
