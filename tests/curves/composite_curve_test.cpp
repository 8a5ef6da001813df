#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/scratch_file.h"

namespace {

CNuPoint At(double x, double y) {
  return CNuPoint(x, y, 0);
}

// What data/curves/README.md describes.
CNuCompositeCurve Plate() {
  CNuCompositeCurve curve;
  curve.AddSegment(CNuLineSegment(At(50, 10), At(50, 30.5)), NuTrue);
  curve.AddSegment(CNuCircularArc(At(40, 10), At(40, 0), At(50, 10), NuTrue), NuFalse);
  curve.AddSegment(CNuCircularArc(At(25, 30.5), At(50, 30.5), At(0, 30.5), NuFalse), NuTrue);
  curve.AddSegment(CNuLineSegment(At(0, 0), At(40, 0)), NuFalse);
  curve.AddSegment(CNuLineSegment(At(0, 30.5), At(0, 0)), NuTrue);
  return curve;
}

TEST(CompositeCurve, IsAChainOfCopies) {
  CNuCompositeCurve curve = Plate();
  EXPECT_EQ(curve.GetType(), CNuObject::NuTypeCompositeCurve);
  EXPECT_EQ(curve.GetNumberSegments(), 5);
  EXPECT_EQ(curve.GetTranslation().To3DPoint().DistanceTo(At(50, 10)), 0);
  EXPECT_TRUE(curve.IsClosed() && curve.IsClosed(1e-3) && curve.IsPlanar() && curve.IsPlanar(1e-9));
  EXPECT_FALSE(curve.IsSelfIntersecting());
  const double length = 40 + 5 * Nu_PI + 20.5 + 25 * Nu_PI + 30.5;
  EXPECT_NEAR(curve.Length(), length, 1e-13);
  CNuPoint p;
  CNuVector tangent, normal;
  curve.GetStartData(&p, &tangent, &normal);
  EXPECT_TRUE(tangent.IsEqual(CNuVector(1, 0, 0), 1e-15) && normal.IsEqual(CNuVector(0, 0, 1), 1e-15));

  CNuCompositeCurve copy(curve), assigned;
  assigned = curve;
  assigned = assigned.GetNumberSegments() == 5 ? assigned : copy;
  copy.Reverse();
  copy.GetEndData(&p, &tangent, &normal);
  EXPECT_TRUE(tangent.IsEqual(CNuVector(-1, 0, 0), 1e-15) && normal.IsEqual(CNuVector(0, 0, -1), 1e-15));
  EXPECT_EQ(copy.GetSegment(3)->GetType(), CNuObject::NuTypeCircularArc);
  copy.AddSegment(*copy.GetSegment(0), NuTrue);
  EXPECT_TRUE(curve.GetNumberSegments() == 5 && assigned.GetNumberSegments() == 5 && copy.GetNumberSegments() == 6);
  EXPECT_EQ(curve.GetSegment(4)->DistanceTo(At(0, 30.5)), 0);
  EXPECT_FALSE(copy.IsClosed(1e-9));

  // Motions take every segment along, and what is copied from the frame of another curve too.
  CNuCompositeCurve other(curve);
  other.Translate(CNuPoint(7, 8, 9));
  EXPECT_EQ(other.GetSegment(2)->DistanceTo(CNuPoint(7, 8, 9)), 0);
  other.Rotate(90, CNuGeometry::X_AXIS, CNuPoint(7, 8, 9));
  EXPECT_LT(other.GetStartPoint().DistanceTo(CNuPoint(-43, 8, -1)), 1e-13);
  EXPECT_TRUE(other.IsClosed(1e-13) && other.IsPlanar(1e-13) && other.GetNumberSegments() == 5);
  CNuCompositeCurve moved(assigned);
  const CNuNonLinearGeometry& from = other;
  static_cast<CNuNonLinearGeometry&>(assigned).CopyPosition(from);
  static_cast<CNuBoundedCurve&>(moved) = other;
  for (CNuCompositeCurve* chain : {&assigned, &moved}) {
    EXPECT_LT(chain->GetSegment(1)->DistanceTo(other.GetSegment(1), &p, &p), 1e-14);
    EXPECT_LT(chain->GetEndPoint().DistanceTo(CNuPoint(-43, 8, -1)), 1e-13);
  }
}

TEST(CompositeCurve, IsEnclosedWithItsGaps) {
  nu::test::Random random(5);
  for (int i = 0; i < 200; ++i) {
    const auto any = [&] { return nu::test::RandomPoint(random, 1); };
    CNuCompositeCurve chain;
    for (int k = 0; k < 1 + i % 3; ++k) chain.AddSegment(CNuLineSegment(any() * 5, any()), NuTrue);
    if (i % 2 == 0) chain.AddSegment(CNuCircularArc(any() * 3, any(), any()), NuTrue);
    CNuPoint centre;
    double radius = 0;
    chain.BoundingCircle(&radius, &centre);
    const CNuPointArray points = chain.ToPolyline(1e-3).GetPoints();
    double farthest = 0;
    for (int k = 0; k < points.GetSize(); ++k) farthest = std::max(farthest, points[k].DistanceTo(centre));
    EXPECT_LE(farthest, radius * (1 + 1e-14)) << i;
    EXPECT_GE(farthest, radius * (1 - 2e-3)) << i;
  }
}

TEST(CompositeCurve, RefusesWhatHasNoMeaning) {
  CNuCompositeCurve curve = Plate(), empty;
  CNuPoint p;
  CNuVector v;
  double r = 0;
  EXPECT_EQ(FailureOf([&] { curve.AddSegment(curve, NuTrue); }),
            "operation 45 Add segment of specified type|CNuCompositeCurve::AddSegment() [0,0]");
  EXPECT_EQ(FailureOf([&] { curve.GetSegment(5); }), "operation 3 operation|CNuCompositeCurve::GetSegment() [0,4]");
  EXPECT_EQ(FailureOf([&] { empty.GetSegment(0); }), "operation 3 operation|CNuCompositeCurve::GetSegment() [0,-1]");
  const auto where = [](const char* member) {
    return "operation 8 operation|CNuCompositeCurve" + std::string(member) + " [0,0]";
  };
  EXPECT_EQ(FailureOf([&] { empty.GetStartPoint(); }), where("::GetStartPoint()"));
  EXPECT_EQ(FailureOf([&] { empty.GetEndPoint(); }), where("::GetEndPoint()"));
  EXPECT_EQ(FailureOf([&] { empty.GetStartData(&p, &v, &v); }), where("::GetStartData()"));
  EXPECT_EQ(FailureOf([&] { empty.GetEndData(&p, &v, &v); }), where("::GetEndData()"));
  EXPECT_EQ(FailureOf([&] { empty.BoundingBox(&p, &p); }), where("::BoundingBox()"));
  EXPECT_EQ(FailureOf([&] { empty.BoundingCircle(&r, &p); }), where("::BoundingCircle()"));
  EXPECT_EQ(FailureOf([&] { empty.DistanceTo(p); }), where("::DistanceTo()"));
  EXPECT_EQ(FailureOf([&] { curve.DistanceTo(&empty, &p, &p); }), where(""));
  EXPECT_EQ(FailureOf([&] { empty.ToPolyline(1); }), where("::ToPolyline()"));
  for (const double tol : {0.0, -1.0, std::nan("")}) {
    EXPECT_EQ(FailureOf([&] { curve.ToPolyline(tol); }),
              "operation 12 conversion|CNuCompositeCurve::ToPolyline() [0,0]");
  }
  CNuCompositeCurve huge;
  huge.AddSegment(CNuCircularArc(At(0, 0), At(1e300, 0), At(0, 1e300), NuTrue), NuTrue);
  EXPECT_EQ(FailureOf([&] { huge.ToPolyline(0.01); }), "operation 12 conversion|CNuCompositeCurve::ToPolyline() [0,0]");
  EXPECT_TRUE(!empty.IsClosed(1) && empty.IsPlanar() && !empty.IsSelfIntersecting() && empty.Length() == 0);
  empty.Reverse();
  empty.Rotate(30, CNuGeometry::Z_AXIS);
}

TEST(CompositeCurve, BecomesAPolylineWithinTheTolerance) {
  const CNuCompositeCurve curve = Plate();
  int before = 0;
  for (const double tol : {100.0, 1.0, 1e-3, 1e-6, 1e-8}) {
    const CNuPolyline chords = curve.ToPolyline(tol);
    EXPECT_TRUE(chords.IsClosed(1e-300) && chords.GetSize() > before);
    before = chords.GetSize();
    EXPECT_GE(before, 7);
    double largest = 0;
    for (int i = 1; i < before; i += 1 + before / 200) {
      EXPECT_LT(curve.DistanceTo(chords[i]), 1e-13);
      largest = std::max(largest, curve.DistanceTo(chords[i].MidPoint(chords[i - 1])));
    }
    EXPECT_LE(largest, tol + 1e-14);
    EXPECT_TRUE(tol > 1 || largest > 0.5 * tol) << "more chords than it takes";
  }
}

TEST(CompositeCurve, TellsCrossingsFromNeighbours) {
  const double c = std::sqrt(0.5);
  const CNuLineSegment base(At(-2, -1), At(0, -1));
  const struct {
    std::vector<CNuPoint> points;  // from the end of the base on; three make an arc where the middle one has z = 1
    bool crosses;
  } cases[] = {{{{1, 0, 1}, At(0, 1)}, false},  // smoothly into a half circle
               {{{1, 0, 1}, At(0, 1), At(-1, 1), At(-1, 0)}, false},
               {{{1, 0, 1}, At(0, 1), At(-1, 1), At(-1, -2)}, true},
               {{{0, 1, 1}, At(-1, 0)}, false},  // three quarters, the base a tangent
               {{{-1, 0, 1}, At(0, 1)}, false},  // back above the base, in a cusp
               {{{1, 0, 1}, At(-c, -c)}, false},
               {{{1, 0, 1}, At(-1, -1)}, true},  // an arc that ends on the base
               {{At(1, 0), {0, 1, 1}, At(-1, -2)}, true},
               {{{-1, -2, 1}, At(-2, -1)}, false},  // a closed chain of chord and arc
               {{{0, 0, 1}, At(1, -1), {0, -2, 1}, At(-1, -1)}, true},
               {{At(1, -1), {1.5, -0.5, 1}, At(2, -1), {1.5, -0.5, 1}, At(1, -1)}, true},
               {{At(1, -1), {2, 0, 1}, At(3, -1), At(1, 0.2)}, true},  // back through its own arc
               {{At(1, -1), {2, 0, 1}, At(3, -1), At(4, 0.2)}, false}};
  for (const auto& row : cases) {
    CNuCompositeCurve curve;
    curve.AddSegment(base, NuTrue);
    for (std::size_t i = 0; i < row.points.size(); ++i) {
      const CNuPoint from = curve.GetEndPoint(), p = row.points[i];
      if (p.z() == 0) {
        curve.AddSegment(CNuLineSegment(from, p), NuTrue);
      } else {
        curve.AddSegment(CNuCircularArc(from, At(p.x(), p.y()), row.points[++i]), NuTrue);
      }
    }
    const std::size_t k = static_cast<std::size_t>(&row - cases);
    EXPECT_EQ(curve.IsSelfIntersecting() == NuTrue, row.crosses) << k;
    curve.Rotate(77, CNuVector(1, 2, 3), CNuPoint(3, 1, 1));
    curve.Reverse();
    EXPECT_EQ(curve.IsSelfIntersecting() == NuTrue, row.crosses) << k;
  }
}

class CompositeCurveFile : public testing::Test {
 protected:
  CompositeCurveFile() : m_path(nu::test::ScratchFile(testing::UnitTest::GetInstance()->current_test_info()->name())) {}
  ~CompositeCurveFile() override {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
  }

