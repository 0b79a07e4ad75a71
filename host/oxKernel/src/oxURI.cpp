#include "oxKernel/oxURI.h"

#include <filesystem>
#include <system_error>
#include <vector>

namespace OxKernel {

namespace {

bool IsAlpha(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Characters that may stand unescaped in a URI path.
bool IsPathChar(char c) {
  return IsAlpha(c) || IsDigit(c) ||
         std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

int HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

oxString oxURI::PercentDecode(std::string_view text) {
  oxString out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      const int hi = HexValue(text[i + 1]), lo = HexValue(text[i + 2]);
      if (hi >= 0 && lo >= 0) {
        out += static_cast<char>(hi * 16 + lo);
        i += 2;
        continue;
      }
    }
    out += text[i];
  }
  return out;
}

std::string oxURI::RemoveDotSegments(std::string_view path) {
  const bool absolute = !path.empty() && path.front() == '/';
  std::vector<std::string_view> segments;
  size_t pos = absolute ? 1 : 0;
  bool trailingSlash = false;
  while (pos <= path.size()) {
    const size_t slash = path.find('/', pos);
    const std::string_view seg =
        path.substr(pos, slash == std::string_view::npos ? std::string_view::npos : slash - pos);
    trailingSlash = (seg == "." || seg == "..");
    if (seg == "..") {
      if (!segments.empty() && segments.back() != "..") {
        segments.pop_back();
      } else if (!absolute) {
        segments.push_back(seg);
      }
    } else if (seg != ".") {
      segments.push_back(seg);
    }
    if (slash == std::string_view::npos) break;
    pos = slash + 1;
  }
  std::string out = absolute ? "/" : "";
  for (size_t i = 0; i < segments.size(); ++i) {
    if (i) out += '/';
    out += segments[i];
  }
  if (trailingSlash && !out.empty() && out.back() != '/') out += '/';
  return out;
}

oxURI oxURI::FromFilePath(std::string_view path) {
  std::error_code ec;
  std::filesystem::path p = std::filesystem::absolute(std::filesystem::path(path), ec);
  const std::string absolute = ec ? std::string(path) : p.lexically_normal().generic_string();
  std::string text = "file://";
  if (absolute.empty() || absolute.front() != '/') text += '/';
  static const char* kHex = "0123456789ABCDEF";
  for (unsigned char c : absolute) {
    if (IsPathChar(static_cast<char>(c)) && c != '%') {
      text += static_cast<char>(c);
    } else {
      text += '%';
      text += kHex[c >> 4];
      text += kHex[c & 15];
    }
  }
  return oxURI(text);
}

oxURI::Parts oxURI::Split() const {
  Parts parts;
  std::string_view rest = m_text.View();
  const size_t colon = rest.find(':');
  if (colon != std::string_view::npos && colon >= 2 && IsAlpha(rest[0])) {
    bool schemeChars = true;
    for (size_t i = 1; i < colon; ++i) {
      const char c = rest[i];
      schemeChars = schemeChars && (IsAlpha(c) || IsDigit(c) || c == '+' || c == '-' || c == '.');
    }
    if (schemeChars) {
      parts.scheme = rest.substr(0, colon);
      rest.remove_prefix(colon + 1);
    }
  }
  if (const size_t hash = rest.find('#'); hash != std::string_view::npos) {
    parts.fragment = rest.substr(hash + 1);
    parts.hasFragment = true;
    rest = rest.substr(0, hash);
  }
  if (const size_t q = rest.find('?'); q != std::string_view::npos) {
    parts.query = rest.substr(q + 1);
    parts.hasQuery = true;
    rest = rest.substr(0, q);
  }
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const size_t slash = rest.find('/');
    parts.authority = rest.substr(0, slash);
    parts.hasAuthority = true;
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash);
  }
  parts.path = rest;
  return parts;
}

bool oxURI::IsProperURI() const {
  const Parts parts = Split();
  if (parts.scheme.empty()) return false;
  for (unsigned char c : m_text) {
    if (c <= ' ' || c == '\\' || c == 0x7f) return false;
  }
  if (parts.scheme == "file") return parts.hasAuthority && parts.authority.empty();
  return true;
}

oxURI oxURI::Resolve(std::string_view reference) const {
  const oxURI ref(reference);
  const Parts r = ref.Split();
  if (!r.scheme.empty()) return ref;
  const Parts b = Split();
  std::string out;
  if (!b.scheme.empty()) {
    out.append(b.scheme);
    out += ':';
  }
  std::string path;
  std::string_view query = r.query;
  bool hasQuery = r.hasQuery;
  if (r.hasAuthority) {
    out += "//";
    out.append(r.authority);
    path = RemoveDotSegments(r.path);
  } else {
    if (b.hasAuthority) {
      out += "//";
      out.append(b.authority);
    }
    if (r.path.empty()) {
      path = std::string(b.path);
      if (!r.hasQuery) {
        query = b.query;
        hasQuery = b.hasQuery;
      }
    } else if (r.path.front() == '/') {
      path = RemoveDotSegments(r.path);
    } else {
      std::string merged;
      if (b.hasAuthority && b.path.empty()) {
        merged = "/";
      } else {
        const size_t slash = b.path.rfind('/');
        if (slash != std::string_view::npos) merged = std::string(b.path.substr(0, slash + 1));
      }
      merged.append(r.path);
      path = RemoveDotSegments(merged);
    }
  }
  out += path;
  if (hasQuery) {
    out += '?';
    out.append(query);
  }
  if (r.hasFragment) {
    out += '#';
    out.append(r.fragment);
  }
  return oxURI(out);
}

oxString oxURI::GetFilePath() const {
  const Parts parts = Split();
  if (parts.scheme.empty()) return m_text;
  if (parts.scheme != "file") return {};
  std::string_view path = parts.path;
  // "file:///C:/dir" names the drive path "C:/dir".
  if (path.size() >= 3 && path[0] == '/' && IsAlpha(path[1]) && path[2] == ':')
    path.remove_prefix(1);
  oxString decoded = PercentDecode(path);
  if (parts.hasAuthority && !parts.authority.empty() && parts.authority != "localhost") {
    return oxString("//") + oxString(parts.authority) + decoded;
  }
  return decoded;
}

}  // namespace OxKernel
