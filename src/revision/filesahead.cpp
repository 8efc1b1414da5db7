#include "revision/filesahead.h"

#include <algorithm>
#include <iterator>

namespace seamrevision
{

void FilesAhead::reach(int number) noexcept
{
    if (m_next == m_partitions.size() || number < m_partitions[m_next].number)
        return;
    try {
        m_prepared.prepare(takeGroup());
    } catch (...) { // saved without
        m_next = m_partitions.size();
    }
}

/// What would not fit a group alone is left to the saving.
void FilesAhead::add(int number, std::vector<ComingFile> files)
{
    std::size_t bytes = 0;
    for (const ComingFile &file : files)
        bytes += file.plaintextBytes;
    if (bytes > 0 && bytes <= m_groupBytes)
        m_partitions.push_back({number, bytes, std::move(files)});
}

/// Lowers the size of the groups as far as it does not take more of them: two half-full groups are
/// encrypted faster than a full one and what is left.
void FilesAhead::divideEvenly()
{
    std::size_t bytes = 0;
    std::size_t largest = 0;
    for (const Partition &partition : m_partitions) {
        bytes += partition.bytes;
        largest = std::max(largest, partition.bytes);
    }
    const std::size_t groupCount = bytes / (m_groupBytes + 1) + 1;
    m_groupBytes = std::min(m_groupBytes, std::max(largest, bytes / groupCount + largest / 2));
}

std::vector<ComingFile> FilesAhead::takeGroup()
{
    std::vector<ComingFile> group;
    std::size_t bytes = 0;
    while (m_next < m_partitions.size() && bytes + m_partitions[m_next].bytes <= m_groupBytes) {
        Partition &partition = m_partitions[m_next++];
        bytes += partition.bytes;
        group.insert(group.end(), std::make_move_iterator(partition.files.begin()),
                     std::make_move_iterator(partition.files.end()));
        partition.files.clear();
    }
    return group;
}

} // namespace seamrevision
