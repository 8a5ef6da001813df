// The operations that take more than a value of the pool for each parameter.

#include <algorithm>
#include <fstream>
#include <vector>

#include "operations/arguments.h"

namespace nu::fuzz {

namespace {

struct Numbers {
  explicit Numbers(Pool& pool) : count(pool.Values().Below(10) - 1) {
    for (double& number : numbers) number = pool.Values().Number();
  }
  int count;
  double numbers[8];
};

void IsEqual(Pool& pool) {
  const Numbers a(pool), b(pool);
  const double tol = pool.Values().Number();
  pool.Make([&] { NuIsEqual(a.count, b.count, a.numbers, b.numbers, tol); });
}

void Sort(Pool& pool) {
  const Numbers a(pool);
  Numbers sorted(a), along(a);
  int index[8];
  pool.Make([&] {
    NuSort(a.count, a.numbers, index);
    NuSort(a.count, sorted.numbers);
    NuSort(a.count, sorted.numbers, along.numbers);
  });
}

void WriteAndRead(Pool& pool) {
  const CNuPoint& written = pool.Read<CNuPoint>();
  CNuPoint& read = pool.Pick<CNuPoint>();
  {
    std::ofstream out(pool.FileName(), std::ios::binary);
    pool.Make([&] { written.BinaryDump(out); });
  }
  std::ifstream in(pool.FileName(), std::ios::binary);
  pool.Make([&] { read.BinaryRead(in); });
}

// Points as a block: up to 12 with gaps between them, or none.
struct Block {
  explicit Block(Pool& pool) : stride(pool.IsNull() ? pool.Values().Integer() : 3 + pool.Values().Below(2)) {
    const CNuPointArray& points = pool.Read<CNuPointArray>();
    count = pool.IsNull() ? -1 : std::min(points.GetSize(), kMost);
    for (int i = 0; i < count && stride >= 3 && stride <= kWidest; ++i) {
      const double xyz[] = {points[i].x(), points[i].y(), points[i].z()};
      std::copy_n(xyz, 3, numbers + static_cast<std::ptrdiff_t>(i) * stride);
    }
    if (stride > kWidest) stride = 3;
  }

