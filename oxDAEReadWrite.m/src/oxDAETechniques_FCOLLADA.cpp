#include "oxDAEReadWrite/oxDAETechniques_FCOLLADA.h"

#include <type_traits>
#include <utility>

#include "oxDAEReadWrite/oxDAEElements_Fx_Common.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Param.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAETechTexture_Maya);
OX_DAE_ELEMENT_DEFINE(oxDAETechMaps);
OX_DAE_ELEMENT_DEFINE(oxDAETechMaps_Maya);
OX_DAE_ELEMENT_DEFINE(oxDAETechDynAttr_Maya);
OX_DAE_ELEMENT_DEFINE(oxDAETechTexture_Max3D);
OX_DAE_ELEMENT_DEFINE(oxDAETechEffect_Max3D);
OX_DAE_ELEMENT_DEFINE(oxDAETechLight_Max3D);
OX_DAE_ELEMENT_DEFINE(oxDAETechLight_FCOLLADA);
OX_DAE_ELEMENT_DEFINE(oxDAETechMaps_FCOLLADA);
OX_DAE_ELEMENT_DEFINE(oxDAETechNode_FCOLLADA);
OX_DAE_ELEMENT_DEFINE(oxDAETechGeometry_FCOLLADA);
OX_DAE_ELEMENT_DEFINE(oxDAETechMaterial_FCOLLADA);

namespace {

// The parent texts of the unknown-tag warnings of each tool.
constexpr std::string_view kMayaParent = "technique";
constexpr std::string_view kMax3DParent = "technique profile=\"MAX3D\"";
constexpr std::string_view kFColladaParent = "technique profile=\"FCOLLADA\"";

constexpr std::string_view kDynamicAttributesTag = "dynamic_attributes";

// One child of a tool technique: its tag, how it is read into the technique
// and how it is written back.
template <class Owner>
struct ToolRule {
  std::string_view tag;
  void (*read)(Owner& owner, oxDAEFile& file);
  void (*write)(const Owner& owner, oxDAEFile& file, std::string_view tag);
};

// The value a field has in a technique nobody has read into.
template <class Owner, auto Field>
const auto& DefaultOf() {
  static const Owner defaults;
  return defaults.*Field;
}

// A number read from the element's text, written when not the default.
template <class Owner, auto Field>
constexpr ToolRule<Owner> Number(std::string_view tag) {
  return {tag, [](Owner& o, oxDAEFile& f) { f.reader->ReadTextFloat(o.*Field); },
          [](const Owner& o, oxDAEFile& f, std::string_view name) {
            if (o.*Field == DefaultOf<Owner, Field>()) return;
            f.writer->StartElement(name);
            f.writer->EndAttributes();
            f.writer->GetTextWriter()->WriteFloats(&(o.*Field), 1, 0);
            f.writer->EndElement();
          }};
}

// A flag set from the element's integer text (any value but 0 is true),
// written as 1 or 0 when not the default.
template <class Owner, auto Field>
constexpr ToolRule<Owner> Flag(std::string_view tag) {
  return {tag,
          [](Owner& o, oxDAEFile& f) {
            int32_t number = 0;
            if (f.reader->ReadTextInt(number)) o.*Field = number != 0;
          },
          [](const Owner& o, oxDAEFile& f, std::string_view name) {
            if (o.*Field == DefaultOf<Owner, Field>()) return;
            f.writer->AddLeafElement(name, o.*Field ? "1" : "0");
          }};
}

// A map value: a new object of the slot's class read from the element,
// owned by the document under the technique and queued for the update pass
// so that its texture binds to an image; written under the element's tag.
template <class Owner, auto Slot>
constexpr ToolRule<Owner> Map(std::string_view tag) {
  using T = std::remove_pointer_t<std::remove_reference_t<decltype(std::declval<Owner&>().*Slot)>>;
  return {tag, [](Owner& o, oxDAEFile& f) { o.*Slot = f.ReadQueuedChild<T>(&o); },
          [](const Owner& o, oxDAEFile& f, std::string_view name) {
            if (T* value = o.*Slot) value->Write(f, name);
          }};
}

// Reads a tool technique: the profile, then each child by the first rule
// whose tag matches; a child no rule takes is read as a parameter or the
// asset when it is one, and otherwise draws an unknown-tag warning naming
// `parentTag`.
template <class Owner, class Rule, size_t N>
void ReadTool(Owner& technique, oxDAEFile& file, const Rule (&rules)[N],
              std::string_view parentTag) {
  technique.ReadAttributes(file);
  file.ReadChildrenOr(technique, rules, [&technique, &file, parentTag](std::string_view tag) {
    if (!technique.ReadChild(file)) oxDAEBaseElement::UnknownTagWarning(tag, parentTag);
  });
}

// Writes "technique" with its profile and what each rule writes.
template <class Owner, size_t N>
void WriteTool(Owner& technique, oxDAEFile& file, const ToolRule<Owner> (&rules)[N]) {
  technique.StartWriting(file);
  for (const ToolRule<Owner>& rule : rules)
    rule.write(technique, file, rule.tag);
  technique.EndWriting(file);
}

}  // namespace

