#pragma once

#include <QString>

/// The rectangle of a coefficient zone and the partition that it belongs to.
///
/// Edges are screen pixels, both ends included; all start at 0. The destructor is not virtual:
/// delete a zone only through its own type.
class ZoneBaseInfo
{
public:
    QString getAreaID() const { return m_areaID; }
    void setAreaID(const QString &areaID) { m_areaID = areaID; }

    int getBegPixRow() const { return m_begPixRow; }
    void setBegPixRow(const int &row) { m_begPixRow = row; }
    int getBegPixCol() const { return m_begPixCol; }
    void setBegPixCol(const int &col) { m_begPixCol = col; }
    int getEndPixRow() const { return m_endPixRow; }
    void setEndPixRow(const int &row) { m_endPixRow = row; }
    int getEndPixCol() const { return m_endPixCol; }
    void setEndPixCol(const int &col) { m_endPixCol = col; }

private:
    QString m_areaID;
    int m_begPixRow = 0;
    int m_begPixCol = 0;
    int m_endPixRow = 0;
    int m_endPixCol = 0;
};
