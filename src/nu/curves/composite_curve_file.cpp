// The file of a composite curve, with the records of its segments.

#include <new>

#include "nu/curves/circular_arc.h"
#include "nu/curves/composite_curve.h"
#include "nu/curves/line_segment.h"
#include "nu/linalg/internal/binary_file.h"

using nu::internal::BinaryFileReader;
using nu::internal::BinaryFileWriter;

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
  CNuLineSegment placed(*this);
  out.put(kSegmentTag);
  return placed.GetStartPoint().BinaryDump(out) && placed.GetEndPoint().BinaryDump(out);
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
  CNuCircularArc placed(*this);
  out.put(kArcTag);
  GetCentre().BinaryDump(out);
  placed.GetStartPoint().BinaryDump(out);
  placed.GetEndPoint().BinaryDump(out);
  nu::internal::WriteInt(out, GetSense());
  return true;
}

bool CNuCircularArc::BinaryRead(std::ifstream& in) {
  if (!ReadTag(in, kArcTag)) return false;
  CNuPoint centre, start, end;
  int sense = NuFalse;
  centre.BinaryRead(in);
  start.BinaryRead(in);
  end.BinaryRead(in);
  if (!nu::internal::ReadInt(in, &sense)) return false;
  try {
    *this = CNuCircularArc(centre, start, end, sense != NuFalse ? NuTrue : NuFalse);
  } catch (const CNuConstructionException&) {
    return false;
  }
  return true;
}

bool CNuCompositeCurve::BinaryDump(const char* fileName) const {
  if (m_segments.empty()) return false;
  BinaryFileWriter file(fileName);
  file.Tag(kFileTag, sizeof kFileTag);
  file.Int(GetNumberSegments());
  for (const auto& segment : m_segments) {
    file.Int(segment->GetType());
    if (segment->GetType() == NuTypeLineSegment) {
      static_cast<const CNuLineSegment&>(*segment).BinaryDump(file.Stream());
    } else {
      static_cast<const CNuCircularArc&>(*segment).BinaryDump(file.Stream());
    }
  }
  return RequireWritten(file, "CNuCompositeCurve");
}

bool CNuCompositeCurve::BinaryRead(const char* fileName) {
  m_segments.clear();
  SetPosition(CNuPoint(), CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  try {
    BinaryFileReader file(fileName);
    if (!file.Tag(kFileTag, sizeof kFileTag)) return false;
    int size = 0;
    int type = 0;
    file.Int(&size);
    for (int i = 0; i < size && file.Int(&type); ++i) ReadSegment(type, file.Stream());
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

// It is required that a record which is none leaves a default segment: the segments behind it keep their numbers.
void CNuCompositeCurve::ReadSegment(int type, std::ifstream& in) {
  if (type == NuTypeLineSegment) {
    auto segment = std::make_unique<CNuLineSegment>();
    segment->BinaryRead(in);
    Add(std::move(segment), true);
  } else if (type == NuTypeCircularArc) {
    CNuCircularArc arc;
    if (arc.BinaryRead(in)) {
      Add(std::make_unique<CNuCircularArc>(arc), true);
    } else {
      Add(std::make_unique<CNuLineSegment>(), true);
    }
  }
}
