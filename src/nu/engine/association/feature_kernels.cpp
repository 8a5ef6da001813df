// A round feature is a curve F(rho, h, sizes) = e in the half-plane of the distance rho from the axis and the height h,
// as in feature.cpp. With (c, s) the direction of a point around the axis, the derivatives of its deviation are
//
//   by shifts -c F_rho, -s F_rho, -F_h;  by tilts x F_h - c z F_rho, y F_h - s z F_rho;  by sizes those of F.

#include "nu/engine/association/feature_kernels.h"

#include <algorithm>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_lanes.h"

namespace nu::engine::association {
namespace {

struct Derivatives {
  Lanes byRho, byHeight, bySize[2];
};

struct PlaneProfile {
  NU_ALWAYS_INLINE void operator()(const Lanes&, const Lanes& h, Lanes& e, Derivatives& f) const {
    e = h;
    f = {Lanes{}, 1.0 + Lanes{}, {Lanes{}, Lanes{}}};
  }
};

// Circle, cylinder and line.
struct AxisProfile {
  double radius;

  NU_ALWAYS_INLINE void operator()(const Lanes& rho, const Lanes&, Lanes& e, Derivatives& f) const {
    e = rho - radius;
    f = {1.0 + Lanes{}, Lanes{}, {-1.0 + Lanes{}, Lanes{}}};
  }
};

// The radius and the sine of the nappe behind the apex are minus those of the feature.
struct ConeProfile {
  double radius, sine, cosine;
  bool bothNappes;

  NU_ALWAYS_INLINE void operator()(const Lanes& rho, const Lanes& h, Lanes& e, Derivatives& f) const {
    const Lanes one = 1.0 + Lanes{};
    const Lanes before = h * sine + radius * cosine;
    const Lanes side = bothNappes ? (before < 0.0 ? -one : one) : one;
    const Lanes over = rho - side * radius;
    e = over * cosine - h * (side * sine);
    f.byRho = cosine + Lanes{};
    f.byHeight = side * -sine;
    f.bySize[0] = side * -cosine;
    f.bySize[1] = -side * (over * (side * sine) + h * cosine);
  }
};

// Torus, circle in space (no minor radius) and sphere (no major radius).
struct RingProfile {
  double major, minor;
  bool isSphere;

  NU_ALWAYS_INLINE void operator()(const Lanes& rho, const Lanes& h, Lanes& e, Derivatives& f) const {
    const Lanes across = rho - major;
    Lanes distance = across * across + h * h;
    TakeSquareRoot(distance);
    const Lanes quotient = 1.0 / distance;
    const Lanes inverse = distance > 0.0 ? quotient : Lanes{};
    e = distance - minor;
    f.byRho = across * inverse;
    f.byHeight = h * inverse;
    f.bySize[0] = isSphere ? -1.0 + Lanes{} : -f.byRho;
    f.bySize[1] = -1.0 + Lanes{};
  }
};

struct Place {
  Lanes x, y, z, rho;
};

NU_ALWAYS_INLINE void Locate(const PointBlock& block, std::size_t i, const AxisFrame& f, Place& q) {
  Lanes px, py, pz;
  LoadPoints(block, i, px, py, pz);
  q.x = px * f.x.x + py * f.x.y + pz * f.x.z;
  q.y = px * f.y.x + py * f.y.y + pz * f.y.z;
  q.z = px * f.z.x + py * f.z.y + pz * f.z.z;
  q.rho = q.x * q.x + q.y * q.y;
  TakeSquareRoot(q.rho);
}

template<class Profile>
NU_ALWAYS_INLINE void DeviationsBody(const PointBlock& block, const AxisFrame& given, const Profile& profile,
                                     double* to, double& smallest, double& largest) {
  const AxisFrame frame = given;
  LaneExtremes extremes;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Place q;
    Derivatives unused;
    Lanes e;
    Locate(block, i, frame, q);
    profile(q.rho, q.z, e, unused);
    Store(e, to + i);
    extremes.Add(e);
  }
  smallest = extremes.Smallest();
  largest = extremes.Largest();
}

NU_ALWAYS_INLINE void StoreWanted(const Lanes& lanes, double* column, std::size_t i) {
  if (column != nullptr) Store(lanes, column + i);
}

template<class Profile>
NU_ALWAYS_INLINE void RowsBody(const PointBlock& block, std::size_t begin, std::size_t end, const AxisFrame& given,
                               const Profile& profile, double* const (&column)[kUnknowns], double* residual) {
  const AxisFrame frame = given;
  for (std::size_t i = begin; i < end; i += kLanes) {
    Place q;
    Derivatives f;
    Lanes e;
    Locate(block, i, frame, q);
    profile(q.rho, q.z, e, f);
    const Lanes quotient = 1.0 / q.rho;
    const Lanes inverse = q.rho > 0.0 ? quotient : Lanes{};
    const Lanes alongX = q.x * inverse * f.byRho;
    const Lanes alongY = q.y * inverse * f.byRho;
    const std::size_t at = i - begin;
    Store(e, residual + at);
    StoreWanted(-alongX, column[kShiftX], at);
    StoreWanted(-alongY, column[kShiftY], at);
    StoreWanted(-f.byHeight, column[kShiftZ], at);
    StoreWanted(q.x * f.byHeight - alongX * q.z, column[kTiltX], at);
    StoreWanted(q.y * f.byHeight - alongY * q.z, column[kTiltY], at);
    StoreWanted(f.bySize[0], column[kSize0], at);
    StoreWanted(f.bySize[1], column[kSize1], at);
  }
}

// One function per profile, as a template has no clones.
#define NU_PROFILE_KERNELS(Profile)                                                                                \
  NU_KERNEL void DeviationsOf(const PointBlock& block, const AxisFrame& frame, const Profile& profile, double* to, \
                              double& low, double& high) {                                                         \
    DeviationsBody(block, frame, profile, to, low, high);                                                          \
  }                                                                                                                \
  NU_KERNEL void RowsOf(const PointBlock& block, std::size_t begin, std::size_t end, const AxisFrame& frame,       \
                        const Profile& profile, double* const(&column)[kUnknowns], double* residual) {             \
    RowsBody(block, begin, end, frame, profile, column, residual);                                                 \
  }
NU_PROFILE_KERNELS(PlaneProfile)
NU_PROFILE_KERNELS(AxisProfile)
NU_PROFILE_KERNELS(ConeProfile)
NU_PROFILE_KERNELS(RingProfile)
#undef NU_PROFILE_KERNELS

// Calls visit with the profile of a round feature; false for conics and the line in a plane.
template<class Visit>
bool WithProfile(const Feature& feature, const Visit& visit) {
  const double* size = feature.size;
  switch (feature.kind) {
    case FeatureKind::plane:
      visit(PlaneProfile{});
      return true;
    case FeatureKind::line:
      visit(AxisProfile{0.0});
      return true;
    case FeatureKind::circle:
    case FeatureKind::cylinder:
      visit(AxisProfile{size[0]});
      return true;
    case FeatureKind::cone:
      visit(ConeProfile{size[0], Sin(size[1]), Cos(size[1]), feature.bothNappes});
      return true;
    case FeatureKind::circleInSpace:
      visit(RingProfile{size[0], 0.0, false});
      return true;
    case FeatureKind::sphere:
      visit(RingProfile{0.0, size[0], true});
      return true;
    case FeatureKind::torus:
      visit(RingProfile{size[0], size[1], false});
      return true;
    default:
      return false;
  }
}

Feature AboutOrigin(Feature feature) {
  feature.frame.origin = {};
  return feature;
}

}  // namespace

