// Effect profiles and the fixed-function shading of the common profile:
// <profile_COMMON> > <technique> > <constant> | <lambert> | <phong> | <blinn>
// > the colour-or-texture and float values (<emission>, <diffuse>, ...).
// Texture values are bound to their image once the whole document is read,
// and saved pointing straight at that image.
#pragma once

#include <string_view>

#include <oxMath/oxColor.h>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEFxCOTTransparent;
class oxDAEFxColorOrTextureType;
class oxDAEFxFloatOrParamType;
class oxDAEFxNewParam;
class oxDAEImage;

// What a colour-or-texture or float value holds (its `kind`).
enum oxDAEFxValueKind : int {
  kFxValueUnset = -1,
  kFxValueColor = 0,
  kFxValueFloat = 1,
  kFxValueParam = 2,  // set by code only: <param> references are not read
  kFxValueTexture = 3,
};

// A profile of an effect: its images and new params in document order (owned
// by the document) and its type, fixed at construction (UNKNOWN for a default
// constructed profile). <profile_GLSL> and <profile_GLES> are kept as this
// generic class (their own attributes are not read); <profile_COMMON> is
// oxDAEFxProfileCommon and <profile_CG> oxDAEFxProfileCG.
class oxDAEFxProfile : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEFxProfile, oxDAEElement, "profile")

 public:
  enum EFxProfileType : int { UNKNOWN = -1, COMMON = 0, CG = 1, GLSL = 2, GLES = 3 };
  static constexpr std::string_view s_XMLTagCommon = "profile_COMMON";
  static constexpr std::string_view s_XMLTagCG = "profile_CG";
  static constexpr std::string_view s_XMLTagGLSL = "profile_GLSL";
  static constexpr std::string_view s_XMLTagGLES = "profile_GLES";
  // No reader creates an HLSL profile: the tag is reported as unknown.
  static constexpr std::string_view s_XMLTagHLSL = "profile_HLSL";

  oxDAEFxProfile() = default;
  explicit oxDAEFxProfile(EFxProfileType type) : profileType(type) {}

  // Reads <image> and <newparam> children; every other child (techniques,
  // code, includes) is stepped over without a message.
  void Read(oxDAEFile& file) override;
  // Only the common profile is saved: a generic profile writes nothing.
  void Write(oxDAEFile& file) override;

  EFxProfileType GetProfileType() const { return profileType; }
  // The first new param whose sid equals `sid` exactly, or null.
  oxDAEFxNewParam* GetNewParam(const oxString& sid) const;

  oxArray<oxDAEImage*> images;
  oxArray<oxDAEFxNewParam*> newParams;

 private:
  EFxProfileType profileType = UNKNOWN;
};

// <profile_COMMON>: its technique (null when absent; a later one replaces an
// earlier one, owned by the document). New params are registered under their
// sid path, so that texture values find their samplers and surfaces; images
// and assets draw an unknown-tag warning, <extra> is stepped over. Only the
// technique is written.
class oxDAEFxProfileCommon : public oxDAEFxProfile {
  OX_DAE_ELEMENT(oxDAEFxProfileCommon, oxDAEFxProfile, "profile_COMMON")

 public:
  class Technique;

  oxDAEFxProfileCommon() : oxDAEFxProfile(COMMON) {}

  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  Technique* technique = nullptr;
};

// The <technique> of a common profile: the shading model (CONSTANT by
// default) and ten values, each null until read (there are no default
// colours or numbers), and its extras. The technique's own attributes are
// not read. Several shading-model elements in one technique are all read:
// the last one sets the model and the values of all of them accumulate.
class oxDAEFxProfileCommon::Technique : public oxDAEElement {
  OX_DAE_ELEMENT(Technique, oxDAEElement, "technique")

 public:
  enum EShadingModel : int { CONSTANT = 0, LAMBERT = 1, PHONG = 2, BLINN = 3 };
  // The element of each shading model, by model.
  static constexpr std::string_view kShadingModelTags[] = {"constant", "lambert", "phong", "blinn"};

  void Read(oxDAEFile& file) override;
  // Writes "technique" (no sid) and the shading-model element (an element
  // with no name of its own for a model outside 0..3), then the values
  // present in this order: emission, transparent, reflective, reflectivity,
  // transparency, index_of_refraction; for lambert, phong and blinn also
  // diffuse, ambient; for phong and blinn also specular, shininess. Values the
  // model does not use are dropped silently.
  void Write(oxDAEFile& file) override;
  // Reads the values under the shading-model element the reader stands on.
  // Each known value creates a new object into its slot (an earlier one
  // stays in the document), queued for dependency update; any value is
  // accepted under any model. Unknown children are stepped over silently.
  void ReadInternal(oxDAEFile& file);

