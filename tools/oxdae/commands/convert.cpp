// oxdae convert IN OUT [--scene ID] [--fps N] [--y-up] [--meters]: writes the document as glTF 2.0,
// a .glb (one file, pictures inside) or a .gltf (JSON with a .bin beside it, pictures referenced).
// What glTF or the converter cannot carry over is named in warnings on standard error.
//
// Exit status: 0 when written, 1 when IN cannot be read, the scene is not
// found or OUT cannot be written, 2 when OUT ends in neither .gltf nor .glb.
#include <oxDAEConvert/oxDAEGltf.h>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

struct ConvertOptions {
  std::string in;
  std::string out;
  std::string scene;
  double fps = 30.0;
  bool yUp = false;
  bool meters = false;
};

int RunConvert(const ConvertOptions& options) {
  LogCounter log;
  OxDAEReader::oxDAEFile document;
  if (!LoadDocument(document, options.in, log)) return kExitFailure;
  OxDAEConvert::oxGltfOptions gltf;
  gltf.scene = options.scene;
  gltf.fps = options.fps;
  gltf.yUp = options.yUp;
  gltf.meters = options.meters;
  return Attempt(log, options.in, "converted",
                 [&] { return OxDAEConvert::ConvertToGltf(document, options.out, gltf); })
             ? kExitOK
             : kExitFailure;
}

}  // namespace

Command AddConvert(CLI::App& tool) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* command = tool.add_subcommand("convert", "Write the document as glTF 2.0.");
  AddInput(*command, options->in);
  command
      ->add_option("OUT", options->out,
                   "the glTF file to write: .gltf (with a .bin beside it) or .glb")
      ->required()
      ->check([](const std::string& out) {
        return out.ends_with(".gltf") || out.ends_with(".glb")
                   ? std::string()
                   : std::string("OUT must end in .gltf or .glb");
      });
  command
      ->add_option("--fps", options->fps,
                   "samples per second of the animations (default 30); their keys are always "
                   "sampled")
      ->check(CLI::Range(1.0, 10000.0));
  command->add_flag("--y-up", options->yUp,
                    "turn a Z_UP or X_UP document to glTF's +Y up at the root");
  command->add_flag("--meters", options->meters,
                    "scale the document's unit to glTF's meters at the root");
  command->add_option(
      "--scene", options->scene,
      "the id of the visual scene (default: the one <scene> names, else the first)");
  return {command, [options] { return RunConvert(*options); }};
}

}  // namespace oxdae
