#ifndef NU_ASSOCIATION_CERTIFICATE_H
#define NU_ASSOCIATION_CERTIFICATE_H

#include "nu/association/criteria.h"
#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/int_array.h"
#include "nu/fwd.h"
#include "nu/geometry/point.h"

namespace nu::engine::association {
struct Certificate;
}  // namespace nu::engine::association

// The checks of a certificate, in their order. Each is made when those before it hold.
enum ENuCertificateCheck : int {
  NuCertificateHolds = 0,
  NuCertificateFinite = 1,       // a coordinate or the feature is not finite, or there is no point
  NuCertificateBoundary = 2,     // a point is outside of the feature
  NuCertificateContacts = 3,     // a contact with a multiplier is not on the boundary
  NuCertificateMultipliers = 4,  // one is negative or NaN, or their sum is not 1
  NuCertificateBalance = 5,      // the multipliers do not balance the gradients of the contacts
  NuCertificateGrowth = 6        // a feature nearby may be better
};

// What the check of a certificate found. Lengths are in the unit of the coordinates; the value of a feature is its
// radius or half of its zone. Numbers of checks that were not reached are 0.
class NU_EXPORT CNuCertificateVerdict {
 public:
  // Of no check: it does not hold.
  CNuCertificateVerdict() = default;
  explicit CNuCertificateVerdict(const nu::engine::association::Certificate& found);

  // Whether all checks hold, and the first that does not, or NuCertificateHolds.
  ENuBoolean Holds() const { return m_failed == NuCertificateHolds ? NuTrue : NuFalse; }
  ENuCertificateCheck GetFailedCheck() const { return m_failed; }

  // Where it holds: in the neighbourhood of the radius no feature has a value that is better by more than the gap. The
  // neighbourhood consists of the features that are shifted, tilted and changed in their sizes by unknowns whose root
  // sum of squares is not above the radius; an angle counts times the distance of the farthest point from that point of
  // the feature next to the mean of the points. Global: the gap holds for all features of the kind, a circle's and a
  // line's in their plane, and the radius is infinite.
  double GetGap() const { return m_gap; }
  double GetRadius() const { return m_radius; }
  ENuBoolean IsGlobal() const { return m_isGlobal ? NuTrue : NuFalse; }

  // The radius, or half of the zone.
  double GetValue() const { return m_value; }
  // By so much the farthest point is outside of the feature or of the side of its zone; of a zone about it, 0.
  double GetExcess() const { return m_excess; }
  // By so much the worst contact is inside.
  double GetContactError() const { return m_contactError; }
  // The sum of the multipliers, which should be 1.
  double GetMultiplierSum() const { return m_multiplierSum; }
  // The length of the weighted sum of the gradients, which is 0 for exact multipliers.
  double GetBalance() const { return m_balance; }
  // By so much the value grows at least, per length, in the directions that the contacts resist.
  double GetGrowth() const { return m_growth; }
  // The least curvature of the value, per length, in the other directions; 0 where there are none.
  double GetCurvature() const { return m_curvature; }

 private:
  ENuCertificateCheck m_failed = NuCertificateFinite;
  bool m_isGlobal = false;
  double m_gap = 0.0;
  double m_radius = 0.0;
  double m_value = 0.0;
  double m_excess = 0.0;
  double m_contactError = 0.0;
  double m_multiplierSum = 0.0;
  double m_balance = 0.0;
  double m_growth = 0.0;
  double m_curvature = 0.0;
};

// The proof that a minimum-zone, circumscribed or inscribed feature is the best one nearby: the points that hold it,
// and a multiplier of each. It is checked from the points and the feature alone, by a program of its own in
// double-double and interval arithmetic that shares nothing with the fits; so a stored result can be checked at any
// later time. What holds is true of the numbers as they are stored, their rounding included.
//
// Not every optimum has a proof by contacts: a circle whose centre is on the edge of the convex hull of the points, to
// which CNuCircle::FitMax restricts it, is held by that edge. It fails at its balance.
class NU_EXPORT CNuCertificate {
 public:
  // The indices of the contacts; 1 for one on the outer boundary of a zone, or on the side of the normal of a plane or
  // to the left of a line in a plane, -1 for one on the other (of other criteria the sides do not count); and their
  // multipliers, not negative and with the sum 1. Contacts without a multiplier help where several choices balance; off
  // the boundary they are left aside. Fails with CNuOperationException ("certificate", "CNuCertificate"):
  //   5  the arrays differ in size     45  least squares, or no criterion
  CNuCertificate(ENuCriterion criterion, const CNuIntArray& contacts, const CNuIntArray& sides,
                 const CNuDoubleArray& multipliers);

  // What the certificate was made of.
  ENuCriterion GetCriterion() const { return m_criterion; }
  const CNuIntArray& GetContacts() const { return m_contacts; }
  const CNuIntArray& GetSides() const { return m_sides; }
  const CNuDoubleArray& GetMultipliers() const { return m_multipliers; }

  // What was fixed in the fit: only features with the same one are compared. The point is a point of the line, the
  // plane or the axis of the cylinder; of other features it stands for their apex or centre.
  void FixRadius();
  void FixMajorRadius();
  void FixSemiAngle();
  void FixDirection();
  void FixPoint(const CNuPoint& point);

  // Whether no feature nearby is better by more than `length`, with points outside and contacts off the boundary by up
  // to `length`. It should be some roundings of the largest coordinate, 1e-15 of it or more: the parameters of a
  // feature are rounded. Lines, planes, circles, spheres, cylinders, cones and tori have certificates. Circles and
  // lines in the plane of the points are measured in it, or else in space; the zone of a torus is its tube. Fails with
  // CNuOperationException ("certificate", "CNuCertificate::Check"):
  //   1  length is not above 0, or not finite; count, xyz or stride as for CNuAssociation
  //   3  the index of a contact     45  no such feature; a circumscribed or inscribed line, plane or cone
  CNuCertificateVerdict Check(const CNuPointArray& points, const CNuGeometry& feature, double length) const;
  // Points as x, y, z of point i at xyz[i * stride].
  CNuCertificateVerdict Check(const double* xyz, int count, int stride, const CNuGeometry& feature,
                              double length) const;

 private:
  ENuCriterion m_criterion;
  CNuIntArray m_contacts;
  CNuIntArray m_sides;
  CNuDoubleArray m_multipliers;
  unsigned m_fixed = 0;
  CNuPoint m_point;
};

#endif
