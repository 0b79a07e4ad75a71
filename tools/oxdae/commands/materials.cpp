// oxdae materials FILE [--json]: every material in document order, with the
// effect its instance effect names and the values of that effect's common
// profile: the shading model and each value slot that holds something.
//
// A slot whose element holds no colour, float or texture (an empty
// <diffuse/>, or a <param> reference, which the reader does not keep) is
// left out, as an absent slot is. A texture shows its reference, its
// texture coordinate channel and the image it resolved to, with that image's
// init_from text ("oxdae textures" tells where that file is).
//
// Each material also lists the profiles of its effect, in document order, by
// kind (COMMON, CG, GLSL, GLES); a CG profile adds its techniques, their
// passes and each pass's render states in document order. A complex state
// is listed part by part, each under its key "state/part". A state shows its
// index (none when it has none), its basic type's word ("enum" for
// enumerated values; none for a state the registry does not know) and its
// value as text (none when it has no value). Shaders are not listed.
//
// Exit status: 0, or 1 when the document cannot be read.
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

using namespace OxDAEReader;
using Technique = oxDAEFxProfileCommon::Technique;
using SimpleState = oxDAEFxSimpleRenderState;

struct MaterialsOptions {
  std::string file;
  bool json = false;
};

// The value slots of a common technique, by the name the report gives them,
// in the order it lists them.
std::vector<std::pair<std::string_view, const oxDAEBaseElement*>> Slots(const Technique& t) {
  return {{"emission", t.emission},         {"ambient", t.ambient},
          {"diffuse", t.diffuse},           {"specular", t.specular},
          {"reflective", t.reflective},     {"transparent", t.transparent},
          {"shininess", t.shininess},       {"reflectivity", t.reflectivity},
          {"transparency", t.transparency}, {"index_of_refraction", t.indexOfRefraction}};
}

const Technique* CommonTechnique(const oxDAEEffect* effect) {
  if (!effect || !effect->commonProfile) return nullptr;
  return effect->commonProfile->technique;
}

const oxDAEEffect* EffectOf(const oxDAEMaterial& material) {
  return material.instanceEffect ? material.instanceEffect->effect : nullptr;
}

// The shading model's name; empty for a model outside the four.
std::string_view ShadingName(const Technique& technique) {
  const int model = technique.shadingModel;
  if (model < 0 || model >= static_cast<int>(std::size(Technique::kShadingModelTags))) return {};
  return Technique::kShadingModelTags[model];
}

bool HoldsValue(const oxDAEBaseElement* value) {
  if (const auto* number = oxDAEFxFloatOrParamType::DynamicCast(value))
    return number->IsFloat() || number->IsParam();
  const auto* cot = oxDAEFxColorOrTextureType::DynamicCast(value);
  return cot && (cot->IsColor() || cot->IsParam() || cot->IsTexture());
}

std::string_view OpaqueName(const oxDAEFxCOTTransparent& transparent) {
  return transparent.UseAlphaChannel() ? "A_ONE" : "RGB_ZERO";
}

// --- Profiles and render states ------------------------------------------------

// The kind of a profile; empty for a profile of no known kind.
std::string_view ProfileKind(const oxDAEFxProfile& profile) {
  static constexpr std::string_view kKinds[] = {"COMMON", "CG", "GLSL", "GLES"};
  const int type = profile.GetProfileType();
  if (type < 0 || type >= static_cast<int>(std::size(kKinds))) return {};
  return kKinds[type];
}

// The word of a state's basic type: the enumeration tables' word, which for
// enumerated values exists on the reading side only; empty for UNKNOWN.
std::string TypeWord(EFxBasicType type) {
  if (type == EFxBasicType::ENUM) return "enum";
  return std::string(oxDAEEnumConverter::GetStringFromBasicType(type));
}

// The simple states of a pass in document order, a complex state's parts
// in its place.
std::vector<const SimpleState*> StatesOf(const oxDAEFxPass& pass) {
  std::vector<const SimpleState*> states;
  for (const oxDAEBaseElement* element : pass.shadersAndStates) {
    if (const auto* simple = SimpleState::DynamicCast(element)) {
      states.push_back(simple);
    } else if (const auto* complex = oxDAEFxComplexRenderState::DynamicCast(element)) {
      for (const SimpleState& part : complex->subStates)
        states.push_back(&part);
    }
  }
  return states;
}

bool HasIndex(const SimpleState& state) {
  return state.index != SimpleState::kNoIndex;
}

// --- JSON -----------------------------------------------------------------

Json ColorOrTextureJSON(const oxDAEFxColorOrTextureType& value) {
  Json out = Json::object();
  if (value.IsColor()) {
    out["color"] = Json::array();
    for (const float c : {value.color.r, value.color.g, value.color.b, value.color.a})
      out["color"].push_back(JsonNumber(c));
  } else if (value.IsParam()) {
    out["param"] = true;
  } else {
    out["texture"] = std::string(value.texture);
    out["texcoord"] = std::string(value.texcoord);
    out["image"] = value.image ? Json(std::string(value.image->id)) : Json(nullptr);
    out["init_from"] = value.image ? Json(std::string(value.image->initFrom)) : Json(nullptr);
  }
  if (const auto* transparent = oxDAEFxCOTTransparent::DynamicCast(&value))
    out["opaque"] = OpaqueName(*transparent);
  return out;
}

