#include "oxDAEReadWrite/oxDAEElements_Material_Program.h"

#include "oxDAEReadWrite/oxDAEElements_Fx_Shader.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAECodeElement);
OX_DAE_ELEMENT_DEFINE(oxDAEEntryElement);
OX_DAE_ELEMENT_DEFINE(oxDAEProgram);
OX_DAE_ELEMENT_DEFINE(oxDAEShaderTechnique);

namespace {

// A text attribute of an element: read when present, written when not
// empty.
template <class Owner>
struct TextAttribute {
  std::string_view name;
  oxString Owner::*field;
};

template <class Owner, size_t N>
void ReadTextAttributes(Owner& owner, const OxKernel::oxXMLReader& reader,
                        const TextAttribute<Owner> (&attributes)[N]) {
  for (const TextAttribute<Owner>& attribute : attributes)
    reader.ReadAttributeString(attribute.name, owner.*attribute.field);
}

template <class Owner, size_t N>
void WriteTextAttributes(const Owner& owner, OxKernel::oxXMLWriter& writer,
                         const TextAttribute<Owner> (&attributes)[N]) {
  for (const TextAttribute<Owner>& attribute : attributes) {
    const oxString& value = owner.*attribute.field;
    if (!value.empty()) writer.WriteAttributeString(attribute.name, value);
  }
}

// What becomes of a child no table row takes: a <param> or <parameter> is
// appended to the owner's parameters, anything else is reported as unknown
// under the owner's tag.
template <class Owner>
auto ParameterOrUnknown(Owner& owner, oxDAEFile& file) {
  return [&owner, &file](std::string_view tag) {
    if (!file._IsXMLNodeAParameter()) {
      oxDAEBaseElement::UnknownTagWarning(tag, Owner::s_XMLTag);
      return;
    }
    owner.parameters.push_back(file.ReadChild<oxDAEParameter>(&owner));
  };
}

}  // namespace

// --- <code> ------------------------------------------------------------------------

constexpr TextAttribute<oxDAECodeElement> kCodeAttributes[] = {
    {"lang", &oxDAECodeElement::lang},
    {"profile", &oxDAECodeElement::profile},
    {"semantic", &oxDAECodeElement::semantic},
    {"url", &oxDAECodeElement::url},
};

void oxDAECodeElement::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  ReadTextAttributes(*this, *file.reader, kCodeAttributes);
}

void oxDAECodeElement::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  WriteTextAttributes(*this, *file.writer, kCodeAttributes);
}

// --- <entry> -----------------------------------------------------------------------

constexpr TextAttribute<oxDAEEntryElement> kEntryAttributes[] = {
    {"semantic", &oxDAEEntryElement::semantic},
    {"function", &oxDAEEntryElement::function},
};

void oxDAEEntryElement::Read(oxDAEFile& file) {
  OxKernel::oxXMLReader& reader = *file.reader;
  ReadTextAttributes(*this, reader, kEntryAttributes);
  const auto readChild = ParameterOrUnknown(*this, file);
  reader.EnterChildren();
  while (reader.MoveNext() == 0)
    readChild(reader.GetTag());
  reader.LeaveChildren();
}

void oxDAEEntryElement::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  WriteTextAttributes(*this, *file.writer, kEntryAttributes);
  file.writer->EndAttributes();
  file.WriteChildren(parameters);
  file.writer->EndElement();
}

// --- <program> ---------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEProgram> kProgramChildren[] = {
    {oxDAEAssetElement::s_XMLTag,
     [](oxDAEProgram& p, oxDAEFile& f) { p.asset = f.ReadChild<oxDAEAssetElement>(&p); }},
    {oxDAEEntryElement::s_XMLTag,
     [](oxDAEProgram& p, oxDAEFile& f) { p.entry = f.ReadChild<oxDAEEntryElement>(&p); }},
    {oxDAECodeElement::s_XMLTag,
     [](oxDAEProgram& p, oxDAEFile& f) { p.code = f.ReadChild<oxDAECodeElement>(&p); }},
};

void oxDAEProgram::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeString("lang", lang);
  reader.ReadAttributeString("source", source);
  // Read after "source" so that "url" wins when both are given.
  reader.ReadAttributeString("url", source);
  file.ReadChildrenOr(*this, kProgramChildren, ParameterOrUnknown(*this, file));
}

void oxDAEProgram::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& writer = *file.writer;
  WriteStart(file, s_XMLTag);
  if (!lang.empty()) writer.WriteAttributeString("lang", lang);
  if (!source.empty()) writer.WriteAttributeString("url", source);
  writer.EndAttributes();
  if (asset) file.WriteChild(asset);
  if (entry) file.WriteChild(entry);
  file.WriteChildren(parameters);
  if (code) file.WriteChild(code);
  writer.EndElement();
}

// --- Shader technique ----------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEShaderTechnique> kShaderTechniqueChildren[] = {
    {oxDAEProgram::s_XMLTag,
     [](oxDAEShaderTechnique& t, oxDAEFile& f) { t.program = f.ReadChild<oxDAEProgram>(&t); }},
    {oxDAEFxPass::s_XMLTag, [](oxDAEShaderTechnique& t,
                               oxDAEFile& f) { t.passes.push_back(f.ReadChild<oxDAEFxPass>(&t)); }},
};

void oxDAEShaderTechnique::Read(oxDAEFile& file) {
  ReadAttributes(file);
  // Parameters and the asset go to the technique itself; the tags differ
  // from those of the table, so which is tried first does not matter.
  file.ReadChildrenOr(*this, kShaderTechniqueChildren, [this, &file](std::string_view tag) {
    if (!ReadChild(file)) UnknownTagWarning(tag, s_XMLTag);
  });
}

void oxDAEShaderTechnique::Write(oxDAEFile& file) {
  StartWriting(file);
  if (program) file.WriteChild(program);
  file.WriteChildren(passes);
  EndWriting(file);
}

}  // namespace OxDAEReader
