#include "oxDAEReadWrite/oxDAEElements_Main_LightCamera.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAELight);
OX_DAE_ELEMENT_DEFINE(oxDAECamera);

}  // namespace OxDAEReader
