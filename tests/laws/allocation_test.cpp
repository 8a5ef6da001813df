// Every allocation of every operation fails once: the operation must end in the memory exception (geometry may pass on
// the standard failure, and a fit may word it as a failed numerical step), leak nothing, and leave its object as it
// was.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "nu/nu.h"
#include "support/failing_new.h"
#include "support/scratch_file.h"

namespace {

using nu::test::AllocationHasFailed;
using nu::test::FailAllocation;
using nu::test::LiveAllocations;

enum class Outcome { kDone, kMemory, kStandard, kOther };

Outcome OutcomeOf(const std::function<void()>& operation) {
  try {
    operation();
    return Outcome::kDone;
  } catch (const CNuMemoryException&) {
    return Outcome::kMemory;
  } catch (const std::bad_alloc&) {
    return Outcome::kStandard;
  } catch (const CNuBestfitException& e) {
    return e.GetCause() == 11 ? Outcome::kStandard : Outcome::kOther;
  } catch (...) {
    return Outcome::kOther;
  }
}

// Runs the operation with its first, second, ... allocation failing until it gets through; `unchanged` is asked after
// every failure. Below the geometry nothing but the library's own exception will do.
bool isGeometry = false;
struct Geometry {
  Geometry() { isGeometry = true; }
  ~Geometry() { isGeometry = false; }
};
void FailEveryAllocation(
    const std::string& name, const std::function<void()>& operation,
    const std::function<bool()>& unchanged = [] { return true; }) {
  constexpr long most = 2000;
  for (long k = 0; k < most; ++k) {
    const long before = LiveAllocations();
    FailAllocation(k);
    const Outcome outcome = OutcomeOf(operation);
    const bool failed = AllocationHasFailed();
    FailAllocation(-1);
    if (!failed) {
      ASSERT_EQ(outcome, Outcome::kDone) << name;
      return;
    }
    if (outcome == Outcome::kDone) continue;  // it knows a way without that memory
    ASSERT_TRUE(outcome == Outcome::kMemory || (outcome == Outcome::kStandard && isGeometry))
        << name << ", allocation " << k;
    ASSERT_EQ(LiveAllocations(), before) << name << " leaks, allocation " << k;
    ASSERT_TRUE(unchanged()) << name << " changes its object, allocation " << k;
  }
  FAIL() << name << " does not end";
}

CNuMatrix Dense(int rows, int columns) {
  CNuMatrix m(rows, columns);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < columns; ++j) m.Element(i, j) = std::sin(1.0 + 7.0 * i + 3.0 * j * j) + (i == j ? 4.0 : 0.0);
  }
  return m;
}

CNuPointArray Arc(int n, double height) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double t = 0.01 * i;
    points.Add(CNuPoint(5 * std::cos(t), 5 * std::sin(t) + 1e-4 * std::sin(31.0 * i), height * std::sin(3.0 * i)));
  }
  return points;
}

CNuPointArray Tilted(const CNuPointArray& points) {
  CNuPointArray turned(points);
  for (int i = 0; i < turned.GetSize(); ++i) turned[i].z() = 0.5 * turned[i].x();
  return turned;
}

CNuPointArray Round(int n) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double z = 2.0 * (i + 0.5) / n - 1.0, t = 2.4 * i, r = 5 + 1e-3 * std::sin(31.0 * i);
    points.Add(CNuPoint(r * std::sqrt(1 - z * z) * std::cos(t), r * std::sqrt(1 - z * z) * std::sin(t), r * z));
  }
  return points;
}

TEST(FailingAllocations, ValuesAndArrays) {
  const CNuVector big(100);
  const CNuMatrix wide(20, 30);
  CNuVector vector(7);
  CNuMatrix matrix(6, 6);
  FailEveryAllocation("vector", [] { CNuVector v(100); });
  FailEveryAllocation("vector copy", [&] { CNuVector v(big); });
  FailEveryAllocation("matrix", [] { CNuMatrix m(20, 30); });
  FailEveryAllocation("matrix copy", [&] { CNuMatrix m(wide); });
  FailEveryAllocation("product", [&] { wide* wide.Transpose(); });
  FailEveryAllocation(
      "vector assignment", [&] { vector = big; }, [&] { return vector.GetSize() == 7; });
  FailEveryAllocation(
      "matrix assignment", [&] { matrix = wide; }, [&] { return matrix.GetRowSize() == 6; });

  const CNuPointArray points = Arc(50, 0.0);
  FailEveryAllocation("point array", [] { CNuPointArray a(50); });
  FailEveryAllocation("point array copy", [&] { CNuPointArray a(points); });
  CNuPointArray grown(2);
  const auto still2 = [&] { return grown.GetSize() == 0 && grown.GetCapacity() == 2; };
  FailEveryAllocation(
      "append", [&] { grown.Append(points); }, still2);
  CNuDoubleArray numbers(0);
  const auto stillEmpty = [&] { return numbers.GetSize() == 0 && numbers.GetData() == nullptr; };
  FailEveryAllocation(
      "add", [&] { numbers.Add(1.0); }, stillEmpty);
  FailEveryAllocation("sub array", [&] { points.SubArray(3, 30); });
  FailEveryAllocation("coordinates", [&] { points.GetDataX(); });
}

