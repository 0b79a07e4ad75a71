#include "oxDAEReadWrite/oxDAEElements_Animation_Controller.h"

#include <algorithm>
#include <charconv>
#include <string>

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Main_Geometry.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEController);
OX_DAE_ELEMENT_DEFINE(oxDAESkin);
OX_DAE_ELEMENT_DEFINE(oxDAEJoints);
OX_DAE_ELEMENT_DEFINE(oxDAEVertexWeights);
OX_DAE_ELEMENT_DEFINE(oxDAEMorph);

using OxKernel::kLogError;
using OxKernel::kLogWarning;

namespace {

template <class Owner>
void ReadInput(Owner& owner, oxDAEFile& file) {
  owner.inputs.push_back(file.ReadChild<oxDAEInputElement>(&owner));
}

template <class Owner>
void ReadSource(Owner& owner, oxDAEFile& file) {
  owner.sources.push_back(file.ReadChild<oxDAESource>(&owner));
}

}  // namespace

// --- <controller> ----------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAEController> kControllerChildren[] = {
    {oxDAESkin::s_XMLTag,
     [](oxDAEController& c, oxDAEFile& f) { c.skin = f.ReadQueuedChild<oxDAESkin>(&c); }},
    {oxDAEMorph::s_XMLTag,
     [](oxDAEController& c, oxDAEFile& f) { c.morph = f.ReadQueuedChild<oxDAEMorph>(&c); }},
};

}  // namespace

void oxDAEController::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kControllerChildren, s_XMLTag);
}

void oxDAEController::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  if (skin) file.WriteChild(skin);
  file.writer->EndElement();
}

// --- <skin> ----------------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAESkin> kSkinChildren[] = {
    {"bind_shape_matrix",
     [](oxDAESkin& s, oxDAEFile& f) {
       oxDAEFile::ReadMatrix44Value(f.reader.Get(), s.bindShapeMatrix);
     }},
    {oxDAESource::s_XMLTag, ReadSource<oxDAESkin>},
    {oxDAEJoints::s_XMLTag,
     [](oxDAESkin& s, oxDAEFile& f) { s.joints = f.ReadChild<oxDAEJoints>(&s); }},
    {oxDAEVertexWeights::s_XMLTag,
     [](oxDAESkin& s, oxDAEFile& f) { s.vertexWeights = f.ReadChild<oxDAEVertexWeights>(&s); }},
};

}  // namespace

void oxDAESkin::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.reader->ReadAttributeString("source", source);
  file.ReadChildren(*this, kSkinChildren, s_XMLTag);
}

void oxDAESkin::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  const oxString reference = sourceGeometry ? "#" + sourceGeometry->id : oxString("#problem");
  file.writer->WriteAttributeString("source", reference);
  file.writer->EndAttributes();
  file.WriteChildren(sources);
  if (joints) file.WriteChild(joints);
  if (vertexWeights) file.WriteChild(vertexWeights);
  file.writer->EndElement();
}

int oxDAESkin::UpdateDependencies(oxDAEFile& file, bool beforeWrite) {
  if (beforeWrite) return kDAEUnresolved;
  // Only the named controller's own morph is taken, never what its skin
  // leads to, so skins that name each other cannot send this round a loop.
  oxDAEBaseElement* named = file.ResolveURI(source);
  sourceGeometry = oxDAEGeometry::DynamicCast(named);
  const oxDAEController* controller = oxDAEController::DynamicCast(named);
  sourceMorph = controller ? controller->morph : nullptr;
  if (sourceGeometry || sourceMorph) return 0;
  OX_LOG(kLogError, "cannot find skin's source geometry");
  return kDAEUnresolved;
}

// --- <joints> --------------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAEJoints> kJointsChildren[] = {
    {oxDAEInputElement::s_XMLTag, ReadInput<oxDAEJoints>},
};

}  // namespace

void oxDAEJoints::Read(oxDAEFile& file) {
  file.ReadChildren(*this, kJointsChildren, s_XMLTag);
}

