#include "nu/engine/minimax/empty_ball.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/distance_kernels.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/minimax/minimax.h"
#include "nu/engine/minimax/near_points.h"
#include "nu/engine/minimax/round_minimax.h"

// Steepest ascent of the least distance of the points from the centre c. Its contacts are the points at that distance;
// it rises fastest along c - z where z is the centre of the smallest ball around the contacts, and the contacts that
// hold this ball, up to four, stay the nearest points on that line, all at one distance. The step ends where a further
// point p is as near as a contact q, at c + t (c - z) with
//
//   t = (p - q) . ((p - c) + (q - c)) / (2 (p - q) . (c - z)),
//
// and p joins the contacts: the smallest ball around them grows, so no set of contacts returns. It ends where four
// contacts hold c between them: then c is z. (The nearest points of a set of balls: H. Edelsbrunner, The union of balls
// and its dual shape, Discrete Comput. Geom. 13, 1995.)
//
// Where fewer than four contacts hold c between them, as in points with symmetries, c may be a saddle. Such a point is
// left, or found to be an optimum, by the minimax problem of minus the distances d(p) = |p - c|. The derivative of d by
// c is the unit vector -u from p to c, the second derivative is (1 - u u^T) / d. At the optimum the u of the contacts
// hold the origin between them.

namespace nu::engine::minimax {
namespace {

// Of what the u of the contacts, weighted, must cancel to; it is about the square root of the rounding of the centre in
// units of the radius where the points are far from round.
constexpr double kStationary = 1e-7;

struct CentreLanes {
  static constexpr int kUnknowns = 3;

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& d) const {
    Lanes x, y, z;
    LoadPoints(block, i, x, y, z);
    x -= frame.origin.x;
    y -= frame.origin.y;
    z -= frame.origin.z;
    d = x * x + y * y + z * z;
    TakeSquareRoot(d);
  }

  // At the centre the gradient is undefined; use zero.
  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& d, Lanes (&column)[kUnknowns]) const {
    Deviate(block, i, d);
    LoadLocal(block, i, frame, column[0], column[1], column[2]);
    const Lanes quotient = 1.0 / d;
    const Lanes inverse = d > 0.0 ? quotient : Lanes{};
    for (Lanes& c : column) c *= inverse;
  }

  AxisFrame frame;
};

NU_DISTANCE_KERNELS(CentreLanes)

// The distances of points from the origin of the frame; the unknowns are its shifts along the axes.
struct CentreDistance {
  static constexpr int kUnknowns = 3;
  static constexpr int kStrata = kDirectionCells;

  AxisFrame frame;
  Vec3 mean;
  double reach = 0.0;  // of the points from the mean

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
    FindEach(block, CentreLanes{frame}, deviation, smallest, largest);
  }
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
    FindGradients(block, CentreLanes{frame}, {-1.0, -1.0, -1.0}, deviation, gradient);
  }
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
    const Vec3 q = frame.Local(point);
    const double distance = Norm(q);
    if (distance == 0.0) return;
    const double u[] = {q.x / distance, q.y / distance, q.z / distance};
    for (int i = 0; i < kUnknowns; ++i)
      for (int j = 0; j < kUnknowns; ++j) sum[i][j] += weight / distance * ((i == j ? 1.0 : 0.0) - u[i] * u[j]);
  }
  CentreDistance Moved(const double (&step)[kUnknowns]) const {
    CentreDistance moved = *this;
    const Vec3 origin = frame.origin + (step[0] * frame.x + step[1] * frame.y + step[2] * frame.z);
    moved.frame.origin = Norm(origin - mean) <= reach ? origin : kNowhere;
    return moved;
  }
  int Stratum(const Vec3& point) const { return DirectionCell(frame.Local(point)); }
};

