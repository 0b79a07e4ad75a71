#include "oxDAEReadWrite/oxDAEElements_Animation_Controller.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEController);

}  // namespace OxDAEReader
