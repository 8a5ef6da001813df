// Twenty calls that stand for what hosts ask, for compare_counts.sh, which counts the instructions of `Counted`. The
// names are printed in the order of the calls.

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "../inputs.h"
#include "nu/curves/circle.h"
#include "nu/curves/ellipse.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/int_array.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/linalg/linear_equ_sys.h"
#include "nu/numerics/alg_equ.h"
#include "nu/numerics/polynomial.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"

namespace {

struct Call {
  std::string name;
  std::function<void()> run;
};

constexpr int kPoints = 1000;
constexpr int kManyPoints = 100'000;
constexpr int kRows = 10;
constexpr long kSteps = 1000;
constexpr double kTol = 1e-9;

class Calls {
 public:
  const std::vector<Call>& All() const { return m_calls; }

  void AddLeastSquares() {
    double form = 0.0, squares = 0.0;
    Add("LS plane 1000", bench::Plate(kPoints), [=](const auto& p) mutable { CNuPlane().Fit(p, &form, &squares); });
    Add("LS line 1000", bench::Edge(kPoints), [=](const auto& p) mutable { CNuLine().Fit(p, &form, &squares); });
    Add("LS circle 16", bench::Bore(16),
        [=](const auto& p) mutable { CNuCircle(1.0).Fit(p, &form, &squares, kSteps); });
    Add("LS circle 1000", bench::Bore(kPoints),
        [=](const auto& p) mutable { CNuCircle(1.0).Fit(p, &form, &squares, kSteps); });
    Add("LS sphere 100000", bench::Dome(kManyPoints),
        [=](const auto& p) mutable { CNuSphSurf(1.0).Fit(p, &form, &squares, kSteps); });
    Add("LS cylinder 1000", bench::Shaft(kPoints),
        [=](const auto& p) mutable { CNuCylSurf(1.0).Fit(p, &form, &squares, kSteps); });
    Add("LS cone 100000", bench::Taper(kManyPoints),
        [=](const auto& p) mutable { CNuConSurf(30.0).Fit(p, &form, &squares, kSteps); });
    Add("LS ellipse 1000", bench::Oval(kPoints),
        [=](const auto& p) mutable { CNuEllipse(2.0, 1.0).Fit(p, &form, &squares, kSteps); });
  }

  void AddZones() {
    double form = 0.0;
    Add("zone of a plane 1000", bench::Plate(kPoints),
        [=](const auto& p) mutable { CNuPlane().FitMinZone(p, &form, kTol); });
    Add("zone of a circle 1000", bench::Ring(kPoints),
        [=](const auto& p) mutable { CNuCircle(1.0).FitMinZone(p, &form, kTol, kSteps); });
    Add("zone of a cylinder 1000", bench::Shaft(kPoints),
        [=](const auto& p) mutable { CNuCylSurf(1.0).FitMinZone(p, &form, kTol, kSteps); });
    Add("enclosing sphere 1000", bench::Ball(kPoints), [](const auto& p) { CNuSphSurf(1.0).FitMin(p, kTol); });
  }

  void AddPointSets() {
    Add("hull 1000", bench::Disk(kPoints), [](const auto& p) {
      CNuIntArray hull(0);
      p.ConvexHull(&hull);
    });
    int i = 0, j = 0;
    Add("longest edge 100000", bench::Ball(kManyPoints), [=](const auto& p) mutable { p.MaxEdge(&i, &j); });
    Add("duplicates 1000", bench::WithCopies(kPoints),
        [](const auto& p) { CNuPointArray(p).RemoveDuplicate(bench::kCopy); });
  }

  void AddAlgebra() {
    const CNuMatrix square = bench::ToMatrix(bench::RandomBlock(kRows, kRows, 1));
    const CNuMatrix symmetric = bench::ToMatrix(bench::Symmetric(kRows, 2));
    const bench::System tall = bench::NoisySystem(kPoints, 4, 1e-3, [](int k) { return k + 1.0; });
    const CNuVector right = bench::ToVector(std::vector<double>(kRows, 1.0));
    m_calls.push_back({"system 10", [=] { CNuLinearEquSys(0).Solve(square, right); }});
    m_calls.push_back({"tall system 1000 x 4",
                       [a = bench::ToMatrix(tall.a), b = bench::ToVector(tall.b)] { CNuLinearEquSys(1).Solve(a, b); }});
    m_calls.push_back({"singular values 10", [=] {
                         CNuMatrix u(square), v;
                         CNuVector w;
                         u.SVD(&w, &v);
                       }});
    m_calls.push_back({"symmetric eigenvectors 10", [=] {
                         ENuStatus status{};
                         CNuVector w;
                         CNuMatrix v;
                         symmetric.EigenValuesVectors(&status, &w, &v);
                       }});
    CNuPolynomial polynomial(kRows);
    for (int k = 0; k <= kRows; ++k) polynomial[k] = 1.0 + k * (k % 3 - 1.0);
    m_calls.push_back({"roots 10", [=] { CNuAlgEqu().Solve(polynomial); }});
  }

 private:
  template<class Run>
  void Add(const char* name, const bench::Cloud& cloud, Run run) {
    m_calls.push_back({name, [points = bench::ToPoints(cloud), run]() mutable { run(points); }});
  }

  std::vector<Call> m_calls;
};

}  // namespace

// Collected by name; nothing else is counted.
extern "C" __attribute__((noinline)) void Counted(const Call& call) {
  call.run();
}

int main() {
  Calls calls;
  calls.AddLeastSquares();
  calls.AddZones();
  calls.AddPointSets();
  calls.AddAlgebra();
  for (const Call& call : calls.All()) {
    call.run();  // what the first call prepares is not counted
    Counted(call);
    std::printf("%s\n", call.name.c_str());
  }
  return 0;
}
