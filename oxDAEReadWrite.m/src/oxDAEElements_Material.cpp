#include "oxDAEReadWrite/oxDAEElements_Material.h"

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Fx_Param.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Shader.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEMaterial);
OX_DAE_ELEMENT_DEFINE(oxDAEInstanceEffect);
OX_DAE_ELEMENT_DEFINE(oxDAETechniqueHint);
OX_DAE_ELEMENT_DEFINE(oxDAEEffect);

// --- <material> ------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEMaterial> kMaterialChildren[] = {
    {oxDAEAssetElement::s_XMLTag,
     [](oxDAEMaterial& m, oxDAEFile& f) { m.asset = f.ReadChild<oxDAEAssetElement>(&m); }},
    {oxDAEInstanceEffect::s_XMLTag,
     [](oxDAEMaterial& m, oxDAEFile& f) {
       m.instanceEffect = f.ReadQueuedChild<oxDAEInstanceEffect>(&m);
       m.instanceEffect->owner = &m;
     }},
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<oxDAEMaterial>},
};

void oxDAEMaterial::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  AdoptNameAsID(file);
  file.ReadChildren(*this, kMaterialChildren, s_XMLTag);
}

void oxDAEMaterial::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (asset) file.WriteChild(asset);
  if (instanceEffect) file.WriteChild(instanceEffect);
  file.writer->EndElement();
}

// --- <instance_effect> -------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEInstanceEffect> kInstanceEffectChildren[] = {
    {oxDAETechniqueHint::s_XMLTag,
     [](oxDAEInstanceEffect& i, oxDAEFile& f) {
       i.techniqueHints.push_back(f.ReadChild<oxDAETechniqueHint>(&i));
     }},
    {oxDAEFxSetParam::s_XMLTag,
     [](oxDAEInstanceEffect& i, oxDAEFile& f) {
       i.setParams.push_back(f.ReadChild<oxDAEFxSetParam>(&i));
     }},
};

void oxDAEInstanceEffect::Read(oxDAEFile& file) {
  file.reader->ReadAttributeString("url", url);
  file.ReadChildren(*this, kInstanceEffectChildren, s_XMLTag);
}

void oxDAEInstanceEffect::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->WriteAttributeString("url", url);
}

int oxDAEInstanceEffect::UpdateDependencies(oxDAEFile& file, bool beforeWrite) {
  if (beforeWrite) {
    if (effect) url = effect->ComputeURL(file);
    return 0;
  }
  effect = oxDAEEffect::DynamicCast(file.ResolveURI(url));
  return effect ? 0 : kDAEUnresolved;
}

// --- <technique_hint> --------------------------------------------------------------

void oxDAETechniqueHint::Read(oxDAEFile& file) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeString("platform", platform);
  reader.ReadAttributeString("profile", profile);
  if (!reader.ReadAttributeString("ref", ref))
    OX_LOG(OxKernel::kLogError, "attribute 'ref' is required");
}

// --- <effect> ----------------------------------------------------------------------

namespace {

using EProfile = oxDAEFxProfile::EFxProfileType;

template <EProfile Type>
void ReadGenericProfile(oxDAEEffect& effect, oxDAEFile& file) {
  effect.profiles.push_back(file.ReadChild<oxDAEFxProfile>(&effect, Type));
}

}  // namespace

constexpr oxDAEChildRule<oxDAEEffect> kEffectChildren[] = {
    {oxDAEFxAnnotate::s_XMLTag,
     [](oxDAEEffect& e, oxDAEFile& f) {
       e.annotations.push_back(f.ReadChild<oxDAEFxAnnotate>(&e));
     }},
    {oxDAEFxProfile::s_XMLTagCommon,
     [](oxDAEEffect& e, oxDAEFile& f) {
       e.commonProfile = f.ReadChild<oxDAEFxProfileCommon>(&e);
       e.profiles.push_back(e.commonProfile);
     }},
    {oxDAEFxProfileCG::s_XMLTag,
     [](oxDAEEffect& e, oxDAEFile& f) {
       e.profiles.push_back(f.ReadChild<oxDAEFxProfileCG>(&e));
     }},
    {oxDAEFxProfile::s_XMLTagGLSL, ReadGenericProfile<EProfile::GLSL>},
    {oxDAEFxProfile::s_XMLTagGLES, ReadGenericProfile<EProfile::GLES>},
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<oxDAEEffect>},
};

void oxDAEEffect::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kEffectChildren, s_XMLTag);
}

void oxDAEEffect::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (commonProfile) file.WriteChild(commonProfile);
  file.writer->EndElement();
}

oxDAEFxProfile* oxDAEEffect::GetProfile(oxDAEFxProfile::EFxProfileType type) const {
  for (oxDAEFxProfile* profile : profiles) {
    if (profile->GetProfileType() == type) return profile;
  }
  return nullptr;
}

}  // namespace OxDAEReader
