#include "oxDAEReadWrite/oxDAEElements_Animation.h"

#include <algorithm>

#include <oxKernel/oxLog.h>
#include <oxKernel/oxVariant.h>

#include "oxDAEReadWrite/oxDAEElements_Animation_Target.h"
#include "oxDAEReadWrite/oxDAEElements_Instance.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Geometry.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEAnimation);
OX_DAE_ELEMENT_DEFINE(oxDAESampler);
OX_DAE_ELEMENT_DEFINE(oxDAEChannel);
OX_DAE_ELEMENT_DEFINE(oxDAEAnimationClip);

using OxKernel::kLogError;
using OxMath::oxKeyframeController;

// --- <animation> ---------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAEAnimation> kAnimationChildren[] = {
    {oxDAESource::s_XMLTag,
     [](oxDAEAnimation& a, oxDAEFile& f) { a.sources.push_back(f.ReadChild<oxDAESource>(&a)); }},
    {oxDAESampler::s_XMLTag,
     [](oxDAEAnimation& a, oxDAEFile& f) {
       a.samplers.push_back(f.ReadQueuedChild<oxDAESampler>(&a));
     }},
    {oxDAEChannel::s_XMLTag,
     [](oxDAEAnimation& a, oxDAEFile& f) {
       a.channels.push_back(f.ReadQueuedChild<oxDAEChannel>(&a));
     }},
    {oxDAEAnimation::s_XMLTag,
     [](oxDAEAnimation& a, oxDAEFile& f) {
       oxDAEAnimation* child = f.ReadChild<oxDAEAnimation>(&a);
       child->parentAnimation = &a;
       a.animations.push_back(child);
     }},
};

}  // namespace

void oxDAEAnimation::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  // The name stands in for a missing id, even an empty one: the animation is
  // then entered in the id registry under whatever the name gives.
  if (id.empty()) {
    id = name;
    file._RegisterElementID(this);
  }
  file.ReadChildren(*this, kAnimationChildren, s_XMLTag);
}

void oxDAEAnimation::Write(oxDAEFile& file) {
  WriteStart(file, s_XMLTag);
  file.writer->EndAttributes();
  file.WriteChildren(sources);
  file.WriteChildren(samplers);
  file.WriteChildren(channels);
  file.WriteChildren(animations);
  file.writer->EndElement();
}

// --- <sampler> -----------------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAESampler> kSamplerChildren[] = {
    {oxDAEInputElement::s_XMLTag,
     [](oxDAESampler& s, oxDAEFile& f) { s.inputs.push_back(f.ReadChild<oxDAEInputElement>(&s)); }},
};

// The host type of a key value of `stride` floats; null for strides that
// have no controller. A stride of 0 (no "stride" attribute) counts as 1, as
// it does for the accessor's float getter.
const char* ValueTypeName(uint32_t stride) {
  switch (stride) {
    case 0:
    case 1:
      return "float";
    case 2:
      return "oxVec2";
    case 3:
      return "oxVec3";
    case 4:
      return "oxVec4";
    case 16:
      return "oxMatrix44";
    default:
      return nullptr;
  }
}

oxDAEAccessor* AccessorOf(const oxDAESampler& sampler, const char* semantic) {
  const oxDAEInputElement* input = sampler.GetInput(semantic);
  return input ? input->GetCommonAccessor() : nullptr;
}

// The float array behind the input's accessor, or null when the input has
// no accessor or the accessor's array does not hold floats.
const oxDAEArray* FloatArrayOf(const oxDAEInputElement& input) {
  const oxDAEAccessor* accessor = input.GetCommonAccessor();
  const oxDAEArray* array = accessor ? accessor->source : nullptr;
  return array && array->type == oxDAEArray::EValueType::FLOAT ? array : nullptr;
}

