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

void FitCylinder(const Points& points) {
  const Eigen::Vector3d mean = Mean(points);
  double best = std::numeric_limits<double>::infinity(), bestRadius = 0.0;
  Eigen::Vector3d bestPoint, bestAxis;
  for (const Eigen::Vector3d& start :
       {Eigen::Vector3d(1, 0, 0), Eigen::Vector3d(0, 1, 0), Eigen::Vector3d(0, 0, 1), Eigen::Vector3d(1, 1, 1),
        Eigen::Vector3d(1, -1, 1), Eigen::Vector3d(1, 1, -1), Eigen::Vector3d(-1, 1, 1)}) {
    Eigen::Vector3d point = Eigen::Vector3d::Zero(), axis = start.normalized();
    double radius = 0.0;
    for (const auto& p : points) radius += (p - mean).cross(axis).norm() / static_cast<double>(points.size());
    ceres::Problem problem;
    for (const auto& p : points)
      problem.AddResidualBlock(new ceres::AutoDiffCostFunction<Axial, 1, 3, 3, 1>(new Axial{p - mean}), nullptr,
                               point.data(), axis.data(), &radius);
    problem.SetManifold(axis.data(), new ceres::SphereManifold<3>());
    Solve(problem);
    double cost = 0.0;
    problem.Evaluate({}, &cost, nullptr, nullptr, nullptr);
    if (cost < best)
      best = cost, bestPoint = point + mean, bestAxis = axis.normalized(), bestRadius = std::fabs(radius);
  }
  Print("axis_point", bestPoint);
  Print("direction", bestAxis);
  std::printf("radius %.17g\n", bestRadius);
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
  std::puts("none");
  return 0;
}
