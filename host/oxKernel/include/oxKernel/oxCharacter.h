// Text to number conversion of the host. Each Interpret accepts the whole text
// (surrounding XML white space allowed) as exactly one value and returns false,
// leaving the output untouched, for anything else. No locale is involved.
#pragma once

#include <cstdint>
#include <string_view>

namespace OxKernel {

struct oxCharacter {
  static bool Interpret(std::string_view text, bool& out);
  static bool Interpret(std::string_view text, int16_t& out);
  static bool Interpret(std::string_view text, uint16_t& out);
  static bool Interpret(std::string_view text, int32_t& out);
  static bool Interpret(std::string_view text, uint32_t& out);
  static bool Interpret(std::string_view text, uint8_t& out);
  static bool Interpret(std::string_view text, float& out);
  static bool Interpret(std::string_view text, double& out);

  // XML white space: blank, tab, carriage return, line feed.
  static constexpr bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
  static std::string_view Trim(std::string_view text);
};

}  // namespace OxKernel
