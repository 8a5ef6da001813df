#include "nu/curves/composite_curve.h"

#include <utility>

#include "nu/curves/circular_arc.h"
#include "nu/curves/internal/chain_plane.h"
#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/sampling.h"
#include "nu/curves/line_segment.h"
#include "nu/curves/polyline.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/downcast.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"

using namespace nu::internal;

namespace {

std::shared_ptr<CNuBoundedCurve> CopyOf(const CNuBoundedCurve& segment) {
  if (const auto* line = As<CNuLineSegment>(segment)) return std::make_shared<CNuLineSegment>(*line);
  if (const auto* arc = As<CNuCircularArc>(segment)) return std::make_shared<CNuCircularArc>(*arc);
  FailOperation(NuOperationUnsupported, "Add segment of specified type", "CNuCompositeCurve::AddSegment()");
}

// The objects that several segments share, which are the default ones of either type.
class SharedObjects {
 public:
  static constexpr std::size_t kMost = 2;
  struct Found {
    std::size_t number;
    bool isNew;
  };

  Found Find(const CNuBoundedCurve* object) {
    for (std::size_t i = 0; i < m_size; ++i) {
      if (m_objects[i] == object) return {i, false};
    }
    m_objects[m_size] = object;
    return {m_size++, true};
  }

 private:
  const CNuBoundedCurve* m_objects[kMost] = {};
  std::size_t m_size = 0;
};

// Takes every object once to visit.
template<class Segments, class Visit>
void VisitObjects(const Segments& segments, const Visit& visit) {
  SharedObjects shared;
  for (const auto& segment : segments) {
    if (segment.use_count() > 1 && !shared.Find(segment.get()).isNew) continue;
    if (auto* line = As<CNuLineSegment>(*segment)) visit(*line);
    if (auto* arc = As<CNuCircularArc>(*segment)) visit(*arc);
  }
}

// Into how many chords an arc is divided that leave it by tol at most, where one of the angle a leaves it by
// 2 r sin(a / 4)^2.
double Chords(const Arc3& arc, double tol) {
  constexpr double kRounding = kEpsilon;
  const double quarterTurn = 0.5 * Nu_PI;
  const double reach = std::max(tol, kRounding * (arc.radius + LargestComponent(arc.centre)));
  const double step = 4.0 * Asin(std::sqrt(std::min(1.0, 0.5 * reach / arc.radius)));
  return std::max(1.0, std::ceil(arc.sweep / std::min(step, quarterTurn)));
}

// What takes one frame to another. Without a turn it turns nothing, to the bit.
class FrameMotion {
 public:
  template<class Frame>
  FrameMotion(const Frame& before, const Frame& after)
      : m_from(Components(before.origin)),
        m_to(Components(after.origin)),
        m_before{Components(before.xaxis), Components(before.zaxis * before.xaxis), Components(before.zaxis)},
        m_after{Components(after.xaxis), Components(after.zaxis * after.xaxis), Components(after.zaxis)},
        m_turned(LargestComponent(m_before[0] - m_after[0]) + LargestComponent(m_before[2] - m_after[2]) > 0.0) {}

  bool Moves() const { return m_turned || LargestComponent(m_to - m_from) != 0.0; }
  Vec3 At(Vec3 p) const { return m_to + Turned(p - m_from); }
  Vec3 Turned(Vec3 v) const {
    if (!m_turned) return v;
    return Dot(v, m_before[0]) * m_after[0] + Dot(v, m_before[1]) * m_after[1] + Dot(v, m_before[2]) * m_after[2];
  }

 private:
  Vec3 m_from, m_to;
  Vec3 m_before[3], m_after[3];  // the axes
  bool m_turned;
};

}  // namespace

// Some standard libraries allocate for an empty one.
CNuCompositeCurve::Segments CNuCompositeCurve::NoSegments() {
  return WithMemory("CNuCompositeCurve()", [] { return Segments(); });
}

