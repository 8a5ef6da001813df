#ifndef NU_ENGINE_ASSOCIATION_BOUNDED_FEATURES_H
#define NU_ENGINE_ASSOCIATION_BOUNDED_FEATURES_H

#include <type_traits>

#include "nu/engine/association/feature.h"
#include "nu/engine/association/first_order.h"
#include "nu/engine/base/floating_point.h"

// The features of a search over boxes of parameters, as numbers x_k in charts that together hold all features whose
// axis or centre is not too far from the origin. Deviations are written once, for plain numbers and for enclosures.
//
// In a chart an axis has the direction (u, v, 1) / s, s^2 = 1 + u^2 + v^2, and meets the plane z = 0 in (a, b, 0). With
// X = x - a - u z and Y = y - b - v z the distance of a point from it is |(X, Y, u Y - v X)| / s. The larger u and v
// are, the less do these terms depend on one unknown each, so directions have many charts, with frames of their own:
// three faces of a cube in kTiles times kTiles squares, each seen from its middle.
namespace nu::engine::association {

inline constexpr int kTiles = 5;  // odd: the axis z is the middle of a chart
inline constexpr int kAxisCharts = 3 * kTiles * kTiles;
// No direction has larger slopes in its chart than one in a corner of the middle square of a face.
inline constexpr double kMostSlope = (1.0 + 0x1p-40) / kTiles;

// The axes of a chart, at the origin.
AxisFrame FrameOfChart(int chart);
// The chart for a direction, whichever sign it has.
int ChartOfDirection(const Vec3& direction);
// The slopes (u, v) and the place (a, b) of an axis in a chart, and whether its direction has to be turned round; false
// where the chart does not reach so far.
bool PlaceAxis(int chart, const AxisFrame& frame, double* x, bool& isTurned);
// The axis with these, through its point next to the origin.
AxisFrame AxisAt(int chart, const double* x);

// Centres and axes at least so far from the origin, in units of the reach of the points, are far.
inline constexpr double kFarAway = 2.0;

template<class T>
class SlopedDirection {
 public:
  SlopedDirection(const T& u, const T& v) : m_u(u), m_v(v), m_inverse(Reciprocal(Length(u, v, T(1.0)))) {}

  T Turn(const T& x, const T& y) const { return m_u * y - m_v * x; }
  // Of a vector (x, y, z), less (u, v, 1) z, across the direction; and of all of it along.
  T Across(const T& x, const T& y) const { return Length(x, y, Turn(x, y)) * m_inverse; }
  T Along(const T& x, const T& y, const T& z) const { return (m_u * x + m_v * y + z) * m_inverse; }
  const T& Inverse() const { return m_inverse; }

 private:
  T m_u;
  T m_v;
  T m_inverse;
};

// The distances r from an axis. From one far away their errors have nearly all in common; the differences from that of
// the origin, r0, have not: they are (r^2 - r0^2) / (r + r0). A zone is about differences alone.
template<class T>
class AxisRadius {
 public:
  AxisRadius(const T& u, const T& v, const T& a, const T& b, double reach)
      : m_u(u),
        m_v(v),
        m_a(a),
        m_b(b),
        m_direction(u, v),
        m_turn(m_direction.Turn(a, b)),
        m_origin(Length(a, b, m_turn)),
        m_isFar(IsNowhereBelow(m_origin, kFarAway * reach)) {}

  T Of(const Vec3& p) const {
    const T x = p.x - p.z * m_u;
    const T y = p.y - p.z * m_v;
    if (!m_isFar) return m_direction.Across(x - m_a, y - m_b);
    const T turn = m_direction.Turn(x, y);
    const T product = x * (x - 2.0 * m_a) + y * (y - 2.0 * m_b) + turn * (turn - 2.0 * m_turn);
    const T sum = Length(x - m_a, y - m_b, turn - m_turn) + m_origin;
    return product * (Reciprocal(sum) * m_direction.Inverse());
  }
  // Between the distances of the points, for enclosures that leave out what all of them have in common; 0 for numbers.
  double Middle(double reach) const {
    if constexpr (std::is_same_v<T, double>) {
      return 0.0;
    } else {
      return m_isFar ? 0.0 : std::max(m_origin.value, 0.5 * (m_origin.value + reach));
    }
  }
  const SlopedDirection<T>& Direction() const { return m_direction; }

 private:
  T m_u, m_v, m_a, m_b;
  SlopedDirection<T> m_direction;
  T m_turn;
  T m_origin;
  bool m_isFar;
};

// What most models have: N unknowns, which are all of a place, and one component of their deviations.
template<int N>
struct BoundedModel {
  static constexpr int kUnknowns = N;
  static constexpr int kComponents = 1;
  static constexpr int kPlace = N;
  static constexpr bool kIsLevelled = true;  // the radius is half-way between the extreme deviations
};

// x: the centre.
struct BoundedSphere : BoundedModel<3> {
  static constexpr int kCharts = 1;

