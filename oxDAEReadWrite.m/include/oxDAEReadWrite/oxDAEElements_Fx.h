// The texture side of effects: <image>, a named reference to a picture file;
// <surface> with its <format_hint>, which says how a texture object is
// initialised from images; and the samplers <sampler1D> ... <samplerDEPTH>,
// which say which surface is sampled and how. Surfaces and samplers are the
// values of effect parameters (oxDAEElements_Fx_Param.h): the parameter
// creates, reads, owns and writes them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "oxDAEReadWrite/oxDAEElements_Main.h"
#include "oxDAEReadWrite/oxDAEReadWrite_Enum.h"

namespace OxDAEReader {

// <image>: "format" (empty) and "width", "height", "depth" (0, meaning not
// given), and the text of <init_from> (empty; a later <init_from> replaces an
// earlier one), passed through oxDAEFile::CorrectURI. An image without an id
// takes its name as id. Extras are skipped when read and not written.
class oxDAEImage : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEImage, oxDAEElement, "image")

 public:
  void Read(oxDAEFile& file) override;
  // Writes "format" when set, then "height", "width" and "depth" in that
  // order, each when not 0, then one <init_from>, even when it is empty.
  void Write(oxDAEFile& file) override;

  oxString initFrom;
  oxString format;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t depth = 0;
};

// <format_hint> of a surface: <channels>, <precision> and <range> (each value
// 0, RGB / LOW / SNORM, until read; a later one replaces an earlier one) and
// every <option> in document order. Words the converters do not know read as
// UNKNOWN. Read, not written.
class oxDAEFxSurfaceFormatHint : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEFxSurfaceFormatHint, oxDAEBaseElement, "format_hint")

 public:
  void Read(oxDAEFile& file) override;

  EFxSurfaceFormatHintChannels channels = EFxSurfaceFormatHintChannels::RGB;
  EFxSurfaceFormatHintPrecision precision = EFxSurfaceFormatHintPrecision::LOW;
  EFxSurfaceFormatHintRange range = EFxSurfaceFormatHintRange::SNORM;
  oxArray<EFxSurfaceFormatHintOption> options;
};

// <surface>: its "type" (UNTYPED), <format> (empty), format hint (held by
// value), <size> (0, 0, 0), <viewport_ratio> (0, 0), <mip_levels> (0),
// <mipmap_generate> (false), whether size and viewport ratio were given
// (false), and how it is initialised: the init type (AS_NULL), the record of
// <init_cube>, <init_volume> and <init_planar>, and the <init_from> list.
// Read by the parameter that holds it; written by that parameter as an empty
// <surface>.
class oxDAEFxSurface : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEFxSurface, oxDAEBaseElement, "surface")

 public:
  // Which init element was read last. Values outside the enumeration are
  // answered by GetImage with "unsupported surface init type".
  enum class EInitType : int32_t { AS_NULL, AS_TARGET, CUBE, VOLUME, PLANAR, FROM };
  // How an <init_cube>, <init_volume> or <init_planar> names its images: one
  // ref for everything (ALL), one ref and a partial face order (PRIMARY), one
  // ref and all six faces in order (PRIMARY_ORDERED), one ref per face (FACES).
  enum class EInitMode : int32_t { ALL, PRIMARY, PRIMARY_ORDERED, FACES };

  static constexpr unsigned int kFaceCount = 6;

  // The record of the cube, volume and planar init types.
  struct Init {
    EInitMode mode = EInitMode::ALL;
    // The image of ALL and PRIMARY.
    oxString ref;
    // The <order> faces of PRIMARY (at most kFaceCount).
    oxArray<EFxSurfaceFace> faceOrder;
    // The image of each <face> of FACES, in document order.
    std::array<oxString, kFaceCount> faceRefs;
  };
  // One <init_from>: its text, "mip" and "slice" (0), and "face"
  // (POSITIVE_X; an unknown word reads as UNKNOWN).
  struct InitFrom {
    oxString ref;
    uint16_t mip = 0;
    uint16_t slice = 0;
    EFxSurfaceFace face = EFxSurfaceFace::POSITIVE_X;
  };

  // Reads "type" and the children. <size> holds three signed 16-bit
  // integers: a number outside -32768..32767 is clamped into that range;
  // components missing from the text stay 0. Texts of <mip_levels> and
  // <mipmap_generate> that do not read as their type leave the field as it
  // was. Malformed init elements are reported (errors) and reading goes on.
  void Read(oxDAEFile& file) override;

  // The image that initialises the surface, resolved as a URI through the
  // document (a bare id resolves as "#id"): for FROM the record at `index`,
  // for CUBE, VOLUME and PLANAR the ref of mode ALL (`index` is ignored).
  // Null, with an error naming the reason and then "cannot get the image
  // referenced by this surface", for the other init types and modes, an
  // index past the list, or a reference that is not an image.
  oxDAEImage* GetImage(oxDAEFile& file, unsigned int index) const;

  EFxSurfaceType type = EFxSurfaceType::UNTYPED;
  oxString format;
  oxDAEFxSurfaceFormatHint formatHint;
  float size[3] = {0.0f, 0.0f, 0.0f};
  float viewportRatio[2] = {0.0f, 0.0f};
  uint16_t mipLevels = 0;
  bool mipmapGenerate = false;
  bool sizeGiven = false;
  bool viewportRatioGiven = false;
  EInitType initType = EInitType::AS_NULL;
  Init init;
  oxArray<InitFrom> initFrom;
};