CNuCompositeCurve::CNuCompositeCurve() : CNuBoundedCurve(NuTypeCompositeCurve), m_segments(NoSegments()) {
  SetPosition(CNuPoint(), CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuCompositeCurve::CNuCompositeCurve(const CNuCompositeCurve& other)
    : CNuBoundedCurve(other), m_segments(NoSegments()), m_carried(other.m_carried) {
  WithMemory("CNuCompositeCurve::Copy()", [&] {
    SharedObjects shared;
    std::shared_ptr<CNuBoundedCurve> copies[SharedObjects::kMost];
    for (const auto& segment : other.m_segments) {
      if (segment.use_count() == 1) {
        m_segments.push_back(CopyOf(*segment));
        continue;
      }
      const auto [number, isNew] = shared.Find(segment.get());
      if (isNew) copies[number] = CopyOf(*segment);
      m_segments.push_back(copies[number]);
    }
  });
}

// It leaves an empty list behind, which takes memory that may be lacking.
// NOLINTNEXTLINE(performance-noexcept-move-constructor)
CNuCompositeCurve::CNuCompositeCurve(CNuCompositeCurve&& other)
    : CNuBoundedCurve(other), m_segments(NoSegments()), m_carried(std::move(other.m_carried)) {
  m_segments.swap(other.m_segments);
}

CNuCompositeCurve& CNuCompositeCurve::operator=(const CNuCompositeCurve& other) {
  if (this != &other) {
    CNuCompositeCurve copy(other);
    m_segments.clear();
    CNuBoundedCurve::operator=(copy);
    m_segments = std::move(copy.m_segments);
  }
  return *this;
}

CNuCompositeCurve::~CNuCompositeCurve() = default;

void CNuCompositeCurve::AddSegment(const CNuBoundedCurve& segment, ENuBoolean atEnd) {
  WithMemory("CNuCompositeCurve::AddSegment()", [&] { Add(CopyOf(segment), atEnd != NuFalse); });
}

void CNuCompositeCurve::Add(std::shared_ptr<CNuBoundedCurve> segment, bool atEnd) {
  const CNuPoint start = segment->GetStartPoint();
  if (atEnd) {
    m_segments.push_back(std::move(segment));
  } else {
    m_segments.push_front(std::move(segment));
  }
  if (m_segments.size() > 1) return;
  m_carried = {start, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0)};
  SetPosition(m_carried.origin, m_carried.xaxis, m_carried.zaxis);
}

const CNuBoundedCurve* CNuCompositeCurve::GetSegment(int i) const {
  RequireIndex(i, GetNumberSegments(), "operation", "CNuCompositeCurve::GetSegment()");
  return m_segments[static_cast<std::size_t>(i)].get();
}

void CNuCompositeCurve::RequireSegments(const char* where) const {
  if (m_segments.empty()) FailOperation(NuOperationEmpty, "operation", where);
}

ENuBoolean CNuCompositeCurve::IsClosed(double tol) const {
  if (m_segments.empty()) return NuFalse;
  return m_segments.front()->GetStartPoint().IsEqual(m_segments.back()->GetEndPoint(), tol);
}

ENuBoolean CNuCompositeCurve::IsClosed() const {
  return IsClosed(NuGetLengthTol());
}

ENuBoolean CNuCompositeCurve::IsPlanar(double tol) const {
  return m_segments.empty() || HeightOf(*this) <= tol ? NuTrue : NuFalse;
}

ENuBoolean CNuCompositeCurve::IsPlanar() const {
  if (m_segments.empty()) return NuTrue;
  return IsPlanar(WithMemory("CNuCompositeCurve::IsPlanar()", [&] { return TolOf(PiecesOf(*this)); }));
}

ENuBoolean CNuCompositeCurve::IsSelfIntersecting() const {
  return !m_segments.empty() && TouchesItself(*this) ? NuTrue : NuFalse;
}

void CNuCompositeCurve::Reverse() {
  std::reverse(m_segments.begin(), m_segments.end());
  VisitObjects(m_segments, [](auto& segment) { segment.Reverse(); });
}

CNuPolyline CNuCompositeCurve::ToPolyline(double tol) const {
  constexpr const char* where = "CNuCompositeCurve::ToPolyline()";
  RequireSegments(where);
  if (!(tol > 0.0)) FailOperation(NuOperationCount, "conversion", where);
  const PieceChain chain = WithMemory(where, [&] { return PiecesOf(*this); });
  const double joinTol = TolOf(chain);
  double parts = 2.0;
  for (int i = 0; i < chain.Size(); ++i) {
    if (const Arc3* arc = chain.ArcAt(i)) parts += Chords(*arc, tol) - 1.0;
  }
  RequireSamples(parts, where);
  CNuPointArray points(static_cast<int>(parts) + 2 * chain.Size());
  for (int i = 0; i < chain.Size(); ++i) {
    const Segment3& ends = chain.Ends(i);
    if (i == 0 || !(SafeNorm(ends.start - Components(points.Last())) <= joinTol)) points.Add(ToPoint(ends.start));
    if (const Arc3* arc = chain.ArcAt(i)) {
      const double chords = Chords(*arc, tol);
      for (double k = 1.0; k < chords; ++k) points.Add(ToPoint(arc->At(k * (arc->sweep / chords))));
    }
    points.Add(ToPoint(ends.end));
  }
  return CNuPolyline(points);
}

// The frames of the segments go along with that of the curve.
void CNuCompositeCurve::PositionChanged() {
  const Frame before = m_carried;
  m_carried = GetFrame();
  const FrameMotion motion(before, m_carried);
  if (m_segments.empty() || !motion.Moves()) return;
  VisitObjects(m_segments, [&](auto& segment) {
    const Frame frame = segment.GetFrame();
    segment.SetPosition(ToPoint(motion.At(Components(frame.origin))), ToVector(motion.Turned(Components(frame.xaxis))),
                        ToVector(motion.Turned(Components(frame.zaxis))));
  });
}

CNuPoint CNuCompositeCurve::GetStartPoint() {
  RequireSegments("CNuCompositeCurve::GetStartPoint()");
  return m_segments.front()->GetStartPoint();
}

CNuPoint CNuCompositeCurve::GetEndPoint() {
  RequireSegments("CNuCompositeCurve::GetEndPoint()");
  return m_segments.back()->GetEndPoint();
}

CNuVector CNuCompositeCurve::PlaneNormal() const {
  return PlaneNormalOf(*this);
}

void CNuCompositeCurve::GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  RequireSegments("CNuCompositeCurve::GetStartData()");
  const CNuVector upright = PlaneNormal();
  m_segments.front()->GetStartData(point, tangent, nullptr);
  Output(normal, upright);
}

