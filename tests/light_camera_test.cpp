// Lights and cameras: their common techniques, the values kept as read, and
// what is written back.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Warning;

namespace {

using oxtest::kNoLog;

std::string Lights(std::string_view lights) {
  return Collada("<library_lights>" + std::string(lights) + "</library_lights>");
}

std::string Cameras(std::string_view cameras) {
  return Collada("<library_cameras>" + std::string(cameras) + "</library_cameras>");
}

// The text of a saved document whose root holds one library `tag` with
// `children` (indented by four blanks).
std::string SavedLibrary(std::string_view tag, std::string_view children) {
  return oxtest::Saved("  <" + std::string(tag) + ">\n" + std::string(children) + "  </" +
                       std::string(tag) + ">\n");
}

const oxDAELightTechniqueCommon* CommonOf(const oxDAELight* light) {
  return light ? light->techniqueCommon : nullptr;
}

const oxDAEOpticsTechniqueCommon* CommonOf(const oxDAECamera* camera) {
  return camera && camera->optics ? camera->optics->techniqueCommon : nullptr;
}

}  // namespace

// --- Light reading -----------------------------------------------------------------

OX_DOCUMENT_SUITE(LightReading);

TEST_XML(LightReading, SpotLightKeepsEveryValue, Lights(R"(
  <light id="l" name="Lamp"><technique_common><spot>
    <color>0.25 0.5 0.75</color>
    <constant_attenuation>2</constant_attenuation>
    <linear_attenuation>0.5</linear_attenuation>
    <quadratic_attenuation>0.125</quadratic_attenuation>
    <falloff_angle>45</falloff_angle>
    <falloff_exponent>3</falloff_exponent>
  </spot></technique_common></light>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAELight* light = Find<oxDAELight>("#l");
  ASSERT_NE(light, nullptr);
  EXPECT_EQ(light->name, "Lamp");
  const oxDAELightTechniqueCommon* common = CommonOf(light);
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->parent, light);
  EXPECT_EQ(common->type, EToken::SPOT);
  EXPECT_EQ(common->color, (OxMath::oxFColor{0.25f, 0.5f, 0.75f, 1.0f}));
  EXPECT_EQ(common->constantAttenuation, 2.0f);
  EXPECT_EQ(common->linearAttenuation, 0.5f);
  EXPECT_EQ(common->quadraticAttenuation, 0.125f);
  EXPECT_EQ(common->falloffAngle, 45.0f);
  EXPECT_EQ(common->falloffExponent, 3.0f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(LightReading, LightWithoutColorKeepsTheHostGreen,
         Lights(R"(<light id="l"><technique_common><directional/></technique_common></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, EToken::DIRECTIONAL);
  EXPECT_EQ(common->color, OxMath::kGreenColor);
  EXPECT_EQ(common->color, (OxMath::oxFColor{0.0f, 1.0f, 0.0f, 1.0f}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(LightReading, DefaultsAreGreenWithUnitConstantAttenuationAndAHalfTurnFalloff) {
  const oxDAELightTechniqueCommon common;
  EXPECT_EQ(common.type, EToken::NONE);
  EXPECT_EQ(common.color, OxMath::kGreenColor);
  EXPECT_EQ(common.constantAttenuation, 1.0f);
  EXPECT_EQ(common.linearAttenuation, 0.0f);
  EXPECT_EQ(common.quadraticAttenuation, 0.0f);
  EXPECT_EQ(common.falloffAngle, 180.0f);
  EXPECT_EQ(common.falloffExponent, 0.0f);
}

TEST_XML(LightReading, ColorKeepsTheAlphaItHad,
         Lights(R"(<light id="l"><technique_common><ambient><color>1 0 0.5</color></ambient>
                   </technique_common></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, EToken::AMBIENT);
  EXPECT_EQ(common->color, (OxMath::oxFColor{1.0f, 0.0f, 0.5f, 1.0f}));
}

TEST_XML(LightReading, SeveralTypesAreReadIntoTheSameFieldsAndTheLastTypeWins,
         Lights(R"(<light id="l"><technique_common>
                     <spot><color>1 0 0</color><falloff_angle>30</falloff_angle></spot>
                     <point><linear_attenuation>0.5</linear_attenuation></point>
                   </technique_common></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, EToken::POINT);
  EXPECT_EQ(common->color, (OxMath::oxFColor{1.0f, 0.0f, 0.0f, 1.0f}));
  EXPECT_EQ(common->falloffAngle, 30.0f);
  EXPECT_EQ(common->linearAttenuation, 0.5f);
}

TEST_XML(LightReading, UnknownChildAfterATypeIsWarnedAndReadAsATypeElement,
         Lights(R"(<light id="l"><technique_common>
                     <point/>
                     <area><color>0 0 1</color><constant_attenuation>4</constant_attenuation></area>
                   </technique_common></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, EToken::POINT);
  EXPECT_EQ(common->color, (OxMath::oxFColor{0.0f, 0.0f, 1.0f, 1.0f}));
  EXPECT_EQ(common->constantAttenuation, 4.0f);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <area> in <technique_common>")}));
}

TEST_XML(LightReading, UnknownChildBeforeAnyTypeIsWarnedAndSkipped,
         Lights(R"(<light id="l"><technique_common>
                     <area><color>0 0 1</color><bogus/></area>
                     <point/>
                   </technique_common></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, EToken::POINT);
  EXPECT_EQ(common->color, OxMath::kGreenColor);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <area> in <technique_common>")}));
}

TEST_XML(LightReading, UnknownChildOfATypeElementIsWarnedWithTechniqueCommon,
         Lights(R"(<light id="l"><technique_common><spot><color>1 1 1</color><hotspot>5</hotspot>
                   <falloff_exponent>2</falloff_exponent></spot></technique_common></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->falloffExponent, 2.0f);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <hotspot> in <technique_common>")}));
}

TEST_XML(LightReading, TechniqueCommonWithoutTypeLeavesTypeNone,
         Lights(R"(<light id="l"><technique_common/></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, EToken::NONE);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(LightReading, ValueThatIsNotANumberKeepsItsDefault,
         Lights(R"(<light id="l"><technique_common><point>
                     <constant_attenuation>strong</constant_attenuation>
                     <quadratic_attenuation/>
                   </point></technique_common></light>)")) {
  const oxDAELightTechniqueCommon* common = CommonOf(Find<oxDAELight>("#l"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->constantAttenuation, 1.0f);
  EXPECT_EQ(common->quadraticAttenuation, 0.0f);
  EXPECT_EQ(log.entries,
            (std::vector{Warning("invalid value 'strong' in <constant_attenuation>")}));
}

TEST_XML(
    LightReading, LightWithoutIdTakesItsNameAsId,
    Lights(R"(<light name="Sun"><technique_common><directional/></technique_common></light>)")) {
  const oxDAELight* light = Find<oxDAELight>("#Sun");
  ASSERT_NE(light, nullptr);
  EXPECT_EQ(light->id, "Sun");
}

TEST_XML(LightReading, AssetIsReadTechniqueIsSkippedAndUnknownChildrenWarnWithLight,
         Lights(R"(<light id="l"><asset><title>Key</title></asset>
                   <technique profile="OTHER"><intensity>3</intensity></technique>
                   <shadow/><technique_common><ambient/></technique_common></light>)")) {
  const oxDAELight* light = Find<oxDAELight>("#l");
  ASSERT_NE(light, nullptr);
  ASSERT_NE(light->asset, nullptr);
  EXPECT_EQ(light->asset->title, "Key");
  EXPECT_EQ(light->asset->parent, light);
  EXPECT_TRUE(All<oxDAETechnique>().empty());
  ASSERT_NE(light->techniqueCommon, nullptr);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <shadow> in <light>")}));
}

TEST_XML(LightReading, ExtrasAreReadWithTheLightTechniquesOfTheTools,
         Lights(R"(<light id="l"><technique_common><point/></technique_common>
                   <extra><technique profile="FCOLLADA"><intensity>2</intensity></technique>
                     <technique profile="MAX3D"><decay_type>1</decay_type></technique>
                     <technique profile="OTHER"/></extra></light>)")) {
  const oxDAELight* light = Find<oxDAELight>("#l");
  ASSERT_NE(light, nullptr);
  ASSERT_EQ(light->extras.size(), 1u);
  const oxDAEExtraElement* extra = light->extras[0];
  EXPECT_EQ(extra->parent, light);
  ASSERT_EQ(extra->techniques.size(), 2u);
  EXPECT_NE(oxDAETechLight_FCOLLADA::DynamicCast(extra->techniques[0]), nullptr);
  EXPECT_EQ(extra->techniques[0]->profile, "FCOLLADA");
  EXPECT_NE(oxDAETechLight_Max3D::DynamicCast(extra->techniques[1]), nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Light writing -----------------------------------------------------------------

OX_DOCUMENT_SUITE(LightWriting);

TEST_XML(LightWriting, PointLightWithOnlyAColorWritesTheDefaultAttenuations,
         Lights(R"(<light id="l"><technique_common><point><color>1 0.5 0</color></point>
                   </technique_common></light>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_lights", R"(    <light id="l">
      <technique_common>
        <point>
          <color>1 0.5 0</color>
          <constant_attenuation>1</constant_attenuation>
          <linear_attenuation>0</linear_attenuation>
          <quadratic_attenuation>0</quadratic_attenuation>
        </point>
      </technique_common>
    </light>
)"));
}

TEST_XML(LightWriting, SpotLightAlsoWritesItsFalloff,
         Lights(R"(<light id="l"><technique_common><spot><color>1 1 1</color>
                   <linear_attenuation>0.5</linear_attenuation><falloff_angle>30</falloff_angle>
                   </spot></technique_common></light>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_lights", R"(    <light id="l">
      <technique_common>
        <spot>
          <color>1 1 1</color>
          <constant_attenuation>1</constant_attenuation>
          <linear_attenuation>0.5</linear_attenuation>
          <quadratic_attenuation>0</quadratic_attenuation>
          <falloff_angle>30</falloff_angle>
          <falloff_exponent>0</falloff_exponent>
        </spot>
      </technique_common>
    </light>
)"));
}

TEST_XML(LightWriting, AmbientAndDirectionalLightsWriteOnlyTheirColor,
         Lights(R"(<light id="a"><technique_common><ambient><color>0.5 0.5 0.5</color>
                   <constant_attenuation>3</constant_attenuation></ambient></technique_common></light>
                   <light id="d"><technique_common><directional/></technique_common></light>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_lights", R"(    <light id="a">
      <technique_common>
        <ambient>
          <color>0.5 0.5 0.5</color>
        </ambient>
      </technique_common>
    </light>
    <light id="d">
      <technique_common>
        <directional>
          <color>0 1 0</color>
        </directional>
      </technique_common>
    </light>
)"));
}

TEST_XML(LightWriting, LightWithoutTypeWritesItsColorStraightIntoTheTechnique,
         Lights(R"(<light id="l"><technique_common/></light>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_lights", R"(    <light id="l">
      <technique_common>
        <color>0 1 0</color>
      </technique_common>
    </light>
)"));
}

TEST_XML(LightWriting, AssetAndExtrasAreNotWritten,
         Lights(R"(<light id="l" name="Key"><asset><title>T</title></asset>
                   <technique_common><ambient><color>1 1 1</color></ambient></technique_common>
                   <extra><technique profile="FCOLLADA"/></extra></light>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_lights", R"(    <light name="Key" id="l">
      <technique_common>
        <ambient>
          <color>1 1 1</color>
        </ambient>
      </technique_common>
    </light>
)"));
}

TEST_XML(LightWriting, LightWithoutTechniqueCommonIsWrittenEmpty,
         Lights(R"(<light id="l"><asset/></light>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_lights", "    <light id=\"l\"/>\n"));
}

TEST_XML(LightWriting, RoundTripKeepsTheValues,
         Lights(R"(<light id="l" name="Spot"><technique_common><spot>
                     <color>0.1 0.2 0.3</color><constant_attenuation>0.5</constant_attenuation>
                     <linear_attenuation>0.25</linear_attenuation>
                     <quadratic_attenuation>0.125</quadratic_attenuation>
                     <falloff_angle>22.5</falloff_angle><falloff_exponent>1.5</falloff_exponent>
                   </spot></technique_common></light>)")) {
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0);
  EXPECT_EQ(log.entries, kNoLog);
  const oxDAELight* light = Find<oxDAELight>("#l");
  ASSERT_NE(light, nullptr);
  EXPECT_EQ(light->name, "Spot");
  const oxDAELightTechniqueCommon* common = CommonOf(light);
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, EToken::SPOT);
  EXPECT_EQ(common->color, (OxMath::oxFColor{0.1f, 0.2f, 0.3f, 1.0f}));
  EXPECT_EQ(common->constantAttenuation, 0.5f);
  EXPECT_EQ(common->linearAttenuation, 0.25f);
  EXPECT_EQ(common->quadraticAttenuation, 0.125f);
  EXPECT_EQ(common->falloffAngle, 22.5f);
  EXPECT_EQ(common->falloffExponent, 1.5f);
  EXPECT_EQ(SaveText(), saved);
}

// --- Camera reading ----------------------------------------------------------------

OX_DOCUMENT_SUITE(CameraReading);

TEST_XML(CameraReading, PerspectiveValuesAreKeptAndTheOthersStayNotGiven,
         Cameras(R"(<camera id="c"><optics><technique_common><perspective>
                      <xfov>45</xfov><yfov>30</yfov><aspect_ratio>1.5</aspect_ratio>
                      <znear>0.1</znear><zfar>1000</zfar>
                    </perspective></technique_common></optics></camera>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAECamera* camera = Find<oxDAECamera>("#c");
  ASSERT_NE(camera, nullptr);
  ASSERT_NE(camera->optics, nullptr);
  EXPECT_EQ(camera->optics->parent, camera);
  const oxDAEOpticsTechniqueCommon* common = CommonOf(camera);
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->parent, camera->optics);
  EXPECT_EQ(common->type, oxDAEOpticsTechniqueCommon::EType::PERSPECTIVE);
  EXPECT_EQ(common->xfov, 45.0f);
  EXPECT_EQ(common->yfov, 30.0f);
  EXPECT_EQ(common->aspectRatio, 1.5f);
  EXPECT_EQ(common->znear, 0.1f);
  EXPECT_EQ(common->zfar, 1000.0f);
  EXPECT_EQ(common->xmag, -1.0f);
  EXPECT_EQ(common->ymag, -1.0f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(CameraReading, OrthographicValuesAreKept,
         Cameras(R"(<camera id="c"><optics><technique_common><orthographic>
                      <xmag>2</xmag><ymag>3</ymag><znear>1</znear><zfar>50</zfar>
                    </orthographic></technique_common></optics></camera>)")) {
  const oxDAEOpticsTechniqueCommon* common = CommonOf(Find<oxDAECamera>("#c"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, oxDAEOpticsTechniqueCommon::EType::ORTHOGRAPHIC);
  EXPECT_EQ(common->xmag, 2.0f);
  EXPECT_EQ(common->ymag, 3.0f);
  EXPECT_EQ(common->aspectRatio, -1.0f);
  EXPECT_EQ(common->znear, 1.0f);
  EXPECT_EQ(common->zfar, 50.0f);
  EXPECT_EQ(common->xfov, -1.0f);
  EXPECT_EQ(common->yfov, -1.0f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(CameraReading, OpticsValuesDefaultToMinusOneMeaningNotGiven) {
  const oxDAEOpticsTechniqueCommon common;
  EXPECT_EQ(common.type, oxDAEOpticsTechniqueCommon::EType::NONE);
  for (const float value : {common.xmag, common.ymag, common.aspectRatio, common.znear, common.zfar,
                            common.xfov, common.yfov})
    EXPECT_EQ(value, -1.0f);
}

TEST_XML(CameraReading, UnknownChildInsidePerspectiveDrawsNoWarning,
         Cameras(R"(<camera id="c"><optics><technique_common><perspective>
                      <yfov>40</yfov><xmag>9</xmag><lens>35</lens>
                    </perspective></technique_common></optics></camera>)")) {
  const oxDAEOpticsTechniqueCommon* common = CommonOf(Find<oxDAECamera>("#c"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->yfov, 40.0f);
  EXPECT_EQ(common->xmag, -1.0f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(CameraReading, UnknownChildInsideOrthographicIsWarnedWithTechniqueCommon,
         Cameras(R"(<camera id="c"><optics><technique_common><orthographic>
                      <ymag>4</ymag><xfov>9</xfov><lens>35</lens>
                    </orthographic></technique_common></optics></camera>)")) {
  const oxDAEOpticsTechniqueCommon* common = CommonOf(Find<oxDAECamera>("#c"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->ymag, 4.0f);
  EXPECT_EQ(common->xfov, -1.0f);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <xfov> in <technique_common>"),
                                      Warning("unknown element <lens> in <technique_common>")}));
}

TEST_XML(CameraReading, OtherChildrenOfTheCommonTechniqueAreSkippedSilently,
         Cameras(R"(<camera id="c"><optics><technique_common>
                      <fisheye><yfov>180</yfov></fisheye>
                    </technique_common></optics></camera>)")) {
  const oxDAEOpticsTechniqueCommon* common = CommonOf(Find<oxDAECamera>("#c"));
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, oxDAEOpticsTechniqueCommon::EType::NONE);
  EXPECT_EQ(common->yfov, -1.0f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(CameraReading, CameraWithoutIdDoesNotTakeItsName, Cameras(R"(<camera name="Cam"/>)")) {
  EXPECT_EQ(document.ResolveURI("#Cam"), nullptr);
  const std::vector<oxDAECamera*> cameras = All<oxDAECamera>();
  ASSERT_EQ(cameras.size(), 1u);
  EXPECT_EQ(cameras[0]->name, "Cam");
  EXPECT_EQ(cameras[0]->id, "");
}

TEST_XML(CameraReading, ImagerIsSkippedSilentlyAndUnknownChildrenWarnWithCamera,
         Cameras(R"(<camera id="c"><asset><title>Cam</title></asset>
                    <imager><technique profile="X"/></imager><lens/>
                    <extra><technique profile="FCOLLADA"/></extra></camera>)")) {
  const oxDAECamera* camera = Find<oxDAECamera>("#c");
  ASSERT_NE(camera, nullptr);
  ASSERT_NE(camera->asset, nullptr);
  EXPECT_EQ(camera->asset->title, "Cam");
  EXPECT_EQ(camera->optics, nullptr);
  ASSERT_EQ(camera->extras.size(), 1u);
  EXPECT_EQ(camera->extras[0]->parent, camera);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <lens> in <camera>")}));
}

TEST_XML(CameraReading, OpticsReadTechniquesSkipExtrasAndWarnOtherwise,
         Cameras(R"(<camera id="c"><optics>
                      <technique profile="MAYA"><param name="p" type="float">2</param></technique>
                      <extra/><lens/>
                    </optics></camera>)")) {
  const oxDAECamera* camera = Find<oxDAECamera>("#c");
  ASSERT_NE(camera, nullptr);
  ASSERT_NE(camera->optics, nullptr);
  EXPECT_EQ(camera->optics->techniqueCommon, nullptr);
  ASSERT_EQ(camera->optics->techniques.size(), 1u);
  const oxDAETechnique* technique = camera->optics->techniques[0];
  EXPECT_EQ(technique->profile, "MAYA");
  EXPECT_EQ(technique->parent, camera->optics);
  EXPECT_EQ(technique->parameters.size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <lens> in <optics>")}));
}

// --- Camera writing ----------------------------------------------------------------

OX_DOCUMENT_SUITE(CameraWriting);

TEST_XML(CameraWriting, PerspectiveWithOnlyXfovWritesYfovMinusOneAndNoXfov,
         Cameras(R"(<camera id="c"><optics><technique_common><perspective>
                      <xfov>45</xfov><aspect_ratio>1.5</aspect_ratio>
                      <znear>0.1</znear><zfar>100</zfar>
                    </perspective></technique_common></optics></camera>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_cameras", R"(    <camera id="c">
      <optics>
        <technique_common>
          <perspective>
            <yfov>-1</yfov>
            <aspect_ratio>1.5</aspect_ratio>
            <znear>0.1</znear>
            <zfar>100</zfar>
          </perspective>
        </technique_common>
      </optics>
    </camera>
)"));
}

TEST_XML(CameraWriting, CameraWithoutAspectRatioWritesNone,
         Cameras(R"(<camera id="c"><optics><technique_common><perspective>
                      <yfov>30</yfov><znear>1</znear><zfar>10</zfar>
                    </perspective></technique_common></optics></camera>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_cameras", R"(    <camera id="c">
      <optics>
        <technique_common>
          <perspective>
            <yfov>30</yfov>
            <znear>1</znear>
            <zfar>10</zfar>
          </perspective>
        </technique_common>
      </optics>
    </camera>
)"));
}

TEST_XML(CameraWriting, OrthographicWritesYmagButNotXmag,
         Cameras(R"(<camera id="c"><optics><technique_common><orthographic>
                      <xmag>2</xmag><ymag>3</ymag><aspect_ratio>0.5</aspect_ratio>
                    </orthographic></technique_common></optics></camera>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_cameras", R"(    <camera id="c">
      <optics>
        <technique_common>
          <orthographic>
            <ymag>3</ymag>
            <aspect_ratio>0.5</aspect_ratio>
            <znear>-1</znear>
            <zfar>-1</zfar>
          </orthographic>
        </technique_common>
      </optics>
    </camera>
)"));
}

TEST_XML(CameraWriting, ProjectionNotReadIsWrittenAsOrthographic,
         Cameras(R"(<camera id="c"><optics><technique_common/></optics></camera>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_cameras", R"(    <camera id="c">
      <optics>
        <technique_common>
          <orthographic>
            <ymag>-1</ymag>
            <znear>-1</znear>
            <zfar>-1</zfar>
          </orthographic>
        </technique_common>
      </optics>
    </camera>
)"));
}

TEST_XML(CameraWriting, WrittenCameraListsOpticsBeforeAsset,
         Cameras(R"(<camera id="c" name="Cam"><asset><title>T</title></asset>
                    <optics><technique_common><perspective><yfov>60</yfov></perspective>
                    </technique_common></optics></camera>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_cameras", R"(    <camera name="Cam" id="c">
      <optics>
        <technique_common>
          <perspective>
            <yfov>60</yfov>
            <znear>-1</znear>
            <zfar>-1</zfar>
          </perspective>
        </technique_common>
      </optics>
      <asset>
        <title>T</title>
        <unit name="meter" meter="1"/>
        <up_axis>Y_UP</up_axis>
      </asset>
    </camera>
)"));
}

TEST_XML(CameraWriting, OpticsWithoutTechniqueCommonAndCameraWithoutOpticsAreWrittenEmpty,
         Cameras(R"(<camera id="a"><optics><technique profile="X"/></optics></camera>
                    <camera id="b"/>)")) {
  EXPECT_EQ(SaveText(), SavedLibrary("library_cameras", R"(    <camera id="a">
      <optics/>
    </camera>
    <camera id="b"/>
)"));
}

TEST_XML(CameraWriting, RoundTripKeepsTheWrittenValues,
         Cameras(R"(<camera id="c" name="Main"><optics><technique_common><perspective>
                      <yfov>37.5</yfov><aspect_ratio>1.75</aspect_ratio>
                      <znear>0.5</znear><zfar>250</zfar>
                    </perspective></technique_common></optics></camera>)")) {
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0);
  EXPECT_EQ(log.entries, kNoLog);
  const oxDAECamera* camera = Find<oxDAECamera>("#c");
  ASSERT_NE(camera, nullptr);
  EXPECT_EQ(camera->name, "Main");
  const oxDAEOpticsTechniqueCommon* common = CommonOf(camera);
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, oxDAEOpticsTechniqueCommon::EType::PERSPECTIVE);
  EXPECT_EQ(common->yfov, 37.5f);
  EXPECT_EQ(common->aspectRatio, 1.75f);
  EXPECT_EQ(common->znear, 0.5f);
  EXPECT_EQ(common->zfar, 250.0f);
  EXPECT_EQ(common->xfov, -1.0f);
  EXPECT_EQ(SaveText(), saved);
}
