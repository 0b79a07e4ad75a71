// Effect parameters: <newparam>, <setparam>, <annotate>.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"
