// The library as it ships: whatever is used here must be exported, and there once per process.

#include "testsupport.h"
#include <seamrevision/des.h>
#include <seamrevision/errinfo.h>
#include <seamrevision/funcrunningstate.h>
#include <seamrevision/multilayerconfig.h>

#include <gtest/gtest.h>

namespace
{

/// Revises two partitions of 3 pixels side by side; the strip has four positions.
wallmodel::Outcome revise(PartitionMerge &engine, const std::vector<int> &values, int layers = 0)
{
    return Host(evenWall(2, 3, 1, 2, values, layers)).revise(engine);
}

wallmodel::Pixels pixels(const std::vector<int> &values, std::size_t valuesPerPixel)
{
    wallmodel::Pixels pixels;
    for (const int value : values)
        pixels.emplace_back(valuesPerPixel, value);
    return pixels;
}

} // namespace

TEST(SharedLibrary, BothEnginesReviseAScreenAndShareAMetaObject)
{
    PartitionMerge single;
    EXPECT_EQ(revise(single, {1000, 2000}).table, pixels({1000, 1000, 1250, 1500, 1750, 2000}, 9));
    MultiLayerPartitionMerge layered({1, 2});
    layered.setLayerSize(2);
    EXPECT_EQ(revise(layered, {-1000, 3000}, 2).table,
              pixels({-1000, -1000, 0, 1000, 2000, 3000}, 6));
    EXPECT_STREQ(single.metaObject()->className(), "PartitionMerge");
    EXPECT_EQ(layered.metaObject(), &PartitionMerge::staticMetaObject);
}

TEST(SharedLibrary, WhatTheHostSetsTheLibrarySees)
{
    PartitionMerge single;
    EXPECT_EQ(revise(single, {1000, 2000}).dumps.count("normal_areaEx_2_after.txt"), 1U);
    MultiLayerConfig::instance()->setCoefBitWide(5);
    MultiLayerPartitionMerge layered({});
    layered.setLayerSize(1);
    EXPECT_EQ(revise(layered, {1, 2}, 1).packed.size(), 6U * 5);
    MultiLayerConfig::instance()->setCoefBitWide(4);
}

TEST(SharedLibrary, AnObserverOfTheHostIsToldEveryStep)
{
    QStringList events;
    FuncRunningState::setObserver([&](const char *event, const QString &function) {
        events << QLatin1String(event) + QLatin1Char(' ') + function;
    });
    PartitionMerge engine;
    revise(engine, {1000, 2000});
    FuncRunningState::setObserver({});
    ASSERT_GT(events.size(), 2);
    EXPECT_EQ(events.first(), "entered PartitionMerge::boundaryModifying");
    EXPECT_EQ(events.count("entered PartitionMerge::partitionCoefRevise"), 1);
    EXPECT_EQ(events.last(), "left PartitionMerge::boundaryModifying");
}

TEST(SharedLibrary, TheCipherAndTheLogTextAreThereForHosts)
{
    std::vector<unsigned char> cipher;
    ASSERT_TRUE(DES().DESEncrypt("qalvetor", "qalvetor", {1, 2, 3}, cipher));
    EXPECT_EQ(decrypted(QByteArray(reinterpret_cast<const char *>(cipher.data()), 8)), "\1\2\3");
    EXPECT_EQ(generateErrInfo(QStringLiteral("f"), 7, QStringLiteral("m")), "f(7): m");
}
