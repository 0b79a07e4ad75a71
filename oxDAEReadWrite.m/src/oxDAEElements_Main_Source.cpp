#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEArray);
OX_DAE_ELEMENT_DEFINE(oxDAEFloatArray);
OX_DAE_ELEMENT_DEFINE(oxDAEIntArray);
OX_DAE_ELEMENT_DEFINE(oxDAEBoolArray);
OX_DAE_ELEMENT_DEFINE(oxDAENameArray);
OX_DAE_ELEMENT_DEFINE(oxDAEAccessor);
OX_DAE_ELEMENT_DEFINE(oxDAESource);
OX_DAE_ELEMENT_DEFINE(oxDAESourceTechniqueCommon);
OX_DAE_ELEMENT_DEFINE(oxDAEParameter);

using OxKernel::oxXMLTextValue;
using EValueType = oxDAEArray::EValueType;

// --- Arrays --------------------------------------------------------------------

namespace {

struct ValueTypeWord {
  std::string_view word;
  EValueType type;
};
// The "type" words of a generic array, used in both directions.
constexpr ValueTypeWord kValueTypeWords[] = {
    {"bool", EValueType::BOOL}, {"int", EValueType::INT},     {"float", EValueType::FLOAT},
    {"Name", EValueType::NAME}, {"token", EValueType::TOKEN},
};

EValueType ValueTypeOf(std::string_view word) {
  for (const ValueTypeWord& w : kValueTypeWords) {
    if (w.word == word) return w.type;
  }
  return EValueType::UNSET;
}

std::string_view WordOf(EValueType type) {
  for (const ValueTypeWord& w : kValueTypeWords) {
    if (w.type == type) return w.word;
  }
  return {};
}

// The declared count, or, when the text could not hold that many values
// (each takes a character and a separator), the most it could hold plus
// kCountSlack, with an error.
uint32_t BoundedCount(uint32_t declared, const oxXMLTextValue& text, std::string_view tag) {
  const uint64_t most = text.GetText().size() / 2 + 1 + oxDAEArray::kCountSlack;
  if (declared <= most) return declared;
  OX_LOG(OxKernel::kLogError,
         OxKernel::oxConcat("<", tag, "> count ", declared,
                            " is larger than its text can hold; reading ", most, " values"));
  return static_cast<uint32_t>(most);
}

}  // namespace

void oxDAEArray::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  AdoptNameAsID(file);
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeUInt("count", count);
  reader.ReadAttributeInt("minInclusive", minInclusive);
  reader.ReadAttributeInt("maxInclusive", maxInclusive);
  reader.ReadAttributeUShort("digits", digits);
  reader.ReadAttributeShort("magnitude", magnitude);
  oxString typeWord;
  if (reader.ReadAttributeString("type", typeWord)) type = ValueTypeOf(typeWord);
  InternalRead(file);
}

void oxDAEArray::ReadTyped(oxDAEFile& file, EValueType valueType) {
  oxDAEElement::Read(file);
  file.reader->ReadAttributeUInt("count", count);
  type = valueType;
  InternalRead(file);
}

void oxDAEArray::InternalRead(oxDAEFile& file) {
  const oxXMLTextValue* text = file.reader->GetTextValue();
  if (!text || type == EValueType::BOOL || type == EValueType::UNSET) return;
  count = BoundedCount(count, *text, file.reader->GetTag());
  unsigned int parsed = 0;
  switch (type) {
    case EValueType::INT:
      ints.resize(count);
      text->ParseInts(ints.data(), count, parsed, 0);
      std::fill(ints.begin() + parsed, ints.end(), 0);
      break;
    case EValueType::FLOAT:
      floats.resize(count);
      text->ParseFloats(floats.data(), count, parsed, 0);
      std::fill(floats.begin() + parsed, floats.end(), 0.0f);
      break;
    default:
      strings.resize(count);
      text->ParseStrings(strings.data(), count, parsed, 0);
      break;
  }
}

unsigned int oxDAEArray::GetValueCount() const {
  switch (type) {
    case EValueType::INT:
      return static_cast<unsigned int>(ints.size());
    case EValueType::FLOAT:
      return static_cast<unsigned int>(floats.size());
    case EValueType::NAME:
    case EValueType::TOKEN:
      return static_cast<unsigned int>(strings.size());
    default:
      return 0;
  }
}

