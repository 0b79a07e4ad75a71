#include "oxDAEReadWrite/oxDAETechniques.h"

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Fx.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Common.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Geometry.h"
#include "oxDAEReadWrite/oxDAEElements_Main_LightCamera.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Node.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEElements_Material.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques_NV.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEExtraElement);
OX_DAE_ELEMENT_DEFINE(oxDAETechnique);
OX_DAE_ELEMENT_DEFINE(oxDAECustomAttributes);

using OxKernel::kLogWarning;

// --- <extra> -------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEExtraElement> kExtraChildren[] = {
    {oxDAETechnique::s_XMLTag,
     [](oxDAEExtraElement& e, oxDAEFile& f) {
       e.techniques.push_back(f.ReadChild<oxDAETechnique>(&e));
     }},
};

void oxDAEExtraElement::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.reader->ReadAttributeString("type", type);
  file.ReadChildren(*this, kExtraChildren, s_XMLTag);
}

oxDAETechnique* oxDAEExtraElement::GetTechnique(const oxString& profile) const {
  for (oxDAETechnique* technique : techniques) {
    if (technique->profile == profile) return technique;
  }
  return nullptr;
}

// --- <technique> -----------------------------------------------------------------

void oxDAETechnique::Read(oxDAEFile& file) {
  ReadAttributes(file);
  file.reader->EnterChildren();
  while (file.reader->MoveNext() == 0)
    ReadChild(file);
  file.reader->LeaveChildren();
}

void oxDAETechnique::ReadAttributes(oxDAEFile& file) {
  file.reader->ReadAttributeString("profile", profile);
}

bool oxDAETechnique::ReadChild(oxDAEFile& file) {
  if (file._IsXMLNodeAParameter()) {
    parameters.push_back(file.ReadChild<oxDAEParameter>(this));
    return true;
  }
  if (file.reader->IsTag(oxDAEAssetElement::s_XMLTag)) {
    asset = file.ReadChild<oxDAEAssetElement>(this);
    return true;
  }
  return false;
}

void oxDAETechnique::StartWriting(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->WriteAttributeString("profile", profile);
  file.writer->EndAttributes();
}

void oxDAETechnique::EndWriting(oxDAEFile& file) {
  file.writer->EndElement();
}

// --- Technique choice -------------------------------------------------------------

namespace {

using Tool = oxDAEAssetElement::EAuthoringTool;

struct TechniqueRule {
  const OxKernel::oxRTTI* owner;  // owners of this class or a subclass
  std::string_view profile;
  bool mayaOrMaxOnly;  // only in documents written by Maya or 3ds Max
  oxDAETechnique* (*create)();
};

template <class T>
oxDAETechnique* Create() {
  return new T();
}

constexpr TechniqueRule kTechniqueRules[] = {
    {&oxDAEEffect::kRTTI, "NV_import", false, Create<oxDAETechEffect_Nv>},
    {&oxDAEEffect::kRTTI, "MAX3D", false, Create<oxDAETechEffect_Max3D>},
    {&oxDAEFxProfileCommon::Technique::kRTTI, "MAYA", false, Create<oxDAETechMaps_Maya>},
    {&oxDAEFxProfileCommon::Technique::kRTTI, "FCOLLADA", false, Create<oxDAETechMaps_FCOLLADA>},
    {&oxDAEFxColorOrTextureType::kRTTI, "MAX3D", false, Create<oxDAETechTexture_Max3D>},
    {&oxDAEFxColorOrTextureType::kRTTI, "MAYA", true, Create<oxDAETechTexture_Maya>},
    {&oxDAENode::kRTTI, "FCOLLADA", false, Create<oxDAETechNode_FCOLLADA>},
    {&oxDAEGeometry::kRTTI, "FCOLLADA", false, Create<oxDAETechGeometry_FCOLLADA>},
    {&oxDAEMaterial::kRTTI, "FCOLLADA", false, Create<oxDAETechMaterial_FCOLLADA>},
    {&oxDAELight::kRTTI, "FCOLLADA", false, Create<oxDAETechLight_FCOLLADA>},
    {&oxDAELight::kRTTI, "MAX3D", false, Create<oxDAETechLight_Max3D>},
};

Tool AuthoringTool(const oxDAEFile& file) {
  const oxDAEColladaElement* root = file.GetRoot();
  return root && root->asset ? root->asset->GetAuthoringTool() : Tool::NONE;
}

const TechniqueRule* FindTechniqueRule(const oxDAEBaseElement& owner, const oxString& profile,
                                       Tool tool) {
  for (const TechniqueRule& rule : kTechniqueRules) {
    if (rule.profile != profile || !owner.IsKindOf(*rule.owner)) continue;
    if (rule.mayaOrMaxOnly && tool != Tool::MAX && tool != Tool::MAYA) continue;
    return &rule;
  }
  return nullptr;
}

}  // namespace

