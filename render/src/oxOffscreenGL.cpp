#include "oxDAERender/oxOffscreenRenderer.h"

#include <GL/osmesa.h>

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace OxDAERender {

constexpr int kMaxSide = 8192;

namespace {

constexpr GLfloat kAmbient[4] = {0.25f, 0.25f, 0.25f, 1.0f};
constexpr GLfloat kLightDiffuse[4] = {0.75f, 0.75f, 0.75f, 1.0f};
constexpr GLfloat kEdgeColor[4] = {0.08f, 0.08f, 0.1f, 1.0f};

// The OpenGL textures of the pictures of one scene, made on first use and
// deleted with the object.
class TextureCache {
 public:
  TextureCache() = default;
  TextureCache(const TextureCache&) = delete;
  TextureCache& operator=(const TextureCache&) = delete;
  ~TextureCache() {
    for (const auto& [picture, name] : m_names)
      glDeleteTextures(1, &name);
  }

  GLuint Of(const oxRenderImage& picture) {
    const auto found = m_names.find(&picture);
    if (found != m_names.end()) return found->second;
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, picture.width, picture.height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, picture.rgba.data());
    m_names.emplace(&picture, name);
    return name;
  }

 private:
  std::map<const oxRenderImage*, GLuint> m_names;
};

void SetUpState(const oxRenderView& view, int width, int height) {
  // A context warmed up on a small buffer keeps that buffer's viewport.
  glViewport(0, 0, width, height);
  glClearColor(kBackground[0] / 255.0f, kBackground[1] / 255.0f, kBackground[2] / 255.0f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
  glDisable(GL_CULL_FACE);
  glEnable(GL_NORMALIZE);
  glShadeModel(GL_SMOOTH);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glMatrixMode(GL_PROJECTION);
  glLoadMatrixd(view.projection.data());
  glMatrixMode(GL_MODELVIEW);
  // The light is placed with the identity loaded, so that it stays in the
  // eye's frame: it shines from the viewer's side whatever the view.
  glLoadIdentity();
  const GLfloat towardsViewer[4] = {0.0f, 0.0f, 1.0f, 0.0f};
  glLightfv(GL_LIGHT0, GL_POSITION, towardsViewer);
  glLightfv(GL_LIGHT0, GL_DIFFUSE, kLightDiffuse);
  glLightModelfv(GL_LIGHT_MODEL_AMBIENT, kAmbient);
  glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
  glEnable(GL_LIGHT0);
  glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
  glEnable(GL_COLOR_MATERIAL);
  glLoadMatrixd(view.view.data());
}

// Sets the colour, lighting and texture of `material` for a batch.
void UseMaterial(const oxRenderMaterial& material, const oxRenderBatch& batch,
                 TextureCache& textures) {
  glColor4f(material.color[0], material.color[1], material.color[2],
            material.color[3] * material.opacity);
  if (material.lit && !batch.lines) {
    glEnable(GL_LIGHTING);
  } else {
    glDisable(GL_LIGHTING);
  }
  if (material.picture && !batch.vertices->texcoords.empty()) {
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, textures.Of(*material.picture));
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glTexCoordPointer(2, GL_FLOAT, 0, batch.vertices->texcoords.data());
  } else {
    glDisable(GL_TEXTURE_2D);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  }
}

// Draws the triangles of `batch` region by region (see
// oxRenderBatch::regions), each under a scissor to its region and only in
// the regions of its mask, in the batch's order within each region. The
// regions share no pixel, so each pixel sees the same triangles in the same
// order as in one draw, less those culling found hidden there.
void DrawByRegions(const oxRenderBatch& batch, int width, int height) {
  constexpr size_t kRegions = kRegionSide * kRegionSide;
  // The regions' lists of corners side by side in one array, each sized
  // first: lists grown a triangle at a time would each be copied into fresh
  // memory at every doubling, and fresh pages cost a fault apiece.
  std::array<size_t, kRegions + 1> start{};
  for (const uint64_t regions : batch.regions) {
    for (uint64_t mask = regions; mask != 0; mask &= mask - 1)
      start[static_cast<size_t>(std::countr_zero(mask)) + 1] += 3;
  }
  for (size_t region = 0; region < kRegions; ++region)
    start[region + 1] += start[region];
  OxKernel::oxArray<uint32_t> corners(start[kRegions]);
  std::array<size_t, kRegions> end;
  std::copy_n(start.begin(), kRegions, end.begin());
  for (size_t t = 0; t < batch.regions.size(); ++t) {
    for (uint64_t mask = batch.regions[t]; mask != 0; mask &= mask - 1) {
      size_t& at = end[static_cast<size_t>(std::countr_zero(mask))];
      std::copy_n(&batch.indices[3 * t], 3, &corners[at]);
      at += 3;
    }
  }
  glEnable(GL_SCISSOR_TEST);
  for (size_t region = 0; region < kRegions; ++region) {
    if (start[region + 1] == start[region]) continue;
    const auto [left, right] = RegionSpan(static_cast<int>(region) % kRegionSide, width);
    const auto [bottom, top] = RegionSpan(static_cast<int>(region) / kRegionSide, height);
    glScissor(left, bottom, right - left, top - bottom);
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(start[region + 1] - start[region]),
                   GL_UNSIGNED_INT, &corners[start[region]]);
  }
  glDisable(GL_SCISSOR_TEST);
}

