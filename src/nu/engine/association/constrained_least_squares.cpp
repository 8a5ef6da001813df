// Least F = sum of w e^2 / (2 sum of w), where all deviations e with w > 0 may have to be on one side:
// v = max(-sign e, 0) = 0.
//
// Sequential quadratic programming with exact second derivatives: the step s minimises F + g s + s H s / 2 + mu t,
// where t >= 0 is above the linearised -sign e of a working set of points, and H is the curvature of F less that of the
// constraints weighted with their multipliers. With F / mu for F that is the quadratic program of minimax steps, whose
// rows are g / mu and, for a constraint, g / mu - sign de. Without constraints the step is Newton's. Its length is
// bounded by raising the curvature (J. J. More, D. C. Sorensen, SIAM Journal on Scientific and Statistical Computing 4,
// 1983); it is taken when F / mu + v falls by a fair part of what it promised. One that the curving of constraints
// spoils is corrected once to second order (R. Fletcher, 1982). mu is raised until t is 0 at the optimum, which it is
// for a finite mu, when the constraints can be met at all.
//
// One pass over all points per step gives F, g, H, and the points most on the wrong side, which join the working set.
// Of many points some stand for all in the part of H that the second derivatives of the deviations bring: the steps
// stay short of Newton's by a small part of that, which is small beside the rest, and g is that of all points.

#include <algorithm>
#include <memory>

#include "nu/engine/association/feature_kernels.h"
#include "nu/engine/association/scaled_fit.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/lanes.h"
#include "nu/engine/minimax/curved_minimax.h"

namespace nu::engine::association {
namespace {

constexpr int K = kUnknowns;

// A step has to bring this part of what it promised; the bound on the next one follows.
constexpr double kFairPart = 0.1;
constexpr double kGoodPart = 0.75;
constexpr double kShrink = 0.25;
constexpr double kGrow = 2.0;
// The first bound, in units of the extent of the points.
constexpr double kFirstReach = 0.25;
// The curvature is raised by such parts of its largest entry.
constexpr double kLeastDamping = 1e-12;
constexpr double kMoreDamping = 8.0;
constexpr int kMostDampings = 30;
// Steps refused in a row before none leads down.
constexpr int kMostRefusals = 40;
// The multipliers of the constraints may use up this part of mu.
constexpr double kMostShare = 0.75;
constexpr double kLeastShare = 0.05;
constexpr double kRaise = 8.0;
constexpr double kMostMu = 0x1p36;
// The errors of F and of the way over the side, in roundings.
constexpr double kNoise = 16.0;
// How far a saddle is left, in units of the extent.
constexpr double kEscape = 1e-3;

// At one place, per unit of weight.
struct Squares {
  double value = 0.0;  // F
  double gradient[K] = {};
  double curvature[K][K] = {};
  double beyond = 0.0;  // v
};

struct Candidate {
  double beyond = 0.0;
  Vec3 point;
};

// More points are summed by rows, with the second derivatives of one in so many.
constexpr std::size_t kManyPoints = 8192;
constexpr std::size_t kSampleStride = 64;

// Rows that stay in a first-level cache while they are multiplied.
constexpr std::size_t kRows = 256;
struct Rows {
  alignas(64) double column[K][kRows];
  alignas(64) double weighted[kRows];
  alignas(64) double weight[kRows];
  alignas(64) double residual[kRows];
};

// Of a multiple of kLanes.
NU_KERNEL double DotOf(const double* a, const double* b, std::size_t count) {
  Lanes sum = {};
  for (std::size_t i = 0; i < count; i += kLanes) {
    Lanes x, y;
    Load(a + i, x);
    Load(b + i, y);
    sum += x * y;
  }
  return Sum(sum);
}

NU_KERNEL void Multiply(const double* a, const double* b, std::size_t count, double* to) {
  for (std::size_t i = 0; i < count; i += kLanes) {
    Lanes x, y;
    Load(a + i, x);
    Load(b + i, y);
    x *= y;
    Store(x, to + i);
  }
}

bool HasRowKernel(FeatureKind kind) {
  return kind == FeatureKind::plane || kind == FeatureKind::circle || kind == FeatureKind::sphere ||
         kind == FeatureKind::cylinder || kind == FeatureKind::cone || kind == FeatureKind::torus;
}

// Sums over a block.
struct BlockSquares {
  double weight = 0.0;
  double value = 0.0;
  double first[K] = {};
  double second[K][K] = {};
};

// The weighted sums of one block, in the order in which they are added up.
constexpr int kSquareSums = 2 + K + K * (K + 1) / 2;

class SquaresDescent {
 public:
  SquaresDescent(const ScaledFit& fit, const Feature& start)
      : m_fit(fit),
        m_free(start.kind, fit.Free(start), fit.extent),
        m_feature(start),
        m_constrained(fit.problem.side != PointSide::either),
        m_reach(kFirstReach * fit.extent) {}

