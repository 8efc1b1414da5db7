#pragma once

#include <QtGlobal>

#include <cstddef>

/// The only arithmetic of a revision: the linear ramp across a strip.
///
/// The ramp of a (current zone) and b (next zone) at position p of a strip of width n is
///     t1 = float((n - p) * a) / float(n),  t2 = float(p * b) / float(n),  int(t1 + t2)
/// with 32-bit products that wrap, single-precision quotients and sum, and truncation toward
/// zero; a sum that no int holds becomes the lowest int. A 16-bit result keeps the low 16 bits.
///
/// Every function writes the ramp of current[i] and next[i] to both. The two runs are the same
/// one or do not overlap. Nothing is allocated, nothing can fail. 0 <= position < width.
namespace seamrevision
{

/// One run at a single position: a row of a vertical strip.
void blendLevel(quint16 *current, quint16 *next, std::size_t valueCount, qint32 position,
                qint32 width);

/// One run whose value i is at position positions[i]: a line of a horizontal strip.
void blendRamp(quint16 *current, quint16 *next, std::size_t valueCount, const qint32 *positions,
               qint32 width);

/// One run at a single position: the layered values of one pixel.
void blendLevel(qint32 *current, qint32 *next, std::size_t valueCount, qint32 position,
                qint32 width);

/// One version of the three functions. All versions give the same bits.
struct BlendVersion
{
    void (*level16)(quint16 *current, quint16 *next, std::size_t valueCount, qint32 position,
                    qint32 width);
    void (*ramp16)(quint16 *current, quint16 *next, std::size_t valueCount, const qint32 *positions,
                   qint32 width);
    void (*level32)(qint32 *current, qint32 *next, std::size_t valueCount, qint32 position,
                    qint32 width);
};

/// The formula as it stands, for any processor: what the other version is compared with.
const BlendVersion &plainBlend();

/// The version for AVX2 with fused multiply-add; nullptr when the library was built for another
/// kind of processor or this one lacks them.
const BlendVersion *avx2Blend();

} // namespace seamrevision
