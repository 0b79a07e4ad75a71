#include "oxDAEGltfMesh.h"

#include <array>
#include <cmath>
#include <set>

#include <oxKernel/oxLog.h>

#include "oxDAEMeshGroups.h"
#include "oxRecords.h"

namespace OxDAEConvert {

using OxDAEReader::oxDAEAccessor;
using OxDAEReader::oxDAEGeometry;

namespace {

// Three floats of channel `c` of `vertex`; zeros for a missing index.
Vec3 Read3(const oxMeshGroup& group, size_t c, const int32_t* vertex) {
  if (c >= group.channels.size() || vertex[c] < 0) return {0, 0, 0};
  const size_t record = static_cast<size_t>(vertex[c]);
  const oxDAEAccessor* accessor = group.channels[c].accessor;
  return {RecordFloat(accessor, record, 0), RecordFloat(accessor, record, 1),
          RecordFloat(accessor, record, 2)};
}

Vec3 Normalised(Vec3 v) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (!(length > 0)) return {0, 0, 0};
  return {v[0] / length, v[1] / length, v[2] / length};
}

// A glTF tangent: the tangent made perpendicular to the normal and of unit
// length, and as w the side the binormal lies on (+1 when it agrees with
// normal x tangent, or when there is no binormal).
std::array<double, 4> Tangent(const Vec3& normal, const Vec3& tangent, const Vec3* binormal) {
  const Vec3 n = Normalised(normal);
  const double along = n[0] * tangent[0] + n[1] * tangent[1] + n[2] * tangent[2];
  Vec3 t =
      Normalised({tangent[0] - n[0] * along, tangent[1] - n[1] * along, tangent[2] - n[2] * along});
  if (t == Vec3{0, 0, 0})
    t = Normalised(std::abs(n[0]) < 0.9 ? Vec3{1 - n[0] * n[0], -n[0] * n[1], -n[0] * n[2]}
                                        : Vec3{-n[1] * n[0], 1 - n[1] * n[1], -n[1] * n[2]});
  if (t == Vec3{0, 0, 0}) t = {1, 0, 0};
  double w = 1;
  if (binormal) {
    const Vec3 side = {n[1] * t[2] - n[2] * t[1], n[2] * t[0] - n[0] * t[2],
                       n[0] * t[1] - n[1] * t[0]};
    w = side[0] * (*binormal)[0] + side[1] * (*binormal)[1] + side[2] * (*binormal)[2] < 0 ? -1 : 1;
  }
  return {t[0], t[1], t[2], w};
}

// `v` placed by the host-layout matrix `m`: as a point (with translation)
// or as a direction (normalised again).
Vec3 Place(const OxMath::oxMatrix44& m, const Vec3& v, bool point) {
  Vec3 out;
  for (int r = 0; r < 3; ++r)
    out[r] = m.m[r] * v[0] + m.m[4 + r] * v[1] + m.m[8 + r] * v[2] + (point ? m.m[12 + r] : 0.0);
  return point ? out : Normalised(out);
}

// Counts of what skinning had to leave out, for one warning each.
struct SkinningLosses {
  size_t beyondEight = 0;
  size_t unweighted = 0;
};

// JOINTS_n and WEIGHTS_n of the group's vertices from the influences of
// their POSITION records.
void WriteSkinning(const oxMeshGroup& group, const oxGltfSkinning& skinning, Json& attributes,
                   oxGltfBuilder& gltf, SkinningLosses& losses) {
  constexpr size_t kMost = 8;
  const size_t position = ChannelOf(group, Kind::Position);
  std::vector<std::vector<std::pair<uint16_t, float>>> kept(group.vertices.size());
  bool second = false;
  for (size_t i = 0; i < group.vertices.size(); ++i) {
    const int32_t record = group.vertices[i][position];
    std::vector<std::pair<uint16_t, float>> all;
    if (record >= 0 && static_cast<size_t>(record) < skinning.influences.size())
      all = skinning.influences[static_cast<size_t>(record)];
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    if (all.size() > kMost) {
      ++losses.beyondEight;
      all.resize(kMost);
    }
    double sum = 0;
    for (const auto& [joint, weight] : all)
      sum += weight;
    if (!(sum > 0)) {
      ++losses.unweighted;
      all = {{0, 1.0f}};
      sum = 1;
    }
    for (auto& entry : all)
      entry.second = static_cast<float>(entry.second / sum);
    second = second || all.size() > 4;
    kept[i] = std::move(all);
  }
  for (size_t set = 0; set < (second ? 2u : 1u); ++set) {
    std::vector<uint16_t> joints;
    std::vector<float> weights;
    for (const auto& influences : kept) {
      for (size_t j = 4 * set; j < 4 * set + 4; ++j) {
        joints.push_back(j < influences.size() ? influences[j].first : 0);
        weights.push_back(j < influences.size() ? influences[j].second : 0.0f);
      }
    }
    attributes["JOINTS_" + std::to_string(set)] = gltf.AddJoints(joints);
    attributes["WEIGHTS_" + std::to_string(set)] =
        gltf.AddFloats(weights, "VEC4", kGltfArrayBuffer, false);
  }
}

// The morph targets of the group's vertices: per target, the offset of the
// target's POSITION record from the base's (or the record itself for a
// RELATIVE morph), at each vertex's POSITION record number.
Json WriteTargets(const oxMeshGroup& group, const oxGltfMorphing& morphing,
                  const oxGltfSkinning* skinning, oxGltfBuilder& gltf) {
  const size_t position = ChannelOf(group, Kind::Position);
  Json targets = Json::array();
  for (const oxDAEAccessor* target : morphing.targets) {
    std::vector<float> offsets;
    for (size_t i = 0; i < group.vertices.size(); ++i) {
      const int32_t* vertex = group.vertices[i];
      const Vec3 base = morphing.relative ? Vec3{0, 0, 0} : Read3(group, position, vertex);
      Vec3 moved = {0, 0, 0};
      if (vertex[position] >= 0) {
        const size_t record = static_cast<size_t>(vertex[position]);
        moved = {RecordFloat(target, record, 0), RecordFloat(target, record, 1),
                 RecordFloat(target, record, 2)};
      }
      Vec3 offset = {moved[0] - base[0], moved[1] - base[1], moved[2] - base[2]};
      if (skinning) {
        // An offset turns and scales with the bind shape but does not move.
        Vec3 placed;
        const float* m = skinning->bindShape.m;
        for (int r = 0; r < 3; ++r)
          placed[r] = m[r] * offset[0] + m[4 + r] * offset[1] + m[8 + r] * offset[2];
        offset = placed;
      }
      offsets.insert(offsets.end(), offset.begin(), offset.end());
    }
    targets.push_back({{"POSITION", gltf.AddFloats(offsets, "VEC3", kGltfArrayBuffer, true)}});
  }
  return targets;
}

// Writes the group's attributes and indices; returns the attributes.
Json WriteGroup(const oxMeshGroup& group, oxGltfBuilder& gltf, const oxGltfSkinning* skinning,
                SkinningLosses& losses) {
  Json attributes = Json::object();
  const size_t normal = ChannelOf(group, Kind::Normal);
  const size_t binormal = ChannelOf(group, Kind::Binormal);
  for (size_t c = 0; c < group.channels.size(); ++c) {
    const Channel& channel = group.channels[c];
    if (channel.kind == Kind::Binormal) continue;
    std::vector<float> values;
    values.reserve(group.vertices.size() * channel.width);
    for (size_t i = 0; i < group.vertices.size(); ++i) {
      const int32_t* vertex = group.vertices[i];
      const size_t record = vertex[c] < 0 ? SIZE_MAX : static_cast<size_t>(vertex[c]);
      std::array<double, 4> v = {0, 0, 0, 1};
      // A tangent's fourth float is its sign, made below.
      const unsigned int read = channel.kind == Kind::Tangent ? 3 : channel.width;
      for (unsigned int j = 0; j < read; ++j)
        v[j] = record == SIZE_MAX ? 0.0 : RecordFloat(channel.accessor, record, j);
      if (skinning && channel.kind != Kind::Texcoord && channel.kind != Kind::Color) {
        const Vec3 placed =
            Place(skinning->bindShape, {v[0], v[1], v[2]}, channel.kind == Kind::Position);
        std::copy(placed.begin(), placed.end(), v.begin());
      }
      if (channel.kind == Kind::Normal) {
        const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        if (length > 0) {
          for (int j = 0; j < 3; ++j)
            v[j] /= length;
        } else {
          v = {0, 0, 1, 1};
        }
      } else if (channel.kind == Kind::Texcoord) {
        // glTF's texture origin is the top left, COLLADA's the bottom left.
        v[1] = 1.0 - v[1];
      } else if (channel.kind == Kind::Color) {
        for (unsigned int j = 0; j < channel.width; ++j)
          v[j] = std::clamp(v[j], 0.0, 1.0);
      } else if (channel.kind == Kind::Tangent) {
        const Vec3 b = Read3(group, binormal, vertex);
        v = Tangent(Read3(group, normal, vertex), {v[0], v[1], v[2]},
                    binormal == SIZE_MAX ? nullptr : &b);
      }
      for (unsigned int j = 0; j < channel.width; ++j)
        values.push_back(static_cast<float>(v[j]));
    }
    const char* type = channel.width == 2 ? "VEC2" : channel.width == 3 ? "VEC3" : "VEC4";
    attributes[channel.name] =
        gltf.AddFloats(values, type, kGltfArrayBuffer, channel.kind == Kind::Position);
  }
  if (skinning) WriteSkinning(group, *skinning, attributes, gltf, losses);
  return attributes;
}

}  // namespace

