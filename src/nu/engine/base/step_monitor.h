#ifndef NU_ENGINE_BASE_STEP_MONITOR_H
#define NU_ENGINE_BASE_STEP_MONITOR_H

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// Watches an iteration and may end it. `function` is called once per step, or once per pass over the points by methods
// that take no steps, or once by those that are over in a few passes, with the number of the step from 1 on, the value
// that is minimised and the length of the step; false ends the iteration as cancelled. Lengths are those of the
// caller's points, values that are not known yet NaN. It is passed by value, costs nothing where there is no function,
// and has no influence on the steps.
struct StepMonitor {
  bool (*function)(void* context, long step, double objective, double stepLength) = nullptr;
  void* context = nullptr;  // passed on as it is

  bool GoesOn(long step, double objective, double stepLength) const {
    return function == nullptr || function(context, step, objective, stepLength);
  }
};

}  // namespace nu::engine::base

#endif
