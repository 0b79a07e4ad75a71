// Converted documents pass the Khronos glTF validator with no error: the
// sample scene, the fuzzer's seed documents (one or more per element kind)
// and, when the corpus folder exists, every COLLADA 1.4.x file that loads.
// The validator runs under Node.js from the node_modules folder that `make`
// sets up (OX_NODE_MODULES).
#include <oxDAEConvert/oxDAEGltf.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "cli_test_support.h"
#include "oxTestSupport.h"
#include "sweep_documents.h"

namespace {

// One JSON report per file, as validate_gltf.mjs prints them.
std::vector<nlohmann::json> Validate(const std::vector<std::string>& files) {
  std::string command = "OX_NODE_MODULES='" + std::string(OX_NODE_MODULES) + "' node '" +
                        std::string(OX_SOURCE_DIR) + "/convert/tests/validate_gltf.mjs'";
  for (const std::string& file : files)
    command += " '" + file + "'";
  const std::string out = clitest::Run(command + " 2>&1").out;
  std::vector<nlohmann::json> reports;
  std::stringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    nlohmann::json report = nlohmann::json::parse(line, nullptr, false);
    EXPECT_FALSE(report.is_discarded()) << "the validator printed: " << out;
    if (!report.is_discarded()) reports.push_back(std::move(report));
  }
  return reports;
}

class GltfValidation : public ::testing::TestWithParam<sweep::Document> {};

TEST_P(GltfValidation, ConvertedDocumentHasNoValidatorError) {
  oxtest::LogCapture log;
  OxDAEReader::oxDAEFile document;
  if (document.Load(OxKernel::oxURI(GetParam().path)) != 0)
    GTEST_SKIP() << "does not load (damaged on purpose)";
  const oxtest::TempFile glb("", ".glb");
  const oxtest::TempFile gltf("", ".gltf");
  const std::string bin = std::filesystem::path(gltf.Path()).replace_extension(".bin").string();
  ASSERT_EQ(OxDAEConvert::ConvertToGltf(document, glb.Path()), 0);
  ASSERT_EQ(OxDAEConvert::ConvertToGltf(document, gltf.Path()), 0);
  const std::vector<nlohmann::json> reports = Validate({glb.Path(), gltf.Path()});
  std::remove(bin.c_str());
  ASSERT_EQ(reports.size(), 2u);
  for (const nlohmann::json& report : reports) {
    EXPECT_EQ(report["errors"], 0) << report.dump(1);
    RecordProperty(std::filesystem::path(report["file"].get<std::string>()).extension().string(),
                   report["codes"].dump());
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, GltfValidation, ::testing::ValuesIn(sweep::Documents()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