// The contacts hold the centre between them.
bool IsHeld(const MinimaxSolution<CentreDistance>& solution) {
  Vec3 sum;
  double weight = 0.0;
  for (int k = 0; k < solution.contacts; ++k) {
    sum = sum + solution.multiplier[k] * Unit(solution.contact[k] - solution.model.frame.origin);
    weight += solution.multiplier[k];
  }
  return Norm(sum) <= kStationary * weight;
}

EmptyBall InCallersUnit(const MinimaxSolution<CentreDistance>& solution, double unit) {
  EmptyBall ball;
  ball.found = true;
  ball.centre = unit * solution.model.frame.origin;
  ball.radius = -unit * solution.value;
  ball.TakeContacts(solution, unit);
  return ball;
}

// A line on which the centre moves, and one of its contacts.
struct CentreLine {
  Vec3 centre;
  Vec3 contact;
  Vec3 step;
  double slack;  // of products with e
};

struct Meeting {
  double t = kInfinity;
  Vec3 point;
};

// What a block shows of a line.
struct BlockMeeting {
  double t;           // a little later than the centre meets a point
  std::size_t index;  // of the point
  double excess;      // the least of a point's squared distance from the centre over that of the contact
};

// Of the points that it meets within rounding at the same time, the one that it approaches fastest comes first (P. M.
// J. Harris, Pivot selection methods of the Devex LP code, 1973).
NU_KERNEL void FindMeeting(const PointBlock& block, const CentreLine& line, BlockMeeting& meeting) {
  const CentreLine w = line;
  const Vec3 towards = w.contact - w.centre;
  const Lanes zero = {};
  const Lanes never = kInfinity - Lanes{};
  const Lanes slack = w.slack - Lanes{};
  Lanes least = never;
  Lanes leastExcess = never;
  Lanes place = {};
  Lanes places = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z;
    LoadPoints(block, i, x, y, z);
    const Lanes ex = x - w.contact.x;
    const Lanes ey = y - w.contact.y;
    const Lanes ez = z - w.contact.z;
    const Lanes excess =
        ex * ((x - w.centre.x) + towards.x) + ey * ((y - w.centre.y) + towards.y) + ez * ((z - w.centre.z) + towards.z);
    const Lanes approach = 2.0 * (ex * w.step.x + ey * w.step.y + ez * w.step.z);
    Lanes outside = excess;
    TakeLarger(zero, outside);
    Lanes t = never;
    TakeWhereLess(slack, approach, (outside + slack) / approach, t);
    TakeWhereLess(t, least, place, places);
    TakeSmaller(t, least);
    TakeSmaller(excess, leastExcess);
    place += static_cast<double>(kLanes);
  }
  meeting = {Smallest(least), block.size - 1, Smallest(leastExcess)};
  for (int l = 0; l < kLanes; ++l)
    if (least[l] == meeting.t) meeting.index = std::min(meeting.index, static_cast<std::size_t>(places[l]) + l);
}

class Ascent {
 public:
  // `rounding` is that of a distance.
  Ascent(PointBlocks& points, const Vec3& mean, double reach, double rounding, const StepMonitor& monitor)
      : m_points(points),
        m_near(points, mean, rounding),
        m_mean(mean),
        m_reach(reach),
        m_rounding(rounding),
        m_monitor(monitor),
        m_centre(mean),
        m_before(mean) {
    if (points.Size() > kBlockPoints) m_passed.assign((points.Size() - 1) / points.Portion() + 1, {});
  }

  enum class End { optimum, saddle, none };

  End Run(const NearAndFar& seen, long limit) {
    Begin(seen.nearest);
    for (long pass = 0; pass < limit; ++pass) {
      if (!GoesOn(pass + 1)) return End::none;
      m_ball = SmallestBallAround();
      if (!m_ball.found) return End::none;
      if (m_ball.contacts == EnclosingBall::kMostContacts) {
        if (Settle()) return End::optimum;
        if (!m_isRising) return End::saddle;
        continue;
      }
      Vec3 step = m_centre - m_ball.centre;
      const bool held = Norm(step) <= m_rounding;
      if (held && m_ball.contacts > 1) return End::saddle;
      // From a point of the set any direction leads up.
      if (held) step = seen.farthest - m_centre;
      if (!Advance(step)) return End::none;
    }
    return End::none;
  }

