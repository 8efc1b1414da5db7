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

// A derived engine may hide steps of the same names; that is meant, see MultiLayerPartitionMerge.
// gcc reports it here, at the functions that are hidden.
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"
#endif

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
/// Progress and failures are reported to Qt's message handler, progress at debug level in the
/// category "default". A host that does not want to see it installs a handler of its own or calls
/// QLoggingCategory::setFilterRules("default.debug=false").
///
/// The steps are virtual so that a host can replace one; they call each other through the table.
/// Zones belong to the engine and die with the call: an override may read and change them, but must
/// neither delete nor keep one. What getScreenCoefEx() returns is deleted as a CoefsZoneInfo, whose
/// destructor is not virtual: it must be exactly that, made with new. An exception that an override
/// lets out ends the revision with ErrCode_Failed.
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
    ///                      grid, identity for uncorrected ones, whose pixels are 0 in the result's
    ///                      table; with any other value they are identity in the table.
    /// @param areas         a record for every partition of the grid, keyed "1", "2", ...
    /// @param partitionGrid columns and rows of partitions. Whether it is the wall's is not
    ///                      checked: with another one the seams that it does not have stay as they
    ///                      are, and the revision succeeds.
    /// @param screenRect    pixels of the screen; the shape of the result's table
    /// @param zoneSize      columns and rows by which each partition's zone is extended on each
    ///                      side, clipped to the screen. Below 0 zones are smaller than their
    ///                      partitions: nothing is blended, the pixels that no zone covers are 0 in
    ///                      table and files, and the revision succeeds.
    /// @param edgeMargin    positions left unblended at each end of a strip. They leave a step at
    ///                      both ends, over n positions edgeMargin / n of the two zones' difference
    ///                      where the ramp begins and (edgeMargin + 1) / n where it ends.
    ///
    /// On success the result holds screenRect.area() * 9 values, capped at 2457; the files hold
    /// the same values uncapped. On failure it holds a code, a text and empty arrays:
    ///
    /// | code | text | what happened | where to look |
    /// |------|------|---------------|---------------|
    /// | 3    |      | there is no database | setPScreenDb() |
    /// | 3341 |      | the database could not list the corrected partitions | its return value |
    /// | 1796 |      | it lists none, or the screen has no pixel | database, screenRect |
    /// | 3    | key  | a partition has no record, or there is no memory for its zone | areas |
    /// | 1797 | key  | an uncorrected partition's file was not written | directory, disk |
    /// | 1800 | key  | a partition could not be read | the database's return value |
    /// | 3    | key  | what was read is empty, or shorter than its rectangle | the stored zone |
    /// | 3    | number | the seam to the right of or below this partition: a record is missing, or
    ///                   the strip does not lie inside both zones | stored zones smaller than
    ///                   partition and band, areas |
    /// | 1804 |      | a corrected partition reaches beyond the screen | areas, screenRect |
    /// | 1797 |      | a corrected partition's file was not written | directory, disk |
    /// | 3    |      | no memory, something was thrown, or a zone has no partition | the log |
    ///
    /// The key is that of the map. From the list of corrected partitions on, correction states are
    /// set; they and the files written so far stay behind. The log names every cause.
    virtual ST_ReviseResult boundaryModifying(QString coefPath, enum_ScreenType screenType,
                                              QMap<QString, AreaInfoBase *> areas,
                                              baseCommon::NQSize partitionGrid, NQRect screenRect,
                                              baseCommon::NQSize zoneSize, int edgeMargin);

    /// Reads the coefficient file of a partition: nine values a pixel of the partition's own
    /// rectangle, which comes from the latest boundaryModifying() of this engine; before one every
    /// partition is unknown. False leaves coefArray as it was: no file, an unknown partition, or a
    /// file that is shorter than the partition needs or was written with another key.
    ///
    /// Files have no checksum. A bit that flips on disk passes: it spoils the eight bytes of its
    /// block and one bit of the next.
    virtual bool readCoef(QString dir, QString areaId, std::vector<unsigned short> &coefArray);

protected:
    /// Blends the strip that two zones share, in place. ErrCode_Failed for a null zone or values
    /// that are missing; a failed check changes neither zone.
    virtual enum_ErrCodeType partitionCoefRevise(CoefsZoneInfo *current, CoefsZoneInfo *next,
                                                 enum_ReviseDirection direction, int edgeMargin);

    /// Cuts each corrected partition out of its revised zone into the result's table, which must
    /// have its size, and into its file dir + "/" + area id. ErrCode_Failed without zones or for a
    /// null one, ErrCode_IndexOutOfRange where table or zone lack a value,
    /// ErrCode_SaveCombineCoefFailed for a file; what was saved before it stays.
    virtual enum_ErrCodeType saveRevisedCoef(const QMap<int, CoefsZoneInfo *> &coefs,
                                             QMap<QString, AreaInfoBase *> areas, QString dir,
                                             enum_ScreenType screenType, ST_ReviseResult &result);

    /// A new zone without coefficients: the partition grown by the band and clipped to the screen.
    /// The caller owns it; null if there is no memory.
    virtual CoefsZoneInfo *getScreenCoefEx(AreaInfoBase area, int exCols, int exRows);

    /// Writes a zone's coefficients to the encrypted file dir + "/" + area id; makes dir. False for
    /// a null zone, or if the file is not written whole.
    virtual bool saveCombineAreaCoef(QString dir, CoefsZoneInfo *zone);

    /// Gives a zone a partition's own rectangle and id, and returns its size in pixels: last edge
    /// less first edge plus 1, below 1 for an inverted rectangle.
    virtual void AreaInfoToCoefZoneInfo(CoefsZoneInfo *zone, AreaInfoBase *area, int &width,
                                        int &height);

    /// Fills a zone with a corrected partition's stored coefficients. Neither pointer may be null.
    /// False if the database cannot read them.
    virtual bool readCofficients(CoefsZoneInfo *zone, AreaInfoBase *area);

    /// Replaces the area zone's coefficients by the sub-area's pixels inside its rectangle. False
    /// for a null or empty zone, or one that lacks a pixel; the area zone is as it was then.
    virtual bool subInfoCoefToAreaCoef(CoefsZoneInfo *subInfoCoef, CoefsZoneInfo *areaCoef);

    /// Finds the two partitions of a seam and blends their zones; skips the seam, with success, if
    /// one of them is not corrected. Both indices are numbers here, from 1, as the maps have them.
    /// ErrCode_Failed if a record or a zone is missing.
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

#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif
