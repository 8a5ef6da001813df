#include "nu/engine/linear/complex_schur.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "nu/engine/linear/householder.h"

namespace nu::engine::linear {
namespace {

// After this many sweeps without an eigenvalue the shift is replaced, and only the norm decides what is negligible.
constexpr int kPatience = 10;
constexpr int kSweepsPerValue = 30;
// Small matrices may take the sweeps of this many eigenvalues.
constexpr int kFewValues = 10;
// Any shift of the size of a subdiagonal element ends a cycle; the constant is that of Martin, Peters and Wilkinson.
constexpr double kExceptionalShift = 0.75;
constexpr double kRoundoff = 0.5 * DBL_EPSILON;
// The number of packs of a row that are rotated together while the chain of rotations moves down the rows.
constexpr int kStrip = 4;

// Returns the eigenvalue of (a b; c d) that is nearest to d. The elements are scaled to size 1: the shift of a sweep
// may be rounded, but must not overflow.
Complex NearestEigenvalue(Complex a, Complex b, Complex c, Complex d) {
  const double scale = std::max({Size(a - d), Size(b), Size(c)});
  if (!(scale > 0.0)) return d;
  const double inverse = 1.0 / scale;
  const Complex half = 0.5 * inverse * (a - d);
  const Complex product = (inverse * b) * (inverse * c);
  Complex root = SquareRoot(half * half + product);
  if (half.re * root.re + half.im * root.im < 0.0) root = -1.0 * root;
  const Complex sum = half + root;
  const double squares = Squares(sum);
  if (!(squares > 0.0)) return d;
  // The quotient is formed before it is scaled, as the inverse of small squares may overflow.
  const Complex quotient = product * Conjugate(sum);
  return d - scale * Complex{quotient.re / squares, quotient.im / squares};
}

// Returns the rotation that maps (x, y) to (r, 0). A part that is negligible beside the working size counts as 0.
NU_ALWAYS_INLINE ComplexRotation MakeRotation(Complex x, Complex y, Complex& r) {
  const double ySquares = Squares(y);
  if (!(ySquares > kNegligibleSquares)) {
    r = x;
    return {1.0, {0.0, 0.0}};
  }
  const double xSquares = Squares(x);
  const double length = std::sqrt(xSquares + ySquares);
  if (!(xSquares > kNegligibleSquares)) {
    r = {length, 0.0};
    return {0.0, (1.0 / length) * Conjugate(y)};
  }
  const double xSize = std::sqrt(xSquares);
  r = (length / xSize) * x;
  return {xSize / length, (1.0 / (xSize * length)) * (x * Conjugate(y))};
}

NU_ALWAYS_INLINE void Rotate(const ComplexRotation& g, ComplexPack& x, ComplexPack& y) {
  const ComplexPack old = x;
  x.re = g.c * x.re;
  x.im = g.c * x.im;
  AddMultiple(x, g.s, y);
  y.re = g.c * y.re;
  y.im = g.c * y.im;
  AddMultiple(y, {-g.s.re, g.s.im}, old);
}

NU_ALWAYS_INLINE void RotateRows(const ComplexRows& t, int k, int to, const ComplexRotation& g) {
  double* upper = t.Row(k);
  double* lower = t.Row(k + 1);
  for (int j = k / kLanes * kLanes; j < to; j += kLanes) {
    ComplexPack x, y;
    Load(upper + j, t.width, x);
    Load(lower + j, t.width, y);
    Rotate(g, x, y);
    Store(x, upper + j, t.width);
    Store(y, lower + j, t.width);
  }
}

// Multiplies columns k and k + 1 of one row by the conjugate transpose of the rotation.
NU_ALWAYS_INLINE void RotateElements(const ComplexRows& t, int i, int k, const ComplexRotation& g) {
  double* re = t.Row(i) + k;
  double* im = re + t.width;
  const Complex x = {re[0], im[0]};
  const Complex y = {re[1], im[1]};
  const Complex left = g.c * x + Conjugate(g.s) * y;
  const Complex right = g.c * y - g.s * x;
  re[0] = left.re;
  im[0] = left.im;
  re[1] = right.re;
  im[1] = right.im;
}

// Sweeps over the rows first .. last. Rotation k, which goes to rotation[k - first], is applied to rows k and k + 1 up
// to column `to`, and to those elements of the two columns on which the next rotation depends. RotateColumns applies it
// to the rest of the columns.
NU_KERNEL void Sweep(const ComplexRows& t, int first, int last, int to, Complex shift, ComplexRotation* rotation) {
  for (int k = first; k < last; ++k) {
    const int column = std::max(k - 1, first);
    Complex x = {t.Re(k, column), t.Im(k, column)};
    const Complex y = {t.Re(k + 1, column), t.Im(k + 1, column)};
    if (k == first) x = x - shift;
    Complex r;
    const ComplexRotation g = MakeRotation(x, y, r);
    RotateRows(t, k, to, g);
    if (k > first) {
      t.Re(k, column) = r.re;
      t.Im(k, column) = r.im;
      t.Re(k + 1, column) = 0.0;
      t.Im(k + 1, column) = 0.0;
    }
    RotateElements(t, k + 1, k, g);
    if (k + 2 <= last) RotateElements(t, k + 2, k, g);
    rotation[k - first] = g;
  }
}

// Gather takes one element from each of kLanes rows, Scatter puts it back.
NU_ALWAYS_INLINE void Gather(const double* from, std::ptrdiff_t ld, int width, ComplexPack& pack) {
  for (int l = 0; l < kLanes; ++l) {
    pack.re[l] = from[l * ld];
    pack.im[l] = from[l * ld + width];
  }
}
NU_ALWAYS_INLINE void Scatter(const ComplexPack& pack, double* to, std::ptrdiff_t ld, int width) {
  for (int l = 0; l < kLanes; ++l) {
    to[l * ld] = pack.re[l];
    to[l * ld + width] = pack.im[l];
  }
}

// Rotates columns first .. last of kLanes rows at a time: in one row alone every rotation waits for the one before.
NU_ALWAYS_INLINE void RotateStrip(double* row, int width, int first, int last, const ComplexRotation* rotation) {
  const std::ptrdiff_t ld = 2 * width;
  ComplexPack x = {};
  ComplexPack y = {};
  Gather(row + first, ld, width, x);
  for (int k = first; k < last; ++k) {
    const ComplexRotation& g = rotation[k - first];
    Gather(row + k + 1, ld, width, y);
    Rotate({g.c, Conjugate(g.s)}, x, y);
    Scatter(x, row + k, ld, width);
    x = y;
  }
  Scatter(x, row + last, ld, width);
}

// Finishes the columns of a sweep: row i still lacks the rotations from max(i, first) on.
NU_KERNEL void RotateColumns(const ComplexRows& t, int top, int first, int last, const ComplexRotation* rotation) {
  for (int i0 = top; i0 < last; i0 += kLanes) {
    const int end = std::min(i0 + kLanes, last);
    const bool whole = end == i0 + kLanes;
    const int common = whole ? std::max(end - 1, first) : last;
    for (int i = i0; i < end; ++i)
      for (int k = std::max(i, first); k < common; ++k) RotateElements(t, i, k, rotation[k - first]);
    if (whole) RotateStrip(t.Row(i0), t.width, common, last, rotation + (common - first));
  }
}

// Applies a chain of rotations to rows first, first + 1, ... of zT, which hold columns of Z and are rotated as the
// columns of T.
template<int kPacks>
NU_ALWAYS_INLINE void RotateChain(double* block, std::ptrdiff_t ld, int width, const ComplexRotation* rotation,
                                  int first, int count) {
  double* row = block + first * ld;
  ComplexPack carried[kPacks];
  for (int p = 0; p < kPacks; ++p) Load(row + p * kLanes, width, carried[p]);
  for (int k = 0; k < count; ++k, row += ld) {
    const ComplexRotation g = {rotation[k].c, {rotation[k].s.re, -rotation[k].s.im}};
    for (int p = 0; p < kPacks; ++p) {
      ComplexPack y;
      Load(row + ld + p * kLanes, width, y);
      Rotate(g, carried[p], y);
      Store(carried[p], row + p * kLanes, width);
      carried[p] = y;
    }
  }
  for (int p = 0; p < kPacks; ++p) Store(carried[p], row + p * kLanes, width);
}

// Collects the rotations of several sweeps for the rows of zT, and applies them strip by strip, so that each strip
// stays in the first-level cache.
class WaitingRotations {
 public:
  WaitingRotations(const ComplexRows* zT, int n, ComplexRotation* room)
      : m_zT(zT), m_room(room), m_capacity(static_cast<int>(kWaitingSweeps) * n) {}

