#include "oxDAEReadWrite/oxDAEReadWrite_FilePath.h"
