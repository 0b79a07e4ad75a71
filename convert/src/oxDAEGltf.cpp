#include "oxDAEConvert/oxDAEGltf.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxArchive.h>
#include <oxKernel/oxLog.h>

#include "oxDAEGltfMesh.h"
#include "oxGltfBuilder.h"

namespace OxDAEConvert {

using namespace OxDAEReader;
using OxKernel::oxConcat;

namespace {

// Instanced nodes nested deeper than this are left out: a document may
// instance a node inside itself.
constexpr int kMostInstanceDepth = 64;

std::string NameOf(const oxDAEElement& element) {
  if (!element.name.empty()) return std::string(element.name);
  return std::string(element.id);
}

bool IsIdentity(const OxMath::oxMatrix44& m) {
  for (int i = 0; i < 16; ++i) {
    if (m.m[i] != ((i % 5 == 0) ? 1.0f : 0.0f)) return false;
  }
  return true;
}

Json Color(const OxMath::oxFColor& c, bool alpha) {
  Json color = {std::clamp(c.r, 0.0f, 1.0f), std::clamp(c.g, 0.0f, 1.0f),
                std::clamp(c.b, 0.0f, 1.0f)};
  if (alpha) color.push_back(std::clamp(c.a, 0.0f, 1.0f));
  return color;
}

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

// "image/png" or "image/jpeg" by the file's first bytes; empty otherwise.
std::string MimeType(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG")) return "image/png";
  if (bytes.starts_with("\xFF\xD8\xFF")) return "image/jpeg";
  return {};
}

// A relative reference from `folder` to `file` as a URI: folders joined by
// "/", characters outside the URI grammar %-escaped.
std::string RelativeURI(const std::filesystem::path& folder, const std::string& file) {
  std::error_code ec;
  std::filesystem::path relative = std::filesystem::relative(file, folder, ec);
  if (ec || relative.empty()) relative = std::filesystem::absolute(file, ec);
  std::string uri;
  for (const unsigned char c : relative.generic_string()) {
    if (std::isalnum(c) ||
        std::string_view("-._~/").find(static_cast<char>(c)) != std::string_view::npos) {
      uri += static_cast<char>(c);
    } else {
      static const char* kHex = "0123456789ABCDEF";
      uri += '%';
      uri += kHex[c >> 4];
      uri += kHex[c & 15];
    }
  }
  return uri;
}

class Converter {
 public:
  Converter(const oxDAEFile& document, const std::string& path)
      : m_document(document), m_path(path), m_binary(path.ends_with(".glb")) {}

  int Run(const oxDAEVisualScene& scene) {
    Json roots = Json::array();
    for (const oxDAENode* node : scene.nodes)
      roots.push_back(ConvertNode(*node, 0));
    Json gltfScene = {{"nodes", roots}};
    if (!scene.name.empty() || !scene.id.empty()) gltfScene["name"] = NameOf(scene);
    m_gltf.Add("scenes", std::move(gltfScene));
    m_gltf.Root()["scene"] = 0;
    ReportLeftOut();
    if (!m_extensions.empty()) m_gltf.Root()["extensionsUsed"] = m_extensions;
    if (!m_gltf.Save(m_path)) {
      OX_LOG(OxKernel::kLogError, oxConcat("cannot write '", m_path, "'"));
      return kGltfCannotWrite;
    }
    return 0;
  }

 private:
  size_t ConvertNode(const oxDAENode& node, int instanceDepth) {
    Json gltfNode = Json::object();
    if (const std::string name = NameOf(node); !name.empty()) gltfNode["name"] = name;
    const OxMath::oxMatrix44 local = node.ComputeLocalMatrix();
    if (!std::all_of(local.m, local.m + 16, [](float v) { return std::isfinite(v); })) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat("node '", NameOf(node),
                      "': its transforms give a matrix that is not finite; the node is left "
                      "where its parent is"));
    } else if (!IsIdentity(local)) {
      gltfNode["matrix"] = std::vector<float>(local.m, local.m + 16);
    }
    Json children = Json::array();
    for (const oxDAENode* child : node.nodes)
      children.push_back(ConvertNode(*child, instanceDepth));
    for (const oxDAEInstance* instance : node.instances)
      ConvertInstance(*instance, gltfNode, children, instanceDepth);
    if (!children.empty()) gltfNode["children"] = children;
    return m_gltf.Add("nodes", std::move(gltfNode));
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
    if (instance.kind == EToken::NODE) {
      const auto* target = oxDAENode::DynamicCast(instance.target);
      if (!target) return;
      if (instanceDepth >= kMostInstanceDepth) {
        ++m_leftOut["<instance_node> nested deeper than 64 instances"];
        return;
      }
      children.push_back(ConvertNode(*target, instanceDepth + 1));
      return;
    }
    ++m_leftOut[oxConcat("<", oxDAEInstance::TagOfKind(instance.kind), ">")];
  }

