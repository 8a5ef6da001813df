#ifndef NU_CURVES_INTERNAL_CURVE_PIECES_H
#define NU_CURVES_INTERNAL_CURVE_PIECES_H

#include <memory>
#include <vector>

#include "nu/curves/bounded_curve.h"
#include "nu/engine/chains/piece_chain.h"
#include "nu/foundation/object_array.h"

namespace nu::internal {

// What any bounded curve of the library consists of. Another one: CNuOperationException cause 45; a
// composite curve without segments: cause 8.
PieceChain PiecesOf(const CNuBoundedCurve& curve);
// Of a line segment or a circular arc.
void AddPiece(const CNuBoundedCurve& curve, PieceChain& chain);

// The operations that all bounded curves answer in the same way.
double StoreClosest(const NearPair& pair, CNuPoint* p1, CNuPoint* p2);
double DistanceBetween(const CNuBoundedCurve& first, const CNuBoundedCurve* second, CNuPoint* p1, CNuPoint* p2);
// Of coordinates whose differences may overflow; NaN for a NaN.
double DistanceAtAnySize(const CNuBoundedCurve& curve, Vec3 p);
void StoreBounds(const CNuBoundedCurve& curve, CNuPoint* min, CNuPoint* max);
void StoreBall(const Ball& ball, double* radius, CNuPoint* centre);
void StoreSmallestBall(const CNuBoundedCurve& curve, double* radius, CNuPoint* centre);

// A normal of a direction: as near to the z axis as it can be, or the x axis for the z axis itself.
Vec3 UprightNormal(Vec3 tangent);

// The given normal of an offset at unit length. Not three components: CNuOperationException cause 10; zero or not
// finite: cause 9; a distance that is not finite: cause 29.
Vec3 RequireOffset(double distance, const CNuVector& normal, const char* where);

// Adds the curves, which the caller then owns, to an array unless it is null; returns how many there are.
template<class Curve>
int HandOver(std::vector<std::unique_ptr<Curve>> curves, CNuObjArray* array) {
  const int size = static_cast<int>(curves.size());
  if (array == nullptr) return size;
  const int needed = array->GetSize() + size;
  if (needed > array->GetCapacity()) array->SetCapacity(needed);  // nothing fails from here on
  for (std::unique_ptr<Curve>& curve : curves) array->Add(curve.release());
  return size;
}

}  // namespace nu::internal

#endif
