#pragma once

#include "coeffiles/preparedfiles.h"
#include "seamrevision/areainfobase.h"
#include "seamrevision/multilayercoefzoneinfo.h"

#include <QString>

#include <cstddef>
#include <vector>

namespace seamrevision
{

/// The two files of a partition as saving will write them, read from its zone, which must outlive
/// them: the own pixels, zeros where the zone does not reach. None where the zone lacks rows, or
/// with another packed width or rows of another length than valuesPerPixel, which have their own
/// ways of being packed.
std::vector<ComingFile> comingFiles(const QString &directory, const MultiLayerCoefZoneInfo &zone,
                                    const AreaInfoBase &area, std::size_t valuesPerPixel,
                                    unsigned int packedWidth);

} // namespace seamrevision
