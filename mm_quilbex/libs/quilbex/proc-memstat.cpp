#include "quilbex/proc-memstat.h"
