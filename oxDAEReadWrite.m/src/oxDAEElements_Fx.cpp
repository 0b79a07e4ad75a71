#include "oxDAEReadWrite/oxDAEElements_Fx.h"

#include <algorithm>
#include <cstdint>

#include <oxKernel/oxCharacter.h>
#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEImage);
OX_DAE_ELEMENT_DEFINE(oxDAEFxSurfaceFormatHint);
OX_DAE_ELEMENT_DEFINE(oxDAEFxSurface);
OX_DAE_ELEMENT_DEFINE(oxDAEFxSampler);

using OxKernel::kLogError;
using Conv = oxDAEEnumConverter;

namespace {

// The text of the element the reader stands on; empty when it has none.
oxString Text(const oxDAEFile& file) {
  oxString text;
  file.reader->ReadTextString(text);
  return text;
}

// Stores the element text in `out` when it reads as one value of its type;
// otherwise `out` keeps its value.
template <class T>
void ReadTextValue(const oxDAEFile& file, T& out) {
  OxKernel::oxCharacter::Interpret(Text(file), out);
}

// Parses at most `count` floats of the element text into `out`; values the
// text does not give are left as they are.
void ReadFloats(oxDAEFile& file, float* out, unsigned int count) {
  const OxKernel::oxXMLTextValue* text = file.reader->GetTextValue();
  unsigned int parsed = 0;
  if (text) text->ParseFloats(out, count, parsed, 0);
}

}  // namespace

// --- <image> ---------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEImage> kImageChildren[] = {
    {"init_from",
     [](oxDAEImage& image, oxDAEFile& file) {
       image.initFrom = Text(file);
       oxDAEFile::CorrectURI(image.initFrom);
     }},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAEImage::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  AdoptNameAsID(file);
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeString("format", format);
  reader.ReadAttributeUInt("height", height);
  reader.ReadAttributeUInt("width", width);
  reader.ReadAttributeUInt("depth", depth);
  file.ReadChildren(*this, kImageChildren, s_XMLTag);
}

void oxDAEImage::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  WriteStart(file, s_XMLTag);
  if (!format.empty()) w.WriteAttributeString("format", format);
  if (height != 0) w.WriteAttributeUInt("height", height);
  if (width != 0) w.WriteAttributeUInt("width", width);
  if (depth != 0) w.WriteAttributeUInt("depth", depth);
  w.EndAttributes();
  w.AddLeafElement("init_from", initFrom, false);
  w.EndElement();
}

// --- <format_hint> ---------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEFxSurfaceFormatHint> kFormatHintChildren[] = {
    {"channels",
     [](oxDAEFxSurfaceFormatHint& h, oxDAEFile& f) {
       h.channels = Conv::GetSurfaceFormatHintChannelsFromString(Text(f));
     }},
    {"range", [](oxDAEFxSurfaceFormatHint& h,
                 oxDAEFile& f) { h.range = Conv::GetSurfaceFormatHintRangeFromString(Text(f)); }},
    {"precision",
     [](oxDAEFxSurfaceFormatHint& h, oxDAEFile& f) {
       h.precision = Conv::GetSurfaceFormatHintPrecisionFromString(Text(f));
     }},
    {"option",
     [](oxDAEFxSurfaceFormatHint& h, oxDAEFile& f) {
       h.options.push_back(Conv::GetSurfaceFormatHintOptionFromString(Text(f)));
     }},
};

void oxDAEFxSurfaceFormatHint::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kFormatHintChildren, s_XMLTag);
}

// --- <surface> -------------------------------------------------------------------