const void* oxDAEArray::GetData() const {
  if (GetValueCount() == 0) return nullptr;
  if (type == EValueType::INT) return ints.data();
  if (type == EValueType::FLOAT) return floats.data();
  return strings.data();
}

namespace {
void WriteValues(OxKernel::oxXMLWriter& writer, const oxDAEArray& a) {
  OxKernel::oxXMLTextWriter& text = *writer.GetTextWriter();
  const auto n = [](const auto& v) { return static_cast<unsigned int>(v.size()); };
  switch (a.type) {
    case EValueType::INT:
      text.WriteInts(a.ints.data(), n(a.ints), 0);
      break;
    case EValueType::FLOAT:
      text.WriteFloats(a.floats.data(), n(a.floats), 0);
      break;
    case EValueType::NAME:
    case EValueType::TOKEN:
      text.WriteStrings(a.strings.data(), n(a.strings), 0);
      break;
    default:
      break;
  }
}
}  // namespace

void oxDAEArray::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  WriteStart(file, s_XMLTag);
  w.WriteAttributeUInt("count", count);
  if (const std::string_view word = WordOf(type); !word.empty() && type != EValueType::BOOL) {
    w.WriteAttributeString("type", word);
  }
  if (minInclusive != 0) w.WriteAttributeInt("minInclusive", minInclusive);
  if (maxInclusive != 0) w.WriteAttributeInt("maxInclusive", maxInclusive);
  if (digits != 0) w.WriteAttributeShort("digits", static_cast<int16_t>(digits));
  if (magnitude != 0) w.WriteAttributeShort("magnitude", magnitude);
  w.EndAttributes();
  WriteValues(w, *this);
  w.EndElement();
}

void oxDAEArray::WriteTyped(oxDAEFile& file, std::string_view tag) {
  WriteStart(file, tag);
  file.writer->WriteAttributeUInt("count", count);
  file.writer->EndAttributes();
  WriteValues(*file.writer, *this);
  file.writer->EndElement();
}

void oxDAEFloatArray::Read(oxDAEFile& file) {
  ReadTyped(file, EValueType::FLOAT);
}

void oxDAEFloatArray::Write(oxDAEFile& file) {
  count = static_cast<uint32_t>(floats.size());
  WriteTyped(file, s_XMLTag);
}

void oxDAEIntArray::Read(oxDAEFile& file) {
  ReadTyped(file, EValueType::INT);
}

void oxDAEIntArray::Write(oxDAEFile& file) {
  WriteTyped(file, s_XMLTag);
}

void oxDAEBoolArray::Read(oxDAEFile& file) {
  ReadTyped(file, EValueType::BOOL);
}

void oxDAEBoolArray::Write(oxDAEFile& file) {
  WriteTyped(file, s_XMLTag);
}

void oxDAENameArray::Read(oxDAEFile& file) {
  ReadTyped(file, EValueType::NAME);
}

void oxDAENameArray::Write(oxDAEFile& file) {
  WriteTyped(file, s_XMLTag);
}

// --- <accessor> ----------------------------------------------------------------

namespace {

void ReadAccessorParam(oxDAEAccessor& accessor, oxDAEFile& file) {
  accessor.params.push_back(file.ReadChild<oxDAEParameter>(&accessor));
}

constexpr oxDAEChildRule<oxDAEAccessor> kAccessorChildren[] = {
    {"param", ReadAccessorParam},
    {"parameter", ReadAccessorParam},
};

}  // namespace

void oxDAEAccessor::Read(oxDAEFile& file) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeUInt("count", count);
  reader.ReadAttributeUInt("stride", stride);
  reader.ReadAttributeUInt("offset", offset);
  oxString sourceURI;
  reader.ReadAttributeString("source", sourceURI);
  source = oxDAEArray::DynamicCast(file.ResolveURI(sourceURI));
  file.ReadChildren(*this, kAccessorChildren, s_XMLTag);
}

