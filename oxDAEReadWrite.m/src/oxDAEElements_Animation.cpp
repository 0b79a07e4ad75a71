#include "oxDAEReadWrite/oxDAEElements_Animation.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEAnimation);
OX_DAE_ELEMENT_DEFINE(oxDAEAnimationClip);
OX_DAE_ELEMENT_DEFINE(oxDAEController);

}  // namespace OxDAEReader
