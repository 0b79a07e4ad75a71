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
// Exit status: 0, or 1 when the document cannot be read.
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

using namespace OxDAEReader;
using Technique = oxDAEFxProfileCommon::Technique;

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
          {"values", std::move(values)}};
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

std::string MaterialsText(const std::vector<const oxDAEMaterial*>& materials) {
  constexpr size_t kSlotWidth = std::string_view("index_of_refraction").size() + 2;
  std::string out;
  for (const oxDAEMaterial* material : materials) {
    Put(out, MaterialTitle(*material), ": ", EffectText(*material), "\n");
    const Technique* technique = CommonTechnique(EffectOf(*material));
    if (!technique) continue;
    for (const auto& [slot, value] : Slots(*technique)) {
      if (!HoldsValue(value)) continue;
      Put(out, "  ", slot, std::string(kSlotWidth - slot.size(), ' '), ValueText(*value), "\n");
    }
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
      "materials", "List the materials with their effect and common-profile values.");
  AddFileAndJSON(*command, options->file, options->json, "materials");
  return {command, [options] { return RunMaterials(*options); }};
}

}  // namespace oxdae
