// A short arc leaves its radius uncertain. Fixing the radius of the drawing, as
// CNuAssociation can, settles the centre.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(9);
  for (int i = 0; i < 9; ++i) {  // 40 degrees of a circle of radius 25 around (5, 0)
    const double u = (70.0 + 5.0 * i) * Nu_PI / 180.0,
                 radius = 25.0 + (i % 2 == 0 ? 0.001 : -0.001);
    points.Add(CNuPoint(5.0 + radius * std::cos(u), radius * std::sin(u), 0.0));
  }

  CNuAssociation association(points);
  association.SetDetails(NuDetailForm | NuDetailUncertainty);
  CNuCircle arc(1.0);
  CNuAssociationReport report = association.Fit(NuLeastSquares, &arc);
  std::printf("free:  radius %.4f, centre y %.4f, form %.5f, condition %.0f\n",
              arc.GetRadius(), arc.GetCentre().y(), report.GetForm(),
              report.GetCondition());

  association.FixRadius(25.0);
  report = association.Fit(NuLeastSquares, &arc);
  std::printf("fixed: radius %.4f, centre y %.4f, form %.5f, condition %.0f\n",
              arc.GetRadius(), arc.GetCentre().y(), report.GetForm(),
              report.GetCondition());
}
