#ifndef NU_TESTS_SUPPORT_CLOUDS_H
#define NU_TESTS_SUPPORT_CLOUDS_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <random>
#include <utility>

#include "nu/geometry/point.h"
#include "nu/geometry/point_array.h"
#include "nu/linalg/vector.h"

// Seeded clouds of points, the same on every platform: the distributions of the standard library are not.
namespace nu::test {

inline constexpr double kDegree = 3.14159265358979323846 / 180.0;
inline constexpr double kEps = std::numeric_limits<double>::epsilon();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class Random {
 public:
  explicit Random(std::uint64_t seed) : m_engine(seed) {}

  double Uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(m_engine() >> 11) * 0x1p-53);
  }
  // Mean 0, standard deviation 1; a sum of twelve, so never beyond 6.
  double Bell() {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i) sum += Uniform(0.0, 1.0);
    return sum;
  }
  // 0 to count - 1.
  int Below(int count) { return static_cast<int>(m_engine() % static_cast<std::uint64_t>(count)); }

 private:
  std::mt19937_64 m_engine;
};

// A rotation followed by a shift.
struct Motion {
  double rows[3][3];
  double shift[3];

  CNuPoint Direction(const CNuPoint& v) const {
    double w[3];
    for (int i = 0; i < 3; ++i) w[i] = rows[i][0] * v.x() + rows[i][1] * v.y() + rows[i][2] * v.z();
    return {w[0], w[1], w[2]};
  }
  CNuPoint operator()(const CNuPoint& p) const { return Direction(p) + CNuPoint(shift[0], shift[1], shift[2]); }
  CNuPointArray operator()(const CNuPointArray& points) const {
    CNuPointArray moved(points.GetSize());
    for (int i = 0; i < points.GetSize(); ++i) moved.Add((*this)(points[i]));
    return moved;
  }
};

// Every rotation is as likely as any other (a unit quaternion); the shift is up to `reach` along each axis.
inline Motion RandomMotion(Random& random, double reach) {
  double q[4] = {};
  double norm = 0.0;
  while (norm < 0.1 || norm > 1.0) {
    norm = 0.0;
    for (double& c : q) c = random.Uniform(-1.0, 1.0), norm += c * c;
  }
  for (double& c : q) c /= std::sqrt(norm);
  const auto [w, x, y, z] = q;
  Motion m{{{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
            {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
            {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}},
           {}};
  for (double& s : m.shift) s = random.Uniform(-reach, reach);
  return m;
}

// Along x, centred, with noise across.
inline CNuPointArray LineCloud(Random& random, int n, double length, double noise) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double x = random.Uniform(-0.5, 0.5) * length;
    points.Add({x, noise * random.Bell(), noise * random.Bell()});
  }
  return points;
}

// A rectangle in z = 0 with noise along z.
inline CNuPointArray PlaneCloud(Random& random, int n, double length, double width, double noise) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double x = random.Uniform(-0.5, 0.5) * length;
    const double y = random.Uniform(-0.5, 0.5) * width;
    points.Add({x, y, noise * random.Bell()});
  }
  return points;
}

// An arc from 0 to `sweep` degrees about the z axis, with radial noise and noise along z.
inline CNuPointArray CircleCloud(Random& random, int n, double radius, double sweep, double noise,
                                 double noiseZ = 0.0) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double angle = random.Uniform(0.0, sweep) * kDegree;
    const double r = radius + noise * random.Bell();
    points.Add({r * std::cos(angle), r * std::sin(angle), noiseZ * random.Bell()});
  }
  return points;
}

// A cap of half angle `cap` degrees about the z axis (180: all of the sphere), evenly, with radial noise.
inline CNuPointArray SphereCloud(Random& random, int n, double radius, double cap, double noise) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double c = random.Uniform(std::cos(cap * kDegree), 1.0);
    const double s = std::sqrt(std::max(0.0, 1.0 - c * c));
    const double angle = random.Uniform(0.0, 360.0) * kDegree;
    const double r = radius + noise * random.Bell();
    points.Add({r * s * std::cos(angle), r * s * std::sin(angle), r * c});
  }
  return points;
}

