#include "oxDAEReadWrite/oxDAEElements_Fx_Common.h"

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Fx.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Param.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEFxProfile);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCommon);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCommon::Technique);
OX_DAE_ELEMENT_DEFINE(oxDAEFxColorOrTextureType);
OX_DAE_ELEMENT_DEFINE(oxDAEFxCOTTransparent);
OX_DAE_ELEMENT_DEFINE(oxDAEFxFloatOrParamType);

using Technique = oxDAEFxProfileCommon::Technique;

// --- Profiles -------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEFxProfile> kProfileChildren[] = {
    {oxDAEImage::s_XMLTag,
     [](oxDAEFxProfile& p, oxDAEFile& f) { p.images.push_back(f.ReadChild<oxDAEImage>(&p)); }},
    {oxDAEFxNewParam::s_XMLTag,
     [](oxDAEFxProfile& p, oxDAEFile& f) {
       p.newParams.push_back(f.ReadChild<oxDAEFxNewParam>(&p));
     }},
};

void oxDAEFxProfile::Read(oxDAEFile& file) {
  file.ReadKnownChildren(*this, kProfileChildren);
}

void oxDAEFxProfile::Write(oxDAEFile&) {}

oxDAEFxNewParam* oxDAEFxProfile::GetNewParam(const oxString& wanted) const {
  for (oxDAEFxNewParam* param : newParams) {
    if (param->sid == wanted) return param;
  }
  return nullptr;
}

constexpr oxDAEChildRule<oxDAEFxProfileCommon> kProfileCommonChildren[] = {
    {Technique::s_XMLTag,
     [](oxDAEFxProfileCommon& p, oxDAEFile& f) { p.technique = f.ReadChild<Technique>(&p); }},
    {oxDAEFxNewParam::s_XMLTag,
     // A new param registers itself under "<effect id>/<sid>", where texture
     // values look for their samplers and surfaces.
     [](oxDAEFxProfileCommon& p, oxDAEFile& f) {
       p.newParams.push_back(f.ReadChild<oxDAEFxNewParam>(&p));
     }},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAEFxProfileCommon::Read(oxDAEFile& file) {
  // Unknown children are reported against the generic "profile".
  file.ReadChildren(*this, kProfileCommonChildren, oxDAEFxProfile::s_XMLTag);
}

void oxDAEFxProfileCommon::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->EndAttributes();
  if (technique) file.WriteChild(technique);
  file.writer->EndElement();
}

// --- The common technique ---------------------------------------------------------

namespace {

// The shading models under which a value is written.
enum class EModels {
  ALL,    // every model, also one outside the four
  LIT,    // lambert, phong, blinn
  SHINY,  // phong, blinn
};

bool Writes(EModels models, int shadingModel) {
  switch (models) {
    case EModels::ALL:
      return true;
    case EModels::LIT:
      return shadingModel >= Technique::LAMBERT && shadingModel <= Technique::BLINN;
    case EModels::SHINY:
      return shadingModel == Technique::PHONG || shadingModel == Technique::BLINN;
  }
  return false;
}

// One value of a shading-model element: its tag, how it is read into its
// slot and written from it, and the models that write it.
struct ValueRule {
  std::string_view tag;
  void (*read)(Technique& technique, oxDAEFile& file);
  void (*write)(const Technique& technique, oxDAEFile& file, std::string_view tag);
  EModels models;
};

template <class Slot>
struct SlotClass;
template <class T>
struct SlotClass<T * Technique::*> {
  using type = T;
};

template <auto Slot>
constexpr ValueRule Value(std::string_view tag, EModels models) {
  using T = typename SlotClass<decltype(Slot)>::type;
  return {tag, [](Technique& t, oxDAEFile& f) { t.*Slot = f.ReadQueuedChild<T>(&t); },
          [](const Technique& t, oxDAEFile& f, std::string_view name) {
            if (T* value = t.*Slot) value->Write(f, name);
          },
          models};
}

// In the order values are written, which is not the order of the schema.
constexpr ValueRule kValues[] = {
    Value<&Technique::emission>("emission", EModels::ALL),
    Value<&Technique::transparent>("transparent", EModels::ALL),
    Value<&Technique::reflective>("reflective", EModels::ALL),
    Value<&Technique::reflectivity>("reflectivity", EModels::ALL),
    Value<&Technique::transparency>("transparency", EModels::ALL),
    Value<&Technique::indexOfRefraction>("index_of_refraction", EModels::ALL),
    Value<&Technique::diffuse>("diffuse", EModels::LIT),
    Value<&Technique::ambient>("ambient", EModels::LIT),
    Value<&Technique::specular>("specular", EModels::SHINY),
    Value<&Technique::shininess>("shininess", EModels::SHINY),
};

template <int Model>
void ReadShadingModel(Technique& technique, oxDAEFile& file) {
  technique.shadingModel = Model;
  technique.ReadInternal(file);
}

}  // namespace

