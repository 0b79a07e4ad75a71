#include "oxDAEReadWrite/oxDAEFxRenderState.h"

#include <memory>

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEFxRenderState);

namespace {
// The registry of render states by name. The shader profile's render states
// are not modelled yet, so it holds none.
std::unique_ptr<oxHash<oxString, unsigned int>> g_registry;
}  // namespace

void oxDAEFxRenderState::PrepareHashTables() {
  if (g_registry) return;
  g_registry = std::make_unique<oxHash<oxString, unsigned int>>(
      OxKernel::oxHashTools::ComputePreferredSize(4));
}

void oxDAEFxRenderState::DestroyHashTables() {
  g_registry.reset();
}

bool oxDAEFxRenderState::HasHashTables() {
  return g_registry != nullptr;
}

unsigned int oxDAEFxRenderState::GetRegisteredCount() {
  return g_registry ? static_cast<unsigned int>(g_registry->size()) : 0;
}

}  // namespace OxDAEReader
