#ifndef NU_FUZZ_OPERATIONS_INPUT_H
#define NU_FUZZ_OPERATIONS_INPUT_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

#include "odd_numbers.h"

namespace nu::fuzz {

// The bytes of an input, read as choices and as numbers; zeros behind their end.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

  bool IsAtEnd() const { return m_next == m_end; }
  std::uint8_t Byte() { return IsAtEnd() ? std::uint8_t{0} : *m_next++; }
  int Below(int count) { return Byte() % count; }
  // How many elements a set of points or numbers has: below `most`, or many once that was asked for; then numbers
  // behind the end differ.
  int Size(int most) { return m_isLarge ? kMany : Below(most); }
  bool IsLarge() const { return m_isLarge; }
  void SetLarge(bool isLarge) { m_isLarge = isLarge; }

  // Half of all numbers are plain ones, so that most operations get somewhere; the others are odd ones,
  // near the number before, or any bits.
  double Number() {
    const double x = AnyNumber();
    return m_isCoarse && x != 0.0 && std::fabs(x) < kCoarse ? kCoarse : x;
  }

  // For operations whose work grows with a number or with the inverse of a tolerance, from then on.
  void SetCoarse(bool isCoarse) { m_isCoarse = isCoarse; }

  int Integer() {
    const std::uint8_t choice = Byte();
    if (m_isCoarse) return choice % 3;
    return choice < 160 ? choice % 8 : kIntegers[choice % std::size(kIntegers)];
  }

 private:
  double AnyNumber() {
    if (m_isLarge && IsAtEnd()) return m_last = 16.0 * std::fmod(kGolden * ++m_numbers, 1.0) - 8.0;
    const std::uint8_t choice = Byte();
    if (choice < 128) return m_last = 0.125 * (choice - 48);
    if (choice < 224) return m_last = kOddNumbers[choice % std::size(kOddNumbers)];
    if (choice < 244) return m_last = Near(m_last, choice % 5);
    std::uint8_t bits[sizeof m_last];
    for (std::uint8_t& byte : bits) byte = Byte();
    std::memcpy(&m_last, bits, sizeof m_last);
    return m_last;
  }
  static constexpr int kIntegers[] = {
      -1, 8, 9, 10, 12, 16, 17, 31, 40, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};

  static constexpr double kCoarse = 1e-3;
  static constexpr int kMany = 100000;
  static constexpr double kGolden = 0.6180339887498949;  // its multiples are spread evenly

  static double Near(double x, int how) {
    switch (how) {
      case 0:
        return x;
      case 1:
        return -x;
      case 2:
        return std::nextafter(x, std::numeric_limits<double>::infinity());
      case 3:
        return x * (1.0 + 1e-12);
      default:
        return x + 1e-9;
    }
  }

  const std::uint8_t* m_next;
  const std::uint8_t* m_end;
  double m_last = 1.0;
  bool m_isCoarse = false, m_isLarge = false;
  int m_numbers = 0;  // given behind the end
};

}  // namespace nu::fuzz

#endif
