// Materials and effects: <material> > <instance_effect> > <technique_hint>,
// <setparam>; <effect> > <annotate>, the profiles (oxDAEElements_Fx_Common.h).
// A material's instance effect is bound to its effect once the whole
// document is read. Saving keeps the common profile only.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Fx_Common.h"
#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEAssetElement;
class oxDAEEffect;
class oxDAEFxAnnotate;
class oxDAEFxSetParam;
class oxDAEInstanceEffect;
class oxDAETechniqueHint;

// <material>: its asset and instance effect (null when absent; owned by the
// document; a later <instance_effect> replaces an earlier one) and extras. A
// material without an id takes its name as id. Written with its asset and
// instance effect; extras are not written.
class oxDAEMaterial : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEMaterial, oxDAEElement, "material")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxDAEInstanceEffect* instanceEffect = nullptr;
  oxDAEAssetElement* asset = nullptr;
};

// <instance_effect>: the "url" text (empty), the effect it resolved to (null;
// not owned), the material holding it (null until read by one), and its
// technique hints and set params (owned by the document). No name, id or sid
// is read; <extra> draws an unknown-tag warning like any other tag.
class oxDAEInstanceEffect : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEInstanceEffect, oxDAEBaseElement, "instance_effect")

 public:
  void Read(oxDAEFile& file) override;
  // Starts the element with its "url" only (hints and set params are not
  // written) and leaves it open: the caller's WriteChild closes it.
  void Write(oxDAEFile& file) override;
  // After reading: binds `effect` to what url names (null when that is not
  // an effect); 0 when an effect was found, else kDAEUnresolved. Before
  // writing: a bound effect replaces url by its reference; returns 0.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;

  oxDAEMaterial* owner = nullptr;
  oxDAEEffect* effect = nullptr;
  oxString url;
  oxArray<oxDAETechniqueHint*> techniqueHints;
  oxArray<oxDAEFxSetParam*> setParams;
};

// <technique_hint>: the "platform", "profile" and "ref" texts (empty). A
// missing "ref" is logged as "attribute 'ref' is required" (error) and the
// hint is kept. Not written.
class oxDAETechniqueHint : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAETechniqueHint, oxDAEBaseElement, "technique_hint")

 public:
  void Read(oxDAEFile& file) override;

  oxString platform;
  oxString profile;
  oxString ref;
};

// <effect>: its annotations, every profile in document order and extras (all
// owned by the document), and the last <profile_COMMON> read, which is also
// in `profiles` (null when none). Other children (<image>, <newparam>,
// <asset>, <profile_HLSL>) draw an unknown-tag warning. Saving writes the
// common profile only: annotations, extras and the other profiles are
// dropped.
class oxDAEEffect : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEEffect, oxDAEElement, "effect")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  // The first profile of that type, or null.
  oxDAEFxProfile* GetProfile(oxDAEFxProfile::EFxProfileType type) const;

  oxArray<oxDAEFxAnnotate*> annotations;
  oxArray<oxDAEFxProfile*> profiles;
  oxDAEFxProfileCommon* commonProfile = nullptr;
};

}  // namespace OxDAEReader
