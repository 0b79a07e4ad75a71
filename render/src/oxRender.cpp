#include "oxDAERender/oxRender.h"

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace OxDAERender {

namespace {

bool IsDocumentFile(const std::filesystem::directory_entry& entry) {
  std::string extension = entry.path().extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  std::error_code ec;
  return extension == ".dae" && entry.is_regular_file(ec);
}

// The ".dae" files directly in `folder`, sorted; false when it cannot be
// listed.
bool ListDocuments(const std::string& folder, std::vector<std::filesystem::path>& files) {
  std::error_code ec;
  std::filesystem::directory_iterator it(folder, ec);
  if (ec) return false;
  for (const auto& entry : it) {
    if (IsDocumentFile(entry)) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return true;
}

// Draws `scene` seen as ViewOf frames it for the renderer's picture. What
// cannot colour a pixel is dropped first, judged against the depth the
// renderer draws for the nearest large triangles, unless triangle edges
// are drawn: an edge may colour pixels its triangle does not.
oxPicture DrawScene(oxOffscreenRenderer& renderer, oxRenderScene& scene, int width, int height,
                    bool yUp, const oxDrawOptions& options) {
  const oxRenderView view = ViewOf(scene, width, height, yUp);
  if (!options.wireframe)
    DropUnseenTriangles(scene, view, width, height, [&](const oxRenderScene& occluders) {
      return renderer.Depths(occluders, view);
    });
  return renderer.Draw(scene, view, options);
}

// One thumbnail of the sheet; counts the document's log records.
oxSheetCell Thumbnail(const std::filesystem::path& file, float time, oxOffscreenRenderer& renderer,
                      int width, int height, std::vector<std::string>& problems) {
  uint64_t warnings = 0;
  uint64_t errors = 0;
  const OxKernel::oxScopedLogSink sink([&](const OxKernel::oxLogRecord& record) {
    warnings += record.level == OxKernel::kLogWarning;
    errors += record.level == OxKernel::kLogError;
  });
  oxSheetCell cell{oxPicture(width, height, kBackground), file.filename().string()};
  OxDAEReader::oxDAEFile document;
  if (document.Load(OxKernel::oxURI(OxKernel::oxString(file.string()))) != 0) {
    problems.push_back(cell.label + ": cannot be read");
    cell.label += " (unreadable)";
    return cell;
  }
  oxRenderScene scene;
  oxRenderSceneOptions options;
  options.time = time;
  if (GatherScene(document, options, scene) == 0)
    cell.picture = DrawScene(renderer, scene, width, height, false, {});
  if (warnings + errors > 0) {
    problems.push_back(
        OxKernel::oxConcat(cell.label, ": ", warnings, " warning(s), ", errors, " error(s)"));
  }
  return cell;
}

}  // namespace

int RenderDocument(const OxDAEReader::oxDAEFile& document, const oxRenderOptions& options,
                   oxPicture& picture) {
  oxRenderScene scene;
  if (const int result = GatherScene(document, options.scene, scene); result != 0) return result;
  oxOffscreenRenderer renderer(options.width, options.height);
  if (!renderer.IsValid()) {
    OX_LOG(OxKernel::kLogError, "cannot make an off-screen OpenGL context (OSMesa)");
    return kRenderNoContext;
  }
  if (scene.IsEmpty()) OX_LOG(OxKernel::kLogWarning, "the scene has no geometry to draw");
  picture =
      DrawScene(renderer, scene, options.width, options.height, options.yUp, {options.wireframe});
  return 0;
}

bool RenderSheet(const std::string& folder, float time, int width, int height, oxPicture& sheet,
                 std::vector<std::string>& problems) {
  std::vector<std::filesystem::path> files;
  if (!ListDocuments(folder, files) || files.empty()) return false;
  oxOffscreenRenderer renderer(width, height);
  std::vector<oxSheetCell> cells;
  for (const auto& file : files)
    cells.push_back(Thumbnail(file, time, renderer, width, height, problems));
  sheet = ComposeSheet(cells);
  return true;
}

}  // namespace OxDAERender
