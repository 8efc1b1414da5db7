#include "engines/coefkind.h"

namespace seamrevise
{

CoefKind::~CoefKind() = default;

QString CoefKind::fillNeutral(const NQRect &)
{
    return {};
}

} // namespace seamrevise
