#pragma once

#include "seamrevision/reviseresult.h"

#include <vector>

namespace seamrevision
{

/// Empties a vector and gives its memory back.
template <typename Value>
void release(std::vector<Value> &values)
{
    std::vector<Value>().swap(values);
}

/// Puts a code and a text into a result and releases its arrays unless the code is success.
inline void endResult(enum_ErrCodeType code, const QString &text, ST_ReviseResult &result)
{
    if (code != ErrCode_Success) {
        release(result.coefData);
        release(result.multiLayerCoefData);
        release(result.zipCoefData);
    }
    result.isSuccess = code == ErrCode_Success ? 1 : 0;
    result.errMsg = text;
    result.errCode = code;
}

} // namespace seamrevision
