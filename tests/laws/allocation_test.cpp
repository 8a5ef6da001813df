// Every allocation of every operation fails once: the operation must end as exceptions.h promises, leak nothing, and
// leave its object as it was. Of large inputs some allocations fail, spread over the operation.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/adversaries.h"
#include "support/failing_new.h"
#include "support/fitted.h"
#include "support/point_set_operations.h"
#include "support/scratch_file.h"

namespace {

using namespace nu::test;

enum class Outcome { kDone, kMemory, kNumericalFailure, kOther };

Outcome OutcomeOf(const std::function<void()>& operation) {
  try {
    operation();
    return Outcome::kDone;
  } catch (const CNuMemoryException&) {
    return Outcome::kMemory;
  } catch (const CNuBestfitException& e) {
    return e.GetCause() == 11 ? Outcome::kNumericalFailure : Outcome::kOther;
  } catch (...) {
    return Outcome::kOther;
  }
}

// How a fit ends without memory. Those of lines, planes and circles word every foreign failure as their own.
Outcome WithoutMemory(const AnyFit& fit) {
  const std::string words[] = {"CNuLine", "CNuPlane", "CNuCircle"};
  return std::find(std::begin(words), std::end(words), fit.className) != std::end(words) ? Outcome::kNumericalFailure
                                                                                         : Outcome::kMemory;
}

// Runs the operation with its first, second, ... allocation failing until it gets through; `unchanged` is asked after
// every failure.
void FailEveryAllocation(
    const std::string& name, const std::function<void()>& operation,
    const std::function<bool()>& unchanged = [] { return true; }, Outcome expected = Outcome::kMemory) {
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
    ASSERT_EQ(outcome, expected) << name << ", allocation " << k;
    ASSERT_EQ(LiveAllocations(), before) << name << " leaks, allocation " << k;
    ASSERT_TRUE(unchanged()) << name << " changes its object, allocation " << k;
  }
  FAIL() << name << " does not end";
}

// How many allocations an operation makes.
long AllocationsOf(const std::function<void()>& operation) {
  constexpr long kNever = std::numeric_limits<long>::max();
  FailAllocation(kNever);
  OutcomeOf(operation);
  const long left = AllocationsUntilFailure();
  FailAllocation(-1);
  return kNever - left;
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
    FailEveryAllocation("cached values", [&] { (a * 2.0).EigenValues(nullptr); });
    FailEveryAllocation("cached vectors", [&] { (a * 3.0).EigenVectors(nullptr); });
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

TEST(FailingAllocations, Associations) {
  Random random(51);
  const CNuPointArray points = TypicalPoints<CNuCylSurf>(random, 60);
  CNuAssociation association(points);
  association.SetDetails(NuDetailAll);
  association.FixRadius(5.0);
  CNuCylSurf cylinder(1.0);
  const auto unchanged = [&] { return cylinder.GetRadius() == 1.0 && association.GetNumberPoints() == 60; };
  for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone}) {
    FailEveryAllocation(
        "association", [&] { CNuAssociation(association).Fit(criterion, &cylinder).Require(); }, unchanged);
    cylinder = CNuCylSurf(1.0);
  }
  CNuAssociation grown(points);
  FailEveryAllocation(
      "points of an association", [&] { grown.Add(points); }, [&] { return grown.GetNumberPoints() == 60; });
}

