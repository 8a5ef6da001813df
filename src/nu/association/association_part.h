#ifndef NU_ASSOCIATION_ASSOCIATION_PART_H
#define NU_ASSOCIATION_ASSOCIATION_PART_H

#include <cstddef>
#include <memory>

#include "nu/association/criteria.h"
#include "nu/export.h"
#include "nu/fwd.h"

namespace nu::engine::association {
struct PartSums;
class PartCandidates;
}  // namespace nu::engine::association

// A cloud in parts that lie on several threads or machines is fitted without bringing its points together. Each part is
// reduced at a common feature, to some kilobytes however many points it has; the reductions are joined, the feature
// takes a step, and all is repeated until the step vanishes:
//
//   CNuCylSurf bore = start;                                       // by a fit of one part, for example
//   for (double step = 1.0; step > 1e-12;) {
//     CNuAssociationPart all;
//     for (each part) all.Join(CNuAssociationPart(points, bore, middle));
//     step = all.Step(&bore);
//   }
//
// The optimum is that of the whole to rounding; some five rounds are usual. Parts travel as bytes, which are the same
// on every machine. All features of associations can be fitted by least squares, with weights and fixed parameters when
// each part is made of an association that has them. Points behind the apex of a cone count as in a fit of the whole.
class NU_EXPORT CNuAssociationPart {
 public:
  // Of no points, to join others to.
  CNuAssociationPart();
  // Reduces the points. The feature and the middle, some point among those of all parts, must be the same numbers in
  // all parts that are to be joined. Fails with CNuOperationException ("association", "CNuAssociationPart"):
  //   45  no such feature     1  count, xyz or stride as for CNuAssociation
  CNuAssociationPart(const CNuPointArray& points, const CNuGeometry& feature, const CNuPoint& middle);
  CNuAssociationPart(const double* xyz, int count, int stride, const CNuGeometry& feature, const CNuPoint& middle);
  // Reduces the points of an association, with its weights and its fixed parameters, which must be the same in all
  // parts: the feature is moved to them first. Its other options do not matter. Fails as above, and with
  //   45  a parameter is fixed that the feature does not have, or the association has a side of material
  CNuAssociationPart(const CNuAssociation& association, const CNuGeometry& feature, const CNuPoint& middle);
  CNuAssociationPart(const CNuAssociationPart&);
  CNuAssociationPart& operator=(const CNuAssociationPart&);
  ~CNuAssociationPart();

  // Of all points joined so far.
  std::size_t GetNumberPoints() const;
  // The sum of squared deviations from the feature, times the weights. The root of the mean of the squared deviations,
  // the largest deviation and the smallest do not count weights. 0 for no points.
  double GetSumSquares() const;
  double GetRootMeanSquare() const;
  double GetLargestDeviation() const;
  double GetSmallestDeviation() const;

  // Adds another part. The order of the parts changes roundings, and nothing else.
  // Fails with CNuOperationException ("association", "CNuAssociationPart::Join"), the part unchanged:
  //   41  it was reduced at another feature
  void Join(const CNuAssociationPart& other);

  // Stores the feature after the least-squares step and returns the length of the step, in which angles count times
  // the distance of the farthest point. Fails with CNuOperationException ("association", "CNuAssociationPart::Step"):
  //   45  no points, or a feature of another class     46  the points do not determine the feature, or are not finite
  // and as the constructor of the feature for a step to none, one of a negative radius for example.
  double Step(CNuGeometry* feature) const;

  // The bytes of the part, and the part of the bytes. Fails with CNuOperationException ("association",
  // "CNuAssociationPart::FromBytes"): cause 41, damaged bytes, those of something else or of another version.
  int GetNumberBytes() const;
  void GetBytes(unsigned char* bytes) const;
  static CNuAssociationPart FromBytes(const unsigned char* bytes, int count);

 private:
  friend class CNuAssociationCandidates;
  explicit CNuAssociationPart(std::shared_ptr<const nu::engine::association::PartSums> sums);

  std::shared_ptr<const nu::engine::association::PartSums> m_sums;  // null for no points
};

// The points of a cloud in parts that may hold its minimum-zone, circumscribed or inscribed feature. Rounds are those
// above: parts are reduced and joined, the joined part is added, and the fit of the candidates is the next feature. It
// is the optimum of the whole when no part has a deviation beyond its boundary: of a zone, none above the half of it
// that Fit returns; of the others, none on the wrong side of the feature. The zone of a torus is its tube, as for
// CNuTorSurf::FitMin: no part has a deviation above 0. On both nappes of a cone deviations differ by the zone at most.
class NU_EXPORT CNuAssociationCandidates {
 public:
  // Of no points.
  CNuAssociationCandidates();
  CNuAssociationCandidates(const CNuAssociationCandidates&);
  CNuAssociationCandidates& operator=(const CNuAssociationCandidates&);
  ~CNuAssociationCandidates();

  // Adds the points of a part, all joined ones, that may hold the feature. Its fixed parameters are those of the next
  // fit; its weights do not count.
  void Add(const CNuAssociationPart& joined);

  // The optimum of the candidates next to the feature, which it replaces; returns half of its zone, or its radius.
  // Fails with CNuOperationException ("association", "CNuAssociationCandidates::Fit"), the feature unchanged:
  //   45  no such feature, least squares, or a criterion that the feature does not have; with fixed parameters a
  //       feature of another class than that of the parts, or the zone of a torus of a fixed minor radius
  //   46  no optimum was found, as of too few candidates
  double Fit(ENuCriterion criterion, CNuGeometry* feature) const;

 private:
  std::shared_ptr<const nu::engine::association::PartCandidates> m_candidates;
};

#endif
