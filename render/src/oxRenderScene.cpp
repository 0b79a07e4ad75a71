#include "oxDAERender/oxRenderScene.h"

#include <oxDAEConvert/oxDAEGltf.h>
#include <oxDAEConvert/oxDAEMeshTriangles.h>
#include <oxDAEConvert/oxDAEReferencedFile.h>
#include <oxDAEConvert/oxDAESkinning.h>
#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>
#include <oxKernel/oxParallel.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <unordered_map>

#include "oxDAERender/oxRenderPicture.h"
#include "oxDAERender/oxRenderView.h"
#include "oxRenderSceneNodes.h"

namespace OxDAERender {

namespace {

using namespace OxDAEReader;
using OxDAEConvert::oxMeshTriangles;
using OxMath::oxMatrix44;
using Vec3 = std::array<float, 3>;
using scene::Normalised;
using scene::PlacedNode;
using scene::Then;
using scene::WalkScene;

Vec3 PlacePoint(const oxMatrix44& m, const Vec3& p) {
  const float* a = m.m;
  return {p[0] * a[0] + p[1] * a[4] + p[2] * a[8] + a[12],
          p[0] * a[1] + p[1] * a[5] + p[2] * a[9] + a[13],
          p[0] * a[2] + p[1] * a[6] + p[2] * a[10] + a[14]};
}

Vec3 TurnVector(const oxMatrix44& m, const Vec3& v) {
  const float* a = m.m;
  return {v[0] * a[0] + v[1] * a[4] + v[2] * a[8], v[0] * a[1] + v[1] * a[5] + v[2] * a[9],
          v[0] * a[2] + v[1] * a[6] + v[2] * a[10]};
}

// The matrix that turns normals as `m` turns surfaces: the cofactors of its
// upper 3 x 3 (the inverse transpose up to a factor), signed so that a
// mirroring matrix does not turn normals inside out.
oxMatrix44 NormalMatrix(const oxMatrix44& m) {
  const auto at = [&m](int r, int c) { return m.m[r * 4 + c]; };
  oxMatrix44 n;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) {
      const int r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
      n.m[r * 4 + c] = at(r1, c1) * at(r2, c2) - at(r1, c2) * at(r2, c1);
    }
  }
  const float det = at(0, 0) * n.m[0] + at(0, 1) * n.m[1] + at(0, 2) * n.m[2];
  if (det >= 0) return n;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c)
      n.m[r * 4 + c] = -n.m[r * 4 + c];
  }
  return n;
}

float Luminance(const OxMath::oxFColor& c) {
  return 0.212671f * c.r + 0.71516f * c.g + 0.072169f * c.b;
}

// The opacity of a common technique (see oxRenderMaterial::opacity).
float OpacityOf(const oxDAEFxProfileCommon::Technique& technique) {
  const oxDAEFxCOTTransparent* transparent = technique.transparent;
  if (!transparent || !transparent->IsColor()) return 1.0f;
  const float factor = technique.transparency && technique.transparency->IsFloat()
                           ? technique.transparency->value
                           : 1.0f;
  const float opacity = transparent->UseAlphaChannel()
                            ? transparent->color.a * factor
                            : 1.0f - Luminance(transparent->color) * factor;
  return std::clamp(opacity, 0.0f, 1.0f);
}

// A decoded picture turned into texture rows (bottom first: texture
// coordinate t = 0 is the picture's bottom edge).
std::shared_ptr<const oxRenderImage> TextureOf(const oxPicture& picture) {
  auto image = std::make_shared<oxRenderImage>();
  image->width = picture.width;
  image->height = picture.height;
  image->rgba.resize(picture.rgba.size());
  const size_t row = static_cast<size_t>(picture.width) * 4;
  for (int y = 0; y < picture.height; ++y) {
    std::copy_n(picture.rgba.begin() + static_cast<ptrdiff_t>(row * y), row,
                image->rgba.begin() + static_cast<ptrdiff_t>(row * (picture.height - 1 - y)));
  }
  for (size_t i = 3; i < image->rgba.size() && !image->translucent; i += 4)
    image->translucent = image->rgba[i] < 255;
  return image;
}

