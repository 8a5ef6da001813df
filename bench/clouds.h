#ifndef NU_BENCH_CLOUDS_H
#define NU_BENCH_CLOUDS_H

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Seeded inputs. The generator's bits are fixed by the standard and the distributions are our own, so every platform
// draws the same numbers. Lengths read as millimetres.
namespace bench {

struct Xyz {
  double x, y, z;
};
using Cloud = std::vector<Xyz>;

inline constexpr double kTwoPi = 6.283185307179586;

class Dice {
 public:
  explicit Dice(std::uint64_t seed) : m_engine(seed) {}
  // In [0, 1), 53 bits.
  double Unit() { return std::ldexp(static_cast<double>(m_engine() >> 11), -53); }
  double Between(double low, double high) { return low + (high - low) * Unit(); }
  // Normal, by the polar pair of uniforms.
  double Normal(double sigma) {
    const double radius = std::sqrt(-2.0 * std::log(1.0 - Unit()));
    return sigma * radius * std::cos(kTwoPi * Unit());
  }
  int Below(int n) { return static_cast<int>(Unit() * n); }

 private:
  std::mt19937_64 m_engine;
};

// A machine table: the part is turned about all axes and lies some part sizes away from the origin.
inline Xyz OnTable(double x, double y, double z) {
  const double c = std::cos(0.7), s = std::sin(0.7);  // about x, then about z
  const double y1 = c * y - s * z, z1 = s * y + c * z;
  return {c * x - s * y1 + 420.0, s * x + c * y1 - 310.0, z1 + 95.0};
}

template<class Draw>
Cloud Scatter(int n, std::uint64_t seed, Draw draw) {
  Dice dice(seed + static_cast<std::uint64_t>(n));
  Cloud cloud;
  cloud.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) cloud.push_back(draw(dice));
  return cloud;
}

// Measured features: a plate, an edge, three quarters of a bore's section, a ball seen from above, a shaft, a
// taper; 5 um of noise.
inline constexpr double kNoise = 0.005;

inline Cloud Plate(int n) {
  return Scatter(n, 101, [](Dice& d) { return OnTable(d.Between(0, 120), d.Between(0, 80), d.Normal(kNoise)); });
}
inline Cloud Edge(int n) {
  return Scatter(n, 102, [](Dice& d) { return OnTable(d.Between(0, 150), d.Normal(kNoise), d.Normal(kNoise)); });
}
inline Cloud Bore(int n) {
  return Scatter(n, 103, [](Dice& d) {
    const double turn = d.Between(0, 0.75 * kTwoPi), radius = 18 + d.Normal(kNoise);
    return OnTable(radius * std::cos(turn), radius * std::sin(turn), d.Normal(kNoise));
  });
}
// Two thirds of an elliptical opening.
inline Cloud Oval(int n) {
  return Scatter(n, 117, [](Dice& d) {
    const double turn = d.Between(0, kTwoPi * 2 / 3), x = std::cos(turn), y = std::sin(turn);
    const double off = d.Normal(kNoise) / std::hypot(30 * x, 50 * y);
    return OnTable((50 + 30 * off) * x, (30 + 50 * off) * y, d.Normal(kNoise));
  });
}
inline Xyz OnSphere(Dice& d, double radius, double lowest) {
  const double height = d.Between(lowest, 1), turn = d.Between(0, kTwoPi), across = std::sqrt(1 - height * height);
  return OnTable(radius * across * std::cos(turn), radius * across * std::sin(turn), radius * height);
}
inline Cloud Dome(int n) {
  return Scatter(n, 104, [](Dice& d) { return OnSphere(d, 12.5 + d.Normal(kNoise), 0.0); });
}
inline Cloud Shaft(int n) {
  return Scatter(n, 115, [](Dice& d) {
    const double turn = d.Between(0, kTwoPi), radius = 18 + d.Normal(kNoise);
    return OnTable(radius * std::cos(turn), radius * std::sin(turn), d.Between(0, 60));
  });
}
inline Cloud Taper(int n) {
  return Scatter(n, 116, [](Dice& d) {
    const double turn = d.Between(0, 0.6 * kTwoPi), along = d.Between(40, 120), out = d.Normal(kNoise);
    const double c = std::cos(0.35), s = std::sin(0.35), radius = along * s + out * c;
    return OnTable(radius * std::cos(turn), radius * std::sin(turn), along * c - out * s);
  });
}

