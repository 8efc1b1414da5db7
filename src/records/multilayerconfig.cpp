#include "seamrevision/multilayerconfig.h"

MultiLayerConfig *MultiLayerConfig::instance()
{
    static MultiLayerConfig config;
    return &config;
}
