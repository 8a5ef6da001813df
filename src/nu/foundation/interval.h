#ifndef NU_FOUNDATION_INTERVAL_H
#define NU_FOUNDATION_INTERVAL_H

#include "nu/export.h"
#include "nu/foundation/object.h"

// A range of real numbers lower..upper with lower < upper, each end closed or open: the parameter range of a curve.
// IsIn takes the range as closed; the flags are stored for callers that need open ends.
class NU_EXPORT CNuInterval : public CNuAlgebra {
 public:
  // [0, Nu_2PI], both ends closed: the full turn.
  CNuInterval();
  // Fails with CNuConstructionException ("CNuInterval"): cause 11, lower >= upper, or a NaN.
  CNuInterval(double lower, double upper, int leftOpen, int rightOpen);

  // The two ends.
  void GetBounds(double* lower, double* upper) const;
  // Whether the end is open: 0 or the flag as it was given.
  int IsLeftOpen() const { return m_leftOpen; }
  int IsRightOpen() const { return m_rightOpen; }

  // 1 when lower <= x <= upper, exactly, whatever the open flags say; else 0.
  int IsIn(double x) const;
  // 1 when a bound of one lies in the other, else 0.
  int IsOverlapping(const CNuInterval& other) const;

 private:
  int m_leftOpen = 0;
  int m_rightOpen = 0;
  double m_lower;
  double m_upper;
};

#endif
