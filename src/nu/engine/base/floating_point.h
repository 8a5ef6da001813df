#ifndef NU_ENGINE_BASE_FLOATING_POINT_H
#define NU_ENGINE_BASE_FLOATING_POINT_H

#include <limits>

#include "nu/engine/rooms.h"

namespace nu::engine::base {

inline constexpr double kEpsilon = std::numeric_limits<double>::epsilon();  // from 1 to the next number
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kQuietNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace nu::engine::base

#endif