void oxDAEAccessor::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  count = (source ? source->GetValueCount() : 0) / std::max<uint32_t>(stride, 1);
  w.WriteAttributeUInt("count", count);
  if (offset != 0) w.WriteAttributeUInt("offset", offset);
  if (stride != 1) w.WriteAttributeUInt("stride", stride);
  if (source) w.WriteAttributeString("source", source->ComputeURL(file));
  w.EndAttributes();
  file.WriteChildren(params);
  w.EndElement();
}

int64_t oxDAEAccessor::FloatIndex(unsigned int i, uint32_t recordStride, uint32_t width) const {
  if (!source) return -1;
  const uint64_t first = (uint64_t{offset} + i) * recordStride;
  return first + width <= source->floats.size() ? static_cast<int64_t>(first) : -1;
}

float oxDAEAccessor::GetFloatValue(unsigned int i) const {
  const int64_t at = FloatIndex(i, std::max<uint32_t>(stride, 1), 1);
  return at < 0 ? 0.0f : source->floats[static_cast<size_t>(at)];
}

OxMath::oxGenVec3<float> oxDAEAccessor::GetVec3Value(unsigned int i) const {
  const int64_t at = FloatIndex(i, stride, 3);
  if (at < 0) return {};
  const float* f = source->floats.data() + at;
  return {f[0], f[1], f[2]};
}

OxMath::oxGenVec4<float> oxDAEAccessor::GetVec4Value(unsigned int i) const {
  const int64_t at = FloatIndex(i, stride, 4);
  if (at < 0) return {};
  const float* f = source->floats.data() + at;
  return {f[0], f[1], f[2], f[3]};
}

OxMath::oxMatrix44 oxDAEAccessor::GetMatrix44Value(unsigned int i) const {
  const int64_t at = FloatIndex(i, stride, 16);
  OxMath::oxMatrix44 m;
  const float* f = at < 0 ? nullptr : source->floats.data() + at;
  for (int k = 0; k < 16; ++k)
    m.m[k] = f ? f[k] : 0.0f;
  return m;
}

const oxString& oxDAEAccessor::GetStringValue(unsigned int i) const {
  static const oxString empty;
  if (!source) return empty;
  const uint64_t at = (uint64_t{offset} + i) * std::max<uint32_t>(stride, 1);
  return at < source->strings.size() ? source->strings[static_cast<size_t>(at)] : empty;
}

// --- <source> ------------------------------------------------------------------

namespace {

template <class T>
void ReadSourceArray(oxDAESource& source, oxDAEFile& file) {
  source.array = file.ReadChild<T>(&source);
}

constexpr oxDAEChildRule<oxDAESource> kSourceChildren[] = {
    {oxDAEArray::s_XMLTag, ReadSourceArray<oxDAEArray>},
    {oxDAEFloatArray::s_XMLTag, ReadSourceArray<oxDAEFloatArray>},
    {oxDAEBoolArray::s_XMLTag, ReadSourceArray<oxDAEBoolArray>},
    {oxDAEIntArray::s_XMLTag, ReadSourceArray<oxDAEIntArray>},
    {oxDAENameArray::s_XMLTag, ReadSourceArray<oxDAENameArray>},
    {"IDREF_array", ReadSourceArray<oxDAENameArray>},
    {oxDAESourceTechniqueCommon::s_XMLTag,
     [](oxDAESource& s, oxDAEFile& f) {
       s.techniqueCommon = f.ReadChild<oxDAESourceTechniqueCommon>(&s);
     }},
    {oxDAETechnique::s_XMLTag,
     [](oxDAESource& s, oxDAEFile& f) { s.techniques.push_back(f.ReadChild<oxDAETechnique>(&s)); }},
};

}  // namespace

void oxDAESource::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  AdoptNameAsID(file);
  file.ReadChildren(*this, kSourceChildren, s_XMLTag);
}

void oxDAESource::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (array) file.WriteChild(array);
  if (techniqueCommon) file.WriteChild(techniqueCommon);
  file.writer->EndElement();
}

oxDAEAccessor* oxDAESource::GetAccessor() const {
  return techniqueCommon ? techniqueCommon->accessor : nullptr;
}

