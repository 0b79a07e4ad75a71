#include "oxDAEReadWrite/oxDAEElements_Main_Node.h"

#include <algorithm>

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Instance.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement);
OX_DAE_ELEMENT_DEFINE(oxDAENode);

using Hierarchy = oxDAEHierarchyElement;
using OxMath::oxMatrix44;

// --- Hierarchy -------------------------------------------------------------------

namespace {

template <class T>
void ReadTransform(Hierarchy& owner, oxDAEFile& file) {
  auto transform = std::make_unique<T>();
  transform->parent = &owner;
  transform->Read(file);
  owner.transforms.push_back(std::move(transform));
}

constexpr oxDAEChildRule<Hierarchy> kHierarchyChildren[] = {
    {oxDAEExtraElement::s_XMLTag, oxDAEFile::ReadExtraChild<Hierarchy>},
    {oxDAENode::s_XMLTag,
     [](Hierarchy& h, oxDAEFile& f) { h.nodes.push_back(f.ReadChild<oxDAENode>(&h)); }},
    {Hierarchy::RotateElement::s_XMLTag, ReadTransform<Hierarchy::RotateElement>},
    {Hierarchy::ScaleElement::s_XMLTag, ReadTransform<Hierarchy::ScaleElement>},
    {Hierarchy::SkewElement::s_XMLTag, ReadTransform<Hierarchy::SkewElement>},
    {Hierarchy::TranslateElement::s_XMLTag, ReadTransform<Hierarchy::TranslateElement>},
    {Hierarchy::LookAtElement::s_XMLTag, ReadTransform<Hierarchy::LookAtElement>},
    {Hierarchy::MatrixElement::s_XMLTag, ReadTransform<Hierarchy::MatrixElement>},
};

}  // namespace

oxDAEHierarchyElement::oxDAEHierarchyElement() = default;

oxDAEHierarchyElement::~oxDAEHierarchyElement() = default;

bool oxDAEHierarchyElement::ReadChild(oxDAEFile& file) {
  const oxDAEChildRule<Hierarchy>* rule =
      oxDAEFile::FindChildRule(kHierarchyChildren, file.reader->GetTag());
  if (!rule) return false;
  rule->read(*this, file);
  return true;
}

void oxDAEHierarchyElement::WriteTransforms(oxDAEFile& file) {
  for (const auto& transform : transforms)
    file.WriteChild(transform.get());
}

void oxDAEHierarchyElement::WriteChildren(oxDAEFile& file) {
  WriteTransforms(file);
  file.WriteChildren(nodes);
}

bool oxDAEHierarchyElement::HasChild(const oxDAEHierarchyElement* child, bool recursive) const {
  if (!recursive) return std::find(nodes.begin(), nodes.end(), child) != nodes.end();
  // Depth first, in document order, with the nodes still to visit on a stack
  // (the last to visit at the bottom).
  oxArray<const oxDAEHierarchyElement*> pending(nodes.rbegin(), nodes.rend());
  while (!pending.empty()) {
    const oxDAEHierarchyElement* next = pending.back();
    pending.pop_back();
    if (next == child) return true;
    pending.insert(pending.end(), next->nodes.rbegin(), next->nodes.rend());
  }
  return false;
}

// --- <node> ----------------------------------------------------------------------

namespace {

template <class T, class... Args>
void ReadInstance(oxDAENode& node, oxDAEFile& file, Args... args) {
  node.instances.push_back(file.ReadQueuedChild<T>(&node, args...));
}

constexpr oxDAEChildRule<oxDAENode> kNodeInstances[] = {
    {"instance_camera",
     [](oxDAENode& n, oxDAEFile& f) { ReadInstance<oxDAEInstance>(n, f, EToken::CAMERA); }},
    {oxDAEInstanceController::s_XMLTag,
     [](oxDAENode& n, oxDAEFile& f) { ReadInstance<oxDAEInstanceController>(n, f); }},
    {oxDAEInstanceGeometry::s_XMLTag,
     [](oxDAENode& n, oxDAEFile& f) { ReadInstance<oxDAEInstanceGeometry>(n, f); }},
    {"instance_light",
     [](oxDAENode& n, oxDAEFile& f) { ReadInstance<oxDAEInstance>(n, f, EToken::LIGHT); }},
    {"instance_node",
     [](oxDAENode& n, oxDAEFile& f) { ReadInstance<oxDAEInstance>(n, f, EToken::NODE); }},
};

// The token of the "type" attribute; NODE when absent, and NODE with a
// warning for a word that is not a document token.
EToken ReadNodeType(const OxKernel::oxXMLReader& reader) {
  oxString word;
  if (!reader.ReadAttributeString("type", word)) return EToken::NODE;
  const EToken token = oxDAEFile::_GetToken(word);
  if (token != EToken::NONE) return token;
  OX_LOG(OxKernel::kLogWarning, OxKernel::oxConcat("unknown node type '", word, "'"));
  return EToken::NODE;
}

}  // namespace

void oxDAENode::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  AdoptNameAsID(file);
  OxKernel::oxXMLReader& reader = *file.reader;
  type = ReadNodeType(reader);
  reader.EnterChildren();
  while (reader.MoveNext() == 0) {
    if (ReadChild(file)) continue;
    const std::string_view tag = reader.GetTag();
    if (const oxDAEChildRule<oxDAENode>* rule = oxDAEFile::FindChildRule(kNodeInstances, tag)) {
      rule->read(*this, file);
    } else {
      UnknownTagWarning(tag, s_XMLTag);
    }
  }
  reader.LeaveChildren();
}

void oxDAENode::WriteOpening(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  WriteStart(file, s_XMLTag);
  if (!sid.empty()) w.WriteAttributeString("sid", sid);
  const oxString& typeWord = oxDAEFile::_GetTokenString(type);
  if (!typeWord.empty()) w.WriteAttributeString("type", typeWord);
  w.EndAttributes();
  file.WriteChildren(instances);
  WriteTransforms(file);
}

void oxDAENode::Write(oxDAEFile& file) {
  // Each open node with the index of its next child node and the writer's
  // depth before it was started, to which it is closed.
  struct OpenNode {
    const oxDAENode* node;
    size_t nextChild;
    unsigned int depth;
  };
  oxArray<OpenNode> open;
  open.push_back({this, 0, file.writer->GetDepth()});
  WriteOpening(file);
  while (!open.empty()) {
    OpenNode& top = open.back();
    if (top.nextChild == top.node->nodes.size()) {
      file.writer->CloseTo(top.depth);
      open.pop_back();
      continue;
    }
    oxDAENode* child = top.node->nodes[top.nextChild++];
    open.push_back({child, 0, file.writer->GetDepth()});
    child->WriteOpening(file);
  }
}

oxMatrix44 oxDAENode::ComputeLocalMatrix() const {
  oxMatrix44 result = oxMatrix44::kIdentity;
  for (const auto& transform : transforms)
    result.MultiplyAB(result, transform->GetTransformMatrix());
  return result;
}

oxMatrix44 oxDAENode::ComputeLocalMatrix(float time, const oxDAEAnimation* animation) const {
  oxMatrix44 result = oxMatrix44::kIdentity;
  for (const auto& transform : transforms)
    result.MultiplyAB(result, transform->GetTransformMatrix(time, animation));
  return result;
}

}  // namespace OxDAEReader
