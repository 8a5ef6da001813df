#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "nu/c/nu.h"
#include "nu/nu.h"
#include "support/fingerprint.h"
#include "support/scratch_file.h"

namespace {

using nu::test::fingerprint::Bits;
using nu::test::fingerprint::Clouds;
using nu::test::fingerprint::Noise;
using nu::test::fingerprint::Part;

constexpr int kThreads = 8;

// What all threads read at once, none of them with a copy of its own.
struct Shared {
  Noise noise;
  Clouds clouds{40, noise};
  CNuAssociation association{clouds.shaft};
  CNuAssociationReport report;
  CNuMatrix symmetric{5, 5};
  CNuPolyline polyline{clouds.wave};
  CNuInterpolation table{clouds.wave.GetDataX(), clouds.wave.GetDataY()};
  nu_association* handle = nullptr;
  CNuCompositeCurve curve;
  std::filesystem::path files = nu::test::ScratchFile("threads");  // each has the matrix, a vector or the curve
  mutable std::atomic<long> watched{0};

  Shared() {
    for (int i = 0; i < 5; ++i)
      for (int j = 0; j <= i; ++j) symmetric.Element(i, j) = symmetric.Element(j, i) = noise();
    CNuCylSurf cylinder(1.0);
    association.SetDetails(NuDetailAll);
    report = association.Fit(NuLeastSquares, &cylinder);
    nu_association_create(nullptr, 0, 3, &handle);
    for (int i = 0; i < clouds.shaft.GetSize(); ++i) {
      const CNuPoint p = clouds.shaft[i];
      const double xyz[] = {p.x(), p.y(), p.z()};
      nu_association_add(handle, xyz, 1, 3);
    }
    association.SetMonitor(
        [](void* context, long, double, double) {
          ++*static_cast<std::atomic<long>*>(context);
          return NuTrue;
        },
        &watched);
    curve.AddSegment(CNuCircularArc(CNuPoint(0, 0, 0), CNuPoint(1, 1, 0), CNuPoint(2, 0, 0)), NuTrue);
    curve.AddSegment(CNuLineSegment(CNuPoint(2, 0, 0), CNuPoint(5, 1, 0)), NuTrue);
    std::filesystem::create_directory(files);
    WriteFiles("shared");
  }
  ~Shared() {
    nu_association_free(handle);
    std::filesystem::remove_all(files);
  }
  std::string File(const std::string& kind, const std::string& owner) const {
    return (files / (kind + owner)).string();
  }
  void WriteFiles(const std::string& owner) const {
    symmetric.BinaryDump(File("matrix", owner).c_str());
    symmetric.GetRowVector(1).BinaryDump(File("vector", owner).c_str());
    curve.BinaryDump(File("curve", owner).c_str());
  }
};

// Reads the files of an owner; the copy has another one.
void AddFiles(const Shared& shared, const std::string& owner, const std::string& other, Bits& bits) {
  CNuMatrix matrix;
  CNuVector vector;
  CNuCompositeCurve curve;
  EXPECT_TRUE(matrix.BinaryRead(shared.File("matrix", owner).c_str()));
  EXPECT_TRUE(vector.BinaryRead(shared.File("vector", owner).c_str()));
  EXPECT_TRUE(curve.BinaryRead(shared.File("curve", owner).c_str()));
  EXPECT_FALSE(curve.IsSelfIntersecting());
  bits.Add(matrix), bits.Add(vector), bits.Add(curve.Length());
  nu_curve* handle = nullptr;
  double length = 0.0;
  EXPECT_EQ(nu_curve_create(&handle), NU_STATUS_OK);
  EXPECT_EQ(nu_curve_read(handle, shared.File("curve", owner).c_str()), NU_STATUS_OK);
  EXPECT_EQ(nu_curve_write(handle, shared.File("copy", other).c_str()), NU_STATUS_OK);
  EXPECT_EQ(nu_curve_length(handle, &length), NU_STATUS_OK);
  bits.Add(length);
  nu_curve_free(handle);
}

// Each thread watches its own fit, and cancels it.
void AddWatched(const Shared& shared, Bits& bits) {
  struct Watch {
    Bits& bits;
    long stepsLeft;
  };
  for (const long steps : {0, 2, 100}) {
    CNuAssociation own(shared.association);
    Watch watch{bits, steps};
    own.SetMonitor(
        [](void* context, long step, double objective, double stepLength) {
          Watch& w = *static_cast<Watch*>(context);
          w.bits.Add(static_cast<double>(step)), w.bits.Add(objective), w.bits.Add(stepLength);
          return w.stepsLeft-- > 0 ? NuTrue : NuFalse;
        },
        &watch);
    for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone}) {
      CNuCylSurf cylinder(1.0);
      bits.Add(own.Fit(criterion, &cylinder).GetEnd());
      bits.AddObject(cylinder);
    }
  }
}