Json ValueJSON(const oxDAEBaseElement& value) {
  if (const auto* number = oxDAEFxFloatOrParamType::DynamicCast(&value)) {
    if (number->IsParam()) return {{"param", true}};
    return {{"float", JsonNumber(number->value)}};
  }
  return ColorOrTextureJSON(*oxDAEFxColorOrTextureType::DynamicCast(&value));
}

Json StateJSON(const SimpleState& state) {
  const std::string type = TypeWord(state.valueType);
  return {{"name", std::string(state.GetKey())},
          {"index", HasIndex(state) ? Json(state.index) : Json(nullptr)},
          {"type", JsonText(type)},
          {"value", state.HasValue() ? Json(std::string(state.GetStringValue())) : Json(nullptr)}};
}

Json PassJSON(const oxDAEFxPass& pass) {
  Json states = Json::array();
  for (const SimpleState* state : StatesOf(pass))
    states.push_back(StateJSON(*state));
  return {{"sid", std::string(pass.sid)}, {"states", std::move(states)}};
}

Json CGTechniquesJSON(const oxDAEFxProfileCG& profile) {
  Json techniques = Json::array();
  for (const oxDAEFxProfileCGTechnique* technique : profile.techniques) {
    Json passes = Json::array();
    for (const oxDAEFxPass* pass : technique->passes)
      passes.push_back(PassJSON(*pass));
    techniques.push_back({{"sid", std::string(technique->sid)}, {"passes", std::move(passes)}});
  }
  return techniques;
}

// The profiles of the material's effect; empty without an effect.
Json ProfilesJSON(const oxDAEEffect* effect) {
  Json profiles = Json::array();
  if (!effect) return profiles;
  for (const oxDAEFxProfile* profile : effect->profiles) {
    Json entry = {{"kind", JsonText(ProfileKind(*profile))}};
    if (const auto* cg = oxDAEFxProfileCG::DynamicCast(profile))
      entry["techniques"] = CGTechniquesJSON(*cg);
    profiles.push_back(std::move(entry));
  }
  return profiles;
}

Json MaterialJSON(const oxDAEMaterial& material) {
  const oxDAEEffect* effect = EffectOf(material);
  const Technique* technique = CommonTechnique(effect);
  Json values = Json::object();
  if (technique) {
    for (const auto& [slot, value] : Slots(*technique)) {
      if (HoldsValue(value)) values[std::string(slot)] = ValueJSON(*value);
    }
  }
  return {{"id", std::string(material.id)},
          {"name", std::string(material.name)},
          {"effect", effect ? Json(std::string(effect->id)) : Json(nullptr)},
          {"shading", technique ? JsonText(ShadingName(*technique)) : Json(nullptr)},
          {"values", std::move(values)},
          {"profiles", ProfilesJSON(effect)}};
}

Json MaterialsJSON(const std::vector<const oxDAEMaterial*>& materials) {
  Json list = Json::array();
  for (const oxDAEMaterial* material : materials)
    list.push_back(MaterialJSON(*material));
  return {{"materials", std::move(list)}};
}

// --- Text -----------------------------------------------------------------

// Appends texts, characters and integers to `out`.
template <class... Parts>
void Put(std::string& out, const Parts&... parts) {
  out += OxKernel::oxConcat(parts...);
}

// "texture REF (texcoord SET) -> image ID: INIT_FROM", or "-> no image".
std::string TextureText(const oxDAEFxColorOrTextureType& value) {
  std::string out = "texture " + JsonLine(std::string(value.texture));
  if (!value.texcoord.empty()) Put(out, " (texcoord ", value.texcoord, ")");
  if (!value.image) return out + " -> no image";
  Put(out, " -> image ", value.image->id.empty() ? "(no id)" : value.image->id);
  if (!value.image->initFrom.empty()) Put(out, ": ", value.image->initFrom);
  return out;
}

std::string ValueText(const oxDAEBaseElement& value) {
  if (const auto* number = oxDAEFxFloatOrParamType::DynamicCast(&value))
    return number->IsParam() ? "param" : "float " + NumberText(number->value);
  const auto& cot = *oxDAEFxColorOrTextureType::DynamicCast(&value);
  std::string out;
  if (cot.IsColor()) {
    out = "color";
    for (const float c : {cot.color.r, cot.color.g, cot.color.b, cot.color.a})
      Put(out, " ", NumberText(c));
  } else if (cot.IsParam()) {
    out = "param";
  } else {
    out = TextureText(cot);
  }
  if (const auto* transparent = oxDAEFxCOTTransparent::DynamicCast(&value))
    Put(out, ", opaque ", OpaqueName(*transparent));
  return out;
}

