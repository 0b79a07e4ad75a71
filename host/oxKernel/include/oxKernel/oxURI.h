// oxURI: a URI reference or a plain file path, kept as the text it was given.
// It splits into scheme, authority, path, query and fragment on demand,
// resolves relative references against a base, and converts file URIs to
// local paths.
#pragma once

#include <string>
#include <string_view>

#include "oxKernel/oxString.h"

namespace OxKernel {

class oxURI {
 public:
  oxURI() = default;
  explicit oxURI(std::string_view text) : m_text(text) {}
  // An absolute "file://" URI for a local path (made absolute against the
  // current directory); characters outside the URI grammar are %-encoded.
  static oxURI FromFilePath(std::string_view path);

  const oxString& GetString() const { return m_text; }
  bool IsEmpty() const { return m_text.empty(); }

  struct Parts {
    std::string_view scheme, authority, path, query, fragment;
    bool hasAuthority = false, hasQuery = false, hasFragment = false;
  };
  // Splits the text. A scheme needs at least two characters, so "C:/x" is a
  // path with a drive letter, not a URI with scheme "C". The parts view this
  // object's text: the URI must outlive them.
  Parts Split() const;

  bool HasScheme() const { return !Split().scheme.empty(); }
  // A proper URI is absolute, uses no back-slashes, blanks or control
  // characters, and, for the "file" scheme, names no host ("file:///path"):
  // a file URI with a host or a drive letter in the host position cannot be
  // opened as written.
  bool IsProperURI() const;

  // Resolves `reference` against this URI as base: a reference with a scheme
  // stands as it is; otherwise its path is merged with the base's and dot
  // segments are removed. Plain paths resolve like scheme-less URIs.
  oxURI Resolve(std::string_view reference) const;

  // The local file path: the %-decoded path of a "file:" URI, or the text
  // itself when it has no scheme. Empty for other schemes.
  oxString GetFilePath() const;

  bool operator==(const oxURI& other) const { return m_text == other.m_text; }

  // `text` with every "%XY" of two hex digits replaced by its byte; a "%"
  // without two hex digits after it stays as it is.
  static oxString PercentDecode(std::string_view text);
  // Removes "." and ".." segments from a path (RFC 3986, section 5.2.4). A
  // relative path keeps the ".." segments that climb above its start:
  // dropping them would name another file.
  static std::string RemoveDotSegments(std::string_view path);

 private:
  oxString m_text;
};

}  // namespace OxKernel
