#  include "multilayer/packing.h"
#include "trace.h"
#include "../records/trace.h"
#include "cipher/cbc.h"
