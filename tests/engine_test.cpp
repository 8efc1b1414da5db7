#include "coeffiles/coefcontainer.h"
#include "multilayer/multilayerpartitionmerge.h"
#include "testsupport.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <new>

using wallmodel::Pixels;
using wallmodel::Rect;
using wallmodel::Zone;

namespace
{

/// How many non-throwing allocations succeed before one fails; none fails while it is negative.
int nothrowAllocationsLeft = -1;

} // namespace

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    if (nothrowAllocationsLeft == 0)
        return nullptr;
    if (nothrowAllocationsLeft > 0)
        --nothrowAllocationsLeft;
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}

namespace
{

/// The engines with their steps in the open, and what differs between them in these tests.
struct SingleLayer : PartitionMerge
{
    using PartitionMerge::AreaInfoToCoefZoneInfo;
    using PartitionMerge::m_areas;
    using PartitionMerge::m_screenRect;
    using PartitionMerge::partitionCoefRevise;
    using PartitionMerge::saveRevisedCoef;
    using PartitionMerge::sendResult;
    using PartitionMerge::startRevise;
    using PartitionMerge::subInfoCoefToAreaCoef;
    using ZoneType = CoefsZoneInfo;
    static constexpr bool layered = false;
    static constexpr int valuesPerPixel = 9;

    static void fill(ZoneType &zone, const Pixels &pixels) { zone.m_arrayData = flat(pixels); }
    static Pixels pixels(const ZoneType &zone) { return pixelsOf(zone.m_arrayData); }
};

struct Layered : MultiLayerPartitionMerge
{
    Layered()
        : MultiLayerPartitionMerge({})
    {
    }
    using MultiLayerPartitionMerge::partitionCoefRevise;
    using MultiLayerPartitionMerge::saveRevisedCoef;
    using MultiLayerPartitionMerge::startRevise;
    using MultiLayerPartitionMerge::subInfoCoefToAreaCoef;
    using PartitionMerge::m_screenRect;
    using ZoneType = MultiLayerCoefZoneInfo;
    static constexpr bool layered = true;
    static constexpr int valuesPerPixel = 12;

    static void fill(ZoneType &zone, const Pixels &pixels) { zone.m_multiLayerCoefs = pixels; }
    static Pixels pixels(const ZoneType &zone) { return zone.m_multiLayerCoefs; }
};

template <typename Engine>
class BothEngines : public ::testing::Test
{
public:
    static typename Engine::ZoneType makeZone(const Rect &rect, int value)
    {
        typename Engine::ZoneType zone;
        setRect(zone, rect);
        Engine::fill(zone, Pixels(rect.area(), std::vector<int>(Engine::valuesPerPixel, value)));
        return zone;
    }

    /// "C PartitionMerge::startRevise(" and so on, as far as the tag.
    static QString line(char level, const char *function, int tag, const char *text)
    {
        return QStringLiteral("%1 %2::%3(%4): %5")
            .arg(QLatin1Char(level))
            .arg(Engine::layered ? "MultiLayerPartitionMerge" : "PartitionMerge")
            .arg(function)
            .arg(tag)
            .arg(text);
    }
};

using Engines = ::testing::Types<SingleLayer, Layered>;
TYPED_TEST_SUITE(BothEngines, Engines, );

/// A wall of 2 x 2 partitions of 4 x 3 pixels, all corrected, that a row of a table spoils.
struct Revision
{
    explicit Revision(int valuesPerPixel)
    {
        for (int number = 1; number <= 4; ++number) {
            const int top = number > 2 ? 3 : 0;
            const int left = number % 2 == 0 ? 4 : 0;
            rects[number] = {top, left, top + 2, left + 3};
            const Rect whole{0, 0, 5, 7};
            database.stored[number]
                = {whole, Pixels(whole.area(), std::vector<int>(valuesPerPixel, 2000 + number))};
        }
        partitions = std::make_unique<Partitions>(rects);
    }

    std::map<int, Rect> rects;
    MemoryDatabase database;
    std::unique_ptr<Partitions> partitions;
    NQRect screen{0, 0, 7, 5};
    bool hasDatabase = true;
    int allocations = -1;
    const char *blockedFile = nullptr; ///< a directory of this name is in the way
    int screenType = 0;
};

} // namespace