// --- Maya ----------------------------------------------------------------------

using TextureMaya = oxDAETechTexture_Maya;
constexpr ToolRule<TextureMaya> kTextureMayaChildren[] = {
    Number<TextureMaya, &TextureMaya::mirrorU>("mirrorU"),
    Number<TextureMaya, &TextureMaya::mirrorV>("mirrorV"),
    Number<TextureMaya, &TextureMaya::wrapU>("wrapU"),
    Number<TextureMaya, &TextureMaya::wrapV>("wrapV"),
    Number<TextureMaya, &TextureMaya::repeatU>("repeatU"),
    Number<TextureMaya, &TextureMaya::repeatV>("repeatV"),
    Number<TextureMaya, &TextureMaya::offsetU>("offsetU"),
    Number<TextureMaya, &TextureMaya::offsetV>("offsetV"),
    Number<TextureMaya, &TextureMaya::translateFrameU>("translateFrameU"),
    Number<TextureMaya, &TextureMaya::translateFrameV>("translateFrameV"),
    Number<TextureMaya, &TextureMaya::rotateFrame>("rotateFrame"),
    Number<TextureMaya, &TextureMaya::rotateUV>("rotateUV"),
};

void oxDAETechTexture_Maya::Read(oxDAEFile& file) {
  ReadTool(*this, file, kTextureMayaChildren, kMayaParent);
}

void oxDAETechTexture_Maya::Write(oxDAEFile& file) {
  WriteTool(*this, file, kTextureMayaChildren);
}

using MapsMaya = oxDAETechMaps_Maya;
constexpr ToolRule<MapsMaya> kMapsMayaChildren[] = {
    Map<MapsMaya, &oxDAETechMaps::shininess>("shininess"),
    Map<MapsMaya, &oxDAETechMaps::bump>("bump"),
    Map<MapsMaya, &oxDAETechMaps::specLevel>("spec_level"),
    Map<MapsMaya, &oxDAETechMaps::displacement>("displacement"),
    Map<MapsMaya, &oxDAETechMaps::filterColor>("filter_color"),
};

void oxDAETechMaps_Maya::Read(oxDAEFile& file) {
  ReadTool(*this, file, kMapsMayaChildren, kMayaParent);
}

void oxDAETechMaps_Maya::Write(oxDAEFile& file) {
  WriteTool(*this, file, kMapsMayaChildren);
}

namespace {

void ReadDynamicAttributes(oxDAETechDynAttr_Maya& technique, oxDAEFile& file) {
  file.reader->EnterChildren();
  while (file.reader->MoveNext() == 0)
    technique.attributes.push_back(file.ReadChild<oxDAEDynamicParam>(&technique));
  file.reader->LeaveChildren();
}

}  // namespace

