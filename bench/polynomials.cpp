// What does it cost to fit a polynomial to samples?

#include "inputs.h"
#include "nu/foundation/double_array.h"
#include "nu/numerics/polynomial.h"
#include "question.h"

namespace {

using bench::Question;

constexpr double kTolerance = 1e-9;
constexpr int kDegree = 5;

struct Samples {
  std::vector<double> x, y;
};

Samples Noisy(int n) {
  bench::Dice dice(107 + static_cast<std::uint64_t>(n));
  Samples s;
  for (int i = 0; i < n; ++i) {
    const double x = dice.Between(-1, 1);
    s.x.push_back(x);
    s.y.push_back(1 + x * (2 - x * (1 - x * (0.5 + x * (0.25 - x)))) + dice.Normal(1e-3));
  }
  return s;
}

struct NuSamples {
  CNuDoubleArray x, y;
};

CNuDoubleArray ToArray(const std::vector<double>& values) {
  CNuDoubleArray array(static_cast<int>(values.size()));
  for (const double v : values) array.Add(v);
  return array;
}

// The coefficients and, last, the residual sum.
bench::Numbers FitByNu(const NuSamples& s) {
  CNuPolynomial p(kDegree);
  double sum;
  p.Fit(s.x, s.y, &sum);
  bench::Numbers numbers(p.GetData(), p.GetData() + kDegree + 1);
  numbers.push_back(sum);
  return numbers;
}

#ifdef NU_BENCH_EIGEN
struct EigenSamples {
  Eigen::VectorXd x, y;
};

// The columns of the design matrix are known at compile time, as in a program that is written for one degree.
template<class Solve>
bench::Numbers FitByEigen(const EigenSamples& s, Solve solve) {
  Eigen::Matrix<double, Eigen::Dynamic, kDegree + 1> a(s.x.size(), kDegree + 1);
  a.col(0).setOnes();
  for (int j = 1; j <= kDegree; ++j) a.col(j) = a.col(j - 1).cwiseProduct(s.x);
  const Eigen::Matrix<double, kDegree + 1, 1> c = solve(a, s.y);
  bench::Numbers numbers(c.data(), c.data() + c.size());
  numbers.push_back((s.y - a * c).squaredNorm());
  return numbers;
}
#endif

const bool kAsked = [] {
  Question<Samples> question("poly_fit5", kTolerance, Noisy);
  const auto read = [](const bench::Numbers& numbers) { return numbers; };
  question.Ask(
      "nu",
      [](const Samples& s) {
        return NuSamples{ToArray(s.x), ToArray(s.y)};
      },
      FitByNu, read);
#ifdef NU_BENCH_EIGEN
  const auto prepare = [](const Samples& s) { return EigenSamples{bench::ToEigen(s.x), bench::ToEigen(s.y)}; };
  question.Ask(
      "eigen_qr", prepare,
      [](const EigenSamples& s) {
        return FitByEigen(s, [](const auto& a, const auto& y) { return a.householderQr().solve(y).eval(); });
      },
      read);
  question.Ask(
      "eigen_pivoting_qr", prepare,
      [](const EigenSamples& s) {
        return FitByEigen(s, [](const auto& a, const auto& y) { return a.colPivHouseholderQr().solve(y).eval(); });
      },
      read);
#endif
  question.Over({1000, 100000, 1000000});
  return true;
}();

}  // namespace
