#ifndef NU_TESTS_SUPPORT_REFERENCE_COMPARE_H
#define NU_TESTS_SUPPORT_REFERENCE_COMPARE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <utility>

#include "support/fitted.h"
#include "support/json.h"

// Compares fits with the sets of data/reference by the bounds of its README, where the set lies or in another size and
// place. Results of more digits than a double has are read and moved in long double.
namespace nu::test {

using Wide = long double;
using WideVector = std::array<Wide, 3>;

inline WideVector operator-(const WideVector& a, const WideVector& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Wide Dot(const WideVector& a, const WideVector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline double Length(const WideVector& a) {
  return static_cast<double>(std::sqrt(Dot(a, a)));
}
inline WideVector WideOf(const CNuPoint& p) {
  return {p.x(), p.y(), p.z()};
}
inline WideVector WideOf(const CNuVector& v) {
  return {v[0], v[1], v[2]};
}

inline Wide WideNumber(const Json& json) {
  return std::strtold(json.Text().c_str(), nullptr);
}

// Every coordinate is multiplied by the factor, then shifted. Points are the doubles nearest to their digits, as in the
// computation of the results, which are all of theirs.
struct Placement {
  Wide factor = 1.0L;
  WideVector shift{};

  WideVector Point(const Json& point) const { return Moved({point[0].Number(), point[1].Number(), point[2].Number()}); }
  bool IsOwn() const { return factor == 1.0L && shift == WideVector{}; }
  WideVector Result(const Json& place) const {
    return Moved({WideNumber(place[0]), WideNumber(place[1]), WideNumber(place[2])});
  }

 private:
  WideVector Moved(WideVector place) const {
    for (std::size_t i = 0; i < 3; ++i) place[i] = place[i] * factor + shift[i];
    return place;
  }
};

// The nearest doubles: what rounding moves them by is within the bounds.
inline CNuPointArray PointsOf(const Json& set, const Placement& placement = {}) {
  const Json& list = set["points"];
  CNuPointArray points(static_cast<int>(list.Size()));
  for (std::size_t i = 0; i < list.Size(); ++i) {
    const WideVector p = placement.Point(list[i]);
    points.Add({static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])});
  }
  return points;
}

struct Measure {
  const char* what;
  double error;
  double bound;
  bool isAngle;  // both in radians, else in the unit of the moved set; of sums its square
};

// The full bounds, or the plain ones, for which an iteration may stop short of the optimum by what the set says.
class Comparison {
 public:
  using Sink = std::function<void(const Measure&)>;

  Comparison(const Json& set, const Placement& placement, bool full, Sink sink)
      : m_set(set),
        m_placement(placement),
        m_sink(std::move(sink)),
        m_full(full),
        m_factor(static_cast<double>(placement.factor)),
        m_size(set["size"].Number() * m_factor),
        m_count(static_cast<double>(set["points"].Size())) {
    double reach = m_size;
    for (std::size_t i = 0; i < set["points"].Size(); ++i)
      for (const Wide c : placement.Point(set["points"][i])) reach = std::max(reach, std::fabs(static_cast<double>(c)));
    m_d = 2.0 * kEps * reach;
  }

  void Fit(const Fitted& f) const {
    const Json& result = m_set["result"];
    if (result.Has("frequency")) return Wave(f);
    result.Has("a") || result.Has("vertex") ? Conic(f) : Feature(f);
  }

 private:
  // Line, plane, circle, sphere, cylinder, cone or torus.
  void Feature(const Fitted& f) const {
    const Json& result = m_set["result"];
    const bool round = result.Has("centre");
    const bool conical = result.Has("apex");
    const bool cylindrical = result.Has("axis_point") && !conical;
    Place(round ? "centre" : conical ? "apex" : cylindrical ? "axis_point" : "point", f);
    for (const auto& [key, radius] :
         {std::pair("radius", f.radius), {"inner_radius", f.inner.radius}, {"outer_radius", f.outer.radius}})
      if (result.Has(key)) Scalar("radius", radius, WideNumber(result[key]) * m_placement.factor, radius);
    for (const auto& [key, radius] : {std::pair("major_radius", f.radius), {"minor_radius", f.minor}})
      if (result.Has(key)) Scalar(key, radius, WideNumber(result[key]) * m_placement.factor, radius);
    if (conical) {
      const double difference = std::fabs(f.angle - result["semi_angle_deg"].Number());
      Turn("semi_angle_rad", difference * kDegree, Sensitivity("semi_angle_rad"));
      const WideVector axisPoint = m_placement.Result(result["axis_point"]);
      Scalar("axis_point", FromAxis(axisPoint, f), 0.0L, m_placement.IsOwn() ? 0.0 : StoredAxis(axisPoint, f));
    }
    for (const char* key : {"direction", "axis_direction", "normal"}) {
      if (!result.Has(key)) continue;
      const bool ofCurve = round && !result.Has("major_radius");
      Direction(key, f.axis, cylindrical, ofCurve ? FullTurn(std::min(1.0, Sensitivity("centre"))) : Sensitivity(key));
    }
    Form(f.form, f.sumsq);
  }

  // Sine or cosine curve, where the set lies.
  void Wave(const Fitted& f) const {
    for (const auto& [key, value] :
         {std::pair("amplitude", f.radius), {"frequency", f.axis[0]}, {"phase", f.axis[1]}, {"offset", f.minor}})
      Scalar(key, value, WideNumber(m_set["result"][key]), std::fabs(value));
    Form(f.form, f.sumsq);
  }

