#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "nu/foundation/double_array.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/object_array.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/point.h"
#include "nu/geometry/point_array.h"
#include "nu/linalg/vector.h"
#include "support/failing_new.h"
#include "support/failures.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// One element type of the family: element i, and its number back.
struct Ints {
  using Array = CNuIntArray;
  static constexpr const char* name = "CNuIntArray";
  static int Make(int i) { return i; }
  static int Read(int e) { return e; }
};
struct Doubles {
  using Array = CNuDoubleArray;
  static constexpr const char* name = "CNuDoubleArray";
  static double Make(int i) { return i; }
  static int Read(double e) { return static_cast<int>(e); }
};
struct Points {
  using Array = CNuPointArray;
  static constexpr const char* name = "CNuPointArray";
  static CNuPoint Make(int i) { return CNuPoint(i, 2.0 * i, -i); }
  static int Read(const CNuPoint& e) { return e.z() == -e.x() ? static_cast<int>(e.x()) : -1; }
};
struct Objects {
  using Array = CNuObjArray;
  static constexpr const char* name = "CNuObjArray";
  static CNuObject* Make(int i) {
    static CNuPoint pool[64];
    return &pool[i];
  }
  static int Read(CNuObject* e) {
    return static_cast<int>(static_cast<CNuPoint*>(e) - static_cast<CNuPoint*>(Make(0)));
  }
};

template<class Kind>
class Arrays : public testing::Test {
 public:
  using Subject = typename Kind::Array;

  static Subject Counted(int n) {
    Subject a(n);
    for (int i = 0; i < n; ++i) a.Add(Kind::Make(i));
    return a;
  }
  static std::vector<int> Values(const Subject& a) {
    std::vector<int> values;
    for (int i = 0; i < a.GetSize(); ++i) values.push_back(Kind::Read(a[i]));
    return values;
  }
  // Size, capacity and expand size at once.
  static std::vector<int> Shape(const Subject& a) { return {a.GetSize(), a.GetCapacity(), a.GetExpandSize()}; }
};

using Shape = std::vector<int>;
using Values = std::vector<int>;
using Kinds = testing::Types<Ints, Doubles, Points, Objects>;
TYPED_TEST_SUITE(Arrays, Kinds);

TYPED_TEST(Arrays, GrowByTheExpandSizeAndOnlyOnRequest) {
  auto a = TestFixture::Counted(0);
  EXPECT_EQ(a.GetData(), nullptr);
  for (int i = 0; i < 25; ++i) a.Add(TypeParam::Make(i));
  EXPECT_EQ(this->Shape(a), Shape({25, 30, 10}));
  a.SetSize(31);
  EXPECT_EQ(this->Shape(a), Shape({25, 31, 10}));
  a.SetExpandSize(1);
  a.SetCapacity(32);
  while (a.GetSize() < 33) a.Add(a[a.GetSize() - 25]);  // its own element, also when the storage moves
  EXPECT_EQ(this->Shape(a), Shape({33, 33, 1}));
  EXPECT_EQ(TypeParam::Read(a.First()), 0);
  EXPECT_EQ(TypeParam::Read(a.Last()), 7);
  a[32] = TypeParam::Make(9);
  EXPECT_EQ(TypeParam::Read(a.Last()), 9);
  a.Clear();
  EXPECT_EQ(this->Shape(a), Shape({0, 33, 1}));
}

