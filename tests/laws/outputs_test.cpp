#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <type_traits>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"

// Every operation that returns results by pointers skips those that are null and stores the others as ever.
namespace {

using namespace nu::test;

template<class T>
T Fresh() {
  if constexpr (std::is_same_v<T, CNuObjArray> || std::is_same_v<T, CNuIntArray>)
    return T(4);
  else if constexpr (std::is_constructible_v<T, double> && !std::is_default_constructible_v<T>)
    return T(45.0);
  else
    return T{};
}

// Bits of a result, whatever it is.
void Append(std::vector<double>& v, double d) {
  v.push_back(d);
}
void Append(std::vector<double>& v, const CNuPoint& p) {
  v.insert(v.end(), {p.x(), p.y(), p.z()});
}
template<class Array>
void AppendAll(std::vector<double>& v, const Array& a) {
  v.push_back(a.GetSize());
  for (int i = 0; i < a.GetSize(); ++i) Append(v, a[i]);
}
void Append(std::vector<double>& v, const CNuVector& a) {
  AppendAll(v, a);
}
void Append(std::vector<double>& v, const CNuIntArray& a) {
  AppendAll(v, a);
}
void Append(std::vector<double>& v, const CNuLine& line) {
  Append(v, line.GetPoint()), Append(v, line.GetDirection());
}
void Append(std::vector<double>& v, const CNuPlane& plane) {
  Append(v, plane.GetPoint()), Append(v, plane.GetNormal());
}
template<class Round>
void AppendRound(std::vector<double>& v, const Round& round) {
  double size;
  CNuPoint place;
  CNuVector axis;
  round.GetData(&size, &place, &axis);
  Append(v, size), Append(v, place), Append(v, axis);
}
void Append(std::vector<double>& v, const CNuCircle& c) {
  AppendRound(v, c);
}
void Append(std::vector<double>& v, const CNuCylSurf& c) {
  AppendRound(v, c);
}
void Append(std::vector<double>& v, const CNuConSurf& c) {
  AppendRound(v, c);
}
void Append(std::vector<double>& v, const CNuSphSurf& s) {
  Append(v, s.GetRadius()), Append(v, s.GetCentre());
}
void Append(std::vector<double>& v, const CNuObjArray& a) {
  v.push_back(a.GetSize());
  for (int i = 0; i < a.GetSize(); ++i) delete a[i];
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

template<class Feature, class... Limit>
void FitIsAsked(const char* name, const CNuPointArray& points, Limit... limit) {
  ExpectNullsSkipped<double, double>(name, [&](double* form, double* sumsq) {
    Feature feature = Fresh<Feature>();
    feature.Fit(points, form, sumsq, limit...);
    return 0;
  });
}

template<class Feature, class... Rest>
void ZoneIsAsked(const char* name, const CNuPointArray& points, Rest... rest) {
  ExpectNullsSkipped<double, Feature, Feature>(name, [&](double* form, Feature* inner, Feature* outer) {
    Feature feature = Fresh<Feature>();
    feature.FitMinZone(points, form, inner, outer, rest...);
    return 0;
  });
  ExpectNullsSkipped<double>(name, [&](double* form) {
    Feature feature = Fresh<Feature>();
    feature.FitMinZone(points, form, rest...);
    return 0;
  });
  // Outputs follow the feature in the order of the arguments: the last one that is an object is what it holds.
  Feature feature = Fresh<Feature>(), inner = Fresh<Feature>(), outer = Fresh<Feature>(), both = Fresh<Feature>();
  feature.FitMinZone(points, nullptr, &inner, &outer, rest...);
  const std::vector<double> innerBits = BitsOf(inner), outerBits = BitsOf(outer);
  feature.FitMinZone(points, nullptr, &feature, &outer, rest...);
  EXPECT_EQ(BitsOf(feature), innerBits) << name;
  feature.FitMinZone(points, nullptr, &inner, &feature, rest...);
  EXPECT_EQ(BitsOf(feature), outerBits) << name;
  feature.FitMinZone(points, nullptr, &both, &both, rest...);
  EXPECT_EQ(BitsOf(both), outerBits) << name;
}

TEST(Outputs, OfFitsMayBeNull) {
  Random random(91);
  FitIsAsked<CNuLine>("line", LineCloud(random, 20, 10.0, 0.01));
  FitIsAsked<CNuPlane>("plane", PlaneCloud(random, 20, 10.0, 5.0, 0.01));
  FitIsAsked<CNuCircle>("circle", CircleCloud(random, 20, 5.0, 360.0, 0.01), kLimit);
  FitIsAsked<CNuSphSurf>("sphere", SphereCloud(random, 20, 5.0, 90.0, 0.01), kLimit);
  FitIsAsked<CNuCylSurf>("cylinder", CylinderCloud(random, 40, 5.0, 9.0, 360.0, 0.01), kLimit);
  FitIsAsked<CNuConSurf>("cone", ConeCloud(random, 40, 25.0, 5.0, 9.0, 360.0, 0.01), kLimit);
  CNuPointArray wave(40), ellipse(40), hyperbola(40), parabola(40);
  for (int i = 0; i < 40; ++i) {
    const double t = 0.16 * i, noise = 0.01 * random.Bell();
    wave.Add({t, 2.0 * std::sin(1.5 * t + 0.3) + noise, 0.0});
    ellipse.Add({5.0 * std::cos(t), 3.0 * std::sin(t) + noise, 0.0});
    hyperbola.Add({std::cosh(t - 3.2), 2.0 * std::sinh(t - 3.2) + noise, 0.0});
    parabola.Add({(t - 3.2) * (t - 3.2) + noise, t - 3.2, 0.0});
  }
  const auto conic = [&](const char* name, const CNuPointArray& points, auto feature) {
    ExpectNullsSkipped<double, double>(name, [&](double* form, double* sumsq) {
      feature.Fit(points, form, sumsq, kLimit);
      return 0;
    });
  };
  conic("sine", wave, CNuSineCurve(1, 1, 0, 0)), conic("cosine", wave, CNuCosineCurve(1, 1, 0, 0));
  conic("ellipse", ellipse, CNuEllipse(2, 1)), conic("hyperbola", hyperbola, CNuHyperbola(2, 1));
  conic("parabola", parabola, CNuParabola(1));
  ZoneIsAsked<CNuLine>("line's zone", LineCloud(random, 20, 10.0, 0.01), 1e-9, kLimit);
  ZoneIsAsked<CNuPlane>("plane's zone", PlaneCloud(random, 20, 10.0, 5.0, 0.01), 1e-9);
  ZoneIsAsked<CNuCircle>("circle's zone", CircleCloud(random, 20, 5.0, 360.0, 0.01), 1e-9, kLimit);
  ZoneIsAsked<CNuSphSurf>("sphere's zone", SphereCloud(random, 20, 5.0, 180.0, 0.01), 1e-9, kLimit);
  ZoneIsAsked<CNuCylSurf>("cylinder's zone", CylinderCloud(random, 40, 5.0, 9.0, 360.0, 0.01), 1e-9, kLimit);
  ZoneIsAsked<CNuConSurf>("cone's zone", ConeCloud(random, 40, 25.0, 5.0, 9.0, 360.0, 0.01), 1e-9, kLimit);
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

template<class First, class Second>
void PairIsAsked(const char* name, const First& first, const Second& second) {
  ExpectNullsSkipped<CNuPoint, CNuPoint>(name,
                                         [&](CNuPoint* a, CNuPoint* b) { return first.IntersectWith(second, a, b); });
}

TEST(Outputs, OfCurvesAndRelationsMayBeNull) {
  const CNuLineSegment segment(CNuPoint(0, 0), CNuPoint(4, 0));
  const CNuCircularArc arc(CNuPoint(0, 0), CNuPoint(2, 0), CNuPoint(0, 2), NuTrue);
  CNuPointArray corners = PointsOf({{0, 0, 0}, {3, 0, 0}, {3, 2, 0}});
  const CNuPolyline polyline(corners);
  CNuCompositeCurve chain;
  chain.AddSegment(segment, NuTrue);
  const CNuLineSegment away(CNuPoint(1, 9), CNuPoint(5, 9));
  CurveIsAsked("segment", segment, away), CurveIsAsked("arc", arc, away);
  CurveIsAsked("polyline", polyline, away), CurveIsAsked("chain", chain, away);
  PairIsAsked("segment and arc", segment, arc);
  const CNuLine line(CNuPoint(0, 0.5, 0), CNuVector(1, 0, 0));
  const CNuPlane plane(CNuPoint(0.5, 0, 0), CNuVector(1, 0, 0));
  const CNuCircle circle(2.0);
  PairIsAsked("circle and line", circle, line), PairIsAsked("line and circle", line, circle);
  PairIsAsked("circle and plane", circle, plane), PairIsAsked("circles", circle, CNuCircle(2.0, CNuPoint(1, 0, 0)));
  PairIsAsked("ellipse and line", CNuEllipse(3, 2), line), PairIsAsked("ellipse and plane", CNuEllipse(3, 2), plane);
  PairIsAsked("hyperbola and line", CNuHyperbola(3, 2), line);
  PairIsAsked("parabola and plane", CNuParabola(3), plane);
  PairIsAsked("sphere and line", CNuSphSurf(2), line), PairIsAsked("line and sphere", line, CNuSphSurf(2));
  PairIsAsked("cylinder and line", CNuCylSurf(2), line), PairIsAsked("line and cylinder", line, CNuCylSurf(2));
  PairIsAsked("cone and line", CNuConSurf(20), line), PairIsAsked("line and cone", line, CNuConSurf(20));
  const CNuLine skew(CNuPoint(0, 7, 1), CNuVector(0.1, 0, 1));
  const auto closest = [&](const char* name, const auto& other) {
    ExpectNullsSkipped<CNuPoint, CNuPoint>(name,
                                           [&](CNuPoint* a, CNuPoint* b) { return skew.ClosestPointsTo(other, a, b); });
  };
  closest("circle", circle), closest("sphere", CNuSphSurf(2)), closest("cylinder", CNuCylSurf(2));
  closest("cone", CNuConSurf(20));
  ExpectNullsSkipped<CNuPoint>("lines", [&](CNuPoint* p) { return skew.ClosestPointsTo(line, p); });
  ExpectNullsSkipped<CNuPoint>("line and plane", [&](CNuPoint* p) { return line.IntersectWith(plane, p); });
  ExpectNullsSkipped<CNuPoint>("plane and line", [&](CNuPoint* p) { return plane.IntersectWith(line, p); });
  ExpectNullsSkipped<CNuLine>("planes", [&](CNuLine* l) { return plane.IntersectWith(CNuPlane(), l); });
  const auto objects = [&](const char* name, const auto& first, const auto& second) {
    ExpectNullsSkipped<CNuObjArray>(name, [&](CNuObjArray* found) { return first.IntersectWith(second, found); });
  };
  const CNuSphSurf ball(3.0, CNuPoint(1, 0, 0));
  objects("plane and sphere", plane, ball), objects("spheres", CNuSphSurf(3), ball);
  objects("plane and cylinder", plane, CNuCylSurf(2)), objects("plane and cone", plane, CNuConSurf(20));
  objects("cylinder and sphere", CNuCylSurf(2), ball), objects("cylinder and cone", CNuCylSurf(2), CNuConSurf(20));
  objects("cone and sphere", CNuConSurf(20), ball);
}

}  // namespace
