#include "seamrevision/areainfobase.h"

AreaInfoBase::AreaInfoBase(int areaIndex, int startRow, int startCol, int endRow, int endCol)
    : m_areaIndex(areaIndex)
    , m_startRow(startRow)
    , m_startCol(startCol)
    , m_endRow(endRow)
    , m_endCol(endCol)
{
}

QString AreaInfoBase::getAreaNum() const
{
    return QString::number(qint64{m_areaIndex} + 1);
}