TEST(FailingAllocations, Decompositions) {
  for (int n : {3, 12, 40}) {
    CNuMatrix a = Dense(n, n);
    std::swap(a.GetData()[0], a.GetData()[1]);
    const CNuMatrix tall = Dense(20 * n, n);
    const CNuVector b(n);
    const CNuVector tallB(20 * n);
    FailEveryAllocation("LUD", [&] {
      CNuIntArray index(0);
      int d = 0, status = 0;
      CNuMatrix(a).LUD(&index, &d, &status);
    });
    FailEveryAllocation("LUD2", [&] {
      CNuMatrix l, u, p;
      a.LUD2(&l, &u, &p);
    });
    FailEveryAllocation("SVD", [&] {
      CNuMatrix u(tall), v;
      CNuVector w;
      u.SVD(&w, &v);
    });
    FailEveryAllocation("cached values", [&] { (a * 2.0).EigenValues(nullptr), (a * 3.0).EigenVectors(nullptr); });
    FailEveryAllocation("matrix times matrix", [&] { a* a; });
    FailEveryAllocation("Determinant", [&] { a.Determinant(); });
    ENuStatus status{};
    FailEveryAllocation("Inverse", [&] { CNuMatrix(a).Inverse(&status); });
    FailEveryAllocation("EigenValuesVectors", [&] {
      CNuVector values;
      CNuMatrix vectors;
      (a + a.Transpose()).EigenValuesVectors(&status, &values, &vectors);
      a.EigenValuesVectors(&status, &values, &vectors);
    });
    for (int method : {0, 1}) {
      FailEveryAllocation("Solve", [&] { CNuLinearEquSys(method).Solve(a, b); });
    }
    FailEveryAllocation("tall Solve", [&] { CNuLinearEquSys(1).Solve(tall, tallB); });
    FailEveryAllocation("non-negative Solve", [&] {
      CNuLinearEquSys system(1);
      system.SetNonnegative();
      system.Solve(tall, tallB);
    });
  }
}

TEST(FailingAllocations, ComplexMatrices) {
  for (int n : {3, 12, 40}) {
    const CNuComplexMatrix a(Dense(n, n), Dense(n, n).Transpose());
    CNuComplexMatrix q(1, 1), t(1, 1);
    const auto unchanged = [&] { return q.GetRowSize() == 1 && t.GetRowSize() == 1; };
    FailEveryAllocation("complex product", [&] { a* a; });
    FailEveryAllocation("complex eigenvalues", [&] { a.EigenValues(); });
    FailEveryAllocation("complex vector", [&] { a* CNuComplexVector(n); });
    using Decompose = void (CNuComplexMatrix::*)(CNuComplexMatrix*, CNuComplexMatrix*) const;
    for (const Decompose decompose : {Decompose(&CNuComplexMatrix::QR), Decompose(&CNuComplexMatrix::Hessenberg),
                                      Decompose(&CNuComplexMatrix::Schur)}) {
      q = t = CNuComplexMatrix(1, 1);
      FailEveryAllocation(
          "complex decomposition", [&] { (a.*decompose)(&q, &t); }, unchanged);
    }
  }
}

TEST(FailingAllocations, MatrixFiles) {
  const std::string name = nu::test::ScratchFile("failing_allocations").string();
  const CNuMatrix written = Dense(20, 30);
  FailEveryAllocation("matrix file", [&] { written.BinaryDump(name.c_str()); });
  CNuMatrix read(1, 1);
  FailEveryAllocation(
      "reading",
      [&] {
        if (!read.BinaryRead(name.c_str())) throw CNuMemoryException("read");
      },
      [&] { return read.GetRowSize() == 1; });
  EXPECT_TRUE(read.IsEqual(written, 1e-300));
  std::remove(name.c_str());
}

