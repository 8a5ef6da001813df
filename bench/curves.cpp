// What do operations on curves cost that grow with the number of points or segments: fits of waves, simplification,
// offsets, distances? No peer answers the same questions: other packages simplify greedily, and offset polygons only.

#include <cmath>
#include <memory>

#include "inputs.h"
#include "nu/association/association.h"
#include "nu/curves/composite_curve.h"
#include "nu/curves/cosine_curve.h"
#include "nu/curves/line_segment.h"
#include "nu/curves/polyline.h"
#include "nu/curves/simplified_curve.h"
#include "nu/curves/sine_curve.h"
#include "nu/linalg/vector.h"
#include "nu/surfaces/torus.h"
#include "question.h"

namespace {

using bench::Cloud;
using bench::Dice;
using bench::Numbers;
using bench::Question;

constexpr double kTolerance = 1e-9;
constexpr long kSteps = 1000;
const std::vector<int> kSizes = {1000, 10000, 100000};
const std::vector<int> kLargeSizes = {1000, 100000, 1000000};

const auto kSame = [](const Numbers& numbers) { return numbers; };
const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };

// Some thousand samples of each wave of a ground surface.
Cloud Waves(int n) {
  int k = 0;
  return bench::Scatter(n, 151, [&](Dice& d) {
    const double x = 0.01 * k++;
    return bench::Xyz{x, 0.8 * std::sin(1.7 * x + 0.3) + 2 + d.Normal(bench::kNoise), 0};
  });
}

// The profile of a part: a closed outline with waves, and the tolerance of a drawing.
constexpr double kDrawn = 0.01;
Cloud Outline(int n) {
  int k = 0;
  return bench::Scatter(n, 152, [&](Dice&) {
    const double turn = bench::kTwoPi * k++ / n, radius = 50 + 3 * std::cos(5 * turn);
    return bench::Xyz{radius * std::cos(turn), radius * std::sin(turn), 0};
  });
}

// A pipe bend, two thirds around and of its section.
Cloud Bend(int n) {
  return bench::Scatter(n, 153, [](Dice& d) {
    const double around = d.Between(0, bench::kTwoPi * 2 / 3), turn = d.Between(0, bench::kTwoPi * 2 / 3);
    const double minor = 10 + d.Normal(bench::kNoise), across = 40 + minor * std::cos(turn);
    return bench::OnTable(across * std::cos(around), across * std::sin(around), minor * std::sin(turn));
  });
}

template<class Wave>
Numbers FitWave(const CNuPointArray& points) {
  Wave wave(1, 1, 0, 0);
  double form, squares;
  wave.Fit(points, &form, &squares, kSteps);
  return {form, squares};
}

Numbers FitTorus(const CNuPointArray& points) {
  CNuTorSurf torus(2, 1);
  CNuAssociation(points).Fit(NuLeastSquares, &torus);
  return {torus.GetMajorRadius(), torus.GetMinorRadius()};
}

Numbers Simplify(const CNuPointArray& points) {
  const CNuSimplifiedCurve curve(points, kDrawn);
  return {static_cast<double>(curve.GetSize())};
}

Numbers Offset(const CNuPolyline& line) {
  CNuPolyline outline(line);
  const std::unique_ptr<CNuBoundedCurve> result(outline.Offset(-1.0, CNuVector(0, 0, 1), 1));
  return {result->Length()};
}

CNuCompositeCurve ToComposite(const Cloud& cloud) {
  const CNuPointArray points = bench::ToPoints(cloud);
  CNuCompositeCurve curve;
  for (int i = 1; i < points.GetSize(); ++i) {
    curve.AddSegment(CNuLineSegment(points.GetData()[i - 1], points.GetData()[i]), NuTrue);
  }
  return curve;
}

struct TwoCurves {
  CNuCompositeCurve first, second;
};

TwoCurves Apart(const Cloud& cloud) {
  Cloud moved = cloud;
  for (bench::Xyz& p : moved) p.x += 120;
  return {ToComposite(cloud), ToComposite(moved)};
}

Numbers DistanceBetween(const TwoCurves& curves) {
  CNuPoint p, q;
  return {curves.first.DistanceTo(&curves.second, &p, &q)};
}

const bool kAsked = [] {
  Question<Cloud>("fit_sine", kTolerance, Waves).Ask("nu", kPoints, FitWave<CNuSineCurve>, kSame).Over(kLargeSizes);
  Question<Cloud>("fit_cosine", kTolerance, Waves).Ask("nu", kPoints, FitWave<CNuCosineCurve>, kSame).Over({100000});
  Question<Cloud>("fit_torus", kTolerance, Bend).Ask("nu", kPoints, FitTorus, kSame).Over(kLargeSizes);
  Question<Cloud>("simplify", kTolerance, Outline).Ask("nu", kPoints, Simplify, kSame).Over(kLargeSizes);
  const auto polyline = [](const Cloud& cloud) { return CNuPolyline(bench::ToPoints(cloud)); };
  Question<Cloud>("offset", kTolerance, Outline).Ask("nu", polyline, Offset, kSame).Over(kSizes);
  Question<Cloud>("distance_of_curves", kTolerance, Outline).Ask("nu", Apart, DistanceBetween, kSame).Over(kSizes);
  return true;
}();

}  // namespace