constexpr oxDAEChildRule<oxDAESourceTechniqueCommon> kSourceTechniqueChildren[] = {
    {oxDAEAssetElement::s_XMLTag,
     [](oxDAESourceTechniqueCommon& t, oxDAEFile& f) {
       t.asset = f.ReadChild<oxDAEAssetElement>(&t);
     }},
    {oxDAEAccessor::s_XMLTag, [](oxDAESourceTechniqueCommon& t,
                                 oxDAEFile& f) { t.accessor = f.ReadChild<oxDAEAccessor>(&t); }},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAESourceTechniqueCommon::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kSourceTechniqueChildren, s_XMLTag);
}

void oxDAESourceTechniqueCommon::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->EndAttributes();
  if (accessor) file.WriteChild(accessor);
  file.writer->EndElement();
}

// --- <param> -------------------------------------------------------------------

using EType = oxDAEParameter::EType;

const oxDAEParameter::TypeInfo oxDAEParameter::s_TypeInfos[27] = {
    {"Unknown", EType::Unknown, EType::Unknown, 0},
    {"float", EType::Float, EType::Float, 1},
    {"float2", EType::Float2, EType::Float, 2},
    {"float3", EType::Float3, EType::Float, 3},
    {"float4", EType::Float4, EType::Float, 4},
    {"float7", EType::Float7, EType::Float, 7},
    {"float2x2", EType::Float2x2, EType::Float, 4},
    {"float3x3", EType::Float3x3, EType::Float, 9},
    {"float4x4", EType::Float4x4, EType::Float, 16},
    {"boolean", EType::Boolean, EType::Bool, 1},
    {"bool", EType::Bool, EType::Bool, 1},
    {"bool2", EType::Bool2, EType::Bool, 2},
    {"bool3", EType::Bool3, EType::Bool, 3},
    {"bool4", EType::Bool4, EType::Bool, 4},
    {"int", EType::Int, EType::Int, 1},
    {"int2", EType::Int2, EType::Int, 2},
    {"int3", EType::Int3, EType::Int, 3},
    {"int4", EType::Int4, EType::Int, 4},
    {"int2x2", EType::Int2x2, EType::Int, 4},
    {"int3x3", EType::Int3x3, EType::Int, 9},
    {"int4x4", EType::Int4x4, EType::Int, 16},
    {"Name", EType::Name, EType::String, 1},
    {"dateTime", EType::DateTime, EType::DateTime, 1},
    {"string", EType::String, EType::String, 1},
    {"token", EType::Token, EType::String, 1},
    {"ColorRGB", EType::ColorRGB, EType::Float, 3},
    {"ColorRGBA", EType::ColorRGBA, EType::Float, 4},
};

namespace {

// Names of older exporters, in addition to the table's own names.
struct TypeAlias {
  const char* name;
  EType type;
};
constexpr TypeAlias kTypeAliases[] = {
    {"Float", EType::Float}, {"Time", EType::Float},    {"BooleanClass", EType::Bool},
    {"Integer", EType::Int}, {"BitMap", EType::String},
};

std::unique_ptr<oxHash<oxString, EType>> g_nameToType;

enum class EPayload { None, Float, Bool, Int, Text, Buffer };

// What the element text of a parameter of `type` holds.
EPayload PayloadOf(EType type) {
  switch (type) {
    case EType::Unknown:
    case EType::DateTime:
      return EPayload::None;
    case EType::Float:
      return EPayload::Float;
    case EType::Boolean:
    case EType::Bool:
      return EPayload::Bool;
    case EType::Int:
      return EPayload::Int;
    case EType::Name:
    case EType::String:
    case EType::Token:
      return EPayload::Text;
    default:
      return EPayload::Buffer;
  }
}

}  // namespace

void oxDAEParameter::_PrepareHashTable() {
  if (g_nameToType) return;
  auto table =
      std::make_unique<oxHash<oxString, EType>>(OxKernel::oxHashTools::ComputePreferredSize(4));
  for (const TypeInfo& info : s_TypeInfos)
    table->insert_or_assign(info.name, info.type);
  for (const TypeAlias& alias : kTypeAliases)
    table->insert_or_assign(alias.name, alias.type);
  g_nameToType = std::move(table);
}

void oxDAEParameter::_DestroyHashTable() {
  g_nameToType.reset();
}

bool oxDAEParameter::_HasHashTable() {
  return g_nameToType != nullptr;
}

