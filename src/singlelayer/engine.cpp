#include "seamrevision/partitionmerge.h"

#include <vector>

namespace
{

/// Empties a vector and gives its memory back.
template <typename Value>
void release(std::vector<Value> &values)
{
    std::vector<Value>().swap(values);
}

} // namespace

PartitionMerge::PartitionMerge() = default;

PartitionMerge::~PartitionMerge() = default;

void PartitionMerge::setPScreenDb(ScreenDataBaseManager *db)
{
    m_pScreenDBManager = db;
}

ST_ReviseResult PartitionMerge::sendResult(enum_ErrCodeType errCode, const QString &message,
                                           ST_ReviseResult &result)
{
    if (errCode != ErrCode_Success) {
        release(result.coefData);
        release(result.multiLayerCoefData);
        release(result.zipCoefData);
    }
    result.isSuccess = errCode == ErrCode_Success ? 1 : 0;
    result.errMsg = message;
    result.errCode = errCode;
    return result;
}
