// One document per thread, several threads at once: each thread loads,
// saves to a file and to a string, and loads its saved file again. The
// results must be those of the same work done on one thread, and under
// ThreadSanitizer (make test TSAN=ON) the run must raise no report. The
// drawable meshes, whose groups are cut side by side on several threads,
// are made on eight threads at once too.
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <oxDAEConvert/oxDAEMeshTriangles.h>
#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>

#include "oxTestSupport.h"

namespace {

using oxtest::Collada;
using oxtest::LogEntry;
using oxtest::TempFile;

constexpr size_t kThreadCount = 8;

// Eight documents, each exercising a different family of elements.
const std::array<std::string, kThreadCount> kDocuments = {
    Collada(R"(<library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
<technique_common><accessor source="#pa" count="3" stride="3"><param name="X" type="float"/>
<param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
</mesh></geometry></library_geometries>)"),
    Collada(R"(<library_visual_scenes><visual_scene id="vs"><node id="a" sid="a">
<translate sid="t">1 2 3</translate><rotate sid="r">0 0 1 45</rotate>
<node id="b"><scale>2 2 2</scale></node></node></visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#vs"/></scene>)"),
    Collada(R"(<library_animations><animation id="an">
<source id="t"><float_array id="ta" count="2">0 1</float_array><technique_common>
<accessor source="#ta" count="2"><param name="TIME" type="float"/></accessor></technique_common></source>
<source id="o"><float_array id="oa" count="2">0 90</float_array><technique_common>
<accessor source="#oa" count="2"><param name="ANGLE" type="float"/></accessor></technique_common></source>
<sampler id="s"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#o"/></sampler>
<channel source="#s" target="n/r.ANGLE"/></animation></library_animations>
<library_visual_scenes><visual_scene id="vs"><node id="n"><rotate sid="r">0 0 1 0</rotate></node>
</visual_scene></library_visual_scenes>)"),
    Collada(R"(<library_effects><effect id="e"><profile_COMMON><technique sid="c"><phong>
<diffuse><color>1 0 0 1</color></diffuse><shininess><float>20</float></shininess>
</phong></technique></profile_COMMON></effect></library_effects>
<library_materials><material id="m"><instance_effect url="#e"/></material></library_materials>)"),
    Collada(R"(<library_lights><light id="l"><technique_common><point><color>1 1 1</color>
<constant_attenuation>1</constant_attenuation></point></technique_common></light></library_lights>
<library_cameras><camera id="c"><optics><technique_common><perspective><yfov>45</yfov>
<aspect_ratio>1.5</aspect_ratio><znear>0.1</znear><zfar>100</zfar></perspective>
</technique_common></optics></camera></library_cameras>)"),
    Collada(R"(<library_images><image id="i"><init_from>textures/wood.png</init_from></image>
</library_images>)"),
    Collada(R"(<library_controllers><controller id="k"><morph source="#g" method="NORMALIZED">
<source id="mt"><IDREF_array id="mta" count="1">g</IDREF_array><technique_common>
<accessor source="#mta" count="1"><param name="IDREF" type="IDREF"/></accessor></technique_common></source>
<source id="mw"><float_array id="mwa" count="1">0.5</float_array><technique_common>
<accessor source="#mwa" count="1"><param name="MORPH_WEIGHT" type="float"/></accessor></technique_common></source>
<targets><input semantic="MORPH_TARGET" source="#mt"/><input semantic="MORPH_WEIGHT" source="#mw"/></targets>
</morph></controller></library_controllers>
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="pa" count="3">0 0 0</float_array>
<technique_common><accessor source="#pa" count="1" stride="3"/></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices></mesh></geometry></library_geometries>)"),
    Collada(
        R"(<asset><contributor><author>someone</author></contributor><unit name="inch" meter="0.0254"/>
<up_axis>Z_UP</up_axis></asset><library_physics_materials><physics_material id="pm">
<technique_common><dynamic_friction>0.5</dynamic_friction><restitution>0.2</restitution>
<static_friction>0.6</static_friction></technique_common></physics_material></library_physics_materials>)"),
};

// What one thread gets from one document.
struct Outcome {
  int loaded = -1;
  int saved = -1;
  int reloaded = -1;
  std::string text;
  std::string resaved;
  std::vector<LogEntry> log;
};

// The log sink is shared by every thread; each thread keeps what it logs.
thread_local std::vector<LogEntry> t_log;

// Loads `source`, saves it to `target` and to a string, loads `target` again
// and saves that to a string.
Outcome RoundTrip(const TempFile& source, const TempFile& target) {
  Outcome outcome;
  t_log.clear();
  {
    OxDAEReader::oxDAEFile document;
    outcome.loaded = document.Load(source.URI());
    outcome.saved = document.Save(target.URI());
    OxKernel::oxString text;
    document.SaveToString(text);
    outcome.text = text;
  }
  OxDAEReader::oxDAEFile again;
  outcome.reloaded = again.Load(target.URI());
  OxKernel::oxString resaved;
  again.SaveToString(resaved);
  outcome.resaved = resaved;
  outcome.log = t_log;
  return outcome;
}

class ThreadedDocuments : public ::testing::Test {
 protected:
  ThreadedDocuments()
      : m_sink([](const OxKernel::oxLogRecord& r) {
          t_log.push_back({r.level, std::string(r.text)});
        }) {}

 private:
  OxKernel::oxScopedLogSink m_sink;
};

TEST_F(ThreadedDocuments, EightDocumentsOnEightThreadsMatchTheSequentialResults) {
  std::vector<std::unique_ptr<TempFile>> sources, targets;
  std::array<Outcome, kThreadCount> sequential;
  for (size_t i = 0; i < kThreadCount; ++i) {
    sources.push_back(std::make_unique<TempFile>(kDocuments[i]));
    targets.push_back(std::make_unique<TempFile>(""));
    sequential[i] = RoundTrip(*sources[i], *targets[i]);
    ASSERT_EQ(sequential[i].loaded, 0) << "document " << i;
    ASSERT_EQ(sequential[i].saved, 0) << "document " << i;
    ASSERT_EQ(sequential[i].reloaded, 0) << "document " << i;
    EXPECT_EQ(sequential[i].log, oxtest::kNoLog) << "document " << i;
    EXPECT_NE(sequential[i].text.find("<library_"), std::string::npos) << "document " << i;
    EXPECT_EQ(sequential[i].resaved, sequential[i].text) << "document " << i;
  }

  std::array<Outcome, kThreadCount> parallel;
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreadCount; ++i) {
    threads.emplace_back([&, i] { parallel[i] = RoundTrip(*sources[i], *targets[i]); });
  }
  for (std::thread& t : threads)
    t.join();

  for (size_t i = 0; i < kThreadCount; ++i) {
    EXPECT_EQ(parallel[i].loaded, 0) << "document " << i;
    EXPECT_EQ(parallel[i].saved, 0) << "document " << i;
    EXPECT_EQ(parallel[i].reloaded, 0) << "document " << i;
    EXPECT_EQ(parallel[i].text, sequential[i].text) << "document " << i;
    EXPECT_EQ(parallel[i].resaved, sequential[i].text) << "document " << i;
    EXPECT_EQ(parallel[i].log, sequential[i].log) << "document " << i;
  }
}

// The same document on every thread, each with its own oxDAEFile: nothing
// of one document's state may be shared with another's.
TEST_F(ThreadedDocuments, OneTextOnEightThreadsGivesEightEqualDocuments) {
  const TempFile source(kDocuments[2]);
  std::vector<std::unique_ptr<TempFile>> targets;
  for (size_t i = 0; i < kThreadCount; ++i)
    targets.push_back(std::make_unique<TempFile>(""));
  const Outcome expected = RoundTrip(source, *targets[0]);
  ASSERT_EQ(expected.loaded, 0);

  std::array<Outcome, kThreadCount> parallel;
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreadCount; ++i) {
    threads.emplace_back([&, i] { parallel[i] = RoundTrip(source, *targets[i]); });
  }
  for (std::thread& t : threads)
    t.join();