TYPED_TEST(BothEngines, EveryFailureEndsWithItsCodeTextAndLineAndLeavesWhatWasWritten)
{
    using Fault = MemoryDatabase::Fault;
    constexpr bool layered = TypeParam::layered;
    const auto traced = [&](char level, int singleTag, int layeredTag, const char *text) {
        return TestFixture::line(level, "boundaryModifying", layered ? layeredTag : singleTag,
                                 text);
    };
    const QString nullRecord = traced('C', 99, 74, "The pSubAreaInfo is nullptr!");
    const QString notSaved = QStringLiteral("D Save revised coefficient failed!");
    const QString exception = traced('C', 310, 272, "Unexpected exception!");
    struct Row
    {
        const char *name;
        std::function<void(Revision &)> spoil;
        int code;
        const char *text;
        QString lastLine;
        QStringList files = {};
    };
    const Row rows[] = {
        {"no database", [](Revision &r) { r.hasDatabase = false; }, 3, "",
         traced('C', 69, 43, "The pScreenDBManager is nullptr!")},
        {"list fails", [](Revision &r) { r.database.fault = Fault::ListFails; }, 3341, "",
         traced('D', 77, 52, "Read screen database failed!")},
        {"nothing corrected", [](Revision &r) { r.database.stored.clear(); }, 1796, "",
         traced('D', 82, 57, "Corrected partition is empty!")},
        {"screen empty",
         [](Revision &r) {
             r.screen = {0, 0, -1, 5};
         },
         1796, "", traced('D', 82, 57, "Corrected partition is empty!")},
        {"null record", [](Revision &r) { r.partitions->map["3"] = nullptr; }, 3, "3", nullRecord},
        {"incomplete grid", [](Revision &r) { r.partitions->map.remove("4"); }, 3, "4", nullRecord},
        {"no memory for a zone", [](Revision &r) { r.allocations = 1; }, 3, "2",
         traced('C', 113, 89, "The pCoefsZoneInfo is nullptr!")},
        {"no memory for the scratch zone", [](Revision &r) { r.allocations = 4; }, 3, "",
         traced('C', 127, 101, "The pCoefsZoneInfo is nullptr!")},
        {"no memory while saving", [](Revision &r) { r.allocations = layered ? 5 : 6; }, 3, "",
         notSaved},
        {"identity not saved",
         [](Revision &r) {
             r.database.stored.erase(2);
             r.database.stored.erase(3);
             r.screenType = 1;
             r.blockedFile = layered ? "3_m" : "3";
         },
         1797, "3", traced('D', 164, 139, "Save combine area coefficient failed!"),
         layered ? QStringList{"2_m", "2_zip"} : QStringList{"2"}},
        {"absurd partition",
         [](Revision &r) {
             r.database.stored.erase(2);
             r.screenType = 1;
             *r.partitions->map["2"] = AreaInfoBase(1, INT_MIN, INT_MIN, INT_MAX, INT_MAX);
         },
         3, "", exception},
        {"read fails", [](Revision &r) { r.database.fault = Fault::ReadFails; }, 1800, "1",
         QStringLiteral("D Read current area cofficient failed!")},
        {"stored zone empty", [](Revision &r) { r.database.stored[2].pixels.clear(); }, 3, "2",
         traced('C', 256, 219, "coefFromDB or coefsZoneInfos.value(key.toInt()) is nullptr")},
        {"file not saved",
         [](Revision &r) {
             r.screenType = 1;
             r.blockedFile = layered ? "2_zip" : "2";
         },
         1797, "", notSaved, layered ? QStringList{"1_m", "1_zip", "2_m"} : QStringList{"1"}},
        {"list throws", [](Revision &r) { r.database.fault = Fault::ListThrows; }, 3, "",
         exception},
        {"read throws", [](Revision &r) { r.database.fault = Fault::ReadThrows; }, 3, "",
         exception},
    };
    TypeParam engine;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Revision revision(TypeParam::valuesPerPixel);
        row.spoil(revision);
        const QTemporaryDir directory;
        if (revision.blockedFile)
            QDir(directory.path()).mkdir(revision.blockedFile);
        engine.setPScreenDb(revision.hasDatabase ? &revision.database : nullptr);
        LogCapture log;
        nothrowAllocationsLeft = revision.allocations;
        const ST_ReviseResult result = engine.boundaryModifying(
            directory.path(), enum_ScreenType(revision.screenType), revision.partitions->map,
            {2, 2}, revision.screen, {1, 1}, 0);
        nothrowAllocationsLeft = -1;

        EXPECT_EQ(result.errCode, row.code);
        EXPECT_EQ(result.errMsg, row.text);
        EXPECT_EQ(result.isSuccess, 0);
        EXPECT_TRUE(result.coefData.empty() && result.multiLayerCoefData.empty()
                    && result.zipCoefData.empty());
        EXPECT_EQ(log.take().last(), row.lastLine);
        EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files), row.files);
    }
}

