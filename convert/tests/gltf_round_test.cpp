// Animations survive conversion: for every document with animated nodes,
// the world matrix of every node at ten times spread over its animation,
// as `oxdae tree --time T --exact --json` prints it and as the converted
// glTF gives it (its nodes with their animation samplers applied by the
// small evaluator below), agree within 1e-4 of the matrix's largest entry
// (at least 1). Nodes the converter names in a warning as moving only
// approximately (a shearing animated matrix) are left out of the check.
//
// The ten times are key times of the document's animations, spread evenly
// over them (all of them when there are fewer). Where glTF cannot take a
// curve's keys over, the converter samples it at every key time of the
// document and every frame; between samples glTF interpolates linearly,
// which is not the curve, while on them both are. Keys of a <matrix>
// animated linearly are taken over and interpolated as glTF interpolates,
// because sixteen numbers running linearly between two poses are no
// translation, rotation and scale: only at the keys are both the document.
#include <oxDAEConvert/oxDAEGltf.h>
#include <oxDAEConvert/oxDAEPose.h>

#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <set>

#include <nlohmann/json.hpp>

#include "cli_test_support.h"
#include "oxTestSupport.h"
#include "sweep_documents.h"

namespace {

using nlohmann::json;
using Matrix = std::array<double, 16>;  // column-major, as glTF and the host keep it

Matrix Multiply(const Matrix& a, const Matrix& b) {
  Matrix c{};
  for (int col = 0; col < 4; ++col) {
    for (int row = 0; row < 4; ++row) {
      for (int k = 0; k < 4; ++k)
        c[4 * col + row] += a[4 * k + row] * b[4 * col + k];
    }
  }
  return c;
}

constexpr Matrix kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// A converted .gltf with its .bin: nodes evaluated at any time.
class GltfScene {
 public:
  GltfScene(json gltf, std::string buffer) : m_gltf(std::move(gltf)), m_buffer(std::move(buffer)) {}

  // The world matrices at `time` of the nodes below the scene's roots, in
  // the order `visit` reaches them: depth first, children in order.
  Matrix World(size_t node, const Matrix& parent, float time) const {
    return Multiply(parent, Local(node, time));
  }
  const json& Node(size_t node) const { return m_gltf["nodes"][node]; }
  const json& Roots() const { return m_gltf["scenes"][0]["nodes"]; }

 private:
  std::vector<float> Floats(size_t accessor) const {
    const json& a = m_gltf["accessors"][accessor];
    const json& view = m_gltf["bufferViews"][a["bufferView"].get<size_t>()];
    const size_t offset = view.value("byteOffset", size_t{0}) + a.value("byteOffset", size_t{0});
    const size_t width = a["type"] == "SCALAR" ? 1 : a["type"] == "VEC3" ? 3 : 4;
    std::vector<float> values(a["count"].get<size_t>() * width);
    std::memcpy(values.data(), m_buffer.data() + offset, values.size() * 4);
    return values;
  }

  // The value of a sampler at `time`, `width` floats: held outside its
  // keys; STEP, LINEAR (rotations spherically) or CUBICSPLINE between.
  std::vector<double> Sample(const json& sampler, size_t width, float time) const {
    const std::vector<float> times = Floats(sampler["input"]);
    const std::vector<float> values = Floats(sampler["output"]);
    const std::string interpolation = sampler.value("interpolation", "LINEAR");
    const bool cubic = interpolation == "CUBICSPLINE";
    const auto key = [&](size_t k, size_t part) {
      const size_t at = cubic ? (3 * k + part) * width : k * width;
      return std::vector<double>(values.begin() + static_cast<ptrdiff_t>(at),
                                 values.begin() + static_cast<ptrdiff_t>(at + width));
    };
    if (time <= times.front()) return key(0, 1);
    if (time >= times.back()) return key(times.size() - 1, 1);
    const size_t k =
        static_cast<size_t>(std::upper_bound(times.begin(), times.end(), time) - times.begin()) - 1;
    const double dt = times[k + 1] - times[k];
    const double s = (time - times[k]) / dt;
    const std::vector<double> v0 = key(k, 1);
    const std::vector<double> v1 = key(k + 1, 1);
    std::vector<double> v(width);
    if (interpolation == "STEP") return v0;
    if (cubic) {
      const std::vector<double> out0 = key(k, 2);
      const std::vector<double> in1 = key(k + 1, 0);
      const double s2 = s * s, s3 = s2 * s;
      for (size_t i = 0; i < width; ++i) {
        v[i] = (2 * s3 - 3 * s2 + 1) * v0[i] + (s3 - 2 * s2 + s) * dt * out0[i] +
               (-2 * s3 + 3 * s2) * v1[i] + (s3 - s2) * dt * in1[i];
      }
      return v;
    }
    if (width == 4) return Slerp(v0, v1, s);
    for (size_t i = 0; i < width; ++i)
      v[i] = v0[i] + s * (v1[i] - v0[i]);
    return v;
  }

