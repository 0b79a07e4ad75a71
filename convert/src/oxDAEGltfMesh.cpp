#include "oxDAEGltfMesh.h"

#include <array>
#include <cmath>
#include <set>

#include <oxKernel/oxLog.h>

#include <oxKernel/oxParallel.h>
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

// Fills `out` with channel `c` of every vertex of `group`, `width` floats
// each: the record's first `read` floats (zeros for a missing record, 0 0 0
// 1 beyond them) after `finish(v, vertex)`. Each kind of channel passes its
// own `finish`, so that the loop over a large mesh does not ask it again.
template <typename Finish>
void FillChannel(const oxMeshGroup& group, size_t c, unsigned int read, float* out,
                 Finish&& finish) {
  const oxRecords records(group.channels[c].accessor);
  const unsigned int width = group.channels[c].width;
  for (size_t i = 0; i < group.vertices.size(); ++i, out += width) {
    const int32_t* vertex = group.vertices[i];
    std::array<double, 4> v = {0, 0, 0, 1};
    if (vertex[c] >= 0) {
      for (unsigned int j = 0; j < read; ++j)
        v[j] = records(static_cast<size_t>(vertex[c]), j);
    }
    finish(v, vertex);
    for (unsigned int j = 0; j < width; ++j)
      out[j] = static_cast<float>(v[j]);
  }
}

// Writes channel `c` of the group's vertices into `out`, as glTF wants
// it: normals of unit length (0 0 1 for a zero normal), texture rows counted
// from the top, colours within 0..1, tangents as Tangent makes them; with
// `skinning`, positions, normals and tangents placed by the bind shape.
void WriteChannel(const oxMeshGroup& group, size_t c, const oxGltfSkinning* skinning, float* out) {
  const Channel& channel = group.channels[c];
  const auto place = [skinning](std::array<double, 4>& v, bool point) {
    if (!skinning) return;
    const Vec3 placed = Place(skinning->bindShape, {v[0], v[1], v[2]}, point);
    std::copy(placed.begin(), placed.end(), v.begin());
  };
  switch (channel.kind) {
    case Kind::Position:
      FillChannel(group, c, 3, out,
                  [&](std::array<double, 4>& v, const int32_t*) { place(v, true); });
      break;
    case Kind::Normal:
      FillChannel(group, c, 3, out, [&](std::array<double, 4>& v, const int32_t*) {
        place(v, false);
        const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        if (!(length > 0)) {
          v = {0, 0, 1, 1};
          return;
        }
        for (int j = 0; j < 3; ++j)
          v[j] /= length;
      });
      break;
    case Kind::Texcoord:
      // glTF's texture origin is the top left, COLLADA's the bottom left.
      FillChannel(group, c, 2, out,
                  [](std::array<double, 4>& v, const int32_t*) { v[1] = 1.0 - v[1]; });
      break;
    case Kind::Color:
      FillChannel(group, c, channel.width, out, [](std::array<double, 4>& v, const int32_t*) {
        for (double& x : v)
          x = std::clamp(x, 0.0, 1.0);
      });
      break;
    case Kind::Tangent: {
      // The fourth float is the tangent's sign, made from the binormal.
      const size_t normal = ChannelOf(group, Kind::Normal);
      const size_t binormal = ChannelOf(group, Kind::Binormal);
      FillChannel(group, c, 3, out, [&](std::array<double, 4>& v, const int32_t* vertex) {
        place(v, false);
        const Vec3 b = Read3(group, binormal, vertex);
        v = Tangent(Read3(group, normal, vertex), {v[0], v[1], v[2]},
                    binormal == SIZE_MAX ? nullptr : &b);
      });
      break;
    }
    case Kind::Binormal:
      break;
  }
}

// The attribute values of a group, every channel but a binormal (which
// only signs the tangent) one after the other in one array.
struct GroupValues {
  OxKernel::oxArray<float> floats;
  std::vector<size_t> first;  // per channel, where its values start
};

// The values of every group, the groups side by side on the machine's
// cores: each depends only on its group and the document.
std::vector<GroupValues> AttributeValues(const std::vector<oxMeshGroup>& groups,
                                         const oxGltfSkinning* skinning) {
  std::vector<GroupValues> values(groups.size());
  OxKernel::oxParallelFor(groups.size(), [&](size_t g) {
    const oxMeshGroup& group = groups[g];
    GroupValues& out = values[g];
    size_t total = 0;
    for (const Channel& channel : group.channels) {
      out.first.push_back(total);
      if (channel.kind != Kind::Binormal) total += group.vertices.size() * channel.width;
    }
    out.floats.resize(total);
    for (size_t c = 0; c < group.channels.size(); ++c) {
      if (group.channels[c].kind != Kind::Binormal)
        WriteChannel(group, c, skinning, out.floats.data() + out.first[c]);
    }
  });
  return values;
}

// Writes the group's attributes (from `values`) and its skinning; returns
// the attributes.
Json WriteGroup(const oxMeshGroup& group, const GroupValues& values, oxGltfBuilder& gltf,
                const oxGltfSkinning* skinning, SkinningLosses& losses) {
  Json attributes = Json::object();
  for (size_t c = 0; c < group.channels.size(); ++c) {
    const Channel& channel = group.channels[c];
    if (channel.kind == Kind::Binormal) continue;
    const char* type = channel.width == 2 ? "VEC2" : channel.width == 3 ? "VEC3" : "VEC4";
    const std::span<const float> floats(values.floats.data() + values.first[c],
                                        group.vertices.size() * channel.width);
    attributes[channel.name] =
        gltf.AddFloats(floats, type, kGltfArrayBuffer, channel.kind == Kind::Position);
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
  const std::vector<GroupValues> values = AttributeValues(groups, skinning);
  std::vector<oxGltfPrimitive> primitives;
  SkinningLosses losses;
  for (size_t g = 0; g < groups.size(); ++g) {
    const oxMeshGroup& group = groups[g];
    oxGltfPrimitive primitive;
    primitive.symbol = group.symbol;
    primitive.mode = group.mode;
    primitive.attributes = WriteGroup(group, values[g], gltf, skinning, losses);
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