TYPED_TEST(BothEngines, SeamLookupChecksInItsOrder)
{
    // Partitions 1 and 2: c corrected, u uncorrected, 0 null, - missing; their zones: z, 0, -.
    struct Row
    {
        const char *areas;
        const char *zones;
        int current;
        int code;
        int tag; // of the single-layer engine
        const char *line;
    };
    const Row rows[] = {
        {"cc", "--", 3, 3, 321, "C The subarea index out of range!"},
        {"-c", "--", 1, 3, 326, "W The subarea key out of range!"},
        {"0c", "--", 1, 3, 333, "C The pAreaInfoBase is nullptr!"},
        {"c-", "--", 1, 3, 338, "W The subarea key out of range!"},
        {"c0", "--", 1, 3, 345, "C The pAreaInfoBase is nullptr!"},
        {"uc", "--", 1, 0, 0, ""},
        {"cu", "--", 1, 3, 353, "W The coefsZoneInfo key out of range!"},
        {"cc", "0-", 1, 3, 359, "C The pCoefsZoneInfo is nullptr!"},
        {"cu", "z-", 1, 0, 0, ""},
        {"cc", "z-", 1, 3, 368, "W The coefsZoneInfo key out of range!"},
        {"cc", "z0", 1, 3, 374, "C The pCoefsZoneInfo is nullptr!"},
    };
    AreaInfoBase corrected(0, 0, 0, 0, 0);
    corrected.setCorrectAreaStateType(SubAreaState_Corrected);
    AreaInfoBase uncorrected(1, 0, 0, 0, 0);
    auto zone = TestFixture::makeZone({0, 0, 0, 0}, 1);
    QMap<QString, AreaInfoBase *> areas;
    QMap<int, typename TypeParam::ZoneType *> zones;
    TypeParam engine;
    LogCapture log;
    for (const Row &row : rows) {
        areas = {{"3", &corrected}};
        zones.clear();
        for (int i = 0; i < 2; ++i) {
            if (row.areas[i] != '-')
                areas[QString::number(i + 1)] = row.areas[i] == 'c' ? &corrected
                    : row.areas[i] == 'u'                           ? &uncorrected
                                                                    : nullptr;
            if (row.zones[i] != '-')
                zones[i + 1] = row.zones[i] == 'z' ? &zone : nullptr;
        }
        EXPECT_EQ(engine.startRevise(ReviseDirection_Horizontal, row.current, row.current + 1,
                                     areas, zones),
                  row.code);
        const int tag = row.tag + (TypeParam::layered ? 398 : 0);
        const QStringList expected = row.code == 0
            ? QStringList()
            : QStringList(TestFixture::line(*row.line, "startRevise", tag, row.line + 2));
        EXPECT_EQ(log.take().join('\n'), expected.join('\n')) << row.tag;
    }
    // Every direction that is not horizontal is vertical: position 1 of 2 takes the mean.
    auto upper = TestFixture::makeZone({0, 0, 1, 0}, 1000);
    auto lower = TestFixture::makeZone({0, 0, 1, 0}, 3000);
    areas["2"] = &corrected;
    engine.startRevise(enum_ReviseDirection(7), 1, 2, areas, {{1, &upper}, {2, &lower}});
    EXPECT_EQ(TypeParam::pixels(lower),
              (Pixels{std::vector<int>(TypeParam::valuesPerPixel, 1000),
                      std::vector<int>(TypeParam::valuesPerPixel, 2000)}));
}

