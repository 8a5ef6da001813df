#include "nu/association/certificate.h"

#include <cmath>
#include <vector>

#include "nu/association/internal/any_feature.h"
#include "nu/association/internal/report_details.h"
#include "nu/engine/association/certificate.h"
#include "nu/engine/association/covariance.h"
#include "nu/engine/base/elementary.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"

using namespace nu::internal;

namespace {

constexpr const char* kWhat = "certificate";
constexpr const char* kCheck = "CNuCertificate::Check";

[[noreturn]] void FailUnsupported(const char* where) {
  FailOperation(NuOperationUnsupported, kWhat, where);
}

Feature AskedFeature(const CNuGeometry& geometry, ENuCriterion criterion) {
  const std::optional<AnyFeature> any = FeatureOfAny(geometry);
  const bool isTube = any && any->feature.kind == FeatureKind::torus && criterion == NuMinimumCircumscribed;
  if (!any || ((any->rules.criteria & Has(criterion)) == 0 && !isTube)) FailUnsupported(kCheck);
  return any->feature;
}

ContactCriterion CriterionFor(ENuCriterion criterion, FeatureKind kind) {
  if (criterion == NuMaximumInscribed) return ContactCriterion::inscribed;
  // The tube of a torus is the one that its minor radius states.
  const bool isZone = criterion == NuMinimumZone && kind != FeatureKind::torus;
  return isZone ? ContactCriterion::zone : ContactCriterion::circumscribed;
}

// Where all points are on one nappe their zone is that of one, in the middle of which the cone is.
bool HasPointsBehindApex(const Feature& cone, PointView points) {
  const double apex = -cone.size[0] / Tan(cone.size[1]);
  for (std::size_t i = 0; i < points.Size(); ++i)
    if (cone.frame.Local(LoadVec3(points[i])).z < apex) return true;
  return false;
}

// The ways in which the deviations of the points may be meant; which one it is depends on a tolerance of the fit, or on
// its course. Whatever is proved for one of them is true.
std::vector<Feature> Readings(const Feature& feature, ENuCriterion criterion, PointView points) {
  std::vector<Feature> readings{feature};
  if (criterion != NuMinimumZone) return readings;
  if (feature.kind == FeatureKind::line) {
    const Feature line = AccountedFeature(feature, criterion, points, NuGetLengthTol());
    if (line.kind != feature.kind) readings.insert(readings.begin(), line);
  }
  if (feature.kind == FeatureKind::circle) readings.emplace_back(feature).kind = FeatureKind::circleInSpace;
  if (feature.kind == FeatureKind::cone && HasPointsBehindApex(feature, points))
    readings.emplace_back(feature).bothNappes = true;
  return readings;
}

// A zone lies about its feature or, where this can be shifted to its side, on one side of it.
std::vector<ContactCriterion> CriteriaOf(ENuCriterion criterion, FeatureKind kind, UnknownMask free) {
  std::vector<ContactCriterion> criteria{CriterionFor(criterion, kind)};
  if (criteria[0] == ContactCriterion::zone && !IsDistance(kind) && Contains(free, OffsetOf(kind)))
    criteria.push_back(ContactCriterion::oneSidedZone);
  return criteria;
}

ENuCertificateCheck CheckFor(CertificateCheck check) {
  switch (check) {
    case CertificateCheck::passed:
      return NuCertificateHolds;
    case CertificateCheck::boundary:
      return NuCertificateBoundary;
    case CertificateCheck::contacts:
      return NuCertificateContacts;
    case CertificateCheck::multipliers:
      return NuCertificateMultipliers;
    case CertificateCheck::balance:
      return NuCertificateBalance;
    case CertificateCheck::growth:
      return NuCertificateGrowth;
    default:
      return NuCertificateFinite;
  }
}

// Of the unknowns of the feature those that its fixed parameters leave.
UnknownMask FreeUnknowns(FeatureKind kind, unsigned fixed) {
  const bool isTorus = kind == FeatureKind::torus;
  UnknownMask held = 0;
  if ((fixed & kFixedDirection) != 0) held |= kTilts | Bits({kTurn});
  if ((fixed & kFixedPoint) != 0) held |= kShifts;
  if ((fixed & kFixedPoint) != 0 && kind == FeatureKind::cone) held |= Bits({kSize0});
  if ((fixed & (isTorus ? kFixedMajorRadius : kFixedRadius)) != 0) held |= Bits({kSize0});
  if ((fixed & kFixedSemiAngle) != 0) held |= Bits({kSize1});
  return ~held;
}

// The feature turns about the origin of its frame, which is therefore its fixed point or among the points.
Feature WithPivot(const Feature& feature, PointView points, const Vec3* fixedPoint) {
  if (fixedPoint == nullptr) return CentredOn(points, feature);
  if (feature.kind == FeatureKind::cone) return feature;
  const double* p = &fixedPoint->x;
  return CentredOn(PointView(p, sizeof(Vec3), 1), feature);
}

struct Claim {
  const CNuCertificate& certificate;
  unsigned fixed;
  Vec3 fixedPoint;
};

std::vector<ContactPoint> ContactsOf(const CNuCertificate& certificate, PointView points) {
  std::vector<ContactPoint> contacts;
  for (int i = 0; i < certificate.GetContacts().GetSize(); ++i) {
    const int index = certificate.GetContacts()[i];
    RequireIndex(index, static_cast<int>(points.Size()), kWhat, kCheck);
    const double side = certificate.GetSides()[i] < 0 ? -1.0 : 1.0;
    contacts.push_back({static_cast<std::size_t>(index), side, certificate.GetMultipliers()[i]});
  }
  return contacts;
}

// Of several readings that fail, the one that comes farthest.
Certificate FindProof(const Claim& claim, PointView points, const CNuGeometry& geometry, double length) {
  if (!(length > 0.0) || !std::isfinite(length)) FailOperation(NuOperationDomain, kWhat, kCheck);
  const ENuCriterion criterion = claim.certificate.GetCriterion();
  const Feature feature = AskedFeature(geometry, criterion);
  return WithMemory(kCheck, [&] {
    const std::vector<ContactPoint> contacts = ContactsOf(claim.certificate, points);
    const Vec3* fixedPoint = (claim.fixed & kFixedPoint) != 0 ? &claim.fixedPoint : nullptr;
    Certificate best;
    if (points.Size() == 0) return best;
    for (const Feature& reading : Readings(feature, criterion, points)) {
      const UnknownMask free = FreeUnknowns(reading.kind, claim.fixed);
      for (const ContactCriterion by : CriteriaOf(criterion, reading.kind, free)) {
        const Certificate found = CheckCertificate({points, WithPivot(reading, points, fixedPoint), by, free,
                                                    contacts.data(), static_cast<int>(contacts.size()), length});
        if (found.failed == CertificateCheck::passed) return found;
        if (found.failed >= best.failed) best = found;
      }
    }
    return best;
  });
}

}  // namespace