constexpr oxDAEChildRule<Technique> kTechniqueChildren[] = {
    {Technique::kShadingModelTags[Technique::CONSTANT], ReadShadingModel<Technique::CONSTANT>},
    {Technique::kShadingModelTags[Technique::LAMBERT], ReadShadingModel<Technique::LAMBERT>},
    {Technique::kShadingModelTags[Technique::PHONG], ReadShadingModel<Technique::PHONG>},
    {Technique::kShadingModelTags[Technique::BLINN], ReadShadingModel<Technique::BLINN>},
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<Technique>},
};

void Technique::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kTechniqueChildren, s_XMLTag);
}

void Technique::ReadInternal(oxDAEFile& file) {
  file.ReadKnownChildren(*this, kValues);
}

void Technique::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  w.EndAttributes();
  const bool known = shadingModel >= CONSTANT && shadingModel <= BLINN;
  w.StartElement(known ? kShadingModelTags[shadingModel] : std::string_view());
  w.EndAttributes();
  for (const ValueRule& rule : kValues) {
    if (Writes(rule.models, shadingModel)) rule.write(*this, file, rule.tag);
  }
  w.EndElement();
  w.EndElement();
}

// --- Colour or texture --------------------------------------------------------------

namespace {

// Reads the children of a colour or texture; only the first <texture> counts.
struct ColorOrTextureReader {
  oxDAEFxColorOrTextureType& value;
  bool textureRead = false;
};

void ReadColor(ColorOrTextureReader& r, oxDAEFile& file) {
  oxDAEFxColorOrTextureType& value = r.value;
  value.kind = kFxValueColor;
  const OxKernel::oxXMLTextValue* text = file.reader->GetTextValue();
  if (!text) return;
  float rgba[4] = {value.color.r, value.color.g, value.color.b, value.color.a};
  unsigned int parsed = 0;
  text->ParseFloats(rgba, 4, parsed, 0);
  value.color = {rgba[0], rgba[1], rgba[2], rgba[3]};
}

constexpr oxDAEChildRule<oxDAEFxColorOrTextureType> kTextureChildren[] = {
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<oxDAEFxColorOrTextureType>},
};

void ReadTexture(ColorOrTextureReader& r, oxDAEFile& file) {
  if (r.textureRead) {
    oxDAEBaseElement::UnknownTagWarning(file.reader->GetTag(), oxDAEFxProfile::s_XMLTag);
    return;
  }
  r.textureRead = true;
  oxDAEFxColorOrTextureType& value = r.value;
  value.kind = kFxValueTexture;
  file.reader->ReadAttributeString("texture", value.texture);
  file.reader->ReadAttributeString("texcoord", value.texcoord);
  file.ReadKnownChildren(value, kTextureChildren);
}

constexpr oxDAEChildRule<ColorOrTextureReader> kColorOrTextureChildren[] = {
    {"color", ReadColor},
    {"texture", ReadTexture},
};

}  // namespace

