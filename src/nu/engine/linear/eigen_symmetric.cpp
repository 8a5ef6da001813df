#include "nu/engine/linear/eigen_symmetric.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "nu/engine/base/sort_index.h"
#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/householder.h"
#include "nu/engine/linear/rotations.h"
#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {
namespace {

constexpr int kIterations = 30;
constexpr int kSmall = 16;

// Reduces the padded symmetric block a to tridiagonal form: diagonal d, e[i] between i and i + 1. Row k of v becomes
// the vector of reflection k. The update of a step, a -= v w^T + w v^T, waits for the next vector: one pass over the
// memory makes it and forms the product with that vector.
void Tridiagonalise(double* a, int n, int ld, double* d, double* e, double* v, double* tau, double* work) {
  double* w = work;
  double* p = work + ld;
  std::fill_n(w, 2 * ld, 0.0);
  const double* last = w;  // the vector of the last reflection; zeros at first
  for (int k = 0; k + 2 < n; ++k) {
    double* row = a + static_cast<std::ptrdiff_t>(k) * ld;
    double* own = v + static_cast<std::ptrdiff_t>(k) * ld;
    for (int j = k; j < n; ++j) row[j] -= last[k] * w[j] + w[k] * last[j];
    d[k] = row[k];
    std::fill_n(own, ld, 0.0);
    std::copy(row + k + 1, row + n, own + k + 1);
    const Reflection h = MakeReflection(own + k + 1, n - k - 1);
    e[k] = h.beta;
    tau[k] = h.tau;
    const int from = (k + 1) / kLanes * kLanes;
    UpdateAndDot(a, ld, k + 1, n, from, ld, last, w, w, last, own, p);
    w[k] = 0.0;
    const double half = 0.5 * h.tau * h.tau * Dot(p + k + 1, own + k + 1, n - k - 1);
    for (int j = k + 1; j < n; ++j) w[j] = h.tau * p[j] - half * own[j];
    last = own;
  }
  for (int k = std::max(n - 2, 0); k < n; ++k) {
    double* row = a + static_cast<std::ptrdiff_t>(k) * ld;
    for (int j = k; j < n; ++j) row[j] -= last[k] * w[j] + w[k] * last[j];
    d[k] = row[k];
    e[k] = k + 1 < n ? row[k + 1] : 0.0;
  }
}

// Makes one QL sweep over the unreduced block first .. last and writes one rotation per step.
void SweepQl(double* d, double* e, int first, int last, Rotation* out) {
  const double spread = (d[first + 1] - d[first]) / (2.0 * e[first]);
  const double root = std::sqrt(spread * spread + 1.0);
  double upper = d[last];
  double g = upper - d[first] + e[first] / (spread + std::copysign(root, spread));
  double s = 1.0;
  double c = 1.0;
  double p = 0.0;
  for (int i = last - 1; i >= first; --i) {
    const double f = s * e[i];
    const double b = c * e[i];
    const double squares = f * f + g * g;
    if (!(squares > kNegligibleSquares)) {
      // The block has split above i + 1, where the bulge is negligible beside the working size.
      for (int k = i; k >= first; --k) *out++ = {1.0, 0.0, k, k + 1};
      e[i + 1] = 0.0;
      d[i + 1] = upper - p;
      e[last] = 0.0;
      return;
    }
    const double r = std::sqrt(squares);
    e[i + 1] = r;
    s = f / r;
    c = g / r;
    const double shifted = upper - p;
    upper = d[i];
    const double t = (upper - shifted) * s + 2.0 * c * b;
    p = s * t;
    d[i + 1] = shifted + p;
    g = c * t - b;
    *out++ = {c, -s, i, i + 1};
  }
  d[first] = upper - p;
  e[first] = g;
  e[last] = 0.0;
}

int UnreducedEnd(const double* d, const double* e, int n, int first) {
  int m = first;
  for (; m + 1 < n; ++m) {
    const double coupling = std::fabs(e[m]);
    if (!(coupling > kNegligible) || coupling <= DBL_EPSILON * 0.5 * (std::fabs(d[m]) + std::fabs(d[m + 1]))) break;
  }
  return m;
}

// Diagonalises a 2 x 2 block by the rotation that zeroes its off-diagonal element.
void SolvePair(double* d, double* e, int first, Rotation* out) {
  const double ratio = (d[first + 1] - d[first]) / (2.0 * e[first]);
  const double t = std::copysign(1.0, ratio) / (std::fabs(ratio) + std::sqrt(ratio * ratio + 1.0));
  const double c = 1.0 / std::sqrt(t * t + 1.0);
  d[first] -= t * e[first];
  d[first + 1] += t * e[first];
  e[first] = 0.0;
  *out = {c, -t * c, first, first + 1};
}

// A block may also split at its far end: in a strongly graded matrix every sweep does that, as no shift that fits the
// near end survives the rounding at the far one. This is progress as well and resets the count.
bool DiagonaliseTridiagonal(double* d, double* e, int n, RotationQueue* queue) {
  for (int first = 0; first < n; ++first) {
    int nearest = n;
    for (int iteration = 0;; ++iteration) {
      const int last = UnreducedEnd(d, e, n, first);
      if (last == first) break;
      if (last < nearest) iteration = 0;
      if (iteration == kIterations) return false;
      nearest = std::min(nearest, last);
      Rotation* out = queue->Take(last - first);
      if (last == first + 1) {
        SolvePair(d, e, first, out);
      } else {
        SweepQl(d, e, first, last, out);
      }
    }
  }
  return true;
}

// QL finds the small eigenvalues of a graded matrix first, and accurately, when they stand on top.
void PutSmallEndFirst(double* d, double* e, int n, double* rows, int ld) {
  if (!(std::fabs(d[0]) > std::fabs(d[n - 1]))) return;
  std::reverse(d, d + n);
  std::reverse(e, e + n - 1);
  for (int i = 0; i < n / 2; ++i)
    std::swap_ranges(rows + static_cast<std::ptrdiff_t>(i) * ld, rows + static_cast<std::ptrdiff_t>(i) * ld + n,
                     rows + static_cast<std::ptrdiff_t>(n - 1 - i) * ld);
}

}  // namespace

