#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"

#include <oxKernel/oxCharacter.h>
#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Animation.h"
#include "oxDAEReadWrite/oxDAEElements_Animation_Controller.h"
#include "oxDAEReadWrite/oxDAEElements_Fx.h"
#include "oxDAEReadWrite/oxDAEElements_Instance.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Geometry.h"
#include "oxDAEReadWrite/oxDAEElements_Main_LightCamera.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Node.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Physics.h"
#include "oxDAEReadWrite/oxDAEElements_Material.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEColladaElement);
OX_DAE_ELEMENT_DEFINE(oxDAEAssetElement);
OX_DAE_ELEMENT_DEFINE(oxDAELibrary);
OX_DAE_ELEMENT_DEFINE(oxDAESceneElement);

// --- <COLLADA> ---------------------------------------------------------------

namespace {

void ReadLibrary(oxDAEColladaElement& root, oxDAEFile& file) {
  root.libraries.push_back(file.ReadChild<oxDAELibrary>(&root, file.reader->GetTag()));
}

constexpr oxDAEChildRule<oxDAEColladaElement> kColladaChildren[] = {
    {oxDAEAssetElement::s_XMLTag,
     [](oxDAEColladaElement& r, oxDAEFile& f) { r.asset = f.ReadChild<oxDAEAssetElement>(&r); }},
    {"library_animations", ReadLibrary},
    {"library_animation_clips", ReadLibrary},
    {"library_cameras", ReadLibrary},
    {"library_controllers", ReadLibrary},
    {"library_geometries", ReadLibrary},
    {"library_effects", ReadLibrary},
    {"library_force_fields", ReadLibrary},
    {"library_images", ReadLibrary},
    {"library_lights", ReadLibrary},
    {"library_materials", ReadLibrary},
    {"library_nodes", ReadLibrary},
    {"library_physics_materials", ReadLibrary},
    {"library_physics_models", ReadLibrary},
    {"library_physics_scenes", ReadLibrary},
    {"library_visual_scenes", ReadLibrary},
    {oxDAESceneElement::s_XMLTag,
     [](oxDAEColladaElement& r, oxDAEFile& f) { r.scene = f.ReadChild<oxDAESceneElement>(&r); }},
    {oxDAEExtraElement::s_XMLTag,
     [](oxDAEColladaElement&, oxDAEFile&) {
       oxDAEBaseElement::UnsupportedExtraWarning(oxDAEColladaElement::s_XMLTag);
     }},
};

}  // namespace

const std::string_view oxDAELibrary::kTags[15] = {
    "library_animations",     "library_animation_clips", "library_cameras",
    "library_controllers",    "library_geometries",      "library_effects",
    "library_force_fields",   "library_images",          "library_lights",
    "library_materials",      "library_nodes",           "library_physics_materials",
    "library_physics_models", "library_physics_scenes",  "library_visual_scenes"};

void oxDAEColladaElement::Read(oxDAEFile& file) {
  oxString text;
  file.reader->ReadAttributeString("version", text);
  version._FromString(text);
  if (!version.IsIncluded(oxDAEVersion(1, 4, 0), oxDAEVersion(1, 4, 1))) {
    OX_LOG(OxKernel::kLogError, "Unsupported version of DAE File");
    return;
  }
  file.ReadChildren(*this, kColladaChildren, s_XMLTag);
}

void oxDAEColladaElement::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  w.WriteAttributeString("xmlns", kNamespace);
  w.WriteAttributeString("version", version.ToString());
  w.EndAttributes();
  if (asset) file.WriteChild(asset);
  file.WriteChildren(libraries);
  if (scene) file.WriteChild(scene);
  w.EndElement();
}

oxDAELibrary* oxDAEColladaElement::GetLibrary(std::string_view tag) const {
  for (oxDAELibrary* library : libraries) {
    if (library->type == tag) return library;
  }
  return nullptr;
}

// --- <asset> -----------------------------------------------------------------