EType oxDAEParameter::_GetTypeFromString(const oxString& typeName) {
  if (!g_nameToType) return EType::Unknown;
  const auto it = g_nameToType->find(typeName);
  return it == g_nameToType->end() ? EType::Unknown : it->second;
}

const oxDAEParameter::TypeInfo& oxDAEParameter::GetTypeInfo(EType valueType) {
  const auto index = static_cast<size_t>(valueType);
  return index < std::size(s_TypeInfos) ? s_TypeInfos[index] : s_TypeInfos[0];
}

void oxDAEParameter::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeString("type", type);
  valueType = _GetTypeFromString(type);
  reader.ReadAttributeString("semantic", semantic);
  oxString flowWord;
  if (reader.ReadAttributeString("flow", flowWord)) {
    if (flowWord == "IN") flow = EFlow::IN;
    if (flowWord == "OUT") flow = EFlow::OUT;
    if (flowWord == "INOUT") flow = EFlow::INOUT;
  }
  ReadData(file.reader.Get());
}

void oxDAEParameter::ReadData(OxKernel::oxXMLReader* reader) {
  const oxXMLTextValue* text = reader->GetTextValue();
  if (!text) {
    dataSize = -1;
    hasData = false;
    return;
  }
  unsigned int parsed = 0;
  const TypeInfo& info = GetTypeInfo(valueType);
  switch (PayloadOf(valueType)) {
    case EPayload::None:
      break;
    case EPayload::Float:
      text->ParseFloats(&floatValue, 1, parsed, 0);
      break;
    case EPayload::Bool:
      text->ParseBools(&boolValue, 1, parsed, 0);
      break;
    case EPayload::Int:
      text->ParseInts(&intValue, 1, parsed, 0);
      break;
    case EPayload::Text:
      stringValue.assign(text->GetText());
      break;
    case EPayload::Buffer:
      dataSize = static_cast<int32_t>(info.components * 4);
      if (info.baseType == EType::Float) {
        floatData.assign(info.components, 0.0f);
        text->ParseFloats(floatData.data(), info.components, parsed, 0);
      } else if (info.baseType == EType::Int) {
        intData.assign(info.components, 0);
        text->ParseInts(intData.data(), info.components, parsed, 0);
      } else {
        bool values[16] = {};
        text->ParseBools(values, info.components, parsed, 0);
        intData.assign(values, values + info.components);
      }
      break;
  }
  hasData = true;
}

void oxDAEParameter::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  WriteStart(file, s_XMLTag);
  w.WriteAttributeString("type", type);
  if (!semantic.empty()) w.WriteAttributeString("semantic", semantic);
  w.EndAttributes();
  WriteData(file.writer.Get());
  w.EndElement();
}

void oxDAEParameter::WriteData(OxKernel::oxXMLWriter* writer) {
  if (!hasData || dataSize < 0) return;
  OxKernel::oxXMLTextWriter& text = *writer->GetTextWriter();
  const TypeInfo& info = GetTypeInfo(valueType);
  switch (PayloadOf(valueType)) {
    case EPayload::None:
      if (valueType == EType::Unknown) text.WriteText("undefined");
      break;
    case EPayload::Float:
      text.WriteFloats(&floatValue, 1, 0);
      break;
    case EPayload::Bool:
      text.WriteBools(&boolValue, 1, 0);
      break;
    case EPayload::Int:
      text.WriteInts(&intValue, 1, 0);
      break;
    case EPayload::Text:
      text.WriteText(stringValue);
      break;
    case EPayload::Buffer:
      if (info.baseType == EType::Float) {
        text.WriteFloats(floatData.data(), static_cast<unsigned int>(floatData.size()), 0);
      } else if (info.baseType == EType::Int) {
        text.WriteInts(intData.data(), static_cast<unsigned int>(intData.size()), 0);
      } else {
        const auto values = std::make_unique<bool[]>(intData.size());
        std::transform(intData.begin(), intData.end(), values.get(),
                       [](int32_t v) { return v != 0; });
        text.WriteBools(values.get(), static_cast<unsigned int>(intData.size()), 0);
      }
      break;
  }
}

}  // namespace OxDAEReader
