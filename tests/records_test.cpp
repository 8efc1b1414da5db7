#include "records/areainfobase.h"
#include "records/coefszoneinfo.h"
#include "records/errinfo.h"
#include "records/nqrect.h"
#include "records/revisetypes.h"
#include "records/trace.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <climits>

TEST(Records, RectanglesCountTheirPixelsWithoutOverflow)
{
    struct Row
    {
        NQRect rect;
        int width;
        int area;
    };
    const Row rows[] = {
        {NQRect(), 0, 0},
        {{3, 5, 3, 5}, 1, 1},
        {{-2, -1, 1, 1}, 4, 12},
        {{5, 0, 3, 9}, 0, 0},
        {{0, 9, 3, 5}, 4, 0},
        {{0, 0, 65535, 32766}, 65536, 65536 * 32767},
        {{0, 0, 65535, 32767}, 65536, INT_MAX},
        {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, INT_MAX, INT_MAX},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(row.rect.width(), row.width);
        EXPECT_EQ(row.rect.area(), row.area);
    }
    EXPECT_EQ(AreaInfoBase(INT_MAX, 0, 0, 0, 0).getAreaNum(), QStringLiteral("2147483648"));
}

TEST(Records, TracedLinesCarryFunctionTagAndTextUnquoted)
{
    LogCapture log;
    {
        const seamrevision::Trace trace(QStringLiteral("Class::step"));
        trace.debug(7, "enter!");
        trace.warning(8, "The \"key\" is missing");
        trace.critical(9, "Über");
        seamrevision::logPlain("Partition fusion completed! ");
    }
    const QStringList expected{
        "D Class::step(7): enter!", "W Class::step(8): The \"key\" is missing",
        QString::fromUtf8("C Class::step(9): Über"), "D Partition fusion completed! "};
    EXPECT_EQ(log.take().join('\n'), expected.join('\n'));
}
