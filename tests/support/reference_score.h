#ifndef NU_TESTS_SUPPORT_REFERENCE_SCORE_H
#define NU_TESTS_SUPPORT_REFERENCE_SCORE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>

#include "nu/geometry/point_array.h"
#include "nu/linalg/vector.h"
#include "support/reference_data.h"

// Scores fits against the sets of data/reference with the bounds of its README.
namespace nu::test {

inline CNuVector VectorOf(const Json& json) {
  const auto v = json.Numbers();
  return {v[0], v[1], v[2]};
}

inline CNuPointArray PointsOf(const Json& set) {
  const Json& list = set["points"];
  CNuPointArray points(static_cast<int>(list.Size()));
  for (std::size_t i = 0; i < list.Size(); ++i) points.Add(VectorOf(list[i]).To3DPoint());
  return points;
}

// What FailureOf says of a set that has to be refused. Sets with points beside one plane leave the count open, which is
// that of a plane.
inline std::string RefusalOf(const Json& set) {
  const Json& refusal = set["result"];
  const std::string count = refusal["count"].IsNumber() ? refusal["count"].Text() : "3";
  return "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() + " [" + count + ",0]";
}

// Calls with every set whose file starts with one of the kinds and then the name; returns how many there were.
template<class Call>
int ForEachSet(std::initializer_list<const char*> kinds, const std::string& name, Call call) {
  int sets = 0;
  for (const char* kind : kinds) {
    for (const auto& file : ReferenceFiles(kind + name)) {
      SCOPED_TRACE(file.filename().string());
      call(ReadReference(file));
      ++sets;
    }
  }
  return sets;
}

// The full bounds, or the plain ones, for which an iteration may stop short of the optimum by what the set says.
class Score {
 public:
  explicit Score(const Json& set, bool full = true)
      : m_set(set), m_full(full), m_size(set["size"].Number()), m_count(static_cast<double>(set["points"].Size())) {
    double reach = m_size;
    for (std::size_t i = 0; i < set["points"].Size(); ++i)
      for (const double c : set["points"][i].Numbers()) reach = std::max(reach, std::fabs(c));
    m_d = 2.0 * kEps * reach;
  }

  // Sets with a closed form state none.
  double Sensitivity(const char* what) const {
    return m_set.Has("sensitivity") ? m_set["sensitivity"][what].Number() : 1.0;
  }
  double Size() const { return m_size; }

  void Length(const char* what, double error, double value) const {
    const double s = Sensitivity(what);
    Expect(what, error, 4.0 * m_d * s + 4.0 * kEps * value, 1e-12 * m_size * std::max(1.0, s), Stop(what));
  }
  // In radians.
  void Turn(const char* what, double error, double s) const {
    Expect(what, error, 4.0 * m_d * s + 4.0 * kEps, 1e-12 * std::max(1.0, s * m_size), 0.0);
  }
  void Turn(const char* what, double error) const { Turn(what, error, Sensitivity(what)); }
  // Those of "form", "zone" and "sumsq" that the result has.
  void Form(double form, double sumsq) const {
    const Json& result = m_set["result"];
    const double moved = 2.0 * (Stop("centre") + Stop("radius"));
    for (const char* key : {"form", "zone"}) {
      if (result.Has(key)) Expect(key, std::fabs(form - result[key].Number()), 8.0 * m_d, 1e-12 * m_size, moved);
    }
    if (!result.Has("sumsq")) return;
    const double truth = result["sumsq"].Number();
    const double rounding = 4.0 * m_d * std::sqrt(m_count * truth) + 16.0 * m_count * m_d * m_d;
    Expect("sumsq", std::fabs(sumsq - truth), rounding, 1e-12 * truth + rounding, m_count * moved * moved);
  }

 private:
  static constexpr double kEps = std::numeric_limits<double>::epsilon();

  double Stop(const char* what) const {
    return !m_full && m_set.Has("stop_rule") ? m_set["stop_rule"][what].Number() : 0.0;
  }
  void Expect(const char* what, double error, double full, double plain, double stop) const {
    EXPECT_LE(error, stop + (m_full ? full : std::max(full, plain))) << what;
  }

  const Json& m_set;
  bool m_full;
  double m_size, m_count, m_d = 0.0;
};

}  // namespace nu::test

#endif
