#include "nu/surfaces/surface.h"

#include "nu/engine/least_squares/quadric_axes.h"
#include "nu/engine/points/point_sample.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"

using namespace nu::internal;

void CNuSurface::QuadricAxes(const CNuPointArray& points, const CNuPoint& meanPoint, CNuPoint* axisPoint,
                             CNuVector* axisDirection) {
  constexpr const char* where = "CNuSurface::QuadricAxes()";
  nu::internal::QuadricAxes found;
  Vec3 fromMean;
  WithMemory(where, [&] {
    const PointSample sample(ViewOf(points));
    if (sample.View().Size() == 0) return;
    PointBlocks blocks(sample.View(), LoadVec3(sample.View()[sample.View().Size() / 2]));
    const FourthMoments moments = FindFourthMoments(blocks);
    found = FindQuadricAxes(moments);
    fromMean = blocks.InCallersFrame(moments.mean + found.centre) - Components(meanPoint);
  });
  if (!found.solvable || !IsFinite(fromMean)) FailOperation(NuOperationFailed, "calculation", where);
  const Vec3 direction = WithLargestPositive(found.axis[0]);
  Output(axisPoint, meanPoint + ToPoint(Rejection(fromMean, direction)));
  Output(axisDirection, ToVector(direction));
}
