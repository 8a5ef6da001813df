#ifndef NU_PYTHON_ARGUMENTS_H
#define NU_PYTHON_ARGUMENTS_H

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/variant.h>
#include <nanobind/stl/vector.h>

#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "nu/nu.h"

// What the bindings share: points and directions, borrowed blocks of points, arrays for Python, and the ten features
// that associations fit.
namespace nu::python {

namespace nb = nanobind;

// A point or a direction as it comes from Python: any three numbers in a sequence or an array.
struct Triple {
  CNuPoint Point() const { return CNuPoint(xyz[0], xyz[1], xyz[2]); }
  CNuVector Vector() const { return CNuVector(xyz[0], xyz[1], xyz[2]); }

  std::array<double, 3> xyz{};
};

Triple ToTriple(const CNuPoint& p);
Triple ToTriple(const CNuVector& v);

// Reads three numbers; whether they were three, with no Python error left.
bool ReadTriple(PyObject* source, Triple* triple);

using Vector3 = nb::ndarray<nb::numpy, const double, nb::shape<3>>;
using Doubles = nb::ndarray<nb::numpy, const double, nb::ndim<1>>;
using Ints = nb::ndarray<nb::numpy, const int, nb::ndim<1>>;
using Matrix = nb::ndarray<nb::numpy, const double, nb::ndim<2>>;
using Rows = nb::ndarray<nb::numpy, const double, nb::shape<-1, 3>>;

// An array of Python that owns the numbers.
template<class Array, class T>
Array Owning(std::vector<T> numbers, std::initializer_list<std::size_t> shape) {
  auto* kept = new std::vector<T>(std::move(numbers));
  nb::capsule owner(kept, [](void* p) noexcept { delete static_cast<std::vector<T>*>(p); });
  return Array(kept->data(), shape, owner);
}

Vector3 ToArray(const Triple& triple);
inline Vector3 ToArray(const CNuPoint& p) {
  return ToArray(ToTriple(p));
}
inline Vector3 ToArray(const CNuVector& v) {
  return ToArray(ToTriple(v));
}
Rows ToArray(const CNuPointArray& points);

CNuDoubleArray ToNumbers(const double* numbers, int count);

// Points of Python, borrowed: x, y, z of point i at xyz[i * stride].
struct Block {
  const double* xyz = nullptr;
  int count = 0;
  int stride = 3;
};
using PointsArgument = nb::ndarray<const double, nb::shape<-1, 3>, nb::device::cpu>;

// Raises ValueError for more points than an int counts, and for a layout that cannot be borrowed: the Python side hands
// none of the two over.
Block ToBlock(const PointsArgument& points);

// The order is that of the table in generate_features.py.
using Feature = std::variant<CNuLine, CNuPlane, CNuCircle, CNuEllipse, CNuHyperbola, CNuParabola, CNuSphSurf,
                             CNuCylSurf, CNuConSurf, CNuTorSurf>;

// Any feature of the class: what a fit writes to.
template<class T>
T Some() {
  if constexpr (std::is_constructible_v<T, double>) {
    return T(45.0);
  } else if constexpr (std::is_constructible_v<T, double, double>) {
    return T(2.0, 1.0);
  } else {
    return T();
  }
}
// Some feature of the class with this number; raises ValueError for another number.
Feature SomeFeature(int kind);
const CNuGeometry& AsGeometry(const Feature& feature);
CNuGeometry& AsGeometry(Feature& feature);

void BindErrors(nb::module_& m);
void BindFeatures(nb::module_& m);
void BindFits(nb::module_& m);
void BindParts(nb::module_& m);
void BindPolynomial(nb::module_& m);

}  // namespace nu::python

namespace nanobind::detail {
template<>
struct type_caster<nu::python::Triple> {
  NB_TYPE_CASTER(nu::python::Triple, const_name("numpy.typing.ArrayLike"))

  bool from_python(handle source, std::uint8_t, cleanup_list*) noexcept {
    return nu::python::ReadTriple(source.ptr(), &value);
  }
  static handle from_cpp(const nu::python::Triple& triple, rv_policy, cleanup_list*) noexcept {
    return nu::python::ToArray(triple).cast().release();
  }
};
}  // namespace nanobind::detail

#endif
