#include "nu/numerics/triag_equ.h"

#include <cmath>
#include <utility>
#include <vector>

#include "nu/engine/roots/trig_roots.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/numerics/triag.h"
#include "nu/numerics/triag_polynomial.h"

using namespace nu::internal;

namespace {

constexpr const char* kSolve = "CNuTriagEqu::Solve()";

// Exact for equal values.
double Mean(const CNuDoubleArray& values) {
  double sum = 0.0;
  for (int i = 0; i < values.GetSize(); ++i) sum += values[i] - values[0];
  return values[0] + sum / values.GetSize();
}

}  // namespace

CNuTriagEqu::CNuTriagEqu() : CNuTrigonometry(NuTypeTriagEqu), m_roots(0) {}
CNuTriagEqu::CNuTriagEqu(const CNuTriagEqu& other) = default;
CNuTriagEqu::CNuTriagEqu(CNuTriagEqu&& other) noexcept = default;
CNuTriagEqu& CNuTriagEqu::operator=(const CNuTriagEqu& other) = default;
CNuTriagEqu& CNuTriagEqu::operator=(CNuTriagEqu&& other) noexcept = default;
CNuTriagEqu::~CNuTriagEqu() = default;

void CNuTriagEqu::Solve(const CNuTriagPolynomial& p) {
  Store(p.GetCosData(), p.GetSinData(), p.GetDegree());
}

void CNuTriagEqu::Solve(const CNuTriag& t) {
  double cosines[2];
  double sines[2];
  t.GetData(&cosines[1], &sines[1], &cosines[0]);
  Store(cosines, sines, 1);
}

void CNuTriagEqu::Store(const double* cosines, const double* sines, int degree) {
  for (int k = 0; k <= degree; ++k) {
    if (!std::isfinite(cosines[k]) || (k > 0 && !std::isfinite(sines[k])))
      FailOperation(NuOperationFailed, "calculation", kSolve);
  }
  WithMemory(kSolve, [&] {
    const std::vector<double> found = TrigRoots(cosines, sines, degree);
    CNuDoubleArray roots(static_cast<int>(found.size()));
    for (const double root : found) roots.Add(root);
    m_roots = std::move(roots);
  });
}

// The walk starts behind a gap that is no link, if there is one, so that no run goes across its end.
CNuDoubleArray CNuTriagEqu::GetDistinctRoots(double tol) const {
  const int count = m_roots.GetSize();
  const double* root = m_roots.GetData();
  const auto linked = [&](int i) {
    return (i > 0 ? root[i] - root[i - 1] : root[0] + Nu_2PI - root[count - 1]) <= tol;
  };
  int start = 0;
  while (start < count && linked(start)) ++start;
  if (start == count) start = 0;

  CNuDoubleArray run(count);
  CNuDoubleArray distinct(count);
  for (int i = start; i < start + count; ++i) {
    run.Add(i < count ? root[i] : root[i - count] + Nu_2PI);
    if (i + 1 < start + count && linked((i + 1) % count)) continue;
    const double mean = Mean(run);
    distinct.Add(mean < Nu_2PI ? mean : mean - Nu_2PI);
    run.Clear();
  }
  distinct.Sort();
  return distinct;
}
