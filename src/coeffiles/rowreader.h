#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace seamrevision
{

/// Reads a plaintext that is made row by row, in pieces of any size. It needs memory for one row
/// from the first piece on.
class RowReader
{
public:
    /// Writes the bytes of a row, counted from 0; rows are asked for in order.
    using MakeRow = std::function<void(std::size_t row, unsigned char *bytes)>;

    /// rowBytes is above 0.
    RowReader(std::size_t rowBytes, MakeRow makeRow)
        : m_rowBytes(rowBytes)
        , m_makeRow(std::move(makeRow))
    {
    }

    /// Writes the next count bytes of the plaintext.
    void operator()(unsigned char *bytes, std::size_t count)
    {
        while (count > 0) {
            if (m_used == m_row.size())
                makeNextRow();
            const std::size_t part = std::min(count, m_row.size() - m_used);
            bytes = std::copy_n(m_row.data() + m_used, part, bytes);
            m_used += part;
            count -= part;
        }
    }

private:
    void makeNextRow()
    {
        m_row.resize(m_rowBytes);
        m_makeRow(m_nextRow++, m_row.data());
        m_used = 0;
    }

    std::size_t m_rowBytes;
    MakeRow m_makeRow;
    std::vector<unsigned char> m_row;
    std::size_t m_used = 0;
    std::size_t m_nextRow = 0;
};

} // namespace seamrevision
