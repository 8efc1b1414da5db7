#include "scarcememory.h"
#include "testsupport.h"

#include <seamrevision/funcrunningstate.h>
#include <seamrevision/multilayerconfig.h>

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>

using wallmodel::Outcome;
using wallmodel::Pixels;
using wallmodel::Rect;
using namespace scarcememory;

namespace
{

template <typename Engine>
class BothEngines : public ::testing::Test
{
protected:
    static constexpr bool layered = layersOf<Engine> > 0;

    /// A traced line with the number that it has in this engine.
    static QString line(char level, const char *function, int singleTag, int layeredTag,
                        const char *text)
    {
        return QString::asprintf("%c %sPartitionMerge::%s(%d): %s", level,
                                 layered ? "MultiLayer" : "", function,
                                 layered ? layeredTag : singleTag, text);
    }

    Engine engine = makeEngine<Engine>();
    LogCapture log;
};

using Engines = ::testing::Types<SingleLayer, Layered>;
TYPED_TEST_SUITE(BothEngines, Engines, );

/// Beside them the library's own classes, which spare copies.
template <typename Engine>
class OwnAndDerivedEngines : public BothEngines<Engine>
{
};

using AllEngines = ::testing::Types<PartitionMerge, MultiLayerPartitionMerge, SingleLayer, Layered>;
TYPED_TEST_SUITE(OwnAndDerivedEngines, AllEngines, );

void block(const Host &host, const char *single, const char *layered)
{
    QDir(host.path()).mkdir(host.wall.layers > 0 ? layered : single);
}

} // namespace

