#pragma once

#include "seamrevision/areainfobase.h"
#include "seamrevision/coefszoneinfo.h"
#include "seamrevision/export.h"
#include "seamrevision/nqrect.h"
#include "seamrevision/nqsize.h"
#include "seamrevision/reviseresult.h"
#include "seamrevision/revisetypes.h"

#include <QMap>
#include <QObject>
#include <QSize>
#include <QString>

#include <vector>

class ScreenDataBaseManager;

/// The single-layer engine: makes the seams between separately corrected partitions disappear.
///
/// A revision loads the coefficients of every corrected partition into a zone that reaches a band
/// beyond the partition, blends neighbouring zones across every strip that they share (all
/// horizontal neighbours, then all vertical ones) and cuts each partition's own pixels back out.
///
/// Partitions are numbered from 1, row by row over the grid. In a map of partitions the key is the
/// number's decimal text; the host owns the records, and they must outlive the engine's last
/// readCoef(). The engine owns nothing between calls. It runs on the caller's thread; one engine
/// must not be used by two threads at once. Nothing is thrown: failures are codes.
///
/// The steps are virtual so that a host can replace one; they call each other through the table.
class SEAMREVISION_EXPORT PartitionMerge : public QObject
{
    Q_OBJECT

public:
    PartitionMerge();
    ~PartitionMerge() override;

    /// Sets the screen database. Not owned; it must live while the engine is used.
    virtual void setPScreenDb(ScreenDataBaseManager *db);

    /// Runs one revision.
    ///
    /// @param coefPath      directory of the coefficient files; made if missing. Make it absolute:
    ///                      a relative one is created once more beneath itself.
    /// @param screenType    ScreenType_PartitionFile also writes one file per partition of the
    ///                      grid, identity for uncorrected ones; with any other value uncorrected
    ///                      partitions are identity in the result's table instead.
    /// @param areas         a record for every partition of the grid, keyed "1", "2", ...
    /// @param partitionGrid columns and rows of partitions
    /// @param screenRect    pixels of the screen; the shape of the result's table
    /// @param zoneSize      columns and rows by which each partition's zone is extended on each
    ///                      side, clipped to the screen
    /// @param edgeMargin    positions left unblended at each end of a strip
    ///
    /// On success the result holds screenRect.area() * 9 values, capped at 2457; the files hold
    /// the same values uncapped. On failure it holds a code, and as text the key or number of the
    /// partition at fault where there is one. Files written and correction states set before a
    /// failure stay. Anything that is thrown on the way (memory, the database) gives
    /// ErrCode_Failed.
    virtual ST_ReviseResult boundaryModifying(QString coefPath, enum_ScreenType screenType,
                                              QMap<QString, AreaInfoBase *> areas,
                                              baseCommon::NQSize partitionGrid, NQRect screenRect,
                                              baseCommon::NQSize zoneSize, int edgeMargin);

    /// Reads the coefficient file of a partition of the latest revision: nine values a pixel of
    /// the partition's own rectangle. False leaves coefArray as it was: no file, an unknown
    /// partition, or a file that is shorter than the partition needs or was written with another
    /// key.
    virtual bool readCoef(QString dir, QString areaId, std::vector<unsigned short> &coefArray);

protected:
    /// Blends the strip that two zones share, in place. A failed index check changes neither.
    virtual enum_ErrCodeType partitionCoefRevise(CoefsZoneInfo *current, CoefsZoneInfo *next,
                                                 enum_ReviseDirection direction, int edgeMargin);

    /// Cuts each corrected partition out of its revised zone into the result's table, which must
    /// have its size, and into its file.
    virtual enum_ErrCodeType saveRevisedCoef(const QMap<int, CoefsZoneInfo *> &coefs,
                                             QMap<QString, AreaInfoBase *> areas, QString path,
                                             enum_ScreenType screenType, ST_ReviseResult &result);

    /// A new zone without coefficients: the partition grown by the band and clipped to the screen.
    /// The caller owns it; null if there is no memory.
    virtual CoefsZoneInfo *getScreenCoefEx(AreaInfoBase area, int exCols, int exRows);

    /// Writes a zone's coefficients to the encrypted file dir + "/" + area id.
    virtual bool saveCombineAreaCoef(QString dir, CoefsZoneInfo *zone);

    /// Gives a zone a partition's own rectangle and id, and returns its size in pixels: last edge
    /// less first edge plus 1, below 1 for an inverted rectangle.
    virtual void AreaInfoToCoefZoneInfo(CoefsZoneInfo *zone, AreaInfoBase *area, int &width,
                                        int &height);

    /// Fills a zone with a corrected partition's stored coefficients. Neither pointer may be null.
    virtual bool readCofficients(CoefsZoneInfo *zone, AreaInfoBase *area);

    /// Replaces the area zone's coefficients by the sub-area's pixels inside its rectangle.
    virtual bool subInfoCoefToAreaCoef(CoefsZoneInfo *subInfoCoef, CoefsZoneInfo *areaCoef);

    /// Finds the two partitions of a seam and blends their zones; skips the seam, with success, if
    /// one of them is not corrected.
    virtual enum_ErrCodeType startRevise(enum_ReviseDirection direction, int currentIndex,
                                         int nextIndex, QMap<QString, AreaInfoBase *> areas,
                                         QMap<int, CoefsZoneInfo *> coefs);

    /// Puts a code and a text into the result, empties its arrays unless the code is success, and
    /// returns a copy of it. A revision calls it once, at its end; what an override throws gives
    /// ErrCode_Failed without a text.
    virtual ST_ReviseResult sendResult(enum_ErrCodeType errCode, const QString &message,
                                       ST_ReviseResult &result);

    int m_edgeMargin = 0;                                ///< of the latest revision
    ScreenDataBaseManager *m_pScreenDBManager = nullptr; ///< not owned
    QSize m_size;                                        ///< not used
    NQRect m_screenRect;                                 ///< of the latest revision
    QMap<QString, AreaInfoBase *> m_areas;               ///< of the latest revision, not owned

private:
    class Revision;
    class Saving;
};
