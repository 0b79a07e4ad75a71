#include "oxDAEGltfMaterial.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <memory>

#include <oxDAEReadWrite/oxDAEElements_Fx_Param.h>
#include <oxDAEReadWrite/oxDAEReadWrite_FilePath.h>
#include <oxDAEReadWrite/oxDAETechniques_FCOLLADA.h>
#include <oxKernel/oxLog.h>

#include <oxDAEConvert/oxDAEReferencedFile.h>

#include "oxDAEGltfCommon.h"

namespace OxDAEConvert {

using namespace OxDAEReader;
using OxKernel::oxConcat;

namespace {

// COLLADA's sampler words and glTF's numbers for them, both ways of one
// table each: 0 where glTF has no value (the default applies).
constexpr std::array<std::pair<EFxSamplerWrap, int>, 4> kWraps = {{
    {EFxSamplerWrap::WRAP, 10497},    // REPEAT
    {EFxSamplerWrap::MIRROR, 33648},  // MIRRORED_REPEAT
    {EFxSamplerWrap::CLAMP, 33071},   // CLAMP_TO_EDGE
    {EFxSamplerWrap::BORDER, 33071},  // no border colour in glTF: the edge
}};
constexpr std::array<std::pair<EFxSamplerFilter, int>, 6> kFilters = {{
    {EFxSamplerFilter::NEAREST, 9728},
    {EFxSamplerFilter::LINEAR, 9729},
    {EFxSamplerFilter::NEAREST_MIPMAP_NEAREST, 9984},
    {EFxSamplerFilter::LINEAR_MIPMAP_NEAREST, 9985},
    {EFxSamplerFilter::NEAREST_MIPMAP_LINEAR, 9986},
    {EFxSamplerFilter::LINEAR_MIPMAP_LINEAR, 9987},
}};

template <class Word, size_t N>
int GltfNumber(const std::array<std::pair<Word, int>, N>& table, Word word) {
  for (const auto& [collada, gltf] : table) {
    if (collada == word) return gltf;
  }
  return 0;
}

// glTF's minifying filter: COLLADA's minfilter, with its <mipfilter>
// (NEAREST or LINEAR) joined in when the minfilter names no mipmap rule.
int MinFilter(const oxDAEFxSampler& sampler) {
  const int min = GltfNumber(kFilters, sampler.minFilter);
  const int mip = GltfNumber(kFilters, sampler.mipFilter);
  if ((min != 9728 && min != 9729) || (mip != 9728 && mip != 9729)) return min;
  return 9984 + (min - 9728) + 2 * (mip - 9728);
}

// glTF's magnifying filter (NEAREST or LINEAR only): a mipmap rule in
// COLLADA's magfilter keeps its first word.
int MagFilter(const oxDAEFxSampler& sampler) {
  const int mag = GltfNumber(kFilters, sampler.magFilter);
  if (mag >= 9984) return 9728 + (mag - 9984) % 2;
  return mag;
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

// True when a tool technique of the effect marks it double-sided: 3ds
// Max's <double_sided> flag, the one such technique the document tree
// models.
bool IsDoubleSided(const oxDAEEffect& effect) {
  for (const oxDAEExtraElement* extra : effect.extras) {
    for (const oxDAETechnique* technique : extra->techniques) {
      const auto* max = oxDAETechEffect_Max3D::DynamicCast(technique);
      if (max && max->doubleSided) return true;
    }
  }
  return false;
}

// The material's opacity: the <transparent> colour's alpha (A_ONE) or one
// minus its luminance (RGB_ZERO), scaled by <transparency>; 1 without them.
float Opacity(const oxDAEFxProfileCommon::Technique& technique) {
  const oxDAEFxCOTTransparent* transparent = technique.transparent;
  const float factor = technique.transparency ? technique.transparency->value : 1.0f;
  if (!transparent || transparent->kind != kFxValueColor) return 1.0f;
  const OxMath::oxFColor& c = transparent->color;
  const float opacity = transparent->useAlphaChannel
                            ? c.a * factor
                            : 1.0f - (0.212671f * c.r + 0.715160f * c.g + 0.072169f * c.b) * factor;
  return std::clamp(opacity, 0.0f, 1.0f);
}

// Blinn-Phong's exponent n read as the roughness sqrt(2 / (n + 2)); a
// Lambert surface is fully rough.
double Roughness(const oxDAEFxProfileCommon::Technique& technique) {
  if (technique.shadingModel == oxDAEFxProfileCommon::Technique::LAMBERT || !technique.shininess)
    return 1.0;
  const double shininess = std::max(0.0f, technique.shininess->value);
  return std::clamp(std::sqrt(2.0 / (shininess + 2.0)), 0.0, 1.0);
}

}  // namespace

oxGltfMaterials::oxGltfMaterials(const oxDAEFile& document, oxGltfBuilder& gltf,
                                 const std::string& path)
    : m_document(document), m_gltf(gltf), m_path(path), m_binary(path.ends_with(".glb")) {}

long oxGltfMaterials::MaterialFor(const std::string& symbol, const oxDAEBindMaterial* binding) {
  if (symbol.empty() || !binding || !binding->techniqueCommon) return -1;
  for (const oxDAEInstanceMaterial* bound : binding->techniqueCommon->instanceMaterials) {
    if (bound->symbol.View() == symbol && bound->material) return ConvertMaterial(*bound->material);
  }
  return -1;
}

long oxGltfMaterials::ConvertMaterial(const oxDAEMaterial& material) {
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
        m_gltf.LeaveOut("shader profiles (profile_CG, profile_GLSL, profile_GLES)");
    }
  }
  if (common && common->technique) FillMaterial(*common, gltfMaterial);
  if (effect && IsDoubleSided(*effect)) gltfMaterial["doubleSided"] = true;
  const long index = static_cast<long>(m_gltf.Add("materials", std::move(gltfMaterial)));
  m_materials.emplace(&material, index);
  return index;
}

