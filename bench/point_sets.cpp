// What do the operations on point sets cost? The peers are what one writes with the standard library in an afternoon;
// where that is a loop over all pairs, it is left out beyond some thousand points.

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>

#include "inputs.h"
#include "nu/foundation/int_array.h"
#include "question.h"

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;
using bench::Xyz;

const std::vector<int> kSizes = {1000, 100000, 1000000};
constexpr int kPairLimit = 1000;
constexpr double kRounding = 1e-12;
constexpr double kTolerance = 1e-6;

const auto kSame = [](const auto& x) { return x; };
const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };
const auto kOne = [](double x) { return Numbers{x}; };
const auto kFromPoints = [](const CNuPointArray& points) {
  Numbers all;
  for (int i = 0; i < points.GetSize(); ++i) {
    const CNuPoint& p = points.GetData()[i];
    all.insert(all.end(), {p.x(), p.y(), p.z()});
  }
  return all;
};
const auto kFromCloud = [](const Cloud& cloud) {
  Numbers all;
  for (const Xyz& p : cloud) all.insert(all.end(), {p.x, p.y, p.z});
  return all;
};

Xyz operator-(const Xyz& a, const Xyz& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
double Dot(const Xyz& a, const Xyz& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
Xyz Cross(const Xyz& a, const Xyz& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Xyz Unit(const Xyz& a) {
  const double length = std::sqrt(Dot(a, a));
  return {a.x / length, a.y / length, a.z / length};
}
bool Small(const Xyz& a, double tol) {
  return std::fabs(a.x) < tol && std::fabs(a.y) < tol && std::fabs(a.z) < tol;
}

// --- one pass over all points: the peers loop over the library's points as they lie in memory

using Points = std::vector<CNuPoint>;
const auto kSamePoints = [](const Cloud& cloud) {
  const CNuPointArray points = bench::ToPoints(cloud);
  return Points(points.GetData(), points.GetData() + points.GetSize());
};
const auto kFromPointVector = [](const Points& points) {
  Numbers all;
  for (const CNuPoint& p : points) all.insert(all.end(), {p.x(), p.y(), p.z()});
  return all;
};
Xyz ToXyz(const CNuPoint& p) {
  return {p.x(), p.y(), p.z()};
}
const auto kFromPoint = [](const CNuPoint& p) { return Numbers{p.x(), p.y(), p.z()}; };

void AskMeanPoint() {
  Question<Cloud>("mean_point", kRounding, bench::Ball)
      .Ask(
          "nu", kPoints, [](const CNuPointArray& points) { return points.MeanPoint(); }, kFromPoint)
      .Ask(
          "loop", kSamePoints,
          [](const Points& points) {
            Xyz sum{0, 0, 0};
            for (const CNuPoint& p : points) sum = {sum.x + p.x(), sum.y + p.y(), sum.z + p.z()};
            const double n = static_cast<double>(points.size());
            return CNuPoint(sum.x / n, sum.y / n, sum.z / n);
          },
          kFromPoint)
      .Over(kSizes);
}

struct Box {
  CNuPoint low, high;
};
const auto kCorners = [](const Box& box) {
  return Numbers{box.low.x(), box.low.y(), box.low.z(), box.high.x(), box.high.y(), box.high.z()};
};

void AskBoundingBox() {
  Question<Cloud>("bounding_box", 0, bench::Ball)
      .Ask(
          "nu", kPoints,
          [](const CNuPointArray& points) {
            Box box;
            points.BoundingBox(&box.low, &box.high);
            return box;
          },
          kCorners)
      .Ask(
          "loop", kSamePoints,
          [](const Points& points) {
            Xyz low = ToXyz(points.front()), high = low;
            for (const CNuPoint& p : points) {
              low = {std::min(low.x, p.x()), std::min(low.y, p.y()), std::min(low.z, p.z())};
              high = {std::max(high.x, p.x()), std::max(high.y, p.y()), std::max(high.z, p.z())};
            }
            return Box{CNuPoint(low.x, low.y, low.z), CNuPoint(high.x, high.y, high.z)};
          },
          kCorners)
      .Over(kSizes);
}

void AskMoveTo() {
  const Xyz origin{12, -7, 3}, x{0.8, 0.6, 0}, z{0, 0, 1};
  Question<Cloud>("move_to_frame", kRounding, bench::Ball)
      .Ask(
          "nu", kPoints,
          [=](const CNuPointArray& points) {
            CNuPointArray moved(points);
            moved.MoveTo(CNuPoint(origin.x, origin.y, origin.z), CNuVector(x.x, x.y, x.z), CNuVector(z.x, z.y, z.z));
            return moved;
          },
          kFromPoints)
      .Ask(
          "loop", kSamePoints,
          [=](const Points& points) {
            const Xyz y = Cross(z, x);
            Points moved = points;
            for (CNuPoint& p : moved) {
              const Xyz d = ToXyz(p) - origin;
              p.x() = Dot(d, x);
              p.y() = Dot(d, y);
              p.z() = Dot(d, z);
            }
            return moved;
          },
          kFromPointVector)
      .Over(kSizes);
}

// A test that looks at every point: the library's answer, and whether all points satisfy a condition.
template<class Test, class Condition>
void AskTest(const char* name, Cloud (*make)(int), Test test, Condition condition) {
  Question<Cloud>(name, 0, make)
      .Ask(
          "nu", kPoints, [=](const CNuPointArray& points) { return test(points) ? 1.0 : 0.0; }, kOne)
      .Ask(
          "loop", kSamePoints, [=](const Points& points) { return condition(points) ? 1.0 : 0.0; }, kOne)
      .Over(kSizes);
}

void AskTests() {
  AskTest(
      "is_2d", bench::Disk, [](const CNuPointArray& points) { return points.Is2D(); },
      [](const Points& points) {
        const double z = points.front().z();
        return std::all_of(points.begin(), points.end(), [=](const CNuPoint& p) { return p.z() == z; });
      });
  // The dear case: all points on one line.
  AskTest(
      "is_noncollinear", bench::Rail,
      [](const CNuPointArray& points) {
        CNuIntArray found(3);
        return points.IsNoncollinear(&found, kTolerance);
      },
      [](const Points& points) {
        const Xyz first = ToXyz(points.front()), d = Unit(ToXyz(points[1]) - first);
        return std::any_of(points.begin(), points.end(),
                           [=](const CNuPoint& p) { return !Small(Cross(d, ToXyz(p) - first), kTolerance); });
      });
  // The dear case: all points on one plane.
  AskTest(
      "is_noncoplanar", bench::Glass,
      [](const CNuPointArray& points) {
        CNuIntArray found(4);
        return points.IsNoncoplanar(&found, kTolerance);
      },
      [](const Points& points) {
        const Xyz first = ToXyz(points.front());
        const Xyz n = Unit(Cross(ToXyz(points[1]) - first, ToXyz(points.back()) - first));
        return std::any_of(points.begin(), points.end(),
                           [=](const CNuPoint& p) { return std::fabs(Dot(n, ToXyz(p) - first)) > kTolerance; });
      });
  // A point that is in no set.
  AskTest(
      "is_in", bench::Ball, [](const CNuPointArray& points) { return points.IsIn(CNuPoint(), kTolerance); },
      [](const Points& points) {
        return std::any_of(points.begin(), points.end(), [](const CNuPoint& p) { return Small(ToXyz(p), kTolerance); });
      });
}

// --- pairs

struct Pair {
  double distance;
  int i, j;
};
const auto kPair = [](const Pair& p) { return Numbers{p.distance, double(p.i), double(p.j)}; };

double Distance(const Xyz& a, const Xyz& b) {
  return std::sqrt(Dot(a - b, a - b));
}

Pair LongestByAllPairs(const Cloud& cloud) {
  Pair best{-1, 0, 0};
  for (int i = 0; i < int(cloud.size()); ++i) {
    for (int j = i + 1; j < int(cloud.size()); ++j) {
      const double d = Distance(cloud[i], cloud[j]);
      if (d > best.distance) best = {d, i, j};
    }
  }
  return best;
}

void AskMaxEdge(const char* name, Cloud (*make)(int)) {
  Question<Cloud>(name, kRounding, make)
      .Ask(
          "nu", kPoints,
          [](const CNuPointArray& points) {
            Pair pair;
            pair.distance = points.MaxEdge(&pair.i, &pair.j);
            return pair;
          },
          kPair)
      .Ask("all_pairs", kSame, LongestByAllPairs, kPair, kPairLimit)
      .Over(kSizes);
}

// Along x, nearest first: quadratic where many points share their x.
Pair ShortestBySweep(const Cloud& cloud) {
  std::vector<int> order(cloud.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](int i, int j) { return cloud[i].x < cloud[j].x; });
  Pair best{std::numeric_limits<double>::infinity(), 0, 0};
  for (std::size_t k = 0; k < order.size(); ++k) {
    for (std::size_t l = k + 1; l < order.size(); ++l) {
      const Xyz &a = cloud[order[k]], &b = cloud[order[l]];
      if (b.x - a.x > best.distance) break;
      const double d = Distance(a, b);
      if (d < best.distance) best = {d, std::min(order[k], order[l]), std::max(order[k], order[l])};
    }
  }
  return best;
}

void AskMinEdge(const char* name, Cloud (*make)(int), int peerLimit) {
  Question<Cloud>(name, kRounding, make)
      .Ask(
          "nu", kPoints,
          [](const CNuPointArray& points) {
            Pair pair;
            pair.distance = points.MinEdge(&pair.i, &pair.j);
            return pair;
          },
          kPair)
      .Ask("sort_and_sweep", kSame, ShortestBySweep, kPair, peerLimit)
      .Over(kSizes);
}

// --- hulls

double Turn(const Xyz& a, const Xyz& b, const Xyz& c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Lower and upper chain over the points in order of x (Andrew 1979).
std::vector<int> HullByChains(const Cloud& cloud) {
  std::vector<int> order(cloud.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](int i, int j) {
    return cloud[i].x < cloud[j].x || (cloud[i].x == cloud[j].x && cloud[i].y < cloud[j].y);
  });
  std::vector<int> hull;
  const auto extend = [&](int k, std::size_t base) {
    while (hull.size() >= base + 2 && Turn(cloud[hull[hull.size() - 2]], cloud[hull.back()], cloud[k]) <= 0) {
      hull.pop_back();
    }
    hull.push_back(k);
  };
  for (const int k : order) extend(k, 0);
  hull.pop_back();
  const std::size_t lower = hull.size();
  for (auto k = order.rbegin(); k != order.rend(); ++k) extend(*k, lower);
  hull.pop_back();
  return hull;
}

// Area and perimeter: where all points lie on a circle, rounding decides which of them are vertices.
struct Outline {
  Cloud corners;
};
const auto kMeasures = [](const Outline& outline) {
  double area = 0, perimeter = 0;
  const Cloud& c = outline.corners;
  for (std::size_t i = 0; i < c.size(); ++i) {
    const Xyz& next = c[(i + 1) % c.size()];
    area += 0.5 * Turn(c[0], c[i], next);
    perimeter += Distance(c[i], next);
  }
  return Numbers{area, perimeter};
};

void AskConvexHull(const char* name, Cloud (*make)(int)) {
  constexpr double kHullTolerance = 1e-9;
  Question<Cloud>(name, kHullTolerance, make)
      .Ask(
          "nu", kPoints,
          [](const CNuPointArray& points) {
            CNuIntArray hull(16);
            points.ConvexHull(&hull);
            Outline outline;
            for (int k = 0; k < hull.GetSize(); ++k) {
              const CNuPoint& p = points.GetData()[hull.GetData()[k]];
              outline.corners.push_back({p.x(), p.y(), p.z()});
            }
            return outline;
          },
          kMeasures)
      .Ask(
          "two_chains", kSame,
          [](const Cloud& cloud) {
            Outline outline;
            for (const int k : HullByChains(cloud)) outline.corners.push_back(cloud[k]);
            return outline;
          },
          kMeasures)
      .Over(kSizes);
}

// --- equal points

// Points in cubic cells of about one point each; a query visits the cells that its box of tolerance reaches.
class CellMap {
 public:
  CellMap(std::size_t count, double side) : m_side(side) { m_cells.reserve(count); }

  void Insert(const Xyz& p) { m_cells[Key(Cell(p.x), Cell(p.y), Cell(p.z))].push_back(p); }
  bool Holds(const Xyz& p, double tol) const {
    for (std::int64_t i = Cell(p.x - tol); i <= Cell(p.x + tol); ++i) {
      for (std::int64_t j = Cell(p.y - tol); j <= Cell(p.y + tol); ++j) {
        for (std::int64_t k = Cell(p.z - tol); k <= Cell(p.z + tol); ++k) {
          const auto cell = m_cells.find(Key(i, j, k));
          if (cell == m_cells.end()) continue;
          const auto equal = [&](const Xyz& q) { return Small(p - q, tol); };
          if (std::any_of(cell->second.begin(), cell->second.end(), equal)) return true;
        }
      }
    }
    return false;
  }

 private:
  std::int64_t Cell(double x) const { return static_cast<std::int64_t>(std::floor(x / m_side)); }
  static std::uint64_t Key(std::int64_t i, std::int64_t j, std::int64_t k) {
    constexpr std::uint64_t kMask = (1u << 21) - 1;
    return (std::uint64_t(i) & kMask) << 42 | (std::uint64_t(j) & kMask) << 21 | (std::uint64_t(k) & kMask);
  }

  double m_side;
  std::unordered_map<std::uint64_t, std::vector<Xyz>> m_cells;
};
constexpr double kCloudWidth = 60;
double CellSide(const Cloud& cloud) {
  return kCloudWidth / std::cbrt(static_cast<double>(cloud.size()));
}

void AskRemoveDuplicate() {
  Question<Cloud>("remove_duplicate", 0, bench::WithCopies)
      .Ask(
          "nu", kPoints,
          [](const CNuPointArray& points) {
            CNuPointArray kept(points);
            kept.RemoveDuplicate(bench::kCopy);
            return kept;
          },
          kFromPoints)
      .Ask(
          "cell_map", kSame,
          [](const Cloud& cloud) {
            CellMap seen(cloud.size(), CellSide(cloud));
            Cloud kept;
            for (const Xyz& p : cloud) {
              if (seen.Holds(p, bench::kCopy)) continue;
              seen.Insert(p);
              kept.push_back(p);
            }
            return kept;
          },
          kFromCloud)
      .Over(kSizes);
}

void AskRemoveAdjacentDuplicate() {
  Question<Cloud>("remove_adjacent_duplicate", 0, bench::WithCopies)
      .Ask(
          "nu", kPoints,
          [](const CNuPointArray& points) {
            CNuPointArray kept(points);
            kept.RemoveAdjacentDuplicate(bench::kCopy);
            return kept;
          },
          kFromPoints)
      .Ask(
          "std_unique", kSamePoints,
          [](const Points& points) {
            Points kept = points;
            const auto equal = [](const CNuPoint& a, const CNuPoint& b) {
              return Small(ToXyz(a) - ToXyz(b), bench::kCopy);
            };
            kept.erase(std::unique(kept.begin(), kept.end(), equal), kept.end());
            return kept;
          },
          kFromPointVector)
      .Over(kSizes);
}

struct TwoClouds {
  Cloud one, other;
};
struct TwoArrays {
  CNuPointArray one, other;
};

void AskIsEqual() {
  Question<TwoClouds>("is_equal", 0,
                      [](int n) {
                        return TwoClouds{bench::Ball(n), bench::Shuffled(bench::Ball(n))};
                      })
      .Ask(
          "nu",
          [](const TwoClouds& two) {
            return TwoArrays{bench::ToPoints(two.one), bench::ToPoints(two.other)};
          },
          [](const TwoArrays& two) { return two.one.IsEqual(two.other, bench::kCopy) ? 1.0 : 0.0; }, kOne)
      .Ask(
          "cell_map", kSame,
          [](const TwoClouds& two) {
            const auto within = [](const Cloud& a, const Cloud& b) {
              CellMap map(b.size(), CellSide(b));
              for (const Xyz& p : b) map.Insert(p);
              return std::all_of(a.begin(), a.end(), [&](const Xyz& p) { return map.Holds(p, bench::kCopy); });
            };
            return within(two.other, two.one) && within(two.one, two.other) ? 1.0 : 0.0;
          },
          kOne)
      .Over(kSizes);
}

const bool kAsked = [] {
  AskMeanPoint();
  AskBoundingBox();
  AskMoveTo();
  AskTests();
  AskMaxEdge("max_edge_ball", bench::Ball);
  AskMaxEdge("max_edge_shell", bench::Shell);
  AskMinEdge("min_edge_ball", bench::Ball, 1000000);
  AskMinEdge("min_edge_scan_lines", bench::ScanLines, 100000);
  AskConvexHull("convex_hull_disk", bench::Disk);
  AskConvexHull("convex_hull_ring", bench::Ring);
  AskConvexHull("convex_hull_round", bench::Round);
  AskRemoveDuplicate();
  AskRemoveAdjacentDuplicate();
  AskIsEqual();
  return true;
}();

}  // namespace
