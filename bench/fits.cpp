// What do the least-squares fits cost, with form error and sum of squares?

#include "inputs.h"
#include "nu/curves/circle.h"
#include "nu/curves/ellipse.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"
#include "question.h"

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;

const std::vector<int> kSizes = {16, 1000, 100000, 1000000};
constexpr double kTolerance = 1e-8;
constexpr long kSteps = 100;

const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };
const auto kSame = [](const Numbers& n) { return n; };

Numbers Report(double form, double sumsq) {
  return {form, sumsq};
}
Numbers Report(double radius, const CNuPoint& centre, double form, double sumsq) {
  return {radius, centre.x(), centre.y(), centre.z(), form, sumsq};
}

#ifdef NU_BENCH_EIGEN
using Eigen::Matrix3d;
using Eigen::Matrix4d;
using Eigen::Vector2d;
using Eigen::Vector3d;
using Eigen::Vector4d;
using EigenCloud = std::vector<Vector3d>;

const auto kEigen = [](const Cloud& cloud) {
  EigenCloud points;
  for (const bench::Xyz& p : cloud) points.emplace_back(p.x, p.y, p.z);
  return points;
};

struct Axes {
  Vector3d mean;
  Matrix3d directions;  // columns by ascending spread
};

// Principal axes by one pass of moments about the first point.
Axes PrincipalAxes(const EigenCloud& points) {
  const Vector3d shift = points.front();
  Vector3d sum = Vector3d::Zero(), diagonal = Vector3d::Zero();
  double xy = 0, yz = 0, zx = 0;
  for (const Vector3d& p : points) {
    const Vector3d d = p - shift;
    sum += d;
    diagonal += d.cwiseAbs2();
    xy += d.x() * d.y();
    yz += d.y() * d.z();
    zx += d.z() * d.x();
  }
  Matrix3d squares;
  squares << diagonal.x(), xy, zx, xy, diagonal.y(), yz, zx, yz, diagonal.z();
  const double count = static_cast<double>(points.size());
  return {shift + sum / count,
          Eigen::SelfAdjointEigenSolver<Matrix3d>(squares - sum * sum.transpose() / count).eigenvectors()};
}

Numbers EigenLine(const EigenCloud& points) {
  const Axes axes = PrincipalAxes(points);
  const Vector3d direction = axes.directions.col(2);
  double sumsq = 0, largest = 0;
  for (const Vector3d& p : points) {
    const Vector3d d = p - axes.mean;
    const double squared = (d - d.dot(direction) * direction).squaredNorm();
    sumsq += squared;
    largest = std::max(largest, squared);
  }
  return Report(2 * std::sqrt(largest), sumsq);
}

Numbers EigenPlane(const EigenCloud& points) {
  const Axes axes = PrincipalAxes(points);
  const Vector3d normal = axes.directions.col(0);
  double sumsq = 0, least = 0, largest = 0;
  for (const Vector3d& p : points) {
    const double e = normal.dot(p - axes.mean);
    sumsq += e * e;
    least = std::min(least, e);
    largest = std::max(largest, e);
  }
  return Report(largest - least, sumsq);
}

// Circle (D = 2) and sphere (D = 3) of points given by local(i): the algebraic fit |p|^2 = 2 c.p + k, then Gauss-Newton
// on |p - c| - r, both by normal equations.
template<int D, class Local>
struct Round {
  using Centre = Eigen::Matrix<double, D, 1>;
  using Unknowns = Eigen::Matrix<double, D + 1, 1>;
  using Normal = Eigen::Matrix<double, D + 1, D + 1>;

  Round(std::size_t n, Local at) : count(n), local(at) {
    Normal normal = Normal::Zero();
    Unknowns right = Unknowns::Zero();
    for (std::size_t i = 0; i < count; ++i) {
      const Centre p = local(i);
      Unknowns row;
      row << p, 1;
      normal += row * row.transpose();
      right += p.squaredNorm() * row;
    }
    const Unknowns s = normal.ldlt().solve(right);
    centre = s.template head<D>() / 2;
    radius = std::sqrt(s(D) + centre.squaredNorm());
    double squaredStep = 1;
    for (int step = 0; step < 100 && squaredStep > 1e-16; ++step) squaredStep = Improve();
    Judge();
  }