void oxDAEJoints::Write(oxDAEFile& file) {
  file.writer->StartElement(s_XMLTag);
  file.writer->EndAttributes();
  file.WriteChildren(inputs);
  file.writer->EndElement();
}

oxDAEInputElement* oxDAEJoints::GetInput(const oxString& semantic) const {
  return oxDAEInputElement::FindBySemantic(inputs, semantic);
}

// --- <vertex_weights> ------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAEVertexWeights> kVertexWeightsChildren[] = {
    {oxDAEInputElement::s_XMLTag, ReadInput<oxDAEVertexWeights>},
    {"vcount",
     [](oxDAEVertexWeights& w, oxDAEFile& f) {
       w.vcount.clear();
       f.ReadIntList(w.vcount, w.count);
     }},
    {"v",
     [](oxDAEVertexWeights& w, oxDAEFile& f) {
       w.v.clear();
       f.ReadIntList(w.v);
     }},
};

// Writes `values` as the text of a leaf element `tag`.
void WriteUIntList(OxKernel::oxXMLWriter& writer, std::string_view tag,
                   const oxArray<uint32_t>& values) {
  std::string text;
  text.reserve(values.size() * 4);
  char digits[16];
  for (uint32_t value : values) {
    if (!text.empty()) text += ' ';
    const std::to_chars_result r = std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, r.ptr);
  }
  writer.StartElement(tag);
  writer.EndAttributes();
  writer.GetTextWriter()->WriteText(text);
  writer.EndElement();
}

}  // namespace

void oxDAEVertexWeights::Read(oxDAEFile& file) {
  file.reader->ReadAttributeUInt("count", count);
  file.ReadChildren(*this, kVertexWeightsChildren, s_XMLTag);
}

void oxDAEVertexWeights::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(s_XMLTag);
  w.WriteAttributeUInt("count", count);
  w.EndAttributes();
  file.WriteChildren(inputs);
  WriteUIntList(w, "vcount", vcount);
  w.StartElement("v");
  w.EndAttributes();
  w.GetTextWriter()->WriteInts(v.data(), static_cast<unsigned int>(v.size()), 0);
  w.EndElement();
  w.EndElement();
}

oxDAEInputElement* oxDAEVertexWeights::GetInput(const oxString& semantic) const {
  return oxDAEInputElement::FindBySemantic(inputs, semantic);
}

uint32_t oxDAEVertexWeights::GetMaxInfluenceCount() const {
  return vcount.empty() ? 0 : *std::max_element(vcount.begin(), vcount.end());
}

namespace {

// The records of an input's source: where record i starts in the array's
// values, checked against the values held. Without an accessor the array is
// read one value per record.
struct SourceRecords {
  const oxDAEArray* array = nullptr;
  uint64_t offset = 0;
  uint64_t stride = 1;
  uint64_t values = 0;

  // The position of record `i`'s first value, or -1 when the record does not
  // lie inside the array.
  int64_t Start(int64_t i) const {
    if (i < 0) return -1;
    const uint64_t start = (offset + static_cast<uint64_t>(i)) * stride;
    return start + stride <= values ? static_cast<int64_t>(start) : -1;
  }
};

// False when the input is missing or its source is not a <source> with an
// array.
bool RecordsOf(const oxDAEInputElement* input, SourceRecords& records) {
  const oxDAESource* source = input ? oxDAESource::DynamicCast(input->source) : nullptr;
  if (!source || !source->array) return false;
  records.array = source->array;
  records.values = source->array->GetValueCount();
  if (const oxDAEAccessor* accessor = source->GetAccessor()) {
    records.offset = accessor->offset;
    records.stride = std::max<uint64_t>(accessor->stride, 1);
  }
  return true;
}

// The number of integers of an influence group: the largest input offset + 1.
uint64_t GroupSize(const oxArray<oxDAEInputElement*>& inputs) {
  uint64_t size = 0;
  for (const oxDAEInputElement* input : inputs)
    size = std::max<uint64_t>(size, uint64_t{input->offset} + 1);
  return size;
}

}  // namespace