// "ID ("NAME")": the name only when it says more than the id.
std::string MaterialTitle(const oxDAEMaterial& material) {
  std::string title = material.id.empty() ? "(no id)" : std::string(material.id);
  if (!material.name.empty() && material.name != material.id)
    Put(title, " (", JsonLine(std::string(material.name)), ")");
  return title;
}

// "effect ID, MODEL", or why there is no effect or no common technique.
std::string EffectText(const oxDAEMaterial& material) {
  const oxDAEInstanceEffect* instance = material.instanceEffect;
  if (!instance) return "no effect";
  const oxDAEEffect* effect = instance->effect;
  if (!effect) return "effect " + JsonLine(std::string(instance->url)) + " not found";
  std::string out = "effect " + std::string(effect->id);
  const Technique* technique = CommonTechnique(effect);
  if (!technique) return out + ", no common profile";
  const std::string_view shading = ShadingName(*technique);
  if (shading.empty()) return out + ", unknown shading";
  return out + ", " + std::string(shading);
}

// The width of the value column: the longest slot name and two blanks.
constexpr size_t kSlotWidth = std::string_view("index_of_refraction").size() + 2;

// "      NAME[INDEX]: TYPE VALUE", with "no type" and ", no value" standing
// for what the state lacks.
std::string StateText(const SimpleState& state) {
  std::string out = "      " + std::string(state.GetKey());
  if (HasIndex(state)) Put(out, "[", state.index, "]");
  const std::string type = TypeWord(state.valueType);
  Put(out, ": ", type.empty() ? "no type" : type);
  if (!state.HasValue()) return out + ", no value\n";
  return out + " " + std::string(state.GetStringValue()) + "\n";
}

std::string SidText(const oxString& sid) {
  return sid.empty() ? "(no sid)" : std::string(sid);
}

// "  profiles             KIND KIND ..." ("?" for a profile of no known
// kind).
std::string ProfileKindsText(const oxDAEEffect& effect) {
  constexpr std::string_view kLabel = "profiles";
  std::string out = "  " + std::string(kLabel) + std::string(kSlotWidth - kLabel.size(), ' ');
  for (size_t i = 0; i < effect.profiles.size(); ++i) {
    const std::string_view kind = ProfileKind(*effect.profiles[i]);
    Put(out, i ? " " : "", kind.empty() ? "?" : kind);
  }
  return out + "\n";
}

// The techniques of a CG profile, their passes and the passes' states, one
// per line.
std::string CGProfileText(const oxDAEFxProfileCG& profile) {
  std::string out;
  for (const oxDAEFxProfileCGTechnique* technique : profile.techniques) {
    Put(out, "  CG technique ", SidText(technique->sid), "\n");
    for (const oxDAEFxPass* pass : technique->passes) {
      Put(out, "    pass ", SidText(pass->sid), "\n");
      for (const SimpleState* state : StatesOf(*pass))
        out += StateText(*state);
    }
  }
  return out;
}

// The profile line and what each CG profile holds; nothing for an effect
// without profiles.
std::string ProfilesText(const oxDAEEffect& effect) {
  if (effect.profiles.empty()) return {};
  std::string out = ProfileKindsText(effect);
  for (const oxDAEFxProfile* profile : effect.profiles) {
    if (const auto* cg = oxDAEFxProfileCG::DynamicCast(profile)) out += CGProfileText(*cg);
  }
  return out;
}

std::string MaterialsText(const std::vector<const oxDAEMaterial*>& materials) {
  std::string out;
  for (const oxDAEMaterial* material : materials) {
    Put(out, MaterialTitle(*material), ": ", EffectText(*material), "\n");
    const oxDAEEffect* effect = EffectOf(*material);
    if (const Technique* technique = CommonTechnique(effect)) {
      for (const auto& [slot, value] : Slots(*technique)) {
        if (!HoldsValue(value)) continue;
        Put(out, "  ", slot, std::string(kSlotWidth - slot.size(), ' '), ValueText(*value), "\n");
      }
    }
    if (effect) out += ProfilesText(*effect);
  }
  Put(out, materials.size(), " material(s)\n");
  return out;
}

int RunMaterials(const MaterialsOptions& options) {
  LogCounter log;
  oxDAEFile document;
  if (!LoadDocument(document, options.file, log)) return kExitFailure;
  const std::vector<const oxDAEMaterial*> materials = AllOf<oxDAEMaterial>(document);
  Print(
      options.json, [&] { return MaterialsJSON(materials); },
      [&] { return MaterialsText(materials); });
  return kExitOK;
}

}  // namespace

Command AddMaterials(CLI::App& tool) {
  auto options = std::make_shared<MaterialsOptions>();
  CLI::App* command = tool.add_subcommand(
      "materials",
      "List the materials with their effect, its common-profile values and its profiles.");
  AddFileAndJSON(*command, options->file, options->json, "materials");
  return {command, [options] { return RunMaterials(*options); }};
}

}  // namespace oxdae