  double Improve() {
    Normal normal = Normal::Zero();
    Unknowns right = Unknowns::Zero();
    for (std::size_t i = 0; i < count; ++i) {
      const Centre d = local(i) - centre;
      const double distance = d.norm();
      Unknowns row;
      row << d / distance, 1;
      normal += row * row.transpose();
      right += (distance - radius) * row;
    }
    const Unknowns step = normal.ldlt().solve(right);
    centre += step.template head<D>();
    radius += step(D);
    return step.squaredNorm();
  }

  void Judge() {
    double least = 1e300, largest = -1e300;
    for (std::size_t i = 0; i < count; ++i) {
      const double e = (local(i) - centre).norm() - radius;
      sumsq += e * e;
      least = std::min(least, e);
      largest = std::max(largest, e);
    }
    form = largest - least;
  }

  std::size_t count;
  Local local;
  Centre centre;
  double radius, form, sumsq = 0;
};

Numbers EigenCircle(const EigenCloud& points) {
  const Axes axes = PrincipalAxes(points);
  const Eigen::Matrix<double, 3, 2> inPlane = axes.directions.rightCols<2>();
  const auto local = [&](std::size_t i) -> Vector2d { return inPlane.transpose() * (points[i] - axes.mean); };
  const Round<2, decltype(local)> circle(points.size(), local);
  const Vector3d centre = axes.mean + inPlane * circle.centre;
  return Report(circle.radius, {centre.x(), centre.y(), centre.z()}, circle.form, circle.sumsq);
}

// The direct ellipse-specific fit (R. Halir, J. Flusser, WSCG 1998), then Gauss-Newton on the orthogonal distances by
// normal equations, each foot found by Newton's method on its angle.
struct EigenOval {
  explicit EigenOval(const std::vector<Vector2d>& given) : points(given) {
    Start();
    double squaredStep = 1;
    for (int step = 0; step < 100 && squaredStep > 1e-16; ++step) squaredStep = Improve();
    if (a < b) std::swap(a, b);
    Judge();
  }

  void Start() {
    double size = 0;
    for (const Vector2d& p : points) size = std::max(size, p.cwiseAbs().maxCoeff());
    Matrix3d quadratic = Matrix3d::Zero(), mixed = Matrix3d::Zero(), linear = Matrix3d::Zero();
    for (const Vector2d& p : points) {
      const double x = p.x() / size, y = p.y() / size;
      const Vector3d high(x * x, x * y, y * y), low(x, y, 1);
      quadratic += high * high.transpose();
      mixed += high * low.transpose();
      linear += low * low.transpose();
    }
    const Matrix3d toLow = -linear.ldlt().solve(mixed.transpose());
    const Matrix3d reduced = quadratic + mixed * toLow;
    Matrix3d constrained;
    constrained << reduced.row(2) / 2, -reduced.row(1), reduced.row(0) / 2;
    const Eigen::EigenSolver<Matrix3d> solver(constrained);
    Vector3d g = Vector3d::Zero();
    for (int k = 0; k < 3; ++k) {
      const Vector3d v = solver.eigenvectors().col(k).real();
      if (4 * v(0) * v(2) > v(1) * v(1)) g = v;
    }
    const Vector3d l = toLow * g;
    Eigen::Matrix2d shape;
    shape << g(0), g(1) / 2, g(1) / 2, g(2);
    const Vector2d middle = -0.5 * shape.ldlt().solve(l.head<2>());
    const double value = l(2) + 0.5 * l.head<2>().dot(middle);
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> axes(shape / -value);
    centre = size * middle;
    a = size / std::sqrt(axes.eigenvalues()(0));
    b = size / std::sqrt(axes.eigenvalues()(1));
    axis = axes.eigenvectors().col(0);
  }

  struct Place {
    double e, nx, ny, x, y, c, s;
  };

  Place Find(const Vector2d& p) const {
    const Vector2d d = p - centre;
    const double x = axis.dot(d), y = axis.x() * d.y() - axis.y() * d.x();
    double turn = std::atan2(a * y, b * x), c = 0, s = 0;
    for (int k = 0; k < 20; ++k) {
      c = std::cos(turn), s = std::sin(turn);
      const double value = (a * a - b * b) * s * c - a * x * s + b * y * c;
      const double step = value / ((a * a - b * b) * (c * c - s * s) - a * x * c - b * y * s);
      turn -= step;
      if (std::fabs(step) < 1e-9) break;
    }
    const double length = std::hypot(b * c, a * s), nx = b * c / length, ny = a * s / length;
    return {nx * (x - a * c) + ny * (y - b * s), nx, ny, a * c, b * s, c, s};
  }

