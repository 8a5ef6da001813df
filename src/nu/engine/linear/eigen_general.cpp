#include "nu/engine/linear/eigen_general.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "nu/engine/base/complex_number.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/sort_index.h"
#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/householder.h"
#include "nu/engine/linear/matmul.h"
#include "nu/engine/linear/row_kernels.h"

// A x = lambda x for a real square matrix A, in six steps:
//
// 1. A is scaled by a power of two to the working size (householder.h). Rows and columns of a graded matrix are put in
//    descending order of their sizes, which keeps small eigenvalues accurate.
// 2. Balancing: D^-1 A D, with powers of two in D, brings each row to about the length of its column.
// 3. Hessenberg form Q^T A Q = H by reflections I - tau v v^T. With u = v and both sides at once,
//      (I - tau u u^T) A (I - tau u u^T) = A - u y^T - x u^T,
//      x = tau A u - h u,   y = tau A^T u - h u,   2 h = tau^2 u^T A u.
// 4. Real Schur form Z^T H Z = T by QR steps with two shifts. A sweep starts with the reflection that maps the first
//    column of (H - s_1 I)(H - s_2 I) to a multiple of e_1, s_1 and s_2 the eigenvalues of the last 2 x 2 block, and
//    restores the Hessenberg form with reflections of three rows. A subdiagonal element is set to 0 when
//      |t_{i,i-1}| <= eps/2 (|t_ii| + |t_{i-1,i-1}|).
//    Steps 10 and 20 without progress take exceptional shifts; 30 end the iteration.
// 5. A 2 x 2 block with real eigenvalues is split by a rotation; a complex pair remains a block.
// 6. (T - lambda I) y = 0 by back substitution, x = D Q Z y, at unit length.
//
// The result is accepted when no element of A X - X Lambda exceeds 8 n eps max |a_ij|. Otherwise steps 2 to 6 are done
// again without balancing, and then for the similar matrix M A M with a reflection M.
//
// B. N. Parlett, C. Reinsch, Numerische Mathematik 13 (1969) 293 (balancing); J. G. F. Francis, The Computer Journal 4
// (1961) 265 and (1962) 332; R. S. Martin, G. Peters, J. H. Wilkinson, Numerische Mathematik 14 (1970) 219 (QR steps);
// G. Peters, J. H. Wilkinson, Numerische Mathematik 16 (1970) 181 (vectors); G. H. Golub, C. F. Van Loan, Matrix
// Computations, 4th ed., 7.4 to 7.6.
namespace nu::engine::linear {
namespace {

constexpr int kIterations = 30;
constexpr int kExceptionalFirst = 10;
constexpr int kExceptionalSecond = 20;
constexpr int kSmall = 16;
// A balancing factor is applied when it shortens row plus column by 5 % at least.
constexpr double kBalanceGain = 0.95;
// Balancing has always ended before this number of rounds. The exponents of the factors are bounded so that their
// ratios do not overflow.
constexpr int kBalanceRounds = 60;
constexpr int kWidestBalance = 200;
// A residual above this many n eps |A| shows that balancing has magnified the rounding errors of small elements.
constexpr double kResidual = 8.0;
// A vector with a component above this is scaled down, so that the next sum cannot overflow.
constexpr double kLargeComponent = 0x1p20;

struct Square {
  double* data;
  int n;
  int width;
  double* Row(int i) const { return data + static_cast<std::ptrdiff_t>(i) * width; }
  double& At(int i, int j) const { return Row(i)[j]; }
};

// Replaces a by D^-1 a D with powers of two in D that bring each row to about the length of its column.
void Balance(const Square& a, double* factor) {
  const int n = a.n;
  std::fill_n(factor, n, 1.0);
  bool changed = true;
  for (int round = 0; changed && round < kBalanceRounds; ++round) {
    changed = false;
    for (int i = 0; i < n; ++i) {
      double row = 0.0;
      double column = 0.0;
      for (int j = 0; j < n; ++j) {
        if (j == i) continue;
        row += std::fabs(a.At(i, j));
        column += std::fabs(a.At(j, i));
      }
      if (!(row > 0.0 && column > 0.0)) continue;
      const int shift = (std::ilogb(row) - std::ilogb(column)) / 2;
      if (shift == 0 || std::abs(std::ilogb(factor[i]) + shift) > kWidestBalance) continue;
      const double f = std::ldexp(1.0, shift);
      if (!(column * f + row / f < kBalanceGain * (column + row))) continue;
      changed = true;
      factor[i] *= f;
      for (int j = 0; j < n; ++j) a.At(i, j) /= f;
      for (int j = 0; j < n; ++j) a.At(j, i) *= f;
    }
  }
}

// Reduces a to Hessenberg form; row k of v becomes the vector of reflection k. The update a -= u y^T + x u^T of a step
// waits for the next vector: one pass over the memory makes it and forms the products with that vector.
void ReduceToHessenberg(const Square& a, double* v, double* tau, double* work) {
  const int n = a.n;
  const int width = a.width;
  double* x = work;
  double* y = work + width;
  double* dot = work + 2 * width;
  double* sum = work + 3 * width;
  double* column = work + 4 * width;
  std::fill_n(work, 5 * width, 0.0);
  const double* u = x;  // zeros: there is no update yet
  for (int k = 0; k + 2 < n; ++k) {
    double* own = v + static_cast<std::ptrdiff_t>(k) * width;
    std::fill_n(own, width, 0.0);
    for (int i = 0; i < n; ++i) column[i] = a.At(i, k) - (u[i] * y[k] + x[i] * u[k]);
    std::copy(column + k + 1, column + n, own + k + 1);
    const Reflection h = MakeReflection(own + k + 1, n - k - 1);
    tau[k] = h.tau;

    std::fill_n(sum, width, 0.0);
    UpdateDotAndSum(a.data, width, 0, n, (k + 1) / kLanes * kLanes, width, u, y, x, u, own, dot, own, sum);
    column[k + 1] = h.beta;
    std::fill(column + k + 2, column + n, 0.0);
    for (int i = 0; i < n; ++i) a.At(i, k) = column[i];

    u = own;
    const double half = 0.5 * h.tau * h.tau * Dot(dot + k + 1, own + k + 1, n - k - 1);
    for (int i = 0; i < n; ++i) x[i] = h.tau * dot[i] - half * own[i];
    std::fill_n(y, k + 1, 0.0);
    for (int j = k + 1; j < n; ++j) y[j] = h.tau * sum[j] - half * own[j];
  }
  for (int i = 0; i < n; ++i)
    for (int j = std::max(n - 2, 0); j < n; ++j) a.At(i, j) -= u[i] * y[j] + x[i] * u[j];
}

// I - (x, y, z)^T (1, q, r): the reflection that moves three components into the first.
struct Reflection3 {
  double x, y, z, q, r;
};

NU_KERNEL void ReflectThreeRows(double* rows, std::ptrdiff_t ld, int from, int to, const Reflection3& h, bool three) {
  double* a = rows;
  double* b = rows + ld;
  double* c = three ? rows + 2 * ld : b;
  if (three) {
    for (int j = from; j < to; ++j) {
      const double p = a[j] + h.q * b[j] + h.r * c[j];
      a[j] -= p * h.x;
      b[j] -= p * h.y;
      c[j] -= p * h.z;
    }
    return;
  }
  for (int j = from; j < to; ++j) {
    const double p = a[j] + h.q * b[j];
    a[j] -= p * h.x;
    b[j] -= p * h.y;
  }
}

void ReflectThreeColumns(double* column, std::ptrdiff_t ld, int last, const Reflection3& h, bool three) {
  if (three) {
    for (int i = 0; i <= last; ++i, column += ld) {
      const double p = h.x * column[0] + h.y * column[1] + h.z * column[2];
      column[0] -= p;
      column[1] -= p * h.q;
      column[2] -= p * h.r;
    }
    return;
  }
  for (int i = 0; i <= last; ++i, column += ld) {
    const double p = h.x * column[0] + h.y * column[1];
    column[0] -= p;
    column[1] -= p * h.q;
  }
}

// The QR iteration on a Hessenberg matrix t, to its real Schur form; zt is the transposed product of the reflections.
class SchurIteration {
 public:
  SchurIteration(const Square& t, const Square& zt) : m_t(t), m_zt(zt) {
    double squares = 0.0;
    for (int i = 0; i < t.n; ++i)
      for (int j = std::max(i - 1, 0); j < t.n; ++j) squares += t.At(i, j) * t.At(i, j);
    m_norm = std::sqrt(squares);
  }