// The weights of a morph's targets at `time`: the MORPH_WEIGHT values, each
// replaced by what the first channel bound to it samples. Weights beyond
// the members a channel can reach by index keep their written values.
std::vector<float> MorphWeightsAt(const oxDAEMorph& morph, size_t count, float time) {
  std::vector<float> weights(count, 0.0f);
  const oxDAEInputElement* input = morph.GetInput("MORPH_WEIGHT");
  const oxDAEAccessor* accessor = input ? input->GetCommonAccessor() : nullptr;
  for (size_t i = 0; accessor && i < count; ++i)
    weights[i] = accessor->GetFloatValue(static_cast<unsigned int>(i));
  const oxDAEChannelTargetFloatArray& target = morph.weightsTarget;
  if (target.IsTargeted() && target.GetChannels()[0]->sampler) {
    target.GetChannels()[0]->sampler->GetFloatValue(time, static_cast<unsigned int>(count),
                                                    weights.data());
  }
  const size_t members = std::min<size_t>({count, target.GetMemberCount(), 127});
  for (size_t i = 0; i < members; ++i) {
    const oxDAEChannelTarget* member = target.GetChannelTarget(0, static_cast<signed char>(i));
    if (!member || !member->IsTargeted() || !member->GetChannels()[0]->sampler) continue;
    member->GetChannels()[0]->sampler->GetFloatValue(time, 1, &weights[i]);
  }
  return weights;
}

// The target geometries of a morph and their POSITION accessors (null for
// a name that is no geometry with positions).
std::vector<const oxDAEAccessor*> MorphTargets(const oxDAEFile& document, const oxDAEMorph& morph) {
  const oxDAEInputElement* input = morph.GetInput("MORPH_TARGET");
  const oxDAEAccessor* names = input ? input->GetCommonAccessor() : nullptr;
  std::vector<const oxDAEAccessor*> targets;
  if (!names || !names->source) return targets;
  for (const oxString& id : names->source->strings) {
    const auto* geometry =
        oxDAEGeometry::DynamicCast(document.ResolveURI(oxString(OxKernel::oxConcat("#", id))));
    const oxDAEInputElement* position = geometry && geometry->mesh && geometry->mesh->vertices
                                            ? geometry->mesh->vertices->GetInput("POSITION")
                                            : nullptr;
    targets.push_back(position ? position->GetCommonAccessor() : nullptr);
  }
  return targets;
}

Vec3 ReadVec3(const oxDAEAccessor& accessor, uint32_t record) {
  const auto v = accessor.GetVec3Value(record);
  return {v.x, v.y, v.z};
}

// Normals made from the triangles around each vertex, weighted by area.
OxKernel::oxArray<float> MadeNormals(const OxKernel::oxArray<float>& positions,
                                     const std::vector<oxMeshTriangles::Part>& parts) {
  OxKernel::oxArray<float> normals(positions.size(), 0.0f);
  const auto at = [&positions](uint32_t v) {
    return Vec3{positions[3 * v], positions[3 * v + 1], positions[3 * v + 2]};
  };
  for (const auto& part : parts) {
    if (part.lines) continue;
    for (size_t i = 0; i + 2 < part.indices.size(); i += 3) {
      const uint32_t* t = &part.indices[i];
      const Vec3 a = at(t[0]), b = at(t[1]), c = at(t[2]);
      const Vec3 u = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
      const Vec3 w = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
      const Vec3 n = {u[1] * w[2] - u[2] * w[1], u[2] * w[0] - u[0] * w[2],
                      u[0] * w[1] - u[1] * w[0]};
      for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 3; ++j)
          normals[3 * t[k] + j] += n[j];
      }
    }
  }
  for (size_t v = 0; v < normals.size(); v += 3) {
    const Vec3 n = Normalised({normals[v], normals[v + 1], normals[v + 2]});
    std::copy(n.begin(), n.end(), normals.begin() + static_cast<ptrdiff_t>(v));
  }
  return normals;
}

// A skin ready to deform: per joint the matrix from the mesh as written to
// the world at the time, and the influences of every POSITION record.
struct SkinPose {
  oxMatrix44 bindShape;
  std::vector<oxMatrix44> joints;
  OxDAEConvert::oxSkinWeights weights;
};

