// With the rows J of derivatives of the deviations d at a feature, the least-squares step solves
//
//   (J^T J + C) u = -J^T d,  C = sum d_i H_i,
//
// with the second derivatives H_i. A part brings its triangle R and c = Q^T d of the reduction J = Q R, and its C;
// parts are joined by reducing their stacked triangles and adding their C. With R u = -v the step follows from
//
//   (I + R^-T C R^-1) v = c,
//
// so that J^T J is never formed (A. Björck, Numerical Methods for Least Squares Problems, 1996, sections 2.7 and 9.2).
// At the optimum c vanishes to rounding, whatever C is: it decides about the speed alone, and is left out where a
// deviation has no sign.
//
// A minimax feature is held by few points. The extremes of all strata of all parts join the candidates, the optimum of
// the candidates is the next feature, and the parts are searched again: an exchange of several points at a time, whose
// value grows until no point of any part is beyond (E. Ya. Remez, 1934; M. R. Osborne, G. A. Watson, Computer Journal
// 12, 1969).

#include "nu/engine/association/partial_sums.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "nu/engine/association/feature_kernels.h"
#include "nu/engine/association/scaled_fit.h"
#include "nu/engine/base/bits.h"
#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/cone_start.h"
#include "nu/engine/linear/small_cholesky.h"
#include "nu/engine/linear/tall_qr.h"
#include "nu/engine/shapes/incidence.h"

namespace nu::engine::association {
namespace {

static_assert(PartSums::kStrata == kFeatureParts);

constexpr int kColumns = kUnknowns + 1;
// Of the largest column; below it rounding decides about an unknown.
constexpr double kIndependent = 64.0 * kEpsilon;

UnknownMask FreeOf(const PartRequest& request) {
  return request.free & UnknownsOf(request.feature.kind);
}

class PartReduction {
 public:
  PartReduction(const double* weights, PartSums& sums)
      : m_weights(weights), m_sums(sums), m_feature(sums.request.feature), m_reduction(kColumns) {
    m_otherNappe.bothNappes = true;
    const UnknownMask free = FreeOf(sums.request);
    for (int k = 0; k < kUnknowns; ++k) m_column[k] = Contains(free, k) ? m_reduction.Column(k) : nullptr;
  }

  void Reduce(PointView points) {
    PointBlocks blocks(points, m_feature.frame.origin);
    blocks.ForEach([this](const PointBlock& block) {
      for (std::size_t i = 0; i < block.size; ++i) AddPoint(block, i);
      for (std::size_t begin = 0; begin < block.size; begin += TallReduction::kBlockRows)
        AddRows(block, begin, std::min<std::size_t>(begin + TallReduction::kBlockRows, block.size));
      m_sums.points += block.size;
    });
    m_sums.sumSquares = m_sumSquares.Value();
    m_sums.unweightedSquares = m_weights != nullptr ? m_unweightedSquares.Value() : m_sums.sumSquares;
    for (int i = 0; i < kColumns; ++i)
      for (int j = i; j < kColumns; ++j) m_sums.triangle[i][j] = m_reduction.R(i, j);
    KeepFreeCurvature();
  }

  bool HasPointsBehind() const { return m_hasPointsBehind; }

 private:
  double WeightOf(std::size_t index) const { return m_weights == nullptr ? 1.0 : m_weights[index]; }

  void AddPoint(const PointBlock& block, std::size_t i) {
    const Vec3 from = block.At(i);
    const Vec3 point = m_feature.frame.origin + from;
    const double deviation = DeviationOf(m_feature, point);
    const double weight = WeightOf(m_sums.points + i);
    if (m_isOneNappe && !m_hasPointsBehind) m_hasPointsBehind = DeviationOf(m_otherNappe, point) != deviation;
    const double distance = Norm(from);
    if (!(distance <= m_sums.extent)) m_sums.extent = distance;
    m_sumSquares.Add(weight * deviation * deviation);
    if (m_weights != nullptr) m_unweightedSquares.Add(deviation * deviation);
    if (ResidualsPerPoint(m_feature.kind) == 1) AddCurvature(m_feature, point, weight * deviation, m_sums.curvature);
    const int stratum = PartOf(m_feature, m_sums.request.extent, point);
    std::optional<PartExtreme>& highest = m_sums.highest[stratum];
    std::optional<PartExtreme>& lowest = m_sums.lowest[stratum];
    if (!highest || deviation > highest->deviation) highest = PartExtreme{point, deviation};
    if (!lowest || deviation < lowest->deviation) lowest = PartExtreme{point, deviation};
  }

