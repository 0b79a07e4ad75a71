// Pictures of documents in one call: a document at a time, seen through
// its camera or framed automatically, and a contact sheet of every
// document of a folder.
#pragma once

#include <string>

#include "oxDAERender/oxOffscreenRenderer.h"
#include "oxDAERender/oxRenderPicture.h"
#include "oxDAERender/oxRenderScene.h"

namespace OxDAERender {

struct oxRenderOptions {
  oxRenderSceneOptions scene;  // the time, visual scene and camera
  int width = 512;             // the picture's size in pixels
  int height = 512;
  bool wireframe = false;  // draw triangle edges over the surfaces
  bool yUp = false;        // frame the scene with +Y up whatever its up axis
};

// Renders `document` into `picture`: GatherScene, ViewOf, then an
// oxOffscreenRenderer of the asked size. A scene with nothing to draw
// gives the background alone and the warning "the scene has no geometry to
// draw". Returns 0 or GatherScene's failure, or kRenderNoContext when the
// GL context cannot be made (each after a logged error).
int RenderDocument(const OxDAEReader::oxDAEFile& document, const oxRenderOptions& options,
                   oxPicture& picture);

// Renders every ".dae" file directly in `folder` (sorted by name; the
// letter case of the extension does not matter) as a `width` x `height`
// picture at `time` with the document's view, and lays them
// out with ComposeSheet, each labelled with its file name. A file that
// cannot be read is shown as an empty thumbnail labelled with its name
// and "(unreadable)", and "NAME: cannot be read" in `problems`. Log
// records of the documents are not passed on: the sheet counts each
// readable file's warnings and errors in `problems` (one line per file that
// had any: "NAME: W warning(s), E error(s)"). False when the
// folder cannot be listed or holds no ".dae" file.
bool RenderSheet(const std::string& folder, float time, int width, int height, oxPicture& sheet,
                 std::vector<std::string>& problems);

}  // namespace OxDAERender