  template<class T>
  class Deviations {
   public:
    Deviations(int, const T (&x)[kUnknowns], double reach)
        : m_x(x[0]),
          m_y(x[1]),
          m_z(x[2]),
          m_origin(Length(m_x, m_y, m_z)),
          m_isFar(IsNowhereBelow(m_origin, kFarAway * reach)) {}
    // As for axes, differences from the distance of the origin where the centre is far.
    T operator()(const Vec3& p) const {
      const T distance = Length(p.x - m_x, p.y - m_y, p.z - m_z);
      if (!m_isFar) return distance;
      const T product = Dot(p, p) - (2.0 * p.x) * m_x - (2.0 * p.y) * m_y - (2.0 * p.z) * m_z;
      return product * Reciprocal(distance + m_origin);
    }

   private:
    T m_x, m_y, m_z;
    T m_origin;
    bool m_isFar;
  };

  // The unknowns of all axes or centres within `far` of the origin, among points that reach so far.
  static void Domain(double far, double, double (&low)[kUnknowns], double (&high)[kUnknowns]) {
    std::fill_n(low, kUnknowns, -far);
    std::fill_n(high, kUnknowns, far);
  }
  // Half the sides of a box; each moves the surface by about `reach` among points that reach so far.
  static void UnitBox(double reach, double (&half)[kUnknowns]) { std::fill_n(half, kUnknowns, reach); }
  // The chart of a feature.
  static int ChartOf(const Feature&) { return 0; }
  // Its unknowns in a chart; false where the chart does not reach so far.
  static bool Place(int, const Feature& feature, double (&x)[kUnknowns]) {
    x[0] = feature.frame.origin.x;
    x[1] = feature.frame.origin.y;
    x[2] = feature.frame.origin.z;
    return true;
  }
  // `level` is what the deviations have in the middle of the zone; of a circle, the largest distance.
  static Feature At(int, const double (&x)[kUnknowns], double level) {
    return {FeatureKind::sphere, AxisFrame::Along({x[0], x[1], x[2]}, {0.0, 0.0, 1.0}), {level, 0.0}};
  }
};

// What features with an axis share, whose unknowns begin with u, v, a, b; domain and unit box are those of these four.
struct BoundedByAxis {
  static constexpr int kCharts = kAxisCharts;

  static void Domain(double far, double reach, double* low, double* high);
  static void UnitBox(double reach, double* half) {
    half[0] = half[1] = 1.0;
    half[2] = half[3] = reach;
  }
  static int ChartOf(const Feature& feature) { return ChartOfDirection(feature.frame.z); }
};

// x: u, v, a, b.
struct BoundedCylinder : BoundedModel<4>, BoundedByAxis {
  template<class T>
  class Deviations {
   public:
    Deviations(int chart, const T (&x)[kUnknowns], double reach)
        : m_frame(FrameOfChart(chart)), m_radius(x[0], x[1], x[2], x[3], reach) {}
    T operator()(const Vec3& p) const { return m_radius.Of(m_frame.Local(p)); }

   private:
    AxisFrame m_frame;
    AxisRadius<T> m_radius;
  };

  static bool Place(int chart, const Feature& feature, double (&x)[kUnknowns]) {
    bool isTurned;
    return PlaceAxis(chart, feature.frame, x, isTurned);
  }
  static Feature At(int chart, const double (&x)[kUnknowns], double level) {
    return {FeatureKind::cylinder, AxisAt(chart, x), {level, 0.0}};
  }
};

// The distance from its axis, for the axis alone.
struct BoundedLine : BoundedCylinder {
  static constexpr bool kIsLevelled = false;
};

// Deviations from a cone, up to a constant: enclosures are of differences alone, and leave out the cosine times a
// distance in the middle of those of the points. The unknowns begin with u, v, a, b and the semi-angle.
template<class T>
class ConeRadius {
 public:
  ConeRadius(int chart, const T* x, double reach)
      : m_frame(FrameOfChart(chart)),
        m_radius(x[0], x[1], x[2], x[3], reach),
        m_cosine(Cosine(x[4])),
        m_sine(Sine(x[4])),
        m_middle(m_radius.Middle(reach)) {}

  Vec3 Local(const Vec3& point) const { return m_frame.Local(point); }
  // Of a local point along the axis.
  T HeightOf(const Vec3& p) const { return m_radius.Direction().Along(p.x, p.y, p.z); }
  T DeviationAt(const Vec3& p, const T& height) const {
    return m_cosine * (m_radius.Of(p) - m_middle) - m_sine * height;
  }

 private:
  AxisFrame m_frame;
  AxisRadius<T> m_radius;
  T m_cosine, m_sine;
  double m_middle;
};

// x: u, v, a, b and the semi-angle, negative where the cone narrows along the axis. The deviation is that from the
// nappe which holds the points, as if it went on beyond the apex.
struct BoundedCone : BoundedModel<5>, BoundedByAxis {
  template<class T>
  class Deviations {
   public:
    Deviations(int chart, const T (&x)[kUnknowns], double reach) : m_cone(chart, x, reach) {}
    T operator()(const Vec3& point) const {
      const Vec3 p = m_cone.Local(point);
      return m_cone.DeviationAt(p, m_cone.HeightOf(p));
    }

