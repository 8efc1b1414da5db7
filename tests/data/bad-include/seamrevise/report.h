#include "partitionmerge/blend.h"
#include "records/nqrect.h"
#include "seamrevise/report.h"