TYPED_TEST(Arrays, AppendAndShrinkToExactSizes) {
  auto a = TestFixture::Counted(5);
  a.Append(TestFixture::Counted(3));
  EXPECT_EQ(this->Shape(a), Shape({8, 8, 10}));
  EXPECT_EQ(this->Values(a), Values({0, 1, 2, 3, 4, 0, 1, 2}));
  a.Append(TestFixture::Counted(0));
  a.Truncate(6);
  EXPECT_EQ(this->Shape(a), Shape({6, 6, 10}));
  a.Add(TypeParam::Make(7));
  a.Truncate(7);
  EXPECT_EQ(this->Shape(a), Shape({7, 7, 10}));
  a.SetSize(20);
  a.FreeExtra();
  EXPECT_EQ(this->Shape(a), Shape({7, 7, 10}));
  EXPECT_EQ(this->Values(a), Values({0, 1, 2, 3, 4, 0, 7}));
  a.Truncate(0);
  EXPECT_EQ(this->Shape(a), Shape({0, 0, 10}));
  EXPECT_EQ(a.GetData(), nullptr);
  a.FreeExtra();
  a.Append(TestFixture::Counted(0));
  a.Truncate(0);
  EXPECT_EQ(a.GetCapacity(), 0);
}

TYPED_TEST(Arrays, CopiesAreDeepAndKeepAnAmpleBuffer) {
  using Array = typename TypeParam::Array;
  Array source(6, 4);
  for (int i = 0; i < 3; ++i) source.Add(TypeParam::Make(i));
  Array ample(20);
  const auto* buffer = ample.GetData();
  ample = source;
  EXPECT_EQ(this->Shape(ample), Shape({3, 20, 4}));
  EXPECT_EQ(ample.GetData(), buffer);
  Array tight(1);
  tight = source;
  ample[0] = TypeParam::Make(9);
  EXPECT_EQ(this->Shape(tight), Shape({3, 6, 4}));
  EXPECT_EQ(this->Values(tight), this->Values(source));
  tight = *&tight;
  EXPECT_EQ(this->Shape(tight), Shape({3, 6, 4}));
  Array copy(tight);
  tight = Array(0);  // a source without storage leaves the target its own
  EXPECT_EQ(this->Shape(tight), Shape({0, 6, 10}));
  tight = TestFixture::Counted(2);
  EXPECT_EQ(this->Shape(tight), Shape({2, 6, 10}));
  Array moved(std::move(copy));
  copy = std::move(moved);
  moved = Array(copy);
  EXPECT_EQ(this->Values(moved), Values({0, 1, 2}));
}

