// Fits of lines, planes, circles and conics.

#include <algorithm>

#include "evaluate/fit_tools.h"

namespace {

bool HaveOneZ(const std::vector<Vec3>& points) {
  return std::all_of(points.begin(), points.end(), [&points](const Vec3& p) { return p[2] == points.front()[2]; });
}

void DescribeLine(const std::vector<Vec3>& points, const CNuLine& line, Inspection* result) {
  result->parameters = {Point("point", line.GetPoint()), Direction("direction", line.GetDirection())};
  result->zoneIsRound = !HaveOneZ(points);
  const Vec3 direction = ToVec3(line.GetDirection());
  const Vec3 up = AxisAcross(direction, 2);
  result->frame = {ToVec3(line.GetPoint()), direction, Cross(up, direction), up};
  const bool round = result->zoneIsRound;
  AddDeviations(
      points, [round](const Vec3& p) { return round ? NuPythag(p[1], p[2]) : p[1]; }, result);
}

void DescribePlane(const std::vector<Vec3>& points, const CNuPlane& plane, Inspection* result) {
  result->parameters = {Point("point", plane.GetPoint()), Direction("normal", plane.GetNormal())};
  result->frame = FrameAlong(plane.GetPoint(), plane.GetNormal());
  AddDeviations(
      points, [](const Vec3& p) { return p[2]; }, result);
}

void DescribeCircle(const std::vector<Vec3>& points, const CNuCircle& circle, Inspection* result) {
  result->parameters = {Point("centre", circle.GetCentre()), Direction("normal", circle.GetNormal()),
                        Length("radius", circle.GetRadius()), Length("diameter", 2 * circle.GetRadius())};
  result->frame = FrameAlong(circle.GetCentre(), circle.GetNormal());
  const double radius = circle.GetRadius();
  AddDeviations(
      points, [radius](const Vec3& p) { return NuPythag(p[0], p[1]) - radius; }, result);
}

// The other criteria ask for points in one plane, and roundness is what is seen along the axis: the points go to their
// plane first.
CNuPointArray InTheirPlane(const CNuPointArray& points) {
  CNuPlane plane;
  plane.Fit(points);
  CNuPointArray projected(points.GetSize());
  for (int i = 0; i < points.GetSize(); ++i) projected.Add(points[i].ProjectionOn(plane));
  return projected;
}

// Away from the foci is positive. `curve` lies in the xy plane, as the conic does in its frame.
template<typename Conic>
double SignedDistance(const Vec3& p, const Conic& curve) {
  const CNuPoint inPlane(p[0], p[1], 0);
  const double distance = curve.DistanceTo(inPlane);
  return inPlane.CurveSide(curve, 0) == CNuGeometry::SIDE_OUTSIDE ? distance : -distance;
}

void PlaceConic(const CNuPoint& origin, const CNuVector& xAxis, const CNuVector& normal, Inspection* result) {
  const Vec3 x = ToVec3(xAxis);
  const Vec3 z = ToVec3(normal);
  result->frame = {ToVec3(origin), x, Cross(z, x), z};
}

// Ellipse or hyperbola.
template<typename Conic>
void DescribeAxes(const std::vector<Vec3>& points, const Conic& conic, ConicShape::Kind kind, Inspection* result) {
  double a = 0;
  double b = 0;
  CNuPoint centre;
  CNuVector xAxis;
  CNuVector normal;
  conic.GetData(&a, &b, &centre, &xAxis, &normal);
  result->parameters = {Point("centre", centre), Direction("axis a", xAxis), Direction("normal", normal),
                        Length("semi-axis a", a), Length("semi-axis b", b)};
  result->conic = {kind, a, b};
  PlaceConic(centre, xAxis, normal, result);
  const Conic flat(a, b);
  AddDeviations(
      points, [&flat](const Vec3& p) { return SignedDistance(p, flat); }, result);
}

void DescribeEllipse(const std::vector<Vec3>& points, const CNuEllipse& ellipse, Inspection* result) {
  DescribeAxes(points, ellipse, ConicShape::Kind::kEllipse, result);
}

void DescribeHyperbola(const std::vector<Vec3>& points, const CNuHyperbola& hyperbola, Inspection* result) {
  DescribeAxes(points, hyperbola, ConicShape::Kind::kHyperbola, result);
}

void DescribeParabola(const std::vector<Vec3>& points, const CNuParabola& parabola, Inspection* result) {
  double f = 0;
  CNuPoint vertex;
  CNuVector axis;
  CNuVector normal;
  parabola.GetData(&f, &vertex, &axis, &normal);
  result->parameters = {Point("vertex", vertex), Direction("axis", axis), Direction("normal", normal),
                        Length("focal length", f)};
  result->conic = {ConicShape::Kind::kParabola, f, f};
  PlaceConic(vertex, axis, normal, result);
  const CNuParabola flat(f);
  AddDeviations(
      points, [&flat](const Vec3& p) { return SignedDistance(p, flat); }, result);
}

template<typename Conic>
void FitConic(const CNuPointArray& array, Conic* conic, Inspection* result) {
  conic->Fit(array, &result->form, &result->sumSquares, kMaxIterations);
}

}  // namespace

