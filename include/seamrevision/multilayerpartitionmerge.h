#pragma once

#include "seamrevision/export.h"
#include "seamrevision/multilayercoefzoneinfo.h"
#include "seamrevision/partitionmerge.h"

#include <QMap>
#include <QString>

#include <vector>

// The layered steps hide the single-layer ones of the same names, and mean to: a layered revision
// must never call a single-layer step by accident.
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"
#endif

/// The layered engine: the same revision as PartitionMerge for screens whose pixels carry
/// 3 * layer count signed 32-bit coefficients, 4096 neutral, and a packed form of 10-bit codes.
///
/// Numbers, keys, ownership, threads and log are those of PartitionMerge. The steps take layered
/// zones; they hide the single-layer steps of the same names and override none. This class has no
/// meta-object of its own: class name and translation context are PartitionMerge's.
class SEAMREVISION_EXPORT MultiLayerPartitionMerge : public PartitionMerge
{
public:
    /// Keeps the parameters and never reads them: hand over an empty vector. The layer count starts
    /// at 4; setLayerSize() changes it.
    explicit MultiLayerPartitionMerge(const std::vector<unsigned int> &layerParams);
    ~MultiLayerPartitionMerge() override;

    /// Sets the layer count. Any value is taken; below 1 rows are empty. It must be that of the
    /// database and of the files, and no one notices if it is not: rows then have the length that
    /// the database gives them, and values of files are misread.
    void setLayerSize(int size);

    /// Runs one revision; the arguments are those of PartitionMerge::boundaryModifying.
    ///
    /// On success the result holds a row of 3 * layer count values for every pixel of screenRect,
    /// at most 4096 each, and their packed codes, 4 * layer count bytes a pixel; the files hold
    /// the values as revised. Rows of uncorrected partitions are zero, whatever the screen type;
    /// with ScreenType_PartitionFile they get neutral files. On failure the result holds the codes
    /// and texts that PartitionMerge::boundaryModifying lists.
    ST_ReviseResult boundaryModifying(QString coefPath, enum_ScreenType screenType,
                                      QMap<QString, AreaInfoBase *> areas,
                                      baseCommon::NQSize partitionGrid, NQRect screenRect,
                                      baseCommon::NQSize zoneSize, int edgeMargin) override;

    /// Reads both coefficient files of a partition, written with the same layer count: another one
    /// misreads them without a failure. As with PartitionMerge::readCoef, partitions are known from
    /// the latest boundaryModifying() of this engine on, and a bit that flips on disk passes. False
    /// leaves an output as it was; the table may be replaced although the packed file could not be
    /// read. Rows that were there before and are longer keep their tail.
    virtual bool readCoef(QString dir, QString areaId, std::vector<std::vector<int>> &coefTable,
                          std::vector<unsigned char> &zipBytes);

protected:
    /// A new zone without coefficients: the partition grown by the band and clipped to the screen.
    /// The caller owns it; null if there is no memory.
    MultiLayerCoefZoneInfo *getScreenCoefEx(const AreaInfoBase &area, int exCols, int exRows);

    /// Fills a zone with a corrected partition's stored coefficients. Neither pointer may be null.
    /// False if the database cannot read them.
    bool readCofficients(MultiLayerCoefZoneInfo *zone, AreaInfoBase *area);

    /// Copies the sub-area's pixels inside the area zone's rectangle, one after the other, into
    /// the area zone's table. False for a null or empty zone, or one that lacks a pixel; what was
    /// copied before it stays.
    bool subInfoCoefToAreaCoef(MultiLayerCoefZoneInfo *subInfoCoef,
                               MultiLayerCoefZoneInfo *areaCoef);

    /// Finds the two partitions of a seam and blends their zones; skips the seam, with success, if
    /// one of them is not corrected. Both indices are numbers here, from 1, as the maps have them.
    /// ErrCode_Failed if a record or a zone is missing.
    enum_ErrCodeType startRevise(enum_ReviseDirection direction, int currentIndex, int nextIndex,
                                 QMap<QString, AreaInfoBase *> areas,
                                 QMap<int, MultiLayerCoefZoneInfo *> coefs);

    /// Blends the strip that two zones share, in place. ErrCode_Failed for a null zone or values
    /// that are missing; what is blended before a failed check stays blended.
    enum_ErrCodeType partitionCoefRevise(MultiLayerCoefZoneInfo *current,
                                         MultiLayerCoefZoneInfo *next,
                                         enum_ReviseDirection direction, int edgeMargin);

    /// Cuts each corrected partition out of its revised zone into the result's table, which must
    /// have its rows, and into its files; then packs the table. Codes as in the single-layer
    /// engine.
    enum_ErrCodeType saveRevisedCoef(const QMap<int, MultiLayerCoefZoneInfo *> &coefs,
                                     QMap<QString, AreaInfoBase *> areas, QString dir,
                                     enum_ScreenType screenType, ST_ReviseResult &result);

    /// Writes a zone's table and packed bytes to their two encrypted files; makes dir. These three
    /// are false for a null zone, or if a file is not written whole.
    bool saveCombineAreaCoef(QString dir, MultiLayerCoefZoneInfo *zone);
    /// Writes dir + "/" + area id + "_m"; dir must exist.
    bool saveCombineAreaOrgCoef(QString dir, MultiLayerCoefZoneInfo *zone);
    /// Writes dir + "/" + area id + "_zip"; dir must exist.
    bool saveCombineAreaZipCoef(QString dir, MultiLayerCoefZoneInfo *zone);

    /// The two halves of readCoef(): "_m", whose rows beyond the partition's are dropped and longer
    /// ones keep their tails, and "_zip". False, and the argument as it was, if the file is
    /// missing, does not decrypt or is too short.
    bool readOrgCoef(QString dir, QString areaId, std::vector<std::vector<int>> &coefTable);
    bool readZipCoef(QString dir, QString areaId, std::vector<unsigned char> &zipBytes);

    std::vector<unsigned int> m_layerParams; ///< as given to the constructor
    int m_layerSize = 4;                     ///< layers per colour; may be 0 or negative

private:
    class Revision;
    class Saving;

    /// Values of a pixel: 3 * layer count, none for a layer count below 1.
    std::size_t valuesPerPixel() const;
};

#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif
