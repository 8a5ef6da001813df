#include "nu/surfaces/surface.h"

#include "nu/engine/least_squares/quadric_axes.h"
#include "nu/engine/points/point_sample.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/directions.h"
#include "nu/geometry/internal/point_set.h"

using nu::internal::Components;
using nu::internal::FailOperation;
using nu::internal::FindFourthMoments;
using nu::internal::FindQuadricAxes;
using nu::internal::FourthMoments;
using nu::internal::LoadVec3;
using nu::internal::PointBlocks;
using nu::internal::PointSample;
using nu::internal::Rejection;
using nu::internal::ToPoint;
using nu::internal::ToVector;
using nu::internal::Vec3;

void CNuSurface::QuadricAxes(const CNuPointArray& points, const CNuPoint& meanPoint, CNuPoint* axisPoint,
                             CNuVector* axisDirection) {
  const PointSample sample(nu::internal::ViewOf(points));
  nu::internal::QuadricAxes found;
  Vec3 fromMean;
  if (sample.View().Size() > 0) {
    PointBlocks blocks(sample.View(), LoadVec3(sample.View()[sample.View().Size() / 2]));
    const FourthMoments moments = FindFourthMoments(blocks);
    found = FindQuadricAxes(moments);
    fromMean = blocks.InCallersFrame(moments.mean + found.centre) - Components(meanPoint);
  }
  if (!found.solvable || !IsFinite(fromMean)) FailOperation(46, "calculation", "CNuSurface::QuadricAxes()");
  const Vec3 direction = nu::internal::WithLargestPositive(found.axis[0]);
  nu::internal::Output(axisPoint, meanPoint + ToPoint(Rejection(fromMean, direction)));
  nu::internal::Output(axisDirection, ToVector(direction));
}
