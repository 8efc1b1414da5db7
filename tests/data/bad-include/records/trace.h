#include "coeffiles/textdump.h"
#include "records/nqrect.h"