// The INPUT accessor's count, lowered to the number of floats its array
// holds: each key needs a time, and memory stays proportional to the input.
unsigned int KeyCount(const oxDAEAccessor& times) {
  const size_t held = times.source ? times.source->floats.size() : 0;
  if (times.count <= held) return times.count;
  OX_LOG(kLogError, OxKernel::oxConcat("<sampler> INPUT count ", times.count,
                                       " is larger than its array holds; keeping ", held, " keys"));
  return static_cast<unsigned int>(held);
}

// Writes each key's time and value. A value that would lie past the OUTPUT
// array is left zero.
void FillKeys(oxKeyframeController& controller, const oxDAEAccessor& times,
              const oxDAEAccessor& values) {
  const unsigned int width = controller.GetValueSize();
  const unsigned int keySize = controller.GetKeySize();
  const size_t held = values.source ? values.source->floats.size() : 0;
  for (unsigned int i = 0; i < controller.GetKeysCount(); ++i) {
    float* key = controller.GetKeyBase() + size_t{i} * keySize;
    key[width] = times.GetFloatValue(i);
    if (width == 1) {
      key[0] = values.GetFloatValue(i);
      continue;
    }
    const uint64_t first = (uint64_t{values.offset} + i) * values.stride;
    if (first + width <= held) std::copy_n(values.source->floats.data() + first, width, key);
  }
}

// Writes a sampler input as the local input it is: the semantic text as
// read (INTERPOLATION and the tangents are no document tokens) and the
// source's reference, or the text read when it did not resolve.
void WriteLocalInput(oxDAEFile& file, const oxDAEInputElement& input) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(oxDAEInputElement::s_XMLTag);
  w.WriteAttributeString("semantic", input.semantic);
  if (const oxString reference = input.GetSourceReference(file); !reference.empty())
    w.WriteAttributeString("source", reference);
  w.EndAttributes();
  w.EndElement();
}

}  // namespace

void oxDAESampler::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.ReadChildren(*this, kSamplerChildren, s_XMLTag);
  BuildController(file);
}

void oxDAESampler::BuildController(oxDAEFile& file) {
  const oxDAEAccessor* times = AccessorOf(*this, "INPUT");
  const oxDAEAccessor* values = AccessorOf(*this, "OUTPUT");
  if (!times || !values || !AccessorOf(*this, "INTERPOLATION")) return;
  const char* typeName = ValueTypeName(values->stride);
  if (!typeName) return;
  const OxKernel::oxType* type =
      OxKernel::oxTypeManager::Instance(file.GetContextID()).FindType(typeName);
  OxKernel::oxRefPtr<oxKeyframeController> made =
      oxKeyframeController::CreateController(oxKeyframeController::LINEAR, type, nullptr);
  if (!made) return;
  made->SetKeysCount(KeyCount(*times));
  // Keys of two-float values are counted but not filled.
  if (values->stride != 2) FillKeys(*made, *times, *values);
  controller = std::move(made);
}

void oxDAESampler::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  WriteStart(file, s_XMLTag);
  w.EndAttributes();
  for (const oxDAEInputElement* input : inputs)
    WriteLocalInput(file, *input);
  w.EndElement();
}

oxDAEInputElement* oxDAESampler::GetInput(const oxString& semantic) const {
  return oxDAEInputElement::FindBySemantic(inputs, semantic);
}

int oxDAESampler::GetFloatValue(float time, unsigned int count, float* out) const {
  if (!controller) return SampleExactKey(time, count, out);
  // The controller writes a whole value; only what the caller asked for,
  // and what the value holds, reaches `out`.
  float value[16] = {};
  const unsigned int n = std::min(count, controller->GetValueSize());
  std::copy_n(out, n, value);
  controller->Evaluate(time, value);
  std::copy_n(value, n, out);
  return 0;
}

