#include "scarcememory.h"
#include "testsupport.h"
#include <seamrevision/funcrunningstate.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace scarcememory;

namespace
{

/// A wall with a seam, a partition that is not corrected, files, and whatever a revision left.
template <typename Engine>
class ScarceMemory : public ::testing::Test
{
protected:
    ScarceMemory()
    {
        host.wall.stored.erase(4);
        engine.setPScreenDb(&host);
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        FuncRunningState::setObserver([this](const char *event, const QString &) {
            lastEvent = std::make_unique<std::string>(event); // needs memory too
        });
    }
    ~ScarceMemory() override
    {
        FuncRunningState::setObserver(nullptr);
        qInstallMessageHandler(nullptr);
    }

    enum_ErrCodeType revise()
    {
        const ST_ReviseResult result = engine.boundaryModifying(
            directory, ScreenType_PartitionFile, host.areas, {2, 2}, {0, 0, 1, 1}, {1, 1}, 0);
        EXPECT_EQ(result.isSuccess, result.errCode == 0);
        EXPECT_EQ(result.coefData.empty() && result.multiLayerCoefData.empty(),
                  result.errCode != 0);
        return result.errCode;
    }

    /// Runs an operation that says whether it succeeded for every place at which memory may run
    /// out; returns how often it failed.
    template <typename Operation>
    static int failures(Operation operation)
    {
        EXPECT_TRUE(operation()); // what Qt sets up at its first use is not what is tested
        int count = 0;
        bool ranOut = true;
        for (int place = 0; ranOut && !::testing::Test::HasFailure(); ++place) {
            SCOPED_TRACE(place);
            allocationsLeft = place;
            bool success = false;
            try {
                success = operation();
            } catch (...) {
                allocationsLeft = -1;
                ADD_FAILURE() << "it throws";
            }
            ranOut = allocationsLeft <= 0;
            allocationsLeft = -1;
            count += success ? 0 : 1;
        }
        return count;
    }

    Host host{evenWall(2, 1, 1, 1, {2001, 2002, 2003, 2004}, layersOf<Engine>)};
    const QString directory = host.path();
    Engine engine = makeEngine<Engine>();
    std::unique_ptr<std::string> lastEvent;
};

using Engines = ::testing::Types<PartitionMerge, MultiLayerPartitionMerge, SingleLayer, Layered>;
TYPED_TEST_SUITE(ScarceMemory, Engines, );

TYPED_TEST(ScarceMemory, NothingLeavesAnOperationWhenItStaysExhausted)
{
    const QTemporaryDir dumps;
    const ExportTo exporting(dumps.path());
    EXPECT_GT(this->failures([&] { return this->revise() == ErrCode_Success; }), 100);
    const QString id("1");
    std::vector<unsigned short> values;
    wallmodel::Pixels table;
    std::vector<unsigned char> packed;
    EXPECT_GT(this->failures([&] {
        if constexpr (layersOf < TypeParam >> 0)
            return this->engine.readCoef(this->directory, id, table, packed);
        else
            return this->engine.readCoef(this->directory, id, values);
    }),
              1);
}

TYPED_TEST(ScarceMemory, DumpsNeverFailARevision)
{
    failsOnce = true;
    const auto fails = [&] { return this->failures([&] { return this->revise() == 0; }); };
    const int withoutDumps = fails();
    const QTemporaryDir dumps;
    const ExportTo exporting(dumps.path());
    EXPECT_EQ(fails(), withoutDumps);
    failsOnce = false;
}

} // namespace
