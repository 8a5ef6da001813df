#ifndef NU_ENGINE_ASSOCIATION_CERTIFICATE_H
#define NU_ENGINE_ASSOCIATION_CERTIFICATE_H

#include "nu/engine/association/contact_account.h"
#include "nu/engine/association/feature.h"
#include "nu/engine/points/point_view.h"

// A checker of minimax features that knows nothing of how they were found: from the points, the feature and the
// multipliers of its contact points alone it proves how much better a feature nearby can be. Whoever found the
// contacts, nothing but the proof is taken from them. The mathematics is at the top of the source.
namespace nu::engine::association {

struct CertificateQuestion {
  PointView points;
  Feature feature;
  ContactCriterion criterion = ContactCriterion::zone;
  UnknownMask free = ~0U;  // of the unknowns; the others keep their value
  const ContactPoint* contacts = nullptr;
  int count = 0;
  double length = 0.0;  // what may be lost; points may be so far outside, and contacts so far off the boundary
};

// The checks in their order. Each is made when those before it hold.
enum class CertificateCheck {
  passed,
  finite,       // a coordinate or the feature is not finite, there is no point, or no such criterion of the feature
  boundary,     // a point is outside by more than the length
  contacts,     // a contact with a multiplier is off the boundary by more than the length
  multipliers,  // one is negative or not finite, or their sum is not 1
  balance,      // the gradients, weighted, do not cancel
  growth,       // for no neighbourhood it is proved that the feature does not improve in it by more than the length
};

// Lengths in the unit of the points.
struct Certificate {
  CertificateCheck failed = CertificateCheck::finite;
  bool isGlobal = false;  // no feature at all is better by more than the gap; the radius is infinite
  double gap = 0.0;       // by more than this no feature of the neighbourhood is better: its largest deviation, for a
                          // zone, or its radius
  double radius = 0.0;    // of the neighbourhood
  double value = 0.0;     // half the zone, or the radius
  double excess = 0.0;    // of the farthest point over the boundary of the feature
  double offBoundary = 0.0;    // the contact farthest from the boundary
  double multiplierSum = 0.0;  // of the multipliers as given
  double balance = 0.0;        // the weighted sum of the gradients, of which each is about 1
  double growth = 0.0;         // of the value per length of a move, where the contacts hold the feature
  double curvature = 0.0;      // of the value, per length, along the moves that no contact resists; 0 without any
};

// The neighbourhood consists of the features moved by unknowns whose root sum of squares is not above the radius; an
// angle counts times the distance of the farthest point from the origin of the feature, which should be among the
// points where it is free to be (CentredOn). Throws std::bad_alloc.
Certificate CheckCertificate(const CertificateQuestion& question);

}  // namespace nu::engine::association

#endif
