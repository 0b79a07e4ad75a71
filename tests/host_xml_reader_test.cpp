#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <oxKernel/oxXML.h>

#include <oxKernel/oxCharacter.h>
#include "oxTestSupport.h"

using namespace OxKernel;
using oxtest::Error;
using oxtest::LogCapture;
using oxtest::TempFile;
using oxtest::Warning;

namespace {

oxRefPtr<oxXMLReader> Read(std::string_view xml) {
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateReader(reader, xml, 0), kXMLOk);
  return reader;
}

int OpenFile(const oxURI& uri, oxRefPtr<oxXMLReader>& reader) {
  return oxXMLFactory::Instance(0).CreateReader(reader, uri, nullptr, 0);
}

// The tags of the elements of the current level, walked with MoveNext.
std::vector<std::string> Tags(oxXMLReader& reader) {
  std::vector<std::string> tags;
  while (reader.MoveNext() == kXMLOk)
    tags.emplace_back(reader.GetTag());
  return tags;
}

std::vector<std::string> TextPieces(const oxXMLReader& reader) {
  std::vector<std::string> pieces;
  reader.ForEachTextChild(
      [&pieces](const oxXMLTextValue& text) { pieces.emplace_back(text.GetText()); });
  return pieces;
}

std::string Nested(size_t levels) {
  std::string xml;
  xml.reserve(levels * 7);
  for (size_t i = 0; i < levels; ++i)
    xml += "<a>";
  for (size_t i = 0; i < levels; ++i)
    xml += "</a>";
  return xml;
}

// Walks down through the first element of every level until a level has
// none; returns how many elements were stood on.
size_t WalkDown(oxXMLReader& reader) {
  size_t elements = 0;
  while (reader.MoveNext() == kXMLOk) {
    ++elements;
    reader.EnterChildren();
  }
  return elements;
}

// The UTF-16 form of `text` (code points below 0x10000 only), with a
// byte-order mark, in little- or big-endian byte order.
std::string Utf16(std::u16string_view text, bool bigEndian) {
  std::string bytes;
  auto put = [&bytes, bigEndian](char16_t unit) {
    const char low = static_cast<char>(unit & 0xff), high = static_cast<char>(unit >> 8);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  };
  put(0xfeff);
  for (char16_t unit : text)
    put(unit);
  return bytes;
}

std::string MissingPath() {
  return (std::filesystem::temp_directory_path() /
          ("oxdae_missing_" + std::to_string(getpid()) + ".dae"))
      .string();
}

uint32_t Bits(float value) {
  return std::bit_cast<uint32_t>(value);
}

struct Reading {
  std::string root, attribute, child, text;
  bool operator==(const Reading&) const = default;
};

Reading ReadSample(const oxRefPtr<oxXMLReader>& reader) {
  Reading r;
  if (!reader || reader->MoveNext() != kXMLOk) return r;
  r.root = reader->GetTag();
  oxString value;
  reader->ReadAttributeString("name", value);
  r.attribute = value;
  reader->ReadTextString(value);
  r.text = value;
  reader->EnterChildren();
  if (reader->MoveNext() == kXMLOk) r.child = reader->GetTag();
  return r;
}

}  // namespace

// ---------------------------------------------------------------- cursor

TEST(HostXMLReader, FirstMoveNextStandsOnTheRootElement) {
  auto reader = Read("<root><child/></root>");
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->GetDepth(), 0u);
  EXPECT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetTag(), "root");
  EXPECT_EQ(reader->GetTagName(), oxString("root"));
  EXPECT_TRUE(reader->IsTag("root"));
  EXPECT_FALSE(reader->IsTag("child"));
  EXPECT_EQ(reader->GetDepth(), 0u);
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
}

