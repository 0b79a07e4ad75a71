// The document summary printed by "oxdae info": gathered once from a loaded
// document, printed as text or as one JSON object.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "oxdaeCommon.h"

namespace oxdae {

struct SourceReport {
  std::string id;
  std::string arrayType;  // the array's tag, empty when the source has none
  uint64_t count = 0;     // values held by the array
  uint32_t stride = 0;    // the accessor's stride, 0 without accessor
};

struct PrimitiveKindReport {
  std::string kind;       // "triangles", "polylist", ...
  uint64_t elements = 0;  // primitive elements of this kind
  uint64_t count = 0;     // sum of their "count" attributes
};

struct GeometryReport {
  std::string id;
  std::vector<PrimitiveKindReport> primitives;
  uint64_t indexValues = 0;
  std::vector<SourceReport> sources;
};

struct LibraryReport {
  std::string tag;
  uint64_t elements = 0;
};

// Counts by the name of their kind, in the order the report lists them.
using KindCounts = std::vector<std::pair<const char*, uint64_t>>;

// Lights by the type of their common technique; "other" counts lights
// without one (or of a type the technique does not name).
struct LightCounts {
  uint64_t ambient = 0;
  uint64_t directional = 0;
  uint64_t point = 0;
  uint64_t spot = 0;
  uint64_t other = 0;

  KindCounts ByKind() const;
};

// Cameras by the projection of their optics; "other" counts cameras without
// a common technique or projection.
struct CameraCounts {
  uint64_t perspective = 0;
  uint64_t orthographic = 0;
  uint64_t other = 0;

  KindCounts ByKind() const;
};

// A skin controller: the joints its JOINT source lists, the vertices its
// vertex weights cover ("count") and the most influences on one vertex.
struct SkinReport {
  std::string id;  // the controller's
  uint64_t joints = 0;
  uint64_t vertices = 0;
  uint64_t maxInfluences = 0;
};

// A morph controller: the targets its MORPH_TARGET source lists and its
// "method" as written.
struct MorphReport {
  std::string id;  // the controller's
  uint64_t targets = 0;
  std::string method;
};

// Effect profiles by kind; an effect with two profiles counts in both.
struct ProfileCounts {
  uint64_t common = 0;
  uint64_t cg = 0;
  uint64_t glsl = 0;
  uint64_t gles = 0;

  KindCounts ByKind() const;
};

struct Report {
  std::string file;
  std::string archiveEntry;  // the entry read, for a document from a .zae archive
  std::string version;
  bool hasAsset = false;
  std::string authoringTool;
  unsigned int authoringToolCode = 0;
  std::string authoringToolVersion;
  std::string unitName;
  float unitMeter = 1.0f;
  std::string upAxis;
  std::vector<LibraryReport> libraries;
  std::string sceneURL;     // empty without <scene>
  uint64_t nodes = 0;       // every <node> of the document, library nodes included
  uint64_t sceneDepth = 0;  // node levels of the visual scene "tree" shows by default
  LightCounts lights;
  CameraCounts cameras;
  uint64_t animations = 0;  // nested animations included
  uint64_t channels = 0;
  uint64_t boundChannels = 0;  // channels bound to an animatable value
  uint64_t clips = 0;
  std::vector<SkinReport> skins;
  std::vector<MorphReport> morphs;
  uint64_t materials = 0;
  uint64_t effects = 0;
  ProfileCounts profiles;
  uint64_t images = 0;  // those of the image library and of effect profiles
  std::vector<GeometryReport> geometries;
  uint64_t totalVertices = 0;     // POSITION records of every mesh
  uint64_t totalIndexValues = 0;  // values of every <p> list
  double loadSeconds = 0.0;
  uint64_t warnings = 0;
  uint64_t errors = 0;
};

Report BuildReport(const OxDAEReader::oxDAEFile& document, const std::string& file);
std::string FormatText(const Report& report);
Json FormatJSON(const Report& report);

}  // namespace oxdae
