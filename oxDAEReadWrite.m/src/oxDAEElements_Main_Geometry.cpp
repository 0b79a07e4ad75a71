#include "oxDAEReadWrite/oxDAEElements_Main_Geometry.h"

#include <string>

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEInputElement);
OX_DAE_ELEMENT_DEFINE(oxDAEVertices);
OX_DAE_ELEMENT_DEFINE(oxDAEGeometry);
OX_DAE_ELEMENT_DEFINE(oxDAEMesh);
OX_DAE_ELEMENT_DEFINE(oxDAEMeshPrimitive);
OX_DAE_ELEMENT_DEFINE(oxDAESpline);
OX_DAE_ELEMENT_DEFINE(oxDAEControlVertices);

// --- <input> -------------------------------------------------------------------

void oxDAEInputElement::Read(oxDAEFile& file) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeUInt("offset", offset);
  reader.ReadAttributeUInt("set", set);
  reader.ReadAttributeString("semantic", semantic);
  semanticToken = oxDAEFile::_GetToken(semantic);
  reader.ReadAttributeString("source", sourceURI);
  source = file.ResolveURI(sourceURI);
}

void oxDAEInputElement::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  semantic = oxDAEFile::_GetTokenString(semanticToken);
  w.WriteAttributeUInt("offset", offset);
  w.WriteAttributeString("semantic", semantic);
  if (set != 0) w.WriteAttributeUInt("set", set);
  if (const oxString reference = GetSourceReference(file); !reference.empty())
    w.WriteAttributeString("source", reference);
  w.EndAttributes();
  w.EndElement();
}

oxString oxDAEInputElement::GetSourceReference(oxDAEFile& file) const {
  const oxDAEElement* element = oxDAEElement::DynamicCast(source);
  return element ? element->ComputeURL(file) : sourceURI;
}

oxDAEAccessor* oxDAEInputElement::GetCommonAccessor() const {
  const oxDAESource* s = oxDAESource::DynamicCast(source);
  return s ? s->GetAccessor() : nullptr;
}

oxDAEInputElement* oxDAEInputElement::FindBySemantic(const oxArray<oxDAEInputElement*>& inputs,
                                                     const oxString& semantic) {
  for (oxDAEInputElement* input : inputs) {
    if (input->semantic == semantic) return input;
  }
  return nullptr;
}

namespace {
template <class Owner>
void ReadInput(Owner& owner, oxDAEFile& file) {
  owner.inputs.push_back(file.ReadChild<oxDAEInputElement>(&owner));
}

}  // namespace

// --- <vertices> ------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEVertices> kVerticesChildren[] = {
    {"input", ReadInput<oxDAEVertices>},
};

void oxDAEVertices::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kVerticesChildren, s_XMLTag);
}

void oxDAEVertices::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  file.WriteChildren(inputs);
  file.writer->EndElement();
}

oxDAEInputElement* oxDAEVertices::GetInput(const oxString& semantic) const {
  return oxDAEInputElement::FindBySemantic(inputs, semantic);
}

// --- <geometry> ------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEGeometry> kGeometryChildren[] = {
    {oxDAEMesh::s_XMLTag,
     [](oxDAEGeometry& g, oxDAEFile& f) { g.mesh = f.ReadChild<oxDAEMesh>(&g); }},
    {oxDAESpline::s_XMLTag,
     [](oxDAEGeometry& g, oxDAEFile& f) { g.spline = f.ReadChild<oxDAESpline>(&g); }},
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<oxDAEGeometry>},
};

void oxDAEGeometry::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  AdoptNameAsID(file);
  file.ReadChildren(*this, kGeometryChildren, s_XMLTag);
}

void oxDAEGeometry::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (mesh) file.WriteChild(mesh);
  file.writer->EndElement();
}

// --- <mesh> ----------------------------------------------------------------------

namespace {
using EPrimitive = oxDAEMeshPrimitive::EType;

template <EPrimitive Type>
void ReadPrimitive(oxDAEMesh& mesh, oxDAEFile& file) {
  mesh.primitives.push_back(file.ReadChild<oxDAEMeshPrimitive>(&mesh, Type));
}
}  // namespace

constexpr oxDAEChildRule<oxDAEMesh> kMeshChildren[] = {
    {oxDAESource::s_XMLTag,
     [](oxDAEMesh& m, oxDAEFile& f) { m.sources.push_back(f.ReadChild<oxDAESource>(&m)); }},
    {oxDAEVertices::s_XMLTag,
     [](oxDAEMesh& m, oxDAEFile& f) { m.vertices = f.ReadChild<oxDAEVertices>(&m); }},
    {"lines", ReadPrimitive<EPrimitive::LINES>},
    {"linestrips", ReadPrimitive<EPrimitive::LINESTRIPS>},
    {"polygons", ReadPrimitive<EPrimitive::POLYGONS>},
    {"triangles", ReadPrimitive<EPrimitive::TRIANGLES>},
    {"trifans", ReadPrimitive<EPrimitive::TRIFANS>},
    {"tristrips", ReadPrimitive<EPrimitive::TRISTRIPS>},
    {"polylist", ReadPrimitive<EPrimitive::POLYLIST>},
};

