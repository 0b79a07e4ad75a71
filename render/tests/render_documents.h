// Small COLLADA documents whose pictures are known, for the renderer's
// tests and the render command's: a two-coloured cube that an animation
// turns, a textured quad and a skinned two-bone arm, each seen through a
// camera of its own.
#pragma once

#include <string>

namespace rendertest {

// A source of `count` records of `stride` floats named `id`.
inline std::string FloatSource(const std::string& id, const std::string& values, int count,
                               int stride) {
  std::string params;
  const char* names[] = {"X", "Y", "Z", "W"};
  for (int i = 0; i < stride && stride <= 4; ++i)
    params += std::string("<param name=\"") + names[i] + "\" type=\"float\"/>";
  if (stride == 16) params = "<param type=\"float4x4\"/>";
  return "<source id=\"" + id + "\"><float_array id=\"" + id + "-array\" count=\"" +
         std::to_string(count * stride) + "\">" + values +
         "</float_array><technique_common><accessor source=\"#" + id + "-array\" count=\"" +
         std::to_string(count) + "\" stride=\"" + std::to_string(stride) + "\">" + params +
         "</accessor></technique_common></source>";
}

// The INTERPOLATION source of a two-key curve, both keys LINEAR.
inline std::string LinearInterpolation(const std::string& id) {
  return "<source id=\"" + id + "\"><Name_array id=\"" + id +
         "-array\" count=\"2\">LINEAR LINEAR</Name_array><technique_common><accessor source=\"#" +
         id + "-array\" count=\"2\"><param type=\"name\"/></accessor></technique_common></source>";
}

// A lambert effect of one diffuse colour and its material, both named
// after `name` ("red" gives red-effect and red-material).
inline std::string ColourMaterial(const std::string& name, const std::string& rgba) {
  return "<library_effects><effect id=\"" + name +
         "-effect\"><profile_COMMON><technique sid=\"t\"><lambert><diffuse><color>" + rgba +
         "</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>"
         "<library_materials><material id=\"" +
         name + "-material\"><instance_effect url=\"#" + name +
         "-effect\"/></material></library_materials>";
}

// A perspective camera "cam" (30 degrees high) at (0, 0, 6) looking down
// -Z, as a node of the scene.
inline const std::string kPerspectiveCameraNode =
    R"(<node id="camera-node"><translate>0 0 6</translate><instance_camera url="#cam"/></node>)";
inline const std::string kPerspectiveCamera =
    R"(<library_cameras><camera id="cam"><optics><technique_common><perspective>
       <yfov>30</yfov><znear>0.1</znear><zfar>100</zfar></perspective></technique_common>
       </optics></camera></library_cameras>)";

// A cube from -1 to 1, red but for its -X face, which is green, on the
// node "box" whose rotation about Y ("box/spin.ANGLE") an animation turns
// from 0 degrees at t = 0 to 90 at t = 1: the green face then looks at the
// camera.
inline std::string TurningCube() {
  const std::string positions = "-1 -1 -1 1 -1 -1 -1 1 -1 1 1 -1 -1 -1 1 1 -1 1 -1 1 1 1 1 1";
  const std::string normals = "1 0 0 -1 0 0 0 1 0 0 -1 0 0 0 1 0 0 -1";
  return ColourMaterial("red", "1 0 0 1") + ColourMaterial("green", "0 1 0 1") +
         kPerspectiveCamera + "<library_geometries><geometry id=\"cube\"><mesh>" +
         FloatSource("cube-positions", positions, 8, 3) +
         FloatSource("cube-normals", normals, 6, 3) +
         R"(<vertices id="cube-vertices"><input semantic="POSITION" source="#cube-positions"/>
           </vertices>
           <triangles material="red" count="10">
             <input semantic="VERTEX" source="#cube-vertices" offset="0"/>
             <input semantic="NORMAL" source="#cube-normals" offset="1"/>
             <p>4 4 5 4 7 4 4 4 7 4 6 4  0 5 2 5 3 5 0 5 3 5 1 5  1 0 3 0 7 0 1 0 7 0 5 0
                2 2 6 2 7 2 2 2 7 2 3 2  0 3 1 3 5 3 0 3 5 3 4 3</p>
           </triangles>
           <triangles material="green" count="2">
             <input semantic="VERTEX" source="#cube-vertices" offset="0"/>
             <input semantic="NORMAL" source="#cube-normals" offset="1"/>
             <p>0 1 4 1 6 1 0 1 6 1 2 1</p>
           </triangles>
         </mesh></geometry></library_geometries>
         <library_animations><animation id="turn">)" +
         FloatSource("turn-times", "0 1", 2, 1) + FloatSource("turn-angles", "0 90", 2, 1) +
         LinearInterpolation("turn-interpolation") +
         R"(<sampler id="turn-sampler"><input semantic="INPUT" source="#turn-times"/>
             <input semantic="OUTPUT" source="#turn-angles"/>
             <input semantic="INTERPOLATION" source="#turn-interpolation"/></sampler>
           <channel source="#turn-sampler" target="box/spin.ANGLE"/>
         </animation></library_animations>
         <library_visual_scenes><visual_scene id="scene">
           <node id="box"><rotate sid="spin">0 1 0 0</rotate>
             <instance_geometry url="#cube"><bind_material><technique_common>
               <instance_material symbol="red" target="#red-material"/>
               <instance_material symbol="green" target="#green-material"/>
             </technique_common></bind_material></instance_geometry></node>)" +
         kPerspectiveCameraNode +
         R"(</visual_scene></library_visual_scenes>
         <scene><instance_visual_scene url="#scene"/></scene>)";
}