// A mesh to draw, noted as the walk meets it; its cut and placed vertices
// are made once the walk is done.
struct MeshJob {
  const oxDAEGeometry* geometry = nullptr;
  const oxDAEBindMaterial* binding = nullptr;
  oxMatrix44 world;
  const oxDAEMorph* morph = nullptr;  // null when the mesh is not morphed
  std::optional<SkinPose> pose;       // none when it is not skinned
  std::vector<oxMeshTriangles::Part> parts;
  std::shared_ptr<oxRenderVertices> vertices;  // null when nothing is drawn
  // With an outline (see Gatherer::Outline): the corners, whose positions
  // `vertices` holds placed, until the seen triangles are cut.
  std::optional<OxDAEConvert::oxMeshCorners> corners;
  // The scene's batch of each part, SIZE_MAX for a part with no corner.
  std::vector<size_t> batches;
};

class Gatherer {
 public:
  Gatherer(const oxDAEFile& document, const oxRenderSceneOptions& options, oxRenderScene& scene,
           const oxSeenTriangles& seen)
      : m_document(document), m_options(options), m_scene(scene), m_seen(seen) {}

  int Run() {
    const oxDAEVisualScene* visual = OxDAEConvert::FindVisualScene(m_document, m_options.scene);
    if (!visual) {
      OX_LOG(OxKernel::kLogError, m_options.scene.empty()
                                      ? std::string("the document has no visual scene")
                                      : "no visual scene with id '" + m_options.scene + "'");
      return kRenderNoScene;
    }
    m_scene = {};
    m_scene.upAxis = UpAxis();
    m_placed = WalkScene(m_document, *visual, m_options.time);
    for (const PlacedNode& placed : m_placed) {
      m_sceneNodes.push_back(placed.node);
      m_worlds.try_emplace(placed.node, placed.world);
    }
    CountUses();
    for (const PlacedNode& placed : m_placed)
      GatherNode(placed);
    AddMeshes();
    if (!m_options.camera.empty() && !m_scene.camera) {
      OX_LOG(OxKernel::kLogError,
             "no camera with id '" + m_options.camera + "' in the visual scene");
      return kRenderNoCamera;
    }
    return 0;
  }

 private:
  oxUpAxis UpAxis() const {
    const oxDAEColladaElement* root = m_document.GetRoot();
    if (!root || !root->asset) return oxUpAxis::Y;
    if (root->asset->upAxis == "Z_UP") return oxUpAxis::Z;
    if (root->asset->upAxis == "X_UP") return oxUpAxis::X;
    return oxUpAxis::Y;
  }

  void GatherNode(const PlacedNode& placed) {
    for (const oxDAEInstance* instance : placed.node->instances) {
      if (const auto* geometry = oxDAEInstanceGeometry::DynamicCast(instance)) {
        if (const auto* target = oxDAEGeometry::DynamicCast(geometry->target))
          AddMesh(*target, geometry->bindMaterial, placed.world, nullptr, std::nullopt);
      } else if (const auto* controller = oxDAEInstanceController::DynamicCast(instance)) {
        AddController(*controller, placed.world);
      } else if (instance->kind == EToken::CAMERA) {
        ConsiderCamera(*placed.node, oxDAECamera::DynamicCast(instance->target), placed.world);
      }
    }
  }

  void ConsiderCamera(const oxDAENode& node, const oxDAECamera* camera, const oxMatrix44& world) {
    if (!camera || m_scene.camera) return;
    const std::string& wanted = m_options.camera;
    if (!wanted.empty() && camera->id.View() != wanted && node.id.View() != wanted) return;
    oxRenderCamera chosen;
    chosen.world = world;
    const oxDAEOpticsTechniqueCommon* optics =
        camera->optics ? camera->optics->techniqueCommon : nullptr;
    if (optics) {
      chosen.orthographic = optics->type == oxDAEOpticsTechniqueCommon::EType::ORTHOGRAPHIC;
      chosen.xfov = optics->xfov;
      chosen.yfov = optics->yfov;
      chosen.xmag = optics->xmag;
      chosen.ymag = optics->ymag;
      chosen.znear = optics->znear;
      chosen.zfar = optics->zfar;
    }
    m_scene.camera = chosen;
  }

