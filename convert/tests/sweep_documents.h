// The documents the glTF and render sweeps go through: the sample scene,
// the fuzzer's seed documents (one or more per element kind) and, when the
// corpus folder exists, every COLLADA 1.4.x file of its manifest (named
// "corpus_...").
#pragma once

#include <cctype>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace sweep {

struct Document {
  std::string path;
  std::string name;
};

inline void PrintTo(const Document& document, std::ostream* os) {
  *os << document.path;
}

inline std::vector<Document> Documents() {
  std::vector<Document> documents = {{std::string(OX_SOURCE_DIR) + "/samples/scene.dae", "sample"}};
  for (const auto& entry :
       std::filesystem::directory_iterator(std::string(OX_SOURCE_DIR) + "/fuzz/seeds")) {
    if (entry.path().extension() == ".dae")
      documents.push_back({entry.path().string(), "seed_" + entry.path().stem().string()});
  }
  std::ifstream manifest(std::string(OX_CORPUS_DIR) + "/MANIFEST.tsv");
  std::string line;
  std::getline(manifest, line);
  while (std::getline(manifest, line)) {
    std::vector<std::string> columns;
    std::stringstream row(line);
    for (std::string column; std::getline(row, column, '\t');)
      columns.push_back(column);
    if (columns.size() < 7 || !columns[6].starts_with("1.4.")) continue;
    std::string name = "corpus_";
    for (const char c : columns[0])
      name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    documents.push_back({std::string(OX_CORPUS_DIR) + "/" + columns[0], name});
  }
  return documents;
}

}  // namespace sweep
