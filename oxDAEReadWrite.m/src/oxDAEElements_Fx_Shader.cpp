#include "oxDAEReadWrite/oxDAEElements_Fx_Shader.h"

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Fx.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCG);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCGTechnique);
OX_DAE_ELEMENT_DEFINE(oxDAEFxShaderBind);
OX_DAE_ELEMENT_DEFINE(oxDAEFxShader);
OX_DAE_ELEMENT_DEFINE(oxDAEFxPass);

namespace {

constexpr std::string_view kCodeTag = "code";
constexpr std::string_view kIncludeTag = "include";

// The first element of `list` whose `field` equals `wanted`, or null; for
// lists of element pointers and for lists of records.
template <class T, class Field>
T* FindBy(const oxArray<T*>& list, Field field, const oxString& wanted) {
  for (T* item : list) {
    if (item->*field == wanted) return item;
  }
  return nullptr;
}

template <class T, class Field>
const T* FindBy(const oxArray<T>& list, Field field, const oxString& wanted) {
  for (const T& item : list) {
    if (item.*field == wanted) return &item;
  }
  return nullptr;
}

template <class Owner>
void ReadCodeRecord(Owner& owner, oxDAEFile& file) {
  owner.ReadCode(file);
}

template <class Owner>
void ReadIncludeRecord(Owner& owner, oxDAEFile& file) {
  owner.ReadInclude(file);
}

template <class Owner>
void ReadImage(Owner& owner, oxDAEFile& file) {
  owner.images.push_back(file.ReadChild<oxDAEImage>(&owner));
}

template <class Owner>
void ReadNewParam(Owner& owner, oxDAEFile& file) {
  owner.newParams.push_back(file.ReadChild<oxDAEFxNewParam>(&owner));
}

}  // namespace

// --- Code and include records ---------------------------------------------------

const SFxCode* oxDAEFxCodeLibrary::GetCode(const oxString& wanted) const {
  return FindBy(codes, &SFxCode::sid, wanted);
}

const SFxInclude* oxDAEFxCodeLibrary::GetInclude(const oxString& wanted) const {
  return FindBy(includes, &SFxInclude::sid, wanted);
}

void oxDAEFxCodeLibrary::ReadCode(oxDAEFile& file) {
  SFxCode& code = codes.emplace_back();
  file.reader->ReadAttributeString("sid", code.sid);
  file.reader->ForEachTextChild(
      [&code](const OxKernel::oxXMLTextValue& text) { code.text += text.GetText(); });
}

void oxDAEFxCodeLibrary::ReadInclude(oxDAEFile& file) {
  SFxInclude& include = includes.emplace_back();
  file.reader->ReadAttributeString("sid", include.sid);
  file.reader->ReadAttributeString("url", include.url);
  oxDAEFile::CorrectURI(include.url);
}

// --- <profile_CG> -----------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAEFxProfileCG> kProfileCGChildren[] = {
    {kCodeTag, ReadCodeRecord<oxDAEFxProfileCG>},
    {kIncludeTag, ReadIncludeRecord<oxDAEFxProfileCG>},
    {oxDAEImage::s_XMLTag, ReadImage<oxDAEFxProfileCG>},
    {oxDAEFxNewParam::s_XMLTag, ReadNewParam<oxDAEFxProfileCG>},
    {oxDAEFxProfileCGTechnique::s_XMLTag,
     [](oxDAEFxProfileCG& p, oxDAEFile& f) {
       p.techniques.push_back(f.ReadChild<oxDAEFxProfileCGTechnique>(&p));
     }},
    {oxDAEAssetElement::s_XMLTag,
     [](oxDAEFxProfileCG&, oxDAEFile&) {
       OX_LOG(OxKernel::kLogWarning, "<asset> elements are not supported in <profile_CG>");
     }},
    {oxDAEExtraElement::s_XMLTag,
     [](oxDAEFxProfileCG&, oxDAEFile&) {
       OX_LOG(OxKernel::kLogWarning, "<extra> elements are not supported in <profile_CG>");
     }},
};

}  // namespace

void oxDAEFxProfileCG::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.reader->ReadAttributeString("platform", platform);
  file.ReadChildren(*this, kProfileCGChildren, s_XMLTag);
}

oxDAEFxProfileCGTechnique* oxDAEFxProfileCG::GetTechnique(const oxString& wanted) const {
  return FindBy(techniques, &oxDAEElement::sid, wanted);
}

// --- <technique> of the CG profile --------------------------------------------------