  static constexpr int kMost = 40, kWidest = 12;
  double numbers[kMost * kWidest] = {};
  int count = 0;
  int stride;
};

template<class F>
void Prove(Pool& pool) {
  const CNuAssociation& association = pool.Read<CNuAssociation>();
  F* feature = Take<F*>::From(pool);
  const auto criterion = static_cast<ENuCriterion>(pool.Values().Below(5));
  const long budget = 50L * pool.Small();
  std::optional<CNuAssociationReport> report;
  if (pool.Make([&] { report.emplace(association.ProveGlobally(criterion, feature, budget)); })) Keep(pool, *report);
}

// Points that the association borrows while it fits.
template<class F>
void FitBorrowed(Pool& pool) {
  const CNuPointArray& points = pool.Read<CNuPointArray>();
  F& feature = pool.Pick<F>();
  const auto criterion = static_cast<ENuCriterion>(pool.Values().Below(5));
  const int details = pool.Values().Below(33) - 1;
  std::optional<CNuAssociationReport> report;
  if (pool.Make([&] {
        CNuAssociation association(points);
        association.SetDetails(details);
        report.emplace(association.Fit(criterion, &feature));
      }))
    Keep(pool, *report);
}

void AddBlock(Pool& pool) {
  CNuAssociation& association = pool.Pick<CNuAssociation>();
  const Block block(pool);
  pool.Make([&] { association.Add(block.numbers, block.count, block.stride); });
}

void FitBlock(Pool& pool) {
  const Block block(pool);
  CNuCylSurf& cylinder = pool.Pick<CNuCylSurf>();
  pool.Make([&] { CNuAssociation(block.numbers, block.count, block.stride).Fit(NuMinimumZone, &cylinder); });
}

void PartOfBlock(Pool& pool) {
  const Block block(pool);
  const CNuGeometry& feature = pool.Read<CNuGeometry>();
  const CNuPoint& middle = pool.Read<CNuPoint>();
  std::optional<CNuAssociationPart> part;
  if (pool.Make([&] { part.emplace(block.numbers, block.count, block.stride, feature, middle); })) Keep(pool, *part);
}

// Bytes of a part, some of them changed.
void PartOfBytes(Pool& pool) {
  const CNuAssociationPart& sent = pool.Read<CNuAssociationPart>();
  std::vector<unsigned char> bytes(static_cast<std::size_t>(sent.GetNumberBytes()));
  pool.Make([&] { sent.GetBytes(bytes.data()); });
  for (int left = pool.Small(); left > 0 && !bytes.empty(); --left) {
    const std::size_t at = static_cast<std::size_t>(pool.Values().Byte()) * 256 + pool.Values().Byte();
    bytes[at % bytes.size()] = pool.Values().Byte();
  }
  int size = static_cast<int>(bytes.size());
  if (pool.IsNull()) size = std::min(size, pool.Values().Integer());
  std::optional<CNuAssociationPart> received;
  if (pool.Make([&] { received.emplace(CNuAssociationPart::FromBytes(bytes.data(), size)); })) Keep(pool, *received);
}

ENuBoolean Cancel(void* context, long step, double, double) {
  return step < *static_cast<const int*>(context) ? NuTrue : NuFalse;
}
ENuBoolean Throw(void*, long, double, double) {
  throw CNuOperationException(NuOperationFailed, "monitor", "host", 0, 0, 0.0, 0.0);
}

void Watch(Pool& pool) {
  static constexpr int kSteps[] = {1, 2, 3, 1000};
  CNuAssociation& association = pool.Pick<CNuAssociation>();
  int steps = kSteps[pool.Values().Below(4)];
  const NuStepMonitor monitors[] = {Cancel, Throw, nullptr};
  const NuStepMonitor monitor = monitors[pool.Values().Below(3)];
  CNuCircle& circle = pool.Pick<CNuCircle>();
  CNuConSurf& cone = pool.Pick<CNuConSurf>();
  pool.Make([&] { association.SetMonitor(monitor, &steps); });
  pool.Make([&] { association.Fit(NuLeastSquares, &circle); });
  pool.Make([&] { association.Fit(NuMinimumZone, &cone); });
  association.SetMonitor(nullptr, nullptr);
}

void Sample(Pool& pool) {
  const CNuAssociation& association = pool.Read<CNuAssociation>();
  const CNuAssociationReport& report = pool.Read<CNuAssociationReport>();
  const double sigma = pool.Values().Number();
  const int samples = pool.IsNull() ? -1 : pool.Small();
  std::optional<CNuSampledFit> sampled;
  if (pool.Make([&] { sampled.emplace(association.MonteCarlo(report, sigma, samples, 7)); })) Keep(pool, *sampled);
}

void CheckBlock(Pool& pool) {
  const CNuCertificate& certificate = pool.Read<CNuCertificate>();
  const Block block(pool);
  const CNuGeometry& feature = pool.Read<CNuGeometry>();
  const double length = pool.Values().Number();
  pool.Make([&] { certificate.Check(block.numbers, block.count, block.stride, feature, length); });
}

constexpr Operation kOperations[] = {
    {"NuIsEqual(int, int, const double*, const double*, double)", IsEqual},
    {"NuSort(int, double*)", Sort},
    {"NuSort(int, const double*, int*)", Sort},
    {"NuSort(int, double*, double*)", Sort},
    {"CNuPoint::BinaryDump(std::ofstream&) const", WriteAndRead},
    {"CNuPoint::BinaryRead(std::ifstream&)", WriteAndRead},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuLine", FitBorrowed<CNuLine>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuPlane", FitBorrowed<CNuPlane>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuCircle", FitBorrowed<CNuCircle>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuEllipse", FitBorrowed<CNuEllipse>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuHyperbola", FitBorrowed<CNuHyperbola>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuParabola", FitBorrowed<CNuParabola>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuSphSurf", FitBorrowed<CNuSphSurf>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuCylSurf", FitBorrowed<CNuCylSurf>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuConSurf", FitBorrowed<CNuConSurf>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&) of CNuTorSurf", FitBorrowed<CNuTorSurf>},
    {"CNuAssociation::CNuAssociation(const double*, int, int)", FitBlock},
    {"CNuAssociation::Add(const double*, int, int)", AddBlock},
    {"CNuAssociation::SetMonitor(NuStepMonitor, void*)", Watch},
    {"CNuAssociation::MonteCarlo(const CNuAssociationReport&, double, int, unsigned) const", Sample},
    {"CNuAssociation::ProveGlobally(ENuCriterion, CNuLine*, long) const", Prove<CNuLine>},
    {"CNuAssociation::ProveGlobally(ENuCriterion, CNuPlane*, long) const", Prove<CNuPlane>},
    {"CNuAssociation::ProveGlobally(ENuCriterion, CNuCircle*, long) const", Prove<CNuCircle>},
    {"CNuAssociation::ProveGlobally(ENuCriterion, CNuSphSurf*, long) const", Prove<CNuSphSurf>},
    {"CNuAssociation::ProveGlobally(ENuCriterion, CNuCylSurf*, long) const", Prove<CNuCylSurf>},
    {"CNuAssociation::ProveGlobally(ENuCriterion, CNuConSurf*, long) const", Prove<CNuConSurf>},
    {"CNuAssociation::ProveGlobally(ENuCriterion, CNuTorSurf*, long) const", Prove<CNuTorSurf>},
    {"CNuAssociationPart::CNuAssociationPart(const double*, int, int, const CNuGeometry&, const CNuPoint&)",
     PartOfBlock},
    {"CNuAssociationPart::FromBytes(const unsigned char*, int)", PartOfBytes},
    {"CNuAssociationPart::GetBytes(unsigned char*) const", PartOfBytes},
    {"CNuCertificate::Check(const double*, int, int, const CNuGeometry&, double) const", CheckBlock},
};

}  // namespace

std::span<const Operation> WrittenOperations() {
  return kOperations;
}

}  // namespace nu::fuzz