  // Reserves room for the rotations of the rows first .. last.
  ComplexRotation* Take(int first, int last) {
    if (m_chains == static_cast<int>(kWaitingSweeps) || m_used + last - first > m_capacity) Flush();
    m_chain[m_chains++] = {first, last - first};
    ComplexRotation* room = m_room + m_used;
    m_used += last - first;
    return room;
  }
  void Flush() {
    if (m_zT != nullptr) Apply(*m_zT, m_room, m_chain, m_chains);
    m_chains = 0;
    m_used = 0;
  }

 private:
  struct Chain {
    int first, count;
  };

  template<int kPacks>
  NU_ALWAYS_INLINE static void ApplyStrip(double* strip, const ComplexRows& zT, const ComplexRotation* rotation,
                                          const Chain* chain, int chains) {
    for (int c = 0; c < chains; rotation += chain[c++].count)
      RotateChain<kPacks>(strip, 2 * zT.width, zT.width, rotation, chain[c].first, chain[c].count);
  }
  NU_KERNEL static void Apply(const ComplexRows& zT, const ComplexRotation* rotation, const Chain* chain, int chains) {
    int j = 0;
    for (; j + kStrip * kLanes <= zT.width; j += kStrip * kLanes)
      ApplyStrip<kStrip>(zT.data + j, zT, rotation, chain, chains);
    for (; j < zT.width; j += kLanes) ApplyStrip<1>(zT.data + j, zT, rotation, chain, chains);
  }

