// Lights and cameras, in document order: <light> > <technique_common> >
// <ambient> | <directional> | <point> | <spot>; <camera> > <optics> >
// <technique_common> > <perspective> | <orthographic>. Values are kept as
// read; no projection is computed.
#pragma once

#include <cstdint>

#include <oxMath/oxColor.h>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEAssetElement;
class oxDAELightTechniqueCommon;
class oxDAEOptics;
class oxDAEOpticsTechniqueCommon;
class oxDAETechnique;

// <light>: its asset and common technique (both null when absent; owned by
// the document) and its extras, whose techniques are the light classes of
// the tools. A light without an id takes its name as id. <technique>
// children are stepped over. Only the identity and the common technique are
// written: the asset and the extras are not.
class oxDAELight : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAELight, oxDAEElement, "light")

 public:
  void Read(oxDAEFile& file) override;
  // A light without a common technique is written empty.
  void Write(oxDAEFile& file) override;

  oxDAEAssetElement* asset = nullptr;
  oxDAELightTechniqueCommon* techniqueCommon = nullptr;
};

// <technique_common> of a light: the light type (NONE until a type element
// is read; AMBIENT, DIRECTIONAL, POINT or SPOT), its colour (kGreenColor, so
// that a light without a <color> is visibly marked), the constant (1),
// linear (0) and quadratic (0) attenuation, the falloff angle in degrees
// (180) and the falloff exponent (0).
class oxDAELightTechniqueCommon : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAELightTechniqueCommon, oxDAEBaseElement, "technique_common")

 public:
  // Resets the type, then reads every type element into the same fields:
  // the last type wins. An unknown child draws a warning; once a type has
  // been read, its children are read as those of a type element (tools
  // wrap type values in elements of their own).
  void Read(oxDAEFile& file) override;
  // The type element (transparent when the type is NONE, so the values go
  // straight into <technique_common>) with the colour; for point and spot
  // lights the three attenuations, for spot lights also the falloff angle
  // and exponent.
  void Write(oxDAEFile& file) override;

  EToken type = EToken::NONE;
  OxMath::oxFColor color = OxMath::kGreenColor;
  float constantAttenuation = 1.0f;
  float linearAttenuation = 0.0f;
  float quadraticAttenuation = 0.0f;
  float falloffAngle = 180.0f;
  float falloffExponent = 0.0f;
};

// <camera>: its asset and optics (both null when absent; owned by the
// document) and its extras. <imager> is stepped over. The name is not taken
// as id when the id is missing.
class oxDAECamera : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAECamera, oxDAEElement, "camera")

 public:
  void Read(oxDAEFile& file) override;
  // The identity, then the optics, then the asset (each when present).
  void Write(oxDAEFile& file) override;

  oxDAEAssetElement* asset = nullptr;
  oxDAEOptics* optics = nullptr;
};

// <optics>: its common technique (null when absent) and its profile
// techniques (read, not written), owned by the document. <extra> is stepped
// over.
class oxDAEOptics : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEOptics, oxDAEBaseElement, "optics")

 public:
  void Read(oxDAEFile& file) override;
  // The common technique; optics without one are written empty.
  void Write(oxDAEFile& file) override;

  oxDAEOpticsTechniqueCommon* techniqueCommon = nullptr;
  oxArray<oxDAETechnique*> techniques;
};

// <technique_common> of optics: the projection (NONE until read) and its
// values, each -1 when not given: xmag, ymag, aspect_ratio, znear, zfar,
// xfov and yfov (fields of view in degrees).
class oxDAEOpticsTechniqueCommon : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEOpticsTechniqueCommon, oxDAEBaseElement, "technique_common")

 public:
  enum class EType : uint32_t { NONE = 0, PERSPECTIVE = 1, ORTHOGRAPHIC = 2 };

  // Reads <perspective> (xfov, yfov, aspect_ratio, znear, zfar; other
  // children are stepped over silently) and <orthographic> (xmag, ymag,
  // aspect_ratio, znear, zfar; other children draw a warning). Other
  // children are stepped over silently.
  void Read(oxDAEFile& file) override;
  // <perspective> for PERSPECTIVE, <orthographic> otherwise, with yfov or
  // ymag, aspect_ratio when it is not -1, znear and zfar. xfov and xmag are
  // never written.
  void Write(oxDAEFile& file) override;

  EType type = EType::NONE;
  float xmag = -1.0f;
  float ymag = -1.0f;
  float aspectRatio = -1.0f;
  float znear = -1.0f;
  float zfar = -1.0f;
  float xfov = -1.0f;
  float yfov = -1.0f;
};

}  // namespace OxDAEReader
