#include "oxKernel/oxCharacter.h"

#include "oxNumberText.h"

namespace OxKernel {

std::string_view oxCharacter::Trim(std::string_view text) {
  size_t b = 0, e = text.size();
  while (b < e && IsSpace(text[b]))
    ++b;
  while (e > b && IsSpace(text[e - 1]))
    --e;
  return text.substr(b, e - b);
}

bool oxCharacter::Interpret(std::string_view t, bool& o) {
  return NumberText::ParseToken(Trim(t), o);
}
bool oxCharacter::Interpret(std::string_view t, int16_t& o) {
  return NumberText::ParseToken(Trim(t), o);
}
bool oxCharacter::Interpret(std::string_view t, uint16_t& o) {
  return NumberText::ParseToken(Trim(t), o);
}
bool oxCharacter::Interpret(std::string_view t, int32_t& o) {
  return NumberText::ParseToken(Trim(t), o);
}
bool oxCharacter::Interpret(std::string_view t, uint32_t& o) {
  return NumberText::ParseToken(Trim(t), o);
}
bool oxCharacter::Interpret(std::string_view t, uint8_t& o) {
  return NumberText::ParseToken(Trim(t), o);
}
bool oxCharacter::Interpret(std::string_view t, float& o) {
  return NumberText::ParseToken(Trim(t), o);
}
bool oxCharacter::Interpret(std::string_view t, double& o) {
  return NumberText::ParseToken(Trim(t), o);
}

}  // namespace OxKernel
