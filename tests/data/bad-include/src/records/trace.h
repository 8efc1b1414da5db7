#include "seamrevision/nqrect.h"
#include "seamrevision/partitionmerge.h"
#include "coeffiles/textdump.h"
