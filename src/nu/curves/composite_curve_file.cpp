// The file of a composite curve, with the records of its segments.

#include "nu/curves/circular_arc.h"
#include "nu/curves/composite_curve.h"
#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/line_segment.h"
#include "nu/engine/chains/arc_planes.h"
#include "nu/foundation/internal/downcast.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/linalg/internal/binary_file.h"

using namespace nu::internal;

namespace {

constexpr char kFileTag[] = "CompositeCurve";
constexpr char kSegmentTag = 'l';
constexpr char kArcTag = 'a';

bool ReadTag(std::ifstream& in, char tag) {
  char found = 0;
  in.read(&found, 1);
  return found == tag;
}

}  // namespace

bool CNuLineSegment::BinaryDump(std::ofstream& out) const {
  out.put(kSegmentTag);
  return GetStartPoint().BinaryDump(out) && GetEndPoint().BinaryDump(out);
}

// The ends are taken as they are read: points that coincide or are no numbers do not stop a file from being read.
bool CNuLineSegment::BinaryRead(std::ifstream& in) {
  if (!ReadTag(in, kSegmentTag)) return false;
  m_start.BinaryRead(in);
  m_end.BinaryRead(in);
  m_anchor = m_start;
  SetPosition(m_anchor, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  return true;
}

bool CNuCircularArc::BinaryDump(std::ofstream& out) const {
  out.put(kArcTag);
  GetCentre().BinaryDump(out);
  GetStartPoint().BinaryDump(out);
  GetEndPoint().BinaryDump(out);
  WriteInt(out, GetSense());
  return true;
}

bool CNuCircularArc::BinaryRead(std::ifstream& in) {
  if (!ReadTag(in, kArcTag)) return false;
  CNuPoint centre, start, end;
  int sense = NuFalse;
  centre.BinaryRead(in);
  start.BinaryRead(in);
  end.BinaryRead(in);
  if (!ReadInt(in, &sense)) return false;
  try {
    *this = CNuCircularArc(centre, start, end, sense != NuFalse ? NuTrue : NuFalse);
  } catch (const CNuConstructionException&) {
    return false;
  }
  return true;
}

bool CNuCompositeCurve::BinaryDump(const char* fileName) const {
  if (m_segments.empty()) return false;
  return WithMemory("CNuCompositeCurve::BinaryDump()", [&] {
    BinaryFileWriter file(fileName);
    file.Tag(kFileTag, sizeof kFileTag);
    file.Int(GetNumberSegments());
    for (const auto& segment : m_segments) {
      file.Int(segment->GetType());
      if (const auto* line = As<CNuLineSegment>(*segment)) line->BinaryDump(file.Stream());
      if (const auto* arc = As<CNuCircularArc>(*segment)) arc->BinaryDump(file.Stream());
    }
    return RequireWritten(file, "CNuCompositeCurve");
  });
}

bool CNuCompositeCurve::BinaryRead(const char* fileName) {
  m_segments.clear();
  SetPosition(CNuPoint(), CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  return ReadUnlessNoMemory([&] {
    BinaryFileReader file(fileName);
    if (!file.Tag(kFileTag, sizeof kFileTag)) return false;
    int size = 0;
    if (file.Int(&size)) ReadSegments(size, file.Stream());
    return true;
  });
}

// It is required that a record which is none leaves a default segment: the segments behind it keep their numbers.
void CNuCompositeCurve::ReadSegments(int size, std::ifstream& in) {
  std::shared_ptr<CNuBoundedCurve> defaultSegment, defaultArc;
  const auto read = [&]<class Segment>(Segment segment, std::shared_ptr<CNuBoundedCurve>& ofType) {
    if (segment.BinaryRead(in)) return Add(std::make_shared<Segment>(segment), true);
    if (!ofType) ofType = std::make_shared<Segment>(segment);
    Add(ofType, true);
  };
  int type = 0;
  for (int i = 0; i < size && ReadInt(in, &type); ++i) {
    if (type == NuTypeLineSegment) read(CNuLineSegment(), defaultSegment);
    if (type == NuTypeCircularArc) read(CNuCircularArc(), defaultArc);
  }
  FindPlanesOfArcs();
}

// The record of an arc does not hold its plane; see BinaryRead. Default segments, which are shared, have no neighbours.
void CNuCompositeCurve::FindPlanesOfArcs() {
  PieceChain chain;
  std::vector<CNuBoundedCurve*> segments;
  for (const auto& segment : m_segments) {
    if (segment.use_count() > 1) continue;
    AddPiece(*segment, chain);
    segments.push_back(segment.get());
  }
  if (segments.empty()) return;
  const double joinTol = CoincidenceTol(NuGetLengthTol(), chain.LargestCoordinate());
  const ArcPlanes planes(chain, joinTol, ParallelTol());
  for (int i = 0; i < chain.Size(); ++i) {
    const std::optional<Vec3> normal = planes.NormalOf(i);
    if (!normal) continue;
    As<CNuCircularArc>(*segments[static_cast<std::size_t>(i)])->TurnInto(nu::internal::ToVector(*normal));
  }
}
