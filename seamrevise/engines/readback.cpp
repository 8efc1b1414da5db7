#include "engines/readback.h"

#include "numbers/luminance.h"

namespace seamrevise
{

QString readBackFault(const QString &path, int number, const NQRect &partition,
                      const CoefficientFormat &format, const RevisedZones &revised,
                      QByteArray &sha256)
{
    std::vector<qint32> values;
    const QString fault = readCoefficientFile(path, pixelsOf(partition), format, values, &sha256);
    if (!fault.isEmpty())
        return fault;
    const ValueMismatch mismatch = revised.compare(number, format, values, noCap);
    if (mismatch.values == 0)
        return {};
    return path
        + QStringLiteral(": it reads back differently at row %1, column %2")
              .arg(mismatch.row)
              .arg(mismatch.column);
}

} // namespace seamrevise
