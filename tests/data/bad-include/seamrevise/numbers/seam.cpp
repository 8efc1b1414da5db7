#include "store/screenlayout.h"
#include "records/trace.h"

#include <seamrevision/nqrect.h>