  bool Run() {
    for (int last = m_t.n - 1; last >= 0;) {
      const int first = Isolate(last);
      if (first < 0) return false;
      if (first + 1 == last) SplitPair(first);
      last = first - 1;
    }
    return true;
  }

 private:
  // Sweeps until the active block that ends at `last` has one or two rows, and returns its first row; -1 when there is
  // no convergence. The count of iterations starts anew with every progress: a block may split elsewhere, and the
  // subdiagonal elements of defective eigenvalues decrease, but by no more than a factor of 2 to 4 in a sweep.
  int Isolate(int last) {
    int farthest = -1;
    double smallest = m_norm;
    for (int iteration = 0;; ++iteration) {
      const int first = FindStart(last, iteration < kExceptionalFirst);
      if (first + 1 >= last) return first;
      const double reached = SmallestCoupling(first, last);
      if (first > farthest || reached < 0.5 * smallest) {
        iteration = 0;
        smallest = reached;
        farthest = first;
      }
      if (iteration == kIterations) return -1;
      Sweep(first, last, iteration == kExceptionalFirst || iteration == kExceptionalSecond);
    }
  }

  // The first row of the active block. A subdiagonal element is negligible beside its two neighbours on the diagonal.
  // Where that test is never met, as for a multiple eigenvalue 0 whose neighbours are rounding errors, it is compared
  // with the norm.
  int FindStart(int last, bool patient) {
    int first = last;
    for (; first > 0; --first) {
      double& coupling = m_t.At(first, first - 1);
      const double size = std::fabs(coupling);
      double near = std::fabs(m_t.At(first, first)) + std::fabs(m_t.At(first - 1, first - 1));
      if (near == 0.0 || !patient) near = m_norm;
      if (!(size > kNegligible) || size <= DBL_EPSILON * 0.5 * near) {
        coupling = 0.0;
        break;
      }
    }
    return first;
  }

