// The operations of nu/association: one line each.

#include <algorithm>
#include <vector>

#include "operations/arguments.h"

namespace nu::fuzz {

namespace {

// Points as a block: up to 12 with gaps between them, or none.
struct Block {
  explicit Block(Pool& pool) : stride(pool.IsNull() ? pool.Values().Integer() : 3 + pool.Values().Below(2)) {
    const CNuPointArray& points = pool.Pick<CNuPointArray>();
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
  const CNuAssociation& association = pool.Pick<CNuAssociation>();
  F* feature = Take<F*>::From(pool);
  const auto criterion = static_cast<ENuCriterion>(pool.Values().Below(5));
  const long budget = 50L * pool.Small();
  std::optional<CNuAssociationReport> report;
  if (pool.Make([&] { report.emplace(association.ProveGlobally(criterion, feature, budget)); })) Keep(pool, *report);
}

// Points that the association borrows while it fits.
template<class F>
void FitBorrowed(Pool& pool) {
  const CNuPointArray& points = pool.Pick<CNuPointArray>();
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
  const CNuGeometry& feature = pool.Pick<CNuGeometry>();
  const CNuPoint& middle = pool.Pick<CNuPoint>();
  std::optional<CNuAssociationPart> part;
  if (pool.Make([&] { part.emplace(block.numbers, block.count, block.stride, feature, middle); })) Keep(pool, *part);
}

// Bytes of a part, some of them changed.
void PartOfBytes(Pool& pool) {
  const CNuAssociationPart& sent = pool.Pick<CNuAssociationPart>();
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
  pool.Make([&] {
    association.SetMonitor(monitor, &steps);
    association.Fit(NuLeastSquares, &circle);
    association.Fit(NuMinimumZone, &cone);
  });
  association.SetMonitor(nullptr, nullptr);
}

void Sample(Pool& pool) {
  const CNuAssociation& association = pool.Pick<CNuAssociation>();
  const CNuAssociationReport& report = pool.Pick<CNuAssociationReport>();
  const double sigma = pool.Values().Number();
  const int samples = pool.IsNull() ? -1 : pool.Small();
  std::optional<CNuSampledFit> sampled;
  if (pool.Make([&] { sampled.emplace(association.MonteCarlo(report, sigma, samples, 7)); })) Keep(pool, *sampled);
}

void CheckBlock(Pool& pool) {
  const CNuCertificate& certificate = pool.Pick<CNuCertificate>();
  const Block block(pool);
  const CNuGeometry& feature = pool.Pick<CNuGeometry>();
  const double length = pool.Values().Number();
  pool.Make([&] { certificate.Check(block.numbers, block.count, block.stride, feature, length); });
}

constexpr Operation kOperations[] = {
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuLine>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuPlane>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuCircle>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuEllipse>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuHyperbola>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuParabola>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuSphSurf>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuCylSurf>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuConSurf>},
    {"CNuAssociation::CNuAssociation(const CNuPointArray&)", FitBorrowed<CNuTorSurf>},
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
    NU_CONSTRUCTOR(CNuAssociation, (const CNuAssociation&)),
    NU_MEMBER(CNuAssociation&, CNuAssociation, operator=, (const CNuAssociation&)),
    NU_MEMBER(int, CNuAssociation, GetNumberPoints, () const),
    NU_MEMBER(void, CNuAssociation, Add, (const CNuPointArray&)),
    NU_MEMBER(void, CNuAssociation, Remove, (const CNuIntArray&)),
    NU_MEMBER(void, CNuAssociation, Remove, (const CNuPointArray&)),
    NU_MEMBER(void, CNuAssociation, Merge, (const CNuAssociation&)),
    NU_MEMBER(void, CNuAssociation, SetWeights, (const CNuDoubleArray&)),
    NU_MEMBER(void, CNuAssociation, ReleaseWeights, ()),
    NU_MEMBER(void, CNuAssociation, FixRadius, (double)),
    NU_MEMBER(void, CNuAssociation, FixMajorRadius, (double)),
    NU_MEMBER(void, CNuAssociation, FixSemiAngle, (double)),
    NU_MEMBER(void, CNuAssociation, FixDirection, (const CNuVector&)),
    NU_MEMBER(void, CNuAssociation, FixPoint, (const CNuPoint&)),
    NU_MEMBER(void, CNuAssociation, ReleaseRadius, ()),
    NU_MEMBER(void, CNuAssociation, ReleaseMajorRadius, ()),
    NU_MEMBER(void, CNuAssociation, ReleaseSemiAngle, ()),
    NU_MEMBER(void, CNuAssociation, ReleaseDirection, ()),
    NU_MEMBER(void, CNuAssociation, ReleasePoint, ()),
    NU_MEMBER(void, CNuAssociation, RestrictToMaterialSide, (ENuMaterialSide)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuLine&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuPlane&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuCircle&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuEllipse&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuHyperbola&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuParabola&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuSphSurf&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuCylSurf&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuConSurf&)),
    NU_MEMBER(void, CNuAssociation, StartFrom, (const CNuTorSurf&)),
    NU_MEMBER(void, CNuAssociation, ReleaseStart, ()),
    NU_MEMBER(void, CNuAssociation, SetMaxSteps, (long)),
    NU_MEMBER(void, CNuAssociation, SetTolerance, (double)),
    NU_MEMBER(void, CNuAssociation, SetDetails, (int)),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuLine*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuPlane*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuCircle*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuEllipse*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuHyperbola*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuParabola*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuSphSurf*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuCylSurf*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuConSurf*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Fit, (ENuCriterion, CNuTorSurf*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuLine*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuPlane*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuCircle*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuEllipse*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuHyperbola*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuParabola*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuSphSurf*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuCylSurf*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuConSurf*) const),
    NU_MEMBER(CNuAssociationReport, CNuAssociation, Refit, (ENuCriterion, CNuTorSurf*) const),
    NU_MEMBER(CNuDoubleArray, CNuAssociation, Sensitivity, (const CNuAssociationReport&) const),
    NU_CONSTRUCTOR(CNuAssociationCandidates, ()),
    NU_CONSTRUCTOR(CNuAssociationCandidates, (const CNuAssociationCandidates&)),
    NU_MEMBER(CNuAssociationCandidates&, CNuAssociationCandidates, operator=, (const CNuAssociationCandidates&)),
    NU_MEMBER(void, CNuAssociationCandidates, Add, (const CNuAssociationPart&)),
    NU_MEMBER(double, CNuAssociationCandidates, Fit, (ENuCriterion, CNuGeometry*) const),
    NU_CONSTRUCTOR(CNuAssociationPart, ()),
    NU_CONSTRUCTOR(CNuAssociationPart, (const CNuPointArray&, const CNuGeometry&, const CNuPoint&)),
    NU_CONSTRUCTOR(CNuAssociationPart, (const CNuAssociationPart&)),
    NU_MEMBER(CNuAssociationPart&, CNuAssociationPart, operator=, (const CNuAssociationPart&)),
    NU_MEMBER(std::size_t, CNuAssociationPart, GetNumberPoints, () const),
    NU_MEMBER(double, CNuAssociationPart, GetSumSquares, () const),
    NU_MEMBER(double, CNuAssociationPart, GetLargestDeviation, () const),
    NU_MEMBER(double, CNuAssociationPart, GetSmallestDeviation, () const),
    NU_MEMBER(void, CNuAssociationPart, Join, (const CNuAssociationPart&)),
    NU_MEMBER(double, CNuAssociationPart, Step, (CNuGeometry*) const),
    NU_MEMBER(int, CNuAssociationPart, GetNumberBytes, () const),
    NU_CONSTRUCTOR(CNuAssociationReport, ()),
    NU_CONSTRUCTOR(CNuAssociationReport, (const CNuAssociationReport&)),
    NU_MEMBER(CNuAssociationReport&, CNuAssociationReport, operator=, (const CNuAssociationReport&)),
    NU_MEMBER(ENuCriterion, CNuAssociationReport, GetCriterion, () const),
    NU_MEMBER(CNuObject::ENuObjectType, CNuAssociationReport, GetFeatureType, () const),
    NU_MEMBER(int, CNuAssociationReport, GetNumberPoints, () const),
    NU_MEMBER(int, CNuAssociationReport, GetDetails, () const),
    NU_MEMBER(ENuAssociationEnd, CNuAssociationReport, GetEnd, () const),
    NU_MEMBER(ENuBoolean, CNuAssociationReport, HasConverged, () const),
    NU_MEMBER(int, CNuAssociationReport, GetCause, () const),
    NU_MEMBER(void, CNuAssociationReport, Require, () const),
    NU_MEMBER(long, CNuAssociationReport, GetSteps, () const),
    NU_MEMBER(double, CNuAssociationReport, GetLastStep, () const),
    NU_MEMBER(double, CNuAssociationReport, GetForm, () const),
    NU_MEMBER(double, CNuAssociationReport, GetPeak, () const),
    NU_MEMBER(double, CNuAssociationReport, GetValley, () const),
    NU_MEMBER(double, CNuAssociationReport, GetRootMeanSquare, () const),
    NU_MEMBER(double, CNuAssociationReport, GetSumSquares, () const),
    NU_MEMBER(const CNuDoubleArray&, CNuAssociationReport, GetDeviations, () const),
    NU_MEMBER(int, CNuAssociationReport, GetHighestPoint, () const),
    NU_MEMBER(int, CNuAssociationReport, GetLowestPoint, () const),
    NU_MEMBER(void, CNuAssociationReport, GetParameterFrame, (CNuPoint*, CNuVector*, CNuVector*, CNuVector*) const),
    NU_MEMBER(int, CNuAssociationReport, GetNumberParameters, () const),
    NU_MEMBER(const char*, CNuAssociationReport, GetParameterName, (int) const),
    NU_MEMBER(ENuBoolean, CNuAssociationReport, IsParameterAngle, (int) const),
    NU_MEMBER(double, CNuAssociationReport, GetStandardUncertainty, (int) const),
    NU_MEMBER(CNuMatrix, CNuAssociationReport, GetCovariance, () const),
    NU_MEMBER(int, CNuAssociationReport, GetDegreesOfFreedom, () const),
    NU_MEMBER(double, CNuAssociationReport, GetStandardDeviation, () const),
    NU_MEMBER(double, CNuAssociationReport, GetCondition, () const),
    NU_MEMBER(double, CNuAssociationReport, GetAxisUncertainty, (double) const),
    NU_MEMBER(double, CNuAssociationReport, GetSurfaceUncertainty, (const CNuPoint&) const),
    NU_MEMBER(int, CNuAssociationReport, GetNumberContacts, () const),
    NU_MEMBER(const CNuIntArray&, CNuAssociationReport, GetContactPoints, () const),
    NU_MEMBER(const CNuIntArray&, CNuAssociationReport, GetContactSides, () const),
    NU_MEMBER(const CNuDoubleArray&, CNuAssociationReport, GetMultipliers, () const),
    NU_MEMBER(CNuCertificate, CNuAssociationReport, GetCertificate, () const),
    NU_MEMBER(ENuBoolean, CNuAssociationReport, IsGlobal, () const),
    NU_MEMBER(double, CNuAssociationReport, GetBound, () const),
    NU_MEMBER(double, CNuAssociationReport, GetGap, () const),
    NU_MEMBER(const char*, CNuAssociationReport, Explain, () const),
    NU_MEMBER(const char*, CNuAssociationReport, GetWeakestParameter, () const),
    NU_MEMBER(double, CNuAssociationReport, GetWeakestUncertainty, () const),
    NU_MEMBER(double, CNuAssociationReport, GetCoverage, () const),
    NU_MEMBER(ENuBoolean, CNuAssociationReport, GetProbingPlace, (CNuPoint*) const),
    NU_CONSTRUCTOR(CNuCertificate, (ENuCriterion, const CNuIntArray&, const CNuIntArray&, const CNuDoubleArray&)),
    NU_MEMBER(ENuCriterion, CNuCertificate, GetCriterion, () const),
    NU_MEMBER(const CNuIntArray&, CNuCertificate, GetContacts, () const),
    NU_MEMBER(const CNuIntArray&, CNuCertificate, GetSides, () const),
    NU_MEMBER(const CNuDoubleArray&, CNuCertificate, GetMultipliers, () const),
    NU_MEMBER(void, CNuCertificate, FixRadius, ()),
    NU_MEMBER(void, CNuCertificate, FixMajorRadius, ()),
    NU_MEMBER(void, CNuCertificate, FixSemiAngle, ()),
    NU_MEMBER(void, CNuCertificate, FixDirection, ()),
    NU_MEMBER(void, CNuCertificate, FixPoint, (const CNuPoint&)),
    NU_MEMBER(CNuCertificateVerdict, CNuCertificate, Check, (const CNuPointArray&, const CNuGeometry&, double) const),
    NU_CONSTRUCTOR(CNuCertificateVerdict, ()),
    NU_MEMBER(ENuBoolean, CNuCertificateVerdict, Holds, () const),
    NU_MEMBER(ENuCertificateCheck, CNuCertificateVerdict, GetFailedCheck, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetGap, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetRadius, () const),
    NU_MEMBER(ENuBoolean, CNuCertificateVerdict, IsGlobal, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetValue, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetExcess, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetContactError, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetMultiplierSum, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetBalance, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetGrowth, () const),
    NU_MEMBER(double, CNuCertificateVerdict, GetCurvature, () const),
    NU_CONSTRUCTOR(CNuSampledFit, (const CNuSampledFit&)),
    NU_MEMBER(CNuSampledFit&, CNuSampledFit, operator=, (const CNuSampledFit&)),
    NU_MEMBER(int, CNuSampledFit, GetNumberSamples, () const),
    NU_MEMBER(int, CNuSampledFit, GetNumberValues, () const),
    NU_MEMBER(const char*, CNuSampledFit, GetName, (int) const),
    NU_MEMBER(const CNuDoubleArray&, CNuSampledFit, GetMeans, () const),
    NU_MEMBER(const CNuDoubleArray&, CNuSampledFit, GetStandardDeviations, () const),
    NU_MEMBER(const CNuDoubleArray&, CNuSampledFit, GetLow, () const),
    NU_MEMBER(const CNuDoubleArray&, CNuSampledFit, GetHigh, () const),
    NU_FUNCTION(const char*, NuCriterionLetter, (ENuCriterion)),
    NU_FUNCTION(const char*, NuCriterionName, (ENuCriterion)),
};

}  // namespace

std::span<const Operation> AssociationOperations() {
  return kOperations;
}

}  // namespace nu::fuzz
