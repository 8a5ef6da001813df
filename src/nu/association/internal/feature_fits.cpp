#include "nu/association/internal/feature_fits.h"

namespace nu::internal {
namespace {

bool Accepts(const AssociationOptions& options, const FeatureRules& rules, ENuCriterion criterion) {
  if (criterion < NuLeastSquares || criterion > NuMaximumInscribed || (rules.criteria & Has(criterion)) == 0)
    return false;
  const bool isTorus = rules.type == CNuObject::NuTypeTorSurf;
  if (!IsPlain(options) || (isTorus && criterion == NuLeastSquares)) return false;
  if (!options.weights.empty() && criterion != NuLeastSquares) return false;
  if (options.side != NuEitherSide && criterion != NuLeastSquares && criterion != NuMinimumZone) return false;
  if ((options.fixed.Mask() & ~rules.fixable) != 0) return false;
  if (options.start && options.start->type != rules.type) return false;
  const FixedParameters& fixed = options.fixed;
  return !(isTorus && fixed.radius && fixed.majorRadius && !(*fixed.radius < *fixed.majorRadius));
}

}  // namespace

void RequireOptions(const AssociationState& state, const FeatureRules& rules, ENuCriterion criterion) {
  if (!Accepts(state.options, rules, criterion)) FailOperation(NuOperationUnsupported, "association", rules.name);
}

}  // namespace nu::internal
