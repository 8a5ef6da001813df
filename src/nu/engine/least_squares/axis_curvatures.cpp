#include "nu/engine/least_squares/axis_curvatures.h"

#include "nu/engine/least_squares/surface_kernels.h"

// With the letters of cylinder_least_squares.cpp and cone_least_squares.cpp, h, t, z along u, v, w from the axis beside
// M, a shift s, a change of H and the tilts A, B of the axis make of the distance d and of the height z, to second
// order,
//
//   d = sqrt((h + dH - A z)^2 + (t - s - B z)^2) - (A h + B t)^2 / (2 d),
//   z = z + A (h + dH) + B (t - s) - (A^2 + B^2) z / 2,
//
// and e = d cos a - S (z sin a + k + H cos a), where S is -1 for points that count from the nappe behind the apex and 1
// for the others. With c = h / d and p = t / d the second derivatives of the root are p^2, -c p, c^2 over d; that of e
// by the angle is -e - S (k + H cos a).

namespace nu::engine::least_squares {
namespace {

// In this order, with g = e / d: of g c^2, g c p, g p^2, each times 1, z, z^2; of g h^2, g h t, g t^2; of e c, e p,
// each times 1, z; of e S times 1, z, h, t; of e^2.
constexpr int kAcross = 9;
constexpr int kCurvatures = kAcross + 3 + 4 + 4 + 1;

struct RevolvedLanes {
  explicit RevolvedLanes(const RevolvedSurface& s)
      : u(s.frame.u),
        v(s.frame.v),
        w(s.frame.w),
        offset{Dot(u, s.frame.pivot), Dot(v, s.frame.pivot), Dot(w, s.frame.pivot)},
        height(s.frame.height),
        rise(s.frame.rise),
        cosine(s.cosine),
        sine(s.sine),
        bothNappes(s.bothNappes) {}

  Vec3 u, v, w;
  Vec3 offset;  // of M along them
  double height, rise;
  double cosine, sine;
  bool bothNappes;
};

NU_KERNEL void SumCurvatures(const PointBlock& block, const RevolvedLanes& given, double (&sums)[kCurvatures]) {
  const RevolvedLanes s = given;
  const double offAxis = s.rise + s.height * s.cosine;
  Lanes sum[kCurvatures] = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes px, py, pz, weight, lift, inverse;
    LoadPoints(block, i, px, py, pz);
    Load(block.Weights(i), weight);
    const Lanes x = s.u.x * px + s.u.y * py + s.u.z * pz - s.offset.x;
    const Lanes t = s.v.x * px + s.v.y * py + s.v.z * pz - s.offset.y;
    const Lanes z = s.w.x * px + s.w.y * py + s.w.z * pz - s.offset.z;
    const Lanes h = x + s.height;
    FindLift(h, t * t, lift, inverse);
    const Lanes raised = s.sine * z;
    Lanes e = s.cosine * lift + (s.cosine * x - raised - s.rise);
    Lanes side = weight;
    if (s.bothNappes) {
      const Lanes behind = raised + offAxis;
      const Lanes other = s.cosine * (lift + h) + behind;
      e = behind < 0.0 ? other : e;
      side = behind < 0.0 ? -weight : weight;
    }
    side *= e;
    e *= weight;
    const Lanes square = e * e;
    const Lanes c = h * inverse, p = t * inverse;
    const Lanes ec = e * c, ep = e * p;
    const Lanes bend[3] = {ec * c * inverse, ec * p * inverse, ep * p * inverse};
    int next = 0;
    for (const Lanes& b : bend) {
      sum[next++] += b;
      sum[next++] += b * z;
      sum[next++] += b * z * z;
    }
    sum[next++] += ec * h;
    sum[next++] += ec * t;
    sum[next++] += ep * t;
    sum[next++] += ec;
    sum[next++] += ep;
    sum[next++] += ec * z;
    sum[next++] += ep * z;
    sum[next++] += side;
    sum[next++] += side * z;
    sum[next++] += side * h;
    sum[next++] += side * t;
    sum[next++] += square;
  }
  for (int k = 0; k < kCurvatures; ++k) sums[k] = Sum(sum[k]);
}

}  // namespace

void SumCurvatures(PointBlocks& points, const RevolvedSurface& surface,
                   double (&second)[kAxisUnknowns][kAxisUnknowns]) {
  const RevolvedLanes lanes(surface);
  const BlockSums<kCurvatures> total = SumOver<kCurvatures>(
      points, [&](const PointBlock& block, double(&sums)[kCurvatures]) { SumCurvatures(block, lanes, sums); });
  double sums[kCurvatures];
  for (int k = 0; k < kCurvatures; ++k) sums[k] = total[k];
  const auto [cc, ccz, cczz, cp, cpz, cpzz, pp, ppz, ppzz, hh, ht, tt, c, p, cz, pz, e, ez, eh, et, squares] = sums;
  const double cosine = surface.cosine, sine = surface.sine;
  const double offAxis = lanes.rise + lanes.height * cosine;
  const double all[kAxisUnknowns][kAxisUnknowns] = {
      {-squares - offAxis * e, sine * p, -sine * c, sine * cz - cosine * eh, sine * pz - cosine * et},
      {0.0, cosine * cc, cosine * cp, -cosine * cpz, cosine * ccz + sine * e},
      {0.0, 0.0, cosine * pp, -cosine * ppz - sine * e, cosine * cpz},
      {0.0, 0.0, 0.0, cosine * (ppzz - hh) + sine * ez, -cosine * (cpzz + ht)},
      {0.0, 0.0, 0.0, 0.0, cosine * (cczz - tt) + sine * ez}};
  for (int i = 0; i < kAxisUnknowns; ++i)
    for (int j = 0; j < kAxisUnknowns; ++j) second[i][j] = i <= j ? all[i][j] : all[j][i];
}

}  // namespace nu::engine::least_squares
