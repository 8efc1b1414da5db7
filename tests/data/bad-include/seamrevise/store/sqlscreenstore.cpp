#include "numbers/seam.h"
#include "store/screenlayout.h"