TYPED_TEST(OwnAndDerivedEngines, EveryFailureEndsWithItsCodeTextAndLineAndLeavesWhatWasThere)
{
    const auto traced = [](char level, int singleTag, int layeredTag, const char *text) {
        return TestFixture::line(level, "boundaryModifying", singleTag, layeredTag, text);
    };
    const QString empty = traced('D', 82, 57, "Corrected partition is empty!");
    const QString nullRecord = traced('C', 99, 74, "The pSubAreaInfo is nullptr!");
    const QString noSource
        = traced('C', 256, 219, "coefFromDB or coefsZoneInfos.value(key.toInt()) is nullptr");
    const QString notSaved = QStringLiteral("D Save revised coefficient failed!");
    const QString exception = traced('C', 310, 272, "Unexpected exception!");
    const char *const neutral = TestFixture::layered ? "2_m 2_zip" : "2";
    // Partition 2 is not corrected: its file is the first.
    const struct
    {
        void (*spoil)(Host &);
        int code;
        const char *text;
        QString lastLine;
        int corrected = 3; // partitions whose state says so in the end
        QString files = {};
    } rows[] = {
        {[](Host &h) { h.hasDatabase = false; }, 3, "",
         traced('C', 69, 43, "The pScreenDBManager is nullptr!"), 0},
        {[](Host &h) { h.onList = [] { return 1; }; }, 3341, "",
         traced('D', 77, 52, "Read screen database failed!"), 0},
        {[](Host &h) { h.onList = []() -> int { throw 1; }; }, 3, "", exception, 0},
        {[](Host &h) { h.wall.stored.clear(); }, 1796, "", empty, 0},
        {[](Host &h) { h.wall.screen.right = -1; }, 1796, "", empty, 0},
        {[](Host &h) { h.areas["3"] = nullptr; }, 3, "3", nullRecord, 1},
        {[](Host &h) { h.areas.remove("4"); }, 3, "4", nullRecord, 2, neutral},
        {[](Host &) { nothrowAllocationsLeft = 2; }, 3, "3",
         traced('C', 113, 89, "The pCoefsZoneInfo is nullptr!"), 2},
        {[](Host &) { nothrowAllocationsLeft = 4; }, 3, "",
         traced('C', 127, 101, "The pCoefsZoneInfo is nullptr!")},
        {[](Host &h) { block(h, "2", "2_m"); }, 1797, "2",
         traced('D', 164, 139, "Save combine area coefficient failed!")},
        {[](Host &h) { // the text is the key, whatever the record's number
             *h.areas["2"] = AreaInfoBase(41, 0, 4, 2, 7);
             block(h, "42", "42_m");
         },
         1797, "2", traced('D', 164, 139, "Save combine area coefficient failed!")},
        {[](Host &h) { *h.areas["2"] = AreaInfoBase(1, INT_MIN, INT_MIN, INT_MAX, INT_MAX); }, 3,
         "", exception},
        {[](Host &h) { h.onRead = [] { return -1; }; }, 1800, "1",
         "D Read current area cofficient failed!", 3, neutral},
        {[](Host &h) { h.onRead = []() -> int { throw 1; }; }, 3, "", exception, 3, neutral},
        {[](Host &h) { h.wall.stored[3].pixels.clear(); }, 3, "3", noSource, 3, neutral},
        {[](Host &h) { nothrowAllocationsLeft = h.wall.layers > 0 ? 5 : 6; }, 3, "", notSaved, 3,
         neutral},
        {[](Host &h) { block(h, "3", "3_zip"); }, 1797, "", notSaved, 3,
         TestFixture::layered ? "1_m 1_zip 2_m 2_zip 3_m" : "1 2"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        Host host(evenWall(2, 4, 3, 1, {2001, 2002, 2003, 2004}, layersOf<TypeParam>));
        host.wall.stored.erase(2);
        host.wall.screenType = 1;
        row.spoil(host);
        const Outcome outcome = host.revise(this->engine);
        nothrowAllocationsLeft = -1;

        EXPECT_EQ(outcome.code, row.code);
        EXPECT_EQ(outcome.text, row.text);
        EXPECT_EQ(outcome.log.last(), row.lastLine);
        EXPECT_TRUE(outcome.table.empty() && outcome.packed.empty());
        EXPECT_EQ(QDir(host.path()).entryList(QDir::Files).join(' '), row.files);
        const auto isCorrected = [](const auto &state) { return state.second == 2; };
        EXPECT_EQ(std::count_if(outcome.states.begin(), outcome.states.end(), isCorrected),
                  row.corrected);
    }
}

TYPED_TEST(BothEngines, ExtremesOfAnyTwoIntsEndAtOnceInACode)
{
    // A table of more than a megabyte finds no memory.
    largestAllocation = 1 << 20;
    Host host(evenWall(2, 4, 3, 1, {2001, 2002, 2003, 2004}, TypeParam::layers));
    host.wall.stored.erase(2);
    this->engine.setPScreenDb(&host);
    enum
    {
        Cols,
        Rows,
        Left,
        Top,
        Right,
        Bottom,
        BandCols,
        BandRows,
        Margin,
        Type,
        Record
    };
    const std::vector<int> usual{2, 2, 0, 0, 7, 5, 1, 1, 0, 0, 1, 0, 4, 2, 7};
    const int extremes[] = {INT_MIN, -1, 0, 1, INT_MAX};
    std::map<int, int> codes;
    const auto revise = [&](const std::vector<int> &a) {
        *host.areas["2"]
            = AreaInfoBase(a[Record], a[Record + 1], a[Record + 2], a[Record + 3], a[Record + 4]);
        QElapsedTimer timer;
        timer.start();
        const ST_ReviseResult result = this->engine.boundaryModifying(
            host.path(), enum_ScreenType(a[Type]), host.areas, {a[Cols], a[Rows]},
            {a[Left], a[Top], a[Right], a[Bottom]}, {a[BandCols], a[BandRows]}, a[Margin]);
        EXPECT_LT(timer.elapsed(), 2000);
        EXPECT_EQ(result.isSuccess, result.errCode == 0);
        this->log.take();
        ++codes[result.errCode];
        return result.errCode;
    };
    for (std::size_t i = 0; i < usual.size() && !::testing::Test::HasFailure(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            for (const int first : extremes) {
                for (const int second : extremes) {
                    std::vector<int> arguments = usual;
                    arguments[i] = first;
                    arguments[j] = second;
                    SCOPED_TRACE(::testing::PrintToString(arguments));
                    const int code = revise(arguments);
                    // The grid: nothing to walk, or partition 3 at the latest has no record.
                    const bool walks = first > 0 && second > 0 && std::max(first, second) > 1;
                    EXPECT_TRUE(i != Rows || code == (walks ? 3 : 0));
                }
            }
        }
    }
    largestAllocation = SIZE_MAX;
    EXPECT_GT(codes[0], 1000);
    EXPECT_GT(codes[3], 0);
    EXPECT_GT(codes[1796], 0);
}

namespace
{

/// An engine whose host cannot take results.
template <typename Engine>
struct ThrowingSender : Engine
{
    ST_ReviseResult sendResult(enum_ErrCodeType, const QString &, ST_ReviseResult &result) override
    {
        ++calls;
        result.errMsg = "half";
        throw 1;
    }
    int calls = 0;
};

} // namespace

TYPED_TEST(BothEngines, SendResultThatThrowsIsCalledOnceAndGivesABareFailure)
{
    const struct
    {
        void (*spoil)(Host &);
        int exceptions;
    } rows[] = {
        {[](Host &) {}, 1},
        {[](Host &h) { h.hasDatabase = false; }, 1},
        {[](Host &h) { h.onRead = []() -> int { throw 1; }; }, 2},
    };
    for (const auto &row : rows) {
        Host host(evenWall(1, 1, 1, 0, {2001}, TypeParam::layers));
        row.spoil(host);
        ThrowingSender<TypeParam> sender;
        const Outcome outcome = host.revise(sender);
        EXPECT_EQ(sender.calls, 1);
        EXPECT_EQ(outcome.code, 3);
        EXPECT_EQ(outcome.text, "");
        EXPECT_TRUE(outcome.table.empty() && outcome.packed.empty());
        EXPECT_EQ(outcome.log.filter("Unexpected exception!").size(), row.exceptions);
    }
}

TYPED_TEST(OwnAndDerivedEngines, DatabaseFindsInTheZoneWhatItLeftThere)
{
    // Partition 1 is asked for twice running, and zones of two sizes come in turns.
    Host host(evenWall(2, 4, 3, 1, {2001, 2002, 2003, 2004}, layersOf<TypeParam>));
    host.wall.stored[3].rect = host.wall.partitions[3];
    host.wall.stored[3].pixels.resize(12);
    host.wall.bandCols = host.wall.bandRows = 0;
    host.areas["01"] = host.areas["1"];
    const Outcome expected = host.revise(this->engine);
    ASSERT_EQ(expected.code, 0);
    for (const Filling filling : {Filling::InPlace, Filling::BySize, Filling::SkipRepeats}) {
        host.filling = filling;
        const Outcome outcome = host.revise(this->engine);
        EXPECT_EQ(outcome.code, 0) << int(filling);
        EXPECT_EQ(outcome.table, expected.table) << int(filling);
        EXPECT_EQ(outcome.packed, expected.packed) << int(filling);
    }
}

TYPED_TEST(BothEngines, RectanglesFarBeyondTheScreenCostNoMoreThanTheScreen)
{
    // Seams without a position on 2^31 lines, or without a line.
    const Rect pairs[][2] = {{{0, 0, INT_MAX - 1, 0}, {0, 5, INT_MAX - 1, 9}},
                             {{0, 0, INT_MAX - 1, -1}, {0, 0, INT_MAX - 1, -1}}};
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 16; ++i) {
        typename TypeParam::Zone current;
        typename TypeParam::Zone next;
        setRect(current, pairs[i % 2][0]);
        setRect(next, pairs[i % 2][1]);
        EXPECT_EQ(this->engine.partitionCoefRevise(&current, &next, enum_ReviseDirection(i % 2), 0),
                  0);
    }
    EXPECT_LT(timer.elapsed(), 2000);

    Host host(evenWall(2, 50, 100, 0, {2001, 2002}, TypeParam::layers));
    host.wall.stored.erase(2);
    constexpr int far = 500000000;
    *host.areas["2"] = AreaInfoBase(1, -far, -far, far, far);
    timer.start();
    const Outcome outcome = host.revise(this->engine);
    EXPECT_LT(timer.elapsed(), 2000);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.table.at(9950)[4], TestFixture::layered ? 0 : 2048);
}

