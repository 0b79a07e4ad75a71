// Shader programs of COLLADA 1.3 style materials: a technique holding a
// <program> (with <code>, <entry> and <param> children) and a list of
// <pass> elements. They are kept and written back as plain data; nothing in
// the module interprets them.
//
// No reader of a COLLADA 1.4 document creates these elements: a 1.3
// material technique reader would, and callers that meet such content can
// read it through oxDAEFile::ReadChild<oxDAEShaderTechnique> (or any of the
// classes below) while the document's reader stands on the element.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

class oxDAEAssetElement;
class oxDAEParameter;
class oxDAEFxPass;

// <code>: the "lang", "profile", "semantic" and "url" texts (empty). The
// element's text (the source itself) is not kept and its children are not
// read.
class oxDAECodeElement : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAECodeElement, oxDAEElement, "code")

 public:
  // Identity attributes (registered), then the four texts.
  void Read(oxDAEFile& file) override;
  // Starts "code" with the identity attributes and each text that is not
  // empty, and leaves the element open: the enclosing WriteChild closes it.
  void Write(oxDAEFile& file) override;

  oxString lang;
  oxString profile;
  oxString semantic;
  oxString url;
};

// <entry>: the "function" and "semantic" texts (empty) and the <param> or
// <parameter> children in document order (owned by the document). Any other
// child draws an unknown-tag warning naming "entry".
class oxDAEEntryElement : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEEntryElement, oxDAEBaseElement, "entry")

 public:
  void Read(oxDAEFile& file) override;
  // "entry" with "semantic" and "function" when not empty, then the
  // parameters.
  void Write(oxDAEFile& file) override;

  oxString function;
  oxString semantic;
  oxArray<oxDAEParameter*> parameters;
};

// <program>: the "lang" text (empty), the program's source (empty; read from
// "source", then from "url", so that "url" wins when both are given; written
// as "url"), its asset, entry and code (null when absent; a repeated one
// replaces the earlier) and its parameters in document order, all owned by
// the document. Other children draw an unknown-tag warning naming
// "program".
class oxDAEProgram : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEProgram, oxDAEElement, "program")

 public:
  void Read(oxDAEFile& file) override;
  // "program" with its identity, "lang" and "url" when not empty, then the
  // asset, the entry, the parameters and the code, in that order whatever
  // the order they were read in.
  void Write(oxDAEFile& file) override;

  oxString lang;
  oxString source;
  oxDAEAssetElement* asset = nullptr;
  oxArray<oxDAEParameter*> parameters;
  oxDAECodeElement* code = nullptr;
  oxDAEEntryElement* entry = nullptr;
};

// A material technique of COLLADA 1.3 style: besides the parameters, asset
// and profile of every technique, its program (null when absent; a later
// one replaces it) and its passes in document order, all owned by the
// document. Other children draw an unknown-tag warning naming "technique".
// The technique's own parameters and asset are read but not written.
class oxDAEShaderTechnique : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAEShaderTechnique, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;
  // "technique" with its profile, the program if any, then each pass.
  void Write(oxDAEFile& file) override;

  oxDAEProgram* program = nullptr;
  oxArray<oxDAEFxPass*> passes;
};

}  // namespace OxDAEReader
