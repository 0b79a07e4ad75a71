#include "oxDAEReadWrite/oxDAEReadWrite_Enum.h"

#include <array>
#include <memory>
#include <string_view>

#include <oxKernel/oxContainers.h>

namespace OxDAEReader {

namespace {

struct WordValue {
  std::string_view word;
  int32_t value;
};

// Words by value. Where reading and writing agree, one list serves both.
constexpr std::string_view kSamplerWrapWords[] = {"NONE", "WRAP", "MIRROR", "CLAMP", "BORDER"};
constexpr std::string_view kSamplerFilterWords[] = {"NONE",
                                                    "NEAREST",
                                                    "LINEAR",
                                                    "NEAREST_MIPMAP_NEAREST",
                                                    "LINEAR_MIPMAP_NEAREST",
                                                    "NEAREST_MIPMAP_LINEAR",
                                                    "LINEAR_MIPMAP_LINEAR"};
// "enum" is read but has no word for writing.
constexpr std::string_view kBasicTypeWords[] = {
    "bool",      "bool2",     "bool3",       "bool4",       "int",          "int2",
    "int3",      "int4",      "float",       "float2",      "float3",       "float4",
    "float1x1",  "float1x2",  "float1x3",    "float1x4",    "float2x1",     "float2x2",
    "float2x3",  "float2x4",  "float3x1",    "float3x2",    "float3x3",     "float3x4",
    "float4x1",  "float4x2",  "float4x3",    "float4x4",    "surface",      "sampler1D",
    "sampler2D", "sampler3D", "samplerCUBE", "samplerRECT", "samplerDEPTH", "string"};
// Written words; reading crosses samplerCUBE/samplerRECT back and folds fixed1.
constexpr std::string_view kCgParamTypeWords[] = {
    "bool",     "bool1",     "bool2",     "bool3",     "bool4",       "bool1x1",     "bool1x2",
    "bool1x3",  "bool1x4",   "bool2x1",   "bool2x2",   "bool2x3",     "bool2x4",     "bool3x1",
    "bool3x2",  "bool3x3",   "bool3x4",   "bool4x1",   "bool4x2",     "bool4x3",     "bool4x4",
    "float",    "float1",    "float2",    "float3",    "float4",      "float1x1",    "float1x2",
    "float1x3", "float1x4",  "float2x1",  "float2x2",  "float2x3",    "float2x4",    "float3x1",
    "float3x2", "float3x3",  "float3x4",  "float4x1",  "float4x2",    "float4x3",    "float4x4",
    "int",      "int1",      "int2",      "int3",      "int4",        "int1x1",      "int1x2",
    "int1x3",   "int1x4",    "int2x1",    "int2x2",    "int2x3",      "int2x4",      "int3x1",
    "int3x2",   "int3x3",    "int3x4",    "int4x1",    "int4x2",      "int4x3",      "int4x4",
    "half",     "half1",     "half2",     "half3",     "half4",       "half1x1",     "half1x2",
    "half1x3",  "half1x4",   "half2x1",   "half2x2",   "half2x3",     "half2x4",     "half3x1",
    "half3x2",  "half3x3",   "half3x4",   "half4x1",   "half4x2",     "half4x3",     "half4x4",
    "fixed",    "fixed1",    "fixed2",    "fixed3",    "fixed4",      "fixed1x1",    "fixed1x2",
    "fixed1x3", "fixed1x4",  "fixed2x1",  "fixed2x2",  "fixed2x3",    "fixed2x4",    "fixed3x1",
    "fixed3x2", "fixed3x3",  "fixed3x4",  "fixed4x1",  "fixed4x2",    "fixed4x3",    "fixed4x4",
    "surface",  "sampler1D", "sampler2D", "sampler3D", "samplerRECT", "samplerCUBE", "samplerDEPTH",
    "string",   "enum"};
constexpr std::string_view kSurfaceFormatHintChannelsWords[] = {"RGB", "RGBA", "L",   "LA",
                                                                "D",   "XYZ",  "XYZW"};
constexpr std::string_view kSurfaceFormatHintPrecisionWords[] = {"LOW", "MID", "HIGH"};
constexpr std::string_view kSurfaceFormatHintRangeWords[] = {"SNORM", "UNORM", "SINT", "UINT",
                                                             "FLOAT"};
constexpr std::string_view kSurfaceFormatHintOptionWords[] = {"SRGB_GAMMA", "NORMALIZED3",
                                                              "NORMALIZED4", "COMPRESSABLE"};
constexpr std::string_view kSurfaceTypeWords[] = {"UNTYPED", "1D",   "2D",   "3D",
                                                  "RECT",    "CUBE", "DEPTH"};
constexpr std::string_view kSurfaceFaceWords[] = {"POSITIVE_X", "NEGATIVE_X", "POSITIVE_Y",
                                                  "NEGATIVE_Y", "POSITIVE_Z", "NEGATIVE_Z"};

// Reading tables that differ from the word lists.
constexpr WordValue kSamplerFilterRead[] = {{"NEAREST", 1},
                                            {"LINEAR", 2},
                                            {"NEAREST_MIPMAP_NEAREST", 3},
                                            {"LINEAR_MIPMAP_NEAREST", 4},
                                            {"NEAREST_MIPMAP_LINEAR", 5},
                                            {"LINEAR_MIPMAP_LINEAR", 6}};
constexpr WordValue kBasicTypeRead[] = {
    {"bool", 0},         {"bool2", 1},        {"bool3", 2},         {"bool4", 3},
    {"int", 4},          {"int2", 5},         {"int3", 6},          {"int4", 7},
    {"float", 8},        {"float2", 9},       {"float3", 10},       {"float4", 11},
    {"float1x1", 12},    {"float1x2", 13},    {"float1x3", 14},     {"float1x4", 15},
    {"float2x1", 16},    {"float2x2", 17},    {"float2x3", 18},     {"float2x4", 19},
    {"float3x1", 20},    {"float3x2", 21},    {"float3x3", 22},     {"float3x4", 23},
    {"float4x1", 24},    {"float4x2", 25},    {"float4x3", 26},     {"float4x4", 27},
    {"surface", 28},     {"sampler1D", 29},   {"sampler2D", 30},    {"sampler3D", 31},
    {"samplerCUBE", 32}, {"samplerRECT", 33}, {"samplerDEPTH", 34}, {"string", 35},
    {"enum", 36}};
constexpr WordValue kCgParamTypeRead[] = {
    {"bool", 0},        {"bool1", 1},         {"bool2", 2},         {"bool3", 3},
    {"bool4", 4},       {"bool1x1", 5},       {"bool1x2", 6},       {"bool1x3", 7},
    {"bool1x4", 8},     {"bool2x1", 9},       {"bool2x2", 10},      {"bool2x3", 11},
    {"bool2x4", 12},    {"bool3x1", 13},      {"bool3x2", 14},      {"bool3x3", 15},
    {"bool3x4", 16},    {"bool4x1", 17},      {"bool4x2", 18},      {"bool4x3", 19},
    {"bool4x4", 20},    {"float", 21},        {"float1", 22},       {"float2", 23},
    {"float3", 24},     {"float4", 25},       {"float1x1", 26},     {"float1x2", 27},
    {"float1x3", 28},   {"float1x4", 29},     {"float2x1", 30},     {"float2x2", 31},
    {"float2x3", 32},   {"float2x4", 33},     {"float3x1", 34},     {"float3x2", 35},
    {"float3x3", 36},   {"float3x4", 37},     {"float4x1", 38},     {"float4x2", 39},
    {"float4x3", 40},   {"float4x4", 41},     {"int", 42},          {"int1", 43},
    {"int2", 44},       {"int3", 45},         {"int4", 46},         {"int1x1", 47},
    {"int1x2", 48},     {"int1x3", 49},       {"int1x4", 50},       {"int2x1", 51},
    {"int2x2", 52},     {"int2x3", 53},       {"int2x4", 54},       {"int3x1", 55},
    {"int3x2", 56},     {"int3x3", 57},       {"int3x4", 58},       {"int4x1", 59},
    {"int4x2", 60},     {"int4x3", 61},       {"int4x4", 62},       {"half", 63},
    {"half1", 64},      {"half2", 65},        {"half3", 66},        {"half4", 67},
    {"half1x1", 68},    {"half1x2", 69},      {"half1x3", 70},      {"half1x4", 71},
    {"half2x1", 72},    {"half2x2", 73},      {"half2x3", 74},      {"half2x4", 75},
    {"half3x1", 76},    {"half3x2", 77},      {"half3x3", 78},      {"half3x4", 79},
    {"half4x1", 80},    {"half4x2", 81},      {"half4x3", 82},      {"half4x4", 83},
    {"fixed", 84},      {"fixed1", 84},       {"fixed2", 86},       {"fixed3", 87},
    {"fixed4", 88},     {"fixed1x1", 89},     {"fixed1x2", 90},     {"fixed1x3", 91},
    {"fixed1x4", 92},   {"fixed2x1", 93},     {"fixed2x2", 94},     {"fixed2x3", 95},
    {"fixed2x4", 96},   {"fixed3x1", 97},     {"fixed3x2", 98},     {"fixed3x3", 99},
    {"fixed3x4", 100},  {"fixed4x1", 101},    {"fixed4x2", 102},    {"fixed4x3", 103},
    {"fixed4x4", 104},  {"surface", 105},     {"sampler1D", 106},   {"sampler2D", 107},
    {"sampler3D", 108}, {"samplerCUBE", 109}, {"samplerRECT", 110}, {"samplerDEPTH", 111},
    {"string", 112},    {"enum", 113}};
constexpr WordValue kSurfaceFormatHintOptionRead[] = {
    {"SRGB_GAMMA", 0}, {"NORMALIZED3", 1}, {"NORMALIZED4", 1}, {"COMPRESSABLE", 2}};
constexpr WordValue kSurfaceTypeRead[] = {{"1D", 1},   {"2D", 2},   {"3D", 3},
                                          {"RECT", 4}, {"CUBE", 5}, {"DEPTH", 6}};

// A word list turned into a read table (word i reads as i).
template <size_t N>
constexpr std::array<WordValue, N> Indexed(const std::string_view (&words)[N]) {
  std::array<WordValue, N> out{};
  for (size_t i = 0; i < N; ++i)
    out[i] = {words[i], static_cast<int32_t>(i)};
  return out;
}

constexpr auto kSamplerWrapRead = Indexed(kSamplerWrapWords);
constexpr auto kSurfaceFormatHintChannelsRead = Indexed(kSurfaceFormatHintChannelsWords);
constexpr auto kSurfaceFormatHintPrecisionRead = Indexed(kSurfaceFormatHintPrecisionWords);
constexpr auto kSurfaceFormatHintRangeRead = Indexed(kSurfaceFormatHintRangeWords);
constexpr auto kSurfaceFaceRead = Indexed(kSurfaceFaceWords);

using WordHash = OxKernel::oxHash<oxString, int32_t>;

// The built tables: one hash per hashed enumeration, one string list per
// word list. Absent until PrepareHashTables.
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

template <class Range>
WordHash MakeHash(const Range& pairs) {
  WordHash hash(OxKernel::oxHashTools::ComputePreferredSize(4));
  for (const WordValue& p : pairs)
    hash.insert_or_assign(oxString(p.word), p.value);
  return hash;
}

template <size_t N>
oxArray<oxString> MakeWords(const std::string_view (&words)[N]) {
  return oxArray<oxString>(std::begin(words), std::end(words));
}

template <class E>
E FromHash(WordHash Tables::*table, const oxString& text) {
  if (!g_tables) return E::UNKNOWN;
  const WordHash& hash = (*g_tables).*table;
  const auto it = hash.find(text);
  return it == hash.end() ? E::UNKNOWN : static_cast<E>(it->second);
}

// The short tables: exact comparisons in table order.
template <class E, class Range>
E FromChain(const Range& pairs, const oxString& text) {
  if (!g_tables) return E::UNKNOWN;
  for (const WordValue& p : pairs) {
    if (p.word == text) return static_cast<E>(p.value);
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
  return FromChain<EFxSurfaceFormatHintChannels>(kSurfaceFormatHintChannelsRead, t);
}
EFxSurfaceFormatHintPrecision oxDAEEnumConverter::GetSurfaceFormatHintPrecisionFromString(
    const oxString& t) {
  return FromChain<EFxSurfaceFormatHintPrecision>(kSurfaceFormatHintPrecisionRead, t);
}
EFxSurfaceFormatHintRange oxDAEEnumConverter::GetSurfaceFormatHintRangeFromString(
    const oxString& t) {
  return FromChain<EFxSurfaceFormatHintRange>(kSurfaceFormatHintRangeRead, t);
}
EFxSurfaceFormatHintOption oxDAEEnumConverter::GetSurfaceFormatHintOptionFromString(
    const oxString& t) {
  return FromChain<EFxSurfaceFormatHintOption>(kSurfaceFormatHintOptionRead, t);
}
EFxSurfaceType oxDAEEnumConverter::GetSurfaceTypeFromString(const oxString& t) {
  return FromChain<EFxSurfaceType>(kSurfaceTypeRead, t);
}
EFxSurfaceFace oxDAEEnumConverter::GetSurfaceFaceFromString(const oxString& t) {
  return FromChain<EFxSurfaceFace>(kSurfaceFaceRead, t);
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
  t->samplerWrap = MakeHash(kSamplerWrapRead);
  t->samplerFilter = MakeHash(kSamplerFilterRead);
  t->basicType = MakeHash(kBasicTypeRead);
  t->cgParamType = MakeHash(kCgParamTypeRead);
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