  FittedFeature Run() {
    Candidate worst[kFeatureParts];
    m_here = SumAt(m_feature, worst);
    if (!std::isfinite(m_here.value)) return Describe(FitEnd::noOptimum);
    if (m_constrained) Join(worst);
    const double rms = std::sqrt(2.0 * m_here.value);
    m_mu = m_leastMu = std::max(rms, m_fit.rounding);
    if (m_free.count == 0) m_lastLength = 0.0;
    if (m_free.count == 0)
      return Describe(m_here.beyond <= kNoise * m_fit.rounding ? FitEnd::converged : FitEnd::noOptimum);
    int refusals = 0;
    bool adapted = false;  // mu, since the last step
    while (m_steps < m_fit.problem.mostSteps) {
      ++m_steps;
      Linearise();
      FindCurvature();
      if (!FindStep()) return Describe(FitEnd::noOptimum);
      if (m_constrained && !adapted && AdaptMu()) {
        adapted = true;
        --m_steps;
        continue;
      }
      adapted = false;
      const double length = Length();
      const double predicted = PredictedGain();
      const bool damped = m_damping > 0.0;
      const bool taken = TryStep() || (m_constrained && m_joined == 0 && TryCorrectedStep());
      const bool small = length <= std::max(m_fit.rounding, m_fit.tolerance);
      const bool noise = predicted <= MeritNoise() && length >= 0.5 * m_lastLength;
      if (!m_fit.problem.monitor.GoesOn(m_steps, 2.0 * m_totalWeight * m_here.value, length))
        return Describe(FitEnd::cancelled);
      if ((small || noise) && m_joined == 0) {
        if (damped && Escape()) continue;
        m_lastLength = length;
        const bool met = m_here.beyond <= kNoise * m_fit.rounding;
        return Describe(!damped && met ? FitEnd::converged : FitEnd::noOptimum);
      }
      if (taken) {
        refusals = 0;
        m_lastLength = length;
        if (m_gain >= kGoodPart * predicted) m_reach = std::max(m_reach, kGrow * length);
        continue;
      }
      if (m_joined > 0) continue;
      if (++refusals > kMostRefusals) return Describe(FitEnd::noOptimum);
      m_reach = kShrink * length;
    }
    return Describe(FitEnd::limitReached);
  }

 private:
  Squares SumAt(const Feature& feature, Candidate (&worst)[kFeatureParts]) {
    const double* weight = m_fit.problem.weights;
    const bool byRows = m_fit.points.Size() > kManyPoints && HasRowKernel(feature.kind);
    BlockSums<kSquareSums> total;
    double beyond = 0.0;
    m_fit.points.ForEach([&](const PointBlock& block) {
      BlockSquares part;
      if (byRows) AddByRows(feature, block, weight, part, beyond, worst);
      for (std::size_t i = 0; !byRows && i < block.size; ++i) {
        const Vec3 p = block.At(i);
        const double w = weight == nullptr ? 1.0 : weight[i];
        const double e = AddHalfSquare(feature, p, w, part.first, part.second);
        part.weight += w;
        part.value += 0.5 * w * e * e;
        if (m_constrained && w > 0.0) Notice(feature, p, e, beyond, worst);
      }
      if (weight != nullptr) weight += block.size;
      double sums[kSquareSums] = {part.weight, part.value};
      int next = 2;
      for (int i = 0; i < K; ++i) {
        sums[next++] = part.first[i];
        for (int j = 0; j <= i; ++j) sums[next++] = part.second[i][j];
      }
      total.Add(sums);
    });
    Squares found;
    m_totalWeight = total[0];
    found.value = total[1] / m_totalWeight;
    found.beyond = beyond;
    double first[K], second[K][K];
    int next = 2;
    for (int i = 0; i < K; ++i) {
      first[i] = total[next++] / m_totalWeight;
      for (int j = 0; j <= i; ++j) second[i][j] = second[j][i] = total[next++] / m_totalWeight;
    }
    for (int i = 0; i < m_free.count; ++i) {
      found.gradient[i] = m_free.unit[i] * first[m_free.at[i]];
      for (int j = 0; j < m_free.count; ++j)
        found.curvature[i][j] = m_free.unit[i] * m_free.unit[j] * second[m_free.at[i]][m_free.at[j]];
    }
    return found;
  }