TEST(FailingAllocations, EigenCachesStaySound) {
  ENuStatus status{};
  const CNuVector expected = CNuMatrix::DiagonalMatrix(CNuVector(1, 2, 3)).EigenValues(&status);
  for (long k = 0; k < 20; ++k) {
    CNuMatrix other = Dense(30, 30);
    FailAllocation(k);
    OutcomeOf([&] { other.EigenValues(&status); });
    FailAllocation(-1);
    EXPECT_TRUE(CNuMatrix::DiagonalMatrix(CNuVector(1, 2, 3)).EigenValues(&status).IsEqual(expected, 1e-12));
  }
}

TEST(FailingAllocations, IntegrationAndInterpolation) {
  CNuIntegral integral;
  FailEveryAllocation(
      "integral", [&] { integral.Calculate([](double x) { return x < 0.3 ? 0.0 : 1.0; }, 0, 1, 1e-9); },
      [&] { return integral.GetValue() == 0; });
  CNuDoubleArray x(3);
  for (int i = 0; i < 3; ++i) x.Add(i);
  CNuInterpolation line(x, x);
  const CNuInterpolation2D grid(x, x, Dense(3, 3));
  FailEveryAllocation("interpolation", [&] { CNuInterpolation(x, x); });
  FailEveryAllocation("interpolation on a grid", [&] { CNuInterpolation2D(x, x, Dense(3, 3)); });
  FailEveryAllocation("copy on a grid", [&] { CNuInterpolation2D copy(grid); });
  CNuDoubleArray y(x);
  y[1] = 5;
  const CNuInterpolation other(x, y);
  FailEveryAllocation(
      "assignment", [&] { line = other; }, [&] { return line.Spline(1) == 1; });
}

TEST(FailingAllocations, AlgebraicEquations) {
  CNuPolynomial p(70);
  CNuComplexArray complex(71);
  for (int i = 0; i <= 70; ++i) {
    p[i] = std::sin(1.0 + 5.0 * i);
    complex.Add(CNuComplex(p[i], std::cos(3.0 * i)));
  }
  CNuPolynomial line(1);
  line[1] = 1.0;
  CNuAlgEqu equation, large;
  equation.Solve(line);
  large.Solve(p);
  const auto unchanged = [&] { return equation.GetNumberRealRoots() == 1 && equation.GetNumberComplexRoots() == 0; };
  FailEveryAllocation(
      "roots", [&] { equation.Solve(p); }, unchanged);
  equation.Solve(line);
  FailEveryAllocation(
      "complex roots", [&] { equation.Solve(complex); }, unchanged);
  equation.Solve(line);
  FailEveryAllocation(
      "copy of roots", [&] { equation = large; }, unchanged);
  FailEveryAllocation("lists of roots", [&] {
    large.GetRealRoots();
    large.GetComplexRoots();
    large.GetDistinctRealRoots();
  });
}

TEST(FailingAllocations, PointSets) {
  const Geometry geometry;
  for (int n : {10, 3000}) {
    const CNuPointArray flat = Arc(n, 0.0);
    const CNuPointArray space = Arc(n, 0.3);
    int i = 0, j = 0;
    FailEveryAllocation("MaxEdge", [&] { space.MaxEdge(&i, &j); });
    FailEveryAllocation("MinEdge", [&] { space.MinEdge(&i, &j); });
    FailEveryAllocation("ConvexHull", [&] {
      CNuIntArray hull(0);
      flat.ConvexHull(&hull);
    });
    FailEveryAllocation("IsEqual", [&] { space.IsEqual(flat, 1e-3); });
    CNuPointArray changed(space);
    const auto unchanged = [&] { return changed.GetSize() == n && changed[n - 1].IsEqual(space[n - 1], 1e-300); };
    FailEveryAllocation(
        "RemoveDuplicate", [&] { changed.RemoveDuplicate(1e-9); }, unchanged);
    FailEveryAllocation(
        "MoveTo", [&] { changed.MoveTo(CNuPoint(1, 2, 3), CNuVector(0, 0, 1)); }, unchanged);
  }
}