Inspection LeastSquaresLine(const std::vector<Vec3>& points) {
  return FitAndDescribe(
      points, CNuLine(),
      [](const CNuPointArray& array, CNuLine* line, Inspection* result) {
        line->Fit(array, &result->form, &result->sumSquares);
      },
      DescribeLine);
}

Inspection MinimumZoneLine(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuLine(),
      [&](const CNuPointArray& array, CNuLine* line, Inspection* result) {
        CNuLine sides[2];
        line->FitMinZone(array, &result->form, &sides[0], &sides[1], tol, kMaxIterations);
        if (!HaveOneZ(points)) return;
        result->parameters = {Point("first boundary", sides[0].GetPoint()),
                              Point("second boundary", sides[1].GetPoint())};
      },
      DescribeLine);
}

Inspection LeastSquaresPlane(const std::vector<Vec3>& points) {
  return FitAndDescribe(
      points, CNuPlane(),
      [](const CNuPointArray& array, CNuPlane* plane, Inspection* result) {
        plane->Fit(array, &result->form, &result->sumSquares);
      },
      DescribePlane);
}

Inspection MinimumZonePlane(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuPlane(),
      [tol](const CNuPointArray& array, CNuPlane* plane, Inspection* result) {
        CNuPlane sides[2];
        plane->FitMinZone(array, &result->form, &sides[0], &sides[1], tol);
        result->parameters = {Point("first boundary", sides[0].GetPoint()),
                              Point("second boundary", sides[1].GetPoint())};
      },
      DescribePlane);
}

Inspection LeastSquaresCircle(const std::vector<Vec3>& points) {
  return FitAndDescribe(
      points, CNuCircle(1.0),
      [](const CNuPointArray& array, CNuCircle* circle, Inspection* result) {
        circle->Fit(array, &result->form, &result->sumSquares, kMaxIterations);
      },
      DescribeCircle);
}

Inspection MinimumZoneCircle(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuCircle(1.0),
      [tol](const CNuPointArray& array, CNuCircle* circle, Inspection* result) {
        CNuCircle inner(1.0);
        CNuCircle outer(1.0);
        circle->FitMinZone(InTheirPlane(array), &result->form, &inner, &outer, tol, kMaxIterations);
        result->parameters = {Length("inner radius", inner.GetRadius()), Length("outer radius", outer.GetRadius())};
      },
      DescribeCircle);
}

Inspection CircumscribedCircle(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuCircle(1.0),
      [tol](const CNuPointArray& array, CNuCircle* circle, Inspection*) { circle->FitMin(InTheirPlane(array), tol); },
      DescribeCircle);
}

// Seen from the centre of their least-squares circle, no point lies within half a turn.
bool IsHalfCircleAtMost(const CNuPointArray& points) {
  CNuCircle circle(1.0);
  if (circle.FitEx(points, kMaxIterations) != NuFitSuccess) return false;
  const Frame frame = FrameAlong(circle.GetCentre(), circle.GetNormal());
  std::vector<double> angles;
  for (int i = 0; i < points.GetSize(); ++i) {
    const Vec3 from = ToVec3(points[i] - circle.GetCentre());
    angles.push_back(std::atan2(Dot(from, frame.y), Dot(from, frame.x)));
  }
  std::sort(angles.begin(), angles.end());
  double gap = Nu_2PI - (angles.back() - angles.front());
  for (std::size_t i = 1; i < angles.size(); ++i) gap = std::max(gap, angles[i] - angles[i - 1]);
  return gap >= Nu_PI;
}

Inspection InscribedCircle(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuCircle(1.0),
      [tol](const CNuPointArray& array, CNuCircle* circle, Inspection* result) {
        const CNuPointArray planar = InTheirPlane(array);
        circle->FitMax(planar, tol);
        if (IsHalfCircleAtMost(planar))
          result->warning = "the points cover half a circle at most: not the circle of the arc";
      },
      DescribeCircle);
}

Inspection LeastSquaresEllipse(const std::vector<Vec3>& points) {
  return FitAndDescribe(points, CNuEllipse(1.0, 1.0), FitConic<CNuEllipse>, DescribeEllipse);
}

Inspection LeastSquaresHyperbola(const std::vector<Vec3>& points) {
  return FitAndDescribe(points, CNuHyperbola(1.0, 1.0), FitConic<CNuHyperbola>, DescribeHyperbola);
}

Inspection LeastSquaresParabola(const std::vector<Vec3>& points) {
  return FitAndDescribe(points, CNuParabola(1.0), FitConic<CNuParabola>, DescribeParabola);
}