  void AddRows(const PointBlock& block, std::size_t begin, std::size_t end) {
    const std::size_t rows = end - begin;
    for (int which = 0; which < ResidualsPerPoint(m_feature.kind); ++which) {
      double* residual = m_reduction.Column(kUnknowns);
      FindRows(block, begin, end, m_feature, which, m_column, residual);
      for (int k = 0; k < kUnknowns; ++k)
        if (m_column[k] == nullptr) std::fill_n(m_reduction.Column(k), rows, 0.0);
      for (std::size_t i = 0; m_weights != nullptr && i < rows; ++i) {
        const double root = std::sqrt(WeightOf(m_sums.points + begin + i));
        for (int k = 0; k < kColumns; ++k) m_reduction.Column(k)[i] *= root;
      }
      m_reduction.AbsorbBlock(static_cast<int>(rows));
    }
  }

  void KeepFreeCurvature() {
    const UnknownMask free = FreeOf(m_sums.request);
    for (int i = 0; i < kUnknowns; ++i)
      for (int j = 0; j < kUnknowns; ++j)
        if (!Contains(free, i) || !Contains(free, j)) m_sums.curvature[i][j] = 0.0;
  }

  const double* m_weights;
  PartSums& m_sums;
  const Feature& m_feature;
  TallReduction m_reduction;
  double* m_column[kUnknowns] = {};
  Feature m_otherNappe = m_feature;
  bool m_isOneNappe = m_feature.kind == FeatureKind::cone && !m_feature.bothNappes;
  bool m_hasPointsBehind = false;
  CompensatedSum m_sumSquares, m_unweightedSquares;
};

// R and c of the free unknowns, with angles in lengths, and the step that follows from them.
class JoinedSystem {
 public:
  explicit JoinedSystem(const PartSums& sums) : m_free(sums.request.feature.kind, FreeOf(sums.request), sums.extent) {
    for (int i = 0; i < m_free.count; ++i) {
      for (int j = i; j < m_free.count; ++j)
        m_triangle[i][j] = sums.triangle[m_free.at[i]][m_free.at[j]] * m_free.unit[j];
      m_right[i] = sums.triangle[m_free.at[i]][kUnknowns];
      for (int j = 0; j < m_free.count; ++j)
        m_curvature[i][j] = sums.curvature[m_free.at[i]][m_free.at[j]] * m_free.unit[i] * m_free.unit[j];
    }
  }

  const FreeUnknowns& Free() const { return m_free; }

  bool IsDetermined() const {
    double largest = 0.0;
    for (int j = 0; j < m_free.count; ++j)
      for (int i = 0; i <= j; ++i) largest = std::max(largest, std::fabs(m_triangle[i][j]));
    for (int i = 0; i < m_free.count; ++i)
      if (!(std::fabs(m_triangle[i][i]) > kIndependent * largest) || !std::isfinite(m_right[i])) return false;
    return true;
  }

  // v from c, and -u from v.
  void Solve(double (&step)[kUnknowns]) const {
    double system[kUnknowns][kUnknowns] = {};
    for (int i = 0; i < kUnknowns; ++i) {
      double row[kUnknowns];
      std::copy_n(m_curvature[i], static_cast<int>(kUnknowns), row);
      SolveLeft(row);
      std::copy_n(row, static_cast<int>(kUnknowns), system[i]);
    }
    for (int j = 0; j < m_free.count; ++j) {
      double column[kUnknowns];
      for (int i = 0; i < kUnknowns; ++i) column[i] = system[i][j];
      SolveLeft(column);
      for (int i = 0; i < kUnknowns; ++i) system[i][j] = column[i];
    }
    for (int i = 0; i < kUnknowns; ++i) system[i][i] += 1.0;
    double v[kUnknowns] = {};
    if (!(SolvePositive(system, m_right, v) > 0.0)) std::copy_n(m_right, static_cast<int>(kUnknowns), v);
    for (int i = m_free.count - 1; i >= 0; --i) {
      double rest = -v[i];
      for (int j = i + 1; j < m_free.count; ++j) rest -= m_triangle[i][j] * step[j];
      step[i] = rest / m_triangle[i][i];
    }
  }

 private:
  // R^-T x in place.
  void SolveLeft(double (&x)[kUnknowns]) const {
    for (int i = 0; i < m_free.count; ++i) {
      for (int j = 0; j < i; ++j) x[i] -= m_triangle[j][i] * x[j];
      x[i] /= m_triangle[i][i];
    }
  }

