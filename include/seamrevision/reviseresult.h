#pragma once

#include "seamrevision/nqrect.h"
#include "seamrevision/revisetypes.h"

#include <QString>

#include <vector>

/// What a revision returns. On failure all three coefficient arrays are empty.
struct ST_ReviseResult
{
    /// Empty, or on some failures the key or number of the partition at which it stopped.
    QString errMsg;
    /// The screen rectangle of the revision.
    NQRect rect;
    enum_ErrCodeType errCode = ErrCode_Success;
    int isSuccess = 0; ///< 1 on success
    /// Single layer: nine values per pixel of rect, pixels row by row (see CoefsZoneInfo).
    std::vector<unsigned short> coefData;
    /// Layered: one row of 3 * layer count values per pixel of rect, pixels row by row.
    std::vector<std::vector<int>> multiLayerCoefData;
    /// Layered: multiLayerCoefData as packed 10-bit codes.
    std::vector<unsigned char> zipCoefData;
};
