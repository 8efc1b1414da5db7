#include "seamrevision/screendatabasemanager.h"

ScreenDataBaseManager::~ScreenDataBaseManager() = default;
