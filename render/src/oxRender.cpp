#include "oxDAERender/oxRender.h"

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <functional>
#include <optional>

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

// Gathers the scene of `document` for a `width` x `height` picture and the
// view it is seen through, as ViewOf frames it. Unless triangle edges are
// drawn (an edge may colour pixels its triangle does not), only the
// triangles that may colour a pixel are cut: those SeenTriangles keeps of
// the scene's outline, judged against the depth `renderer()` draws for the
// nearest large triangles. `renderer()` is called once the outline is
// ready, so that making it (which waits for Prepare's thread) overlaps the
// outlining.
int GatherForPicture(const OxDAEReader::oxDAEFile& document, const oxRenderSceneOptions& options,
                     const std::function<oxOffscreenRenderer&()>& renderer, int width, int height,
                     bool yUp, bool wireframe, oxRenderScene& scene, oxRenderView& view) {
  bool viewed = false;
  oxSeenTriangles seen;
  if (!wireframe) {
    seen = [&](const oxRenderScene& outline) {
      view = ViewOf(outline, width, height, yUp);
      viewed = true;
      oxOffscreenRenderer& drawing = renderer();
      return SeenTriangles(outline, view, width, height, [&](const oxRenderScene& occluders) {
        return drawing.Depths(occluders, view);
      });
    };
  }
  const int result = GatherScene(document, options, scene, seen);
  if (!viewed) view = ViewOf(scene, width, height, yUp);
  return result;
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
  oxRenderView view;
  oxRenderSceneOptions options;
  options.time = time;
  const auto drawing = [&renderer]() -> oxOffscreenRenderer& { return renderer; };
  if (GatherForPicture(document, options, drawing, width, height, false, false, scene, view) == 0)
    cell.picture = renderer.Draw(scene, view);
  if (warnings + errors > 0) {
    problems.push_back(
        OxKernel::oxConcat(cell.label, ": ", warnings, " warning(s), ", errors, " error(s)"));
  }
  return cell;
}

}  // namespace

int RenderDocument(const OxDAEReader::oxDAEFile& document, const oxRenderOptions& options,
                   oxPicture& picture) {
  // Made when first needed: making it waits for Prepare's thread.
  std::optional<oxOffscreenRenderer> renderer;
  const auto drawing = [&]() -> oxOffscreenRenderer& {
    if (!renderer) renderer.emplace(options.width, options.height);
    return *renderer;
  };
  oxRenderScene scene;
  oxRenderView view;
  if (const int result =
          GatherForPicture(document, options.scene, drawing, options.width, options.height,
                           options.yUp, options.wireframe, scene, view);
      result != 0)
    return result;
  oxOffscreenRenderer& made = drawing();
  if (!made.IsValid()) {
    OX_LOG(OxKernel::kLogError, "cannot make an off-screen OpenGL context (OSMesa)");
    return kRenderNoContext;
  }
  if (scene.IsEmpty()) OX_LOG(OxKernel::kLogWarning, "the scene has no geometry to draw");
  picture = made.Draw(scene, view, {options.wireframe});
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
