// Fuzz target for the texts the module parses by itself rather than through
// the XML reader: the first byte chooses the parser, the rest is its text.
// Animation target paths are resolved against a document loaded once at
// start; the other parsers need no document. Nothing may crash, hang, leak or
// read out of bounds.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>
#include <oxKernel/oxURI.h>
#include <oxKernel/oxXML.h>

namespace {

using OxDAEReader::oxDAEFile;
using OxKernel::oxString;

// The document whose targets the path parser resolves against; it animates
// a translate, an angle and a matrix member, so every path form has a match.
oxDAEFile* g_targets = nullptr;

void ParseTargetPath(std::string_view text) {
  g_targets->ResolveAnimationTargetPath(oxString(text));
}

void ParseCustomAttributes(std::string_view text) {
  OxDAEReader::oxDAEAttributes attributes;
  attributes.ReadFromXMLString(0, oxString(text));
}

void ParseURI(std::string_view text) {
  oxString corrected(text);
  oxDAEFile::CorrectURI(corrected);
  const OxKernel::oxURI uri(text);
  uri.Split();
  uri.IsProperURI();
  uri.Resolve("../a/./b#c");
  OxKernel::oxURI("file:///base/dir/doc.dae").Resolve(text);
  OxKernel::oxURI::FromFilePath(text);
}

void ParseXMLSafeText(std::string_view text) {
  oxString decoded(text);
  oxDAEFile::XMLSafeToCommonString(decoded);
}

void ParseVersion(std::string_view text) {
  OxDAEReader::oxDAEVersion(oxString(text)).ToString();
  OxDAEReader::oxDAEAssetElement::ParseAuthoringToolVersion(oxString(text));
  OxDAEReader::oxDAEAssetElement::ClassifyAuthoringTool(oxString(text));
}

void ParseNumbers(std::string_view text) {
  const OxKernel::oxXMLTextValue value(text.data(), text.size(), "fuzz");
  constexpr unsigned int kWanted = 16;
  unsigned int parsed = 0;
  float floats[kWanted];
  value.ParseFloats(floats, kWanted, parsed);
  int32_t ints[kWanted];
  value.ParseInts(ints, kWanted, parsed);
  bool bools[kWanted];
  value.ParseBools(bools, kWanted, parsed);
  oxString strings[kWanted];
  value.ParseStrings(strings, kWanted, parsed);
  OxKernel::oxArray<int32_t> all;
  value.AppendInts(all);
  value.CountTokens();
}

using Parser = void (*)(std::string_view);
constexpr Parser kParsers[] = {ParseTargetPath,  ParseCustomAttributes, ParseURI,
                               ParseXMLSafeText, ParseVersion,          ParseNumbers};
constexpr size_t kParserCount = sizeof(kParsers) / sizeof(kParsers[0]);

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  OxKernel::oxLog::SetSink([](const OxKernel::oxLogRecord&) {});
  OxDAEReader::oxDAEReadWriteModule::Init(0);
  g_targets = new oxDAEFile();
  if (g_targets->Load(OxKernel::oxURI::FromFilePath(OX_TARGET_DOCUMENT)) != 0) {
    std::fprintf(stderr, "cannot load %s\n", OX_TARGET_DOCUMENT);
    std::abort();
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  kParsers[data[0] % kParserCount](text);
  return 0;
}
