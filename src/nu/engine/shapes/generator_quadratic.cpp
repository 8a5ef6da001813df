// On the generator (r cos u, r sin u, t) of an upright cylinder a quadric p Q p^T = 0 is
//   Q33 t^2 + 2 (r Q13 cos u + r Q23 sin u + Q34) t + (r^2 (Q11 cos^2 u + 2 Q12 cos u sin u + Q22 sin^2 u)
//   + 2 r (Q14 cos u + Q24 sin u) + Q44) = 0,
// and on the generator t g, g = (sin a cos u, sin a sin u, cos a), of an upright cone with the upper left block B of Q
//   g B g^T t^2 + 2 (Q14, Q24, Q34).g t + Q44 = 0.
// Both discriminants are of degree two in cos u and sin u.

#include "nu/engine/shapes/generator_quadratic.h"

namespace nu::engine::shapes {

// With w = p - point the surface is |w|^2 - r^2, |w x d|^2 - r^2 or |w x d|^2 cos^2 a - (w d)^2 sin^2 a = 0. The
// squares of d across a coordinate axis are added up: what is left of 1 beside an axis that is nearly parallel is lost.
QuadricMatrix QuadricMatrix::Of(const RoundQuadric& surface) {
  const bool isCone = surface.kind == RoundQuadric::Kind::kCone;
  const double across = isCone ? surface.cosine * surface.cosine : 1.0;
  const double along = isCone ? surface.sine * surface.sine : 0.0;
  const double d[] = {surface.axis.x, surface.axis.y, surface.axis.z};
  const double p[] = {surface.point.x, surface.point.y, surface.point.z};
  QuadricMatrix q;
  double constant = -surface.radius * surface.radius;
  for (int i = 0; i < 3; ++i) {
    double linear = 0.0;
    for (int k = 0; k < 3; ++k) {
      const double square = d[(i + 1) % 3] * d[(i + 1) % 3] + d[(i + 2) % 3] * d[(i + 2) % 3];
      const double onAxis = surface.kind == RoundQuadric::Kind::kSphere ? 1.0 : square * across - d[i] * d[i] * along;
      q.at[i][k] = k == i ? onAxis : -d[i] * d[k] * (across + along);
      linear -= q.at[i][k] * p[k];
    }
    q.at[i][3] = q.at[3][i] = linear;
    constant -= linear * p[i];
  }
  q.at[3][3] = constant;
  return q;
}

GeneratorQuadratic GeneratorQuadratic::OnCylinder(const QuadricMatrix& q, double radius) {
  const TrigPolynomial x = TrigPolynomial::Wave(radius, 0.0, 0.0);
  const TrigPolynomial y = TrigPolynomial::Wave(0.0, radius, 0.0);
  const TrigPolynomial one = TrigPolynomial::Wave(0.0, 0.0, 1.0);
  return {q.at[2][2] * one, q.at[0][2] * x + q.at[1][2] * y + q.at[2][3] * one,
          q.at[0][0] * (x * x) + 2.0 * q.at[0][1] * (x * y) + q.at[1][1] * (y * y) + 2.0 * q.at[0][3] * x +
              2.0 * q.at[1][3] * y + q.at[3][3] * one};
}

GeneratorQuadratic GeneratorQuadratic::OnCone(const QuadricMatrix& q, double sine, double cosine) {
  const TrigPolynomial x = TrigPolynomial::Wave(sine, 0.0, 0.0);
  const TrigPolynomial y = TrigPolynomial::Wave(0.0, sine, 0.0);
  const TrigPolynomial z = TrigPolynomial::Wave(0.0, 0.0, cosine);
  return {q.at[0][0] * (x * x) + q.at[1][1] * (y * y) + q.at[2][2] * (z * z) +
              2.0 * (q.at[0][1] * (x * y) + q.at[0][2] * (x * z) + q.at[1][2] * (y * z)),
          q.at[0][3] * x + q.at[1][3] * y + q.at[2][3] * z, TrigPolynomial::Wave(0.0, 0.0, q.at[3][3])};
}

bool GeneratorQuadratic::IsFinite() const {
  double size = 0.0;
  for (const TrigPolynomial* p : {&square, &linear, &constant}) {
    for (int k = 0; k <= p->degree; ++k) size += std::fabs(p->cosines[k]) + std::fabs(p->sines[k]);
  }
  return std::isfinite(size);
}

// The discriminant of surfaces with nearly parallel lines is small in all, so it is divided by its largest coefficient.
std::vector<double> GeneratorQuadratic::StationaryAngles(double zero, double share) const {
  const TrigPolynomial discriminant = linear * linear + -1.0 * (square * constant);
  const double largest = discriminant.LargestCoefficient();
  if (!(largest > zero)) return {};
  const auto isNegligible = [&](int k) {
    return std::fabs(discriminant.cosines[k] / largest) < share && std::fabs(discriminant.sines[k] / largest) < share;
  };
  TrigPolynomial slope;
  slope.degree = discriminant.degree;
  while (slope.degree > 0 && isNegligible(slope.degree)) --slope.degree;
  for (int k = 1; k <= slope.degree; ++k) {
    slope.cosines[k] = k * (discriminant.sines[k] / largest);
    slope.sines[k] = -k * (discriminant.cosines[k] / largest);
  }
  std::vector<double> angles = DistinctRoots(slope);
  if (angles.size() > kMostStationary) angles.resize(kMostStationary);
  return angles;
}

std::vector<double> DistinctRoots(const TrigPolynomial& p) {
  std::vector<double> roots = p.Roots();
  roots.erase(std::unique(roots.begin(), roots.end()), roots.end());
  return roots;
}

Asymptotes Asymptotes::Of(const TrigPolynomial& square) {
  const std::vector<double> roots = square.Roots();
  Asymptotes found;
  for (const bool touches : {false, true}) {
    for (std::size_t i = 0, same = 1; i < roots.size(); i += same, same = 1) {
      while (i + same < roots.size() && roots[i + same] == roots[i]) ++same;
      if ((same % 2 == 0) == touches) found.angles.push_back(roots[i]);
    }
    if (!touches) found.simple = found.angles.size();
  }
  return found;
}

}  // namespace nu::engine::shapes