  double SmallestCoupling(int first, int last) const {
    double smallest = m_norm;
    for (int i = first + 1; i <= last; ++i) smallest = std::min(smallest, std::fabs(m_t.At(i, i - 1)));
    return smallest;
  }

  // The two shifts are the zeros s of (s - x)(s - y) - w.
  struct Shifts {
    double x, y, w;
  };
  Shifts ChooseShifts(int last, bool exceptional) const {
    const double x = m_t.At(last, last);
    if (exceptional) {
      // The constants are those of Martin, Peters and Wilkinson; any shift of this size ends a cycle.
      const double s = std::fabs(m_t.At(last, last - 1)) + std::fabs(m_t.At(last - 1, last - 2));
      return {x + 0.75 * s, x + 0.75 * s, -0.4375 * s * s};
    }
    return {x, m_t.At(last - 1, last - 1), m_t.At(last, last - 1) * m_t.At(last - 1, last)};
  }

  // Three components with sum of magnitudes 1, so that no square overflows, and that sum; all 0 for a zero vector.
  struct Triple {
    double p, q, r, scale;
  };
  static Triple Normalised(double p, double q, double r) {
    const double scale = std::fabs(p) + std::fabs(q) + std::fabs(r);
    if (!(scale > 0.0)) return {0.0, 0.0, 0.0, 0.0};
    return {p / scale, q / scale, r / scale, scale};
  }

  Triple StartColumn(int row, const Shifts& s) const {
    const double z = m_t.At(row, row);
    const double below = m_t.At(row + 1, row);
    const double rx = s.x - z;
    const double ry = s.y - z;
    return Normalised(rx * ry - s.w + m_t.At(row, row + 1) * below, below * (m_t.At(row + 1, row + 1) - z - rx - ry),
                      below * m_t.At(row + 2, row + 1));
  }

