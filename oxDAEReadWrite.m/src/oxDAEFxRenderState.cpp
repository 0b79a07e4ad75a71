#include "oxDAEReadWrite/oxDAEFxRenderState.h"

#include <charconv>
#include <memory>
#include <string_view>

#include <oxKernel/oxCharacter.h>
#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEFxRenderState);
OX_DAE_ELEMENT_DEFINE(oxDAEFxSimpleRenderState);
OX_DAE_ELEMENT_DEFINE(oxDAEFxComplexRenderState);

namespace {

using B = EFxBasicType;

// One known render state: its key, its basic type, the host type and text of
// its default (no host type: registered without a default), and for
// enumerated values the words a value may take, separated by blanks.
struct SRenderStateRow {
  std::string_view key;
  EFxBasicType type;
  std::string_view defaultType;
  std::string_view defaultText;
  std::string_view words = {};
};

constexpr std::string_view kText = "oxString";
constexpr std::string_view kNoDefault = "";

// The words of the enumerated values.
constexpr std::string_view kFuncWords = "NEVER LESS LEQUAL EQUAL GREATER NOTEQUAL GEQUAL ALWAYS";
constexpr std::string_view kBlendWords =
    "ZERO ONE SRC_COLOR ONE_MINUS_SRC_COLOR DEST_COLOR ONE_MINUS_DEST_COLOR SRC_ALPHA "
    "ONE_MINUS_SRC_ALPHA DEST_ALPHA ONE_MINUS_DEST_ALPHA CONSTANT_COLOR "
    "ONE_MINUS_CONSTANT_COLOR CONSTANT_ALPHA ONE_MINUS_CONSTANT_ALPHA SRC_ALPHA_SATURATE";
constexpr std::string_view kEquationWords = "FUNC_ADD FUNC_SUBTRACT FUNC_REVERSE_SUBTRACT MIN MAX";
constexpr std::string_view kFaceWords = "FRONT BACK FRONT_AND_BACK";
constexpr std::string_view kMaterialWords = "EMISSION AMBIENT DIFFUSE SPECULAR AMBIENT_AND_DIFFUSE";
constexpr std::string_view kPolygonWords = "POINT LINE FILL";
constexpr std::string_view kStencilOpWords =
    "KEEP ZERO REPLACE INCR DECR INVERT INCR_WRAP DECR_WRAP";
constexpr std::string_view kFogModeWords = "LINEAR EXP EXP2";
constexpr std::string_view kFogCoordWords = "FOG_COORDINATE FRAGMENT_DEPTH";
constexpr std::string_view kFrontFaceWords = "CW CCW";
constexpr std::string_view kColorControlWords = "SINGLE_COLOR SEPARATE_SPECULAR_COLOR";
constexpr std::string_view kLogicOpWords =
    "CLEAR AND AND_REVERSE COPY AND_INVERTED NOOP XOR OR NOR EQUIV INVERT OR_REVERSE "
    "COPY_INVERTED NAND SET";
constexpr std::string_view kShadeWords = "FLAT SMOOTH";

// Every known render state, in registration order: the parts of the complex
// states, the enumerated and text states, then the others by basic type.
// Defaults not fixed by the format follow the usual graphics pipeline
// defaults; the sampler states default to an empty sampler reference.
constexpr SRenderStateRow kRenderStates[] = {
    {"alpha_func/func", B::ENUM, kText, "ALWAYS", kFuncWords},
    {"alpha_func/value", B::FLOAT, "float", "0"},
    {"blend_func/src", B::ENUM, kText, "ONE", kBlendWords},
    {"blend_func/dest", B::ENUM, kText, "ZERO", kBlendWords},
    {"blend_func_separate/src_rgb", B::ENUM, kText, "ONE", kBlendWords},
    {"blend_func_separate/dest_rgb", B::ENUM, kText, "ZERO", kBlendWords},
    {"blend_func_separate/src_alpha", B::ENUM, kText, "ONE", kBlendWords},
    {"blend_func_separate/dest_alpha", B::ENUM, kText, "ZERO", kBlendWords},
    {"blend_equation_separate/rgb", B::ENUM, kText, "FUNC_ADD", kEquationWords},
    {"blend_equation_separate/alpha", B::ENUM, kText, "FUNC_ADD", kEquationWords},
    {"color_material/face", B::ENUM, kText, "FRONT_AND_BACK", kFaceWords},
    {"color_material/mode", B::ENUM, kText, "AMBIENT_AND_DIFFUSE", kMaterialWords},
    {"polygon_mode/face", B::ENUM, kText, "FRONT_AND_BACK", kFaceWords},
    {"polygon_mode/mode", B::ENUM, kText, "FILL", kPolygonWords},
    {"stencil_func/func", B::ENUM, kText, "ALWAYS", kFuncWords},
    {"stencil_func/ref", B::INT, "uint8", "0"},
    {"stencil_func/mask", B::INT, "uint8", "255"},
    {"stencil_op/fail", B::ENUM, kText, "KEEP", kStencilOpWords},
    {"stencil_op/zfail", B::ENUM, kText, "KEEP", kStencilOpWords},
    {"stencil_op/zpass", B::ENUM, kText, "KEEP", kStencilOpWords},
    {"stencil_func_separate/front", B::ENUM, kText, "ALWAYS", kFuncWords},
    {"stencil_func_separate/back", B::ENUM, kText, "ALWAYS", kFuncWords},
    {"stencil_func_separate/ref", B::INT, "uint8", "0"},
    {"stencil_func_separate/mask", B::INT, "uint8", "255"},
    {"stencil_op_separate/face", B::ENUM, kText, "FRONT_AND_BACK", kFaceWords},
    {"stencil_op_separate/fail", B::ENUM, kText, "KEEP", kStencilOpWords},
    {"stencil_op_separate/zfail", B::ENUM, kText, "KEEP", kStencilOpWords},
    {"stencil_op_separate/zpass", B::ENUM, kText, "KEEP", kStencilOpWords},
    {"stencil_mask_separate/face", B::ENUM, kText, "FRONT_AND_BACK", kFaceWords},
    {"stencil_mask_separate/mask", B::INT, "uint8", "255"},
    {"blend_equation", B::ENUM, kText, "FUNC_ADD", kEquationWords},
    {"cull_face", B::ENUM, kText, "BACK", kFaceWords},
    {"depth_func", B::ENUM, kText, "ALWAYS", kFuncWords},
    {"fog_mode", B::ENUM, kText, "EXP", kFogModeWords},
    {"fog_coord_src", B::ENUM, kText, "FOG_COORDINATE", kFogCoordWords},
    {"front_face", B::ENUM, kText, "CCW", kFrontFaceWords},
    {"light_model_color_control", B::ENUM, kText, "SINGLE_COLOR", kColorControlWords},
    {"logic_op", B::ENUM, kText, "COPY", kLogicOpWords},
    {"shade_model", B::ENUM, kText, "SMOOTH", kShadeWords},
    {"texture_env_mode", B::STRING, kText, "N/A"},
    {"light_enable", B::BOOL, "bool", "false"},
    {"texture1D_enable", B::BOOL, "bool", "false"},
    {"texture2D_enable", B::BOOL, "bool", "false"},
    {"texture3D_enable", B::BOOL, "bool", "false"},
    {"textureCUBE_enable", B::BOOL, "bool", "false"},
    {"textureRECT_enable", B::BOOL, "bool", "false"},
    {"textureDEPTH_enable", B::BOOL, "bool", "false"},
    {"clip_plane_enable", B::BOOL, "bool", "false"},
    {"depth_mask", B::BOOL, "bool", "true"},
    {"lighting_enable", B::BOOL, "bool", "false"},
    {"alpha_test_enable", B::BOOL, "bool", "false"},
    {"auto_normal_enable", B::BOOL, "bool", "false"},
    {"blend_enable", B::BOOL, "bool", "false"},
    {"color_logic_op_enable", B::BOOL, "bool", "false"},
    {"color_material_enable", B::BOOL, "bool", "false"},
    {"cull_face_enable", B::BOOL, "bool", "false"},
    {"depth_bounds_enable", B::BOOL, "bool", "false"},
    {"depth_clamp_enable", B::BOOL, "bool", "false"},
    {"depth_test_enable", B::BOOL, "bool", "false"},
    {"dither_enable", B::BOOL, "bool", "true"},
    {"fog_enable", B::BOOL, "bool", "false"},
    {"light_model_local_viewer_enable", B::BOOL, "bool", "false"},
    {"light_model_two_side_enable", B::BOOL, "bool", "false"},
    {"line_smooth_enable", B::BOOL, "bool", "false"},
    {"line_stipple_enable", B::BOOL, "bool", "false"},
    {"logic_op_enable", B::BOOL, "bool", "false"},
    {"multisample_enable", B::BOOL, "bool", "true"},
    {"normalize_enable", B::BOOL, "bool", "false"},
    {"point_smooth_enable", B::BOOL, "bool", "false"},
    {"polygon_offset_fill_enable", B::BOOL, "bool", "false"},
    {"polygon_offset_line_enable", B::BOOL, "bool", "false"},
    {"polygon_offset_point_enable", B::BOOL, "bool", "false"},
    {"polygon_smooth_enable", B::BOOL, "bool", "false"},
    {"polygon_stipple_enable", B::BOOL, "bool", "false"},
    {"rescale_normal_enable", B::BOOL, "bool", "false"},
    {"sample_alpha_to_coverage_enable", B::BOOL, "bool", "false"},
    {"sample_alpha_to_one_enable", B::BOOL, kNoDefault, ""},
    {"sample_coverage_enable", B::BOOL, kNoDefault, ""},
    {"scissor_test_enable", B::BOOL, kNoDefault, ""},
    {"stencil_test_enable", B::BOOL, kNoDefault, ""},
    {"color_mask", B::BOOL4, "oxVec4", "1 1 1 1"},
    {"clear_stencil", B::INT, "int32", "0"},
    {"stencil_mask", B::INT, "int32", "255"},
    {"line_stipple", B::INT2, "oxVec2", "1 65535"},
    {"scissor", B::INT4, "oxVec4", "0 0 0 0"},
    {"light_constant_attenuation", B::FLOAT, "float", "1"},
    {"light_linear_attenuation", B::FLOAT, "float", "0"},
    {"light_quadratic_attenuation", B::FLOAT, "float", "0"},
    {"light_spot_cutoff", B::FLOAT, "float", "180"},
    {"light_spot_exponent", B::FLOAT, "float", "0"},
    {"clear_depth", B::FLOAT, "float", "1"},
    {"fog_density", B::FLOAT, "float", "1"},
    {"fog_start", B::FLOAT, "float", "0"},
    {"fog_end", B::FLOAT, "float", "1"},
    {"line_width", B::FLOAT, "float", "1"},
    {"material_shininess", B::FLOAT, "float", "0"},
    {"point_fade_threshold_size", B::FLOAT, "float", "1"},
    {"point_size", B::FLOAT, "float", "1"},
    {"point_size_min", B::FLOAT, "float", "0"},
    {"point_size_max", B::FLOAT, "float", "1"},
    {"depth_bounds", B::FLOAT2, "oxVec2", "0 1"},
    {"depth_range", B::FLOAT2, "oxVec2", "0 1"},
    {"polygon_offset", B::FLOAT2, "oxVec2", "0 0"},
    {"light_spot_direction", B::FLOAT3, "oxVec3", "0 0 -1"},
    {"point_distance_attenuation", B::FLOAT3, "oxVec3", "1 0 0"},
    {"light_ambient", B::FLOAT4, "oxVec4", "0 0 0 1"},
    {"light_diffuse", B::FLOAT4, "oxVec4", "0 0 0 0"},
    {"light_specular", B::FLOAT4, "oxVec4", "0 0 0 0"},
    {"light_position", B::FLOAT4, "oxVec4", "0 0 1 0"},
    {"texture_env_color", B::FLOAT4, "oxVec4", "0 0 0 0"},
    {"clip_plane", B::FLOAT4, "oxVec4", "0 0 0 0"},
    {"blend_color", B::FLOAT4, "oxVec4", "0 0 0 0"},
    {"clear_color", B::FLOAT4, "oxVec4", "0 0 0 0"},
    {"fog_color", B::FLOAT4, "oxVec4", "0 0 0 0"},
    {"light_model_ambient", B::FLOAT4, "oxVec4", "0.2 0.2 0.2 1"},
    {"material_ambient", B::FLOAT4, "oxVec4", "0.2 0.2 0.2 1"},
    {"material_diffuse", B::FLOAT4, "oxVec4", "0.8 0.8 0.8 1"},
    {"material_emission", B::FLOAT4, "oxVec4", "0 0 0 1"},
    {"material_specular", B::FLOAT4, "oxVec4", "0 0 0 1"},
    {"model_view_matrix", B::FLOAT4X4, "oxMatrix44", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"},
    {"projection_matrix", B::FLOAT4X4, "oxMatrix44", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"},
    {"texture1D", B::SAMPLER1D, kText, ""},
    {"texture2D", B::SAMPLER2D, kText, ""},
    {"texture3D", B::SAMPLER3D, kText, ""},
    {"textureCUBE", B::SAMPLERCUBE, kText, ""},
    {"textureRECT", B::SAMPLERRECT, kText, ""},
    // Registered with the RECT sampler type, like textureRECT.
    {"textureDEPTH", B::SAMPLERRECT, kText, ""},
};

// The built registry: key to row (type and words) and key to default.
struct Registry {
  oxHash<oxString, const SRenderStateRow*> rows;
  oxHash<oxString, OxKernel::oxVariant> defaults;
};
std::unique_ptr<Registry> g_registry;

const OxKernel::oxType* FindHostType(std::string_view name) {
  return OxKernel::oxTypeManager::Instance(0).FindType(name);
}

const SRenderStateRow* FindRow(const oxString& key) {
  if (!g_registry) return nullptr;
  const auto it = g_registry->rows.find(key);
  return it == g_registry->rows.end() ? nullptr : it->second;
}

bool IsOneOfWords(std::string_view text, std::string_view words) {
  OxKernel::oxStringTokenizer tokens(words, " ");
  while (tokens.HasMoreTokens()) {
    if (tokens.NextToken() == text) return true;
  }
  return false;
}

// The host type holding `count` components of a basic type: the scalar type
// for one, a float tuple for 2, 3, 4 and 16; null for other counts.
const OxKernel::oxType* HostTypeOf(SBasicTypeInfo::EKind kind, uint32_t count) {
  using K = SBasicTypeInfo::EKind;
  if (count == 1) {
    return FindHostType(kind == K::BOOL ? "bool" : kind == K::INT ? "int32" : "float");
  }
  switch (count) {
    case 2:
      return FindHostType("oxVec2");
    case 3:
      return FindHostType("oxVec3");
    case 4:
      return FindHostType("oxVec4");
    case 16:
      return FindHostType("oxMatrix44");
    default:
      return nullptr;
  }
}

template <class T>
bool AppendComponent(std::string_view token, oxString& floats) {
  T component{};
  if (!OxKernel::oxCharacter::Interpret(token, component)) return false;
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(component));
  if (!floats.empty()) floats += ' ';
  floats.append(buffer, result.ptr);
  return true;
}

// Rewrites the bool or int components of `text` as floats for a float tuple;
// false when a component does not read.
bool ComponentsAsFloats(SBasicTypeInfo::EKind kind, std::string_view text, oxString& floats) {
  OxKernel::oxStringTokenizer tokens(text, " \t\r\n");
  while (tokens.HasMoreTokens()) {
    const oxString token = tokens.NextToken();
    const bool read = kind == SBasicTypeInfo::EKind::BOOL ? AppendComponent<bool>(token, floats)
                                                          : AppendComponent<int32_t>(token, floats);
    if (!read) return false;
  }
  return true;
}

// Converts `text` into `value` by the row's basic type; false (value left
// without a type) when it does not convert.
bool ConvertValue(const SRenderStateRow& row, std::string_view text, OxKernel::oxVariant& value) {
  using K = SBasicTypeInfo::EKind;
  const SBasicTypeInfo* info = oxDAEEnumConverter::GetBasicTypeInfo(row.type);
  if (!info) return false;
  if (info->kind != K::BOOL && info->kind != K::INT && info->kind != K::FLOAT) {
    if (!row.words.empty() && !IsOneOfWords(text, row.words)) return false;
    value.SetValueType(FindHostType(kText));
    return value.SetStringValue(text);
  }
  const uint32_t count = info->GetComponentCount();
  value.SetValueType(HostTypeOf(info->kind, count));
  oxString floats;
  const bool converted =
      count == 1 || info->kind == K::FLOAT
          ? value.SetStringValue(text)
          : ComponentsAsFloats(info->kind, text, floats) && value.SetStringValue(floats);
  if (!converted) value.SetValueType(nullptr);
  return converted;
}

void Warn(std::string_view format, const oxString& key) {
  oxString text(format);
  text.replace(text.find("%s"), 2, key);
  OX_LOG(OxKernel::kLogWarning, text);
}

}  // namespace

// --- Registry -------------------------------------------------------------------

void oxDAEFxRenderState::PrepareHashTables() {
  if (g_registry) return;
  auto registry = std::make_unique<Registry>();
  const auto size = OxKernel::oxHashTools::ComputePreferredSize(std::size(kRenderStates));
  registry->rows.reserve(size);
  registry->defaults.reserve(size);
  for (const SRenderStateRow& row : kRenderStates) {
    registry->rows.insert_or_assign(oxString(row.key), &row);
    if (row.defaultType.empty()) continue;
    // A default that does not convert is kept untyped, so that reading the
    // state reports the missing value instead of using a zero.
    OxKernel::oxVariant defaultValue(FindHostType(row.defaultType));
    if (!defaultValue.SetStringValue(row.defaultText)) defaultValue.SetValueType(nullptr);
    registry->defaults.insert_or_assign(oxString(row.key), defaultValue);
  }
  g_registry = std::move(registry);
}

void oxDAEFxRenderState::DestroyHashTables() {
  g_registry.reset();
}

bool oxDAEFxRenderState::HasHashTables() {
  return g_registry != nullptr;
}

unsigned int oxDAEFxRenderState::GetRegisteredCount() {
  return g_registry ? static_cast<unsigned int>(g_registry->rows.size()) : 0;
}

oxArray<oxString> oxDAEFxRenderState::GetRegisteredKeys() {
  oxArray<oxString> keys;
  if (!g_registry) return keys;
  keys.reserve(std::size(kRenderStates));
  for (const SRenderStateRow& row : kRenderStates)
    keys.emplace_back(row.key);
  return keys;
}

EFxBasicType oxDAEFxRenderState::GetRegisteredType(const oxString& key) {
  const SRenderStateRow* row = FindRow(key);
  return row ? row->type : EFxBasicType::UNKNOWN;
}

const OxKernel::oxVariant* oxDAEFxRenderState::GetRegisteredDefault(const oxString& key) {
  if (!g_registry) return nullptr;
  const auto it = g_registry->defaults.find(key);
  return it == g_registry->defaults.end() ? nullptr : &it->second;
}

// --- Simple states --------------------------------------------------------------

void oxDAEFxSimpleRenderState::Read(oxDAEFile& file) {
  Read(file, nullptr);
}

void oxDAEFxSimpleRenderState::Read(oxDAEFile& file, oxDAEFxComplexRenderState* complex) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  name = reader.GetTagName();
  index = kNoIndex;
  reader.ReadAttributeUShort("index", index);
  complexName = complex ? complex->name : oxString();
  value.SetValueType(nullptr);
  const oxString key = GetKey();
  const SRenderStateRow* row = FindRow(key);
  if (!row) return Warn("cannot get the type of the render state (%s)", key);
  valueType = row->type;
  const OxKernel::oxVariant* defaultValue = GetRegisteredDefault(key);
  if (!defaultValue) return Warn("cannot get the default value of the render state (%s)", key);
  oxString text;
  if (reader.ReadAttributeString("value", text)) {
    if (!ConvertValue(*row, text, value))
      Warn("cannot convert the value of the render state (%s)", key);
    return;
  }
  if (!defaultValue->GetValueType()) {
    OX_LOG(OxKernel::kLogWarning, "no value and not default value");
    return;
  }
  value = *defaultValue;
}

