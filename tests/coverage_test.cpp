// Every element the document model names is read by some class.
//
// One small document per reader holds each child its reader knows; loading
// it must not draw an "unknown element" message. Together the documents
// create an object of every element class the readers make, so a class whose
// tag stops being read, or a reader that forgets a child, shows up here.
#include <algorithm>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::kNoLog;
using oxtest::LogEntry;

namespace {

struct ReaderDocument {
  const char* reader;     // the reader whose children the body exercises
  std::string_view body;  // the content of the COLLADA root
};

constexpr ReaderDocument kReaderDocuments[] = {
    {"COLLADA", R"(<asset/>
  <library_animations/><library_animation_clips/><library_cameras/><library_controllers/>
  <library_geometries/><library_effects/><library_force_fields/><library_images/>
  <library_lights/><library_materials/><library_nodes/><library_physics_materials/>
  <library_physics_models/><library_physics_scenes/><library_visual_scenes/>
  <scene/><extra/>)"},
    {"asset", R"(<asset>
  <contributor><author>a</author><authoring_tool>t</authoring_tool><comments>c</comments>
   <copyright>c</copyright><source_data>file:///s.mb</source_data></contributor>
  <modified>2006-01-01T00:00:00Z</modified><revision>1</revision><title>t</title>
  <subject>s</subject><keywords>k</keywords><up_axis>Z_UP</up_axis>
  <unit name="inch" meter="0.0254"/></asset>)"},
    {"library", R"(
  <library_animations><animation id="a"/></library_animations>
  <library_animation_clips><animation_clip id="c"/></library_animation_clips>
  <library_cameras><camera id="cam"/></library_cameras>
  <library_controllers><controller id="k"/></library_controllers>
  <library_geometries><geometry id="g"/></library_geometries>
  <library_effects><effect id="e"/></library_effects>
  <library_force_fields><force_field id="ff"/></library_force_fields>
  <library_images><image id="i"/></library_images>
  <library_lights><light id="l"/></library_lights>
  <library_materials><material id="m"/></library_materials>
  <library_nodes><node id="n"/></library_nodes>
  <library_physics_materials><physics_material id="pmat"/></library_physics_materials>
  <library_physics_models><physics_model id="pm"/></library_physics_models>
  <library_physics_scenes><physics_scene id="ps"/></library_physics_scenes>
  <library_visual_scenes><visual_scene id="vs"/></library_visual_scenes>)"},
    {"scene", R"(<library_visual_scenes><visual_scene id="vs"/></library_visual_scenes>
  <scene><instance_visual_scene url="#vs"/></scene>)"},
    {"source", R"(<library_geometries><geometry id="g"><mesh>
  <source id="s">
   <float_array id="f" count="2">1 2</float_array><int_array id="i" count="1">3</int_array>
   <bool_array id="b" count="1">true</bool_array><Name_array id="n" count="1">x</Name_array>
   <IDREF_array id="r" count="1">g</IDREF_array>
   <technique_common><asset/><accessor source="#f" count="2">
    <param name="X" type="float"/><parameter name="Y" type="float"/></accessor><extra/>
   </technique_common>
   <technique profile="OTHER"/></source>
  </mesh></geometry></library_geometries>)"},
    {"geometry", R"(<library_geometries>
 <geometry id="g"><mesh>
  <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
   <technique_common><accessor source="#pa" count="3" stride="3"/></technique_common></source>
  <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
  <lines count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1</p></lines>
  <linestrips count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></linestrips>
  <polygons count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></polygons>
  <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
  <trifans count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></trifans>
  <tristrips count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></tristrips>
  <polylist count="1"><input semantic="VERTEX" source="#v" offset="0"/><vcount>3</vcount>
   <p>0 1 2</p></polylist>
 </mesh><extra/></geometry>
 <geometry id="curve"><spline closed="true">
  <source id="cp"><float_array id="cpa" count="3">0 0 0</float_array></source>
  <control_vertices><input semantic="POSITION" source="#cp"/><extra/></control_vertices>
  <extra/></spline></geometry>
</library_geometries>)"},
    {"animation", R"(<library_animations><animation id="outer">
  <animation id="inner"/>
  <source id="t"><float_array id="ta" count="2">0 1</float_array>
   <technique_common><accessor source="#ta" count="2"><param name="TIME" type="float"/>
   </accessor></technique_common></source>
  <source id="x"><float_array id="xa" count="2">0 5</float_array>
   <technique_common><accessor source="#xa" count="2"><param name="X" type="float"/>
   </accessor></technique_common></source>
  <sampler id="smp"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#x"/>
  </sampler>
  <channel source="#smp" target="n/tr.X"/>
 </animation></library_animations>
 <library_animation_clips><animation_clip id="clip" start="0" end="1">
  <asset/><instance_animation url="#outer"/><extra/></animation_clip></library_animation_clips>
 <library_nodes><node id="n"><translate sid="tr">0 0 0</translate></node></library_nodes>)"},
    {"controller", R"(<library_geometries><geometry id="g"><mesh/></geometry></library_geometries>
 <library_controllers>
  <controller id="skin"><skin source="#g">
   <bind_shape_matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</bind_shape_matrix>
   <source id="j"><Name_array id="ja" count="1">hip</Name_array>
    <technique_common><accessor source="#ja" count="1"><param name="JOINT" type="name"/>
    </accessor></technique_common></source>
   <joints><input semantic="JOINT" source="#j"/></joints>
   <vertex_weights count="1"><input semantic="JOINT" source="#j" offset="0"/>
    <vcount>1</vcount><v>0</v></vertex_weights>
  </skin></controller>
  <controller id="blend"><morph source="#g" method="NORMALIZED">
   <source id="tg"><IDREF_array id="tga" count="1">g</IDREF_array>
    <technique_common><accessor source="#tga" count="1"/></technique_common></source>
   <targets><input semantic="MORPH_TARGET" source="#tg"/></targets>
  </morph></controller>
 </library_controllers>)"},
    {"light", R"(<library_lights>
  <light id="a"><asset/><technique_common><ambient><color>1 1 1</color></ambient>
   </technique_common><technique profile="OTHER"/><extra/></light>
  <light id="d"><technique_common><directional><color>1 1 1</color></directional>
   </technique_common></light>
  <light id="p"><technique_common><point><color>1 1 1</color>
   <constant_attenuation>1</constant_attenuation><linear_attenuation>0</linear_attenuation>
   <quadratic_attenuation>0</quadratic_attenuation></point></technique_common></light>
  <light id="s"><technique_common><spot><color>1 1 1</color>
   <constant_attenuation>1</constant_attenuation><linear_attenuation>0</linear_attenuation>
   <quadratic_attenuation>0</quadratic_attenuation><falloff_angle>45</falloff_angle>
   <falloff_exponent>1</falloff_exponent></spot></technique_common></light>
 </library_lights>)"},
    {"camera", R"(<library_cameras>
  <camera id="p"><asset/><optics><technique_common><perspective><xfov>40</xfov><yfov>30</yfov>
   <aspect_ratio>1.3</aspect_ratio><znear>0.1</znear><zfar>100</zfar></perspective>
   </technique_common><technique profile="OTHER"/><extra/></optics><imager/><extra/></camera>
  <camera id="o"><optics><technique_common><orthographic><xmag>1</xmag><ymag>1</ymag>
   <aspect_ratio>1</aspect_ratio><znear>0.1</znear><zfar>100</zfar></orthographic>
   </technique_common></optics></camera>
 </library_cameras>)"},
    {"node", R"(<library_nodes><node id="n" sid="n" type="JOINT">
  <rotate sid="r">0 0 1 90</rotate><scale sid="s">1 1 1</scale>
  <skew sid="k">45 1 0 0 0 1 0</skew><translate sid="t">0 0 0</translate>
  <lookat sid="l">0 0 1 0 0 0 0 1 0</lookat>
  <matrix sid="m">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>
  <instance_camera url="#none"/><instance_light url="#none"/><instance_node url="#none"/>
  <instance_controller url="#none"><skeleton>#n</skeleton><bind_material/></instance_controller>
  <instance_geometry url="#none"><bind_material><param name="p" type="float"/>
   <technique_common><instance_material symbol="s" target="#none">
    <bind semantic="b" target="n/t"/><bind_vertex_input semantic="UV" input_semantic="TEXCOORD"/>
    <extra/></instance_material></technique_common></bind_material><extra/></instance_geometry>
  <node id="child"/><extra/>
 </node></library_nodes>
 <library_visual_scenes><visual_scene id="vs"><node id="top"/><extra/></visual_scene>
 </library_visual_scenes>)"},
    {"material", R"(<library_effects><effect id="e"/></library_effects>
 <library_materials><material id="m"><asset/>
  <instance_effect url="#e"><technique_hint platform="PC" profile="CG" ref="t"/>
   <setparam ref="x"><annotate name="a"><string>s</string></annotate><float>1</float></setparam>
  </instance_effect><extra/></material></library_materials>)"},
    {"effect", R"(<library_images><image id="i"><init_from>i.png</init_from><extra/></image>
 </library_images>
 <library_effects><effect id="e">
  <annotate name="a"><string>s</string></annotate>
  <profile_COMMON>
   <newparam sid="surf"><annotate name="a"><bool>true</bool></annotate><semantic>DIFFUSE</semantic>
    <surface type="2D"><init_from>i</init_from><format>A8R8G8B8</format>
     <format_hint><channels>RGBA</channels><range>UNORM</range><precision>LOW</precision>
      <option>SRGB_GAMMA</option></format_hint>
     <size>1 1 1</size><viewport_ratio>1 1</viewport_ratio><mip_levels>1</mip_levels>
     <mipmap_generate>true</mipmap_generate></surface></newparam>
   <newparam sid="samp"><sampler2D><source>surf</source><wrap_s>WRAP</wrap_s><wrap_t>WRAP</wrap_t>
    <wrap_p>WRAP</wrap_p><minfilter>LINEAR</minfilter><magfilter>LINEAR</magfilter>
    <mipfilter>LINEAR</mipfilter><border_color>0 0 0 1</border_color>
    <mipmap_maxlevel>1</mipmap_maxlevel><mipmap_bias>0</mipmap_bias></sampler2D></newparam>
   <newparam sid="n"><surface type="2D"><init_as_null/></surface></newparam>
   <newparam sid="t"><surface type="2D"><init_as_target/></surface></newparam>
   <newparam sid="c"><surface type="CUBE"><init_cube><all ref="i"/></init_cube></surface></newparam>
   <newparam sid="v"><surface type="3D"><init_volume><all ref="i"/></init_volume></surface>
   </newparam>
   <newparam sid="pl"><surface type="2D"><init_planar><all ref="i"/></init_planar></surface>
   </newparam>
   <technique sid="common"><constant/><lambert/><phong/><blinn>
    <emission><color>0 0 0 1</color></emission><ambient><color>0 0 0 1</color></ambient>
    <diffuse><texture texture="samp" texcoord="UV0"><extra/></texture></diffuse>
    <specular><color>1 1 1 1</color></specular><shininess><float>10</float></shininess>
    <reflective><color>1 1 1 1</color></reflective><reflectivity><float>0.5</float></reflectivity>
    <transparent opaque="A_ONE"><color>1 1 1 1</color></transparent>
    <transparency><float>1</float></transparency>
    <index_of_refraction><float>1</float></index_of_refraction>
   </blinn><extra/></technique>
   <extra/>
  </profile_COMMON>
  <profile_GLSL><image id="gi"/><newparam sid="g"><float>1</float></newparam></profile_GLSL>
  <profile_GLES/>
  <extra/>
 </effect></library_effects>)"},
    {"profile_CG", R"(<library_effects><effect id="e"><profile_CG platform="PC">
  <code sid="c">void main() {}</code><include sid="inc" url="file.cg"/>
  <image id="img"/><newparam sid="p"><float>1</float></newparam>
  <technique sid="t">
   <annotate name="a"><string>s</string></annotate>
   <code sid="tc">void f() {}</code><include sid="ti" url="t.cg"/>
   <image id="ti2"/><newparam sid="tp"><float>1</float></newparam>
   <setparam ref="tp"><float>2</float></setparam>
   <pass sid="p0">
    <annotate name="a"><string>s</string></annotate>
    <color_target>s</color_target><depth_target>s</depth_target><stencil_target>s</stencil_target>
    <color_clear>0 0 0 0</color_clear><depth_clear>1</depth_clear>
    <stencil_clear>0</stencil_clear><draw>GEOMETRY</draw>
    <depth_test_enable value="true"/>
    <alpha_func><func value="ALWAYS"/><value value="0.5"/></alpha_func>
    <shader stage="VERTEX"><annotate name="a"><string>s</string></annotate>
     <compiler_target>arbvp1</compiler_target><compiler_options>-O3</compiler_options>
     <name source="c">main</name>
     <bind symbol="m"><param ref="p"/></bind><bind symbol="k"><float>1</float></bind>
    </shader>
   </pass>
  </technique>
 </profile_CG></effect></library_effects>)"},
    {"tool_techniques", R"(<asset><contributor>
  <authoring_tool>ColladaMaya v2.00</authoring_tool></contributor></asset>
 <library_lights>
  <light id="max"><extra><technique profile="MAX3D">
   <decay_type>0</decay_type><decay_start>0</decay_start>
   <use_near_attenuation>0</use_near_attenuation>
   <near_attenuation_start>0</near_attenuation_start>
   <near_attenuation_end>0</near_attenuation_end><use_far_attenuation>0</use_far_attenuation>
   <far_attenuation_start>0</far_attenuation_start><far_attenuation_end>0</far_attenuation_end>
  </technique><technique profile="FCOLLADA">
   <intensity>1</intensity><outer_cone>1</outer_cone><aspect_ratio>1</aspect_ratio>
   <dropoff>1</dropoff><penumbra_angle>1</penumbra_angle>
   <target_default_dist>1</target_default_dist>
  </technique></extra></light>
 </library_lights>
 <library_geometries><geometry id="g"><mesh/><extra><technique profile="FCOLLADA"/></extra>
 </geometry></library_geometries>
 <library_effects><effect id="e">
  <profile_COMMON><technique sid="t"><phong>
   <diffuse><texture texture="x" texcoord="UV0"><extra>
    <technique profile="MAYA"><mirrorU>0</mirrorU><mirrorV>0</mirrorV><wrapU>1</wrapU>
     <wrapV>1</wrapV><repeatU>1</repeatU><repeatV>1</repeatV><offsetU>0</offsetU>
     <offsetV>0</offsetV><translateFrameU>0</translateFrameU><translateFrameV>0</translateFrameV>
     <rotateFrame>0</rotateFrame><rotateUV>0</rotateUV></technique>
    <technique profile="MAX3D"><amount>1</amount></technique>
   </extra></texture></diffuse></phong>
   <extra><technique profile="MAYA">
    <shininess><color>0 0 0 1</color></shininess><bump><color>0 0 0 1</color></bump>
    <spec_level><float>1</float></spec_level><displacement><color>0 0 0 1</color></displacement>
    <filter_color><color>0 0 0 1</color></filter_color></technique>
   <technique profile="FCOLLADA">
    <shininess><color>0 0 0 1</color></shininess><bump><color>0 0 0 1</color></bump>
    <spec_level><float>1</float></spec_level><displacement><color>0 0 0 1</color></displacement>
    <filter_color><color>0 0 0 1</color></filter_color>
    <emission_level><float>1</float></emission_level></technique></extra>
  </technique></profile_COMMON>
  <extra><technique profile="NV_import"><import profile="CG" url="fx.cgfx"/></technique>
   <technique profile="MAX3D"><faceted>0</faceted><double_sided>1</double_sided>
    <wireframe>0</wireframe><face_map>0</face_map></technique></extra>
 </effect></library_effects>
 <library_materials><material id="m"><extra><technique profile="FCOLLADA">
  <dynamic_attributes><Custom_Attributes/></dynamic_attributes></technique></extra></material>
 </library_materials>
 <library_nodes><node id="n"><extra><technique profile="FCOLLADA">
  <user_properties>%3CAttributes%3E%3C/Attributes%3E</user_properties></technique></extra>
 </node></library_nodes>)"},
};

// Names the document in test results by its reader.
void PrintTo(const ReaderDocument& document, std::ostream* os) {
  *os << document.reader;
}

// The records that name a tag the document does not read.
std::vector<LogEntry> UnknownTags(const std::vector<LogEntry>& entries) {
  std::vector<LogEntry> unknown;
  std::copy_if(entries.begin(), entries.end(), std::back_inserter(unknown), [](const LogEntry& e) {
    return e.text.find("unknown element") != std::string::npos;
  });
  return unknown;
}

}  // namespace