  static std::vector<double> Slerp(const std::vector<double>& a, std::vector<double> b, double s) {
    double dot = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    if (dot < 0) {
      for (double& c : b)
        c = -c;
      dot = -dot;
    }
    std::vector<double> q(4);
    if (dot > 0.9999995) {
      for (int i = 0; i < 4; ++i)
        q[i] = a[i] + s * (b[i] - a[i]);
    } else {
      const double angle = std::acos(dot);
      const double wa = std::sin((1 - s) * angle) / std::sin(angle);
      const double wb = std::sin(s * angle) / std::sin(angle);
      for (int i = 0; i < 4; ++i)
        q[i] = wa * a[i] + wb * b[i];
    }
    return q;
  }

  Matrix Local(size_t index, float time) const {
    const json& node = Node(index);
    if (node.contains("matrix")) {
      Matrix m;
      for (int i = 0; i < 16; ++i)
        m[i] = node["matrix"][i].get<double>();
      return m;
    }
    std::vector<double> t = node.value("translation", std::vector<double>{0, 0, 0});
    std::vector<double> r = node.value("rotation", std::vector<double>{0, 0, 0, 1});
    std::vector<double> s = node.value("scale", std::vector<double>{1, 1, 1});
    if (m_gltf.contains("animations")) {
      const json& animation = m_gltf["animations"][0];
      for (const json& channel : animation["channels"]) {
        if (channel["target"]["node"] != index) continue;
        const json& sampler = animation["samplers"][channel["sampler"].get<size_t>()];
        const std::string path = channel["target"]["path"];
        if (path == "translation") t = Sample(sampler, 3, time);
        if (path == "rotation") r = Sample(sampler, 4, time);
        if (path == "scale") s = Sample(sampler, 3, time);
      }
    }
    const double n = std::sqrt(r[0] * r[0] + r[1] * r[1] + r[2] * r[2] + r[3] * r[3]);
    const double x = r[0] / n, y = r[1] / n, z = r[2] / n, w = r[3] / n;
    const Matrix rotation = {1 - 2 * (y * y + z * z),
                             2 * (x * y + z * w),
                             2 * (x * z - y * w),
                             0,
                             2 * (x * y - z * w),
                             1 - 2 * (x * x + z * z),
                             2 * (y * z + x * w),
                             0,
                             2 * (x * z + y * w),
                             2 * (y * z - x * w),
                             1 - 2 * (x * x + y * y),
                             0,
                             0,
                             0,
                             0,
                             1};
    Matrix m = rotation;
    for (int c = 0; c < 3; ++c) {
      for (int row = 0; row < 3; ++row)
        m[4 * c + row] *= s[c];
    }
    m[12] = t[0];
    m[13] = t[1];
    m[14] = t[2];
    return m;
  }