std::vector<oxGltfPrimitive> ConvertGeometry(const oxDAEGeometry& geometry, oxGltfBuilder& gltf,
                                             const oxGltfSkinning* skinning,
                                             const oxGltfMorphing* morphing) {
  if (!geometry.mesh) {
    OX_LOG(OxKernel::kLogWarning,
           OxKernel::oxConcat("geometry '", GeometryName(geometry),
                              "' is not a mesh (a spline or a convex mesh); it is not converted"));
    return {};
  }
  std::set<std::string> dropped;
  const std::vector<oxMeshGroup> groups = GroupPrimitives(*geometry.mesh, dropped);
  for (const std::string& semantic : dropped) {
    OX_LOG(OxKernel::kLogWarning,
           OxKernel::oxConcat("geometry '", GeometryName(geometry), "': its input ", semantic,
                              " is not carried over"));
  }
  std::vector<oxGltfPrimitive> primitives;
  SkinningLosses losses;
  for (const oxMeshGroup& group : groups) {
    oxGltfPrimitive primitive;
    primitive.symbol = group.symbol;
    primitive.mode = group.mode;
    primitive.attributes = WriteGroup(group, gltf, skinning, losses);
    if (morphing) primitive.targets = WriteTargets(group, *morphing, skinning, gltf);
    primitive.indices = gltf.AddIndices(group.indices);
    primitives.push_back(std::move(primitive));
  }
  const auto report = [&geometry](size_t count, std::string_view what) {
    if (count == 0) return;
    OX_LOG(OxKernel::kLogWarning, OxKernel::oxConcat("skinned geometry '", GeometryName(geometry),
                                                     "': ", count, " vertices ", what));
  };
  report(losses.beyondEight, "have more than eight influences; the weakest are left out");
  report(losses.unweighted, "have no weight on any joint; they follow the first joint");
  return primitives;
}

}  // namespace OxDAEConvert