TEST(SingleLayerSeam, FailedCheckLeavesBothZonesUnchangedAndNamesTheFirstPixel)
{
    // Strips of two positions and two lines between zones of 4 x 2 pixels (18 values a row pair).
    struct Row
    {
        int direction;
        std::size_t currentValues;
        std::size_t nextValues;
        int code;
        int tag; // of the line before the last; 505 where nothing failed
    };
    const Row rows[] = {
        {0, 72, 72, 0, 505}, {0, 63, 72, 3, 544}, {0, 72, 45, 3, 549}, {0, 63, 0, 3, 549},
        {0, 71, 72, 0, 505}, {0, 70, 72, 3, 544}, {1, 72, 72, 0, 505}, {1, 71, 72, 0, 505},
        {1, 70, 72, 3, 590}, {1, 72, 70, 3, 595}, {1, 0, 0, 3, 590},   {2, 0, 0, 0, 505},
        {0, 72, 53, 0, 505}, {-1, 0, 0, 0, 505},
    };
    SingleLayer engine;
    LogCapture log;
    for (const Row &row : rows) {
        SCOPED_TRACE(::testing::Message()
                     << row.direction << ' ' << row.currentValues << ' ' << row.nextValues);
        CoefsZoneInfo current;
        CoefsZoneInfo next;
        setRect(current, {0, 0, 1, 3});
        setRect(next, row.direction == 1 ? Rect{0, 0, 1, 3} : Rect{0, 2, 1, 5});
        current.m_arrayData.assign(row.currentValues, 1000);
        next.m_arrayData.assign(row.nextValues, 3000);
        const auto currentBefore = current.m_arrayData;
        const auto nextBefore = next.m_arrayData;
        EXPECT_EQ(
            engine.partitionCoefRevise(&current, &next, enum_ReviseDirection(row.direction), 0),
            row.code);
        const QStringList lines = log.take();
        const QString tag = QStringLiteral("(%1)").arg(row.tag);
        EXPECT_TRUE(lines[row.code == 0 ? 0 : 1].contains(tag)) << lines.join('\n').toStdString();
        EXPECT_TRUE(row.code != 0 || lines.last().contains("(612)"));
        const bool blends = row.code == 0 && (row.direction == 0 || row.direction == 1);
        EXPECT_EQ(current.m_arrayData != currentBefore, blends);
        EXPECT_EQ(next.m_arrayData != nextBefore, blends);
    }
    CoefsZoneInfo alone = BothEngines<SingleLayer>::makeZone({0, 0, 1, 1}, 65535);
    const auto before = alone.m_arrayData;
    EXPECT_EQ(engine.partitionCoefRevise(&alone, &alone, ReviseDirection_Vertical, 0), 0);
    EXPECT_EQ(alone.m_arrayData, before);
    EXPECT_EQ(engine.partitionCoefRevise(nullptr, nullptr, ReviseDirection_Vertical, 0), 3);
    EXPECT_TRUE(log.take().last().contains("(509): The current pCoefsZoneInfo is nullptr!"));
    EXPECT_EQ(engine.partitionCoefRevise(&alone, nullptr, ReviseDirection_Vertical, 0), 3);
    EXPECT_TRUE(log.take().last().contains("(514): The next pCoefsZoneInfo is nullptr!"));
}