namespace {

using EInitType = oxDAEFxSurface::EInitType;
using EInitMode = oxDAEFxSurface::EInitMode;

constexpr const char* kInvalidInitCube = "invalid <init_cube> element";
constexpr const char* kInvalidInitVolume = "invalid <init_volume> element";

void ReadSize(oxDAEFxSurface& s, oxDAEFile& file) {
  int32_t values[3] = {0, 0, 0};
  unsigned int parsed = 0;
  if (const OxKernel::oxXMLTextValue* text = file.reader->GetTextValue())
    text->ParseInts(values, 3, parsed, 0);
  for (unsigned int i = 0; i < parsed; ++i)
    s.size[i] = static_cast<float>(std::clamp<int32_t>(values[i], INT16_MIN, INT16_MAX));
  s.sizeGiven = true;
}

void ReadViewportRatio(oxDAEFxSurface& s, oxDAEFile& file) {
  ReadFloats(file, s.viewportRatio, 2);
  s.viewportRatioGiven = true;
}

// The faces of <primary>'s <order> children, at most six; a primary with
// some but not all six keeps the PRIMARY mode and is reported.
void ReadPrimary(oxDAEFxSurface::Init& init, oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  init.mode = EInitMode::PRIMARY;
  reader.ReadAttributeString("ref", init.ref);
  init.faceOrder.clear();
  reader.EnterChildren();
  while (init.faceOrder.size() < oxDAEFxSurface::kFaceCount && reader.MoveNext() == 0) {
    if (reader.IsTag("order")) init.faceOrder.push_back(Conv::GetSurfaceFaceFromString(Text(file)));
  }
  reader.LeaveChildren();
  if (init.faceOrder.size() == oxDAEFxSurface::kFaceCount) {
    init.mode = EInitMode::PRIMARY_ORDERED;
  } else if (!init.faceOrder.empty()) {
    OX_LOG(kLogError, kInvalidInitCube);
  }
}

// After each child of <init_cube> the face count is checked: six faces make
// the FACES mode, and any other count but 0 is reported. A cube of six
// <face> children is therefore reported after each of its first five.
void ReadInitCube(oxDAEFxSurface& s, oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  oxDAEFxSurface::Init& init = s.init;
  s.initType = EInitType::CUBE;
  unsigned int faces = 0;
  reader.EnterChildren();
  while (reader.MoveNext() == 0) {
    if (reader.IsTag("all")) {
      init.mode = EInitMode::ALL;
      reader.ReadAttributeString("ref", init.ref);
    } else if (reader.IsTag("primary")) {
      ReadPrimary(init, file);
    } else if (reader.IsTag("face") && faces < oxDAEFxSurface::kFaceCount) {
      reader.ReadAttributeString("ref", init.faceRefs[faces++]);
    } else {
      OX_LOG(kLogError, kInvalidInitCube);
    }
    if (faces == oxDAEFxSurface::kFaceCount) {
      init.mode = EInitMode::FACES;
    } else if (faces != 0) {
      OX_LOG(kLogError, kInvalidInitCube);
    }
  }
  reader.LeaveChildren();
}

// Only the first child of <init_volume> counts: <all> or <primary>.
void ReadInitVolume(oxDAEFxSurface& s, oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  s.initType = EInitType::VOLUME;
  reader.EnterChildren();
  if (reader.MoveNext() != 0) {
    OX_LOG(kLogError, kInvalidInitVolume);
  } else if (reader.IsTag("all")) {
    s.init.mode = EInitMode::ALL;
    reader.ReadAttributeString("ref", s.init.ref);
  } else if (reader.IsTag("primary")) {
    s.init.mode = EInitMode::PRIMARY;
    reader.ReadAttributeString("ref", s.init.ref);
  } else {
    OX_LOG(kLogError, kInvalidInitVolume);
  }
  reader.LeaveChildren();
}

// The "ref" of the first child of <init_planar>, whatever its name. The
// message for a missing child is only given when the reader stands on an
// element named "all", which <init_planar> never is: a planar init without
// a child is accepted as it is.
void ReadInitPlanar(oxDAEFxSurface& s, oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  s.initType = EInitType::PLANAR;
  s.init.mode = EInitMode::ALL;
  reader.EnterChildren();
  const bool hasChild = reader.MoveNext() == 0;
  if (hasChild) reader.ReadAttributeString("ref", s.init.ref);
  reader.LeaveChildren();
  if (!hasChild && reader.IsTag("all")) OX_LOG(kLogError, "invalid <init_planar> element");
}

void ReadInitFrom(oxDAEFxSurface& s, oxDAEFile& file) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  s.initType = EInitType::FROM;
  oxDAEFxSurface::InitFrom record;
  record.ref = Text(file);
  reader.ReadAttributeUShort("mip", record.mip);
  reader.ReadAttributeUShort("slice", record.slice);
  oxString face;
  if (reader.ReadAttributeString("face", face) && !face.empty())
    record.face = Conv::GetSurfaceFaceFromString(face);
  s.initFrom.push_back(record);
}