  // The glTF mesh of `geometry` with its materials bound by `binding`; -1
  // for a geometry with nothing to draw.
  long MeshFor(const oxDAEGeometry& geometry, const oxDAEBindMaterial* binding) {
    auto [primitives, added] = m_geometries.try_emplace(&geometry);
    if (added) primitives->second = ConvertGeometry(geometry, m_gltf);
    if (primitives->second.empty()) return -1;
    Json gltfPrimitives = Json::array();
    std::vector<long> materials;
    for (const oxGltfPrimitive& primitive : primitives->second) {
      Json p = {{"attributes", primitive.attributes}, {"indices", primitive.indices}};
      if (primitive.mode != 4) p["mode"] = primitive.mode;
      const long material = MaterialFor(primitive.symbol, binding);
      if (material >= 0) p["material"] = material;
      materials.push_back(material);
      gltfPrimitives.push_back(std::move(p));
    }
    const auto key = std::make_pair(&geometry, materials);
    if (const auto it = m_meshes.find(key); it != m_meshes.end()) return it->second;
    Json mesh = {{"primitives", std::move(gltfPrimitives)}};
    if (const std::string name = NameOf(geometry); !name.empty()) mesh["name"] = name;
    const long index = static_cast<long>(m_gltf.Add("meshes", std::move(mesh)));
    m_meshes.emplace(key, index);
    return index;
  }

  // The glTF material bound to `symbol`, or -1 (glTF's default material).
  long MaterialFor(const std::string& symbol, const oxDAEBindMaterial* binding) {
    if (symbol.empty() || !binding || !binding->techniqueCommon) return -1;
    for (const oxDAEInstanceMaterial* bound : binding->techniqueCommon->instanceMaterials) {
      if (bound->symbol.View() == symbol && bound->material)
        return ConvertMaterial(*bound->material);
    }
    return -1;
  }

  long ConvertMaterial(const oxDAEMaterial& material) {
    if (const auto it = m_materials.find(&material); it != m_materials.end()) return it->second;
    Json gltfMaterial = Json::object();
    if (const std::string name = NameOf(material); !name.empty()) gltfMaterial["name"] = name;
    const oxDAEEffect* effect = material.instanceEffect ? material.instanceEffect->effect : nullptr;
    const auto* common =
        effect ? oxDAEFxProfileCommon::DynamicCast(effect->GetProfile(oxDAEFxProfile::COMMON))
               : nullptr;
    if (effect) {
      for (const oxDAEFxProfile* profile : effect->profiles) {
        if (profile->GetProfileType() != oxDAEFxProfile::COMMON)
          ++m_leftOut["shader profiles (profile_CG, profile_GLSL, profile_GLES)"];
      }
    }
    if (common && common->technique) FillMaterial(*common->technique, gltfMaterial);
    const long index = static_cast<long>(m_gltf.Add("materials", std::move(gltfMaterial)));
    m_materials.emplace(&material, index);
    return index;
  }

  void FillMaterial(const oxDAEFxProfileCommon::Technique& technique, Json& material) {
    using Technique = oxDAEFxProfileCommon::Technique;
    Json pbr = {{"metallicFactor", 0.0}};
    const bool unlit = technique.shadingModel == Technique::CONSTANT;
    const oxDAEFxColorOrTextureType* base = unlit ? technique.emission : technique.diffuse;
    const float alpha = Opacity(technique);
    if (base && base->IsTexture()) {
      if (const long texture = TextureFor(base->image); texture >= 0)
        pbr["baseColorTexture"] = {{"index", texture}};
      if (alpha < 1.0f) pbr["baseColorFactor"] = {1.0, 1.0, 1.0, alpha};
    } else if (base && base->kind == kFxValueColor) {
      OxMath::oxFColor color = base->color;
      color.a = alpha;
      pbr["baseColorFactor"] = Color(color, true);
    }
    if (unlit) {
      material["extensions"] = {{"KHR_materials_unlit", Json::object()}};
      UseExtension("KHR_materials_unlit");
    } else {
      pbr["roughnessFactor"] = Roughness(technique);
      if (const oxDAEFxColorOrTextureType* emission = technique.emission) {
        if (emission->IsTexture()) {
          if (const long texture = TextureFor(emission->image); texture >= 0) {
            material["emissiveTexture"] = {{"index", texture}};
            material["emissiveFactor"] = {1.0, 1.0, 1.0};
          }
        } else if (emission->kind == kFxValueColor &&
                   (emission->color.r > 0 || emission->color.g > 0 || emission->color.b > 0)) {
          material["emissiveFactor"] = Color(emission->color, false);
        }
      }
    }
    material["pbrMetallicRoughness"] = std::move(pbr);
    if (alpha < 1.0f) material["alphaMode"] = "BLEND";
  }

  // The material's opacity: the <transparent> colour's alpha (A_ONE) or one
  // minus its luminance (RGB_ZERO), scaled by <transparency>; 1 without them.
  static float Opacity(const oxDAEFxProfileCommon::Technique& technique) {
    const oxDAEFxCOTTransparent* transparent = technique.transparent;
    const float factor = technique.transparency ? technique.transparency->value : 1.0f;
    if (!transparent || transparent->kind != kFxValueColor) return 1.0f;
    const OxMath::oxFColor& c = transparent->color;
    const float opacity =
        transparent->useAlphaChannel
            ? c.a * factor
            : 1.0f - (0.212671f * c.r + 0.715160f * c.g + 0.072169f * c.b) * factor;
    return std::clamp(opacity, 0.0f, 1.0f);
  }