void oxGltfMaterials::FillMaterial(const oxDAEFxProfileCommon& profile, Json& material) {
  const oxDAEFxProfileCommon::Technique& technique = *profile.technique;
  using Technique = oxDAEFxProfileCommon::Technique;
  Json pbr = {{"metallicFactor", 0.0}};
  const bool unlit = technique.shadingModel == Technique::CONSTANT;
  const oxDAEFxColorOrTextureType* base = unlit ? technique.emission : technique.diffuse;
  const float alpha = Opacity(technique);
  if (base && base->IsTexture()) {
    if (const long texture = TextureFor(*base, profile); texture >= 0)
      pbr["baseColorTexture"] = {{"index", texture}};
    if (alpha < 1.0f) pbr["baseColorFactor"] = {1.0, 1.0, 1.0, alpha};
  } else if (base && base->kind == kFxValueColor) {
    OxMath::oxFColor color = base->color;
    color.a = alpha;
    pbr["baseColorFactor"] = Color(color, true);
  }
  if (unlit) {
    material["extensions"] = {{"KHR_materials_unlit", Json::object()}};
    m_gltf.UseExtension("KHR_materials_unlit");
  } else {
    pbr["roughnessFactor"] = Roughness(technique);
    if (const oxDAEFxColorOrTextureType* emission = technique.emission) {
      if (emission->IsTexture()) {
        if (const long texture = TextureFor(*emission, profile); texture >= 0) {
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

// One glTF texture per picture and sampler: the sampler is the one the
// texture's reference names in the profile (none when it names the image
// itself).
long oxGltfMaterials::TextureFor(const oxDAEFxColorOrTextureType& value,
                                 const oxDAEFxProfileCommon& profile) {
  if (!value.image) return -1;
  const oxDAEFxNewParam* param = profile.GetNewParam(value.texture);
  const long sampler = SamplerFor(param ? param->GetSamplerValue() : nullptr);
  const auto key = std::make_pair(value.image, sampler);
  if (const auto it = m_textures.find(key); it != m_textures.end()) return it->second;
  const long source = ImageFor(*value.image);
  long texture = -1;
  if (source >= 0) {
    Json gltfTexture = {{"source", source}};
    if (sampler >= 0) gltfTexture["sampler"] = sampler;
    texture = static_cast<long>(m_gltf.Add("textures", std::move(gltfTexture)));
  }
  m_textures.emplace(key, texture);
  return texture;
}

// A glTF sampler for the COLLADA sampler's wrap and filter words, shared by
// every texture with the same ones; -1 when none is set (glTF's defaults,
// repeat and the viewer's filters, are COLLADA's too). A border wrap
// becomes clamping to the edge, counted as left out.
long oxGltfMaterials::SamplerFor(const oxDAEFxSampler* sampler) {
  if (!sampler) return -1;
  const auto key =
      std::make_tuple(GltfNumber(kWraps, sampler->wrapS), GltfNumber(kWraps, sampler->wrapT),
                      MagFilter(*sampler), MinFilter(*sampler));
  if (key == std::make_tuple(0, 0, 0, 0)) return -1;
  if (const auto it = m_samplers.find(key); it != m_samplers.end()) return it->second;
  if (sampler->wrapS == EFxSamplerWrap::BORDER || sampler->wrapT == EFxSamplerWrap::BORDER)
    m_gltf.LeaveOut("border colours of texture samplers (clamped to the edge instead)");
  Json gltfSampler = Json::object();
  const auto set = [&gltfSampler](const char* name, int value) {
    if (value != 0) gltfSampler[name] = value;
  };
  set("magFilter", std::get<2>(key));
  set("minFilter", std::get<3>(key));
  set("wrapS", std::get<0>(key));
  set("wrapT", std::get<1>(key));
  const long index = static_cast<long>(m_gltf.Add("samplers", std::move(gltfSampler)));
  m_samplers.emplace(key, index);
  return index;
}

// The glTF image of `image`, written (or found missing, with a warning)
// once however many textures show it.
long oxGltfMaterials::ImageFor(const oxDAEImage& image) {
  if (const auto it = m_images.find(&image); it != m_images.end()) return it->second;
  const long index = WriteImage(image);
  m_images.emplace(&image, index);
  return index;
}

// The picture of `image`, embedded (.glb) or referred to (.gltf); -1 with a
// warning when there is none glTF can carry.
long oxGltfMaterials::WriteImage(const oxDAEImage& image) {
  const std::string path(GetReferencedFilePath(m_document, image.initFrom));
  const std::string name = oxConcat("image '", NameOf(image), "' (", image.initFrom, ")");
  if (path.empty() || !ReferencedFileExists(m_document, OxKernel::oxString(path))) {
    OX_LOG(OxKernel::kLogWarning, name + " names no picture found here; it is left out");
    return -1;
  }
  const std::string bytes = ReadReferencedFile(m_document, path);
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

}  // namespace OxDAEConvert
