#include "oxdaeReport.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace oxdae {

using namespace OxDAEReader;

namespace {

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
    const std::string_view arrayType = source->array ? source->array->GetXMLTag() : "";
    g.sources.push_back({source->id, std::string(arrayType),
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

// The number of node levels under `scene`; 0 without a scene.
uint64_t SceneDepth(const oxDAEVisualScene* scene) {
  if (!scene) return 0;
  uint64_t levels = 0;
  ForEachNode(*scene, [&levels](const oxDAENode&, size_t depth) {
    levels = std::max<uint64_t>(levels, depth + 1);
  });
  return levels;
}

void CountLight(LightCounts& lights, const oxDAELight& light) {
  switch (light.techniqueCommon ? light.techniqueCommon->type : EToken::NONE) {
    case EToken::AMBIENT:
      ++lights.ambient;
      return;
    case EToken::DIRECTIONAL:
      ++lights.directional;
      return;
    case EToken::POINT:
      ++lights.point;
      return;
    case EToken::SPOT:
      ++lights.spot;
      return;
    default:
      ++lights.other;
  }
}

void CountCamera(CameraCounts& cameras, const oxDAECamera& camera) {
  using EType = oxDAEOpticsTechniqueCommon::EType;
  const oxDAEOpticsTechniqueCommon* common =
      camera.optics ? camera.optics->techniqueCommon : nullptr;
  const EType type = common ? common->type : EType::NONE;
  if (type == EType::PERSPECTIVE) {
    ++cameras.perspective;
  } else if (type == EType::ORTHOGRAPHIC) {
    ++cameras.orthographic;
  } else {
    ++cameras.other;
  }
}

// Counts the scene-graph and animation elements, one pass over the document.
void CountElements(Report& report, const oxDAEFile& document) {
  for (const auto& element : document.GetElements()) {
    const oxDAEBaseElement* e = element.get();
    if (oxDAENode::DynamicCast(e)) {
      ++report.nodes;
    } else if (const oxDAELight* light = oxDAELight::DynamicCast(e)) {
      CountLight(report.lights, *light);
    } else if (const oxDAECamera* camera = oxDAECamera::DynamicCast(e)) {
      CountCamera(report.cameras, *camera);
    } else if (oxDAEAnimation::DynamicCast(e)) {
      ++report.animations;
    } else if (const oxDAEChannel* channel = oxDAEChannel::DynamicCast(e)) {
      ++report.channels;
      if (channel->target) ++report.boundChannels;
    } else if (oxDAEAnimationClip::DynamicCast(e)) {
      ++report.clips;
    }
  }
}

// The records listed by the source `input` names: its accessor's count, else
// its array's values; 0 without a source.
uint64_t SourceRecords(const oxDAEInputElement* input) {
  const oxDAESource* source = input ? oxDAESource::DynamicCast(input->source) : nullptr;
  if (!source) return 0;
  if (const oxDAEAccessor* accessor = source->GetAccessor()) return accessor->count;
  return source->array ? source->array->GetValueCount() : 0;
}

// The joints come from <joints>, or from the vertex weights when <joints>
// has no JOINT input.
SkinReport DescribeSkin(const oxDAEController& controller, const oxDAESkin& skin) {
  SkinReport s{controller.id};
  const oxDAEVertexWeights* weights = skin.vertexWeights;
  const oxDAEInputElement* joint = skin.joints ? skin.joints->GetInput("JOINT") : nullptr;
  if (!joint && weights) joint = weights->GetInput("JOINT");
  s.joints = SourceRecords(joint);
  if (weights) {
    s.vertices = weights->count;
    s.maxInfluences = weights->GetMaxInfluenceCount();
  }
  return s;
}

MorphReport DescribeMorph(const oxDAEController& controller, const oxDAEMorph& morph) {
  return {controller.id, SourceRecords(morph.GetInput("MORPH_TARGET")), morph.method};
}

void CountProfile(ProfileCounts& profiles, const oxDAEFxProfile& profile) {
  switch (profile.GetProfileType()) {
    case oxDAEFxProfile::COMMON:
      ++profiles.common;
      return;
    case oxDAEFxProfile::CG:
      ++profiles.cg;
      return;
    case oxDAEFxProfile::GLSL:
      ++profiles.glsl;
      return;
    case oxDAEFxProfile::GLES:
      ++profiles.gles;
      return;
    default:
      return;
  }
}

// Counts the controllers, materials, effects, profiles and images, one pass
// over the document.
void CountShading(Report& report, const oxDAEFile& document) {
  for (const auto& element : document.GetElements()) {
    const oxDAEBaseElement* e = element.get();
    if (const oxDAEController* controller = oxDAEController::DynamicCast(e)) {
      if (controller->skin) report.skins.push_back(DescribeSkin(*controller, *controller->skin));
      if (controller->morph)
        report.morphs.push_back(DescribeMorph(*controller, *controller->morph));
    } else if (oxDAEMaterial::DynamicCast(e)) {
      ++report.materials;
    } else if (oxDAEEffect::DynamicCast(e)) {
      ++report.effects;
    } else if (const oxDAEFxProfile* profile = oxDAEFxProfile::DynamicCast(e)) {
      CountProfile(report.profiles, *profile);
    } else if (oxDAEImage::DynamicCast(e)) {
      ++report.images;
    }
  }
}

// Milliseconds with three decimals.
double Milliseconds(double seconds) {
  return std::round(seconds * 1e6) / 1e3;
}

std::string MillisecondsText(double seconds) {
  char text[64];
  const int n = std::snprintf(text, sizeof text, "%.3f", seconds * 1000.0);
  return std::string(text, n > 0 ? static_cast<size_t>(n) : 0);
}

}  // namespace

KindCounts LightCounts::ByKind() const {
  return {{"ambient", ambient},
          {"directional", directional},
          {"point", point},
          {"spot", spot},
          {"other", other}};
}

KindCounts ProfileCounts::ByKind() const {
  return {{"COMMON", common}, {"CG", cg}, {"GLSL", glsl}, {"GLES", gles}};
}

KindCounts CameraCounts::ByKind() const {
  return {{"perspective", perspective}, {"orthographic", orthographic}, {"other", other}};
}

Report BuildReport(const oxDAEFile& document, const std::string& file) {
  Report report;
  report.file = file;
  report.archiveEntry = document.GetArchiveEntry();
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
  CountElements(report, document);
  CountShading(report, document);
  report.sceneDepth = SceneDepth(DefaultVisualScene(document));
  return report;
}

namespace {

// Appends texts, characters and integers to `out`.
template <class... Parts>
void Put(std::string& out, const Parts&... parts) {
  out += OxKernel::oxConcat(parts...);
}

// "N" alone, or "N (a kind1, b kind2)" naming the kinds that occur.
std::string Breakdown(const KindCounts& kinds) {
  uint64_t total = 0;
  std::string parts;
  for (const auto& [kind, count] : kinds) {
    if (count == 0) continue;
    total += count;
    if (!parts.empty()) parts += ", ";
    Put(parts, count, " ", kind);
  }
  return parts.empty() ? "0" : OxKernel::oxConcat(total, " (", parts, ")");
}

void PutSceneGraph(std::string& out, const Report& r) {
  Put(out, "nodes: ", r.nodes, ", scene depth ", r.sceneDepth, "\n");
  Put(out, "lights: ", Breakdown(r.lights.ByKind()), "\n");
  Put(out, "cameras: ", Breakdown(r.cameras.ByKind()), "\n");
  Put(out, "animations: ", r.animations, ", channels: ", r.boundChannels, " of ", r.channels,
      " bound, clips: ", r.clips, "\n");
}

void PutShading(std::string& out, const Report& r) {
  const KindCounts controllers = {{"skin", r.skins.size()}, {"morph", r.morphs.size()}};
  Put(out, "controllers: ", Breakdown(controllers), "\n");
  for (const SkinReport& s : r.skins) {
    Put(out, "  skin ", s.id.empty() ? "(no id)" : s.id, ": ", s.joints, " joint(s), ", s.vertices,
        " vertices, up to ", s.maxInfluences, " influence(s) per vertex\n");
  }
  for (const MorphReport& m : r.morphs) {
    Put(out, "  morph ", m.id.empty() ? "(no id)" : m.id, ": ", m.targets, " target(s), method ",
        m.method.empty() ? "(none)" : m.method, "\n");
  }
  Put(out, "materials: ", r.materials, "\neffects: ", r.effects,
      ", profiles: ", Breakdown(r.profiles.ByKind()), "\nimages: ", r.images, "\n");
}

}  // namespace

std::string FormatText(const Report& r) {
  std::string out;
  Put(out, "file: ", r.file, "\n");
  if (!r.archiveEntry.empty()) Put(out, "archive entry: ", r.archiveEntry, "\n");
  Put(out, "COLLADA version: ", r.version, "\n");
  if (r.hasAsset) {
    Put(out, "asset:\n  authoring tool: ", JsonLine(r.authoringTool), " (code ",
        r.authoringToolCode, ", version ", r.authoringToolVersion, ")\n");
    Put(out, "  unit: ", r.unitName, " (", NumberText(r.unitMeter), " m)\n  up axis: ", r.upAxis,
        "\n");
  } else {
    Put(out, "asset: none\n");
  }
  Put(out, "libraries:\n");
  for (const LibraryReport& l : r.libraries)
    Put(out, "  ", l.tag, ": ", l.elements, "\n");
  Put(out, "scene: ", r.sceneURL.empty() ? "none" : r.sceneURL, "\n");
  PutSceneGraph(out, r);
  PutShading(out, r);
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
  Put(out, "load time: ", MillisecondsText(r.loadSeconds), " ms\n");
  Put(out, "log: ", r.warnings, " warning(s), ", r.errors, " error(s)\n");
  return out;
}

namespace {

// One member per kind, in the order of `kinds`.
Json KindsJSON(const KindCounts& kinds) {
  Json out = Json::object();
  for (const auto& [kind, count] : kinds)
    out[kind] = count;
  return out;
}

Json GeometryJSON(const GeometryReport& g) {
  Json primitives = Json::array();
  for (const PrimitiveKindReport& p : g.primitives)
    primitives.push_back({{"kind", p.kind}, {"elements", p.elements}, {"count", p.count}});
  Json sources = Json::array();
  for (const SourceReport& s : g.sources) {
    sources.push_back({{"id", s.id},
                       {"arrayType", JsonText(s.arrayType)},
                       {"count", s.count},
                       {"stride", s.stride}});
  }
  return {{"id", g.id},
          {"indexValues", g.indexValues},
          {"primitives", std::move(primitives)},
          {"sources", std::move(sources)}};
}

Json ControllersJSON(const Report& r) {
  Json skins = Json::array();
  for (const SkinReport& s : r.skins) {
    skins.push_back({{"id", s.id},
                     {"joints", s.joints},
                     {"vertices", s.vertices},
                     {"maxInfluences", s.maxInfluences}});
  }
  Json morphs = Json::array();
  for (const MorphReport& m : r.morphs)
    morphs.push_back({{"id", m.id}, {"targets", m.targets}, {"method", JsonText(m.method)}});
  return {{"skins", std::move(skins)}, {"morphs", std::move(morphs)}};
}

}  // namespace

Json FormatJSON(const Report& r) {
  Json out = {{"file", r.file}};
  if (!r.archiveEntry.empty()) out["archiveEntry"] = r.archiveEntry;
  out["version"] = r.version;
  if (r.hasAsset) {
    out["asset"] = {{"authoringTool", r.authoringTool},
                    {"authoringToolCode", r.authoringToolCode},
                    {"authoringToolVersion", r.authoringToolVersion},
                    {"unit", {{"name", r.unitName}, {"meter", JsonNumber(r.unitMeter)}}},
                    {"upAxis", r.upAxis}};
  }
  Json libraries = Json::array();
  for (const LibraryReport& l : r.libraries)
    libraries.push_back({{"tag", l.tag}, {"elements", l.elements}});
  out["libraries"] = std::move(libraries);
  out["scene"] = JsonText(r.sceneURL);
  out["nodes"] = r.nodes;
  out["sceneDepth"] = r.sceneDepth;
  out["lights"] = KindsJSON(r.lights.ByKind());
  out["cameras"] = KindsJSON(r.cameras.ByKind());
  out["animations"] = r.animations;
  out["channels"] = {{"bound", r.boundChannels}, {"total", r.channels}};
  out["clips"] = r.clips;
  out["controllers"] = ControllersJSON(r);
  out["materials"] = r.materials;
  out["effects"] = r.effects;
  out["profiles"] = KindsJSON(r.profiles.ByKind());
  out["images"] = r.images;
  Json geometries = Json::array();
  for (const GeometryReport& g : r.geometries)
    geometries.push_back(GeometryJSON(g));
  out["geometries"] = std::move(geometries);
  out["totalVertices"] = r.totalVertices;
  out["totalIndexValues"] = r.totalIndexValues;
  out["loadMilliseconds"] = Milliseconds(r.loadSeconds);
  out["warnings"] = r.warnings;
  out["errors"] = r.errors;
  return out;
}

}  // namespace oxdae