void oxDAEMesh::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kMeshChildren, s_XMLTag);
}

void oxDAEMesh::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  file.WriteChildren(sources);
  if (vertices) file.WriteChild(vertices);
  file.WriteChildren(primitives);
  file.writer->EndElement();
}

// --- Primitives ------------------------------------------------------------------

const std::string_view oxDAEMeshPrimitive::kTags[7] = {
    "lines", "linestrips", "polygons", "polylist", "triangles", "trifans", "tristrips"};

namespace {

// The index lists a primitive reads into. Every list but the first needs a
// <p> element of its own, and a <lines> segment at least four characters, so
// a count beyond half the element's bytes cannot be real: it is lowered, with
// an error, to keep memory proportional to the input.
uint32_t IndexListCount(const oxDAEMeshPrimitive& primitive, const OxKernel::oxXMLReader& reader) {
  if (primitive.type == EPrimitive::TRIANGLES || primitive.type == EPrimitive::POLYLIST) return 1;
  const uint64_t most = reader.GetElementSpan() / 2 + oxDAEMeshPrimitive::kSpareIndexLists;
  if (primitive.count <= most) return primitive.count;
  OX_LOG(OxKernel::kLogError, OxKernel::oxConcat("<", reader.GetTag(), "> count ", primitive.count,
                                                 " is larger than its content can hold; keeping ",
                                                 most, " index lists"));
  return static_cast<uint32_t>(most);
}

// Reads the primitive's children; `next` is the index list the next <p> fills.
struct PrimitiveReader {
  oxDAEMeshPrimitive& primitive;
  size_t next = 0;
};

constexpr oxDAEChildRule<PrimitiveReader> kPrimitiveChildren[] = {
    {"input", [](PrimitiveReader& r, oxDAEFile& f) { ReadInput(r.primitive, f); }},
    {"vcount", [](PrimitiveReader& r, oxDAEFile& f) { f.ReadIntList(r.primitive.vcount); }},
    {"p",
     [](PrimitiveReader& r, oxDAEFile& f) {
       if (r.next < r.primitive.p.size()) f.ReadIntList(r.primitive.p[r.next]);
       ++r.next;
     }},
};

}  // namespace

void oxDAEMeshPrimitive::Read(oxDAEFile& file) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  reader.ReadAttributeUInt("count", count);
  reader.ReadAttributeString("material", material);
  materialElement = file.ResolveURI("#" + material);
  p.resize(IndexListCount(*this, reader));
  PrimitiveReader state{*this};
  // Unknown children are reported against the mesh, the primitive's parent.
  file.ReadChildren(state, kPrimitiveChildren, oxDAEMesh::s_XMLTag);
}

void oxDAEMeshPrimitive::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(type == EPrimitive::POLYLIST ? std::string_view() : kTags[static_cast<int>(type)]);
  w.WriteAttributeUInt("count", count);
  if (!material.empty()) w.WriteAttributeString("material", material);
  w.EndAttributes();
  file.WriteChildren(inputs);
  for (const oxArray<int32_t>& list : p) {
    w.StartElement("p");
    w.EndAttributes();
    w.GetTextWriter()->WriteInts(list.data(), static_cast<unsigned int>(list.size()), 0);
    w.EndElement();
  }
  w.EndElement();
}

size_t oxDAEMeshPrimitive::GetIndexCount() const {
  size_t total = 0;
  for (const oxArray<int32_t>& list : p)
    total += list.size();
  return total;
}

// --- <spline> --------------------------------------------------------------------

constexpr oxDAEChildRule<oxDAESpline> kSplineChildren[] = {
    {oxDAESource::s_XMLTag,
     [](oxDAESpline& s, oxDAEFile& f) { s.sources.push_back(f.ReadChild<oxDAESource>(&s)); }},
    {oxDAEControlVertices::s_XMLTag,
     [](oxDAESpline& s, oxDAEFile& f) {
       s.controlVertices = f.ReadChild<oxDAEControlVertices>(&s);
     }},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAESpline::Read(oxDAEFile& file) {
  file.reader->ReadAttributeBool("closed", closed);
  file.ReadChildren(*this, kSplineChildren, s_XMLTag);
}

constexpr oxDAEChildRule<oxDAEControlVertices> kControlVerticesChildren[] = {
    {"input", ReadInput<oxDAEControlVertices>},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAEControlVertices::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kControlVerticesChildren, s_XMLTag);
}

oxDAEInputElement* oxDAEControlVertices::GetInput(const oxString& semantic) const {
  return oxDAEInputElement::FindBySemantic(inputs, semantic);
}

}  // namespace OxDAEReader
