#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "options.h"

// Fits, one or many, with the lock of the interpreter released. Points are borrowed for the time of the call.
namespace nu::python {

namespace {

// How often a fit looks whether the user has interrupted it, and progress is shown.
constexpr std::chrono::milliseconds kAttention{50};

struct Outcome {
  Feature feature;
  CNuAssociationReport report;
};

Outcome Fitted(int kind, int criterion, const Job& job, const Options& options, int details, long budget,
               NuStepMonitor monitor, void* context) {
  CNuAssociation association = AssociationOf(job, options);
  association.SetDetails(details);
  association.SetMonitor(monitor, context);
  Outcome outcome{SomeFeature(kind), CNuAssociationReport()};
  const auto wanted = static_cast<ENuCriterion>(criterion);
  std::visit(
      [&](auto& feature) {
        using Class = std::decay_t<decltype(feature)>;
        constexpr bool isConic = std::is_same_v<Class, CNuEllipse> || std::is_same_v<Class, CNuHyperbola> ||
                                 std::is_same_v<Class, CNuParabola>;
        if constexpr (!isConic) {
          if (budget > 0) {
            outcome.report = association.ProveGlobally(wanted, &feature, budget);
            return;
          }
        }
        outcome.report = association.Fit(wanted, &feature);
      },
      outcome.feature);
  return outcome;
}

// Looks for signals such as Ctrl-C, on the thread that has called from Python.
struct Attention {
  static ENuBoolean Monitor(void* context, long, double, double) {
    auto* attention = static_cast<Attention*>(context);
    const auto now = std::chrono::steady_clock::now();
    if (now < attention->next) return NuTrue;
    attention->next = now + kAttention;
    nb::gil_scoped_acquire acquired;
    attention->isInterrupted = PyErr_CheckSignals() != 0;
    return attention->isInterrupted ? NuFalse : NuTrue;
  }

