#include "wallmodel.h"

#include <cstdint>

namespace wallmodel
{

namespace
{

struct Stop
{
    int code;
    QString text;
};

Rect shared(const Rect &a, const Rect &b)
{
    return {std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom),
            std::min(a.right, b.right)};
}

/// One value of a ramp across a strip.
int blend(int a, int b, int position, int width, bool layered)
{
    const auto term = [&](std::int64_t weight, int value) {
        const auto product = static_cast<std::int32_t>(
            static_cast<std::uint32_t>(weight * std::int64_t{value} & 0xFFFFFFFF));
        return static_cast<float>(product) / static_cast<float>(width);
    };
    const float sum = term(width - position, a) + term(position, b);
    const bool fits = sum >= -2147483648.0F && sum < 2147483648.0F;
    const int value = fits ? static_cast<int>(sum) : INT32_MIN;
    return layered ? value : value & 0xFFFF;
}

class Revision
{
public:
    explicit Revision(const Wall &wall)
        : m_wall(wall)
        , m_layered(wall.layers > 0)
        , m_values(wall.valuesPerPixel())
        , m_prefix(m_layered ? "" : "normal_")
    {
    }

    Outcome run()
    {
        try {
            prepare();
            reset();
            load();
            seams();
            save();
            traced('D', "boundaryModifying", 306, 268, "end!");
        } catch (const Stop &stop) {
            m_out.code = stop.code;
            m_out.text = stop.text;
            m_out.table.clear();
            m_out.packed.clear();
        }
        return m_out;
    }

private:
    void plain(const QString &text) { m_out.log << QStringLiteral("D ") + text; }

    /// A line with the number that it has in the single-layer engine or in the layered one.
    void traced(char level, const char *function, int singleTag, int layeredTag, const char *text)
    {
        m_out.log << QString::asprintf("%c %sPartitionMerge::%s(%d): %s", level,
                                       m_layered ? "MultiLayer" : "", function,
                                       m_layered ? layeredTag : singleTag, text);
    }

    /// The partition's rectangle is asked of the engine, which says so.
    void traceRectangle()
    {
        plain("PartitionMerge::AreaInfoToCoefZoneInfo(835): enter!");
        plain("PartitionMerge::AreaInfoToCoefZoneInfo(855): end!");
    }

    bool corrected(int number) const { return m_wall.stored.count(number) != 0; }

    void prepare()
    {
        traced('D', "boundaryModifying", 89, 64, "Check whether the partition has been corrected");
        for (const auto &[number, own] : m_wall.partitions) {
            m_out.states[number] = corrected(number) ? 2 : 0;
            m_zones[number].rect
                = shared(m_wall.screen,
                         {own.top - m_wall.bandRows, own.left - m_wall.bandCols,
                          own.bottom + m_wall.bandRows, own.right + m_wall.bandCols});
        }
        m_out.table = zeros(m_wall.screen);
    }

    Pixels zeros(const Rect &rect) const
    {
        return Pixels(rect.area(), std::vector<int>(m_values, 0));
    }

    void reset()
    {
        const std::vector<int> neutral = m_layered
            ? std::vector<int>(m_values, 4096)
            : std::vector<int>{2048, 0, 0, 0, 2048, 0, 0, 0, 2048};
        for (const auto &[number, own] : m_wall.partitions) {
            if (corrected(number))
                continue;
            traceRectangle();
            if (m_wall.screenType == 1)
                writeFiles(number, Pixels(own.area(), neutral));
            else if (!m_layered)
                for (int row = own.top; row <= own.bottom; ++row)
                    for (int col = own.left; col <= own.right; ++col)
                        if (m_wall.screen.index(row, col) < m_out.table.size())
                            m_out.table[m_wall.screen.index(row, col)] = neutral;
        }
        plain("Start revise!");
    }

    void load()
    {
        std::map<QString, int> numbers; // in the order of their texts
        for (const auto &stored : m_wall.stored)
            numbers[QString::number(stored.first)] = stored.first;
        for (const auto &[key, number] : numbers) {
            const Zone &stored = m_wall.stored.at(number);
            traced('D', "readCofficients", 863, 527, "enter!");
            traced('D', "readCofficients", 881, 546, "end!");
            dump(m_prefix + "areaEx_" + key + "_before.txt", stored.pixels);
            Pixels own = zeros(m_wall.partitions.at(number));
            const Pixels cut = cutOut(stored, m_wall.partitions.at(number)).second;
            std::copy(cut.begin(), cut.end(), own.begin());
            dump(m_prefix + "area_" + key + "_before.txt", own);
            copyIntoZone(key, stored, m_zones[number]);
        }
    }