constexpr oxDAEChildRule<oxDAETechDynAttr_Maya> kDynAttrMayaChildren[] = {
    {kDynamicAttributesTag, ReadDynamicAttributes},
};

void oxDAETechDynAttr_Maya::Read(oxDAEFile& file) {
  ReadTool(*this, file, kDynAttrMayaChildren, kMayaParent);
}

oxDAEDynamicParam* oxDAETechDynAttr_Maya::GetAttribute(const oxString& wanted) const {
  if (wanted.empty()) return nullptr;
  for (oxDAEDynamicParam* attribute : attributes) {
    if (attribute->elementName == wanted) return attribute;
  }
  for (oxDAEDynamicParam* attribute : attributes) {
    if (attribute->shortName == wanted) return attribute;
  }
  return nullptr;
}

// --- 3ds Max -------------------------------------------------------------------

constexpr ToolRule<oxDAETechTexture_Max3D> kTextureMax3DChildren[] = {
    Number<oxDAETechTexture_Max3D, &oxDAETechTexture_Max3D::amount>("amount"),
};

void oxDAETechTexture_Max3D::Read(oxDAEFile& file) {
  ReadTool(*this, file, kTextureMax3DChildren, kMax3DParent);
}

void oxDAETechTexture_Max3D::Write(oxDAEFile& file) {
  WriteTool(*this, file, kTextureMax3DChildren);
}

using EffectMax3D = oxDAETechEffect_Max3D;
constexpr ToolRule<EffectMax3D> kEffectMax3DChildren[] = {
    Flag<EffectMax3D, &EffectMax3D::faceted>("faceted"),
    Flag<EffectMax3D, &EffectMax3D::doubleSided>("double_sided"),
    Flag<EffectMax3D, &EffectMax3D::wireframe>("wireframe"),
    Flag<EffectMax3D, &EffectMax3D::faceMap>("face_map"),
};

void oxDAETechEffect_Max3D::Read(oxDAEFile& file) {
  ReadTool(*this, file, kEffectMax3DChildren, kMax3DParent);
}

void oxDAETechEffect_Max3D::Write(oxDAEFile& file) {
  WriteTool(*this, file, kEffectMax3DChildren);
}

using LightMax3D = oxDAETechLight_Max3D;
constexpr ToolRule<LightMax3D> kLightMax3DChildren[] = {
    Number<LightMax3D, &LightMax3D::decayType>("decay_type"),
    Number<LightMax3D, &LightMax3D::decayStart>("decay_start"),
    Number<LightMax3D, &LightMax3D::useNearAttenuation>("use_near_attenuation"),
    Number<LightMax3D, &LightMax3D::nearAttenuationStart>("near_attenuation_start"),
    Number<LightMax3D, &LightMax3D::nearAttenuationEnd>("near_attenuation_end"),
    Number<LightMax3D, &LightMax3D::useFarAttenuation>("use_far_attenuation"),
    Number<LightMax3D, &LightMax3D::farAttenuationStart>("far_attenuation_start"),
    Number<LightMax3D, &LightMax3D::farAttenuationEnd>("far_attenuation_end"),
};

void oxDAETechLight_Max3D::Read(oxDAEFile& file) {
  ReadTool(*this, file, kLightMax3DChildren, kMax3DParent);
}

void oxDAETechLight_Max3D::Write(oxDAEFile& file) {
  WriteTool(*this, file, kLightMax3DChildren);
}

// --- FCollada ------------------------------------------------------------------

using LightFCollada = oxDAETechLight_FCOLLADA;
constexpr ToolRule<LightFCollada> kLightFColladaChildren[] = {
    Number<LightFCollada, &LightFCollada::intensity>("intensity"),
    Number<LightFCollada, &LightFCollada::outerCone>("outer_cone"),
    Number<LightFCollada, &LightFCollada::aspectRatio>("aspect_ratio"),
    Number<LightFCollada, &LightFCollada::dropoff>("dropoff"),
    Number<LightFCollada, &LightFCollada::penumbraAngle>("penumbra_angle"),
    Number<LightFCollada, &LightFCollada::targetDefaultDist>("target_default_dist"),
};

