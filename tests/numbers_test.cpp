#include "commands/loglines.h"
#include "engines/coefkind.h"
#include "engines/watchedengines.h"
#include "engines/zonerecorder.h"
#include "numbers/wallnumbers.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace seamrevise;
using wallmodel::Rect;
using wallmodel::Wall;

namespace
{

NQRect rectOf(const Rect &rect)
{
    return {rect.left, rect.top, rect.right, rect.bottom};
}

ScreenLayout layoutOf(const Wall &wall)
{
    ScreenLayout layout;
    layout.screen = rectOf(wall.screen);
    layout.grid = {wall.gridCols, wall.gridRows};
    layout.band = {wall.bandCols, wall.bandRows};
    for (const auto &[number, rect] : wall.partitions)
        layout.partitions[number] = rectOf(rect);
    return layout;
}

std::set<int> correctedOf(const Wall &wall)
{
    std::set<int> numbers;
    for (const auto &entry : wall.stored)
        numbers.insert(entry.first);
    return numbers;
}

/// A wall with partitions of many sizes, about one in five uncorrected, and dark pixels.
Wall randomWall(unsigned int seed, int layers)
{
    std::mt19937 random(seed);
    const auto between
        = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    Wall wall;
    wall.layers = layers;
    wall.gridCols = between(1, 3);
    wall.gridRows = between(1, 3);
    wall.bandCols = between(0, 5);
    wall.bandRows = between(0, 5);
    wall.margin = between(0, 2);
    wall.screenType = between(0, 1);
    std::vector<int> rows{between(-4, 4)};
    std::vector<int> cols{between(-4, 4)};
    for (int i = 0; i < wall.gridRows; ++i)
        rows.push_back(rows.back() + between(1, 40));
    for (int i = 0; i < wall.gridCols; ++i)
        cols.push_back(cols.back() + between(1, 40));
    wall.screen = {rows.front(), cols.front(), rows.back() - 1, cols.back() - 1};
    for (int row = 0; row < wall.gridRows; ++row) {
        for (int col = 0; col < wall.gridCols; ++col) {
            const int number = row * wall.gridCols + col + 1;
            const Rect own{rows[row], cols[col], rows[row + 1] - 1, cols[col + 1] - 1};
            wall.partitions[number] = own;
            if (between(1, 5) == 1 && number > 1)
                continue;
            wallmodel::Zone &zone = wall.stored[number];
            zone.rect = {own.top - wall.bandRows, own.left - wall.bandCols,
                         own.bottom + wall.bandRows, own.right + wall.bandCols};
            zone.pixels.resize(zone.rect.area());
            for (std::vector<int> &pixel : zone.pixels) {
                const bool isDark = between(1, 12) == 1;
                for (int i = 0; i < wall.valuesPerPixel(); ++i)
                    pixel.push_back(isDark ? (layers > 0 ? between(-9, 0) : 0)
                                           : between(1800, 2700) * (layers > 0 ? 2 : 1));
            }
        }
    }
    return wall;
}

struct ReckonedRun
{
    std::unique_ptr<CoefKind> kind;
    WallNumbers numbers;
    Findings findings;
};

/// Runs the program's engine over a host's wall and reckons.
ReckonedRun run(Host &host, const QString &dir)
{
    const LogLines silence(nullptr);
    const ScreenLayout layout = layoutOf(host.wall);
    ReckonedRun run{
        host.wall.layers > 0 ? layeredKind(host.wall.layers) : singleLayerKind(), {}, {}};
    const bool toFiles = host.wall.screenType == ScreenType_PartitionFile;
    const WallPlan plan{layout, layout.band,    host.wall.margin, correctedOf(host.wall),
                        0.005,  run.kind->cap()};
    run.kind->run({host, layout, plan.corrected, layout.band, host.wall.margin, usualWeights, dir,
                   toFiles, toFiles ? noCap : run.kind->cap()});
    EXPECT_EQ(run.kind->result().errCode, ErrCode_Success);
    run.numbers = wallNumbers(plan, run.kind->measured());
    run.findings = lookFindings(plan, run.kind->measured(), run.numbers);
    return run;
}

/// The numbers once more, as plainly as they can be said: one pixel at a time, from the stored
/// zones and from the pixels that were delivered.
class PlainReckoning
{
public:
    PlainReckoning(const Wall &wall, const ReckonedRun &run)
        : m_wall(wall)
        , m_run(run)
    {
    }

