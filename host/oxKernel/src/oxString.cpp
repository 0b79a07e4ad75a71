#include "oxKernel/oxString.h"

namespace OxKernel {

namespace {
char LowerAscii(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}
}  // namespace

bool oxString::ContainsNoCase(std::string_view needle) const {
  if (needle.empty()) return true;
  if (needle.size() > size()) return false;
  for (size_t start = 0; start + needle.size() <= size(); ++start) {
    size_t i = 0;
    while (i < needle.size() && LowerAscii((*this)[start + i]) == LowerAscii(needle[i]))
      ++i;
    if (i == needle.size()) return true;
  }
  return false;
}

unsigned int oxString::ReplaceAll(std::string_view from, std::string_view to) {
  if (from.empty()) return 0;
  unsigned int count = 0;
  std::string out;
  size_t pos = 0;
  for (size_t hit = find(from); hit != npos; hit = find(from, pos)) {
    out.append(data() + pos, hit - pos);
    out.append(to);
    pos = hit + from.size();
    ++count;
  }
  if (count == 0) return 0;
  out.append(data() + pos, size() - pos);
  assign(std::move(out));
  return count;
}

bool oxString::Matches(std::string_view pattern) const {
  // Iterative glob with single-star backtracking: linear in practice and free
  // of recursion, so no pattern can exhaust the stack.
  const std::string_view text = View();
  size_t t = 0, p = 0;
  size_t starP = std::string_view::npos, starT = 0;
  while (t < text.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++t;
      ++p;
    } else if (p < pattern.size() && pattern[p] == '*') {
      starP = p++;
      starT = t;
    } else if (starP != std::string_view::npos) {
      p = starP + 1;
      t = ++starT;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*')
    ++p;
  return p == pattern.size();
}

void oxStringTokenizer::SkipSeparators() {
  while (m_pos < m_text.size() && m_separators.find(m_text[m_pos]) != std::string_view::npos) {
    ++m_pos;
  }
}

bool oxStringTokenizer::HasMoreTokens() {
  SkipSeparators();
  return m_pos < m_text.size();
}

oxString oxStringTokenizer::NextToken() {
  SkipSeparators();
  const size_t start = m_pos;
  while (m_pos < m_text.size() && m_separators.find(m_text[m_pos]) == std::string_view::npos) {
    ++m_pos;
  }
  return oxString(m_text.substr(start, m_pos - start));
}

}  // namespace OxKernel
