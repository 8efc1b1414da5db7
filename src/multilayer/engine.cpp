#include "seamrevision/multilayerpartitionmerge.h"

#include "revision/exacttype.h"

#include <algorithm>

MultiLayerPartitionMerge::MultiLayerPartitionMerge(const std::vector<unsigned int> &layerParams)
    : m_layerParams(layerParams)
{
    seamrevision::ownVirtualTable(*this);
}

MultiLayerPartitionMerge::~MultiLayerPartitionMerge() = default;

void MultiLayerPartitionMerge::setLayerSize(int size)
{
    m_layerSize = size;
}

std::size_t MultiLayerPartitionMerge::valuesPerPixel() const
{
    return std::size_t{3} * static_cast<std::size_t>(std::max(0, m_layerSize));
}