    void expectSame() const
    {
        for (const SeamReport &seam : m_run.numbers.seams) {
            if (m_wall.stored.count(seam.strip.seam.current) != 0
                && m_wall.stored.count(seam.strip.seam.next) != 0)
                expectSame(seam);
        }
    }

private:
    double light(const std::vector<int> &pixel) const
    {
        const double weights[] = {0.2126, 0.7152, 0.0722};
        const bool layered = m_wall.layers > 0;
        double sum = 0.0;
        for (std::size_t i = 0; i < pixel.size(); ++i)
            sum += weights[layered ? i % 3 : i / 3] * pixel[i];
        return layered ? sum / m_wall.layers / 4096.0 : sum / 2048.0;
    }
    double stored(int number, int row, int col) const
    {
        const wallmodel::Zone &zone = m_wall.stored.at(number);
        return light(zone.pixels[zone.rect.index(row, col)]);
    }
    /// Of the partition that owns the pixel, which need not be one of the seam's.
    double delivered(int row, int col) const
    {
        int number = 0;
        for (const auto &[owner, rect] : m_wall.partitions) {
            if (row >= rect.top && row <= rect.bottom && col >= rect.left && col <= rect.right)
                number = owner;
        }
        if (m_wall.stored.count(number) == 0)
            return 1.0; // neutral
        if (m_wall.screenType == 0) {
            const std::size_t pixel = m_wall.screen.index(row, col);
            const ST_ReviseResult &result = m_run.kind->result();
            return light(m_wall.layers > 0 ? result.multiLayerCoefData[pixel]
                                           : pixelsOf(result.coefData)[pixel]);
        }
        return light(m_files.at(number)[m_wall.partitions.at(number).index(row, col)]);
    }

    static double median(std::vector<double> values)
    {
        std::sort(values.begin(), values.end());
        const std::size_t half = values.size() / 2;
        return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
    }

    void expectSame(const SeamReport &seam) const;