  // Ellipse, hyperbola or parabola.
  void Conic(const Fitted& f) const {
    const Json& result = m_set["result"];
    const bool parabola = result.Has("vertex");
    const WideVector origin = m_placement.Result(result[parabola ? "vertex" : "centre"]);
    Scalar("origin", test::Length(WideOf(f.place) - origin), 0.0L, test::Length(origin));
    if (parabola) {
      Scalar("parameters", f.radius, WideNumber(result["focal_length"]) * m_placement.factor, f.radius);
    } else {
      const Wide a = WideNumber(result["a"]) * m_placement.factor, b = WideNumber(result["b"]) * m_placement.factor;
      Scalar("parameters", test::Length({f.radius - a, f.minor - b, 0.0L}), 0.0L, std::hypot(f.radius, f.minor));
    }
    Direction("x_axis", f.axis, !parabola, Sensitivity("x_axis"));
    Direction("normal", f.normal, true, FullTurn(Sensitivity("origin")));
    Form(f.form, f.sumsq);
  }

  // Sets with a closed form state none.
  double Sensitivity(const char* what) const {
    return m_set.Has("sensitivity") ? m_set["sensitivity"][what].Number() : 1.0;
  }
  // The files give no sensitivity for the normal of the plane of a curve; two is that of a full turn.
  double FullTurn(double sensitivity) const { return 2.0 * sensitivity / m_set["size"].Number(); }

  void Place(const char* what, const Fitted& f) const {
    const WideVector truth = m_placement.Result(m_set["result"][what]);
    Scalar(what, test::Length(WideOf(f.place) - truth), 0.0L, test::Length(truth));
  }
  // How far the axis of a cone passes the reference's axis point, which is at the foot of the mean point. The apex may
  // be far away: doubles hold it, but not the difference.
  static double FromAxis(const WideVector& point, const Fitted& cone) {
    const WideVector axis = WideOf(cone.axis), from = point - WideOf(cone.place);
    const Wide along = Dot(from, axis) / Dot(axis, axis);
    return test::Length(from - WideVector{along * axis[0], along * axis[1], along * axis[2]});
  }

  // What the nearest doubles to an apex and a direction move the axis by, at the points, as the value of which Scalar()
  // allows 4 roundings: half a unit in the last place of the apex, and that of the direction over the way to the
  // points. Where the sets lie, all cones keep the bound without it.
  static double StoredAxis(const WideVector& point, const Fitted& cone) {
    const WideVector apex = WideOf(cone.place);
    return 0.125 * (test::Length(apex) + test::Length(point - apex));
  }

  void Scalar(const char* what, double found, Wide truth, double value) const {
    const double s = Sensitivity(what);
    Report(what, std::fabs(static_cast<double>(found - truth)), 4.0 * m_d * s + 4.0 * kEps * value,
           1e-12 * m_size * std::max(1.0, s), Stop(what), false);
  }
  // `s` per unit of length of the set.
  void Turn(const char* what, double error, double s) const {
    const double here = s / m_factor;
    Report(what, error, 4.0 * m_d * here + 4.0 * kEps, 1e-12 * std::max(1.0, here * m_size), 0.0, true);
  }
  void Direction(const char* key, const CNuVector& found, bool anySign, double s) const {
    const Json& result = m_set["result"];
    WideVector truth{};
    for (std::size_t i = 0; i < 3; ++i) truth[i] = WideNumber(result[key][i]);
    const bool opposite = anySign && Dot(WideOf(found), truth) < 0.0L;
    Turn(key, test::Length(WideOf(opposite ? -found : found) - truth), s);
  }
  // Those of "form", "zone" and "sumsq" that the result has.
  void Form(double form, double sumsq) const {
    const Json& result = m_set["result"];
    const double moved = 2.0 * (Stop("centre") + Stop("radius"));
    for (const char* key : {"form", "zone"}) {
      if (!result.Has(key)) continue;
      const Wide truth = WideNumber(result[key]) * m_placement.factor;
      Report(key, std::fabs(static_cast<double>(form - truth)), 8.0 * m_d, 1e-12 * m_size, moved, false);
    }
    if (!result.Has("sumsq")) return;
    const double truth = static_cast<double>(WideNumber(result["sumsq"]) * m_placement.factor * m_placement.factor);
    const double rounding = 4.0 * m_d * std::sqrt(m_count * truth) + 16.0 * m_count * m_d * m_d;
    Report("sumsq", std::fabs(sumsq - truth), rounding, 1e-12 * truth + rounding, m_count * moved * moved, false);
  }

  // Of another size the set does not know where the iteration ends: the square of its step is below NuGetTol().
  double Stop(const char* what) const {
    if (m_full || !m_set.Has("stop_rule")) return 0.0;
    return m_factor == 1.0 ? m_set["stop_rule"][what].Number() : std::sqrt(NuGetTol());
  }
  void Report(const char* what, double error, double full, double plain, double stop, bool isAngle) const {
    m_sink({what, error, stop + (m_full ? full : std::max(full, plain)), isAngle});
  }

  const Json& m_set;
  Placement m_placement;
  Sink m_sink;
  bool m_full;
  double m_factor, m_size, m_count, m_d = 0.0;
};

// The fit of a set: for least squares, at the tolerances that are set.
// To the points of a set in the size of the factor.
inline Fitted FitOfSet(const Json& set, const AnyFit& fit, const CNuPointArray& points, double factor) {
  double tol = 0.0;
  long limit = 1000;
  if (fit.criterion != kLeastSquares) {
    tol = set["arguments"]["tol"].Number() * factor;
    limit = static_cast<long>(set["arguments"]["maxiter"].Number());
  }
  return FitOf(fit, points, tol, limit);
}

inline Fitted FitOfSet(const Json& set, const AnyFit& fit, const Placement& placement = {}) {
  return FitOfSet(set, fit, PointsOf(set, placement), static_cast<double>(placement.factor));
}

}  // namespace nu::test

#endif
