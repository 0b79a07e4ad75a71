// oxdae render FILE --out PICTURE.png [--time T] [--size WxH] [--camera ID]
//   [--wireframe] [--y-up] [--scene ID]: a picture of the visual scene at
//   time T, drawn off-screen by OSMesa's software renderer.
// oxdae render --sheet FOLDER --out SHEET.png [--time T] [--size WxH]: one
//   labelled thumbnail of every .dae directly in FOLDER.
//
// The picture is 512 x 512 pixels by default, a sheet's thumbnails 128 x
// 128. --y-up frames an automatic view with +Y up whatever the document's
// up axis says (for documents that declare the wrong one); a document
// camera defines its own up and is not changed by it. A scene with nothing
// to draw gives a picture of the background and a warning, and succeeds.
//
// Exit status: 0 written; 1 when FILE cannot be read, --scene or --camera
// names nothing, the folder holds no .dae file, the GL context cannot be
// made or OUT cannot be written; 2 for bad usage (neither FILE nor
// --sheet, or both; --sheet with --camera, --scene, --wireframe or --y-up;
// OUT not ending in .png; a size that is not WxH within 1..8192).
#include <oxDAERender/oxOffscreenRenderer.h>
#include <oxDAERender/oxRender.h>

#include <charconv>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

constexpr int kMaxSide = 8192;

struct RenderOptions {
  std::string file;
  std::string sheet;
  std::string out;
  std::string size;
  std::string camera;
  std::string scene;
  float time = 0.0f;
  bool wireframe = false;
  bool yUp = false;
};

// Reads "WxH" into width and height; false when it is not two sides within
// 1..kMaxSide.
bool ParseSize(const std::string& text, int& width, int& height) {
  const size_t x = text.find('x');
  if (x == std::string::npos) return false;
  const char* end = text.data() + text.size();
  const auto w = std::from_chars(text.data(), text.data() + x, width);
  const auto h = std::from_chars(text.data() + x + 1, end, height);
  return w.ec == std::errc() && w.ptr == text.data() + x && h.ec == std::errc() && h.ptr == end &&
         width >= 1 && height >= 1 && width <= kMaxSide && height <= kMaxSide;
}

bool Write(const OxDAERender::oxPicture& picture, const std::string& out) {
  if (OxDAERender::WritePng(picture, out)) return true;
  PrintToolLine("cannot write '" + out + "'");
  return false;
}

int RunSheet(const RenderOptions& options, int width, int height) {
  OxDAERender::oxPicture sheet;
  std::vector<std::string> problems;
  if (!OxDAERender::RenderSheet(options.sheet, options.time, width, height, sheet, problems)) {
    PrintToolLine(options.sheet + ": no .dae file to render (or the folder cannot be read)");
    return kExitFailure;
  }
  for (const std::string& problem : problems)
    PrintToolLine(problem);
  return Write(sheet, options.out) ? kExitOK : kExitFailure;
}

int RunRender(const RenderOptions& options) {
  int width = 512;
  int height = 512;
  if (!options.sheet.empty() && options.size.empty()) width = height = 128;
  if (!options.size.empty()) ParseSize(options.size, width, height);
  // The drawing module is mapped, and its buffers made for pictures of this
  // size, while the document loads; it is waited for before the command
  // returns, whichever way it does.
  const OxDAERender::oxOffscreenRenderer::Preparation preparation(width, height);
  if (!options.sheet.empty()) return RunSheet(options, width, height);
  LogCounter log;
  OxDAEReader::oxDAEFile document;
  if (!LoadDocument(document, options.file, log)) return kExitFailure;
  OxDAERender::oxRenderOptions render;
  render.scene.time = options.time;
  render.scene.scene = options.scene;
  render.scene.camera = options.camera;
  render.width = width;
  render.height = height;
  render.wireframe = options.wireframe;
  render.yUp = options.yUp;
  OxDAERender::oxPicture picture;
  if (!Attempt(log, options.file, "rendered",
               [&] { return OxDAERender::RenderDocument(document, render, picture); }))
    return kExitFailure;
  return Write(picture, options.out) ? kExitOK : kExitFailure;
}

}  // namespace

Command AddRender(CLI::App& tool) {
  auto options = std::make_shared<RenderOptions>();
  CLI::App* command = tool.add_subcommand(
      "render", "Draw the visual scene at a time into a PNG picture, without a display.");
  CLI::Option* file = command->add_option(
      "FILE", options->file, "the COLLADA document (.dae or .zae; - reads standard input)");
  CLI::Option* sheet = command->add_option(
      "--sheet", options->sheet, "render every .dae of this folder as a labelled thumbnail");
  file->excludes(sheet);
  command->add_option("--out", options->out, "the PNG picture to write")
      ->required()
      ->check([](const std::string& out) {
        return out.ends_with(".png") ? std::string() : std::string("--out must end in .png");
      });
  AddTimeOption(*command, options->time, false);
  command
      ->add_option("--size", options->size,
                   "the picture's width and height in pixels, WxH (default 512x512; 128x128 per "
                   "thumbnail of a sheet)")
      ->check([](const std::string& text) {
        int width = 0;
        int height = 0;
        return ParseSize(text, width, height) ? std::string()
                                              : std::string("--size must be WxH within 1..8192");
      });
  // A sheet shows each document through its own view, drawn plainly.
  sheet->excludes(command->add_option(
      "--camera", options->camera,
      "the id of the camera (or of the node instancing it) to look through (default: the first "
      "the scene instances, else an automatic view)"));
  sheet->excludes(command->add_option(
      "--scene", options->scene,
      "the id of the visual scene (default: the one <scene> names, else the first)"));
  sheet->excludes(
      command->add_flag("--wireframe", options->wireframe, "draw every triangle's edges"));
  sheet->excludes(
      command->add_flag("--y-up", options->yUp,
                        "frame the automatic view with +Y up whatever the document's up axis"));
  command->parse_complete_callback([file, sheet] {
    if (file->count() == 0 && sheet->count() == 0)
      throw CLI::RequiredError("FILE or --sheet FOLDER");
  });
  return {command, [options] { return RunRender(*options); }};
}

}  // namespace oxdae
