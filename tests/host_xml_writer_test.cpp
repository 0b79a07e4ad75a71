#include <unistd.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <oxKernel/oxXML.h>

#include "oxTestSupport.h"

using namespace OxKernel;
using oxtest::Error;
using oxtest::LogCapture;
using oxtest::TempFile;

namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";

oxRefPtr<oxXMLWriter> MemoryWriter() {
  oxRefPtr<oxXMLWriter> writer;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateWriter(writer), 0);
  return writer;
}

// Closes the writer and returns the document without its declaration line.
std::string Body(oxXMLWriter& writer) {
  EXPECT_EQ(writer.Close(), 0);
  const std::string_view text = writer.GetBuffer();
  EXPECT_TRUE(text.starts_with(kDeclaration)) << text;
  return std::string(text.substr(kDeclaration.size()));
}

oxRefPtr<oxXMLReader> Reparse(std::string_view xml) {
  oxRefPtr<oxXMLReader> reader;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateReader(reader, xml, 0), kXMLOk) << xml;
  if (!reader) return reader;
  EXPECT_EQ(reader->MoveNext(), kXMLOk);
  return reader;
}

void Element(oxXMLWriter& writer, std::string_view tag) {
  writer.StartElement(tag);
  writer.EndAttributes();
}

uint32_t Bits(float value) {
  return std::bit_cast<uint32_t>(value);
}

// Every finite float bit pattern is equally likely, so all exponents occur,
// denormals included; a few edge values are added explicitly.
std::vector<float> RandomFloats(size_t count) {
  std::mt19937 random(20240601u);
  std::vector<float> values = {std::numeric_limits<float>::denorm_min(),
                               -std::numeric_limits<float>::denorm_min(),
                               std::numeric_limits<float>::min(),
                               std::numeric_limits<float>::max(),
                               std::numeric_limits<float>::lowest(),
                               0.0f,
                               -0.0f,
                               1e-40f,
                               0.1f,
                               16777217.0f};
  while (values.size() < count) {
    const float value = std::bit_cast<float>(static_cast<uint32_t>(random()));
    if (std::isfinite(value)) values.push_back(value);
  }
  return values;
}

}  // namespace

TEST(HostXMLWriter, EmptyElementIsWrittenAsAnEmptyElementTag) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  writer->EndElement();
  EXPECT_EQ(writer->Close(), 0);
  EXPECT_EQ(writer->GetBuffer(), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<a/>\n");
}

TEST(HostXMLWriter, ChildrenAreIndentedAndTextStaysInline) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  writer->StartElement("b");
  writer->WriteAttributeString("x", "1");
  writer->WriteAttributeString("y", "two");
  writer->EndAttributes();
  writer->GetTextWriter()->WriteText("text");
  writer->EndElement();
  Element(*writer, "c");
  Element(*writer, "d");
  writer->EndElement();
  writer->EndElement();
  writer->AddLeafElement("e", "leaf");
  writer->EndElement();
  EXPECT_EQ(Body(*writer),
            "\n<a>\n  <b x=\"1\" y=\"two\">text</b>\n  <c>\n    <d/>\n  </c>\n  "
            "<e>leaf</e>\n</a>\n");
}

TEST(HostXMLWriter, DoubleAttributesAreWrittenInTheirShortestForm) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("a");
  writer->WriteAttributeDouble("d", 0.1);
  writer->WriteAttributeDouble("big", 1e300);
  writer->WriteAttributeDouble("inf", std::numeric_limits<double>::infinity());
  writer->WriteAttributeDouble("nan", std::numeric_limits<double>::quiet_NaN());
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<a d=\"0.1\" big=\"1e+300\" inf=\"INF\" nan=\"NaN\"/>\n");
}

