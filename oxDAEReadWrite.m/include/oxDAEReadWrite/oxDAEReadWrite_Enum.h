// Conversions between the effect enumerations and their COLLADA words.
//
// Every enumeration is a signed 32-bit value; -1 (UNKNOWN) answers a word the
// table does not know. Comparisons are exact and case-sensitive. A few tables
// read and write differently (noted per function); those differences are
// part of the format as this module reads and writes it.
//
// The tables exist between PrepareHashTables and DestroyHashTables (the
// module builds them at start); without them every lookup answers UNKNOWN or
// the empty string.
#pragma once

#include <cstdint>

#include <oxKernel/oxContainers.h>
#include <oxKernel/oxString.h>

namespace OxDAEReader {

using OxKernel::oxArray;
using OxKernel::oxString;

// Texture sampler wrap modes.
enum class EFxSamplerWrap : int32_t { UNKNOWN = -1, NONE, WRAP, MIRROR, CLAMP, BORDER };
// Texture sampler filters.
enum class EFxSamplerFilter : int32_t {
  UNKNOWN = -1,
  NONE,
  NEAREST,
  LINEAR,
  NEAREST_MIPMAP_NEAREST,
  LINEAR_MIPMAP_NEAREST,
  NEAREST_MIPMAP_LINEAR,
  LINEAR_MIPMAP_LINEAR
};
// Value types of effect parameters and render states.
enum class EFxBasicType : int32_t {
  UNKNOWN = -1,
  BOOL,
  BOOL2,
  BOOL3,
  BOOL4,
  INT,
  INT2,
  INT3,
  INT4,
  FLOAT,
  FLOAT2,
  FLOAT3,
  FLOAT4,
  FLOAT1X1,
  FLOAT1X2,
  FLOAT1X3,
  FLOAT1X4,
  FLOAT2X1,
  FLOAT2X2,
  FLOAT2X3,
  FLOAT2X4,
  FLOAT3X1,
  FLOAT3X2,
  FLOAT3X3,
  FLOAT3X4,
  FLOAT4X1,
  FLOAT4X2,
  FLOAT4X3,
  FLOAT4X4,
  SURFACE,
  SAMPLER1D,
  SAMPLER2D,
  SAMPLER3D,
  SAMPLERCUBE,
  SAMPLERRECT,
  SAMPLERDEPTH,
  STRING,
  ENUM
};
// Parameter types of the shader profile.
enum class ECgParamType : int32_t {
  UNKNOWN = -1,
  BOOL,
  BOOL1,
  BOOL2,
  BOOL3,
  BOOL4,
  BOOL1X1,
  BOOL1X2,
  BOOL1X3,
  BOOL1X4,
  BOOL2X1,
  BOOL2X2,
  BOOL2X3,
  BOOL2X4,
  BOOL3X1,
  BOOL3X2,
  BOOL3X3,
  BOOL3X4,
  BOOL4X1,
  BOOL4X2,
  BOOL4X3,
  BOOL4X4,
  FLOAT,
  FLOAT1,
  FLOAT2,
  FLOAT3,
  FLOAT4,
  FLOAT1X1,
  FLOAT1X2,
  FLOAT1X3,
  FLOAT1X4,
  FLOAT2X1,
  FLOAT2X2,
  FLOAT2X3,
  FLOAT2X4,
  FLOAT3X1,
  FLOAT3X2,
  FLOAT3X3,
  FLOAT3X4,
  FLOAT4X1,
  FLOAT4X2,
  FLOAT4X3,
  FLOAT4X4,
  INT,
  INT1,
  INT2,
  INT3,
  INT4,
  INT1X1,
  INT1X2,
  INT1X3,
  INT1X4,
  INT2X1,
  INT2X2,
  INT2X3,
  INT2X4,
  INT3X1,
  INT3X2,
  INT3X3,
  INT3X4,
  INT4X1,
  INT4X2,
  INT4X3,
  INT4X4,
  HALF,
  HALF1,
  HALF2,
  HALF3,
  HALF4,
  HALF1X1,
  HALF1X2,
  HALF1X3,
  HALF1X4,
  HALF2X1,
  HALF2X2,
  HALF2X3,
  HALF2X4,
  HALF3X1,
  HALF3X2,
  HALF3X3,
  HALF3X4,
  HALF4X1,
  HALF4X2,
  HALF4X3,
  HALF4X4,
  FIXED,
  FIXED1,
  FIXED2,
  FIXED3,
  FIXED4,
  FIXED1X1,
  FIXED1X2,
  FIXED1X3,
  FIXED1X4,
  FIXED2X1,
  FIXED2X2,
  FIXED2X3,
  FIXED2X4,
  FIXED3X1,
  FIXED3X2,
  FIXED3X3,
  FIXED3X4,
  FIXED4X1,
  FIXED4X2,
  FIXED4X3,
  FIXED4X4,
  SURFACE,
  SAMPLER1D,
  SAMPLER2D,
  SAMPLER3D,
  SAMPLERCUBE,
  SAMPLERRECT,
  SAMPLERDEPTH,
  STRING,
  ENUM
};
// Channels of a surface format hint.
enum class EFxSurfaceFormatHintChannels : int32_t { UNKNOWN = -1, RGB, RGBA, L, LA, D, XYZ, XYZW };
// Precision of a surface format hint.
enum class EFxSurfaceFormatHintPrecision : int32_t { UNKNOWN = -1, LOW, MID, HIGH };
// Range of a surface format hint.
enum class EFxSurfaceFormatHintRange : int32_t { UNKNOWN = -1, SNORM, UNORM, SINT, UINT, FLOAT };
// Options of a surface format hint.
enum class EFxSurfaceFormatHintOption : int32_t {
  UNKNOWN = -1,
  SRGB_GAMMA,
  NORMALIZED3,
  NORMALIZED4,
  COMPRESSABLE
};
// Surface types; 0 (UNTYPED) is only ever written.
enum class EFxSurfaceType : int32_t {
  UNKNOWN = -1,
  UNTYPED,
  TYPE_1D,
  TYPE_2D,
  TYPE_3D,
  RECT,
  CUBE,
  DEPTH
};
// Cube map faces.
enum class EFxSurfaceFace : int32_t {
  UNKNOWN = -1,
  POSITIVE_X,
  NEGATIVE_X,
  POSITIVE_Y,
  NEGATIVE_Y,
  POSITIVE_Z,
  NEGATIVE_Z
};

// What a value of one basic type holds: its kind and its shape, rows times
// columns (1 x 1 for a scalar, 1 x n for a vector, 0 x 0 for surfaces,
// samplers and texts). `type` repeats the index the row stands at.
struct SBasicTypeInfo {
  enum class EKind : uint8_t { BOOL, INT, FLOAT, SURFACE, SAMPLER, TEXT };