    /// Whether all pixels of a zone inside a rectangle are there, and those that are.
    static std::pair<bool, Pixels> cutOut(const Zone &zone, const Rect &rect)
    {
        const Rect inside = shared(zone.rect, rect);
        Pixels pixels;
        for (int row = inside.top; row <= inside.bottom; ++row)
            for (int col = inside.left; col <= inside.right; ++col)
                if (zone.rect.index(row, col) < zone.pixels.size())
                    pixels.push_back(zone.pixels[zone.rect.index(row, col)]);
        return {static_cast<int>(pixels.size()) == inside.area(), pixels};
    }

    void copyIntoZone(const QString &key, const Zone &stored, Zone &zone)
    {
        const char *const function = "subInfoCoefToAreaCoef";
        if (!m_layered)
            traced('D', function, 447, 0, "start!");
        auto [complete, pixels] = cutOut(stored, zone.rect);
        if (stored.pixels.empty() || !complete) {
            if (stored.pixels.empty())
                traced('W', function, 461, 570, "The subInfoCoef is empty!");
            else
                traced('C', function, 484, 598, "The index out of range!");
            traced('C', "boundaryModifying", 256, 219,
                   "coefFromDB or coefsZoneInfos.value(key.toInt()) is nullptr");
            throw Stop{3, key};
        }
        zone.pixels = pixels;
        if (m_layered)
            zone.pixels.resize(zone.rect.area());
        else
            traced('D', function, 494, 0, "end!");
    }

    void seams()
    {
        for (int row = 0; row < m_wall.gridRows; ++row)
            for (int col = 0; col + 1 < m_wall.gridCols; ++col)
                seam(row * m_wall.gridCols + col + 1, 1, true);
        for (int col = 0; col < m_wall.gridCols; ++col)
            for (int row = 0; row + 1 < m_wall.gridRows; ++row)
                seam(row * m_wall.gridCols + col + 1, m_wall.gridCols, false);
        plain("Partition fusion completed! ");
        if (!m_layered)
            dump("分区融合后融合区域系数.txt", m_out.table);
    }

    void seam(int number, int step, bool horizontal)
    {
        if (!corrected(number) || !corrected(number + step))
            return;
        traced('D', "partitionCoefRevise", 505, 624, "start!");
        Zone &current = m_zones[number];
        Zone &next = m_zones[number + step];
        const int width = current.rect.width();
        const int overlap = horizontal ? current.rect.right - next.rect.left + 1
                                       : current.rect.bottom - next.rect.top + 1;
        for (int line = 0; line < (horizontal ? current.rect.height() : width); ++line)
            for (int pos = 0; pos < overlap; ++pos) {
                if (pos < m_wall.margin || pos > overlap - m_wall.margin - 1)
                    continue;
                const int currentPixel = horizontal
                    ? line * width + width - overlap + pos
                    : (current.rect.height() - overlap + pos) * width + line;
                const int nextPixel
                    = horizontal ? line * next.rect.width() + pos : pos * width + line;
                check(currentPixel, current, number, horizontal, 0, "currentArea ");
                check(nextPixel, next, number, horizontal, 5, "nextArea ");
                if (currentPixel == static_cast<int>(current.pixels.size())
                    || nextPixel == static_cast<int>(next.pixels.size()))
                    continue;
                std::vector<int> &a = current.pixels[currentPixel];
                std::vector<int> &b = next.pixels[nextPixel];
                for (std::size_t k = 0; k < std::min(a.size(), b.size()); ++k)
                    a[k] = b[k] = blend(a[k], b[k], pos, overlap, m_layered);
            }
        traced('D', "partitionCoefRevise", 612, 706, "end!");
    }

    void check(int pixel, const Zone &zone, int number, bool horizontal, int tag, const char *name)
    {
        if (pixel >= 0 && pixel < static_cast<int>(zone.pixels.size()) + (m_layered ? 1 : 0))
            return;
        const QByteArray text
            = QByteArray("The index of ") + (m_layered ? "" : name) + "cofficient is out of range!";
        traced('C', "partitionCoefRevise", (horizontal ? 544 : 590) + tag, horizontal ? 655 : 690,
               text);
        plain("Revise failed!");
        throw Stop{3, QString::number(number)};
    }