TEST(HostXMLWriter, AttributeWritersFormatEveryType) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("a");
  writer->WriteAttributeUInt("u", 4294967295u);
  writer->WriteAttributeInt("i", std::numeric_limits<int32_t>::min());
  writer->WriteAttributeShort("s", -32768);
  writer->WriteAttributeUShort("us", 65535);
  writer->WriteAttributeFloat("f", 0.1f);
  writer->WriteAttributeFloat("inf", -std::numeric_limits<float>::infinity());
  writer->WriteAttributeFloat("nan", std::numeric_limits<float>::quiet_NaN());
  writer->WriteAttributeBool("t", true);
  writer->WriteAttributeBool("f2", false);
  writer->EndElement();
  EXPECT_EQ(Body(*writer),
            "\n<a u=\"4294967295\" i=\"-2147483648\" s=\"-32768\" us=\"65535\" f=\"0.1\" "
            "inf=\"-INF\" nan=\"NaN\" t=\"true\" f2=\"false\"/>\n");
}

TEST(HostXMLWriter, AttributesAfterTheStartTagAreDropped) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("a");
  writer->WriteAttributeString("kept", "1");
  writer->EndAttributes();
  writer->WriteAttributeString("afterEnd", "2");
  writer->StartElement("b");
  writer->WriteAttributeString("own", "3");
  writer->GetTextWriter()->WriteText("t");
  writer->WriteAttributeString("afterText", "4");
  writer->EndElement();
  writer->WriteAttributeString("afterChild", "5");
  writer->EndElement();
  writer->WriteAttributeString("outside", "6");
  EXPECT_EQ(Body(*writer), "\n<a kept=\"1\">\n  <b own=\"3\">t</b>\n</a>\n");
}

TEST(HostXMLWriter, RepeatedAttributeNameKeepsTheFirstValue) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("a");
  writer->WriteAttributeString("id", "first");
  writer->WriteAttributeUInt("id", 2);
  writer->WriteAttributeString("name", "n");
  writer->EndAttributes();
  Element(*writer, "b");
  writer->WriteAttributeString("id", "child");
  writer->EndElement();
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<a id=\"first\" name=\"n\">\n  <b/>\n</a>\n");
}

TEST(HostXMLWriter, SpecialCharactersInAttributesAreEscaped) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  const std::string value = std::string("a&b<c>d\"e'f\tg\nh\ri") + '\x01' + "j" + '\x1f';
  writer->StartElement("a");
  writer->WriteAttributeString("v", value);
  writer->EndElement();
  const std::string body = Body(*writer);
  EXPECT_EQ(body, "\n<a v=\"a&amp;b&lt;c&gt;d&quot;e'f&#9;g&#10;h&#13;ij\"/>\n");
  auto reader = Reparse(writer->GetBuffer());
  ASSERT_TRUE(reader);
  oxString read;
  EXPECT_TRUE(reader->ReadAttributeString("v", read));
  EXPECT_EQ(read, "a&b<c>d\"e'f\tg\nh\rij");
}

TEST(HostXMLWriter, SpecialCharactersInTextAreEscaped) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  const std::string value = std::string("a&b<c>d\"e'f\tg\nh\ri]]>") + '\x00' + '\x0b' + "z";
  Element(*writer, "a");
  writer->GetTextWriter()->WriteText(value);
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<a>a&amp;b&lt;c&gt;d\"e'f\tg\nh&#13;i]]&gt;z</a>\n");
  auto reader = Reparse(writer->GetBuffer());
  ASSERT_TRUE(reader);
  oxString read;
  EXPECT_TRUE(reader->ReadTextString(read));
  EXPECT_EQ(read, "a&b<c>d\"e'f\tg\nh\ri]]>z");
}

TEST(HostXMLWriter, EveryByteValueGivesAWellFormedDocument) {
  std::string all;
  for (int c = 1; c < 256; ++c)
    all += static_cast<char>(c);
  std::string expected;
  for (char c : all) {
    const auto u = static_cast<unsigned char>(c);
    if (u >= 0x20 || c == '\t' || c == '\n' || c == '\r') expected += c;
  }
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("a");
  writer->WriteAttributeString("v", all);
  writer->EndAttributes();
  writer->GetTextWriter()->WriteText(all);
  const oxString strings[] = {oxString(all)};
  writer->GetTextWriter()->WriteStrings(strings, 1);
  writer->EndElement();
  EXPECT_EQ(writer->Close(), 0);
  auto reader = Reparse(writer->GetBuffer());
  ASSERT_TRUE(reader);
  oxString attribute, text;
  EXPECT_TRUE(reader->ReadAttributeString("v", attribute));
  EXPECT_TRUE(reader->ReadTextString(text));
  EXPECT_EQ(attribute, expected);
  EXPECT_EQ(text, expected + " " + expected);
}

