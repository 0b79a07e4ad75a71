// The bytes of a file a document refers to (a picture, most often), read
// from disk or from the document's own .zae archive.
#pragma once

#include <string>

#include <oxDAEReadWrite/oxDAEReadWrite_File.h>

namespace OxDAEConvert {

// The bytes of `path` as GetReferencedFilePath(document, reference) gives
// it: an "ARCHIVE!/entry" path is read from the document's archive (opened
// again from its file: a document read from memory has none to open), any
// other path from disk. Empty when the file or entry cannot be read.
std::string ReadReferencedFile(const OxDAEReader::oxDAEFile& document, const std::string& path);

}  // namespace OxDAEConvert
