#ifndef NU_TESTS_SUPPORT_FINGERPRINT_BITS_H
#define NU_TESTS_SUPPORT_FINGERPRINT_BITS_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>

#include "nu/nu.h"

namespace nu::test::fingerprint {

// A number that depends on every bit of what was added.
class Bits {
 public:
  void Add(double value) {
    // The sign of a NaN is the compiler's.
    if (std::isnan(value)) value = 1e300;
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    m_hash = (m_hash ^ bits) * 0x100000001b3u;  // FNV-1a
    m_hash ^= m_hash >> 29;
  }
  void Add(const CNuPoint& p) {
    for (const double c : {p.x(), p.y(), p.z()}) Add(c);
  }
  void Add(const CNuLine& line) { Add(line.GetPoint()), Add(line.GetDirection()); }
  void Add(const CNuPlane& plane) { Add(plane.GetPoint()), Add(plane.GetNormal()); }
  void Add(const CNuMatrix& m) {
    for (int i = 0; i < m.GetRowSize(); ++i) Add(m.GetRowVector(i));
  }
  void Add(const CNuComplexMatrix& m) { Add(m.RealPart()), Add(m.ImaginaryPart()); }
  void Add(const CNuComplex& c) { Add(c.r()), Add(c.i()); }
  void Add(const CNuVector& v) { AddAll(v); }
  void Add(const CNuPointArray& points) { AddAll(points); }
  void Add(const CNuDoubleArray& numbers) { AddAll(numbers); }
  void Add(const CNuIntArray& numbers) { AddAll(numbers); }
  void Add(const CNuComplexArray& numbers) { AddAll(numbers); }

  // A result of an intersection.
  void AddObject(const CNuObject& object) {
    if (const auto* point = dynamic_cast<const CNuPoint*>(&object)) return Add(*point);
    if (const auto* line = dynamic_cast<const CNuLine*>(&object)) return Add(*line);
    if (const auto* plane = dynamic_cast<const CNuPlane*>(&object)) return Add(*plane);
    if (const auto* feature = dynamic_cast<const CNuNonLinearGeometry*>(&object)) {
      if (feature->IsPositionSet()) Add(feature->GetTransformation());
    }
    if (const auto* circle = dynamic_cast<const CNuCircle*>(&object)) Add(circle->GetRadius());
    if (const auto* parabola = dynamic_cast<const CNuParabola*>(&object)) Add(parabola->GetFocalLength());
    if (const auto* ellipse = dynamic_cast<const CNuEllipse*>(&object))
      Add(ellipse->GetSemiAxisA()), Add(ellipse->GetSemiAxisB());
    if (const auto* hyperbola = dynamic_cast<const CNuHyperbola*>(&object))
      Add(hyperbola->GetSemiAxisA()), Add(hyperbola->GetSemiAxisB());
    if (const auto* curve = dynamic_cast<const CNuPCurve*>(&object)) {
      double u = 0.0;
      Add(curve->ClosestPoint(CNuPoint(1.0, 2.0, 3.0), &u));
      Add(u);
      Add(curve->IsClosed());
      Add(curve->ToPointArray(17));
      Add(curve->ToPointArrayWithin(0.01));
    }
  }
  // Deletes the objects.
  void AddObjects(CNuObjArray& objects) {
    Add(objects.GetSize());
    for (int i = 0; i < objects.GetSize(); ++i) AddObject(*std::unique_ptr<CNuObject>(objects[i]));
    objects.Clear();
  }
  // What an operation adds, or the cause of its failure.
  template<class Operation>
  void AddOutcome(Operation operation) {
    try {
      operation();
    } catch (const CNuException& e) {
      Add(e.GetCause());
    }
  }

  std::uint64_t Value() const { return m_hash; }

 private:
  template<class Array>
  void AddAll(const Array& array) {
    for (int i = 0; i < array.GetSize(); ++i) Add(array[i]);
  }

  std::uint64_t m_hash = 0xcbf29ce484222325u;
};

// Input that is made without mathematical functions, which are the platform's.
class Noise {
 public:
  // In [-1, 1), exact.
  double operator()() { return static_cast<double>(static_cast<std::int64_t>(m_random()) >> 11) * 0x1p-52; }
  double Between(double low, double high) { return low + 0.5 * (high - low) * (1.0 + (*this)()); }
  CNuPoint Point(double reach) {
    const double x = reach * (*this)(), y = reach * (*this)();
    return {x, y, reach * (*this)()};
  }
  CNuVector Vector() {
    const CNuPoint p = Point(1.0);
    return {p.x(), p.y(), p.z() + (p.z() < 0.0 ? -0.1 : 0.1)};
  }

 private:
  std::mt19937_64 m_random{7};
};

}  // namespace nu::test::fingerprint

#endif