TEST(HostXMLWriter, TransparentElementPassesItsContentToTheEnclosingElement) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("a");
  writer->WriteAttributeString("own", "1");
  writer->StartElement("");
  writer->WriteAttributeString("dropped", "2");
  writer->EndAttributes();
  writer->GetTextWriter()->WriteText("text");
  Element(*writer, "b");
  writer->EndElement();
  EXPECT_EQ(writer->GetDepth(), 2u);
  writer->EndElement();
  EXPECT_EQ(writer->GetDepth(), 1u);
  writer->GetTextWriter()->WriteText("more");
  writer->EndElement();
  EXPECT_EQ(writer->GetDepth(), 0u);
  EXPECT_EQ(Body(*writer), "\n<a own=\"1\">text\n  <b/> more\n</a>\n");
}

TEST(HostXMLWriter, TransparentElementWithoutContentLeavesAnEmptyElementTag) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("a");
  writer->StartElement("");
  writer->WriteAttributeString("dropped", "1");
  writer->EndElement();
  writer->WriteAttributeString("late", "2");
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<a late=\"2\"/>\n");
}

TEST(HostXMLWriter, TransparentOuterElementLetsTheFirstNamedElementBeTheRoot) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->StartElement("");
  writer->GetTextWriter()->WriteText("dropped");
  Element(*writer, "root");
  writer->EndElement();
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<root/>\n");
}

TEST(HostXMLWriter, CloseToEndsTheElementsLeftOpen) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  const unsigned int mark = writer->GetDepth();
  Element(*writer, "b");
  writer->StartElement("");
  Element(*writer, "c");
  EXPECT_EQ(writer->GetDepth(), 4u);
  writer->CloseTo(mark);
  EXPECT_EQ(writer->GetDepth(), 1u);
  Element(*writer, "d");
  writer->EndElement();
  writer->CloseTo(5);
  EXPECT_EQ(writer->GetDepth(), 1u);
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<a>\n  <b>\n    <c/>\n  </b>\n  <d/>\n</a>\n");
}

TEST(HostXMLWriter, CloseEndsEveryOpenElement) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  Element(*writer, "b");
  writer->GetTextWriter()->WriteText("t");
  EXPECT_EQ(Body(*writer), "\n<a>\n  <b>t</b>\n</a>\n");
  EXPECT_EQ(writer->GetDepth(), 0u);
  EXPECT_EQ(writer->Close(), 0);
  Element(*writer, "late");
  EXPECT_EQ(writer->GetBuffer(), std::string(kDeclaration) + "\n<a>\n  <b>t</b>\n</a>\n");
}

TEST(HostXMLWriter, ExtraEndElementIsIgnored) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  writer->EndElement();
  EXPECT_EQ(writer->EndElement(), 0);
  EXPECT_EQ(writer->GetDepth(), 0u);
  EXPECT_EQ(Body(*writer), "\n<a/>\n");
}

TEST(HostXMLWriter, SecondRootIsDroppedWithItsContent) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  writer->EndElement();
  writer->StartElement("b");
  writer->WriteAttributeString("x", "1");
  writer->EndAttributes();
  writer->GetTextWriter()->WriteText("text");
  Element(*writer, "c");
  writer->EndElement();
  writer->EndElement();
  writer->AddLeafElement("d", "leaf");
  EXPECT_EQ(Body(*writer), "\n<a/>\n");
}

TEST(HostXMLWriter, TextOutsideTheRootIsDropped) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  writer->GetTextWriter()->WriteText("before");
  const int32_t ints[] = {1, 2};
  writer->GetTextWriter()->WriteInts(ints, 2);
  Element(*writer, "a");
  writer->EndElement();
  writer->GetTextWriter()->WriteText("after");
  EXPECT_EQ(Body(*writer), "\n<a/>\n");
}

