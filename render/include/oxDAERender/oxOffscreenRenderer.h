// Drawing a gathered scene without a display: OSMesa's software renderer
// into memory, with OpenGL's fixed-function pipeline.
#pragma once

#include <memory>
#include <vector>

#include <oxKernel/oxContainers.h>

#include "oxDAERender/oxRenderPicture.h"
#include "oxDAERender/oxRenderScene.h"
#include "oxDAERender/oxRenderView.h"

namespace OxDAERender {

// How a scene is drawn.
struct oxDrawOptions {
  // Also draw every triangle's edges, dark, over the shaded surfaces.
  bool wireframe = false;
};

// An OSMesa context with an RGBA colour buffer and a 24-bit depth buffer of
// one size. It owns the context and the buffer; it can be reused for many
// pictures of that size, on the thread that made it.
class oxOffscreenRenderer {
 public:
  // A renderer of `width` x `height` pixels (each 1..8192); IsValid() is
  // false when OSMesa cannot make the context.
  oxOffscreenRenderer(int width, int height);
  ~oxOffscreenRenderer();
  oxOffscreenRenderer(const oxOffscreenRenderer&) = delete;
  oxOffscreenRenderer& operator=(const oxOffscreenRenderer&) = delete;

  bool IsValid() const;

  // Starts mapping the drawing module (OSMesa and the LLVM it brings, tens
  // of milliseconds of dynamic linking) on a thread of its own and returns
  // at once, so that a caller can load its document meanwhile. That thread
  // then makes a context and draws one lit triangle with it, and its depth
  // alone as Depths does, which compiles the programs most pictures use
  // (about 0.1 s). With a size (`width` x `height` from 1 to 8192 pixels;
  // none by default), it draws the same again at that size, which makes
  // the buffers pictures of that size need while the caller still loads.
  // The first renderer made afterwards waits for that thread and takes the
  // context, and its colour buffer when of the renderer's size; later ones
  // make their own. Calling it again does nothing. It reports nothing: a
  // module that cannot be loaded is reported when a renderer is made. A
  // process that calls it must not end before FinishPreparing() (or the
  // making of a renderer) has returned: exit would destroy the module's
  // static objects while that thread still builds them, and could hang
  // there.
  static void Prepare(int width = 0, int height = 0);

  // Returns once the thread Prepare() started, if any, has finished; at
  // once when there is none. Making a renderer calls it.
  static void FinishPreparing();

  // Calls Prepare(width, height) when made and FinishPreparing() when it
  // goes, so that no way out of its scope (an early return, an exception)
  // lets the process end while the module is being mapped.
  class Preparation {
   public:
    explicit Preparation(int width = 0, int height = 0) { Prepare(width, height); }
    ~Preparation() { FinishPreparing(); }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;
  };

  // Draws `scene` seen through `view` on the background colour.
  //
  // One directional white light shines from the viewer's side (fixed in
  // the eye's frame along the view direction), lighting both sides of a
  // triangle, with a faint ambient term so that faces turned away stay
  // readable. Lit materials take their colour as ambient and diffuse
  // colour, no specular; unlit ones are drawn flat. Pictures are
  // multiplied with the colour, repeated beyond 0..1 and filtered with
  // mipmaps. Opaque parts are drawn first, then those with an opacity below
  // 1 or a translucent picture, blended over them in document order
  // without writing depth. Lines are drawn unlit, one pixel wide.
  oxPicture Draw(const oxRenderScene& scene, const oxRenderView& view,
                 const oxDrawOptions& options = {});

  // The depth buffer after drawing only the opaque triangles of `scene`
  // seen through `view`: width x height window depths (0 at the near
  // plane, 1 at the far one, 1 where nothing was drawn), the bottom row
  // first. Empty when the renderer is not valid. The next Draw starts
  // afresh. In the host's large-page arrays: a large picture's depths are
  // megabytes, written at once.
  OxKernel::oxArray<float> Depths(const oxRenderScene& scene, const oxRenderView& view);

 private:
  struct Context;
  std::unique_ptr<Context> m_context;
};

}  // namespace OxDAERender
