#include "oxDAEReadWrite/oxDAEElements_Main_LightCamera.h"

#include <algorithm>
#include <iterator>

#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAELight);
OX_DAE_ELEMENT_DEFINE(oxDAELightTechniqueCommon);
OX_DAE_ELEMENT_DEFINE(oxDAECamera);
OX_DAE_ELEMENT_DEFINE(oxDAEOptics);
OX_DAE_ELEMENT_DEFINE(oxDAEOpticsTechniqueCommon);

namespace {

template <class Owner>
void ReadAsset(Owner& owner, oxDAEFile& file) {
  owner.asset = file.ReadChild<oxDAEAssetElement>(&owner);
}

// Writes <tag>value</tag>.
void WriteFloatElement(OxKernel::oxXMLWriter& w, std::string_view tag, float value) {
  w.StartElement(tag);
  w.EndAttributes();
  w.GetTextWriter()->WriteFloats(&value, 1, 0);
  w.EndElement();
}

}  // namespace

// --- <light> ---------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAELight> kLightChildren[] = {
    {oxDAEAssetElement::s_XMLTag, ReadAsset<oxDAELight>},
    {oxDAELightTechniqueCommon::s_XMLTag,
     [](oxDAELight& l, oxDAEFile& f) {
       l.techniqueCommon = f.ReadChild<oxDAELightTechniqueCommon>(&l);
     }},
    {oxDAETechnique::s_XMLTag, nullptr},
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<oxDAELight>},
};

void oxDAELight::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  AdoptNameAsID(file);
  file.ReadChildren(*this, kLightChildren, s_XMLTag);
}

void oxDAELight::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (techniqueCommon) file.WriteChild(techniqueCommon);
  file.writer->EndElement();
}

// --- <technique_common> of a light ----------------------------------------------

namespace {

using LightCommon = oxDAELightTechniqueCommon;

struct LightTypeTag {
  EToken type;
  std::string_view tag;
};
// The type elements, read and written.
constexpr LightTypeTag kLightTypes[] = {
    {EToken::AMBIENT, "ambient"},
    {EToken::DIRECTIONAL, "directional"},
    {EToken::POINT, "point"},
    {EToken::SPOT, "spot"},
};

EToken LightTypeOf(std::string_view tag) {
  for (const LightTypeTag& row : kLightTypes) {
    if (row.tag == tag) return row.type;
  }
  return EToken::NONE;
}

std::string_view TagOfLightType(EToken type) {
  for (const LightTypeTag& row : kLightTypes) {
    if (row.type == type) return row.tag;
  }
  return {};
}

struct LightValue {
  std::string_view tag;
  float LightCommon::*member;
  bool spotOnly;  // written for spot lights only; else for point and spot lights
};
// The one-float values of a type element, read and written in this order.
constexpr LightValue kLightValues[] = {
    {"constant_attenuation", &LightCommon::constantAttenuation, false},
    {"linear_attenuation", &LightCommon::linearAttenuation, false},
    {"quadratic_attenuation", &LightCommon::quadraticAttenuation, false},
    {"falloff_angle", &LightCommon::falloffAngle, true},
    {"falloff_exponent", &LightCommon::falloffExponent, true},
};

const LightValue* FindLightValue(std::string_view tag) {
  for (const LightValue& row : kLightValues) {
    if (row.tag == tag) return &row;
  }
  return nullptr;
}

// Reads the children of the type element the reader stands on.
void ReadLightType(LightCommon& light, oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  reader.EnterChildren();
  while (reader.MoveNext() == 0) {
    if (reader.IsTag("color")) {
      oxDAEFile::ReadColor3Value(&reader, light.color);
    } else if (const LightValue* value = FindLightValue(reader.GetTag())) {
      reader.ReadTextFloat(light.*value->member);
    } else {
      oxDAEBaseElement::UnknownTagWarning(reader.GetTag(), LightCommon::s_XMLTag);
    }
  }
  reader.LeaveChildren();
}

}  // namespace

void oxDAELightTechniqueCommon::Read(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  type = EToken::NONE;
  reader.EnterChildren();
  while (reader.MoveNext() == 0) {
    if (const EToken read = LightTypeOf(reader.GetTag()); read != EToken::NONE) {
      type = read;
    } else {
      UnknownTagWarning(reader.GetTag(), s_XMLTag);
      if (type == EToken::NONE) continue;
    }
    ReadLightType(*this, file);
  }
  reader.LeaveChildren();
}

void oxDAELightTechniqueCommon::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  w.EndAttributes();
  w.StartElement(TagOfLightType(type));
  w.EndAttributes();
  w.StartElement("color");
  w.EndAttributes();
  oxDAEFile::WriteColor3Value(&w, color);
  w.EndElement();
  if (type == EToken::POINT || type == EToken::SPOT) {
    for (const LightValue& row : kLightValues) {
      if (!row.spotOnly || type == EToken::SPOT) WriteFloatElement(w, row.tag, this->*row.member);
    }
  }
  w.EndElement();
  w.EndElement();
}

