#ifndef NU_BENCH_QUESTION_H
#define NU_BENCH_QUESTION_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nu/foundation/exceptions.h"

namespace bench {

using Numbers = std::vector<double>;

// Two answers agree when they have the same length and no two numbers differ by more than tolerance, relative to
// numbers above 1. Tolerance 0 asks for the same numbers.
inline bool Agree(const Numbers& a, const Numbers& b, double tolerance) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!(std::fabs(a[i] - b[i]) <= tolerance * std::max({1.0, std::fabs(a[i]), std::fabs(b[i])}))) return false;
  }
  return true;
}

// What the benchmark that is running has prepared. Only one input is in memory at a time; the runner calls a benchmark
// several times in a row, and only the first call prepares and checks.
struct Stage {
  const void* owner = nullptr;
  std::shared_ptr<void> scene;
};
inline Stage& CurrentStage() {
  static Stage stage;
  return stage;
}

// One piece of work over inputs of several sizes, asked of the library and of its peers. The one asked first is the
// library; every other answer is checked against its answer, and its own against the first peer's, before anything is
// timed. Runs are named question/implementation/size.
template<class Raw>
class Question {
 public:
  // make(n) gives the raw input of size n, the same at every call.
  Question(std::string name, double tolerance, std::function<Raw(int)> make)
      : m_name(std::move(name)), m_tolerance(tolerance), m_make(std::move(make)) {}

  // prepare turns the raw input into what the implementation wants, untimed; run is timed, with the release of its
  // result; read gives the numbers that must agree. Sizes above the limit are left out.
  template<class Prepare, class Run, class Read>
  Question& Ask(const std::string& who, Prepare prepare, Run run, Read read,
                int limit = std::numeric_limits<int>::max()) {
    const auto make = m_make;
    const auto answer = [=](int n) {
      const auto input = prepare(make(n));
      return Numbers(read(run(input)));
    };
    const auto peers = m_answers;
    const double tolerance = m_tolerance;
    const std::size_t self = m_answers->size();
    m_answers->push_back({limit, answer});

    const auto time = [=](benchmark::State& state, int n, const void* owner) {
      using Input = decltype(prepare(make(n)));
      struct Scene {
        Input input;
        bool agreed;
      };
      Stage& stage = CurrentStage();
      if (stage.owner != owner) {
        stage = Stage();
        auto scene = std::make_shared<Scene>(Scene{prepare(make(n)), false});
        const Answer* other = Partner(*peers, self, n);
        scene->agreed = !other || Agree(read(run(scene->input)), other->give(n), tolerance);
        stage = {owner, scene};
      }
      const Scene& scene = *static_cast<const Scene*>(stage.scene.get());
      if (!scene.agreed) return state.SkipWithError("disagrees");
      for (auto _ : state) {
        auto result = run(scene.input);
        benchmark::DoNotOptimize(result);
      }
    };
    m_runs.push_back({who, limit, time});
    return *this;
  }

  // Registers the runs, all implementations of one size next to each other.
  void Over(const std::vector<int>& sizes) const {
    for (const int n : sizes) {
      for (const Run& run : m_runs) {
        if (n > run.limit) continue;
        const auto owner = std::make_shared<char>();
        const auto time = run.time;
        benchmark::RegisterBenchmark((m_name + "/" + run.who + "/" + std::to_string(n)).c_str(),
                                     [=](benchmark::State& state) { Guarded(state, time, n, owner.get()); })
            ->Unit(benchmark::kMicrosecond);
      }
    }
  }

 private:
  using Time = std::function<void(benchmark::State&, int, const void*)>;
  struct Answer {
    int limit;
    std::function<Numbers(int)> give;
  };
  struct Run {
    std::string who;
    int limit;
    Time time;
  };

  static const Answer* Partner(const std::vector<Answer>& answers, std::size_t self, int n) {
    if (self != 0) return &answers.front();
    for (std::size_t i = 1; i < answers.size(); ++i) {
      if (n <= answers[i].limit) return &answers[i];
    }
    return nullptr;
  }

  static void Guarded(benchmark::State& state, const Time& time, int n, const void* owner) {
    try {
      time(state, n, owner);
    } catch (const CNuException& e) {
      state.SkipWithError((std::string("refused by ") + e.m_szWhere + ": " + e.m_szWhat).c_str());
    } catch (const std::exception& e) {
      state.SkipWithError(e.what());
    }
  }

  std::string m_name;
  double m_tolerance;
  std::function<Raw(int)> m_make;
  std::shared_ptr<std::vector<Answer>> m_answers = std::make_shared<std::vector<Answer>>();
  std::vector<Run> m_runs;
};

}  // namespace bench

#endif
