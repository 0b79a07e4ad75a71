// Technique classes of the Maya, 3ds Max and FCollada exporters. The
// document creates them for the owner and profile pairs listed with
// oxDAEFile::ReadExtra (oxDAETechDynAttr_Maya excepted, see there). Each
// reads its profile, then its own children in a fixed order; a child it does
// not know is read as the generic technique reads it (a parameter or the
// asset), and anything else draws an unknown-tag warning naming the parent
// text its class gives. Values that do not parse leave their field as it was.
//
// The document does not write extras, so nothing writes these techniques on
// save. The number and flag techniques and the maps can still be written on
// their own (Write): "technique" with its profile and every value that
// differs from its default. The node, material, geometry and dynamic
// attribute techniques write nothing.
#pragma once

#include <string_view>

#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

class oxDAEDynamicParam;
class oxDAEFxColorOrTextureType;
class oxDAEFxFloatOrParamType;

// --- Maya ----------------------------------------------------------------------

// Maya texture placement (<texture> > <extra> > <technique profile="MAYA">,
// read only in documents written by Maya or 3ds Max): twelve numbers, each
// from the element of its name ("mirrorU" ... "rotateUV"). The defaults are
// the identity placement: wrapU, wrapV, repeatU and repeatV 1, the rest 0.
// Unknown children are reported against "technique".
class oxDAETechTexture_Maya : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechTexture_Maya, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  float mirrorU = 0.0f;
  float mirrorV = 0.0f;
  float wrapU = 1.0f;
  float wrapV = 1.0f;
  float repeatU = 1.0f;
  float repeatV = 1.0f;
  float offsetU = 0.0f;
  float offsetV = 0.0f;
  float translateFrameU = 0.0f;
  float translateFrameV = 0.0f;
  float rotateFrame = 0.0f;
  float rotateUV = 0.0f;
};

// The extra maps of a common-profile technique that Maya and FCollada write:
// shininess, bump, displacement and filter colour as colour-or-texture values
// and the specular level as a float value, each null until read (a second
// element of a kind replaces the first, which stays in the document). The
// values belong to the technique and are queued for the update pass, so that
// their textures resolve to images like those of the common profile.
// Unknown children, of the technique and of the values, are reported against
// "technique" and "profile".
class oxDAETechMaps : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechMaps, oxDAETechnique, "technique")

 public:
  oxDAEFxColorOrTextureType* shininess = nullptr;
  oxDAEFxColorOrTextureType* bump = nullptr;
  oxDAEFxFloatOrParamType* specLevel = nullptr;
  oxDAEFxColorOrTextureType* displacement = nullptr;
  oxDAEFxColorOrTextureType* filterColor = nullptr;
};

// Maya maps (profile "MAYA" under <profile_COMMON> > <technique>):
// "shininess", "bump", "spec_level", "displacement", "filter_color".
class oxDAETechMaps_Maya : public oxDAETechMaps {
  OX_DAE_ELEMENT(oxDAETechMaps_Maya, oxDAETechMaps, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
};

// Maya dynamic attributes: under "dynamic_attributes", every child is one
// oxDAEDynamicParam named by its tag (owned by the document, in document
// order). No owner and profile of ReadExtra create this class (a "MAYA"
// technique there is a texture or maps technique, or nothing); a caller that
// knows a Maya technique holds dynamic attributes reads it with
// oxDAEFile::ReadChild while the reader stands on the <technique>. Unknown
// children are reported against "technique".
class oxDAETechDynAttr_Maya : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechDynAttr_Maya, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;

  // The first attribute whose tag equals `name` exactly; failing that the
  // first whose "shortName" does; else null (always for an empty name).
  oxDAEDynamicParam* GetAttribute(const oxString& name) const;

  oxArray<oxDAEDynamicParam*> attributes;
};

// --- 3ds Max -------------------------------------------------------------------

// 3ds Max texture amount (<texture> > <extra> > <technique profile="MAX3D">):
// "amount", 1 (the full texture) by default.
class oxDAETechTexture_Max3D : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechTexture_Max3D, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  float GetAmount() const { return amount; }

  float amount = 1.0f;
};

// 3ds Max effect flags (<effect> > <extra> > <technique profile="MAX3D">):
// "faceted", "double_sided", "wireframe" and "face_map", each false by
// default and true when its element's integer text is not 0. Written as 1
// when set.
class oxDAETechEffect_Max3D : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechEffect_Max3D, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  bool faceted = false;
  bool doubleSided = false;
  bool wireframe = false;
  bool faceMap = false;
};

// 3ds Max light attenuation (<light> > <extra> > <technique profile="MAX3D">):
// eight numbers, all 0 by default (no decay, both attenuations off).
class oxDAETechLight_Max3D : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechLight_Max3D, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  float decayType = 0.0f;
  float decayStart = 0.0f;
  float useNearAttenuation = 0.0f;
  float nearAttenuationStart = 0.0f;
  float nearAttenuationEnd = 0.0f;
  float useFarAttenuation = 0.0f;
  float farAttenuationStart = 0.0f;
  float farAttenuationEnd = 0.0f;
};

// --- FCollada ------------------------------------------------------------------

// FCollada light values (<light> > <extra> > <technique profile="FCOLLADA">):
// intensity 1, outer cone 0, aspect ratio 1, dropoff 0, penumbra angle 0 and
// target distance 0 by default.
class oxDAETechLight_FCOLLADA : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechLight_FCOLLADA, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  float intensity = 1.0f;
  float outerCone = 0.0f;
  float aspectRatio = 1.0f;
  float dropoff = 0.0f;
  float penumbraAngle = 0.0f;
  float targetDefaultDist = 0.0f;
};

// FCollada maps: the five Maya maps, then "emission_level", a float value
// like "spec_level" (null until read).
class oxDAETechMaps_FCOLLADA : public oxDAETechMaps {
  OX_DAE_ELEMENT(oxDAETechMaps_FCOLLADA, oxDAETechMaps, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxDAEFxFloatOrParamType* emissionLevel = nullptr;
};

// FCollada node user properties (<node> > <extra> > <technique
// profile="FCOLLADA"> > <user_properties>): the text, escaped by the
// exporter, is cleaned (_Clean) and read as a custom-attribute XML text into
// the attributes (several <user_properties> add up). A text that is not XML
// is logged by the XML reader and adds nothing.
class oxDAETechNode_FCOLLADA : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechNode_FCOLLADA, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;

  // Replaces, in this order and everywhere, "%3C" by "<", "%3E" by ">",
  // "%22" by '"', and removes "&#13;".
  static void _Clean(oxString& text);

  const oxDAEAttributes& GetAttributes() const { return attributes; }

  oxDAEAttributes attributes;
};

// FCollada geometry data (<geometry> > <extra> > <technique
// profile="FCOLLADA">): FCollada's geometry options are not modelled, so it
// reads what the generic technique reads (profile, parameters, asset) and
// steps over the rest silently.
class oxDAETechGeometry_FCOLLADA : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechGeometry_FCOLLADA, oxDAETechnique, "technique")
};

// FCollada material custom attributes (<material> > <extra> > <technique
// profile="FCOLLADA"> > <dynamic_attributes> > <Custom_Attributes>): each
// Custom_Attributes is read as an oxDAECustomAttributes (kept by the
// document) whose typed attributes are added to this technique's, in
// document order. Other children of "dynamic_attributes" are reported against
// it.
class oxDAETechMaterial_FCOLLADA : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechMaterial_FCOLLADA, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;

  const oxDAEAttributes& GetAttributes() const { return attributes; }

  oxDAEAttributes attributes;
};

}  // namespace OxDAEReader
