#pragma once

class AreaInfoBase;
class MultiLayerCoefZoneInfo;

namespace seamrevise
{

/// Writes the two text dumps that the layered engine writes of a stored zone as it is read, the
/// zone and the partition's own pixels of it, if the library's dumps are switched on. A file that
/// cannot be opened is passed over, as in the library.
void dumpStored(const MultiLayerCoefZoneInfo &stored, const AreaInfoBase &area, int layerCount);

} // namespace seamrevise
