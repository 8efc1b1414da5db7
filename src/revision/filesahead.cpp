#include "revision/filesahead.h"

#include <algorithm>

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
void FilesAhead::add(const Partition &partition)
{
    if (partition.pixels <= m_groupPixels)
        m_partitions.push_back(partition);
}

/// Makes the groups smaller as far as it does not take more of them: two half-full groups are
/// encrypted faster than a full one and what is left.
void FilesAhead::divideEvenly()
{
    std::size_t pixels = 0;
    std::size_t largest = 0;
    for (const Partition &partition : m_partitions) {
        pixels += partition.pixels;
        largest = std::max(largest, partition.pixels);
    }
    const std::size_t groupCount = pixels / (m_groupPixels + 1) + 1;
    m_groupPixels = std::min(m_groupPixels, std::max(largest, pixels / groupCount + largest / 2));
}

std::vector<ComingFile> FilesAhead::takeGroup()
{
    std::vector<ComingFile> group;
    std::size_t pixels = 0;
    while (m_next < m_partitions.size() && pixels + m_partitions[m_next].pixels <= m_groupPixels) {
        const Partition &partition = m_partitions[m_next++];
        pixels += partition.pixels;
        const std::vector<ComingFile> files = partition.files();
        group.insert(group.end(), files.begin(), files.end());
    }
    return group;
}

} // namespace seamrevision
