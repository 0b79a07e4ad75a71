#include "oxDAEReadWrite/oxDAEElements_Fx_Param.h"

#include <memory>

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEFxParam);
OX_DAE_ELEMENT_DEFINE(oxDAEFxAnnotate);
OX_DAE_ELEMENT_DEFINE(oxDAEFxNewParam);
OX_DAE_ELEMENT_DEFINE(oxDAEFxSetParam);
OX_DAE_ELEMENT_DEFINE(oxDAEDynamicParam);

using OxKernel::kLogError;
using EKind = SBasicTypeInfo::EKind;

// --- Copies ----------------------------------------------------------------------

oxDAEFxParam::oxDAEFxParam(const oxDAEFxParam& other)
    : oxDAEElement(other),
      valueType(other.valueType),
      text(other.text),
      valueCategory(other.valueCategory),
      value(other.value) {
  AdoptElementValue();
}

oxDAEFxParam& oxDAEFxParam::operator=(const oxDAEFxParam& other) {
  if (this == &other) return *this;
  oxDAEElement::operator=(other);
  valueType = other.valueType;
  text = other.text;
  valueCategory = other.valueCategory;
  value = other.value;
  AdoptElementValue();
  return *this;
}

oxDAEFxParam::~oxDAEFxParam() = default;

void oxDAEFxParam::AdoptElementValue() {
  if (oxDAEBaseElement* element = GetElementValue()) element->parent = this;
}

// --- Getters ---------------------------------------------------------------------

namespace {

// The alternative T of `value`, or a value-initialised T when it holds
// another one.
template <class T, class Variant>
T ScalarOf(const Variant& value) {
  const T* held = std::get_if<T>(&value);
  return held ? *held : T{};
}

// The alternative T of `value`, or a shared empty T.
template <class T, class Variant>
const T& ArrayOf(const Variant& value) {
  static const T empty;
  const T* held = std::get_if<T>(&value);
  return held ? *held : empty;
}

// Component i of `floats`, 0 past its end.
float At(const oxArray<float>& floats, size_t i) {
  return i < floats.size() ? floats[i] : 0.0f;
}

}  // namespace

const oxString& oxDAEFxParam::GetStringType() const {
  return oxDAEEnumConverter::GetStringFromBasicType(valueType);
}

bool oxDAEFxParam::GetBoolValue() const {
  return ScalarOf<bool>(value);
}

int oxDAEFxParam::GetIntValue() const {
  return ScalarOf<int>(value);
}

float oxDAEFxParam::GetFloatValue() const {
  return ScalarOf<float>(value);
}

OxMath::oxGenVec2<float> oxDAEFxParam::GetVec2Value() const {
  const oxArray<float>& f = GetArrayOfFloatsValue();
  return {At(f, 0), At(f, 1)};
}

OxMath::oxGenVec3<float> oxDAEFxParam::GetVec3Value() const {
  const oxArray<float>& f = GetArrayOfFloatsValue();
  return {At(f, 0), At(f, 1), At(f, 2)};
}

OxMath::oxGenVec4<float> oxDAEFxParam::GetVec4Value() const {
  const oxArray<float>& f = GetArrayOfFloatsValue();
  return {At(f, 0), At(f, 1), At(f, 2), At(f, 3)};
}

const oxArray<bool>& oxDAEFxParam::GetArrayOfBoolsValue() const {
  return ArrayOf<oxArray<bool>>(value);
}

const oxArray<float>& oxDAEFxParam::GetArrayOfFloatsValue() const {
  return ArrayOf<oxArray<float>>(value);
}

const oxArray<int>& oxDAEFxParam::GetArrayOfIntsValue() const {
  static const oxArray<int> empty;
  return empty;
}

oxDAEBaseElement* oxDAEFxParam::GetElementValue() const {
  if (oxDAEFxSurface* surface = GetSurfaceValue()) return surface;
  return GetSamplerValue();
}

oxDAEFxSurface* oxDAEFxParam::GetSurfaceValue() const {
  const auto* held = std::get_if<Owned<oxDAEFxSurface>>(&value);
  return held ? held->ptr.get() : nullptr;
}

oxDAEFxSampler* oxDAEFxParam::GetSamplerValue() const {
  const auto* held = std::get_if<Owned<oxDAEFxSampler>>(&value);
  return held ? held->ptr.get() : nullptr;
}

// --- Reading and writing the value element ---------------------------------------

namespace {

// Parses at most `count` values of the element text into `out`.
void Parse(const OxKernel::oxXMLTextValue& text, bool* out, uint32_t count) {
  unsigned int parsed = 0;
  text.ParseBools(out, count, parsed, 0);
}
void Parse(const OxKernel::oxXMLTextValue& text, int* out, uint32_t count) {
  unsigned int parsed = 0;
  text.ParseInts(out, count, parsed, 0);
}
void Parse(const OxKernel::oxXMLTextValue& text, float* out, uint32_t count) {
  unsigned int parsed = 0;
  text.ParseFloats(out, count, parsed, 0);
}

}  // namespace

template <class T>
void oxDAEFxParam::ReadElementValue(oxDAEFile& file, T* element) {
  value.emplace<Owned<T>>(element);
  element->parent = this;
  valueCategory = kElement;
  element->Read(file);
}

template <class T>
void oxDAEFxParam::ReadScalarValue(oxDAEFile& file) {
  T scalar{};
  if (const OxKernel::oxXMLTextValue* t = file.reader->GetTextValue()) Parse(*t, &scalar, 1);
  value = scalar;
  valueCategory = kScalar;
}