  static std::string BytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool Read(CNuCompositeCurve& curve, const std::string& bytes) const {
    std::ofstream(m_path, std::ios::binary) << bytes;
    return curve.BinaryRead(m_path.string().c_str());
  }

  std::filesystem::path m_path;
};

std::string Int(int value) {
  char bytes[4];
  std::memcpy(bytes, &value, 4);
  return {bytes, 4};
}

std::string Point(double x, double y) {
  const double xyz[] = {x, y, 0};
  std::string record(25, 'p');
  std::memcpy(record.data() + 1, xyz, 24);
  return record;
}

const std::string kTag("CompositeCurve\0", 15);

TEST_F(CompositeCurveFile, KeepsItsBytes) {
  const std::string golden = NU_DATA_DIR "/curves/plate.curve", name = m_path.string();
  CNuCompositeCurve curve = Plate(), read;
  ASSERT_TRUE(curve.BinaryDump(name.c_str()));
  EXPECT_EQ(BytesOf(m_path), BytesOf(golden));
  ASSERT_TRUE(read.BinaryRead(golden.c_str()));
  EXPECT_EQ(read.GetNumberSegments(), 5);
  EXPECT_EQ(read.Length(), curve.Length());
  EXPECT_TRUE(read.IsClosed(1e-300));
  // Where a motion has taken it.
  curve.Rotate(90, CNuGeometry::Z_AXIS);
  curve.Translate(5.0, 5.0, 0.0);
  ASSERT_TRUE(curve.BinaryDump(name.c_str()) && read.BinaryRead(name.c_str()));
  CNuPoint p;
  EXPECT_TRUE(read.GetEndPoint().IsEqual(At(5, 5), 1e-14));
  EXPECT_LT(curve.GetSegment(3)->DistanceTo(read.GetSegment(3), &p, &p), 1e-13);
  EXPECT_EQ(BytesOf(m_path).size(), 352u);
}

TEST_F(CompositeCurveFile, IsReadAsFarAsItGoes) {
  const std::string line = Int(29) + "l" + Point(1, 2) + Point(3, 4);
  const std::string arc = Int(30) + "a" + Point(0, 0) + Point(2, 0) + Point(0, 2) + Int(7);
  const std::string nan = Int(30) + "a" + Point(0, std::nan("")) + Point(2, 0) + Point(0, 2) + Int(1);
  const std::string point = Int(29) + "l" + Point(1, 1) + Point(1, 1);
  const struct {
    std::string bytes;
    bool read;
    int segments;
    double length;  // of the segments; a default one has 1
  } cases[] = {{"", false, 0, 0},
               {kTag.substr(0, 14), false, 0, 0},
               {"CompositeCurvf" + std::string(60, '\0'), false, 0, 0},
               {"CompositeCurves" + Int(1) + line, false, 0, 0},
               {kTag, true, 0, 0},
               {kTag + Int(0) + line, true, 0, 0},
               {kTag + Int(-5) + line, true, 0, 0},
               {kTag + Int(1) + line + line, true, 1, std::sqrt(8)},
               {kTag + Int(0x7fffffff) + line + arc, true, 2, std::sqrt(8) + Nu_PI},
               {kTag + Int(3) + Int(28) + line + Int(-1) + line, true, 1, std::sqrt(8)},
               {kTag + Int(2) + Int(29) + "x" + line, true, 2, 1 + std::sqrt(8)},
               {kTag + Int(2) + Int(30) + "l" + line, true, 2, 2 * Nu_PI + std::sqrt(8)},
               {kTag + Int(2) + nan + line, true, 2, 2 * Nu_PI + std::sqrt(8)},
               {kTag + Int(2) + point + line, true, 2, std::sqrt(8)},
               {kTag + Int(2) + line + Int(29), true, 2, std::sqrt(8) + 1},
               {kTag + Int(2) + line + Int(29).substr(1), true, 1, std::sqrt(8)},
               {kTag + Int(2) + arc.substr(0, 83), true, 1, 2 * Nu_PI},
               {kTag + Int(2) + line.substr(0, 30) + "q", true, 1, 2},        // to (1, 0, 0)
               {kTag + Int(9) + line.substr(0, 39), true, 1, std::sqrt(8)}};  // to (3, 0, 0)
  for (const auto& row : cases) {
    const std::size_t k = static_cast<std::size_t>(&row - cases);
    CNuCompositeCurve curve = Plate();
    for (const double tol : {1e-12, 5.0, std::nan("")}) {
      NuSetLengthTol(tol);
      bool read = false;
      EXPECT_EQ(FailureOf([&] { read = Read(curve, row.bytes); }), "nothing");
      NuSetLengthTol(1e-12);
      EXPECT_EQ(read, row.read) << k;
      EXPECT_EQ(curve.GetNumberSegments(), row.segments) << k;
      EXPECT_TRUE(tol != 1e-12 || std::fabs(curve.Length() - row.length) < 1e-14) << k;
    }
  }
}

// Slots, whose half turns take their plane from the sides, and ways there and back with full and near half turns, in
// any plane; an upright circle alone. What is read is what was written, in its bytes and in every place.
TEST_F(CompositeCurveFile, RestoresThePlanesOfItsArcs) {
  nu::test::Random random(11);
  const std::string name = m_path.string();
  for (int i = 0; i < 300; ++i) {
    CNuCompositeCurve curve, read;
    const double w = random.Uniform(0.1, 3), bend = i % 3 == 2 ? std::pow(10, random.Uniform(-12, -3)) : 0;
    if (i % 3 == 1) {
      curve.AddSegment(CNuCircularArc(At(0, w), At(0, 0), At(0, 0), i % 2 ? NuTrue : NuFalse), NuTrue);
      curve.AddSegment(CNuLineSegment(At(0, 0), At(0, -1)), NuTrue);
      curve.AddSegment(CNuLineSegment(At(0, -1), At(2, 5)), NuTrue);
    } else {
      curve.AddSegment(CNuLineSegment(At(0, 0), At(4, 0)), NuTrue);
      curve.AddSegment(CNuCircularArc(At(4, 0), At(4 + w * (1 + bend), w), At(4, 2 * w)), NuTrue);
      curve.AddSegment(CNuLineSegment(At(4, 2 * w), At(0, 2 * w)), NuTrue);
      curve.AddSegment(CNuCircularArc(At(0, 2 * w), At(-w, w), At(0, 0)), NuTrue);
    }
    const CNuVector axis(random.Uniform(-1, 1), random.Uniform(-1, 1), random.Uniform(-1, 1));
    const double angle = i % 4 == 0 ? 90 : random.Uniform(0, 360);
    curve.Rotate(angle, i % 4 == 0 ? CNuVector(1, 0, 0) : axis, CNuPoint(1, 2, 3));
    ASSERT_TRUE(curve.BinaryDump(name.c_str()) && read.BinaryRead(name.c_str()));
    for (int k = 0; k < curve.GetNumberSegments(); ++k) {
      if (curve.GetSegment(k)->GetType() == CNuObject::NuTypeLineSegment) continue;
      const CNuPointArray before = static_cast<const CNuCircularArc*>(curve.GetSegment(k))->ToPointArray(5);
      const CNuPointArray after = static_cast<const CNuCircularArc*>(read.GetSegment(k))->ToPointArray(5);
      for (int j = 0; j < 5; ++j) EXPECT_LT(before[j].DistanceTo(after[j]), 1e-13) << i << " " << k << " " << bend;
    }
    const std::string bytes = BytesOf(m_path);
    ASSERT_TRUE(read.BinaryDump(name.c_str()));
    EXPECT_EQ(BytesOf(m_path), bytes) << i;
  }
}

TEST_F(CompositeCurveFile, SharesWhatRecordsLeaveOut) {
  std::string bytes = kTag + Int(0x7fffffff);
  for (int i = 0; i < 1000; ++i) bytes += Int(29) + "x" + Int(30) + "x";
  CNuCompositeCurve curve;
  ASSERT_TRUE(Read(curve, bytes));
  ASSERT_EQ(curve.GetNumberSegments(), 2000);
  EXPECT_EQ(curve.GetSegment(0), curve.GetSegment(1998));
  curve.Reverse();
  curve.Translate(1.0, 2.0, 0.0);
  const CNuCompositeCurve copy(curve);
  for (const CNuCompositeCurve* chain : {&std::as_const(curve), &copy}) {
    EXPECT_NEAR(chain->Length(), 1000 * (1 + 2 * Nu_PI), 1e-9);
    EXPECT_LT(chain->GetSegment(1)->GetStartPoint().DistanceTo(At(2, 2)), 1e-15);
    EXPECT_LT(chain->GetSegment(999)->GetEndPoint().DistanceTo(At(1, 2)), 1e-15);
  }
}

TEST_F(CompositeCurveFile, RefusesPlacesItCannotWrite) {
  CNuCompositeCurve curve = Plate(), empty;
  const std::string name = m_path.string();
  EXPECT_FALSE(empty.BinaryDump(name.c_str()) || std::filesystem::exists(m_path));
  const std::string noFile = "operation 47 Open a Binary file|CNuCompositeCurve [0,0]";
  EXPECT_EQ(FailureOf([&] { curve.BinaryDump((name + "/nowhere/file").c_str()); }), noFile);
  EXPECT_EQ(FailureOf([&] { curve.BinaryDump(nullptr); }), noFile);
  if (std::filesystem::exists("/dev/full")) {
    EXPECT_EQ(FailureOf([&] { curve.BinaryDump("/dev/full"); }),
              "operation 48 Read only file.. Unable to write into file|CNuCompositeCurve [0,0]");
  }
  EXPECT_FALSE(curve.BinaryRead((name + "/nowhere").c_str()) || curve.GetNumberSegments() > 0);
  EXPECT_FALSE(Plate().BinaryRead(nullptr));
}

}  // namespace
