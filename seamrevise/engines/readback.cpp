#include "engines/readback.h"

#include "numbers/luminance.h"

namespace seamrevise
{

QString readBackFault(const QString &dir, int number, const NQRect &partition,
                      const std::vector<CoefficientFormat> &formats, const RevisedZones &revised)
{
    std::vector<qint32> values;
    for (const CoefficientFormat &format : formats) {
        const QString path = dir + QLatin1Char('/') + QString::number(number) + format.suffix;
        const QString fault = readCoefficientFile(path, pixelsOf(partition), format, values);
        if (!fault.isEmpty())
            return fault;
        const ValueMismatch mismatch = revised.compare(number, format, values, noCap);
        if (mismatch.values > 0)
            return path
                + QStringLiteral(": it reads back differently at row %1, column %2")
                      .arg(mismatch.row)
                      .arg(mismatch.column);
    }
    return {};
}

} // namespace seamrevise