  const Vec3& Centre() const { return m_centre; }
  const EnclosingBall& Ball() const { return m_ball; }

 private:
  // Of the products in the search for the next contact, in units of the lengths of the factors.
  static constexpr double kSlack = 64.0 * kEpsilon;
  static constexpr double kMoreSlack = 16.0;
  // Then it is above all products.
  static constexpr int kMostSlackenings = 16;
  // Of what four contacts tell about the ball, in units of a distance's rounding: they may lie close together.
  static constexpr double kBallRoundings = 64.0;

  bool GoesOn(long step) {
    const double unit = 1.0 / m_points.Scale();
    const double length = Norm(m_centre - m_before);
    m_before = m_centre;
    return m_monitor.GoesOn(step, -unit * Norm(m_contact[0] - m_centre), unit * length);
  }

  void Begin(const Vec3& nearest) {
    m_count = 1;
    m_contact[0] = nearest;
  }

  EnclosingBall SmallestBallAround() const {
    const Vec3& origin = m_contact[0];
    PointBlocks contacts(PointView(&m_contact[0].x, sizeof(Vec3), static_cast<std::size_t>(m_count)), origin);
    EnclosingBall ball = SmallestEnclosingBall<3>(contacts, {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}});
    ball.centre = origin + ball.centre;
    for (int k = 0; k < ball.contacts; ++k) ball.contact[k] = origin + ball.contact[k];
    return ball;
  }

  // Goes to the centre of the ball. False when a point is inside, which rounding has hidden so far: a new beginning,
  // and where it is no higher than the one before, the end of the ascent, which would go round in circles.
  bool Settle() {
    m_centre = m_ball.centre;
    const NearAndFar seen = NearAndFarFrom(m_points, m_centre);
    if (seen.least >= m_ball.radius - kBallRoundings * m_rounding) return true;
    m_isRising = seen.least > m_leastAtBegin;
    m_leastAtBegin = seen.least;
    Begin(seen.nearest);
    return false;
  }

  // False when the line leads out of the hull of the points.
  bool Advance(const Vec3& step) {
    m_count = m_ball.contacts;
    std::copy_n(m_ball.contact, m_count, m_contact);
    const Vec3 radius = m_contact[0] - m_centre;
    const double size = std::max(Norm(radius), Norm(step));
    CentreLine line{m_centre, m_contact[0], step, kSlack * size * m_reach};
    m_near.Follow(m_centre, m_contact, m_count);
    Meeting next = Search(line);
    // A contact does not come nearer but for rounding.
    for (int k = 0; k < kMostSlackenings && next.t < kInfinity && IsContact(next.point); ++k) {
      line.slack *= kMoreSlack;
      next = Search(line);
    }
    if (!(next.t < kInfinity) || IsContact(next.point)) return false;
    const Vec3 e = next.point - line.contact;
    const double excess = Dot(e, (next.point - m_centre) + radius);
    m_centre = m_centre + (std::max(0.0, excess) / (2.0 * Dot(e, step))) * step;
    m_contact[m_count++] = next.point;
    return Norm(m_centre - m_mean) <= m_reach;
  }

  bool IsContact(const Vec3& p) const { return std::find(m_contact, m_contact + m_count, p) != m_contact + m_count; }

  // Of points that are not in a level the ball meets none before its centre has left the reach of the level.
  Meeting Search(const CentreLine& line) {
    int level = m_near.Levels() - 1;
    Meeting next = Search(line, level);
    while (level > 0 && !(next.t < kInfinity && m_near.Covers(level, line.centre + next.t * line.step))) {
      next = Search(line, --level);
    }
    return next;
  }

  Meeting Search(const CentreLine& line, int level) {
    Meeting next;
    const auto search = [&](const PointBlock& block) {
      BlockMeeting meeting;
      FindMeeting(block, line, meeting);
      if (meeting.t < next.t) next = {meeting.t, block.At(meeting.index)};
      return meeting.excess;
    };
    if (level > 0 || m_passed.empty()) {
      m_near.Points(level).ForEach(search);
      return next;
    }
    // The block that was met last tells about when.
    std::size_t place = m_metBlock;
    m_points.ForEachOf([&](std::size_t begin) { return begin / m_points.Portion() == place; }, search);
    Meeting first = next;
    next = {};
    const double square = Dot(line.contact - line.centre, line.contact - line.centre);
    m_points.ForEachOf(
        [&](std::size_t begin) {
          place = begin / m_points.Portion();
          return MayBeMet(place, line, std::min(first.t, next.t));
        },
        [&](const PointBlock& block) {
          const double before = next.t;
          m_passed[place] = {line.centre, std::sqrt(std::max(0.0, square + search(block)))};
          if (next.t < before) m_metBlock = place;
        });
    return next;
  }

  // What a block has shown when it passed: the distance of its nearest point from the centre.
  struct Passed {
    Vec3 centre;
    double nearest = 0.0;
  };
  // Whether a point of a block is as near as the contacts somewhere up to t: the distances of the centre, on a stretch
  // of a line, from any place are largest at an end.
  bool MayBeMet(std::size_t place, const CentreLine& line, double t) const {
    constexpr double kMargin = 1e-9;  // far above the rounding of distances
    const auto reach = [&](const Vec3& p) {
      return std::max(Norm(p - line.centre), Norm(p - (line.centre + t * line.step)));
    };
    const Passed& passed = m_passed[place];
    return !(reach(passed.centre) + reach(line.contact) <= (1.0 - kMargin) * passed.nearest);
  }

  PointBlocks& m_points;
  NearPoints m_near;
  std::vector<Passed> m_passed;  // empty where there is one block
  std::size_t m_metBlock = 0;
  Vec3 m_mean;
  double m_reach;
  double m_rounding;
  StepMonitor m_monitor;
  Vec3 m_centre;
  Vec3 m_before;                // the centre at the last step
  double m_leastAtBegin = 0.0;  // the least distance of a point at the last new beginning
  bool m_isRising = true;
  int m_count = 0;
  Vec3 m_contact[EnclosingBall::kMostContacts];
  EnclosingBall m_ball;
};