  // A sweep may start at a row whose subdiagonal element and the one below have a negligible product.
  bool MayStartAt(int row, const Triple& t) const {
    const double u = std::fabs(m_t.At(row, row - 1)) * (std::fabs(t.q) + std::fabs(t.r));
    const double v = std::fabs(t.p) * (std::fabs(m_t.At(row - 1, row - 1)) + std::fabs(m_t.At(row, row)) +
                                       std::fabs(m_t.At(row + 1, row + 1)));
    return u <= DBL_EPSILON * 0.5 * v;
  }

  void Sweep(int first, int last, bool exceptional) {
    const Shifts shifts = ChooseShifts(last, exceptional);
    int start = last - 2;
    Triple t = StartColumn(start, shifts);
    while (start > first && !MayStartAt(start, t)) t = StartColumn(--start, shifts);
    for (int i = start + 2; i <= last; ++i) {
      m_t.At(i, i - 2) = 0.0;
      if (i > start + 2) m_t.At(i, i - 3) = 0.0;
    }
    for (int k = start; k < last; ++k) {
      const bool three = k + 1 < last;
      if (k > start) t = Normalised(m_t.At(k, k - 1), m_t.At(k + 1, k - 1), three ? m_t.At(k + 2, k - 1) : 0.0);
      if (t.scale == 0.0) continue;
      const double s = std::copysign(std::sqrt(t.p * t.p + t.q * t.q + t.r * t.r), t.p);
      if (k > start) {
        m_t.At(k, k - 1) = -s * t.scale;
        m_t.At(k + 1, k - 1) = 0.0;
        if (three) m_t.At(k + 2, k - 1) = 0.0;
      } else if (start > first) {
        m_t.At(k, k - 1) = -m_t.At(k, k - 1);
      }
      const double head = t.p + s;
      Reflect(k, std::min(last, k + 3), {head / s, t.q / s, t.r / s, t.q / head, t.r / head}, three);
    }
  }

  void Reflect(int k, int lastRow, const Reflection3& h, bool three) {
    ReflectThreeRows(m_t.Row(k), m_t.width, k, m_t.n, h, three);
    ReflectThreeColumns(m_t.data + k, m_t.width, lastRow, h, three);
    ReflectThreeRows(m_zt.Row(k), m_zt.width, 0, m_zt.width, h, three);
  }

  // Makes a 2 x 2 block with real eigenvalues triangular; a block with a complex pair remains.
  void SplitPair(int k) {
    const double a = m_t.At(k, k);
    const double b = m_t.At(k, k + 1);
    const double c = m_t.At(k + 1, k);
    const double d = m_t.At(k + 1, k + 1);
    if (c == 0.0) return;
    const double half = 0.5 * (a - d);
    const double discriminant = half * half + b * c;
    if (!(discriminant >= 0.0)) return;
    // (lambda - d, c) is an eigenvector; the root of larger size avoids cancellation.
    const double first = half + std::copysign(std::sqrt(discriminant), half);
    const double r = Hypot(first, c);
    const double cosine = first / r;
    const double sine = c / r;
    RotateRows(m_t.Row(k), m_t.width, k, m_t.n, cosine, sine);
    for (int i = 0; i <= k + 1; ++i) {
      const double left = m_t.At(i, k);
      const double right = m_t.At(i, k + 1);
      m_t.At(i, k) = cosine * left + sine * right;
      m_t.At(i, k + 1) = cosine * right - sine * left;
    }
    m_t.At(k + 1, k) = 0.0;
    RotateRows(m_zt.Row(k), m_zt.width, 0, m_zt.n, cosine, sine);
  }

  static void RotateRows(double* rows, std::ptrdiff_t ld, int from, int to, double c, double s) {
    for (int j = from; j < to; ++j) {
      const double upper = rows[j];
      const double lower = rows[ld + j];
      rows[j] = c * upper + s * lower;
      rows[ld + j] = c * lower - s * upper;
    }
  }

