#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <oxKernel/oxURI.h>

#include "oxTestSupport.h"

using OxKernel::oxString;
using OxKernel::oxURI;

namespace {

struct SplitCase {
  std::string text;
  std::string scheme, authority, path, query, fragment;
  bool hasAuthority, hasQuery, hasFragment;
};

std::string Resolved(std::string_view base, std::string_view reference) {
  return oxURI(base).Resolve(reference).GetString();
}

}  // namespace

TEST(HostURI, SplitSeparatesEveryComponent) {
  const std::vector<SplitCase> cases = {
      {"http://host:80/a/b?q=1#frag", "http", "host:80", "/a/b", "q=1", "frag", true, true, true},
      {"file:///C:/dir/x.dae", "file", "", "/C:/dir/x.dae", "", "", true, false, false},
      {"file://server/share/x", "file", "server", "/share/x", "", "", true, false, false},
      {"http://host", "http", "host", "", "", "", true, false, false},
      {"urn:isbn:123", "urn", "", "isbn:123", "", "", false, false, false},
      {"C:/models/x.dae", "", "", "C:/models/x.dae", "", "", false, false, false},
      {"dir/x:y.dae", "", "", "dir/x:y.dae", "", "", false, false, false},
      {"tex/d.png", "", "", "tex/d.png", "", "", false, false, false},
      {"#node", "", "", "", "", "node", false, false, true},
      {"a#b?c", "", "", "a", "", "b?c", false, false, true},
      {"?#", "", "", "", "", "", false, true, true},
      {"//host/p", "", "host", "/p", "", "", true, false, false},
      {"svn+ssh.x-1://h/p", "svn+ssh.x-1", "h", "/p", "", "", true, false, false},
      {"", "", "", "", "", "", false, false, false},
  };
  for (const SplitCase& c : cases) {
    const oxURI uri(c.text);
    const oxURI::Parts parts = uri.Split();
    EXPECT_EQ(parts.scheme, c.scheme) << c.text;
    EXPECT_EQ(parts.authority, c.authority) << c.text;
    EXPECT_EQ(parts.path, c.path) << c.text;
    EXPECT_EQ(parts.query, c.query) << c.text;
    EXPECT_EQ(parts.fragment, c.fragment) << c.text;
    EXPECT_EQ(parts.hasAuthority, c.hasAuthority) << c.text;
    EXPECT_EQ(parts.hasQuery, c.hasQuery) << c.text;
    EXPECT_EQ(parts.hasFragment, c.hasFragment) << c.text;
  }
}

TEST(HostURI, HasSchemeNeedsAtLeastTwoSchemeCharacters) {
  EXPECT_TRUE(oxURI("file:///x").HasScheme());
  EXPECT_TRUE(oxURI("ab:c").HasScheme());
  EXPECT_FALSE(oxURI("C:/x").HasScheme());
  EXPECT_FALSE(oxURI("1a:b").HasScheme());
  EXPECT_FALSE(oxURI("/abs/path").HasScheme());
  EXPECT_FALSE(oxURI("").HasScheme());
}

TEST(HostURI, IsProperURIAcceptsAbsoluteURIsWithoutHostForFiles) {
  const std::vector<std::pair<std::string, bool>> cases = {
      {"file:///x", true},
      {"file:///C:/dir/x.dae", true},
      {"http://a/b", true},
      {"urn:x", true},
      {"file://server/share", false},
      {"file://localhost/x", false},
      {"file:/x", false},
      {"file:x", false},
      {"C:/x", false},
      {"/abs/path", false},
      {"relative/x.dae", false},
      {"file:///a b", false},
      {"file:///a\\b", false},
      {"http://a/b\tc", false},
      {"http://a/\x7f", false},
      {"", false},
  };
  for (const auto& [text, proper] : cases)
    EXPECT_EQ(oxURI(text).IsProperURI(), proper) << text;
}

