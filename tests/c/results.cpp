// Prints what results.c prints, by the classes.

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "lines.h"
#include "nu/nu.h"

namespace {

// A number among the overloads below: it would become a point otherwise.
using ::Add;

void Add(const CNuPoint& p) {
  for (const double c : {p.x(), p.y(), p.z()}) Add(c);
}
void Add(const CNuVector& v) {
  for (int i = 0; i < 3; ++i) Add(v[i]);
}
void Add(const CNuDoubleArray& values) {
  for (int i = 0; i < values.GetSize(); ++i) Add(values[i]);
}
void Feature(CNuObject::ENuObjectType type, const CNuPoint& p, const CNuVector& v, double first, double second = 0.0) {
  AddInt(type);
  Add(p);
  Add(v);
  Add(first);
  Add(second);
}
const CNuVector kNone(0.0, 0.0, 0.0);
void Feature(const CNuPoint& f) {
  Feature(f.GetType(), f, kNone, 0.0);
}
void Feature(const CNuLine& f) {
  Feature(f.GetType(), f.GetPoint(), f.GetDirection(), 0.0);
}
void Feature(const CNuPlane& f) {
  Feature(f.GetType(), f.GetPoint(), f.GetNormal(), 0.0);
}
void Feature(const CNuCircle& f) {
  Feature(f.GetType(), f.GetCentre(), f.GetNormal(), f.GetRadius());
}
void Feature(const CNuEllipse& f) {
  Feature(f.GetType(), f.GetCentre(), f.GetNormal(), f.GetSemiAxisA(), f.GetSemiAxisB());
}
void Feature(const CNuHyperbola& f) {
  Feature(f.GetType(), f.GetCentre(), f.GetNormal(), f.GetSemiAxisA(), f.GetSemiAxisB());
}
void Feature(const CNuParabola& f) {
  Feature(f.GetType(), f.GetVertex(), f.GetNormal(), f.GetFocalLength());
}
void Feature(const CNuSphSurf& f) {
  Feature(f.GetType(), f.GetCentre(), kNone, f.GetRadius());
}
void Feature(const CNuCylSurf& f) {
  Feature(f.GetType(), f.GetAxisPoint(), f.GetAxisDirection(), f.GetRadius());
}
void Feature(const CNuConSurf& f) {
  Feature(f.GetType(), f.GetApex(), f.GetAxisDirection(), f.GetSemiAngle());
}
void Feature(const CNuTorSurf& f) {
  Feature(f.GetType(), f.GetCentre(), f.GetAxisDirection(), f.GetMajorRadius(), f.GetMinorRadius());
}

// Adds what can be had.
template<class Get>
void Try(const Get& add) {
  try {
    add();
  } catch (const CNuOperationException&) {
  }
}

void AddReport(const CNuAssociationReport& report) {
  Try([&] {
    for (const double v :
         {report.GetForm(), report.GetPeak(), report.GetValley(), report.GetRootMeanSquare(), report.GetSumSquares()})
      Add(v);
  });
  Try([&] { Add(report.GetDeviations()); });
  Try([&] {
    for (int i = 0; i < report.GetNumberContacts(); ++i) {
      AddInt(report.GetContactPoints()[i]);
      AddInt(report.GetContactSides()[i]);
      Add(report.GetMultipliers()[i]);
    }
  });
  Try([&] {
    const double deviation = report.GetStandardDeviation();
    Add(deviation);
    Add(report.GetCondition());
    const CNuMatrix covariance = report.GetCovariance();
    for (int i = 0; i < covariance.GetRowSize(); ++i)
      for (int j = 0; j < covariance.GetColumnSize(); ++j) Add(covariance.Element(i, j));
  });
  Try([&] { AddText(report.Explain()); });
  AddInt(report.IsGlobal());
  double gap = 0.0;
  Try([&] { gap = report.GetGap(); });
  Add(gap);
  AddInt(report.GetSteps());
  Add(report.GetLastStep());
  Line("  ended", report.GetEnd(), report.GetCause(), report.GetFeatureType());
}

// Of a class that is not known yet, only the kind counts.
template<class Class>
void Fit(const CNuAssociation& association, int criterion, Class* feature, bool isFitted = false) {
  CNuAssociationReport report;
  int cause = 0;
  try {
    report = association.Fit(static_cast<ENuCriterion>(criterion), feature);
  } catch (const CNuOperationException& failure) {
    cause = failure.GetCause();
  }
  if (isFitted || report.HasConverged() != NuFalse)
    Feature(*feature);
  else
    Feature(feature->GetType(), CNuPoint(), kNone, 0.0);
  Line("fit", feature->GetType(), criterion, cause);
  if (cause == 0) AddReport(report);
}

template<class Class>
Class AllFits(Class feature) {
  double xyz[kStride * kPoints];
  MakeCloud(feature.GetType(), xyz);
  for (int criterion = 3; criterion >= 0; --criterion) {
    CNuAssociation association(xyz, kPoints, kStride);
    association.SetDetails(NuDetailAll);
    Fit(association, criterion, &feature);
  }
  return feature;
}

ENuBoolean CountSteps(void* context, long step, double, double) {
  *static_cast<long*>(context) = step;
  return NuTrue;
}

void Options(const CNuCylSurf& cylinder) {
  double xyz[kStride * kPoints];
  MakeCloud(CNuObject::NuTypeCylSurf, xyz);
  CNuDoubleArray weights(kPoints);
  for (int i = 0; i < kPoints; ++i) weights.Add(1.0 + i % 3);
  long steps = 0;
  CNuCylSurf feature = cylinder;
  CNuAssociation association(nullptr, 0);
  association.Add(xyz, kPoints, kStride);
  association.SetWeights(weights);
  association.SetMonitor(CountSteps, &steps);
  association.SetMaxSteps(200);
  association.SetTolerance(1e-11);
  association.FixRadius(5.0);
  association.FixDirection(CNuVector(2.0, -1.0, 2.0));
  Fit(association, NuLeastSquares, &feature, true);
  AddInt(steps);
  association.ReleaseRadius();
  association.ReleaseDirection();
  association.ReleaseWeights();
  association.RestrictToMaterialSide(NuOutside);
  association.StartFrom(cylinder);
  Fit(association, NuMinimumZone, &feature, true);
  association.RestrictToMaterialSide(NuEitherSide);
  association.ReleaseStart();
  CNuIntArray removed(2);
  removed.Add(3);
  removed.Add(5);
  association.Remove(removed);
  association.SetDetails(NuDetailContacts);
  const CNuAssociationReport report = association.Refit(NuMinimumZone, &feature);
  Feature(feature);
  Add(association.Sensitivity(report));
  CNuPointArray kept(kPoints);
  for (int i = 0; i < kPoints; ++i)
    if (i != 3 && i != 5) kept.Add(CNuPoint(xyz[kStride * i], xyz[kStride * i + 1], xyz[kStride * i + 2]));
  const CNuCertificateVerdict verdict = report.GetCertificate().Check(kept, feature, 1e-9);
  for (const double v :
       {verdict.GetGap(), verdict.GetRadius(), verdict.GetValue(), verdict.GetExcess(), verdict.GetContactError(),
        verdict.GetMultiplierSum(), verdict.GetBalance(), verdict.GetGrowth(), verdict.GetCurvature()})
    Add(v);
  Line("refit", 0, association.GetNumberPoints(), verdict.GetFailedCheck());
  const CNuSampledFit sampled = association.MonteCarlo(report, 1e-4, 5, 7);
  for (int i = 0; i < sampled.GetNumberValues(); ++i) {
    AddText(sampled.GetName(i));
    for (const CNuDoubleArray* values :
         {&sampled.GetMeans(), &sampled.GetStandardDeviations(), &sampled.GetLow(), &sampled.GetHigh()})
      Add((*values)[i]);
  }
  CNuPlane plane;
  const CNuAssociationReport proof = association.ProveGlobally(NuMinimumZone, &plane, 1000);
  Feature(plane);
  Line("proof", sampled.GetNumberValues(), 0, 0);
  AddReport(proof);
}

void Parts(const CNuCylSurf& cylinder) {
  double xyz[kStride * kPoints];
  MakeCloud(CNuObject::NuTypeCylSurf, xyz);
  CNuCylSurf feature = cylinder;
  CNuAssociationCandidates candidates;
  CNuAssociationPart all;
  int bytes = 0;
  for (int round = 0; round < 6; ++round) {
    all = CNuAssociationPart();
    for (int k = 0; k < 2; ++k) {
      constexpr int kHalf = kPoints / 2;
      CNuAssociation half(xyz + k * kStride * kHalf, kHalf, kStride);
      CNuDoubleArray weights(kHalf);
      for (int i = 0; i < kHalf; ++i) weights.Add(1.0 + (k * kHalf + i) % 3);
      half.SetWeights(weights);
      half.FixRadius(5.0);
      const CNuAssociationPart part(half, feature, CNuPoint(100.0, -50.0, 20.0));
      bytes = part.GetNumberBytes();
      all.Join(part);
    }
    for (const double sum :
         {all.GetSumSquares(), all.GetRootMeanSquare(), all.GetLargestDeviation(), all.GetSmallestDeviation()})
      Add(sum);
    candidates.Add(all);
    Add(all.Step(&feature));
    Feature(feature);
  }
  Add(candidates.Fit(NuMinimumZone, &feature));
  Feature(feature);
  Line("parts", static_cast<int>(all.GetNumberPoints()), bytes, 0);
}

const CNuPoint kPlace(95.0, -47.0, 22.0);

template<class Class>
int SideOf(const CNuPoint& p, const Class& feature) {
  int side = 0;
  Try([&] {
    if constexpr (std::is_same_v<Class, CNuLine>)
      side = p.LineSide(feature, 1e-9);
    else if constexpr (std::is_base_of_v<CNuCurve, Class>)
      side = p.CurveSide(feature, 1e-9);
    else
      side = p.SurfaceSide(feature, 1e-9);
  });
  return side;
}

template<class Class>
void Place(Class feature) {
  double distance = 0.0;
  Try([&] {
    if constexpr (requires { feature.DistanceTo(kPlace); })
      distance = feature.DistanceTo(kPlace);
    else
      distance = kPlace.DistanceTo(feature);
  });
  Add(distance);
  CNuPoint closest;
  if constexpr (requires { kPlace.ProjectionOn(feature); }) Try([&] { closest = kPlace.ProjectionOn(feature); });
  Add(closest);
  const int side = SideOf(kPlace, feature);
  feature.Rotate(30.0, CNuVector(1.0, 2.0, 3.0), kPlace);
  feature.Translate(1.0, 2.0, 3.0);
  Feature(feature);
  Line("place", feature.GetType(), side, 0);
}

void AddObject(const CNuObject& object) {
  if (const auto* point = dynamic_cast<const CNuPoint*>(&object)) return Feature(*point);
  if (const auto* line = dynamic_cast<const CNuLine*>(&object)) return Feature(*line);
  if (const auto* circle = dynamic_cast<const CNuCircle*>(&object)) return Feature(*circle);
  if (const auto* ellipse = dynamic_cast<const CNuEllipse*>(&object)) return Feature(*ellipse);
  if (const auto* hyperbola = dynamic_cast<const CNuHyperbola*>(&object)) return Feature(*hyperbola);
  Feature(object.GetType(), CNuPoint(), kNone, 0.0);
  const auto* curve = dynamic_cast<const CNuPCurve*>(&object);
  const CNuPointArray points = curve->ToPointArray(5);
  for (int i = 0; i < points.GetSize(); ++i) Add(points[i]);
}

template<class A, class B>
int Intersect(const A& a, const B& b) {
  CNuPoint p[2];
  CNuLine line;
  CNuObjArray objects(4);
  int count = 0;
  if constexpr (requires { a.IntersectWith(b, p); }) {
    count = a.IntersectWith(b, p);
  } else if constexpr (requires { a.IntersectWith(b, p, p + 1); }) {
    count = a.IntersectWith(b, p, p + 1);
  } else if constexpr (requires { a.IntersectWith(b, &line); }) {
    count = a.IntersectWith(b, &line);
    if (count > 0) Feature(line);
    return count;
  } else if constexpr (requires { a.IntersectWith(b, &objects); }) {
    count = a.IntersectWith(b, &objects);
    for (int i = 0; i < count; ++i) AddObject(*std::unique_ptr<CNuObject>(objects[i]));
    return count;
  }
  for (int i = 0; i < count; ++i) Feature(p[i]);
  return count;
}

// `swapped`: the interface for C has the second one first.
template<class A, class B>
void Pair(const A& a, const B& b, bool swapped = false) {
  double distance = 0.0;
  double degrees = 0.0;
  int count = 0;
  if constexpr (requires { a.DistanceTo(b); }) distance = a.DistanceTo(b);
  if constexpr (requires { a.AngleWith(b); }) degrees = a.AngleWith(b);
  Add(distance);
  Add(degrees);
  Try([&] { count = Intersect(a, b); });
  const int first = swapped ? b.GetType() : a.GetType();
  const int second = swapped ? a.GetType() : b.GetType();
  Line("pair", first, second, count);
}

template<class Class>
Class Turned(Class feature, const CNuPoint& centre) {
  feature.Rotate(40.0, CNuVector(1.0, 0.0, 0.0), centre);
  return feature;
}

void Fits() {
  const CNuLine line = AllFits(CNuLine());
  const CNuPlane plane = AllFits(CNuPlane());
  const CNuCircle circle = AllFits(CNuCircle(1.0));
  const CNuEllipse ellipse = AllFits(CNuEllipse(2.0, 1.0));
  const CNuHyperbola hyperbola = AllFits(CNuHyperbola(2.0, 1.0));
  const CNuParabola parabola = AllFits(CNuParabola(1.0));
  const CNuCylSurf cylinder = AllFits(CNuCylSurf(1.0));
  const CNuConSurf cone = AllFits(CNuConSurf(1.0));
  const CNuSphSurf sphere = AllFits(CNuSphSurf(1.0));
  const CNuTorSurf torus = AllFits(CNuTorSurf(2.0, 1.0));
  Options(cylinder);
  Parts(cylinder);

  Place(line), Place(plane), Place(circle), Place(ellipse), Place(hyperbola);
  Place(parabola), Place(cylinder), Place(cone), Place(sphere), Place(torus);

  Pair(line, plane), Pair(line, circle, true), Pair(line, ellipse), Pair(line, hyperbola, true), Pair(line, parabola);
  Pair(line, cylinder, true), Pair(line, cone), Pair(line, sphere, true), Pair(circle, plane, true);
  Pair(ellipse, plane, true), Pair(hyperbola, plane), Pair(parabola, plane, true), Pair(plane, cylinder, true);
  Pair(plane, cone), Pair(plane, sphere, true), Pair(cylinder, cone), Pair(sphere, cylinder), Pair(cone, sphere);
  Pair(cylinder, torus);

  Pair(line, Turned(line, line.GetPoint())), Pair(plane, Turned(plane, plane.GetPoint()));
  Pair(circle, Turned(circle, circle.GetCentre())), Pair(ellipse, Turned(ellipse, ellipse.GetCentre()));
  Pair(hyperbola, Turned(hyperbola, hyperbola.GetCentre())), Pair(parabola, Turned(parabola, parabola.GetVertex()));
  Pair(cylinder, Turned(cylinder, cylinder.GetAxisPoint())), Pair(cone, Turned(cone, cone.GetApex()));
  Pair(sphere, Turned(sphere, sphere.GetCentre())), Pair(torus, Turned(torus, torus.GetCentre()));
  Feature(plane.MidPlane(Turned(plane, plane.GetPoint())));
  Feature(line.MidLine(plane));
  Line("middle", CNuObject::NuTypeLine, 0, 0);
}

void Roots() {
  CNuPolynomial p(6);
  const double c[] = {-120.0, 274.0, -225.0, 85.0, -15.0, 1.0, 0.25};
  for (int i = 0; i < 7; ++i) p[i] = c[i];
  CNuAlgEqu equation;
  equation.Solve(p);
  Add(equation.GetRealRoots());
  const int real = equation.GetNumberRealRoots();
  const int complex = equation.GetNumberComplexRoots();
  const CNuComplexArray pairs = equation.GetComplexRoots();
  for (int i = 0; i < complex; ++i) Add(pairs[i].r()), Add(pairs[i].i());
  CNuComplexArray z(4);
  for (const CNuComplex& k : {CNuComplex(1.0, 2.0), CNuComplex(-3.0, 0.5), CNuComplex(0.0, 1.0), CNuComplex(2.0, 0.0)})
    z.Add(k);
  equation.Solve(z);
  const CNuComplexArray roots = equation.GetComplexRoots();
  for (int i = 0; i < roots.GetSize(); ++i) Add(roots[i].r()), Add(roots[i].i());
  Line("roots", real, complex, equation.GetNumberRealRoots() + equation.GetNumberComplexRoots());
}

void Piece(const CNuBoundedCurve& piece) {
  const auto* arc = dynamic_cast<const CNuCircularArc*>(&piece);
  AddInt(arc != nullptr && arc->GetSense() != NuFalse ? 1 : 0);
  Add(piece.GetStartPoint());
  Add(piece.GetEndPoint());
  Add(arc != nullptr ? arc->GetCentre() : CNuPoint());
  Add(arc != nullptr ? arc->GetNormal() : kNone);
  Add(arc != nullptr ? arc->GetRadius() : 0.0);
  Add(arc != nullptr ? arc->GetSweep() : 0.0);
}

void Curves(const char* fileName) {
  const CNuPoint corner[] = {{0.0, 0.0, 1.0}, {8.0, 0.0, 1.0}, {8.0, 4.0, 1.0}, {0.0, 4.0, 1.0}};
  CNuCompositeCurve curve, read;
  curve.AddSegment(CNuLineSegment(corner[0], corner[1]), NuTrue);
  curve.AddSegment(CNuCircularArc(CNuPoint(8.0, 2.0, 1.0), corner[1], corner[2], NuTrue), NuTrue);
  curve.AddSegment(CNuLineSegment(corner[2], corner[3]), NuTrue);
  curve.AddSegment(CNuLineSegment(corner[3], corner[0]), NuTrue);
  const bool isWritten = curve.BinaryDump(fileName);
  const bool isRead = read.BinaryRead(fileName);
  Line("file", isWritten ? 0 : 1, isRead ? 0 : 1, 0);
  for (int i = 0; i < read.GetNumberSegments(); ++i) Piece(*read.GetSegment(i));
  Add(read.Length());
  Add(read.DistanceTo(CNuPoint(3.0, -2.0, 0.0)));
  const CNuPointArray corners = read.ToPolyline(0.1).GetPoints();
  for (int i = 0; i < corners.GetSize(); ++i) Add(corners[i]);
  Line("curve", read.GetNumberSegments(), corners.GetSize(), 0);
  CNuObjArray loops(1);
  const int count = read.OffsetAll(-0.5, CNuVector(0.0, 0.0, 1.0), 1, &loops);
  for (int i = 0; i < count; ++i) {
    const std::unique_ptr<CNuObject> loop(loops[i]);
    Add(dynamic_cast<CNuCompositeCurve&>(*loop).Length());
  }
  Line("offset", count, 0, 0);
}

void Failures() {
  CNuPointArray points(2);
  points.Add(CNuPoint(0.0, 0.0, 0.0));
  points.Add(CNuPoint(1.0, 0.0, 0.0));
  int cause = 0;
  try {
    CNuCircle(1.0).Fit(points, 1000);
  } catch (const CNuBestfitException& failure) {
    cause = failure.GetCause();
    AddText(failure.m_szWhere);
    AddText(": ");
    AddText(NuCauseText(failure));
  }
  Add(1e-7);
  Line("failure", 5, cause, 0);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string version = std::to_string(NuMajorVersionLabel) + "." + std::to_string(NuMinorVersionLabel) + "." +
                              std::to_string(NuBuildVersionLabel);
  Line(version.c_str(), 0, 0, 0);
  Fits();
  Roots();
  Curves(argc > 1 ? argv[1] : "curve.bin");
  Failures();
  return 0;
}
