#ifndef NU_TESTS_SUPPORT_FITTED_H
#define NU_TESTS_SUPPORT_FITTED_H

#include <array>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

#include "clouds.h"
#include "nu/nu.h"

// The features behind one form, and all their fits behind one call: laws that hold for every fit are written once.
namespace nu::test {

struct Shape {
  CNuPoint place;    // point, centre, axis point, vertex; of a cone the apex
  CNuVector axis;    // direction or normal, of a conic the x axis; of a sphere (0, 0, 0)
  CNuVector normal;  // of a conic
  double radius = 0.0;
  double minor = 0.0;  // of a torus or a conic
  double angle = 0.0;  // semi-angle in degrees

  std::array<double, 5> Lengths() const { return {place.x(), place.y(), place.z(), radius, minor}; }
  std::array<double, 7> Ratios() const { return {axis[0], axis[1], axis[2], normal[0], normal[1], normal[2], angle}; }
  bool operator==(const Shape& s) const { return Lengths() == s.Lengths() && Ratios() == s.Ratios(); }
};

struct Fitted : Shape {
  double form = -1.0;
  double sumsq = -1.0;
  Shape inner, outer;  // boundaries of a zone

  bool operator==(const Fitted& f) const = default;
  // The same for the same fit in another unit of length.
  std::vector<double> Numbers(double unit) const {
    std::vector<double> numbers{form < 0.0 ? form : form / unit, sumsq < 0.0 ? sumsq : sumsq / (unit * unit)};
    for (const Shape* s : {static_cast<const Shape*>(this), &inner, &outer}) {
      for (const double length : s->Lengths()) numbers.push_back(length / unit);
      for (const double ratio : s->Ratios()) numbers.push_back(ratio);
    }
    return numbers;
  }
};

inline void Read(const CNuLine& line, Shape& s) {
  line.GetData(&s.place, &s.axis);
}
inline void Read(const CNuPlane& plane, Shape& s) {
  plane.GetData(&s.place, &s.axis);
}
inline void Read(const CNuSphSurf& sphere, Shape& s) {
  sphere.GetData(&s.radius, &s.place);
}
inline void Read(const CNuConSurf& cone, Shape& s) {
  cone.GetData(&s.angle, &s.place, &s.axis);
}
inline void Read(const CNuTorSurf& torus, Shape& s) {
  torus.GetData(&s.radius, &s.minor, &s.place, &s.axis);
}
inline void Read(const CNuParabola& parabola, Shape& s) {
  parabola.GetData(&s.radius, &s.place, &s.axis, &s.normal);
}
template<class F>
void Read(const F& feature, Shape& s) {
  if constexpr (requires { feature.Period(); })
    feature.GetData(&s.radius, &s.axis[0], &s.axis[1], &s.minor);
  else if constexpr (requires { feature.GetSemiAxisA(); })
    feature.GetData(&s.radius, &s.minor, &s.place, &s.axis, &s.normal);
  else
    feature.GetData(&s.radius, &s.place, &s.axis);
}

template<class F>
F Start() {
  if constexpr (std::is_default_constructible_v<F>)
    return F();
  else if constexpr (std::is_constructible_v<F, double>)
    return F(1.0);
  else if constexpr (std::is_constructible_v<F, double, double>)
    return F(2.0, 1.0);
  else
    return F(1.0, 1.0, 0.0, 0.0);
}

// Points near the feature, as measured.
template<class F>
CNuPointArray TypicalPoints(Random& random, int n) {
  constexpr double kNoise = 0.01;
  if constexpr (std::is_same_v<F, CNuLine>) return LineCloud(random, n, 20.0, kNoise);
  if constexpr (std::is_same_v<F, CNuPlane>) return PlaneCloud(random, n, 20.0, 8.0, kNoise);
  if constexpr (std::is_same_v<F, CNuCircle>) return CircleCloud(random, n, 5.0, 360.0, kNoise);
  if constexpr (std::is_same_v<F, CNuSphSurf>) return SphereCloud(random, n, 5.0, 180.0, kNoise);
  if constexpr (std::is_same_v<F, CNuCylSurf>) return CylinderCloud(random, n, 5.0, 9.0, 360.0, kNoise);
  if constexpr (std::is_same_v<F, CNuConSurf>) return ConeCloud(random, n, 25.0, 5.0, 8.0, 360.0, kNoise);
  if constexpr (std::is_same_v<F, CNuTorSurf>) return TorusCloud(random, n, 4.0, 1.0, 240.0, 360.0, kNoise);
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double t = 6.4 * i / n, u = t - 3.2, y = kNoise * random.Bell();
    if constexpr (std::is_same_v<F, CNuEllipse>) points.Add({5.0 * std::cos(t), 3.0 * std::sin(t) + y});
    if constexpr (std::is_same_v<F, CNuHyperbola>) points.Add({std::cosh(u), 2.0 * std::sinh(u) + y});
    if constexpr (std::is_same_v<F, CNuParabola>) points.Add({u * u + y, u});
    if constexpr (requires(F wave) { wave.Period(); }) points.Add({t, 2.0 * std::sin(1.5 * t + 0.3) + y});
  }
  return points;
}