  void Notice(const Feature& feature, const Vec3& p, double e, double& beyond,
              Candidate (&worst)[kFeatureParts]) const {
    const double over = -m_fit.Sign() * e;
    beyond = over <= beyond ? beyond : over;
    if (!(over > m_fit.rounding)) return;
    Candidate& place = worst[PartOf(feature, m_fit.extent, p)];
    if (over > place.beyond) place = {over, p};
  }

  // The rows of the points from `begin` on; returns how many there are, with the lanes that are filled up.
  std::size_t FillRows(const Feature& feature, const PointBlock& centred, std::size_t begin, const double* weight) {
    const std::size_t end = std::min(begin + kRows, centred.size);
    double* to[K] = {};
    for (int i = 0; i < m_free.count; ++i) to[m_free.at[i]] = m_rowsOfBlock.column[i];
    FindRows(centred, begin, end, feature, 0, to, m_rowsOfBlock.residual);
    const std::size_t count = end - begin;
    const std::size_t filled = (count + kLanes - 1) / kLanes * kLanes;
    for (std::size_t i = 0; i < filled; ++i)
      m_rowsOfBlock.weight[i] = i >= count ? 0.0 : (weight == nullptr ? 1.0 : weight[begin + i]);
    return filled;
  }

  void AddProducts(std::size_t count, BlockSquares& sums) {
    Rows& rows = m_rowsOfBlock;
    Multiply(rows.weight, rows.residual, count, rows.weighted);
    sums.value += 0.5 * DotOf(rows.weighted, rows.residual, count);
    for (std::size_t i = 0; i < count; ++i) sums.weight += rows.weight[i];
    for (int i = 0; i < m_free.count; ++i) {
      sums.first[m_free.at[i]] += DotOf(rows.weighted, rows.column[i], count);
    }
    for (int i = 0; i < m_free.count; ++i) {
      Multiply(rows.weight, rows.column[i], count, rows.weighted);
      for (int j = 0; j <= i; ++j) {
        const double product = DotOf(rows.weighted, rows.column[j], count);
        sums.second[m_free.at[i]][m_free.at[j]] += product;
        if (j < i) sums.second[m_free.at[j]][m_free.at[i]] += product;
      }
    }
  }

  void AddByRows(const Feature& feature, const PointBlock& block, const double* weight, BlockSquares& sums,
                 double& beyond, Candidate (&worst)[kFeatureParts]) {
    CentreOn(feature, block, m_centred);
    for (std::size_t begin = 0; begin < block.size; begin += kRows) {
      const std::size_t count = FillRows(feature, m_centred, begin, weight);
      AddProducts(count, sums);
      const std::size_t rows = std::min(kRows, block.size - begin);
      for (std::size_t i = 0; i < rows; i += kSampleStride) {
        const double part = static_cast<double>(std::min(kSampleStride, rows - i));
        AddCurvature(feature, block.At(begin + i), part * m_rowsOfBlock.weight[i] * m_rowsOfBlock.residual[i],
                     sums.second);
      }
      for (std::size_t i = 0; m_constrained && i < rows; ++i)
        if (m_rowsOfBlock.weight[i] > 0.0)
          Notice(feature, block.At(begin + i), m_rowsOfBlock.residual[i], beyond, worst);
    }
  }

  // Returns how many of the points were not in the working set.
  int Join(const Candidate (&worst)[kFeatureParts]) {
    if (m_count + kFeatureParts >= kMostRows) KeepNearest();
    int joined = 0;
    for (const Candidate& c : worst) {
      if (!(c.beyond > 0.0)) continue;
      Vec3* const end = m_point + m_count;
      if (std::find(m_point, end, c.point) != end) continue;
      m_point[m_count++] = c.point;
      ++joined;
    }
    return joined;
  }

  // Makes room: half of the working set is far from holding anything.
  void KeepNearest() {
    const double sign = m_fit.Sign();
    std::stable_sort(m_point, m_point + m_count, [&](const Vec3& a, const Vec3& b) {
      return sign * DeviationOf(m_feature, a) < sign * DeviationOf(m_feature, b);
    });
    m_count /= 2;
    m_contacts.count = m_held.count = 0;
  }