TEST(HostURI, ResolveAgainstAFileBase) {
  const std::string base = "file:///a/b/c.dae";
  EXPECT_EQ(Resolved(base, "tex/d.png"), "file:///a/b/tex/d.png");
  EXPECT_EQ(Resolved(base, "./tex/d.png"), "file:///a/b/tex/d.png");
  EXPECT_EQ(Resolved(base, "../d.png"), "file:///a/d.png");
  EXPECT_EQ(Resolved(base, "../../../../d.png"), "file:///d.png");
  EXPECT_EQ(Resolved(base, "/d.png"), "file:///d.png");
  EXPECT_EQ(Resolved(base, "#frag"), "file:///a/b/c.dae#frag");
  EXPECT_EQ(Resolved(base, ""), "file:///a/b/c.dae");
  EXPECT_EQ(Resolved(base, "http://x/y"), "http://x/y");
  EXPECT_EQ(Resolved(base, "file:///other.dae#n"), "file:///other.dae#n");
  EXPECT_EQ(Resolved(base, "//server/share/x.dae"), "file://server/share/x.dae");
}

// The normal and abnormal examples of RFC 3986, section 5.4.
TEST(HostURI, ResolveFollowsTheRFC3986Examples) {
  const std::string base = "http://a/b/c/d;p?q";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"gg:h", "gg:h"},
      {"g", "http://a/b/c/g"},
      {"./g", "http://a/b/c/g"},
      {"g/", "http://a/b/c/g/"},
      {"/g", "http://a/g"},
      {"//g", "http://g"},
      {"?y", "http://a/b/c/d;p?y"},
      {"g?y", "http://a/b/c/g?y"},
      {"#s", "http://a/b/c/d;p?q#s"},
      {"g#s", "http://a/b/c/g#s"},
      {"g?y#s", "http://a/b/c/g?y#s"},
      {";x", "http://a/b/c/;x"},
      {"g;x", "http://a/b/c/g;x"},
      {"g;x?y#s", "http://a/b/c/g;x?y#s"},
      {"", "http://a/b/c/d;p?q"},
      {".", "http://a/b/c/"},
      {"./", "http://a/b/c/"},
      {"..", "http://a/b/"},
      {"../", "http://a/b/"},
      {"../g", "http://a/b/g"},
      {"../..", "http://a/"},
      {"../../", "http://a/"},
      {"../../g", "http://a/g"},
      {"../../../g", "http://a/g"},
      {"../../../../g", "http://a/g"},
      {"/./g", "http://a/g"},
      {"/../g", "http://a/g"},
      {"g.", "http://a/b/c/g."},
      {".g", "http://a/b/c/.g"},
      {"g..", "http://a/b/c/g.."},
      {"..g", "http://a/b/c/..g"},
      {"./../g", "http://a/b/g"},
      {"./g/.", "http://a/b/c/g/"},
      {"g/./h", "http://a/b/c/g/h"},
      {"g/../h", "http://a/b/c/h"},
      {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
      {"g;x=1/../y", "http://a/b/c/y"},
      {"g?y/./x", "http://a/b/c/g?y/./x"},
      {"g?y/../x", "http://a/b/c/g?y/../x"},
      {"g#s/./x", "http://a/b/c/g#s/./x"},
      {"g#s/../x", "http://a/b/c/g#s/../x"},
      {"http:g", "http:g"},
  };
  for (const auto& [reference, expected] : cases)
    EXPECT_EQ(Resolved(base, reference), expected) << reference;
}

TEST(HostURI, ResolveAgainstAnAuthorityWithoutPath) {
  EXPECT_EQ(Resolved("http://a", "g"), "http://a/g");
  EXPECT_EQ(Resolved("http://a?q", "#f"), "http://a?q#f");
}

TEST(HostURI, ResolveAgainstPlainPaths) {
  EXPECT_EQ(Resolved("/models/scene.dae", "tex/d.png"), "/models/tex/d.png");
  EXPECT_EQ(Resolved("/models/scene.dae", "../d.png"), "/d.png");
  EXPECT_EQ(Resolved("/models/scene.dae", "../../d.png"), "/d.png");
  EXPECT_EQ(Resolved("/models/scene.dae", "#node"), "/models/scene.dae#node");
  EXPECT_EQ(Resolved("/models/scene.dae", "/other/x.dae"), "/other/x.dae");
  EXPECT_EQ(Resolved("/models/scene.dae", "file:///x.dae"), "file:///x.dae");
  EXPECT_EQ(Resolved("models/scene.dae", "tex/d.png"), "models/tex/d.png");
  EXPECT_EQ(Resolved("models/scene.dae", "./d.png"), "models/d.png");
  EXPECT_EQ(Resolved("models/scene.dae", "../d.png"), "d.png");
  EXPECT_EQ(Resolved("scene.dae", "d.png"), "d.png");
  EXPECT_EQ(Resolved("C:/models/scene.dae", "tex/d.png"), "C:/models/tex/d.png");
}

