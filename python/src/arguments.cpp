#include "arguments.h"

#include <climits>
#include <cstdint>
#include <iterator>

namespace nu::python {

Triple ToTriple(const CNuPoint& p) {
  return {{p.x(), p.y(), p.z()}};
}

Triple ToTriple(const CNuVector& v) {
  return {{v[0], v[1], v[2]}};
}

bool ReadTriple(PyObject* source, Triple* triple) {
  if (PySequence_Check(source) == 0 || PySequence_Size(source) != 3) {
    PyErr_Clear();
    return false;
  }
  for (int i = 0; i < 3; ++i) {
    PyObject* item = PySequence_GetItem(source, i);
    const double number = item != nullptr ? PyFloat_AsDouble(item) : -1.0;
    Py_XDECREF(item);
    if (PyErr_Occurred() != nullptr) {
      PyErr_Clear();
      return false;
    }
    triple->xyz[static_cast<std::size_t>(i)] = number;
  }
  return true;
}

Vector3 ToArray(const Triple& triple) {
  return Owning<Vector3>(std::vector<double>(triple.xyz.begin(), triple.xyz.end()), {3});
}

Rows ToArray(const CNuPointArray& points) {
  const int n = points.GetSize();
  std::vector<double> xyz;
  xyz.reserve(3 * static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const CNuPoint p = points[i];
    xyz.insert(xyz.end(), {p.x(), p.y(), p.z()});
  }
  return Owning<Rows>(std::move(xyz), {static_cast<std::size_t>(n), 3});
}

CNuDoubleArray ToNumbers(const double* numbers, int count) {
  CNuDoubleArray array(count > 0 ? count : 1);
  for (int i = 0; i < count; ++i) array.Add(numbers[i]);
  return array;
}

Block ToBlock(const PointsArgument& points) {
  const std::size_t count = points.shape(0);
  if (count > static_cast<std::size_t>(INT_MAX)) throw nb::value_error("more than 2147483647 points");
  if (count < 2) return {points.data(), static_cast<int>(count), 3};
  const std::int64_t stride = points.stride(0);
  if (points.stride(1) != 1 || stride < 3 || stride > INT_MAX)
    throw nb::value_error("the coordinates of a point are not next to each other");
  return {points.data(), static_cast<int>(count), static_cast<int>(stride)};
}

Feature SomeFeature(int kind) {
  static constexpr Feature (*kMakers[])() = {
      [] { return Feature(Some<CNuLine>()); },      [] { return Feature(Some<CNuPlane>()); },
      [] { return Feature(Some<CNuCircle>()); },    [] { return Feature(Some<CNuEllipse>()); },
      [] { return Feature(Some<CNuHyperbola>()); }, [] { return Feature(Some<CNuParabola>()); },
      [] { return Feature(Some<CNuSphSurf>()); },   [] { return Feature(Some<CNuCylSurf>()); },
      [] { return Feature(Some<CNuConSurf>()); },   [] { return Feature(Some<CNuTorSurf>()); }};
  static_assert(std::size(kMakers) == std::variant_size_v<Feature>);
  if (kind < 0 || kind >= static_cast<int>(std::size(kMakers))) throw nb::value_error("no such feature");
  return kMakers[kind]();
}

const CNuGeometry& AsGeometry(const Feature& feature) {
  return std::visit([](const auto& f) -> const CNuGeometry& { return f; }, feature);
}

CNuGeometry& AsGeometry(Feature& feature) {
  return std::visit([](auto& f) -> CNuGeometry& { return f; }, feature);
}

}  // namespace nu::python
