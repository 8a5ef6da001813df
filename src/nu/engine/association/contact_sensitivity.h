#ifndef NU_ENGINE_ASSOCIATION_CONTACT_SENSITIVITY_H
#define NU_ENGINE_ASSOCIATION_CONTACT_SENSITIVITY_H

#include "nu/engine/association/contact_account.h"
#include "nu/engine/association/covariance.h"

namespace nu::engine::association {

// How uncertain the unknowns of a feature are that its contacts hold, each of which moves with the standard deviation 1
// along every axis: to first order, while the same contacts hold it. The unknowns are the free ones, with the radius of
// a circumscribed or inscribed feature. Singular values and axes are those of a least-squares fit that is as uncertain;
// there is no factor and no sum of squares. Not finite where the contacts do not balance.
Covariance SensitivityToContacts(PointView points, const Feature& feature, ContactCriterion criterion,
                                 const ContactAccount& account, UnknownMask free);

// The same of a least-squares feature with all points on one side: every point moves with the standard deviation 1 over
// the root of its weight, the contacts take the feature along, and the others turn it about them.
Covariance SensitivityOfSquares(PointView points, const double* weights, const Feature& feature,
                                const ContactAccount& account, UnknownMask free);

}  // namespace nu::engine::association

#endif