TEST(FailingAllocations, Fits) {
  const Geometry geometry;
  for (int n : {20, 3000}) {
    const CNuPointArray flat = Arc(n, 0.0);
    const CNuPointArray space = Arc(n, 3.0);
    double form = 0, sumsq = 0;
    CNuLine line;
    CNuPlane plane, flatness;
    CNuCircle circle(1.5);
    CNuSphSurf sphere(1.5);
    CNuCylSurf cylinder(1.5);
    FailEveryAllocation(
        "line", [&] { line.Fit(space, &form, &sumsq); }, [&] { return line.GetPoint().IsZero(1e-300) != NuFalse; });
    for (const CNuPointArray& points : {space, flat, Tilted(flat)}) {
      CNuLine zone, first, second;
      const double lengthTol = NuGetLengthTol();
      const auto untouched = [&] {
        for (const CNuLine& l : {zone, first, second})
          if (!l.GetPoint().IsZero(1e-300)) return false;
        return NuGetLengthTol() == lengthTol;
      };
      // The twin that does not throw returns this failure like any other.
      const auto fit = [&] {
        zone = first = second = CNuLine();
        if (zone.FitMinZoneEx(points, &form, &first, &second, 1e-9, 100) != NuFitSuccess) throw std::bad_alloc();
      };
      FailEveryAllocation("zone of a line", fit, untouched);
    }
    FailEveryAllocation(
        "plane", [&] { plane.Fit(space, &form, &sumsq); }, [&] { return plane.GetPoint().IsZero(1e-300) != NuFalse; });
    FailEveryAllocation(
        "plane zone", [&] { flatness.FitMinZone(space, &form, 1e-9); },
        [&] { return flatness.GetPoint().IsZero(1e-300) != NuFalse; });
    FailEveryAllocation(
        "circle", [&] { circle.Fit(flat, &form, &sumsq, 100); }, [&] { return circle.GetRadius() == 1.5; });
    // The last one fills an area: its annulus is searched among all crossings.
    CNuPointArray filled(n);
    for (int i = 0; i < n; ++i) filled.Add(CNuPoint(std::sin(2.0 * i), std::sin(3.0 * i + 1.0 * i * i), 0.0));
    const std::function<void()> minimax[] = {[&] { circle.FitMin(flat, 1e-9); }, [&] { circle.FitMax(flat, 1e-9); },
                                             [&] { circle.FitMinZone(flat, &form, 1e-9, 100); },
                                             [&] { circle.FitMinZone(filled, &form, 1e-9, 100); }};
    for (const auto& fit : minimax) {
      const auto anew = [&] { circle = CNuCircle(1.5), fit(); };  // without some of the memory it succeeds
      FailEveryAllocation("minimax circle", anew, [&] { return circle.GetRadius() == 1.5; });
    }
    FailEveryAllocation(
        "sphere", [&] { sphere.Fit(space, &form, &sumsq, 100); }, [&] { return sphere.GetRadius() == 1.5; });
    const CNuPointArray round = Round(n);
    const std::function<void()> spheres[] = {[&] { sphere.FitMin(round, 1e-9); }, [&] { sphere.FitMax(round, 1e-9); },
                                             [&] { sphere.FitMinZone(round, &form, 1e-9, 100); },
                                             [&] { sphere.FitMinZone(flat, &form, 1e-9, 100); }};
    for (const auto& fit : spheres) {
      const auto anew = [&] { sphere = CNuSphSurf(1.5), fit(); };
      FailEveryAllocation("minimax sphere", anew, [&] { return sphere.GetRadius() == 1.5; });
    }
    CNuEllipse ellipse(7, 6);
    CNuSineCurve sine(5, 6, 7, 8);
    CNuPointArray oval(n);
    for (int i = 0; i < n; ++i) oval.Add(CNuPoint(5 * std::cos(i), 3 * std::sin(i) + 1e-4 * std::sin(31.0 * i), 0.0));
    const auto isEllipse7 = [&] {
      double a = 0, b = 0;
      CNuPoint centre;
      CNuVector xAxis, normal;
      ellipse.GetData(&a, &b, &centre, &xAxis, &normal);
      return a == 7;
    };
    FailEveryAllocation(
        "ellipse", [&] { ellipse.Fit(oval, &form, &sumsq, 1000); }, isEllipse7);
    CNuPointArray wave(n);
    for (int i = 0; i < n; ++i) wave.Add(CNuPoint(0.1 * i, std::sin(0.17 * i), 0.0));
    FailEveryAllocation(
        "sine curve", [&] { sine.Fit(wave, &form, &sumsq, 100); },
        [&] { return sine.ValueAt(0) == 5 * std::sin(7.0) + 8; });
    FailEveryAllocation("simplified curve", [&] { CNuSimplifiedCurve curve(space, 0.01); });
    CNuObjArray found(1);
    found.Add(&sphere);
    const auto section = [&] {
      CNuSphSurf(1.0).IntersectWith(CNuSphSurf(1.0, CNuPoint(1, 0, 0)), &found);
      delete found[0];
    };
    FailEveryAllocation("section of spheres", section, [&] { return found[0] == &sphere; });
    CNuObjArray lines(1);
    lines.Add(&sphere);
    const auto cut = [&] {
      CNuPlane(CNuPoint(), CNuVector(1, 0, 0)).IntersectWith(CNuConSurf(30.0), &lines);
      delete lines[0];
      delete lines[1];
    };
    FailEveryAllocation("section of a cone", cut, [&] { return lines.GetSize() == 1 && lines[0] == &sphere; });
    for (const double apex : {2.0, 0.0}) {  // two conics, two curves
      CNuObjArray common(1);
      common.Add(&sphere);
      const auto meet = [&] {
        CNuCylSurf(1.0).IntersectWith(CNuConSurf(30.0, CNuPoint(apex, 0, 0), CNuVector(1, 0, 0)), &common);
        delete common[0];
        delete common[1];
      };
      FailEveryAllocation("common curves", meet, [&] { return common.GetSize() == 1 && common[0] == &sphere; });
    }
    const auto fitCylinder = [&] {
      cylinder = CNuCylSurf(1.5);  // where blocks cannot be kept, the fit goes on without them and changes it
      cylinder.Fit(space, &form, &sumsq, 100);
    };
    FailEveryAllocation("cylinder", fitCylinder, [&] { return cylinder.GetRadius() == 1.5; });
    CNuPointArray taper(space);
    for (int i = 0; i < n; ++i) taper[i].x() *= 2.0 + 0.1 * taper[i].z(), taper[i].y() *= 2.0 + 0.1 * taper[i].z();
    CNuConSurf cone(30.0), inner(30.0), outer(30.0);
    const auto fitCone = [&] { cone = CNuConSurf(30.0), cone.Fit(taper, &form, &sumsq, 100); };
    FailEveryAllocation("cone", fitCone, [&] { return cone.GetSemiAngle() == 30.0; });
    const auto fitConeZone = [&] {
      cone = inner = outer = CNuConSurf(30.0);
      cone.FitMinZone(taper, &form, &inner, &outer, 1e-9, 1000);
    };
    FailEveryAllocation("zone of a cone", fitConeZone,
                        [&] { return cone.GetSemiAngle() + inner.GetSemiAngle() + outer.GetSemiAngle() == 90.0; });
    CNuPointArray shaft(n);
    for (int i = 0; i < n; ++i)
      shaft.Add(CNuPoint(5 * std::cos(2.4 * i), 5 * std::sin(2.4 * i) + 1e-4 * std::sin(31.0 * i), std::sin(3.0 * i)));
    const std::function<void()> cylinders[] = {[&] { cylinder.FitMin(shaft, 1e-9, 100); },
                                               [&] { cylinder.FitMax(shaft, 1e-9, 100); },
                                               [&] { cylinder.FitMinZone(shaft, &form, 1e-9, 100); }};
    for (const auto& fit : cylinders) {
      const auto anew = [&] { cylinder = CNuCylSurf(1.5), fit(); };
      FailEveryAllocation("minimax cylinder", anew, [&] { return cylinder.GetRadius() == 1.5; });
    }
    CNuTorSurf torus(2.0, 1.5);
    const auto fitTorus = [&] {
      torus = CNuTorSurf(2.0, 1.5);
      torus.FitMin(space, 1e-9, 1000);
    };
    FailEveryAllocation("torus", fitTorus, [&] { return torus.GetMinorRadius() == 1.5; });
    const auto zoneInSpace = [&] { circle = CNuCircle(1.5), circle.FitMinZone(space, &form, 1e-9, 1000); };
    FailEveryAllocation("circle in space", zoneInSpace, [&] { return circle.GetRadius() == 1.5; });
  }
}

