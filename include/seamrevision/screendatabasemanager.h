#pragma once

#include "seamrevision/export.h"

#include <QMap>

#include <vector>

class CoefsZoneInfo;
class MultiLayerCoefZoneInfo;

/// The host's screen database: which partitions are corrected, and their stored coefficients.
///
/// Partitions are numbered from 1, row by row. Every operation returns 0 on success and anything
/// else on failure; it may throw, the engines keep what it throws inside. A stored zone covers at
/// least the partition and the band around it in which the revision blends, clipped to the screen.
///
/// All partitions of a revision are read into one zone, in the order of their keys. It is empty at
/// first; after that it arrives as the read before left it, coefficients and rectangle. So a
/// database may replace the coefficients or write over them in place, which allocates nothing where
/// zones are of one size.
class SEAMREVISION_EXPORT ScreenDataBaseManager
{
public:
    ScreenDataBaseManager() = default;
    ScreenDataBaseManager(const ScreenDataBaseManager &) = delete;
    ScreenDataBaseManager &operator=(const ScreenDataBaseManager &) = delete;
    virtual ~ScreenDataBaseManager();

    /// Adds one entry per corrected partition under its number. Only the keys are used; the zones
    /// are allocated with new and belong to the caller, also after a failure. Empty ones will do.
    virtual int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) = 0;

    /// Fills zone with the stored coefficients of a partition and their rectangle.
    virtual int readAreaCoefficients(int number, CoefsZoneInfo &zone) = 0;

    /// Adds the numbers of all partitions with layered coefficients.
    virtual int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers) = 0;

    /// Fills zone with a partition's stored coefficients of that layer count and their rectangle.
    virtual int readMultiLayerAreaCoefficients(const unsigned int &layerSize,
                                               const unsigned int &number,
                                               MultiLayerCoefZoneInfo &zone)
        = 0;
};