  double Improve() {
    using Five = Eigen::Matrix<double, 5, 1>;
    Eigen::Matrix<double, 5, 5> normal = Eigen::Matrix<double, 5, 5>::Zero();
    Five right = Five::Zero();
    for (const Vector2d& p : points) {
      const Place f = Find(p);
      Five row;
      row << f.nx, f.ny, f.nx * f.c, f.ny * f.s, (f.ny * f.x - f.nx * f.y) / a;
      normal += row * row.transpose();
      right += f.e * row;
    }
    const Five step = normal.ldlt().solve(right);
    const Vector2d across(-axis.y(), axis.x());
    centre += step(0) * axis + step(1) * across;
    axis = (axis + step(4) / a * across).normalized();
    a += step(2);
    b += step(3);
    return step.squaredNorm();
  }

  void Judge() {
    double least = 1e300, largest = -1e300;
    for (const Vector2d& p : points) {
      const double e = Find(p).e;
      sumsq += e * e;
      least = std::min(least, e);
      largest = std::max(largest, e);
    }
    form = largest - least;
  }

  const std::vector<Vector2d>& points;
  Vector2d centre, axis;
  double a = 0, b = 0, form = 0, sumsq = 0;
};

Numbers EigenEllipse(const EigenCloud& points) {
  const Axes axes = PrincipalAxes(points);
  const Eigen::Matrix<double, 3, 2> inPlane = axes.directions.rightCols<2>();
  std::vector<Vector2d> flat;
  flat.reserve(points.size());
  for (const Vector3d& p : points) flat.emplace_back(inPlane.transpose() * (p - axes.mean));
  const EigenOval oval(flat);
  const Vector3d centre = axes.mean + inPlane * oval.centre;
  return Report(oval.a, {centre.x(), centre.y(), centre.z()}, oval.form, oval.sumsq);
}

Numbers EigenSphere(const EigenCloud& points) {
  Vector3d mean = Vector3d::Zero();
  for (const Vector3d& p : points) mean += p;
  mean /= static_cast<double>(points.size());
  const auto local = [&](std::size_t i) -> Vector3d { return points[i] - mean; };
  const Round<3, decltype(local)> sphere(points.size(), local);
  const Vector3d centre = mean + sphere.centre;
  return Report(sphere.radius, {centre.x(), centre.y(), centre.z()}, sphere.form, sphere.sumsq);
}

// The algebraic quadric with its constant fixed, by normal equations.
struct EigenQuadric {
  EigenQuadric(const EigenCloud& points, const Vector3d& mean) {
    using Nine = Eigen::Matrix<double, 9, 1>;
    Eigen::Matrix<double, 9, 9> normal = Eigen::Matrix<double, 9, 9>::Zero();
    Nine right = Nine::Zero();
    for (const Vector3d& p : points) {
      const Vector3d q = p - mean;
      Nine row;
      row << q.cwiseAbs2(), q.x() * q.y(), q.x() * q.z(), q.y() * q.z(), q;
      normal += row * row.transpose();
      right -= row;
    }
    const Nine s = normal.ldlt().solve(right);
    Matrix3d quadratic;
    quadratic << s(0), s(3) / 2, s(4) / 2, s(3) / 2, s(1), s(5) / 2, s(4) / 2, s(5) / 2, s(2);
    linear = s.tail<3>();
    solver.compute(quadratic);
    const Vector3d values = solver.eigenvalues();
    apart = values(1) - values(0) >= values(2) - values(1) ? 0 : 2;
  }
  Vector3d Axis(int k) const { return solver.eigenvectors().col(k); }
  // What the eigenvector adds to the centre.
  Vector3d ToCentre(int k) const { return -Axis(k) * (Axis(k).dot(linear) / (2 * solver.eigenvalues()(k))); }

  Eigen::SelfAdjointEigenSolver<Matrix3d> solver;
  Vector3d linear;
  int apart;
};

