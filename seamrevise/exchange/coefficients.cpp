#include "exchange/coefficients.h"

namespace seamrevise
{

QString kindText(int layerCount)
{
    return layerCount == 0
        ? QStringLiteral("single-layer coefficients")
        : QStringLiteral("coefficients with a layer count of %1").arg(layerCount);
}

QString otherKindText(int held, int wanted)
{
    return QStringLiteral("it holds %1, not %2").arg(kindText(held), kindText(wanted));
}

} // namespace seamrevise