TEST(FailingAllocations, TrigonometricPolynomials) {
  CNuTriagPolynomial p(20), small(1);
  for (int k = 0; k <= 20; ++k) p.Cos(k) = std::sin(3.0 * k);
  CNuTriagEqu equation;
  equation.Solve(CNuTriag(1, 0, 0));
  FailEveryAllocation("trigonometric product", [&] { p* p; });
  FailEveryAllocation(
      "trigonometric assignment", [&] { small = p; }, [&] { return small.GetDegree() == 1; });
  FailEveryAllocation(
      "trigonometric equation", [&] { equation.Solve(p); }, [&] { return equation.GetNumberRoots() == 2; });
  FailEveryAllocation("distinct roots", [&] { equation.GetDistinctRoots(1e-9); });
}

TEST(FailingAllocations, Polynomials) {
  CNuDoubleArray x(600);
  for (int i = 0; i < 600; ++i) x.Add(0.01 * i);
  for (int n : {3, 40}) {
    CNuPolynomial p(n), fitted(n);
    fitted.FitMinMax(0, 1, std::sin);
    const auto unchanged = [&] { return p.GetDegree() == n && p.ValueAt(0.5) == 0.0; };
    FailEveryAllocation("product", [&] { fitted* fitted - fitted; });
    FailEveryAllocation("Chebyshev polynomial", [n] { CNuChebyshevPolynomial t(n); });
    const std::function<void()> changes[] = {[&] { p.Fit(x, x); }, [&] { p.FitMinMax(0, 1, std::sin); },
                                             [&] { p = fitted; }};
    for (const auto& change : changes) {
      p = CNuPolynomial(n);
      FailEveryAllocation("change of a polynomial", change, unchanged);
    }
  }
}