TEST(MultiLayerSeam, StopsInItsOrderAndKeepsWhatItHasBlended)
{
    // Zones of 3 x 2 pixels, the whole of which is the strip; one value a pixel. Where a table is
    // too short, the order of lines and positions decides what is blended before the failure.
    struct Row
    {
        int direction;
        std::size_t currentRows;
        std::size_t nextRows;
        int code;
        std::vector<int> next;
    };
    const Row rows[] = {
        {0, 6, 6, 0, {100, 133, 166, 100, 133, 166}},
        {1, 6, 6, 0, {100, 100, 100, 150, 150, 150}},
        {0, 5, 6, 0, {100, 133, 166, 100, 133, 200}},
        {0, 3, 6, 3, {100, 133, 166, 200, 200, 200}},
        {1, 5, 6, 0, {100, 100, 100, 150, 150, 200}},
        {1, 3, 6, 3, {100, 100, 200, 200, 200, 200}},
        {1, 6, 1, 3, {100}},
        {2, 1, 1, 0, {200}},
    };
    Layered engine;
    LogCapture log;
    for (const Row &row : rows) {
        SCOPED_TRACE(::testing::Message() << row.direction << ' ' << row.currentRows);
        MultiLayerCoefZoneInfo current;
        MultiLayerCoefZoneInfo next;
        setRect(current, {0, 0, 1, 2});
        setRect(next, {0, 0, 1, 2});
        current.m_multiLayerCoefs.assign(row.currentRows, {100, 7});
        next.m_multiLayerCoefs.assign(row.nextRows, {200});
        EXPECT_EQ(
            engine.partitionCoefRevise(&current, &next, enum_ReviseDirection(row.direction), 0),
            row.code);
        for (std::size_t pixel = 0; pixel < row.next.size(); ++pixel)
            EXPECT_EQ(next.m_multiLayerCoefs[pixel], std::vector<int>{row.next[pixel]}) << pixel;
        const QString last = log.take().last();
        const char *const failure = row.direction == 0 ? "(655)" : "(690)";
        EXPECT_TRUE(last.contains(row.code == 0 ? "(706)" : failure)) << last.toStdString();
    }
    // The sum of the only position of a strip of width 1 is one more than an int holds.
    MultiLayerCoefZoneInfo current;
    MultiLayerCoefZoneInfo next;
    current.m_multiLayerCoefs = next.m_multiLayerCoefs = {{INT_MAX, INT_MIN, 5}};
    EXPECT_EQ(engine.partitionCoefRevise(&current, &next, ReviseDirection_Horizontal, 0), 0);
    EXPECT_EQ(next.m_multiLayerCoefs, (Pixels{{INT_MIN, INT_MIN, 5}}));
    EXPECT_EQ(engine.partitionCoefRevise(&current, nullptr, ReviseDirection_Horizontal, 0), 3);
    EXPECT_TRUE(log.take().last().contains("(628): The currentArea or nextArea is nullptr!"));
}

TYPED_TEST(BothEngines, SavingPlacesWhatFitsAndStopsAtTheFirstValueThatDoesNot)
{
    constexpr bool layered = TypeParam::layered;
    Partitions partitions({{1, {0, 0, 1, 1}}, {2, {0, 2, 1, 3}}});
    for (AreaInfoBase *area : partitions.map)
        area->setCorrectAreaStateType(SubAreaState_Corrected);
    auto first = TestFixture::makeZone({0, 0, 1, 1}, 5000);
    auto second = TestFixture::makeZone({0, 2, 1, 3}, -5);
    first.setAreaID("1");
    second.setAreaID("2");
    typename TypeParam::ZoneType empty;
    empty.setAreaID("9");
    struct Row
    {
        QMap<int, typename TypeParam::ZoneType *> zones;
        NQRect screen;
        std::size_t pixels; // of the result's table
        int code;
        int singleTag;
        int layeredTag;
        int firstValue; // of the result's table
    };
    const Row rows[] = {
        {{{1, &first}, {2, &second}}, {0, 0, 3, 1}, 8, 0, 0, 0, layered ? 4096 : 2457},
        {{{1, &first}, {2, &second}}, {0, 0, 3, 1}, 3, 1804, 733, 352, 5000},
        {{{2, &second}, {1, &first}}, {2, 0, 3, 1}, 4, 1804, 733, 352, 9},
        {{{3, &empty}}, {0, 0, 3, 1}, 1, 0, 0, 0, 9},
        {{{1, nullptr}}, {0, 0, 3, 1}, 1, 3, 634, 294, 9},
        {{}, {0, 0, 3, 1}, 1, 3, 624, 283, 9},
    };
    TypeParam engine;
    LogCapture log;
    for (const Row &row : rows) {
        engine.m_screenRect = row.screen;
        ST_ReviseResult result;
        result.rect = row.screen;
        result.coefData.assign(row.pixels * 9, 9);
        result.multiLayerCoefData.assign(row.pixels, std::vector<int>(12, 9));
        const auto code = engine.saveRevisedCoef(row.zones, partitions.map, QString(),
                                                 enum_ScreenType(0), result);
        EXPECT_EQ(code, row.code);
        EXPECT_EQ(layered ? result.multiLayerCoefData[0][0] : result.coefData[0], row.firstValue);
        const QStringList lines = log.take();
        const int tag = layered ? row.layeredTag : row.singleTag;
        EXPECT_TRUE(tag == 0 || lines.last().contains(QStringLiteral("(%1)").arg(tag)))
            << lines.join('\n').toStdString();
    }
    partitions.map.remove("2");
    ST_ReviseResult result;
    EXPECT_EQ(engine.saveRevisedCoef({{2, &second}}, partitions.map, QString(), enum_ScreenType(0),
                                     result),
              3);
    EXPECT_TRUE(log.take().last().contains("The pAreaInfoBase is nullptr!"));
}

