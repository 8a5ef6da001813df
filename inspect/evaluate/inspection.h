#ifndef NU_INSPECT_INSPECTION_H
#define NU_INSPECT_INSPECTION_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "input/point_file.h"

inline double Dot(const Vec3& a, const Vec3& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Vec3 Minus(const Vec3& a, const Vec3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline Vec3 Unit(const Vec3& a) {
  const double length = std::sqrt(Dot(a, a));
  return {a[0] / length, a[1] / length, a[2] / length};
}

// A right-handed frame of unit axes.
struct Frame {
  Vec3 origin{};
  Vec3 x{1, 0, 0};
  Vec3 y{0, 1, 0};
  Vec3 z{0, 0, 1};

  Vec3 ToLocal(const Vec3& point) const {
    const Vec3 v = Minus(point, origin);
    return {Dot(v, x), Dot(v, y), Dot(v, z)};
  }
};

// One parameter of the fitted feature: a length, an angle in degrees (one value), a point or a direction (three).
struct Parameter {
  enum class Kind { kLength, kAngle, kPoint, kDirection };
  std::string name;
  Kind kind;
  std::vector<double> values;
};

// A conic in the xy plane of its frame: x^2/a^2 + y^2/b^2 = 1, x^2/a^2 - y^2/b^2 = 1, or y^2 = 4 a x.
struct ConicShape {
  enum class Kind { kNone, kEllipse, kHyperbola, kParabola };
  Kind kind = Kind::kNone;
  double a = 0;
  double b = 0;
};

// What the field and its standards call things.
struct Terms {
  std::string feature;
  std::string criterion;  // "minimum zone"
  std::string letter;     // of the criterion in ISO 1101
  std::string form;       // "roundness"
  std::string symbol;     // "RON", before t, p, v and q; empty where no standard has one
  std::string reference;  // "MZCI (ISO 12181-1)"; empty likewise
};

// A point on a boundary of the zone that holds the feature.
struct Contact {
  std::size_t index;
  bool outer;         // the boundary where deviations are largest
  double multiplier;  // by how much the zone or the radius grows with a move of the point outwards
};

// What the deviations say about the parameters of the feature, as changes in a frame of its own.
struct Uncertainty {
  struct Change {
    std::string name;
    bool isAngle;     // in degrees
    double standard;  // infinite where the points do not determine it
  };
  Frame frame;
  std::vector<Change> changes;
  std::vector<std::vector<double>> covariance;
  int degreesOfFreedom;
  double standardDeviation;  // of a point
};

// No feature has a smaller zone or radius than `bound`, which is `gap` below that of the feature found.
struct GlobalBound {
  double bound;
  double gap;
};

// The verdict of a check that knows nothing of the fit: it holds where no feature nearby is better by more than `gap`.
struct Certificate {
  bool holds;
  double gap;
  double radius;  // of the neighbourhood; infinite where the check is global
};

// What was found about one feature, all that tables and pictures need.
//
// The frame belongs to the feature: line: x along it; plane: z is its normal; circle: origin at the centre, z is its
// normal; conic: x along its axis, z is its normal; sphere: origin at the centre; other surfaces: z is the axis.
// `deviations` are signed distances from the feature: from a line in a plane across it, from a plane along its normal,
// from all others outwards. A line in space has distances only, its `zoneIsRound` and its form is the diameter of the
// enclosing cylinder.
struct Inspection {
  Terms terms;
  std::vector<Parameter> parameters;
  ConicShape conic;
  double radius = 0;      // of a circle, sphere or cylinder
  double tubeCircle = 0;  // the radius of the circle of tube centres of a torus
  double form = 0;
  double sumSquares = 0;
  double seconds = 0;
  int filter = 0;  // undulations per revolution at which the roundness filter passes half; 0: unfiltered
  bool zoneIsRound = false;
  std::string warning;  // what the result must not be taken for; mostly empty
  Frame frame;
  std::vector<Vec3> local;
  std::vector<double> deviations;
  std::vector<Contact> contacts;           // none for least squares
  std::string explanation;                 // why the feature is as uncertain as it is
  bool isGlobal = false;                   // proven to be the best of all
  std::optional<Certificate> certificate;  // of all but least squares
  std::optional<GlobalBound> globalBound;  // of a search that was asked for
  std::optional<Uncertainty> uncertainty;  // of least squares

  // How far the points reach to either side of the feature.
  double LargestOutwards() const { return std::max(deviations[IndexOfMax()], 0.0); }
  double LargestInwards() const { return std::max(-deviations[IndexOfMin()], 0.0); }
  double RootMeanSquare() const { return std::sqrt(sumSquares / static_cast<double>(deviations.size())); }
  std::size_t IndexOfMax() const {
    return static_cast<std::size_t>(std::max_element(deviations.begin(), deviations.end()) - deviations.begin());
  }
  std::size_t IndexOfMin() const {
    return static_cast<std::size_t>(std::min_element(deviations.begin(), deviations.end()) - deviations.begin());
  }
};

// The largest coordinate.
inline double SizeOf(const std::vector<Vec3>& points) {
  double size = 0;
  for (const Vec3& p : points) size = std::max({size, std::fabs(p[0]), std::fabs(p[1]), std::fabs(p[2])});
  return size;
}

#endif
