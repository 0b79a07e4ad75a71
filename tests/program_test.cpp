// Shader programs of COLLADA 1.3 style materials: <program>, <code>, <entry>
// and the technique holding a program and passes.
#include <string>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::kNoLog;
using oxtest::Warning;

namespace {

using ProgramTest = oxtest::DocumentTest;

}  // namespace

// --- <program> ---------------------------------------------------------------------

TEST_F(ProgramTest, UrlWinsOverSourceAndIsWrittenAsUrl) {
  auto* p = ReadFragment<oxDAEProgram>(R"(<program lang="Cg" url="b.cg" source="a.cg"/>)");
  EXPECT_EQ(p->lang, "Cg");
  EXPECT_EQ(p->source, "b.cg");
  EXPECT_EQ(Written([&] { document.WriteChild(p); }),
            "<w>\n  <program lang=\"Cg\" url=\"b.cg\"/>\n</w>\n");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(ProgramTest, SourceAloneIsKeptAndWrittenAsUrl) {
  auto* p = ReadFragment<oxDAEProgram>(R"(<program source="a.cg"/>)");
  EXPECT_EQ(p->source, "a.cg");
  EXPECT_EQ(p->lang, "");
  EXPECT_EQ(Written([&] { document.WriteChild(p); }), "<w>\n  <program url=\"a.cg\"/>\n</w>\n");
}

TEST_F(ProgramTest, SecondCodeReplacesTheFirst) {
  auto* p = ReadFragment<oxDAEProgram>(
      R"(<program><code sid="first" lang="Cg"/><code sid="second" lang="GLSL"/></program>)");
  ASSERT_NE(p->code, nullptr);
  EXPECT_EQ(p->code->sid, "second");
  EXPECT_EQ(p->code->lang, "GLSL");
  EXPECT_EQ(p->code->parent, p);
  // Both were read and belong to the document; only the second is the program's.
  const std::vector<oxDAECodeElement*> codes = All<oxDAECodeElement>();
  ASSERT_EQ(codes.size(), 2u);
  EXPECT_EQ(codes[0]->sid, "first");
  EXPECT_EQ(codes[1], p->code);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(ProgramTest, SecondEntryAndAssetReplaceTheFirst) {
  auto* p = ReadFragment<oxDAEProgram>(R"(<program>
      <entry function="a"/><asset><title>one</title></asset>
      <entry function="b"/><asset><title>two</title></asset></program>)");
  ASSERT_NE(p->entry, nullptr);
  EXPECT_EQ(p->entry->function, "b");
  ASSERT_NE(p->asset, nullptr);
  EXPECT_EQ(p->asset->title, "two");
  EXPECT_EQ(All<oxDAEEntryElement>().size(), 2u);
}

TEST_F(ProgramTest, ReadsItsChildrenAndIdentity) {
  auto* p = ReadFragment<oxDAEProgram>(R"(<program id="prog" name="P" sid="s">
      <param name="a" type="float">1.5</param>
      <asset/>
      <parameter name="b" type="int">3</parameter>
      <entry function="main"/>
      <code lang="Cg"/></program>)");
  EXPECT_EQ(Find<oxDAEProgram>("#prog"), p);
  EXPECT_EQ(p->name, "P");
  EXPECT_EQ(p->sid, "s");
  ASSERT_EQ(p->parameters.size(), 2u);
  EXPECT_EQ(p->parameters[0]->name, "a");
  EXPECT_EQ(p->parameters[0]->floatValue, 1.5f);
  EXPECT_EQ(p->parameters[0]->parent, p);
  EXPECT_EQ(p->parameters[1]->name, "b");
  EXPECT_EQ(p->parameters[1]->intValue, 3);
  ASSERT_NE(p->asset, nullptr);
  EXPECT_EQ(p->asset->parent, p);
  ASSERT_NE(p->entry, nullptr);
  EXPECT_EQ(p->entry->function, "main");
  EXPECT_EQ(p->entry->parent, p);
  ASSERT_NE(p->code, nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(ProgramTest, EmptyProgramHasNoChildren) {
  auto* p = ReadFragment<oxDAEProgram>("<program/>");
  EXPECT_EQ(p->asset, nullptr);
  EXPECT_EQ(p->code, nullptr);
  EXPECT_EQ(p->entry, nullptr);
  EXPECT_TRUE(p->parameters.empty());
  EXPECT_EQ(p->source, "");
  EXPECT_EQ(Written([&] { document.WriteChild(p); }), "<w>\n  <program/>\n</w>\n");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(ProgramTest, UnknownChildIsReportedUnderProgram) {
  auto* p = ReadFragment<oxDAEProgram>(R"(<program><shader/><code lang="Cg"/><extra/></program>)");
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <shader> in <program>"),
                                           Warning("unknown element <extra> in <program>")}));
  ASSERT_NE(p->code, nullptr);
  EXPECT_EQ(p->code->lang, "Cg");
}

TEST_F(ProgramTest, WritesAssetEntryParametersThenCode) {
  auto* p = ReadFragment<oxDAEProgram>(R"(<program id="prog">
      <code lang="Cg"/>
      <param name="a" type="float">2</param>
      <entry function="main"/>
      <param name="b" type="float">3</param>
      <asset/></program>)");
  EXPECT_EQ(Written([&] { document.WriteChild(p); }),
            "<w>\n"
            "  <program id=\"prog\">\n"
            "    <asset>\n"
            "      <unit name=\"meter\" meter=\"1\"/>\n"
            "      <up_axis>Y_UP</up_axis>\n"
            "    </asset>\n"
            "    <entry function=\"main\"/>\n"
            "    <param name=\"a\" type=\"float\">2</param>\n"
            "    <param name=\"b\" type=\"float\">3</param>\n"
            "    <code lang=\"Cg\"/>\n"
            "  </program>\n"
            "</w>\n");
}

// --- <code> ------------------------------------------------------------------------

TEST_F(ProgramTest, CodeReadsItsAttributesAndRegistersItsId) {
  auto* c = ReadFragment<oxDAECodeElement>(
      R"(<code id="c1" lang="Cg" profile="ARBVP1" semantic="VERTEX_PROGRAM" url="v.cg">ignored</code>)");
  EXPECT_EQ(Find<oxDAECodeElement>("#c1"), c);
  EXPECT_EQ(c->lang, "Cg");
  EXPECT_EQ(c->profile, "ARBVP1");
  EXPECT_EQ(c->semantic, "VERTEX_PROGRAM");
  EXPECT_EQ(c->url, "v.cg");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(ProgramTest, CodeWritesOnlyTheAttributesThatAreNotEmpty) {
  auto* some = ReadFragment<oxDAECodeElement>(R"(<code lang="Cg" url="v.cg"/>)");
  EXPECT_EQ(Written([&] { document.WriteChild(some); }),
            "<w>\n  <code lang=\"Cg\" url=\"v.cg\"/>\n</w>\n");
  auto* all = ReadFragment<oxDAECodeElement>(
      R"(<code name="n" lang="Cg" profile="P" semantic="S" url="v.cg"/>)");
  EXPECT_EQ(
      Written([&] { document.WriteChild(all); }),
      "<w>\n  <code name=\"n\" lang=\"Cg\" profile=\"P\" semantic=\"S\" url=\"v.cg\"/>\n</w>\n");
  auto* none = ReadFragment<oxDAECodeElement>(R"(<code lang=""/>)");
  EXPECT_EQ(Written([&] { document.WriteChild(none); }), "<w>\n  <code/>\n</w>\n");
}

TEST_F(ProgramTest, CodeIsLeftOpenForItsParent) {
  auto* c = ReadFragment<oxDAECodeElement>(R"(<code lang="Cg"/>)");
  Written([&] {
    const unsigned int depth = document.writer->GetDepth();
    c->Write(document);
    EXPECT_EQ(document.writer->GetDepth(), depth + 1);
  });
}

TEST_F(ProgramTest, CodeChildrenAreNotRead) {
  std::string xml = "<program><code lang=\"Cg\">";
  for (int i = 0; i < 100000; ++i)
    xml += "<x/>";
  xml += "</code><entry function=\"main\"/></program>";
  auto* p = ReadFragment<oxDAEProgram>(xml);
  ASSERT_NE(p->code, nullptr);
  EXPECT_EQ(p->code->lang, "Cg");
  ASSERT_NE(p->entry, nullptr);
  EXPECT_EQ(p->entry->function, "main");
  EXPECT_EQ(document.GetElements().size(), 3u);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(ProgramTest, MegabyteAttributeIsKeptWhole) {
  const std::string url(1 << 20, 'u');
  auto* p = ReadFragment<oxDAEProgram>("<program url=\"" + url + "\"/>");
  EXPECT_EQ(p->source.size(), url.size());
  EXPECT_EQ(p->source, url);
  EXPECT_EQ(Written([&] { document.WriteChild(p); }),
            "<w>\n  <program url=\"" + url + "\"/>\n</w>\n");
  EXPECT_EQ(log.entries, kNoLog);
}

// --- <entry> -----------------------------------------------------------------------

TEST_F(ProgramTest, EntryReadsParametersAndReportsOtherChildren) {
  auto* e = ReadFragment<oxDAEEntryElement>(R"(<entry semantic="S" function="main">
      <param name="a" type="float">1</param><bind/><parameter name="b" type="int">2</parameter>
      </entry>)");
  EXPECT_EQ(e->semantic, "S");
  EXPECT_EQ(e->function, "main");
  ASSERT_EQ(e->parameters.size(), 2u);
  EXPECT_EQ(e->parameters[0]->name, "a");
  EXPECT_EQ(e->parameters[0]->parent, e);
  EXPECT_EQ(e->parameters[1]->name, "b");
  EXPECT_EQ(e->parameters[1]->intValue, 2);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <bind> in <entry>")}));
}

TEST_F(ProgramTest, EntryWritesSemanticFunctionAndParameters) {
  auto* e = ReadFragment<oxDAEEntryElement>(
      R"(<entry function="main" semantic="S"><param name="a" type="float">1</param></entry>)");
  EXPECT_EQ(Written([&] { document.WriteChild(e); }),
            "<w>\n"
            "  <entry semantic=\"S\" function=\"main\">\n"
            "    <param name=\"a\" type=\"float\">1</param>\n"
            "  </entry>\n"
            "</w>\n");
  auto* bare = ReadFragment<oxDAEEntryElement>(R"(<entry function="f"/>)");
  EXPECT_EQ(Written([&] { document.WriteChild(bare); }), "<w>\n  <entry function=\"f\"/>\n</w>\n");
}

// --- Shader technique --------------------------------------------------------------

TEST_F(ProgramTest, ShaderTechniqueReadsProgramPassesAndItsOwnChildren) {
  auto* t = ReadFragment<oxDAEShaderTechnique>(R"(<technique profile="CG">
      <asset/>
      <param name="k" type="float">4</param>
      <program id="p1"/>
      <pass sid="first"/>
      <program id="p2"/>
      <pass sid="second"/>
      <shader/>
    </technique>)");
  EXPECT_EQ(t->profile, "CG");
  ASSERT_NE(t->asset, nullptr);
  ASSERT_EQ(t->parameters.size(), 1u);
  EXPECT_EQ(t->parameters[0]->name, "k");
  ASSERT_NE(t->program, nullptr);
  EXPECT_EQ(t->program->id, "p2");
  EXPECT_EQ(t->program->parent, t);
  EXPECT_EQ(All<oxDAEProgram>().size(), 2u);
  ASSERT_EQ(t->passes.size(), 2u);
  EXPECT_EQ(t->passes[0]->sid, "first");
  EXPECT_EQ(t->passes[1]->sid, "second");
  EXPECT_EQ(t->passes[1]->parent, t);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <shader> in <technique>")}));
}

// The technique's own asset and parameters are dropped, and a pass writes
// nothing of itself.
TEST_F(ProgramTest, ShaderTechniqueWritesProfileAndProgramOnly) {
  auto* t = ReadFragment<oxDAEShaderTechnique>(R"(<technique profile="CG">
      <asset/><param name="k" type="float">4</param><pass sid="p0"/><program lang="Cg"/>
      </technique>)");
  ASSERT_EQ(t->passes.size(), 1u);
  EXPECT_EQ(Written([&] { document.WriteChild(t); }),
            "<w>\n"
            "  <technique profile=\"CG\">\n"
            "    <program lang=\"Cg\"/>\n"
            "  </technique>\n"
            "</w>\n");
}

TEST_F(ProgramTest, ReadWriteRoundTripIsStable) {
  const std::string xml = R"(<technique profile="CG"><program id="prog" lang="Cg" url="shade.cg">)"
                          R"(<code lang="Cg" profile="ARBFP1" semantic="FRAGMENT_PROGRAM"/>)"
                          R"(<param name="gloss" type="float">0.5</param>)"
                          R"(<asset/><entry semantic="FRAGMENT_PROGRAM" function="main">)"
                          R"(<param name="tint" type="float3">1 0.5 0</param></entry>)"
                          R"(</program><pass sid="p0"/></technique>)";
  auto* first = ReadFragment<oxDAEShaderTechnique>(xml);
  ASSERT_EQ(first->passes.size(), 1u);
  const std::string written = Written([&] { document.WriteChild(first); });
  const size_t start = written.find("<technique");
  const size_t end = written.find("</technique>");
  ASSERT_NE(start, std::string::npos);
  ASSERT_NE(end, std::string::npos);
  auto* second = ReadFragment<oxDAEShaderTechnique>(
      written.substr(start, end + std::string_view("</technique>").size() - start));
  EXPECT_EQ(log.entries, kNoLog);
  EXPECT_EQ(Written([&] { document.WriteChild(second); }), written);

  ASSERT_NE(second->program, nullptr);
  const oxDAEProgram& p = *second->program;
  EXPECT_EQ(p.id, "prog");
  EXPECT_EQ(p.lang, "Cg");
  EXPECT_EQ(p.source, "shade.cg");
  ASSERT_NE(p.code, nullptr);
  EXPECT_EQ(p.code->profile, "ARBFP1");
  EXPECT_EQ(p.code->semantic, "FRAGMENT_PROGRAM");
  ASSERT_EQ(p.parameters.size(), 1u);
  EXPECT_EQ(p.parameters[0]->floatValue, 0.5f);
  ASSERT_NE(p.entry, nullptr);
  EXPECT_EQ(p.entry->function, "main");
  ASSERT_EQ(p.entry->parameters.size(), 1u);
  EXPECT_EQ(p.entry->parameters[0]->floatData, (oxArray<float>{1.0f, 0.5f, 0.0f}));
  EXPECT_NE(p.asset, nullptr);
  EXPECT_TRUE(second->passes.empty());
}
