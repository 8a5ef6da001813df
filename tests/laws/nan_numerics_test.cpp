// A NaN among the arguments comes out as a NaN or as a failure, never as a number, over the operations below the
// geometry; a predicate of it is false.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"

namespace {

using namespace nu::test;

struct Operation {
  const char* text;
  std::function<double(double)> result;  // summed
};
#define NU_OF_X(...)                                              \
  Operation {                                                     \
#__VA_ARGS__, [&](double x) -> double { return __VA_ARGS__; } \
  }

void Check(const std::vector<Operation>& operations) {
  for (const Operation& operation : operations) {
    EXPECT_TRUE(std::isfinite(operation.result(0.7))) << operation.text << " is not tried";
    try {
      EXPECT_TRUE(std::isnan(operation.result(kNaN))) << operation.text;
    } catch (const CNuException&) {
    }
  }
}

template<class T, class Change>
T Changed(T object, Change change) {
  change(object);
  return object;
}

double SumOf(const CNuMatrix& m) {
  return (CNuVector(m.GetRowSize()) * m).Sum() + CNuVector(m * m.GetRowVector(0)).Sum() + m.Trace();
}

double SumOf(const CNuComplexArray& a) {
  double sum = 0.0;
  for (int i = 0; i < a.GetSize(); ++i) sum += a[i].r() + a[i].i();
  return sum;
}

CNuDoubleArray ArrayWith(double x) {
  CNuDoubleArray a(5);
  for (const double value : {-1.0, 0.25, x, 1.5, 2.0}) a.Add(value);
  return a;
}

double SolutionOf(const CNuMatrix& a, const CNuVector& b, int method, bool nonNegative = false) {
  CNuLinearEquSys system(method);
  if (nonNegative) system.SetNonnegative();
  system.Solve(a, b);
  return system.SolutionExists() ? system.GetSolution().Sum() : kNaN;
}

TEST(NaNRule, HelpersArraysAndVectors) {
  const CNuVector u(1, -2, 3), z(0, 0, 1);
  const auto v = [](double x) { return CNuVector(0.5, x, -1.5); };
  const auto onCone = [](double x) { return CNuVector(std::cos(x), std::sin(x), 1.0); };
  Check({NU_OF_X(NuPythag(x, 2)),
         NU_OF_X(NuPythag(2, x)),
         NU_OF_X(NuPythag(1, x, 2)),
         NU_OF_X(NuAngleIn360Degree(x)),
         NU_OF_X(NuAngleIn2Pi(x)),
         NU_OF_X(NuArcCosSin(x, 0)),
         NU_OF_X(NuArcCosSin(0, x)),
         NU_OF_X(nu::acosh(x + 1)),
         NU_OF_X(Changed(z, [&](auto& a) { NuCosSin(x, &a[0], &a[1]); }).Sum()),
         NU_OF_X(ArrayWith(x).Max()),
         NU_OF_X(ArrayWith(x).Min()),
         NU_OF_X(ArrayWith(x).Sum()),
         NU_OF_X(CNuInterval(x, 2, 0, 0).IsIn(x)),
         NU_OF_X(v(x).Max()),
         NU_OF_X(v(x).Min()),
         NU_OF_X(v(x).Magnitude()),
         NU_OF_X(v(x) % u),
         NU_OF_X((v(x) * u).Sum()),
         NU_OF_X((v(x) * CNuMatrix(3, 3)).Sum()),
         NU_OF_X((u * x).Sum()),
         NU_OF_X((u / x).Sum()),
         NU_OF_X(u.AngleWith(v(x))),
         NU_OF_X(onCone(x).AngleWith(onCone(0.1), z)),
         NU_OF_X(onCone(0.2).AngleWith(onCone(0.1), z * x)),
         NU_OF_X(Changed(v(x), [](auto& a) { a.Normalise(); }).Sum()),
         NU_OF_X(Changed(v(x), [](auto& a) { a.SymmetricAxis(1e-9, 1); }).Sum()),
         NU_OF_X(Changed(u, [&](auto& y) { v(x).OrthonormalY(&y); }).Sum()),
         NU_OF_X(Changed(u, [&](auto& a) { a.Rotate(x, CNuGeometry::Z_AXIS); }).Sum()),
         NU_OF_X(Changed(u, [&](auto& a) { a.Rotate(9, v(x)); }).Sum()),
         NU_OF_X(Changed(u, [&](auto& a) { a.Homogeneous(), a[3] = x, a.NonHomogeneous(); }).Sum())});
  EXPECT_FALSE(v(kNaN).IsZero(9) || v(kNaN).IsPositive() || v(kNaN).IsNonNegative() || v(kNaN).IsEqual(v(kNaN), 9) ||
               u.IsParallelTo(v(kNaN), 1) || u.IsOrthogonalTo(v(kNaN), 1) || ArrayWith(kNaN).IsMonotonicIncreasing() ||
               ArrayWith(kNaN).IsEqual(ArrayWith(kNaN), 9) || CNuComplex(kNaN, 0).IsZero(9));
}

TEST(NaNRule, MatricesAndComplexNumbers) {
  const CNuVector b(1, -2, 3);
  CNuMatrix regular(3, 3);
  for (int i = 0; i < 9; ++i) regular.Element(i / 3, i % 3) = std::sin(3.0 * i * i + 1.0);
  for (int place = 0; place < 9; ++place) {
    const auto m = [&](double x) { return Changed(regular, [&](auto& a) { a.Element(place / 3, place % 3) = x; }); };
    Check({NU_OF_X(SumOf(m(x) * CNuMatrix(3, 3))), NU_OF_X(SumOf(m(x).PreMultiplyTranspose())),
           NU_OF_X(m(x).Determinant()), NU_OF_X(SumOf(m(x).Inverse(nullptr))),
           NU_OF_X(SumOf(Changed(regular, [&](auto& u) { m(x).LUD2(nullptr, &u, nullptr); }))),
           NU_OF_X(Changed(b, [&](auto& w) { m(x).SVD(&w, nullptr); }).Sum()), NU_OF_X(m(x).EigenValues(nullptr).Sum()),
           NU_OF_X(SolutionOf(m(x), b, 0)), NU_OF_X(SolutionOf(m(x), b, 1)), NU_OF_X(SolutionOf(m(x), b, 1, true)),
           NU_OF_X(SumOf(Changed(CNuComplexMatrix(m(x)), [](auto& r) { r.QR(nullptr, &r); }).RealPart())),
           NU_OF_X(CNuComplexMatrix(m(x)).EigenValues().RealPart().Sum())});
    EXPECT_FALSE(m(kNaN).IsZero(9) || m(kNaN).IsEqual(m(kNaN), 9) || m(kNaN).IsOrthogonal(9));
  }
  const CNuComplex one(1, 1);
  Check({NU_OF_X(SolutionOf(regular, {1, x, 2}, 0)), NU_OF_X(SolutionOf(regular, {1, x, 2}, 1)),
         NU_OF_X(SolutionOf(regular, {1, x, 2}, 1, true)), NU_OF_X(CNuComplex(x, 0).Modulus()),
         NU_OF_X(CNuComplex(0, x).Sqrt().i()), NU_OF_X(CNuComplex(0, x).Power(2).r()),
         NU_OF_X(SumOf(CNuComplex(x, 1).Roots(3))), NU_OF_X(CNuComplex(x, 1).ToPolarForm().Argument()),
         NU_OF_X(CNuComplexPolar(2, x).ToCartesianForm().r()), NU_OF_X((one * CNuComplex(x, 0)).i()),
         NU_OF_X((one / CNuComplex(x, 0)).i()), NU_OF_X((one / CNuComplex(0, x)).i()),
         NU_OF_X(CNuComplexVector(CNuVector(1, x, 2)).Magnitude())});
}

TEST(NaNRule, Numerics) {
  const auto quadratic = [](double x) {
    return Changed(CNuPolynomial(2), [&](auto& p) { p[0] = x, p[1] = p[2] = 3; });
  };
  const auto complex = [](double x) {
    return Changed(CNuComplexArray(2), [&](auto& c) { c.Add(CNuComplex(x, 1)), c.Add(CNuComplex(1, 0)); });
  };
  const CNuPolynomial line(1), cubic(3);
  const CNuTriagEqu waves;
  const CNuAlgEqu equation;
  const CNuInterpolation curve(ArrayWith(1), ArrayWith(1));
  const CNuInterpolation2D grid(ArrayWith(1), ArrayWith(1), CNuMatrix(5, 5));
  Check({NU_OF_X(quadratic(1).ValueAt(x)),
         NU_OF_X(quadratic(1).DerivativeAt(x)),
         NU_OF_X((quadratic(x) * quadratic(1)).ValueAt(2)),
         NU_OF_X(Changed(line, [&](auto& p) { p.Fit(ArrayWith(x), ArrayWith(1)); }).ValueAt(1)),
         NU_OF_X(Changed(line, [&](auto& p) { p.Fit(ArrayWith(1), ArrayWith(x)); }).ValueAt(1)),
         NU_OF_X(Changed(cubic, [&](auto& p) { p.FitMinMax(x, 1, std::sin); }).ValueAt(0.9)),
         NU_OF_X(Changed(cubic, [&](auto& p) { p.FitMinMax(0, 1, std::sin); }).ValueAt(x)),
         NU_OF_X(Changed(cubic, [&](auto& p) { p.FitMinMax(0, 1, std::sin); }).DerivativeAt(x)),
         NU_OF_X(Changed(equation, [&](auto& e) { e.Solve(quadratic(-x)); }).GetRealRoots().Sum()),
         NU_OF_X(SumOf(Changed(equation, [&](auto& e) { e.Solve(complex(x)); }).GetComplexRoots())),
         NU_OF_X(Changed(waves, [&](auto& e) { e.Solve(CNuTriag(1, x, 0)); }).GetRoots().Sum()),
         NU_OF_X(CNuTriag(1, 2, x).ValueAt(1)),
         NU_OF_X(CNuTriag(1, 2, 3).DerivativeAt(x)),
         NU_OF_X(CNuTriag(x, 0, 0).Phase()),
         NU_OF_X(CNuTriag(0, x, 0).Phase()),
         NU_OF_X(CNuTriag(x, 0, 0).Amplitude()),
         NU_OF_X(CNuTriagPolynomial(CNuTriag(1, x, 3)).ValueAt(x)),
         NU_OF_X(CNuIntegral().Calculate(std::cos, x, 1, 1e-9)),
         NU_OF_X(CNuIntegral().Calculate(std::cos, 0, x, 1e-9)),
         NU_OF_X(CNuIntegral2D().Calculate(std::pow, 1, 2, x, 1, 1e-6)),
         NU_OF_X(curve.Linear(x)),
         NU_OF_X(curve.Spline(x)),
         NU_OF_X(curve.Polynomial(x, nullptr)),
         NU_OF_X(grid.Bilinear(x, 0)),
         NU_OF_X(grid.Bicubic(0, x)),
         NU_OF_X(CNuInterpolation(ArrayWith(1), ArrayWith(x)).Linear(-0.5))});
}

}  // namespace
