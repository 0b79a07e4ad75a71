// COLLADA materials as glTF materials: the common profile's values, its
// textures with their samplers, and the pictures they show.
#pragma once

#include <map>
#include <string>
#include <tuple>

#include <oxDAEReadWrite/oxDAEElements_Fx.h>
#include <oxDAEReadWrite/oxDAEElements_Instance.h>
#include <oxDAEReadWrite/oxDAEElements_Material.h>
#include <oxDAEReadWrite/oxDAEReadWrite_File.h>

#include "oxGltfBuilder.h"

namespace OxDAEConvert {

// The materials, textures, samplers and images of one conversion, each
// written once into `gltf` however often it is bound.
class oxGltfMaterials {
 public:
  // `path` is the output's path: a .glb embeds pictures, a .gltf refers to
  // them relative to its folder.
  oxGltfMaterials(const OxDAEReader::oxDAEFile& document, oxGltfBuilder& gltf,
                  const std::string& path);

  // The glTF material bound to `symbol` by `binding`, or -1 (glTF's default
  // material) when nothing is bound to it.
  long MaterialFor(const std::string& symbol, const OxDAEReader::oxDAEBindMaterial* binding);

 private:
  long ConvertMaterial(const OxDAEReader::oxDAEMaterial& material);
  void FillMaterial(const OxDAEReader::oxDAEFxProfileCommon& profile, Json& material);
  long TextureFor(const OxDAEReader::oxDAEFxColorOrTextureType& value,
                  const OxDAEReader::oxDAEFxProfileCommon& profile);
  long SamplerFor(const OxDAEReader::oxDAEFxSampler* sampler);
  long ImageFor(const OxDAEReader::oxDAEImage& image);
  long WriteImage(const OxDAEReader::oxDAEImage& image);

  const OxDAEReader::oxDAEFile& m_document;
  oxGltfBuilder& m_gltf;
  std::string m_path;
  bool m_binary = false;
  std::map<const OxDAEReader::oxDAEMaterial*, long> m_materials;
  std::map<std::pair<const OxDAEReader::oxDAEImage*, long>, long> m_textures;
  std::map<const OxDAEReader::oxDAEImage*, long> m_images;
  // glTF samplers by wrapS, wrapT, magFilter, minFilter (0 for unset).
  std::map<std::tuple<int, int, int, int>, long> m_samplers;
};

}  // namespace OxDAEConvert
