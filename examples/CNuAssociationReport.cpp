// The report of a fit: form, uncertainties, the points that stand out, and advice where to
// probe next.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(20);
  for (int i = 0; i < 20;
       ++i) {  // a shaft, measured on a quarter of its circumference only
    const double u = 90.0 * (i % 5) / 4.0 * Nu_PI / 180.0,
                 radius = 15.0 + 0.001 * ((7 * i) % 5 - 2);
    points.Add(CNuPoint(radius * std::cos(u), radius * std::sin(u), 8.0 * (i / 5)));
  }
  CNuAssociation association(points);
  association.SetDetails(NuDetailAll);
  CNuCylSurf shaft(1.0);
  const CNuAssociationReport report = association.Fit(NuLeastSquares, &shaft);
  if (!report.HasConverged()) {
    std::printf("%s\n", report.Explain());
    return 1;
  }

  std::printf("radius %.4f, T %.4f, P %.4f, V %.4f, Q %.4f\n", shaft.GetRadius(),
              report.GetForm(), report.GetPeak(), report.GetValley(),
              report.GetRootMeanSquare());
  for (int i = 0; i < report.GetNumberParameters(); ++i)
    std::printf("u(%s) = %.5f%s\n", report.GetParameterName(i),
                report.GetStandardUncertainty(i),
                report.IsParameterAngle(i) ? " degrees" : "");
  std::printf("point %d is the highest, point %d the lowest\n", report.GetHighestPoint(),
              report.GetLowestPoint());
  std::printf("%s\n", report.Explain());
}
