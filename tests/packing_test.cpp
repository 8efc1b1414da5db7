#include "multilayer/packing.h"

#include <gtest/gtest.h>

#include <climits>

TEST(Packing, CodesAndWidths)
{
    using Bytes = std::vector<unsigned char>;
    const std::vector<int> pixel{512, 513, 514, 2559, 2560, 4096, 0, -7, 1500};
    // The words 1 << 20, 0x3FFFFFFF and 494 << 20.
    const Bytes words{0, 0, 0x10, 0, 0xFF, 0xFF, 0xFF, 0x3F, 0, 0, 0xE0, 0x1E};
    const auto cut = [&](std::ptrdiff_t used, std::size_t size) {
        Bytes bytes(words.begin(), words.begin() + used);
        bytes.resize(size);
        return bytes;
    };
    Bytes twice = cut(9, 9);
    twice.insert(twice.end(), words.begin(), words.begin() + 9);
    const NQRect one(3, 5, 3, 5);
    const struct
    {
        std::vector<std::vector<int>> table;
        unsigned int width;
        int layers;
        NQRect rect;
        Bytes packed;
    } rows[] = {
        {{pixel}, 4, 3, one, words},
        {{{INT_MIN, INT_MAX, 512}}, 4, 1, one, {0, 0xFC, 0x0F, 0}},
        // A pixel of three words has 3 bytes at width 1, 6 at 2, 9 at 3 and 15 at 5.
        {{pixel}, 1, 3, one, cut(3, 3)},
        {{pixel}, 2, 3, one, cut(6, 6)},
        {{pixel, pixel}, 3, 3, {3, 5, 4, 5}, twice},
        {{pixel}, 5, 3, one, cut(12, 15)},
        {{pixel}, 0, 3, one, {}},
        // The output has the size of the rectangle, whatever the table holds.
        {{pixel, pixel}, 4, 3, one, words},
        {{}, 4, 1, {0, 0, 1, 0}, Bytes(8)},
        {{pixel}, 4, 1, one, cut(4, 4)},
        {{{4096, 4096}}, 4, 1, one, Bytes(4)}, // two values make no word
        {{pixel}, 4, -1, one, {}},
        {{pixel}, 4, 3, {0, 0, -5, 5}, {}},
    };
    for (const auto &row : rows) {
        Bytes packed{1, 2, 3};
        seamrevision::packCoefs(seamrevision::ledZoneInfo(row.rect), row.table, row.width,
                                row.layers, packed);
        EXPECT_EQ(packed, row.packed) << "width " << row.width << ", layers " << row.layers;
    }
}
