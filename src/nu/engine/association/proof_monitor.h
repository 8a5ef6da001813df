#ifndef NU_ENGINE_ASSOCIATION_PROOF_MONITOR_H
#define NU_ENGINE_ASSOCIATION_PROOF_MONITOR_H

#include <algorithm>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/step_monitor.h"

namespace nu::engine::association {

// The progress of a proof on its way to a monitor: the boxes looked at, the criterion of the best feature, and by how
// much the bound is below it.
class ProofMonitor {
 public:
  ProofMonitor() = default;
  // `unit` turns the sizes of a search into the criterion. The bound counts up to `most`: of a search that is only a
  // part of a proof, up to what the others have proven.
  ProofMonitor(const StepMonitor& monitor, double unit, double most = kInfinity)
      : m_monitor(monitor), m_unit(unit), m_most(most) {}

  // At the start and after every kBoxes. False for good once the monitor has said so.
  bool GoesOn(long boxes, double size, double bound) {
    if (m_isCancelled || boxes < m_next) return !m_isCancelled;
    m_next = boxes + kBoxes;
    const double gap = size - std::max(0.0, std::min({bound, size, m_most}));
    m_isCancelled = !m_monitor.GoesOn(boxes, m_unit * size, m_unit * gap);
    return !m_isCancelled;
  }
  bool IsCancelled() const { return m_isCancelled; }

  // Some milliseconds of work.
  static constexpr long kBoxes = 1000;

 private:
  StepMonitor m_monitor;
  double m_unit = 1.0;
  double m_most = kInfinity;
  long m_next = 1;
  bool m_isCancelled = false;
};

}  // namespace nu::engine::association

#endif
