#include "exchange/npyreader.h"

#include "exchange/npyheader.h"
#include "store/inventory.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace seamrevise
{

namespace
{

/// Values of an array that are no gains.
struct Misfits
{
    qint64 count = 0;
    std::size_t firstPosition = 0; ///< in the file, in values
    double firstValue = 0.0;
};

/// Reads an array whose header is known.
class ArrayReader
{
public:
    ArrayReader(QIODevice &file, const NpyHeader &header, const WantedCoefficients &wanted)
        : m_file(file)
        , m_header(header)
        , m_wanted(wanted)
    {
    }

    QStringList read(Coefficients &coefficients);

private:
    void checkShape();
    void checkLayers();
    void checkLength();
    template <typename Value>
    void readValues(std::vector<Value> &values);
    template <typename Stored>
    bool readBlock(Stored *values, std::size_t count);
    template <typename Stored, typename Value>
    void readGains(std::vector<Value> &values);
    template <typename Value>
    Value coefficient(double gain, std::size_t position);
    QString misfitText(double most) const;
    template <typename Value>
    void arrangeInCOrder(std::vector<Value> &values) const;
    QString positionText(std::size_t position) const;

    bool isMatrix() const { return m_header.shape.size() == 4; }
    bool isFloat() const { return m_header.type[1] == QLatin1Char('f'); }
    bool isBigEndian() const { return m_header.type[0] == QLatin1Char('>'); }
    qint64 bytesPerValue() const { return m_header.type.mid(2).toInt(); }

    QIODevice &m_file;
    const NpyHeader &m_header;
    const WantedCoefficients &m_wanted;
    QStringList m_faults;
    qint64 m_pixelValues = 0;
    int m_layerCount = 0;
    Misfits m_misfits;
};

bool isKnownType(const QString &type)
{
    static const QStringList known{
        QStringLiteral("<u2"), QStringLiteral(">u2"), QStringLiteral("<i4"), QStringLiteral(">i4"),
        QStringLiteral("<f4"), QStringLiteral(">f4"), QStringLiteral("<f8"), QStringLiteral(">f8")};
    return known.contains(type);
}

QStringList ArrayReader::read(Coefficients &coefficients)
{
    const bool isKnown = isKnownType(m_header.type);
    if (!isKnown)
        m_faults += QStringLiteral("it holds %1; coefficients are 16-bit unsigned integers, 32-bit"
                                   " signed integers, or 32- or 64-bit floats")
                        .arg(typeText(m_header.type));
    checkShape();
    if (isKnown && m_faults.isEmpty())
        checkLayers();
    if (m_faults.isEmpty())
        checkLength();
    if (!m_faults.isEmpty())
        return m_faults;

    coefficients.layerCount = m_layerCount;
    m_layerCount == 0 ? readValues(coefficients.single) : readValues(coefficients.layered);
    return m_faults;
}

void ArrayReader::checkShape()
{
    const std::vector<qint64> &shape = m_header.shape;
    const bool hasPixels
        = shape.size() >= 2 && shape[0] == m_wanted.rows && shape[1] == m_wanted.columns;
    if (hasPixels && shape.size() == 3)
        m_pixelValues = shape[2];
    else if (hasPixels && isMatrix() && shape[2] == 3 && shape[3] == 3)
        m_pixelValues = 9;
    else
        m_faults += QStringLiteral("its shape is %1, the zone needs (%2, %3, values a pixel)")
                        .arg(shapeText(shape))
                        .arg(m_wanted.rows)
                        .arg(m_wanted.columns);
}

/// A single layer or several: what the type and the values a pixel say.
void ArrayReader::checkLayers()
{
    const bool isUnsigned = m_header.type[1] == QLatin1Char('u');
    const bool isSingle = (isUnsigned || isFloat()) && m_pixelValues == 9;
    const bool isLayered = !isUnsigned && !isMatrix() && isLayeredCount(m_pixelValues);
    if (isSingle && (!isLayered || m_wanted.layerCount != 3))
        m_layerCount = 0;
    else if (isLayered)
        m_layerCount = static_cast<int>(m_pixelValues / 3);
    else
        m_faults
            += QStringLiteral("it holds %1 %2 a pixel; a single layer is 9 unsigned integers"
                              " or floats, 1 to %3 layers are 3 signed integers or floats each")
                   .arg(m_pixelValues)
                   .arg(typeText(m_header.type))
                   .arg(mostLayers);
    if (m_faults.isEmpty() && m_wanted.layerCount.value_or(m_layerCount) != m_layerCount)
        m_faults += otherKindText(m_layerCount, *m_wanted.layerCount);
}

void ArrayReader::checkLength()
{
    const qint64 pixels = m_wanted.rows * m_wanted.columns;
    if (pixels > largestZoneBytes / (storedPixelBytes(m_layerCount))) {
        m_faults += QStringLiteral("the zone is larger than one database value holds");
        return;
    }
    const qint64 needed = pixels * m_pixelValues * bytesPerValue();
    const qint64 present = m_file.size() - m_file.pos();
    if (present != needed)
        m_faults += QStringLiteral("its array needs %1 bytes, %2 follow its header")
                        .arg(needed)
                        .arg(present);
}

template <typename Value>
void ArrayReader::readValues(std::vector<Value> &values)
{
    values.resize(static_cast<std::size_t>(m_wanted.rows * m_wanted.columns * m_pixelValues));
    if (!isFloat())
        readBlock(values.data(), values.size());
    else if (bytesPerValue() == 4)
        readGains<float>(values);
    else
        readGains<double>(values);
    if (m_faults.isEmpty() && m_header.isFortranOrder)
        arrangeInCOrder(values);
}

/// The next values of the file, in this machine's byte order.
template <typename Stored>
bool ArrayReader::readBlock(Stored *values, std::size_t count)
{
    const auto bytes = static_cast<qint64>(count) * qint64{sizeof(Stored)};
    const auto length = static_cast<qsizetype>(count);
    if (m_file.read(reinterpret_cast<char *>(values), bytes) != bytes) {
        m_faults += QStringLiteral("it could not be read whole: ") + m_file.errorString();
        return false;
    }
    if (isBigEndian())
        qFromBigEndian<Stored>(values, length, values);
    else
        qFromLittleEndian<Stored>(values, length, values);
    return true;
}

template <typename Stored, typename Value>
void ArrayReader::readGains(std::vector<Value> &values)
{
    constexpr std::size_t blockValues = std::size_t{1} << 16;
    std::vector<Stored> gains(std::min(blockValues, values.size()));
    for (std::size_t first = 0; first < values.size(); first += blockValues) {
        const std::size_t count = std::min(blockValues, values.size() - first);
        if (!readBlock(gains.data(), count))
            return;
        for (std::size_t i = 0; i < count; ++i)
            values[first + i] = coefficient<Value>(double{gains[i]}, first + i);
    }
    if (m_misfits.count != 0)
        m_faults += misfitText(std::numeric_limits<Value>::max());
}

template <typename Value>
Value ArrayReader::coefficient(double gain, std::size_t position)
{
    const double rounded = std::nearbyint(gain * neutralGain(m_layerCount)); // half to even
    if (gain >= 0.0 && rounded <= std::numeric_limits<Value>::max())
        return static_cast<Value>(rounded);
    if (m_misfits.count == 0)
        m_misfits = {0, position, gain};
    ++m_misfits.count;
    return 0;
}

QString ArrayReader::misfitText(double most) const
{
    const QString text = QStringLiteral("%1 is %2, which is no gain from 0 to %3")
                             .arg(positionText(m_misfits.firstPosition))
                             .arg(m_misfits.firstValue)
                             .arg(most / neutralGain(m_layerCount));
    return m_misfits.count == 1
        ? text
        : text + QStringLiteral(", nor are %1 more values").arg(m_misfits.count - 1);
}

/// From Fortran order, in which the first index runs fastest.
template <typename Value>
void ArrayReader::arrangeInCOrder(std::vector<Value> &values) const
{
    const std::vector<Value> stored = std::exchange(values, std::vector<Value>(values.size()));
    const auto rows = static_cast<std::size_t>(m_wanted.rows);
    const auto columns = static_cast<std::size_t>(m_wanted.columns);
    const auto pixelValues = static_cast<std::size_t>(m_pixelValues);
    std::size_t next = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            for (std::size_t k = 0; k < pixelValues; ++k) {
                const std::size_t plane = isMatrix() ? k % 3 * 3 + k / 3 : k;
                values[next++] = stored[row + rows * (column + columns * plane)];
            }
        }
    }
}

/// The index of a value, as NumPy writes it.
QString ArrayReader::positionText(std::size_t position) const
{
    std::vector<qint64> sides = m_header.shape;
    if (!m_header.isFortranOrder)
        std::reverse(sides.begin(), sides.end());
    QStringList index;
    for (const qint64 side : sides) {
        index += QString::number(position % static_cast<std::size_t>(side));
        position /= static_cast<std::size_t>(side);
    }
    if (!m_header.isFortranOrder)
        std::reverse(index.begin(), index.end());
    return QStringLiteral("[%1]").arg(index.join(QStringLiteral(", ")));
}

} // namespace

QStringList readNpy(QIODevice &file, const WantedCoefficients &wanted, Coefficients &coefficients)
{
    NpyHeader header;
    const QString fault = readNpyHeader(file, header);
    return fault.isEmpty() ? ArrayReader(file, header, wanted).read(coefficients)
                           : QStringList(fault);
}

} // namespace seamrevise
