// oxString: the host's text type, a std::string with the few text operations
// the modules need (tokenizing, wildcard matching, case-insensitive search,
// replace-all). Value semantics; the bytes are UTF-8.
#pragma once

#include <charconv>
#include <concepts>
#include <functional>
#include <string>
#include <string_view>

namespace OxKernel {

class oxString : public std::string {
 public:
  using std::string::string;
  oxString() = default;
  oxString(const std::string& s) : std::string(s) {}
  oxString(std::string&& s) noexcept : std::string(std::move(s)) {}
  explicit oxString(std::string_view s) : std::string(s) {}

  bool IsEmpty() const { return empty(); }
  unsigned int Length() const { return static_cast<unsigned int>(size()); }
  std::string_view View() const { return {data(), size()}; }

  bool StartsWith(std::string_view prefix) const { return View().starts_with(prefix); }
  // True when `needle` occurs in the text, comparing ASCII letters without case.
  bool ContainsNoCase(std::string_view needle) const;
  // Replaces every occurrence of `from` (non-empty) by `to`, scanning left to
  // right over the original text; returns the number of replacements.
  unsigned int ReplaceAll(std::string_view from, std::string_view to);
  // Wildcard match of the whole text: "?" matches one byte, "*" any run.
  bool Matches(std::string_view pattern) const;
};

// Splits a text into tokens at any of the separator characters. Separators are
// not returned and runs of separators yield no empty tokens.
class oxStringTokenizer {
 public:
  oxStringTokenizer(std::string_view text, std::string_view separators)
      : m_text(text), m_separators(separators) {}
  bool HasMoreTokens();
  oxString NextToken();

 private:
  void SkipSeparators();
  std::string_view m_text;
  std::string_view m_separators;
  size_t m_pos = 0;
};

namespace Detail {
inline void AppendPart(std::string& out, std::string_view text) {
  out.append(text);
}
inline void AppendPart(std::string& out, char c) {
  out += c;
}
template <std::integral T>
void AppendPart(std::string& out, T value) {
  char buf[24];
  out.append(buf, static_cast<size_t>(std::to_chars(buf, buf + sizeof buf, value).ptr - buf));
}
// Without this overload a float would convert to char.
template <std::floating_point T>
void AppendPart(std::string& out, T value) {
  char buf[32];
  out.append(buf, static_cast<size_t>(std::to_chars(buf, buf + sizeof buf, value).ptr - buf));
}
}  // namespace Detail

// Joins texts, characters, integers and floating-point numbers (in their
// shortest exact form) into one string, for messages and registry keys.
template <class... Parts>
oxString oxConcat(const Parts&... parts) {
  oxString out;
  (Detail::AppendPart(out, parts), ...);
  return out;
}

}  // namespace OxKernel

template <>
struct std::hash<OxKernel::oxString> : std::hash<std::string> {};
