// The memory that calls on a million points take beyond their input, at its peak: what operator new hands out, in MB.

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "../inputs.h"
#include "nu/curves/circle.h"
#include "nu/curves/ellipse.h"
#include "nu/curves/sine_curve.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/int_array.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"
#include "nu/surfaces/torus.h"

namespace {

std::size_t g_now = 0;
std::size_t g_peak = 0;

void* Taken(void* memory) {
  if (memory) g_peak = std::max(g_peak, g_now += malloc_usable_size(memory));
  return memory;
}

void Return(void* memory) {
  if (memory) g_now -= malloc_usable_size(memory);
  std::free(memory);
}

void* OrThrow(void* memory) {
  if (!memory) throw std::bad_alloc();
  return Taken(memory);
}

std::size_t WholeLines(std::size_t size, std::align_val_t alignment) {
  const std::size_t line = static_cast<std::size_t>(alignment);
  return (size + line - 1) / line * line;
}

constexpr int kPoints = 1'000'000;
constexpr long kSteps = 1000;
constexpr double kTol = 1e-9;

template<class Run>
void Measure(const char* name, const CNuPointArray& points, Run run) {
  const std::size_t before = g_now;
  g_peak = g_now;
  try {
    run(points);
  } catch (const CNuException&) {
    std::printf("| %s | refused |\n", name);
    return;
  }
  std::printf("| %s | %.1f |\n", name, static_cast<double>(g_peak - before) / 1e6);
  std::fflush(stdout);
}

// Some 60,000 samples a period.
CNuPointArray Wave() {
  bench::Dice dice(191);
  CNuPointArray points(kPoints);
  for (int i = 0; i < kPoints; ++i) {
    const double x = 1e-4 * i;
    points.Add(CNuPoint(x, std::sin(x) + dice.Normal(bench::kNoise), 0));
  }
  return points;
}

void MeasureLeastSquares() {
  double form = 0.0;
  double squares = 0.0;
  const auto fit = [&](auto feature) {
    return [=](const auto& p) mutable { feature.Fit(p, &form, &squares, kSteps); };
  };
  Measure("LS plane", bench::ToPoints(bench::Plate(kPoints)),
          [=](const auto& p) mutable { CNuPlane().Fit(p, &form, &squares); });
  Measure("LS line", bench::ToPoints(bench::Edge(kPoints)),
          [=](const auto& p) mutable { CNuLine().Fit(p, &form, &squares); });
  Measure("LS circle", bench::ToPoints(bench::Bore(kPoints)), fit(CNuCircle(1.0)));
  Measure("LS sphere", bench::ToPoints(bench::Dome(kPoints)), fit(CNuSphSurf(1.0)));
  Measure("LS cylinder", bench::ToPoints(bench::Shaft(kPoints)), fit(CNuCylSurf(1.0)));
  Measure("LS cone", bench::ToPoints(bench::Taper(kPoints)), fit(CNuConSurf(30.0)));
  Measure("LS ellipse", bench::ToPoints(bench::Oval(kPoints)), fit(CNuEllipse(2.0, 1.0)));
  Measure("LS sine curve", Wave(), fit(CNuSineCurve(1, 1, 0, 0)));
}

CNuPointArray Lattice() {
  constexpr int kSide = 1000;
  CNuPointArray points(kPoints);
  for (int i = 0; i < kPoints; ++i) points.Add(CNuPoint(i % kSide, i / kSide, 0));
  return points;
}

void MeasureZones() {
  double form = 0.0;
  const auto zone = [&](auto feature) {
    return [=](const auto& p) mutable { feature.FitMinZone(p, &form, kTol, kSteps); };
  };
  Measure("zone of a plane", bench::ToPoints(bench::Plate(kPoints)),
          [=](const auto& p) mutable { CNuPlane().FitMinZone(p, &form, kTol); });
  Measure("zone of a line", bench::ToPoints(bench::Edge(kPoints)), zone(CNuLine()));
  Measure("zone of a circle", bench::ToPoints(bench::Ring(kPoints)), zone(CNuCircle(1.0)));
  Measure("zone of a sphere", bench::ToPoints(bench::Shell(kPoints)), zone(CNuSphSurf(1.0)));
  Measure("zone of a cylinder", bench::ToPoints(bench::Shaft(kPoints)), zone(CNuCylSurf(1.0)));
  Measure("zone of a cone", bench::ToPoints(bench::Taper(kPoints)), zone(CNuConSurf(30.0)));
  Measure("enclosing circle", bench::ToPoints(bench::Disk(kPoints)),
          [](const auto& p) { CNuCircle(1.0).FitMin(p, kTol); });
  Measure("inscribed circle", bench::ToPoints(bench::Ring(kPoints)),
          [](const auto& p) { CNuCircle(1.0).FitMax(p, kTol); });
  Measure("inscribed circle of a lattice", Lattice(), [](const auto& p) { CNuCircle(1.0).FitMax(p, kTol); });
  Measure("enclosing sphere", bench::ToPoints(bench::Ball(kPoints)),
          [](const auto& p) { CNuSphSurf(1.0).FitMin(p, kTol); });
}

void MeasurePointSets() {
  int i = 0, j = 0;
  const CNuPointArray ball = bench::ToPoints(bench::Ball(kPoints));
  const auto hull = [](const auto& p) {
    CNuIntArray found(0);
    p.ConvexHull(&found);
  };
  Measure("hull of a disk", bench::ToPoints(bench::Disk(kPoints)), hull);
  Measure("hull of points in convex position", bench::ToPoints(bench::Round(kPoints)), hull);
  Measure("longest edge", ball, [=](const auto& p) mutable { p.MaxEdge(&i, &j); });
  Measure("shortest edge", ball, [=](const auto& p) mutable { p.MinEdge(&i, &j); });
  CNuPointArray copies = bench::ToPoints(bench::WithCopies(kPoints));
  Measure("duplicates, removed in place", copies, [&](const auto&) { copies.RemoveDuplicate(bench::kCopy); });
}

}  // namespace

void* operator new(std::size_t size) {
  return OrThrow(std::malloc(size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return OrThrow(std::aligned_alloc(static_cast<std::size_t>(alignment), WholeLines(size, alignment)));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Taken(std::malloc(size));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Taken(std::aligned_alloc(static_cast<std::size_t>(alignment), WholeLines(size, alignment)));
}
void operator delete(void* memory) noexcept {
  Return(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Return(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  Return(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  Return(memory);
}

int main() {
  MeasureLeastSquares();
  MeasureZones();
  MeasurePointSets();
  return 0;
}