// Every feature by every criterion that it has, with all details, and what can be asked of the report.
template<class F>
void FailAssociations(Random& random) {
  const CNuPointArray points = TypicalPoints<F>(random, 40);
  CNuAssociation association(points);
  association.SetDetails(NuDetailAll);
  for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone, NuMinimumCircumscribed, NuMaximumInscribed}) {
    F fitted = Start<F>();
    const F start = fitted;
    Shape before, after;
    Read(start, before);
    const auto fit = [&] { fitted = start, association.Fit(criterion, &fitted).Require(); };
    if (OutcomeOf(fit) != Outcome::kDone) continue;  // it has no such criterion
    const std::string name = "association " + std::to_string(start.GetType()) + "/" + std::to_string(criterion);
    FailEveryAllocation(name, fit, [&] { return Read(fitted, after), after == before; });
    const CNuAssociationReport report = association.Fit(criterion, &fitted);
    const F known = fitted;
    Read(known, before);
    FailEveryAllocation(
        name + " again", [&] { fitted = known, association.Refit(criterion, &fitted).Require(); },
        [&] { return Read(fitted, after), after == before; });
    FailEveryAllocation("Monte Carlo", [&] { association.MonteCarlo(report, 1e-3, 2, 1u); });
    if (criterion == NuLeastSquares) {
      FailEveryAllocation("covariance", [&] { report.GetCovariance(); });
      continue;
    }
    FailEveryAllocation("sensitivity", [&] { association.Sensitivity(report); });
    FailEveryAllocation("certificate", [&] { report.GetCertificate().Check(points, fitted, 1e-9); });
  }
}

TEST(FailingAllocations, AssociationsOfEveryFeature) {
  Random random(53);
  FailAssociations<CNuLine>(random);
  FailAssociations<CNuPlane>(random);
  FailAssociations<CNuCircle>(random);
  FailAssociations<CNuEllipse>(random);
  FailAssociations<CNuSphSurf>(random);
  FailAssociations<CNuCylSurf>(random);
  FailAssociations<CNuConSurf>(random);
  FailAssociations<CNuTorSurf>(random);
}

TEST(FailingAllocations, LargeSets) {
  constexpr int kPoints = 20000;
  constexpr long kSampled = 6;
  Random random(54);
  for (const AnyFit& fit : kAllFits) {
    const CNuPointArray points = fit.points(random, kPoints);
    Fitted f;
    const std::function<void()> run = [&] { f = fit.start, fit.run(points, 1e-9, 1000, f); };
    const long all = AllocationsOf(run);
    for (long i = 0; i < std::min(all, kSampled); ++i) {
      const long before = LiveAllocations();
      FailAllocation(i * all / kSampled);
      const Outcome outcome = OutcomeOf(run);
      FailAllocation(-1);
      ASSERT_EQ(LiveAllocations(), before) << fit.Name();
      if (outcome == Outcome::kDone) continue;
      ASSERT_EQ(outcome, WithoutMemory(fit)) << fit.Name();
      f.form = f.sumsq = fit.start.form;
      ASSERT_TRUE(f == fit.start) << fit.Name();
    }
  }
}

// The most memory that an operation holds at once, in multiples of its input.
double CopiesHeldBy(const CNuPointArray& points, const std::function<void()>& operation) {
  const long before = LiveBytes();
  MarkPeak();
  OutcomeOf(operation);
  return static_cast<double>(PeakBytes() - before) / (3.0 * sizeof(double) * points.GetSize());
}

// For points of the feature and for adversarial ones. Waves are scanned over frequencies as close as their closest
// points ask for.
TEST(PeakMemory, OfEveryFitIsAFewCopiesOfTheInput) {
  constexpr int kPoints = 3000;
  constexpr double kMostCopies = 12.0, kMostCopiesOfScans = 80.0;
  Random random(55);
  std::vector<NamedPoints> sets = Adversaries(kPoints);
  for (const AnyFit& fit : kAllFits) {
    sets.emplace_back("feature", fit.points(random, kPoints));
    for (const auto& [name, points] : sets) {
      Fitted f;
      const double copies = CopiesHeldBy(points, [&, &cloud = points] { fit.run(cloud, 1e-9, 1000, f); });
      const bool scans = fit.Is("CNuSineCurve", kLeastSquares) || fit.Is("CNuCosineCurve", kLeastSquares);
      EXPECT_LE(copies, scans ? kMostCopiesOfScans : kMostCopies) << fit.Name() << ", " << name;
      if (fit.associate == nullptr) continue;
      const double withReport = CopiesHeldBy(points, [&, &cloud = points] {
        CNuAssociation association(cloud);
        association.SetDetails(NuDetailAll);
        fit.associate(association, 1e-9, 1000, f);
      });
      EXPECT_LE(withReport, kMostCopies) << "report, " << fit.Name() << ", " << name;
    }
    sets.pop_back();
  }
}