TYPED_TEST(BothEngines, SeamLookupChecksInItsOrder)
{
    // Partitions 1 and 2: c corrected, u uncorrected, 0 null, - missing; their zones: z, 0, -.
    const struct
    {
        const char *areas, *zones;
        int current;
        int tag; // 0 when it is no failure
        const char *line;
    } rows[] = {
        {"cc", "--", 3, 321, "C The subarea index out of range!"},
        {"-c", "--", 1, 326, "W The subarea key out of range!"},
        {"0c", "--", 1, 333, "C The pAreaInfoBase is nullptr!"},
        {"c-", "--", 1, 338, "W The subarea key out of range!"},
        {"c0", "--", 1, 345, "C The pAreaInfoBase is nullptr!"},
        {"uc", "--", 1, 0, ""},
        {"cu", "--", 1, 353, "W The coefsZoneInfo key out of range!"},
        {"cc", "0-", 1, 359, "C The pCoefsZoneInfo is nullptr!"},
        {"cu", "z-", 1, 0, ""},
        {"cc", "z-", 1, 368, "W The coefsZoneInfo key out of range!"},
        {"cc", "z0", 1, 374, "C The pCoefsZoneInfo is nullptr!"},
    };
    AreaInfoBase corrected(0, 0, 0, 0, 0);
    corrected.setCorrectAreaStateType(SubAreaState_Corrected);
    AreaInfoBase uncorrected(1, 0, 0, 0, 0);
    const std::map<char, AreaInfoBase *> records{
        {'c', &corrected}, {'u', &uncorrected}, {'0', nullptr}};
    typename TypeParam::Zone zone;
    setRect(zone, {0, 0, 1, 0});
    for (const auto &row : rows) {
        QMap<QString, AreaInfoBase *> areas{{"3", &corrected}};
        QMap<int, typename TypeParam::Zone *> zones;
        for (int i = 0; i < 2; ++i) {
            if (row.areas[i] != '-')
                areas[QString::number(i + 1)] = records.at(row.areas[i]);
            if (row.zones[i] != '-')
                zones[i + 1] = row.zones[i] == 'z' ? &zone : nullptr;
        }
        EXPECT_EQ(this->engine.startRevise(ReviseDirection_Horizontal, row.current, row.current + 1,
                                           areas, zones),
                  row.tag == 0 ? 0 : 3);
        EXPECT_EQ(this->log.take().join('\n'),
                  row.tag == 0 ? QString()
                               : this->line(row.line[0], "startRevise", row.tag, row.tag + 398,
                                            row.line + 2));
    }
    // Every direction that is not horizontal is vertical; the zones have no pixels to blend.
    this->engine.startRevise(enum_ReviseDirection(7), 1, 2, {{"1", &corrected}, {"2", &corrected}},
                             {{1, &zone}, {2, &zone}});
    EXPECT_TRUE(this->log.take().last().contains(TestFixture::layered ? "(690)" : "(590)"));
}