enum Criterion { kLeastSquares, kCircumscribed, kInscribed, kZone };

// Reads the features when the fit is over, however it ended.
template<class F, Criterion kBy>
struct Trial {
  explicit Trial(Fitted& f) : result(f) { result = {}; }
  ~Trial() {
    Read(feature, result);
    if (kBy == kZone) Read(inner, result.inner), Read(outer, result.outer);
  }

  F feature = Start<F>(), inner = feature, outer = feature;
  Fitted& result;
};

template<class F, Criterion kBy>
void Run(const CNuPointArray& points, double tol, long limit, Fitted& f) {
  Trial<F, kBy> t(f);
  F& a = t.feature;
  if constexpr (kBy == kLeastSquares) {
    if constexpr (requires { a.FitEx(points, limit); })
      a.Fit(points, &f.form, &f.sumsq, limit);
    else
      a.Fit(points, &f.form, &f.sumsq);
  } else if constexpr (kBy == kZone) {
    if constexpr (std::is_same_v<F, CNuPlane>)
      a.FitMinZone(points, &f.form, &t.inner, &t.outer, tol);
    else
      a.FitMinZone(points, &f.form, &t.inner, &t.outer, tol, limit);
  } else if constexpr (requires { a.FitMin(points, tol, limit); }) {
    if constexpr (kBy == kInscribed)
      a.FitMax(points, tol, limit);
    else
      a.FitMin(points, tol, limit);
  } else {
    kBy == kInscribed ? a.FitMax(points, tol) : a.FitMin(points, tol);
  }
}

template<class F, Criterion kBy>
ENuFitResult RunEx(const CNuPointArray& points, double tol, long limit, Fitted& f) {
  Trial<F, kBy> t(f);
  F& a = t.feature;
  if constexpr (kBy == kLeastSquares) return a.FitEx(points, &f.form, &f.sumsq, limit);
  if constexpr (kBy == kZone) return a.FitMinZoneEx(points, &f.form, &t.inner, &t.outer, tol, limit);
  if constexpr (requires { a.FitMinEx(points, tol, limit); }) {
    if constexpr (kBy == kInscribed) return a.FitMaxEx(points, tol, limit);
    if constexpr (kBy == kCircumscribed) return a.FitMinEx(points, tol, limit);
  } else if constexpr (kBy != kLeastSquares && kBy != kZone) {
    return kBy == kInscribed ? a.FitMaxEx(points, tol) : a.FitMinEx(points, tol);
  }
}

// The same by an association, which has a fit for all but waves.
template<class F, Criterion kBy>
CNuAssociationReport RunAssociation(CNuAssociation& association, double tol, long limit, Fitted& f) {
  constexpr ENuCriterion kByName[] = {NuLeastSquares, NuMinimumCircumscribed, NuMaximumInscribed, NuMinimumZone};
  association.SetTolerance(tol);
  association.SetMaxSteps(limit);
  F feature = Start<F>();
  const bool isTorus = std::is_same_v<F, CNuTorSurf>;
  const CNuAssociationReport report = association.Fit(isTorus ? NuMinimumZone : kByName[kBy], &feature);
  f = {};
  Read(feature, f);
  return report;
}

struct AnyFit {
  const char* className;
  Criterion criterion;
  CNuPointArray (*points)(Random&, int n);
  void (*run)(const CNuPointArray&, double tol, long limit, Fitted&);
  ENuFitResult (*runEx)(const CNuPointArray&, double tol, long limit, Fitted&);         // null where there is none
  CNuAssociationReport (*associate)(CNuAssociation&, double tol, long limit, Fitted&);  // null where there is none
  bool hasLimit;
  Fitted start;  // what `run` begins with, and leaves where it fails

  std::string Name() const {
    const char* const names[] = {"", ", circumscribed", ", inscribed", ", zone"};
    return std::string(className) + names[criterion];
  }
  bool Is(const std::string& name, Criterion by) const { return name == className && criterion == by; }
};

