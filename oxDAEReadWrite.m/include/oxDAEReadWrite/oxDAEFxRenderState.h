// Render states of the shader profile's passes: the fixed-function pipeline
// settings such as <depth_test_enable value="true"/> (a simple state, one
// value) or <alpha_func><func value="ALWAYS"/><value value="0.5"/></alpha_func>
// (a complex state made of named parts).
//
// A registry, built at module start, knows every render state by its key (the
// element name; "complex/part" for a part of a complex state) with its basic
// value type and its default. A state read from a document is typed and
// defaulted through it. Render states are read, not written.
#pragma once

#include <cstdint>

#include <oxKernel/oxVariant.h>

#include "oxDAEReadWrite/oxDAEElements_Main.h"
#include "oxDAEReadWrite/oxDAEReadWrite_Enum.h"

namespace OxDAEReader {

class oxDAEFxComplexRenderState;

// The common base of the two kinds of state: the element name it was read
// from (empty until read), and the registry.
class oxDAEFxRenderState : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEFxRenderState, oxDAEBaseElement, "")

 public:
  // Builds the registry once, in the order of its table; a second call does
  // nothing. DestroyHashTables frees it.
  static void PrepareHashTables();
  static void DestroyHashTables();
  static bool HasHashTables();
  // Number of keys the registry knows (0 before PrepareHashTables).
  static unsigned int GetRegisteredCount();
  // Every registered key in registration order: the parts of the complex
  // states, then the simple states; empty before PrepareHashTables.
  static oxArray<oxString> GetRegisteredKeys();
  // The basic type registered under `key`; UNKNOWN when the key is not
  // registered or the registry is not built.
  static EFxBasicType GetRegisteredType(const oxString& key);
  // The default registered under `key`, or null: for an unknown key, and
  // for the four bool states registered without a default
  // (sample_alpha_to_one_enable, sample_coverage_enable, scissor_test_enable,
  // stencil_test_enable). Enumerated defaults are their literal text; the
  // stencil reference and mask parts hold a uint8.
  static const OxKernel::oxVariant* GetRegisteredDefault(const oxString& key);

  oxString name;
};

// A state with one value: its "index" (65535, meaning none; for states that
// apply to one light, texture unit or clip plane), its basic type (UNKNOWN
// until read) and its value (none until read).
//
// The value, when read from the "value" attribute, is held by the basic type:
// bool, int32 or float for one component; oxVec2, oxVec3 or oxVec4 for two
// to four (bool components as 1 or 0, int components as floats, exact up to
// 16777216 in magnitude); oxMatrix44 for float4x4; the text itself (an
// oxString) for samplers, strings and enumerated values. Without the
// attribute the value is a copy of the registered default, whose host type
// may differ (uint8 for the stencil reference and masks).
class oxDAEFxSimpleRenderState : public oxDAEFxRenderState {
  OX_DAE_ELEMENT(oxDAEFxSimpleRenderState, oxDAEFxRenderState, "")

 public:
  static constexpr uint16_t kNoIndex = 65535;

  // Reads a stand-alone state (one directly inside a pass).
  void Read(oxDAEFile& file) override;
  // Reads the element the reader stands on as a state, a part of `complex`
  // when it is not null. Each of these stops the reading with a warning,
  // leaving the state without a value, the key in place of %s: "cannot get
  // the type of the render state (%s)" (key not registered), "cannot get
  // the default value of the render state (%s)" (registered without a
  // default, even when a value is given), "cannot convert the value of the
  // render state (%s)" (a value that is not of the state's type), "no value
  // and not default value" (neither given).
  void Read(oxDAEFile& file, oxDAEFxComplexRenderState* complex);
  void Write(oxDAEFile&) override {}

  bool HasValue() const { return value.GetValueType() != nullptr; }
  // The value as text, in the form the "value" attribute is read from:
  // bools as "true" / "false", integers in decimal, floats in their shortest
  // exact decimal form, components separated by one blank, texts as they
  // stand. Empty without a value.
  oxString GetStringValue() const;
  // The registry key: the name, prefixed with the complex state's name and
  // "/" for a part of a complex state.
  oxString GetKey() const;

  uint16_t index = kNoIndex;
  EFxBasicType valueType = EFxBasicType::UNKNOWN;
  OxKernel::oxVariant value;
  // The name of the complex state this is a part of; empty for a stand-alone
  // state.
  oxString complexName;
};

// A state made of named parts: one simple state per child element, held by
// value in document order (none until read). A part whose key is not
// registered is kept without a value.
class oxDAEFxComplexRenderState : public oxDAEFxRenderState {
  OX_DAE_ELEMENT(oxDAEFxComplexRenderState, oxDAEFxRenderState, "")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  // The first part named `partName`, or null. Parts that are absent from
  // the document are absent here too (no defaults are filled in).
  const oxDAEFxSimpleRenderState* GetSubRenderState(const oxString& partName) const;

  oxArray<oxDAEFxSimpleRenderState> subStates;
};

}  // namespace OxDAEReader