// From the quadric's axis, Gauss-Newton on the distances from it by normal equations.
struct EigenAxis {
  explicit EigenAxis(const EigenCloud& cloud) : points(cloud), point(Vector3d::Zero()) {
    for (const Vector3d& p : points) point += p;
    const Vector3d mean = point /= static_cast<double>(points.size());
    Start(mean);
    double squaredStep = 1;
    for (int step = 0; step < 100 && squaredStep > 1e-16; ++step) squaredStep = Improve();
    Eigen::Index largest;
    direction.cwiseAbs().maxCoeff(&largest);
    if (direction(largest) < 0) direction = -direction;
    point += direction * direction.dot(mean - point);
    Judge();
  }

  void Start(const Vector3d& mean) {
    const EigenQuadric quadric(points, mean);
    direction = quadric.Axis(quadric.apart);
    for (const int k : {1, 2 - quadric.apart}) point += quadric.ToCentre(k);
    for (const Vector3d& p : points) radius += direction.cross(p - point).norm();
    radius /= static_cast<double>(points.size());
  }

  double Improve() {
    using Five = Eigen::Matrix<double, 5, 1>;
    const Vector3d e1 = direction.unitOrthogonal(), e2 = direction.cross(e1);
    Eigen::Matrix<double, 5, 5> normal = Eigen::Matrix<double, 5, 5>::Zero();
    Five right = Five::Zero();
    for (const Vector3d& p : points) {
      const Vector3d w = p - point;
      const double along = w.dot(direction), x = w.dot(e1), y = w.dot(e2), distance = std::sqrt(x * x + y * y);
      Five row;
      row << x / distance, y / distance, along * x / distance, along * y / distance, 1;
      normal += row * row.transpose();
      right += (distance - radius) * row;
    }
    const Five step = normal.ldlt().solve(right);
    point += step(0) * e1 + step(1) * e2;
    direction = (direction + step(2) * e1 + step(3) * e2).normalized();
    radius += step(4);
    return step.squaredNorm();
  }

  void Judge() {
    double least = 1e300, largest = -1e300;
    for (const Vector3d& p : points) {
      const double e = direction.cross(p - point).norm() - radius;
      sumsq += e * e;
      least = std::min(least, e);
      largest = std::max(largest, e);
    }
    form = largest - least;
  }

  const EigenCloud& points;
  Vector3d point, direction;
  double radius = 0, form = 0, sumsq = 0;
};

// The same for the cone, in the apex, the axis' tilts and the angle.
struct EigenTip {
  explicit EigenTip(const EigenCloud& cloud) : points(cloud) {
    Vector3d mean = Vector3d::Zero();
    for (const Vector3d& p : points) mean += p;
    mean /= static_cast<double>(points.size());
    const EigenQuadric quadric(points, mean);
    direction = quadric.Axis(quadric.apart);
    apex = mean;
    for (int k = 0; k < 3; ++k) apex += quadric.ToCentre(k);
    if (direction.dot(mean - apex) < 0) direction = -direction;
    double across = 0, along = 0;
    for (const Vector3d& p : points) {
      across += direction.cross(p - apex).norm();
      along += direction.dot(p - apex);
    }
    angle = std::atan2(across, along);
    double squaredStep = 1;
    for (int step = 0; step < 100 && squaredStep > 1e-16; ++step) squaredStep = Improve();
    Judge();
  }

  double Improve() {
    using Six = Eigen::Matrix<double, 6, 1>;
    const Vector3d e1 = direction.unitOrthogonal(), e2 = direction.cross(e1);
    const double c = std::cos(angle), s = std::sin(angle);
    Eigen::Matrix<double, 6, 6> normal = Eigen::Matrix<double, 6, 6>::Zero();
    Six right = Six::Zero();
    for (const Vector3d& p : points) {
      const Vector3d w = p - apex;
      const double h = w.dot(direction), x = w.dot(e1), y = w.dot(e2), rho = std::sqrt(x * x + y * y);
      const double turn = h * c / rho + s;
      Six row;
      row << x / rho * c, y / rho * c, -s, x * turn, y * turn, rho * s + h * c;
      normal += row * row.transpose();
      right += (rho * c - h * s) * row;
    }
    const Six step = normal.ldlt().solve(right);
    apex += step(0) * e1 + step(1) * e2 + step(2) * direction;
    direction = (direction + step(3) * e1 + step(4) * e2).normalized();
    angle += step(5);
    return step.squaredNorm();
  }

