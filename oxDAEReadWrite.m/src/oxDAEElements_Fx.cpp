#include "oxDAEReadWrite/oxDAEElements_Fx.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEImage);

}  // namespace OxDAEReader
