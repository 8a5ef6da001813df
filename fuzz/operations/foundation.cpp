// The operations of nu/foundation: one line each.

#include "operations/arguments.h"

namespace nu::fuzz {

namespace {

struct Numbers {
  explicit Numbers(Pool& pool) : count(pool.Values().Below(10) - 1) {
    for (double& number : numbers) number = pool.Values().Number();
  }
  int count;
  double numbers[8];
};

void IsEqual(Pool& pool) {
  const Numbers a(pool), b(pool);
  const double tol = pool.Values().Number();
  pool.Make([&] { NuIsEqual(a.count, b.count, a.numbers, b.numbers, tol); });
}

void Sort(Pool& pool) {
  const Numbers a(pool);
  Numbers sorted(a), along(a);
  int index[8];
  pool.Make([&] {
    NuSort(a.count, a.numbers, index);
    NuSort(a.count, sorted.numbers);
    NuSort(a.count, sorted.numbers, along.numbers);
  });
}

constexpr Operation kOperations[] = {
    {"NuIsEqual(int, int, const double*, const double*, double)", IsEqual},
    {"NuSort(int, double*)", Sort},
    {"NuSort(int, const double*, int*)", Sort},
    {"NuSort(int, double*, double*)", Sort},
    NU_FUNCTION(const char*, NuCauseText, (const CNuException&)),
    NU_FUNCTION(const char*, NuCauseName, (const CNuException&)),
    NU_MEMBER(CNuAlgebra&, CNuAlgebra, operator=, (const CNuAlgebra&)),
    NU_CONSTRUCTOR(CNuBestfitException, ()),
    NU_CONSTRUCTOR(CNuBestfitException, (int, const char*, int)),
    NU_CONSTRUCTOR(CNuBestfitException, (const CNuBestfitException&)),
    NU_MEMBER(CNuBestfitException&, CNuBestfitException, operator=, (const CNuBestfitException&)),
    NU_MEMBER(int, CNuBestfitException, GetCause, () const),
    NU_MEMBER(int, CNuBestfitException, GetSize, () const),
    NU_CONSTRUCTOR(CNuConstructionException, ()),
    NU_CONSTRUCTOR(CNuConstructionException, (int, const char*, const char*, int, int)),
    NU_CONSTRUCTOR(CNuConstructionException, (const CNuConstructionException&)),
    NU_MEMBER(CNuConstructionException&, CNuConstructionException, operator=, (const CNuConstructionException&)),
    NU_MEMBER(int, CNuConstructionException, GetCause, () const),
    NU_CONSTRUCTOR(CNuDoubleArray, (int)),
    NU_CONSTRUCTOR(CNuDoubleArray, (int, int)),
    NU_CONSTRUCTOR(CNuDoubleArray, (const CNuDoubleArray&)),
    NU_CONSTRUCTOR(CNuDoubleArray, (CNuDoubleArray &&)),
    NU_MEMBER(CNuDoubleArray&, CNuDoubleArray, operator=, (const CNuDoubleArray&)),
    NU_MEMBER(CNuDoubleArray&, CNuDoubleArray, operator=, (CNuDoubleArray &&)),
    NU_MEMBER(int, CNuDoubleArray, GetSize, () const),
    NU_MEMBER(int, CNuDoubleArray, GetCapacity, () const),
    NU_MEMBER(int, CNuDoubleArray, GetExpandSize, () const),
    NU_MEMBER(const double*, CNuDoubleArray, GetData, () const),
    NU_MEMBER(double*, CNuDoubleArray, GetData, ()),
    NU_MEMBER(void, CNuDoubleArray, SetCapacity, (int)),
    NU_MEMBER(void, CNuDoubleArray, SetSize, (int)),
    NU_MEMBER(void, CNuDoubleArray, SetExpandSize, (int)),
    NU_MEMBER(double, CNuDoubleArray, operator[], (int) const),
    NU_MEMBER(double&, CNuDoubleArray, operator[], (int)),
    NU_MEMBER(double, CNuDoubleArray, First, () const),
    NU_MEMBER(double, CNuDoubleArray, Last, () const),
    NU_MEMBER(void, CNuDoubleArray, Add, (double)),
    NU_MEMBER(void, CNuDoubleArray, Append, (const CNuDoubleArray&)),
    NU_MEMBER(void, CNuDoubleArray, Remove, (int)),
    NU_MEMBER(void, CNuDoubleArray, Truncate, (int)),
    NU_MEMBER(void, CNuDoubleArray, FreeExtra, ()),
    NU_MEMBER(void, CNuDoubleArray, Clear, ()),
    NU_MEMBER(CNuDoubleArray, CNuDoubleArray, SubArray, (int, int) const),
    NU_MEMBER(CNuDoubleArray, CNuDoubleArray, SubArray, (const CNuIntArray&) const),
    NU_MEMBER(int, CNuDoubleArray, Find, (double, double) const),
    NU_MEMBER(ENuBoolean, CNuDoubleArray, IsEqual, (const CNuDoubleArray&, double) const),
    NU_MEMBER(double, CNuDoubleArray, Max, () const),
    NU_MEMBER(double, CNuDoubleArray, Min, () const),
    NU_MEMBER(double, CNuDoubleArray, Sum, () const),
    NU_MEMBER(ENuBoolean, CNuDoubleArray, IsMonotonicIncreasing, () const),
    NU_MEMBER(ENuBoolean, CNuDoubleArray, IsStrictlyIncreasing, () const),
    NU_MEMBER(void, CNuDoubleArray, Sort, ()),
    NU_MEMBER(void, CNuDoubleArray, Sort, (CNuIntArray*) const),
    NU_MEMBER(CNuVector, CNuDoubleArray, ToVector, () const),
    NU_MEMBER(CNuException&, CNuException, operator=, (const CNuException&)),
    NU_MEMBER(int, CNuException, GetCause, () const),
    NU_FUNCTION(void, CNuException::SetAssert, ()),
    NU_FUNCTION(int, CNuException::IsAssertEnabled, ()),
    NU_CONSTRUCTOR(CNuIntArray, (int)),
    NU_CONSTRUCTOR(CNuIntArray, (int, int)),
    NU_CONSTRUCTOR(CNuIntArray, (const CNuIntArray&)),
    NU_CONSTRUCTOR(CNuIntArray, (CNuIntArray &&)),
    NU_MEMBER(CNuIntArray&, CNuIntArray, operator=, (const CNuIntArray&)),
    NU_MEMBER(CNuIntArray&, CNuIntArray, operator=, (CNuIntArray &&)),
    NU_MEMBER(int, CNuIntArray, GetSize, () const),
    NU_MEMBER(int, CNuIntArray, GetCapacity, () const),
    NU_MEMBER(int, CNuIntArray, GetExpandSize, () const),
    NU_MEMBER(const int*, CNuIntArray, GetData, () const),
    NU_MEMBER(int*, CNuIntArray, GetData, ()),
    NU_MEMBER(void, CNuIntArray, SetCapacity, (int)),
    NU_MEMBER(void, CNuIntArray, SetSize, (int)),
    NU_MEMBER(void, CNuIntArray, SetExpandSize, (int)),
    NU_MEMBER(int, CNuIntArray, operator[], (int) const),
    NU_MEMBER(int&, CNuIntArray, operator[], (int)),
    NU_MEMBER(int, CNuIntArray, First, () const),
    NU_MEMBER(int, CNuIntArray, Last, () const),
    NU_MEMBER(void, CNuIntArray, Add, (int)),
    NU_MEMBER(void, CNuIntArray, Append, (const CNuIntArray&)),
    NU_MEMBER(void, CNuIntArray, Remove, (int)),
    NU_MEMBER(void, CNuIntArray, Truncate, (int)),
    NU_MEMBER(void, CNuIntArray, FreeExtra, ()),
    NU_MEMBER(void, CNuIntArray, Clear, ()),
    NU_MEMBER(CNuIntArray, CNuIntArray, SubArray, (int, int) const),
    NU_MEMBER(int, CNuIntArray, Find, (int) const),
    NU_MEMBER(ENuBoolean, CNuIntArray, IsEqual, (const CNuIntArray&) const),
    NU_MEMBER(int, CNuIntArray, Sum, () const),
    NU_MEMBER(void, CNuIntArray, Sort, ()),
    NU_MEMBER(void, CNuIntArray, Sort, (CNuIntArray*) const),
    NU_CONSTRUCTOR(CNuInterval, ()),
    NU_CONSTRUCTOR(CNuInterval, (double, double, int, int)),
    NU_MEMBER(void, CNuInterval, GetBounds, (double*, double*) const),
    NU_MEMBER(int, CNuInterval, IsLeftOpen, () const),
    NU_MEMBER(int, CNuInterval, IsRightOpen, () const),
    NU_MEMBER(int, CNuInterval, IsIn, (double) const),
    NU_MEMBER(int, CNuInterval, IsOverlapping, (const CNuInterval&) const),
    NU_CONSTRUCTOR(CNuMemoryException, ()),
    NU_CONSTRUCTOR(CNuMemoryException, (const char*)),
    NU_CONSTRUCTOR(CNuMemoryException, (const CNuMemoryException&)),
    NU_MEMBER(CNuMemoryException&, CNuMemoryException, operator=, (const CNuMemoryException&)),
    NU_MEMBER(int, CNuMemoryException, GetCause, () const),
    NU_MEMBER(CNuNumericalAnalysis&, CNuNumericalAnalysis, operator=, (const CNuNumericalAnalysis&)),
    NU_CONSTRUCTOR(CNuObjArray, (int)),
    NU_CONSTRUCTOR(CNuObjArray, (int, int)),
    NU_CONSTRUCTOR(CNuObjArray, (const CNuObjArray&)),
    NU_CONSTRUCTOR(CNuObjArray, (CNuObjArray &&)),
    NU_MEMBER(CNuObjArray&, CNuObjArray, operator=, (const CNuObjArray&)),
    NU_MEMBER(CNuObjArray&, CNuObjArray, operator=, (CNuObjArray &&)),
    NU_MEMBER(int, CNuObjArray, GetSize, () const),
    NU_MEMBER(int, CNuObjArray, GetCapacity, () const),
    NU_MEMBER(int, CNuObjArray, GetExpandSize, () const),
    NU_MEMBER(CNuObject* const*, CNuObjArray, GetData, () const),
    NU_MEMBER(CNuObject**, CNuObjArray, GetData, ()),
    NU_MEMBER(void, CNuObjArray, SetCapacity, (int)),
    NU_MEMBER(void, CNuObjArray, SetSize, (int)),
    NU_MEMBER(void, CNuObjArray, SetExpandSize, (int)),
    NU_MEMBER(CNuObject*, CNuObjArray, operator[], (int) const),
    NU_MEMBER(CNuObject*&, CNuObjArray, operator[], (int)),
    NU_MEMBER(CNuObject*, CNuObjArray, First, () const),
    NU_MEMBER(CNuObject*, CNuObjArray, Last, () const),
    NU_MEMBER(void, CNuObjArray, Add, (CNuObject*)),
    NU_MEMBER(void, CNuObjArray, Append, (const CNuObjArray&)),
    NU_MEMBER(void, CNuObjArray, Truncate, (int)),
    NU_MEMBER(void, CNuObjArray, FreeExtra, ()),
    NU_MEMBER(void, CNuObjArray, Clear, ()),
    NU_MEMBER(CNuObject&, CNuObject, operator=, (const CNuObject&)),
    NU_MEMBER(CNuObject::ENuObjectType, CNuObject, GetType, () const),
    NU_CONSTRUCTOR(CNuOperationException, ()),
    NU_CONSTRUCTOR(CNuOperationException, (int, const char*, const char*, int, int, double, double)),
    NU_CONSTRUCTOR(CNuOperationException, (const CNuOperationException&)),
    NU_MEMBER(CNuOperationException&, CNuOperationException, operator=, (const CNuOperationException&)),
    NU_MEMBER(int, CNuOperationException, GetCause, () const),
    NU_MEMBER(double, CNuOperationException, GetValue, () const),
    NU_MEMBER(CNuTrigonometry&, CNuTrigonometry, operator=, (const CNuTrigonometry&)),
    NU_FUNCTION(double, nu::acosh, (double)),
    NU_FUNCTION(double, NuPythag, (double, double)),
    NU_FUNCTION(double, NuPythag, (double, double, double)),
    NU_FUNCTION(double, NuAngleIn360Degree, (double)),
    NU_FUNCTION(double, NuAngleIn2Pi, (double)),
    NU_FUNCTION(double, NuArcCosSin, (double, double)),
    NU_FUNCTION(void, NuCosSin, (double, double*, double*)),
    NU_FUNCTION(ENuBoolean, NuIsTriangle, (double, double, double, double)),
    NU_FUNCTION(double, NuGetTol, ()),
    NU_FUNCTION(void, NuSetTol, (double)),
    NU_FUNCTION(double, NuGetLarge, ()),
    NU_FUNCTION(void, NuSetLarge, (double)),
    NU_FUNCTION(double, NuGetZero, ()),
    NU_FUNCTION(void, NuSetZero, (double)),
    NU_FUNCTION(double, NuGetSqrtTol, ()),
    NU_FUNCTION(void, NuSetSqrtTol, (double)),
    NU_FUNCTION(double, NuGetLengthTol, ()),
    NU_FUNCTION(void, NuSetLengthTol, (double)),
    NU_FUNCTION(double, NuGetMinEdgeLength, ()),
    NU_FUNCTION(void, NuSetMinEdgeLength, (double)),
    NU_FUNCTION(double, NuGetDegreeTol, ()),
    NU_FUNCTION(void, NuSetDegreeTol, (double)),
    NU_FUNCTION(double, NuGetRadianTol, ()),
    NU_FUNCTION(void, NuSetRadianTol, (double)),
    NU_FUNCTION(double, NuGetMinAngle, ()),
    NU_FUNCTION(void, NuSetMinAngle, (double)),
};

}  // namespace

std::span<const Operation> FoundationOperations() {
  return kOperations;
}

}  // namespace nu::fuzz
