// Offsets of chains of segments and arcs.

#include "nu/curves/circular_arc.h"
#include "nu/curves/composite_curve.h"
#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/offset_curves.h"
#include "nu/curves/line_segment.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"

using namespace nu::internal;

namespace {

constexpr const char* kOffset = "CNuCompositeCurve::Offset()";

}  // namespace

std::unique_ptr<CNuCompositeCurve> CNuCompositeCurve::CurveOf(const PieceChain& chain) {
  auto curve = std::make_unique<CNuCompositeCurve>();
  for (int i = 0; i < chain.Size(); ++i) {
    const CNuPoint start = ToPoint(chain.Ends(i).start), end = ToPoint(chain.Ends(i).end);
    const Arc3* arc = chain.ArcAt(i);
    if (arc == nullptr) {
      curve->Add(std::make_shared<CNuLineSegment>(start, end), true);
      continue;
    }
    const CNuCircularArc copy(ToPoint(arc->centre), start, end, ToVector(Unit(arc->Axis())), arc->radius, arc->sweep);
    curve->Add(std::make_shared<CNuCircularArc>(copy), true);
  }
  return curve;
}

CNuBoundedCurve* CNuCompositeCurve::Offset(double distance, const CNuVector& normal, int shape) {
  RequireSegments(kOffset);
  const Vec3 given = RequireOffset(distance, normal, kOffset);
  return WithMemory(kOffset,
                    [&] { return CurveOf(OneOffset(PiecesOf(*this), distance, given, shape, kOffset)).release(); });
}

CNuBoundedCurve* CNuCompositeCurve::Offset(double distance) {
  RequireSegments(kOffset);
  return Offset(distance, PlaneNormal(), 0);
}

int CNuCompositeCurve::OffsetAll(double distance, const CNuVector& normal, int corners, CNuObjArray* loops) const {
  constexpr const char* where = "CNuCompositeCurve::OffsetAll()";
  RequireSegments(where);
  const Vec3 given = RequireOffset(distance, normal, where);
  auto curves = WithMemory(where, [&] {
    std::vector<std::unique_ptr<CNuCompositeCurve>> made;
    for (const PieceChain& chain : OffsetCurves(PiecesOf(*this), distance, given, corners, where)) {
      made.push_back(CurveOf(chain));
    }
    return made;
  });
  return HandOver(std::move(curves), loops);
}