  for (size_t i = 0; i < kThreadCount; ++i) {
    EXPECT_EQ(parallel[i].loaded, 0) << "thread " << i;
    EXPECT_EQ(parallel[i].text, expected.text) << "thread " << i;
    EXPECT_EQ(parallel[i].resaved, expected.text) << "thread " << i;
    EXPECT_EQ(parallel[i].log, oxtest::kNoLog) << "thread " << i;
  }
}

// A mesh of three groups (two materials and a line list), cut on eight
// threads at once, each its own document; every cut is that of one thread,
// groups in document order.
TEST_F(ThreadedDocuments, MeshesOfSeveralGroupsCutOnEightThreadsKeepTheirOrder) {
  const std::string xml = Collada(R"(<library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="pa" count="12">0 0 0 1 0 0 1 1 0 0 1 0</float_array>
<technique_common><accessor source="#pa" count="4" stride="3"><param name="X" type="float"/>
<param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="1" material="a"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
<triangles count="1" material="b"><input semantic="VERTEX" source="#v" offset="0"/><p>2 3 0</p></triangles>
<lines count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 2</p></lines>
</mesh></geometry></library_geometries>)");
  std::array<OxDAEConvert::oxMeshTriangles, kThreadCount> meshes;
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreadCount; ++i) {
    threads.emplace_back([&, i] {
      OxDAEReader::oxDAEFile document;
      if (document.LoadFromMemory(xml.data(), xml.size(), OxKernel::oxURI()) != 0) return;
      if (const auto* geometry = OxDAEReader::oxDAEGeometry::DynamicCast(document.ResolveURI("#g")))
        meshes[i] = OxDAEConvert::MeshTriangles(*geometry);
    });
  }
  for (std::thread& t : threads)
    t.join();

  for (size_t i = 0; i < kThreadCount; ++i) {
    const OxDAEConvert::oxMeshTriangles& mesh = meshes[i];
    EXPECT_EQ(mesh.positionRecords, (OxKernel::oxArray<uint32_t>{0, 1, 2, 2, 3, 0, 0, 2}))
        << "thread " << i;
    ASSERT_EQ(mesh.parts.size(), 3u) << "thread " << i;
    EXPECT_EQ(mesh.parts[0].symbol, "a");
    EXPECT_EQ(mesh.parts[0].indices, (OxKernel::oxArray<uint32_t>{0, 1, 2}));
    EXPECT_EQ(mesh.parts[1].symbol, "b");
    EXPECT_EQ(mesh.parts[1].indices, (OxKernel::oxArray<uint32_t>{3, 4, 5}));
    EXPECT_TRUE(mesh.parts[2].lines);
    EXPECT_EQ(mesh.parts[2].indices, (OxKernel::oxArray<uint32_t>{6, 7}));
  }
}

}  // namespace