  void Linearise() {
    const double sign = m_fit.Sign();
    m_rows.size = m_count + 1;
    m_rows.value[0] = 0.0;
    for (int k = 0; k < K; ++k) m_rows.gradient[k][0] = m_here.gradient[k] / m_mu;
    for (int r = 1; r <= m_count; ++r) {
      double gradient[K];
      m_rows.value[r] = -sign * DeviationOf(m_feature, m_point[r - 1], gradient);
      for (int k = 0; k < K; ++k) {
        const double own = k < m_free.count ? -sign * m_free.unit[k] * gradient[m_free.at[k]] : 0.0;
        m_rows.gradient[k][r] = m_rows.gradient[k][0] + own;
      }
    }
  }

  // Of the Lagrangian, over mu. An unknown that is not free stays where it is.
  void FindCurvature() {
    double constraints[K][K] = {};
    for (int j = 0; j < m_held.count; ++j) {
      if (m_held.row[j] == 0) continue;
      AddCurvature(m_feature, m_point[m_held.row[j] - 1], -m_fit.Sign() * m_held.multiplier[j], constraints);
    }
    double largest = 0.0;
    for (int i = 0; i < m_free.count; ++i) {
      for (int j = 0; j < m_free.count; ++j)
        m_curvature[i][j] =
            m_here.curvature[i][j] / m_mu + m_free.unit[i] * m_free.unit[j] * constraints[m_free.at[i]][m_free.at[j]];
      largest = std::max(largest, std::fabs(m_curvature[i][i]));
    }
    for (int k = m_free.count; k < K; ++k) m_curvature[k][k] = largest > 0.0 ? largest : 1.0;
  }

  bool FindStep() {
    double damping = std::max(m_damping / (kMoreDamping * kMoreDamping), kLeastDamping);
    m_damping = 0.0;
    if (IsWithinReach(0.0)) return true;
    for (int trial = 0; trial < kMostDampings; ++trial, damping *= kMoreDamping) {
      if (!IsWithinReach(damping)) continue;
      m_damping = damping;
      return true;
    }
    return false;
  }

  bool IsWithinReach(double damping) { return SolveProgram(damping) && Length() <= m_reach; }

  bool SolveProgram(double damping) {
    double largest = 0.0;
    for (int k = 0; k < K; ++k) largest = std::max(largest, std::fabs(m_curvature[k][k]));
    std::copy_n(&m_curvature[0][0], K * K, &m_raised[0][0]);
    for (int k = 0; k < K; ++k) m_raised[k][k] += damping * largest;
    m_contacts = m_held;
    if (m_contacts.count > 0 && m_program.Solve(m_rows, m_raised, m_fit.rounding, m_contacts)) return true;
    m_contacts.count = 0;
    m_contacts.Add(0, 1.0);
    return m_program.Solve(m_rows, m_raised, m_fit.rounding, m_contacts);
  }

  // The multipliers are those of the constraints over mu. So long as the linearised constraints contradict each other
  // it would be raised without an end; beyond what they need it hides F.
  bool AdaptMu() {
    const double share = ConstraintShare();
    const bool raise = share > kMostShare;
    const double factor = raise ? kRaise : 1.0 / kRaise;
    if (!raise && !(share < kLeastShare)) return false;
    if (!(factor * m_mu >= m_leastMu && factor * m_mu <= kMostMu * m_leastMu)) return false;
    m_mu *= factor;
    m_held.count = 0;
    m_held.Add(0, 1.0);
    for (int j = 0; j < m_contacts.count; ++j) {
      if (m_contacts.row[j] == 0) continue;
      m_held.Add(m_contacts.row[j], m_contacts.multiplier[j] / factor);
      m_held.multiplier[0] -= m_contacts.multiplier[j] / factor;
    }
    return true;
  }

  double PredictedGain() const { return m_here.beyond - (m_program.Value() + m_program.Bending()); }

  bool TryStep() {
    Candidate worst[kFeatureParts];
    const Feature trial = m_free.Moved(m_feature, m_program.Step());
    const Squares found = SumAt(trial, worst);
    m_joined = m_constrained ? Join(worst) : 0;
    return Accept(trial, found, PredictedGain());
  }

