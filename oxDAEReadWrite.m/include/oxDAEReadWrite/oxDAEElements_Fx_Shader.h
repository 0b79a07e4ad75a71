// The CG shader profile: <profile_CG> > <technique> > <pass> > <shader> and
// the render states (oxDAEFxRenderState.h), with the source code (<code>) and
// source files (<include>) the shaders are compiled from.
//
// Everything here is read and reachable through the classes below; none of it
// is written (an effect writes only its common profile), so each Write does
// nothing.
#pragma once

#include <cstdint>

#include <oxMath/oxVec.h>

#include "oxDAEReadWrite/oxDAEElements_Fx_Common.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Param.h"
#include "oxDAEReadWrite/oxDAEElements_Main.h"
#include "oxDAEReadWrite/oxDAEFxRenderState.h"

namespace OxDAEReader {

class oxDAEFxPass;
class oxDAEFxProfileCGTechnique;
class oxDAEFxSetParam;

// A <code> element: its "sid" and its text, the shader source (both empty by
// default). Text split by comments or CDATA sections is joined in order.
struct SFxCode {
  oxString sid;
  oxString text;
};

// An <include> element: its "sid" and its "url" (passed through
// oxDAEFile::CorrectURI); both empty by default.
struct SFxInclude {
  oxString sid;
  oxString url;
};

// The source code records of a profile or technique, in document order.
class oxDAEFxCodeLibrary {
 public:
  // The first record whose sid equals `sid` exactly, or null.
  const SFxCode* GetCode(const oxString& sid) const;
  const SFxInclude* GetInclude(const oxString& sid) const;

  // Appends a record for the <code> / <include> the reader stands on.
  void ReadCode(oxDAEFile& file);
  void ReadInclude(oxDAEFile& file);

  oxArray<SFxCode> codes;
  oxArray<SFxInclude> includes;
};

// <profile_CG>: "id" and "platform" (empty), its code and include records,
// images and new params (oxDAEFxProfile) and techniques, all in document
// order. <asset> and <extra> are reported as not supported (warnings) and
// skipped. Not written.
class oxDAEFxProfileCG : public oxDAEFxProfile, public oxDAEFxCodeLibrary {
  OX_DAE_ELEMENT(oxDAEFxProfileCG, oxDAEFxProfile, "profile_CG")

 public:
  oxDAEFxProfileCG() : oxDAEFxProfile(CG) {}

  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  // The first technique whose sid equals `sid` exactly, or null.
  oxDAEFxProfileCGTechnique* GetTechnique(const oxString& sid) const;

  oxString platform;
  oxArray<oxDAEFxProfileCGTechnique*> techniques;
};

// A <technique> of the CG profile: "sid" (and "id"), the <annotate> children
// (copies), code and include records, images, new params, set params and
// passes, all in document order (the elements owned by the document). <asset>
// is reported as not supported and <extra> as an unsupported extra. Not
// written.
class oxDAEFxProfileCGTechnique : public oxDAEElement, public oxDAEFxCodeLibrary {
  OX_DAE_ELEMENT(oxDAEFxProfileCGTechnique, oxDAEElement, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  // The first pass whose sid equals `sid` exactly, or null.
  oxDAEFxPass* GetPass(const oxString& sid) const;
  // The first new param whose sid equals `sid` exactly, or null.
  oxDAEFxNewParam* GetNewParam(const oxString& sid) const;

  oxArray<oxDAEFxAnnotate> annotations;
  oxArray<oxDAEImage*> images;
  oxArray<oxDAEFxNewParam*> newParams;
  oxArray<oxDAEFxSetParam*> setParams;
  oxArray<oxDAEFxPass*> passes;
};

// A <bind> of a shader: the uniform "symbol" it sets (empty) and either a
// reference to an effect parameter, the "ref" of its <param> child (empty
// when the value is given instead), or the value element itself, read as an
// effect parameter's value (oxDAEFxParam; the value type stays UNKNOWN when
// there is none).
class oxDAEFxShaderBind : public oxDAEFxParam {
  OX_DAE_ELEMENT(oxDAEFxShaderBind, oxDAEFxParam, "bind")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  oxString symbol;
  oxString paramRef;
};

// <shader>: its "stage" ("VERTEX" or "FRAGMENT" in practice; empty when not
// given), <annotate> children (copies), the texts of <compiler_target> and
// <compiler_options>, the entry point from <name> (its text) and the code or
// include it is found in ("source" of <name>), and its <bind> children
// (copies), in document order. All texts are empty by default.
class oxDAEFxShader : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEFxShader, oxDAEElement, "shader")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  // The first bind whose symbol equals `symbol` exactly, or null.
  const oxDAEFxShaderBind* GetBind(const oxString& bindSymbol) const;

