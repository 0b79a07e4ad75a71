#include "oxDAEConvert/oxDAEReferencedFile.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include <oxDAEReadWrite/oxDAEReadWrite_FilePath.h>
#include <oxKernel/oxArchive.h>

namespace OxDAEConvert {

namespace {

std::string ReadDiskFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return file ? bytes.str() : std::string();
}

}  // namespace

std::string ReadReferencedFile(const OxDAEReader::oxDAEFile& document, const std::string& path) {
  const std::string_view entryName = OxDAEReader::GetArchiveEntryOfPath(document, path);
  if (entryName.empty()) return ReadDiskFile(path);
  std::error_code ec;
  const OxKernel::oxString archivePath = document.GetFileURI().GetFilePath();
  if (!std::filesystem::is_regular_file(archivePath.View(), ec)) return {};
  std::unique_ptr<OxKernel::oxArchive> archive;
  if (OxKernel::oxArchive::OpenFile(archive, archivePath,
                                    document.GetFileURI().GetString().View()) != 0)
    return {};
  const auto* entry = archive->Find(entryName);
  OxKernel::oxArray<char> bytes;
  if (!entry || archive->Read(*entry, bytes) != 0) return {};
  return std::string(bytes.data(), entry->size);
}

}  // namespace OxDAEConvert