TEST(HostURI, ResolveKeepsParentStepsAboveARelativeBase) {
  EXPECT_EQ(Resolved("scene.dae", "../textures/d.png"), "../textures/d.png");
  EXPECT_EQ(Resolved("models/scene.dae", "../../d.png"), "../d.png");
  EXPECT_EQ(Resolved("../models/scene.dae", "../tex/d.png"), "../tex/d.png");
  EXPECT_EQ(Resolved("../../scene.dae", "../d.png"), "../../../d.png");
  EXPECT_EQ(Resolved("scene.dae", ".."), "../");
}

TEST(HostURI, GetFilePathDecodesFileURIs) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"file:///home/user/a%20b.dae", "/home/user/a b.dae"},
      {"file:///C:/models/x.dae", "C:/models/x.dae"},
      {"file:///c:/x", "c:/x"},
      {"file:///x%2541%zz%4", "/x%41%zz%4"},
      {"file:///caf%C3%A9.dae", "/caf\xc3\xa9.dae"},
      {"file:///a/x.dae#node", "/a/x.dae"},
      {"file://localhost/a/x.dae", "/a/x.dae"},
      {"file://server/share/x.dae", "//server/share/x.dae"},
      {"relative/a%20b.dae", "relative/a%20b.dae"},
      {"/abs/x.dae", "/abs/x.dae"},
      {"C:/models/x.dae", "C:/models/x.dae"},
      {"http://host/x.dae", ""},
  };
  for (const auto& [uri, path] : cases)
    EXPECT_EQ(oxURI(uri).GetFilePath(), path) << uri;
}

TEST(HostURI, FromFilePathEncodesCharactersOutsideTheURIGrammar) {
  EXPECT_EQ(oxURI::FromFilePath("/a/b.dae").GetString(), "file:///a/b.dae");
  EXPECT_EQ(oxURI::FromFilePath("/dir name/x#1?.dae").GetString(),
            "file:///dir%20name/x%231%3F.dae");
  EXPECT_EQ(oxURI::FromFilePath("/100%/caf\xc3\xa9").GetString(), "file:///100%25/caf%C3%A9");
  EXPECT_EQ(oxURI::FromFilePath("/a/./b/../c.dae").GetString(), "file:///a/c.dae");
  EXPECT_EQ(oxURI::FromFilePath("/a/-._~!$&'()*+,;=:@").GetString(), "file:///a/-._~!$&'()*+,;=:@");
}

TEST(HostURI, FromFilePathMakesRelativePathsAbsolute) {
  const std::string cwd = std::filesystem::current_path().generic_string();
  const oxURI uri = oxURI::FromFilePath("sub/x.dae");
  EXPECT_TRUE(uri.IsProperURI()) << uri.GetString();
  EXPECT_EQ(uri.GetFilePath(), cwd + "/sub/x.dae");
}

TEST(HostURI, FromFilePathRoundTripsThroughGetFilePath) {
  for (const std::string path : {"/tmp/a b/c%d.dae", "/x/#y?z", "/\xce\xa9/\t.dae"}) {
    const oxURI uri = oxURI::FromFilePath(path);
    EXPECT_TRUE(uri.IsProperURI()) << uri.GetString();
    EXPECT_EQ(uri.GetFilePath(), path);
  }
}

TEST(HostURI, ComparesByText) {
  EXPECT_EQ(oxURI("file:///a"), oxURI("file:///a"));
  EXPECT_FALSE(oxURI("file:///a") == oxURI("file:///A"));
  EXPECT_TRUE(oxURI().IsEmpty());
  EXPECT_FALSE(oxURI("x").IsEmpty());
  EXPECT_EQ(oxURI("x").GetString(), oxString("x"));
}
