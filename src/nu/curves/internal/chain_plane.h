#ifndef NU_CURVES_INTERNAL_CHAIN_PLANE_H
#define NU_CURVES_INTERNAL_CHAIN_PLANE_H

#include "nu/curves/bounded_curve.h"
#include "nu/engine/chains/piece_chain.h"

namespace nu::internal {

// The length is the area that the chain runs around, the direction the normal from whose tip it does so
// counter-clockwise. The last point is joined to the first one.
Vec3 VectorArea(const PieceChain& chain);

// The least-squares plane of the chain, without one, within the tolerance, the plane of a segment. The normal is on the
// side from which the chain runs counter-clockwise.
Plane3 CarrierOf(const PieceChain& chain, double tol);

// Within which points of the chain coincide: NuGetLengthTol(), or the rounding of large coordinates.
double TolOf(const PieceChain& chain);

// Of a curve that is not empty: the normal of its carrier, and how far it leaves it.
CNuVector PlaneNormalOf(const CNuBoundedCurve& curve);
double HeightOf(const CNuBoundedCurve& curve);
// Whether it meets itself.
bool TouchesItself(const CNuBoundedCurve& curve);

// How far the chain leaves the plane; NaN when a coordinate is not finite.
double LargestDistance(const PieceChain& chain, const Plane3& plane);

}  // namespace nu::internal

#endif
