#include "records/des.h"
#include "records/trace.h"
