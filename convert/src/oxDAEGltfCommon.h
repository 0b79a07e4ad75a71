// Small conversions every part of the glTF converter uses.
#pragma once

#include <algorithm>
#include <string>

#include <oxDAEReadWrite/oxDAEElements_Main.h>
#include <oxMath/oxColor.h>

#include "oxGltfBuilder.h"

namespace OxDAEConvert {

// The element's name, else its id: what glTF shows as the object's name.
inline std::string NameOf(const OxDAEReader::oxDAEElement& element) {
  if (!element.name.empty()) return std::string(element.name);
  return std::string(element.id);
}

// A colour as glTF's array of three (or with `alpha`, four) numbers in 0..1.
inline Json Color(const OxMath::oxFColor& c, bool alpha) {
  Json color = {std::clamp(c.r, 0.0f, 1.0f), std::clamp(c.g, 0.0f, 1.0f),
                std::clamp(c.b, 0.0f, 1.0f)};
  if (alpha) color.push_back(std::clamp(c.a, 0.0f, 1.0f));
  return color;
}

}  // namespace OxDAEConvert
