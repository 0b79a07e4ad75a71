#include "oxDAEConvert/oxDAEGltf.h"

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxArchive.h>
#include <oxKernel/oxLog.h>

#include <oxDAEConvert/oxDAESkinning.h>

#include "oxDAEGltfAnimation.h"
#include "oxDAEGltfCommon.h"
#include "oxDAEGltfMaterial.h"
#include "oxDAEGltfMesh.h"
#include "oxDAEGltfTransform.h"
#include "oxGltfBuilder.h"

namespace OxDAEConvert {

using namespace OxDAEReader;
using OxKernel::oxConcat;

namespace {

// Instanced nodes nested deeper than this are left out: a document may
// instance a node inside itself.
constexpr int kMostInstanceDepth = 64;

// The double nearest to the float's shortest text (0.01f as 0.01), for
// values a document wrote in decimal.
double Decimal(float value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  double result = value;
  std::from_chars(text, end, result);
  return result;
}

bool IsIdentity(const OxMath::oxMatrix44& m) {
  for (int i = 0; i < 16; ++i) {
    if (m.m[i] != ((i % 5 == 0) ? 1.0f : 0.0f)) return false;
  }
  return true;
}

class Converter {
 public:
  Converter(const oxDAEFile& document, const std::string& path, const oxGltfOptions& options)
      : m_document(document),
        m_path(path),
        m_materials(document, m_gltf, path),
        m_options(options),
        m_fps(options.fps > 0 ? options.fps : 30.0) {}

  // Converts `scene`, or without one every geometry as a root node.
  int Run(const oxDAEVisualScene* scene) {
    m_animations = CollectAnimations(m_document);
    if (m_animations.others > 0) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat(m_animations.others,
                      " animation channel(s) drive something other than a node's translate, "
                      "rotate, scale or matrix or a morph's weights (a material parameter, "
                      "say); they are left out"));
    }
    Json roots = scene ? SceneRoots(*scene) : GeometryRoots();
    roots = PlaceRoots(std::move(roots));
    // glTF allows no empty arrays: a scene without nodes has no "nodes".
    Json gltfScene = roots.empty() ? Json::object() : Json{{"nodes", roots}};
    if (scene && (!scene->name.empty() || !scene->id.empty())) gltfScene["name"] = NameOf(*scene);
    m_gltf.Add("scenes", std::move(gltfScene));
    m_gltf.Root()["scene"] = 0;
    WriteAnimations();
    ReportLeftOut();
    if (m_gltf.Root().contains("lights")) {
      m_gltf.Root()["extensions"]["KHR_lights_punctual"]["lights"] =
          std::move(m_gltf.Root()["lights"]);
      m_gltf.Root().erase("lights");
      m_gltf.UseExtension("KHR_lights_punctual");
    }
    if (!m_gltf.Save(m_path)) {
      OX_LOG(OxKernel::kLogError, oxConcat("cannot write '", m_path, "'"));
      return kGltfCannotWrite;
    }
    return 0;
  }

 private:
  Json SceneRoots(const oxDAEVisualScene& scene) {
    CollectSceneNodes(scene);
    Json roots = Json::array();
    for (const oxDAENode* node : scene.nodes)
      roots.push_back(ConvertNode(*node, 0));
    for (const size_t extra : m_extraRoots)
      roots.push_back(extra);
    FinishSkins();
    return roots;
  }

  // A node for each geometry of the document, in document order, showing it
  // with glTF's default material (nothing binds materials to it).
  Json GeometryRoots() {
    Json roots = Json::array();
    for (const auto& element : m_document.GetElements()) {
      const auto* geometry = oxDAEGeometry::DynamicCast(element.get());
      if (!geometry) continue;
      const long mesh = MeshFor(*geometry, nullptr);
      if (mesh < 0) continue;
      Json node = {{"mesh", mesh}};
      if (const std::string name = NameOf(*geometry); !name.empty()) node["name"] = name;
      roots.push_back(m_gltf.Add("nodes", std::move(node)));
    }
    return roots;
  }

