#include <memory>
#include <utility>
#include <vector>

#include "nu/c/internal/features.h"
#include "nu/c/internal/handles.h"
#include "nu/curves/circular_arc.h"
#include "nu/curves/line_segment.h"
#include "nu/curves/polyline.h"
#include "nu/foundation/internal/downcast.h"
#include "nu/foundation/internal/failures.h"
#include "nu/linalg/internal/binary_file.h"

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

nu_segment ToSegment(const CNuBoundedCurve& piece) {
  nu_segment segment{};
  segment.kind = piece.GetType();
  Write(piece.GetStartPoint(), segment.start);
  Write(piece.GetEndPoint(), segment.end);
  if (const auto* arc = As<CNuCircularArc>(piece)) {
    segment.sense = arc->GetSense() != NuFalse ? 1 : 0;
    Write(arc->GetCentre(), segment.centre);
    Write(arc->GetNormal(), segment.normal);
    segment.radius = arc->GetRadius();
    segment.sweep = arc->GetSweep();
  }
  return segment;
}

using Loops = std::vector<std::unique_ptr<nu_curve>>;

Loops LoopsOf(const CNuObjArray& objects) {
  Loops loops;
  for (const auto& object : Taken(objects)) {
    loops.push_back(std::make_unique<nu_curve>());
    loops.back()->curve = std::move(static_cast<CNuCompositeCurve&>(*object));
  }
  return loops;
}

}  // namespace

nu_status nu_curve_create(nu_curve** curve) {
  return Create(curve, [] { return nu_curve{}; });
}

void nu_curve_free(nu_curve* curve) {
  Free(curve);
}

nu_status nu_curve_read(nu_curve* curve, const char* file_name) {
  return Guarded([&] {
    nu_curve& to = Deref(curve);
    Require(file_name != nullptr, "the file name is null");
    const FilesOfC files;
    CNuCompositeCurve read;
    if (!read.BinaryRead(file_name)) FailOperation(NuOperationFileOpen, "operation", "nu_curve_read");
    to.curve = std::move(read);
  });
}

nu_status nu_curve_write(const nu_curve* curve, const char* file_name) {
  return Guarded([&] {
    const CNuCompositeCurve& from = Deref(curve).curve;
    Require(file_name != nullptr, "the file name is null");
    const FilesOfC files;
    if (!from.BinaryDump(file_name)) FailOperation(NuOperationEmpty, "operation", "nu_curve_write");
  });
}

nu_status nu_curve_add_segment(nu_curve* curve, const double* start, const double* end) {
  return Guarded([&] {
    CNuCompositeCurve& to = Deref(curve).curve;
    to.AddSegment(CNuLineSegment(PointOf(start, "start is null"), PointOf(end, "end is null")), NuTrue);
  });
}

nu_status nu_curve_add_arc(nu_curve* curve, const double* centre, const double* start, const double* end,
                           int32_t sense) {
  return Guarded([&] {
    CNuCompositeCurve& to = Deref(curve).curve;
    const CNuPoint middle = PointOf(centre, "centre is null");
    const CNuPoint from = PointOf(start, "start is null");
    to.AddSegment(CNuCircularArc(middle, from, PointOf(end, "end is null"), sense != 0 ? NuTrue : NuFalse), NuTrue);
  });
}

nu_status nu_curve_count(const nu_curve* curve, int32_t* count) {
  return Give(count, "count is null", [&] { return Deref(curve).curve.GetNumberSegments(); });
}

nu_status nu_curve_get(const nu_curve* curve, int32_t i, nu_segment* segment) {
  return Give(segment, "segment is null", [&] { return ToSegment(*Deref(curve).curve.GetSegment(i)); });
}

nu_status nu_curve_length(const nu_curve* curve, double* length) {
  return Give(length, "length is null", [&] { return Deref(curve).curve.Length(); });
}

nu_status nu_curve_distance(const nu_curve* curve, const double* point, double* distance) {
  return Give(distance, "distance is null",
              [&] { return Deref(curve).curve.DistanceTo(PointOf(point, "point is null")); });
}

nu_status nu_curve_offset(const nu_curve* curve, double distance, const double* normal, int32_t is_round,
                          nu_curve** loops, int32_t capacity, int32_t* count) {
  return Guarded([&] {
    const CNuCompositeCurve& of = Deref(curve).curve;
    CNuObjArray objects(0);
    of.OffsetAll(distance, VectorOf(normal, "normal is null"), is_round != 0 ? 1 : 0, &objects);
    Loops made = LoopsOf(objects);
    Fill(loops, capacity, static_cast<std::int32_t>(made.size()), count,
         [&](std::int32_t i) { return made[static_cast<std::size_t>(i)].release(); });
  });
}

nu_status nu_curve_polyline(const nu_curve* curve, double tol, double* xyz, int32_t capacity, int32_t* count) {
  return Guarded([&] {
    const CNuPolyline corners = Deref(curve).curve.ToPolyline(tol);
    if (!IsWanted(xyz, capacity, corners.GetSize(), count)) return;
    Write(corners.GetPoints(), xyz);
  });
}