    void save()
    {
        for (const auto &[number, zone] : m_zones) {
            if (zone.pixels.empty() || !corrected(number))
                continue;
            traceRectangle();
            const Pixels own = placeIntoScreen(zone, m_wall.partitions.at(number));
            const QString name = m_prefix + "areaEx_" + QString::number(number);
            dump(name + "_after.txt", zone.pixels);
            if (m_wall.screenType != 1)
                continue;
            Pixels lines;
            for (const unsigned char byte : packed(own))
                lines.push_back({byte});
            if (m_layered)
                dump(name + "_afterZIP.txt", lines, "");
            writeFiles(number, own);
        }
        for (std::vector<int> &pixel : m_out.table)
            for (int &value : pixel)
                value = std::min(value, m_layered ? 4096 : 2457);
        dump(m_layered ? "Multilayer_After_Revise.txt" : "分区融合后系数.txt", m_out.table);
        if (m_layered)
            m_out.packed = packed(m_out.table);
    }

    /// The partition's own pixels; the single-layer engine puts them one after the other.
    Pixels placeIntoScreen(const Zone &zone, const Rect &own)
    {
        const Rect inside = shared(zone.rect, own);
        Pixels ownPixels = zeros(own);
        std::size_t kept = 0;
        for (int row = inside.top; row <= inside.bottom; ++row)
            for (int col = inside.left; col <= inside.right; ++col) {
                const std::size_t source = zone.rect.index(row, col);
                const std::size_t target = m_wall.screen.index(row, col);
                const bool isThere = source < zone.pixels.size();
                if (!isThere || target >= m_out.table.size()) {
                    const int tag = (m_wall.screenType == 1 ? 705 : 728) + (isThere ? 5 : 0);
                    traced('C', "saveRevisedCoef", tag, 352, "Index out of range!");
                    plain("Save revised coefficient failed!");
                    throw Stop{1804, QString()};
                }
                m_out.table[target] = zone.pixels[source];
                ownPixels[m_layered ? own.index(row, col) : kept++] = zone.pixels[source];
            }
        return ownPixels;
    }

    /// Pixels without values take no place; what they leave is zero at the end.
    std::vector<unsigned char> packed(const Pixels &pixels) const
    {
        std::vector<unsigned char> bytes;
        for (const std::vector<int> &pixel : pixels)
            for (std::size_t k = 0; k + 2 < pixel.size(); k += 3) {
                std::uint32_t word = 0;
                for (std::size_t c = 0; c < 3; ++c) {
                    const std::int64_t d = std::int64_t{pixel[k + c]} - 512;
                    const std::uint32_t code = d < 0 ? 0 : d > 2047 ? 1023 : std::uint32_t(d / 2);
                    word |= code << (10 * c);
                }
                for (int shift = 0; shift < 32; shift += 8)
                    bytes.push_back(static_cast<unsigned char>(word >> shift));
            }
        bytes.resize(pixels.size() * 4 * m_wall.layers, 0);
        return bytes;
    }

    void writeFiles(int number, const Pixels &pixels)
    {
        traced('D', "saveCombineAreaCoef", 382, 786, "enter!");
        QByteArray plaintext;
        for (std::vector<int> pixel : pixels) {
            pixel.resize(m_values, 0);
            for (const int value : pixel)
                for (int byte = 0; byte < (m_layered ? 4 : 2); ++byte)
                    plaintext.append(static_cast<char>(std::uint32_t(value) >> (8 * byte)));
        }
        const QString name = QString::number(number);
        m_out.files[m_layered ? name + "_m" : name] = plaintext;
        if (!m_layered) {
            traced('D', "saveCombineAreaCoef", 402, 0, "Save encryptFile end!");
            return;
        }
        QByteArray &zip = m_out.files[name + "_zip"];
        for (const unsigned char byte : packed(pixels))
            zip.append(static_cast<char>(byte));
    }

    void dump(const QString &name, const Pixels &pixels, const char *separator = ",")
    {
        QByteArray text("\r\n");
        for (const std::vector<int> &pixel : pixels) {
            for (const int value : pixel)
                text += QByteArray::number(value) + separator;
            text += "\r\n";
        }
        m_out.dumps[name] = text;
    }

    const Wall &m_wall;
    const bool m_layered;
    const int m_values;
    const QString m_prefix; ///< of the dumps of partitions
    std::map<int, Zone> m_zones;
    Outcome m_out;
};

} // namespace

Outcome revise(const Wall &wall)
{
    return Revision(wall).run();
}

} // namespace wallmodel