namespace {

template <oxString oxDAEAssetElement::*Field>
void ReadText(oxDAEAssetElement& asset, oxDAEFile& file) {
  file.reader->ReadTextString(asset.*Field);
}

constexpr oxDAEChildRule<oxDAEAssetElement> kContributorChildren[] = {
    {"author", ReadText<&oxDAEAssetElement::author>},
    {"authoring_tool", ReadText<&oxDAEAssetElement::authoringTool>},
    {"comments", ReadText<&oxDAEAssetElement::comments>},
    {"copyright", ReadText<&oxDAEAssetElement::copyright>},
    {"source_data", ReadText<&oxDAEAssetElement::sourceData>},
};

void ReadUpAxis(oxDAEAssetElement& asset, oxDAEFile& file) {
  oxString text;
  if (!file.reader->ReadTextString(text)) return;
  const std::string_view axis = OxKernel::oxCharacter::Trim(text);
  if (axis == "X_UP" || axis == "Y_UP" || axis == "Z_UP") {
    asset.upAxis = oxString(axis);
    return;
  }
  OX_LOG(OxKernel::kLogWarning,
         OxKernel::oxConcat("invalid up axis '", text, "'; keeping ", asset.upAxis));
}

void ReadUnit(oxDAEAssetElement& asset, oxDAEFile& file) {
  file.reader->ReadAttributeString("name", asset.unitName);
  file.reader->ReadAttributeFloat("meter", asset.unitMeter);
}

constexpr oxDAEChildRule<oxDAEAssetElement> kAssetChildren[] = {
    {"modified", ReadText<&oxDAEAssetElement::modified>},
    {"revision", ReadText<&oxDAEAssetElement::revision>},
    {"title", ReadText<&oxDAEAssetElement::title>},
    {"subject", ReadText<&oxDAEAssetElement::subject>},
    {"keywords", ReadText<&oxDAEAssetElement::keywords>},
    {"up_axis", ReadUpAxis},
    {"unit", ReadUnit},
    {"contributor", [](oxDAEAssetElement& a,
                       oxDAEFile& f) { f.ReadChildren(a, kContributorChildren, "contributor"); }},
};

struct ToolRule {
  std::string_view needle;
  oxDAEAssetElement::EAuthoringTool code;
};

using Tool = oxDAEAssetElement::EAuthoringTool;
constexpr ToolRule kToolRules[] = {
    {"ColladaMaya", Tool::MAYA},
    {"ColladaMax", Tool::MAX},
    {"Max", Tool::MAX},
    {"3dsmax", Tool::MAX},
    {"Equinox3D", Tool::EQUINOX3D},
    {"ZentileDev", Tool::ZENTILE_DEV},
    {"ZentileQR", Tool::ZENTILE_QR},
    {"Blender", Tool::BLENDER},
    {"XSI", Tool::XSI},
    {"Google", Tool::GOOGLE},
};

constexpr std::string_view kToolVersionPrefixes[] = {"ColladaMax v", "ColladaMaya v",
                                                     "Google SketchUp "};

}  // namespace

void oxDAEAssetElement::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kAssetChildren, s_XMLTag);
  authoringToolCode = ClassifyAuthoringTool(authoringTool);
  authoringToolVersion = ParseAuthoringToolVersion(authoringTool);
}

oxDAEAssetElement::EAuthoringTool oxDAEAssetElement::ClassifyAuthoringTool(const oxString& text) {
  for (const ToolRule& rule : kToolRules) {
    if (text.ContainsNoCase(rule.needle)) return rule.code;
  }
  return EAuthoringTool::NONE;
}

oxDAEVersion oxDAEAssetElement::ParseAuthoringToolVersion(const oxString& text) {
  for (std::string_view prefix : kToolVersionPrefixes) {
    const size_t at = text.find(prefix);
    if (at == oxString::npos) continue;
    uint32_t parts[3] = {0, 0, 0};
    unsigned int index = 0;
    for (size_t i = at + prefix.size(); i < text.size() && index < 3; ++i) {
      const char c = text[i];
      if (c == '.') {
        ++index;
      } else if (c >= '0' && c <= '9') {
        parts[index] = parts[index] * 10 + static_cast<uint32_t>(c - '0');
      } else {
        break;
      }
    }
    return oxDAEVersion(parts[0], parts[1], parts[2]);
  }
  return {};
}

