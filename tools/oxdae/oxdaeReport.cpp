#include "oxdaeReport.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace oxdae {

using namespace OxDAEReader;

namespace {

// The tag the array was written as: the class tag of a typed array, or
// "array" for the generic one.
std::string_view ArrayTypeOf(const oxDAEArray* array) {
  if (!array) return {};
  if (oxDAEFloatArray::DynamicCast(array)) return oxDAEFloatArray::s_XMLTag;
  if (oxDAEIntArray::DynamicCast(array)) return oxDAEIntArray::s_XMLTag;
  if (oxDAEBoolArray::DynamicCast(array)) return oxDAEBoolArray::s_XMLTag;
  if (oxDAENameArray::DynamicCast(array)) return oxDAENameArray::s_XMLTag;
  return oxDAEArray::s_XMLTag;
}

uint64_t PositionRecords(const oxDAEMesh& mesh) {
  if (!mesh.vertices) return 0;
  const oxDAEInputElement* position = mesh.vertices->GetInput("POSITION");
  const oxDAEAccessor* accessor = position ? position->GetCommonAccessor() : nullptr;
  return accessor ? accessor->count : 0;
}

GeometryReport DescribeGeometry(const oxDAEGeometry& geometry) {
  GeometryReport g;
  g.id = geometry.id;
  if (!geometry.mesh) return g;
  for (const oxDAESource* source : geometry.mesh->sources) {
    const oxDAEAccessor* accessor = source->GetAccessor();
    g.sources.push_back({source->id, std::string(ArrayTypeOf(source->array)),
                         source->array ? source->array->count : 0u,
                         accessor ? accessor->stride : 0u});
  }
  for (const oxDAEMeshPrimitive* primitive : geometry.mesh->primitives) {
    const std::string kind(oxDAEMeshPrimitive::kTags[static_cast<int>(primitive->type)]);
    auto it = std::find_if(g.primitives.begin(), g.primitives.end(),
                           [&kind](const PrimitiveKindReport& k) { return k.kind == kind; });
    if (it == g.primitives.end()) it = g.primitives.insert(g.primitives.end(), {kind, 0, 0});
    ++it->elements;
    it->count += primitive->count;
    g.indexValues += primitive->GetIndexCount();
  }
  return g;
}

void AddGeometries(Report& report, const oxDAELibrary& library) {
  for (const oxDAEElement* child : library.children) {
    const oxDAEGeometry* geometry = oxDAEGeometry::DynamicCast(child);
    if (!geometry) continue;
    report.geometries.push_back(DescribeGeometry(*geometry));
    report.totalIndexValues += report.geometries.back().indexValues;
    if (geometry->mesh) report.totalVertices += PositionRecords(*geometry->mesh);
  }
}

std::string Number(double value) {
  char buf[64];
  const int n = std::snprintf(buf, sizeof buf, "%.3f", value);
  return std::string(buf, n > 0 ? static_cast<size_t>(n) : 0);
}

std::string Number(float value) {
  char buf[32];
  return std::string(buf,
                     static_cast<size_t>(std::to_chars(buf, buf + sizeof buf, value).ptr - buf));
}

std::string Quoted(const std::string& text) {
  std::string out(1, '"');
  for (const unsigned char c : text) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c < 0x20) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", c);
          out += buf;
        } else {
          out += static_cast<char>(c);
        }
    }
  }
  out += '"';
  return out;
}

}  // namespace

Report BuildReport(const oxDAEFile& document, const std::string& file) {
  Report report;
  report.file = file;
  const oxDAEColladaElement* root = document.GetRoot();
  if (!root) return report;
  report.version = root->version.ToString();
  if (const oxDAEAssetElement* asset = root->asset) {
    report.hasAsset = true;
    report.authoringTool = asset->authoringTool;
    report.authoringToolCode = static_cast<unsigned int>(asset->GetAuthoringTool());
    report.authoringToolVersion = asset->GetAuthoringToolVersion().ToString();
    report.unitName = asset->unitName;
    report.unitMeter = asset->unitMeter;
    report.upAxis = asset->upAxis;
  }
  for (const oxDAELibrary* library : root->libraries) {
    report.libraries.push_back({library->type, library->children.size()});
    AddGeometries(report, *library);
  }
  if (root->scene && root->scene->instanceVisualScene)
    report.sceneURL = root->scene->instanceVisualScene->url;
  return report;
}

