#include "peer/stand_in.h"
