#include "oxDAEReadWrite/oxDAETechniques_NV.h"

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAETechEffect_Nv);

namespace {

constexpr std::string_view kImportTag = "import";

void ReadImport(oxDAETechEffect_Nv& technique, oxDAEFile& file) {
  technique.importProfile.clear();
  technique.importURI.clear();
  file.reader->ReadAttributeString("profile", technique.importProfile);
  file.reader->ReadAttributeString("url", technique.importURI);
  oxDAEFile::CorrectURI(technique.importURI);
}

}  // namespace

constexpr oxDAEChildRule<oxDAETechEffect_Nv> kNvChildren[] = {
    {kImportTag, ReadImport},
};

void oxDAETechEffect_Nv::Read(oxDAEFile& file) {
  ReadAttributes(file);
  file.ReadChildrenOr(*this, kNvChildren, [this, &file](std::string_view) {
    if (!ReadChild(file)) OX_LOG(OxKernel::kLogWarning, "element not supported in <import>");
  });
}

void oxDAETechEffect_Nv::Write(oxDAEFile& file) {
  StartWriting(file);
  if (!importProfile.empty() || !importURI.empty()) {
    OxKernel::oxXMLWriter& w = *file.writer;
    w.StartElement(kImportTag);
    if (!importProfile.empty()) w.WriteAttributeString("profile", importProfile);
    if (!importURI.empty()) w.WriteAttributeString("url", importURI);
    w.EndAttributes();
    w.EndElement();
  }
  EndWriting(file);
}

}  // namespace OxDAEReader