namespace {

using CGTechnique = oxDAEFxProfileCGTechnique;

constexpr oxDAEChildRule<CGTechnique> kCGTechniqueChildren[] = {
    {oxDAEFxAnnotate::s_XMLTag, oxDAEFxAnnotate::ReadInto<CGTechnique>},
    {kCodeTag, ReadCodeRecord<CGTechnique>},
    {kIncludeTag, ReadIncludeRecord<CGTechnique>},
    {oxDAEImage::s_XMLTag, ReadImage<CGTechnique>},
    {oxDAEFxNewParam::s_XMLTag, ReadNewParam<CGTechnique>},
    {oxDAEFxSetParam::s_XMLTag,
     [](CGTechnique& t, oxDAEFile& f) { t.setParams.push_back(f.ReadChild<oxDAEFxSetParam>(&t)); }},
    {oxDAEFxPass::s_XMLTag,
     [](CGTechnique& t, oxDAEFile& f) { t.passes.push_back(f.ReadChild<oxDAEFxPass>(&t)); }},
    {oxDAEAssetElement::s_XMLTag,
     [](CGTechnique&, oxDAEFile&) {
       oxDAEBaseElement::UnsupportedTagWarning(oxDAEAssetElement::s_XMLTag, CGTechnique::s_XMLTag);
     }},
    {oxDAEExtraElement::s_XMLTag,
     [](CGTechnique&, oxDAEFile&) {
       oxDAEBaseElement::UnsupportedExtraWarning(CGTechnique::s_XMLTag);
     }},
};

}  // namespace

void oxDAEFxProfileCGTechnique::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kCGTechniqueChildren, s_XMLTag);
}

oxDAEFxPass* oxDAEFxProfileCGTechnique::GetPass(const oxString& wanted) const {
  return FindBy(passes, &oxDAEElement::sid, wanted);
}

oxDAEFxNewParam* oxDAEFxProfileCGTechnique::GetNewParam(const oxString& wanted) const {
  return FindBy(newParams, &oxDAEElement::sid, wanted);
}

// --- <shader> and <bind> ------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAEFxShaderBind> kBindChildren[] = {
    {"param",
     [](oxDAEFxShaderBind& b, oxDAEFile& f) { f.reader->ReadAttributeString("ref", b.paramRef); }},
};

constexpr oxDAEChildRule<oxDAEFxShader> kShaderChildren[] = {
    {oxDAEFxAnnotate::s_XMLTag, oxDAEFxAnnotate::ReadInto<oxDAEFxShader>},
    {"compiler_target",
     [](oxDAEFxShader& s, oxDAEFile& f) { f.reader->ReadTextString(s.compilerTarget); }},
    {"compiler_options",
     [](oxDAEFxShader& s, oxDAEFile& f) { f.reader->ReadTextString(s.compilerOptions); }},
    {"name",
     [](oxDAEFxShader& s, oxDAEFile& f) {
       f.reader->ReadTextString(s.entryName);
       f.reader->ReadAttributeString("source", s.entrySource);
     }},
    {oxDAEFxShaderBind::s_XMLTag,
     [](oxDAEFxShader& s, oxDAEFile& f) {
       oxDAEFxShaderBind bind;
       bind.parent = &s;
       bind.Read(f);
       s.binds.push_back(bind);
     }},
};

}  // namespace

void oxDAEFxShaderBind::Read(oxDAEFile& file) {
  file.reader->ReadAttributeString("symbol", symbol);
  file.ReadChildrenOr(*this, kBindChildren,
                      [this, &file](std::string_view) { ReadBasicTypeElement(file); });
}

void oxDAEFxShader::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.reader->ReadAttributeString("stage", stage);
  file.ReadChildren(*this, kShaderChildren, s_XMLTag);
}

const oxDAEFxShaderBind* oxDAEFxShader::GetBind(const oxString& wanted) const {
  return FindBy(binds, &oxDAEFxShaderBind::symbol, wanted);
}

// --- <pass> -------------------------------------------------------------------------

namespace {

// Appends the render target the reader stands on to the list `Member`.
template <oxArray<SFxPassTarget> oxDAEFxPass::*Member>
void ReadTarget(oxDAEFxPass& pass, oxDAEFile& file) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  SFxPassTarget& target = (pass.*Member).emplace_back();
  reader.ReadAttributeUInt("index", target.index);
  reader.ReadAttributeUInt("slice", target.slice);
  reader.ReadAttributeUInt("mip", target.mip);
  reader.ReadAttributeString("face", target.face);
  reader.ReadTextString(target.surface);
}

void ReadColorClear(oxDAEFxPass& pass, oxDAEFile& file) {
  SFxColorClear& clear = pass.colorClears.emplace_back();
  file.reader->ReadAttributeUInt("index", clear.index);
  const OxKernel::oxXMLTextValue* text = file.reader->GetTextValue();
  if (!text) return;
  float rgba[4] = {clear.color.x, clear.color.y, clear.color.z, clear.color.w};
  unsigned int parsed = 0;
  text->ParseFloats(rgba, 4, parsed);
  clear.color = {rgba[0], rgba[1], rgba[2], rgba[3]};
}

