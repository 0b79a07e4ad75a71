// Reading a document out of a `.zae` archive: which entry holds it, and the
// list of entries that the document's picture references resolve against.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

using OxKernel::oxArchive;
using OxKernel::oxXMLFactory;

namespace {

constexpr std::string_view kManifest = "manifest.xml";
// Root documents named in the message about an archive that holds several.
constexpr size_t kNamesListed = 5;

bool EndsWithNoCase(std::string_view text, std::string_view lowerSuffix) {
  if (text.size() < lowerSuffix.size()) return false;
  return std::equal(lowerSuffix.begin(), lowerSuffix.end(), text.end() - lowerSuffix.size(),
                    [](char s, char c) { return s == (c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); });
}

// A ".dae" entry at the archive's root.
bool IsRootDocument(std::string_view name) {
  return name.find('/') == std::string_view::npos && EndsWithNoCase(name, ".dae");
}

std::string_view TrimBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// The entry name a <dae_root> text names: the part before "#", blanks
// around it dropped, %-escapes decoded, back-slashes read as slashes, dot
// segments removed, taken from the archive's root. Null when it climbs out
// of the archive with "..".
std::optional<std::string> ManifestPath(std::string_view text) {
  std::string path(OxKernel::oxURI::PercentDecode(TrimBlanks(text.substr(0, text.find('#')))));
  std::replace(path.begin(), path.end(), '\\', '/');
  const size_t start = std::min(path.find_first_not_of('/'), path.size());
  path = OxKernel::oxURI::RemoveDotSegments(std::string_view(path).substr(start));
  if (path == ".." || path.starts_with("../")) return std::nullopt;
  return path;
}

// An entry name that would climb out of a folder it was unpacked into:
// absolute, or with a ".." segment.
bool LeavesArchive(std::string_view name) {
  if (name.starts_with('/') || name.starts_with('\\')) return true;
  for (size_t start = 0; start <= name.size();) {
    const size_t end = std::min(name.find_first_of("/\\", start), name.size());
    if (name.substr(start, end - start) == "..") return true;
    start = end + 1;
  }
  return false;
}

// The text of the manifest's <dae_root>: its root element or a child of it.
std::optional<oxString> ReadDAERoot(OxKernel::oxXMLReader& manifest) {
  if (manifest.MoveNext() != 0) return std::nullopt;
  oxString text;
  if (manifest.IsTag("dae_root")) {
    manifest.ReadTextString(text);
    return text;
  }
  manifest.EnterChildren();
  while (manifest.MoveNext() == 0) {
    if (!manifest.IsTag("dae_root")) continue;
    manifest.ReadTextString(text);
    return text;
  }
  return std::nullopt;
}

}  // namespace

bool oxDAEFile::HasArchiveEntry(std::string_view name) const {
  return std::binary_search(
      archiveEntries.begin(), archiveEntries.end(), name,
      [](const auto& a, const auto& b) { return std::string_view(a) < std::string_view(b); });
}

bool oxDAEFile::IsArchive(std::string_view name, std::string_view lead) {
  return EndsWithNoCase(name, ".zae") || oxArchive::HasZipSignature(lead);
}

bool oxDAEFile::IsArchiveFile(const OxKernel::oxURI& location, const oxString& path) {
  char lead[4] = {};
  size_t read = 0;
  if (std::FILE* file = path.empty() ? nullptr : std::fopen(path.c_str(), "rb")) {
    read = std::fread(lead, 1, sizeof lead, file);
    std::fclose(file);
  }
  return IsArchive(path.empty() ? location.GetString().View() : path.View(),
                   std::string_view(lead, read));
}

int oxDAEFile::OpenArchiveDocument(const oxArchive& archive) {
  const oxArchive::Entry* document = nullptr;
  if (const int rc = FindArchiveDocument(archive, document)) return rc;
  oxArray<char> bytes;
  if (const int rc = archive.Read(*document, bytes)) return rc;
  const int rc = oxXMLFactory::Instance(contextID).CreateReader(
      reader, std::move(bytes), document->size,
      OxKernel::oxConcat(archive.GetName(), "!/", document->name), 1);
  if (rc != 0) return rc;
  archiveEntry = document->name;
  for (const oxArchive::Entry& entry : archive.GetEntries()) {
    if (LeavesArchive(entry.name.View())) {
      OX_LOG(OxKernel::kLogWarning,
             OxKernel::oxConcat("'", archive.GetName(), "' holds the entry '", entry.name,
                                "', whose name leaves the archive; it is never read"));
      continue;
    }
    archiveEntries.push_back(entry.name);
  }
  std::sort(archiveEntries.begin(), archiveEntries.end());
  return 0;
}

int oxDAEFile::FindArchiveDocument(const oxArchive& archive, const oxArchive::Entry*& document) {
  if (const oxArchive::Entry* manifest = archive.Find(kManifest))
    return FindManifestDocument(archive, *manifest, document);
  std::vector<const oxArchive::Entry*> roots;
  for (const oxArchive::Entry& entry : archive.GetEntries()) {
    if (IsRootDocument(entry.name.View())) roots.push_back(&entry);
  }
  if (roots.size() == 1) {
    document = roots.front();
    return 0;
  }
  std::string why = OxKernel::oxConcat("'", archive.GetName(), "' holds no manifest.xml and ");
  if (roots.empty()) {
    why += "no .dae file at its root";
  } else {
    why += OxKernel::oxConcat(roots.size(), " .dae files at its root (");
    for (size_t i = 0; i < std::min(roots.size(), kNamesListed); ++i)
      why += OxKernel::oxConcat(i ? ", " : "", roots[i]->name);
    why += roots.size() > kNamesListed ? ", ...)" : ")";
    why += ": it does not say which one to read";
  }
  OX_LOG(OxKernel::kLogError, why);
  return kDAENoDocumentInArchive;
}

int oxDAEFile::FindManifestDocument(const oxArchive& archive, const oxArchive::Entry& manifest,
                                    const oxArchive::Entry*& document) {
  oxArray<char> bytes;
  if (const int rc = archive.Read(manifest, bytes)) return rc;
  const auto fail = [&archive](std::string_view why) {
    OX_LOG(OxKernel::kLogError,
           OxKernel::oxConcat("the manifest.xml of '", archive.GetName(), "' ", why));
    return kDAENoDocumentInArchive;
  };
  OxKernel::oxRefPtr<OxKernel::oxXMLReader> xml;
  if (oxXMLFactory::Instance(0).CreateReader(
          xml, std::move(bytes), manifest.size,
          OxKernel::oxConcat(archive.GetName(), "!/", manifest.name), 0) != 0)
    return fail("is not well-formed XML");
  const std::optional<oxString> root = ReadDAERoot(*xml);
  if (!root) return fail("has no <dae_root>");
  const std::optional<std::string> path = ManifestPath(root->View());
  if (!path) return fail(OxKernel::oxConcat("names '", *root, "', which is outside the archive"));
  if (path->empty()) return fail("has an empty <dae_root>");
  document = archive.Find(*path);
  if (!document)
    return fail(OxKernel::oxConcat("names '", *root, "', which the archive does not hold"));
  return 0;
}

}  // namespace OxDAEReader
