#include "oxDAEReadWrite/oxDAEElements_Instance.h"

#include <algorithm>

#include <oxKernel/oxCharacter.h>
#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Main_Node.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEElements_Material.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEInstance);
OX_DAE_ELEMENT_DEFINE(oxDAEInstanceGeometry);
OX_DAE_ELEMENT_DEFINE(oxDAEInstanceController);
OX_DAE_ELEMENT_DEFINE(oxDAEBindMaterial);
OX_DAE_ELEMENT_DEFINE(oxDAEBindMaterialTechniqueCommon);
OX_DAE_ELEMENT_DEFINE(oxDAEInstanceMaterial);
OX_DAE_ELEMENT_DEFINE(oxDAEVisualScene);

// --- Instances -----------------------------------------------------------------

namespace {
const oxDAEInstance::KindTag* FindKind(EToken kind) {
  for (const oxDAEInstance::KindTag& row : oxDAEInstance::kKindTags) {
    if (row.kind == kind) return &row;
  }
  return nullptr;
}
}  // namespace

std::string_view oxDAEInstance::TagOfKind(EToken kind) {
  const KindTag* row = FindKind(kind);
  return row && row->written ? row->tag : std::string_view();
}

std::string_view oxDAEInstance::GetXMLTag() const {
  const KindTag* row = FindKind(kind);
  return row ? row->tag : s_XMLTag;
}

void oxDAEInstance::Read(oxDAEFile& file) {
  file.reader->ReadAttributeString("url", url);
}

void oxDAEInstance::Write(oxDAEFile& file) {
  file.writer->StartElement(TagOfKind(kind));
  file.writer->WriteAttributeString("url", url);
}

int oxDAEInstance::UpdateDependencies(oxDAEFile& file, bool beforeWrite) {
  if (beforeWrite) {
    if (const oxDAEElement* element = oxDAEElement::DynamicCast(target))
      url = element->ComputeURL(file);
    return 0;
  }
  if (resolved) return 0;
  oxDAEBaseElement* found = file.ResolveURI(url);
  if (!found) return kDAEUnresolved;
  target = found;
  resolved = true;
  return 0;
}

bool oxDAEInstance::Equals(const oxDAEBaseElement* other) const {
  const oxDAEInstance* instance = oxDAEInstance::DynamicCast(other);
  return instance && instance->url == url && instance->kind == kind;
}

namespace {

template <class Owner>
void ReadBindMaterial(Owner& owner, oxDAEFile& file) {
  owner.bindMaterial = file.ReadChild<oxDAEBindMaterial>(&owner);
}

const oxArray<oxDAEInstanceMaterial*>& InstanceMaterialsOf(const oxDAEBindMaterial& bind) {
  static const oxArray<oxDAEInstanceMaterial*> none;
  return bind.techniqueCommon ? bind.techniqueCommon->instanceMaterials : none;
}

bool SameInstanceMaterials(const oxDAEBindMaterial& a, const oxDAEBindMaterial& b) {
  const oxArray<oxDAEInstanceMaterial*>& mine = InstanceMaterialsOf(a);
  const oxArray<oxDAEInstanceMaterial*>& theirs = InstanceMaterialsOf(b);
  return std::equal(
      mine.begin(), mine.end(), theirs.begin(), theirs.end(),
      [](const oxDAEInstanceMaterial* x, const oxDAEInstanceMaterial* y) { return x->Equals(y); });
}

}  // namespace

