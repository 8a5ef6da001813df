#ifndef NU_ENGINE_SHAPES_SEGMENT3_H
#define NU_ENGINE_SHAPES_SEGMENT3_H

#include "nu/engine/shapes/vec3.h"

namespace nu::engine::shapes {

struct Segment3 {
  Vec3 start, end;

  Vec3 At(double t) const { return t == 1.0 ? end : start + t * (end - start); }
};

// The least distance between two curves, and where it is found.
struct NearPair {
  // Whether this one is nearer. A NaN is farther than any number.
  bool IsNearerThan(const NearPair& other) const {
    return distance < other.distance || (std::isnan(other.distance) && !std::isnan(distance));
  }
  // The nearest so far. A NaN stays.
  void Include(const NearPair& pair) {
    if (pair.distance < distance || std::isnan(pair.distance)) *this = pair;
  }
  NearPair Swapped() const { return {distance, second, first}; }

  double distance;
  Vec3 first, second;
};

// The length of v, without overflow and underflow on the way.
double SafeNorm(Vec3 v);

inline NearPair PairOf(Vec3 first, Vec3 second) {
  return {SafeNorm(first - second), first, second};
}
inline void Offer(const NearPair& pair, NearPair& best) {
  if (pair.IsNearerThan(best)) best = pair;
}

// The parameter in [0, 1] of the closest point; 0 on a segment without a direction.
double ClosestParameter(const Segment3& segment, Vec3 p);

inline Vec3 ClosestOn(const Segment3& segment, Vec3 p) {
  return segment.At(ClosestParameter(segment, p));
}

// From an end of either.
template<class First, class Second>
NearPair ClosestFromEnds(const First& first, const Second& second) {
  NearPair best = PairOf(first.start, ClosestOn(second, first.start));
  Offer(PairOf(first.end, ClosestOn(second, first.end)), best);
  Offer(PairOf(ClosestOn(first, second.start), second.start), best);
  Offer(PairOf(ClosestOn(first, second.end), second.end), best);
  return best;
}

NearPair ClosestBetween(const Segment3& first, const Segment3& second);

}  // namespace nu::engine::shapes

#endif