void oxDAEFxColorOrTextureType::Read(oxDAEFile& file) {
  ColorOrTextureReader state{*this};
  // Values report unknown children against the generic "profile".
  file.ReadChildren(state, kColorOrTextureChildren, oxDAEFxProfile::s_XMLTag);
}

void oxDAEFxColorOrTextureType::Write(oxDAEFile& file, std::string_view tag) {
  UpdateDependencies(file, true);
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(tag);
  w.EndAttributes();
  if (kind == kFxValueColor) {
    w.StartElement("color");
    w.EndAttributes();
    oxDAEFile::WriteColor3Value(&w, color);
    w.EndElement();
  } else if (kind == kFxValueTexture) {
    w.StartElement("texture");
    w.WriteAttributeString("texture", texture);
    w.WriteAttributeString("texcoord", texcoord);
    w.EndAttributes();
    w.EndElement();
  }
  w.EndElement();
}

int oxDAEFxColorOrTextureType::UpdateDependencies(oxDAEFile& file, bool beforeWrite) {
  if (beforeWrite) {
    if (image) texture = image->ComputeURL(file);
    return 0;
  }
  if (image) return 0;
  if (texture.empty()) return kDAEUnresolved;
  image = oxDAEImage::DynamicCast(file.ResolveURI(texture));
  if (image) return 0;
  // A sid path: a param holding a sampler, whose source names a param
  // holding a surface. Each step is one look-up, so references that lead
  // back to themselves end at a value of the wrong kind.
  const auto* samplerParam = oxDAEFxParam::DynamicCast(file.ResolvePath(texture, parent));
  const auto* sampler =
      samplerParam ? oxDAEFxSampler::DynamicCast(samplerParam->GetElementValue()) : nullptr;
  if (!sampler) return kDAEUnresolved;
  const auto* surfaceParam = oxDAEFxParam::DynamicCast(file.ResolvePath(sampler->source, parent));
  auto* surface =
      surfaceParam ? oxDAEFxSurface::DynamicCast(surfaceParam->GetElementValue()) : nullptr;
  if (surface) image = surface->GetImage(file, 0);
  return image ? 0 : kDAEUnresolved;
}

void oxDAEFxColorOrTextureType::SetColor(const OxMath::oxFColor& value) {
  color = value;
  kind = kFxValueColor;
}

void oxDAEFxColorOrTextureType::SetTexture(oxDAEImage* bound, unsigned int channel) {
  image = bound;
  kind = kFxValueTexture;
  texcoord = OxKernel::oxConcat(channel);
}

// --- <transparent> --------------------------------------------------------------------

void oxDAEFxCOTTransparent::Read(oxDAEFile& file) {
  oxString opaque;
  if (file.reader->ReadAttributeString("opaque", opaque)) {
    if (opaque == "A_ONE") {
      useAlphaChannel = true;
    } else if (opaque == "RGB_ZERO") {
      useAlphaChannel = false;
    } else {
      OX_LOG(OxKernel::kLogError, "invalid opaque attribute");
    }
  }
  oxDAEFxColorOrTextureType::Read(file);
}

// --- Float or param ---------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEFxFloatOrParamType> kFloatOrParamChildren[] = {
    {"float",
     [](oxDAEFxFloatOrParamType& v, oxDAEFile& f) {
       v.kind = kFxValueFloat;
       f.reader->ReadTextFloat(v.value);
     }},
};

void oxDAEFxFloatOrParamType::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kFloatOrParamChildren, oxDAEFxProfile::s_XMLTag);
}

void oxDAEFxFloatOrParamType::Write(oxDAEFile& file, std::string_view tag) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(tag);
  w.EndAttributes();
  if (kind == kFxValueFloat) {
    w.StartElement("float");
    w.EndAttributes();
    w.GetTextWriter()->WriteFloats(&value, 1, 0);
    w.EndElement();
  }
  w.EndElement();
}

void oxDAEFxFloatOrParamType::SetFloat(float number) {
  value = number;
  kind = kFxValueFloat;
}

}  // namespace OxDAEReader