TEST(SingleLayerSeam, FailedCheckLeavesBothZonesUnchangedAndNamesTheFirstPixel)
{
    // Strips of two positions and two lines between zones of 4 x 2 pixels. A pixel passes while it
    // lacks one value at most.
    const struct
    {
        int direction;
        std::size_t currentValues, nextValues;
        int tag; // of the last line but one; 505 where nothing failed
    } rows[] = {
        {0, 72, 72, 505}, {0, 71, 53, 505}, {0, 70, 72, 544}, {0, 72, 52, 549},
        {0, 63, 0, 549},  {1, 71, 71, 505}, {1, 70, 72, 590}, {1, 72, 70, 595},
        {1, 0, 0, 590},   {2, 0, 0, 505},   {-1, 0, 0, 505},
    };
    SingleLayer engine;
    LogCapture log;
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        const bool fails = row.tag != 505;
        CoefsZoneInfo current;
        CoefsZoneInfo next;
        setRect(current, {0, 0, 1, 3});
        setRect(next, row.direction == 1 ? Rect{0, 0, 1, 3} : Rect{0, 2, 1, 5});
        current.m_arrayData.assign(row.currentValues, 1000);
        next.m_arrayData.assign(row.nextValues, 3000);
        const auto before = std::make_pair(current.m_arrayData, next.m_arrayData);
        const auto direction = enum_ReviseDirection(row.direction);
        EXPECT_EQ(engine.partitionCoefRevise(&current, &next, direction, 0), fails ? 3 : 0);
        const QStringList lines = log.take();
        EXPECT_TRUE(lines[fails ? 1 : 0].contains(QStringLiteral("(%1)").arg(row.tag)));
        const bool blends = !fails && !before.first.empty();
        EXPECT_EQ(current.m_arrayData != before.first, blends);
        EXPECT_EQ(next.m_arrayData != before.second, blends);
    }
}

