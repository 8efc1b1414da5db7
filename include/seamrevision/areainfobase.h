#pragma once

#include "seamrevision/export.h"
#include "seamrevision/revisetypes.h"

#include <QString>

/// One separately corrected rectangle of the screen: a partition. Owned by the host; the engines
/// keep pointers to it and rewrite its correction state at the start of every revision.
///
/// Edges are screen pixels, both ends included. Partitions of a grid are numbered from 1, row by
/// row; the index is the number less 1.
class SEAMREVISION_EXPORT AreaInfoBase
{
public:
    AreaInfoBase(int areaIndex, int startRow, int startCol, int endRow, int endCol);

    int getAreaIndex() const { return m_areaIndex; }
    /// The partition's number as text: its key in partition maps and its zone's area id.
    QString getAreaNum() const;

    int getAreaStartRow() const { return m_startRow; }
    int getAreaStartCol() const { return m_startCol; }
    int getAreaEndRow() const { return m_endRow; }
    int getAreaEndCol() const { return m_endCol; }

    /// Not corrected until an engine or the host says otherwise.
    enum_subAreaStateType getCorrectAreaStateType() const { return m_state; }
    void setCorrectAreaStateType(enum_subAreaStateType state) { m_state = state; }

private:
    int m_areaIndex;
    int m_startRow;
    int m_startCol;
    int m_endRow;
    int m_endCol;
    enum_subAreaStateType m_state = SubAreaState_NotCorrected;
};
