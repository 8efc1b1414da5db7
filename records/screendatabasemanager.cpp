#include "records/screendatabasemanager.h"

ScreenDataBaseManager::~ScreenDataBaseManager() = default;
