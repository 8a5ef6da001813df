#include "nu/engine/base/sort.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "nu/engine/base/bits.h"
#include "nu/engine/base/large_pages.h"

// Radix sort from the least significant digit on, over the upper half of the keys only: in most data that leaves runs
// of one or two elements, which an insertion sort finishes; a longer run goes through the lower half as well.

namespace nu::engine::base {
namespace {

constexpr int kWordBits = 64;

// Up to here an insertion sort is the fastest; measured.
constexpr std::size_t kInsertionSize = 48;
// From here on the tables of the wide digits pay; measured.
constexpr std::size_t kWideSize = 6000;

struct KeyWithIndex {
  double key;
  int index;
};
struct KeyWithCompanion {
  double key;
  double companion;
};

double Key(double record) {
  return record;
}
double Key(const KeyWithIndex& record) {
  return record.key;
}
double Key(const KeyWithCompanion& record) {
  return record.key;
}

// Maps doubles to unsigned words in the same order: the magnitude with its sign as a two's complement, so that both
// zeros become one.
std::uint64_t Word(double x) {
  const auto bits = BitsOf(x);
  constexpr std::uint64_t signBit = std::uint64_t{1} << (kWordBits - 1);
  const std::uint64_t negative = std::uint64_t{0} - (bits >> (kWordBits - 1));
  return (((bits & ~signBit) ^ negative) - negative) ^ signBit;
}

template<class Record>
void InsertionSort(Record* a, std::size_t n) {
  for (std::size_t i = 1; i < n; ++i) {
    const Record record = a[i];
    std::size_t j = i;
    for (; j > 0 && Key(a[j - 1]) > Key(record); --j) a[j] = a[j - 1];
    a[j] = record;
  }
}

// A digit of the words from a first bit up.
template<int kBits, int kDigits>
struct Digits {
  static constexpr int kDigitBits = kBits;
  static constexpr std::size_t kValues = std::size_t{1} << kBits;
  static constexpr int kSpan = kBits * kDigits;
  using Counts = std::array<std::array<std::uint32_t, kValues>, kDigits>;
};
using NarrowDigits = Digits<8, 3>;
using WideDigits = Digits<11, 3>;

// Sorts stably by the digit that starts at bit `low`.
template<class D, class Record>
void SortByDigits(Record* a, Record* scratch, std::size_t n, int low) {
  typename D::Counts counts{};
  for (std::size_t i = 0; i < n; ++i) {
    std::uint64_t digits = Word(Key(a[i])) >> low;
    for (auto& count : counts) {
      ++count[digits % D::kValues];
      digits >>= D::kDigitBits;
    }
  }
  Record* from = a;
  Record* to = scratch;
  for (std::size_t d = 0; d < counts.size(); ++d) {
    auto& place = counts[d];
    const int shift = low + static_cast<int>(d) * D::kDigitBits;
    if (place[(Word(Key(from[0])) >> shift) % D::kValues] == n) continue;
    std::uint32_t before = 0;
    for (auto& p : place) before += std::exchange(p, before);
    for (std::size_t i = 0; i < n; ++i) to[place[(Word(Key(from[i])) >> shift) % D::kValues]++] = from[i];
    std::swap(from, to);
  }
  if (from != a) std::copy_n(from, n, a);
}

// Sorts by the bits below `high`; the words agree in all others.
template<class D, class Record>
void SortBelow(Record* a, Record* scratch, std::size_t n, int high) {
  const int low = std::max(high - D::kSpan, 0);
  SortByDigits<D>(a, scratch, n, low);
  if (low == 0) return;
  for (std::size_t begin = 0, end = 0; begin < n; begin = end) {
    const std::uint64_t upper = Word(Key(a[begin])) >> low;
    for (end = begin + 1; end < n && Word(Key(a[end])) >> low == upper; ++end) {
    }
    if (end - begin <= kInsertionSize) {
      InsertionSort(a + begin, end - begin);
    } else {
      SortBelow<NarrowDigits>(a + begin, scratch, end - begin, low);
    }
  }
}

template<class Record>
void RadixSort(Record* a, Record* scratch, std::size_t n) {
  if (n < kWideSize) {
    SortBelow<NarrowDigits>(a, scratch, n, kWordBits);
  } else {
    SortBelow<WideDigits>(a, scratch, n, kWordBits);
  }
}

// The three forms of the input. Records are loaded from a stretch without NaN and stored back; where there is no memory
// for them, the stretch is merged in place.
struct Values {
  using Record = double;
  double* a;
  double KeyAt(std::size_t i) const { return a[i]; }
  Record Load(std::size_t i) const { return a[i]; }
  void Store(std::size_t i, Record record) const { a[i] = record; }
  void Rotate(std::size_t first, std::size_t middle, std::size_t last) const {
    std::rotate(a + first, a + middle, a + last);
  }
};

struct Indices {
  using Record = KeyWithIndex;
  const double* a;
  int* index;
  double KeyAt(std::size_t i) const { return a[index[i]]; }
  Record Load(std::size_t i) const { return {KeyAt(i), index[i]}; }
  void Store(std::size_t i, const Record& record) const { index[i] = record.index; }
  void Rotate(std::size_t first, std::size_t middle, std::size_t last) const {
    std::rotate(index + first, index + middle, index + last);
  }
};

struct Together {
  using Record = KeyWithCompanion;
  double* a;
  double* b;
  double KeyAt(std::size_t i) const { return a[i]; }
  Record Load(std::size_t i) const { return {a[i], b[i]}; }
  void Store(std::size_t i, const Record& record) const {
    a[i] = record.key;
    b[i] = record.companion;
  }
  void Rotate(std::size_t first, std::size_t middle, std::size_t last) const {
    std::rotate(a + first, a + middle, a + last);
    std::rotate(b + first, b + middle, b + last);
  }
};

// Returns the first position in [first, last) whose key is greater than the given one or, unless `above`, not less.
template<class Sequence>
std::size_t Bound(const Sequence& s, std::size_t first, std::size_t last, double key, bool above) {
  while (first < last) {
    const std::size_t middle = first + (last - first) / 2;
    const bool before = above ? !(s.KeyAt(middle) > key) : s.KeyAt(middle) < key;
    (before ? first : last) = before ? middle + 1 : middle;
  }
  return first;
}

// Merges two neighbouring sorted stretches by rotating the inner quarters of a common cut into place.
template<class Sequence>
void MergeInPlace(const Sequence& s, std::size_t first, std::size_t middle, std::size_t last) {
  if (first == middle || middle == last) return;
  if (last - first == 2) {
    if (s.KeyAt(first) > s.KeyAt(middle)) s.Rotate(first, middle, last);
    return;
  }
  std::size_t left = first + (middle - first) / 2;
  std::size_t right = middle + (last - middle) / 2;
  if (middle - first > last - middle) {
    right = Bound(s, middle, last, s.KeyAt(left), false);
  } else {
    left = Bound(s, first, middle, s.KeyAt(right), true);
  }
  s.Rotate(left, middle, right);
  const std::size_t cut = left + (right - middle);
  MergeInPlace(s, first, left, cut);
  MergeInPlace(s, cut, right, last);
}

template<class Sequence>
void InsertionSort(const Sequence& s, std::size_t begin, std::size_t end) {
  std::array<typename Sequence::Record, kInsertionSize> records;
  for (std::size_t i = begin; i < end; ++i) records[i - begin] = s.Load(i);
  InsertionSort(records.data(), end - begin);
  for (std::size_t i = begin; i < end; ++i) s.Store(i, records[i - begin]);
}

template<class Sequence>
void MergeSort(const Sequence& s, std::size_t begin, std::size_t end) {
  if (end - begin <= kInsertionSize) return InsertionSort(s, begin, end);
  const std::size_t middle = begin + (end - begin) / 2;
  MergeSort(s, begin, middle);
  MergeSort(s, middle, end);
  MergeInPlace(s, begin, middle, end);
}

template<class Sequence>
void SortStretch(const Sequence& s, std::size_t begin, std::size_t end) {
  using Record = typename Sequence::Record;
  const std::size_t n = end - begin;
  if (n <= kInsertionSize) return InsertionSort(s, begin, end);
  constexpr bool inPlace = std::is_same_v<Sequence, Values>;
  const std::size_t room = inPlace ? n : 2 * n;
  const std::unique_ptr<Record[]> memory(new (std::nothrow) Record[room]);
  if (!memory) return MergeSort(s, begin, end);
  AdviseLargePages(memory.get(), room * sizeof(Record));
  if constexpr (inPlace) {
    RadixSort(s.a + begin, memory.get(), n);
  } else {
    Record* records = memory.get() + n;
    for (std::size_t i = 0; i < n; ++i) records[i] = s.Load(begin + i);
    RadixSort(records, memory.get(), n);
    for (std::size_t i = 0; i < n; ++i) s.Store(begin + i, records[i]);
  }
}

template<class Sequence>
void SortStretches(const Sequence& s, int n) {
  const auto size = static_cast<std::size_t>(std::max(n, 0));
  for (std::size_t begin = 0, end = 0; begin < size; begin = end + 1) {
    bool sorted = true;
    double previous = s.KeyAt(begin);
    for (end = begin; end < size && !std::isnan(s.KeyAt(end)); ++end) {
      sorted &= !(previous > s.KeyAt(end));
      previous = s.KeyAt(end);
    }
    if (!sorted) SortStretch(s, begin, end);
  }
}

}  // namespace

void Sort(int n, double* a) noexcept {
  SortStretches(Values{a}, n);
}

void SortIndex(int n, const double* a, int* index) noexcept {
  for (int i = 0; i < n; ++i) index[i] = i;
  SortStretches(Indices{a, index}, n);
}

void SortTogether(int n, double* a, double* b) noexcept {
  SortStretches(Together{a, b}, n);
}

}  // namespace nu::engine::base