int oxDAEFile::ReadExtra(oxDAEBaseElement* owner, oxDAEExtraElement*& extra) {
  extra = new oxDAEExtraElement();
  extra->parent = owner;
  _AddElement(extra);
  const Tool tool = AuthoringTool(*this);
  reader->EnterChildren();
  while (reader->MoveNext() == 0) {
    if (!reader->IsTag(oxDAETechnique::s_XMLTag)) continue;
    oxString profile;
    reader->ReadAttributeString("profile", profile);
    const TechniqueRule* rule = owner ? FindTechniqueRule(*owner, profile, tool) : nullptr;
    if (!rule) continue;
    oxDAETechnique* technique = rule->create();
    technique->Read(*this);
    technique->parent = extra;
    _AddElement(technique);
    extra->techniques.push_back(technique);
  }
  reader->LeaveChildren();
  return 0;
}

// --- Custom attributes ------------------------------------------------------------

bool oxDAEAttributes::_GetAttributeIndex(const oxString& name, unsigned int& index) const {
  for (index = 0; index < entries.size(); ++index) {
    if (entries[index].name == name) return true;
  }
  return false;
}

bool oxDAEAttributes::HasAttribute(const oxString& name) const {
  unsigned int index = 0;
  return _GetAttributeIndex(name, index);
}

void oxDAEAttributes::AddAttribute(const oxString& name, const OxKernel::oxType* type,
                                   const OxKernel::oxVariant& value) {
  entries.push_back({name, type, value});
}

namespace {

constexpr std::string_view kProlog = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

// Adds the <Item> the reader stands on, or logs why it is rejected.
void ReadItem(oxDAEAttributes& attributes, OxKernel::oxXMLReader& reader, unsigned int context) {
  oxString name, typeName, value;
  reader.ReadAttributeString("name", name);
  reader.ReadAttributeString("type", typeName);
  reader.ReadTextString(value);
  if (typeName == "string") typeName = "oxString";
  if (name.empty() || typeName.empty() || (value.empty() && typeName != "oxString")) {
    OX_LOG(kLogWarning, "invalid property item");
    return;
  }
  const OxKernel::oxType* type = OxKernel::oxTypeManager::Instance(context).FindType(typeName);
  if (!type) {
    OX_LOG(kLogWarning, "invalid property item type");
    return;
  }
  OxKernel::oxVariant variant(type);
  if (!variant.SetStringValue(value)) {
    OX_LOG(kLogWarning, "invalid property item value");
    return;
  }
  attributes.AddAttribute(name, type, variant);
}

}  // namespace

int oxDAEAttributes::ReadFromXMLString(unsigned int context, const oxString& xml) {
  const oxString text = xml.StartsWith(kProlog) ? xml : oxString(oxString(kProlog) + xml);
  OxKernel::oxRefPtr<OxKernel::oxXMLReader> reader;
  if (const int rc = OxKernel::oxXMLFactory::Instance(context).CreateReader(reader, text, 0))
    return rc;
  bool itemMet = false;
  while (reader->MoveNext() == 0) {
    if (!reader->IsTag("Attributes") && !reader->IsTag("QR_Attributes")) continue;
    reader->EnterChildren();
    while (reader->MoveNext() == 0) {
      if (!reader->IsTag("Item")) continue;
      itemMet = true;
      ReadItem(*this, *reader, context);
    }
    reader->LeaveChildren();
  }
  return itemMet ? 0 : -1;
}

namespace {

struct TypeTranslation {
  std::string_view written;
  std::string_view host;
};
constexpr TypeTranslation kCustomTypeNames[] = {
    {"int", "int32"},     {"float2", "oxVec2"},   {"float3", "oxVec3"},
    {"float4", "oxVec4"}, {"string", "oxString"},
};

std::string_view HostTypeName(std::string_view written) {
  for (const TypeTranslation& t : kCustomTypeNames) {
    if (t.written == written) return t.host;
  }
  return written;
}

}  // namespace

void oxDAECustomAttributes::Read(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  reader.EnterChildren();
  while (reader.MoveNext() == 0) {
    oxString typeName;
    if (!reader.ReadAttributeString("type", typeName)) {
      OX_LOG(kLogWarning, "Custom Attributes : no attribute type");
      continue;
    }
    const OxKernel::oxType* type =
        OxKernel::oxTypeManager::Instance(file.GetContextID()).FindType(HostTypeName(typeName));
    if (!type) {
      OX_LOG(kLogWarning, "Custom Attributes : unknown attribute type");
      continue;
    }
    oxString text;
    reader.ReadTextString(text);
    OxKernel::oxVariant value(type);
    if (!value.SetStringValue(text)) {
      OX_LOG(kLogWarning, "Custom Attributes : invalid attribute value");
      continue;
    }
    attributes.AddAttribute(reader.GetTagName(), type, value);
  }
  reader.LeaveChildren();
}

}  // namespace OxDAEReader
