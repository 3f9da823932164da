#include "quilbex/util.h"
