#include <seamrevision/areainfobase.h>
#include <seamrevision/nqrect.h>

#include <gtest/gtest.h>

#include <climits>

TEST(Records, RectanglesCountTheirPixelsWithoutOverflow)
{
    const struct
    {
        NQRect rect;
        int width, area;
    } rows[] = {
        {NQRect(), 0, 0},
        {{3, 5, 3, 5}, 1, 1},
        {{-2, -1, 1, 1}, 4, 12},
        {{5, 0, 3, 9}, 0, 0},
        {{0, 9, 3, 5}, 4, 0},
        {{0, 0, 65535, 32766}, 65536, 65536 * 32767},
        {{0, 0, 65535, 32767}, 65536, INT_MAX},
        {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, INT_MAX, INT_MAX},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(row.rect.width(), row.width);
        EXPECT_EQ(row.rect.area(), row.area);
    }
    EXPECT_EQ(AreaInfoBase(INT_MAX, 0, 0, 0, 0).getAreaNum(), QStringLiteral("2147483648"));
}