// A square from -1 to 1 in the XY plane with texture coordinates 0..1,
// whose lambert effect takes its diffuse colour from the picture
// `picturePath`, seen face on by an orthographic camera that shows exactly
// the square.
inline std::string TexturedQuad(const std::string& picturePath) {
  return "<library_images><image id=\"picture\"><init_from>" + picturePath +
         R"(</init_from></image></library_images>
         <library_effects><effect id="pictured"><profile_COMMON>
           <newparam sid="surface"><surface type="2D"><init_from>picture</init_from></surface>
           </newparam>
           <newparam sid="sampler"><sampler2D><source>surface</source></sampler2D></newparam>
           <technique sid="t"><lambert><diffuse><texture texture="sampler" texcoord="UV"/>
           </diffuse></lambert></technique></profile_COMMON></effect></library_effects>
         <library_materials><material id="pictured-material">
           <instance_effect url="#pictured"/></material></library_materials>
         <library_cameras><camera id="flat"><optics><technique_common><orthographic>
           <ymag>1</ymag><znear>0.1</znear><zfar>100</zfar></orthographic></technique_common>
           </optics></camera></library_cameras>
         <library_geometries><geometry id="quad"><mesh>)" +
         FloatSource("quad-positions", "-1 -1 0 1 -1 0 1 1 0 -1 1 0", 4, 3) +
         FloatSource("quad-uv", "0 0 1 0 1 1 0 1", 4, 2) +
         R"(<vertices id="quad-vertices"><input semantic="POSITION" source="#quad-positions"/>
           </vertices>
           <triangles material="skin" count="2">
             <input semantic="VERTEX" source="#quad-vertices" offset="0"/>
             <input semantic="TEXCOORD" source="#quad-uv" offset="1" set="0"/>
             <p>0 0 1 1 2 2 0 0 2 2 3 3</p>
           </triangles>
         </mesh></geometry></library_geometries>
         <library_visual_scenes><visual_scene id="scene">
           <node id="quad-node"><instance_geometry url="#quad"><bind_material><technique_common>
             <instance_material symbol="skin" target="#pictured-material"/>
           </technique_common></bind_material></instance_geometry></node>
           <node id="camera-node"><translate>0 0 5</translate><instance_camera url="#flat"/></node>
         </visual_scene></library_visual_scenes>
         <scene><instance_visual_scene url="#scene"/></scene>)";
}

