#include "nu/association/association.h"
#include "nu/association/internal/feature_fits.h"

using namespace nu::internal;

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuLine* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuPlane* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuCircle* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuEllipse* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuHyperbola* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuParabola* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuSphSurf* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuCylSurf* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuConSurf* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Fit(ENuCriterion criterion, CNuTorSurf* feature) const {
  return FitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuLine* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuPlane* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuCircle* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuEllipse* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuHyperbola* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuParabola* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuSphSurf* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuCylSurf* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuConSurf* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::Refit(ENuCriterion criterion, CNuTorSurf* feature) const {
  return RefitFeature(*m_state, criterion, feature);
}

CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, CNuLine* feature, long budget) const {
  return ProveFeature(*m_state, criterion, budget, feature);
}

CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, CNuPlane* feature, long budget) const {
  return ProveFeature(*m_state, criterion, budget, feature);
}

CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, CNuCircle* feature, long budget) const {
  return ProveFeature(*m_state, criterion, budget, feature);
}

CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, CNuSphSurf* feature, long budget) const {
  return ProveFeature(*m_state, criterion, budget, feature);
}

CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, CNuCylSurf* feature, long budget) const {
  return ProveFeature(*m_state, criterion, budget, feature);
}

CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, CNuConSurf* feature, long budget) const {
  return ProveFeature(*m_state, criterion, budget, feature);
}

CNuAssociationReport CNuAssociation::ProveGlobally(ENuCriterion criterion, CNuTorSurf* feature, long budget) const {
  return ProveFeature(*m_state, criterion, budget, feature);
}
