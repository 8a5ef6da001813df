#ifndef NU_ENGINE_SHAPES_QUADRIC_EQUATION_H
#define NU_ENGINE_SHAPES_QUADRIC_EQUATION_H

#include "nu/engine/shapes/quadric_intersection_curve.h"

// The common curve of a pair of quadrics in the angles u of the generators and w of the places along them, t = tan w:
//   g(u, w) = a(u) sin^2 w + 2 h(u) sin w cos w + c(u) cos^2 w = 0,
// and on a curve of a single sheet, a t + c = 0, g(u, w) = a(u) sin w + c(u) cos w. In these angles the curve is
// bounded and smooth: it goes through infinity at cos w = 0, and along a generator at du = 0.
namespace nu::engine::shapes {

// A point of the (u, w) plane, with s = sin w and c = cos w.
struct QuadricSpot {
  double u = 0.0;
  double s = 0.0;
  double c = 1.0;
};

class QuadricEquation {
 public:
  struct Factors {
    double a = 0.0;
    double h = 0.0;
    double c = 0.0;
  };
  // The factors of g at an angle u, their first and second derivatives, and no less than the roundings are parts of.
  struct Jet {
    Factors value;
    Factors slope;
    Factors bend;
    Factors size;
  };

  QuadricEquation(const QuadricPair& pair, const QuadricPath& path) : m_pair(pair), m_path(path) {}

  bool IsQuadratic() const { return m_path.sheets == QuadricPath::Sheets::kBoth; }
  Jet At(double u) const;
  // No second and third derivatives of the factors are larger.
  Factors BendBounds() const;
  Factors TwistBounds() const;

  // g and its derivatives by w.
  double Value(const Factors& k, const QuadricSpot& at) const;
  double Slope(const Factors& k, const QuadricSpot& at) const;
  double Bend(const Factors& k, const QuadricSpot& at) const;
  // No second derivative of g by w is larger, nor a third one divided by the frequency.
  double BendBound(const Factors& k) const {
    return IsQuadratic() ? 2.0 * Hypot(k.a - k.c, 2.0 * k.h) : Hypot(k.a, k.c);
  }
  double Frequency() const { return IsQuadratic() ? 2.0 : 1.0; }

  // The root of g on the generator at u at which g rises with w (`sign` above 0) or falls; false where there is none.
  bool CrossingAt(double u, double sign, QuadricSpot& at) const;
  // The root of g(., w) nearest to a guess, between limits within which g is monotone.
  double AngleAt(double s, double c, double guess, double lower, double upper) const;

 private:
  Factors OfSheets(const Factors& waves) const;

  const QuadricPair& m_pair;
  const QuadricPath& m_path;
};

}  // namespace nu::engine::shapes

#endif
