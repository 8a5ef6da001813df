#ifndef NU_ENGINE_LEAST_SQUARES_CONE_LANES_H
#define NU_ENGINE_LEAST_SQUARES_CONE_LANES_H

#include "nu/engine/least_squares/surface_kernels.h"
#include "nu/engine/shapes/axis_frame.h"

namespace nu::engine::least_squares {

// A cone for the kernels, with the letters of cone_least_squares.cpp. Points behind the apex count from the nappe there
// if there are both; otherwise from the one that holds M, as if it went on.
template<bool kBothNappes>
struct ConeLanes {
  static constexpr int kUnknowns = 6;
  static constexpr int kExtras = 1;  // the squared distance from M

  // The frame's origin is M, its x the normal and its z the generator.
  ConeLanes(const AxisFrame& frame, double angleCosine, double angleSine, double heightOfM, double riseOverM,
            double meanFoot)
      : normal(frame.x),
        generator(frame.z),
        across(frame.y),
        offset{Dot(normal, frame.origin), Dot(generator, frame.origin), Dot(across, frame.origin)},
        cosine(angleCosine),
        sine(angleSine),
        height(heightOfM),
        rise(riseOverM),
        foot(meanFoot) {}

  NU_ALWAYS_INLINE void Locate(const PointBlock& block, std::size_t i, Lanes& x, Lanes& y, Lanes& t) const {
    Lanes px, py, pz;
    LoadPoints(block, i, px, py, pz);
    x = normal.x * px + normal.y * py + normal.z * pz - offset.x;
    y = generator.x * px + generator.y * py + generator.z * pz - offset.y;
    t = across.x * px + across.y * py + across.z * pz - offset.z;
  }

  // The side is -1 for points that count from the nappe behind the apex. There d is minus the distance from the axis,
  // and the deviation and its derivatives change their sign.
  struct Spot {
    Lanes x, y, t, d, l, side, e;
  };
  NU_ALWAYS_INLINE void Find(const PointBlock& block, std::size_t i, Spot& p) const {
    Locate(block, i, p.x, p.y, p.t);
    const Lanes h = height + cosine * p.x + sine * p.y;
    const Lanes square = p.t * p.t;
    p.d = h * h + square;
    TakeSquareRoot(p.d);
    p.side = 1.0 - Lanes{};
    if (kBothNappes) {
      const Lanes fromApex = (cosine * p.y - sine * p.x) * sine + (rise + height * cosine);
      p.side = fromApex < 0.0 ? -p.side : p.side;
      p.d *= p.side;
    }
    // d - h, without cancellation.
    const Lanes quotient = square / (p.d + h);
    p.l = h * p.side > 0.0 ? quotient : p.d - h;
    p.e = cosine * p.l + (p.x - rise);
    if (kBothNappes) p.e *= p.side;
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e) const {
    Spot p;
    Find(block, i, p);
    e = p.e;
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e, Lanes (&column)[kUnknowns]) const {
    Spot p;
    Find(block, i, p);
    e = p.e;
    // A point on the axis has no direction: its columns are those of u.
    const Lanes quotient = p.side / p.d;
    const Lanes inverse = p.d != 0.0 ? quotient : Lanes{};
    const Lanes f = p.y + sine * p.l - foot;
    column[0] = p.side;
    column[1] = f * p.side;
    column[2] = p.t * inverse;
    column[3] = p.l * inverse;
    column[4] = f * column[2];
    column[5] = f * column[3];
  }

  NU_ALWAYS_INLINE void AddExtras(const PointBlock& block, std::size_t i, const Lanes& weight, Lanes* sum) const {
    Lanes x, y, t;
    Locate(block, i, x, y, t);
    sum[0] += weight * (x * x + y * y + t * t);
  }

  Vec3 normal, generator, across;
  Vec3 offset;  // of M along them
  double cosine, sine;
  double height, rise, foot;
};

}  // namespace nu::engine::least_squares

#endif