  Square m_t;
  Square m_zt;
  double m_norm = 0.0;
};

bool IsPair(const Square& t, int k) {
  return k + 1 < t.n && t.At(k + 1, k) != 0.0;
}

void SchurValues(const Square& t, double* real, double* imaginary) {
  for (int k = 0; k < t.n; ++k) {
    real[k] = t.At(k, k);
    imaginary[k] = 0.0;
    if (!IsPair(t, k)) continue;
    const double half = 0.5 * (t.At(k, k) - t.At(k + 1, k + 1));
    real[k] = real[k + 1] = t.At(k + 1, k + 1) + half;
    imaginary[k] = std::sqrt(-(half * half + t.At(k, k + 1) * t.At(k + 1, k)));
    imaginary[k + 1] = -imaginary[k];
    ++k;
  }
}

// Solves (T - lambda I) x = 0 by back substitution from row k up. The real part of x goes to the row `re`, the
// imaginary part, for a complex lambda, to the row `im`.
class SchurVector {
 public:
  SchurVector(const Square& t, double valueRe, double valueIm, double* re, double* im)
      : m_t(t), m_value{valueRe, valueIm}, m_re(re), m_im(im) {
    std::fill_n(re, t.width, 0.0);
    std::fill_n(im, t.width, 0.0);
  }

  void SolveReal(int k) {
    m_top = m_bottom = k;
    m_re[k] = 1.0;
    SolveAbove(k - 1);
  }

  // The block in rows k and k + 1 has a complex pair. The component that its smaller off-diagonal element multiplies
  // is set to 1.
  void SolvePair(int k) {
    m_top = k;
    m_bottom = k + 1;
    const double upper = m_t.At(k, k + 1);
    const double lower = m_t.At(k + 1, k);
    if (std::fabs(upper) >= std::fabs(lower)) {
      // Row k: (a - lambda) x_0 + upper x_1 = 0 with x_0 = 1.
      m_re[k] = 1.0;
      m_re[k + 1] = (m_value.re - m_t.At(k, k)) / upper;
      m_im[k + 1] = m_value.im / upper;
    } else {
      m_re[k + 1] = 1.0;
      m_re[k] = (m_value.re - m_t.At(k + 1, k + 1)) / lower;
      m_im[k] = m_value.im / lower;
    }
    SolveAbove(k - 1);
  }

 private:
  // The right-hand side -T(i, i+1 ..) x of row i.
  Complex RightSide(int i) const {
    const int from = m_top;
    const int count = m_bottom - from + 1;
    const double* row = m_t.Row(i) + from;
    return {-Dot(row, m_re + from, count), m_value.im != 0.0 ? -Dot(row, m_im + from, count) : 0.0};
  }

  Complex Shifted(int i) const { return {m_t.At(i, i) - m_value.re, -m_value.im}; }

  // The pivot of a multiple eigenvalue is 0 or a rounding error of its terms; it is replaced by the size of that.
  static Complex Usable(Complex pivot, double terms) {
    const double floor = DBL_EPSILON * terms + kNegligible;
    return LargerPart(pivot) < floor ? Complex{floor, 0.0} : pivot;
  }

  void SolveAbove(int i) {
    for (; i >= 0; --i) {
      if (i > 0 && m_t.At(i, i - 1) != 0.0) {
        SolveTwo(--i);
      } else {
        const double terms = std::fabs(m_t.At(i, i)) + std::fabs(m_value.re);
        Put(i, RightSide(i) / Usable(Shifted(i), terms));
        Limit(i);
      }
      m_top = i;
    }
  }

  // Solves rows i and i + 1 with their 2 x 2 block by elimination with the larger pivot.
  void SolveTwo(int i) {
    struct Row {
      Complex left, right, side;
    };
    Row upper = {Shifted(i), {m_t.At(i, i + 1), 0.0}, RightSide(i)};
    Row lower = {{m_t.At(i + 1, i), 0.0}, Shifted(i + 1), RightSide(i + 1)};
    if (LargerPart(upper.left) < LargerPart(lower.left)) std::swap(upper, lower);
    const Complex factor = lower.left / upper.left;
    const Complex product = factor * upper.right;
    const Complex pivot = Usable(lower.right - product, LargerPart(lower.right) + LargerPart(product));
    Put(i + 1, (lower.side - factor * upper.side) / pivot);
    const double scale = Limit(i + 1);
    Put(i, (scale * upper.side - upper.right * Complex{m_re[i + 1], m_im[i + 1]}) / upper.left);
    Limit(i);
  }