  json m_gltf;
  std::string m_buffer;
};

// The nodes the converter names as moving only approximately (an animated
// matrix that shears, or an animation left out), by the name it gives them.
std::set<std::string> ApproximateNodes(const std::vector<oxtest::LogEntry>& log) {
  std::set<std::string> names;
  for (const oxtest::LogEntry& entry : log) {
    const std::string& text = entry.text;
    if (!text.starts_with("node '")) continue;
    if (text.find("shears") == std::string::npos && text.find("left out") == std::string::npos)
      continue;
    names.insert(text.substr(6, text.find("': ") - 6));
  }
  return names;
}

// Compares the world matrix of each node of the tree's `nodes` with its
// glTF node's, and their children in turn: a converted node's children are
// its child nodes first, in order, then what its instances add. A node in
// `approximate` is not compared, and its children are placed under the
// tree's world matrix for it, so that they are checked on their own.
void CompareNodes(const json& nodes, const json& gltfNodes, const GltfScene& scene,
                  const std::set<std::string>& approximate, const Matrix& parent, float time,
                  int& compared) {
  ASSERT_GE(gltfNodes.size(), nodes.size());
  for (size_t i = 0; i < nodes.size(); ++i) {
    const json& node = nodes[i];
    const size_t index = gltfNodes[i];
    Matrix world = scene.World(index, parent, time);
    // The converter names a node by its name, else its id; the tree prints
    // null for either when it is empty.
    const json& named = node["name"].is_string() ? node["name"] : node["id"];
    const std::string name = named.is_string() ? named.get<std::string>() : std::string();
    const json& children = scene.Node(index).value("children", json::array());
    if (approximate.contains(name)) {
      for (int k = 0; k < 16; ++k)
        world[k] = node["world"][k].get<double>();
      CompareNodes(node["children"], children, scene, approximate, world, time, compared);
      continue;
    }
    double largest = 1;
    for (const json& v : node["world"])
      largest = std::max(largest, std::abs(v.get<double>()));
    for (int k = 0; k < 16; ++k) {
      ASSERT_NEAR(world[k], node["world"][k].get<double>(), 1e-4 * largest)
          << "node '" << name << "' at " << time << ", entry " << k;
    }
    ++compared;
    CompareNodes(node["children"], children, scene, approximate, world, time, compared);
  }
}

class GltfRoundNumbers : public ::testing::TestWithParam<sweep::Document> {};

TEST_P(GltfRoundNumbers, WorldMatricesMatchTheTreeAtTenTimes) {
  oxtest::LogCapture log;
  OxDAEReader::oxDAEFile document;
  if (document.Load(OxKernel::oxURI(GetParam().path)) != 0)
    GTEST_SKIP() << "does not load (damaged on purpose)";
  const OxDAEConvert::oxDAEPose pose(document);
  if (pose.IsStill()) GTEST_SKIP() << "no animated node";
  const oxtest::TempFile out("", ".gltf");
  const std::string bin = std::filesystem::path(out.Path()).replace_extension(".bin").string();
  log.Clear();
  ASSERT_EQ(OxDAEConvert::ConvertToGltf(document, out.Path()), 0);
  const std::set<std::string> approximate = ApproximateNodes(log.entries);
  const GltfScene scene(json::parse(oxtest::ReadFile(out.Path())), oxtest::ReadFile(bin));
  std::remove(bin.c_str());
  const std::vector<float> keys = pose.GetKeyTimes();
  std::vector<float> times;
  for (size_t i = 0; i < 10; ++i)
    times.push_back(keys[(keys.size() - 1) * i / 9]);
  times.erase(std::unique(times.begin(), times.end()), times.end());
  int compared = 0;
  for (const float time : times) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", time);
    const clitest::ToolRun run = clitest::Oxdae("tree " + clitest::Quote(GetParam().path) +
                                                " --time " + text + " --exact --json");
    ASSERT_EQ(run.code, 0) << run.err;
    CompareNodes(run.Json()["nodes"], scene.Roots(), scene, approximate, kIdentity, time, compared);
  }
  RecordProperty("compared", compared);
  RecordProperty("approximate", static_cast<int>(approximate.size()));
}

INSTANTIATE_TEST_SUITE_P(Documents, GltfRoundNumbers, ::testing::ValuesIn(sweep::Documents()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