constexpr oxDAEChildRule<oxDAEInstanceGeometry> kInstanceGeometryChildren[] = {
    {oxDAEBindMaterial::s_XMLTag, ReadBindMaterial<oxDAEInstanceGeometry>},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAEInstanceGeometry::Read(oxDAEFile& file) {
  oxDAEInstance::Read(file);
  file.ReadChildren(*this, kInstanceGeometryChildren, s_XMLTag);
}

void oxDAEInstanceGeometry::Write(oxDAEFile& file) {
  oxDAEInstance::Write(file);
  file.writer->EndAttributes();
  if (bindMaterial) file.WriteChild(bindMaterial);
  file.writer->EndElement();
}

bool oxDAEInstanceGeometry::Equals(const oxDAEBaseElement* other) const {
  if (!oxDAEInstance::Equals(other)) return false;
  const oxDAEInstanceGeometry* geometry = oxDAEInstanceGeometry::DynamicCast(other);
  const oxDAEBindMaterial* theirs = geometry ? geometry->bindMaterial : nullptr;
  if (!bindMaterial || !theirs) return bindMaterial == theirs;
  return SameInstanceMaterials(*bindMaterial, *theirs);
}

constexpr oxDAEChildRule<oxDAEInstanceController> kInstanceControllerChildren[] = {
    {"skeleton",
     [](oxDAEInstanceController& c, oxDAEFile& f) {
       oxString text;
       f.reader->ReadTextString(text);
       c.skeletons.emplace_back(OxKernel::oxCharacter::Trim(text));
     }},
    {oxDAEBindMaterial::s_XMLTag, ReadBindMaterial<oxDAEInstanceController>},
};

void oxDAEInstanceController::Read(oxDAEFile& file) {
  oxDAEInstance::Read(file);
  file.ReadChildren(*this, kInstanceControllerChildren, s_XMLTag);
}

void oxDAEInstanceController::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  oxDAEInstance::Write(file);
  w.EndAttributes();
  for (const oxString& skeleton : skeletons)
    w.AddLeafElement("skeleton", skeleton, false);
  if (bindMaterial) file.WriteChild(bindMaterial);
  w.EndElement();
}

int oxDAEInstanceController::UpdateDependencies(oxDAEFile& file, bool beforeWrite) {
  if (beforeWrite) return kDAENothingToDo;
  if (resolved) return 0;
  skeletonNodes.clear();
  for (const oxString& skeleton : skeletons) {
    oxDAENode* node = oxDAENode::DynamicCast(file.ResolveURI(skeleton));
    if (!node) return kDAEUnresolved;
    skeletonNodes.push_back(node);
  }
  // A controller instance is usable without its url: its outcome is not
  // reported.
  oxDAEInstance::UpdateDependencies(file, false);
  resolved = true;
  return 0;
}

// --- <bind_material> -------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEBindMaterial> kBindMaterialChildren[] = {
    {oxDAEParameter::s_XMLTag,
     [](oxDAEBindMaterial& b, oxDAEFile& f) {
       b.params.push_back(f.ReadChild<oxDAEParameter>(&b));
     }},
    {oxDAEBindMaterialTechniqueCommon::s_XMLTag,
     [](oxDAEBindMaterial& b, oxDAEFile& f) {
       b.techniqueCommon = f.ReadChild<oxDAEBindMaterialTechniqueCommon>(&b);
     }},
};

void oxDAEBindMaterial::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kBindMaterialChildren, s_XMLTag);
}

void oxDAEBindMaterial::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->EndAttributes();
  file.WriteChildren(params);
  if (techniqueCommon) file.WriteChild(techniqueCommon);
  file.WriteChildren(techniques);
  file.writer->EndElement();
}

constexpr oxDAEChildRule<oxDAEBindMaterialTechniqueCommon> kBindTechniqueChildren[] = {
    {oxDAEInstanceMaterial::s_XMLTag,
     [](oxDAEBindMaterialTechniqueCommon& t, oxDAEFile& f) {
       t.instanceMaterials.push_back(f.ReadQueuedChild<oxDAEInstanceMaterial>(&t));
     }},
};

void oxDAEBindMaterialTechniqueCommon::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kBindTechniqueChildren, s_XMLTag);
}

void oxDAEBindMaterialTechniqueCommon::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->EndAttributes();
  file.WriteChildren(instanceMaterials);
  file.writer->EndElement();
}

// --- <instance_material> ---------------------------------------------------------