void ReadDepthClear(oxDAEFxPass& pass, oxDAEFile& file) {
  SFxDepthClear& clear = pass.depthClears.emplace_back();
  file.reader->ReadAttributeUInt("index", clear.index);
  file.reader->ReadTextFloat(clear.depth);
}

void ReadStencilClear(oxDAEFxPass& pass, oxDAEFile& file) {
  SFxStencilClear& clear = pass.stencilClears.emplace_back();
  file.reader->ReadAttributeUInt("index", clear.index);
  file.reader->ReadTextInt(clear.stencil);
}

// Creates an element of class T for the list of shaders and states and reads
// it.
template <class T>
void ReadListed(oxDAEFxPass& pass, oxDAEFile& file) {
  pass.shadersAndStates.push_back(file.ReadChild<T>(&pass));
}

constexpr oxDAEChildRule<oxDAEFxPass> kPassChildren[] = {
    {oxDAEFxAnnotate::s_XMLTag, oxDAEFxAnnotate::ReadInto<oxDAEFxPass>},
    {"color_target", ReadTarget<&oxDAEFxPass::colorTargets>},
    {"depth_target", ReadTarget<&oxDAEFxPass::depthTargets>},
    {"stencil_target", ReadTarget<&oxDAEFxPass::stencilTargets>},
    {"color_clear", ReadColorClear},
    {"depth_clear", ReadDepthClear},
    {"stencil_clear", ReadStencilClear},
    {"draw", [](oxDAEFxPass& p, oxDAEFile& f) { f.reader->ReadTextString(p.draw); }},
    {oxDAEFxShader::s_XMLTag, ReadListed<oxDAEFxShader>},
    {oxDAEExtraElement::s_XMLTag,
     [](oxDAEFxPass&, oxDAEFile&) { oxDAEBaseElement::UnsupportedExtraWarning("pass"); }},
};

}  // namespace

void oxDAEFxPass::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  // Every other child is a render state, simple or made of parts.
  file.ReadChildrenOr(*this, kPassChildren, [this, &file](std::string_view) {
    if (file.reader->CountChildElements() == 0) {
      ReadListed<oxDAEFxSimpleRenderState>(*this, file);
    } else {
      ReadListed<oxDAEFxComplexRenderState>(*this, file);
    }
  });
}

namespace {

// The first item of a pass's shaders and states that is a T and satisfies
// `match`, or null.
template <class T, class Match>
T* FindInPass(const oxArray<oxDAEBaseElement*>& items, Match match) {
  for (oxDAEBaseElement* item : items) {
    T* found = T::DynamicCast(item);
    if (found && match(*found)) return found;
  }
  return nullptr;
}

}  // namespace

oxDAEFxShader* oxDAEFxPass::GetShader() const {
  return FindInPass<oxDAEFxShader>(shadersAndStates, [](const oxDAEFxShader&) { return true; });
}

oxDAEFxShader* oxDAEFxPass::GetShader(const oxString& shaderStage) const {
  return FindInPass<oxDAEFxShader>(
      shadersAndStates, [&](const oxDAEFxShader& shader) { return shader.stage == shaderStage; });
}

oxDAEFxRenderState* oxDAEFxPass::GetRenderState(const oxString& stateName) const {
  return FindInPass<oxDAEFxRenderState>(
      shadersAndStates, [&](const oxDAEFxRenderState& state) { return state.name == stateName; });
}

oxDAEFxSimpleRenderState* oxDAEFxPass::GetSimpleRenderState(const oxString& stateName) const {
  return FindInPass<oxDAEFxSimpleRenderState>(
      shadersAndStates,
      [&](const oxDAEFxSimpleRenderState& state) { return state.name == stateName; });
}

oxDAEFxSimpleRenderState* oxDAEFxPass::GetSimpleRenderState(const oxString& stateName,
                                                            uint16_t stateIndex) const {
  return FindInPass<oxDAEFxSimpleRenderState>(
      shadersAndStates, [&](const oxDAEFxSimpleRenderState& state) {
        return state.name == stateName && state.index == stateIndex;
      });
}

oxDAEFxComplexRenderState* oxDAEFxPass::GetComplexRenderState(const oxString& stateName) const {
  return FindInPass<oxDAEFxComplexRenderState>(
      shadersAndStates,
      [&](const oxDAEFxComplexRenderState& state) { return state.name == stateName; });
}

}  // namespace OxDAEReader