  EFxBasicType type;
  EKind kind;
  uint8_t rows;
  uint8_t columns;

  // The number of scalar components: rows times columns.
  constexpr uint32_t GetComponentCount() const { return uint32_t{rows} * columns; }
};

class oxDAEEnumConverter {
 public:
  // One row per basic type, indexed by the type's value (0 to 36).
  static const SBasicTypeInfo s_ArrayBasicTypeToTypeInfo[37];
  // The row of `type`; null for UNKNOWN and values outside the enumeration.
  static const SBasicTypeInfo* GetBasicTypeInfo(EFxBasicType type);

  // Hashed lookups.
  static EFxSamplerWrap GetSamplerWrapFromString(const oxString& text);
  // "NONE" is not read: it answers UNKNOWN.
  static EFxSamplerFilter GetSamplerFilterFromString(const oxString& text);
  static EFxBasicType GetBasicTypeFromString(const oxString& text);
  // "fixed1" reads as FIXED (84); no word reads as 85.
  static ECgParamType GetCgParamTypeFromString(const oxString& text);

  // Comparison chains.
  static EFxSurfaceFormatHintChannels GetSurfaceFormatHintChannelsFromString(const oxString& text);
  static EFxSurfaceFormatHintPrecision GetSurfaceFormatHintPrecisionFromString(
      const oxString& text);
  static EFxSurfaceFormatHintRange GetSurfaceFormatHintRangeFromString(const oxString& text);
  // "NORMALIZED4" reads as 1 (like "NORMALIZED3") and "COMPRESSABLE" as 2.
  static EFxSurfaceFormatHintOption GetSurfaceFormatHintOptionFromString(const oxString& text);
  // "UNTYPED" reads as UNKNOWN.
  static EFxSurfaceType GetSurfaceTypeFromString(const oxString& text);
  static EFxSurfaceFace GetSurfaceFaceFromString(const oxString& text);

  // Value to word; the empty string for a value outside the word list.
  static const oxString& GetStringFromSamplerWrap(EFxSamplerWrap value);
  static const oxString& GetStringFromSamplerFilter(EFxSamplerFilter value);
  // "enum" (36) has no word on this side: it writes as the empty string.
  static const oxString& GetStringFromBasicType(EFxBasicType value);
  // 109 writes "samplerRECT" and 110 "samplerCUBE" (crossed with reading);
  // 85 writes "fixed1".
  static const oxString& GetStringFromCgParamType(ECgParamType value);
  static const oxString& GetStringFromSurfaceFormatHintChannels(EFxSurfaceFormatHintChannels value);
  static const oxString& GetStringFromSurfaceFormatHintPrecision(
      EFxSurfaceFormatHintPrecision value);
  static const oxString& GetStringFromSurfaceFormatHintRange(EFxSurfaceFormatHintRange value);
  // Writes from "SRGB_GAMMA", "NORMALIZED3", "NORMALIZED4", "COMPRESSABLE".
  static const oxString& GetStringFromSurfaceFormatHintOption(EFxSurfaceFormatHintOption value);
  static const oxString& GetStringFromSurfaceType(EFxSurfaceType value);
  static const oxString& GetStringFromSurfaceFace(EFxSurfaceFace value);

  // Builds every table once (a second call does nothing); DestroyHashTables
  // frees them all.
  static void PrepareHashTables();
  static void DestroyHashTables();
  static bool HasHashTables();
};

}  // namespace OxDAEReader