  const ComplexRows* m_zT;
  ComplexRotation* m_room;
  int m_capacity;
  int m_chains = 0;
  int m_used = 0;
  Chain m_chain[kWaitingSweeps];
};

class SchurIteration {
 public:
  SchurIteration(const ComplexRows& t, bool wantsForm, const ComplexRows* zT, ComplexRotation* room)
      : m_t(t), m_wantsForm(wantsForm), m_waiting(zT, t.rows, room) {
    double squares = 0.0;
    for (int i = 0; i < t.rows; ++i)
      for (int j = std::max(i - 1, 0); j < t.rows; ++j) squares += Squares(At(i, j));
    m_norm = std::sqrt(squares);
  }

  bool Run() {
    int left = kSweepsPerValue * std::max(m_t.rows, kFewValues);
    int sweeps = 0;  // for the value at `last`
    for (int last = m_t.rows - 1; last > 0;) {
      const int first = FindStart(last, sweeps < kPatience);
      if (first == last) {
        --last;
        sweeps = 0;
        continue;
      }
      if (left-- == 0) return false;
      const Complex shift = ChooseShift(first, last, sweeps++);
      const int to = m_wantsForm ? m_t.width : Padded(last + 1);
      ComplexRotation* rotation = m_waiting.Take(first, last);
      Sweep(m_t, first, last, to, shift, rotation);
      RotateColumns(m_t, m_wantsForm ? 0 : first, first, last, rotation);
    }
    m_waiting.Flush();
    return true;
  }

 private:
  Complex At(int i, int j) const { return {m_t.Re(i, j), m_t.Im(i, j)}; }

  int FindStart(int last, bool patient) {
    int first = last;
    while (first > 0 && !IsNegligible(first, patient)) --first;
    if (first > 0) m_t.Re(first, first - 1) = m_t.Im(first, first - 1) = 0.0;
    return first;
  }

  // Whether the subdiagonal element of row i is negligible. First it must be small beside its two neighbours on the
  // diagonal, also in the product with the element across the diagonal. Where that is never met, as for a multiple
  // eigenvalue 0 whose neighbours are rounding errors, it is compared with the norm.
  bool IsNegligible(int i, bool patient) const {
    const double lower = Size(At(i, i - 1));
    if (!(lower > kNegligible)) return true;
    if (!patient) return lower <= kRoundoff * m_norm;
    const Complex above = At(i - 1, i - 1);
    const Complex below = At(i, i);
    double near = Size(above) + Size(below);
    if (near == 0.0) near = m_norm;
    if (!(lower <= kRoundoff * near)) return false;
    const double upper = Size(At(i - 1, i));
    const double difference = Size(above - below);
    const double coupling = std::max(lower, upper);
    const double diagonal = std::max(Size(below), difference);
    const double sum = diagonal + coupling;
    return std::min(lower, upper) * (coupling / sum) <=
           kRoundoff * (std::min(Size(below), difference) * (diagonal / sum));
  }

  Complex ChooseShift(int first, int last, int sweep) const {
    const Complex corner = At(last, last);
    if (sweep % kPatience == kPatience - 1) {
      // The shift is taken in turns near the last and near the first eigenvalue of the active block.
      const bool atEnd = sweep / kPatience % 2 == 0;
      const Complex coupling = atEnd ? At(last, last - 1) : At(first + 1, first);
      return Complex{kExceptionalShift * Size(coupling), 0.0} + (atEnd ? corner : At(first, first));
    }
    return NearestEigenvalue(At(last - 1, last - 1), At(last - 1, last), At(last, last - 1), corner);
  }

  ComplexRows m_t;
  bool m_wantsForm;
  double m_norm = 0.0;
  WaitingRotations m_waiting;
};

}  // namespace

bool ReduceToSchur(const ComplexRows& h, bool wantsForm, const ComplexRows* zT, ComplexRotation* waiting) {
  return SchurIteration(h, wantsForm, zT, waiting).Run();
}

}  // namespace nu::engine::linear
