#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "nu/nu.h"
#include "support/failing_new.h"
#include "support/failures.h"

namespace {

CNuPoint pool[64];

// Numbers in braces read as elements, but would be a capacity and an expand size, or rows and columns.
template<class T>
void Take(const T&);
template<class T, class = void>
constexpr bool kTakesBraces = false;
template<class T>
constexpr bool kTakesBraces<T, std::void_t<decltype(Take<T>({1, 2}))>> = true;
static_assert(kTakesBraces<std::vector<int>> && !kTakesBraces<CNuDoubleArray> && !kTakesBraces<CNuIntArray> &&
              !kTakesBraces<CNuObjArray> && !kTakesBraces<CNuPointArray> && !kTakesBraces<CNuMatrix>);

// Element number i of each kind of array, and the number back.
template<class Array>
auto Make(int i) {
  if constexpr (std::is_same_v<Array, CNuObjArray>) {
    return static_cast<CNuObject*>(pool + i);
  } else {
    return decltype(Array(0).First())(i);
  }
}
int Number(double e) {
  return static_cast<int>(e);
}
int Number(const CNuPoint& e) {
  return static_cast<int>(e.x());
}
int Number(CNuObject* e) {
  return static_cast<int>(static_cast<CNuPoint*>(e) - pool);
}

// {size, capacity, expand size, elements...}
template<class Array>
std::vector<int> State(const Array& a) {
  std::vector<int> state{a.GetSize(), a.GetCapacity(), a.GetExpandSize()};
  for (int i = 0; i < a.GetSize(); ++i) state.push_back(Number(a[i]));
  return state;
}
using S = std::vector<int>;

template<class Array>
Array Counted(int n, int expandSize = 10) {
  Array a(n, expandSize);
  for (int i = 0; i < n; ++i) a.Add(Make<Array>(i));
  return a;
}

template<class Array>
class Arrays : public testing::Test {};
using Kinds = testing::Types<CNuIntArray, CNuDoubleArray, CNuPointArray, CNuObjArray>;
TYPED_TEST_SUITE(Arrays, Kinds);

TYPED_TEST(Arrays, GrowAndShrinkToStatedCapacities) {
  auto a = Counted<TypeParam>(0);
  for (int i = 0; i < 25; ++i) a.Add(Make<TypeParam>(i));
  EXPECT_EQ(a.GetCapacity(), 30);
  a.SetExpandSize(1);
  a.SetSize(31);
  while (a.GetSize() < 33) a.Add(a[a.GetSize() - 25]);  // its own element, also when the storage moves
  EXPECT_EQ(a.GetCapacity(), 33);
  EXPECT_EQ(Number(a.First()) + 100 * Number(a.Last()), 700);
  a.Clear();
  EXPECT_EQ(State(a), S({0, 33, 1}));

  auto b = Counted<TypeParam>(4);
  b.Append(Counted<TypeParam>(2));
  b.Append(Counted<TypeParam>(0));
  EXPECT_EQ(State(b), S({6, 6, 10, 0, 1, 2, 3, 0, 1}));
  b.Truncate(5);
  b.Add(Make<TypeParam>(9));
  b.Truncate(6);
  EXPECT_EQ(State(b), S({6, 6, 10, 0, 1, 2, 3, 0, 9}));
  b.SetCapacity(9);
  b.FreeExtra();
  EXPECT_EQ(b.GetCapacity(), 6);
  for (int i = 0; i < 2; ++i) {
    b.Truncate(0);
    EXPECT_TRUE(b.GetData() == nullptr && b.GetCapacity() == 0);
  }
}

TYPED_TEST(Arrays, CopiesAreDeepAndKeepAnAmpleBuffer) {
  TypeParam source(6, 4), ample(20), tight(1);
  for (int i = 0; i < 2; ++i) source.Add(Make<TypeParam>(i));
  const auto* buffer = ample.GetData();
  ample = source;
  tight = source;
  ample[0] = Make<TypeParam>(9);
  EXPECT_EQ(State(ample), S({2, 20, 4, 9, 1}));
  EXPECT_EQ(ample.GetData(), buffer);
  tight = *&tight;
  EXPECT_EQ(State(tight), S({2, 6, 4, 0, 1}));
  TypeParam copy(tight);
  tight = TypeParam(0);  // a source without storage leaves the target its own
  EXPECT_EQ(State(tight), S({0, 6, 10}));
  tight = Counted<TypeParam>(3);
  EXPECT_EQ(State(tight), S({3, 6, 10, 0, 1, 2}));
  TypeParam moved(std::move(copy));
  copy = std::move(moved);
  EXPECT_EQ(State(copy), S({2, 6, 4, 0, 1}));
}

TYPED_TEST(Arrays, FailuresAreNamedAndChangeNothing) {
  constexpr bool ints = std::is_same_v<TypeParam, CNuIntArray>, doubles = std::is_same_v<TypeParam, CNuDoubleArray>;
  constexpr bool points = std::is_same_v<TypeParam, CNuPointArray>;
  const std::string name = ints ? "CNuIntArray" : doubles ? "CNuDoubleArray" : points ? "CNuPointArray" : "CNuObjArray";
  const std::string shared = doubles ? "CNuIntArray" : name;
  const std::string setSize = "operation 14 SetSize operation|" + name + "::SetSize(" + (ints ? "int NewSize" : "");
  const std::string truncate = "operation 14 Truncate operation|" + name + "::Truncate(int Size)";
  auto a = Counted<TypeParam>(4);
  TypeParam none(0), wide(1, INT_MAX);
  wide.Add(Make<TypeParam>(0));
  std::vector<std::pair<std::string, std::string>> cases = {
      {FailureOf([] { TypeParam(-1); }), "construction 2 size|" + name + " [0,0]"},
      {FailureOf([] { TypeParam(3, 0); }), "construction 15 nArrayExpandSize|" + name + " [0,0]"},
      {FailureOf([&] { a.SetSize(4); }), setSize + ") [0,0]"},
      {FailureOf([&] { none.SetCapacity(0); }), setSize + ") [0,0]"},
      {FailureOf([&] { wide.Add(Make<TypeParam>(0)); }), setSize + ") [0,0]"},
      {FailureOf([&] { a.SetExpandSize(0); }),
       "operation 14 SetExpandSize operation|" + name + "::SetExpandSize(" + (ints ? "int NewXSize" : "") + ") [0,0]"},
      {FailureOf([&] { a.Truncate(5); }), truncate + " [0,3]"},
      {FailureOf([&] { none.Truncate(-1); }), truncate + " [0,-1]"},
      {FailureOf([&] { a.Append(a); }), "operation 18 Append operation|" + name + "::Append() [0,0]"},
      {FailureOf([&] { (void)a[4]; }), "operation 3 element operator[]|" + name + " [0,3]"},
      {FailureOf([&] { (void)std::as_const(a)[-1]; }), "operation 3 element operator[]|" + name + " [0,3]"},
      {FailureOf([&] { (void)none[0]; }), "operation 8 element operator[]|" + name + " [0,0]"},
      {FailureOf([&] { none.First(); }), "operation 8 First operator[]|" + shared + "::First() [0,0]"},
      {FailureOf([&] { none.Last(); }), "operation 8 Last operator[]|" + shared + "::Last() [0,0]"},
  };
  if constexpr (ints || doubles || points) {
    const std::string sub = " SubArray operation|" + name + "::SubArray(i, j) ";
    const std::string remove = " Remove operation|" + name + "::Remove() ";
    cases.insert(cases.end(), {{FailureOf([&] { a.SubArray(3, 1); }), "operation 15" + sub + "[0,0]"},
                               {FailureOf([&] { a.SubArray(0, 4); }), "operation 3" + sub + "[0,3]"},
                               {FailureOf([&] { none.SubArray(0, 0); }), "operation 8" + sub + "[0,0]"},
                               {FailureOf([&] { a.Remove(4); }), "operation 3" + remove + "[0,3]"},
                               {FailureOf([&] { none.Remove(0); }), "operation 8" + remove + "[0,0]"}});
    auto b = Counted<TypeParam>(5, 3);
    b.Remove(2);
    EXPECT_EQ(State(b), S({4, 5, 3, 0, 1, 3, 4}));
    EXPECT_EQ(State(b.SubArray(1, 2)), S({2, 2, 3, 1, 3}));
  }
  const auto withoutMemory = [](auto call) {
    const std::string failure = FailureOf([&] { (nu::test::FailAllocation(0), call()); });
    nu::test::FailAllocation(-1);
    return failure;
  };
  const auto more = Counted<TypeParam>(9);
  const long live = nu::test::LiveAllocations();
  const std::string short1 = withoutMemory([] { TypeParam(3); }), short2 = withoutMemory([&] { a = more; }),
                    short3 = withoutMemory([&] { a.SetSize(8); }) + withoutMemory([&] { a.Append(more); }) +
                             withoutMemory([&] { a.Add(Make<TypeParam>(0)); }) + withoutMemory([&] { a.Truncate(2); });
  const long leaked = nu::test::LiveAllocations() - live;
  EXPECT_LE(leaked, 3);  // the three texts
  EXPECT_EQ(short1 + short2, "memory 301 |" + name + "() [0,0]memory 301 |" + name + "::Copy() [0,0]");
  EXPECT_EQ(short3.find("nothing"), std::string::npos);
  for (const auto& [failure, expected] : cases) EXPECT_EQ(failure, expected);
  EXPECT_EQ(State(a), S({4, 4, 10, 0, 1, 2, 3}));
  EXPECT_EQ(State(wide), S({1, 1, INT_MAX, 0}));
}

template<class Array, class Element>
Array Of(std::initializer_list<Element> values) {
  Array a(0);
  for (const Element& v : values) a.Add(v);
  return a;
}
constexpr auto Ints = Of<CNuIntArray, int>;
constexpr auto Doubles = Of<CNuDoubleArray, double>;

TEST(Arrays, MasksSelectAndReserveTheirSum) {
  const auto wrong = [](const std::string& name) {
    return "operation 5 SubArray operation|" + name + "::SubArray(const CNuIntArray& ip) [0,0]";
  };
  const CNuDoubleArray a = Doubles({7, 8, 9});
  EXPECT_EQ(State(a.SubArray(Ints({1, 0, 1}))), S({2, 2, 10, 7, 9}));
  EXPECT_EQ(State(a.SubArray(Ints({0, 5, 1}))), S({2, 6, 10, 8, 9}));
  EXPECT_EQ(FailureOf([&] { a.SubArray(Ints({1})); }), wrong("CNuDoubleArray"));
  const auto points = Of<CNuPointArray, CNuPoint>({{0, 1, 2}, {3, 4, 5}});
  EXPECT_EQ(State(points.SubArray(Ints({0, 1}))), S({1, 1, 10, 3}));
  EXPECT_EQ(FailureOf([&] { points.SubArray(Ints({1})); }), wrong("CNuPointArray"));
  EXPECT_EQ(points.GetDataX()[1] + 10 * points.GetDataY()[1] + 100 * points.GetDataZ()[1], 543);
}

TEST(Arrays, NumbersAreSearchedSummedAndSorted) {
  CNuDoubleArray a = Doubles({3, 1, 3, 2});
  CNuIntArray ints = Ints({3, 1, 3, 2}), order(0);
  EXPECT_EQ(ints.Sum() + 10 * ints.Find(2) + 100 * ints.Find(7), 9 + 30 - 100);
  EXPECT_EQ(Ints({INT_MAX, 1}).Sum(), INT_MIN);
  a.Sort(&order);
  ints.Sort(&ints);
  EXPECT_TRUE(order.IsEqual(Ints({1, 3, 0, 2})) && ints.IsEqual(order) && ints.GetCapacity() == 4 &&
              !ints.IsEqual(Ints({1, 3, 0})));
  ints.Sort();
  EXPECT_TRUE(ints.IsEqual(Ints({0, 1, 2, 3})));
  EXPECT_EQ(a.Find(2.0, 0.0) + 10 * a.Find(2.5, 0.6) + 100 * a.Find(1.0, 1e-9), 99);
  EXPECT_EQ(a.Max() + 10 * a.Min() + 100 * a.Sum() + 1000 * a.ToVector()[3], 2913.0);
  EXPECT_EQ(Doubles({-2e300}).Max(), -NuGetLarge());
  a.Sort();
  EXPECT_TRUE(a.IsEqual(Doubles({1, 2, 3, 3}), 1e-300) && !a.IsEqual(Doubles({1, 2, 3, 3.5}), 0.5));
  EXPECT_TRUE(CNuDoubleArray(0).IsEqual(CNuDoubleArray(4), 0.0));
  EXPECT_TRUE(a.IsMonotonicIncreasing() && !a.IsStrictlyIncreasing() && Doubles({5}).IsStrictlyIncreasing());

  const CNuDoubleArray none(3);
  EXPECT_EQ(none.Sum(), 0.0);
  const auto empty = [](const std::string& operation) {
    return "operation 8 " + operation + " operation|CNuDoubleArray::" + operation + "() [0,0]";
  };
  EXPECT_EQ(FailureOf([&] { none.Max(); }), empty("Max"));
  EXPECT_EQ(FailureOf([&] { none.Min(); }), empty("Min"));
  EXPECT_EQ(FailureOf([&] { none.IsMonotonicIncreasing(); }), empty("IsMonotonicIncreasing"));
  EXPECT_EQ(FailureOf([&] { none.IsStrictlyIncreasing(); }), empty("IsStrictlyIncreasing"));
}

}  // namespace