void DrawElements(const oxRenderBatch& batch, int width, int height) {
  const oxRenderVertices& vertices = *batch.vertices;
  glVertexPointer(3, GL_FLOAT, 0, vertices.positions.data());
  if (vertices.normals.empty()) {
    glDisableClientState(GL_NORMAL_ARRAY);
  } else {
    glEnableClientState(GL_NORMAL_ARRAY);
    glNormalPointer(GL_FLOAT, 0, vertices.normals.data());
  }
  if (!batch.lines && !batch.regions.empty() && batch.regions.size() * 3 == batch.indices.size()) {
    DrawByRegions(batch, width, height);
    return;
  }
  glDrawElements(batch.lines ? GL_LINES : GL_TRIANGLES, static_cast<GLsizei>(batch.indices.size()),
                 GL_UNSIGNED_INT, batch.indices.data());
}

// Draws the batches for which `blended` gives `pass` into a buffer of
// `width` x `height`.
void DrawPass(const oxRenderScene& scene, bool pass, TextureCache& textures, int width,
              int height) {
  for (const oxRenderBatch& batch : scene.batches) {
    if (batch.indices.empty() || scene.IsBlended(batch) != pass) continue;
    UseMaterial(scene.materials[batch.material], batch, textures);
    DrawElements(batch, width, height);
  }
}

// The triangles of the batches of `scene` (the opaque ones alone when
// `opaqueOnly`) by their positions only: unlit, untextured, in the current
// colour.
void DrawPlainTriangles(const oxRenderScene& scene, bool opaqueOnly) {
  glDisable(GL_LIGHTING);
  glDisable(GL_TEXTURE_2D);
  glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  glDisableClientState(GL_NORMAL_ARRAY);
  glEnableClientState(GL_VERTEX_ARRAY);
  for (const oxRenderBatch& batch : scene.batches) {
    if (batch.lines || batch.indices.empty() || (opaqueOnly && scene.IsBlended(batch))) continue;
    glVertexPointer(3, GL_FLOAT, 0, batch.vertices->positions.data());
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(batch.indices.size()), GL_UNSIGNED_INT,
                   batch.indices.data());
  }
}