  // The controller an instance names. Its url is resolved again where the
  // module left the target unset (it stops at the first skeleton it cannot
  // find).
  const oxDAEController* ControllerOf(const oxDAEInstanceController& instance) const {
    return oxDAEController::DynamicCast(instance.target ? instance.target
                                                        : m_document.ResolveURI(instance.url));
  }

  // The geometry a controller deforms, through its skin or morph; null when
  // none.
  static const oxDAEGeometry* DeformedGeometry(const oxDAEController& controller) {
    const oxDAESkin* skin = controller.skin;
    const oxDAEMorph* morph = skin ? skin->sourceMorph : controller.morph;
    if (skin && skin->sourceGeometry) return skin->sourceGeometry;
    return morph ? morph->sourceGeometry : nullptr;
  }

  // The geometry `instance` draws, directly or through a controller.
  const oxDAEGeometry* GeometryOf(const oxDAEInstance& instance) const {
    if (const auto* geometry = oxDAEInstanceGeometry::DynamicCast(&instance))
      return oxDAEGeometry::DynamicCast(geometry->target);
    const auto* controlled = oxDAEInstanceController::DynamicCast(&instance);
    const oxDAEController* controller = controlled ? ControllerOf(*controlled) : nullptr;
    return controller ? DeformedGeometry(*controller) : nullptr;
  }

  // Counts how often each geometry is drawn, so that only those drawn more
  // than once keep their cut mesh.
  void CountUses() {
    for (const PlacedNode& placed : m_placed) {
      for (const oxDAEInstance* instance : placed.node->instances) {
        if (const oxDAEGeometry* geometry = GeometryOf(*instance)) ++m_uses[geometry];
      }
    }
  }

  void AddController(const oxDAEInstanceController& instance, const oxMatrix44& world) {
    const oxDAEController* controller = ControllerOf(instance);
    const oxDAEGeometry* geometry = controller ? DeformedGeometry(*controller) : nullptr;
    if (!geometry) return;
    const oxDAESkin* skin = controller->skin;
    const oxDAEMorph* morph = skin ? skin->sourceMorph : controller->morph;
    SkinPose pose;
    const bool skinned = skin && PoseOf(*skin, instance, controller->id.View(), pose);
    AddMesh(*geometry, instance.bindMaterial, world, morph,
            skinned ? std::optional<SkinPose>(std::move(pose)) : std::nullopt);
  }

  // The pose of `skin` at the time; false, after a warning, when a joint is
  // not a node of the scene or the skin has no weights.
  bool PoseOf(const oxDAESkin& skin, const oxDAEInstanceController& instance, std::string_view name,
              SkinPose& pose) {
    pose.bindShape = skin.bindShapeMatrix;
    const std::vector<std::string_view> names = OxDAEConvert::SkinJointNames(skin);
    for (size_t j = 0; j < names.size(); ++j) {
      const oxDAENode* joint =
          OxDAEConvert::FindJointNode(m_document, instance, names[j], m_sceneNodes);
      if (!joint) {
        OX_LOG(OxKernel::kLogWarning,
               OxKernel::oxConcat("controller '", name, "': its joint '", names[j],
                                  "' is no node of the scene; it is drawn unskinned"));
        return false;
      }
      const oxMatrix44 toJoint =
          Then(skin.bindShapeMatrix, OxDAEConvert::InverseBindMatrix(skin, j));
      pose.joints.push_back(Then(toJoint, m_worlds.at(joint)));
    }
    if (names.empty() || !OxDAEConvert::ReadSkinWeights(skin, pose.weights)) {
      OX_LOG(OxKernel::kLogWarning, OxKernel::oxConcat("controller '", name,
                                                       "' has no joints or weights to read; it "
                                                       "is drawn unskinned"));
      return false;
    }
    return true;
  }