// Two arcs of circles of latitude on a sphere, with radial noise: they lie near a cone and a torus, too.
inline CNuPointArray TwoArcsCloud(Random& random, int n, double radius, double noise) {
  double height[2], first[2], sweep[2];
  for (int k = 0; k < 2; ++k) {
    height[k] = random.Uniform(-0.95, 0.95);
    first[k] = random.Uniform(0.0, 360.0);
    sweep[k] = random.Uniform(5.0, 360.0);
  }
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const int k = i % 2;
    const double angle = (first[k] + random.Uniform(0.0, sweep[k])) * kDegree;
    const double r = radius + noise * random.Bell();
    const double s = std::sqrt(1.0 - height[k] * height[k]);
    points.Add({r * s * std::cos(angle), r * s * std::sin(angle), r * height[k]});
  }
  return points;
}

// A strip from 0 to `sweep` degrees about the z axis, centred along it, with radial noise.
inline CNuPointArray CylinderCloud(Random& random, int n, double radius, double length, double sweep, double noise) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double angle = random.Uniform(0.0, sweep) * kDegree;
    const double r = radius + noise * random.Bell();
    points.Add({r * std::cos(angle), r * std::sin(angle), random.Uniform(-0.5, 0.5) * length});
  }
  return points;
}

// A tube about the z axis, from 0 to `sweep` degrees around it, with `girth` degrees of its section about the outermost
// line, and noise across the tube.
inline CNuPointArray TorusCloud(Random& random, int n, double major, double minor, double sweep, double girth,
                                double noise) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double angle = random.Uniform(0.0, sweep) * kDegree;
    const double turn = random.Uniform(-0.5, 0.5) * girth * kDegree;
    const double r = minor + noise * random.Bell();
    const double rho = major + r * std::cos(turn);
    points.Add({rho * std::cos(angle), rho * std::sin(angle), r * std::sin(turn)});
  }
  return points;
}

// A strip from 0 to `sweep` degrees of the cone about the z axis with its apex at the origin, with noise along its
// normal: `radius` in the middle of `length` along the generators.
inline CNuPointArray ConeCloud(Random& random, int n, double semiAngle, double radius, double length, double sweep,
                               double noise) {
  const double c = std::cos(semiAngle * kDegree);
  const double s = std::sin(semiAngle * kDegree);
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double angle = random.Uniform(0.0, sweep) * kDegree;
    const double along = radius / s + random.Uniform(-0.5, 0.5) * length;
    const double out = noise * random.Bell();
    const double r = along * s + out * c;
    points.Add({r * std::cos(angle), r * std::sin(angle), along * c - out * s});
  }
  return points;
}

// Evenly in a box about the origin.
inline CNuPointArray BoxCloud(Random& random, int n, double dx, double dy, double dz) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double x = random.Uniform(-0.5, 0.5) * dx;
    const double y = random.Uniform(-0.5, 0.5) * dy;
    points.Add({x, y, random.Uniform(-0.5, 0.5) * dz});
  }
  return points;
}

// Evenly in a cube about the origin.
inline CNuPoint RandomPoint(Random& random, double reach) {
  const double x = random.Uniform(-reach, reach);
  const double y = random.Uniform(-reach, reach);
  return {x, y, random.Uniform(-reach, reach)};
}

// By any factor: the product of a point refuses large ones.
inline CNuPoint Along(const CNuPoint& p, const CNuVector& direction, double t = 1.0) {
  return {p.x() + t * direction[0], p.y() + t * direction[1], p.z() + t * direction[2]};
}

inline CNuPointArray PointsOf(std::initializer_list<CNuPoint> list) {
  CNuPointArray points(static_cast<int>(list.size()));
  for (const CNuPoint& p : list) points.Add(p);
  return points;
}

inline CNuPointArray Scaled(CNuPointArray points, double factor) {
  for (int i = 0; i < points.GetSize(); ++i)
    points[i] = {points[i].x() * factor, points[i].y() * factor, points[i].z() * factor};
  return points;
}

inline CNuPointArray Shuffled(Random& random, CNuPointArray points) {
  for (int i = points.GetSize() - 1; i > 0; --i) CNuPoint::Swap(points[i], points[random.Below(i + 1)]);
  return points;
}

}  // namespace nu::test

#endif