class ReaderCoverage : public oxtest::DocumentTest,
                       public ::testing::WithParamInterface<ReaderDocument> {};

TEST_P(ReaderCoverage, EveryChildTheReaderKnowsIsReadWithoutAnUnknownElementMessage) {
  ASSERT_EQ(LoadText(Collada(GetParam().body)), 0);
  EXPECT_EQ(UnknownTags(log.entries), kNoLog);
  // More than the root and what it holds directly: the body was read.
  EXPECT_GT(document.GetElements().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(EveryReader, ReaderCoverage, ::testing::ValuesIn(kReaderDocuments),
                         [](const ::testing::TestParamInfo<ReaderDocument>& info) {
                           return std::string(info.param.reader);
                         });

// --- Every element class is made ----------------------------------------------------------

namespace {

// The element classes the readers create and hand to the document. Classes
// held inside their owner (transforms, annotations, shader binds, the parts
// of a complex render state, surface and sampler values) are reached through
// the tags of the documents above instead. oxDAETechDynAttr_Maya is left out:
// no owner and profile choose it.
template <class... T>
std::vector<const OxKernel::oxRTTI*> Records() {
  return {&T::kRTTI...};
}

const std::vector<const OxKernel::oxRTTI*> kDocumentElementClasses = Records<
    oxDAEColladaElement, oxDAEAssetElement, oxDAELibrary, oxDAESceneElement, oxDAEInstance,
    oxDAEAnimation, oxDAESampler, oxDAEChannel, oxDAEAnimationClip, oxDAEController, oxDAESkin,
    oxDAEJoints, oxDAEVertexWeights, oxDAEMorph, oxDAEImage, oxDAEFxProfile, oxDAEFxProfileCommon,
    oxDAEFxProfileCommon::Technique, oxDAEFxColorOrTextureType, oxDAEFxCOTTransparent,
    oxDAEFxFloatOrParamType, oxDAEFxNewParam, oxDAEFxSetParam, oxDAEFxProfileCG,
    oxDAEFxProfileCGTechnique, oxDAEFxPass, oxDAEFxShader, oxDAEFxSimpleRenderState,
    oxDAEFxComplexRenderState, oxDAEInstanceGeometry, oxDAEInstanceController, oxDAEBindMaterial,
    oxDAEBindMaterialTechniqueCommon, oxDAEInstanceMaterial, oxDAEVisualScene, oxDAEInputElement,
    oxDAEVertices, oxDAEGeometry, oxDAEMesh, oxDAEMeshPrimitive, oxDAESpline, oxDAEControlVertices,
    oxDAELight, oxDAELightTechniqueCommon, oxDAECamera, oxDAEOptics, oxDAEOpticsTechniqueCommon,
    oxDAENode, oxDAEForceField, oxDAEPhysicsMaterial, oxDAEPhysicsModel, oxDAEPhysicsScene,
    oxDAEFloatArray, oxDAEIntArray, oxDAEBoolArray, oxDAENameArray, oxDAEAccessor, oxDAESource,
    oxDAESourceTechniqueCommon, oxDAEParameter, oxDAEMaterial, oxDAEInstanceEffect,
    oxDAETechniqueHint, oxDAEEffect, oxDAEExtraElement, oxDAETechnique, oxDAECustomAttributes,
    oxDAETechTexture_Maya, oxDAETechMaps_Maya, oxDAETechTexture_Max3D, oxDAETechEffect_Max3D,
    oxDAETechLight_Max3D, oxDAETechLight_FCOLLADA, oxDAETechMaps_FCOLLADA, oxDAETechNode_FCOLLADA,
    oxDAETechGeometry_FCOLLADA, oxDAETechMaterial_FCOLLADA, oxDAETechEffect_Nv>();

}  // namespace

class ClassCoverage : public oxtest::DocumentTest {};

TEST_F(ClassCoverage, TheReaderDocumentsMakeAnObjectOfEveryElementClass) {
  std::set<const OxKernel::oxRTTI*> made;
  for (const ReaderDocument& entry : kReaderDocuments) {
    ASSERT_EQ(LoadText(Collada(entry.body)), 0) << entry.reader;
    for (const auto& element : document.GetElements())
      made.insert(&element->GetRTTI());
  }
  std::vector<std::string> missing;
  for (const OxKernel::oxRTTI* record : kDocumentElementClasses) {
    if (!made.count(record)) missing.push_back(record->GetName());
  }
  EXPECT_EQ(missing, std::vector<std::string>{});
}

TEST_F(ClassCoverage, LegacyProgramTechniqueReadsEveryChildItKnows) {
  // No reader of a 1.4 document creates the legacy shader technique; it is
  // read directly, as a host importing older documents does.
  ReadFragment<oxDAEShaderTechnique>(R"(<technique profile="CG">
    <program id="prog" lang="Cg" url="shader.cg"><asset/><param name="p" type="float"/>
     <entry function="main" semantic="VERTEX_PROGRAM"><param name="q" type="float"/></entry>
     <code lang="Cg" url="shader.cg"/></program>
    <pass sid="p0"><depth_test_enable value="true"/></pass></technique>)");
  EXPECT_EQ(UnknownTags(log.entries), kNoLog);
  std::set<const OxKernel::oxRTTI*> made;
  for (const auto& element : document.GetElements())
    made.insert(&element->GetRTTI());
  for (const OxKernel::oxRTTI* record :
       Records<oxDAEShaderTechnique, oxDAEProgram, oxDAEEntryElement, oxDAECodeElement,
               oxDAEAssetElement, oxDAEParameter, oxDAEFxPass, oxDAEFxSimpleRenderState>())
    EXPECT_TRUE(made.count(record)) << record->GetName();
}