  FreeUnknowns m_free;
  double m_triangle[kUnknowns][kUnknowns] = {};
  double m_right[kUnknowns] = {};
  double m_curvature[kUnknowns][kUnknowns] = {};
};

// Without points behind the apex these are the sums of one nappe.
PartSums OnBothNappes(const PartSums& sums) {
  if (sums.bothNappes) return *sums.bothNappes;
  PartSums both = sums;
  both.request.feature.bothNappes = true;
  return both;
}

}  // namespace

PartSums SumPart(PointView points, const double* weights, const PartRequest& request) {
  PartSums sums;
  sums.request = request;
  PartReduction reduction(weights, sums);
  reduction.Reduce(points);
  if (!reduction.HasPointsBehind()) return sums;
  PartRequest both = request;
  both.feature.bothNappes = true;
  sums.bothNappes = std::make_shared<const PartSums>(SumPart(points, weights, both));
  return sums;
}

const PartSums& Counted(const PartSums& joined) {
  const PartSums* both = joined.bothNappes.get();
  const bool isBoth = both != nullptr && both->unweightedSquares <= kBothNappes * joined.unweightedSquares;
  return isBoth ? *both : joined;
}

PartSums Join(const PartSums& first, const PartSums& second) {
  PartSums joined = first;
  joined.points += second.points;
  joined.sumSquares += second.sumSquares;
  joined.unweightedSquares += second.unweightedSquares;
  joined.extent = std::max(first.extent, second.extent);
  TallReduction reduction(kColumns);
  for (int k = 0; k < kColumns; ++k) {
    for (int i = 0; i < kColumns; ++i) {
      reduction.Column(k)[i] = first.triangle[i][k];
      reduction.Column(k)[kColumns + i] = second.triangle[i][k];
    }
  }
  reduction.AbsorbBlock(2 * kColumns);
  for (int i = 0; i < kColumns; ++i)
    for (int j = i; j < kColumns; ++j) joined.triangle[i][j] = reduction.R(i, j);
  for (int i = 0; i < kUnknowns; ++i)
    for (int j = 0; j < kUnknowns; ++j) joined.curvature[i][j] += second.curvature[i][j];
  for (int k = 0; k < PartSums::kStrata; ++k) {
    const std::optional<PartExtreme>& high = second.highest[k];
    const std::optional<PartExtreme>& low = second.lowest[k];
    if (high && (!joined.highest[k] || high->deviation > joined.highest[k]->deviation)) joined.highest[k] = high;
    if (low && (!joined.lowest[k] || low->deviation < joined.lowest[k]->deviation)) joined.lowest[k] = low;
  }
  if (first.bothNappes || second.bothNappes)
    joined.bothNappes = std::make_shared<const PartSums>(Join(OnBothNappes(first), OnBothNappes(second)));
  return joined;
}

std::optional<PartStep> StepOf(const PartSums& sums) {
  const PartSums& joined = Counted(sums);
  const JoinedSystem system(joined);
  if (!system.IsDetermined()) return std::nullopt;
  double step[kUnknowns] = {};
  system.Solve(step);
  double square = 0.0;
  for (const double component : step) square += component * component;
  if (!std::isfinite(square)) return std::nullopt;
  return PartStep{system.Free().Moved(joined.request.feature, step), std::sqrt(square)};
}

void PartCandidates::Add(const PartSums& sums) {
  const PartSums& joined = Counted(sums);
  m_request = joined.request;
  const auto add = [this](const std::optional<PartExtreme>& extreme) {
    if (!extreme) return;
    const bool isKnown = std::find(m_points.begin(), m_points.end(), extreme->point) != m_points.end();
    if (!isKnown) m_points.push_back(extreme->point);
  };
  for (int k = 0; k < PartSums::kStrata; ++k) {
    add(joined.highest[k]);
    add(joined.lowest[k]);
  }
}

FittedFeature PartCandidates::Fit(FitCriterion criterion, const PartRequest& request) const {
  FitProblem problem;
  problem.points = PointView(m_points.empty() ? nullptr : &m_points[0].x, sizeof(Vec3), m_points.size());
  problem.criterion = criterion;
  problem.fixed = ~request.free;
  return FitFrom(problem, request.feature);
}

// ---- Bytes ----

namespace {

constexpr std::uint64_t kMark = 0x5354524150554E;  // "NUPARTS" from the least significant byte on
constexpr std::uint64_t kVersion = 3;

// Of all bytes before it (FNV-1a, 64 bits).
std::uint64_t CheckSum(const unsigned char* bytes, std::size_t count) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (std::size_t i = 0; i < count; ++i) sum = (sum ^ bytes[i]) * 0x100000001B3;
  return sum;
}

class Writer {
 public:
  void operator()(std::uint64_t value) {
    for (int k = 0; k < 8; ++k) m_bytes.push_back(static_cast<unsigned char>(value >> (8 * k) & 0xFFU));
  }
  void operator()(double value) { (*this)(BitsOf(value)); }
  std::vector<unsigned char> Finish() {
    (*this)(CheckSum(m_bytes.data(), m_bytes.size()));
    return std::move(m_bytes);
  }