int oxDAESampler::SampleExactKey(float time, unsigned int count, float* out) const {
  const oxDAEInputElement* input = GetInput("INPUT");
  const oxDAEInputElement* output = GetInput("OUTPUT");
  if (!input || !output || !input->source || !output->source) {
    OX_LOG(kLogError, "invalid sampler");
    return kDAENoValue;
  }
  const oxDAEArray* times = FloatArrayOf(*input);
  if (!times) {
    OX_LOG(kLogError, "invalid input data type");
    return kDAENoValue;
  }
  const oxDAEArray* values = FloatArrayOf(*output);
  if (!values) {
    OX_LOG(kLogError, "invalid output data type");
    return kDAENoValue;
  }
  const auto found = std::find(times->floats.begin(), times->floats.end(), time);
  if (found == times->floats.end()) {
    OX_LOG(kLogError, "sampling time not found");
    return kDAENoValue;
  }
  const uint64_t first = static_cast<uint64_t>(found - times->floats.begin()) * count;
  if (first + count > values->floats.size()) {
    OX_LOG(kLogError, "sampled value lies past the OUTPUT array");
    return kDAENoValue;
  }
  std::copy_n(values->floats.data() + first, count, out);
  return 0;
}

// --- <channel> -----------------------------------------------------------------

void oxDAEChannel::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.reader->ReadAttributeString("source", source);
  file.reader->ReadAttributeString("target", targetPath);
}

int oxDAEChannel::UpdateDependencies(oxDAEFile& file, bool beforeWrite) {
  if (beforeWrite) {
    if (sampler) source = sampler->ComputeURL(file);
    return 0;
  }
  sampler = oxDAESampler::DynamicCast(file.ResolveURI(source));
  target = file.ResolveAnimationTargetPath(targetPath);
  if (!sampler || !target) return kDAEUnresolved;
  // A channel bound a second time is not listed twice.
  const auto& bound = target->GetChannels();
  if (std::find(bound.begin(), bound.end(), this) == bound.end()) target->AddChannel(this);
  return 0;
}

oxString oxDAEChannel::GetWrittenTargetPath() const {
  if (!target) return targetPath;
  const auto* array = oxDAEChannelTargetFloatArray::DynamicCast(target->GetTargetParent());
  oxString path;
  if (!array) {
    path = target->GetPath();
  } else if (const int index = array->GetChannelIndex(target); index >= 0) {
    // Float-array members have no names: they are reached by index.
    path = OxKernel::oxConcat(array->GetPath(), '(', index, ')');
  }
  return path.empty() ? targetPath : path;
}

void oxDAEChannel::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  WriteStart(file, s_XMLTag);
  const oxString reference = sampler ? sampler->ComputeURL(file) : source;
  if (!reference.empty()) w.WriteAttributeString("source", reference);
  const oxString path = GetWrittenTargetPath();
  if (!path.empty()) w.WriteAttributeString("target", path);
  w.EndAttributes();
  w.EndElement();
}

// --- <animation_clip> ----------------------------------------------------------

namespace {

constexpr oxDAEChildRule<oxDAEAnimationClip> kClipChildren[] = {
    {"instance_animation",
     [](oxDAEAnimationClip& c, oxDAEFile& f) {
       c.instances.push_back(f.ReadQueuedChild<oxDAEInstance>(&c, EToken::ANIMATION));
     }},
    {oxDAEAssetElement::s_XMLTag, nullptr},
    {oxDAEExtraElement::s_XMLTag,
     [](oxDAEAnimationClip&, oxDAEFile&) {
       oxDAEBaseElement::UnsupportedExtraWarning(oxDAEAnimationClip::s_XMLTag);
     }},
};

}  // namespace

void oxDAEAnimationClip::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  file.reader->ReadAttributeDouble("start", start);
  file.reader->ReadAttributeDouble("end", end);
  file.ReadChildren(*this, kClipChildren, s_XMLTag);
}

void oxDAEAnimationClip::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  WriteStart(file, s_XMLTag);
  if (start != 0.0) w.WriteAttributeDouble("start", start);
  if (end != 0.0) w.WriteAttributeDouble("end", end);
  w.EndAttributes();
  for (const oxDAEInstance* instance : instances) {
    w.StartElement("instance_animation");
    w.WriteAttributeString("url", instance->url);
    w.EndAttributes();
    w.EndElement();
  }
  w.EndElement();
}

}  // namespace OxDAEReader