  std::chrono::steady_clock::time_point next = std::chrono::steady_clock::now() + kAttention;
  bool isInterrupted = false;
};

// Arrays that stay as they are, without a copy: the report keeps its numbers.
Doubles Shared(const CNuAssociationReport& report, const CNuDoubleArray& numbers) {
  auto* kept = new CNuAssociationReport(report);
  nb::capsule owner(kept, [](void* p) noexcept { delete static_cast<CNuAssociationReport*>(p); });
  return Doubles(numbers.GetData(), {static_cast<std::size_t>(numbers.GetSize())}, owner);
}

Ints ToArray(const CNuIntArray& numbers) {
  const std::size_t n = static_cast<std::size_t>(numbers.GetSize());
  return Owning<Ints>(std::vector<int>(numbers.GetData(), numbers.GetData() + n), {n});
}

Matrix ToArray(const CNuMatrix& m) {
  const auto rows = static_cast<std::size_t>(m.GetRowSize());
  const auto columns = static_cast<std::size_t>(m.GetColumnSize());
  std::vector<double> numbers;
  for (std::size_t i = 0; i < rows; ++i) numbers.insert(numbers.end(), m.GetData()[i], m.GetData()[i] + columns);
  return Owning<Matrix>(std::move(numbers), {rows, columns});
}

nb::dict UncertaintyOf(const CNuAssociationReport& report) {
  nb::dict all;
  nb::list names, isAngle;
  std::vector<double> uncertainties;
  const int count = report.GetNumberParameters();
  for (int i = 0; i < count; ++i) {
    names.append(report.GetParameterName(i));
    isAngle.append(report.IsParameterAngle(i) != NuFalse);
    uncertainties.push_back(report.GetStandardUncertainty(i));
  }
  CNuPoint origin;
  CNuVector x, y, z;
  report.GetParameterFrame(&origin, &x, &y, &z);
  all["parameters"] = nb::tuple(names);
  all["is_angle"] = nb::tuple(isAngle);
  all["standard_uncertainties"] = Owning<Doubles>(std::move(uncertainties), {static_cast<std::size_t>(count)});
  all["origin"] = python::ToArray(origin);
  all["axes"] = Owning<Matrix>(std::vector<double>{x[0], x[1], x[2], y[0], y[1], y[2], z[0], z[1], z[2]}, {3, 3});
  // No free parameter leaves a matrix that the library does not have.
  all["covariance"] = count > 0 ? ToArray(report.GetCovariance()) : Owning<Matrix>(std::vector<double>(), {0, 0});
  all["degrees_of_freedom"] = report.GetDegreesOfFreedom();
  all["standard_deviation"] = report.GetStandardDeviation();
  all["condition"] = report.GetCondition();
  return all;
}

nb::dict ContactsOf(const CNuAssociationReport& report) {
  nb::dict all;
  all["indices"] = ToArray(report.GetContactPoints());
  all["sides"] = ToArray(report.GetContactSides());
  all["multipliers"] = Shared(report, report.GetMultipliers());
  return all;
}

nb::dict ExplanationOf(const CNuAssociationReport& report) {
  nb::dict all;
  all["text"] = report.Explain();
  all["weakest_parameter"] = report.GetWeakestParameter();
  all["weakest_uncertainty"] = report.GetWeakestUncertainty();
  all["coverage"] = report.GetCoverage();
  CNuPoint place;
  all["probing_place"] = report.GetProbingPlace(&place) != NuFalse ? nb::cast(python::ToArray(place)) : nb::none();
  return all;
}

// What the report holds beside the form, by the names of the details. What the kind of fit does not have is left out.
nb::dict DetailsOf(const CNuAssociationReport& report, int details) {
  nb::dict all;
  const auto add = [&](int wanted, const char* name, auto&& make) {
    if ((details & wanted) != wanted) return;
    try {
      all[name] = make();
    } catch (const CNuOperationException& failure) {
      if (failure.GetCause() != NuOperationUnsupported) throw;
      all[name] = nb::none();
    }
  };
  add(NuDetailDeviations, "deviations", [&] { return nb::cast(Shared(report, report.GetDeviations())); });
  add(NuDetailUncertainty, "uncertainty", [&] { return UncertaintyOf(report); });
  add(NuDetailContacts, "contacts", [&] { return ContactsOf(report); });
  add(NuDetailExplanation, "explanation", [&] { return ExplanationOf(report); });
  return all;
}

// (feature, numbers, details) of a fit that converged. The order of the numbers is that of nu._fits.Fit.
using Found = nb::typed<nb::tuple, nb::any, nb::ellipsis>;

Found ToTuple(const Outcome& outcome, int details, bool isProven) {
  const CNuAssociationReport& report = outcome.report;
  nb::object bound = isProven ? nb::object(nb::float_(report.GetBound())) : nb::none();
  nb::object gap = isProven ? nb::object(nb::float_(report.GetGap())) : nb::none();
  nb::tuple numbers = nb::make_tuple(report.GetNumberPoints(), report.GetForm(), report.GetPeak(), report.GetValley(),
                                     report.GetRootMeanSquare(), report.GetSumSquares(), report.GetSteps(),
                                     report.GetLastStep(), report.IsGlobal() != NuFalse, bound, gap);
  return Found(nb::make_tuple(outcome.feature, numbers, DetailsOf(report, details)));
}

int WithForm(int details) {
  return details | NuDetailForm;
}

Found FitOne(int kind, int criterion, const PointsArgument& points, const WeightsArgument& weights,
             const Options& options, int details, long budget) {
  const Job job = ToJob(points, weights);
  Attention attention;
  std::optional<Outcome> outcome;
  {
    nb::gil_scoped_release released;
    outcome = Fitted(kind, criterion, job, options, WithForm(details), budget, &Attention::Monitor, &attention);
  }
  if (attention.isInterrupted) throw nb::python_error();
  outcome->report.Require();
  return ToTuple(*outcome, details, budget > 0);
}

// Why a fit failed, in a sentence with its remedy; empty where it does not fail.
std::string ExplainFailure(int kind, int criterion, const PointsArgument& points, const WeightsArgument& weights,
                           const Options& options) {
  const Job job = ToJob(points, weights);
  nb::gil_scoped_release released;
  const Outcome outcome = Fitted(kind, criterion, job, options, NuDetailExplanation, 0, nullptr, nullptr);
  return outcome.report.HasConverged() != NuFalse ? "" : outcome.report.Explain();
}

// The tolerances of a thread, which a new one does not inherit.
struct Tolerances {
  void Set() const {
    NuSetTol(tol);
    NuSetLarge(large);
    NuSetZero(zero);
    NuSetSqrtTol(sqrtTol);
    NuSetLengthTol(length);
    NuSetMinEdgeLength(minEdgeLength);
    NuSetDegreeTol(degree);
    NuSetRadianTol(radian);
    NuSetMinAngle(minAngle);
  }

  double tol = NuGetTol(), large = NuGetLarge(), zero = NuGetZero(), sqrtTol = NuGetSqrtTol(),
         length = NuGetLengthTol(), minEdgeLength = NuGetMinEdgeLength(), degree = NuGetDegreeTol(),
         radian = NuGetRadianTol(), minAngle = NuGetMinAngle();
};

// Fits the jobs on several threads: each takes the next job that no other has taken.
class Crew {
 public:
  struct Result {
    std::optional<Outcome> outcome;
    std::exception_ptr failure;
  };

  Crew(int kind, int criterion, const std::vector<Job>& jobs, const Options& options, int details)
      : m_kind(kind),
        m_criterion(criterion),
        m_jobs(jobs),
        m_options(options),
        m_details(details),
        m_results(jobs.size()) {}
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;
  ~Crew() { Stop(); }

