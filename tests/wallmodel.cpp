#include "wallmodel.h"

#include <algorithm>
#include <cstdint>

namespace wallmodel
{

namespace
{

/// The numbers in the log lines of one engine.
struct Tags
{
    int check, end, readEnter, readEnd, copyFailed, seamStart, seamEnd;
};

struct Stop
{
    int code;
    QString text;
};

class Revision
{
public:
    explicit Revision(const Wall &wall)
        : m_wall(wall)
        , m_values(wall.valuesPerPixel())
        , m_name(wall.layered ? "MultiLayerPartitionMerge" : "PartitionMerge")
        , m_tags(wall.layered ? Tags{64, 268, 527, 546, 219, 624, 706}
                              : Tags{89, 306, 863, 881, 256, 505, 612})
    {
        for (const auto &partition : wall.partitions)
            m_keys[QString::number(partition.first)] = partition.first;
    }

    Outcome run()
    {
        try {
            prepare();
            reset();
            load();
            seams();
            save();
            traced('D', "boundaryModifying", m_tags.end, "end!");
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

    void traced(char level, const QString &function, int tag, const QString &text,
                const char *className = nullptr)
    {
        m_out.log << QString(QLatin1Char(level)) + QStringLiteral(" ")
                + QLatin1String(className ? className : m_name) + QStringLiteral("::") + function
                + QStringLiteral("(%1): ").arg(tag) + text;
    }

    /// The partition's rectangle is asked of the engine, which says so.
    void traceRectangle()
    {
        traced('D', "AreaInfoToCoefZoneInfo", 835, "enter!", "PartitionMerge");
        traced('D', "AreaInfoToCoefZoneInfo", 855, "end!", "PartitionMerge");
    }

    bool corrected(int number) const { return m_wall.stored.count(number) != 0; }

    void prepare()
    {
        traced('D', "boundaryModifying", m_tags.check,
               "Check whether the partition has been corrected");
        const Rect &screen = m_wall.screen;
        for (const auto &[number, own] : m_wall.partitions) {
            m_out.states[number] = corrected(number) ? 2 : 0;
            m_zones[number].rect = {std::max(screen.top, own.top - m_wall.bandRows),
                                    std::max(screen.left, own.left - m_wall.bandCols),
                                    std::min(screen.bottom, own.bottom + m_wall.bandRows),
                                    std::min(screen.right, own.right + m_wall.bandCols)};
        }
        m_out.table.assign(screen.area(), std::vector<int>(m_values, 0));
    }

    std::vector<int> neutralPixel() const
    {
        if (m_wall.layered)
            return std::vector<int>(m_values, 4096);
        return {2048, 0, 0, 0, 2048, 0, 0, 0, 2048};
    }

    void reset()
    {
        for (const auto &[number, own] : m_wall.partitions) {
            if (corrected(number))
                continue;
            traceRectangle();
            if (m_wall.screenType == 1)
                writeFiles(number, Pixels(own.area(), neutralPixel()));
            else if (!m_wall.layered)
                for (int row = own.top; row <= own.bottom; ++row)
                    for (int col = own.left; col <= own.right; ++col)
                        if (screenPixel(row, col) < m_out.table.size())
                            m_out.table[screenPixel(row, col)] = neutralPixel();
        }
        plain("Start revise!");
    }

    std::size_t screenPixel(int row, int col) const
    {
        return static_cast<std::size_t>(std::int64_t{row - m_wall.screen.top}
                                            * m_wall.screen.width()
                                        + col - m_wall.screen.left);
    }

    void load()
    {
        for (const auto &[key, number] : m_keys) {
            if (!corrected(number))
                continue;
            const Zone &stored = m_wall.stored.at(number);
            traced('D', "readCofficients", m_tags.readEnter, "enter!");
            traced('D', "readCofficients", m_tags.readEnd, "end!");
            dump(prefix("areaEx_") + key + "_before.txt", stored.pixels);
            Pixels own(m_wall.partitions.at(number).area(), std::vector<int>(m_values, 0));
            const Pixels cut = cutOut(stored, m_wall.partitions.at(number)).second;
            std::copy(cut.begin(), cut.end(), own.begin());
            dump(prefix("area_") + key + "_before.txt", own);
            copyIntoZone(key, stored, m_zones[number]);
        }
    }

    QString prefix(const char *name) const
    {
        return (m_wall.layered ? QString() : QStringLiteral("normal_")) + QLatin1String(name);
    }

    /// Whether all pixels of a zone inside a rectangle are there, and those that are.
    static std::pair<bool, Pixels> cutOut(const Zone &zone, const Rect &rect)
    {
        Pixels pixels;
        std::size_t index = 0;
        bool complete = true;
        for (int row = zone.rect.top; row <= zone.rect.bottom; ++row)
            for (int col = zone.rect.left; col <= zone.rect.right; ++col, ++index) {
                if (!rect.contains(row, col))
                    continue;
                if (index < zone.pixels.size())
                    pixels.push_back(zone.pixels[index]);
                else
                    complete = false;
            }
        return {complete, pixels};
    }

    void copyIntoZone(const QString &key, const Zone &stored, Zone &zone)
    {
        const char *const function = "subInfoCoefToAreaCoef";
        if (!m_wall.layered)
            traced('D', function, 447, "start!");
        auto [complete, pixels] = cutOut(stored, zone.rect);
        if (stored.pixels.empty() || !complete) {
            stored.pixels.empty()
                ? traced('W', function, m_wall.layered ? 570 : 461, "The subInfoCoef is empty!")
                : traced('C', function, m_wall.layered ? 598 : 484, "The index out of range!");
            traced('C', "boundaryModifying", m_tags.copyFailed,
                   "coefFromDB or coefsZoneInfos.value(key.toInt()) is nullptr");
            throw Stop{3, key};
        }
        zone.pixels = pixels;
        if (m_wall.layered)
            zone.pixels.resize(std::max(0, zone.rect.height()) * std::max(0, zone.rect.width()));
        else
            traced('D', function, 494, "end!");
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
        if (!m_wall.layered)
            dump(QStringLiteral("分区融合后融合区域系数.txt"), m_out.table);
    }

    void seam(int number, int step, bool horizontal)
    {
        if (!corrected(number) || !corrected(number + step))
            return;
        traced('D', "partitionCoefRevise", m_tags.seamStart, "start!");
        const QString misfit = blendSeam(m_zones[number], m_zones[number + step], horizontal);
        if (!misfit.isEmpty()) {
            const bool inNext = misfit.contains("next");
            const int tag = m_wall.layered ? (horizontal ? 655 : 690)
                                           : (horizontal ? 544 : 590) + (inNext ? 5 : 0);
            traced('C', "partitionCoefRevise", tag,
                   m_wall.layered ? QStringLiteral("The index of cofficient is out of range!")
                                  : misfit);
            plain("Revise failed!");
            throw Stop{3, QString::number(number)};
        }
        traced('D', "partitionCoefRevise", m_tags.seamEnd, "end!");
    }

    QString blendSeam(Zone &current, Zone &next, bool horizontal) const
    {
        const int overlap = horizontal ? current.rect.right - next.rect.left + 1
                                       : current.rect.bottom - next.rect.top + 1;
        const int lines = horizontal ? current.rect.height() : current.rect.width();
        for (int line = 0; line < lines; ++line)
            for (int pos = 0; pos < overlap; ++pos) {
                if (pos < m_wall.margin || pos > overlap - m_wall.margin - 1)
                    continue;
                const int width = current.rect.width();
                const int currentPixel = horizontal
                    ? line * width + width - overlap + pos
                    : (current.rect.height() - overlap + pos) * width + line;
                const int nextPixel
                    = horizontal ? line * next.rect.width() + pos : pos * width + line;
                if (!passes(currentPixel, current))
                    return QStringLiteral("The index of currentArea cofficient is out of range!");
                if (!passes(nextPixel, next))
                    return QStringLiteral("The index of nextArea cofficient is out of range!");
                blendPixel(current, currentPixel, next, nextPixel, pos, overlap);
            }
        return QString();
    }

    bool passes(int pixel, const Zone &zone) const
    {
        const int count = static_cast<int>(zone.pixels.size());
        return pixel >= 0 && pixel < count + (m_wall.layered ? 1 : 0);
    }

    void blendPixel(Zone &current, int currentPixel, Zone &next, int nextPixel, int pos,
                    int overlap) const
    {
        if (currentPixel == static_cast<int>(current.pixels.size())
            || nextPixel == static_cast<int>(next.pixels.size()))
            return;
        std::vector<int> &a = current.pixels[currentPixel];
        std::vector<int> &b = next.pixels[nextPixel];
        for (std::size_t k = 0; k < std::min(a.size(), b.size()); ++k)
            a[k] = b[k] = blend(a[k], b[k], pos, overlap, m_wall.layered);
    }

    void save()
    {
        for (const auto &[number, zone] : m_zones) {
            if (zone.pixels.empty() || !corrected(number))
                continue;
            traceRectangle();
            const Rect &own = m_wall.partitions.at(number);
            Pixels ownPixels(own.area(), std::vector<int>(m_values, 0));
            placeIntoScreen(zone, own, ownPixels);
            dump(prefix("areaEx_") + QString::number(number) + "_after.txt", zone.pixels);
            if (m_wall.screenType != 1)
                continue;
            if (m_wall.layered)
                dumpPacked(number, packed(ownPixels));
            writeFiles(number, ownPixels);
        }
        for (std::vector<int> &pixel : m_out.table)
            for (int &value : pixel)
                value = std::min(value, m_wall.layered ? 4096 : 2457);
        dump(m_wall.layered ? QStringLiteral("Multilayer_After_Revise.txt")
                            : QStringLiteral("分区融合后系数.txt"),
             m_out.table);
        if (m_wall.layered)
            m_out.packed = packed(m_out.table);
    }

    void placeIntoScreen(const Zone &zone, const Rect &own, Pixels &ownPixels)
    {
        std::size_t source = 0;
        std::size_t kept = 0;
        for (int row = zone.rect.top; row <= zone.rect.bottom; ++row)
            for (int col = zone.rect.left; col <= zone.rect.right; ++col, ++source) {
                if (!own.contains(row, col))
                    continue;
                const std::size_t target = screenPixel(row, col);
                if (source >= zone.pixels.size() || target >= m_out.table.size()) {
                    const int tag = m_wall.layered ? 352
                                                   : (m_wall.screenType == 1 ? 705 : 728)
                            + (source >= zone.pixels.size() ? 0 : 5);
                    traced('C', "saveRevisedCoef", tag, "Index out of range!");
                    plain("Save revised coefficient failed!");
                    throw Stop{1804, QString()};
                }
                m_out.table[target] = zone.pixels[source];
                const std::size_t place = m_wall.layered
                    ? std::size_t((row - own.top) * own.width() + col - own.left)
                    : kept++;
                ownPixels[place] = zone.pixels[source];
            }
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
        traced('D', "saveCombineAreaCoef", m_wall.layered ? 786 : 382, "enter!");
        QByteArray plaintext;
        for (std::vector<int> pixel : pixels) {
            pixel.resize(m_values, 0);
            for (const int value : pixel)
                for (int byte = 0; byte < (m_wall.layered ? 4 : 2); ++byte)
                    plaintext.append(static_cast<char>(std::uint32_t(value) >> (8 * byte)));
        }
        const QString name = QString::number(number);
        m_out.files[m_wall.layered ? name + "_m" : name] = plaintext;
        if (!m_wall.layered) {
            traced('D', "saveCombineAreaCoef", 402, "Save encryptFile end!");
            return;
        }
        const auto bytes = packed(pixels);
        m_out.files[name + "_zip"]
            = QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size()));
    }

    void dump(const QString &name, const Pixels &pixels)
    {
        QByteArray text("\r\n");
        for (const std::vector<int> &pixel : pixels) {
            for (const int value : pixel)
                text += QByteArray::number(value) + ',';
            text += "\r\n";
        }
        m_out.dumps[name] = text;
    }

    void dumpPacked(int number, const std::vector<unsigned char> &bytes)
    {
        QByteArray text("\r\n");
        for (const unsigned char byte : bytes)
            text += QByteArray::number(byte) + "\r\n";
        m_out.dumps[QStringLiteral("areaEx_%1_afterZIP.txt").arg(number)] = text;
    }

    const Wall &m_wall;
    const int m_values;
    const char *const m_name;
    const Tags m_tags;
    std::map<QString, int> m_keys; ///< in text order
    std::map<int, Zone> m_zones;
    Outcome m_out;
};

} // namespace

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

Outcome revise(const Wall &wall)
{
    return Revision(wall).run();
}

} // namespace wallmodel
