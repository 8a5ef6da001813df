#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/elementary_parts.h"
#include "nu/engine/base/floating_point.h"

// Cube roots and lengths: an approximation to nearly all digits, then one step of Newton's method whose residual is
// evaluated with the digits that cancel (W. Kahan, Computing a real cube root, 1991; C. F. Borges, Algorithm 1014: An
// improved algorithm for hypot(x,y), ACM TOMS 47, 2020).
namespace nu::engine::base {

namespace {

// The greatest magnitude decides which squares neither overflow nor lose digits that count.
constexpr double kLargestPlain = 0x1p500;
constexpr double kSmallestPlain = 0x1p-450;

inline bool IsPlain(double largest) {
  return largest < kLargestPlain && largest > kSmallestPlain;
}

// Each of these compiles to one instruction.
inline double Larger(double x, double y) {
  return x > y ? x : y;
}
inline double Smaller(double x, double y) {
  return x > y ? y : x;
}

// Returns the square of x minus that of its upper digits.
inline double LowerSquare(double x, double upper) {
  return (x + upper) * (x - upper);
}

// Returns the square root of square + rest, where square is the sum of squares of upper digits and rest is below 2^-24
// of it.
inline DoubleDouble RootOfSquares(double square, double rest) {
  const double root = std::sqrt(square + rest);
  const double upper = UpperDigits(root);
  const double residual = (square - upper * upper) + (rest - LowerSquare(root, upper));
  return {root, residual * (root * (0.5 / square))};
}

// The arguments are magnitudes, the greatest one first.
inline DoubleDouble PlainHypot(double a, double b) {
  const double upperA = UpperDigits(a);
  const double upperB = UpperDigits(b);
  const DoubleDouble square = FastTwoSum(upperA * upperA, upperB * upperB);
  return RootOfSquares(square.high, square.low + (LowerSquare(a, upperA) + LowerSquare(b, upperB)));
}

inline DoubleDouble PlainHypot(double a, double b, double c) {
  const double upperA = UpperDigits(a);
  const double upperB = UpperDigits(b);
  const double upperC = UpperDigits(c);
  const DoubleDouble first = FastTwoSum(upperA * upperA, upperB * upperB);
  const DoubleDouble square = FastTwoSum(first.high, upperC * upperC);
  const double lower = LowerSquare(a, upperA) + (LowerSquare(b, upperB) + LowerSquare(c, upperC));
  return RootOfSquares(square.high, (first.low + square.low) + lower);
}

// An infinite argument makes an infinite length, whatever the others are.
double HypotAtEdge(double x, double y, double z) {
  if (std::isinf(x) || std::isinf(y) || std::isinf(z)) return kInfinity;
  if (std::isnan(x) || std::isnan(y) || std::isnan(z)) return x + y + z;
  const double a = std::max({x, y, z});
  if (a == 0.0) return a;
  const double c = std::min({x, y, z});
  const double b = std::max(std::min(x, y), std::min(std::max(x, y), z));
  const double scale = a > 1.0 ? 0x1p-600 : 0x1p600;
  const DoubleDouble length = PlainHypot(a * scale, b * scale, c * scale);
  return scale > 1.0 ? RoundOnceBelow(length, -600) : SumOf(length) * 0x1p600;
}

// 2^(-j / 3)
constexpr double kInverseCubeRoots[3] = {1.0, 0.79370052598409973738, 0.62996052494743658238};

}  // namespace

double Hypot(double x, double y) {
  const double v = std::fabs(x);
  const double u = std::fabs(y);
  const double a = Larger(u, v);
  const double b = Smaller(u, v);
  return IsPlain(a) ? SumOf(PlainHypot(a, b)) : HypotAtEdge(a, b, 0.0);
}

double Hypot(double x, double y, double z) {
  const double v = std::fabs(x);
  const double u = std::fabs(y);
  const double w = std::fabs(z);
  const double larger = Larger(u, v);
  const double smaller = Smaller(u, v);
  const double middle = Smaller(larger, w);
  const double a = Larger(larger, w);
  const bool isFinite = v + u + w < kInfinity;
  if (!(isFinite && IsPlain(a))) return HypotAtEdge(v, u, w);
  return SumOf(PlainHypot(a, Larger(middle, smaller), Smaller(middle, smaller)));
}

double Cbrt(double x) {
  double magnitude = std::fabs(x);
  if (!(magnitude > 0.0 && magnitude < kInfinity)) return x;
  std::int64_t bias = 1023;
  if (magnitude < std::numeric_limits<double>::min()) {
    magnitude *= 0x1p54;
    bias += 54;
  }
  // Writes x = a 8^q with 1 <= a < 8; the bias of the exponent is a multiple of three.
  constexpr std::uint64_t kMantissa = (std::uint64_t{1} << 52) - 1;
  const std::uint64_t bits = BitsOf(magnitude);
  const auto exponent = static_cast<std::int64_t>(bits >> 52);
  const double m = FromBits((bits & kMantissa) | BitsOf(1.0));
  const double a = m * PowerOfTwoAt(exponent % 3);
  // The inverse root comes from a polynomial to 2^-14, found by Chebyshev interpolation, and a step of fourth order.
  const double start =
      1.6662787377309156 +
      m * (-1.1623973573078166 + m * (0.6846527077322325 + m * (-0.21636185469244387 + m * 0.02778280101858424)));
  const double w = start * kInverseCubeRoots[exponent % 3];
  const double e = 1.0 - a * w * w * w;
  const double inverse = w + w * e * (1.0 / 3.0 + e * (2.0 / 9.0 + e * (14.0 / 81.0)));
  const double inverse2 = inverse * inverse;
  const double root = a * inverse2;
  const DoubleDouble square = TwoProduct(root, root);
  const DoubleDouble cube = TwoProduct(square.high, root);
  const double residual = ((a - cube.high) - cube.low) - square.low * root;
  const double value = root + residual * inverse2 * (1.0 / 3.0);
  return std::copysign(value * PowerOfTwoAt((exponent - exponent % 3 - bias) / 3), x);
}

}  // namespace nu::engine::base