  // Moves `positions`, each of the POSITION record `records` gives, by the
  // morph's targets at the time.
  void ApplyMorph(const oxDAEMorph& morph, OxKernel::oxArray<Vec3>& positions,
                  const OxKernel::oxArray<uint32_t>& records) const {
    const std::vector<const oxDAEAccessor*> targets = MorphTargets(m_document, morph);
    const std::vector<float> weights = MorphWeightsAt(morph, targets.size(), m_options.time);
    const bool relative = morph.method == "RELATIVE";
    for (size_t v = 0; v < positions.size(); ++v) {
      const Vec3 base = positions[v];
      Vec3 moved = base;
      for (size_t t = 0; t < targets.size(); ++t) {
        if (!targets[t] || weights[t] == 0) continue;
        const Vec3 target = ReadVec3(*targets[t], records[v]);
        for (int k = 0; k < 3; ++k)
          moved[k] += weights[t] * (relative ? target[k] : target[k] - base[k]);
      }
      positions[v] = moved;
    }
  }

  // Places a vertex by the skin's joints; the bind shape moved by the
  // node's matrix when the vertex has no influence.
  static void Deform(const SkinPose& pose, const oxMatrix44& world, uint32_t record, Vec3& position,
                     Vec3& normal) {
    const bool held = record < pose.weights.VertexCount();
    const size_t begin = held ? pose.weights.first[record] : 0;
    const size_t end = held ? pose.weights.first[record + 1] : 0;
    float total = 0;
    for (size_t i = begin; i < end; ++i)
      total += pose.weights.influences[i].weight;
    if (!(total > 0)) {
      const oxMatrix44 placed = Then(pose.bindShape, world);
      position = PlacePoint(placed, position);
      normal = TurnVector(NormalMatrix(placed), normal);
      return;
    }
    Vec3 p = {0, 0, 0};
    Vec3 n = {0, 0, 0};
    for (size_t i = begin; i < end; ++i) {
      const auto& influence = pose.weights.influences[i];
      const bool joint =
          influence.joint >= 0 && static_cast<size_t>(influence.joint) < pose.joints.size();
      const oxMatrix44& m =
          joint ? pose.joints[static_cast<size_t>(influence.joint)] : pose.bindShape;
      const Vec3 q = PlacePoint(m, position);
      const Vec3 r = TurnVector(m, normal);
      const float w = influence.weight / total;
      for (int k = 0; k < 3; ++k) {
        p[k] += w * q[k];
        n[k] += w * r[k];
      }
    }
    position = p;
    normal = n;
  }

  // Places a vertex of POSITION record `record` by the skin, else by
  // `world` (`normalMatrix` being its NormalMatrix). An outline's positions
  // and the vertices cut later go through here alike, so that they are the
  // same floats.
  static void PlaceVertex(const SkinPose* pose, const oxMatrix44& world,
                          const oxMatrix44& normalMatrix, uint32_t record, Vec3& position,
                          Vec3& normal) {
    if (pose) {
      Deform(*pose, world, record, position, normal);
      return;
    }
    position = PlacePoint(world, position);
    normal = TurnVector(normalMatrix, normal);
  }

  // The world-space vertices of `mesh` placed by `world`, or by the skin.
  std::shared_ptr<oxRenderVertices> Place(const oxMeshTriangles& mesh, const oxMatrix44& world,
                                          const SkinPose* pose) const {
    auto vertices = std::make_shared<oxRenderVertices>();
    const bool hasNormals = !mesh.normals.empty();
    const oxMatrix44 normalMatrix = NormalMatrix(world);
    vertices->positions.reserve(mesh.positions.size() * 3);
    if (hasNormals) vertices->normals.reserve(mesh.positions.size() * 3);
    for (size_t v = 0; v < mesh.positions.size(); ++v) {
      Vec3 p = mesh.positions[v];
      Vec3 n = hasNormals ? mesh.normals[v] : Vec3{0, 0, 1};
      PlaceVertex(pose, world, normalMatrix, mesh.positionRecords[v], p, n);
      vertices->positions.insert(vertices->positions.end(), p.begin(), p.end());
      if (!hasNormals) continue;
      n = Normalised(n);
      vertices->normals.insert(vertices->normals.end(), n.begin(), n.end());
    }
    if (!hasNormals) vertices->normals = MadeNormals(vertices->positions, mesh.parts);
    vertices->texcoords.reserve(mesh.texcoords.size() * 2);
    for (const auto& texcoord : mesh.texcoords)
      vertices->texcoords.insert(vertices->texcoords.end(), texcoord.begin(), texcoord.end());
    return vertices;
  }

