#include "coeffiles/textdump.h"
#include "records/trace.h"
#include "cipher/cbc.h"

#include <revision/blend.h>
#include <seamrevision/des.h>
#include <vector>
