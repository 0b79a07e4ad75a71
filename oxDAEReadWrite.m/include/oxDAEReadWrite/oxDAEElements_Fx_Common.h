// Effect profiles and the common profile's technique and values. Their
// contents are not modelled yet.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// Base of the effect profiles (<profile_COMMON>, <profile_CG>).
class oxDAEFxProfile : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEFxProfile, oxDAEElement, "")
};

// <profile_COMMON>, with its <technique>. Tool techniques of the "MAYA" and
// "FCOLLADA" profiles are chosen for the technique.
class oxDAEFxProfileCommon : public oxDAEFxProfile {
  OX_DAE_ELEMENT(oxDAEFxProfileCommon, oxDAEFxProfile, "profile_COMMON")

 public:
  void Read(oxDAEFile& file) override { oxDAEElement::Read(file); }

  // The common profile's <technique>.
  class Technique : public oxDAEElement {
    OX_DAE_ELEMENT(Technique, oxDAEElement, "technique")

   public:
    void Read(oxDAEFile& file) override { oxDAEElement::Read(file); }
  };
};

// A colour-or-texture value of the common profile (<emission>, <diffuse>,
// ...). Tool techniques of the "MAX3D" and "MAYA" profiles are chosen for it.
class oxDAEFxColorOrTextureType : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEFxColorOrTextureType, oxDAEElement, "")

 public:
  void Read(oxDAEFile& file) override { oxDAEElement::Read(file); }
};

}  // namespace OxDAEReader
