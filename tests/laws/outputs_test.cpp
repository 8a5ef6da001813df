#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <type_traits>
#include <vector>

#include "support/failures.h"
#include "support/fitted.h"
#include "support/relations.h"

// Every operation that returns results by pointers skips those that are null and stores the others as ever.
namespace {

using namespace nu::test;

template<class T>
T Fresh() {
  if constexpr (std::is_same_v<T, CNuObjArray> || std::is_same_v<T, CNuIntArray>)
    return T(4);
  else
    return Start<T>();
}

// Bits of a result, whatever it is.
void Append(std::vector<double>& v, const CNuPoint& p) {
  for (const double x : {p.x(), p.y(), p.z()}) v.push_back(x);
}
void Append(std::vector<double>& v, const CNuObjArray& a) {
  v.push_back(a.GetSize());
  for (int i = 0; i < a.GetSize(); ++i) delete a[i];
}
template<class T>
void Append(std::vector<double>& v, const T& result) {
  if constexpr (std::is_arithmetic_v<T>) {
    v.push_back(result);
  } else if constexpr (requires { result.GetSize(); }) {
    for (int i = 0; i < result.GetSize(); ++i) Append(v, result[i]);
  } else {
    Fitted f;
    Read(result, f);
    for (const double number : f.Numbers(1.0)) v.push_back(number);
  }
}

template<class T>
std::vector<double> BitsOf(const T& value) {
  std::vector<double> bits;
  Append(bits, value);
  return bits;
}

// `call` takes a pointer to each of Results and returns a number.
template<class... Results, class Call>
void ExpectNullsSkipped(const char* name, Call call) {
  constexpr unsigned kAll = (1u << sizeof...(Results)) - 1;
  std::vector<std::vector<double>> expected;
  double answer = 0.0;
  for (unsigned given = kAll + 1; given-- > 0;) {
    std::tuple<Results...> results{Fresh<Results>()...};
    unsigned bit = 1;
    const auto pointer = [&](auto& result) {
      const bool wanted = (given & bit) != 0;
      bit <<= 1;
      return wanted ? &result : nullptr;
    };
    const double found = std::apply(
        [&](auto&... result) {
          std::tuple<std::decay_t<decltype(result)>*...> pointers{pointer(result)...};
          return std::apply(call, pointers);
        },
        results);
    std::vector<std::vector<double>> bits;
    std::apply([&](auto&... result) { (bits.push_back(BitsOf(result)), ...); }, results);
    if (given == kAll) expected = bits, answer = found;
    EXPECT_EQ(found, answer) << name << " " << given;
    for (std::size_t k = 0; k < bits.size(); ++k)
      EXPECT_TRUE((given >> k & 1) == 0 || bits[k] == expected[k]) << name << " " << given << ", result " << k;
  }
}

constexpr long kLimit = 1000;

template<class Feature>
void FitIsAsked() {
  Random random(91);
  const CNuPointArray points = TypicalPoints<Feature>(random, 40);
  ExpectNullsSkipped<double, double>("fit", [&](double* form, double* sumsq) {
    Feature feature = Start<Feature>();
    if constexpr (requires { feature.FitEx(points, kLimit); })
      feature.Fit(points, form, sumsq, kLimit);
    else
      feature.Fit(points, form, sumsq);
    return 0;
  });
}

template<class Feature, class... Rest>
void ZoneIsAsked(Rest... rest) {
  Random random(92);
  const CNuPointArray points = TypicalPoints<Feature>(random, 40);
  ExpectNullsSkipped<double, Feature, Feature>("zone", [&](double* form, Feature* inner, Feature* outer) {
    Feature feature = Start<Feature>();
    feature.FitMinZone(points, form, inner, outer, rest...);
    return 0;
  });
  ExpectNullsSkipped<double>("zone", [&](double* form) {
    Feature feature = Start<Feature>();
    feature.FitMinZone(points, form, rest...);
    return 0;
  });
  // Outputs follow the feature in the order of the arguments: the last one that is an object is what it holds.
  Feature feature = Start<Feature>(), inner = feature, outer = feature, both = feature;
  feature.FitMinZone(points, nullptr, &inner, &outer, rest...);
  const std::vector<double> innerBits = BitsOf(inner), outerBits = BitsOf(outer);
  feature.FitMinZone(points, nullptr, &feature, &outer, rest...);
  EXPECT_EQ(BitsOf(feature), innerBits);
  feature.FitMinZone(points, nullptr, &inner, &feature, rest...);
  EXPECT_EQ(BitsOf(feature), outerBits);
  feature.FitMinZone(points, nullptr, &both, &both, rest...);
  EXPECT_EQ(BitsOf(both), outerBits);
}

TEST(Outputs, OfFitsMayBeNull) {
  FitIsAsked<CNuLine>(), FitIsAsked<CNuPlane>(), FitIsAsked<CNuCircle>(), FitIsAsked<CNuSphSurf>();
  FitIsAsked<CNuCylSurf>(), FitIsAsked<CNuConSurf>(), FitIsAsked<CNuEllipse>(), FitIsAsked<CNuHyperbola>();
  FitIsAsked<CNuParabola>(), FitIsAsked<CNuSineCurve>(), FitIsAsked<CNuCosineCurve>();
  ZoneIsAsked<CNuPlane>(1e-9), ZoneIsAsked<CNuLine>(1e-9, kLimit), ZoneIsAsked<CNuCircle>(1e-9, kLimit);
  ZoneIsAsked<CNuSphSurf>(1e-9, kLimit), ZoneIsAsked<CNuCylSurf>(1e-9, kLimit), ZoneIsAsked<CNuConSurf>(1e-9, kLimit);
}

// Objects with `GetData` of these results.
template<class... Results, class Object>
void DataIsAsked(const char* name, const Object& object) {
  ExpectNullsSkipped<Results...>(name, [&](auto*... results) { return object.GetData(results...), 0; });
}

TEST(Outputs, OfFeaturesAndSetsMayBeNull) {
  const CNuPoint p(1, 2, 3);
  const CNuVector up(0, 0, 1), x(1, 0, 0);
  DataIsAsked<double, double, double>("point", p);
  DataIsAsked<CNuPoint, CNuVector>("line", CNuLine(p, up));
  DataIsAsked<CNuPoint, CNuVector>("plane", CNuPlane(p, up));
  DataIsAsked<CNuPoint, CNuVector, CNuVector>("frame", CNuCartesianCoord());
  DataIsAsked<double, CNuPoint, CNuVector>("circle", CNuCircle(2, p, up));
  DataIsAsked<double, double, CNuPoint, CNuVector, CNuVector>("ellipse", CNuEllipse(2, 1));
  DataIsAsked<double, double, CNuPoint, CNuVector, CNuVector>("hyperbola", CNuHyperbola(2, 1));
  DataIsAsked<double, CNuPoint, CNuVector, CNuVector>("parabola", CNuParabola(2));
  DataIsAsked<double, double, double, double>("sine", CNuSineCurve(1, 2, 3, 4));
  DataIsAsked<double, double, double, double>("cosine", CNuCosineCurve(1, 2, 3, 4));
  DataIsAsked<double, CNuPoint>("sphere", CNuSphSurf(2, p));
  DataIsAsked<double, CNuPoint, CNuVector>("cylinder", CNuCylSurf(2, p, up));
  DataIsAsked<double, CNuPoint, CNuVector>("cone", CNuConSurf(20, p, up));
  DataIsAsked<double, double, CNuPoint, CNuVector>("torus", CNuTorSurf(3, 1, p, up));
  DataIsAsked<double, double>("complex", CNuComplex(1, 2));
  DataIsAsked<double, double>("polar", CNuComplexPolar(1, 2));
  DataIsAsked<double, double, double>("wave", CNuTriag(1, 2, 3));
  ExpectNullsSkipped<double, double>("cosine and sine", [](double* c, double* s) { return NuCosSin(1.0, c, s), 0; });
  ExpectNullsSkipped<CNuVector, CNuVector>("axes", [&](CNuVector* a, CNuVector* b) {
    CNuVector v(1, 2, 3);
    v.OrthonormalXY(a, b);
    v.OrthonormalX(a);
    v.Sort(nullptr);
    return 0;
  });
  Random random(92);
  const CNuPointArray flat = CircleCloud(random, 12, 5.0, 360.0, 0.1);
  const CNuPointArray box = BoxCloud(random, 12, 3.0, 2.0, 1.0);
  ExpectNullsSkipped<CNuIntArray>("hull", [&](CNuIntArray* hull) { return flat.ConvexHull(hull), 0; });
  ExpectNullsSkipped<CNuIntArray>("corners", [&](CNuIntArray* c) { return box.IsNoncoplanar(c, 1e-9); });
  ExpectNullsSkipped<CNuVector>("normal", [&](CNuVector* n) { return CNuGeometry::AreCollinear(box, n, 1e-9); });
  ExpectNullsSkipped<CNuPlane>("plane", [&](CNuPlane* pl) { return CNuGeometry::AreCoplanar(flat, pl, 1e-9); });
  ExpectNullsSkipped<CNuPoint, CNuPoint>("box", [&](CNuPoint* a, CNuPoint* b) { return box.BoundingBox(a, b), 0; });
  ExpectNullsSkipped<double, CNuPoint>("ball", [&](double* r, CNuPoint* c) { return box.BoundingSphere(r, c), 0; });
  EXPECT_EQ(box.MaxEdge(nullptr, nullptr) > box.MinEdge(nullptr, nullptr), true);
}

template<class Curve>
void CurveIsAsked(const char* name, const Curve& curve, const CNuBoundedCurve& other) {
  ExpectNullsSkipped<CNuPoint, CNuVector, CNuVector>(
      name, [&](CNuPoint* p, CNuVector* t, CNuVector* n) { return curve.GetStartData(p, t, n), 0; });
  ExpectNullsSkipped<CNuPoint, CNuVector, CNuVector>(
      name, [&](CNuPoint* p, CNuVector* t, CNuVector* n) { return curve.GetEndData(p, t, n), 0; });
  ExpectNullsSkipped<CNuPoint, CNuPoint>(name, [&](CNuPoint* a, CNuPoint* b) { return curve.BoundingBox(a, b), 0; });
  ExpectNullsSkipped<double, CNuPoint>(name, [&](double* r, CNuPoint* c) { return curve.BoundingCircle(r, c), 0; });
  ExpectNullsSkipped<CNuPoint, CNuPoint>(name,
                                         [&](CNuPoint* a, CNuPoint* b) { return curve.DistanceTo(&other, a, b); });
}

TEST(Outputs, OfCurvesMayBeNull) {
  const CNuLineSegment segment(CNuPoint(0, 0), CNuPoint(4, 0)), away(CNuPoint(1, 9), CNuPoint(5, 9));
  const CNuCircularArc arc(CNuPoint(0, 0), CNuPoint(2, 0), CNuPoint(0, 2), NuTrue);
  CNuCompositeCurve chain;
  chain.AddSegment(segment, NuTrue);
  CurveIsAsked("segment", segment, away), CurveIsAsked("arc", arc, away), CurveIsAsked("chain", chain, away);
  CurveIsAsked("polyline", CNuPolyline(PointsOf({{0, 0, 0}, {3, 0, 0}, {3, 2, 0}})), away);
  ExpectNullsSkipped<CNuPoint, CNuPoint>("segment and arc",
                                         [&](CNuPoint* a, CNuPoint* b) { return segment.IntersectWith(arc, a, b); });
}

// Those that meet nothing, or fail, are asked as well.
TEST(Outputs, OfRelationsMayBeNull) {
  int met = 0;
  ForAllPairs([&](const auto& first, const auto& second) {
    const auto a = first.at({0.5, -0.25, 0.125});
    const auto b = second.at({0.25, 0.5, -0.5});
    const auto expect = [&]<class... Results>(auto call) {
      ExpectNullsSkipped<Results...>(first.name, [&](auto*... results) {
        int count = -1;
        const bool isDone = FailureOf([&] { count = call(results...); }) == "nothing";
        met += isDone && count > 0;
        return count;
      });
    };
    if constexpr (requires(CNuPoint p) { a.IntersectWith(b, &p); })
      expect.template operator()<CNuPoint>([&](CNuPoint* p) { return a.IntersectWith(b, p); });
    if constexpr (requires(CNuLine l) { a.IntersectWith(b, &l); })
      expect.template operator()<CNuLine>([&](CNuLine* l) { return a.IntersectWith(b, l); });
    if constexpr (requires(CNuObjArray o) { a.IntersectWith(b, &o); })
      expect.template operator()<CNuObjArray>([&](CNuObjArray* o) { return a.IntersectWith(b, o); });
    if constexpr (requires(CNuPoint p) { a.IntersectWith(b, &p, &p); })
      expect.template operator()<CNuPoint, CNuPoint>([&](auto* p, auto* q) { return a.IntersectWith(b, p, q); });
    if constexpr (requires(CNuPoint p) { a.ClosestPointsTo(b, &p); })
      expect.template operator()<CNuPoint>([&](CNuPoint* p) { return a.ClosestPointsTo(b, p); });
    if constexpr (requires(CNuPoint p) { a.ClosestPointsTo(b, &p, &p); })
      expect.template operator()<CNuPoint, CNuPoint>([&](auto* p, auto* q) { return a.ClosestPointsTo(b, p, q); });
  });
  EXPECT_GT(met, 100);
}

}  // namespace