    const Wall &m_wall;
    const ReckonedRun &m_run;

public:
    std::map<int, wallmodel::Pixels> m_files; ///< where files are written
};

void PlainReckoning::expectSame(const SeamReport &seam) const
{
    const int a = seam.strip.seam.current;
    const int b = seam.strip.seam.next;
    const Rect &own = m_wall.partitions.at(a);
    const Rect &other = m_wall.partitions.at(b);
    const Rect &screen = m_wall.screen;
    const bool across = seam.strip.isHorizontal();
    const int first = across ? std::max(screen.left, other.left - m_wall.bandCols)
                             : std::max(screen.top, other.top - m_wall.bandRows);
    const int last = across ? std::min(screen.right, own.right + m_wall.bandCols)
                            : std::min(screen.bottom, own.bottom + m_wall.bandRows);
    const int lastOwn = across ? own.right : own.bottom;
    const int firstLine = across ? own.top : own.left;
    const int lines = across ? own.height() : own.width();
    ASSERT_EQ(seam.strip.width, std::max(0, last - first + 1));

    std::vector<double> all, worstBefore, worstAfter, medians;
    std::vector<int> stepLines, medianLines;
    qint64 dark = 0;
    for (int block = 0; block < std::max(1, lines / 16); ++block) {
        const int end = block + 1 == std::max(1, lines / 16) ? lines : block * 16 + 16;
        std::vector<double> ratios;
        std::vector<std::optional<double>> before, after;
        for (int position = first; position <= last; ++position) {
            double sumBefore = 0, sumAfter = 0;
            int count = 0;
            for (int line = block * 16; line < end; ++line) {
                const int row = across ? firstLine + line : position;
                const int col = across ? position : firstLine + line;
                const double ya = stored(a, row, col), yb = stored(b, row, col);
                if (ya <= 0 || yb <= 0) {
                    ++dark;
                    continue;
                }
                ratios.push_back(yb / ya);
                sumBefore += position <= lastOwn ? 1 : yb / ya;
                sumAfter += delivered(row, col) / ya;
                ++count;
            }
            before.push_back(count ? std::make_optional(sumBefore / count) : std::nullopt);
            after.push_back(count ? std::make_optional(sumAfter / count) : std::nullopt);
        }
        all.insert(all.end(), ratios.begin(), ratios.end());
        if (!ratios.empty()) {
            medians.push_back(median(ratios) - 1);
            medianLines.push_back(firstLine + block * 16);
        }
        std::vector<double> stepsBefore, stepsAfter;
        for (std::size_t i = 1; i < before.size(); ++i) {
            if (before[i - 1] && before[i]) {
                stepsBefore.push_back(std::fabs(*before[i] - *before[i - 1]));
                stepsAfter.push_back(std::fabs(*after[i] - *after[i - 1]));
            }
        }
        if (stepsBefore.empty())
            continue;
        stepLines.push_back(firstLine + block * 16);
        worstBefore.push_back(*std::max_element(stepsBefore.begin(), stepsBefore.end()));
        worstAfter.push_back(*std::max_element(stepsAfter.begin(), stepsAfter.end()));
    }

    const SeamNumbers &numbers = seam.numbers;
    EXPECT_EQ(numbers.darkPixels, dark);
    ASSERT_EQ(numbers.disagreement.has_value(), !all.empty());
    if (!all.empty()) {
        const auto worst = std::max_element(medians.begin(), medians.end(), [](double x, double y) {
            return std::fabs(x) < std::fabs(y);
        });
        EXPECT_NEAR(numbers.disagreement->median, median(all) - 1, 1e-12);
        EXPECT_NEAR(numbers.disagreement->worst, *worst, 1e-12);
        EXPECT_EQ(numbers.disagreement->worstLine, medianLines[worst - medians.begin()]);
        EXPECT_EQ(*numbers.widthNeeded,
                  std::ceil((m_wall.margin + 1) * std::fabs(numbers.disagreement->worst) / 0.005));
    }
    ASSERT_EQ(numbers.after.has_value(), !worstAfter.empty());
    for (const auto &[step, worst] :
         {std::pair(numbers.before, worstBefore), std::pair(numbers.after, worstAfter)}) {
        if (worst.empty())
            continue;
        const auto largest = std::max_element(worst.begin(), worst.end());
        double sum = 0;
        for (const double value : worst)
            sum += value;
        EXPECT_NEAR(step->worst, *largest, 1e-12);
        EXPECT_NEAR(step->mean, sum / worst.size(), 1e-12);
        EXPECT_EQ(step->worstLine, stepLines[largest - worst.begin()]);
    }
}

/// What is delivered as files, one pixel a row.
std::map<int, wallmodel::Pixels> filePixels(const Wall &wall, const QString &dir)
{
    std::map<int, wallmodel::Pixels> files;
    for (const auto &[number, rect] : wall.partitions) {
        const QString name = QString::number(number) + (wall.layers > 0 ? "_m" : "");
        const QByteArray bytes = decrypted(readFile(dir + '/' + name));
        const int valueBytes = wall.layers > 0 ? 4 : 2;
        for (int pixel = 0; pixel < rect.area(); ++pixel) {
            std::vector<int> values;
            for (int i = 0; i < wall.valuesPerPixel(); ++i) {
                unsigned int value = 0;
                for (int byte = 0; byte < valueBytes; ++byte)
                    value |= static_cast<unsigned char>(
                                 bytes[(pixel * wall.valuesPerPixel() + i) * valueBytes + byte])
                        << (8 * byte);
                values.push_back(static_cast<int>(value));
            }
            files[number].push_back(values);
        }
    }
    return files;
}

void expectSameChanges(const Wall &wall, const std::map<int, wallmodel::Pixels> &files,
                       const ChangeAccount &changes)
{
    const int cap = wall.layers > 0 ? 4096 : 2457;
    ChangeAccount plain;
    for (const auto &[number, zone] : wall.stored) {
        const Rect &own = wall.partitions.at(number);
        for (int row = own.top; row <= own.bottom; ++row) {
            for (int col = own.left; col <= own.right; ++col) {
                for (int i = 0; i < wall.valuesPerPixel(); ++i) {
                    const int after = files.at(number)[own.index(row, col)][i];
                    const int change = std::abs(after - zone.pixels[zone.rect.index(row, col)][i]);
                    ++plain.values;
                    plain.changed += change != 0;
                    plain.sum += change;
                    plain.largest = std::max<qint64>(plain.largest, change);
                    plain.aboveCap += after > cap;
                    plain.saturatedCodes += wall.layers > 0 && (after < 514 || after > 2557);
                }
            }
        }
    }
    EXPECT_EQ(changes.values, plain.values);
    EXPECT_EQ(changes.changed, plain.changed);
    EXPECT_EQ(changes.sum, plain.sum);
    EXPECT_EQ(changes.largest, plain.largest);
    EXPECT_EQ(changes.aboveCap, plain.aboveCap);
    EXPECT_EQ(changes.saturatedCodes, plain.saturatedCodes);
    EXPECT_EQ(changes.changedOutside, 0);
}

TEST(SeamNumbers, AgreeWithAPlainReckoningOfWhatIsDelivered)
{
    for (unsigned int seed = 1; seed <= 60 && !::testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Host host(randomWall(seed, seed % 3 == 0 ? 2 : 0));
        const ReckonedRun reckoned = run(host, host.path());
        PlainReckoning plain(host.wall, reckoned);
        if (host.wall.screenType == ScreenType_PartitionFile) {
            plain.m_files = filePixels(host.wall, host.path());
            expectSameChanges(host.wall, plain.m_files, reckoned.numbers.changes);
        }
        plain.expectSame();
    }
}

TEST(WatchedLayered, DeliversWhatTheLibrarysOwnOrderDelivers)
{
    for (unsigned int seed = 1; seed <= 25; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Wall wall = randomWall(seed, 1 + static_cast<int>(seed % 4));
        WatchedLayered watched;
        Layered library;
        watched.setLayerSize(wall.layers);
        library.setLayerSize(wall.layers);
        const wallmodel::Outcome expected = Host(wall).revise(library);
        const wallmodel::Outcome actual = Host(wall).revise(watched);
        EXPECT_EQ(actual.code, expected.code);
        EXPECT_EQ(actual.states, expected.states);
        EXPECT_EQ(actual.table, expected.table);
        EXPECT_EQ(actual.packed, expected.packed);
        EXPECT_EQ(actual.files, expected.files);
        EXPECT_EQ(actual.dumps, expected.dumps);
    }
}

/// A strip of a horizontal seam whose first line is screen row 100; half of it is the current
/// partition's own.
Strip stripOfSize(int width, int lines)
{
    Strip strip;
    strip.seam = {1, 2, ReviseDirection_Horizontal};
    strip.rect = NQRect(50, 100, 50 + width - 1, 100 + lines - 1);
    strip.width = width;
    strip.lineCount = lines;
    strip.ownPositions = width / 2;
    return strip;
}

TEST(SeamNumbers, HaveClosedFormsOnSimpleStrips)
{
    // The light of the LEDs themselves differs from pixel to pixel and must not matter.
    using Light = std::function<double(int line, int position)>;
    const Light led
        = [](int line, int position) { return 1.0 + 0.1 * ((line * 7 + position) % 5); };
    const auto always = [](double ratio) { return [=](int, int) { return ratio; }; };
    const auto ramp = [](int, int position) { return 1.0 + 0.06 * position / 8.0; };
    const auto oneLine = [](int line, int) { return line == 20 ? 1.16 : 1.0; };
    const auto lastBlock = [](int line, int) { return line < 16 ? 1.02 : 0.97; };
    const auto tie = [](int line, int) { return line < 16 ? 1.02 : 2.0 - 1.02; };
    const struct
    {
        const char *name;
        int width, lines;
        Light ratio, after;
        double median, worst;
        int worstLine;
        double before, stepAfter;
        int stepLine; ///< of the step after
        int margin;
        double widthNeeded;
    } rows[] = {
        {"flat", 8, 40, always(1.06), ramp, .06, .06, 100, .06, .0075, 100, 0, 12},
        {"agreeing", 8, 40, always(1.0), always(1.0), 0, 0, 100, 0, 0, 100, 0, 0},
        {"table cut", 8, 40, always(1.06), always(1.0), .06, .06, 100, .06, 0, 100, 0, 12},
        {"margin", 8, 40, always(1.06),
         [](int, int at) { return at < 2 ? 1.0
                               : at > 5  ? 1.06
                                         : 1.0 + .06 * at / 8.0; }, .06, .06,
         100, .06, .0225, 100, 2, 36},
        {"one line off", 8, 40, oneLine, oneLine, 0, 0, 100, .16 / 24, 0, 100, 0, 0},
        {"one position", 1, 17, always(1.5), always(1.2), .5, .5, 100, 0, 0, 100, 0, 100},
        {"leftover lines", 4, 31, lastBlock, always(1.0), .02, .02, 100, .13 / 31, 0, 100, 0, 4},
        {"two blocks", 4, 47, lastBlock, lastBlock, -.03, -.03, 116, .03, 0, 100, 0, 6},
        {"first of a tie", 4, 32, tie, tie, 0, .02, 100, .02, 0, 100, 0, 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const Strip strip = stripOfSize(row.width, row.lines);
        StripLight light;
        for (int line = 0; line < row.lines; ++line) {
            for (int at = 0; at < row.width; ++at) {
                light.current.push_back(led(line, at));
                light.next.push_back(led(line, at) * row.ratio(line, at));
                light.delivered.push_back(led(line, at) * row.after(line, at));
            }
        }
        const SeamNumbers numbers = seamNumbers(strip, light, row.margin, 0.005);
        EXPECT_NEAR(numbers.disagreement->median, row.median, 1e-9);
        EXPECT_NEAR(numbers.disagreement->worst, row.worst, 1e-9);
        EXPECT_EQ(numbers.disagreement->worstLine, row.worstLine);
        EXPECT_NEAR(numbers.before->worst, row.before, 1e-9);
        EXPECT_NEAR(numbers.after->worst, row.stepAfter, 1e-9);
        EXPECT_NEAR(*numbers.widthNeeded, row.widthNeeded, 1.01); // a rounding may go either way
        EXPECT_EQ(numbers.darkPixels, 0);
    }
}

TEST(SeamNumbers, LeaveDarkPixelsOutAndTakeNoDifferenceAcrossThem)
{
    const auto reckon = [](int width, const std::set<std::pair<int, int>> &dark, int lines) {
        const Strip strip = stripOfSize(width, lines);
        StripLight light;
        for (int line = 0; line < lines; ++line) {
            for (int at = 0; at < width; ++at) {
                const bool isDark = dark.count({line, at}) != 0;
                light.current.push_back(isDark && at % 2 == 0 ? -1.0 : 1.0);
                light.next.push_back(isDark && at % 2 != 0 ? 0.0 : 1.1);
                light.delivered.push_back(isDark ? 9.0 : 1.0 + 0.01 * at);
            }
        }
        return seamNumbers(strip, light, 0, 0.005);
    };
    const SeamNumbers one = reckon(4, {{0, 1}}, 16);
    EXPECT_EQ(one.darkPixels, 1);
    EXPECT_NEAR(one.disagreement->median, 0.1, 1e-12);
    EXPECT_NEAR(one.after->worst, 0.01, 1e-12);
    // Positions 1 and 2 of the only line: nothing is left beside the border.
    const SeamNumbers gap = reckon(4, {{0, 1}, {0, 2}}, 1);
    EXPECT_NEAR(gap.disagreement->worst, 0.1, 1e-12);
    EXPECT_FALSE(gap.before || gap.after);
    const SeamNumbers none = reckon(2, {{0, 0}, {0, 1}}, 1);
    EXPECT_FALSE(none.disagreement || none.before || none.after || none.widthNeeded);
    EXPECT_EQ(none.darkPixels, 2);
}

/// Two partitions of 30 x 20 pixels whose zones are the whole wall; a value for every pixel.
Wall twoPartitions(const std::function<int(int number, int row, int col)> &value)
{
    Wall wall = evenWall(2, 30, 20, 15, {0, 0});
    wall.screenType = ScreenType_PartitionFile;
    for (auto &[number, zone] : wall.stored) {
        for (int row = 0; row < 20; ++row) {
            for (int col = 0; col < 60; ++col)
                zone.pixels[zone.rect.index(row, col)].assign(9, value(number, row, col));
        }
    }
    return wall;
}

TEST(WallNumbers, TellSeamsFromTheLightOfLeds)
{
    const auto batch = [](int col) { return col < 30 ? 1.0 : 1.0 / 0.94; }; // 6 % dimmer LEDs
    const struct
    {
        const char *name;
        std::function<int(int number, int row, int col)> value;
        int screenType, margin;
        double disagreement, before, after;
        const char *finding;
    } rows[] = {
        {"files keep what is above the cap",
         [](int number, int, int) { return 2300 + 300 * number; }, 1, 0, 300. / 2600, 300. / 2600,
         10. / 2600, "disagreement"},
        {"a table cuts it", [](int number, int, int) { return 2300 + 300 * number; }, 0, 0,
         300. / 2600, 300. / 2600, 0, "cap"},
        {"agreeing shots beside a dim batch",
         [&](int, int, int col) { return int(2000 * batch(col)); }, 1, 0, 0, 0, 0, nullptr},
        {"disagreeing shots hidden by a batch",
         [&](int number, int, int col) {
             return int(2000 * batch(col) * (number == 1 ? 1 : 0.94));
         },
         1, 0, -.06, .06, .002, nullptr},
        {"a margin makes new steps", [](int number, int, int) { return 1940 + 60 * number; }, 1, 6,
         .03, .03, 14. / 2000, "step"},
        {"garbage", [](int number, int, int col) { return number == 1 ? 2000 : col * 977 % 60013; },
         1, 0, 9.5, 20, 2, "disagreement"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        Host host(twoPartitions(row.value));
        host.wall.screenType = row.screenType;
        host.wall.margin = row.margin;
        const ReckonedRun reckoned = run(host, host.path());
        const SeamNumbers &numbers = reckoned.numbers.seams.at(0).numbers;
        const bool isGarbage = row.disagreement > 1.0;
        const double tolerance = 0.001;
        if (isGarbage) {
            EXPECT_GT(numbers.disagreement->worst, 1.0);
            EXPECT_GT(numbers.after->worst, 0.5);
        } else {
            EXPECT_NEAR(numbers.disagreement->median, row.disagreement, tolerance);
            EXPECT_NEAR(numbers.before->worst, row.before, tolerance);
            EXPECT_NEAR(numbers.after->worst, row.after, tolerance);
        }
        std::string kinds;
        for (const Finding &finding : reckoned.findings)
            kinds += finding.kind.toStdString() + ' ';
        if (row.finding)
            EXPECT_NE(kinds.find(row.finding), std::string::npos) << kinds;
        else
            EXPECT_EQ(kinds, "");
    }
}

TEST(WallNumbers, FindShotsThatAreRegisteredOff)
{
    std::mt19937 random(7);
    std::vector<double> leds(80 * 80);
    for (double &led : leds)
        led = 1.0 + std::uniform_real_distribution<double>(-0.05, 0.05)(random);
    const auto led = [&](int row, int col) { return leds[(row + 10) * 80 + col + 10]; };
    for (const auto &[columns, rowsOff] : {std::pair(0, 0), {1, 0}, {-2, 3}, {3, -3}}) {
        for (const auto direction : {ReviseDirection_Horizontal, ReviseDirection_Vertical}) {
            Strip strip = stripOfSize(20, 50);
            strip.rect = direction == ReviseDirection_Horizontal ? NQRect(0, 0, 19, 49)
                                                                 : NQRect(0, 0, 49, 19);
            strip.seam.direction = direction;
            StripLight light{std::vector<double>(1000), std::vector<double>(1000), {}};
            for (int row = 0; row <= strip.rect.bottom(); ++row) {
                for (int col = 0; col <= strip.rect.right(); ++col) {
                    light.current[strip.indexOfPixel(row, col)] = led(row, col);
                    light.next[strip.indexOfPixel(row, col)]
                        = 1.1 * led(row - rowsOff, col - columns);
                }
            }
            const std::optional<Misregistration> found = misregistration(strip, light);
            ASSERT_EQ(found.has_value(), columns != 0);
            if (found) {
                EXPECT_EQ(found->columns, columns);
                EXPECT_EQ(found->rows, rowsOff);
            }
        }
    }
}

TEST(ZoneRecorder, NoticesPixelsThatChangeOutsideStrips)
{
    Host host(twoPartitions([](int number, int, int) { return 2000 * number; }));
    const ScreenLayout layout = layoutOf(host.wall);
    for (const int row : {0, 7, 19}) {
        ZoneRecorder<MatrixValues> recorder({layout, {5, 5}, {1, 2}, usualWeights, noCap},
                                            MatrixValues());
        CoefsZoneInfo zones[2];
        QMap<int, CoefsZoneInfo *> map;
        for (const int number : {1, 2}) {
            host.readAreaCoefficients(number, zones[number - 1]);
            recorder.zoneRead(number, zones[number - 1]);
            map.insert(number, &zones[number - 1]);
        }
        zones[0].m_arrayData[(row * 60 + 24) * 9 + 8] += 1; // the last column outside the strip
        zones[0].m_arrayData[(row * 60 + 25) * 9] += 3;     // the first one inside
        recorder.zonesRevised(map);
        const ChangeAccount &changes = recorder.measured().changes.at(1);
        EXPECT_EQ(changes.changedOutside, 25);
        EXPECT_EQ(changes.changed, 1);
        EXPECT_EQ(changes.largest, 3);
    }
}

} // namespace