// A sampler (<sampler1D>, <sampler2D>, <sampler3D>, <samplerCUBE>,
// <samplerRECT>, <samplerDEPTH>): its type, fixed at construction (1D by
// default), <source>, the sid of the surface parameter it samples (empty),
// the wrap modes and filters (value 0, NONE), <border_color> (0, 0, 0, 0),
// <mipmap_maxlevel> (255) and <mipmap_bias> (0). Read by the parameter that
// holds it; written by that parameter as an empty element of its type.
class oxDAEFxSampler : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEFxSampler, oxDAEBaseElement, "")

 public:
  enum class EFxSamplerType : int32_t {
    SAMPLER_1D,
    SAMPLER_2D,
    SAMPLER_3D,
    SAMPLER_CUBE,
    SAMPLER_RECT,
    SAMPLER_DEPTH
  };
  // The tags of the six types, by type.
  static constexpr std::string_view kTags[6] = {"sampler1D",   "sampler2D",   "sampler3D",
                                                "samplerCUBE", "samplerRECT", "samplerDEPTH"};

  oxDAEFxSampler() = default;
  explicit oxDAEFxSampler(EFxSamplerType type) : samplerType(type) {}

  // Reads the children in any order; a later duplicate replaces an earlier
  // one. Words the converters do not know read as UNKNOWN; <border_color>
  // sets as many components as it holds numbers (at most four); a
  // <mipmap_maxlevel> or <mipmap_bias> text that does not read as its type
  // leaves the field as it was.
  void Read(oxDAEFile& file) override;

  EFxSamplerType GetSamplerType() const { return samplerType; }
  // The tag of the sampler's type; empty for a value outside the enumeration.
  std::string_view GetTypeTag() const {
    const auto index = static_cast<size_t>(samplerType);
    return index < std::size(kTags) ? kTags[index] : std::string_view();
  }

  oxString source;
  EFxSamplerWrap wrapS = EFxSamplerWrap::NONE;
  EFxSamplerWrap wrapT = EFxSamplerWrap::NONE;
  EFxSamplerWrap wrapP = EFxSamplerWrap::NONE;
  EFxSamplerFilter minFilter = EFxSamplerFilter::NONE;
  EFxSamplerFilter magFilter = EFxSamplerFilter::NONE;
  EFxSamplerFilter mipFilter = EFxSamplerFilter::NONE;
  float borderColor[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  uint8_t mipmapMaxLevel = 255;
  float mipmapBias = 0.0f;

 private:
  EFxSamplerType samplerType = EFxSamplerType::SAMPLER_1D;
};

}  // namespace OxDAEReader
