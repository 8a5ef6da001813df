// An adapter of the scoreboard: lines and planes by the singular vectors of the centred points, circles and spheres by
// the algebraic fit, which minimises another sum than that of the squared distances.

#include <Eigen/Dense>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>

namespace {

void Print(const char* name, const Eigen::Vector3d& v) {
  std::printf("%s %.17g %.17g %.17g\n", name, v[0], v[1], v[2]);
}

void FitRound(const Eigen::MatrixX3d& centred, const Eigen::Vector3d& mean, int used) {
  Eigen::MatrixXd a(centred.rows(), used + 1);
  a.leftCols(used) = 2.0 * centred.leftCols(used);
  a.col(used).setOnes();
  const Eigen::VectorXd b = centred.leftCols(used).rowwise().squaredNorm();
  const Eigen::VectorXd s = a.colPivHouseholderQr().solve(b);
  Eigen::Vector3d centre = mean;
  centre.head(used) += s.head(used);
  Print("centre", centre);
  std::printf("radius %.17g\n", std::sqrt(s[used] + s.head(used).squaredNorm()));
}

}  // namespace

int main() {
  std::string feature, criterion;
  long count = 0;
  std::cin >> feature >> criterion >> count;
  Eigen::MatrixX3d points(count, 3);
  for (long i = 0; i < count; ++i) std::cin >> points(i, 0) >> points(i, 1) >> points(i, 2);
  const Eigen::Vector3d mean = points.colwise().mean().transpose();
  const Eigen::MatrixX3d centred = points.rowwise() - mean.transpose();
  if (criterion != "ls") {
    std::puts("none");
  } else if (feature == "line" || feature == "plane") {
    const Eigen::JacobiSVD<Eigen::MatrixXd> svd(centred, Eigen::ComputeThinV);
    Print("point", mean);
    Print("direction", svd.matrixV().col(feature == "line" ? 0 : 2));
  } else if (feature == "circle" || feature == "sphere") {
    FitRound(centred, mean, feature == "circle" ? 2 : 3);
  } else {
    std::puts("none");
  }
  return 0;
}