EmptyBall InCallersUnit(const EnclosingBall& held, double unit) {
  EmptyBall ball;
  ball.found = true;
  ball.centre = unit * held.centre;
  ball.radius = unit * held.radius;
  ball.TakeContacts(held, unit, -1.0);
  return ball;
}

}  // namespace

EmptyBall GrowEmptyBall(PointBlocks& points, const Vec3& mean, long limit, const StepMonitor& monitor) {
  const ScaledProblem problem = Prepared(points, mean);
  if (!problem.isFinite) return {};
  const NearAndFar& seen = problem.seen;
  const double unit = 1.0 / problem.scale;
  Ascent ascent(points, problem.mean, seen.greatest, problem.rounding, monitor);
  const Ascent::End end = ascent.Run(seen, limit);
  if (end == Ascent::End::none) return {};
  if (end == Ascent::End::optimum) return InCallersUnit(ascent.Ball(), unit);
  const AxisFrame frame = FrameAlong(ascent.Centre(), seen.farthest - problem.mean, seen.nearest - problem.mean);
  Minimax<CentreDistance> minimax(points, MinimaxSide::inner, problem.rounding, limit, monitor);
  const MinimaxSolution<CentreDistance> solution = minimax.Solve({frame, problem.mean, seen.greatest});
  if (solution.end != MinimaxEnd::converged || !IsHeld(solution)) return {};
  return InCallersUnit(solution, unit);
}

}  // namespace nu::engine::minimax