  // Bends the step so that the contacts come out on the feature.
  bool TryCorrectedStep() {
    const double predicted = PredictedGain();
    double step[K];
    std::copy_n(m_program.Step(), K, step);
    const Feature trial = m_free.Moved(m_feature, step);
    for (int r = 1; r < m_rows.size; ++r) {
      double linear = m_rows.value[r];
      for (int k = 0; k < K; ++k) linear += (m_rows.gradient[k][r] - m_rows.gradient[k][0]) * step[k];
      m_rows.value[r] += -m_fit.Sign() * DeviationOf(trial, m_point[r - 1]) - linear;
    }
    m_contacts.count = 0;
    m_contacts.Add(0, 1.0);
    if (!m_program.Solve(m_rows, m_raised, m_fit.rounding, m_contacts) || !(Length() <= kGrow * m_reach)) return false;
    Candidate worst[kFeatureParts];
    const Feature bent = m_free.Moved(m_feature, m_program.Step());
    const Squares found = SumAt(bent, worst);
    m_joined += Join(worst);
    return Accept(bent, found, predicted);
  }

  bool Accept(const Feature& trial, const Squares& found, double predicted) {
    m_gain = Merit(m_here) - Merit(found);
    if (!(m_gain >= kFairPart * predicted - MeritNoise())) return false;
    m_feature = trial;
    m_here = found;
    m_held = m_contacts;
    return true;
  }

  // From a stationary point where the curvature is negative in a direction, to the side where F is less.
  bool Escape() {
    if (SolveProgram(0.0) || !m_program.IsIndefinite()) return false;
    const double(&hollow)[K] = m_program.NegativeCurvatureDirection();
    double length = 0.0;
    for (const double h : hollow) length = std::max(length, std::fabs(h));
    const double merit = Merit(m_here);
    for (const double side : {1.0, -1.0}) {
      double step[K];
      for (int k = 0; k < K; ++k) step[k] = side * kEscape * m_fit.extent / length * hollow[k];
      Candidate worst[kFeatureParts];
      const Feature trial = m_free.Moved(m_feature, step);
      const Squares found = SumAt(trial, worst);
      if (!(Merit(found) < merit - MeritNoise())) continue;
      m_feature = trial;
      m_here = found;
      m_held.count = 0;
      return true;
    }
    return false;
  }

  double Merit(const Squares& at) const { return at.value / m_mu + at.beyond; }

  double MeritNoise() const {
    const double rms = std::sqrt(2.0 * m_here.value);
    return kNoise * (m_fit.rounding * rms / m_mu + (m_constrained ? m_fit.rounding : 0.0));
  }

  double Length() const {
    double length = 0.0;
    for (const double s : m_program.Step()) length = std::max(length, std::fabs(s));
    return length;
  }

  double ConstraintShare() const {
    double share = 0.0;
    for (int j = 0; j < m_contacts.count; ++j)
      if (m_contacts.row[j] > 0) share += m_contacts.multiplier[j];
    return share;
  }

  FittedFeature Describe(FitEnd end) const {
    FittedFeature result;
    result.end = end;
    result.feature = m_feature;
    result.steps = m_steps;
    result.lastStep = m_lastLength;
    result.objective = 2.0 * m_totalWeight * m_here.value;
    return result;
  }

  const ScaledFit& m_fit;
  FreeUnknowns m_free;
  Feature m_feature;
  bool m_constrained;
  Squares m_here;
  double m_totalWeight = 0.0;
  double m_mu = 1.0;
  double m_leastMu = 1.0;
  double m_reach;
  double m_damping = 0.0;
  double m_gain = 0.0;  // of the step tried last
  double m_lastLength = kInfinity;
  long m_steps = 0;
  int m_joined = 0;  // by the last pass

  // The working set; row k + 1 is that of point k.
  int m_count = 0;
  Vec3 m_point[kMostRows];
  MinimaxRows<K> m_rows;
  MinimaxContacts<K> m_contacts;
  MinimaxContacts<K> m_held;  // those of the last step taken
  double m_curvature[K][K] = {};
  double m_raised[K][K] = {};
  CurvedMinimax<K> m_program;

  PointBlock m_centred;
  Rows m_rowsOfBlock;
};

}  // namespace

FittedFeature FitLeastSquares(const ScaledFit& fit, const Feature& start) {
  return std::make_unique<SquaresDescent>(fit, start)->Run();
}

}  // namespace nu::engine::association
