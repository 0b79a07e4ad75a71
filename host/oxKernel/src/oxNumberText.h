// Number tokens of XML texts: one routine per value type that converts a
// token with std::from_chars and accepts the XML Schema spellings that
// from_chars does not ("+" signs, "true"/"false"). Shared by oxCharacter and
// the XML text-value parsers so both read numbers the same way.
#pragma once

#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace OxKernel::NumberText {

// True when the decimal token (already known to be well formed) spells a
// magnitude below one: the exponent of its first significant digit, after the
// written exponent is applied, is negative.
inline bool IsBelowOne(std::string_view token) {
  size_t i = (!token.empty() && (token[0] == '+' || token[0] == '-')) ? 1 : 0;
  long long leading = 0;  // exponent of the first significant digit, plus one
  bool significant = false, fraction = false;
  for (; i < token.size() && token[i] != 'e' && token[i] != 'E'; ++i) {
    if (token[i] == '.') {
      fraction = true;
    } else if (token[i] != '0' || significant) {
      significant = true;
      leading += fraction ? 0 : 1;
    } else if (fraction) {
      --leading;
    }
  }
  const bool negativeExponent = i + 1 < token.size() && token[i + 1] == '-';
  long long exponent = 0;
  for (++i; i < token.size(); ++i) {
    if (token[i] >= '0' && token[i] <= '9' && exponent < 1'000'000'000)
      exponent = exponent * 10 + (token[i] - '0');
  }
  return leading + (negativeExponent ? -exponent : exponent) <= 0;
}

// A floating-point token whose magnitude is beyond the type's range reads as
// infinity (too large) or zero (too small), keeping its sign.
template <class T>
T OutOfRangeValue(std::string_view token) {
  const bool negative = !token.empty() && token.front() == '-';
  const T magnitude = IsBelowOne(token) ? T(0) : std::numeric_limits<T>::infinity();
  return negative ? -magnitude : magnitude;
}

template <class T>
bool ParseToken(std::string_view token, T& out);

// Exporters that format numbers under a locale with a decimal comma write
// "0,5": a float token with one comma and no point reads with the comma
// taken as the point. Nothing else uses commas in number lists.
template <class T>
bool ParseDecimalComma(std::string_view token, T& out) {
  char text[64];
  const size_t comma = token.find(',');
  if (token.size() >= sizeof text || comma == std::string_view::npos ||
      token.find_first_of(",.", comma + 1) != std::string_view::npos ||
      token.find('.') != std::string_view::npos) {
    return false;
  }
  token.copy(text, token.size());
  text[comma] = '.';
  return ParseToken(std::string_view(text, token.size()), out);
}

// Parses the whole of `token` (no white space inside) into `out`.
template <class T>
bool ParseToken(std::string_view token, T& out) {
  const char* first = token.data();
  const char* last = first + token.size();
  if (first != last && *first == '+') {
    ++first;
    if (first == last || *first == '-' || *first == '+') return false;
  }
  T value{};
  std::from_chars_result r;
  if constexpr (std::is_floating_point_v<T>) {
    r = std::from_chars(first, last, value, std::chars_format::general);
    if (r.ec == std::errc::result_out_of_range && r.ptr == last) {
      out = OutOfRangeValue<T>(token);
      return true;
    }
  } else {
    r = std::from_chars(first, last, value);
  }
  if (r.ec != std::errc() || r.ptr != last) {
    if constexpr (std::is_floating_point_v<T>) return ParseDecimalComma(token, out);
    return false;
  }
  out = value;
  return true;
}

inline bool ParseToken(std::string_view token, bool& out) {
  if (token == "true" || token == "1") {
    out = true;
    return true;
  }
  if (token == "false" || token == "0") {
    out = false;
    return true;
  }
  return false;
}

}  // namespace OxKernel::NumberText
