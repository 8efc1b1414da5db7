#include "seamrevision/localconfig.h"

LocalConfig &LocalConfig::getInstance()
{
    static LocalConfig instance;
    return instance;
}
