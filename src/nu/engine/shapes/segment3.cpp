#include "nu/engine/shapes/segment3.h"

#include <cfloat>

#include "nu/engine/base/elementary.h"

namespace nu::engine::shapes {

namespace {

// Squares in this range are neither off the scale of the doubles nor near its end.
constexpr double kSafeSmall = 1e-250;
constexpr double kSafeLarge = 1e250;

bool IsSafe(double square) {
  return square >= kSafeSmall && square <= kSafeLarge;
}

NearPair ClosestFrom(const Segment3& first, double s, const Segment3& second) {
  return PairOf(first.At(s), ClosestOn(second, first.At(s)));
}

// The golden section of the least distance to the second segment, which is convex along the first one.
NearPair ByGoldenSection(const Segment3& first, const Segment3& second) {
  constexpr int kSteps = 80;  // the section shrinks to a rounding in 75
  constexpr double kGolden = 0.6180339887498949;
  double low = 0.0;
  double high = 1.0;
  double left = high - kGolden;
  double right = low + kGolden;
  NearPair atLeft = ClosestFrom(first, left, second);
  NearPair atRight = ClosestFrom(first, right, second);
  for (int i = 0; i < kSteps; ++i) {
    if (atLeft.distance < atRight.distance) {
      high = right;
      right = left;
      atRight = atLeft;
      left = high - kGolden * (high - low);
      atLeft = ClosestFrom(first, left, second);
    } else {
      low = left;
      left = right;
      atLeft = atRight;
      right = low + kGolden * (high - low);
      atRight = ClosestFrom(first, right, second);
    }
  }
  return atLeft.IsNearerThan(atRight) ? atLeft : atRight;
}

// With w from the first start to the second and n = d1 x d2 the lines are closest where s = (w x d2).n / n.n and
// t = (w x d1).n / n.n. A small sine costs digits, some of which come back when this is done once more from the points
// found, whose w is short; below a sine of about the root of a rounding they do not, and values of the distance, which
// keep theirs, must do.
void OfferCrossing(const Segment3& first, const Segment3& second, NearPair& best) {
  constexpr int kRefinements = 2;
  constexpr double kSmallSine = 1e-6;
  constexpr double kRoundings = 4.0 * DBL_EPSILON;
  const Vec3 d1 = first.end - first.start;
  const Vec3 d2 = second.end - second.start;
  const Vec3 n = Cross(d1, d2);
  const double square = Dot(n, n);
  if (!(square > 0.0)) return;
  const double squares = Dot(d1, d1) * Dot(d2, d2);
  if (square < kSmallSine * kSmallSine * squares) {
    // The ends, whose distances are known, are no farther than the sine times the shorter length from the least one.
    const double gain = std::sqrt(square / std::max(Dot(d1, d1), Dot(d2, d2)));
    if (!(gain > kRoundings * SafeNorm(first.start))) return;
    return Offer(ByGoldenSection(first, second), best);
  }
  double s = 0.0;
  double t = 0.0;
  for (int i = 0; i <= kRefinements; ++i) {
    const Vec3 w = second.At(t) - first.At(s);
    s += Dot(Cross(w, d2), n) / square;
    t += Dot(Cross(w, d1), n) / square;
  }
  if (!(s > 0.0 && s < 1.0 && t > 0.0 && t < 1.0)) return;
  Offer(PairOf(first.At(s), second.At(t)), best);
}

}  // namespace

double SafeNorm(Vec3 v) {
  const double square = Dot(v, v);
  if (IsSafe(square)) return std::sqrt(square);
  return Hypot(Hypot(v.x, v.y), v.z);
}

double ClosestParameter(const Segment3& segment, Vec3 p) {
  Vec3 d = segment.end - segment.start;
  Vec3 w = p - segment.start;
  if (!IsSafe(Dot(d, d))) {
    const double largest = std::max({std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)});
    if (!(largest > 0.0) || !std::isfinite(largest)) return 0.0;
    const int exponent = std::ilogb(largest);
    d = {std::ldexp(d.x, -exponent), std::ldexp(d.y, -exponent), std::ldexp(d.z, -exponent)};
    w = {std::ldexp(w.x, -exponent), std::ldexp(w.y, -exponent), std::ldexp(w.z, -exponent)};
  }
  const double t = Dot(w, d) / Dot(d, d);
  return t > 0.0 ? std::min(t, 1.0) : 0.0;
}

// The squared distance is convex in both parameters: it is least where the lines are closest, or else at an end.
NearPair ClosestBetween(const Segment3& first, const Segment3& second) {
  NearPair best = ClosestFromEnds(first, second);
  if (best.distance > 0.0) OfferCrossing(first, second, best);
  return best;
}

}  // namespace nu::engine::shapes
