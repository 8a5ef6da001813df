#include <cmath>

#include "nu/association/association.h"
#include "nu/association/internal/feature_fits.h"

using namespace nu::internal;

namespace {

template<class Class>
StartFeature StartOf(const Class& start) {
  StartFeature given{kRules<Class>.type, FeatureOf(start)};
  const Feature& f = given.feature;
  const bool finite = IsFinite(f.frame.origin) && IsFinite(f.frame.z) && std::isfinite(f.size[0] + f.size[1]);
  if (!finite) FailOperation(NuOperationDomain, "association", "StartFrom");
  return given;
}

}  // namespace

// What every class of feature has: a start, a fit and a fit from what it is.
#define NU_ASSOCIATION_FITS(Class)                                                           \
  void CNuAssociation::StartFrom(const Class& start) {                                       \
    m_state->options.start = StartOf(start);                                                 \
  }                                                                                          \
  CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, Class* feature) const {   \
    return FitFeature(*m_state, criterion, feature);                                         \
  }                                                                                          \
  CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, Class* feature) const { \
    return RefitFeature(*m_state, criterion, feature);                                       \
  }
NU_ASSOCIATION_FITS(CNuLine)
NU_ASSOCIATION_FITS(CNuPlane)
NU_ASSOCIATION_FITS(CNuCircle)
NU_ASSOCIATION_FITS(CNuEllipse)
NU_ASSOCIATION_FITS(CNuHyperbola)
NU_ASSOCIATION_FITS(CNuParabola)
NU_ASSOCIATION_FITS(CNuSphSurf)
NU_ASSOCIATION_FITS(CNuCylSurf)
NU_ASSOCIATION_FITS(CNuConSurf)
NU_ASSOCIATION_FITS(CNuTorSurf)
#undef NU_ASSOCIATION_FITS

// What those have whose zones and circumscribed features can be bounded.
#define NU_ASSOCIATION_PROOFS(Class)                                                                              \
  CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, Class* feature, long budget) const { \
    return ProveFeature(*m_state, criterion, budget, feature);                                                    \
  }
NU_ASSOCIATION_PROOFS(CNuLine)
NU_ASSOCIATION_PROOFS(CNuPlane)
NU_ASSOCIATION_PROOFS(CNuCircle)
NU_ASSOCIATION_PROOFS(CNuSphSurf)
NU_ASSOCIATION_PROOFS(CNuCylSurf)
NU_ASSOCIATION_PROOFS(CNuConSurf)
NU_ASSOCIATION_PROOFS(CNuTorSurf)
#undef NU_ASSOCIATION_PROOFS
