// The enumeration <-> word tables, in both directions, with the places where
// reading and writing deliberately differ; and the module's table lifecycle.
#include "oxTestSupport.h"

#include <string>

using namespace OxDAEReader;
using C = oxDAEEnumConverter;

namespace {

// Rebuilds every module table when the test that removed them ends: the
// other tests of this program share them.
struct TablesRestorer {
  ~TablesRestorer() { oxDAEReadWriteModule::_PrepareHashes(); }
};

template <class E>
int V(E value) {
  return static_cast<int>(value);
}

// "bool1x1" ... "bool4x4": rows first.
std::vector<std::string> Matrices(const std::string& base) {
  std::vector<std::string> words;
  for (int rows = 1; rows <= 4; ++rows) {
    for (int columns = 1; columns <= 4; ++columns)
      words.push_back(base + std::to_string(rows) + "x" + std::to_string(columns));
  }
  return words;
}

// The shader-profile words in value order, as read: a scalar, its 1 to 4
// vectors and its sixteen matrices per scalar type, then the object types.
std::vector<std::string> CgParamWordsByValue() {
  std::vector<std::string> words;
  for (const char* scalar : {"bool", "float", "int", "half", "fixed"}) {
    words.emplace_back(scalar);
    for (int n = 1; n <= 4; ++n)
      words.push_back(scalar + std::to_string(n));
    for (const std::string& m : Matrices(scalar))
      words.push_back(m);
  }
  for (const char* word : {"surface", "sampler1D", "sampler2D", "sampler3D", "samplerCUBE",
                           "samplerRECT", "samplerDEPTH", "string", "enum"})
    words.emplace_back(word);
  return words;
}

}  // namespace

// --- Sampler wrap -----------------------------------------------------------------------

TEST(EnumConverter, SamplerWrapReadsAndWritesTheSameWords) {
  const char* const words[] = {"NONE", "WRAP", "MIRROR", "CLAMP", "BORDER"};
  for (int i = 0; i < 5; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetSamplerWrapFromString(words[i])), i);
    EXPECT_EQ(C::GetStringFromSamplerWrap(static_cast<EFxSamplerWrap>(i)), words[i]);
  }
  EXPECT_EQ(C::GetStringFromSamplerWrap(static_cast<EFxSamplerWrap>(5)), "");
}

TEST(EnumConverter, LowerCaseWrapIsUnknown) {
  EXPECT_EQ(V(C::GetSamplerWrapFromString("wrap")), -1);
  EXPECT_EQ(C::GetSamplerWrapFromString("wrap"), EFxSamplerWrap::UNKNOWN);
  EXPECT_EQ(V(C::GetSamplerWrapFromString("")), -1);
}

TEST(EnumConverter, NoneIsAWrapButNotAFilter) {
  EXPECT_EQ(V(C::GetSamplerWrapFromString("NONE")), 0);
  EXPECT_EQ(V(C::GetSamplerFilterFromString("NONE")), -1);
}

// --- Sampler filter ---------------------------------------------------------------------

TEST(EnumConverter, SamplerFilterWordsReadFromOneAndWriteFromZero) {
  const char* const words[] = {"NONE",
                               "NEAREST",
                               "LINEAR",
                               "NEAREST_MIPMAP_NEAREST",
                               "LINEAR_MIPMAP_NEAREST",
                               "NEAREST_MIPMAP_LINEAR",
                               "LINEAR_MIPMAP_LINEAR"};
  for (int i = 0; i < 7; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(C::GetStringFromSamplerFilter(static_cast<EFxSamplerFilter>(i)), words[i]);
    EXPECT_EQ(V(C::GetSamplerFilterFromString(words[i])), i == 0 ? -1 : i);
  }
}

TEST(EnumConverter, SamplerFilterOutsideTheTableWritesEmpty) {
  EXPECT_EQ(C::GetStringFromSamplerFilter(static_cast<EFxSamplerFilter>(-1)), "");
  EXPECT_EQ(C::GetStringFromSamplerFilter(static_cast<EFxSamplerFilter>(7)), "");
  EXPECT_EQ(V(C::GetSamplerFilterFromString("linear")), -1);
}

// --- Basic types ------------------------------------------------------------------------

