#include "coeffiles/textdump.h"
#include "records/trace.h"

#include <partitionmerge/blend.h>
#include <vector>