TEST(MultiLayerSeam, StopsInItsOrderAndKeepsWhatItHasBlended)
{
    // Zones of 3 x 2 pixels, the whole of which is the strip; one value a pixel. Where a table is
    // too short, the order of lines and positions decides what is blended before the failure.
    const struct
    {
        int direction;
        std::size_t currentRows, nextRows;
        int tag; // of the last line
        std::vector<int> next;
    } rows[] = {
        {0, 6, 6, 706, {100, 133, 166, 100, 133, 166}},
        {1, 6, 6, 706, {100, 100, 100, 150, 150, 150}},
        {0, 5, 6, 706, {100, 133, 166, 100, 133, 200}},
        {0, 3, 6, 655, {100, 133, 166, 200, 200, 200}},
        {1, 5, 6, 706, {100, 100, 100, 150, 150, 200}},
        {1, 3, 6, 690, {100, 100, 200, 200, 200, 200}},
        {1, 6, 1, 690, {100}},
        {2, 1, 1, 706, {200}},
    };
    Layered engine;
    LogCapture log;
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        MultiLayerCoefZoneInfo current;
        MultiLayerCoefZoneInfo next;
        setRect(current, {0, 0, 1, 2});
        setRect(next, {0, 0, 1, 2});
        current.m_multiLayerCoefs.assign(row.currentRows, {100, 7});
        next.m_multiLayerCoefs.assign(row.nextRows, {200});
        const auto direction = enum_ReviseDirection(row.direction);
        EXPECT_EQ(engine.partitionCoefRevise(&current, &next, direction, 0),
                  row.tag == 706 ? 0 : 3);
        EXPECT_TRUE(log.take().last().contains(QStringLiteral("(%1)").arg(row.tag)));
        for (std::size_t pixel = 0; pixel < row.next.size(); ++pixel)
            EXPECT_EQ(next.m_multiLayerCoefs[pixel], std::vector<int>{row.next[pixel]}) << pixel;
    }
}