bool DecomposeSymmetric(const double* a, int n, std::ptrdiff_t ld, double* values, double* vectors,
                        std::ptrdiff_t ldv) {
  const int width = Padded(n);
  const std::size_t block = static_cast<std::size_t>(n) * width;
  Workspace<2 * kSmall * kSmall + 5 * kSmall> work(2 * block + 5 * static_cast<std::size_t>(width));
  double* t = work.Take(block);
  double* v = work.Take(block);
  double* d = work.Take(width);
  double* e = work.Take(width);
  double* tau = work.Take(width);
  double* scratch = work.Take(2 * static_cast<std::size_t>(width));
  SmallArray<int, 2 * kSmall> orders(2 * static_cast<std::size_t>(n));
  int* order = orders.Data();

  const BlockSize size = MeasureBlock(a, n, n, ld, d);
  if (!size.finite) return false;
  const double scale = ScaleToWorkingSize(size.largest);
  ChooseOrder(d, n, order);
  for (int i = 0; i < n; ++i) {
    double* row = t + static_cast<std::ptrdiff_t>(i) * width;
    for (int j = 0; j < n; ++j)
      row[j] = 0.5 * (scale * a[order[i] * ld + order[j]]) + 0.5 * (scale * a[order[j] * ld + order[i]]);
    std::fill(row + n, row + width, 0.0);
  }
  Tridiagonalise(t, n, width, d, e, v, tau, scratch);

  const bool wanted = vectors != nullptr;
  RotationStore store(n);
  RotationQueue queue(t, width, wanted ? width : 0, store);
  if (wanted) FormTransposedProduct(v, width, tau, std::max(n - 2, 0), 1, t, width, n);
  PutSmallEndFirst(d, e, n, t, width);
  if (!DiagonaliseTridiagonal(d, e, n, &queue)) return false;
  queue.Flush();
  int* sorted = order + n;
  SortIndex(n, sorted, [d](int i, int j) { return d[i] < d[j]; });
  for (int j = 0; j < n; ++j) values[j] = d[sorted[j]] / scale;
  if (wanted) RowsToColumns(t, width, sorted, order, n, n, vectors, ldv);
  return true;
}

}  // namespace nu::engine::linear
