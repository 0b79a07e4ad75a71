#include "oxDAEReadWrite/oxDAEReadWrite_Enum.h"

#include <iterator>
#include <memory>
#include <string_view>

#include <oxKernel/oxContainers.h>

namespace OxDAEReader {

namespace {

// Which way a row of a word table converts. Most rows read and write (kBoth);
// a kRead row only reads and a kWrite row only writes: together they record
// where this module's reading and writing deliberately differ.
enum class EDirection : uint8_t { Both, ReadOnly, WriteOnly };
constexpr EDirection kBoth = EDirection::Both;
constexpr EDirection kRead = EDirection::ReadOnly;
constexpr EDirection kWrite = EDirection::WriteOnly;

struct EnumWord {
  std::string_view word;
  int32_t value;
  EDirection dir;
};

constexpr bool IsRead(const EnumWord& row) {
  return row.dir != EDirection::WriteOnly;
}
constexpr bool IsWritten(const EnumWord& row) {
  return row.dir != EDirection::ReadOnly;
}

// The number of words the value-to-word side holds.
template <size_t N>
constexpr size_t WrittenCount(const EnumWord (&rows)[N]) {
  size_t count = 0;
  for (const EnumWord& row : rows)
    count += IsWritten(row) ? 1 : 0;
  return count;
}

// True when the written rows give every value from 0 to their count - 1
// exactly one word, so the value-to-word array has no hole and no clash.
template <size_t N>
constexpr bool WritesEachValueOnce(const EnumWord (&rows)[N]) {
  const size_t count = WrittenCount(rows);
  for (size_t v = 0; v < count; ++v) {
    size_t words = 0;
    for (const EnumWord& row : rows)
      words += IsWritten(row) && row.value == static_cast<int32_t>(v) ? 1 : 0;
    if (words != 1) return false;
  }
  return true;
}

// One table per enumeration, for both directions: the read rows fill the
// word-to-value side, the written rows the value-to-word side.
constexpr EnumWord kSamplerWrapWords[] = {{"NONE", 0, kBoth},
                                          {"WRAP", 1, kBoth},
                                          {"MIRROR", 2, kBoth},
                                          {"CLAMP", 3, kBoth},
                                          {"BORDER", 4, kBoth}};
// "NONE" is written but not read.
constexpr EnumWord kSamplerFilterWords[] = {{"NONE", 0, kWrite},
                                            {"NEAREST", 1, kBoth},
                                            {"LINEAR", 2, kBoth},
                                            {"NEAREST_MIPMAP_NEAREST", 3, kBoth},
                                            {"LINEAR_MIPMAP_NEAREST", 4, kBoth},
                                            {"NEAREST_MIPMAP_LINEAR", 5, kBoth},
                                            {"LINEAR_MIPMAP_LINEAR", 6, kBoth}};
// "enum" is read but has no word for writing.
constexpr EnumWord kBasicTypeWords[] = {
    {"bool", 0, kBoth},         {"bool2", 1, kBoth},         {"bool3", 2, kBoth},
    {"bool4", 3, kBoth},        {"int", 4, kBoth},           {"int2", 5, kBoth},
    {"int3", 6, kBoth},         {"int4", 7, kBoth},          {"float", 8, kBoth},
    {"float2", 9, kBoth},       {"float3", 10, kBoth},       {"float4", 11, kBoth},
    {"float1x1", 12, kBoth},    {"float1x2", 13, kBoth},     {"float1x3", 14, kBoth},
    {"float1x4", 15, kBoth},    {"float2x1", 16, kBoth},     {"float2x2", 17, kBoth},
    {"float2x3", 18, kBoth},    {"float2x4", 19, kBoth},     {"float3x1", 20, kBoth},
    {"float3x2", 21, kBoth},    {"float3x3", 22, kBoth},     {"float3x4", 23, kBoth},
    {"float4x1", 24, kBoth},    {"float4x2", 25, kBoth},     {"float4x3", 26, kBoth},
    {"float4x4", 27, kBoth},    {"surface", 28, kBoth},      {"sampler1D", 29, kBoth},
    {"sampler2D", 30, kBoth},   {"sampler3D", 31, kBoth},    {"samplerCUBE", 32, kBoth},
    {"samplerRECT", 33, kBoth}, {"samplerDEPTH", 34, kBoth}, {"string", 35, kBoth},
    {"enum", 36, kRead}};
// "fixed1" reads as "fixed" (84) and is written at 85; "samplerCUBE" and
// "samplerRECT" are read at 109 and 110 and written crossed.
constexpr EnumWord kCgParamTypeWords[] = {
    {"bool", 0, kBoth},           {"bool1", 1, kBoth},         {"bool2", 2, kBoth},
    {"bool3", 3, kBoth},          {"bool4", 4, kBoth},         {"bool1x1", 5, kBoth},
    {"bool1x2", 6, kBoth},        {"bool1x3", 7, kBoth},       {"bool1x4", 8, kBoth},
    {"bool2x1", 9, kBoth},        {"bool2x2", 10, kBoth},      {"bool2x3", 11, kBoth},
    {"bool2x4", 12, kBoth},       {"bool3x1", 13, kBoth},      {"bool3x2", 14, kBoth},
    {"bool3x3", 15, kBoth},       {"bool3x4", 16, kBoth},      {"bool4x1", 17, kBoth},
    {"bool4x2", 18, kBoth},       {"bool4x3", 19, kBoth},      {"bool4x4", 20, kBoth},
    {"float", 21, kBoth},         {"float1", 22, kBoth},       {"float2", 23, kBoth},
    {"float3", 24, kBoth},        {"float4", 25, kBoth},       {"float1x1", 26, kBoth},
    {"float1x2", 27, kBoth},      {"float1x3", 28, kBoth},     {"float1x4", 29, kBoth},
    {"float2x1", 30, kBoth},      {"float2x2", 31, kBoth},     {"float2x3", 32, kBoth},
    {"float2x4", 33, kBoth},      {"float3x1", 34, kBoth},     {"float3x2", 35, kBoth},
    {"float3x3", 36, kBoth},      {"float3x4", 37, kBoth},     {"float4x1", 38, kBoth},
    {"float4x2", 39, kBoth},      {"float4x3", 40, kBoth},     {"float4x4", 41, kBoth},
    {"int", 42, kBoth},           {"int1", 43, kBoth},         {"int2", 44, kBoth},
    {"int3", 45, kBoth},          {"int4", 46, kBoth},         {"int1x1", 47, kBoth},
    {"int1x2", 48, kBoth},        {"int1x3", 49, kBoth},       {"int1x4", 50, kBoth},
    {"int2x1", 51, kBoth},        {"int2x2", 52, kBoth},       {"int2x3", 53, kBoth},
    {"int2x4", 54, kBoth},        {"int3x1", 55, kBoth},       {"int3x2", 56, kBoth},
    {"int3x3", 57, kBoth},        {"int3x4", 58, kBoth},       {"int4x1", 59, kBoth},
    {"int4x2", 60, kBoth},        {"int4x3", 61, kBoth},       {"int4x4", 62, kBoth},
    {"half", 63, kBoth},          {"half1", 64, kBoth},        {"half2", 65, kBoth},
    {"half3", 66, kBoth},         {"half4", 67, kBoth},        {"half1x1", 68, kBoth},
    {"half1x2", 69, kBoth},       {"half1x3", 70, kBoth},      {"half1x4", 71, kBoth},
    {"half2x1", 72, kBoth},       {"half2x2", 73, kBoth},      {"half2x3", 74, kBoth},
    {"half2x4", 75, kBoth},       {"half3x1", 76, kBoth},      {"half3x2", 77, kBoth},
    {"half3x3", 78, kBoth},       {"half3x4", 79, kBoth},      {"half4x1", 80, kBoth},
    {"half4x2", 81, kBoth},       {"half4x3", 82, kBoth},      {"half4x4", 83, kBoth},
    {"fixed", 84, kBoth},         {"fixed1", 84, kRead},       {"fixed1", 85, kWrite},
    {"fixed2", 86, kBoth},        {"fixed3", 87, kBoth},       {"fixed4", 88, kBoth},
    {"fixed1x1", 89, kBoth},      {"fixed1x2", 90, kBoth},     {"fixed1x3", 91, kBoth},
    {"fixed1x4", 92, kBoth},      {"fixed2x1", 93, kBoth},     {"fixed2x2", 94, kBoth},
    {"fixed2x3", 95, kBoth},      {"fixed2x4", 96, kBoth},     {"fixed3x1", 97, kBoth},
    {"fixed3x2", 98, kBoth},      {"fixed3x3", 99, kBoth},     {"fixed3x4", 100, kBoth},
    {"fixed4x1", 101, kBoth},     {"fixed4x2", 102, kBoth},    {"fixed4x3", 103, kBoth},
    {"fixed4x4", 104, kBoth},     {"surface", 105, kBoth},     {"sampler1D", 106, kBoth},
    {"sampler2D", 107, kBoth},    {"sampler3D", 108, kBoth},   {"samplerCUBE", 109, kRead},
    {"samplerRECT", 109, kWrite}, {"samplerRECT", 110, kRead}, {"samplerCUBE", 110, kWrite},
    {"samplerDEPTH", 111, kBoth}, {"string", 112, kBoth},      {"enum", 113, kBoth}};
constexpr EnumWord kSurfaceFormatHintChannelsWords[] = {
    {"RGB", 0, kBoth}, {"RGBA", 1, kBoth}, {"L", 2, kBoth},   {"LA", 3, kBoth},
    {"D", 4, kBoth},   {"XYZ", 5, kBoth},  {"XYZW", 6, kBoth}};
constexpr EnumWord kSurfaceFormatHintPrecisionWords[] = {
    {"LOW", 0, kBoth}, {"MID", 1, kBoth}, {"HIGH", 2, kBoth}};
constexpr EnumWord kSurfaceFormatHintRangeWords[] = {{"SNORM", 0, kBoth},
                                                     {"UNORM", 1, kBoth},
                                                     {"SINT", 2, kBoth},
                                                     {"UINT", 3, kBoth},
                                                     {"FLOAT", 4, kBoth}};
// "NORMALIZED4" reads like "NORMALIZED3" and "COMPRESSABLE" one value lower
// than each is written.
constexpr EnumWord kSurfaceFormatHintOptionWords[] = {
    {"SRGB_GAMMA", 0, kBoth},   {"NORMALIZED3", 1, kBoth},  {"NORMALIZED4", 1, kRead},
    {"NORMALIZED4", 2, kWrite}, {"COMPRESSABLE", 2, kRead}, {"COMPRESSABLE", 3, kWrite}};
// "UNTYPED" is written but not read.
constexpr EnumWord kSurfaceTypeWords[] = {
    {"UNTYPED", 0, kWrite}, {"1D", 1, kBoth},   {"2D", 2, kBoth},   {"3D", 3, kBoth},
    {"RECT", 4, kBoth},     {"CUBE", 5, kBoth}, {"DEPTH", 6, kBoth}};
constexpr EnumWord kSurfaceFaceWords[] = {{"POSITIVE_X", 0, kBoth}, {"NEGATIVE_X", 1, kBoth},
                                          {"POSITIVE_Y", 2, kBoth}, {"NEGATIVE_Y", 3, kBoth},
                                          {"POSITIVE_Z", 4, kBoth}, {"NEGATIVE_Z", 5, kBoth}};

static_assert(WritesEachValueOnce(kSamplerWrapWords));
static_assert(WritesEachValueOnce(kSamplerFilterWords));
static_assert(WritesEachValueOnce(kBasicTypeWords));
static_assert(WritesEachValueOnce(kCgParamTypeWords));
static_assert(WritesEachValueOnce(kSurfaceFormatHintChannelsWords));
static_assert(WritesEachValueOnce(kSurfaceFormatHintPrecisionWords));
static_assert(WritesEachValueOnce(kSurfaceFormatHintRangeWords));
static_assert(WritesEachValueOnce(kSurfaceFormatHintOptionWords));
static_assert(WritesEachValueOnce(kSurfaceTypeWords));
static_assert(WritesEachValueOnce(kSurfaceFaceWords));

using WordHash = OxKernel::oxHash<oxString, int32_t>;

// The built tables: one hash per hashed enumeration, one value-to-word list
// per table. Absent until PrepareHashTables.
struct Tables {
  WordHash samplerWrap, samplerFilter, basicType, cgParamType;
  oxArray<oxString> samplerWrapWords, samplerFilterWords, basicTypeWords, cgParamTypeWords,
      channelsWords, precisionWords, rangeWords, optionWords, surfaceTypeWords, surfaceFaceWords;
};
std::unique_ptr<Tables> g_tables;

const oxString& EmptyString() {
  static const oxString empty;
  return empty;
}

// The read rows, inserted in table order.
template <size_t N>
WordHash MakeHash(const EnumWord (&rows)[N]) {
  WordHash hash(OxKernel::oxHashTools::ComputePreferredSize(4));
  for (const EnumWord& row : rows) {
    if (IsRead(row)) hash.insert_or_assign(oxString(row.word), row.value);
  }
  return hash;
}

// The written rows, each at its value (WritesEachValueOnce holds for every
// table, so every slot gets exactly one word).
template <size_t N>
oxArray<oxString> MakeWords(const EnumWord (&rows)[N]) {
  oxArray<oxString> words(WrittenCount(rows));
  for (const EnumWord& row : rows) {
    if (IsWritten(row)) words[static_cast<size_t>(row.value)] = oxString(row.word);
  }
  return words;
}

template <class E>
E FromHash(WordHash Tables::*table, const oxString& text) {
  if (!g_tables) return E::UNKNOWN;
  const WordHash& hash = (*g_tables).*table;
  const auto it = hash.find(text);
  return it == hash.end() ? E::UNKNOWN : static_cast<E>(it->second);
}

// The short tables: exact comparisons with the read rows in table order.
template <class E, size_t N>
E FromChain(const EnumWord (&rows)[N], const oxString& text) {
  if (!g_tables) return E::UNKNOWN;
  for (const EnumWord& row : rows) {
    if (IsRead(row) && row.word == text) return static_cast<E>(row.value);
  }
  return E::UNKNOWN;
}

template <class E>
const oxString& ToWord(oxArray<oxString> Tables::*list, E value) {
  const int32_t v = static_cast<int32_t>(value);
  if (!g_tables) return EmptyString();
  const oxArray<oxString>& words = (*g_tables).*list;
  return v >= 0 && static_cast<size_t>(v) < words.size() ? words[static_cast<size_t>(v)]
                                                         : EmptyString();
}

}  // namespace

// --- Basic type information ---------------------------------------------------

namespace {
using EKind = SBasicTypeInfo::EKind;
using B = EFxBasicType;
}  // namespace

constexpr SBasicTypeInfo oxDAEEnumConverter::s_ArrayBasicTypeToTypeInfo[37] = {
    {B::BOOL, EKind::BOOL, 1, 1},
    {B::BOOL2, EKind::BOOL, 1, 2},
    {B::BOOL3, EKind::BOOL, 1, 3},
    {B::BOOL4, EKind::BOOL, 1, 4},
    {B::INT, EKind::INT, 1, 1},
    {B::INT2, EKind::INT, 1, 2},
    {B::INT3, EKind::INT, 1, 3},
    {B::INT4, EKind::INT, 1, 4},
    {B::FLOAT, EKind::FLOAT, 1, 1},
    {B::FLOAT2, EKind::FLOAT, 1, 2},
    {B::FLOAT3, EKind::FLOAT, 1, 3},
    {B::FLOAT4, EKind::FLOAT, 1, 4},
    {B::FLOAT1X1, EKind::FLOAT, 1, 1},
    {B::FLOAT1X2, EKind::FLOAT, 1, 2},
    {B::FLOAT1X3, EKind::FLOAT, 1, 3},
    {B::FLOAT1X4, EKind::FLOAT, 1, 4},
    {B::FLOAT2X1, EKind::FLOAT, 2, 1},
    {B::FLOAT2X2, EKind::FLOAT, 2, 2},
    {B::FLOAT2X3, EKind::FLOAT, 2, 3},
    {B::FLOAT2X4, EKind::FLOAT, 2, 4},
    {B::FLOAT3X1, EKind::FLOAT, 3, 1},
    {B::FLOAT3X2, EKind::FLOAT, 3, 2},
    {B::FLOAT3X3, EKind::FLOAT, 3, 3},
    {B::FLOAT3X4, EKind::FLOAT, 3, 4},
    {B::FLOAT4X1, EKind::FLOAT, 4, 1},
    {B::FLOAT4X2, EKind::FLOAT, 4, 2},
    {B::FLOAT4X3, EKind::FLOAT, 4, 3},
    {B::FLOAT4X4, EKind::FLOAT, 4, 4},
    {B::SURFACE, EKind::SURFACE, 0, 0},
    {B::SAMPLER1D, EKind::SAMPLER, 0, 0},
    {B::SAMPLER2D, EKind::SAMPLER, 0, 0},
    {B::SAMPLER3D, EKind::SAMPLER, 0, 0},
    {B::SAMPLERCUBE, EKind::SAMPLER, 0, 0},
    {B::SAMPLERRECT, EKind::SAMPLER, 0, 0},
    {B::SAMPLERDEPTH, EKind::SAMPLER, 0, 0},
    {B::STRING, EKind::TEXT, 0, 0},
    {B::ENUM, EKind::TEXT, 0, 0}};

namespace {
// True when every row stands at its own type's value, so that indexing by
// type finds the type's row.
template <size_t N>
constexpr bool IndexedByType(const SBasicTypeInfo (&rows)[N]) {
  for (size_t i = 0; i < N; ++i) {
    if (static_cast<size_t>(rows[i].type) != i) return false;
  }
  return true;
}
static_assert(IndexedByType(oxDAEEnumConverter::s_ArrayBasicTypeToTypeInfo));
static_assert(std::size(oxDAEEnumConverter::s_ArrayBasicTypeToTypeInfo) ==
              std::size(kBasicTypeWords));
}  // namespace

const SBasicTypeInfo* oxDAEEnumConverter::GetBasicTypeInfo(EFxBasicType type) {
  const auto index = static_cast<size_t>(static_cast<int32_t>(type));
  return index < std::size(s_ArrayBasicTypeToTypeInfo) ? &s_ArrayBasicTypeToTypeInfo[index]
                                                       : nullptr;
}

// --- Conversions ---------------------------------------------------------------

EFxSamplerWrap oxDAEEnumConverter::GetSamplerWrapFromString(const oxString& t) {
  return FromHash<EFxSamplerWrap>(&Tables::samplerWrap, t);
}
EFxSamplerFilter oxDAEEnumConverter::GetSamplerFilterFromString(const oxString& t) {
  return FromHash<EFxSamplerFilter>(&Tables::samplerFilter, t);
}
EFxBasicType oxDAEEnumConverter::GetBasicTypeFromString(const oxString& t) {
  return FromHash<EFxBasicType>(&Tables::basicType, t);
}
ECgParamType oxDAEEnumConverter::GetCgParamTypeFromString(const oxString& t) {
  return FromHash<ECgParamType>(&Tables::cgParamType, t);
}

EFxSurfaceFormatHintChannels oxDAEEnumConverter::GetSurfaceFormatHintChannelsFromString(
    const oxString& t) {
  return FromChain<EFxSurfaceFormatHintChannels>(kSurfaceFormatHintChannelsWords, t);
}
EFxSurfaceFormatHintPrecision oxDAEEnumConverter::GetSurfaceFormatHintPrecisionFromString(
    const oxString& t) {
  return FromChain<EFxSurfaceFormatHintPrecision>(kSurfaceFormatHintPrecisionWords, t);
}
EFxSurfaceFormatHintRange oxDAEEnumConverter::GetSurfaceFormatHintRangeFromString(
    const oxString& t) {
  return FromChain<EFxSurfaceFormatHintRange>(kSurfaceFormatHintRangeWords, t);
}
EFxSurfaceFormatHintOption oxDAEEnumConverter::GetSurfaceFormatHintOptionFromString(
    const oxString& t) {
  return FromChain<EFxSurfaceFormatHintOption>(kSurfaceFormatHintOptionWords, t);
}
EFxSurfaceType oxDAEEnumConverter::GetSurfaceTypeFromString(const oxString& t) {
  return FromChain<EFxSurfaceType>(kSurfaceTypeWords, t);
}
EFxSurfaceFace oxDAEEnumConverter::GetSurfaceFaceFromString(const oxString& t) {
  return FromChain<EFxSurfaceFace>(kSurfaceFaceWords, t);
}

const oxString& oxDAEEnumConverter::GetStringFromSamplerWrap(EFxSamplerWrap v) {
  return ToWord(&Tables::samplerWrapWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromSamplerFilter(EFxSamplerFilter v) {
  return ToWord(&Tables::samplerFilterWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromBasicType(EFxBasicType v) {
  return ToWord(&Tables::basicTypeWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromCgParamType(ECgParamType v) {
  return ToWord(&Tables::cgParamTypeWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromSurfaceFormatHintChannels(
    EFxSurfaceFormatHintChannels v) {
  return ToWord(&Tables::channelsWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromSurfaceFormatHintPrecision(
    EFxSurfaceFormatHintPrecision v) {
  return ToWord(&Tables::precisionWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromSurfaceFormatHintRange(
    EFxSurfaceFormatHintRange v) {
  return ToWord(&Tables::rangeWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromSurfaceFormatHintOption(
    EFxSurfaceFormatHintOption v) {
  return ToWord(&Tables::optionWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromSurfaceType(EFxSurfaceType v) {
  return ToWord(&Tables::surfaceTypeWords, v);
}
const oxString& oxDAEEnumConverter::GetStringFromSurfaceFace(EFxSurfaceFace v) {
  return ToWord(&Tables::surfaceFaceWords, v);
}

void oxDAEEnumConverter::PrepareHashTables() {
  if (g_tables) return;
  auto t = std::make_unique<Tables>();
  t->samplerWrap = MakeHash(kSamplerWrapWords);
  t->samplerFilter = MakeHash(kSamplerFilterWords);
  t->basicType = MakeHash(kBasicTypeWords);
  t->cgParamType = MakeHash(kCgParamTypeWords);
  t->samplerWrapWords = MakeWords(kSamplerWrapWords);
  t->samplerFilterWords = MakeWords(kSamplerFilterWords);
  t->basicTypeWords = MakeWords(kBasicTypeWords);
  t->cgParamTypeWords = MakeWords(kCgParamTypeWords);
  t->channelsWords = MakeWords(kSurfaceFormatHintChannelsWords);
  t->precisionWords = MakeWords(kSurfaceFormatHintPrecisionWords);
  t->rangeWords = MakeWords(kSurfaceFormatHintRangeWords);
  t->optionWords = MakeWords(kSurfaceFormatHintOptionWords);
  t->surfaceTypeWords = MakeWords(kSurfaceTypeWords);
  t->surfaceFaceWords = MakeWords(kSurfaceFaceWords);
  g_tables = std::move(t);
}

void oxDAEEnumConverter::DestroyHashTables() {
  g_tables.reset();
}

bool oxDAEEnumConverter::HasHashTables() {
  return g_tables != nullptr;
}

}  // namespace OxDAEReader
