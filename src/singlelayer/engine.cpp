#include "seamrevision/partitionmerge.h"

#include "revision/exacttype.h"
#include "revision/result.h"

using namespace seamrevision;

PartitionMerge::PartitionMerge()
{
    ownVirtualTable(*this);
}

PartitionMerge::~PartitionMerge() = default;

void PartitionMerge::setPScreenDb(ScreenDataBaseManager *db)
{
    m_pScreenDBManager = db;
}

ST_ReviseResult PartitionMerge::sendResult(enum_ErrCodeType errCode, const QString &message,
                                           ST_ReviseResult &result)
{
    endResult(errCode, message, result);
    return result;
}
