#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <oxKernel/oxCharacter.h>
#include <oxKernel/oxContainers.h>
#include <oxKernel/oxString.h>

#include "oxTestSupport.h"

using OxKernel::oxCharacter;
using OxKernel::oxConcat;
using OxKernel::oxHashTools;
using OxKernel::oxString;
using OxKernel::oxStringTokenizer;

namespace {

std::vector<std::string> Tokens(std::string_view text, std::string_view separators) {
  oxStringTokenizer tokenizer(text, separators);
  std::vector<std::string> tokens;
  while (tokenizer.HasMoreTokens())
    tokens.push_back(tokenizer.NextToken());
  return tokens;
}

// Interprets `text` into a variable preset to `preset`; returns whether it
// converted and the variable's final value.
template <class T>
std::pair<bool, T> Interpret(std::string_view text, T preset) {
  T value = preset;
  const bool ok = oxCharacter::Interpret(text, value);
  return {ok, value};
}

}  // namespace

TEST(HostString, BasicAccessors) {
  const oxString text("abc");
  EXPECT_FALSE(text.IsEmpty());
  EXPECT_TRUE(oxString().IsEmpty());
  EXPECT_EQ(text.Length(), 3u);
  EXPECT_EQ(text.View(), "abc");
  EXPECT_TRUE(text.StartsWith("ab"));
  EXPECT_TRUE(text.StartsWith(""));
  EXPECT_FALSE(text.StartsWith("abcd"));
  EXPECT_EQ(std::hash<oxString>()(text), std::hash<std::string>()("abc"));
}

TEST(HostString, ContainsNoCaseIgnoresASCIICase) {
  const oxString text("Hello COLLADA World");
  EXPECT_TRUE(text.ContainsNoCase("collada"));
  EXPECT_TRUE(text.ContainsNoCase("hELLO"));
  EXPECT_TRUE(text.ContainsNoCase("DA wOR"));
  EXPECT_TRUE(text.ContainsNoCase("world"));
  EXPECT_TRUE(text.ContainsNoCase(""));
  EXPECT_FALSE(text.ContainsNoCase("worlds"));
  EXPECT_FALSE(text.ContainsNoCase("colada"));
  EXPECT_FALSE(oxString("ab").ContainsNoCase("abc"));
  EXPECT_FALSE(oxString("\xc3\x89").ContainsNoCase("\xc3\xa9"));
  EXPECT_TRUE(oxString("[x]").ContainsNoCase("[X]"));
  EXPECT_FALSE(oxString("@").ContainsNoCase("`"));
}

TEST(HostString, ReplaceAllReturnsTheNumberOfReplacements) {
  oxString text("a.b.c");
  EXPECT_EQ(text.ReplaceAll(".", "::"), 2u);
  EXPECT_EQ(text, "a::b::c");
  EXPECT_EQ(text.ReplaceAll("::", ""), 2u);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.ReplaceAll("x", "y"), 0u);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.ReplaceAll("", "y"), 0u);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.ReplaceAll("abc", "whole"), 1u);
  EXPECT_EQ(text, "whole");
}

TEST(HostString, ReplaceAllScansLeftToRightWithoutOverlaps) {
  oxString four("aaaa");
  EXPECT_EQ(four.ReplaceAll("aa", "b"), 2u);
  EXPECT_EQ(four, "bb");
  oxString three("aaa");
  EXPECT_EQ(three.ReplaceAll("aa", "b"), 1u);
  EXPECT_EQ(three, "ba");
  oxString aba("ababa");
  EXPECT_EQ(aba.ReplaceAll("aba", "X"), 1u);
  EXPECT_EQ(aba, "Xba");
}

TEST(HostString, ReplaceAllDoesNotRescanTheReplacement) {
  oxString text("a-a");
  EXPECT_EQ(text.ReplaceAll("a", "aa"), 2u);
  EXPECT_EQ(text, "aa-aa");
  oxString nested("xx");
  EXPECT_EQ(nested.ReplaceAll("x", "xyx"), 2u);
  EXPECT_EQ(nested, "xyxxyx");
}