oxString oxDAEFxSimpleRenderState::GetKey() const {
  return complexName.empty() ? name : OxKernel::oxConcat(complexName, "/", name);
}

oxString oxDAEFxSimpleRenderState::GetStringValue() const {
  using K = SBasicTypeInfo::EKind;
  const SBasicTypeInfo* info = oxDAEEnumConverter::GetBasicTypeInfo(valueType);
  const auto* tuple = std::get_if<OxKernel::oxVariant::Tuple>(&value.GetValue());
  if (!info || !tuple || (info->kind != K::BOOL && info->kind != K::INT))
    return value.GetStringValue();
  oxString text;
  for (unsigned int i = 0; i < value.GetValueType()->GetComponentCount(); ++i) {
    if (i) text += ' ';
    const float component = (*tuple)[i];
    if (info->kind == K::BOOL) {
      text += component != 0.0f ? "true" : "false";
      continue;
    }
    char buffer[24];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, static_cast<int64_t>(component));
    text.append(buffer, result.ptr);
  }
  return text;
}

// --- Complex states -------------------------------------------------------------

void oxDAEFxComplexRenderState::Read(oxDAEFile& file) {
  name = file.reader->GetTagName();
  file.reader->EnterChildren();
  while (file.reader->MoveNext() == 0) {
    oxDAEFxSimpleRenderState& part = subStates.emplace_back();
    part.parent = this;
    part.Read(file, this);
  }
  file.reader->LeaveChildren();
}

const oxDAEFxSimpleRenderState* oxDAEFxComplexRenderState::GetSubRenderState(
    const oxString& partName) const {
  for (const oxDAEFxSimpleRenderState& part : subStates) {
    if (part.name == partName) return &part;
  }
  return nullptr;
}

}  // namespace OxDAEReader
