#ifndef NU_ASSOCIATION_SAMPLED_FIT_H
#define NU_ASSOCIATION_SAMPLED_FIT_H

#include <memory>

#include "nu/export.h"
#include "nu/fwd.h"

namespace nu::internal {
struct SampledFitData;
}  // namespace nu::internal

// How a fit spreads over samples of its points: of each value the mean, the standard deviation and the interval that
// holds 95 % of the samples. The values are the free parameters, as changes of the fitted feature in the frame that
// CNuAssociationReport::GetParameterFrame describes, angles in degrees; the last one is the radius of a circumscribed
// or inscribed feature, or else the form T. Copies share their data, which never change.
class NU_EXPORT CNuSampledFit {
 public:
  // Of CNuAssociation::MonteCarlo.
  explicit CNuSampledFit(std::shared_ptr<const nu::internal::SampledFitData> data);
  CNuSampledFit(const CNuSampledFit&);
  CNuSampledFit& operator=(const CNuSampledFit&);
  ~CNuSampledFit();

  // Of the samples, those that had a fit. With fewer than two what has no meaning is NaN.
  int GetNumberSamples() const;
  // The number of values: the free parameters and one more.
  int GetNumberValues() const;
  // Fails with CNuOperationException ("sampled fit", "GetName"): cause 3, i is out of range, with the range.
  const char* GetName(int i) const;
  // One number per value: the mean, the standard deviation, and the ends of the interval that holds 95 % of the
  // samples.
  const CNuDoubleArray& GetMeans() const;
  const CNuDoubleArray& GetStandardDeviations() const;
  const CNuDoubleArray& GetLow() const;
  const CNuDoubleArray& GetHigh() const;

 private:
  std::shared_ptr<const nu::internal::SampledFitData> m_data;
};

#endif
