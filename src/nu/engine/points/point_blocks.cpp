#include "nu/engine/points/point_blocks.h"

#include <cmath>
#include <new>

namespace nu::engine::points {
namespace {

// How far ahead of the points the processor is told to fetch, in bytes: as many as a portion of points takes, so that
// the next one is on its way while this one is computed. It waits in the second cache; the first one is full of this
// one.
constexpr std::ptrdiff_t kFetchAhead = 40 * kPortion;
constexpr int kSecondCache = 2;
constexpr std::ptrdiff_t kCacheLine = 64;

// Asks for what lies ahead of eight points. A prefetch beyond the end of the points is ignored.
NU_ALWAYS_INLINE void FetchAhead(const PointView& points, std::size_t i) {
#if defined(__GNUC__)
  const char* begin = reinterpret_cast<const char*>(points[i]);
  const std::ptrdiff_t bytes = reinterpret_cast<const char*>(points[i + kLanes - 1]) - begin;
  for (std::ptrdiff_t at = 0; at <= bytes; at += kCacheLine)
    __builtin_prefetch(begin + (kFetchAhead + at), 0, kSecondCache);
#endif
}

// Scaling acts before the difference, so that coordinates near the largest double do not overflow in it.
NU_KERNEL void Pack(PointView points, Vec3 origin, double scale, double* __restrict x, double* __restrict y,
                    double* __restrict z) {
  const double ox = origin.x * scale;
  const double oy = origin.y * scale;
  const double oz = origin.z * scale;
  const std::size_t n = points.Size();
  const auto take = [&](std::size_t i) __attribute__((always_inline)) {
    const double* p = points[i];
    x[i] = p[0] * scale - ox;
    y[i] = p[1] * scale - oy;
    z[i] = p[2] * scale - oz;
  };
  std::size_t i = 0;
  for (; i + kLanes <= n; i += kLanes) {
    FetchAhead(points, i);
    for (int l = 0; l < kLanes; ++l) take(i + l);
  }
  for (; i < n; ++i) take(i);
  for (; i % kLanes != 0; ++i) {
    x[i] = x[n - 1];
    y[i] = y[n - 1];
    z[i] = z[n - 1];
  }
}

// 2^-k that brings a positive value to about 1, kept within the range of normal doubles.
double PowerAgainst(double value) {
  constexpr int kWidest = 1000;
  return std::ldexp(1.0, std::clamp(-std::ilogb(value), -kWidest, kWidest));
}

}  // namespace

void PointBlocks::Load(PointView part, PointBlock& block) {
  Pack(part, m_origin, m_scale, block.x, block.y, block.z);
  block.size = part.Size();
}

void PointBlocks::Keep() {
  if (m_kept || Size() <= kBlockPoints || Size() > kKeptPoints) return;
  m_portion = kBlockPoints;
  BeginRanges();
  m_kept.reset(new (std::nothrow) PointBlock[KeptBlocks()]);
}

void PointBlocks::NoteRanges() {
  if (m_ranges || Size() < kRangedPoints) return;
  m_ranges.reset(new (std::nothrow) Range[(Size() + kPortion - 1) / kPortion]);
}

// What was noted before is no longer valid.
void PointBlocks::BeginRanges() {
  if (m_isNarrowed) return;
  m_noted = 0;
  ++m_rangedWalk;
}

void PointBlocks::Narrow(double above, double below) {
  m_between = {above, below};
  m_isNarrowed = m_ranges != nullptr;
}

bool PointBlocks::AllFinite() const {
  for (std::size_t i = 0; i < Size(); ++i)
    if (!IsFinite(LoadVec3(m_points[i]))) return false;
  return true;
}

bool PointBlocks::FitScale() {
  if (!AllFinite()) return false;
  const auto farthest = [this](double scale, const Vec3& from) {
    double reach = 0.0;
    for (std::size_t i = 0; i < Size(); ++i) {
      const Vec3 q = scale * LoadVec3(m_points[i]) - scale * from;
      reach = std::max({reach, std::fabs(q.x), std::fabs(q.y), std::fabs(q.z)});
    }
    return reach;
  };
  // First from zero, so that differences do not overflow.
  const double reach = farthest(1.0, Vec3{});
  if (reach == 0.0) return true;
  const double coarse = PowerAgainst(reach);
  const double extent = farthest(coarse, m_origin);
  if (extent == 0.0) return true;
  m_scale = PowerAgainst(extent / coarse);
  m_block.size = 0;
  for (std::size_t k = 0; m_kept && k < KeptBlocks(); ++k) m_kept[k].size = 0;
  return true;
}

double FarthestFrom(PointBlocks& points, const Vec3& place) {
  double square = 0.0;
  points.ForEachPoint([&](const Vec3& p) {
    const double s = Dot(p - place, p - place);
    square = s <= square ? square : s;
  });
  return std::sqrt(square);
}

}  // namespace nu::engine::points
