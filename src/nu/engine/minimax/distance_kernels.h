#ifndef NU_ENGINE_MINIMAX_DISTANCE_KERNELS_H
#define NU_ENGINE_MINIMAX_DISTANCE_KERNELS_H

#include "nu/engine/least_squares/surface_kernels.h"
#include "nu/engine/minimax/minimax_points.h"
#include "nu/engine/shapes/axis_frame.h"

// What the kernels of the minimax models share.
namespace nu::engine::minimax {

// The coordinates of eight points in a frame.
NU_ALWAYS_INLINE void LoadLocal(const PointBlock& block, std::size_t i, const AxisFrame& f, Lanes& x, Lanes& y,
                                Lanes& z) {
  Lanes px, py, pz;
  LoadPoints(block, i, px, py, pz);
  px -= f.origin.x;
  py -= f.origin.y;
  pz -= f.origin.z;
  x = px * f.x.x + py * f.x.y + pz * f.x.z;
  y = px * f.y.x + py * f.y.y + pz * f.y.z;
  z = px * f.z.x + py * f.z.y + pz * f.z.z;
}

// Each deviation with the columns times their factors.
template<class Surface>
NU_ALWAYS_INLINE void GradientsBody(const PointBlock& block, const Surface& surface,
                                    const double (&factor)[Surface::kUnknowns], double* deviation,
                                    double (*gradient)[kMostRows]) {
  double* to[Surface::kUnknowns];
  for (int k = 0; k < Surface::kUnknowns; ++k) to[k] = gradient[k];
  RowsBody(block, 0, block.size, surface, factor, to, deviation);
}

// The two kernels of a surface, as functions of their own: templates have no clones for wider registers.
#define NU_DISTANCE_KERNELS(Surface)                                                                            \
  NU_KERNEL void FindEach(const PointBlock& block, const Surface& surface, double* deviation, double& smallest, \
                          double& largest) {                                                                    \
    EachDeviationBody(block, surface, deviation, smallest, largest);                                            \
  }                                                                                                             \
  NU_KERNEL void FindGradients(const PointBlock& block, const Surface& surface,                                 \
                               const double(&factor)[Surface::kUnknowns], double* deviation,                    \
                               double(*gradient)[kMostRows]) {                                                  \
    GradientsBody(block, surface, factor, deviation, gradient);                                                 \
  }

// The extreme deviations of all points from a model of minimax.h.
template<class Model>
ValueRange RangeOfDeviations(PointBlocks& points, const Model& model) {
  double deviation[kBlockPoints];
  return VisitDeviations(points, model, deviation, [](const PointBlock&, const ValueRange&) {});
}

}  // namespace nu::engine::minimax

#endif
