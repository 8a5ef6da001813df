#ifndef NU_NUMERICS_INTEGRAL_H
#define NU_NUMERICS_INTEGRAL_H

#include "nu/export.h"
#include "nu/foundation/object.h"

// The integral of a function of one variable over a finite interval, with an estimate of its error. The type code is
// set when Calculate starts and is 0 before.
class NU_EXPORT CNuIntegral : public CNuNumericalAnalysis {
 public:
  // Without a result: value and estimate are 0.
  CNuIntegral() = default;
  CNuIntegral(const CNuIntegral&) = default;
  CNuIntegral& operator=(const CNuIntegral&) = default;
  ~CNuIntegral() override;

  // The integral of f from a to b. Its error estimate is at most tol * max(1, |integral|): absolute for integrals below
  // 1, relative above, so that one tolerance serves every size of part. A tol that is not above 16 roundings (3.6e-15),
  // 0, negative or NaN counts as that. a > b negates; a == b gives 0 without a call of f. Reads no tolerance of the
  // library. What f throws passes through.
  //
  // f may oscillate, jump, have kinks, or be singular. a and b are never sampled while there is a double between them;
  // inside, an infinite or undefined value at up to 64 places is taken for a singularity that was hit. The interval is
  // divided adaptively under the Gauss-Kronrod rule with 7 and 15 points, at places where f or its slope jumps once
  // they are found; panels at singular places go to the double-exponential rule (A. S. Kronrod, 1965; H. Takahasi, M.
  // Mori, 1974). At a singularity at c other than 0 distances are known to 1e-16 |c| only; there the integral is
  // extrapolated up to the singularity itself (P. Wynn, 1956; R. Piessens et al., 1983). A tol of 1e-12 is reached for
  // powers of the distance above -0.95, for logarithms, and for a logarithm times a power above -0.8; 1e-10 for the
  // others above -0.95.
  //
  // What is narrower than the distance of the samples can be missed, and the estimate does not show it. At least 1958
  // samples are taken, neighbours no farther apart than 1/1200 of the interval, towards both ends at distances that
  // fall to the resolution of double. A bell-shaped peak is found down to a width of 1/5000, one that ends abruptly
  // down to 1/1000, a narrower one by chance. An edge beside a singularity at an end c other than 0 is found if it
  // changes f by a share above 1e-14 |c| / its distance from c; a singularity within 1e-11 |c| of an end may be taken
  // for one at that end. The values of f count as they are returned: where f loses digits, as (1 - cos x) / x^2 does
  // near 0, the integral is that of the rounded values, and the estimate does not hold what they lost.
  //
  // Fails with CNuOperationException ("CNuIntegral::Calculate()", "operation"), value and estimate unchanged:
  //   43  f is null, or f, a, b or the integral is not finite
  //   44  tol is not reached within maxIter levels, of up to three halvings and on average 262,144 samples each
  //       (5.2 million in all by default)
  double Calculate(double (*f)(double), double a, double b, double tol, long maxIter = 20);

  // Of the last successful Calculate; 0 before.
  double GetValue() const { return m_value; }
  double GetErrorEstimate() const { return m_error; }

 private:
  double m_value = 0.0;
  double m_error = 0.0;
};

#endif