namespace {

// Appends texts, characters and integers to `out`.
template <class... Parts>
void Put(std::string& out, const Parts&... parts) {
  out += OxKernel::oxConcat(parts...);
}

template <class Items, class Each>
void PutList(std::string& out, const Items& items, Each&& each) {
  for (size_t i = 0; i < items.size(); ++i) {
    if (i) out += ',';
    each(items[i]);
  }
}

std::string OrNull(const std::string& text) {
  return text.empty() ? "null" : Quoted(text);
}

}  // namespace

std::string FormatText(const Report& r) {
  std::string out;
  Put(out, "file: ", r.file, "\nCOLLADA version: ", r.version, "\n");
  if (r.hasAsset) {
    Put(out, "asset:\n  authoring tool: ", Quoted(r.authoringTool), " (code ", r.authoringToolCode,
        ", version ", r.authoringToolVersion, ")\n");
    Put(out, "  unit: ", r.unitName, " (", Number(r.unitMeter), " m)\n  up axis: ", r.upAxis, "\n");
  } else {
    Put(out, "asset: none\n");
  }
  Put(out, "libraries:\n");
  for (const LibraryReport& l : r.libraries)
    Put(out, "  ", l.tag, ": ", l.elements, "\n");
  Put(out, "scene: ", r.sceneURL.empty() ? "none" : r.sceneURL, "\n");
  if (!r.geometries.empty()) Put(out, "geometries:\n");
  for (const GeometryReport& g : r.geometries) {
    Put(out, "  ", g.id, ": ", g.indexValues, " index values\n");
    for (const PrimitiveKindReport& p : g.primitives) {
      Put(out, "    ", p.kind, ": ", p.elements, " element(s), count ", p.count, "\n");
    }
    for (const SourceReport& s : g.sources) {
      Put(out, "    source ", s.id, ": ", s.arrayType.empty() ? "no array" : s.arrayType, " of ",
          s.count, ", stride ", s.stride, "\n");
    }
  }
  Put(out, "total: ", r.totalVertices, " vertices, ", r.totalIndexValues, " index values\n");
  Put(out, "load time: ", Number(r.loadSeconds * 1000.0), " ms\n");
  Put(out, "log: ", r.warnings, " warning(s), ", r.errors, " error(s)\n");
  return out;
}

std::string FormatJSON(const Report& r) {
  std::string out;
  Put(out, "{\"file\":", Quoted(r.file), ",\"version\":", Quoted(r.version));
  if (r.hasAsset) {
    Put(out, ",\"asset\":{\"authoringTool\":", Quoted(r.authoringTool),
        ",\"authoringToolCode\":", r.authoringToolCode,
        ",\"authoringToolVersion\":", Quoted(r.authoringToolVersion),
        ",\"unit\":{\"name\":", Quoted(r.unitName), ",\"meter\":", Number(r.unitMeter),
        "},\"upAxis\":", Quoted(r.upAxis), "}");
  }
  Put(out, ",\"libraries\":[");
  PutList(out, r.libraries, [&out](const LibraryReport& l) {
    Put(out, "{\"tag\":", Quoted(l.tag), ",\"elements\":", l.elements, "}");
  });
  Put(out, "],\"scene\":", OrNull(r.sceneURL), ",\"geometries\":[");
  PutList(out, r.geometries, [&out](const GeometryReport& g) {
    Put(out, "{\"id\":", Quoted(g.id), ",\"indexValues\":", g.indexValues, ",\"primitives\":[");
    PutList(out, g.primitives, [&out](const PrimitiveKindReport& p) {
      Put(out, "{\"kind\":", Quoted(p.kind), ",\"elements\":", p.elements, ",\"count\":", p.count,
          "}");
    });
    Put(out, "],\"sources\":[");
    PutList(out, g.sources, [&out](const SourceReport& s) {
      Put(out, "{\"id\":", Quoted(s.id), ",\"arrayType\":", OrNull(s.arrayType),
          ",\"count\":", s.count, ",\"stride\":", s.stride, "}");
    });
    Put(out, "]}");
  });
  Put(out, "],\"totalVertices\":", r.totalVertices, ",\"totalIndexValues\":", r.totalIndexValues,
      ",\"loadMilliseconds\":", Number(r.loadSeconds * 1000.0), ",\"warnings\":", r.warnings,
      ",\"errors\":", r.errors, "}\n");
  return out;
}

}  // namespace oxdae
