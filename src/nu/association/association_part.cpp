#include "nu/association/association_part.h"

#include <algorithm>
#include <cmath>

#include "nu/association/association.h"
#include "nu/association/internal/any_feature.h"
#include "nu/association/internal/association_state.h"
#include "nu/association/internal/constrained_fits.h"
#include "nu/engine/association/covariance.h"
#include "nu/engine/association/partial_sums.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"

using namespace nu::internal;

namespace {

constexpr const char* kWhat = "association";
constexpr const char* kPart = "CNuAssociationPart";
constexpr const char* kFit = "CNuAssociationCandidates::Fit";

using Sums = std::shared_ptr<const PartSums>;

// The origin of the frame goes beside the place.
Feature CentredAt(const Feature& feature, const Vec3& place) {
  return CentredOn(PointView(&place.x, sizeof(Vec3), 1), feature);
}

Sums SumsOf(PointView points, const AssociationOptions& options, const CNuGeometry& geometry, const CNuPoint& middle) {
  const std::optional<AnyFeature> any = FeatureOfAny(geometry);
  const FixedParameters& fixed = options.fixed;
  if (!any || (fixed.Mask() & ~any->rules.fixable) != 0 || options.side != NuEitherSide)
    FailOperation(NuOperationUnsupported, kWhat, kPart);
  if (points.Size() == 0) return nullptr;
  return WithMemory(kPart, [&] {
    const Feature placed = AtFixed(any->feature, fixed);
    const Feature feature = fixed.point ? placed : CentredAt(placed, Components(middle));
    const PartRequest request{feature, ~FixedUnknowns(fixed, feature.kind), 0.0};
    return std::make_shared<const PartSums>(SumPart(points, WeightsOf(options), request));
  });
}

}  // namespace

CNuAssociationPart::CNuAssociationPart() = default;
CNuAssociationPart::CNuAssociationPart(const CNuPointArray& points, const CNuGeometry& feature, const CNuPoint& middle)
    : m_sums(SumsOf(ViewOf(points), {}, feature, middle)) {}
CNuAssociationPart::CNuAssociationPart(const double* xyz, int count, int stride, const CNuGeometry& feature,
                                       const CNuPoint& middle)
    : m_sums(SumsOf(BlockView(xyz, count, stride, kPart), {}, feature, middle)) {}
CNuAssociationPart::CNuAssociationPart(const CNuAssociation& association, const CNuGeometry& feature,
                                       const CNuPoint& middle)
    : m_sums(SumsOf(association.m_state->points, association.m_state->options, feature, middle)) {}
CNuAssociationPart::CNuAssociationPart(Sums sums) : m_sums(std::move(sums)) {}
CNuAssociationPart::CNuAssociationPart(const CNuAssociationPart&) = default;
CNuAssociationPart& CNuAssociationPart::operator=(const CNuAssociationPart&) = default;
CNuAssociationPart::~CNuAssociationPart() = default;

std::size_t CNuAssociationPart::GetNumberPoints() const {
  return m_sums ? m_sums->points : 0;
}

double CNuAssociationPart::GetSumSquares() const {
  return m_sums ? Counted(*m_sums).sumSquares : 0.0;
}

double CNuAssociationPart::GetRootMeanSquare() const {
  return m_sums ? std::sqrt(Counted(*m_sums).unweightedSquares / static_cast<double>(m_sums->points)) : 0.0;
}

double CNuAssociationPart::GetLargestDeviation() const {
  std::optional<double> largest;
  for (int k = 0; m_sums && k < PartSums::kStrata; ++k)
    if (const std::optional<PartExtreme>& high = Counted(*m_sums).highest[k])
      largest = std::max(largest.value_or(high->deviation), high->deviation);
  return largest.value_or(0.0);
}

double CNuAssociationPart::GetSmallestDeviation() const {
  std::optional<double> smallest;
  for (int k = 0; m_sums && k < PartSums::kStrata; ++k)
    if (const std::optional<PartExtreme>& low = Counted(*m_sums).lowest[k])
      smallest = std::min(smallest.value_or(low->deviation), low->deviation);
  return smallest.value_or(0.0);
}

