#include "coeffiles/preparedfiles.h"
#include "revision/exacttype.h"
#include "scarcememory.h"
#include "singlelayer/cappedcopy.h"
#include "testsupport.h"
#include "withoutrtti.h"

#include <seamrevision/des.h>
#include <seamrevision/funcrunningstate.h>

#include <QDir>

#include <gtest/gtest.h>

#include <numeric>

using wallmodel::Outcome;
using wallmodel::Wall;
using namespace scarcememory;
using namespace seamrevision;

namespace
{

using Bytes = std::vector<unsigned char>;

Bytes plaintextOf(std::size_t size, int start)
{
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(start));
    return bytes;
}

QString nameOf(int number)
{
    return QStringLiteral("dir/%1").arg(number);
}

/// As many files as gain by it on every processor, of lengths that end anywhere in a block.
std::vector<ComingFile> manyFiles()
{
    std::vector<ComingFile> files;
    for (int number = 0; number < 70; ++number) {
        const Bytes plaintext = plaintextOf(4090 + number, number);
        const auto read = [plaintext, next = 0](unsigned char *bytes, std::size_t count) mutable {
            std::copy_n(plaintext.begin() + next, count, bytes);
            next += static_cast<int>(count);
        };
        files.push_back({nameOf(number), plaintext.size(), read});
    }
    return files;
}

bool isThere(const QString &path, const Bytes &plaintext)
{
    const Ciphertext taken = PreparedFiles::take(path, plaintext);
    if (!taken.bytes)
        return false;
    Bytes expected;
    DES().DESEncrypt("qalvetor", "qalvetor", plaintext, expected);
    EXPECT_EQ(Bytes(taken.bytes.get(), taken.bytes.get() + taken.size), expected);
    return true;
}

/// A wall of 6 x 6 partitions with files: more than one group, on every processor.
Wall manyPartitions(int layers)
{
    std::vector<int> values(36);
    std::iota(values.begin(), values.end(), layers > 0 ? 4070 : 2430); // some above the cap
    Wall wall = evenWall(6, 5, 4, 2, values, layers);
    wall.screenType = 1;
    wall.stored.erase(8);
    return wall;
}

} // namespace

TEST(PreparedFiles, GiveACiphertextOnceAndOnlyForTheVeryPlaintext)
{
    EXPECT_FALSE(isThere(nameOf(0), plaintextOf(4090, 0)));
    PreparedFiles outer;
    outer.prepare(manyFiles());
    {
        PreparedFiles inner; // of another revision, which has nothing
        EXPECT_FALSE(isThere(nameOf(0), plaintextOf(4090, 0)));
    }
    const bool canPrepare = isThere(nameOf(0), plaintextOf(4090, 0));
    EXPECT_FALSE(isThere(nameOf(0), plaintextOf(4090, 0)));
    EXPECT_FALSE(isThere(nameOf(1), plaintextOf(4090, 1))); // shorter
    EXPECT_FALSE(isThere(nameOf(2), plaintextOf(4093, 2))); // longer
    for (int number = 3; number < 70; ++number) {
        Bytes plaintext = plaintextOf(4090 + number, number);
        const bool changes = number % 2 == 0;
        if (changes)
            plaintext[number < 36 ? number : plaintext.size() - 70 + number] ^= 1U << number % 8;
        EXPECT_EQ(isThere(nameOf(number), plaintext), canPrepare && !changes) << number;
    }
    outer.prepare({manyFiles().front()});
    EXPECT_FALSE(isThere(nameOf(0), plaintextOf(4090, 0))); // one alone gains nothing
}

TEST(PreparedFiles, AreAllThereOrNoneWhereMemoryRunsOut)
{
    PreparedFiles prepared;
    prepared.prepare(manyFiles());
    const bool canPrepare = isThere(nameOf(0), plaintextOf(4090, 0));
    int failures = 0;
    bool ranOut = true;
    for (int place = 0; ranOut && canPrepare; ++place) {
        const std::vector<ComingFile> files = manyFiles();
        allocationsLeft = place;
        prepared.prepare(files);
        ranOut = allocationsLeft <= 0;
        allocationsLeft = -1;
        int there = 0;
        for (int number = 0; number < 70; ++number)
            there += isThere(nameOf(number), plaintextOf(4090 + number, number)) ? 1 : 0;
        EXPECT_TRUE(there == 70 || (there == 0 && ranOut)) << there;
        failures += there == 0 ? 1 : 0;
    }
    EXPECT_EQ(failures > 100, canPrepare);
}

namespace
{

template <typename Engine>
class EveryEngine : public ::testing::Test
{
protected:
    Engine engine = makeEngine<Engine>();
};

using Engines = ::testing::Types<PartitionMerge, MultiLayerPartitionMerge, SingleLayer, Layered>;
TYPED_TEST_SUITE(EveryEngine, Engines, );

} // namespace