  // Notes a mesh to draw; AddMeshes cuts and places it.
  void AddMesh(const oxDAEGeometry& geometry, const oxDAEBindMaterial* binding,
               const oxMatrix44& world, const oxDAEMorph* morph, std::optional<SkinPose> pose) {
    m_jobs.push_back({&geometry, binding, world, morph, std::move(pose), {}, nullptr, {}, {}});
  }

  // Cuts and places every noted mesh, the meshes side by side on the
  // machine's cores (that work reads the document only and logs nothing),
  // then adds their batches in the order the walk met them, which keeps the
  // batches, the materials and the messages about them in that order. With
  // a filter of seen triangles, meshes are first outlined, the filter is
  // asked about the outline, and only the triangles it keeps are cut.
  void AddMeshes() {
    for (const auto& [geometry, uses] : m_uses) {
      if (uses > 1) m_meshes.try_emplace(geometry);
    }
    std::vector<std::pair<const oxDAEGeometry* const, oxMeshTriangles>*> shared;
    for (auto& entry : m_meshes)
      shared.push_back(&entry);
    OxKernel::oxParallelFor(shared.size(), [&](size_t i) {
      shared[i]->second = OxDAEConvert::MeshTriangles(*shared[i]->first);
    });
    OxKernel::oxParallelFor(m_jobs.size(), [&](size_t i) {
      if (!m_seen || !Outline(m_jobs[i])) CutAndPlace(m_jobs[i]);
    });
    for (MeshJob& job : m_jobs)
      AddBatches(job);
    if (!m_seen) return;
    std::vector<oxRegionMasks> seen = m_seen(m_scene);
    if (seen.size() != m_scene.batches.size()) seen.assign(m_scene.batches.size(), {});
    OxKernel::oxParallelFor(m_jobs.size(), [&](size_t i) { CutSeen(m_jobs[i], seen); });
    for (MeshJob& job : m_jobs) {
      for (size_t p = 0; p < job.batches.size(); ++p) {
        if (job.batches[p] == SIZE_MAX) continue;
        oxRenderBatch& batch = m_scene.batches[job.batches[p]];
        if (job.corners) {
          batch.vertices = job.vertices;
          batch.indices = std::move(job.parts[p].indices);
          batch.regions = KeptRegions(seen[job.batches[p]]);
        } else if (!seen[job.batches[p]].empty()) {
          KeepTriangles(batch, seen[job.batches[p]]);
        }
      }
    }
    std::erase_if(m_scene.batches,
                  [](const oxRenderBatch& batch) { return batch.indices.empty(); });
  }

  // The job's batches, a part's corners standing for its triangles while
  // the job has an outline, and the bounds widened by the positions they
  // read.
  void AddBatches(MeshJob& job) {
    if (!job.vertices) return;
    if (job.corners) {
      AddPartBatches(job, job.corners->parts, &OxDAEConvert::oxMeshCorners::Part::corners);
    } else {
      AddPartBatches(job, job.parts, &oxMeshTriangles::Part::indices);
    }
    Grow(job);
  }

  // A batch for each part with indices (its `indices` member), noted in
  // job.batches.
  template <typename Part>
  void AddPartBatches(MeshJob& job, std::vector<Part>& parts,
                      OxKernel::oxArray<uint32_t> Part::*indices) {
    job.batches.assign(parts.size(), SIZE_MAX);
    for (size_t p = 0; p < parts.size(); ++p) {
      Part& part = parts[p];
      if ((part.*indices).empty()) continue;
      job.batches[p] = m_scene.batches.size();
      m_scene.batches.push_back({job.vertices,
                                 std::move(part.*indices),
                                 part.lines,
                                 MaterialFor(job.binding, part.symbol),
                                 {}});
    }
  }

