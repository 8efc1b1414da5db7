#include "revision/blend.h"
#include "commands/revise.h"
