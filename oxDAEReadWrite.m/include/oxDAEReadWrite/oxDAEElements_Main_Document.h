// The top of every document: <COLLADA>, <asset>, the <library_*> elements and
// <scene>, in the order the document nests them.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEAssetElement;
class oxDAELibrary;
class oxDAESceneElement;
class oxDAEInstance;

// <COLLADA> (also accepted as <DAE>): the version read (0.0.0 until read), the
// asset, the libraries in file order and the scene; asset and scene are null
// when absent. Versions outside 1.4.0 to 1.4.1 are not read beyond the root.
class oxDAEColladaElement : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEColladaElement, oxDAEBaseElement, "COLLADA")

 public:
  static constexpr std::string_view s_XMLTagVariant = "DAE";
  // The namespace written on the root.
  static constexpr std::string_view kNamespace = "http://www.collada.org/2005/11/COLLADASchema";

  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  // The library with the given tag that comes first in the file, or null.
  oxDAELibrary* GetLibrary(std::string_view tag) const;

  oxDAEVersion version;
  oxDAEAssetElement* asset = nullptr;
  oxArray<oxDAELibrary*> libraries;
  oxDAESceneElement* scene = nullptr;
};

// <asset>: contributor texts (empty by default), the up axis ("Y_UP"), the
// unit ("meter", 1.0 m), the dates and descriptive texts as read, and the
// authoring tool classified from its text (NONE, version 0.0.0).
class oxDAEAssetElement : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEAssetElement, oxDAEBaseElement, "asset")

 public:
  // The exporter family, recognised from the "authoring_tool" text.
  enum class EAuthoringTool : uint32_t {
    NONE = 0,
    ZENTILE_DEV = 1,
    ZENTILE_QR = 2,
    MAX = 4,
    EQUINOX3D = 5,
    MAYA = 7,
    XSI = 8,
    GOOGLE = 9,
    BLENDER = 10,
  };

  // Reads the known children; with several <contributor>s the last non-empty
  // text of each kind is kept. An up axis other than "X_UP", "Y_UP" or
  // "Z_UP" is logged and ignored.
  void Read(oxDAEFile& file) override;
  // Writes contributor, created (the modified date, since the created date is
  // not kept), keywords, modified, revision, subject, title, unit and up_axis;
  // empty texts are left out.
  void Write(oxDAEFile& file) override;

  EAuthoringTool GetAuthoringTool() const { return authoringToolCode; }
  const oxDAEVersion& GetAuthoringToolVersion() const { return authoringToolVersion; }
  // The classification of an authoring-tool text: case-insensitive "contains"
  // tests in a fixed order, the first match deciding.
  static EAuthoringTool ClassifyAuthoringTool(const oxString& text);
  // The version after "ColladaMax v", "ColladaMaya v" or "Google SketchUp ":
  // the leading digits and dots, read as major.minor.revision (so "3.02"
  // gives 3.2.0); 0.0.0 when no prefix is found.
  static oxDAEVersion ParseAuthoringToolVersion(const oxString& text);

  oxString author;
  oxString authoringTool;
  oxString comments;
  oxString copyright;
  oxString sourceData;
  oxString upAxis = "Y_UP";
  oxString unitName = "meter";
  float unitMeter = 1.0f;
  oxString modified;
  oxString revision;
  oxString title;
  oxString subject;
  oxString keywords;
  EAuthoringTool authoringToolCode = EAuthoringTool::NONE;
  oxDAEVersion authoringToolVersion;
};

// One <library_*> element; `type` holds its tag. Its children are the
// elements it holds, in file order (owned by the document).
class oxDAELibrary : public oxDAETypedElement {
  OX_DAE_ELEMENT(oxDAELibrary, oxDAETypedElement, "library")

 public:
  // The fifteen library tags, in the order the root tests them.
  static const std::string_view kTags[15];

  oxDAELibrary() = default;
  explicit oxDAELibrary(std::string_view tag) { type = oxString(tag); }

  // Creates an element for every child of a known kind ("animation",
  // "animation_clip", "camera", "controller", "geometry", "effect",
  // "force_field", "image", "light", "material", "node", "physics_material",
  // "physics_model", "physics_scene", "visual_scene"), whatever the library;
  // other children draw an unknown-tag warning.
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxArray<oxDAEElement*> children;
};

// <scene>: the visual scene instance (null when absent).
class oxDAESceneElement : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAESceneElement, oxDAEElement, "scene")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxDAEInstance* instanceVisualScene = nullptr;
};

}  // namespace OxDAEReader
