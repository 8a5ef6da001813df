#ifndef NU_ENGINE_SHAPES_LEAST_BEND_H
#define NU_ENGINE_SHAPES_LEAST_BEND_H

namespace nu::engine::shapes {

// The size of points as the least part of the radius of what they lie on, or of their distance from its apex or vertex.
// What is larger or farther bends by less over the points than the rounding errors of the numbers that place it: it is
// a line, a plane or a cylinder to them. The square root of the rounding unit.
inline constexpr double kLeastBend = 0x1p-26;

}  // namespace nu::engine::shapes

#endif
