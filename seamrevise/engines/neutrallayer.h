#pragma once

#include <cstddef>
#include <vector>

/// Layered coefficients that change nothing: what uncorrected partitions get.
namespace seamrevise
{

constexpr int neutralLayer = 4096;
/// The packed form of a neutral layer, 0x3FFFFFFF, as it lies in the file.
constexpr unsigned char neutralWord[] = {0xFF, 0xFF, 0xFF, 0x3F};
constexpr std::size_t wordBytes = sizeof(neutralWord);

/// The values of a pixel.
inline std::vector<int> neutralRow(int layerCount)
{
    return std::vector<int>(static_cast<std::size_t>(layerCount) * 3, neutralLayer);
}

/// The packed form of pixels.
inline std::vector<unsigned char> neutralPacked(std::size_t pixels, int layerCount)
{
    std::vector<unsigned char> packed(pixels * static_cast<std::size_t>(layerCount) * wordBytes);
    for (std::size_t i = 0; i < packed.size(); ++i)
        packed[i] = neutralWord[i % wordBytes];
    return packed;
}

} // namespace seamrevise
