#include "partitionmerge/blend.h"
#include "seamrevise/report.h"