// Every triangle's edges, dark and unlit, over what is drawn.
void DrawEdges(const oxRenderScene& scene) {
  glColor4fv(kEdgeColor);
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  DrawPlainTriangles(scene, false);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

// Draws `scene` into the current context's buffer of `width` x `height`.
void DrawCurrent(const oxRenderScene& scene, const oxRenderView& view, const oxDrawOptions& options,
                 int width, int height) {
  TextureCache textures;
  SetUpState(view, width, height);
  glEnableClientState(GL_VERTEX_ARRAY);
  if (options.wireframe) {
    // Surfaces step back a little so that their edges win the depth test.
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.0f, 1.0f);
  }
  DrawPass(scene, false, textures, width, height);
  glEnable(GL_BLEND);
  glDepthMask(GL_FALSE);
  DrawPass(scene, true, textures, width, height);
  glDepthMask(GL_TRUE);
  glDisable(GL_BLEND);
  glDisable(GL_POLYGON_OFFSET_FILL);
  if (options.wireframe) DrawEdges(scene);
  glFinish();
}

// Draws the depth of the opaque triangles of `scene`, writing no colour,
// and reads the depth buffer into `depths`.
void DrawDepths(const oxRenderScene& scene, const oxRenderView& view, int width, int height,
                float* depths) {
  SetUpState(view, width, height);
  glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  DrawPlainTriangles(scene, true);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, width, height, GL_DEPTH_COMPONENT, GL_FLOAT, depths);
}

// The context oxRenderGLWarmUp made, with the colour buffer it drew into
// at the size asked for, and that size (no size when none was asked for
// or the context could not draw at it).
struct WarmContext {
  OSMesaContext context = nullptr;
  std::vector<uint8_t> buffer;
  int width = 0;
  int height = 0;
};

// The warm context, until oxRenderGLCreate takes it.
std::mutex g_warmLock;
WarmContext g_warm;

WarmContext TakeWarmContext() {
  const std::lock_guard<std::mutex> lock(g_warmLock);
  return std::exchange(g_warm, WarmContext{});
}

// Draws one lit, opaque triangle with the current context into a picture
// of `width` x `height`, then the triangle's depth alone.
void DrawWarmUpTriangle(int width, int height) {
  auto vertices = std::make_shared<oxRenderVertices>();
  vertices->positions.assign({-1.0f, -1.0f, 0.0f, 1.0f, -1.0f, 0.0f, -1.0f, 1.0f, 0.0f});
  vertices->normals.assign({0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f});
  oxRenderScene scene;
  scene.batches.push_back({vertices, {}, false, 0, {}});
  scene.batches.back().indices.assign({0, 1, 2});
  DrawCurrent(scene, oxRenderView{}, oxDrawOptions{}, width, height);
  std::vector<float> depths(static_cast<size_t>(width) * static_cast<size_t>(height));
  DrawDepths(scene, oxRenderView{}, width, height, depths.data());
}

}  // namespace

// The context and its colour buffer, behind the module's C entry points.
struct GLContext {
  OSMesaContext context = nullptr;
  int width = 0;
  int height = 0;
  std::vector<uint8_t> buffer;
  // The buffer the warm-up last drew into, when of another size: the
  // context may keep its address until it is next made current, so it
  // lives as long as the context. Empty otherwise.
  std::vector<uint8_t> warmBuffer;
};

}  // namespace OxDAERender

using OxDAERender::GLContext;

