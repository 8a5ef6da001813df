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
