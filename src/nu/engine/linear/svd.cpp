#include "nu/engine/linear/svd.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/householder.h"
#include "nu/engine/linear/rotations.h"
#include "nu/engine/linear/row_kernels.h"
#include "nu/engine/linear/tall_factor.h"

namespace nu::engine::linear {
namespace {

// The count starts at 1: sweep 124 must not be needed.
constexpr int kSweeps = 124;
constexpr int kSmall = 16;

// The upper bidiagonal form of the padded n x n block a: diagonal d, e[i] between i and i + 1. Row k of left and right
// becomes the vector of the k-th reflection of columns and rows. The update of a step, a -= f y^T + g v^T, is made in
// the first of the two passes of the next step.
struct Bidiagonal {
  double* d;
  double* e;
  double* left;
  double* right;
  double* leftTau;
  double* rightTau;
};

void Bidiagonalise(double* a, int n, int ld, const Bidiagonal& b, double* work) {
  double* y = work;
  double* g = work + ld;
  double* zero = work + 2 * ld;
  double* product = work + 3 * ld;
  std::fill_n(work, 3 * ld, 0.0);
  const double* f = zero;
  const double* v = zero;
  for (int k = 0; k < n; ++k) {
    double* row = a + static_cast<std::ptrdiff_t>(k) * ld;
    double* u = b.left + static_cast<std::ptrdiff_t>(k) * ld;
    std::fill_n(u, ld, 0.0);
    for (int i = k; i < n; ++i) u[i] = a[static_cast<std::ptrdiff_t>(i) * ld + k] - (f[i] * y[k] + g[i] * v[k]);
    b.e[k] = 0.0;
    if (k == n - 1) {
      b.d[k] = u[k];
      break;
    }
    const Reflection columnStep = MakeReflection(u + k, n - k);
    b.d[k] = columnStep.beta;
    b.leftTau[k] = columnStep.tau;

    const int from = (k + 1) / kLanes * kLanes;
    std::fill_n(product, ld, 0.0);
    UpdateAndSum(a, ld, k, n, from, ld, f, y, g, v, u, product);
    f = u;
    for (int j = k + 1; j < n; ++j) y[j] = columnStep.tau * product[j];
    std::fill_n(y, k + 1, 0.0);

    double* own = b.right + static_cast<std::ptrdiff_t>(k) * ld;
    std::fill_n(own, ld, 0.0);
    for (int j = k + 1; j < n; ++j) own[j] = row[j] - y[j];
    if (k == n - 2) {
      b.e[k] = own[k + 1];
      own[k + 1] = 0.0;
      v = zero;
      std::fill_n(g, ld, 0.0);
      continue;
    }
    const Reflection rowStep = MakeReflection(own + k + 1, n - k - 1);
    b.e[k] = rowStep.beta;
    b.rightTau[k] = rowStep.tau;
    v = own;
    DotRows(a, ld, k + 1, n, from, ld, v, g);
    const double overlap = Dot(y + k + 1, v + k + 1, n - k - 1);
    for (int i = k + 1; i < n; ++i) g[i] = rowStep.tau * (g[i] - u[i] * overlap);
  }
}

struct Rotor {
  double c = 1.0;
  double s = 0.0;
  double r = 0.0;
};

// Returns the rotation with c * f + s * h = r and c * h - s * f = 0.
Rotor MakeRotor(double f, double h) {
  const double squares = f * f + h * h;
  if (!(squares > kNegligibleSquares)) return {};
  const double r = std::sqrt(squares);
  return {f / r, h / r, r};
}

// Diagonalises the bidiagonal form by QR sweeps with implicit shifts; the rotations go to the rows of U^T and V^T.
class BidiagonalQr {
 public:
  BidiagonalQr(double* d, double* e, double zero, RotationQueue& left, RotationQueue& right)
      : m_d(d), m_e(e), m_zero(zero), m_left(left), m_right(right) {}

