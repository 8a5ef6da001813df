// What a scatter of 2 micrometres in every coordinate does to a circle, by 1000 simulated
// measurements.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(12);
  for (int i = 0; i < 12; ++i) {
    const double u = 2.0 * Nu_PI * i / 12.0;
    points.Add(CNuPoint(20.0 * std::cos(u), 20.0 * std::sin(u), 0.0));
  }
  CNuAssociation association(points);
  association.SetDetails(NuDetailForm | NuDetailUncertainty);
  CNuCircle circle(1.0);
  const CNuAssociationReport report = association.Fit(NuLeastSquares, &circle);
  const CNuSampledFit spread = association.MonteCarlo(report, 0.002, 1000, 1);
  std::printf("%d samples\n", spread.GetNumberSamples());
  for (int i = 0; i < spread.GetNumberValues(); ++i)
    std::printf("%s: standard deviation %.5f, 95 %% within %+.5f and %+.5f\n",
                spread.GetName(i), spread.GetStandardDeviations()[i], spread.GetLow()[i],
                spread.GetHigh()[i]);
}