void oxDAETechLight_FCOLLADA::Read(oxDAEFile& file) {
  ReadTool(*this, file, kLightFColladaChildren, kFColladaParent);
}

void oxDAETechLight_FCOLLADA::Write(oxDAEFile& file) {
  WriteTool(*this, file, kLightFColladaChildren);
}

using MapsFCollada = oxDAETechMaps_FCOLLADA;
constexpr ToolRule<MapsFCollada> kMapsFColladaChildren[] = {
    Map<MapsFCollada, &oxDAETechMaps::shininess>("shininess"),
    Map<MapsFCollada, &oxDAETechMaps::bump>("bump"),
    Map<MapsFCollada, &oxDAETechMaps::specLevel>("spec_level"),
    Map<MapsFCollada, &oxDAETechMaps::displacement>("displacement"),
    Map<MapsFCollada, &oxDAETechMaps::filterColor>("filter_color"),
    Map<MapsFCollada, &MapsFCollada::emissionLevel>("emission_level"),
};

void oxDAETechMaps_FCOLLADA::Read(oxDAEFile& file) {
  ReadTool(*this, file, kMapsFColladaChildren, kMayaParent);
}

void oxDAETechMaps_FCOLLADA::Write(oxDAEFile& file) {
  WriteTool(*this, file, kMapsFColladaChildren);
}

namespace {

struct Replacement {
  std::string_view from;
  std::string_view to;
};
// The escapes FCollada writes into user properties, in the order undone.
constexpr Replacement kUserPropertyEscapes[] = {
    {"%3C", "<"},
    {"%3E", ">"},
    {"%22", "\""},
    {"&#13;", ""},
};

void ReadUserProperties(oxDAETechNode_FCOLLADA& technique, oxDAEFile& file) {
  oxString text;
  if (!file.reader->ReadTextString(text)) return;
  oxDAETechNode_FCOLLADA::_Clean(text);
  technique.attributes.ReadFromXMLString(file.GetContextID(), text);
}

}  // namespace

constexpr oxDAEChildRule<oxDAETechNode_FCOLLADA> kNodeFColladaChildren[] = {
    {"user_properties", ReadUserProperties},
};

void oxDAETechNode_FCOLLADA::Read(oxDAEFile& file) {
  ReadTool(*this, file, kNodeFColladaChildren, kFColladaParent);
}

void oxDAETechNode_FCOLLADA::_Clean(oxString& text) {
  for (const Replacement& r : kUserPropertyEscapes)
    text.ReplaceAll(r.from, r.to);
}

namespace {

void ReadCustomAttributes(oxDAETechMaterial_FCOLLADA& technique, oxDAEFile& file) {
  const oxDAECustomAttributes* custom = file.ReadChild<oxDAECustomAttributes>(&technique);
  for (const oxDAEAttributes::Entry& entry : custom->GetAttributes().GetEntries())
    technique.attributes.AddAttribute(entry.name, entry.type, entry.value);
}

constexpr oxDAEChildRule<oxDAETechMaterial_FCOLLADA> kMaterialDynamicAttributes[] = {
    {oxDAECustomAttributes::s_XMLTag, ReadCustomAttributes},
};

}  // namespace

constexpr oxDAEChildRule<oxDAETechMaterial_FCOLLADA> kMaterialFColladaChildren[] = {
    {kDynamicAttributesTag,
     [](oxDAETechMaterial_FCOLLADA& t, oxDAEFile& f) {
       f.ReadChildren(t, kMaterialDynamicAttributes, kDynamicAttributesTag);
     }},
};

void oxDAETechMaterial_FCOLLADA::Read(oxDAEFile& file) {
  ReadTool(*this, file, kMaterialFColladaChildren, kFColladaParent);
}

}  // namespace OxDAEReader
