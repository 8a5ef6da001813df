// A fit that cannot be carried out says why and leaves the feature as it was. The Ex
// variants return instead.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuPointArray points(3);
  points.Add(CNuPoint(0.0, 0.0, 0.0));
  points.Add(CNuPoint(1.0, 0.0, 0.0));
  points.Add(CNuPoint(2.0, 0.0, 0.0));

  CNuCircle circle(5.0);
  try {
    circle.Fit(points, 50);
  } catch (const CNuBestfitException& failure) {
    std::printf("cause %d, %s: %s\n", failure.GetCause(), NuCauseName(failure),
                NuCauseText(failure));
  }
  std::printf("radius as before: %.1f\n", circle.GetRadius());
  if (circle.FitEx(points, 50) == NuFitFailure)
    std::printf("the same without an exception\n");

  try {
    const CNuCircle nothing(-1.0);
  } catch (const CNuConstructionException& failure) {
    std::printf("cause %d: %s\n", failure.GetCause(), NuCauseText(failure));
  }
  try {
    const CNuVector direction(0.0, 0.0, 1.0);
    std::printf("%g\n", direction[3]);
  } catch (const CNuOperationException& failure) {
    std::printf("cause %d: %s, valid from %d to %d\n", failure.GetCause(),
                NuCauseText(failure), failure.m_nLower, failure.m_nUpper);
  } catch (const CNuMemoryException& failure) {
    std::printf("%s\n", NuCauseText(failure));
  }
}