// Sets for the operations on points: filled, hollow, planar, on a line, on a plane, with near copies.
inline Cloud Ball(int n) {
  return Scatter(n, 105, [](Dice& d) { return OnSphere(d, 30 * std::cbrt(d.Unit()), -1.0); });
}
inline Cloud Shell(int n) {
  return Scatter(n, 106, [](Dice& d) { return OnSphere(d, 30 + d.Normal(kNoise), -1.0); });
}
inline Xyz InPlane(double radius, double turn) {
  return {radius * std::cos(turn) + 55, radius * std::sin(turn) - 25, 4};
}
inline Cloud Disk(int n) {
  return Scatter(n, 107, [](Dice& d) { return InPlane(30 * std::sqrt(d.Unit()), d.Between(0, kTwoPi)); });
}
inline Cloud Ring(int n) {
  return Scatter(n, 108, [](Dice& d) { return InPlane(30 + d.Normal(kNoise), d.Between(0, kTwoPi)); });
}
inline Cloud Round(int n) {
  return Scatter(n, 109, [](Dice& d) { return InPlane(30, d.Between(0, kTwoPi)); });
}
inline Cloud Rail(int n) {
  return Scatter(n, 110, [](Dice& d) { return OnTable(d.Between(0, 150), 0, 0); });
}
inline Cloud Glass(int n) {
  return Scatter(n, 111, [](Dice& d) { return OnTable(d.Between(0, 120), d.Between(0, 80), 0); });
}
// A plate seen along its normal, as scanned in lines: a thousand lines, all points of a line share their x.
inline Cloud ScanLines(int n) {
  return Scatter(n, 112, [](Dice& d) { return Xyz{0.1 * d.Below(1000), d.Between(0, 80), d.Normal(kNoise)}; });
}
// Every eighth point is a near copy of an earlier one, closer than kCopy in each coordinate; and the same points
// in another order, each moved by less than that.
inline constexpr double kCopy = 1e-6;
inline Xyz Near(Dice& d, const Xyz& p) {
  const double reach = 0.4 * kCopy;
  return {p.x + d.Between(-reach, reach), p.y + d.Between(-reach, reach), p.z + d.Between(-reach, reach)};
}
inline Cloud WithCopies(int n) {
  Cloud cloud = Ball(n);
  Dice dice(113);
  for (int i = 8; i < n; i += 8) {
    cloud[static_cast<std::size_t>(i)] = Near(dice, cloud[static_cast<std::size_t>(dice.Below(i))]);
  }
  return cloud;
}
inline Cloud Shuffled(const Cloud& cloud) {
  Dice dice(114);
  Cloud other;
  for (const Xyz& p : cloud) other.push_back(Near(dice, p));
  for (std::size_t i = other.size(); i > 1; --i) {
    std::swap(other[i - 1], other[static_cast<std::size_t>(dice.Below(static_cast<int>(i)))]);
  }
  return other;
}

// Row-major numbers in (-1, 1).
struct Block {
  int rows, columns;
  std::vector<double> values;
};
inline Block RandomBlock(int rows, int columns, std::uint64_t seed) {
  Dice dice(seed);
  Block block{rows, columns, {}};
  block.values.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
  for (double& v : block.values) v = dice.Between(-1, 1);
  return block;
}
inline Block Symmetric(int n, std::uint64_t seed) {
  Block block = RandomBlock(n, n, seed);
  const auto at = [&](int i, int j) -> double& { return block.values[static_cast<std::size_t>(i) * n + j]; };
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) at(i, j) = at(j, i);
  }
  return block;
}

// A x = b with known x, a little noise on b.
struct System {
  Block a;
  std::vector<double> b;
};
template<class Unknown>
System NoisySystem(int rows, int columns, double noise, Unknown unknown) {
  System s{RandomBlock(rows, columns, 201), {}};
  Dice dice(202);
  for (int i = 0; i < rows; ++i) {
    double sum = dice.Normal(noise);
    for (int j = 0; j < columns; ++j) sum += s.a.values[static_cast<std::size_t>(i) * columns + j] * unknown(j);
    s.b.push_back(sum);
  }
  return s;
}

inline std::vector<double> Unsorted(int n) {
  Dice dice(301);
  std::vector<double> values(static_cast<std::size_t>(n));
  for (double& v : values) v = dice.Between(-1000, 1000);
  return values;
}

}  // namespace bench

#endif
