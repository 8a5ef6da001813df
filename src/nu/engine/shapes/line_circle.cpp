// The point c(u) = C + R (cos u X + sin u Y) of the circle has the distance |r(u)| from the line with the direction d,
// where r = A + R cos u X' + R sin u Y' and A, X', Y' are C - P, X and Y without their parts along d. Half the
// derivative of its square, over R, is
//   A.Y cos u - A.X sin u - R (X.d)(Y.d) cos 2u + R/2 ((X.d)^2 - (Y.d)^2) sin 2u,
// a trigonometric polynomial of degree two, whose up to four roots hold all minima.

#include "nu/engine/shapes/line_circle.h"

#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/roots/trig_roots.h"
#include "nu/engine/shapes/axis_direction.h"

namespace nu::engine::shapes {

namespace {

struct Distance {
  Distance(const Line3& given, const Circle3& circle)
      : line(given),
        centre(circle.centre),
        radius(circle.radius),
        x(AnyAcross(circle.normal)),
        y(Cross(circle.normal, x)),
        offset(Rejection(centre - line.point, line.direction)),
        xAcross(Rejection(x, line.direction)),
        yAcross(Rejection(y, line.direction)) {}

  Vec3 At(double u) const {
    const auto [s, c] = SinCos(u);
    return offset + radius * (c * xAcross + s * yAcross);
  }
  Vec3 DerivativeAt(double u) const {
    const auto [s, c] = SinCos(u);
    return radius * (c * yAcross - s * xAcross);
  }
  double AlongLine(double u) const {
    const auto [s, c] = SinCos(u);
    const Vec3 p = centre + radius * (c * x + s * y);
    return Dot(p - line.point, line.direction);
  }

  Line3 line;
  Vec3 centre;
  double radius;
  Vec3 x, y, offset, xAcross, yAcross;
};

std::vector<double> StationaryAngles(const Distance& distance) {
  const double xAlong = Dot(distance.x, distance.line.direction);
  const double yAlong = Dot(distance.y, distance.line.direction);
  const double cosines[] = {0.0, Dot(distance.offset, distance.y), -distance.radius * xAlong * yAlong};
  const double sines[] = {0.0, -Dot(distance.offset, distance.x),
                          0.5 * distance.radius * (xAlong - yAlong) * (xAlong + yAlong)};
  if (!std::isfinite(std::fabs(cosines[1]) + std::fabs(cosines[2]) + std::fabs(sines[1]) + std::fabs(sines[2])))
    return {};
  return TrigRoots(cosines, sines, 2);
}

// A line that touches the circle makes a triple root, which the equation gives to a third of the digits. Gauss-Newton
// steps on r itself, for as long as they shorten it, bring the distance down to rounding.
double Refined(const Distance& distance, double u) {
  constexpr int kMaxSteps = 60;  // each step halves the error at least
  Vec3 r = distance.At(u);
  for (int step = 0; step < kMaxSteps; ++step) {
    const Vec3 derivative = distance.DerivativeAt(u);
    const double next = u - Dot(r, derivative) / Dot(derivative, derivative);
    const Vec3 there = distance.At(next);
    if (!(Dot(there, there) < Dot(r, r))) break;
    u = next;
    r = there;
  }
  return u;
}

struct Candidate {
  double distance = 0.0;
  double along = 0.0;
};

// A line around which the circle runs has no stationary angles, and any angle will do.
std::vector<Candidate> Candidates(const Distance& distance) {
  std::vector<double> angles = StationaryAngles(distance);
  if (angles.empty()) angles.push_back(0.0);
  std::vector<Candidate> candidates;
  for (const double angle : angles) {
    const double u = Refined(distance, angle);
    candidates.push_back({Norm(distance.At(u)), distance.AlongLine(u)});
  }
  return candidates;
}

}  // namespace

NearLine ClosestTo(const Line3& line, const Circle3& circle, double tol) {
  const std::vector<Candidate> candidates = Candidates(Distance(line, circle));
  const auto nearer = [](const Candidate& a, const Candidate& b) { return a.distance < b.distance; };
  const Candidate best = *std::min_element(candidates.begin(), candidates.end(), nearer);
  double other = best.along;
  for (const Candidate& c : candidates) {
    const bool farther = std::fabs(c.along - best.along) > std::fabs(other - best.along);
    if (c.distance <= best.distance + tol && farther) other = c.along;
  }
  NearLine nearest{best.distance, {}};
  const bool both = std::fabs(other - best.along) > tol;
  nearest.points.Add(line.At(both ? std::min(best.along, other) : best.along));
  if (both) nearest.points.Add(line.At(std::max(best.along, other)));
  return nearest;
}

}  // namespace nu::engine::shapes