  // The job's mesh, morphed, and its vertices placed; of the mesh only its
  // parts are kept, the rest being in the placed vertices.
  void CutAndPlace(MeshJob& job) const {
    const auto shared = m_meshes.find(job.geometry);
    oxMeshTriangles mesh =
        shared != m_meshes.end() ? shared->second : OxDAEConvert::MeshTriangles(*job.geometry);
    if (mesh.positions.empty() || mesh.parts.empty()) return;
    if (job.morph) ApplyMorph(*job.morph, mesh.positions, mesh.positionRecords);
    job.vertices = Place(mesh, job.world, job.pose ? &*job.pose : nullptr);
    job.parts = std::move(mesh.parts);
  }

  // The job's outline: its mesh's corners, and the distinct positions they
  // read placed as Place places them (PlaceVertex); false, leaving the job
  // to CutAndPlace, where the outline cannot stand for the mesh: a geometry
  // drawn more than once is cut once for all its instances, and normals
  // made from the triangles around a vertex need every triangle.
  bool Outline(MeshJob& job) const {
    if (m_meshes.count(job.geometry)) return false;
    OxDAEConvert::oxMeshCorners corners = OxDAEConvert::MeshCorners(*job.geometry);
    if (!corners.normals) return false;
    if (corners.parts.empty()) return true;
    auto& positions = corners.positions;
    if (job.morph) ApplyMorph(*job.morph, positions.values, positions.records);
    auto vertices = std::make_shared<oxRenderVertices>();
    vertices->positions.reserve(positions.values.size() * 3);
    const SkinPose* pose = job.pose ? &*job.pose : nullptr;
    const oxMatrix44 normalMatrix = NormalMatrix(job.world);
    for (size_t v = 0; v < positions.values.size(); ++v) {
      Vec3 p = positions.values[v];
      Vec3 unused = {0, 0, 1};
      PlaceVertex(pose, job.world, normalMatrix, positions.records[v], p, unused);
      vertices->positions.insert(vertices->positions.end(), p.begin(), p.end());
    }
    job.vertices = std::move(vertices);
    job.corners = std::move(corners);
    return true;
  }

  // The job's kept triangles (those of nonzero masks) cut and placed, once
  // SeenTriangles has judged its outline's.
  void CutSeen(MeshJob& job, const std::vector<oxRegionMasks>& seen) const {
    if (!job.corners) return;
    for (size_t p = 0; p < job.batches.size(); ++p) {
      if (job.batches[p] == SIZE_MAX) continue;
      const oxRegionMasks& masks = seen[job.batches[p]];
      std::vector<bool>& keep = job.corners->parts[p].keep;
      keep.resize(masks.size());
      for (size_t t = 0; t < masks.size(); ++t)
        keep[t] = masks[t] != 0;
    }
    oxMeshTriangles mesh = OxDAEConvert::MeshTriangles(*job.geometry, *job.corners);
    if (job.morph) ApplyMorph(*job.morph, mesh.positions, mesh.positionRecords);
    job.vertices = Place(mesh, job.world, job.pose ? &*job.pose : nullptr);
    job.parts = std::move(mesh.parts);
  }

