#include "oxDAERender/oxOffscreenRenderer.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <future>
#include <mutex>
#include <system_error>

#include <oxKernel/oxLog.h>

namespace OxDAERender {

namespace {

using CreateFn = void* (*)(int, int);
using DestroyFn = void (*)(void*);
using DrawFn = const uint8_t* (*)(void*, const oxRenderScene*, const oxRenderView*,
                                  const oxDrawOptions*);
using DepthsFn = bool (*)(void*, const oxRenderScene*, const oxRenderView*, float*);

// The drawing module's entry points; all null when it cannot be loaded.
struct GLModule {
  CreateFn create = nullptr;
  DestroyFn destroy = nullptr;
  DrawFn draw = nullptr;
  DepthsFn depths = nullptr;
};

// Opens the module: from the lib folder beside the program's bin folder,
// where the build and an installation put it, else wherever the dynamic
// loader finds it. Null when it cannot be opened; dlerror() says why. It
// logs nothing, so that Prepare's thread may call it.
void* OpenGLModule() {
  std::error_code ec;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    const std::filesystem::path beside =
        program.parent_path().parent_path() / "lib" / OX_RENDER_GL_MODULE;
    if (void* handle = dlopen(beside.c_str(), RTLD_NOW | RTLD_LOCAL)) return handle;
  }
  return dlopen(OX_RENDER_GL_MODULE, RTLD_NOW | RTLD_LOCAL);
}

// Loads the module once per process. It stays loaded until the process
// ends (Mesa does not support being unloaded). Failing is logged once.
const GLModule& LoadGLModule() {
  static const GLModule module = [] {
    GLModule loaded;
    void* handle = OpenGLModule();
    if (!handle) {
      OX_LOG(OxKernel::kLogError,
             OxKernel::oxConcat("cannot load the drawing module: ", dlerror()));
      return loaded;
    }
    loaded.create = reinterpret_cast<CreateFn>(dlsym(handle, "oxRenderGLCreate"));
    loaded.destroy = reinterpret_cast<DestroyFn>(dlsym(handle, "oxRenderGLDestroy"));
    loaded.draw = reinterpret_cast<DrawFn>(dlsym(handle, "oxRenderGLDraw"));
    loaded.depths = reinterpret_cast<DepthsFn>(dlsym(handle, "oxRenderGLDepths"));
    if (!loaded.create || !loaded.destroy || !loaded.draw || !loaded.depths) return GLModule{};
    return loaded;
  }();
  return module;
}

// Opens the module and warms a context up for the first renderer (see
// oxRenderGLWarmUp in oxOffscreenGL.cpp), on Prepare's thread.
void OpenAndWarmUp(int width, int height) {
  void* handle = OpenGLModule();
  if (!handle) return;
  using WarmUpFn = void (*)(int, int);
  if (const auto warmUp = reinterpret_cast<WarmUpFn>(dlsym(handle, "oxRenderGLWarmUp")))
    warmUp(width, height);
}

// The thread Prepare started, if any.
std::mutex g_preparingLock;
std::shared_future<void> g_preparing;

std::shared_future<void> Preparing() {
  const std::lock_guard<std::mutex> lock(g_preparingLock);
  return g_preparing;
}

}  // namespace

struct oxOffscreenRenderer::Context {
  void* handle = nullptr;  // the module's context
  int width = 0;
  int height = 0;
};

oxOffscreenRenderer::oxOffscreenRenderer(int width, int height)
    : m_context(std::make_unique<Context>()) {
  m_context->width = width;
  m_context->height = height;
  // The context Prepare's thread warms up is taken once it is ready.
  FinishPreparing();
  const GLModule& module = LoadGLModule();
  if (module.create) m_context->handle = module.create(width, height);
}

oxOffscreenRenderer::~oxOffscreenRenderer() {
  if (m_context->handle) LoadGLModule().destroy(m_context->handle);
}

void oxOffscreenRenderer::Prepare(int width, int height) {
  // The handle is never closed, as LoadGLModule's is not.
  const std::lock_guard<std::mutex> lock(g_preparingLock);
  if (g_preparing.valid()) return;
  try {
    g_preparing = std::async(std::launch::async, OpenAndWarmUp, width, height).share();
  } catch (const std::system_error&) {
    // No thread to be had: the first renderer opens the module itself.
  }
}

void oxOffscreenRenderer::FinishPreparing() {
  if (const std::shared_future<void> preparing = Preparing(); preparing.valid()) preparing.wait();
}

bool oxOffscreenRenderer::IsValid() const {
  return m_context->handle != nullptr;
}

oxPicture oxOffscreenRenderer::Draw(const oxRenderScene& scene, const oxRenderView& view,
                                    const oxDrawOptions& options) {
  const Context& c = *m_context;
  const uint8_t* pixels =
      c.handle ? LoadGLModule().draw(c.handle, &scene, &view, &options) : nullptr;
  oxPicture picture(std::max(c.width, 1), std::max(c.height, 1), kBackground);
  if (!pixels) return picture;
  // The buffer's rows run bottom up; a picture's run top down.
  const size_t row = static_cast<size_t>(c.width) * 4;
  for (int y = 0; y < c.height; ++y) {
    std::copy_n(pixels + row * static_cast<size_t>(c.height - 1 - y), row,
                picture.rgba.begin() + static_cast<ptrdiff_t>(row * static_cast<size_t>(y)));
  }
  // The buffer's alpha is what blending left; the picture is opaque.
  for (size_t i = 3; i < picture.rgba.size(); i += 4)
    picture.rgba[i] = 255;
  return picture;
}

OxKernel::oxArray<float> oxOffscreenRenderer::Depths(const oxRenderScene& scene,
                                                     const oxRenderView& view) {
  const Context& c = *m_context;
  OxKernel::oxArray<float> depths(c.handle ? static_cast<size_t>(c.width) * c.height : 0);
  if (c.handle && !LoadGLModule().depths(c.handle, &scene, &view, depths.data())) depths.clear();
  return depths;
}

}  // namespace OxDAERender