  int shadingModel = CONSTANT;
  oxDAEFxColorOrTextureType* emission = nullptr;
  oxDAEFxColorOrTextureType* ambient = nullptr;
  oxDAEFxColorOrTextureType* diffuse = nullptr;
  oxDAEFxColorOrTextureType* specular = nullptr;
  oxDAEFxColorOrTextureType* reflective = nullptr;
  oxDAEFxCOTTransparent* transparent = nullptr;
  oxDAEFxFloatOrParamType* shininess = nullptr;
  oxDAEFxFloatOrParamType* reflectivity = nullptr;
  oxDAEFxFloatOrParamType* transparency = nullptr;
  oxDAEFxFloatOrParamType* indexOfRefraction = nullptr;
};

// A colour-or-texture value (<emission>, <diffuse>, ...; the parent gives the
// tag): its kind (kFxValueUnset), the colour (meaningful for kFxValueColor),
// and for a texture the "texture" reference and "texcoord" channel texts
// (empty), the image the reference resolved to (null; not owned) and the
// extras of <texture>. Unknown children, a second <texture> and <param>
// included, draw an unknown-tag warning naming "profile".
class oxDAEFxColorOrTextureType : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEFxColorOrTextureType, oxDAEElement, "")

 public:
  // <color> takes up to four floats (components not given keep their
  // values); the first <texture> takes its attributes and <extra> children.
  void Read(oxDAEFile& file) override;
  // The value is written under the tag its parent gives: this writes nothing.
  void Write(oxDAEFile&) override {}
  // Refreshes the texture reference (as UpdateDependencies before writing),
  // then writes <tag> holding <color> (red, green, blue; alpha is not
  // written) for a colour, <texture texture= texcoord=> for a texture, and
  // nothing for the other kinds. Extras are not written.
  virtual void Write(oxDAEFile& file, std::string_view tag);
  // After reading: 0 when an image is bound, kDAEUnresolved otherwise (also
  // for a value without a texture reference). The reference is tried as the
  // id of an image, then as a sid path from the parent: a param holding a
  // sampler, whose source is the sid path of a param holding a surface,
  // whose first image is taken. Nothing is logged. Before writing: a bound
  // image replaces the reference by its own; returns 0.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;

  bool IsColor() const { return kind == kFxValueColor; }
  bool IsParam() const { return kind == kFxValueParam; }
  bool IsTexture() const { return kind == kFxValueTexture; }
  void SetColor(const OxMath::oxFColor& value);
  // Binds `image` as a texture read through the channel given as number.
  void SetTexture(oxDAEImage* image, unsigned int channel);
  // The texture coordinate channel name (the "texcoord" text).
  const oxString& GetChannel() const { return texcoord; }

  OxMath::oxFColor color;
  oxDAEImage* image = nullptr;
  oxString texcoord;
  oxString texture;
  int kind = kFxValueUnset;
};

// <transparent>: a colour or texture with the opacity mode, "A_ONE" (alpha
// channel, the default) or "RGB_ZERO". Another "opaque" text is logged as
// "invalid opaque attribute" (error) and leaves the mode unchanged. Written as
// any colour or texture, without "opaque".
class oxDAEFxCOTTransparent : public oxDAEFxColorOrTextureType {
  OX_DAE_ELEMENT(oxDAEFxCOTTransparent, oxDAEFxColorOrTextureType, "transparent")

 public:
  void Read(oxDAEFile& file) override;

  bool UseAlphaChannel() const { return useAlphaChannel; }

  bool useAlphaChannel = true;
};

// A float value (<shininess>, <transparency>, ...; the parent gives the
// tag): its kind (kFxValueUnset) and value (0). Children other than <float>
// draw an unknown-tag warning naming "profile".
class oxDAEFxFloatOrParamType : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEFxFloatOrParamType, oxDAEBaseElement, "")

 public:
  void Read(oxDAEFile& file) override;
  // The value is written under the tag its parent gives: this writes nothing.
  void Write(oxDAEFile&) override {}
  // Writes <tag> holding <float> for a float, empty for the other kinds.
  virtual void Write(oxDAEFile& file, std::string_view tag);

  bool IsFloat() const { return kind == kFxValueFloat; }
  bool IsParam() const { return kind == kFxValueParam; }
  void SetFloat(float number);

  float value = 0.0f;
  int kind = kFxValueUnset;
};

}  // namespace OxDAEReader
