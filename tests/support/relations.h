#ifndef NU_TESTS_SUPPORT_RELATIONS_H
#define NU_TESTS_SUPPORT_RELATIONS_H

#include <cmath>
#include <tuple>

#include "nu/nu.h"

// All pairs of features that may have a relation, for laws that hold for every relation there is.
namespace nu::test {

inline const CNuVector kAxis(1, 2, 3), kAcross(3, 0, -1), kOther(2, -1, 1);

// A feature, of the same size and direction wherever it is placed.
template<class At>
struct Placed {
  Placed(const char* text, At function) : name(text), at(function) {}
  const char* name;
  At at;
};

inline const auto kFirstFeatures = std::tuple{
    Placed("point", [](const CNuPoint& p) { return p; }),
    Placed("line", [](const CNuPoint& p) { return CNuLine(p, kAxis); }),
    Placed("plane", [](const CNuPoint& p) { return CNuPlane(p, kOther); }),
    Placed("circle", [](const CNuPoint& p) { return CNuCircle(2, p, kOther); }),
    Placed("ellipse", [](const CNuPoint& p) { return CNuEllipse(2, 1, p, kOther); }),
    Placed("hyperbola", [](const CNuPoint& p) { return CNuHyperbola(2, 1, p, kOther); }),
    Placed("parabola", [](const CNuPoint& p) { return CNuParabola(2, p, kOther); }),
    Placed("sphere", [](const CNuPoint& p) { return CNuSphSurf(2, p); }),
    Placed("cylinder", [](const CNuPoint& p) { return CNuCylSurf(2, p, kOther); }),
    Placed("cone", [](const CNuPoint& p) { return CNuConSurf(30, p, kOther); }),
    Placed("torus", [](const CNuPoint& p) { return CNuTorSurf(3, 1, p, kOther); }),
};

inline const auto kSecondFeatures = std::tuple_cat(
    kFirstFeatures,
    std::tuple{Placed("line across", [](const CNuPoint& p) { return CNuLine(p, kOther); }),
               Placed("plane across", [](const CNuPoint& p) { return CNuPlane(p, kAxis); }),
               Placed("plane along", [](const CNuPoint& p) { return CNuPlane(p, kAcross); }),
               Placed("large circle", [](const CNuPoint& p) { return CNuCircle(1e308, p, kAxis); }),
               Placed("thin cylinder", [](const CNuPoint& p) { return CNuCylSurf(1, p, kAxis); }),
               Placed("needle", [](const CNuPoint& p) { return CNuConSurf(1e-320, p, kAxis); }),
               Placed("flat cone", [](const CNuPoint& p) { return CNuConSurf(std::nextafter(90.0, 0.0), p, kAxis); })});

template<class Visit>
void ForAllPairs(Visit visit) {
  const auto withAll = [&](const auto& first) {
    std::apply([&](const auto&... second) { (visit(first, second), ...); }, kSecondFeatures);
  };
  std::apply([&](const auto&... first) { (withAll(first), ...); }, kFirstFeatures);
}

}  // namespace nu::test

#endif