  size_t ConvertNode(const oxDAENode& node, int instanceDepth) {
    Json gltfNode = Json::object();
    if (const std::string name = NameOf(node); !name.empty()) gltfNode["name"] = name;
    const OxMath::oxMatrix44 local = LocalMatrix(node);
    bool animated = false;
    if (!std::all_of(local.m, local.m + 16, [](float v) { return std::isfinite(v); })) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat("node '", NameOf(node),
                      "': its transforms give a matrix that is not finite; the node is left "
                      "where its parent is"));
    } else if (m_animations.nodes.contains(&node)) {
      animated = WriteTRS(node, local, gltfNode);
    } else if (!IsIdentity(local)) {
      gltfNode["matrix"] = std::vector<float>(local.m, local.m + 16);
    }
    Json children = Json::array();
    for (const oxDAENode* child : node.nodes)
      children.push_back(ConvertNode(*child, instanceDepth));
    for (const oxDAEInstance* instance : node.instances)
      ConvertInstance(*instance, gltfNode, children, instanceDepth);
    if (!children.empty()) gltfNode["children"] = children;
    const size_t index = m_gltf.Add("nodes", std::move(gltfNode));
    m_nodeIndex.try_emplace(&node, index);
    if (animated) m_animatedNodes[&node].push_back(index);
    return index;
  }

  // The scene's root nodes under one node that turns the document's up axis
  // to +Y and scales its unit to meters, as far as the options ask; the
  // roots themselves when nothing is to change.
  Json PlaceRoots(Json roots) {
    const oxDAEColladaElement* root = m_document.GetRoot();
    const oxDAEAssetElement* asset = root ? root->asset : nullptr;
    const std::string up = asset ? std::string(asset->upAxis) : "Y_UP";
    const double meter = asset && asset->unitMeter > 0 ? Decimal(asset->unitMeter) : 1.0;
    const std::string unit = asset ? std::string(asset->unitName) : "meter";
    const bool turn = up != "Y_UP" && m_options.yUp;
    const bool scale = meter != 1.0 && m_options.meters;
    if (up != "Y_UP" && !turn) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat("the document's up axis is ", up,
                      " and glTF's is +Y; the axes are kept as they are (--y-up turns them)"));
    }
    if (meter != 1.0 && !scale) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat("the document's unit is the ", unit, " (", meter,
                      " m) and glTF's the meter; lengths are kept as they are (--meters "
                      "scales them)"));
    }
    if (!turn && !scale) return roots;
    const double s = scale ? meter : 1.0;
    // Columns of the turn: Z_UP sends z to y and y to -z, X_UP sends x to y
    // and y to -x.
    std::vector<double> matrix = {s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1};
    if (turn && up == "Z_UP") matrix = {s, 0, 0, 0, 0, 0, -s, 0, 0, s, 0, 0, 0, 0, 0, 1};
    if (turn && up == "X_UP") matrix = {0, s, 0, 0, -s, 0, 0, 0, 0, 0, s, 0, 0, 0, 0, 1};
    if (turn) OX_LOG(OxKernel::kLogInfo, oxConcat("turned from ", up, " to +Y up at the root"));
    if (scale) {
      OX_LOG(OxKernel::kLogInfo,
             oxConcat("scaled from the ", unit, " (", meter, " m) to meters at the root"));
    }
    return Json::array({m_gltf.Add(
        "nodes", {{"name", "COLLADA root"}, {"matrix", matrix}, {"children", std::move(roots)}})});
  }

  // An animated node's static transform as translation, rotation and scale
  // (glTF animates only those); true when written so. A matrix that does not
  // split is written as it is and keeps the node still.
  bool WriteTRS(const oxDAENode& node, const OxMath::oxMatrix44& local, Json& gltfNode) {
    static const oxNodeAnimation kStill;
    const std::optional<oxTRS> trs = TrsAt(node, kStill, 0.0f);
    if (!trs) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat("node '", NameOf(node),
                      "': its matrix is no translation, rotation and scale; its animation is "
                      "left out"));
      gltfNode["matrix"] = std::vector<float>(local.m, local.m + 16);
      return false;
    }
    gltfNode["translation"] = trs->translation;
    gltfNode["rotation"] = trs->rotation;
    gltfNode["scale"] = trs->scale;
    return true;
  }

  // The glTF animation of the animated nodes and morph weights.
  void WriteAnimations() {
    oxAnimatedSpan all;
    for (const auto& [node, animation] : m_animations.nodes)
      all.keyTimes.insert(all.keyTimes.end(), animation.keyTimes.begin(), animation.keyTimes.end());
    for (const auto& [morph, animation] : m_animations.morphs)
      all.keyTimes.insert(all.keyTimes.end(), animation.keyTimes.begin(), animation.keyTimes.end());
    all.Finish();
    oxGltfAnimationWriter writer(m_gltf, m_fps, std::move(all.keyTimes));
    for (const auto& [node, indices] : m_animatedNodes)
      writer.AddNode(*node, m_animations.nodes.at(node), indices);
    for (const auto& [morph, indices] : m_morphNodes) {
      const auto animated = m_animations.morphs.find(morph);
      if (animated == m_animations.morphs.end()) continue;
      const MorphWeights& weights = m_morphWeights.at(morph);
      writer.AddWeights(NameOf(*morph), animated->second, weights.weights, weights.slots, indices);
    }
    writer.Finish();
  }

  void ConvertInstance(const oxDAEInstance& instance, Json& node, Json& children,
                       int instanceDepth) {
    if (const auto* geometry = oxDAEInstanceGeometry::DynamicCast(&instance)) {
      const auto* target = oxDAEGeometry::DynamicCast(geometry->target);
      if (!target) return;
      const long mesh = MeshFor(*target, geometry->bindMaterial);
      if (mesh < 0) return;
      if (!node.contains("mesh")) {
        node["mesh"] = mesh;
      } else {
        children.push_back(m_gltf.Add("nodes", {{"mesh", mesh}}));
      }
      return;
    }
    if (const auto* controller = oxDAEInstanceController::DynamicCast(&instance)) {
      if (!ConvertController(*controller, node, children)) m_gltf.LeaveOut("<instance_controller>");
      return;
    }
    if (instance.kind == EToken::NODE) {
      const auto* target = oxDAENode::DynamicCast(instance.target);
      if (!target) return;
      if (instanceDepth >= kMostInstanceDepth) {
        m_gltf.LeaveOut("<instance_node> nested deeper than 64 instances");
        return;
      }
      children.push_back(ConvertNode(*target, instanceDepth + 1));
      return;
    }
    if (instance.kind == EToken::CAMERA || instance.kind == EToken::LIGHT) {
      const long index =
          instance.kind == EToken::CAMERA ? CameraFor(instance.target) : LightFor(instance.target);
      if (index < 0) return;
      const bool camera = instance.kind == EToken::CAMERA;
      const bool taken = camera ? node.contains("camera") : node.contains("extensions");
      Json& holder = taken ? AddChildNode(children) : node;
      if (camera) {
        holder["camera"] = index;
      } else {
        holder["extensions"] = {{"KHR_lights_punctual", {{"light", index}}}};
      }
      return;
    }
    m_gltf.LeaveOut(oxConcat("<", oxDAEInstance::TagOfKind(instance.kind), ">"));
  }

  // A new child node of the node being written (listed in `children`),
  // for an instance the node already holds one of.
  Json& AddChildNode(Json& children) {
    const size_t index = m_gltf.Add("nodes", Json::object());
    children.push_back(index);
    return m_gltf.Root()["nodes"][index];
  }

  long CameraFor(const oxDAEBaseElement* target) {
    const auto* camera = oxDAECamera::DynamicCast(target);
    if (!camera) return -1;
    if (const auto it = m_cameras.find(camera); it != m_cameras.end()) return it->second;
    long index = -1;
    const oxDAEOpticsTechniqueCommon* optics =
        camera->optics ? camera->optics->techniqueCommon : nullptr;
    const std::string name = oxConcat("camera '", NameOf(*camera), "'");
    if (!optics || optics->type == oxDAEOpticsTechniqueCommon::EType::NONE) {
      OX_LOG(OxKernel::kLogWarning,
             name + " has no perspective or orthographic optics; it is left out");
    } else {
      Json gltfCamera = optics->type == oxDAEOpticsTechniqueCommon::EType::PERSPECTIVE
                            ? Perspective(*optics, name)
                            : Orthographic(*optics, name);
      if (!camera->name.empty() || !camera->id.empty()) gltfCamera["name"] = NameOf(*camera);
      index = static_cast<long>(m_gltf.Add("cameras", std::move(gltfCamera)));
    }
    m_cameras.emplace(camera, index);
    return index;
  }

  // glTF wants the vertical field of view in radians and a positive near
  // plane; COLLADA gives either field of view in degrees, and the other from
  // the aspect ratio.
  static Json Perspective(const oxDAEOpticsTechniqueCommon& optics, const std::string& name) {
    constexpr double kRadians = 3.14159265358979323846 / 180.0;
    double yfov = optics.yfov * kRadians;
    if (optics.yfov <= 0 && optics.xfov > 0) {
      const double aspect = optics.aspectRatio > 0 ? optics.aspectRatio : 1.0;
      yfov = 2.0 * std::atan(std::tan(optics.xfov * kRadians / 2.0) / aspect);
    }
    if (!(yfov > 0 && yfov < 3.14159)) {
      OX_LOG(OxKernel::kLogWarning, name + " has no usable field of view; 45 degrees are written");
      yfov = 45.0 * kRadians;
    }
    Json perspective = {{"yfov", yfov}, {"znear", NearPlane(optics, name)}};
    if (optics.zfar > 0 && optics.zfar > optics.znear) perspective["zfar"] = optics.zfar;
    if (optics.aspectRatio > 0) perspective["aspectRatio"] = optics.aspectRatio;
    return {{"type", "perspective"}, {"perspective", std::move(perspective)}};
  }

  static Json Orthographic(const oxDAEOpticsTechniqueCommon& optics, const std::string& name) {
    const double aspect = optics.aspectRatio > 0 ? optics.aspectRatio : 1.0;
    double xmag = optics.xmag > 0 ? optics.xmag : optics.ymag * aspect;
    double ymag = optics.ymag > 0 ? optics.ymag : optics.xmag / aspect;
    if (!(xmag > 0 && ymag > 0)) {
      OX_LOG(OxKernel::kLogWarning, name + " has no usable magnification; 1 is written");
      xmag = ymag = 1.0;
    }
    const double znear = std::max(0.0f, optics.znear);
    const double zfar = optics.zfar > znear ? optics.zfar : znear + 1.0;
    return {{"type", "orthographic"},
            {"orthographic", {{"xmag", xmag}, {"ymag", ymag}, {"znear", znear}, {"zfar", zfar}}}};
  }

  static double NearPlane(const oxDAEOpticsTechniqueCommon& optics, const std::string& name) {
    if (optics.znear > 0) return optics.znear;
    OX_LOG(OxKernel::kLogWarning,
           name + " has no positive near plane, which glTF requires; 0.01 is written");
    return 0.01;
  }

  long LightFor(const oxDAEBaseElement* target) {
    const auto* light = oxDAELight::DynamicCast(target);
    if (!light) return -1;
    if (const auto it = m_lights.find(light); it != m_lights.end()) return it->second;
    const oxDAELightTechniqueCommon* common = light->techniqueCommon;
    const std::string name = oxConcat("light '", NameOf(*light), "'");
    long index = -1;
    const EToken type = common ? common->type : EToken::NONE;
    if (type != EToken::DIRECTIONAL && type != EToken::POINT && type != EToken::SPOT) {
      OX_LOG(OxKernel::kLogWarning,
             name + " is " +
                 (type == EToken::AMBIENT ? "ambient, which glTF lights are not"
                                          : "of no known type") +
                 "; it is left out");
    } else {
      index = static_cast<long>(m_gltf.Add("lights", PunctualLight(*common, name)));
      if (!light->name.empty() || !light->id.empty())
        m_gltf.Root()["lights"][index]["name"] = NameOf(*light);
    }
    m_lights.emplace(light, index);
    return index;
  }

  // A KHR_lights_punctual light: the colour scaled into 0..1 with the scale
  // as intensity; a spot's falloff angle (the whole cone, in degrees) as the
  // outer cone's half angle in radians.
  static Json PunctualLight(const oxDAELightTechniqueCommon& common, const std::string& name) {
    const OxMath::oxFColor& c = common.color;
    const double intensity = std::max({1.0f, c.r, c.g, c.b});
    Json light = {{"intensity", intensity}};
    light["color"] =
        Color({static_cast<float>(c.r / intensity), static_cast<float>(c.g / intensity),
               static_cast<float>(c.b / intensity), 1.0f},
              false);
    if (common.type == EToken::DIRECTIONAL) {
      light["type"] = "directional";
      return light;
    }
    light["type"] = common.type == EToken::SPOT ? "spot" : "point";
    if (common.constantAttenuation != 0 || common.linearAttenuation != 0 ||
        common.quadraticAttenuation != 1) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat(name, ": its attenuation (constant ", common.constantAttenuation, ", linear ",
                      common.linearAttenuation, ", quadratic ", common.quadraticAttenuation,
                      ") is not carried over; glTF lights fall off with the inverse square"));
    }
    if (common.type == EToken::SPOT) {
      constexpr double kRadians = 3.14159265358979323846 / 180.0;
      const double outer = std::clamp(common.falloffAngle / 2.0 * kRadians, 1e-4, 3.14159265 / 2);
      light["spot"] = {{"innerConeAngle", 0.0}, {"outerConeAngle", outer}};
      if (common.falloffExponent != 0) {
        OX_LOG(OxKernel::kLogWarning,
               oxConcat(name, ": its falloff exponent ", common.falloffExponent,
                        " is not carried over; glTF spots fade linearly between their cones"));
      }
    }
    return light;
  }

  // A skin controller's instance: its geometry skinned to the joints its
  // skeletons hold, as the node's mesh (or a child's) with a glTF skin.
  // False, after a warning, when it cannot be: then the caller counts it.
  bool ConvertController(const oxDAEInstanceController& instance, Json& node, Json& children) {
    // The url resolves even where a skeleton did not (the module stops at
    // the first skeleton it cannot find).
    const auto* controller = oxDAEController::DynamicCast(
        instance.target ? instance.target : m_document.ResolveURI(instance.url));
    if (!controller) return false;
    const std::string name = oxConcat("controller '", NameOf(*controller), "'");
    const oxDAESkin* skin = controller->skin;
    const oxDAEMorph* morph = skin ? skin->sourceMorph : controller->morph;
    const oxDAEGeometry* geometry = skin && skin->sourceGeometry
                                        ? skin->sourceGeometry
                                        : (morph ? morph->sourceGeometry : nullptr);
    if (!geometry) {
      OX_LOG(OxKernel::kLogWarning, name + " deforms no geometry; it is left out");
      return true;
    }
    oxGltfMorphing morphing;
    std::vector<float> weights;
    if (morph) MorphingFor(*morph, morphing, weights, name);
    const oxGltfMorphing* targets = morphing.targets.empty() ? nullptr : &morphing;
    if (!skin) {
      const std::vector<oxGltfPrimitive> primitives =
          ConvertGeometry(*geometry, m_gltf, nullptr, targets);
      const long mesh = MeshOf(*geometry, primitives, instance.bindMaterial, nullptr, weights);
      if (mesh < 0) return true;
      // A node of its own, so that an animation of the weights can name it.
      const size_t holder = m_gltf.Add("nodes", {{"mesh", mesh}});
      children.push_back(holder);
      if (targets) m_morphNodes[morph].push_back(holder);
      return true;
    }
    std::vector<const oxDAENode*> joints;
    oxGltfSkinning skinning;
    if (!FindJoints(*skin, instance, joints, name) || !BuildSkinning(*skin, skinning, name)) {
      // Without its joints the geometry is still drawn, unskinned.
      const long mesh = MeshFor(*geometry, instance.bindMaterial);
      if (mesh < 0) return true;
      Json& holder = node.contains("mesh") ? AddChildNode(children) : node;
      holder["mesh"] = mesh;
      return true;
    }
    const std::vector<oxGltfPrimitive> primitives =
        ConvertGeometry(*geometry, m_gltf, &skinning, targets);
    const long mesh = MeshOf(*geometry, primitives, instance.bindMaterial, nullptr, weights);
    if (mesh < 0) return true;
    const size_t skinIndex =
        m_gltf.Add("skins", {{"inverseBindMatrices", InverseBindMatrices(*skin, joints.size())}});
    m_pendingSkins.push_back({skinIndex, joints});
    // glTF places a skinned mesh by its joints alone: a node of its own at
    // the scene's root keeps parent transforms from seeming to apply.
    Json skinned = {{"mesh", mesh}, {"skin", skinIndex}};
    if (!NameOf(*controller).empty()) skinned["name"] = NameOf(*controller);
    m_extraRoots.push_back(m_gltf.Add("nodes", std::move(skinned)));
    if (targets) m_morphNodes[morph].push_back(m_extraRoots.back());
    return true;
  }

  // The targets of a morph: the geometries its MORPH_TARGET source names
  // (a name that is no geometry with a mesh is left out, with its weight,
  // after a warning) and their MORPH_WEIGHT weights.
  void MorphingFor(const oxDAEMorph& morph, oxGltfMorphing& morphing, std::vector<float>& weights,
                   const std::string& name) {
    morphing.relative = morph.method == "RELATIVE";
    const oxDAEInputElement* targetInput = morph.GetInput("MORPH_TARGET");
    const oxDAEInputElement* weightInput = morph.GetInput("MORPH_WEIGHT");
    const oxDAEAccessor* targets = targetInput ? targetInput->GetCommonAccessor() : nullptr;
    const oxDAEAccessor* weightAccessor = weightInput ? weightInput->GetCommonAccessor() : nullptr;
    const size_t count = targets && targets->source ? targets->source->strings.size() : 0;
    MorphWeights& recorded = m_morphWeights[&morph];
    recorded = {};
    for (size_t i = 0; i < count; ++i) {
      const std::string_view id = targets->source->strings[i].View();
      const auto* geometry =
          oxDAEGeometry::DynamicCast(m_document.ResolveURI(oxString(oxConcat("#", id))));
      const oxDAEInputElement* position = geometry && geometry->mesh && geometry->mesh->vertices
                                              ? geometry->mesh->vertices->GetInput("POSITION")
                                              : nullptr;
      if (!position || !position->GetCommonAccessor()) {
        recorded.slots.push_back(-1);
        OX_LOG(OxKernel::kLogWarning, oxConcat(name, ": its morph target '", id,
                                               "' is no geometry with positions; it is left out"));
        continue;
      }
      recorded.slots.push_back(static_cast<int>(morphing.targets.size()));
      morphing.targets.push_back(position->GetCommonAccessor());
      weights.push_back(weightAccessor ? weightAccessor->GetFloatValue(static_cast<unsigned int>(i))
                                       : 0.0f);
    }
    recorded.weights = weights;
  }

  // The joint nodes a skin's JOINT source names, in its order, found as
  // FindJointNode finds them. False, after a warning, when one is not found.
  bool FindJoints(const oxDAESkin& skin, const oxDAEInstanceController& instance,
                  std::vector<const oxDAENode*>& joints, const std::string& name) {
    const std::vector<std::string_view> names = SkinJointNames(skin);
    if (names.empty()) {
      OX_LOG(OxKernel::kLogWarning, name + " names no joints; it is left out");
      return false;
    }
    for (const std::string_view joint : names) {
      const oxDAENode* found = FindJointNode(m_document, instance, joint, m_sceneNodeList);
      if (!found) {
        OX_LOG(OxKernel::kLogWarning, oxConcat(name, ": its joint '", joint,
                                               "' is no node of the scene; the skin is left out"));
        return false;
      }
      joints.push_back(found);
    }
    return true;
  }

  // The influences of every COLLADA vertex as glTF joint numbers (the
  // JOINT source's order); influences of the bind shape (joint -1) are
  // counted in a warning and left out.
  bool BuildSkinning(const oxDAESkin& skin, oxGltfSkinning& skinning, const std::string& name) {
    skinning.bindShape = skin.bindShapeMatrix;
    OxKernel::oxArray<oxDAEVertexWeights::Influence> influences;
    OxKernel::oxArray<size_t> first;
    if (!skin.vertexWeights ||
        skin.vertexWeights->GetInfluences(influences, first) == kDAENoValue) {
      OX_LOG(OxKernel::kLogWarning, name + " has no joint weights to read; it is left out");
      return false;
    }
    size_t bindShape = 0;
    for (size_t k = 0; k + 1 < first.size(); ++k) {
      auto& vertex = skinning.influences.emplace_back();
      for (size_t i = first[k]; i < first[k + 1]; ++i) {
        const auto& influence = influences[i];
        if (!(influence.weight > 0)) continue;
        if (influence.joint < 0 || influence.joint > 0xFFFF) {
          ++bindShape;
          continue;
        }
        // A joint named twice for one vertex counts once, with both weights.
        const auto joint = static_cast<uint16_t>(influence.joint);
        const auto same = std::find_if(vertex.begin(), vertex.end(),
                                       [joint](const auto& entry) { return entry.first == joint; });
        if (same != vertex.end()) {
          same->second += influence.weight;
        } else {
          vertex.emplace_back(joint, influence.weight);
        }
      }
    }
    if (bindShape > 0) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat(name, ": ", bindShape,
                      " influences bind to the bind shape (joint -1), which glTF cannot; they are "
                      "left out"));
    }
    return true;
  }

  // The INV_BIND_MATRIX source as glTF matrices (the text lists rows of
  // column-vector matrices; glTF wants columns), one per joint; identities
  // for joints it does not reach.
  size_t InverseBindMatrices(const oxDAESkin& skin, size_t joints) {
    const oxDAEInputElement* input =
        skin.joints ? skin.joints->GetInput("INV_BIND_MATRIX") : nullptr;
    const oxDAEAccessor* accessor = input ? input->GetCommonAccessor() : nullptr;
    std::vector<float> matrices;
    for (size_t j = 0; j < joints; ++j) {
      for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
          const bool held = accessor && accessor->source &&
                            (accessor->offset + j + 1) * 16 <= accessor->source->floats.size();
          matrices.push_back(held
                                 ? accessor->source->floats[(accessor->offset + j) * 16 + 4 * r + c]
                                 : (r == c ? 1.0f : 0.0f));
        }
      }
    }
    return m_gltf.AddFloats(matrices, "MAT4", 0, false);
  }

  // Fills in the joints of every skin once every node has its glTF index.
  void FinishSkins() {
    for (const auto& [skin, joints] : m_pendingSkins) {
      Json indices = Json::array();
      for (const oxDAENode* joint : joints)
        indices.push_back(m_nodeIndex.at(joint));
      m_gltf.Root()["skins"][skin]["joints"] = std::move(indices);
    }
  }

  // Every node the scene draws, instanced nodes included.
  void CollectSceneNodes(const oxDAEVisualScene& scene) {
    std::vector<std::pair<const oxDAENode*, int>> pending;
    for (const oxDAENode* node : scene.nodes)
      pending.emplace_back(node, 0);
    while (!pending.empty()) {
      const auto [node, depth] = pending.back();
      pending.pop_back();
      if (!m_sceneNodes.insert(node).second) continue;
      m_sceneNodeList.push_back(node);
      for (const oxDAENode* child : node->nodes)
        pending.emplace_back(child, depth);
      for (const oxDAEInstance* instance : node->instances) {
        const auto* target = oxDAENode::DynamicCast(instance->target);
        if (instance->kind == EToken::NODE && target && depth < kMostInstanceDepth)
          pending.emplace_back(target, depth + 1);
      }
    }
  }

  // The glTF mesh of `geometry` with its materials bound by `binding`; -1
  // for a geometry with nothing to draw.
  long MeshFor(const oxDAEGeometry& geometry, const oxDAEBindMaterial* binding) {
    auto [primitives, added] = m_geometries.try_emplace(&geometry);
    if (added) primitives->second = ConvertGeometry(geometry, m_gltf);
    return MeshOf(geometry, primitives->second, binding, &m_meshes);
  }

  // A glTF mesh of `primitives` with materials bound by `binding`, shared
  // through `cache` (by geometry and materials) when there is one; -1 when
  // there is nothing to draw.
  long MeshOf(const oxDAEGeometry& geometry, const std::vector<oxGltfPrimitive>& primitives,
              const oxDAEBindMaterial* binding,
              std::map<std::pair<const oxDAEGeometry*, std::vector<long>>, long>* cache,
              const std::vector<float>& weights = {}) {
    if (primitives.empty()) return -1;
    Json gltfPrimitives = Json::array();
    std::vector<long> materials;
    for (const oxGltfPrimitive& primitive : primitives) {
      Json p = {{"attributes", primitive.attributes}, {"indices", primitive.indices}};
      if (primitive.mode != 4) p["mode"] = primitive.mode;
      if (!primitive.targets.is_null()) p["targets"] = primitive.targets;
      const long material = m_materials.MaterialFor(primitive.symbol, binding);
      if (material >= 0) p["material"] = material;
      materials.push_back(material);
      gltfPrimitives.push_back(std::move(p));
    }
    const auto key = std::make_pair(&geometry, materials);
    if (cache) {
      if (const auto it = cache->find(key); it != cache->end()) return it->second;
    }
    Json mesh = {{"primitives", std::move(gltfPrimitives)}};
    if (!weights.empty()) mesh["weights"] = weights;
    if (const std::string name = NameOf(geometry); !name.empty()) mesh["name"] = name;
    const long index = static_cast<long>(m_gltf.Add("meshes", std::move(mesh)));
    if (cache) cache->emplace(key, index);
    return index;
  }

  void ReportLeftOut() {
    for (const auto& [what, count] : m_gltf.LeftOut()) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat(what, ": ", count, " left out (the converter does not carry them over)"));
    }
  }

  const oxDAEFile& m_document;
  std::string m_path;
  oxGltfBuilder m_gltf;
  std::map<const oxDAEGeometry*, std::vector<oxGltfPrimitive>> m_geometries;
  std::map<std::pair<const oxDAEGeometry*, std::vector<long>>, long> m_meshes;
  oxGltfMaterials m_materials;
  oxGltfOptions m_options;
  double m_fps = 30.0;
  oxDocumentAnimations m_animations;
  // A morph's weights as the glTF mesh has them, and for each of its weight
  // sources' entries the glTF target it became (-1 when left out).
  struct MorphWeights {
    std::vector<float> weights;
    std::vector<int> slots;
  };
  std::map<const oxDAEMorph*, MorphWeights> m_morphWeights;
  // The glTF nodes that show each morph.
  std::map<const oxDAEMorph*, std::vector<size_t>> m_morphNodes;
  // The glTF nodes of each animated node (one per place it is instanced).
  std::map<const oxDAENode*, std::vector<size_t>> m_animatedNodes;
  std::set<const oxDAENode*> m_sceneNodes;
  std::vector<const oxDAENode*> m_sceneNodeList;  // the same, in the order first reached
  // The first glTF node of each node, which skins name as their joint.
  std::map<const oxDAENode*, size_t> m_nodeIndex;
  struct PendingSkin {
    size_t skin;
    std::vector<const oxDAENode*> joints;
  };
  std::vector<PendingSkin> m_pendingSkins;
  // Nodes of skinned meshes, placed at the scene's root.
  std::vector<size_t> m_extraRoots;
  std::map<const oxDAECamera*, long> m_cameras;
  std::map<const oxDAELight*, long> m_lights;
};

}  // namespace