namespace {

// Reads attribute `name` of the current <element> into `value`; a missing
// attribute is an error of the document, which reading survives with the
// value left as it is.
void ReadRequired(const OxKernel::oxXMLReader& reader, std::string_view name,
                  std::string_view element, oxString& value) {
  if (reader.ReadAttributeString(name, value)) return;
  OX_LOG(OxKernel::kLogError,
         OxKernel::oxConcat("attribute '", name, "' is required in <", element, "> element!"));
}

void ReadBind(oxDAEInstanceMaterial& m, oxDAEFile& file) {
  oxString semantic, target;
  ReadRequired(*file.reader, "semantic", "bind", semantic);
  ReadRequired(*file.reader, "target", "bind", target);
  m.bindings.try_emplace(std::move(semantic), std::move(target));
}

void ReadBindVertexInput(oxDAEInstanceMaterial& m, oxDAEFile& file) {
  const OxKernel::oxXMLReader& reader = *file.reader;
  oxString semantic;
  oxDAEInstanceMaterial::VertexInputBinding binding;
  reader.ReadAttributeString("semantic", semantic);
  reader.ReadAttributeString("input_semantic", binding.inputSemantic);
  reader.ReadAttributeUInt("input_set", binding.inputSet);
  m.vertexInputBindings.insert_or_assign(std::move(semantic), std::move(binding));
}

}  // namespace

constexpr oxDAEChildRule<oxDAEInstanceMaterial> kInstanceMaterialChildren[] = {
    {"bind", ReadBind},
    {"bind_vertex_input", ReadBindVertexInput},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAEInstanceMaterial::Read(oxDAEFile& file) {
  ReadRequired(*file.reader, "symbol", s_XMLTag, symbol);
  ReadRequired(*file.reader, "target", s_XMLTag, target);
  file.ReadChildren(*this, kInstanceMaterialChildren, s_XMLTag);
}

void oxDAEInstanceMaterial::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  w.WriteAttributeString("symbol", symbol);
  w.WriteAttributeString("target", target);
  w.EndAttributes();
  oxArray<const oxHash<oxString, oxString>::value_type*> sorted;
  sorted.reserve(bindings.size());
  for (const auto& binding : bindings)
    sorted.push_back(&binding);
  std::sort(sorted.begin(), sorted.end(),
            [](const auto* a, const auto* b) { return a->first < b->first; });
  for (const auto* binding : sorted) {
    w.StartElement("bind");
    w.WriteAttributeString("semantic", binding->first);
    w.WriteAttributeString("target", binding->second);
    w.EndAttributes();
    w.EndElement();
  }
  w.EndElement();
}

int oxDAEInstanceMaterial::UpdateDependencies(oxDAEFile& file, bool beforeWrite) {
  if (beforeWrite) {
    if (material) target = material->ComputeURL(file);
    return 0;
  }
  if (resolved) return 0;
  oxDAEMaterial* found = oxDAEMaterial::DynamicCast(file.ResolveURI(target));
  if (!found) return kDAEUnresolved;
  material = found;
  // Left unresolved on purpose: the next update binds the target again, so
  // a document whose ids changed in between binds to the current element.
  resolved = false;
  return 0;
}

bool oxDAEInstanceMaterial::Equals(const oxDAEBaseElement* other) const {
  const oxDAEInstanceMaterial* m = oxDAEInstanceMaterial::DynamicCast(other);
  return m && m->target == target && m->bindings == bindings &&
         m->vertexInputBindings == vertexInputBindings;
}

const oxString* oxDAEInstanceMaterial::GetBinding(const oxString& semantic) const {
  const auto it = bindings.find(semantic);
  return it == bindings.end() ? nullptr : &it->second;
}

const oxDAEInstanceMaterial::VertexInputBinding* oxDAEInstanceMaterial::GetVertexInputBinding(
    const oxString& semantic) const {
  const auto it = vertexInputBindings.find(semantic);
  return it == vertexInputBindings.end() ? nullptr : &it->second;
}

// --- <visual_scene> --------------------------------------------------------------

constexpr oxDAEChildRule<oxDAEVisualScene> kVisualSceneChildren[] = {
    {oxDAENode::s_XMLTag,
     [](oxDAEVisualScene& s, oxDAEFile& f) { s.nodes.push_back(f.ReadChild<oxDAENode>(&s)); }},
    {oxDAEExtraElement::s_XMLTag, nullptr},
};

void oxDAEVisualScene::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kVisualSceneChildren, s_XMLTag);
}

void oxDAEVisualScene::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  file.WriteChildren(nodes);
  file.writer->EndElement();
}

}  // namespace OxDAEReader
