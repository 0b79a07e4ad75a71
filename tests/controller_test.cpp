#include "oxTestSupport.h"