void CNuAssociationPart::Join(const CNuAssociationPart& other) {
  constexpr const char* where = "CNuAssociationPart::Join";
  if (!other.m_sums) return;
  if (!m_sums) {
    m_sums = other.m_sums;
    return;
  }
  if (m_sums->request != other.m_sums->request) FailOperation(NuOperationData, kWhat, where);
  m_sums = WithMemory(
      where, [&] { return std::make_shared<const PartSums>(nu::engine::association::Join(*m_sums, *other.m_sums)); });
}

double CNuAssociationPart::Step(CNuGeometry* feature) const {
  constexpr const char* where = "CNuAssociationPart::Step";
  if (!m_sums || feature == nullptr) FailOperation(NuOperationUnsupported, kWhat, where);
  const std::optional<PartStep> step = StepOf(*m_sums);
  if (!step) FailOperation(NuOperationFailed, kWhat, where);
  if (!StoreAny(step->feature, feature)) FailOperation(NuOperationUnsupported, kWhat, where);
  return step->length;
}

int CNuAssociationPart::GetNumberBytes() const {
  return m_sums ? WithMemory(kPart, [&] { return static_cast<int>(BytesOf(*m_sums).size()); }) : 0;
}

void CNuAssociationPart::GetBytes(unsigned char* bytes) const {
  if (!m_sums) return;
  const std::vector<unsigned char> all = WithMemory(kPart, [&] { return BytesOf(*m_sums); });
  std::copy(all.begin(), all.end(), bytes);
}

CNuAssociationPart CNuAssociationPart::FromBytes(const unsigned char* bytes, int count) {
  constexpr const char* where = "CNuAssociationPart::FromBytes";
  if (count == 0) return {};
  if (count < 0 || bytes == nullptr) FailOperation(NuOperationData, kWhat, where);
  const std::optional<PartSums> sums = SumsFrom(bytes, static_cast<std::size_t>(count));
  if (!sums) FailOperation(NuOperationData, kWhat, where);
  return CNuAssociationPart(WithMemory(where, [&] { return std::make_shared<const PartSums>(*sums); }));
}

CNuAssociationCandidates::CNuAssociationCandidates() = default;
CNuAssociationCandidates::CNuAssociationCandidates(const CNuAssociationCandidates&) = default;
CNuAssociationCandidates& CNuAssociationCandidates::operator=(const CNuAssociationCandidates&) = default;
CNuAssociationCandidates::~CNuAssociationCandidates() = default;

void CNuAssociationCandidates::Add(const CNuAssociationPart& joined) {
  if (!joined.m_sums) return;
  m_candidates = WithMemory("CNuAssociationCandidates::Add", [&] {
    auto candidates =
        m_candidates ? std::make_shared<PartCandidates>(*m_candidates) : std::make_shared<PartCandidates>();
    candidates->Add(*joined.m_sums);
    return candidates;
  });
}

double CNuAssociationCandidates::Fit(ENuCriterion criterion, CNuGeometry* feature) const {
  const std::optional<AnyFeature> any = feature != nullptr ? FeatureOfAny(*feature) : std::nullopt;
  if (!any || criterion == NuLeastSquares || (any->rules.criteria & Has(criterion)) == 0)
    FailOperation(NuOperationUnsupported, kWhat, kFit);
  if (!m_candidates) FailOperation(NuOperationFailed, kWhat, kFit);
  const PartRequest& parts = m_candidates->Request();
  const UnknownMask fixed = ~parts.free;
  const bool isTorus = any->feature.kind == FeatureKind::torus;
  const bool isOther = fixed != 0 && parts.feature.kind != any->feature.kind;
  if (isOther || (isTorus && Contains(fixed, kSize1))) FailOperation(NuOperationUnsupported, kWhat, kFit);
  Feature start = HeldAs(parts.feature, fixed, any->feature);
  if (isTorus) start.kind = FeatureKind::circleInSpace;
  start.bothNappes = start.kind == FeatureKind::cone && parts.feature.bothNappes;
  FittedFeature found = WithMemory(kFit, [&] {
    return m_candidates->Fit(ToEngine(criterion), {start, parts.free, 0.0});
  });
  if (found.end != FitEnd::converged) FailOperation(NuOperationFailed, kWhat, kFit);
  if (isTorus) found.feature = AsTube(found.feature, found.objective);
  StoreAny(found.feature, feature);
  return found.objective;
}