  bool Run(int n) {
    for (int i = 0; i < n; ++i) m_norm = std::max(m_norm, std::fabs(m_d[i]) + (i > 0 ? std::fabs(m_e[i - 1]) : 0.0));
    for (int last = n - 1; last >= 0; --last) {
      for (int sweep = 1;; ++sweep) {
        const int first = FindStart(last);
        if (first == last) break;
        if (sweep == kSweeps) return false;
        if (first + 1 == last) {
          SolvePair(first);
        } else {
          Sweep(first, last);
        }
      }
    }
    return true;
  }

 private:
  // The element is negligible when adding it does not change the norm, or when it is below `zero`.
  bool IsNegligible(double x) const {
    const double change = std::fabs((std::fabs(x) + m_norm) - m_norm);
    return change == 0.0 || change < m_zero * m_norm;
  }

  // Returns the first index of the unreduced block that ends at `last`.
  int FindStart(int last) {
    int first = last;
    for (; first > 0; --first) {
      if (IsNegligible(m_e[first - 1])) {
        m_e[first - 1] = 0.0;
        break;
      }
      if (IsNegligible(m_d[first - 1])) {
        Decouple(first - 1, last);
        break;
      }
    }
    return first;
  }

  // The diagonal element of the row is zero: rotations with the rows below move its superdiagonal element out to the
  // right.
  void Decouple(int row, int last) {
    double f = m_e[row];
    m_e[row] = 0.0;
    for (int i = row + 1; i <= last && !IsNegligible(f); ++i) {
      const Rotor t = MakeRotor(m_d[i], f);
      m_d[i] = t.r;
      m_left.Rotate(i, row, t.c, t.s);
      f = -t.s * m_e[i];
      m_e[i] *= t.c;
    }
  }

  // The first column of B^T B - shift I, divided by the first diagonal element; the shift is an eigenvalue of the last
  // 2 x 2 block.
  double ShiftedStart(int first, int last) const {
    const double x = m_d[first];
    const double y = m_d[last - 1];
    const double z = m_d[last];
    const double g = last - 1 > first ? m_e[last - 2] : 0.0;
    const double h = m_e[last - 1];
    const double ratio = ((y - z) * (y + z) + (g - h) * (g + h)) / (2.0 * h * y);
    const double root = std::sqrt(ratio * ratio + 1.0);
    return ((x - z) * (x + z) + h * (y / (ratio + std::copysign(root, ratio)) - h)) / x;
  }

  // Diagonalises a 2 x 2 block: a rotation from the left makes it symmetric, one from both sides diagonal.
  void SolvePair(int first) {
    const double f = m_d[first];
    const double g = m_e[first];
    const double h = m_d[first + 1];
    const Rotor l = MakeRotor(f + h, -g);
    const double p = l.c * f;
    const double q = -l.s * f;
    const double w = l.c * h - l.s * g;
    const double ratio = (w - p) / (2.0 * q);
    const double t = q == 0.0 ? 0.0 : std::copysign(1.0, ratio) / (std::fabs(ratio) + std::sqrt(ratio * ratio + 1.0));
    const double c = 1.0 / std::sqrt(t * t + 1.0);
    const double s = t * c;
    m_d[first] = p - t * q;
    m_d[first + 1] = w + t * q;
    m_e[first] = 0.0;
    m_right.Rotate(first, first + 1, c, -s);
    m_left.Rotate(first, first + 1, c * l.c + s * l.s, c * l.s - s * l.c);
  }

  void Sweep(int first, int last) {
    Rotation* left = m_left.Take(last - first);
    Rotation* right = m_right.Take(last - first);
    double f = ShiftedStart(first, last);
    double h = m_e[first];
    double diagonal = m_d[first];
    double coupling = m_e[first];
    for (int i = first; i < last; ++i) {
      const Rotor r = MakeRotor(f, h);
      if (i > first) m_e[i - 1] = r.r;
      *right++ = {r.c, r.s, i, i + 1};
      const double above = r.c * coupling - r.s * diagonal;
      const double below = m_d[i + 1];
      const Rotor l = MakeRotor(r.c * diagonal + r.s * coupling, r.s * below);
      m_d[i] = l.r;
      *left++ = {l.c, l.s, i, i + 1};
      f = l.c * above + l.s * (r.c * below);
      diagonal = l.c * (r.c * below) - l.s * above;
      h = l.s * m_e[i + 1];
      coupling = l.c * m_e[i + 1];
    }
    m_e[last - 1] = f;
    m_d[last] = diagonal;
  }

