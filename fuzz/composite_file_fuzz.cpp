// Any bytes are read without an exception into no more segments than they have room for, and what is read is written
// and read again as it is. What can be asked of the curve then ends in an answer or a documented exception.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include "nu/curves/composite_curve.h"
#include "nu/curves/polyline.h"
#include "nu/foundation/exceptions.h"
#include "support/scratch_file.h"

namespace {

// The noise as it is; or cut into records that are mostly sound, so that its numbers arrive.
std::string Entries(const std::uint8_t* data, std::size_t size, bool sound) {
  std::string bytes(reinterpret_cast<const char*>(data), size);
  if (!sound) return bytes;
  std::string entries;
  for (std::size_t at = 0; at + 73 <= size; at += 73) {
    const int arc = bytes[at] & 1;
    const int type = 29 + arc;
    entries.append(reinterpret_cast<const char*>(&type), sizeof type);
    entries += arc != 0 ? 'a' : 'l';
    for (std::size_t point = 0; point < 2u + arc; ++point) {
      entries += (bytes[at] & 0x70) != 0x70 ? 'p' : 'q';
      entries += bytes.substr(at + 1 + 24 * point, 24);
    }
    if (arc != 0) entries.append(4, bytes[at]);
  }
  return entries;
}

void Ask(CNuCompositeCurve& curve) {
  CNuPoint p, q;
  double radius = 0.0;
  try {
    curve.IsSelfIntersecting();
    curve.IsPlanar();
    curve.DistanceTo(p);
    curve.BoundingCircle(&radius, &p);
    if (curve.Length() < 1e3) curve.ToPolyline(1e-3);
    const std::unique_ptr<CNuBoundedCurve> moved(curve.Offset(0.5));
    moved->DistanceTo(&curve, &p, &q);
  } catch (const CNuException&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string name = nu::test::ScratchFile("composite_file_fuzz").string();
  for (const bool tagged : {true, false}) {
    for (const bool sound : {true, false}) {
      const std::string head = tagged ? std::string("CompositeCurve\0", 15) : std::string();
      const std::string count = sound ? std::string("\x40\0\0\0", 4) : std::string();
      const std::string entries = Entries(data, size, sound);
      std::ofstream(name, std::ios::binary) << head << count << entries;
      CNuCompositeCurve curve, again;
      curve.BinaryRead(name.c_str());
      const int segments = curve.GetNumberSegments();
      constexpr std::size_t kLeastEntry = 4;
      if (static_cast<std::size_t>(segments) * kLeastEntry > entries.size()) std::abort();
      if (segments == 0) continue;
      if (!curve.BinaryDump(name.c_str()) || !again.BinaryRead(name.c_str())) std::abort();
      if (again.GetNumberSegments() != segments) std::abort();
      Ask(curve);
    }
  }
  std::remove(name.c_str());
  return 0;
}