void oxDAEAssetElement::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  w.EndAttributes();
  if (!(author.empty() && authoringTool.empty() && comments.empty() && copyright.empty() &&
        sourceData.empty())) {
    w.StartElement("contributor");
    w.EndAttributes();
    w.AddLeafElement("author", author);
    w.AddLeafElement("authoring_tool", authoringTool);
    w.AddLeafElement("comments", comments);
    w.AddLeafElement("copyright", copyright);
    w.AddLeafElement("source_data", sourceData);
    w.EndElement();
  }
  w.AddLeafElement("created", modified);
  w.AddLeafElement("keywords", keywords);
  w.AddLeafElement("modified", modified);
  w.AddLeafElement("revision", revision);
  w.AddLeafElement("subject", subject);
  w.AddLeafElement("title", title);
  w.StartElement("unit");
  w.WriteAttributeString("name", unitName);
  w.WriteAttributeFloat("meter", unitMeter);
  w.EndAttributes();
  w.EndElement();
  w.AddLeafElement("up_axis", upAxis);
  w.EndElement();
}

// --- <library_*> -------------------------------------------------------------

namespace {

template <class T>
void ReadLibraryChild(oxDAELibrary& library, oxDAEFile& file) {
  library.children.push_back(file.ReadChild<T>(&library));
}

constexpr oxDAEChildRule<oxDAELibrary> kLibraryChildren[] = {
    {oxDAEAnimation::s_XMLTag, ReadLibraryChild<oxDAEAnimation>},
    {oxDAEAnimationClip::s_XMLTag, ReadLibraryChild<oxDAEAnimationClip>},
    {oxDAENode::s_XMLTag, ReadLibraryChild<oxDAENode>},
    {oxDAECamera::s_XMLTag, ReadLibraryChild<oxDAECamera>},
    {oxDAEController::s_XMLTag, ReadLibraryChild<oxDAEController>},
    {oxDAEGeometry::s_XMLTag, ReadLibraryChild<oxDAEGeometry>},
    {oxDAEImage::s_XMLTag, ReadLibraryChild<oxDAEImage>},
    {oxDAELight::s_XMLTag, ReadLibraryChild<oxDAELight>},
    {oxDAEMaterial::s_XMLTag, ReadLibraryChild<oxDAEMaterial>},
    {oxDAEEffect::s_XMLTag, ReadLibraryChild<oxDAEEffect>},
    {oxDAEVisualScene::s_XMLTag, ReadLibraryChild<oxDAEVisualScene>},
    {oxDAEPhysicsScene::s_XMLTag, ReadLibraryChild<oxDAEPhysicsScene>},
    {oxDAEPhysicsModel::s_XMLTag, ReadLibraryChild<oxDAEPhysicsModel>},
    {oxDAEPhysicsMaterial::s_XMLTag, ReadLibraryChild<oxDAEPhysicsMaterial>},
    {oxDAEForceField::s_XMLTag, ReadLibraryChild<oxDAEForceField>},
};

}  // namespace

void oxDAELibrary::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kLibraryChildren, type);
}

void oxDAELibrary::Write(oxDAEFile& file) {
  WriteStart(file, type);
  file.writer->EndAttributes();
  file.WriteChildren(children);
  file.writer->EndElement();
}

// --- <scene> -----------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAESceneElement> kSceneChildren[] = {
    {"instance_visual_scene",
     [](oxDAESceneElement& s, oxDAEFile& f) {
       s.instanceVisualScene = f.ReadQueuedChild<oxDAEInstance>(&s, EToken::VISUALSCENE);
     }},
};

}  // namespace

void oxDAESceneElement::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kSceneChildren, s_XMLTag);
}

void oxDAESceneElement::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (instanceVisualScene) file.WriteChild(instanceVisualScene);
  file.writer->EndElement();
}

}  // namespace OxDAEReader