TYPED_TEST(EveryEngine, FilesAreReadyWhenTheyAreWrittenAndTheOnesOfThePlainModel)
{
    const Wall wall = manyPartitions(layersOf<TypeParam>);
    const Outcome expected = wallmodel::revise(wall);
    Host host(wall);
    const Outcome outcome = host.revise(this->engine);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.log, expected.log);
    EXPECT_EQ(outcome.table, expected.table);
    EXPECT_EQ(outcome.packed, expected.packed);
    EXPECT_EQ(outcome.files, expected.files);

    // Once more, and take the ciphertexts away before the writing: it goes on without them.
    int ready = 0;
    FuncRunningState::setObserver([&](const char *event, const QString &function) {
        if (*event != 'e' || !function.endsWith("::saveCombineAreaCoef"))
            return;
        for (const auto &[name, content] : expected.files) {
            const Bytes plaintext(content.begin(), content.end());
            ready += isThere(host.path(name.toUtf8()), plaintext) ? 1 : 0;
        }
    });
    EXPECT_EQ(host.revise(this->engine).files, expected.files);
    FuncRunningState::setObserver(nullptr);
    PreparedFiles prepared;
    prepared.prepare(manyFiles());
    const bool canPrepare = isThere(nameOf(0), plaintextOf(4090, 0));
    EXPECT_EQ(ready, canPrepare ? (layersOf<TypeParam> > 0 ? 70 : 35) : 0);
}

TYPED_TEST(EveryEngine, FailureAtAFileLeavesTheFilesBeforeIt)
{
    const char *const suffix = layersOf<TypeParam> > 0 ? "_m" : "";
    Wall wall = manyPartitions(layersOf<TypeParam>);
    wall.stored.erase(8);
    const Outcome expected = wallmodel::revise(wall);
    for (const int blocked : {1, 2, 9, 18, 19, 20, 36}) {
        Host host(wall);
        const QString name = QString::number(blocked) + suffix;
        QDir(host.path()).mkdir(name);
        const Outcome outcome = host.revise(this->engine);
        EXPECT_EQ(outcome.code, 1797);
        for (const auto &[number, rect] : wall.partitions) {
            const QString file = QString::number(number) + suffix;
            const bool isWritten = number < blocked || number == 8; // which comes first
            ASSERT_EQ(outcome.files.count(file), isWritten ? 1U : 0U) << number << blocked;
            EXPECT_TRUE(!isWritten || outcome.files.at(file) == expected.files.at(file));
        }
    }
}

namespace
{

/// A host's engine that changes zones while they are saved: the one at hand, and the whole zone of
/// the partition behind it.
struct EditingHost : PartitionMerge
{
    CoefsZoneInfo *getScreenCoefEx(AreaInfoBase area, int cols, int rows) override
    {
        return zones[area.getAreaNum()] = PartitionMerge::getScreenCoefEx(area, cols, rows);
    }
    bool saveCombineAreaCoef(QString dir, CoefsZoneInfo *zone) override
    {
        const int number = zone->getAreaID().toInt();
        if (number % 3 == 0)
            zone->m_arrayData.back() = 77;
        CoefsZoneInfo *const next = zones.value(QString::number(number + 1));
        if (next && number % 4 == 0)
            std::fill(next->m_arrayData.begin(), next->m_arrayData.end(), number);
        if (number == 17 && keptValues >= 0) {
            for (CoefsZoneInfo *later : qAsConst(zones))
                later->m_arrayData.resize(keptValues);
        }
        QByteArray &file = written[zone->getAreaID()];
        for (const unsigned short value : zone->m_arrayData)
            file.append(static_cast<char>(value)).append(static_cast<char>(value >> 8));
        return PartitionMerge::saveCombineAreaCoef(dir, zone);
    }
    QMap<QString, CoefsZoneInfo *> zones;
    int keptValues = -1;
    std::map<QString, QByteArray> written;
};

} // namespace

TEST(PreparedFiles, OverrideThatEditsZonesDuringSavingIsServedAsIfThereWereNone)
{
    const Wall wall = manyPartitions(0);
    EditingHost engine;
    const Outcome outcome = Host(wall).revise(engine);
    EXPECT_EQ(outcome.files, engine.written);
    EXPECT_EQ(outcome.files.at("3").back(), '\0');
    EXPECT_EQ(outcome.files.at("3")[outcome.files.at("3").size() - 2], 77);
    EXPECT_EQ(outcome.table.at(20), std::vector<int>(9, 4)); // the first pixel of partition 5

    // Zones that shrink before their group begins are not read beyond their end.
    engine.keptValues = 9;
    EXPECT_EQ(Host(wall).revise(engine).code, 1804);
}

TEST(ExactType, IsToldFromADerivedClassAlsoWithoutRtti)
{
    const PartitionMerge own;
    const SingleLayer derived;
    const MultiLayerPartitionMerge layered({});
    EXPECT_TRUE(isExactly(own));
    EXPECT_FALSE(isExactly<PartitionMerge>(derived));
    EXPECT_FALSE(isExactly<PartitionMerge>(layered));
    EXPECT_TRUE(isExactly(layered));

    Host host(manyPartitions(0));
    const Outcome expected = host.revise(*std::make_unique<PartitionMerge>());
    for (int i = 0; i < 2; ++i) {
        int sent = 0;
        EXPECT_EQ(host.revise(*engineWithoutRtti(sent)).table, expected.table);
        EXPECT_EQ(sent, 1);
    }
}

TEST(CappedCopy, FastOneGivesWhatThePlainOneGives)
{
    std::vector<unsigned short> values(80);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<unsigned short>(i % 3 == 0 ? 0x998 + i % 4 : 0xFFFF - 900 * i);
    for (std::size_t start = 0; start < 9; ++start) {
        for (std::size_t count = 0; count <= 66; ++count) {
            std::vector<unsigned short> plain(80, 7);
            std::vector<unsigned short> fast(80, 7);
            copyCappedPlainly(values.data() + 1, count, plain.data() + start);
            copyCapped(values.data() + 1, count, fast.data() + start);
            ASSERT_EQ(fast, plain) << start << ' ' << count;
        }
    }
}