   private:
    ConeRadius<T> m_cone;
  };

  static void Domain(double far, double reach, double* low, double* high);
  static void UnitBox(double reach, double* half) {
    BoundedByAxis::UnitBox(reach, half);
    half[4] = 1.0;
  }
  static bool Place(int chart, const Feature& feature, double (&x)[kUnknowns]) {
    bool isTurned;
    const bool isIn = PlaceAxis(chart, feature.frame, x, isTurned);
    x[4] = isTurned ? -feature.size[1] : feature.size[1];
    return isIn;
  }
  // With the radius at the origin of the frame; a cone that narrows is turned round.
  static Feature At(int chart, const double (&x)[kUnknowns], double level) {
    AxisFrame frame = AxisAt(chart, x);
    if (x[4] < 0.0) frame = {frame.origin, frame.y, frame.x, -1.0 * frame.z};
    return {FeatureKind::cone, frame, {level / Cos(x[4]), std::fabs(x[4])}};
  }
};

// A cone of two nappes with points on both, which count from the one on their side of the apex. x: u, v, a, b, the
// semi-angle, and the height of the apex along the axis, from the foot of the perpendicular from the origin.
struct BoundedDoubleCone : BoundedModel<6>, BoundedByAxis {
  template<class T>
  class Deviations {
   public:
    Deviations(int chart, const T (&x)[kUnknowns], double reach) : m_cone(chart, x, reach), m_apex(x[5]) {}
    T operator()(const Vec3& point) const {
      const Vec3 p = m_cone.Local(point);
      return m_cone.DeviationAt(p, Magnitude(m_cone.HeightOf(p) - m_apex));
    }

   private:
    ConeRadius<T> m_cone;
    T m_apex;
  };

  static void Domain(double far, double reach, double* low, double* high) {
    BoundedCone::Domain(far, reach, low, high);
    low[4] = 0.0;
    low[5] = -reach;
    high[5] = reach;
  }
  static void UnitBox(double reach, double* half) {
    BoundedCone::UnitBox(reach, half);
    half[5] = reach;
  }
  static bool Place(int chart, const Feature& feature, double (&x)[kUnknowns]) {
    bool isTurned;
    const bool isIn = PlaceAxis(chart, feature.frame, x, isTurned);
    x[4] = feature.size[1];
    const double apex = Dot(feature.frame.origin, feature.frame.z) - feature.size[0] / Tan(feature.size[1]);
    x[5] = isTurned ? -apex : apex;
    return isIn;
  }
  // No size shifts the middle of the zone.
  static Feature At(int chart, const double (&x)[kUnknowns], double) {
    AxisFrame frame = AxisAt(chart, x);
    frame.origin = frame.origin + x[5] * frame.z;
    return {FeatureKind::cone, frame, {0.0, x[4]}, true};
  }
};

// A circle in space. x: u, v, a, b of its axis. A point is at a radius and a height, its components; those of the
// circle are levels, which no box has to divide: with (x_i, y_i) the components of the points less the levels, the
// largest distance from the circle is the largest of cos(phi) x_i + sin(phi) y_i over all points and all phi.
struct BoundedCircle : BoundedModel<4>, BoundedByAxis {
  static constexpr int kComponents = 2;
  static constexpr int kPlace = 6;  // the levels follow the unknowns
  static constexpr bool kIsLevelled = false;

  template<class T>
  class Components {
   public:
    Components(int chart, const T (&x)[kUnknowns], double)
        : m_frame(FrameOfChart(chart)), m_radius(x[0], x[1], x[2], x[3], kInfinity) {}
    void Of(const Vec3& point, T (&component)[kComponents]) const {
      const Vec3 p = m_frame.Local(point);
      component[0] = m_radius.Of(p);
      component[1] = m_radius.Direction().Along(T(p.x), T(p.y), T(p.z));
    }

   private:
    AxisFrame m_frame;
    AxisRadius<T> m_radius;
  };

  // Of numbers alone.
  template<class T>
  class Deviations {
   public:
    Deviations(int chart, const T (&x)[kPlace], double reach)
        : m_components(chart, {x[0], x[1], x[2], x[3]}, reach), m_radius(x[4]), m_height(x[5]) {}
    T operator()(const Vec3& p) const {
      T component[kComponents];
      m_components.Of(p, component);
      return Length(component[0] - m_radius, component[1] - m_height, T(0.0));
    }

   private:
    Components<T> m_components;
    T m_radius, m_height;
  };

  static bool Place(int chart, const Feature& feature, double (&x)[kPlace]) {
    bool isTurned;
    const bool isIn = PlaceAxis(chart, feature.frame, x, isTurned);
    x[4] = feature.size[0];
    x[5] = (isTurned ? -1.0 : 1.0) * Dot(feature.frame.origin, feature.frame.z);
    return isIn;
  }
  static Feature At(int chart, const double (&x)[kPlace], double level) {
    AxisFrame frame = AxisAt(chart, x);
    frame.origin = frame.origin + x[5] * frame.z;
    return {FeatureKind::circleInSpace, frame, {x[4], level}};
  }
};

}  // namespace nu::engine::association

#endif