TYPED_TEST(BothEngines, StepsNameWhatTheyLack)
{
    TypeParam &steps = this->engine;
    AreaInfoBase area(6, INT_MIN, 10, INT_MAX, 10);
    AreaInfoBase inverted(6, INT_MAX, 10, INT_MIN, 7);
    typename TypeParam::Zone zone;
    setPixels(zone, Pixels(1, std::vector<int>(12, 1)));
    setRect(zone, {0, 10, 0, 10});
    zone.setAreaID("7");
    int width = -1;
    int height = -1;
    ST_ReviseResult result;
    QMap<QString, AreaInfoBase *> areas;
    const auto save = [&](const QMap<int, typename TypeParam::Zone *> &zones) {
        return steps.saveRevisedCoef(zones, areas, QString(), enum_ScreenType(0), result);
    };
    EXPECT_FALSE(steps.subInfoCoefToAreaCoef(nullptr, &zone));
    EXPECT_FALSE(steps.subInfoCoefToAreaCoef(&zone, nullptr));
    EXPECT_FALSE(steps.readCofficients(&zone, &area));
    EXPECT_EQ(steps.partitionCoefRevise(nullptr, &zone, ReviseDirection_Vertical, 0), 3);
    EXPECT_EQ(steps.partitionCoefRevise(&zone, nullptr, ReviseDirection_Vertical, 0), 3);
    EXPECT_EQ(save({}), 3);
    EXPECT_EQ(save({{1, nullptr}}), 3);
    EXPECT_EQ(save({{1, &zone}}), 3);
    steps.AreaInfoToCoefZoneInfo(nullptr, &area, width, height);
    steps.AreaInfoToCoefZoneInfo(&zone, nullptr, width, height);
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(-1, -1));
    // A table without the pixel behind its end, and one without the pixel before its start.
    areas["7"] = &area;
    area.setCorrectAreaStateType(SubAreaState_Corrected);
    steps.m_screenRect = {10, 0, 10, 0};
    EXPECT_EQ(save({{1, &zone}}), 1804);
    result.coefData.resize(9);
    result.multiLayerCoefData.resize(1);
    steps.m_screenRect = {11, 0, 11, 0};
    EXPECT_EQ(save({{1, &zone}}), 1804);

    const char *const noPair = "The currentArea or nextArea is nullptr!";
    const QStringList expected{
        this->line('C', "subInfoCoefToAreaCoef", 451, 560, "The subInfoCoef is nullptr!"),
        this->line('C', "subInfoCoefToAreaCoef", 456, 565, "The areaCoef is nullptr!"),
        this->line('C', "readCofficients", 867, 531, "Database management object is nullter!"),
        this->line('C', "partitionCoefRevise", 509, 628,
                   this->layered ? noPair : "The current pCoefsZoneInfo is nullptr!"),
        this->line('C', "partitionCoefRevise", 514, 628,
                   this->layered ? noPair : "The next pCoefsZoneInfo is nullptr!"),
        this->line('W', "saveRevisedCoef", 624, 283, "The coefsZoneInfo map is empty!"),
        this->line('C', "saveRevisedCoef", 634, 294, "The pCoefsZoneInfo is nullptr!"),
        this->line('C', "saveRevisedCoef", 646, 306, "The pAreaInfoBase is nullptr!"),
        "C PartitionMerge::AreaInfoToCoefZoneInfo(839): coefZoneInfo is nullptr!",
        "C PartitionMerge::AreaInfoToCoefZoneInfo(844): coefZoneInfo is nullptr!",
        this->line('C', "saveRevisedCoef", 733, 352, "Index out of range!"),
        this->line('C', "saveRevisedCoef", 733, 352, "Index out of range!")};
    EXPECT_EQ(this->log.take().filter(QRegularExpression("^[CW]")).join('\n'), expected.join('\n'));

    steps.AreaInfoToCoefZoneInfo(&zone, &area, width, height);
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(1, INT_MAX));
    steps.AreaInfoToCoefZoneInfo(&zone, &inverted, width, height);
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(-2, INT_MIN));
}

TEST(MultiLayerEngine, PackedWidthIsReadAtEveryPackingBehindTheDumpBeforeIt)
{
    // The width grows by one with every dump that saving takes: two a partition and the screen's.
    Host host(evenWall(2, 1, 1, 0, {2001, 2002}, 1));
    host.wall.screenType = 1;
    Layered engine;
    engine.setLayerSize(1);
    bool saving = false;
    unsigned int width = 0;
    FuncRunningState::setObserver([&](const char *event, const QString &function) {
        saving = saving || function.endsWith("::saveRevisedCoef");
        if (saving && function == "outData" && *event == 'l')
            MultiLayerConfig::instance()->setCoefBitWide(++width);
    });
    MultiLayerConfig::instance()->setCoefBitWide(width);
    const Outcome outcome = host.revise(engine);
    FuncRunningState::setObserver(nullptr);
    MultiLayerConfig::instance()->setCoefBitWide(4);
    EXPECT_EQ(outcome.files.at("1_zip").size(), 1);
    EXPECT_EQ(outcome.files.at("2_zip").size(), 3);
    EXPECT_EQ(outcome.packed.size(), 2U * 5);
}

TEST(MultiLayerEngine, LayerCountsBelowOneEndWithoutACrash)
{
    for (const int layers : {0, -1, INT_MIN}) {
        Host host(evenWall(2, 4, 3, 1, {2001, 2002, 2003, 2004}, 4));
        host.wall.stored.erase(4);
        host.wall.screenType = layers == 0 ? 1 : 0;
        Layered engine;
        engine.setLayerSize(layers);
        const Outcome outcome = host.revise(engine);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(host.askedLayers, static_cast<unsigned int>(layers));
        EXPECT_TRUE(outcome.packed.empty());
    }
}