// --- <camera> --------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAECamera> kCameraChildren[] = {
    {oxDAEAssetElement::s_XMLTag, ReadAsset<oxDAECamera>},
    {oxDAEOptics::s_XMLTag,
     [](oxDAECamera& c, oxDAEFile& f) { c.optics = f.ReadChild<oxDAEOptics>(&c); }},
    {"imager", nullptr},
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<oxDAECamera>},
};

void oxDAECamera::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kCameraChildren, s_XMLTag);
}

void oxDAECamera::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (optics) file.WriteChild(optics);
  if (asset) file.WriteChild(asset);
  file.writer->EndElement();
}

// --- <optics> --------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEOptics> kOpticsChildren[] = {
    {oxDAEOpticsTechniqueCommon::s_XMLTag,
     [](oxDAEOptics& o, oxDAEFile& f) {
       o.techniqueCommon = f.ReadChild<oxDAEOpticsTechniqueCommon>(&o);
     }},
    {oxDAETechnique::s_XMLTag,
     [](oxDAEOptics& o, oxDAEFile& f) { o.techniques.push_back(f.ReadChild<oxDAETechnique>(&o)); }},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAEOptics::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kOpticsChildren, s_XMLTag);
}

void oxDAEOptics::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->EndAttributes();
  if (techniqueCommon) file.WriteChild(techniqueCommon);
  file.writer->EndElement();
}

// --- <technique_common> of optics -----------------------------------------------

namespace {

using OpticsCommon = oxDAEOpticsTechniqueCommon;
using EProjection = OpticsCommon::EType;

struct ProjectionTag {
  EProjection projection;
  std::string_view tag;
};
// The projection elements, read and written.
constexpr ProjectionTag kProjections[] = {
    {EProjection::PERSPECTIVE, "perspective"},
    {EProjection::ORTHOGRAPHIC, "orthographic"},
};

enum class EWritten { Never, Always, WhenGiven };

struct OpticsValue {
  std::string_view tag;
  float OpticsCommon::*member;
  EProjection projection;  // NONE: a value of both projections
  EWritten written;
};
// The one-float values of the projections, read and written in this order.
constexpr OpticsValue kOpticsValues[] = {
    {"xfov", &OpticsCommon::xfov, EProjection::PERSPECTIVE, EWritten::Never},
    {"yfov", &OpticsCommon::yfov, EProjection::PERSPECTIVE, EWritten::Always},
    {"xmag", &OpticsCommon::xmag, EProjection::ORTHOGRAPHIC, EWritten::Never},
    {"ymag", &OpticsCommon::ymag, EProjection::ORTHOGRAPHIC, EWritten::Always},
    {"aspect_ratio", &OpticsCommon::aspectRatio, EProjection::NONE, EWritten::WhenGiven},
    {"znear", &OpticsCommon::znear, EProjection::NONE, EWritten::Always},
    {"zfar", &OpticsCommon::zfar, EProjection::NONE, EWritten::Always},
};

constexpr float kNotGiven = -1.0f;

bool BelongsTo(const OpticsValue& row, EProjection projection) {
  return row.projection == projection || row.projection == EProjection::NONE;
}

// Reads the children of a <perspective> or <orthographic> element. Unknown
// children are reported for orthographic projections only.
void ReadProjection(OpticsCommon& optics, oxDAEFile& file, EProjection projection) {
  OxKernel::oxXMLReader& reader = *file.reader;
  optics.type = projection;
  reader.EnterChildren();
  while (reader.MoveNext() == 0) {
    const std::string_view tag = reader.GetTag();
    const auto row = std::find_if(
        std::begin(kOpticsValues), std::end(kOpticsValues),
        [&](const OpticsValue& r) { return r.tag == tag && BelongsTo(r, projection); });
    if (row != std::end(kOpticsValues)) {
      reader.ReadTextFloat(optics.*row->member);
    } else if (projection == EProjection::ORTHOGRAPHIC) {
      oxDAEBaseElement::UnknownTagWarning(tag, OpticsCommon::s_XMLTag);
    }
  }
  reader.LeaveChildren();
}

}  // namespace

void oxDAEOpticsTechniqueCommon::Read(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  reader.EnterChildren();
  while (reader.MoveNext() == 0) {
    for (const ProjectionTag& row : kProjections) {
      if (reader.IsTag(row.tag)) ReadProjection(*this, file, row.projection);
    }
  }
  reader.LeaveChildren();
}

void oxDAEOpticsTechniqueCommon::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  // Without a perspective, the values are written as an orthographic one.
  const ProjectionTag& projection =
      type == EProjection::PERSPECTIVE ? kProjections[0] : kProjections[1];
  w.StartElement(s_XMLTag);
  w.EndAttributes();
  w.StartElement(projection.tag);
  w.EndAttributes();
  for (const OpticsValue& row : kOpticsValues) {
    if (!BelongsTo(row, projection.projection) || row.written == EWritten::Never) continue;
    const float value = this->*row.member;
    if (row.written == EWritten::WhenGiven && value == kNotGiven) continue;
    WriteFloatElement(w, row.tag, value);
  }
  w.EndElement();
  w.EndElement();
}

}  // namespace OxDAEReader
