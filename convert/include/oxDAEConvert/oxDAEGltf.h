// Converting a loaded COLLADA document to glTF 2.0, as a host would: through
// the module's public tree only.
//
// What is carried over: the visual scene's node tree with each node's local
// matrix (COLLADA's column-vector matrix is written in glTF's column-major
// order), instanced nodes (copied, since a glTF node has one parent),
// instanced geometry with every primitive kind (see oxDAEGltfMesh), and the
// common-profile materials bound to it with their pictures. What is not
// carried over is named in a warning (kLogWarning) and left out: nothing is
// dropped silently. The document's up axis and unit are kept unless the
// options ask for glTF's (+Y up, meters): then one root node above the
// scene's nodes turns and scales everything below it, vertices, transforms
// and animations alike, and an info record says so. Kept axes or units that
// differ from glTF's are named in a warning.
#pragma once

#include <string>

#include <oxDAEReadWrite/oxDAEElements_Instance.h>
#include <oxDAEReadWrite/oxDAEReadWrite_File.h>

namespace OxDAEConvert {

// Results of ConvertToGltf besides 0.
enum oxGltfResult : int {
  kGltfNoScene = -60,      // no visual scene has the id the options ask for
  kGltfCannotWrite = -61,  // the output (or its .bin) cannot be written
};

struct oxGltfOptions {
  // The id of the visual scene to convert; empty for the one <scene>
  // instances, else the first.
  std::string scene;
  // Samples per second of the animations that are sampled (30).
  double fps = 30.0;
  // Turn a Z_UP or X_UP document to glTF's +Y up (false: keep its axes).
  bool yUp = false;
  // Scale the document's unit to glTF's meter (false: keep its unit).
  bool meters = false;
};

// The visual scene with id `id`, or for an empty id the one <scene>
// instances, else the first of the document; null when there is none.
const OxDAEReader::oxDAEVisualScene* FindVisualScene(const OxDAEReader::oxDAEFile& document,
                                                     std::string_view id = {});

// Writes `document` as glTF 2.0 to `path`: one .glb file (buffer and
// pictures inside) when the path ends in ".glb", else JSON with its buffer
// in a .bin of the same name beside it and the pictures referenced by
// relative paths. A document without a visual scene (a library of meshes)
// gets a root node for each geometry, with a warning. Returns 0,
// kGltfNoScene or kGltfCannotWrite, each failure after a logged error.
int ConvertToGltf(const OxDAEReader::oxDAEFile& document, const std::string& path,
                  const oxGltfOptions& options = {});

}  // namespace OxDAEConvert