  // Blinn-Phong's exponent n read as the roughness sqrt(2 / (n + 2)); a
  // Lambert surface is fully rough.
  static double Roughness(const oxDAEFxProfileCommon::Technique& technique) {
    if (technique.shadingModel == oxDAEFxProfileCommon::Technique::LAMBERT || !technique.shininess)
      return 1.0;
    const double shininess = std::max(0.0f, technique.shininess->value);
    return std::clamp(std::sqrt(2.0 / (shininess + 2.0)), 0.0, 1.0);
  }

  long TextureFor(const oxDAEImage* image) {
    if (!image) return -1;
    if (const auto it = m_textures.find(image); it != m_textures.end()) return it->second;
    const long source = ImageFor(*image);
    const long texture =
        source < 0 ? -1 : static_cast<long>(m_gltf.Add("textures", {{"source", source}}));
    m_textures.emplace(image, texture);
    return texture;
  }

  long ImageFor(const oxDAEImage& image) {
    const std::string path(GetReferencedFilePath(m_document, image.initFrom));
    const std::string name = oxConcat("image '", NameOf(image), "' (", image.initFrom, ")");
    if (path.empty() || !ReferencedFileExists(m_document, OxKernel::oxString(path))) {
      OX_LOG(OxKernel::kLogWarning, name + " names no picture found here; it is left out");
      return -1;
    }
    const std::string bytes = ReadPicture(path);
    if (bytes.empty()) {
      OX_LOG(OxKernel::kLogWarning,
             name +
                 " cannot be read again (a picture of an archive read from memory, or an "
                 "empty file); it is left out");
      return -1;
    }
    const std::string mime = MimeType(bytes);
    if (mime.empty()) {
      OX_LOG(OxKernel::kLogWarning,
             name + " is neither PNG nor JPEG, which glTF cannot carry; it is left out");
      return -1;
    }
    if (m_binary) return static_cast<long>(m_gltf.AddEmbeddedImage(bytes, mime));
    if (!m_document.GetArchiveEntry().empty()) {
      // A picture inside an archive has no file a .gltf could refer to.
      OX_LOG(OxKernel::kLogWarning, name + " lies inside the archive; write a .glb to embed it");
      return -1;
    }
    const std::filesystem::path folder = std::filesystem::absolute(m_path).parent_path();
    return static_cast<long>(m_gltf.Add("images", {{"uri", RelativeURI(folder, path)}}));
  }

  // The bytes of a picture file, or of an "ARCHIVE!/entry" of the
  // document's archive.
  std::string ReadPicture(const std::string& path) const {
    const std::string prefix = std::string(m_document.GetFileURI().GetString()) + "!/";
    if (m_document.GetArchiveEntry().empty() || !path.starts_with(prefix)) return ReadBytes(path);
    // A document read from memory has no archive file to open again.
    std::error_code ec;
    const OxKernel::oxString file = m_document.GetFileURI().GetFilePath();
    if (!std::filesystem::is_regular_file(file.View(), ec)) return {};
    std::unique_ptr<OxKernel::oxArchive> archive;
    if (OxKernel::oxArchive::OpenFile(archive, file, m_document.GetFileURI().GetString().View()) !=
        0)
      return {};
    const auto* entry = archive->Find(std::string_view(path).substr(prefix.size()));
    OxKernel::oxArray<char> bytes;
    if (!entry || archive->Read(*entry, bytes) != 0) return {};
    return std::string(bytes.data(), entry->size);
  }

  void UseExtension(const std::string& name) {
    if (std::find(m_extensions.begin(), m_extensions.end(), name) == m_extensions.end())
      m_extensions.push_back(name);
  }

  void ReportLeftOut() {
    for (const auto& [what, count] : m_leftOut) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat(what, ": ", count, " left out (the converter does not carry them over)"));
    }
  }

  const oxDAEFile& m_document;
  std::string m_path;
  bool m_binary = false;
  oxGltfBuilder m_gltf;
  std::map<const oxDAEGeometry*, std::vector<oxGltfPrimitive>> m_geometries;
  std::map<std::pair<const oxDAEGeometry*, std::vector<long>>, long> m_meshes;
  std::map<const oxDAEMaterial*, long> m_materials;
  std::map<const oxDAEImage*, long> m_textures;
  std::map<std::string, size_t> m_leftOut;
  std::vector<std::string> m_extensions;
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
  if (!scene) {
    OX_LOG(OxKernel::kLogError, options.scene.empty()
                                    ? std::string("the document has no visual scene to convert")
                                    : oxConcat("no visual scene with id '", options.scene, "'"));
    return kGltfNoScene;
  }
  return Converter(document, path).Run(*scene);
}

}  // namespace OxDAEConvert