  void Judge() {
    const double c = std::cos(angle), s = std::sin(angle);
    double least = 1e300, largest = -1e300;
    for (const Vector3d& p : points) {
      const double e = direction.cross(p - apex).norm() * c - direction.dot(p - apex) * s;
      sumsq += e * e;
      least = std::min(least, e);
      largest = std::max(largest, e);
    }
    form = largest - least;
  }

  const EigenCloud& points;
  Vector3d apex, direction;
  double angle = 0, form = 0, sumsq = 0;
};

Numbers EigenCone(const EigenCloud& points) {
  const EigenTip tip(points);
  return Report(tip.angle / bench::kTwoPi * 360, {tip.apex.x(), tip.apex.y(), tip.apex.z()}, tip.form, tip.sumsq);
}

Numbers EigenCylinder(const EigenCloud& points) {
  const EigenAxis axis(points);
  return Report(axis.radius, {axis.point.x(), axis.point.y(), axis.point.z()}, axis.form, axis.sumsq);
}
#endif

template<class Peer, class Fit>
void AskFit(const char* name, Cloud (*make)(int), Fit fit, [[maybe_unused]] Peer peer) {
  Question<Cloud> question(name, kTolerance, make);
  question.Ask("nu", kPoints, fit, kSame);
#ifdef NU_BENCH_EIGEN
  question.Ask("eigen", kEigen, peer, kSame);
#endif
  question.Over(kSizes);
}
#ifndef NU_BENCH_EIGEN
constexpr std::nullptr_t EigenLine = nullptr, EigenPlane = nullptr, EigenCircle = nullptr, EigenSphere = nullptr,
                         EigenCylinder = nullptr, EigenCone = nullptr, EigenEllipse = nullptr;
#endif

const auto kLine = [](const CNuPointArray& points) {
  double form, sumsq;
  CNuLine line;
  line.Fit(points, &form, &sumsq);
  return Report(form, sumsq);
};
const auto kPlane = [](const CNuPointArray& points) {
  double form, sumsq;
  CNuPlane plane;
  plane.Fit(points, &form, &sumsq);
  return Report(form, sumsq);
};
const auto kCircle = [](const CNuPointArray& points) {
  double form, sumsq;
  CNuCircle circle(1.0);
  circle.Fit(points, &form, &sumsq, kSteps);
  return Report(circle.GetRadius(), circle.GetCentre(), form, sumsq);
};
const auto kSphere = [](const CNuPointArray& points) {
  double form, sumsq;
  CNuSphSurf sphere(1.0);
  sphere.Fit(points, &form, &sumsq, kSteps);
  return Report(sphere.GetRadius(), sphere.GetCentre(), form, sumsq);
};
const auto kCylinder = [](const CNuPointArray& points) {
  double form, sumsq;
  CNuCylSurf cylinder(1.0);
  cylinder.Fit(points, &form, &sumsq, kSteps);
  return Report(cylinder.GetRadius(), cylinder.GetAxis().GetPoint(), form, sumsq);
};
const auto kCone = [](const CNuPointArray& points) {
  double form, sumsq;
  CNuConSurf cone(1.0);
  cone.Fit(points, &form, &sumsq, kSteps);
  return Report(cone.GetSemiAngle(), cone.GetApex(), form, sumsq);
};

const auto kEllipse = [](const CNuPointArray& points) {
  double form, sumsq, a, b;
  CNuEllipse ellipse(2.0, 1.0);
  ellipse.Fit(points, &form, &sumsq, kSteps);
  CNuPoint centre;
  CNuVector xAxis, normal;
  ellipse.GetData(&a, &b, &centre, &xAxis, &normal);
  return Report(a, centre, form, sumsq);
};

const bool kAsked = [] {
  AskFit("fit_line", bench::Edge, kLine, EigenLine);
  AskFit("fit_plane", bench::Plate, kPlane, EigenPlane);
  AskFit("fit_circle", bench::Bore, kCircle, EigenCircle);
  AskFit("fit_sphere", bench::Dome, kSphere, EigenSphere);
  AskFit("fit_cylinder", bench::Shaft, kCylinder, EigenCylinder);
  AskFit("fit_cone", bench::Taper, kCone, EigenCone);
  AskFit("fit_ellipse", bench::Oval, kEllipse, EigenEllipse);
  return true;
}();

}  // namespace