TEST(EnumConverter, BasicTypesConvertBothWaysUpToString) {
  const char* const words[] = {
      "bool",      "bool2",     "bool3",       "bool4",       "int",          "int2",
      "int3",      "int4",      "float",       "float2",      "float3",       "float4",
      "float1x1",  "float1x2",  "float1x3",    "float1x4",    "float2x1",     "float2x2",
      "float2x3",  "float2x4",  "float3x1",    "float3x2",    "float3x3",     "float3x4",
      "float4x1",  "float4x2",  "float4x3",    "float4x4",    "surface",      "sampler1D",
      "sampler2D", "sampler3D", "samplerCUBE", "samplerRECT", "samplerDEPTH", "string"};
  static_assert(std::size(words) == 36);
  for (int i = 0; i < 36; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetBasicTypeFromString(words[i])), i);
    EXPECT_EQ(C::GetStringFromBasicType(static_cast<EFxBasicType>(i)), words[i]);
  }
}

TEST(EnumConverter, EnumBasicTypeIsReadButWrittenEmpty) {
  EXPECT_EQ(C::GetBasicTypeFromString("enum"), EFxBasicType::ENUM);
  EXPECT_EQ(V(C::GetBasicTypeFromString("enum")), 36);
  EXPECT_EQ(C::GetStringFromBasicType(C::GetBasicTypeFromString("enum")), "");
}

TEST(EnumConverter, UnknownBasicTypesAreMinusOne) {
  EXPECT_EQ(V(C::GetBasicTypeFromString("float1")), -1);
  EXPECT_EQ(V(C::GetBasicTypeFromString("Float")), -1);
  EXPECT_EQ(C::GetStringFromBasicType(EFxBasicType::UNKNOWN), "");
}

// --- Shader-profile parameter types -------------------------------------------------------

TEST(EnumConverter, CgParamTypesReadInValueOrderWithFixed1FoldedIntoFixed) {
  const std::vector<std::string> words = CgParamWordsByValue();
  ASSERT_EQ(words.size(), 114u);
  for (int i = 0; i < 114; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetCgParamTypeFromString(words[i])), words[i] == "fixed1" ? 84 : i);
  }
}

TEST(EnumConverter, CgParamTypesWriteInValueOrderWithSamplerCubeAndRectCrossed) {
  std::vector<std::string> words = CgParamWordsByValue();
  std::swap(words[109], words[110]);
  for (int i = 0; i < 114; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(C::GetStringFromCgParamType(static_cast<ECgParamType>(i)), words[i]);
  }
  EXPECT_EQ(C::GetStringFromCgParamType(static_cast<ECgParamType>(114)), "");
}

TEST(EnumConverter, CgParamAnchorValues) {
  EXPECT_EQ(V(C::GetCgParamTypeFromString("bool1x1")), 5);
  EXPECT_EQ(V(C::GetCgParamTypeFromString("float")), 21);
  EXPECT_EQ(V(C::GetCgParamTypeFromString("int")), 42);
  EXPECT_EQ(V(C::GetCgParamTypeFromString("half")), 63);
  EXPECT_EQ(V(C::GetCgParamTypeFromString("fixed2")), 86);
  EXPECT_EQ(V(C::GetCgParamTypeFromString("surface")), 105);
  EXPECT_EQ(V(C::GetCgParamTypeFromString("enum")), 113);
}

TEST(EnumConverter, SamplerCubeIsWrittenBackAsSamplerRect) {
  EXPECT_EQ(C::GetStringFromCgParamType(C::GetCgParamTypeFromString("samplerCUBE")), "samplerRECT");
  EXPECT_EQ(C::GetStringFromCgParamType(C::GetCgParamTypeFromString("samplerRECT")), "samplerCUBE");
}

TEST(EnumConverter, Fixed1IsWrittenBackAsFixed) {
  EXPECT_EQ(C::GetCgParamTypeFromString("fixed1"), ECgParamType::FIXED);
  EXPECT_EQ(C::GetStringFromCgParamType(C::GetCgParamTypeFromString("fixed1")), "fixed");
  EXPECT_EQ(C::GetStringFromCgParamType(ECgParamType::FIXED1), "fixed1");
}

// --- Surface format hints -----------------------------------------------------------------

TEST(EnumConverter, SurfaceFormatHintChannelsConvertBothWays) {
  const char* const words[] = {"RGB", "RGBA", "L", "LA", "D", "XYZ", "XYZW"};
  for (int i = 0; i < 7; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetSurfaceFormatHintChannelsFromString(words[i])), i);
    EXPECT_EQ(
        C::GetStringFromSurfaceFormatHintChannels(static_cast<EFxSurfaceFormatHintChannels>(i)),
        words[i]);
  }
  EXPECT_EQ(V(C::GetSurfaceFormatHintChannelsFromString("rgb")), -1);
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintChannels(static_cast<EFxSurfaceFormatHintChannels>(7)),
            "");
}

