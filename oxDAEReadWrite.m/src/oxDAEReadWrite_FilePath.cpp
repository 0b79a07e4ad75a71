#include "oxDAEReadWrite/oxDAEReadWrite_FilePath.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace OxDAEReader {

using OxKernel::oxString;
using OxKernel::oxURI;

namespace {

// The longest candidate path the search tries: longer ones cannot be opened,
// and skipping them keeps the search of a huge reference short.
constexpr size_t kMaxPathLength = 4096;

bool IsAlpha(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// True when `text` starts with the lower-case `prefix`, ignoring case.
bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    const char c = text[i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != prefix[i]) return false;
  }
  return true;
}

// A Windows drive: "C:" or the old "C|", alone or followed by "/".
bool IsDrive(std::string_view text) {
  return text.size() >= 2 && IsAlpha(text[0]) && (text[1] == ':' || text[1] == '|') &&
         (text.size() == 2 || text[2] == '/');
}

// "file:///" and the drive path with ":" after its letter.
std::string DriveURI(std::string_view drivePath) {
  std::string text = "file:///" + std::string(drivePath);
  text[9] = ':';
  return text;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back()))
    text.remove_suffix(1);
  return text;
}

// The part of a "file:" or "smb:" reference after its scheme as a URI the
// host reads: a drive after up to three slashes becomes "file:///C:/...",
// a path without slash is relative ("file:tex/a.png"), anything else keeps
// the "file:" scheme (a network share "smb://host/x" is "file://host/x").
std::string FileURI(std::string_view body) {
  const size_t slashes = std::min(body.find_first_not_of('/'), body.size());
  if (slashes <= 3 && IsDrive(body.substr(slashes))) return DriveURI(body.substr(slashes));
  if (slashes == 0) return std::string(body);
  return "file:" + std::string(body);
}

// The reference as a URI text that the host resolves the way the exporter
// meant it: back-slashes become slashes, "#" and "?" are escaped as part of
// the name, and drive letters and shares take the "file:" forms the host
// knows. A reference without scheme stays a relative or absolute path.
std::string Normalize(std::string_view reference) {
  std::string text;
  for (const char c : Trim(reference)) {
    if (c == '\\') {
      text += '/';
    } else if (c == '#') {
      text += "%23";
    } else if (c == '?') {
      text += "%3F";
    } else {
      text += c;
    }
  }
  if (StartsWithNoCase(text, "file:")) return FileURI(std::string_view(text).substr(5));
  if (StartsWithNoCase(text, "smb:")) return FileURI(std::string_view(text).substr(4));
  if (IsDrive(text)) return DriveURI(text);
  return text;
}

// The document as a URI that relative references resolve against: a plain
// path becomes an absolute "file:" URI.
oxURI DocumentBase(const oxURI& document) {
  if (document.HasScheme()) return document;
  return oxURI::FromFilePath(document.GetString().View());
}

// A path that names a file of another system: a drive or a network share.
bool IsForeign(std::string_view path) {
  return path.starts_with("//") || IsDrive(path);
}

bool IsFile(const std::string& path) {
  std::error_code ec;
  return std::filesystem::is_regular_file(path, ec);
}

// Where the tails of `path` may start: after its drive and after its last
// "." or ".." segment, so that no tail leaves the folder it is tried in.
size_t FirstTailStart(std::string_view path) {
  size_t first = 0;
  for (size_t start = 0; start < path.size();) {
    const size_t end = std::min(path.find('/', start), path.size());
    const std::string_view segment = path.substr(start, end - start);
    if (segment == "." || segment == ".." || (start == 0 && IsDrive(segment))) first = end + 1;
    start = end + 1;
  }
  return first;
}

// The first "folder/tail" over the tails of `path`, longest first, for which
// `exists` is true ("tail" alone for an empty folder); empty when none is.
template <class Exists>
oxString FindTail(std::string_view folder, std::string_view path, const Exists& exists) {
  for (size_t start = FirstTailStart(path); start < path.size(); ++start) {
    const bool segmentStart = path[start] != '/' && (start == 0 || path[start - 1] == '/');
    if (!segmentStart || folder.size() + 1 + path.size() - start > kMaxPathLength) continue;
    std::string candidate(folder);
    if (!folder.empty()) candidate += '/';
    candidate += path.substr(start);
    if (exists(candidate)) return oxString(std::move(candidate));
  }
  return {};
}

std::string JoinPath(std::string_view folder, std::string_view path) {
  return std::string(folder) + "/" + std::string(path);
}

// What "ARCHIVE!/" paths of `document` start with.
std::string ArchivePrefix(const oxDAEFile& document) {
  return std::string(document.GetFileURI().GetString()) + "!/";
}

// The entry of `document`'s archive that `reference` names, as
// GetReferencedFilePath describes it.
oxString GetArchivedFilePath(const oxDAEFile& document, const oxString& reference) {
  const std::string text = Normalize(reference.View());
  if (text.empty()) return {};
  const oxURI uri(text);
  if (uri.HasScheme() && uri.GetFilePath().empty()) return {};
  const oxString path = uri.HasScheme() ? uri.GetFilePath() : oxURI::PercentDecode(text);
  const std::string_view entry = document.GetArchiveEntry().View();
  const size_t slash = entry.rfind('/');
  const std::string_view folder = slash == std::string_view::npos ? "" : entry.substr(0, slash);
  const auto held = [&document](const std::string& name) { return document.HasArchiveEntry(name); };
  std::string candidate;
  if (path.StartsWith("/") || IsForeign(path.View())) {
    candidate = path.View().substr(std::min(path.find_first_not_of('/'), path.size()));
  } else {
    candidate = oxURI::RemoveDotSegments(folder.empty() ? std::string(path)
                                                        : JoinPath(folder, path.View()));
  }
  if (!held(candidate)) {
    if (oxString found = FindTail(folder, path.View(), held); !found.empty())
      candidate = std::string(found);
  }
  return oxString(ArchivePrefix(document) + candidate);
}

}  // namespace

bool ReferencedFileExists(const oxString& path) {
  return !IsForeign(path.View()) && IsFile(path);
}

oxString GetReferencedFilePath(const oxURI& document, const oxString& reference) {
  const std::string text = Normalize(reference.View());
  if (text.empty()) return {};
  const oxURI base = DocumentBase(document);
  const oxString path = base.Resolve(text).GetFilePath();
  if (path.empty()) return {};
  if (ReferencedFileExists(path)) return path;
  const oxString documentPath = base.GetFilePath();
  const size_t slash = documentPath.rfind('/');
  const std::string_view folder =
      slash == std::string::npos ? std::string_view(".") : documentPath.View().substr(0, slash);
  oxString found = FindTail(folder, path.View(), IsFile);
  return found.empty() ? path : found;
}

oxString GetReferencedFilePath(const oxDAEFile& document, const oxString& reference) {
  if (document.GetArchiveEntry().empty())
    return GetReferencedFilePath(document.GetFileURI(), reference);
  return GetArchivedFilePath(document, reference);
}

std::string_view GetArchiveEntryOfPath(const oxDAEFile& document, std::string_view path) {
  const std::string prefix = ArchivePrefix(document);
  if (document.GetArchiveEntry().empty() || !path.starts_with(prefix)) return {};
  return path.substr(prefix.size());
}

bool ReferencedFileExists(const oxDAEFile& document, const oxString& path) {
  const std::string_view entry = GetArchiveEntryOfPath(document, path.View());
  return entry.empty() ? ReferencedFileExists(path) : document.HasArchiveEntry(entry);
}

}  // namespace OxDAEReader