TYPED_TEST(Arrays, FailuresAreNamedAndChangeNothing) {
  using Array = typename TypeParam::Array;
  const bool ints = std::is_same_v<Array, CNuIntArray>;
  auto a = TestFixture::Counted(4);
  Array none(0);
  Array wide(1, INT_MAX);
  wide.Add(TypeParam::Make(0));
  const std::string name = TypeParam::name;
  const std::string shared = std::is_same_v<Array, CNuDoubleArray> ? "CNuIntArray" : name;
  const std::string setSize =
      "operation 14 SetSize operation|" + name + (ints ? "::SetSize(int NewSize)" : "::SetSize()") + " [0,0]";
  const std::string expand = "operation 14 SetExpandSize operation|" + name +
                             (ints ? "::SetExpandSize(int NewXSize)" : "::SetExpandSize()") + " [0,0]";
  const std::string truncate = "operation 14 Truncate operation|" + name + "::Truncate(int Size)";
  const std::string element = "operation 3 element operator[]|" + name + " [0,3]";
  const struct {
    std::string failure, expected;
  } cases[] = {
      {FailureOf([] { Array(-1); }), "construction 2 size|" + name + " [0,0]"},
      {FailureOf([] { Array(3, 0); }), "construction 15 nArrayExpandSize|" + name + " [0,0]"},
      {FailureOf([&] { a.SetSize(4); }), setSize},
      {FailureOf([&] { a.SetCapacity(-1); }), setSize},
      {FailureOf([&] { none.SetSize(0); }), setSize},
      {FailureOf([&] { wide.Add(TypeParam::Make(0)); }), setSize},
      {FailureOf([&] { a.SetExpandSize(0); }), expand},
      {FailureOf([&] { a.Truncate(5); }), truncate + " [0,3]"},
      {FailureOf([&] { none.Truncate(-1); }), truncate + " [0,-1]"},
      {FailureOf([&] { a.Append(a); }), "operation 18 Append operation|" + name + "::Append() [0,0]"},
      {FailureOf([&] { (void)a[4]; }), element},
      {FailureOf([&] { (void)std::as_const(a)[-1]; }), element},
      {FailureOf([&] { (void)none[0]; }), "operation 8 element operator[]|" + name + " [0,0]"},
      {FailureOf([&] { none.First(); }), "operation 8 First operator[]|" + shared + "::First() [0,0]"},
      {FailureOf([&] { none.Last(); }), "operation 8 Last operator[]|" + shared + "::Last() [0,0]"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.failure, c.expected);
  EXPECT_EQ(this->Shape(a), Shape({4, 4, 10}));
  EXPECT_EQ(this->Shape(wide), Shape({1, 1, INT_MAX}));
}

TYPED_TEST(Arrays, RemoveAndSubArray) {
  if constexpr (!std::is_same_v<TypeParam, Objects>) {
    using Array = typename TypeParam::Array;
    auto a = TestFixture::Counted(5);
    a.Remove(2);
    EXPECT_EQ(this->Values(a), Values({0, 1, 3, 4}));
    EXPECT_EQ(a.GetCapacity(), 5);
    a.SetExpandSize(3);
    EXPECT_EQ(this->Shape(a.SubArray(1, 2)), Shape({2, 2, 3}));
    EXPECT_EQ(this->Values(a.SubArray(1, 3)), Values({1, 3, 4}));
    Array none(2);
    const std::string name = TypeParam::name;
    const std::string sub = " SubArray operation|" + name + "::SubArray(i, j) ";
    const std::string remove = " Remove operation|" + name + "::Remove() ";
    EXPECT_EQ(FailureOf([&] { a.SubArray(3, 1); }), "operation 15" + sub + "[0,0]");
    EXPECT_EQ(FailureOf([&] { a.SubArray(0, 4); }), "operation 3" + sub + "[0,3]");
    EXPECT_EQ(FailureOf([&] { a.SubArray(-1, 4); }), "operation 3" + sub + "[0,3]");
    EXPECT_EQ(FailureOf([&] { none.SubArray(0, 0); }), "operation 8" + sub + "[0,0]");
    EXPECT_EQ(FailureOf([&] { a.Remove(4); }), "operation 3" + remove + "[0,3]");
    EXPECT_EQ(FailureOf([&] { none.Remove(0); }), "operation 8" + remove + "[0,0]");
  }
}

TYPED_TEST(Arrays, WithoutMemoryNothingChangesAndNothingLeaks) {
  using Array = typename TypeParam::Array;
  const long live = nu::test::LiveAllocations();
  {
    const std::string name = TypeParam::name;
    auto a = TestFixture::Counted(3);
    const auto fail = [](auto call) {
      const std::string failure = FailureOf([&] {
        nu::test::FailAllocation(0);
        call();
      });
      nu::test::FailAllocation(-1);
      return failure;
    };
    Array source(9);
    for (int i = 0; i < 4; ++i) source.Add(TypeParam::Make(i));
    EXPECT_EQ(fail([] { Array(3); }), "memory 301 |" + name + "() [0,0]");
    EXPECT_EQ(fail([&] { Array{a}; }), "memory 301 |" + name + "::Copy() [0,0]");
    EXPECT_EQ(fail([&] { a = source; }), "memory 301 |" + name + "::Copy() [0,0]");
    for (const std::string& failure : {fail([&] { a.SetSize(8); }), fail([&] { a.Add(TypeParam::Make(0)); }),
                                       fail([&] { a.Append(source); }), fail([&] { a.Truncate(2); })}) {
      EXPECT_EQ(failure.substr(0, 11), "memory 301 ");
    }
    EXPECT_EQ(this->Shape(a), Shape({3, 3, 10}));
    EXPECT_EQ(this->Values(a), Values({0, 1, 2}));
  }
  EXPECT_EQ(nu::test::LiveAllocations(), live);
}

CNuDoubleArray DoublesOf(std::initializer_list<double> values) {
  CNuDoubleArray a(0);
  for (const double v : values) a.Add(v);
  return a;
}
CNuIntArray IntsOf(std::initializer_list<int> values) {
  CNuIntArray a(0);
  for (const int v : values) a.Add(v);
  return a;
}

TEST(Arrays, MasksSelectAndReserveTheirSum) {
  const CNuDoubleArray a = DoublesOf({7, 8, 9});
  EXPECT_TRUE(a.SubArray(IntsOf({1, 0, 1})).IsEqual(DoublesOf({7, 9}), 1e-12));
  const CNuDoubleArray wide = a.SubArray(IntsOf({0, 5, 1}));
  EXPECT_EQ(wide.GetCapacity(), 6);
  EXPECT_TRUE(wide.IsEqual(DoublesOf({8, 9}), 1e-12));
  CNuPointArray points(3);
  for (int i = 0; i < 3; ++i) points.Add(CNuPoint(i, 0, i * i));
  EXPECT_EQ(points.SubArray(IntsOf({0, 0, 1}))[0].z(), 4.0);
  EXPECT_TRUE(points.GetDataZ().IsEqual(DoublesOf({0, 1, 4}), 1e-12));
  EXPECT_EQ(FailureOf([&] { a.SubArray(IntsOf({1})); }),
            "operation 5 SubArray operation|CNuDoubleArray::SubArray(const CNuIntArray& ip) [0,0]");
  EXPECT_EQ(FailureOf([&] { points.SubArray(IntsOf({1})); }),
            "operation 5 SubArray operation|CNuPointArray::SubArray(const CNuIntArray& ip) [0,0]");
}

TEST(Arrays, NumbersAreSearchedSummedAndSorted) {
  CNuDoubleArray a = DoublesOf({3, 1, 3, 2});
  CNuIntArray order(0);
  a.Sort(&order);
  EXPECT_TRUE(order.IsEqual(IntsOf({1, 3, 0, 2})));
  EXPECT_EQ(a.First(), 3.0);
  EXPECT_EQ(a.Find(2.0, 0.0), -1);
  EXPECT_EQ(a.Find(2.5, 0.6), 0);
  EXPECT_EQ(a.Max() + 10 * a.Min() + 100 * a.Sum(), 913.0);
  EXPECT_EQ(DoublesOf({-2e300, 2e300}).Max(), 2e300);
  EXPECT_EQ(DoublesOf({-2e300}).Max(), -NuGetLarge());
  EXPECT_EQ(a.ToVector()[3], 2.0);
  a.Sort();
  EXPECT_TRUE(a.IsEqual(DoublesOf({1, 2, 3, 3}), 1e-12));
  EXPECT_FALSE(a.IsEqual(DoublesOf({1, 2, 3, 3.5}), 0.5));
  EXPECT_TRUE(CNuDoubleArray(0).IsEqual(CNuDoubleArray(4), 0.0));
  EXPECT_TRUE(a.IsMonotonicIncreasing() && !a.IsStrictlyIncreasing());
  EXPECT_TRUE(DoublesOf({5}).IsStrictlyIncreasing());
  EXPECT_FALSE(DoublesOf({1, kNaN}).IsMonotonicIncreasing());

  CNuIntArray ints = IntsOf({3, 1, 3, 2});
  ints.Sort(&order);
  EXPECT_TRUE(order.IsEqual(IntsOf({1, 3, 0, 2})));
  EXPECT_EQ(10 * ints.Sum() + ints.Find(2), 93);
  EXPECT_EQ(ints.Find(7), -1);
  ints.Sort(&ints);
  EXPECT_TRUE(ints.IsEqual(IntsOf({1, 3, 0, 2})));
  ints.Sort();
  EXPECT_TRUE(ints.IsEqual(IntsOf({0, 1, 2, 3})));
  EXPECT_EQ(IntsOf({INT_MAX, 1}).Sum(), INT_MIN);

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
