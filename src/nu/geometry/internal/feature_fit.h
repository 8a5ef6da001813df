#ifndef NU_GEOMETRY_INTERNAL_FEATURE_FIT_H
#define NU_GEOMETRY_INTERNAL_FEATURE_FIT_H

#include <cmath>
#include <exception>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/step_monitor.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/foundation/internal/outputs.h"

// What goes into a fit and what comes out of it, on plain numbers. The members of the classes are thin around such
// fits, which read points of any stride where they lie and fail with CNuBestfitException as the classes promise: the
// same causes, names and sizes in the same order.
namespace nu::internal {

struct FitOptions {
  long maxIter = 1;              // fits without steps do not read it
  double tol = 0.0;              // length tolerance of a minimax fit; least squares read NuGetLengthTol()
  bool wantsDeviations = false;  // of least squares
  StepMonitor monitor = {};      // sees the steps of all iterations of the fit, and one of a fit without steps
};

// In the frame and the unit of the points.
template<class Shape>
struct FeatureFit {
  Shape shape;
  double form = 0.0;           // of a minimum zone its width; of least squares 0 unless deviations are wanted
  Deviations deviations = {};  // of least squares, when they are wanted
  long steps = 0;              // of all iterations, those of a least-squares start as well; 1 of a fit without steps
  double lastStep = 0.0;       // its length
};

// The monitor has ended a fit. Never thrown without a monitor, and never out of the library.
class FitCancelled : public std::exception {};

// Counts the steps of a fit on their way to its caller's monitor, from one iteration to the next.
class StepRecord {
 public:
  explicit StepRecord(const StepMonitor& monitor) : m_monitor(monitor) {}

  StepMonitor Monitor() { return {&StepRecord::Pass, this}; }
  long Steps() const { return m_steps; }
  double LastStep() const { return m_lastStep; }
  bool IsCancelled() const { return m_isCancelled; }

 private:
  static bool Pass(void* record, long, double objective, double stepLength) {
    return static_cast<StepRecord*>(record)->GoesOn(objective, stepLength);
  }
  bool GoesOn(double objective, double stepLength) {
    if (m_isCancelled) return false;
    ++m_steps;
    if (!std::isnan(stepLength)) m_lastStep = stepLength;
    m_isCancelled = !m_monitor.GoesOn(m_steps, objective, stepLength);
    return !m_isCancelled;
  }

  StepMonitor m_monitor;
  long m_steps = 0;
  double m_lastStep = 0.0;
  bool m_isCancelled = false;
};

// What fit(options) finds, with its steps. Whatever a fit that was cancelled ends by, it is FitCancelled.
template<class Fit>
auto Monitored(const FitOptions& options, Fit fit) {
  StepRecord record(options.monitor);
  FitOptions watched = options;
  watched.monitor = record.Monitor();
  try {
    auto found = fit(watched);
    if (record.IsCancelled()) throw FitCancelled();
    found.steps = record.Steps();
    found.lastStep = record.LastStep();
    return found;
  } catch (...) {
    if (record.IsCancelled()) throw FitCancelled();
    throw;
  }
}

// For a fit without steps, before it begins.
inline void PassMonitor(const FitOptions& options) {
  if (!options.monitor.GoesOn(1, kQuietNaN, kQuietNaN)) throw FitCancelled();
}

// Of a fit that has these outputs.
inline FitOptions OptionsFor(const double* form, const double* sumSquares, long maxIter = 1) {
  return {.maxIter = maxIter, .wantsDeviations = form != nullptr || sumSquares != nullptr};
}

template<class Shape>
void StoreForm(const FeatureFit<Shape>& found, double* form, double* sumSquares) {
  Output(form, found.form);
  Output(sumSquares, found.deviations.sumSquares);
}

}  // namespace nu::internal

#endif