TEST(HostString, MatchesWildcards) {
  const std::vector<std::tuple<std::string, std::string, bool>> cases = {
      {"abc", "abc", true},
      {"abc", "abd", false},
      {"abc", "a?c", true},
      {"abc", "???", true},
      {"abc", "????", false},
      {"abc", "??", false},
      {"abc", "*", true},
      {"", "*", true},
      {"", "", true},
      {"", "?", false},
      {"abc", "", false},
      {"abc", "a*", true},
      {"abc", "*c", true},
      {"abc", "*b*", true},
      {"abc", "*d*", false},
      {"abc", "a**c", true},
      {"abcbc", "a*bc", true},
      {"abcbd", "a*bc", false},
      {"mississippi", "m*iss*ppi", true},
      {"mississippi", "m*iss*x", false},
      {"x.DAE", "*.dae", false},
      {"file://C|/models/x.dae", "file://?|*", true},
      {"file://C:/models/x.dae", "file://?|*", false},
      {"file:///models/x.dae", "file://?|*", false},
      {"file://|", "file://?|*", false},
      {"file://C|", "file://?|*", true},
  };
  for (const auto& [text, pattern, expected] : cases)
    EXPECT_EQ(oxString(text).Matches(pattern), expected) << text << " ~ " << pattern;
}

