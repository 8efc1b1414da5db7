#include "numbers/seam.h"
#include "revision/blend.h"

#include <seamrevision/partitionmerge.h>