CNuCertificateVerdict::CNuCertificateVerdict(const Certificate& found)
    : m_failed(CheckFor(found.failed)),
      m_isGlobal(found.isGlobal),
      m_gap(found.gap),
      m_radius(found.radius),
      m_value(found.value),
      m_excess(found.excess),
      m_contactError(found.offBoundary),
      m_multiplierSum(found.multiplierSum),
      m_balance(found.balance),
      m_growth(found.growth),
      m_curvature(found.curvature) {}

CNuCertificate::CNuCertificate(ENuCriterion criterion, const CNuIntArray& contacts, const CNuIntArray& sides,
                               const CNuDoubleArray& multipliers)
    : m_criterion(criterion), m_contacts(contacts), m_sides(sides), m_multipliers(multipliers) {
  constexpr const char* where = "CNuCertificate";
  if (criterion <= NuLeastSquares || criterion > NuMaximumInscribed) FailUnsupported(where);
  if (contacts.GetSize() != sides.GetSize() || contacts.GetSize() != multipliers.GetSize())
    FailOperation(NuOperationSizeMismatch, kWhat, where);
}

void CNuCertificate::FixRadius() {
  m_fixed |= kFixedRadius;
}

void CNuCertificate::FixMajorRadius() {
  m_fixed |= kFixedMajorRadius;
}

void CNuCertificate::FixSemiAngle() {
  m_fixed |= kFixedSemiAngle;
}

void CNuCertificate::FixDirection() {
  m_fixed |= kFixedDirection;
}

void CNuCertificate::FixPoint(const CNuPoint& point) {
  m_fixed |= kFixedPoint;
  m_point = point;
}

CNuCertificateVerdict CNuCertificate::Check(const CNuPointArray& points, const CNuGeometry& feature,
                                            double length) const {
  const Vec3 fixedPoint = Components(m_point);
  return CNuCertificateVerdict(FindProof({*this, m_fixed, fixedPoint}, ViewOf(points), feature, length));
}

CNuCertificateVerdict CNuCertificate::Check(const double* xyz, int count, int stride, const CNuGeometry& feature,
                                            double length) const {
  if (count < 0 || (xyz == nullptr && count > 0) || stride < 3) FailOperation(NuOperationDomain, kWhat, kCheck);
  const PointView points(xyz, static_cast<std::size_t>(stride) * sizeof(double), static_cast<std::size_t>(count));
  const Vec3 fixedPoint = Components(m_point);
  return CNuCertificateVerdict(FindProof({*this, m_fixed, fixedPoint}, points, feature, length));
}
