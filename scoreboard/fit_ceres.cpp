// An adapter of the scoreboard: least squares by Ceres, with its derivatives and Levenberg-Marquardt, from the
// algebraic fit or the principal axes (Eigen). The reader and the printer are those of fit_nu.cpp in kind.

#include <ceres/ceres.h>

#include <Eigen/Dense>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

using Points = std::vector<Eigen::Vector3d>;

namespace {

struct Radial {
  Eigen::Vector3d p;
  int used;  // coordinates: 2 of a circle
  template<class T>
  bool operator()(const T* const centre, const T* const radius, T* residual) const {
    T square(0.0);
    for (int i = 0; i < used; ++i) square += (p[i] - centre[i]) * (p[i] - centre[i]);
    residual[0] = sqrt(square) - radius[0];
    return true;
  }
};

struct Axial {
  Eigen::Vector3d p;
  template<class T>
  bool operator()(const T* const point, const T* const axis, const T* const radius, T* residual) const {
    Eigen::Matrix<T, 3, 1> d(p[0] - point[0], p[1] - point[1], p[2] - point[2]), a(axis[0], axis[1], axis[2]);
    residual[0] = d.cross(a).norm() / a.norm() - radius[0];
    return true;
  }
};

// About the circle of radii[0] in the plane through the point.
struct Ring {
  Eigen::Vector3d p;
  template<class T>
  bool operator()(const T* const point, const T* const axis, const T* const radii, T* residual) const {
    Eigen::Matrix<T, 3, 1> d(p[0] - point[0], p[1] - point[1], p[2] - point[2]), a(axis[0], axis[1], axis[2]);
    const T across = d.cross(a).norm() / a.norm() - radii[0], along = d.dot(a) / a.norm();
    residual[0] = sqrt(across * across + along * along) - radii[1];
    return true;
  }
};

// The radius is that at the point, the angle that of the generators with the axis.
struct Slanted {
  Eigen::Vector3d p;
  template<class T>
  bool operator()(const T* const point, const T* const axis, const T* const shape, T* residual) const {
    Eigen::Matrix<T, 3, 1> d(p[0] - point[0], p[1] - point[1], p[2] - point[2]), a(axis[0], axis[1], axis[2]);
    residual[0] = (d.cross(a).norm() / a.norm() - shape[0]) * cos(shape[1]) - d.dot(a) / a.norm() * sin(shape[1]);
    return true;
  }
};

Eigen::Vector3d Mean(const Points& points) {
  Eigen::Vector3d mean = Eigen::Vector3d::Zero();
  for (const auto& p : points) mean += p;
  return mean / static_cast<double>(points.size());
}

void Print(const char* name, const Eigen::Vector3d& v) {
  std::printf("%s %.17g %.17g %.17g\n", name, v[0], v[1], v[2]);
}

void Solve(ceres::Problem& problem) {
  ceres::Solver::Options options;
  options.max_num_iterations = 1000;
  options.function_tolerance = options.gradient_tolerance = options.parameter_tolerance = 1e-16;
  options.logging_type = ceres::SILENT;
  ceres::Solver::Summary summary;
  ceres::Solve(options, &problem, &summary);
}

void FitRound(const Points& points, int used) {
  Eigen::MatrixXd a(points.size(), used + 1);
  Eigen::VectorXd b(points.size());
  const Eigen::Vector3d mean = Mean(points);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Eigen::Vector3d d = points[i] - mean;
    a.row(static_cast<long>(i)).head(used) = 2.0 * d.head(used);
    a(static_cast<long>(i), used) = 1.0;
    b[static_cast<long>(i)] = d.head(used).squaredNorm();
  }
  const Eigen::VectorXd s = a.colPivHouseholderQr().solve(b);
  Eigen::Vector3d centre = Eigen::Vector3d::Zero();
  centre.head(used) = s.head(used);
  double radius = std::sqrt(s[used] + s.head(used).squaredNorm());
  ceres::Problem problem;
  for (const auto& p : points)
    problem.AddResidualBlock(new ceres::AutoDiffCostFunction<Radial, 1, 3, 1>(new Radial{p - mean, used}), nullptr,
                             centre.data(), &radius);
  if (used == 2) problem.SetManifold(centre.data(), new ceres::SubsetManifold(3, {2}));
  Solve(problem);
  Print("centre", centre + mean);
  std::printf("radius %.17g\n", radius);
}

