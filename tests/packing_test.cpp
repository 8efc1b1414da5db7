#include "multilayer/packing.h"

#include <gtest/gtest.h>

#include <climits>

namespace
{

using Bytes = std::vector<unsigned char>;

Bytes littleEndian(std::initializer_list<unsigned int> words)
{
    Bytes bytes;
    for (const unsigned int word : words)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<unsigned char>(word >> shift));
    return bytes;
}

} // namespace

TEST(Packing, CodesAndWidths)
{
    const std::vector<int> pixel{512, 513, 514, 2559, 2560, 4096, 0, -7, 1500};
    const Bytes words = littleEndian({1U << 20, 0x3FFFFFFFU, 494U << 20});
    const auto cut = [&](std::initializer_list<std::size_t> places, std::size_t size) {
        Bytes bytes;
        for (const std::size_t place : places)
            bytes.push_back(words[place]);
        bytes.resize(size);
        return bytes;
    };
    struct Row
    {
        std::vector<std::vector<int>> table;
        unsigned int width;
        int layers;
        NQRect rect;
        Bytes packed;
    };
    const NQRect one(3, 5, 3, 5);
    const Row rows[] = {
        {{pixel}, 4, 3, one, words},
        {{{INT_MIN, INT_MAX, 512}}, 4, 1, one, littleEndian({1023U << 10})},
        // A pixel of three words has 3 bytes at width 1, 6 at 2, 9 at 3 and 15 at 5.
        {{pixel}, 1, 3, one, cut({0, 1, 2}, 3)},
        {{pixel}, 2, 3, one, cut({0, 1, 2, 3, 4, 5}, 6)},
        {{pixel, pixel},
         3,
         3,
         {3, 5, 4, 5},
         cut({0, 1, 2, 3, 4, 5, 6, 7, 8, 0, 1, 2, 3, 4, 5, 6, 7, 8}, 18)},
        {{pixel}, 5, 3, one, cut({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, 15)},
        {{pixel}, 0, 3, one, {}},
        // The output has the size of the rectangle, whatever the table holds.
        {{pixel, pixel}, 4, 3, one, words},
        {{}, 4, 1, {0, 0, 1, 0}, Bytes(8)},
        {{pixel}, 4, 1, one, cut({0, 1, 2, 3}, 4)},
        {{{4096, 4096}}, 4, 1, one, Bytes(4)}, // two values make no word
        {{pixel}, 4, -1, one, {}},
        {{pixel}, 4, 3, {0, 0, -5, 5}, {}},
    };
    for (const Row &row : rows) {
        Bytes packed{1, 2, 3};
        seamrevision::packCoefs(seamrevision::ledZoneInfo(row.rect), row.table, row.width,
                                row.layers, packed);
        EXPECT_EQ(packed, row.packed) << "width " << row.width << ", layers " << row.layers;
    }
}
