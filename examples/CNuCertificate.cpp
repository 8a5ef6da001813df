// A minimum-zone circle proves itself: the points that hold it are enough for anybody to
// check the result again.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(36);
  for (int i = 0; i < 36; ++i) {
    const double u = 2.0 * Nu_PI * i / 36.0,
                 radius = 30.0 + 0.003 * std::cos(3.0 * u) + 0.001 * ((5 * i) % 7);
    points.Add(CNuPoint(radius * std::cos(u), radius * std::sin(u), 0.0));
  }
  CNuAssociation association(points);
  association.SetDetails(NuDetailForm | NuDetailContacts);
  CNuCircle circle(1.0);
  const CNuAssociationReport report = association.Fit(NuMinimumZone, &circle);
  std::printf("roundness %.6f, global optimum: %s\n", report.GetForm(),
              report.IsGlobal() ? "yes" : "no");
  for (int i = 0; i < report.GetNumberContacts(); ++i)
    if (report.GetMultipliers()[i] > 0.0)
      std::printf("held by point %2d %s, multiplier %.4f\n", report.GetContactPoints()[i],
                  report.GetContactSides()[i] > 0 ? "outside" : "inside ",
                  report.GetMultipliers()[i]);

  const CNuCertificate certificate = report.GetCertificate();
  const CNuCertificateVerdict verdict = certificate.Check(points, circle, 1e-12);
  std::printf("certificate holds: %s, balance below 1e-12: %s\n",
              verdict.Holds() ? "yes" : "no", verdict.GetBalance() < 1e-12 ? "yes" : "no");
  const CNuCircle moved(circle.GetRadius(),
                        circle.GetCentre() + CNuPoint(0.0001, 0.0, 0.0));
  std::printf("for a circle moved by 0.0001: %s\n",
              certificate.Check(points, moved, 1e-12).Holds() ? "yes" : "no");
}