  // Widens the bounds by every position the job's batches read whose three
  // coordinates are finite; the first such position of the scene sets them.
  // A cut mesh's vertices are all read; an outline's positions hold every
  // record of a source, read or not.
  void Grow(const MeshJob& job) {
    const OxKernel::oxArray<float>& positions = job.vertices->positions;
    std::vector<bool> read(positions.size() / 3, !job.corners);
    for (const size_t b : job.batches) {
      if (b == SIZE_MAX) continue;
      for (const uint32_t v : m_scene.batches[b].indices) {
        if (v < read.size()) read[v] = true;
      }
    }
    if (std::all_of(job.batches.begin(), job.batches.end(), [](size_t b) { return b == SIZE_MAX; }))
      return;
    for (size_t v = 0; v < read.size(); ++v) {
      if (!read[v]) continue;
      const float* p = &positions[3 * v];
      if (!(std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]))) continue;
      const bool first = m_scene.IsEmpty();
      for (int k = 0; k < 3; ++k) {
        m_scene.boundsMin[k] = first ? p[k] : std::min(m_scene.boundsMin[k], p[k]);
        m_scene.boundsMax[k] = first ? p[k] : std::max(m_scene.boundsMax[k], p[k]);
      }
    }
  }

  // The material the instance binds to `symbol`; 0 (the default) when none.
  size_t MaterialFor(const oxDAEBindMaterial* binding, const std::string& symbol) {
    if (!binding || !binding->techniqueCommon) return 0;
    for (const oxDAEInstanceMaterial* bound : binding->techniqueCommon->instanceMaterials) {
      if (bound->symbol.View() == symbol && bound->material) return MaterialIndex(*bound->material);
    }
    return 0;
  }

  size_t MaterialIndex(const oxDAEMaterial& material) {
    const auto found = m_materials.find(&material);
    if (found != m_materials.end()) return found->second;
    m_scene.materials.push_back(Describe(material));
    m_materials.emplace(&material, m_scene.materials.size() - 1);
    return m_scene.materials.size() - 1;
  }

  oxRenderMaterial Describe(const oxDAEMaterial& material) {
    oxRenderMaterial described;
    const oxDAEEffect* effect = material.instanceEffect ? material.instanceEffect->effect : nullptr;
    const auto* technique =
        effect && effect->commonProfile ? effect->commonProfile->technique : nullptr;
    if (!technique) return described;
    described.lit = technique->shadingModel != oxDAEFxProfileCommon::Technique::CONSTANT;
    const oxDAEFxColorOrTextureType* value =
        described.lit ? technique->diffuse : technique->emission;
    described.opacity = OpacityOf(*technique);
    if (described.opacity <= 0.0f) {
      // 3ds Max, Blender and others write a transparency of 0 for an
      // opaque material; a material nobody could see is read as they mean it.
      OX_LOG(OxKernel::kLogWarning,
             OxKernel::oxConcat("material '", material.id,
                                "': its transparency leaves nothing visible; it is drawn opaque"));
      described.opacity = 1.0f;
    }
    if (value && value->IsColor()) {
      const OxMath::oxFColor& c = value->color;
      described.color = {c.r, c.g, c.b, c.a};
    } else if (value && value->IsTexture()) {
      described.picture = PictureOf(value->image);
      if (described.picture) described.color = {1.0f, 1.0f, 1.0f, 1.0f};
    }
    return described;
  }

  // The decoded picture of `image`, once per file; null after a warning
  // when it cannot be read or decoded.
  std::shared_ptr<const oxRenderImage> PictureOf(const oxDAEImage* image) {
    if (!image) return nullptr;
    const std::string path(GetReferencedFilePath(m_document, image->initFrom).View());
    const auto [found, added] = m_pictures.try_emplace(path);
    if (!added) return found->second;
    const oxPicture picture = DecodePicture(OxDAEConvert::ReadReferencedFile(m_document, path));
    if (picture.width == 0) {
      OX_LOG(OxKernel::kLogWarning,
             OxKernel::oxConcat("image '", image->id, "': the picture '", path,
                                "' cannot be read or decoded; its material is drawn in grey"));
      return nullptr;
    }
    found->second = TextureOf(picture);
    return found->second;
  }

  const oxDAEFile& m_document;
  const oxRenderSceneOptions& m_options;
  oxRenderScene& m_scene;
  std::vector<PlacedNode> m_placed;
  std::vector<const oxDAENode*> m_sceneNodes;
  // The world matrix of each node where the walk first reached it.
  std::unordered_map<const oxDAENode*, oxMatrix44> m_worlds;
  std::map<const oxDAEMaterial*, size_t> m_materials;
  std::unordered_map<const oxDAEGeometry*, size_t> m_uses;
  // The meshes of the geometries drawn more than once, cut once.
  std::unordered_map<const oxDAEGeometry*, oxMeshTriangles> m_meshes;
  std::vector<MeshJob> m_jobs;
  std::map<std::string, std::shared_ptr<const oxRenderImage>> m_pictures;
  const oxSeenTriangles& m_seen;
};

}  // namespace

int GatherScene(const oxDAEFile& document, const oxRenderSceneOptions& options,
                oxRenderScene& scene, const oxSeenTriangles& seen) {
  return Gatherer(document, options, scene, seen).Run();
}

}  // namespace OxDAERender
