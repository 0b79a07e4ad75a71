#include "oxDAEReadWrite/oxDAEElements_Instance.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEInstance);
OX_DAE_ELEMENT_DEFINE(oxDAEVisualScene);

std::string_view oxDAEInstance::TagOfKind(EToken kind) {
  switch (kind) {
    case EToken::CAMERA:
      return "instance_camera";
    case EToken::CONTROLLER:
      return "instance_controller";
    case EToken::GEOMETRY:
      return "instance_geometry";
    case EToken::LIGHT:
      return "instance_light";
    case EToken::VISUALSCENE:
      return "instance_visual_scene";
    default:
      return {};
  }
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

}  // namespace OxDAEReader