// A flat arm along +X in the XY plane, 0.4 wide: its vertices up to x =
// 1.9 follow the joint "upper" at the origin, those from x = 2.1 to 4 the
// joint "lower" at x = 2, whose rotation about Z ("lower/bend.ANGLE") an
// animation turns from 0 at t = 0 to 90 degrees at t = 1, so that the
// forearm then points up (+Y). An orthographic camera at (2, 0, 10) looks
// down -Z and shows 6 units square: x from -1 to 5, y from -3 to 3.
inline std::string SkinnedArm() {
  const std::string positions =
      "0 -0.2 0 0 0.2 0 1.9 -0.2 0 1.9 0.2 0 2.1 -0.2 0 2.1 0.2 0 4 -0.2 0 4 0.2 0";
  return ColourMaterial("arm", "0.9 0.9 0.2 1") +
         R"(<library_cameras><camera id="top"><optics><technique_common><orthographic>
           <ymag>3</ymag><znear>0.1</znear><zfar>100</zfar></orthographic></technique_common>
           </optics></camera></library_cameras>
         <library_geometries><geometry id="arm"><mesh>)" +
         FloatSource("arm-positions", positions, 8, 3) +
         R"(<vertices id="arm-vertices"><input semantic="POSITION" source="#arm-positions"/>
           </vertices>
           <triangles material="arm" count="6">
             <input semantic="VERTEX" source="#arm-vertices" offset="0"/>
             <p>0 2 3 0 3 1 2 4 5 2 5 3 4 6 7 4 7 5</p>
           </triangles>
         </mesh></geometry></library_geometries>
         <library_controllers><controller id="arm-skin"><skin source="#arm">
           <bind_shape_matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</bind_shape_matrix>
           <source id="arm-joints"><Name_array id="arm-joints-array" count="2">upper lower
             </Name_array><technique_common><accessor source="#arm-joints-array" count="2">
             <param name="JOINT" type="name"/></accessor></technique_common></source>)" +
         FloatSource("arm-inverse-binds",
                     "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1  1 0 0 -2 0 1 0 0 0 0 1 0 0 0 0 1", 2, 16) +
         FloatSource("arm-weights", "1", 1, 1) +
         R"(<joints><input semantic="JOINT" source="#arm-joints"/>
             <input semantic="INV_BIND_MATRIX" source="#arm-inverse-binds"/></joints>
           <vertex_weights count="8">
             <input semantic="JOINT" source="#arm-joints" offset="0"/>
             <input semantic="WEIGHT" source="#arm-weights" offset="1"/>
             <vcount>1 1 1 1 1 1 1 1</vcount>
             <v>0 0 0 0 0 0 0 0 1 0 1 0 1 0 1 0</v>
           </vertex_weights>
         </skin></controller></library_controllers>
         <library_animations><animation id="bend">)" +
         FloatSource("bend-times", "0 1", 2, 1) + FloatSource("bend-angles", "0 90", 2, 1) +
         LinearInterpolation("bend-interpolation") +
         R"(<sampler id="bend-sampler"><input semantic="INPUT" source="#bend-times"/>
             <input semantic="OUTPUT" source="#bend-angles"/>
             <input semantic="INTERPOLATION" source="#bend-interpolation"/></sampler>
           <channel source="#bend-sampler" target="lower/bend.ANGLE"/>
         </animation></library_animations>
         <library_visual_scenes><visual_scene id="scene">
           <node id="upper" sid="upper" type="JOINT">
             <node id="lower" sid="lower" type="JOINT"><translate>2 0 0</translate>
               <rotate sid="bend">0 0 1 0</rotate></node>
           </node>
           <node id="arm-node"><instance_controller url="#arm-skin"><skeleton>#upper</skeleton>
             <bind_material><technique_common>
               <instance_material symbol="arm" target="#arm-material"/>
             </technique_common></bind_material></instance_controller></node>
           <node id="camera-node"><translate>2 0 10</translate><instance_camera url="#top"/></node>
         </visual_scene></library_visual_scenes>
         <scene><instance_visual_scene url="#scene"/></scene>)";
}

// A square from -1 to 1 in the XY plane whose morph target "tall" raises
// its top edge to y = 3; an animation turns the target's weight
// ("weights(0)") from 0 at t = 0 to 1 at t = 1. The arm's orthographic
// camera (x from -1 to 5, y from -3 to 3) looks at it.
inline std::string MorphingQuad() {
  const std::string square = "-1 -1 0 1 -1 0 1 1 0 -1 1 0";
  const std::string tall = "-1 -1 0 1 -1 0 1 3 0 -1 3 0";
  const auto geometry = [](const std::string& id, const std::string& positions) {
    return "<geometry id=\"" + id + "\"><mesh>" + FloatSource(id + "-positions", positions, 4, 3) +
           "<vertices id=\"" + id + "-vertices\"><input semantic=\"POSITION\" source=\"#" + id +
           "-positions\"/></vertices><triangles count=\"2\"><input semantic=\"VERTEX\" "
           "source=\"#" +
           id + "-vertices\" offset=\"0\"/><p>0 1 2 0 2 3</p></triangles></mesh></geometry>";
  };
  return R"(<library_cameras><camera id="top"><optics><technique_common><orthographic>
           <ymag>3</ymag><znear>0.1</znear><zfar>100</zfar></orthographic></technique_common>
           </optics></camera></library_cameras><library_geometries>)" +
         geometry("square", square) + geometry("tall", tall) +
         R"(</library_geometries>
         <library_controllers><controller id="grow"><morph source="#square" method="NORMALIZED">
           <source id="targets"><IDREF_array id="targets-array" count="1">tall</IDREF_array>
             <technique_common><accessor source="#targets-array" count="1">
             <param name="MORPH_TARGET" type="IDREF"/></accessor></technique_common></source>)" +
         FloatSource("weights", "0", 1, 1) +
         R"(<targets><input semantic="MORPH_TARGET" source="#targets"/>
             <input semantic="MORPH_WEIGHT" source="#weights"/></targets>
         </morph></controller></library_controllers>
         <library_animations><animation id="grow-up">)" +
         FloatSource("grow-times", "0 1", 2, 1) + FloatSource("grow-weights", "0 1", 2, 1) +
         LinearInterpolation("grow-interpolation") +
         R"x(<sampler id="grow-sampler"><input semantic="INPUT" source="#grow-times"/>
             <input semantic="OUTPUT" source="#grow-weights"/>
             <input semantic="INTERPOLATION" source="#grow-interpolation"/></sampler>
           <channel source="#grow-sampler" target="weights(0)"/>
         </animation></library_animations>
         <library_visual_scenes><visual_scene id="scene">
           <node id="quad-node"><instance_controller url="#grow"/></node>
           <node id="camera-node"><translate>2 0 10</translate><instance_camera url="#top"/></node>
         </visual_scene></library_visual_scenes>
         <scene><instance_visual_scene url="#scene"/></scene>)x";
}

}  // namespace rendertest