TEST(HostXMLWriter, SuccessiveTextWritesAreSeparatedByOneBlank) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  oxXMLTextWriter& text = *writer->GetTextWriter();
  const int32_t ints[] = {std::numeric_limits<int32_t>::min(), 0,
                          std::numeric_limits<int32_t>::max()};
  const float floats[] = {0.5f, -2.0f, 1e-7f};
  const bool bools[] = {true, false};
  const oxString strings[] = {"x&y", "z"};
  EXPECT_EQ(text.WriteInts(ints, 3), 0);
  EXPECT_EQ(text.WriteFloats(floats, 3), 0);
  EXPECT_EQ(text.WriteBools(bools, 2), 0);
  EXPECT_EQ(text.WriteStrings(strings, 2), 0);
  EXPECT_EQ(text.WriteText("end"), 0);
  writer->EndElement();
  EXPECT_EQ(Body(*writer),
            "\n<a>-2147483648 0 2147483647 0.5 -2 1e-07 true false x&amp;y z end</a>\n");
}

TEST(HostXMLWriter, EmptyTextWritesWriteNothing) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  oxXMLTextWriter& text = *writer->GetTextWriter();
  Element(*writer, "r");
  Element(*writer, "a");
  EXPECT_EQ(text.WriteText(""), 0);
  EXPECT_EQ(text.WriteInts(nullptr, 0), 0);
  EXPECT_EQ(text.WriteFloats(nullptr, 0), 0);
  EXPECT_EQ(text.WriteBools(nullptr, 0), 0);
  EXPECT_EQ(text.WriteStrings(nullptr, 0), 0);
  writer->EndElement();
  Element(*writer, "c");
  text.WriteText("");
  text.WriteText("x");
  text.WriteInts(nullptr, 0);
  text.WriteText("y");
  writer->EndElement();
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<r>\n  <a/>\n  <c>x y</c>\n</r>\n");
}

TEST(HostXMLWriter, AddLeafElementSkipsEmptyTextUnlessAsked) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "r");
  EXPECT_EQ(writer->AddLeafElement("skipped", ""), 0);
  EXPECT_EQ(writer->AddLeafElement("kept", "", false), 0);
  EXPECT_EQ(writer->AddLeafElement("text", "a<b"), 0);
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<r>\n  <kept/>\n  <text>a&lt;b</text>\n</r>\n");
}

TEST(HostXMLWriter, NonFiniteFloatsAreWrittenInTheirXMLSpellings) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "a");
  const float values[] = {std::numeric_limits<float>::quiet_NaN(),
                          std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::infinity(), -0.0f};
  writer->GetTextWriter()->WriteFloats(values, 4);
  writer->EndElement();
  EXPECT_EQ(Body(*writer), "\n<a>NaN INF -INF -0</a>\n");
  auto reader = Reparse(writer->GetBuffer());
  ASSERT_TRUE(reader);
  float read[4] = {};
  unsigned int parsed = 0;
  EXPECT_EQ(reader->GetTextValue()->ParseFloats(read, 4, parsed), 0);
  EXPECT_EQ(parsed, 4u);
  EXPECT_TRUE(std::isnan(read[0]));
  EXPECT_EQ(read[1], std::numeric_limits<float>::infinity());
  EXPECT_EQ(read[2], -std::numeric_limits<float>::infinity());
  EXPECT_EQ(Bits(read[3]), Bits(-0.0f));
}