 private:
  std::vector<unsigned char> m_bytes;
};

class Reader {
 public:
  Reader(const unsigned char* bytes, std::size_t count) : m_at(bytes), m_end(bytes + count) {}

  void operator()(std::uint64_t& value) {
    value = 0;
    if (m_end - m_at < 8) {
      m_isWhole = false;
      return;
    }
    for (int k = 0; k < 8; ++k) value |= static_cast<std::uint64_t>(*m_at++) << (8 * k);
  }
  void operator()(double& value) {
    std::uint64_t bits = 0;
    (*this)(bits);
    value = FromBits(bits);
  }
  bool IsAtEnd() const { return m_isWhole && m_at == m_end; }

 private:
  const unsigned char* m_at;
  const unsigned char* m_end;
  bool m_isWhole = true;
};

// The numbers in their order, for reading and writing.
template<class Archive, class Sums>
void PassNumbers(Archive& archive, Sums& sums) {
  auto& feature = sums.request.feature;
  for (auto* v : {&feature.frame.origin, &feature.frame.x, &feature.frame.y, &feature.frame.z})
    archive(v->x), archive(v->y), archive(v->z);
  for (auto& size : feature.size) archive(size);
  archive(sums.request.extent), archive(sums.sumSquares), archive(sums.unweightedSquares), archive(sums.extent);
  for (auto& row : sums.triangle)
    for (auto& value : row) archive(value);
  for (auto& row : sums.curvature)
    for (auto& value : row) archive(value);
  for (auto* extremes : {&sums.highest, &sums.lowest}) {
    for (auto& extreme : *extremes) {
      if (extreme)
        archive(extreme->point.x), archive(extreme->point.y), archive(extreme->point.z), archive(extreme->deviation);
    }
  }
}

// Which strata have a point.
std::uint64_t Occupied(const PartSums& sums) {
  std::uint64_t mask = 0;
  for (int k = 0; k < PartSums::kStrata; ++k) mask |= static_cast<std::uint64_t>(sums.highest[k] ? 1 : 0) << k;
  return mask;
}

void ReadNumbers(Reader& read, std::uint64_t occupied, PartSums& sums) {
  for (int k = 0; k < PartSums::kStrata; ++k)
    if ((occupied >> k & 1U) != 0) sums.highest[k] = sums.lowest[k] = PartExtreme{};
  PassNumbers(read, sums);
}

}  // namespace

std::vector<unsigned char> BytesOf(const PartSums& sums) {
  Writer write;
  const Feature& feature = sums.request.feature;
  for (const std::uint64_t value :
       {kMark, kVersion, static_cast<std::uint64_t>(feature.kind), std::uint64_t{feature.bothNappes ? 1U : 0U},
        std::uint64_t{sums.request.free}, static_cast<std::uint64_t>(sums.points), Occupied(sums)})
    write(value);
  PassNumbers(write, sums);
  write(std::uint64_t{sums.bothNappes ? 1U : 0U});
  if (sums.bothNappes) {
    write(Occupied(*sums.bothNappes));
    PassNumbers(write, *sums.bothNappes);
  }
  return write.Finish();
}

std::optional<PartSums> SumsFrom(const unsigned char* bytes, std::size_t count) {
  Reader read(bytes, count);
  std::uint64_t mark = 0, version = 0, kind = 0, bothNappes = 0, free = 0, points = 0, occupied = 0, checkSum = 0;
  for (std::uint64_t* value : {&mark, &version, &kind, &bothNappes, &free, &points, &occupied}) read(*value);
  const bool isKnown = mark == kMark && version == kVersion && kind <= static_cast<std::uint64_t>(FeatureKind::torus);
  if (!isKnown || bothNappes > 1 || occupied >> PartSums::kStrata != 0) return std::nullopt;
  PartSums sums;
  sums.request.feature.kind = static_cast<FeatureKind>(kind);
  sums.request.feature.bothNappes = bothNappes == 1;
  sums.request.free = static_cast<UnknownMask>(free);
  sums.points = static_cast<std::size_t>(points);
  ReadNumbers(read, occupied, sums);
  std::uint64_t isOther = 0;
  read(isOther);
  if (isOther == 1) {
    read(occupied);
    auto other = std::make_shared<PartSums>();
    other->request = sums.request;
    other->points = sums.points;
    ReadNumbers(read, occupied, *other);
    other->request.feature.bothNappes = true;
    sums.bothNappes = std::move(other);
  }
  read(checkSum);
  if (isOther > 1 || !read.IsAtEnd() || checkSum != CheckSum(bytes, count - 8)) return std::nullopt;
  return sums;
}

}  // namespace nu::engine::association
