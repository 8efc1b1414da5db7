#pragma once

#include "coeffiles/preparedfiles.h"
#include "records/pixelmath.h"
#include "seamrevision/areainfobase.h"

#include <QMap>
#include <QString>

#include <cstddef>
#include <functional>
#include <vector>

namespace seamrevision
{

/// Encrypts the files of zones that are about to be saved ahead of their saving, in even groups as
/// large as the memory for it allows. It calls nothing of the host's, reports nothing and cannot
/// fail: a file that it did not prepare is encrypted when it is written.
class FilesAhead
{
public:
    /// The files of all zones that saveEachZone() will save. comingFiles(zone, area) gives those of
    /// one zone as it is when its group begins; they take pixelBytes a pixel of the partition. The
    /// ciphertexts of a group take at most so many bytes.
    template <typename Zone, typename ComingFiles>
    FilesAhead(const QMap<int, Zone *> &zones, const QMap<QString, AreaInfoBase *> &areas,
               std::size_t mostBytes, std::size_t pixelBytes, ComingFiles comingFiles) noexcept
        : m_groupPixels(mostBytes / pixelBytes)
    {
        try {
            for (auto entry = zones.begin(); entry != zones.end(); ++entry) {
                const Zone *const zone = entry.value();
                const AreaInfoBase *const area = zone ? areas.value(zone->getAreaID()) : nullptr;
                if (area && area->getCorrectAreaStateType() == SubAreaState_Corrected)
                    add({entry.key(), areaPixelCount(*area),
                         [=] { return comingFiles(*zone, *area); }});
            }
            divideEvenly();
        } catch (...) { // saved without
            m_partitions.clear();
        }
    }

    /// To be called before a partition is saved, in ascending order of their numbers: prepares the
    /// next group where it begins.
    void reach(int number) noexcept;

private:
    struct Partition
    {
        int number;
        std::size_t pixels;
        std::function<std::vector<ComingFile>()> files;
    };

    void add(const Partition &partition);
    void divideEvenly();
    std::vector<ComingFile> takeGroup();

    std::size_t m_groupPixels;
    std::vector<Partition> m_partitions;
    std::size_t m_next = 0; ///< the first partition of the next group
    PreparedFiles m_prepared;
};

} // namespace seamrevision