constexpr oxDAEChildRule<oxDAEFxSurface> kSurfaceChildren[] = {
    {"format", [](oxDAEFxSurface& s, oxDAEFile& f) { s.format = Text(f); }},
    {oxDAEFxSurfaceFormatHint::s_XMLTag,
     [](oxDAEFxSurface& s, oxDAEFile& f) { s.formatHint.Read(f); }},
    {"size", ReadSize},
    {"viewport_ratio", ReadViewportRatio},
    {"mip_levels", [](oxDAEFxSurface& s, oxDAEFile& f) { ReadTextValue(f, s.mipLevels); }},
    {"mipmap_generate",
     [](oxDAEFxSurface& s, oxDAEFile& f) { ReadTextValue(f, s.mipmapGenerate); }},
    {"init_as_null", [](oxDAEFxSurface& s, oxDAEFile&) { s.initType = EInitType::AS_NULL; }},
    {"init_as_target", [](oxDAEFxSurface& s, oxDAEFile&) { s.initType = EInitType::AS_TARGET; }},
    {"init_cube", ReadInitCube},
    {"init_volume", ReadInitVolume},
    {"init_planar", ReadInitPlanar},
    {"init_from", ReadInitFrom},
};

oxDAEImage* ResolveImage(const oxDAEFile& file, const oxString& ref) {
  return oxDAEImage::DynamicCast(file.ResolveURI(ref));
}

// The image of the surface's init element, or null after reporting why no
// image is looked up. A reference that does not resolve to an image is not
// reported here.
oxDAEImage* FindImage(const oxDAEFxSurface& s, const oxDAEFile& file, unsigned int index) {
  switch (s.initType) {
    case EInitType::AS_NULL:
      OX_LOG(kLogError, "'init as null' surfaces are not yet supported");
      return nullptr;
    case EInitType::AS_TARGET:
      OX_LOG(kLogError, "'init as target' surfaces are not yet supported");
      return nullptr;
    case EInitType::CUBE:
    case EInitType::VOLUME:
    case EInitType::PLANAR:
      if (s.init.mode == EInitMode::ALL) return ResolveImage(file, s.init.ref);
      OX_LOG(kLogError, "non 'all init' surfaces are not supported yet");
      return nullptr;
    case EInitType::FROM:
      if (index < s.initFrom.size()) return ResolveImage(file, s.initFrom[index].ref);
      OX_LOG(kLogError, "invalid initfrom index");
      return nullptr;
  }
  OX_LOG(kLogError, "unsupported surface init type");
  return nullptr;
}

}  // namespace

void oxDAEFxSurface::Read(oxDAEFile& file) {
  oxString typeWord;
  if (file.reader->ReadAttributeString("type", typeWord))
    type = Conv::GetSurfaceTypeFromString(typeWord);
  file.ReadChildren(*this, kSurfaceChildren, s_XMLTag);
}

oxDAEImage* oxDAEFxSurface::GetImage(oxDAEFile& file, unsigned int index) const {
  oxDAEImage* image = FindImage(*this, file, index);
  if (!image) OX_LOG(kLogError, "cannot get the image referenced by this surface");
  return image;
}

// --- Samplers --------------------------------------------------------------------

namespace {

template <EFxSamplerWrap oxDAEFxSampler::*Field>
void ReadWrap(oxDAEFxSampler& s, oxDAEFile& file) {
  s.*Field = Conv::GetSamplerWrapFromString(Text(file));
}

template <EFxSamplerFilter oxDAEFxSampler::*Field>
void ReadFilter(oxDAEFxSampler& s, oxDAEFile& file) {
  s.*Field = Conv::GetSamplerFilterFromString(Text(file));
}

constexpr oxDAEChildRule<oxDAEFxSampler> kSamplerChildren[] = {
    {"source", [](oxDAEFxSampler& s, oxDAEFile& f) { s.source = Text(f); }},
    {"wrap_s", ReadWrap<&oxDAEFxSampler::wrapS>},
    {"wrap_t", ReadWrap<&oxDAEFxSampler::wrapT>},
    {"wrap_p", ReadWrap<&oxDAEFxSampler::wrapP>},
    {"minfilter", ReadFilter<&oxDAEFxSampler::minFilter>},
    {"magfilter", ReadFilter<&oxDAEFxSampler::magFilter>},
    {"mipfilter", ReadFilter<&oxDAEFxSampler::mipFilter>},
    {"border_color", [](oxDAEFxSampler& s, oxDAEFile& f) { ReadFloats(f, s.borderColor, 4); }},
    {"mipmap_maxlevel",
     [](oxDAEFxSampler& s, oxDAEFile& f) { ReadTextValue(f, s.mipmapMaxLevel); }},
    {"mipmap_bias", [](oxDAEFxSampler& s, oxDAEFile& f) { ReadTextValue(f, s.mipmapBias); }},
};

}  // namespace

void oxDAEFxSampler::Read(oxDAEFile& file) {
  // Unknown children are reported against "sampler", whatever the type.
  file.ReadChildren(*this, kSamplerChildren, "sampler");
}

}  // namespace OxDAEReader
