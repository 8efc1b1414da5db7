#include "seamrevision/des.h"
#include "seamrevision/revisetypes.h"
#include "records/trace.h"
