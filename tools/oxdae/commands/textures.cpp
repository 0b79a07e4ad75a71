// oxdae textures FILE [--json]: every image in document order (those of the
// image library and those inside effect profiles), with its init_from text,
// the local file it names (GetReferencedFilePath: percent-escapes decoded,
// "file:" URIs, drive letters and back-slashes read as the exporter meant
// them, relative paths taken against the document's folder) and whether
// that file exists. For a document read from a `.zae` archive the path is
// "ARCHIVE!/path/in/archive" and the check looks for that entry.
//
// An image whose init_from is empty, or a URI of another scheme ("http:"),
// names no local file: its path is null and it is not counted as missing.
//
// Exit status: 0 when every local file exists, 3 when one is missing, 1 when
// the document cannot be read.
#include <algorithm>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

using namespace OxDAEReader;

struct TexturesOptions {
  std::string file;
  bool json = false;
};

struct ImageFile {
  std::string id;
  std::string initFrom;
  std::string path;  // empty when the image names no local file
  bool exists = false;

  bool IsMissing() const { return !path.empty() && !exists; }
};

std::vector<ImageFile> FindImageFiles(const oxDAEFile& document) {
  std::vector<ImageFile> files;
  for (const oxDAEImage* image : AllOf<oxDAEImage>(document)) {
    const oxString path = GetReferencedFilePath(document, image->initFrom);
    files.push_back({std::string(image->id), std::string(image->initFrom), path,
                     ReferencedFileExists(document, path)});
  }
  return files;
}

Json TexturesJSON(const std::vector<ImageFile>& files) {
  Json images = Json::array();
  for (const ImageFile& f : files) {
    images.push_back({{"id", f.id},
                      {"init_from", JsonText(f.initFrom)},
                      {"path", JsonText(f.path)},
                      {"exists", f.exists}});
  }
  return {{"images", std::move(images)}};
}

std::string_view Status(const ImageFile& f) {
  if (f.exists) return "ok";
  if (f.IsMissing()) return "missing";
  return f.initFrom.empty() ? "no reference" : "not local";
}

std::string Padded(std::string_view text, size_t width) {
  std::string out(text);
  out.resize(std::max(width, text.size()), ' ');
  return out;
}

// One aligned row per image under a heading: id, init_from, status, path;
// then the totals.
std::string TexturesText(const std::vector<ImageFile>& files) {
  size_t idWidth = std::string_view("image").size();
  size_t initWidth = std::string_view("init_from").size();
  for (const ImageFile& f : files) {
    idWidth = std::max(idWidth, f.id.size());
    initWidth = std::max(initWidth, f.initFrom.size());
  }
  const auto row = [&](std::string_view id, std::string_view initFrom, std::string_view status,
                       std::string_view path) {
    std::string line = Padded(id, idWidth + 2) + Padded(initFrom, initWidth + 2) +
                       Padded(status, std::string_view("no reference").size() + 2);
    line += path;
    while (!line.empty() && line.back() == ' ')
      line.pop_back();
    return line + "\n";
  };
  std::string out;
  if (!files.empty()) out = row("image", "init_from", "file", "path");
  size_t missing = 0;
  for (const ImageFile& f : files) {
    out += row(f.id, f.initFrom, Status(f), f.path);
    missing += f.IsMissing() ? 1 : 0;
  }
  out += OxKernel::oxConcat(files.size(), " image(s), ", missing, " missing\n");
  return out;
}

int RunTextures(const TexturesOptions& options) {
  LogCounter log;
  oxDAEFile document;
  if (!LoadDocument(document, options.file, log)) return kExitFailure;
  const std::vector<ImageFile> files = FindImageFiles(document);
  Print(
      options.json, [&] { return TexturesJSON(files); }, [&] { return TexturesText(files); });
  const bool missing =
      std::any_of(files.begin(), files.end(), [](const ImageFile& f) { return f.IsMissing(); });
  return missing ? kExitFindings : kExitOK;
}

}  // namespace

Command AddTextures(CLI::App& tool) {
  auto options = std::make_shared<TexturesOptions>();
  CLI::App* command = tool.add_subcommand(
      "textures", "List the images and the files they name (exit status 3 if one is missing).");
  AddFileAndJSON(*command, options->file, options->json, "images");
  return {command, [options] { return RunTextures(*options); }};
}

}  // namespace oxdae