  void Start(unsigned workers) {
    for (unsigned i = 0; i < workers; ++i) m_threads.emplace_back([this] { Work(); });
  }
  // Waits until all is done, at most for some time; returns how many jobs are.
  std::size_t Wait(std::chrono::milliseconds atMost) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, atMost, [this] { return m_done == m_jobs.size(); });
    return m_done;
  }
  void Stop() {
    m_isStopped = true;
    for (std::thread& thread : m_threads) thread.join();
    m_threads.clear();
  }
  std::vector<Result>& Results() { return m_results; }

 private:
  static ENuBoolean Monitor(void* context, long, double, double) {
    return static_cast<Crew*>(context)->m_isStopped ? NuFalse : NuTrue;
  }

  void Work() {
    m_tolerances.Set();
    for (std::size_t i = m_next++; i < m_jobs.size() && !m_isStopped; i = m_next++) {
      Result& result = m_results[i];
      try {
        result.outcome = Fitted(m_kind, m_criterion, m_jobs[i], m_options, m_details, 0, &Crew::Monitor, this);
        result.outcome->report.Require();
      } catch (...) {
        result.failure = std::current_exception();
      }
      const std::lock_guard lock(m_mutex);
      if (++m_done == m_jobs.size()) m_changed.notify_one();
    }
  }

  const int m_kind, m_criterion;
  const std::vector<Job>& m_jobs;
  const Options& m_options;
  const int m_details;
  const Tolerances m_tolerances;
  std::vector<Result> m_results;
  std::atomic<std::size_t> m_next = 0;
  std::atomic<bool> m_isStopped = false;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::size_t m_done = 0;
  std::vector<std::thread> m_threads;
};

nb::object ErrorOf(const std::exception_ptr& failure) {
  // The translators of the module turn it into a Python error, which is taken back at once.
  const auto thrower = nb::cpp_function([failure] { std::rethrow_exception(failure); });
  try {
    thrower();
  } catch (nb::python_error& error) {
    return nb::borrow(error.value());
  }
  return nb::none();
}

// One tuple as of FitOne, or an exception, per part. `progress` is called with the number of parts done.
nb::typed<nb::list, nb::any> FitMany(int kind, int criterion, const std::vector<PointsArgument>& parts,
                                     const std::optional<std::vector<WeightsArgument>>& weights, const Options& options,
                                     int details, unsigned workers, const nb::object& progress) {
  std::vector<Job> jobs;
  for (std::size_t i = 0; i < parts.size(); ++i)
    jobs.push_back(ToJob(parts[i], weights ? (*weights)[i] : std::nullopt));
  Crew crew(kind, criterion, jobs, options, WithForm(details));
  crew.Start(workers);
  for (std::size_t done = 0; done < jobs.size();) {
    {
      nb::gil_scoped_release released;
      done = crew.Wait(kAttention);
    }
    if (PyErr_CheckSignals() != 0) {
      nb::gil_scoped_release released;
      crew.Stop();
      break;
    }
    if (!progress.is_none()) progress(done);
  }
  if (PyErr_Occurred() != nullptr) throw nb::python_error();
  nb::typed<nb::list, nb::any> all;
  for (Crew::Result& result : crew.Results()) {
    all.append(result.failure ? ErrorOf(result.failure) : nb::object(ToTuple(*result.outcome, details, false)));
    result.outcome.reset();
  }
  return all;
}

}  // namespace

void BindFits(nb::module_& m) {
  nb::class_<Options>(m, "Options")
      .def(nb::init<>())
      .def_rw("radius", &Options::radius, nb::arg().none())
      .def_rw("major_radius", &Options::majorRadius, nb::arg().none())
      .def_rw("semi_angle", &Options::semiAngle, nb::arg().none())
      .def_rw("direction", &Options::direction, nb::arg().none())
      .def_rw("point", &Options::point, nb::arg().none())
      .def_rw("material_side", &Options::materialSide)
      .def_rw("start", &Options::start, nb::arg().none())
      .def_rw("max_steps", &Options::maxSteps, nb::arg().none())
      .def_rw("tolerance", &Options::tolerance, nb::arg().none());
  m.def("fit", &FitOne, nb::arg("kind"), nb::arg("criterion"), nb::arg("points").noconvert(), nb::arg("weights").none(),
        nb::arg("options"), nb::arg("details"), nb::arg("budget"));
  m.def("fit_many", &FitMany, nb::arg("kind"), nb::arg("criterion"), nb::arg("parts"), nb::arg("weights").none(),
        nb::arg("options"), nb::arg("details"), nb::arg("workers"), nb::arg("progress").none());
  m.def("explain_failure", &ExplainFailure, nb::arg("kind"), nb::arg("criterion"), nb::arg("points").noconvert(),
        nb::arg("weights").none(), nb::arg("options"));
}

}  // namespace nu::python