// The entry points oxOffscreenRenderer looks up after loading this module
// (see oxOffscreenRenderer.cpp): OSMesa and the LLVM it brings are mapped
// only by processes that draw.
extern "C" {

// Makes a context and draws one lit, opaque triangle with it into a few
// pixels, then the triangle's depth alone (the drawing before culling),
// then lets go of it for the next renderer made, on whatever thread. A
// context's first drawing compiles the programs its state needs (about
// 0.1 s of LLVM); done here, on a thread of its own, that overlaps the
// loading of the document. With a size in range, the same is drawn again
// at `width` x `height`: the context's buffers of that size are then made
// and written once here, and the next renderer of that size takes the
// colour buffer drawn into too. On a virtual machine a fresh page can
// cost some 10 microseconds at its first write, a few milliseconds per
// picture-sized buffer, which the picture would otherwise wait for. Logs
// nothing.
__attribute__((visibility("default"))) void oxRenderGLWarmUp(int width, int height) {
  using namespace OxDAERender;
  WarmContext warm;
  warm.context = OSMesaCreateContextExt(OSMESA_RGBA, 24, 0, 0, nullptr);
  if (!warm.context) return;
  constexpr int kSide = 4;
  // The context may keep the buffer's address until it is next made current.
  static uint8_t pixels[kSide * kSide * 4];
  if (OSMesaMakeCurrent(warm.context, pixels, GL_UNSIGNED_BYTE, kSide, kSide))
    DrawWarmUpTriangle(kSide, kSide);
  if (width >= 1 && height >= 1 && width <= kMaxSide && height <= kMaxSide) {
    warm.buffer.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    if (OSMesaMakeCurrent(warm.context, warm.buffer.data(), GL_UNSIGNED_BYTE, width, height)) {
      DrawWarmUpTriangle(width, height);
      warm.width = width;
      warm.height = height;
    }
  }
  OSMesaMakeCurrent(nullptr, nullptr, 0, 0, 0);
  const std::lock_guard<std::mutex> lock(g_warmLock);
  // A context warmed up before and never taken goes before its buffer.
  const WarmContext unused = std::exchange(g_warm, std::move(warm));
  if (unused.context) OSMesaDestroyContext(unused.context);
}

// A context for pictures of `width` x `height`: the warmed-up one when there
// is one (with its colour buffer when warmed up at this size), else a new
// one. Null when the size is out of range or OSMesa cannot make a context.
__attribute__((visibility("default"))) void* oxRenderGLCreate(int width, int height) {
  if (width < 1 || height < 1 || width > OxDAERender::kMaxSide || height > OxDAERender::kMaxSide)
    return nullptr;
  auto context = std::make_unique<GLContext>();
  OxDAERender::WarmContext warm = OxDAERender::TakeWarmContext();
  context->context = warm.context;
  if (!context->context) context->context = OSMesaCreateContextExt(OSMESA_RGBA, 24, 0, 0, nullptr);
  if (!context->context) return nullptr;
  context->width = width;
  context->height = height;
  if (warm.width == width && warm.height == height) {
    context->buffer = std::move(warm.buffer);
  } else {
    context->warmBuffer = std::move(warm.buffer);
  }
  context->buffer.resize(static_cast<size_t>(width) * height * 4);
  return context.release();
}

__attribute__((visibility("default"))) void oxRenderGLDestroy(void* handle) {
  auto* context = static_cast<GLContext*>(handle);
  if (context && context->context) OSMesaDestroyContext(context->context);
  delete context;
}

// Draws into the context's buffer (rows bottom up, RGBA) and returns it, or
// null when the context cannot be made current.
__attribute__((visibility("default"))) const uint8_t* oxRenderGLDraw(
    void* handle, const OxDAERender::oxRenderScene* scene, const OxDAERender::oxRenderView* view,
    const OxDAERender::oxDrawOptions* options) {
  GLContext& c = *static_cast<GLContext*>(handle);
  if (!OSMesaMakeCurrent(c.context, c.buffer.data(), GL_UNSIGNED_BYTE, c.width, c.height))
    return nullptr;
  OxDAERender::DrawCurrent(*scene, *view, *options, c.width, c.height);
  return c.buffer.data();
}

// Draws the opaque triangles of `scene` into the depth buffer alone and
// copies it to `depths` (width x height values, 0 at the near plane and 1
// at the far one, the bottom row first). False when the context cannot be
// made current.
__attribute__((visibility("default"))) bool oxRenderGLDepths(
    void* handle, const OxDAERender::oxRenderScene* scene, const OxDAERender::oxRenderView* view,
    float* depths) {
  GLContext& c = *static_cast<GLContext*>(handle);
  if (!OSMesaMakeCurrent(c.context, c.buffer.data(), GL_UNSIGNED_BYTE, c.width, c.height))
    return false;
  OxDAERender::DrawDepths(*scene, *view, c.width, c.height, depths);
  return true;
}

}  // extern "C"
