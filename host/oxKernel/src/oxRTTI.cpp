#include "oxKernel/oxRTTI.h"

namespace OxKernel {

const oxRTTI oxRTTIObject::kRTTI{"oxRTTIObject", 0, nullptr};

bool oxRTTI::IsKindOf(const oxRTTI& type, const oxRTTI& base) {
  for (const oxRTTI* r = &type; r; r = r->m_parent) {
    if (r == &base) return true;
  }
  return false;
}

bool oxRTTI::IsKindOf(const oxRTTI& type, std::string_view baseName) {
  for (const oxRTTI* r = &type; r; r = r->m_parent) {
    if (baseName == r->m_name) return true;
  }
  return false;
}

}  // namespace OxKernel
