#include "nu/engine/shapes/quadric_stage.h"

#include "nu/engine/shapes/generator_quadratic.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

namespace {

// Towards the generator of the base that the other surface may nearly share: a cylinder along its axis, a cone through
// its apex.
Vec3 TowardsCommon(const RoundQuadric& base, const RoundQuadric& other, Vec3 origin) {
  const Vec3 direction = other.kind == RoundQuadric::Kind::kCylinder ? other.axis : other.point - origin;
  const bool isOtherNappe = base.kind == RoundQuadric::Kind::kCone && Dot(direction, base.axis) < 0.0;
  return isOtherNappe ? -1.0 * direction : direction;
}

AxisFrame FrameTowards(Vec3 origin, Vec3 axis, Vec3 direction) {
  constexpr double kLeastSine = 1e-6;
  const Vec3 across = Rejection(direction, axis);
  if (!(Norm(across) > kLeastSine * Norm(direction))) return AxisFrame::Along(origin, axis);
  return AxisFrame::Along(origin, axis, Unit(across));
}

// The place on the generator at u = 0 of a cone that is next to the apex of another one, if any is, or to the centre of
// a sphere, which may touch all generators there.
double StartOf(const QuadricPair& pair) {
  constexpr double kNear = 0.5;
  if (pair.base.kind != RoundQuadric::Kind::kCone) return 0.0;
  const double along = pair.base.sine * pair.other.point.x + pair.base.cosine * pair.other.point.z;
  const bool isNextToApex =
      pair.other.kind == RoundQuadric::Kind::kCone && std::fabs(along) > kNear * Norm(pair.other.point);
  return isNextToApex || pair.other.kind == RoundQuadric::Kind::kSphere ? along : 0.0;
}

// Where the linear term is 0: the plane through the apex across that of the axes crosses the cylinder, or touches it.
std::vector<double> RootsOfSlope(const TrigPolynomial& linear, double radius, double tol) {
  const double constant = linear.cosines[0];
  const double beyond = std::fabs(std::fabs(constant) / Hypot(linear.cosines[1], linear.sines[1]) - 1.0);
  if (!(beyond * radius <= tol)) return DistinctRoots(linear);
  const double top = Atan2(linear.sines[1], linear.cosines[1]);
  const double phase = top < 0.0 ? top + Nu_2PI : top;
  const double u = constant > 0.0 ? phase + Nu_PI : phase;
  return {u < Nu_2PI ? u : u - Nu_2PI};
}

void RemoveNearest(double u, std::vector<double>& angles) {
  const auto distance = [u](double angle) { return std::fabs(Sin(0.5 * (angle - u))); };
  const auto nearest =
      std::min_element(angles.begin(), angles.end(), [&](double a, double b) { return distance(a) < distance(b); });
  if (nearest != angles.end()) angles.erase(nearest);
}

std::vector<double> StationaryAngles(const GeneratorQuadratic& quadratic, const CommonParts& parts) {
  return quadratic.StationaryAngles(parts.Tolerances().zero, parts.Tolerances().share);
}

std::optional<QuadricBranches> BranchesOnCylinder(const QuadricStage& stage, bool isParallelToOther,
                                                  const CommonParts& parts) {
  const QuadricPair& pair = stage.pair;
  const double radius = std::max(pair.base.radius, DBL_MIN);
  const auto quadratic = GeneratorQuadratic::OnCylinder(QuadricMatrix::Of(pair.other), radius);
  if (!quadratic.IsFinite()) return std::nullopt;
  if (isParallelToOther) {
    const std::vector<double> asymptotes = RootsOfSlope(quadratic.linear, radius, stage.tol);
    return BranchesThroughInfinity(pair, asymptotes, stage.tol, stage.reach);
  }
  return BranchesOf(pair, StationaryAngles(quadratic, parts), {}, stage.tol, stage.reach);
}

std::optional<QuadricBranches> BranchesOnCone(const QuadricStage& stage, const ConeContact& contact,
                                              const CommonParts& parts) {
  const QuadricPair& pair = stage.pair;
  const auto quadratic = GeneratorQuadratic::OnCone(QuadricMatrix::Of(pair.other), pair.base.sine, pair.base.cosine);
  if (!quadratic.IsFinite()) return std::nullopt;
  if (contact.atInfinity) {
    return BranchesThroughInfinity(pair, DistinctRoots(quadratic.linear), stage.tol, stage.reach);
  }
  std::vector<double> asymptotes = Asymptotes::Of(quadratic.square).angles;
  if (contact.alongGenerator) {
    if (pair.other.kind == RoundQuadric::Kind::kCone) RemoveNearest(0.0, asymptotes);
    return BranchesBesideLine(pair, asymptotes, stage.tol, stage.reach);
  }
  if (contact.atApex || quadratic.constant.cosines[0] == 0.0) {
    return BranchesThroughApex(pair, asymptotes, stage.tol, stage.reach);
  }
  return BranchesOf(pair, StationaryAngles(quadratic, parts), asymptotes, stage.tol, stage.reach);
}

}  // namespace

// A cylinder is taken at the point of its axis that is nearest to the origin.
QuadricStage::QuadricStage(const RoundQuadric& base, const RoundQuadric& other, Vec3 origin, const CommonParts& parts)
    : frame(FrameTowards(origin, base.axis, TowardsCommon(base, other, origin))) {
  pair.base = base;
  pair.base.point = {};
  pair.base.axis = {0.0, 0.0, 1.0};
  pair.other = other;
  pair.other.point = frame.Local(other.point);
  pair.other.axis = {Dot(other.axis, frame.x), Dot(other.axis, frame.y), Dot(other.axis, frame.z)};
  if (other.kind == RoundQuadric::Kind::kCylinder) {
    pair.other.point = Rejection(pair.other.point, pair.other.axis);
  }
  unit = UnitFor(std::max({base.radius, other.radius, Norm(pair.other.point)}));
  pair.base = InUnit(pair.base, unit);
  pair.other = InUnit(pair.other, unit);
  tol = CoincidenceTol(parts.Tol(), LargestComponent(origin)) / unit;
  constexpr double kLeastReach = 1000.0;            // of the size of both surfaces
  constexpr double kMostReach = 1.0 / DBL_EPSILON;  // where their distance is lost beside the coordinates
  reach = std::fmin(std::fmax(kLeastReach, parts.LargestPart() / unit), kMostReach);
  pair.start = StartOf(pair);
  pair.SetWaves();
}

void AddOnCylinder(const QuadricStage& stage, bool isParallelToOther, CommonParts& parts) {
  parts.AddBranches(BranchesOnCylinder(stage, isParallelToOther, parts), stage.frame, stage.unit);
}

void AddOnCone(const QuadricStage& stage, const ConeContact& contact, CommonParts& parts) {
  parts.AddBranches(BranchesOnCone(stage, contact, parts), stage.frame, stage.unit);
}

}  // namespace nu::engine::shapes