void CNuCompositeCurve::GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  RequireSegments("CNuCompositeCurve::GetEndData()");
  const CNuVector upright = PlaneNormal();
  m_segments.back()->GetEndData(point, tangent, nullptr);
  Output(normal, upright);
}

void CNuCompositeCurve::BoundingBox(CNuPoint* min, CNuPoint* max) const {
  RequireSegments("CNuCompositeCurve::BoundingBox()");
  StoreBounds(*this, min, max);
}

void CNuCompositeCurve::BoundingCircle(double* radius, CNuPoint* centre) const {
  RequireSegments("CNuCompositeCurve::BoundingCircle()");
  StoreSmallestBall(*this, radius, centre);
}

double CNuCompositeCurve::DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const {
  return DistanceBetween(*this, other, p1, p2);
}

double CNuCompositeCurve::DistanceTo(const CNuPoint& p) const {
  constexpr const char* where = "CNuCompositeCurve::DistanceTo()";
  RequireSegments(where);
  const PieceChain chain = WithMemory(where, [&] { return PiecesOf(*this); });
  const Vec3 target = Components(p);
  NearPair best = PairOf(target, chain.Ends(0).start);
  for (int i = 0; i < chain.Size(); ++i) {
    const Arc3* arc = chain.ArcAt(i);
    best.Include(PairOf(target, arc ? ClosestOn(*arc, target) : ClosestOn(chain.Ends(i), target)));
  }
  return std::isnan(best.distance) ? DistanceAtAnySize(*this, target) : best.distance;
}

double CNuCompositeCurve::Length() const {
  CompensatedSum sum;
  for (const auto& segment : m_segments) {
    const double length = segment->Length();
    sum.Add(length);
  }
  return sum.Value();
}