TYPED_TEST(BothEngines, CopyReportsNullEmptyAndShortSources)
{
    constexpr bool layered = TypeParam::layered;
    auto whole = TestFixture::makeZone({0, 0, 1, 1}, 5);
    auto shorter = TestFixture::makeZone({0, 0, 0, 1}, 5);
    setRect(shorter, {0, 0, 1, 1});
    typename TypeParam::ZoneType empty;
    auto area = TestFixture::makeZone({1, 1, 1, 1}, 7);
    struct Row
    {
        typename TypeParam::ZoneType *source;
        typename TypeParam::ZoneType *target;
        char level;
        int singleTag;
        int layeredTag;
        const char *text;
    };
    const Row rows[] = {
        {nullptr, nullptr, 'C', 451, 560, "The subInfoCoef is nullptr!"},
        {&whole, nullptr, 'C', 456, 565, "The areaCoef is nullptr!"},
        {&empty, &area, 'W', 461, 570, "The subInfoCoef is empty!"},
        {&shorter, &area, 'C', 484, 598, "The index out of range!"},
    };
    TypeParam engine;
    LogCapture log;
    for (const Row &row : rows) {
        EXPECT_FALSE(engine.subInfoCoefToAreaCoef(row.source, row.target));
        const int tag = layered ? row.layeredTag : row.singleTag;
        EXPECT_EQ(log.take().last(),
                  TestFixture::line(row.level, "subInfoCoefToAreaCoef", tag, row.text));
    }
    EXPECT_EQ(area.m_arrayData.size(), layered ? 0U : 9U);
}

TEST(SingleLayerEngine, RectangleOfAPartitionNeedsBothRecords)
{
    SingleLayer engine;
    CoefsZoneInfo zone;
    AreaInfoBase area(6, INT_MIN, 10, INT_MAX, 10);
    int width = -1;
    int height = -1;
    LogCapture log;
    engine.AreaInfoToCoefZoneInfo(nullptr, &area, width, height);
    EXPECT_TRUE(log.take().last().endsWith("(839): coefZoneInfo is nullptr!"));
    engine.AreaInfoToCoefZoneInfo(&zone, nullptr, width, height);
    EXPECT_TRUE(log.take().last().endsWith("(844): coefZoneInfo is nullptr!"));
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(-1, -1));
    engine.AreaInfoToCoefZoneInfo(&zone, &area, width, height);
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(1, INT_MAX));
    EXPECT_EQ(zone.getAreaID(), QStringLiteral("7"));
}

TEST(MultiLayerEngine, LayerCountsBelowOneEndWithoutACrash)
{
    for (const int layers : {0, -1, INT_MIN}) {
        Revision revision(12);
        revision.database.stored.erase(4);
        revision.screenType = layers == 0 ? 1 : 0;
        const QTemporaryDir directory;
        Layered engine;
        engine.setLayerSize(layers);
        engine.setPScreenDb(&revision.database);
        LogCapture log;
        const ST_ReviseResult result = engine.boundaryModifying(
            directory.path(), enum_ScreenType(revision.screenType), revision.partitions->map,
            {2, 2}, revision.screen, {1, 1}, 0);
        EXPECT_EQ(result.errCode, 0);
        EXPECT_EQ(revision.database.askedLayers, static_cast<unsigned int>(layers));
        EXPECT_TRUE(result.zipCoefData.empty());
    }
}