  void Put(int i, Complex x) {
    m_re[i] = x.re;
    m_im[i] = x.im;
  }

  // Scales the vector down when component i is large; returns the factor.
  double Limit(int i) {
    const double size = std::max(std::fabs(m_re[i]), std::fabs(m_im[i]));
    if (!(size > kLargeComponent)) return 1.0;
    const double scale = std::ldexp(1.0, -std::ilogb(size));
    for (int j = i; j <= m_bottom; ++j) {
      m_re[j] *= scale;
      m_im[j] *= scale;
    }
    return scale;
  }

  Square m_t;
  Complex m_value;
  double* m_re;
  double* m_im;
  int m_top = 0;
  int m_bottom = 0;
};

// Row k of x becomes the vector of eigenvalue k in the basis of the Schur form; a pair takes two rows.
void SchurVectors(const Square& t, const double* real, const double* imaginary, double* x, double* spare) {
  for (int k = 0; k < t.n; ++k) {
    double* row = x + static_cast<std::ptrdiff_t>(k) * t.width;
    if (IsPair(t, k)) {
      SchurVector(t, real[k], imaginary[k], row, row + t.width).SolvePair(k);
      ++k;
    } else {
      SchurVector(t, real[k], 0.0, row, spare).SolveReal(k);
    }
  }
}

// The largest element of A V - V Lambda; the rows of V^T have unit length.
double LargestResidual(const Square& a, const double* real, const double* imaginary, const double* vt,
                       double* product) {
  const int n = a.n;
  Multiply({vt, a.width}, MatrixView{a.data, a.width}.Transposed(), product, a.width, n, n, n);
  double largest = 0.0;
  for (int k = 0; k < n; ++k) {
    // The columns u, v of a pair satisfy A u = re u - im v and A v = re v + im u.
    const int partner = imaginary[k] > 0.0 ? k + 1 : k - 1;
    const double* own = vt + static_cast<std::ptrdiff_t>(k) * a.width;
    const double* other = imaginary[k] == 0.0 ? own : vt + static_cast<std::ptrdiff_t>(partner) * a.width;
    const double* image = product + static_cast<std::ptrdiff_t>(k) * a.width;
    for (int i = 0; i < n; ++i)
      largest = std::max(largest, std::fabs(image[i] - real[k] * own[i] + imaginary[k] * other[i]));
  }
  return largest;
}

// Scales the rows of vt to unit length, the two rows of a pair together.
void Normalise(const Square& vt, const double* imaginary) {
  for (int k = 0; k < vt.n; ++k) {
    const int rows = imaginary[k] > 0.0 ? 2 : 1;
    double* row = vt.Row(k);
    const double largest = MeasureBlock(row, rows, vt.n, vt.width).largest;
    if (!(largest > 0.0)) continue;
    const double scale = std::ldexp(1.0, -std::ilogb(largest));
    double squares = 0.0;
    for (int j = 0; j < rows * vt.width; ++j) {
      row[j] *= scale;
      squares += row[j] * row[j];
    }
    const double length = std::sqrt(squares);
    for (int j = 0; j < rows * vt.width; ++j) row[j] /= length;
    k += rows - 1;
  }
}

struct Work {
  double* t;
  double* v;
  double* zt;
  double* vt;
  double* rows;  // 8 padded rows
};

// The reflection I - 2 u u^T / u^T u with u = (1, 1/2, 1/3, ...), which leaves a matrix no symmetry.
struct Reflector {
  explicit Reflector(int n) {
    for (int j = 0; j < n; ++j) squares += At(j) * At(j);
  }
  static double At(int j) { return 1.0 / (j + 1); }
  double squares = 0.0;
};

void ReflectAll(const Square& a, bool rows) {
  const Reflector u(a.n);
  for (int i = 0; i < a.n; ++i) {
    const auto at = [&](int j) -> double& { return rows ? a.At(i, j) : a.At(j, i); };
    double sum = 0.0;
    for (int j = 0; j < a.n; ++j) sum += at(j) * Reflector::At(j);
    for (int j = 0; j < a.n; ++j) at(j) -= 2.0 * sum / u.squares * Reflector::At(j);
  }
}

// Ways from the matrix to its Schur form, in the order of trial. Balancing may magnify the rounding errors of small
// elements; without it the reduction is backward stable. A reflection removes the symmetries of a matrix of few
// different elements, which can keep the iteration from converging.
enum class Preparation { kBalanced, kPlain, kReflected };

// Values and unit vectors (rows of work.vt) of the scaled matrix a.
bool Decompose(const Square& a, Preparation preparation, const Work& work, double* real, double* imaginary) {
  const int n = a.n;
  const int width = a.width;
  const Square t = {work.t, n, width};
  const Square zt = {work.zt, n, width};
  const Square vt = {work.vt, n, width};
  double* factor = work.rows;
  double* tau = work.rows + width;
  double* scratch = work.rows + 2 * width;
  std::copy_n(a.data, static_cast<std::ptrdiff_t>(n) * width, t.data);
  if (preparation == Preparation::kBalanced) Balance(t, factor);
  if (preparation == Preparation::kReflected) {
    ReflectAll(t, true);
    ReflectAll(t, false);
  }
  ReduceToHessenberg(t, work.v, tau, scratch);
  FormTransposedProduct(work.v, width, tau, std::max(n - 2, 0), 1, zt.data, width, n);
  if (!SchurIteration(t, zt).Run()) return false;
  SchurValues(t, real, imaginary);
  SchurVectors(t, real, imaginary, work.v, scratch);
  Multiply({work.v, width}, {zt.data, width}, vt.data, width, n, n, n);
  for (int k = 0; k < n; ++k) {
    std::fill(vt.Row(k) + n, vt.Row(k) + width, 0.0);
    for (int j = 0; preparation == Preparation::kBalanced && j < n; ++j) vt.At(k, j) *= factor[j];
  }
  if (preparation == Preparation::kReflected) ReflectAll(vt, true);
  Normalise(vt, imaginary);
  return true;
}

}  // namespace

bool DecomposeGeneral(const double* a, int n, std::ptrdiff_t ld, double* real, double* imaginary, double* vectors,
                      std::ptrdiff_t ldv) {
  const int width = Padded(n);
  const std::size_t block = static_cast<std::size_t>(n) * width;
  Workspace<5 * kSmall * kSmall + 10 * kSmall> space(5 * block + 10 * static_cast<std::size_t>(width));
  const Square scaled = {space.Take(block), n, width};
  Work work = {space.Take(block), space.Take(block), space.Take(block), space.Take(block), nullptr};
  double* re = space.Take(width);
  double* im = space.Take(width);
  work.rows = space.Take(8 * static_cast<std::size_t>(width));
  SmallArray<int, 2 * kSmall> orders(2 * static_cast<std::size_t>(n));
  int* order = orders.Data();

  const BlockSize size = MeasureBlock(a, n, n, ld, re);
  if (!size.finite) return false;
  const double scale = ScaleToWorkingSize(size.largest);
  ChooseOrder(re, n, order);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) scaled.At(i, j) = scale * a[order[i] * ld + order[j]];
    std::fill(scaled.Row(i) + n, scaled.Row(i) + width, 0.0);
  }
  const double bound = kResidual * n * DBL_EPSILON * scale * size.largest;
  bool converged = false;
  for (Preparation preparation : {Preparation::kBalanced, Preparation::kPlain, Preparation::kReflected}) {
    converged = Decompose(scaled, preparation, work, re, im);
    if (converged && LargestResidual(scaled, re, im, work.vt, work.v) <= bound) break;
  }
  if (!converged) return false;

  int* sorted = order + n;
  SortIndex(n, sorted, [re](int i, int j) { return re[i] < re[j]; });
  for (int j = 0; j < n; ++j) {
    real[j] = re[sorted[j]] / scale;
    imaginary[j] = im[sorted[j]] / scale;
  }
  RowsToColumns(work.vt, width, sorted, order, n, n, vectors, ldv);
  return true;
}

}  // namespace nu::engine::linear
