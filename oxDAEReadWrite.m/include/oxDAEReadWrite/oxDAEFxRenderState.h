// The render-state registry of the shader profile: the known render states
// with their value types and defaults. It is built at module start.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEFxRenderState : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEFxRenderState, oxDAEBaseElement, "")

 public:
  // Builds the registry once; a second call does nothing.
  static void PrepareHashTables();
  static void DestroyHashTables();
  static bool HasHashTables();
  // Number of render states the registry knows.
  static unsigned int GetRegisteredCount();
};

}  // namespace OxDAEReader