// Some make their own input of the points, a copy or two.
TEST(PeakMemory, OfEveryPointSetOperationIsAFewCopiesOfTheInput) {
  constexpr double kMostCopies = 14.0;
  for (const auto& [name, points] : Adversaries(3000)) {
    for (const PointSetOperation& operation : PointSetOperations()) {
      const double copies = CopiesHeldBy(points, [&, &cloud = points] { operation.run(cloud); });
      EXPECT_LE(copies, kMostCopies) << operation.name << ", " << name;
    }
  }
}

TEST(FailingAllocations, MatrixFiles) {
  const std::string name = ScratchFile("failing_allocations").string();
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
    CNuIntArray corners(0);
    FailEveryAllocation("IsNoncollinear", [&] { space.IsNoncollinear(&(corners = CNuIntArray(0)), 1e-3); });
    FailEveryAllocation("IsNoncoplanar", [&] { space.IsNoncoplanar(&(corners = CNuIntArray(0)), 1e-3); });
    FailEveryAllocation("NumberDistinctPoints", [&] { CNuGeometry::NumberDistinctPoints(space, n, 1e-9); });
    CNuPointArray changed(space);
    const auto unchanged = [&] { return changed.GetSize() == n && changed[n - 1].IsEqual(space[n - 1], 1e-300); };
    FailEveryAllocation(
        "RemoveDuplicate", [&] { changed.RemoveDuplicate(1e-9); }, unchanged);
    FailEveryAllocation(
        "MoveTo", [&] { changed.MoveTo(CNuPoint(1, 2, 3), CNuVector(0, 0, 1)); }, unchanged);
  }
}

// The points of each fit, and sets that lead others to it or to ways of their own: in a plane, off it, filling an area.
TEST(FailingAllocations, Fits) {
  Random random(7);
  std::vector<CNuPointArray> sets;
  for (int n : {20, 1000}) {
    const CNuPointArray flat = Arc(n, 0.0);
    for (const CNuPointArray& set : {Arc(n, 3.0), flat, Tilted(flat), PlaneCloud(random, n, 2.0, 2.0, 0.0)})
      sets.push_back(set);
  }
  for (const AnyFit& fit : kAllFits) {
    std::vector<CNuPointArray> all{fit.points(random, 20), fit.points(random, 2100)};
    all.insert(all.end(), sets.begin(), sets.end());
    for (const CNuPointArray& points : all) {
      Fitted f;
      const auto run = [&] { f = fit.start, fit.run(points, 1e-9, 1000, f); };
      if (OutcomeOf(run) != Outcome::kDone) continue;
      const auto unchanged = [&] {
        f.form = f.sumsq = fit.start.form;  // some clear these first
        return f == fit.start;
      };
      FailEveryAllocation(fit.Name(), run, unchanged, WithoutMemory(fit));
    }
  }
  FailEveryAllocation("simplified curve", [&] { CNuSimplifiedCurve curve(sets[0], 0.01); });
}

