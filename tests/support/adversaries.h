#ifndef NU_TESTS_SUPPORT_ADVERSARIES_H
#define NU_TESTS_SUPPORT_ADVERSARIES_H

#include <cmath>
#include <utility>
#include <vector>

#include "support/clouds.h"

// Sets of n points that make the work of careless methods grow faster than n: no point can be dropped early, or all
// distances tie.
namespace nu::test {

using NamedPoints = std::pair<const char*, CNuPointArray>;

template<class PointOf>
CNuPointArray Made(int n, PointOf pointOf) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) points.Add(pointOf(i));
  return points;
}

inline std::vector<NamedPoints> Adversaries(int n) {
  constexpr double kGoldenAngle = 2.39996322972865332;
  Random random(61);
  const int side = static_cast<int>(std::ceil(std::cbrt(n)));
  std::vector<NamedPoints> sets;
  sets.emplace_back("sphere", Made(n, [&](int i) {
                      const double z = 1.0 - (2.0 * i + 1.0) / n, r = std::sqrt(1.0 - z * z);
                      return CNuPoint(r * std::cos(kGoldenAngle * i), r * std::sin(kGoldenAngle * i), z);
                    }));
  sets.emplace_back("circle", Made(n, [&](int i) {
                      const double t = 360.0 * kDegree * i / n;
                      return CNuPoint(std::cos(t), std::sin(t), 0.0);
                    }));
  sets.emplace_back("lattice", Made(n, [&](int i) { return CNuPoint(i % side, i / side % side, i / (side * side)); }));
  sets.emplace_back("clusters", Made(n, [&](int i) {
                      const CNuPoint p = RandomPoint(random, 1e-3);
                      return CNuPoint(p.x() + i % 2, p.y(), p.z());
                    }));
  sets.emplace_back("duplicates", Made(n, [&](int i) {
                      const int k = i % 16;
                      return CNuPoint(k % 4, k / 4, k % 3);
                    }));
  sets.emplace_back("spiral", Made(n, [&](int i) {
                      const double t = 60.0 * kDegree * std::sqrt(static_cast<double>(i));
                      return CNuPoint(t * std::cos(t), t * std::sin(t), 0.01 * t);
                    }));
  sets.emplace_back("outliers", Made(n, [&](int i) {
                      // The same few for every n; all are about as far from each other as from the many.
                      const double far[4][2] = {{-4.3e5, 7e4}, {-4.7e5, -5e4}, {-4.4e5, 1.9e5}, {-3.1e5, -5.3e5}};
                      const int each = n / 4 + 1;
                      const CNuPoint p = RandomPoint(random, 1.0);
                      if (i % each != n / 8) return p;
                      return CNuPoint(far[i / each][0], far[i / each][1], p.z());
                    }));
  sets.emplace_back("ellipse", Made(n, [&](int i) {
                      const double t = 360.0 * kDegree * i / n;
                      return CNuPoint(10.0 * std::cos(t), 0.1 * std::sin(t), 0.0);
                    }));
  sets.emplace_back("oval", Made(n, [&](int i) {
                      const double t = 360.0 * kDegree * i / n;
                      return CNuPoint(10.0 * std::cos(t), 3.2 * std::sin(t), 0.0);
                    }));
  return sets;
}

}  // namespace nu::test

#endif