void FindDeviations(const PointBlock& block, const Feature& feature, double* to, double& smallest, double& largest) {
  const bool isDone = WithProfile(
      feature, [&](const auto& profile) { DeviationsOf(block, feature.frame, profile, to, smallest, largest); });
  if (isDone) return;
  const Feature centred = AboutOrigin(feature);
  smallest = kInfinity;
  largest = -kInfinity;
  for (std::size_t i = 0; i < block.size; ++i) {
    to[i] = DeviationOf(centred, block.At(i));
    smallest = std::min(smallest, to[i]);
    largest = std::max(largest, to[i]);
  }
}

int ResidualsPerPoint(FeatureKind kind) {
  return IsDistance(kind) ? 2 : 1;
}

// To first order the frame tilts with the least turn, so that the coordinates of a point change by -tilt z across and
// by tilt . (x, y) along.
int ResidualsOf(const Feature& feature, const Vec3& point, double (&residual)[kMostResiduals],
                double (&row)[kMostResiduals][kUnknowns]) {
  if (ResidualsPerPoint(feature.kind) == 1) {
    residual[0] = DeviationOf(feature, point, row[0]);
    return 1;
  }
  std::fill_n(&row[0][0], kMostResiduals * kUnknowns, 0.0);
  const Vec3 q = feature.frame.Local(point);
  if (feature.kind == FeatureKind::line) {
    residual[0] = q.x;
    residual[1] = q.y;
    row[0][kShiftX] = row[1][kShiftY] = -1.0;
    row[0][kTiltX] = row[1][kTiltY] = -q.z;
    return 2;
  }
  const double rho = Hypot(q.x, q.y);
  const double cosine = rho > 0.0 ? q.x / rho : 0.0;
  const double sine = rho > 0.0 ? q.y / rho : 0.0;
  residual[0] = rho - feature.size[0];
  residual[1] = q.z;
  row[0][kShiftX] = -cosine;
  row[0][kShiftY] = -sine;
  row[0][kTiltX] = -q.z * cosine;
  row[0][kTiltY] = -q.z * sine;
  row[0][kSize0] = row[1][kShiftZ] = -1.0;
  row[1][kTiltX] = q.x;
  row[1][kTiltY] = q.y;
  return 2;
}

void FindRows(const PointBlock& block, std::size_t begin, std::size_t end, const Feature& feature, int which,
              double* const (&column)[kUnknowns], double* residual) {
  const bool isDone = ResidualsPerPoint(feature.kind) == 1 && WithProfile(feature, [&](const auto& profile) {
                        RowsOf(block, begin, end, feature.frame, profile, column, residual);
                      });
  if (isDone) return;
  const Feature centred = AboutOrigin(feature);
  for (std::size_t i = begin; i < end; ++i) {
    double each[kMostResiduals];
    double row[kMostResiduals][kUnknowns];
    ResidualsOf(centred, block.At(i), each, row);
    residual[i - begin] = each[which];
    for (int k = 0; k < kUnknowns; ++k)
      if (column[k] != nullptr) column[k][i - begin] = row[which][k];
  }
}

}  // namespace nu::engine::association
