#ifndef NU_BENCH_INPUTS_H
#define NU_BENCH_INPUTS_H

#include <vector>

#include "clouds.h"
#include "nu/geometry/point_array.h"
#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"

#ifdef NU_BENCH_EIGEN
#include <Eigen/Dense>
#endif

// The same inputs as the library and as Eigen want them.
namespace bench {

inline CNuPointArray ToPoints(const Cloud& cloud) {
  CNuPointArray points(static_cast<int>(cloud.size()));
  for (const Xyz& p : cloud) points.Add(CNuPoint(p.x, p.y, p.z));
  return points;
}

inline CNuMatrix ToMatrix(const Block& block) {
  CNuMatrix m(block.rows, block.columns);
  const double* value = block.values.data();
  for (int i = 0; i < block.rows; ++i) {
    for (int j = 0; j < block.columns; ++j) m.GetData()[i][j] = *value++;
  }
  return m;
}

inline CNuVector ToVector(const std::vector<double>& values) {
  CNuVector v(static_cast<int>(values.size()));
  std::copy(values.begin(), values.end(), v.GetData());
  return v;
}

inline std::vector<double> ToNumbers(const CNuVector& v) {
  return {v.GetData(), v.GetData() + v.GetSize()};
}

#ifdef NU_BENCH_EIGEN
inline Eigen::MatrixXd ToEigen(const Block& block) {
  using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  return Eigen::Map<const RowMajor>(block.values.data(), block.rows, block.columns);
}

inline Eigen::VectorXd ToEigen(const std::vector<double>& values) {
  return Eigen::Map<const Eigen::VectorXd>(values.data(), static_cast<Eigen::Index>(values.size()));
}

inline std::vector<double> ToNumbers(const Eigen::VectorXd& v) {
  return {v.data(), v.data() + v.size()};
}
#endif

}  // namespace bench

#endif
