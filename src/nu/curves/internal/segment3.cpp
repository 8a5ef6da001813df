#include "nu/curves/internal/segment3.h"

namespace nu::internal {

namespace {

// Squares in this range are neither off the scale of the doubles nor near its end.
constexpr double kSafeSmall = 1e-250;
constexpr double kSafeLarge = 1e250;

bool IsSafe(double square) {
  return square >= kSafeSmall && square <= kSafeLarge;
}

// With w from the first start to the second and n = d1 x d2 the lines are closest where s = (w x d2).n / n.n and
// t = (w x d1).n / n.n. Lines that are almost parallel lose digits in that; once more from the points found, whose w is
// short, brings them back.
void OfferCrossing(const Segment3& first, const Segment3& second, NearPair& best) {
  constexpr int kRefinements = 2;
  const Vec3 d1 = first.end - first.start;
  const Vec3 d2 = second.end - second.start;
  const Vec3 n = Cross(d1, d2);
  const double square = Dot(n, n);
  if (!(square > 0.0)) return;
  double s = 0.0;
  double t = 0.0;
  for (int i = 0; i <= kRefinements; ++i) {
    const Vec3 w = second.At(t) - first.At(s);
    s += Dot(Cross(w, d2), n) / square;
    t += Dot(Cross(w, d1), n) / square;
  }
  if (!(s > 0.0 && s < 1.0 && t > 0.0 && t < 1.0)) return;
  const NearPair pair = PairOf(first.At(s), second.At(t));
  if (pair.IsNearerThan(best)) best = pair;
}

void Offer(Vec3 first, Vec3 second, NearPair& best) {
  const NearPair pair = PairOf(first, second);
  if (pair.IsNearerThan(best)) best = pair;
}

}  // namespace

double SafeNorm(Vec3 v) {
  const double square = Dot(v, v);
  if (IsSafe(square)) return std::sqrt(square);
  return std::hypot(std::hypot(v.x, v.y), v.z);
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
  NearPair best = PairOf(first.start, ClosestOn(second, first.start));
  Offer(first.end, ClosestOn(second, first.end), best);
  Offer(ClosestOn(first, second.start), second.start, best);
  Offer(ClosestOn(first, second.end), second.end, best);
  if (best.distance > 0.0) OfferCrossing(first, second, best);
  return best;
}

}  // namespace nu::internal
