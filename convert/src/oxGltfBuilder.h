// The glTF 2.0 document being written: its JSON, one binary buffer, and the
// pictures to embed. Saves as .gltf (JSON, the buffer in a .bin beside it)
// or as .glb (one file, buffer and pictures inside).
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include <oxKernel/oxContainers.h>
#include <nlohmann/json.hpp>

namespace OxDAEConvert {

using Json = nlohmann::ordered_json;

// glTF component types and buffer-view targets used here.
enum : int {
  kGltfFloat = 5126,
  kGltfUnsignedInt = 5125,
  kGltfUnsignedShort = 5123,
  kGltfUnsignedByte = 5121,
  kGltfArrayBuffer = 34962,
  kGltfElementArrayBuffer = 34963,
};

class oxGltfBuilder {
 public:
  oxGltfBuilder();

  Json& Root() { return m_root; }
  // Appends `value` to the array `key` of the root (created when missing)
  // and returns its index.
  size_t Add(const char* key, Json value);

  // A buffer view over `bytes` appended to the buffer (4-byte aligned), with
  // `target` unless 0; returns its index.
  size_t AddBufferView(const void* bytes, size_t size, int target);
  // An accessor of the floats `values` as elements of `type` ("SCALAR",
  // "VEC3", ...) in a buffer view with `target` (0 for none), with min and
  // max when `bounds`; returns its index.
  size_t AddFloats(std::span<const float> values, const char* type, int target, bool bounds);
  // A vertex accessor of joint numbers, four per vertex (unsigned shorts);
  // returns its index.
  size_t AddJoints(std::span<const uint16_t> joints);
  // An index accessor (unsigned ints); returns its index.
  size_t AddIndices(std::span<const uint32_t> indices);
  // An image embedded in the buffer with its MIME type; returns the image's
  // index.
  size_t AddEmbeddedImage(const std::string& bytes, const std::string& mimeType);

  // Names `extension` in "extensionsUsed" (once).
  void UseExtension(const std::string& extension);
  // Counts one `what` (a tag, a kind of value) left out of the glTF.
  void LeaveOut(const std::string& what) { ++m_leftOut[what]; }
  // What was left out, with how often, for one warning each.
  const std::map<std::string, size_t>& LeftOut() const { return m_leftOut; }

  // Writes `path`: a .glb when it ends in ".glb", else JSON with the buffer
  // in PATH-without-extension.bin. False when a file cannot be written.
  bool Save(const std::string& path);

 private:
  Json m_root;
  std::map<std::string, size_t> m_leftOut;
  // In the host's large, unzeroed blocks: a converted document's buffer is
  // about as large as the document.
  OxKernel::oxArray<uint8_t> m_buffer;
};

}  // namespace OxDAEConvert
