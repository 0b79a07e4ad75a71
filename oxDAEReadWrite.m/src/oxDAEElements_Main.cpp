#include "oxDAEReadWrite/oxDAEElements_Main.h"

#include <oxKernel/oxCharacter.h>
#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEBaseElement);
OX_DAE_ELEMENT_DEFINE(oxDAEElement);
OX_DAE_ELEMENT_DEFINE(oxDAETypedElement);

using OxKernel::kLogError;
using OxKernel::kLogWarning;

// --- oxDAEVersion -----------------------------------------------------------

void oxDAEVersion::_FromString(const oxString& text) {
  uint32_t* const fields[3] = {&majorNumber, &minorNumber, &revision};
  unsigned int stored = 0;
  OxKernel::oxStringTokenizer tokens(text, ".");
  while (stored < 3 && tokens.HasMoreTokens()) {
    uint32_t value = 0;
    if (OxKernel::oxCharacter::Interpret(tokens.NextToken(), value)) {
      *fields[stored++] = value;
    } else {
      OX_LOG(kLogError, "invalid version number");
    }
  }
  if (stored != 3 || tokens.HasMoreTokens()) OX_LOG(kLogError, "invalid version number");
}

oxString oxDAEVersion::ToString() const {
  return OxKernel::oxConcat(majorNumber, '.', minorNumber, '.', revision);
}

// --- oxDAEBaseElement -------------------------------------------------------

void oxDAEBaseElement::Write(oxDAEFile&) {}

int oxDAEBaseElement::UpdateDependencies(oxDAEFile&, bool) {
  return 0;
}

oxString oxDAEBaseElement::GetParentingPath() const {
  for (const oxDAEBaseElement* e = this; e; e = e->parent) {
    const oxDAEElement* element = oxDAEElement::DynamicCast(e);
    if (element && !element->id.empty()) return element->id;
  }
  return {};
}

namespace {
oxString TagMessage(std::string_view what, std::string_view tag, std::string_view parentTag) {
  oxString text(what);
  text += " <";
  text += tag;
  text += "> in <";
  text += parentTag;
  text += '>';
  return text;
}
}  // namespace

void oxDAEBaseElement::UnsupportedTagWarning(std::string_view tag, std::string_view parentTag) {
  OX_LOG(kLogWarning, TagMessage("unsupported element", tag, parentTag));
}

void oxDAEBaseElement::UnsupportedExtraWarning(std::string_view parentTag) {
  OX_LOG(kLogWarning, OxKernel::oxConcat("unsupported <extra> in <", parentTag, ">"));
}

void oxDAEBaseElement::UnknownTagError(std::string_view tag, std::string_view parentTag) {
  OX_LOG(kLogError, TagMessage("unknown element", tag, parentTag));
}

void oxDAEBaseElement::UnknownTagWarning(std::string_view tag, std::string_view parentTag) {
  OX_LOG(kLogWarning, TagMessage("unknown element", tag, parentTag));
}

// --- oxDAEElement -----------------------------------------------------------

void oxDAEElement::Read(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeString("name", name);
  reader.ReadAttributeString("id", id);
  reader.ReadAttributeString("sid", sid);
  file._RegisterElementID(this);
  // The parent is set before reading, so the sid path is known here; elements
  // are found by path as soon as they are read.
  if (!sid.empty()) file._RegisterElementPath(this);
}

void oxDAEElement::Write(oxDAEFile& file) {
  if (!name.empty()) file.writer->WriteAttributeString("name", name);
  if (!id.empty()) file.writer->WriteAttributeString("id", id);
}

oxString oxDAEElement::ComputeURL(oxDAEFile&) const {
  return "#" + id;
}

oxString oxDAEElement::GetPath() const {
  if (!id.empty()) return id;
  if (sid.empty()) return {};
  if (const oxDAEElement* element = oxDAEElement::DynamicCast(parent)) {
    return OxKernel::oxConcat(element->GetParentingPath(), '/', sid);
  }
  // Without an element parent the path would be the id, which is empty here.
  return {};
}

namespace {
template <class Field>
oxDAEExtraElement* FindExtra(const oxArray<oxDAEExtraElement*>& extras, Field field,
                             const oxString& value) {
  for (oxDAEExtraElement* extra : extras) {
    if (extra->*field == value) return extra;
  }
  return nullptr;
}
}  // namespace

oxDAEExtraElement* oxDAEElement::GetExtraByType(const oxString& type) const {
  return FindExtra(extras, &oxDAEExtraElement::type, type);
}

oxDAEExtraElement* oxDAEElement::GetExtraByName(const oxString& value) const {
  return FindExtra(extras, &oxDAEExtraElement::name, value);
}

oxDAEExtraElement* oxDAEElement::GetExtraByID(const oxString& value) const {
  return FindExtra(extras, &oxDAEExtraElement::id, value);
}

oxDAEExtraElement* oxDAEElement::GetExtraByIndex(unsigned int index) const {
  return index < extras.size() ? extras[index] : nullptr;
}

void oxDAEElement::AdoptNameAsID(oxDAEFile& file) {
  if (!id.empty() || name.empty()) return;
  id = name;
  file._RegisterElementID(this);
}

void oxDAEElement::WriteStart(oxDAEFile& file, std::string_view tag) {
  file.writer->StartElement(tag);
  oxDAEElement::Write(file);
}

void oxDAEElement::WriteIdentityOnly(oxDAEFile& file, std::string_view tag) {
  WriteStart(file, tag);
  file.writer->EndElement();
}

}  // namespace OxDAEReader