template <class T>
void oxDAEFxParam::ReadArrayValue(oxDAEFile& file, uint32_t count) {
  // Parsed into plain storage first: a vector of bool packs its bits.
  const auto values = std::make_unique<T[]>(count);
  if (const OxKernel::oxXMLTextValue* t = file.reader->GetTextValue())
    Parse(*t, values.get(), count);
  value = oxArray<T>(values.get(), values.get() + count);
  valueCategory = kArray;
}

void oxDAEFxParam::ReadBasicTypeElement(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadTextString(text);
  valueType = oxDAEEnumConverter::GetBasicTypeFromString(reader.GetTagName());
  const SBasicTypeInfo* info = oxDAEEnumConverter::GetBasicTypeInfo(valueType);
  if (!info) {
    OX_LOG(kLogError, "undefined value type");
    valueCategory = kText;
    return;
  }
  const uint32_t count = info->GetComponentCount();
  switch (info->kind) {
    case EKind::BOOL:
      if (valueType == EFxBasicType::BOOL) {
        ReadScalarValue<bool>(file);
      } else {
        ReadArrayValue<bool>(file, count);
      }
      return;
    case EKind::INT:
      if (valueType != EFxBasicType::INT) {
        OX_LOG(kLogError, "value type not supported yet");
        return;
      }
      ReadScalarValue<int>(file);
      return;
    case EKind::FLOAT:
      if (valueType == EFxBasicType::FLOAT) {
        ReadScalarValue<float>(file);
      } else {
        ReadArrayValue<float>(file, count);
      }
      return;
    case EKind::SURFACE:
      ReadElementValue(file, new oxDAEFxSurface);
      return;
    case EKind::SAMPLER:
      ReadElementValue(
          file, new oxDAEFxSampler(static_cast<oxDAEFxSampler::EFxSamplerType>(
                    static_cast<int>(valueType) - static_cast<int>(EFxBasicType::SAMPLER1D))));
      return;
    case EKind::TEXT:
      value = std::monostate{};
      valueCategory = kText;
      return;
  }
}

void oxDAEFxParam::WriteBasicTypeElement(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(GetStringType());
  w.EndAttributes();
  OxKernel::oxXMLTextWriter& out = *w.GetTextWriter();
  if (const bool* b = std::get_if<bool>(&value); b && valueCategory == kScalar) {
    out.WriteBools(b, 1, 0);
  } else if (const int* i = std::get_if<int>(&value); i && valueCategory == kScalar) {
    out.WriteInts(i, 1, 0);
  } else if (const float* f = std::get_if<float>(&value); f && valueCategory == kScalar) {
    out.WriteFloats(f, 1, 0);
  } else if (!text.empty()) {
    out.WriteText(text);
  }
}

void oxDAEFxParam::Read(oxDAEFile& file) {
  ReadBasicTypeElement(file);
}

void oxDAEFxParam::Write(oxDAEFile& file) {
  WriteBasicTypeElement(file);
}

// --- <annotate>, <newparam>, <setparam> ------------------------------------------

void oxDAEFxAnnotate::Read(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeString("name", name);
  reader.EnterChildren();
  if (reader.MoveNext() == 0) ReadBasicTypeElement(file);
  reader.LeaveChildren();
}

void oxDAEFxAnnotate::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  const unsigned int depth = w.GetDepth();
  w.StartElement(s_XMLTag);
  w.EndAttributes();
  w.WriteAttributeString("name", name);
  WriteBasicTypeElement(file);
  w.CloseTo(depth);
}

namespace {

// Dispatches the children of a parameter by `rules`; any other child is the
// parameter's value element.
template <class Owner, size_t N>
void ReadParamChildren(Owner& owner, const oxDAEChildRule<Owner> (&rules)[N], oxDAEFile& file) {
  file.ReadChildrenOr(owner, rules,
                      [&owner, &file](std::string_view) { owner.ReadBasicTypeElement(file); });
}

constexpr oxDAEChildRule<oxDAEFxNewParam> kNewParamChildren[] = {
    {oxDAEFxAnnotate::s_XMLTag, oxDAEFxAnnotate::ReadInto<oxDAEFxNewParam>},
    {"semantic", [](oxDAEFxNewParam& p, oxDAEFile& f) { f.reader->ReadTextString(p.semantic); }},
};

constexpr oxDAEChildRule<oxDAEFxSetParam> kSetParamChildren[] = {
    {oxDAEFxAnnotate::s_XMLTag, oxDAEFxAnnotate::ReadInto<oxDAEFxSetParam>},
};

}  // namespace

void oxDAEFxNewParam::Read(oxDAEFile& file) {
  file.reader->ReadAttributeString("sid", sid);
  ReadParamChildren(*this, kNewParamChildren, file);
  file._RegisterElementPath(this);
}

void oxDAEFxSetParam::Read(oxDAEFile& file) {
  file.reader->ReadAttributeString("ref", ref);
  ReadParamChildren(*this, kSetParamChildren, file);
}

// --- Dynamic parameters ----------------------------------------------------------

void oxDAEDynamicParam::Read(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  elementName = reader.GetTagName();
  reader.ReadAttributeString("shortName", shortName);
  reader.ReadAttributeString("type", type);
  valueType = _GetTypeFromString(type);
  ReadData(file.reader.Get());
}

}  // namespace OxDAEReader
