// Markup and lookups of the effect tests' documents: an image "img1", an
// effect "fx" with a common profile, techniques, texture chains, and the
// saved form of such documents.
#pragma once

#include <string>
#include <string_view>

#include "oxTestSupport.h"

namespace oxtest {

using OxDAEReader::oxDAEBaseElement;
using OxDAEReader::oxDAEEffect;
using OxDAEReader::oxDAEFile;
using OxDAEReader::oxDAEImage;

constexpr std::string_view kImages =
    R"(<library_images><image id="img1"><init_from>a.png</init_from></image></library_images>)";

// A document with the image "img1" and one effect "fx" whose common profile
// holds `profile`.
inline std::string CommonProfile(std::string_view profile) {
  return Collada(std::string(kImages) + R"(<library_effects><effect id="fx"><profile_COMMON>)" +
                 std::string(profile) + "</profile_COMMON></effect></library_effects>");
}

// As CommonProfile, with a technique holding `model`.
inline std::string Shading(std::string_view model) {
  return CommonProfile("<technique sid=\"t\">" + std::string(model) + "</technique>");
}

// A technique whose lambert diffuse is a texture naming `reference`.
inline std::string DiffuseTexture(std::string_view reference) {
  return R"(<technique sid="t"><lambert><diffuse><texture texture=")" + std::string(reference) +
         R"(" texcoord="UV0"/></diffuse></lambert></technique>)";
}

// A sampler param "samp" whose source is the surface param "surf", which is
// initialised from `surfaceImage`.
inline std::string SamplerChain(std::string_view surfaceImage) {
  return R"(<newparam sid="surf"><surface type="2D"><init_from>)" + std::string(surfaceImage) +
         R"(</init_from></surface></newparam>
           <newparam sid="samp"><sampler2D><source>surf</source></sampler2D></newparam>)";
}

constexpr std::string_view kSavedImages =
    "  <library_images>\n    <image id=\"img1\">\n      <init_from>a.png</init_from>\n"
    "    </image>\n  </library_images>\n";

// The saved form of the document CommonProfile makes, whose technique holds
// `model` (indented by ten blanks).
inline std::string SavedEffect(std::string_view model) {
  return Saved(std::string(kSavedImages) +
               "  <library_effects>\n    <effect id=\"fx\">\n      <profile_COMMON>\n"
               "        <technique>\n" +
               std::string(model) +
               "        </technique>\n      </profile_COMMON>\n    </effect>\n"
               "  </library_effects>\n");
}

inline const oxDAEEffect* EffectOf(const oxDAEFile& document) {
  return oxDAEEffect::DynamicCast(document.ResolveURI("#fx"));
}

inline OxDAEReader::oxDAEFxProfileCommon::Technique* TechniqueOf(const oxDAEFile& document) {
  const oxDAEEffect* effect = EffectOf(document);
  return effect && effect->commonProfile ? effect->commonProfile->technique : nullptr;
}

inline const oxDAEImage* Image1(const oxDAEFile& document) {
  return oxDAEImage::DynamicCast(document.ResolveURI("#img1"));
}

inline bool IsUnresolved(const oxDAEFile& document, const oxDAEBaseElement* element) {
  for (const oxDAEFile::Unresolved& u : document.GetUnresolved()) {
    if (u.element == element) return u.code == OxDAEReader::kDAEUnresolved;
  }
  return false;
}

}  // namespace oxtest
