#include "exchange/coefficients.h"

namespace seamrevise
{

namespace
{

QString layersText(int layerCount)
{
    return layerCount == 0 ? QStringLiteral("a single layer")
                           : QStringLiteral("coefficients of %1 layers").arg(layerCount);
}

} // namespace

QString otherLayersText(int held, int wanted)
{
    return QStringLiteral("it holds %1, but %2 should be there")
        .arg(layersText(held), layersText(wanted));
}

} // namespace seamrevise