  oxString stage;
  oxString compilerTarget;
  oxString compilerOptions;
  oxString entryName;
  oxString entrySource;
  oxArray<oxDAEFxAnnotate> annotations;
  oxArray<oxDAEFxShaderBind> binds;
};

// A render target of a pass (<color_target>, <depth_target>,
// <stencil_target>): "index", "slice" and "mip" (0), "face" ("POSITIVE_X")
// and the text, the sid of the surface parameter drawn into (empty).
struct SFxPassTarget {
  uint32_t index = 0;
  uint32_t slice = 0;
  uint32_t mip = 0;
  oxString face = "POSITIVE_X";
  oxString surface;
};

// <color_clear>: "index" (0) and the colour (0, 0, 0, 0; components the text
// does not give keep their defaults).
struct SFxColorClear {
  uint32_t index = 0;
  OxMath::oxGenVec4<float> color;
};

// <depth_clear>: "index" (0) and the depth (1).
struct SFxDepthClear {
  uint32_t index = 0;
  float depth = 1.0f;
};

// <stencil_clear>: "index" (0) and the stencil value (0).
struct SFxStencilClear {
  uint32_t index = 0;
  int32_t stencil = 0;
};

// <pass>: "sid" (and "id"), its <annotate> children (copies), render targets,
// clears, the text of <draw> (empty; a later one replaces an earlier one),
// and one list of its shaders and render states in document order (owned by
// the document). Any other child is a render state: simple when it has no
// child elements, complex otherwise. <extra> draws the unsupported-extra
// warning. Not written.
class oxDAEFxPass : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEFxPass, oxDAEElement, "pass")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  // The first shader, or the first one whose stage equals `stage`; null
  // when there is none.
  oxDAEFxShader* GetShader() const;
  oxDAEFxShader* GetShader(const oxString& shaderStage) const;
  // The first render state named `stateName` (simple or complex), or null.
  oxDAEFxRenderState* GetRenderState(const oxString& stateName) const;
  // The first simple / complex state named `stateName`, or null.
  oxDAEFxSimpleRenderState* GetSimpleRenderState(const oxString& stateName) const;
  // The simple state named `stateName` with index `stateIndex`, or null.
  oxDAEFxSimpleRenderState* GetSimpleRenderState(const oxString& stateName,
                                                 uint16_t stateIndex) const;
  oxDAEFxComplexRenderState* GetComplexRenderState(const oxString& stateName) const;
  bool HasRenderState(const oxString& stateName) const {
    return GetRenderState(stateName) != nullptr;
  }

  oxArray<oxDAEFxAnnotate> annotations;
  oxArray<SFxPassTarget> colorTargets;
  oxArray<SFxPassTarget> depthTargets;
  oxArray<SFxPassTarget> stencilTargets;
  oxArray<SFxColorClear> colorClears;
  oxArray<SFxDepthClear> depthClears;
  oxArray<SFxStencilClear> stencilClears;
  oxString draw;
  oxArray<oxDAEBaseElement*> shadersAndStates;
};

}  // namespace OxDAEReader
