// The document summary printed by "oxdae info": gathered once from a loaded
// document, printed as text or as one JSON object.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>

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

struct Report {
  std::string file;
  std::string version;
  bool hasAsset = false;
  std::string authoringTool;
  unsigned int authoringToolCode = 0;
  std::string authoringToolVersion;
  std::string unitName;
  float unitMeter = 1.0f;
  std::string upAxis;
  std::vector<LibraryReport> libraries;
  std::string sceneURL;  // empty without <scene>
  std::vector<GeometryReport> geometries;
  uint64_t totalVertices = 0;     // POSITION records of every mesh
  uint64_t totalIndexValues = 0;  // values of every <p> list
  double loadSeconds = 0.0;
  uint64_t warnings = 0;
  uint64_t errors = 0;
};

Report BuildReport(const OxDAEReader::oxDAEFile& document, const std::string& file);
std::string FormatText(const Report& report);
std::string FormatJSON(const Report& report);

}  // namespace oxdae