TEST(HostXMLWriter, WrittenFloatsReadBackBitIdentical) {
  const std::vector<float> values = RandomFloats(10'000);
  size_t denormals = 0;
  for (float v : values)
    denormals += std::fpclassify(v) == FP_SUBNORMAL ? 1 : 0;
  EXPECT_GE(denormals, 3u);
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "float_array");
  writer->GetTextWriter()->WriteFloats(values.data(), static_cast<unsigned int>(values.size()));
  writer->EndElement();
  EXPECT_EQ(writer->Close(), 0);
  LogCapture log;
  auto reader = Reparse(writer->GetBuffer());
  ASSERT_TRUE(reader);
  const oxXMLTextValue* text = reader->GetTextValue();
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text->CountTokens(), values.size());
  std::vector<float> read(values.size());
  unsigned int parsed = 0;
  EXPECT_EQ(text->ParseFloats(read.data(), static_cast<unsigned int>(read.size()), parsed), 0);
  EXPECT_EQ(parsed, values.size());
  size_t mismatches = 0;
  for (size_t i = 0; i < values.size(); ++i)
    mismatches += Bits(read[i]) == Bits(values[i]) ? 0 : 1;
  EXPECT_EQ(mismatches, 0u);
  EXPECT_EQ(log.Count(), 0u);
}

// The writer's text of `values`, one element of blank-separated floats.
std::string WrittenFloats(const std::vector<float>& values) {
  auto writer = MemoryWriter();
  Element(*writer, "f");
  writer->GetTextWriter()->WriteFloats(values.data(), static_cast<unsigned int>(values.size()));
  writer->EndElement();
  const std::string body = Body(*writer);
  const size_t open = body.find("<f>") + 3;
  return body.substr(open, body.find("</f>") - open);
}

std::string ToChars(float value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

TEST(HostXMLWriter, FloatsAreWrittenByteForByteAsToCharsOnEvery1001stBitPattern) {
  constexpr uint64_t kStep = 1001;
  constexpr size_t kBatch = 1 << 16;
  std::vector<float> batch;
  size_t compared = 0;
  size_t mismatches = 0;
  std::string firstMismatch;
  const auto check = [&] {
    const std::string text = WrittenFloats(batch);
    size_t at = 0;
    for (float v : batch) {
      const size_t end = std::min(text.find(' ', at), text.size());
      const std::string_view token(text.data() + at, end - at);
      if (token != ToChars(v)) {
        if (mismatches++ == 0) firstMismatch = std::string(token) + " for " + ToChars(v);
      }
      at = end + 1;
      ++compared;
    }
    batch.clear();
  };
  for (uint64_t bits = 0; bits <= UINT32_MAX; bits += kStep) {
    const float v = std::bit_cast<float>(static_cast<uint32_t>(bits));
    if (!std::isfinite(v)) continue;  // spelled "NaN", "INF", "-INF" instead
    batch.push_back(v);
    if (batch.size() == kBatch) check();
  }
  check();
  EXPECT_EQ(compared, 4'273'917u);
  EXPECT_EQ(mismatches, 0u) << firstMismatch;
}

TEST(HostXMLWriter, FloatsTakeTheShorterOfFixedAndScientificNotation) {
  EXPECT_EQ(WrittenFloats({0.0f, -0.0f, 1.0f, -2.5f, 0.001f, 0.0001f, 100000.0f, 123456.0f}),
            "0 -0 1 -2.5 0.001 1e-04 1e+05 123456");
  // 2^25 + 16: the shortest digits would print 33554450; the exact value is
  // as long and nearer.
  EXPECT_EQ(WrittenFloats({33554448.0f, 1e10f, 3.4028235e38f, 1.4e-45f, 0.567f, 12.5f}),
            "33554448 1e+10 3.4028235e+38 1e-45 0.567 12.5");
}

TEST(HostXMLWriter, FloatAttributesReadBackBitIdentical) {
  const std::vector<float> values = RandomFloats(200);
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "r");
  for (float value : values) {
    writer->StartElement("v");
    writer->WriteAttributeFloat("f", value);
    writer->EndElement();
  }
  writer->EndElement();
  EXPECT_EQ(writer->Close(), 0);
  auto reader = Reparse(writer->GetBuffer());
  ASSERT_TRUE(reader);
  reader->EnterChildren();
  std::vector<uint32_t> read;
  while (reader->MoveNext() == kXMLOk) {
    float value = 0;
    EXPECT_TRUE(reader->ReadAttributeFloat("f", value));
    read.push_back(Bits(value));
  }
  std::vector<uint32_t> expected;
  for (float value : values)
    expected.push_back(Bits(value));
  EXPECT_EQ(read, expected);
}