int oxDAEVertexWeights::GetInfluences(oxArray<Influence>& influences,
                                      oxArray<size_t>& first) const {
  influences.clear();
  first.clear();
  const oxDAEInputElement* jointInput = GetInput("JOINT");
  const oxDAEInputElement* weightInput = GetInput("WEIGHT");
  SourceRecords joints;
  SourceRecords weights;
  if (!RecordsOf(jointInput, joints) || !RecordsOf(weightInput, weights) ||
      weights.array->type != oxDAEArray::EValueType::FLOAT)
    return kDAENoValue;
  const uint64_t groupSize = GroupSize(inputs);
  influences.reserve(v.size() / groupSize);
  first.reserve(vcount.size() + 1);
  uint64_t outOfRange = 0;
  uint64_t next = 0;  // the first integer of the next group
  size_t vertex = 0;
  for (; vertex < vcount.size(); ++vertex) {
    if (next + vcount[vertex] * groupSize > v.size()) break;
    first.push_back(influences.size());
    for (uint32_t k = 0; k < vcount[vertex]; ++k, next += groupSize) {
      const int32_t joint = v[next + jointInput->offset];
      const int64_t weight = weights.Start(v[next + weightInput->offset]);
      if (weight < 0 || (joint != -1 && joints.Start(joint) < 0)) {
        ++outOfRange;
        influences.push_back({});
        continue;
      }
      influences.push_back({joint, weights.array->floats[static_cast<size_t>(weight)]});
    }
  }
  first.push_back(influences.size());
  if (vertex < vcount.size()) {
    OX_LOG(kLogWarning, OxKernel::oxConcat("<vertex_weights> vertex ", vertex,
                                           " runs past <v>; it and the vertices after it are "
                                           "left out"));
  }
  if (outOfRange != 0) {
    OX_LOG(kLogWarning, OxKernel::oxConcat("<vertex_weights> ", outOfRange,
                                           " influences index past the JOINT or WEIGHT source "
                                           "and read as joint -1, weight 0"));
  }
  return vertex < vcount.size() || outOfRange != 0 ? kDAEUnresolved : 0;
}

// --- <morph> ---------------------------------------------------------------------

namespace {

// Reads the <input>s of <targets>; anything else in it is reported against
// the morph.
constexpr oxDAEChildRule<oxDAEMorph> kTargetsChildren[] = {
    {oxDAEInputElement::s_XMLTag,
     [](oxDAEMorph& m, oxDAEFile& f) {
       m.targetInputs.push_back(f.ReadChild<oxDAEInputElement>(&m));
     }},
};

constexpr oxDAEChildRule<oxDAEMorph> kMorphChildren[] = {
    {oxDAESource::s_XMLTag, ReadSource<oxDAEMorph>},
    {"targets", [](oxDAEMorph& m,
                   oxDAEFile& f) { f.ReadChildren(m, kTargetsChildren, oxDAEMorph::s_XMLTag); }},
};

}  // namespace

void oxDAEMorph::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  oxString base;
  file.reader->ReadAttributeString("source", base);
  sourceGeometry = oxDAEGeometry::DynamicCast(file.ResolveURI(base));
  file.reader->ReadAttributeString("method", method);
  file.ReadChildren(*this, kMorphChildren, s_XMLTag);
  SetUpWeightsTarget(file);
}

void oxDAEMorph::Write(oxDAEFile&) {}

void oxDAEMorph::SetUpWeightsTarget(oxDAEFile& file) {
  const oxDAEInputElement* input = GetInput("MORPH_WEIGHT");
  const oxDAESource* weights = input ? oxDAESource::DynamicCast(input->source) : nullptr;
  if (!weights) return;
  weightsTarget.SetQualifier(weights->id);
  weightsTarget.SetContainerParent(this);
  weightsTarget.SetChannelCount(weights->array ? weights->array->GetValueCount() : 0);
  weightsTarget.Register(file);
}

oxDAEInputElement* oxDAEMorph::GetInput(const oxString& semantic) const {
  return oxDAEInputElement::FindBySemantic(targetInputs, semantic);
}

}  // namespace OxDAEReader