  double* m_d;
  double* m_e;
  double m_norm = 0.0;
  double m_zero;
  RotationQueue& m_left;
  RotationQueue& m_right;
};

// Decomposes the square block a, scaled to the working size: d >= 0, U^T replaces a, V^T goes to vt.
bool DecomposeSquare(double* a, double* vt, double* d, int n, int width, double zero) {
  const std::size_t block = static_cast<std::size_t>(n) * width;
  Workspace<2 * kSmall * kSmall + 7 * kSmall> work(2 * block + 7 * static_cast<std::size_t>(width));
  const Bidiagonal b = {d, work.Take(width), work.Take(block), work.Take(block), work.Take(width), work.Take(width)};
  Bidiagonalise(a, n, width, b, work.Take(4 * static_cast<std::size_t>(width)));
  FormTransposedProduct(b.left, width, b.leftTau, n - 1, 0, a, width, n);
  FormTransposedProduct(b.right, width, b.rightTau, std::max(n - 2, 0), 1, vt, width, n);
  RotationStore leftStore(n);
  RotationStore rightStore(n);
  RotationQueue left(a, width, width, leftStore);
  RotationQueue right(vt, width, width, rightStore);
  if (!BidiagonalQr(d, b.e, zero, left, right).Run(n)) return false;
  left.Flush();
  right.Flush();
  for (int k = 0; k < n; ++k) {
    if (!std::signbit(d[k])) continue;
    d[k] = -d[k];
    double* row = vt + static_cast<std::ptrdiff_t>(k) * width;
    for (int j = 0; j < n; ++j) row[j] = -row[j];
  }
  return true;
}

void StoreValues(const double* d, int n, double scale, double cut, double* w) {
  const double floor = cut * *std::max_element(d, d + n);
  for (int j = 0; j < n; ++j) w[j] = d[j] < floor ? 0.0 : d[j] / scale;
}

}  // namespace

bool DecomposeSingular(double* a, int rows, int columns, std::ptrdiff_t ld, double* w, double* v, std::ptrdiff_t ldv,
                       double tolerance, double zero) {
  const BlockSize size = MeasureBlock(a, rows, columns, ld);
  if (!size.finite) return false;
  const double scale = ScaleToWorkingSize(size.largest);
  const int n = columns;
  const int width = Padded(n);
  const std::size_t block = static_cast<std::size_t>(n) * width;
  Workspace<2 * kSmall * kSmall + kSmall> work(2 * block + width);
  double* square = work.Take(block);
  double* vt = work.Take(block);
  double* d = work.Take(width);
  const double cut = tolerance * std::max(rows, columns);
  std::fill_n(square, block, 0.0);

  if (rows > columns) {
    TallFactor tall(a, rows, columns, ld);
    tall.Reduce(scale, square, width);
    if (!DecomposeSquare(square, vt, d, n, width, zero)) return false;
    tall.Expand(square, width);
  } else {
    // Missing rows are filled with zeros.
    for (int i = 0; i < rows; ++i)
      for (int j = 0; j < n; ++j) square[static_cast<std::ptrdiff_t>(i) * width + j] = scale * a[i * ld + j];
    if (!DecomposeSquare(square, vt, d, n, width, zero)) return false;
    RowsToColumns(square, width, nullptr, nullptr, n, rows, a, ld);
  }
  StoreValues(d, n, scale, cut, w);
  RowsToColumns(vt, width, nullptr, nullptr, n, n, v, ldv);
  return true;
}

}  // namespace nu::engine::linear