TEST(HostXMLWriter, FileWriterWritesTheDocumentWhenClosed) {
  TempFile file("");
  oxRefPtr<oxXMLWriter> writer;
  ASSERT_EQ(
      oxXMLFactory::Instance(0).CreateWriter(writer, oxURI::FromFilePath(file.Path()), 0, nullptr),
      0);
  ASSERT_TRUE(writer);
  EXPECT_EQ(writer->IsReady(), 0);
  Element(*writer, "a");
  writer->GetTextWriter()->WriteText("t");
  EXPECT_EQ(writer->Close(), 0);
  EXPECT_EQ(oxtest::ReadFile(file.Path()), std::string(kDeclaration) + "\n<a>t</a>\n");
  // Everything went to the file.
  EXPECT_EQ(writer->GetBuffer(), "");
}

TEST(HostXMLWriter, LargeFileIsWrittenInPiecesWithTheSameText) {
  std::vector<float> values(400'000);
  for (size_t i = 0; i < values.size(); ++i)
    values[i] = static_cast<float>(i) * 0.37f - 1000.0f;
  const auto write = [&values](oxXMLWriter& writer) {
    Element(writer, "root");
    for (int k = 0; k < 3; ++k) {
      Element(writer, "values");
      writer.GetTextWriter()->WriteFloats(values.data(), static_cast<unsigned int>(values.size()));
      writer.EndElement();
    }
    return writer.Close();
  };
  oxRefPtr<oxXMLWriter> memory;
  oxXMLFactory::Instance(0).CreateWriter(memory);
  ASSERT_EQ(write(*memory), 0);
  const std::string expected = memory->TakeBuffer();
  EXPECT_EQ(memory->GetBuffer(), "");
  ASSERT_GT(expected.size(), 3u << 20);
  TempFile file("");
  oxRefPtr<oxXMLWriter> writer;
  ASSERT_EQ(oxXMLFactory::Instance(0).CreateWriter(writer, file.URI(), 0, nullptr), 0);
  ASSERT_EQ(write(*writer), 0);
  EXPECT_TRUE(oxtest::ReadFile(file.Path()) == expected);
}

TEST(HostXMLWriter, FileWriterClosedByItsLastReference) {
  TempFile file("old contents");
  {
    oxRefPtr<oxXMLWriter> writer;
    ASSERT_EQ(oxXMLFactory::Instance(0).CreateWriter(writer, file.URI(), 0, nullptr), 0);
    Element(*writer, "a");
  }
  EXPECT_EQ(oxtest::ReadFile(file.Path()), std::string(kDeclaration) + "\n<a/>\n");
}

TEST(HostXMLWriter, FileInAMissingDirectoryCannotBeCreated) {
  LogCapture log;
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("oxdae_no_such_dir_" + std::to_string(getpid())) / "out.dae")
                               .string();
  oxRefPtr<oxXMLWriter> writer;
  ASSERT_EQ(oxXMLFactory::Instance(0).CreateWriter(writer, oxURI(path), 0, nullptr), 0);
  ASSERT_TRUE(writer);
  EXPECT_EQ(writer->IsReady(), kXMLCannotOpen);
  const auto error = Error("cannot create '" + path + "': No such file or directory");
  EXPECT_EQ(log.entries, (std::vector{error}));
  Element(*writer, "a");
  EXPECT_EQ(writer->IsReady(), kXMLCannotOpen);
  EXPECT_EQ(writer->Close(), kXMLCannotOpen);
  // The file is reported once, however often it is tried.
  EXPECT_EQ(log.entries, (std::vector{error}));
  EXPECT_EQ(writer->Close(), 0);
  EXPECT_EQ(log.Count(), 1u);
}

TEST(HostXMLWriter, NonFileURICannotBeWritten) {
  LogCapture log;
  oxRefPtr<oxXMLWriter> writer;
  EXPECT_EQ(oxXMLFactory::Instance(0).CreateWriter(writer, oxURI("http://example.com/out.dae"), 0,
                                                   nullptr),
            kXMLCannotOpen);
  EXPECT_FALSE(writer);
  EXPECT_EQ(log.entries,
            (std::vector{Error("cannot write 'http://example.com/out.dae': not a local file")}));
}

