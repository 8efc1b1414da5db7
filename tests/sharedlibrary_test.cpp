// The library as it ships: whatever is used here must be exported, and there once per process.

#include "multilayer/multilayerpartitionmerge.h"
#include "records/des.h"
#include "records/errinfo.h"
#include "records/funcrunningstate.h"
#include "records/localconfig.h"
#include "records/multilayerconfig.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{

/// Two partitions of 3 x 2 pixels side by side, each stored with one value everywhere.
class TwoPartitions
{
public:
    TwoPartitions(std::size_t valuesPerPixel, int leftValue, int rightValue)
    {
        const auto stored = [&](int value) {
            const std::vector<int> pixel(valuesPerPixel, value);
            return wallmodel::Zone{{0, 0, 1, 5}, wallmodel::Pixels(12, pixel)};
        };
        m_database.stored = {{1, stored(leftValue)}, {2, stored(rightValue)}};
    }

    ST_ReviseResult revise(PartitionMerge &engine)
    {
        engine.setPScreenDb(&m_database);
        return engine.boundaryModifying(QString(), enum_ScreenType(0), m_partitions.map,
                                        baseCommon::NQSize(2, 1), NQRect(0, 0, 5, 1),
                                        baseCommon::NQSize(2, 2), 0);
    }

private:
    MemoryDatabase m_database;
    Partitions m_partitions{{{1, {0, 0, 1, 2}}, {2, {0, 3, 1, 5}}}};
};

} // namespace

TEST(SharedLibrary, TheSingleLayerEngineRevisesAScreen)
{
    PartitionMerge engine;
    const ST_ReviseResult result = TwoPartitions(9, 1000, 2000).revise(engine);
    ASSERT_EQ(result.errCode, ErrCode_Success);
    ASSERT_EQ(result.coefData.size(), 12U * 9);
    // A strip of four positions, columns 1 to 4.
    const int expected[] = {1000, 1000, 1250, 1500, 1750, 2000};
    for (std::size_t i = 0; i < result.coefData.size(); ++i)
        EXPECT_EQ(result.coefData[i], expected[i / 9 % 6]) << i;
}

TEST(SharedLibrary, TheLayeredEngineRevisesAScreen)
{
    MultiLayerPartitionMerge engine({1, 2});
    engine.setLayerSize(2);
    const ST_ReviseResult result = TwoPartitions(6, -1000, 3000).revise(engine);
    ASSERT_EQ(result.errCode, ErrCode_Success);
    EXPECT_EQ(result.zipCoefData.size(), 12U * 4 * 2);
    ASSERT_EQ(result.multiLayerCoefData.size(), 12U);
    const int expected[] = {-1000, -1000, 0, 1000, 2000, 3000};
    for (std::size_t i = 0; i < result.multiLayerCoefData.size(); ++i)
        EXPECT_EQ(result.multiLayerCoefData[i], std::vector<int>(6, expected[i % 6])) << i;
}

TEST(SharedLibrary, BothEnginesShareTheMetaObjectOfTheFirst)
{
    const PartitionMerge engine;
    const MultiLayerPartitionMerge layeredEngine({});
    EXPECT_STREQ(engine.metaObject()->className(), "PartitionMerge");
    EXPECT_EQ(layeredEngine.metaObject(), &PartitionMerge::staticMetaObject);
}

TEST(SharedLibrary, WhatTheHostSetsTheLibrarySees)
{
    const QTemporaryDir directory;
    {
        const ExportTo on(directory.path());
        PartitionMerge engine;
        TwoPartitions(9, 1000, 2000).revise(engine);
    }
    EXPECT_EQ(filesIn(directory.path()).count(QStringLiteral("normal_areaEx_2_after.txt")), 1U);

    MultiLayerConfig::instance()->setCoefBitWide(5);
    MultiLayerPartitionMerge engine({});
    engine.setLayerSize(1);
    EXPECT_EQ(TwoPartitions(3, 1, 2).revise(engine).zipCoefData.size(), 12U * 5);
    MultiLayerConfig::instance()->setCoefBitWide(4);
}

TEST(SharedLibrary, AnObserverOfTheHostIsToldEveryStep)
{
    QStringList events;
    FuncRunningState::setObserver([&](const char *event, const QString &function) {
        events << QLatin1String(event) + QLatin1Char(' ') + function;
    });
    PartitionMerge engine;
    TwoPartitions(9, 1000, 2000).revise(engine);
    FuncRunningState::setObserver({});

    ASSERT_GT(events.size(), 2);
    EXPECT_EQ(events.first(), QStringLiteral("entered PartitionMerge::boundaryModifying"));
    EXPECT_EQ(events.count(QStringLiteral("entered PartitionMerge::partitionCoefRevise")), 1);
    EXPECT_EQ(events.last(), QStringLiteral("left PartitionMerge::boundaryModifying"));
}

TEST(SharedLibrary, TheCipherAndTheLogTextAreThereForHosts)
{
    const std::vector<unsigned char> plain = {1, 2, 3};
    std::vector<unsigned char> cipher;
    std::vector<unsigned char> back;
    ASSERT_TRUE(DES().DESEncrypt("qalvetor", "qalvetor", plain, cipher));
    ASSERT_TRUE(DES().DESDecrypt("qalvetor", "qalvetor", cipher, back));
    EXPECT_EQ(back, plain);
    EXPECT_EQ(generateErrInfo(QStringLiteral("f"), 7, QStringLiteral("m")), "f(7): m");
}