TEST(EnumConverter, SurfaceFormatHintPrecisionConvertsBothWays) {
  const char* const words[] = {"LOW", "MID", "HIGH"};
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetSurfaceFormatHintPrecisionFromString(words[i])), i);
    EXPECT_EQ(
        C::GetStringFromSurfaceFormatHintPrecision(static_cast<EFxSurfaceFormatHintPrecision>(i)),
        words[i]);
  }
  EXPECT_EQ(V(C::GetSurfaceFormatHintPrecisionFromString("MEDIUM")), -1);
  EXPECT_EQ(
      C::GetStringFromSurfaceFormatHintPrecision(static_cast<EFxSurfaceFormatHintPrecision>(3)),
      "");
}

TEST(EnumConverter, SurfaceFormatHintRangeConvertsBothWays) {
  const char* const words[] = {"SNORM", "UNORM", "SINT", "UINT", "FLOAT"};
  for (int i = 0; i < 5; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetSurfaceFormatHintRangeFromString(words[i])), i);
    EXPECT_EQ(C::GetStringFromSurfaceFormatHintRange(static_cast<EFxSurfaceFormatHintRange>(i)),
              words[i]);
  }
  EXPECT_EQ(V(C::GetSurfaceFormatHintRangeFromString("float")), -1);
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintRange(static_cast<EFxSurfaceFormatHintRange>(-1)), "");
}

TEST(EnumConverter, SurfaceFormatHintOptionReadsNormalized4LikeNormalized3) {
  EXPECT_EQ(V(C::GetSurfaceFormatHintOptionFromString("SRGB_GAMMA")), 0);
  EXPECT_EQ(V(C::GetSurfaceFormatHintOptionFromString("NORMALIZED3")), 1);
  EXPECT_EQ(V(C::GetSurfaceFormatHintOptionFromString("NORMALIZED4")), 1);
  EXPECT_EQ(V(C::GetSurfaceFormatHintOptionFromString("COMPRESSABLE")), 2);
  EXPECT_EQ(V(C::GetSurfaceFormatHintOptionFromString("COMPRESSIBLE")), -1);
}

TEST(EnumConverter, SurfaceFormatHintOptionWritesFromFourWords) {
  const char* const words[] = {"SRGB_GAMMA", "NORMALIZED3", "NORMALIZED4", "COMPRESSABLE"};
  for (int i = 0; i < 4; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(C::GetStringFromSurfaceFormatHintOption(static_cast<EFxSurfaceFormatHintOption>(i)),
              words[i]);
  }
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintOption(static_cast<EFxSurfaceFormatHintOption>(4)),
            "");
}

TEST(EnumConverter, ReadOptionsAreWrittenBackShifted) {
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintOption(
                C::GetSurfaceFormatHintOptionFromString("COMPRESSABLE")),
            "NORMALIZED4");
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintOption(
                C::GetSurfaceFormatHintOptionFromString("NORMALIZED4")),
            "NORMALIZED3");
}

// --- Surface type and face ------------------------------------------------------------------

TEST(EnumConverter, SurfaceTypesReadFromOne) {
  const char* const words[] = {"1D", "2D", "3D", "RECT", "CUBE", "DEPTH"};
  for (int i = 0; i < 6; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetSurfaceTypeFromString(words[i])), i + 1);
  }
}

TEST(EnumConverter, UntypedIsOnlyWritten) {
  EXPECT_EQ(V(C::GetSurfaceTypeFromString("UNTYPED")), -1);
  EXPECT_EQ(C::GetStringFromSurfaceType(static_cast<EFxSurfaceType>(0)), "UNTYPED");
}

TEST(EnumConverter, SurfaceTypesWriteFromZero) {
  const char* const words[] = {"UNTYPED", "1D", "2D", "3D", "RECT", "CUBE", "DEPTH"};
  for (int i = 0; i < 7; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(C::GetStringFromSurfaceType(static_cast<EFxSurfaceType>(i)), words[i]);
  }
  EXPECT_EQ(C::GetStringFromSurfaceType(static_cast<EFxSurfaceType>(7)), "");
  EXPECT_EQ(V(C::GetSurfaceTypeFromString("cube")), -1);
}

