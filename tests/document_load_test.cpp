#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;

OX_DOCUMENT_SUITE(DocumentLoad);

TEST_XML(DocumentLoad, RootTagDAELoadsLikeCOLLADA,
         R"(<DAE version="1.4.1"><library_geometries id="lib"/></DAE>)") {
  EXPECT_EQ(rc, 0);
  ASSERT_NE(document.GetRoot(), nullptr);
  ASSERT_EQ(document.GetRoot()->libraries.size(), 1u);
  EXPECT_EQ(document.GetRoot()->libraries[0]->type, "library_geometries");
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(DocumentLoad, LowerCaseRootTagIsNotCollada, R"(<collada version="1.4.1"/>)") {
  EXPECT_EQ(rc, kDAENotCollada);
  EXPECT_EQ(rc, -23);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(log.entries, (std::vector{Error("the root element is <collada>, not <COLLADA>")}));
}
