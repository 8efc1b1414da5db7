#include "simulation/wallsimulation.h"

#include "programsupport.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace seamrevise;

namespace
{

const NQRect screen(0, 0, 239, 119);
const StoredZone left{1, NQRect(0, 0, 139, 119)};
const StoredZone right{2, NQRect(100, 0, 239, 119)};

/// A wall without what the test is not about.
WallTraits plainTraits()
{
    WallTraits traits;
    traits.batchRange = 0.0;
    traits.deadPart = 0.0;
    traits.outlyingPart = 0.0;
    return traits;
}

std::vector<double> lightOf(const WallTraits &traits)
{
    std::vector<double> light;
    for (int row = 0; row <= screen.bottom(); ++row) {
        const std::vector<float> values = WallSimulation(traits, screen).light(row);
        light.insert(light.end(), values.begin(), values.end());
    }
    return light;
}

/// The standard deviation of neighbours' differences, without the slow changes over the wall.
double roughness(const std::vector<double> &light)
{
    double sum = 0.0;
    for (std::size_t i = 3; i < light.size(); ++i)
        sum += std::pow(light[i] - light[i - 3], 2.0);
    return std::sqrt(sum / static_cast<double>(light.size()) / 2.0);
}

TEST_F(Seamrevise, ASeedMakesTheSameWallOnEveryCompiler)
{
    const QString options
        = "simulate --size 101x62 --grid 3x2 --band 6x5 --uncorrected 5 --layers 2 --dead 1%"
          " --outlying 2% --cabinet 30x20 --shift 4=-2,1 --seed 1 --light %d/%1.npy %d/%1.db";
    expect(0, QString(options).replace("%1", "v"));
    expect(0, QString(options).replace("%1", "w"));
    EXPECT_EQ(contents("%d/v.db"), contents("%d/w.db"));
    // What gcc and clang agree on.
    const auto md5 = [](const QByteArray &bytes) {
        return QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex().toStdString();
    };
    const auto zone = [&](const QString &table) {
        const QString sql = QStringLiteral("SELECT data FROM %1 WHERE number = 4").arg(table);
        return execute(in("%d/w.db"), sql).toByteArray();
    };
    EXPECT_EQ(md5(zone("coefficients")), "f0cc05bbc257dcd5d89ea634a4519e6d");
    EXPECT_EQ(md5(zone("layered_coefficients")), "3411aeb8263b6ab491fe87027346fe8f");
    EXPECT_EQ(md5(contents("%d/w.npy")), "e7890b1b19dd45d0a9a841cecec009fc");
}

TEST(WallSimulation, CoefficientsMakeTheLightEven)
{
    WallTraits traits = plainTraits();
    traits.oneShot = true;
    const std::vector<double> light = lightOf(traits);
    const WallSimulation wall(traits, screen);
    const std::vector<unsigned short> single = wall.coefficients({1, screen});
    const std::vector<qint32> layered = wall.layeredCoefficients({1, screen}, 2);
    std::vector<double> afterSingle;
    std::vector<double> afterLayer;
    for (std::size_t i = 0; i < light.size(); ++i) {
        afterSingle.push_back(light[i] * single[i / 3 * 9 + i % 3 * 4] / 2048.0);
        afterLayer.push_back(light[i] * layered[i / 3 * 6 + i % 3] / traits.lowestLayer);
    }
    EXPECT_NEAR(roughness(light), 0.0197, 0.001);        // of brightness 0.018 and colour 0.008
    EXPECT_NEAR(roughness(afterSingle), 0.0035, 0.0005); // 0.88 times the noise, 0.004
    EXPECT_NEAR(roughness(afterLayer), 0.0057, 0.0005);  // of noise and layer, both 0.004
}

TEST(WallSimulation, ShotsDisagreeUnlessThereIsOne)
{
    for (const bool oneShot : {false, true}) {
        WallTraits traits;
        traits.oneShot = oneShot;
        const WallSimulation wall(traits, screen);
        const std::vector<unsigned short> leftValues = wall.coefficients(left);
        const std::vector<unsigned short> rightValues = wall.coefficients(right);
        std::vector<double> ratios;
        for (std::size_t row = 0; row < 120; ++row) {
            for (std::size_t col = 0; col < 40; ++col)
                ratios.push_back(leftValues[(row * 140 + 100 + col) * 9]
                                 / (rightValues[(row * 140 + col) * 9] + 1e-9));
        }
        std::nth_element(ratios.begin(), ratios.begin() + 2400, ratios.end());
        EXPECT_EQ(std::abs(ratios[2400] - 1.0) < 1e-6, oneShot) << ratios[2400];
    }
}

TEST(WallSimulation, AShiftedShotGivesEveryPixelTheCoefficientsOfAnotherLed)
{
    WallTraits traits;
    const WallSimulation straight(traits, screen);
    traits.shifts[2] = {3, -2};
    const WallSimulation shifted(traits, screen);
    const std::vector<unsigned short> before = straight.coefficients(right);
    const std::vector<unsigned short> after = shifted.coefficients(right);
    for (const std::size_t value : {0U, 4U, 8U}) {
        for (std::size_t row = 0; row < 118; ++row)
            EXPECT_EQ(after[(row * 140 + 50) * 9 + value],
                      before[((row + 2) * 140 + 47) * 9 + value]);
        EXPECT_EQ(after[119 * 140 * 9 + 50 * 9 + value], before[119 * 140 * 9 + 47 * 9 + value]);
    }
    EXPECT_EQ(shifted.layeredCoefficients(left, 1), straight.layeredCoefficients(left, 1));
}

TEST(WallSimulation, DeadAndOutlyingLedsAreAsManyAsAskedFor)
{
    WallTraits traits = plainTraits();
    traits.deadPart = 0.2;
    traits.outlyingPart = 0.1;
    const std::vector<double> light = lightOf(traits);
    const std::vector<unsigned short> values
        = WallSimulation(traits, screen).coefficients({1, screen});
    int dead = 0;
    int outlying = 0;
    for (std::size_t pixel = 0; pixel < light.size() / 3; ++pixel) {
        const bool isDead = light[pixel * 3] == 0.0;
        EXPECT_EQ(isDead, values[pixel * 9] == 0 && values[pixel * 9 + 8] == 0);
        dead += isDead ? 1 : 0;
        outlying += !isDead && std::abs(light[pixel * 3] - 1.0) > 0.15 ? 1 : 0;
    }
    EXPECT_NEAR(dead / 28800.0, 0.2, 0.01);
    EXPECT_NEAR(outlying / 28800.0, 0.1, 0.01);
}

TEST(WallSimulation, CabinetsDifferByTheirBatch)
{
    WallTraits traits = plainTraits();
    traits.batchRange = 0.2;
    traits.cabinet = {80, 60};
    const std::vector<double> light = lightOf(traits);
    double least = 2.0;
    double most = 0.0;
    for (std::size_t cabinet = 0; cabinet < 3; ++cabinet) {
        const auto first = light.begin() + static_cast<std::ptrdiff_t>(cabinet * 240);
        const double mean = std::accumulate(first, first + 240, 0.0) / 240.0;
        for (auto value = first; value != first + 240; ++value)
            EXPECT_NEAR(*value / mean, 1.0, 0.2);
        least = std::min(least, mean);
        most = std::max(most, mean);
    }
    EXPECT_GT(most - least, 0.05);
    EXPECT_GT(least, 0.8);
    EXPECT_LT(most, 1.2);
}

TEST(WallSimulation, LayersSpreadOverTheRangeOfThePackedCodes)
{
    std::vector<qint32> values = WallSimulation({}, screen).layeredCoefficients({1, screen}, 4);
    std::sort(values.begin(), values.end());
    const auto saturated = values.end() - std::lower_bound(values.begin(), values.end(), 2560);
    EXPECT_LT(saturated, static_cast<std::ptrdiff_t>(values.size() / 100));
    EXPECT_NEAR(values[values.size() / 100], 720, 60);
    EXPECT_NEAR(values[values.size() * 99 / 100], 2450, 100);
}

TEST_F(Seamrevise, OptionsOfASimulationAreCheckedTogether)
{
    const struct
    {
        int code;
        const char *words, *says;
    } rows[] = {
        {0, "--shift 1=1,0 --shift 2=-1,-12", "1 off by 1,0, 2 off by -1,-12"},
        {0, "", "4 off by 1,0"},
        {0, "--one-shot", "one for the wall"},
        {2, "--one-shot --shift 1=1,0", "exclude"},
        {2, "--shift 5=1,0", "1 to 4, not 5"},
        {2, "--shift 1=1", "--shift"},
        {2, "--batch 60%", "50%"},
        {2, "--dead 60% --outlying 0.5", "more than all"},
        {2, "--cabinet 0x5", "--cabinet"},
        {2, "--layer-gains 5", "--layer-gains"},
        {4, "--light %d/v.db", "different files"},
        {4, "--light %d", "directory"},
        {4, "--light %d/none/l.npy", "l.npy: "},
        {4, "--light /dev/null", "not a file"},
        {4, "--json %d", "Is a directory"},
    };
    for (const auto &row : rows)
        expect(row.code,
               QStringLiteral("simulate %d/v.db --force --size 40x30 --grid 2x2 ") + row.words,
               row.says);
}

TEST_F(Seamrevise, ASimulationSaysWhatItMadeAsJson)
{
    const auto parsed
        = [](const QByteArray &bytes) { return QJsonDocument::fromJson(bytes).object(); };
    const QString words
        = "simulate %d/v.db --force --size 40x30 --grid 2x1 --uncorrected 2 --json ";
    const QJsonObject printed = parsed(QByteArray::fromStdString(expect(0, words + "-")));
    EXPECT_EQ(printed["schema"], "seamrevise/1");
    EXPECT_EQ(printed["partitions"].toObject()["uncorrected"], QJsonArray({2}));
    writeFile(in("%d/v.json"), "old");
    EXPECT_NE(expect(0, words + "%d/v.json"), "");
    EXPECT_EQ(parsed(contents("%d/v.json")), printed);
}

TEST_F(Seamrevise, WhatAKilledSimulationLeftIsClearedAway)
{
    const QStringList gone = {"w.db.999999999.part", "w.db.999999999.part-journal"};
    const QStringList kept = {"w.db.1.part", "v.db.999999999.part", "w.db.part", "w.db.7x.part"};
    for (const QString &name : gone + kept)
        writeFile(in("%d/") + name, "x");
    expect(0, "simulate %d/w.db --size 9x9 --grid 1x1");
    for (const QString &name : gone)
        EXPECT_FALSE(QFile::exists(in("%d/") + name)) << name.toStdString();
    for (const QString &name : kept)
        EXPECT_TRUE(QFile::exists(in("%d/") + name)) << name.toStdString();
}

} // namespace