TEST(EnumConverter, SurfaceFacesConvertBothWays) {
  const char* const words[] = {"POSITIVE_X", "NEGATIVE_X", "POSITIVE_Y",
                               "NEGATIVE_Y", "POSITIVE_Z", "NEGATIVE_Z"};
  for (int i = 0; i < 6; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(V(C::GetSurfaceFaceFromString(words[i])), i);
    EXPECT_EQ(C::GetStringFromSurfaceFace(static_cast<EFxSurfaceFace>(i)), words[i]);
  }
  EXPECT_EQ(V(C::GetSurfaceFaceFromString("POSITIVE_W")), -1);
  EXPECT_EQ(C::GetStringFromSurfaceFace(static_cast<EFxSurfaceFace>(6)), "");
}

// --- Table lifecycle --------------------------------------------------------------------------

TEST(EnumConverter, PreparingTheTablesTwiceKeepsTheFirstOnes) {
  const oxString* before = &C::GetStringFromSamplerWrap(EFxSamplerWrap::WRAP);
  C::PrepareHashTables();
  EXPECT_TRUE(C::HasHashTables());
  EXPECT_EQ(&C::GetStringFromSamplerWrap(EFxSamplerWrap::WRAP), before);
}

TEST(EnumConverter, WithoutTablesEveryLookupAnswersUnknownOrEmpty) {
  const TablesRestorer restorer;
  C::DestroyHashTables();
  EXPECT_FALSE(C::HasHashTables());
  EXPECT_EQ(V(C::GetSamplerWrapFromString("WRAP")), -1);
  EXPECT_EQ(V(C::GetSamplerFilterFromString("LINEAR")), -1);
  EXPECT_EQ(V(C::GetBasicTypeFromString("float")), -1);
  EXPECT_EQ(V(C::GetCgParamTypeFromString("half")), -1);
  EXPECT_EQ(V(C::GetSurfaceFormatHintChannelsFromString("RGB")), -1);
  EXPECT_EQ(V(C::GetSurfaceFormatHintPrecisionFromString("LOW")), -1);
  EXPECT_EQ(V(C::GetSurfaceFormatHintRangeFromString("UNORM")), -1);
  EXPECT_EQ(V(C::GetSurfaceFormatHintOptionFromString("SRGB_GAMMA")), -1);
  EXPECT_EQ(V(C::GetSurfaceTypeFromString("2D")), -1);
  EXPECT_EQ(V(C::GetSurfaceFaceFromString("POSITIVE_X")), -1);
  EXPECT_EQ(C::GetStringFromSamplerWrap(EFxSamplerWrap::WRAP), "");
  EXPECT_EQ(C::GetStringFromSamplerFilter(EFxSamplerFilter::LINEAR), "");
  EXPECT_EQ(C::GetStringFromBasicType(EFxBasicType::FLOAT), "");
  EXPECT_EQ(C::GetStringFromCgParamType(ECgParamType::HALF), "");
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintChannels(EFxSurfaceFormatHintChannels::RGB), "");
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintPrecision(EFxSurfaceFormatHintPrecision::LOW), "");
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintRange(EFxSurfaceFormatHintRange::UNORM), "");
  EXPECT_EQ(C::GetStringFromSurfaceFormatHintOption(EFxSurfaceFormatHintOption::SRGB_GAMMA), "");
  EXPECT_EQ(C::GetStringFromSurfaceType(EFxSurfaceType::TYPE_2D), "");
  EXPECT_EQ(C::GetStringFromSurfaceFace(EFxSurfaceFace::POSITIVE_X), "");
}

TEST(EnumConverter, TablesRebuiltAfterDestructionAnswerAgain) {
  {
    const TablesRestorer restorer;
    C::DestroyHashTables();
  }
  EXPECT_EQ(V(C::GetSamplerWrapFromString("CLAMP")), 3);
  EXPECT_EQ(C::GetStringFromSurfaceFace(EFxSurfaceFace::NEGATIVE_Z), "NEGATIVE_Z");
}

TEST(EnumConverter, ModuleBuildsAndFreesAllFourTables) {
  const TablesRestorer restorer;
  oxDAEReadWriteModule::_DestroyHashes();
  EXPECT_FALSE(C::HasHashTables());
  EXPECT_FALSE(oxDAEParameter::_HasHashTable());
  EXPECT_FALSE(oxDAEFxRenderState::HasHashTables());
  EXPECT_FALSE(oxDAEFile::_HasHashTable());
  oxDAEReadWriteModule::_PrepareHashes();
  EXPECT_TRUE(C::HasHashTables());
  EXPECT_TRUE(oxDAEParameter::_HasHashTable());
  EXPECT_TRUE(oxDAEFxRenderState::HasHashTables());
  EXPECT_TRUE(oxDAEFile::_HasHashTable());
}
