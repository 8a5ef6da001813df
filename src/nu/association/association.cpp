#include "nu/association/association.h"

#include <algorithm>
#include <cmath>

#include "nu/association/internal/association_state.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"

using namespace nu::internal;

namespace {

constexpr const char* kWhat = "association";

[[noreturn]] void FailArgument(const char* where) {
  FailOperation(NuOperationDomain, kWhat, where);
}

double RequirePositive(double length, const char* where) {
  if (!(length > 0.0) || !std::isfinite(length)) FailArgument(where);
  return length;
}

std::shared_ptr<AssociationState> StateOf(PointView points) {
  return WithMemory("CNuAssociation", [&] { return std::make_shared<AssociationState>(points); });
}

// Bits that stand for more imply the others.
int WithImplied(int details) {
  if ((details & NuDetailDeviations & ~NuDetailForm) != 0) details |= NuDetailDeviations;
  return details;
}

}  // namespace

CNuAssociation::CNuAssociation(const CNuPointArray& points) : m_state(StateOf(ViewOf(points))) {}

CNuAssociation::CNuAssociation(const double* xyz, int count, int stride)
    : m_state(StateOf(BlockView(xyz, count, stride, "CNuAssociation"))) {}

CNuAssociation::CNuAssociation(const CNuAssociation& other)
    : m_state(WithMemory("CNuAssociation", [&] { return std::make_shared<AssociationState>(*other.m_state); })) {}

CNuAssociation& CNuAssociation::operator=(const CNuAssociation& other) {
  m_state = CNuAssociation(other).m_state;
  return *this;
}

CNuAssociation::~CNuAssociation() = default;

int CNuAssociation::GetNumberPoints() const {
  return static_cast<int>(m_state->points.Size());
}

AssociationOptions& CNuAssociation::Options() {
  return m_state->options;
}

void CNuAssociation::SetWeights(const CNuDoubleArray& weights) {
  constexpr const char* where = "SetWeights";
  if (weights.GetSize() != GetNumberPoints()) FailOperation(NuOperationSizeMismatch, kWhat, where);
  const double* first = weights.GetData();
  const double* end = first + weights.GetSize();
  const bool valid = std::all_of(first, end, [](double w) { return w >= 0.0 && std::isfinite(w); });
  if (!valid || std::none_of(first, end, [](double w) { return w > 0.0; })) FailArgument(where);
  Options().weights = WithMemory(where, [&] { return std::vector<double>(first, end); });
}

void CNuAssociation::ReleaseWeights() {
  Options().weights.clear();
}

void CNuAssociation::FixRadius(double radius) {
  Options().fixed.radius = RequirePositive(radius, "FixRadius");
}

void CNuAssociation::FixMajorRadius(double majorRadius) {
  Options().fixed.majorRadius = RequirePositive(majorRadius, "FixMajorRadius");
}

void CNuAssociation::FixSemiAngle(double semiAngle) {
  if (!(semiAngle > 0.0 && semiAngle < 90.0)) FailArgument("FixSemiAngle");
  Options().fixed.semiAngle = semiAngle * (Nu_PI / 180.0);
}

void CNuAssociation::FixDirection(const CNuVector& direction) {
  constexpr const char* where = "FixDirection";
  if (direction.GetSize() != 3) FailOperation(NuOperationNotThreeComponents, kWhat, where);
  const Vec3 d = Components(direction);
  if (!IsFinite(d)) FailArgument(where);
  if (IsNull(d, NuGetZero())) FailOperation(NuOperationZeroVector, kWhat, where);
  Options().fixed.direction = Unit(Rescaled(d));
}

void CNuAssociation::FixPoint(const CNuPoint& point) {
  if (!IsFinite(Components(point))) FailArgument("FixPoint");
  Options().fixed.point = Components(point);
}

void CNuAssociation::ReleaseRadius() {
  Options().fixed.radius.reset();
}

void CNuAssociation::ReleaseMajorRadius() {
  Options().fixed.majorRadius.reset();
}

void CNuAssociation::ReleaseSemiAngle() {
  Options().fixed.semiAngle.reset();
}

void CNuAssociation::ReleaseDirection() {
  Options().fixed.direction.reset();
}

void CNuAssociation::ReleasePoint() {
  Options().fixed.point.reset();
}

void CNuAssociation::RestrictToMaterialSide(ENuMaterialSide side) {
  if (side != NuEitherSide && side != NuOutside && side != NuInside) FailArgument("RestrictToMaterialSide");
  Options().side = side;
}

void CNuAssociation::ReleaseStart() {
  Options().start.reset();
}

void CNuAssociation::SetMaxSteps(long maxSteps) {
  if (maxSteps < 1) FailArgument("SetMaxSteps");
  Options().maxSteps = maxSteps;
}

void CNuAssociation::SetTolerance(double tol) {
  if (!(tol >= 0.0) || !std::isfinite(tol)) FailArgument("SetTolerance");
  Options().tol = tol;
}

void CNuAssociation::SetMonitor(NuStepMonitor monitor, void* context) {
  Options().monitor = monitor;
  Options().context = context;
}

void CNuAssociation::SetDetails(int details) {
  if (details < 0 || (details & ~NuDetailAll) != 0) FailArgument("SetDetails");
  Options().details = WithImplied(details);
}
