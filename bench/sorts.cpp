// What does it cost to sort numbers, to find the order of numbers, and to sort with a companion?

#include <algorithm>
#include <numeric>

#include "inputs.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/numeric_helpers.h"
#include "question.h"

namespace {

using bench::Numbers;
using bench::Question;

const std::vector<int> kSizes = {1000, 100000, 1000000};
const auto kSame = [](const auto& x) { return x; };

// Every run sorts a fresh copy.
template<class Sort>
auto OnCopy(Sort sort) {
  return [=](const Numbers& values) {
    Numbers copy = values;
    sort(copy);
    return copy;
  };
}

void AskSort() {
  Question<Numbers>("sort", 0, bench::Unsorted)
      .Ask("nu", kSame, OnCopy([](Numbers& v) { NuSort(static_cast<int>(v.size()), v.data()); }), kSame)
      .Ask("std_sort", kSame, OnCopy([](Numbers& v) { std::sort(v.begin(), v.end()); }), kSame)
      .Ask("std_stable_sort", kSame, OnCopy([](Numbers& v) { std::stable_sort(v.begin(), v.end()); }), kSame)
      .Over(kSizes);
}

void AskSortedInput() {
  Question<Numbers>("sort_sorted", 0,
                    [](int n) {
                      Numbers values = bench::Unsorted(n);
                      std::sort(values.begin(), values.end());
                      return values;
                    })
      .Ask("nu", kSame, OnCopy([](Numbers& v) { NuSort(static_cast<int>(v.size()), v.data()); }), kSame)
      .Ask("std_sort", kSame, OnCopy([](Numbers& v) { std::sort(v.begin(), v.end()); }), kSame)
      .Over(kSizes);
}

std::vector<int> StableOrder(const Numbers& values) {
  std::vector<int> order(values.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int i, int j) { return values[i] < values[j]; });
  return order;
}
const auto kAsNumbers = [](const std::vector<int>& order) { return Numbers(order.begin(), order.end()); };

void AskOrder() {
  Question<Numbers>("sort_order", 0, bench::Unsorted)
      .Ask(
          "nu", kSame,
          [](const Numbers& values) {
            std::vector<int> order(values.size());
            NuSort(static_cast<int>(values.size()), values.data(), order.data());
            return order;
          },
          kAsNumbers)
      .Ask("std_stable_sort", kSame, StableOrder, kAsNumbers)
      .Over(kSizes);
}

struct Two {
  Numbers keys, companions;
};
const auto kJoined = [](const Two& two) {
  Numbers all = two.keys;
  all.insert(all.end(), two.companions.begin(), two.companions.end());
  return all;
};

void AskCompanion() {
  Question<Two>("sort_companion", 0,
                [](int n) {
                  const Numbers keys = bench::Unsorted(n);
                  Numbers companions(keys.size());
                  std::iota(companions.begin(), companions.end(), 0.0);
                  return Two{keys, companions};
                })
      .Ask(
          "nu", kSame,
          [](const Two& input) {
            Two two = input;
            NuSort(static_cast<int>(two.keys.size()), two.keys.data(), two.companions.data());
            return two;
          },
          kJoined)
      .Ask(
          "std_stable_sort", kSame,
          [](const Two& input) {
            std::vector<std::pair<double, double>> pairs(input.keys.size());
            for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {input.keys[i], input.companions[i]};
            std::stable_sort(pairs.begin(), pairs.end(),
                             [](const auto& a, const auto& b) { return a.first < b.first; });
            Two two = input;
            for (std::size_t i = 0; i < pairs.size(); ++i) {
              two.keys[i] = pairs[i].first;
              two.companions[i] = pairs[i].second;
            }
            return two;
          },
          kJoined)
      .Over(kSizes);
}

template<class Array, class Element>
Array Filled(const std::vector<Element>& values) {
  Array array(static_cast<int>(values.size()));
  for (const Element value : values) array.Add(value);
  return array;
}
const auto kSortedArray = [](const auto& array) {
  auto copy = array;
  copy.Sort();
  return copy;
};
const auto kElements = [](const auto& array) { return Numbers(array.GetData(), array.GetData() + array.GetSize()); };

void AskArrays() {
  Question<Numbers>("sort_double_array", 0, bench::Unsorted)
      .Ask("nu", Filled<CNuDoubleArray, double>, kSortedArray, kElements)
      .Ask("std_sort", kSame, OnCopy([](Numbers& v) { std::sort(v.begin(), v.end()); }), kSame)
      .Over(kSizes);
  Question<std::vector<int>>("sort_int_array", 0,
                             [](int n) {
                               std::vector<int> values;
                               for (const double v : bench::Unsorted(n)) values.push_back(static_cast<int>(1e6 * v));
                               return values;
                             })
      .Ask("nu", Filled<CNuIntArray, int>, kSortedArray, kElements)
      .Ask(
          "std_sort", kSame,
          [](const std::vector<int>& values) {
            std::vector<int> copy = values;
            std::sort(copy.begin(), copy.end());
            return copy;
          },
          kAsNumbers)
      .Over(kSizes);
}

const bool kAsked = [] {
  AskSort();
  AskSortedInput();
  AskOrder();
  AskCompanion();
  AskArrays();
  return true;
}();

}  // namespace