const oxDAEVisualScene* FindVisualScene(const oxDAEFile& document, std::string_view id) {
  if (!id.empty()) {
    return oxDAEVisualScene::DynamicCast(
        document.ResolveURI(OxKernel::oxString(oxConcat("#", id))));
  }
  const oxDAEColladaElement* root = document.GetRoot();
  if (root && root->scene && root->scene->instanceVisualScene) {
    const oxDAEBaseElement* target = root->scene->instanceVisualScene->target;
    if (const oxDAEVisualScene* scene = oxDAEVisualScene::DynamicCast(target)) return scene;
  }
  for (const auto& element : document.GetElements()) {
    if (const oxDAEVisualScene* scene = oxDAEVisualScene::DynamicCast(element.get())) return scene;
  }
  return nullptr;
}

int ConvertToGltf(const oxDAEFile& document, const std::string& path,
                  const oxGltfOptions& options) {
  const oxDAEVisualScene* scene = FindVisualScene(document, options.scene);
  if (!scene && !options.scene.empty()) {
    OX_LOG(OxKernel::kLogError, oxConcat("no visual scene with id '", options.scene, "'"));
    return kGltfNoScene;
  }
  if (!scene) {
    OX_LOG(OxKernel::kLogWarning,
           "the document has no visual scene; each geometry becomes a root node of its own");
  }
  return Converter(document, path, options).Run(scene);
}

}  // namespace OxDAEConvert
