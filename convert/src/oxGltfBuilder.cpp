#include "oxGltfBuilder.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>

namespace OxDAEConvert {

namespace {

size_t Components(const char* type) {
  const std::string_view t(type);
  if (t == "SCALAR") return 1;
  if (t == "VEC2") return 2;
  if (t == "VEC3") return 3;
  if (t == "VEC4") return 4;
  return 16;
}

void Pad(std::string& bytes, char with) {
  while (bytes.size() % 4 != 0)
    bytes += with;
}

void AppendU32(std::string& out, uint32_t value) {
  for (int i = 0; i < 4; ++i)
    out += static_cast<char>(value >> (8 * i));
}

// Writes the pieces one after the other into `path`.
bool WriteFile(const std::string& path, std::initializer_list<std::string_view> pieces) {
  std::ofstream out(path, std::ios::binary);
  for (const std::string_view piece : pieces)
    out.write(piece.data(), static_cast<std::streamsize>(piece.size()));
  return static_cast<bool>(out.flush());
}

}  // namespace

oxGltfBuilder::oxGltfBuilder() {
  m_root["asset"] = {{"version", "2.0"}, {"generator", "oxdae convert"}};
}

size_t oxGltfBuilder::Add(const char* key, Json value) {
  Json& array = m_root[key];
  if (!array.is_array()) array = Json::array();
  array.push_back(std::move(value));
  return array.size() - 1;
}

size_t oxGltfBuilder::AddBufferView(const void* bytes, size_t size, int target) {
  while (m_buffer.size() % 4 != 0)
    m_buffer.push_back(0);
  const size_t offset = m_buffer.size();
  m_buffer.resize(offset + size);
  if (size) std::memcpy(m_buffer.data() + offset, bytes, size);
  Json view = {{"buffer", 0}, {"byteOffset", offset}, {"byteLength", size}};
  if (target) view["target"] = target;
  return Add("bufferViews", std::move(view));
}

size_t oxGltfBuilder::AddFloats(std::span<const float> values, const char* type, int target,
                                bool bounds) {
  const size_t n = Components(type);
  const size_t view = AddBufferView(values.data(), values.size() * sizeof(float), target);
  Json accessor = {{"bufferView", view},
                   {"componentType", kGltfFloat},
                   {"count", values.size() / n},
                   {"type", type}};
  if (bounds) {
    std::vector<float> low(n, std::numeric_limits<float>::max());
    std::vector<float> high(n, std::numeric_limits<float>::lowest());
    for (size_t i = 0; i + n <= values.size(); i += n) {
      for (size_t j = 0; j < n; ++j) {
        low[j] = std::min(low[j], values[i + j]);
        high[j] = std::max(high[j], values[i + j]);
      }
    }
    accessor["min"] = low;
    accessor["max"] = high;
  }
  return Add("accessors", std::move(accessor));
}

size_t oxGltfBuilder::AddJoints(std::span<const uint16_t> joints) {
  const size_t view =
      AddBufferView(joints.data(), joints.size() * sizeof(uint16_t), kGltfArrayBuffer);
  return Add("accessors", {{"bufferView", view},
                           {"componentType", kGltfUnsignedShort},
                           {"count", joints.size() / 4},
                           {"type", "VEC4"}});
}

size_t oxGltfBuilder::AddIndices(std::span<const uint32_t> indices) {
  const size_t view =
      AddBufferView(indices.data(), indices.size() * sizeof(uint32_t), kGltfElementArrayBuffer);
  return Add("accessors", {{"bufferView", view},
                           {"componentType", kGltfUnsignedInt},
                           {"count", indices.size()},
                           {"type", "SCALAR"}});
}

size_t oxGltfBuilder::AddEmbeddedImage(const std::string& bytes, const std::string& mimeType) {
  const size_t view = AddBufferView(bytes.data(), bytes.size(), 0);
  return Add("images", {{"bufferView", view}, {"mimeType", mimeType}});
}

void oxGltfBuilder::UseExtension(const std::string& extension) {
  Json& used = m_root["extensionsUsed"];
  if (std::find(used.begin(), used.end(), extension) == used.end()) used.push_back(extension);
}

bool oxGltfBuilder::Save(const std::string& path) {
  const bool binary = path.size() >= 4 && path.ends_with(".glb");
  while (m_buffer.size() % 4 != 0)
    m_buffer.push_back(0);
  const std::string_view buffer(reinterpret_cast<const char*>(m_buffer.data()), m_buffer.size());
  if (!buffer.empty()) {
    Json description = {{"byteLength", buffer.size()}};
    if (!binary) {
      const std::filesystem::path bin = std::filesystem::path(path).replace_extension(".bin");
      description["uri"] = bin.filename().string();
      if (!WriteFile(bin.string(), {buffer})) return false;
    }
    m_root["buffers"] = Json::array({description});
  }
  std::string json = m_root.dump(binary ? -1 : 1, ' ', false, Json::error_handler_t::replace);
  if (!binary) return WriteFile(path, {json, "\n"});
  Pad(json, ' ');
  std::string header = "glTF";
  AppendU32(header, 2);
  const size_t binChunk = buffer.empty() ? 0 : 8 + buffer.size();
  AppendU32(header, static_cast<uint32_t>(12 + 8 + json.size() + binChunk));
  AppendU32(header, static_cast<uint32_t>(json.size()));
  AppendU32(header, 0x4E4F534A);  // "JSON"
  std::string binHeader;
  if (!buffer.empty()) {
    AppendU32(binHeader, static_cast<uint32_t>(buffer.size()));
    AppendU32(binHeader, 0x004E4942);  // "BIN\0"
  }
  return WriteFile(path, {header, json, binHeader, buffer});
}

}  // namespace OxDAEConvert