struct Axis {
  double cost = std::numeric_limits<double>::infinity();
  Eigen::Vector3d point, direction;
  double shape[2];  // one radius, two, or a radius and an angle
};

// The best from several directions and, of the second number of the shape, several starts.
template<class Residual, int kShape>
Axis FitAxis(const Points& points, std::initializer_list<double> seconds) {
  const Eigen::Vector3d mean = Mean(points);
  Axis best;
  for (const double second : seconds) {
    for (const Eigen::Vector3d& start :
         {Eigen::Vector3d(1, 0, 0), Eigen::Vector3d(0, 1, 0), Eigen::Vector3d(0, 0, 1), Eigen::Vector3d(1, 1, 1),
          Eigen::Vector3d(1, -1, 1), Eigen::Vector3d(1, 1, -1), Eigen::Vector3d(-1, 1, 1)}) {
      Axis found;
      found.point = Eigen::Vector3d::Zero();
      found.direction = start.normalized();
      found.shape[0] = 0.0;
      found.shape[1] = second;
      for (const auto& p : points)
        found.shape[0] += (p - mean).cross(found.direction).norm() / static_cast<double>(points.size());
      ceres::Problem problem;
      for (const auto& p : points)
        problem.AddResidualBlock(new ceres::AutoDiffCostFunction<Residual, 1, 3, 3, kShape>(new Residual{p - mean}),
                                 nullptr, found.point.data(), found.direction.data(), found.shape);
      problem.SetManifold(found.direction.data(), new ceres::SphereManifold<3>());
      Solve(problem);
      problem.Evaluate({}, &found.cost, nullptr, nullptr, nullptr);
      if (found.cost < best.cost) best = found;
    }
  }
  best.point += mean;
  best.direction.normalize();
  return best;
}

void FitCylinder(const Points& points) {
  const Axis found = FitAxis<Axial, 1>(points, {0.0});
  Print("axis_point", found.point);
  Print("direction", found.direction);
  std::printf("radius %.17g\n", std::fabs(found.shape[0]));
}

void FitCone(const Points& points) {
  const Axis found = FitAxis<Slanted, 2>(points, {0.2, -0.2});
  Print("apex", found.point - found.shape[0] / std::tan(found.shape[1]) * found.direction);
  Print("direction", found.direction);
  std::printf("semi_angle %.17g\n", std::fabs(found.shape[1]));
}

void FitTorus(const Points& points) {
  double size = 0.0;
  for (const auto& p : points) size = std::max(size, (p - Mean(points)).norm());
  const Axis found = FitAxis<Ring, 2>(points, {0.1 * size, 0.3 * size});
  Print("centre", found.point);
  Print("direction", found.direction);
  std::printf("major_radius %.17g\nminor_radius %.17g\n", std::fabs(found.shape[0]), std::fabs(found.shape[1]));
}

}  // namespace

int main() {
  std::string feature, criterion;
  std::size_t count = 0;
  std::cin >> feature >> criterion >> count;
  Points points(count);
  for (auto& p : points) std::cin >> p[0] >> p[1] >> p[2];
  if (criterion == "ls" && feature == "circle") return FitRound(points, 2), 0;
  if (criterion == "ls" && feature == "sphere") return FitRound(points, 3), 0;
  if (criterion == "ls" && feature == "cylinder") return FitCylinder(points), 0;
  if (criterion == "ls" && feature == "cone") return FitCone(points), 0;
  if (criterion == "ls" && feature == "torus") return FitTorus(points), 0;
  std::puts("none");
  return 0;
}