TEST(FailingAllocations, BoundedCurves) {
  const Geometry geometry;
  const CNuPointArray points = Arc(60, 0.0);
  CNuPolyline line(points);
  CNuCircularArc arc(CNuPoint(), CNuPoint(9, 0, 0), CNuPoint(0, 9, 0), NuTrue);
  CNuLineSegment segment;
  CNuPoint p, q;
  double radius = 0;
  FailEveryAllocation("polyline", [&] { CNuPolyline copy(points); });
  CNuPolyline shorter(points.SubArray(2, 5));
  FailEveryAllocation(
      "polyline assignment", [&] { shorter = line; },
      [&] { return shorter.GetSize() == 4 && shorter[0].IsEqual(points[2], 1e-300); });
  FailEveryAllocation("circle to polyline", [] { CNuCircle(2).ToPolyline(9); });
  for (CNuBoundedCurve* curve : {static_cast<CNuBoundedCurve*>(&line), static_cast<CNuBoundedCurve*>(&arc),
                                 static_cast<CNuBoundedCurve*>(&segment)}) {
    FailEveryAllocation("distance", [&] { curve->DistanceTo(&arc, &p, &q); });
    FailEveryAllocation("bounding circle", [&] { curve->BoundingCircle(&radius, &p); });
    FailEveryAllocation("offset", [&] { delete curve->Offset(0.01); });
  }
  CNuCompositeCurve chain, other;
  chain.AddSegment(segment, NuTrue);
  for (int i = 0; i < 8; ++i) {
    chain.AddSegment(CNuLineSegment(chain.GetEndPoint(), CNuPoint(i + 1.5, i % 2)), NuTrue);
    const CNuPoint from = chain.GetEndPoint();
    chain.AddSegment(CNuCircularArc(from, from + CNuPoint(0.2, 0.2), from + CNuPoint(0.4, 0)), NuTrue);
  }
  other.AddSegment(arc, NuTrue);
  FailEveryAllocation("composite copy", [&] { CNuCompositeCurve copy(chain); });
  FailEveryAllocation(
      "composite assignment", [&] { other = chain; }, [&] { return other.GetNumberSegments() == 1; });
  FailEveryAllocation("segment of a composite", [&] { CNuCompositeCurve().AddSegment(arc, NuFalse); });
  for (const int shape : {0, 1}) {
    FailEveryAllocation("composite offset", [&] { delete chain.Offset(0.05, CNuVector(0, 0, 1), shape); });
  }
  FailEveryAllocation("composite curve to polyline", [&] { chain.ToPolyline(1e-3); });
  FailEveryAllocation("crossings of a composite", [&] { chain.IsSelfIntersecting(); });
  // Reading throws nothing: it returns this failure like any other.
  FailEveryAllocation("composite file", [] {
    CNuCompositeCurve read;
    if (!read.BinaryRead(NU_DATA_DIR "/curves/plate.curve")) throw std::bad_alloc();
  });
  FailEveryAllocation("self-intersection", [&] { line.IsSelfIntersecting(); });
  FailEveryAllocation("centroid", [&] { line.Centroid(); });
  NuSetMinEdgeLength(1.0);
  FailEveryAllocation(
      "short edges", [&] { line.RemoveShortEdges(); }, [&] { return line.GetSize() == 60; });
  NuSetMinEdgeLength(1e-9);
}

}  // namespace
