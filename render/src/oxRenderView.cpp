#include "oxDAERender/oxRenderView.h"

#include <algorithm>
#include <cmath>

namespace OxDAERender {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kAutoFov = 40.0;      // vertical field of view of the automatic view, degrees
constexpr double kAutoAzimuth = 45.0;  // from the front towards the right, degrees
constexpr double kAutoElevation = 30.0;
constexpr double kDefaultFov = 45.0;   // a perspective camera that gives no angle
constexpr double kFrameMargin = 1.05;  // room around the framed sphere

using Vec3 = std::array<double, 3>;

Vec3 Add(const Vec3& a, const Vec3& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Vec3 Scale(const Vec3& a, double s) {
  return {a[0] * s, a[1] * s, a[2] * s};
}
Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Dot(const Vec3& a, const Vec3& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Vec3 Normalised(const Vec3& a) {
  const double length = std::sqrt(Dot(a, a));
  return length > 0 ? Scale(a, 1.0 / length) : a;
}

// The sphere around the scene's bounds; a unit sphere at the origin for an
// empty scene, and at least a tiny one for a single point.
struct Sphere {
  Vec3 centre = {0, 0, 0};
  double radius = 1.0;
};

Sphere BoundingSphere(const oxRenderScene& scene) {
  if (scene.IsEmpty()) return {};
  Sphere sphere;
  Vec3 half;
  for (int i = 0; i < 3; ++i) {
    sphere.centre[i] = (double{scene.boundsMin[i]} + scene.boundsMax[i]) / 2;
    half[i] = (double{scene.boundsMax[i]} - scene.boundsMin[i]) / 2;
  }
  sphere.radius = std::max(std::sqrt(Dot(half, half)), 1e-6);
  return sphere;
}

// The view matrix of an eye at `eye` looking at `centre` with `up` up.
oxGLMatrix LookAt(const Vec3& eye, const Vec3& centre, const Vec3& up) {
  const Vec3 forward = Normalised(Add(centre, Scale(eye, -1)));
  const Vec3 side = Normalised(Cross(forward, up));
  const Vec3 upright = Cross(side, forward);
  return {side[0],         upright[0],         -forward[0],       0,
          side[1],         upright[1],         -forward[1],       0,
          side[2],         upright[2],         -forward[2],       0,
          -Dot(side, eye), -Dot(upright, eye), Dot(forward, eye), 1};
}

oxGLMatrix Perspective(double fovY, double aspect, double zNear, double zFar) {
  const double f = 1.0 / std::tan(fovY * kPi / 360.0);
  oxGLMatrix m = {};
  m[0] = f / aspect;
  m[5] = f;
  m[10] = (zFar + zNear) / (zNear - zFar);
  m[11] = -1;
  m[14] = 2 * zFar * zNear / (zNear - zFar);
  return m;
}

oxGLMatrix Orthographic(double halfWidth, double halfHeight, double zNear, double zFar) {
  oxGLMatrix m = kGLIdentity;
  m[0] = 1 / halfWidth;
  m[5] = 1 / halfHeight;
  m[10] = -2 / (zFar - zNear);
  m[14] = -(zFar + zNear) / (zFar - zNear);
  return m;
}

// The up, front (towards the viewer) and right axes of the document's
// frame.
struct Frame {
  Vec3 up, front, right;
};

Frame FrameOf(oxUpAxis axis) {
  switch (axis) {
    case oxUpAxis::Z:
      return {{0, 0, 1}, {0, -1, 0}, {1, 0, 0}};
    case oxUpAxis::X:
      return {{1, 0, 0}, {0, 0, 1}, {0, -1, 0}};
    case oxUpAxis::Y:
      break;
  }
  return {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}};
}

oxRenderView AutomaticView(const oxRenderScene& scene, double aspect, bool yUp) {
  const Frame frame = FrameOf(yUp ? oxUpAxis::Y : scene.upAxis);
  const Sphere sphere = BoundingSphere(scene);
  const double azimuth = kAutoAzimuth * kPi / 180;
  const double elevation = kAutoElevation * kPi / 180;
  const Vec3 towardsEye =
      Add(Scale(Add(Scale(frame.right, std::sin(azimuth)), Scale(frame.front, std::cos(azimuth))),
                std::cos(elevation)),
          Scale(frame.up, std::sin(elevation)));
  // The narrower of the two angles decides how far back the sphere fits.
  const double halfY = kAutoFov * kPi / 360;
  const double halfX = std::atan(std::tan(halfY) * aspect);
  const double distance = sphere.radius * kFrameMargin / std::sin(std::min(halfX, halfY));
  oxRenderView view;
  view.view = LookAt(Add(sphere.centre, Scale(towardsEye, distance)), sphere.centre, frame.up);
  view.projection =
      Perspective(kAutoFov, aspect, std::max(distance - sphere.radius * 1.5, distance * 1e-3),
                  distance + sphere.radius * 1.5);
  return view;
}

// The near and far planes of `camera`, fitted around the scene where the
// document leaves them out.
std::array<double, 2> DepthRange(const oxRenderCamera& camera, const oxGLMatrix& view,
                                 const Sphere& sphere) {
  // The distance of the sphere's centre in front of the eye.
  const double ahead = -(view[2] * sphere.centre[0] + view[6] * sphere.centre[1] +
                         view[10] * sphere.centre[2] + view[14]);
  double zFar = ahead + sphere.radius * 1.5;
  double zNear = std::max(ahead - sphere.radius * 1.5, std::max(zFar, 1.0) * 1e-4);
  if (camera.orthographic) zNear = ahead - sphere.radius * 1.5;
  if (camera.znear > 0 || (camera.orthographic && camera.znear >= 0)) zNear = camera.znear;
  if (camera.zfar > zNear) zFar = camera.zfar;
  if (zFar <= zNear) zFar = zNear + 1;
  return {zNear, zFar};
}

oxRenderView CameraView(const oxRenderScene& scene, const oxRenderCamera& camera, double aspect) {
  oxGLMatrix world;
  std::copy(std::begin(camera.world.m), std::end(camera.world.m), world.begin());
  oxRenderView view;
  view.view = Inverse(world);
  const Sphere sphere = BoundingSphere(scene);
  const auto [zNear, zFar] = DepthRange(camera, view.view, sphere);
  if (camera.orthographic) {
    double halfHeight = camera.ymag > 0 ? camera.ymag : camera.xmag / aspect;
    if (!(halfHeight > 0)) halfHeight = sphere.radius;
    view.projection = Orthographic(halfHeight * aspect, halfHeight, zNear, zFar);
    return view;
  }
  double fovY = kDefaultFov;
  if (camera.yfov > 0 && camera.yfov < 180) {
    fovY = camera.yfov;
  } else if (camera.xfov > 0 && camera.xfov < 180) {
    fovY = 2 * std::atan(std::tan(camera.xfov * kPi / 360) / aspect) * 180 / kPi;
  }
  view.projection = Perspective(fovY, aspect, zNear, zFar);
  return view;
}

}  // namespace

oxRenderView ViewOf(const oxRenderScene& scene, int width, int height, bool yUp) {
  const double aspect = static_cast<double>(width) / std::max(height, 1);
  if (scene.camera) return CameraView(scene, *scene.camera, aspect);
  return AutomaticView(scene, aspect, yUp);
}

oxGLMatrix Inverse(const oxGLMatrix& m) {
  // Gauss-Jordan elimination with partial pivoting on [m | I].
  double a[4][8];
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      a[r][c] = m[c * 4 + r];
      a[r][c + 4] = r == c ? 1.0 : 0.0;
    }
  }
  for (int column = 0; column < 4; ++column) {
    int pivot = column;
    for (int r = column + 1; r < 4; ++r) {
      if (std::fabs(a[r][column]) > std::fabs(a[pivot][column])) pivot = r;
    }
    if (std::fabs(a[pivot][column]) < 1e-300) return kGLIdentity;
    std::swap(a[pivot], a[column]);
    const double scale = 1.0 / a[column][column];
    for (double& value : a[column])
      value *= scale;
    for (int r = 0; r < 4; ++r) {
      if (r == column) continue;
      const double factor = a[r][column];
      for (int c = 0; c < 8; ++c)
        a[r][c] -= factor * a[column][c];
    }
  }
  oxGLMatrix inverse;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      inverse[c * 4 + r] = a[r][c + 4];
  }
  return inverse;
}

}  // namespace OxDAERender