TEST(FailingAllocations, Sections) {
  const CNuSphSurf ball(1.0);
  const auto expect = [](const char* name, int count, auto meet) {
    CNuPoint old;
    CNuObjArray found(1);
    found.Add(&old);
    const auto call = [&] {
      meet(&found);
      for (int i = 0; i < count; ++i) delete found[i];
    };
    FailEveryAllocation(name, call, [&] { return found.GetSize() == 1 && found[0] == &old; });
  };
  expect("spheres", 1, [&](CNuObjArray* found) { ball.IntersectWith(CNuSphSurf(1.0, CNuPoint(1, 0, 0)), found); });
  expect("plane and cone", 2,
         [](CNuObjArray* found) { CNuPlane(CNuPoint(), CNuVector(1, 0, 0)).IntersectWith(CNuConSurf(30.0), found); });
  for (const double apex : {2.0, 0.0}) {  // two conics, two curves
    expect("cylinder and cone", 2, [apex](CNuObjArray* found) {
      CNuCylSurf(1.0).IntersectWith(CNuConSurf(30.0, CNuPoint(apex, 0, 0), CNuVector(1, 0, 0)), found);
    });
  }
  CNuObjArray loops(0);
  ASSERT_EQ(CNuCylSurf(1.0).IntersectWith(CNuCylSurf(0.5, CNuPoint(), CNuVector(1, 0, 0)), &loops), 2);
  const std::unique_ptr<CNuPCurve> loop(dynamic_cast<CNuPCurve*>(loops[0]));
  delete loops[1];
  double u = 0.0;
  FailEveryAllocation("copy of a curve", [&] { CNuPCurve copy(*loop); });
  FailEveryAllocation("distance from a curve", [&] { loop->DistanceTo(CNuPoint(3, 2, 1)); });
  FailEveryAllocation("closest point", [&] { loop->ClosestPoint(CNuPoint(3, 2, 1), &u); });
  FailEveryAllocation("chords of a curve", [&] { loop->ToPolylineWithin(1e-3); });
  FailEveryAllocation("part of a curve", [&] { loop->Part(CNuInterval(0.1, 0.2, 0, 0)); });
  expect("curve in a box", 1, [&](CNuObjArray* found) { loop->ClipTo(CNuPoint(-9, 0, -9), CNuPoint(9, 9, 9), found); });
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
  CNuCompositeCurve there(chain);
  const auto move = [&] {
    CNuCompositeCurve here(std::move(there));
    there = std::move(here);
  };
  FailEveryAllocation("composite move", move, [&] { return there.GetNumberSegments() == chain.GetNumberSegments(); });
  FailEveryAllocation("segment and arc", [&] { segment.IntersectWith(arc, &p, &q); });
  FailEveryAllocation("line and circle", [] {
    const CNuLine skew(CNuPoint(0.5, 0.2, 0.3), CNuVector(1, 0.4, 0.3));
    skew.DistanceTo(CNuCircle(2));
    CNuPoint near, far;
    skew.ClosestPointsTo(CNuCircle(2), &near, &far);
  });
  FailEveryAllocation("segment of a composite", [&] { CNuCompositeCurve().AddSegment(arc, NuFalse); });
  for (const int shape : {0, 1}) {
    FailEveryAllocation("composite offset", [&] { delete chain.Offset(0.05, CNuVector(0, 0, 1), shape); });
  }
  FailEveryAllocation("composite curve to polyline", [&] { chain.ToPolyline(1e-3); });
  FailEveryAllocation("crossings of a composite", [&] { chain.IsSelfIntersecting(); });
  // Points and directions at the ends are stored when the normal, which needs memory, is known.
  for (const CNuBoundedCurve* curve :
       {static_cast<const CNuBoundedCurve*>(&line), static_cast<const CNuBoundedCurve*>(&chain)}) {
    for (const auto ask : {&CNuBoundedCurve::GetStartData, &CNuBoundedCurve::GetEndData}) {
      p = CNuPoint(-7, -7, -7);
      CNuVector tangent(-7, -7, -7), normal(tangent);
      FailEveryAllocation(
          "data of an end", [&] { (curve->*ask)(&p, &tangent, &normal); },
          [&] { return p.z() == -7 && tangent[2] == -7 && normal[2] == -7; });
      EXPECT_NE(normal[2], -7);
    }
  }
  // Reading throws nothing: it returns this failure like any other.
  FailEveryAllocation("composite file", [] {
    CNuCompositeCurve read;
    if (!read.BinaryRead(NU_DATA_DIR "/curves/plate.curve")) throw CNuMemoryException("read");
  });
  const std::string file = ScratchFile("failing_allocations").string();
  FailEveryAllocation("composite file", [&] { chain.BinaryDump(file.c_str()); });
  std::remove(file.c_str());
  FailEveryAllocation("self-intersection", [&] { line.IsSelfIntersecting(); });
  FailEveryAllocation("plane of a curve", [&] { line.IsPlanar(1e-9), chain.IsPlanar(), line.Area(); });
  FailEveryAllocation("centroid", [&] { line.Centroid(); });
  NuSetMinEdgeLength(1.0);
  FailEveryAllocation(
      "short edges", [&] { line.RemoveShortEdges(); }, [&] { return line.GetSize() == 60; });
  NuSetMinEdgeLength(1e-9);
}

}  // namespace