template<class F, Criterion kBy>
AnyFit FitBy(const char* className) {
  constexpr bool isRound = std::is_same_v<F, CNuCircle> || std::is_same_v<F, CNuSphSurf>;
  constexpr bool isPlain = std::is_same_v<F, CNuPlane> || (std::is_same_v<F, CNuLine> && kBy == kLeastSquares);
  // Required: that of the circumscribed sphere fits the inscribed one.
  constexpr bool isOther = std::is_same_v<F, CNuSphSurf> && kBy == kCircumscribed;
  AnyFit fit{className, kBy, TypicalPoints<F>, Run<F, kBy>, nullptr, nullptr, false, {}};
  if constexpr (!requires(F wave) { wave.Period(); }) fit.associate = RunAssociation<F, kBy>;
  if constexpr (!isPlain && !isOther) fit.runEx = RunEx<F, kBy>;
  fit.hasLimit = !isPlain && (!isRound || kBy == kLeastSquares || kBy == kZone);
  Trial<F, kBy>{fit.start};
  return fit;
}

inline const AnyFit kAllFits[] = {
    FitBy<CNuLine, kLeastSquares>("CNuLine"),
    FitBy<CNuPlane, kLeastSquares>("CNuPlane"),
    FitBy<CNuCircle, kLeastSquares>("CNuCircle"),
    FitBy<CNuSphSurf, kLeastSquares>("CNuSphSurf"),
    FitBy<CNuCylSurf, kLeastSquares>("CNuCylSurf"),
    FitBy<CNuConSurf, kLeastSquares>("CNuConSurf"),
    FitBy<CNuEllipse, kLeastSquares>("CNuEllipse"),
    FitBy<CNuHyperbola, kLeastSquares>("CNuHyperbola"),
    FitBy<CNuParabola, kLeastSquares>("CNuParabola"),
    FitBy<CNuSineCurve, kLeastSquares>("CNuSineCurve"),
    FitBy<CNuCosineCurve, kLeastSquares>("CNuCosineCurve"),
    FitBy<CNuCircle, kCircumscribed>("CNuCircle"),
    FitBy<CNuSphSurf, kCircumscribed>("CNuSphSurf"),
    FitBy<CNuCylSurf, kCircumscribed>("CNuCylSurf"),
    FitBy<CNuTorSurf, kCircumscribed>("CNuTorSurf"),
    FitBy<CNuCircle, kInscribed>("CNuCircle"),
    FitBy<CNuSphSurf, kInscribed>("CNuSphSurf"),
    FitBy<CNuCylSurf, kInscribed>("CNuCylSurf"),
    FitBy<CNuLine, kZone>("CNuLine"),
    FitBy<CNuPlane, kZone>("CNuPlane"),
    FitBy<CNuCircle, kZone>("CNuCircle"),
    FitBy<CNuSphSurf, kZone>("CNuSphSurf"),
    FitBy<CNuCylSurf, kZone>("CNuCylSurf"),
    FitBy<CNuConSurf, kZone>("CNuConSurf"),
};

// The class has no such fit of its own.
inline void RunTorus(const CNuPointArray& points, double, long limit, Fitted& f) {
  f = {};
  CNuTorSurf torus = Start<CNuTorSurf>();
  CNuAssociation association(points);
  association.SetMaxSteps(limit);
  const CNuAssociationReport report = association.Fit(NuLeastSquares, &torus);
  report.Require();
  Read(torus, f);
  f.form = report.GetForm();
  f.sumsq = report.GetSumSquares();
}
inline const AnyFit kTorusFit{
    "CNuTorSurf", kLeastSquares, TypicalPoints<CNuTorSurf>, RunTorus, nullptr, nullptr, true, {}};

inline const AnyFit& TheFit(const std::string& className, Criterion by = kLeastSquares) {
  if (kTorusFit.Is(className, by)) return kTorusFit;
  for (const AnyFit& fit : kAllFits)
    if (fit.Is(className, by)) return fit;
  throw className;
}

inline Fitted FitOf(const AnyFit& fit, const CNuPointArray& points, double tol = 1e-9, long limit = 1000) {
  Fitted f;
  fit.run(points, tol, limit, f);
  return f;
}

enum Feature { kLine, kPlane, kCircle, kSphere, kCylinder, kCone };  // the first of them
inline constexpr const char* kClassNames[] = {"CNuLine",    "CNuPlane",   "CNuCircle",
                                              "CNuSphSurf", "CNuCylSurf", "CNuConSurf"};

inline Fitted FitOf(Feature feature, const CNuPointArray& points, long limit = 1000) {
  return FitOf(kAllFits[feature], points, 0.0, limit);
}

}  // namespace nu::test

#endif
