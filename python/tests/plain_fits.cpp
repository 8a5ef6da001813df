// Fits every feature by every criterion with the C++ library: the number of points and their coordinates come as bytes
// on the standard input, and a line per fit goes to the standard output, with the bits of its numbers.
#include <bit>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "nu/nu.h"

namespace {

void Put(double number) {
  std::printf(" %016llx", static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(number)));
}
void Put(const CNuPoint& p) {
  Put(p.x()), Put(p.y()), Put(p.z());
}
void Put(const CNuVector& v) {
  Put(v[0]), Put(v[1]), Put(v[2]);
}

void PutFeature(const CNuLine& f) {
  Put(f.GetPoint()), Put(f.GetDirection());
}
void PutFeature(const CNuPlane& f) {
  Put(f.GetPoint()), Put(f.GetNormal());
}
void PutFeature(const CNuCircle& f) {
  Put(f.GetRadius()), Put(f.GetCentre()), Put(f.GetNormal());
}
template<class Conic>
void PutConic(const Conic& f) {
  Put(f.GetSemiAxisA()), Put(f.GetSemiAxisB()), Put(f.GetCentre()), Put(f.GetXaxis()), Put(f.GetNormal());
}
void PutFeature(const CNuEllipse& f) {
  PutConic(f);
}
void PutFeature(const CNuHyperbola& f) {
  PutConic(f);
}
void PutFeature(const CNuParabola& f) {
  Put(f.GetFocalLength()), Put(f.GetVertex()), Put(f.GetXaxis()), Put(f.GetNormal());
}
void PutFeature(const CNuSphSurf& f) {
  Put(f.GetRadius()), Put(f.GetCentre());
}
void PutFeature(const CNuCylSurf& f) {
  Put(f.GetRadius()), Put(f.GetAxisPoint()), Put(f.GetAxisDirection());
}
void PutFeature(const CNuConSurf& f) {
  Put(f.GetSemiAngle()), Put(f.GetApex()), Put(f.GetAxisDirection());
}
void PutFeature(const CNuTorSurf& f) {
  Put(f.GetMajorRadius()), Put(f.GetMinorRadius()), Put(f.GetCentre()), Put(f.GetAxisDirection());
}

template<class Feature>
void PutFits(const CNuAssociation& association, const char* name, Feature feature) {
  for (int criterion = NuLeastSquares; criterion <= NuMaximumInscribed; ++criterion) {
    std::printf("%s %d", name, criterion);
    try {
      const CNuAssociationReport report = association.Fit(static_cast<ENuCriterion>(criterion), &feature);
      report.Require();
      PutFeature(feature);
      Put(report.GetForm()), Put(report.GetPeak()), Put(report.GetRootMeanSquare()), Put(report.GetSumSquares());
    } catch (const CNuException& failure) {
      std::printf(" %s", NuCauseName(failure));
    }
    std::printf("\n");
  }
}

}  // namespace

int main() {
  std::int64_t count = 0;
  if (std::fread(&count, sizeof count, 1, stdin) != 1) return 1;
  std::vector<double> xyz(3 * static_cast<std::size_t>(count));
  if (std::fread(xyz.data(), sizeof(double), xyz.size(), stdin) != xyz.size()) return 1;
  const CNuAssociation association(xyz.data(), static_cast<int>(count));
  PutFits(association, "line", CNuLine());
  PutFits(association, "plane", CNuPlane());
  PutFits(association, "circle", CNuCircle(1.0));
  PutFits(association, "ellipse", CNuEllipse(2.0, 1.0));
  PutFits(association, "hyperbola", CNuHyperbola(2.0, 1.0));
  PutFits(association, "parabola", CNuParabola(1.0));
  PutFits(association, "sphere", CNuSphSurf(1.0));
  PutFits(association, "cylinder", CNuCylSurf(1.0));
  PutFits(association, "cone", CNuConSurf(45.0));
  PutFits(association, "torus", CNuTorSurf(2.0, 1.0));
}
