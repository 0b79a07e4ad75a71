// A deterministic COLLADA 1.4.1 scene for the scene benchmark: a visual
// scene of many nested nodes with transforms and instances, and keyframe
// animations that drive some of those nodes' transforms.
//
// Every node has either a <matrix> or the exporters' usual translate, rotate
// and scale (sids "trans", "rot", "scale"), and at most one instance: a
// geometry with its material binding, a light, a camera or a library node.
// Each animation holds one channel with its INPUT (key times), OUTPUT (key
// values) and INTERPOLATION ("LINEAR") sources; every other channel drives
// a node's "rot.ANGLE" (one float per key), the others a node's "trans"
// (three floats per key). The same options always give the same bytes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace oxdae_bench {

// Deepest nesting of the visual scene; its root nodes are at depth 1.
constexpr uint32_t kSceneMaxDepth = 6;

struct SceneOptions {
  uint32_t nodes = 100'000;  // nodes of the visual scene
  uint32_t channels = 1'000;
  uint32_t keys = 1'000;  // keys of each channel
  uint64_t seed = 1;
};

// What a generated scene holds.
struct SceneSummary {
  uint64_t bytes = 0;  // 0 when writing failed
  uint32_t nodes = 0;  // of the visual scene; the library nodes are extra
  uint32_t libraryNodes = 0;
  uint32_t depth = 0;
  uint32_t matrixNodes = 0;
  uint32_t geometryInstances = 0;
  uint32_t lightInstances = 0;
  uint32_t cameraInstances = 0;
  uint32_t nodeInstances = 0;
  uint32_t angleChannels = 0;      // one float per key
  uint32_t translateChannels = 0;  // three floats per key
  uint32_t keys = 0;               // per channel
};

// Writes the scene; the summary's bytes are 0 when writing failed.
SceneSummary WriteScene(const SceneOptions& options, std::FILE* out);

// Writes the scene to the file `path`; the summary's bytes are 0 when the
// file could not be created or written.
SceneSummary WriteSceneFile(const SceneOptions& options, const std::string& path);

}  // namespace oxdae_bench
