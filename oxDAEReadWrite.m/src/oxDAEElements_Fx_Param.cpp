#include "oxDAEReadWrite/oxDAEElements_Fx_Param.h"