TEST(HostString, MatchesLongTextsWithManyStarsQuickly) {
  const oxString text(std::string(100'000, 'a'));
  EXPECT_FALSE(text.Matches("*a*a*a*a*a*a*a*a*b"));
  EXPECT_TRUE(text.Matches("*a*a*a*a*a*a*a*a*a"));
}

TEST(HostString, TokenizerSkipsRunsOfSeparators) {
  EXPECT_EQ(Tokens("a b  c", " "), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(Tokens("  lead and trail  ", " "), (std::vector<std::string>{"lead", "and", "trail"}));
  EXPECT_EQ(Tokens("a,b;;c, d", ",; "), (std::vector<std::string>{"a", "b", "c", "d"}));
  EXPECT_EQ(Tokens("one", " "), (std::vector<std::string>{"one"}));
  EXPECT_EQ(Tokens("", " "), std::vector<std::string>{});
  EXPECT_EQ(Tokens(" \t ", " \t"), std::vector<std::string>{});
  EXPECT_EQ(Tokens("a b", ""), (std::vector<std::string>{"a b"}));
}

TEST(HostString, TokenizerHasMoreTokensOnlyBeforeTheLastToken) {
  oxStringTokenizer tokenizer("x  y  ", " ");
  EXPECT_TRUE(tokenizer.HasMoreTokens());
  EXPECT_TRUE(tokenizer.HasMoreTokens());
  EXPECT_EQ(tokenizer.NextToken(), "x");
  EXPECT_TRUE(tokenizer.HasMoreTokens());
  EXPECT_EQ(tokenizer.NextToken(), "y");
  EXPECT_FALSE(tokenizer.HasMoreTokens());
  EXPECT_EQ(tokenizer.NextToken(), "");
  EXPECT_FALSE(tokenizer.HasMoreTokens());
}

TEST(HostString, TokenizerNextTokenWorksWithoutHasMoreTokens) {
  oxStringTokenizer tokenizer("//a/b", "/");
  EXPECT_EQ(tokenizer.NextToken(), "a");
  EXPECT_EQ(tokenizer.NextToken(), "b");
  EXPECT_EQ(tokenizer.NextToken(), "");
}

TEST(HostString, ConcatJoinsTextsCharactersAndIntegers) {
  const oxString name("node");
  const std::string_view view = "view";
  EXPECT_EQ(oxConcat("a", 'b', std::string("c"), name, view), "abcnodeview");
  EXPECT_EQ(oxConcat("n=", 42, " u=", 7u, " neg=", -13, " big=", uint64_t{18446744073709551615u}),
            "n=42 u=7 neg=-13 big=18446744073709551615");
  EXPECT_EQ(oxConcat("min=", std::numeric_limits<int64_t>::min()), "min=-9223372036854775808");
  EXPECT_EQ(oxConcat(size_t{0}, ptrdiff_t{-1}), "0-1");
  EXPECT_EQ(oxConcat(), "");
}

TEST(HostString, ConcatWritesFloatsInTheirShortestForm) {
  EXPECT_EQ(oxConcat("f=", 0.1f, " d=", 0.1, " one=", 1.0f, " big=", 1e20),
            "f=0.1 d=0.1 one=1 big=1e+20");
  EXPECT_EQ(oxConcat(-2.5f), "-2.5");
}

TEST(HostCharacter, TrimRemovesXMLWhiteSpaceOnly) {
  EXPECT_EQ(oxCharacter::Trim(" \t\r\nab c\n\r\t "), "ab c");
  EXPECT_EQ(oxCharacter::Trim("\v x \f"), "\v x \f");
  EXPECT_EQ(oxCharacter::Trim("   "), "");
  EXPECT_EQ(oxCharacter::Trim(""), "");
  EXPECT_TRUE(oxCharacter::IsSpace('\r'));
  EXPECT_FALSE(oxCharacter::IsSpace('\v'));
}

TEST(HostCharacter, InterpretBool) {
  EXPECT_EQ(Interpret<bool>("true", false), std::pair(true, true));
  EXPECT_EQ(Interpret<bool>("false", true), std::pair(true, false));
  EXPECT_EQ(Interpret<bool>("1", false), std::pair(true, true));
  EXPECT_EQ(Interpret<bool>("0", true), std::pair(true, false));
  EXPECT_EQ(Interpret<bool>(" \ttrue\r\n", false), std::pair(true, true));
  for (const char* bad : {"TRUE", "True", "yes", "2", "+1", "", " ", "true false", "01"})
    EXPECT_EQ(Interpret<bool>(bad, true), std::pair(false, true)) << bad;
}

TEST(HostCharacter, InterpretInt16) {
  EXPECT_EQ(Interpret<int16_t>("-32768", 1), std::pair(true, int16_t{-32768}));
  EXPECT_EQ(Interpret<int16_t>("+32767", 1), std::pair(true, int16_t{32767}));
  EXPECT_EQ(Interpret<int16_t>(" 12 ", 1), std::pair(true, int16_t{12}));
  for (const char* bad : {"32768", "-32769", "1.0", "0x1", "", "1 2", "+-1", "a"})
    EXPECT_EQ(Interpret<int16_t>(bad, 5), std::pair(false, int16_t{5})) << bad;
}

TEST(HostCharacter, InterpretUInt16) {
  EXPECT_EQ(Interpret<uint16_t>("65535", 1), std::pair(true, uint16_t{65535}));
  EXPECT_EQ(Interpret<uint16_t>("\n0\n", 1), std::pair(true, uint16_t{0}));
  for (const char* bad : {"65536", "-1", "-0", "1e2", ""})
    EXPECT_EQ(Interpret<uint16_t>(bad, 5), std::pair(false, uint16_t{5})) << bad;
}

TEST(HostCharacter, InterpretInt32) {
  EXPECT_EQ(Interpret<int32_t>("-2147483648", 1), std::pair(true, int32_t{-2147483647 - 1}));
  EXPECT_EQ(Interpret<int32_t>("2147483647", 1), std::pair(true, int32_t{2147483647}));
  EXPECT_EQ(Interpret<int32_t>("+0007", 1), std::pair(true, int32_t{7}));
  EXPECT_EQ(Interpret<int32_t>("-0", 1), std::pair(true, int32_t{0}));
  for (const char* bad : {"2147483648", "-2147483649", "1.5", "abc", "+", "-", "++1", "1_000"})
    EXPECT_EQ(Interpret<int32_t>(bad, 5), std::pair(false, int32_t{5})) << bad;
}

TEST(HostCharacter, InterpretUInt32) {
  EXPECT_EQ(Interpret<uint32_t>("4294967295", 1), std::pair(true, uint32_t{4294967295u}));
  EXPECT_EQ(Interpret<uint32_t>(" +4 ", 1), std::pair(true, uint32_t{4}));
  for (const char* bad : {"4294967296", "-1", "1e3", " "})
    EXPECT_EQ(Interpret<uint32_t>(bad, 5), std::pair(false, uint32_t{5})) << bad;
}

TEST(HostCharacter, InterpretUInt8) {
  EXPECT_EQ(Interpret<uint8_t>("255", 1), std::pair(true, uint8_t{255}));
  EXPECT_EQ(Interpret<uint8_t>("\t0", 1), std::pair(true, uint8_t{0}));
  for (const char* bad : {"256", "-1", "a", "0.5"})
    EXPECT_EQ(Interpret<uint8_t>(bad, 5), std::pair(false, uint8_t{5})) << bad;
}

TEST(HostCharacter, InterpretFloat) {
  EXPECT_EQ(Interpret<float>("1.5", 0), std::pair(true, 1.5f));
  EXPECT_EQ(Interpret<float>(" -2.5e-1\n", 0), std::pair(true, -0.25f));
  EXPECT_EQ(Interpret<float>("+3", 0), std::pair(true, 3.0f));
  EXPECT_EQ(Interpret<float>("INF", 0), std::pair(true, std::numeric_limits<float>::infinity()));
  EXPECT_EQ(Interpret<float>("-INF", 0), std::pair(true, -std::numeric_limits<float>::infinity()));
  EXPECT_EQ(Interpret<float>("1e50", 0), std::pair(true, std::numeric_limits<float>::infinity()));
  EXPECT_EQ(Interpret<float>("-1e50", 0), std::pair(true, -std::numeric_limits<float>::infinity()));
  const auto [tinyOk, tiny] = Interpret<float>("-1e-50", 7);
  EXPECT_TRUE(tinyOk);
  EXPECT_EQ(tiny, 0.0f);
  EXPECT_TRUE(std::signbit(tiny));
  const auto [nanOk, nan] = Interpret<float>("NaN", 7);
  EXPECT_TRUE(nanOk);
  EXPECT_TRUE(std::isnan(nan));
  for (const char* bad :
       {"", "abc", "1,5,0", "1;5", "1.5f", "0x1p3", "1 2", "+-1", "--1", "e5", "."})
    EXPECT_EQ(Interpret<float>(bad, 9), std::pair(false, 9.0f)) << bad;
}

TEST(HostCharacter, InterpretDouble) {
  EXPECT_EQ(Interpret<double>("0.1", 0), std::pair(true, 0.1));
  EXPECT_EQ(Interpret<double>("1e50", 0), std::pair(true, 1e50));
  EXPECT_EQ(Interpret<double>("1e400", 0),
            std::pair(true, std::numeric_limits<double>::infinity()));
  EXPECT_EQ(Interpret<double>("1e-400", 7), std::pair(true, 0.0));
  EXPECT_EQ(Interpret<double>("1" + std::string(400, '0'), 0),
            std::pair(true, std::numeric_limits<double>::infinity()));
  EXPECT_EQ(Interpret<double>("1" + std::string(400, '0') + "e-10", 0),
            std::pair(true, std::numeric_limits<double>::infinity()));
  EXPECT_EQ(Interpret<double>("0." + std::string(400, '0') + "1", 7), std::pair(true, 0.0));
  EXPECT_EQ(Interpret<double>("0." + std::string(400, '0') + "1e50", 7), std::pair(true, 0.0));
  EXPECT_EQ(Interpret<double>("1.5 x", 7), std::pair(false, 7.0));
}

TEST(HostHashTools, ComputePreferredSizeIsTheNextPowerOfTwo) {
  const std::vector<std::pair<unsigned int, unsigned int>> cases = {{0, 1},
                                                                    {1, 1},
                                                                    {2, 2},
                                                                    {3, 4},
                                                                    {5, 8},
                                                                    {1024, 1024},
                                                                    {1025, 2048},
                                                                    {0x40000001u, 0x80000000u},
                                                                    {0x80000000u, 0x80000000u},
                                                                    {0x80000001u, 0x80000000u},
                                                                    {0xffffffffu, 0x80000000u}};
  for (const auto& [entries, size] : cases)
    EXPECT_EQ(oxHashTools::ComputePreferredSize(entries), size) << entries;
}