TEST(HostXMLReader, MoveNextWalksTheSiblingsInDocumentOrder) {
  auto reader = Read("<r><a/><b>x</b><c><d/></c></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  EXPECT_EQ(reader->GetDepth(), 1u);
  EXPECT_EQ(Tags(*reader), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
}

TEST(HostXMLReader, EnterAndLeaveChildrenStepThroughNestedLevels) {
  auto reader = Read("<r><a><x/><y/></a><b/></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetTag(), "a");
  reader->EnterChildren();
  EXPECT_EQ(reader->GetDepth(), 2u);
  EXPECT_EQ(Tags(*reader), (std::vector<std::string>{"x", "y"}));
  reader->LeaveChildren();
  EXPECT_EQ(reader->GetDepth(), 1u);
  EXPECT_EQ(reader->GetTag(), "a");
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetTag(), "b");
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
  reader->LeaveChildren();
  EXPECT_EQ(reader->GetDepth(), 0u);
  EXPECT_EQ(reader->GetTag(), "r");
}

TEST(HostXMLReader, EmptyElementPresentsAnEmptyLevel) {
  auto reader = Read("<r><empty/><also></also></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  for (const char* tag : {"empty", "also"}) {
    ASSERT_EQ(reader->MoveNext(), kXMLOk);
    EXPECT_EQ(reader->GetTag(), tag);
    EXPECT_EQ(reader->CountChildElements(), 0u);
    reader->EnterChildren();
    EXPECT_EQ(reader->GetDepth(), 2u);
    EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
    EXPECT_EQ(reader->GetTag(), "");
    reader->LeaveChildren();
    EXPECT_EQ(reader->GetTag(), tag);
  }
}

TEST(HostXMLReader, LeaveChildrenAtTheTopLevelStaysThere) {
  auto reader = Read("<r/>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->LeaveChildren();
  EXPECT_EQ(reader->GetDepth(), 0u);
  EXPECT_EQ(reader->GetTag(), "r");
}

TEST(HostXMLReader, EnteringPastTheEndOfALevelPresentsAnEmptyLevel) {
  LogCapture log;
  auto reader = Read("<r><a><b/></a></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  ASSERT_EQ(reader->MoveNext(), kXMLNoElement);
  reader->EnterChildren();
  EXPECT_EQ(reader->GetDepth(), 2u);
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
  EXPECT_EQ(reader->CountChildElements(), 0u);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLReader, CommentsAndProcessingInstructionsAreInvisible) {
  auto reader = Read(
      "<?xml version=\"1.0\"?><!-- before --><?tool run?><!DOCTYPE r>"
      "<r><!--c1--><a/><?pi data?><!--c2--><b/><!--c3--></r><!-- after -->");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetTag(), "r");
  EXPECT_EQ(reader->CountChildElements(), 2u);
  EXPECT_FALSE(reader->GetTextValue());
  reader->EnterChildren();
  EXPECT_EQ(Tags(*reader), (std::vector<std::string>{"a", "b"}));
  reader->LeaveChildren();
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
}

TEST(HostXMLReader, CountChildElementsCountsElementsOnly) {
  auto reader = Read("<r>text<a/><!--c--><b><x/><y/></b>more<c/><![CDATA[d]]></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->CountChildElements(), 3u);
  reader->EnterChildren();
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetTag(), "b");
  EXPECT_EQ(reader->CountChildElements(), 2u);
}

TEST(HostXMLReader, GetOffsetGivesTheByteOffsetOfTheElement) {
  auto reader = Read("<r>\n  <a/>\n  <bb/></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetOffset(), 0u);
  reader->EnterChildren();
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetOffset(), 6u);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetOffset(), 13u);
}

// ---------------------------------------------------------------- attributes

TEST(HostXMLReader, ReadsAttributesOfEveryType) {
  LogCapture log;
  auto reader = Read(
      "<x s=\"some text\" u=\"4294967295\" i=\"-2147483648\" h=\"-32768\" uh=\"65535\" "
      "f=\"1.5\" d=\"0.1\" b=\"true\" z=\"0\"/>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  oxString s;
  uint32_t u = 0;
  int32_t i = 0;
  int16_t h = 0;
  uint16_t uh = 0;
  float f = 0;
  double d = 0;
  bool b = false, z = true;
  EXPECT_TRUE(reader->ReadAttributeString("s", s));
  EXPECT_TRUE(reader->ReadAttributeUInt("u", u));
  EXPECT_TRUE(reader->ReadAttributeInt("i", i));
  EXPECT_TRUE(reader->ReadAttributeShort("h", h));
  EXPECT_TRUE(reader->ReadAttributeUShort("uh", uh));
  EXPECT_TRUE(reader->ReadAttributeFloat("f", f));
  EXPECT_TRUE(reader->ReadAttributeDouble("d", d));
  EXPECT_TRUE(reader->ReadAttributeBool("b", b));
  EXPECT_TRUE(reader->ReadAttributeBool("z", z));
  EXPECT_EQ(s, "some text");
  EXPECT_EQ(u, 4294967295u);
  EXPECT_EQ(i, std::numeric_limits<int32_t>::min());
  EXPECT_EQ(h, -32768);
  EXPECT_EQ(uh, 65535);
  EXPECT_EQ(f, 1.5f);
  EXPECT_EQ(d, 0.1);
  EXPECT_TRUE(b);
  EXPECT_FALSE(z);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLReader, AbsentAttributeLeavesTheTargetUnchanged) {
  LogCapture log;
  auto reader = Read("<x other=\"1\"/>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  oxString s = "kept";
  uint32_t u = 7;
  int32_t i = -7;
  int16_t h = 8;
  uint16_t uh = 9;
  float f = 2.5f;
  double d = 3.5;
  bool b = true;
  EXPECT_FALSE(reader->HasAttribute("count"));
  EXPECT_TRUE(reader->HasAttribute("other"));
  EXPECT_FALSE(reader->ReadAttributeString("count", s));
  EXPECT_FALSE(reader->ReadAttributeUInt("count", u));
  EXPECT_FALSE(reader->ReadAttributeInt("count", i));
  EXPECT_FALSE(reader->ReadAttributeShort("count", h));
  EXPECT_FALSE(reader->ReadAttributeUShort("count", uh));
  EXPECT_FALSE(reader->ReadAttributeFloat("count", f));
  EXPECT_FALSE(reader->ReadAttributeDouble("count", d));
  EXPECT_FALSE(reader->ReadAttributeBool("count", b));
  EXPECT_FALSE(reader->ReadAttributeString("OTHER", s));
  EXPECT_EQ(s, "kept");
  EXPECT_EQ(u, 7u);
  EXPECT_EQ(i, -7);
  EXPECT_EQ(h, 8);
  EXPECT_EQ(uh, 9);
  EXPECT_EQ(f, 2.5f);
  EXPECT_EQ(d, 3.5);
  EXPECT_TRUE(b);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLReader, InvalidAttributeNumberLogsAWarningAndLeavesTheTargetUnchanged) {
  LogCapture log;
  auto reader = Read("<x count=\"abc\"/>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  uint32_t count = 5;
  EXPECT_FALSE(reader->ReadAttributeUInt("count", count));
  EXPECT_EQ(count, 5u);
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'abc' of attribute 'count' in <x>")}));
}

TEST(HostXMLReader, OutOfRangeAttributeNumbersAreInvalid) {
  LogCapture log;
  auto reader = Read("<x s=\"32768\" us=\"-1\" u=\"4294967296\" i=\"2147483648\" b=\"yes\"/>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  int16_t s = 1;
  uint16_t us = 2;
  uint32_t u = 3;
  int32_t i = 4;
  bool b = false;
  EXPECT_FALSE(reader->ReadAttributeShort("s", s));
  EXPECT_FALSE(reader->ReadAttributeUShort("us", us));
  EXPECT_FALSE(reader->ReadAttributeUInt("u", u));
  EXPECT_FALSE(reader->ReadAttributeInt("i", i));
  EXPECT_FALSE(reader->ReadAttributeBool("b", b));
  EXPECT_EQ(s, 1);
  EXPECT_EQ(us, 2);
  EXPECT_EQ(u, 3u);
  EXPECT_EQ(i, 4);
  EXPECT_FALSE(b);
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value '32768' of attribute 's' in <x>"),
                                      Warning("invalid value '-1' of attribute 'us' in <x>"),
                                      Warning("invalid value '4294967296' of attribute 'u' in <x>"),
                                      Warning("invalid value '2147483648' of attribute 'i' in <x>"),
                                      Warning("invalid value 'yes' of attribute 'b' in <x>")}));
}

TEST(HostXMLReader, AttributeNumbersMayBeSurroundedByBlanks) {
  auto reader = Read("<x count=\" +12 \" scale=\"\t-2.5e1\n\"/>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  int32_t count = 0;
  float scale = 0;
  EXPECT_TRUE(reader->ReadAttributeInt("count", count));
  EXPECT_TRUE(reader->ReadAttributeFloat("scale", scale));
  EXPECT_EQ(count, 12);
  EXPECT_EQ(scale, -25.0f);
}

TEST(HostXMLReader, AttributeValuesAreUnescaped) {
  auto reader = Read("<x v=\"&lt;&amp;&gt;&quot;&apos;&#65;&#x42;\" w='a\"b'/>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  oxString v, w;
  EXPECT_TRUE(reader->ReadAttributeString("v", v));
  EXPECT_TRUE(reader->ReadAttributeString("w", w));
  EXPECT_EQ(v, "<&>\"'AB");
  EXPECT_EQ(w, "a\"b");
}

// ---------------------------------------------------------------- text

TEST(HostXMLReader, ReadTextStringReadsTheFirstTextChild) {
  auto reader = Read("<x><y/> a &amp; b <!--c--> tail</x>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  oxString text;
  EXPECT_TRUE(reader->ReadTextString(text));
  EXPECT_EQ(text, " a & b ");
}

TEST(HostXMLReader, ReadTextNumbersTrimTheText) {
  LogCapture log;
  auto reader = Read("<r><f>\n  2.5\t</f><i> -17 </i></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  float f = 0;
  int32_t i = 0;
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_TRUE(reader->ReadTextFloat(f));
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_TRUE(reader->ReadTextInt(i));
  EXPECT_EQ(f, 2.5f);
  EXPECT_EQ(i, -17);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLReader, InvalidTextNumberLogsAWarningAndLeavesTheTargetUnchanged) {
  LogCapture log;
  auto reader = Read("<r><i> 1.5 </i><f>1 2</f></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  int32_t i = 3;
  float f = 4;
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_FALSE(reader->ReadTextInt(i));
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_FALSE(reader->ReadTextFloat(f));
  EXPECT_EQ(i, 3);
  EXPECT_EQ(f, 4.0f);
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value '1.5' in <i>"),
                                      Warning("invalid value '1 2' in <f>")}));
}

TEST(HostXMLReader, TextReadersLeaveTheTargetUnchangedWithoutText) {
  LogCapture log;
  auto reader = Read("<x><y>inner</y></x>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  oxString s = "kept";
  float f = 1.25f;
  int32_t i = 9;
  EXPECT_FALSE(reader->ReadTextString(s));
  EXPECT_FALSE(reader->ReadTextFloat(f));
  EXPECT_FALSE(reader->ReadTextInt(i));
  EXPECT_EQ(s, "kept");
  EXPECT_EQ(f, 1.25f);
  EXPECT_EQ(i, 9);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLReader, CDATAIsReadAsText) {
  auto reader = Read("<x><![CDATA[a <b> & c]]></x>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  oxString text;
  EXPECT_TRUE(reader->ReadTextString(text));
  EXPECT_EQ(text, "a <b> & c");
  const oxXMLTextValue* value = reader->GetTextValue();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->GetText(), "a <b> & c");
  EXPECT_TRUE(reader->HasPlainText());
}

TEST(HostXMLReader, GetTextValueIsNullWithoutText) {
  auto reader = Read("<r><empty/><child><y>t</y></child><blank>  \n\t </blank></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->GetTextValue(), nullptr);
  reader->EnterChildren();
  for (const char* tag : {"empty", "child", "blank"}) {
    ASSERT_EQ(reader->MoveNext(), kXMLOk);
    EXPECT_EQ(reader->GetTag(), tag);
    EXPECT_EQ(reader->GetTextValue(), nullptr) << tag;
  }
}

TEST(HostXMLReader, GetTextValueGivesTheTextWithItsTag) {
  auto reader = Read("<values> 1 2\n3 </values>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  const oxXMLTextValue* value = reader->GetTextValue();
  ASSERT_NE(value, nullptr);
  EXPECT_TRUE(value->HasText());
  EXPECT_EQ(value->GetText(), " 1 2\n3 ");
  EXPECT_EQ(value->CountTokens(), 3u);
  LogCapture log;
  int32_t ints[3] = {};
  unsigned int parsed = 9;
  EXPECT_EQ(value->ParseInts(ints, 3, parsed), 0);
  EXPECT_EQ(parsed, 3u);
  EXPECT_EQ(std::vector<int32_t>(ints, ints + 3), (std::vector<int32_t>{1, 2, 3}));
  float floats[4] = {};
  const oxXMLTextValue bad("1 x", 3, "values");
  EXPECT_EQ(bad.ParseFloats(floats, 4, parsed), -1);
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'x' in <values>")}));
}

TEST(HostXMLReader, HasPlainTextNeedsExactlyOneTextNode) {
  auto reader = Read(
      "<r><one>text</one><cdata><![CDATA[c]]></cdata><comment>a<!--c-->b</comment>"
      "<child>a<y/></child><mixed>a<![CDATA[b]]></mixed><pi>a<?p?>b</pi><none/>"
      "<onlychild><y/></onlychild></r>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  const std::vector<std::pair<std::string, bool>> expected = {
      {"one", true},    {"cdata", true}, {"comment", false}, {"child", false},
      {"mixed", false}, {"pi", false},   {"none", false},    {"onlychild", false}};
  for (const auto& [tag, plain] : expected) {
    ASSERT_EQ(reader->MoveNext(), kXMLOk);
    EXPECT_EQ(reader->GetTag(), tag);
    EXPECT_EQ(reader->HasPlainText(), plain) << tag;
  }
}

TEST(HostXMLReader, ForEachTextChildVisitsEveryTextPieceInOrder) {
  auto reader = Read("<x>1 2<!--c-->3<y>inner</y> 4 <![CDATA[5 6]]><?p?>7</x>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(TextPieces(*reader), (std::vector<std::string>{"1 2", "3", " 4 ", "5 6", "7"}));
  oxArray<int32_t> all;
  reader->ForEachTextChild([&all](const oxXMLTextValue& text) { text.AppendInts(all); });
  EXPECT_EQ(all, (oxArray<int32_t>{1, 2, 3, 4, 5, 6, 7}));
}

TEST(HostXMLReader, ForEachTextChildVisitsNothingWithoutText) {
  auto reader = Read("<x><y>inner</y></x>");
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(TextPieces(*reader), std::vector<std::string>{});
}

// ---------------------------------------------------------------- text values

TEST(HostXMLTextValue, ParseFloatsReadsSignsAndExponents) {
  const std::string text = "1 -2 +3 4.5e2 -6E-1 +7e+1 .5 -.25 5. 0 -0 1e-45";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  float out[12] = {};
  unsigned int parsed = 0;
  EXPECT_EQ(value.ParseFloats(out, 12, parsed), 0);
  EXPECT_EQ(parsed, 12u);
  const std::vector<float> expected = {
      1.0f, -2.0f,  3.0f, 450.0f, -0.6f, 70.0f,
      0.5f, -0.25f, 5.0f, 0.0f,   -0.0f, std::numeric_limits<float>::denorm_min()};
  for (size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(Bits(out[i]), Bits(expected[i])) << i;
}

TEST(HostXMLTextValue, ParseFloatsReadsTheNonFiniteSpellings) {
  const std::string text = "INF -INF NaN +INF inf -inf nan";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  float out[7] = {};
  unsigned int parsed = 0;
  EXPECT_EQ(value.ParseFloats(out, 7, parsed), 0);
  EXPECT_EQ(parsed, 7u);
  const float inf = std::numeric_limits<float>::infinity();
  EXPECT_EQ(out[0], inf);
  EXPECT_EQ(out[1], -inf);
  EXPECT_TRUE(std::isnan(out[2]));
  EXPECT_EQ(out[3], inf);
  EXPECT_EQ(out[4], inf);
  EXPECT_EQ(out[5], -inf);
  EXPECT_TRUE(std::isnan(out[6]));
}

TEST(HostXMLTextValue, OutOfRangeFloatsReadAsInfinityOrZeroKeepingTheSign) {
  const std::string zeros(60, '0');
  const std::string text = "1e50 -1e50 1e-50 -1e-50 +1e50 1" + zeros + " 0." + zeros + "1 -0." +
                           zeros + "1 1" + zeros + "e-10 0.001e-44 " + "123456e-55";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  float out[11] = {};
  unsigned int parsed = 0;
  LogCapture log;
  EXPECT_EQ(value.ParseFloats(out, 11, parsed), 0);
  EXPECT_EQ(parsed, 11u);
  const float inf = std::numeric_limits<float>::infinity();
  const std::vector<float> expected = {inf,  -inf,  0.0f, -0.0f, inf, inf,
                                       0.0f, -0.0f, inf,  0.0f,  0.0f};
  for (size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(Bits(out[i]), Bits(expected[i])) << i;
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLTextValue, ParsersAcceptEveryKindOfWhiteSpace) {
  const std::string text = " \t\r\n1\t\t2\r\n3 \n\r\t4  \n";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  float floats[4] = {};
  int32_t ints[4] = {};
  bool bools[4] = {};
  oxString strings[4];
  unsigned int parsed = 0;
  EXPECT_EQ(value.ParseFloats(floats, 4, parsed), 0);
  EXPECT_EQ(parsed, 4u);
  EXPECT_EQ(std::vector<float>(floats, floats + 4), (std::vector<float>{1, 2, 3, 4}));
  EXPECT_EQ(value.ParseInts(ints, 4, parsed), 0);
  EXPECT_EQ(parsed, 4u);
  EXPECT_EQ(std::vector<int32_t>(ints, ints + 4), (std::vector<int32_t>{1, 2, 3, 4}));
  EXPECT_EQ(value.ParseStrings(strings, 4, parsed), 0);
  EXPECT_EQ(parsed, 4u);
  EXPECT_EQ(std::vector<oxString>(strings, strings + 4),
            (std::vector<oxString>{"1", "2", "3", "4"}));
  const std::string flags = "\ttrue\r\n0 \n1\rfalse\n";
  const oxXMLTextValue boolText(flags.data(), flags.size(), "v");
  EXPECT_EQ(boolText.ParseBools(bools, 4, parsed), 0);
  EXPECT_EQ(parsed, 4u);
  EXPECT_EQ(std::vector<bool>(bools, bools + 4), (std::vector<bool>{true, false, true, false}));
  EXPECT_EQ(value.CountTokens(), 4u);
}

TEST(HostXMLTextValue, TooFewValuesReportHowManyWereParsed) {
  const std::string text = "1.5 2.5";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  float out[4] = {9, 9, 9, 9};
  unsigned int parsed = 0;
  LogCapture log;
  EXPECT_EQ(value.ParseFloats(out, 4, parsed), 0);
  EXPECT_EQ(parsed, 2u);
  EXPECT_EQ(std::vector<float>(out, out + 4), (std::vector<float>{1.5f, 2.5f, 9, 9}));
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLTextValue, ValuesBeyondTheWantedCountAreIgnored) {
  const std::string text = "1 2 3 not-a-number";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  int32_t out[3] = {7, 7, 7};
  unsigned int parsed = 0;
  LogCapture log;
  EXPECT_EQ(value.ParseInts(out, 2, parsed), 0);
  EXPECT_EQ(parsed, 2u);
  EXPECT_EQ(std::vector<int32_t>(out, out + 3), (std::vector<int32_t>{1, 2, 7}));
  oxString strings[2];
  EXPECT_EQ(value.ParseStrings(strings, 2, parsed), 0);
  EXPECT_EQ(parsed, 2u);
  EXPECT_EQ(strings[1], "2");
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLTextValue, EmptyTextAndZeroWantedParseNothing) {
  const oxXMLTextValue empty;
  EXPECT_FALSE(empty.HasText());
  EXPECT_EQ(empty.CountTokens(), 0u);
  float out[2] = {4, 4};
  unsigned int parsed = 5;
  EXPECT_EQ(empty.ParseFloats(out, 2, parsed), 0);
  EXPECT_EQ(parsed, 0u);
  const std::string text = "x y";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  parsed = 5;
  EXPECT_EQ(value.ParseFloats(out, 0, parsed), 0);
  EXPECT_EQ(parsed, 0u);
  EXPECT_EQ(std::vector<float>(out, out + 2), (std::vector<float>{4, 4}));
}

TEST(HostXMLTextValue, InvalidFloatTokenStopsTheParseWithAWarning) {
  const std::string text = "1 2 x 4";
  const oxXMLTextValue value(text.data(), text.size(), "float_array");
  float out[4] = {9, 9, 9, 9};
  unsigned int parsed = 0;
  LogCapture log;
  EXPECT_EQ(value.ParseFloats(out, 4, parsed), -1);
  EXPECT_EQ(parsed, 2u);
  EXPECT_EQ(std::vector<float>(out, out + 4), (std::vector<float>{1, 2, 9, 9}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'x' in <float_array>")}));
}

TEST(HostXMLTextValue, InvalidTokenWithANumberPrefixLeavesItsSlotUnchanged) {
  const std::string text = "1 2.5x 3";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  float floats[3] = {9, 9, 9};
  int32_t ints[3] = {9, 9, 9};
  unsigned int parsed = 0;
  LogCapture log;
  EXPECT_EQ(value.ParseFloats(floats, 3, parsed), -1);
  EXPECT_EQ(parsed, 1u);
  EXPECT_EQ(std::vector<float>(floats, floats + 3), (std::vector<float>{1, 9, 9}));
  EXPECT_EQ(value.ParseInts(ints, 3, parsed), -1);
  EXPECT_EQ(parsed, 1u);
  EXPECT_EQ(std::vector<int32_t>(ints, ints + 3), (std::vector<int32_t>{1, 9, 9}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value '2.5x' in <v>"),
                                      Warning("invalid value '2.5x' in <v>")}));
}

TEST(HostXMLTextValue, ParseIntsReadsSignsAndTheFullRange) {
  const std::string text = "-2147483648 2147483647 +5 0 -0 007";
  const oxXMLTextValue value(text.data(), text.size(), "v");
  int32_t out[6] = {};
  unsigned int parsed = 0;
  EXPECT_EQ(value.ParseInts(out, 6, parsed), 0);
  EXPECT_EQ(parsed, 6u);
  EXPECT_EQ(std::vector<int32_t>(out, out + 6),
            (std::vector<int32_t>{std::numeric_limits<int32_t>::min(),
                                  std::numeric_limits<int32_t>::max(), 5, 0, 0, 7}));
}

// Up to eight digits are read inline, longer tokens by the library: both
// give the same values, and a digit run ending in a letter is refused
// without touching its slot.
TEST(HostXMLTextValue, ParseIntsReadsShortAndLongDigitRunsAlike) {
  const std::string text = "5 12345678 123456789 1234567890 00000000012\t7";
  const oxXMLTextValue value(text.data(), text.size(), "p");
  int32_t out[6] = {};
  unsigned int parsed = 0;
  EXPECT_EQ(value.ParseInts(out, 6, parsed), 0);
  EXPECT_EQ(parsed, 6u);
  EXPECT_EQ(std::vector<int32_t>(out, out + 6),
            (std::vector<int32_t>{5, 12345678, 123456789, 1234567890, 12, 7}));
  const std::string bad = "8 1234567a";
  const oxXMLTextValue badValue(bad.data(), bad.size(), "p");
  int32_t slots[2] = {9, 9};
  LogCapture log;
  EXPECT_EQ(badValue.ParseInts(slots, 2, parsed), -1);
  EXPECT_EQ(parsed, 1u);
  EXPECT_EQ(std::vector<int32_t>(slots, slots + 2), (std::vector<int32_t>{8, 9}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value '1234567a' in <p>")}));
}

TEST(HostXMLTextValue, ParseIntsRejectsFractionsOverflowAndDoubleSigns) {
  LogCapture log;
  unsigned int parsed = 0;
  int32_t out[2] = {};
  for (const std::string token :
       {"1.5", "2147483648", "-2147483649", "0x10", "+-1", "++1", "+", "1e3"}) {
    const std::string text = "3 " + token;
    const oxXMLTextValue value(text.data(), text.size(), "p");
    EXPECT_EQ(value.ParseInts(out, 2, parsed), -1) << token;
    EXPECT_EQ(parsed, 1u) << token;
  }
  EXPECT_EQ(
      log.entries,
      (std::vector{
          Warning("invalid value '1.5' in <p>"), Warning("invalid value '2147483648' in <p>"),
          Warning("invalid value '-2147483649' in <p>"), Warning("invalid value '0x10' in <p>"),
          Warning("invalid value '+-1' in <p>"), Warning("invalid value '++1' in <p>"),
          Warning("invalid value '+' in <p>"), Warning("invalid value '1e3' in <p>")}));
}

TEST(HostXMLTextValue, ParseBoolsReadsWordsAndDigits) {
  const std::string text = "true false 1 0 yes";
  const oxXMLTextValue value(text.data(), text.size(), "bool_array");
  bool out[5] = {false, true, false, true, true};
  unsigned int parsed = 0;
  LogCapture log;
  EXPECT_EQ(value.ParseBools(out, 5, parsed), -1);
  EXPECT_EQ(parsed, 4u);
  EXPECT_EQ(std::vector<bool>(out, out + 5), (std::vector<bool>{true, false, true, false, true}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'yes' in <bool_array>")}));
}

TEST(HostXMLTextValue, ParseStringsSplitsAtWhiteSpace) {
  const std::string text = "  alpha\tbeta\n\ngamma  ";
  const oxXMLTextValue value(text.data(), text.size(), "Name_array");
  oxString out[4] = {"", "", "", "kept"};
  unsigned int parsed = 0;
  EXPECT_EQ(value.ParseStrings(out, 4, parsed), 0);
  EXPECT_EQ(parsed, 3u);
  EXPECT_EQ(std::vector<oxString>(out, out + 4),
            (std::vector<oxString>{"alpha", "beta", "gamma", "kept"}));
}

TEST(HostXMLTextValue, AppendIntsAppendsEveryValue) {
  const std::string text = " 4 5\n6 ";
  const oxXMLTextValue value(text.data(), text.size(), "p");
  oxArray<int32_t> list = {1, 2};
  EXPECT_EQ(value.AppendInts(list), 0);
  EXPECT_EQ(list, (oxArray<int32_t>{1, 2, 4, 5, 6}));
}

TEST(HostXMLTextValue, AppendIntsKeepsTheValuesBeforeAnInvalidToken) {
  const std::string text = "4 5 six 7";
  const oxXMLTextValue value(text.data(), text.size(), "p");
  oxArray<int32_t> list = {1};
  LogCapture log;
  EXPECT_EQ(value.AppendInts(list), -1);
  EXPECT_EQ(list, (oxArray<int32_t>{1, 4, 5}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'six' in <p>")}));
}

TEST(HostXMLTextValue, CountTokensCountsWhiteSpaceSeparatedRuns) {
  const std::vector<std::pair<std::string, size_t>> cases = {
      {"", 0}, {" \t\r\n", 0}, {"abc", 1}, {" a  b\t\nc ", 3}, {"1\r2\r3\r4", 4}};
  for (const auto& [text, count] : cases) {
    const oxXMLTextValue value(text.data(), text.size(), "v");
    EXPECT_EQ(value.CountTokens(), count) << text;
  }
}

// ---------------------------------------------------------------- depth bound

TEST(HostXMLReader, NestingDeeperThanTheBoundLogsOneErrorAndPresentsEmptyLevels) {
  LogCapture log;
  auto reader = Read(Nested(oxXMLReader::kMaxDepth + 5));
  ASSERT_TRUE(reader);
  EXPECT_EQ(WalkDown(*reader), oxXMLReader::kMaxDepth + 1);
  EXPECT_EQ(reader->GetDepth(), oxXMLReader::kMaxDepth + 1);
  EXPECT_EQ(log.entries, (std::vector{Error("elements nested deeper than 1000 levels at <a> (byte "
                                            "offset 3000); their content is skipped")}));
  reader->EnterChildren();
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
  while (reader->GetDepth() > oxXMLReader::kMaxDepth)
    reader->LeaveChildren();
  EXPECT_EQ(reader->GetTag(), "a");
  EXPECT_EQ(reader->GetOffset(), 3000u);
  reader->EnterChildren();
  EXPECT_EQ(reader->MoveNext(), kXMLNoElement);
  EXPECT_EQ(log.Count(), 1u);
}

TEST(HostXMLReader, DepthErrorIsLoggedOncePerDocument) {
  LogCapture log;
  const std::string xml = Nested(oxXMLReader::kMaxDepth + 2);
  for (int document = 0; document < 2; ++document) {
    auto reader = Read(xml);
    ASSERT_TRUE(reader);
    EXPECT_EQ(WalkDown(*reader), oxXMLReader::kMaxDepth + 1);
    EXPECT_EQ(log.Count(), static_cast<size_t>(document + 1));
  }
}

TEST(HostXMLReader, NestingExactlyAtTheBoundIsReadWithoutError) {
  LogCapture log;
  auto reader = Read(Nested(oxXMLReader::kMaxDepth + 1));
  ASSERT_TRUE(reader);
  EXPECT_EQ(WalkDown(*reader), oxXMLReader::kMaxDepth + 1);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(HostXMLReader, HundredThousandLevelsLoadAndAreWalkedWithoutStackExhaustion) {
  LogCapture log;
  auto reader = Read(Nested(100'000));
  ASSERT_TRUE(reader);
  EXPECT_EQ(WalkDown(*reader), oxXMLReader::kMaxDepth + 1);
  EXPECT_EQ(log.Count(), 1u);
  while (reader->GetDepth() > 0)
    reader->LeaveChildren();
  EXPECT_EQ(reader->GetTag(), "a");
  EXPECT_EQ(reader->GetOffset(), 0u);
  EXPECT_EQ(reader->CountChildElements(), 1u);
}

// ---------------------------------------------------------------- bad input

TEST(HostXMLReader, EmptyBytesAreNotWellFormed) {
  LogCapture log;
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateReader(reader, std::string_view(), 0),
            kXMLNotWellFormed);
  EXPECT_FALSE(reader);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot parse the in-memory document: No document "
                                            "element found at byte offset 0")}));
}

TEST(HostXMLReader, TruncatedDocumentIsNotWellFormed) {
  LogCapture log;
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateReader(reader, "<r><a>", 0), kXMLNotWellFormed);
  EXPECT_FALSE(reader);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot parse the in-memory document: Start-end tags "
                                            "mismatch at byte offset 5")}));
}

TEST(HostXMLReader, UnterminatedStartTagIsNotWellFormed) {
  LogCapture log;
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateReader(reader, "<r", 0), kXMLNotWellFormed);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot parse the in-memory document: Could not "
                                            "determine tag type at byte offset 1")}));
}

TEST(HostXMLReader, BinaryGarbageIsNotWellFormed) {
  LogCapture log;
  const std::string garbage("\x00\x01\x02\xff\xfe\x80 garbage \x1b", 17);
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateReader(reader, garbage, 0), kXMLNotWellFormed);
  EXPECT_FALSE(reader);
  ASSERT_EQ(log.Count(), 1u);
  EXPECT_EQ(log.entries[0].level, kLogError);
  EXPECT_TRUE(log.entries[0].text.starts_with("cannot parse the in-memory document: "))
      << log.entries[0].text;
  EXPECT_NE(log.entries[0].text.find(" at byte offset "), std::string::npos) << log.entries[0].text;
}

TEST(HostXMLReader, MalformedFileNamesTheFileInTheError) {
  LogCapture log;
  TempFile file("<r><a></r>");
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(OpenFile(file.URI(), reader), kXMLNotWellFormed);
  EXPECT_FALSE(reader);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot parse '" + file.Path() +
                                            "': Start-end tags mismatch at byte offset 8")}));
}

TEST(HostXMLReader, MissingFileCannotBeOpened) {
  LogCapture log;
  const std::string path = MissingPath();
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(OpenFile(oxURI(path), reader), kXMLCannotOpen);
  EXPECT_FALSE(reader);
  EXPECT_EQ(log.entries,
            (std::vector{Error("cannot open '" + path + "': No such file or directory")}));
}

TEST(HostXMLReader, DirectoryCannotBeRead) {
  LogCapture log;
  const std::string path = std::filesystem::temp_directory_path().string();
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(OpenFile(oxURI(path), reader), kXMLCannotOpen);
  EXPECT_FALSE(reader);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot read '" + path + "': Is a directory")}));
}

TEST(HostXMLReader, NonFileURICannotBeOpened) {
  LogCapture log;
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(OpenFile(oxURI("http://example.com/scene.dae"), reader), kXMLCannotOpen);
  EXPECT_EQ(log.entries,
            (std::vector{Error("cannot open 'http://example.com/scene.dae': not a local file")}));
}

// ---------------------------------------------------------------- files and encodings

TEST(HostXMLReader, ReadsAFileNamedByAFileURI) {
  TempFile file("<r><a n=\"1\">text</a></r>");
  oxRefPtr<oxXMLReader> reader;
  ASSERT_EQ(OpenFile(oxURI::FromFilePath(file.Path()), reader), kXMLOk);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  reader->EnterChildren();
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  oxString text;
  EXPECT_TRUE(reader->ReadTextString(text));
  EXPECT_EQ(text, "text");
}

// A file of 4 MB or more is read in pieces side by side; every byte must
// land where it belongs, across the pieces' 2 MB boundaries and up to an end
// that is on no boundary.
TEST(HostXMLReader, LargeFileReadInPiecesKeepsEveryByte) {
  std::string text;
  for (uint32_t i = 0; text.size() < (size_t{9} << 20) + 12'345; ++i)
    text += std::to_string(i) + (i % 16 == 15 ? '\n' : ' ');
  TempFile file("<r>" + text + "</r>");
  oxRefPtr<oxXMLReader> reader;
  ASSERT_EQ(OpenFile(file.URI(), reader), kXMLOk);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  const oxXMLTextValue* value = reader->GetTextValue();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->GetText().size(), text.size());
  EXPECT_TRUE(value->GetText() == text);
}

TEST(HostXMLReader, ReadsAPipeOfUnknownLength) {
  const std::string path =
      (std::filesystem::temp_directory_path() / ("oxdae_pipe_" + std::to_string(getpid())))
          .string();
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::string xml = "<r>";
  for (int i = 0; i < 20'000; ++i)
    xml += "<item>" + std::to_string(i) + "</item>";
  xml += "</r>";
  std::thread writer([&path, &xml] { std::ofstream(path, std::ios::binary) << xml; });
  oxRefPtr<oxXMLReader> reader;
  const int rc = OpenFile(oxURI(path), reader);
  writer.join();
  std::remove(path.c_str());
  ASSERT_EQ(rc, kXMLOk);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  EXPECT_EQ(reader->CountChildElements(), 20'000u);
  reader->EnterChildren();
  int32_t value = -1, last = -1;
  while (reader->MoveNext() == kXMLOk) {
    EXPECT_TRUE(reader->ReadTextInt(value));
    EXPECT_EQ(value, last + 1);
    last = value;
  }
  EXPECT_EQ(last, 19'999);
}

TEST(HostXMLReader, ByteOrderMarkedEncodingsReadLikeUTF8) {
  const Reading expected{"r\xc3\xa9", "caf\xc3\xa9 \xe2\x82\xac", "c", "\xce\xa9 text "};
  const std::string utf8 =
      "<r\xc3\xa9 name=\"caf\xc3\xa9 \xe2\x82\xac\">\xce\xa9 text <c/></r\xc3\xa9>";
  const std::u16string utf16 = u"<r\u00e9 name=\"caf\u00e9 \u20ac\">\u03a9 text <c/></r\u00e9>";
  const std::vector<std::pair<std::string, std::string>> forms = {
      {"UTF-8", utf8},
      {"UTF-8 with mark", "\xef\xbb\xbf" + utf8},
      {"UTF-16 LE", Utf16(utf16, false)},
      {"UTF-16 BE", Utf16(utf16, true)}};
  for (const auto& [name, bytes] : forms) {
    EXPECT_EQ(ReadSample(Read(bytes)), expected) << name;
    TempFile file(bytes);
    oxRefPtr<oxXMLReader> reader;
    EXPECT_EQ(OpenFile(file.URI(), reader), kXMLOk) << name;
    EXPECT_EQ(ReadSample(reader), expected) << name;
  }
}

TEST(HostXMLReader, UTF16NumbersParseLikeUTF8) {
  auto reader = Read(Utf16(u"<v count=\"3\">1.5 -2 3e1</v>", false));
  ASSERT_TRUE(reader);
  ASSERT_EQ(reader->MoveNext(), kXMLOk);
  uint32_t count = 0;
  EXPECT_TRUE(reader->ReadAttributeUInt("count", count));
  EXPECT_EQ(count, 3u);
  const oxXMLTextValue* value = reader->GetTextValue();
  ASSERT_NE(value, nullptr);
  float out[3] = {};
  unsigned int parsed = 0;
  EXPECT_EQ(value->ParseFloats(out, 3, parsed), 0);
  EXPECT_EQ(std::vector<float>(out, out + 3), (std::vector<float>{1.5f, -2.0f, 30.0f}));
}

TEST(HostXMLTextValue, DecimalCommaOfLocaleBrokenExportersReadsAsAPoint) {
  LogCapture log;
  const oxXMLTextValue text("0,5 -1,25e2 1,5,5", 17, "color");
  float values[3] = {9, 9, 9};
  unsigned int parsed = 0;
  EXPECT_EQ(text.ParseFloats(values, 3, parsed), -1);
  EXPECT_EQ(parsed, 2u);
  EXPECT_EQ(values[0], 0.5f);
  EXPECT_EQ(values[1], -125.0f);
  EXPECT_EQ(values[2], 9.0f);
  EXPECT_EQ(log.entries, (std::vector{oxtest::Warning("invalid value '1,5,5' in <color>")}));
  int32_t ints[1] = {7};
  EXPECT_EQ(oxXMLTextValue("1,5", 3, "p").ParseInts(ints, 1, parsed), -1);
  EXPECT_EQ(ints[0], 7);
  float attribute = 1.0f;
  EXPECT_TRUE(OxKernel::oxCharacter::Interpret("0,010000", attribute));
  EXPECT_EQ(attribute, 0.01f);
  EXPECT_FALSE(OxKernel::oxCharacter::Interpret("0,1.5", attribute));
}