TEST(HostXMLWriter, MemoryWriterIsAlwaysReady) {
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  EXPECT_EQ(writer->IsReady(), 0);
  EXPECT_EQ(writer->GetBuffer(), kDeclaration);
  EXPECT_EQ(writer->Close(), 0);
  EXPECT_EQ(writer->GetBuffer(), std::string(kDeclaration) + "\n");
}

// Long lists are written in pieces side by side; the text is one list all
// the same: one blank between values, none at the seams' ends.
TEST(HostXMLWriter, LongIntListIsOneTextWhateverItsPieces) {
  std::vector<int32_t> values(200'003);
  std::string expected;
  for (size_t i = 0; i < values.size(); ++i) {
    values[i] = static_cast<int32_t>(i * 7) - 100'000;
    if (i) expected += ' ';
    expected += std::to_string(values[i]);
  }
  auto writer = MemoryWriter();
  ASSERT_TRUE(writer);
  Element(*writer, "p");
  writer->GetTextWriter()->WriteInts(values.data(), static_cast<unsigned int>(values.size()));
  writer->EndElement();
  const std::string body = Body(*writer);
  const size_t open = body.find("<p>") + 3;
  EXPECT_EQ(body.substr(open, body.find("</p>") - open), expected);
}

// Long lists leave the memory writer's buffer as pieces of their own, short
// texts between them stay in it: the document still reads in writing order,
// through GetBuffer (asked twice) as through TakeBuffer.
TEST(HostXMLWriter, MemoryWriterKeepsLongListsAndShortTextsInOrder) {
  std::vector<int32_t> values(300'000);
  std::string list;
  for (size_t i = 0; i < values.size(); ++i) {
    values[i] = static_cast<int32_t>(i);
    if (i) list += ' ';
    list += std::to_string(i);
  }
  const auto write = [&values](oxXMLWriter& writer) {
    Element(writer, "r");
    for (int k = 0; k < 3; ++k) {
      writer.AddLeafElement("n", std::to_string(k));
      Element(writer, "p");
      writer.GetTextWriter()->WriteInts(values.data(), static_cast<unsigned int>(values.size()));
      writer.EndElement();
    }
    return writer.Close();
  };
  std::string expected = std::string(kDeclaration) + "\n<r>";
  for (int k = 0; k < 3; ++k)
    expected += "\n  <n>" + std::to_string(k) + "</n>\n  <p>" + list + "</p>";
  expected += "\n</r>\n";
  auto viewed = MemoryWriter();
  ASSERT_EQ(write(*viewed), 0);
  EXPECT_TRUE(viewed->GetBuffer() == expected);
  EXPECT_TRUE(viewed->GetBuffer() == expected);
  auto taken = MemoryWriter();
  ASSERT_EQ(write(*taken), 0);
  EXPECT_TRUE(taken->TakeBuffer() == expected);
  EXPECT_EQ(taken->GetBuffer(), "");
}

TEST(HostXMLWriter, FileWrittenOverALongerOneHoldsOnlyTheNewDocument) {
  TempFile file(std::string(3 << 20, 'x'));
  oxRefPtr<oxXMLWriter> writer;
  ASSERT_EQ(oxXMLFactory::Instance(0).CreateWriter(writer, file.URI(), 0, nullptr), 0);
  Element(*writer, "a");
  EXPECT_EQ(writer->Close(), 0);
  EXPECT_EQ(oxtest::ReadFile(file.Path()), std::string(kDeclaration) + "\n<a/>\n");
}

// A device has no length to cut: writing to it still succeeds.
TEST(HostXMLWriter, DeviceIsWrittenWithoutCuttingIt) {
  oxRefPtr<oxXMLWriter> writer;
  ASSERT_EQ(oxXMLFactory::Instance(0).CreateWriter(writer, oxURI("/dev/null"), 0, nullptr), 0);
  Element(*writer, "a");
  EXPECT_EQ(writer->Close(), 0);
}