void AddShared(const Shared& shared, Bits& bits) {
  for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone, NuMinimumCircumscribed}) {
    CNuCylSurf cylinder(1.0);
    bits.Add(shared.association.Fit(criterion, &cylinder).GetForm());
    bits.AddObject(cylinder);
  }
  nu::test::fingerprint::AddReport(shared.association, shared.report, bits);
  ENuStatus status{};
  CNuVector values;
  CNuMatrix vectors;
  shared.symmetric.EigenValuesVectors(&status, &values, &vectors);
  bits.Add(vectors);
  bits.Add(shared.polyline.DistanceTo(CNuPoint(1.0, 2.0, 3.0)));
  bits.Add(shared.table.Spline(1.0));
  bits.Add(shared.clouds.space.MinEdge(nullptr, nullptr));
  const CNuComplexVector complex(CNuVector(1.0, 2.0, 3.0), CNuVector(3.0, 1.0, 2.0));
  bits.Add(CNuComplexPolar(complex.Magnitude(), 0.5).Power(3).Modulus());
  CNuChebyshevPolynomialExpression expression(12);
  expression.FitMinMax(0.0, 1.0, [](double x) { return 1.0 / (1.0 + x); });
  bits.Add(expression.ValueAt(0.3));
  CNuCylSurf cylinder(24.0, CNuPoint(400.0, -80.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  CNuAssociationCandidates candidates;
  candidates.Add(CNuAssociationPart(shared.clouds.shaft, cylinder, CNuPoint(400.0, -80.0, 0.0)));
  bits.AddOutcome([&] { bits.Add(candidates.Fit(NuMinimumCircumscribed, &cylinder)); });
}

// By the interface for C. The message of the last failure is the thread's own, although all have failed meanwhile.
void AddByC(const Shared& shared, bool isOther, std::barrier<>& failed, Bits& bits) {
  nu_feature feature{};
  feature.kind = NU_KIND_CYLINDER;
  EXPECT_EQ(isOther ? nu_feature_normalise(nullptr) : nu_tolerance_set(99, 0.0), NU_STATUS_ARGUMENT);
  failed.arrive_and_wait();
  nu_report* report = nullptr;
  EXPECT_EQ(nu_association_fit(shared.handle, NU_CRITERION_MINIMUM_ZONE, &feature, &report), NU_STATUS_OK);
  for (const double c : feature.point) bits.Add(c);
  for (const double c : feature.size) bits.Add(c);
  nu_report_free(report);
  EXPECT_STREQ(nu_error_message(), isOther ? "the feature is null" : "there is no such tolerance");
}

// The results of every kind of operation, from the kind `first` on; a coarse thread takes any step for converged.
std::vector<std::uint64_t> ResultsOf(const Shared& shared, std::size_t first, bool isCoarse, std::barrier<>& failed) {
  const std::string owner = std::to_string(first);
  const double tol = NuGetTol();
  if (isCoarse) NuSetTol(1e-3);
  const std::vector<Part> parts = nu::test::fingerprint::Parts();
  std::vector<std::uint64_t> results(parts.size());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::size_t k = (first + i) % parts.size();
    results[k] = Of(parts[k], true);
  }
  Bits bits;
  bits.AddOutcome([&] { AddShared(shared, bits); });
  AddByC(shared, isCoarse, failed, bits);
  shared.WriteFiles(owner);
  for (const std::string& reader : {owner, std::string("shared")}) AddFiles(shared, reader, owner, bits);
  AddWatched(shared, bits);
  results.push_back(bits.Value());
  NuSetTol(tol);
  return results;
}

TEST(Concurrency, EveryOperationGivesWhatItGivesAlone) {
  const Shared shared;
  std::barrier one(1), all(kThreads);
  const std::vector<std::uint64_t> alone[] = {ResultsOf(shared, 0, false, one), ResultsOf(shared, 0, true, one)};
  const long watchedAlone = shared.watched.exchange(0);
  EXPECT_GT(watchedAlone, 0);
  EXPECT_NE(alone[0], alone[1]);
  std::vector<std::uint64_t> found[kThreads];
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] { found[t] = ResultsOf(shared, t, t % 2 == 1, all); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(shared.watched, kThreads / 2 * watchedAlone);
  for (std::size_t t = 0; t < kThreads; ++t) EXPECT_EQ(found[t], alone[t % 2]) << "thread " << t;
}

}  // namespace
