#ifndef NU_TESTS_SUPPORT_FINGERPRINT_H
#define NU_TESTS_SUPPORT_FINGERPRINT_H

#include <memory>
#include <vector>

#include "fingerprint_bits.h"
#include "fitted.h"

// One number that depends on every bit of the results of every operation: builds by different compilers and for
// different instruction sets must give the same, and so must each of many threads.
namespace nu::test::fingerprint {

// Every fit: of points about a feature, and all together of the points of each other.
class Clouds {
 public:
  Clouds(int n, Noise& noise) {
    for (CNuPointArray* cloud : {&circle, &shaft, &taper, &space, &tube, &ellipse, &hyperbola, &parabola, &wave, &face})
      cloud->SetCapacity(n);
    for (int i = 0; i < n; ++i) AddPoint(noise, 12.0 * i / n);
  }
  const CNuPointArray& Of(const AnyFit& fit) const {
    const std::string name = fit.className;
    if (name == "CNuCircle") return circle;
    if (name == "CNuCylSurf") return shaft;
    if (name == "CNuConSurf") return taper;
    if (name == "CNuTorSurf") return tube;
    if (name == "CNuEllipse") return ellipse;
    if (name == "CNuHyperbola") return hyperbola;
    if (name == "CNuParabola") return parabola;
    if (name == "CNuPlane") return face;
    if (name == "CNuSineCurve" || name == "CNuCosineCurve") return wave;
    return space;
  }
  std::vector<const CNuPointArray*> All() const {
    return {&circle, &shaft, &taper, &space, &tube, &ellipse, &hyperbola, &parabola, &wave, &face};
  }

  CNuPointArray circle{1}, shaft{1}, taper{1}, space{1}, tube{1}, ellipse{1}, hyperbola{1}, parabola{1}, wave{1},
      face{1};

 private:
  // Points of circles by the rational parametrisation.
  void AddPoint(Noise& noise, double x) {
    const double t = noise(), s = noise(), v = noise();
    const double r = (25.0 + 1e-3 * noise()) / (1.0 + t * t), small = 1e-3 * noise();
    const CNuPoint p(r * (1.0 - t * t) + 400.0, 2.0 * r * t - 80.0, 3.0);
    circle.Add(p);
    space.Add(CNuPoint(p.x() * s, p.y(), p.z() + 20.0 * s));
    taper.Add(CNuPoint((p.x() - 400.0) * (1.5 + s), (p.y() + 80.0) * (1.5 + s), 30.0 * s));
    shaft.Add(CNuPoint(p.x(), p.y(), p.z() + 20.0 * s));
    ellipse.Add(CNuPoint(p.x(), 0.75 * p.y(), p.z()));
    const double girth = (4.0 + small) / (1.0 + v * v), out = 1.0 + (1.0 - v * v) * girth / 25.0;
    tube.Add(CNuPoint((p.x() - 400.0) * out, (p.y() + 80.0) * out, 2.0 * v * girth));
    const double w = 1.5 + t;  // x = (w + 1 / w) / 2, y = (w - 1 / w) / 2
    hyperbola.Add(CNuPoint(3.0 * (w + 1.0 / w) + small, 2.0 * (w - 1.0 / w), 1.0));
    parabola.Add(CNuPoint(4.0 * t * t + small, 4.0 * t, 1.0));
    face.Add(CNuPoint(20.0 * t, 8.0 * s, 0.1 * t + small));
    const double u = x - 2.0 * static_cast<int>(0.5 * x) - 1.0;  // a wave of parabolas
    wave.Add(CNuPoint(x, (static_cast<int>(0.5 * x) % 2 == 0 ? 1.0 - u * u : u * u - 1.0) + small, 0.0));
  }
};

inline void AddFit(const AnyFit& fit, const CNuPointArray& points, Bits& bits) {
  Fitted found;
  bits.AddOutcome([&] { fit.run(points, 1e-9, 1000, found); });
  for (const double number : found.Numbers(1.0)) bits.Add(number);
}

inline void AddFits(int n, Noise& noise, Bits& bits) {
  constexpr int kMostOfOthers = 17;
  const Clouds clouds(n, noise);
  for (const AnyFit& fit : kAllFits) {
    AddFit(fit, clouds.Of(fit), bits);
    for (const CNuPointArray* cloud : clouds.All())
      if (n <= kMostOfOthers) AddFit(fit, *cloud, bits);
  }
}

inline void AddReport(const CNuAssociation& association, const CNuAssociationReport& report, Bits& bits) {
  for (const double value : {static_cast<double>(report.GetEnd()), report.GetForm(), report.GetPeak(),
                             report.GetValley(), report.GetRootMeanSquare(), report.GetCoverage()})
    bits.Add(value);
  bits.Add(report.GetDeviations());
  bits.AddOutcome([&] { bits.Add(report.GetCovariance()), bits.Add(report.GetWeakestUncertainty()); });
  bits.AddOutcome([&] { bits.Add(association.Sensitivity(report)); });
  bits.AddOutcome([&] { bits.Add(association.MonteCarlo(report, 1e-3, 5, 7).GetStandardDeviations()); });
  bits.Add(report.GetContactPoints());
  bits.Add(report.GetMultipliers());
}

template<class F>
void AddAssociations(const CNuPointArray& points, F feature, Bits& bits) {
  CNuAssociation association(points);
  association.SetDetails(NuDetailAll);
  const auto fit = [&](ENuCriterion criterion) {
    bits.AddOutcome([&] {
      F found = feature;
      const CNuAssociationReport report = association.Fit(criterion, &found);
      bits.AddObject(found);
      AddReport(association, report, bits);
      if (criterion == NuLeastSquares) return;
      const CNuCertificateVerdict verdict = report.GetCertificate().Check(points, found, 1e-6);
      for (const double value : {verdict.GetValue(), verdict.GetGap(), verdict.GetRadius(), verdict.GetBalance()})
        bits.Add(value);
    });
  };
  for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone, NuMinimumCircumscribed, NuMaximumInscribed})
    fit(criterion);
  if constexpr (requires { association.ProveGlobally(NuMinimumZone, &feature, 1); }) {
    bits.AddOutcome([&] {
      F found = feature;
      const CNuAssociationReport report = association.ProveGlobally(NuMinimumZone, &found, 20);
      bits.Add(report.GetBound());
      bits.Add(report.GetGap());
    });
  }
  CNuDoubleArray weights(points.GetSize());
  for (int i = 0; i < points.GetSize(); ++i) weights.Add(1.0 + 0.5 * (i % 3));
  association.SetWeights(weights);
  fit(NuLeastSquares);
  association.ReleaseWeights();
  association.RestrictToMaterialSide(NuOutside);
  fit(NuLeastSquares);
  association.FixDirection(CNuVector(0.0, 0.0, 1.0));
  fit(NuMinimumZone);
}

inline void AddAllAssociations(int n, Noise& noise, Bits& bits) {
  const Clouds clouds(n, noise);
  AddAssociations(clouds.space, CNuLine(), bits);
  AddAssociations(clouds.face, CNuPlane(), bits);
  AddAssociations(clouds.circle, CNuCircle(1.0), bits);
  AddAssociations(clouds.space, CNuSphSurf(1.0), bits);
  AddAssociations(clouds.shaft, CNuCylSurf(1.0), bits);
  AddAssociations(clouds.taper, CNuConSurf(45.0), bits);
  AddAssociations(clouds.tube, CNuTorSurf(2.0, 1.0), bits);
  AddAssociations(clouds.ellipse, CNuEllipse(2.0, 1.0), bits);
  // In two parts, as machines that share the points would.
  const int half = n / 2;
  CNuCylSurf cylinder(24.0, CNuPoint(400.0, -80.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  bits.AddOutcome([&] {
    for (int i = 0; i < 4; ++i) {
      const CNuPoint middle(400.0, -80.0, 0.0);
      CNuAssociationPart first(clouds.shaft.SubArray(0, half - 1), cylinder, middle);
      first.Join(CNuAssociationPart(clouds.shaft.SubArray(half, n - 1), cylinder, middle));
      bits.Add(first.Step(&cylinder));
    }
    bits.AddObject(cylinder);
  });
}

inline void AddPointSets(int n, Noise& noise, Bits& bits) {
  const Clouds clouds(n, noise);
  for (const CNuPointArray* cloud : clouds.All()) {
    int i = 0, j = 0;
    double radius = 0.0;
    CNuPoint a, b;
    CNuIntArray indices(1);
    CNuPointArray few(*cloud);
    bits.Add(cloud->MeanPoint());
    bits.Add(cloud->MaxEdge(&i, &j));
    bits.Add(cloud->MinEdge(&i, &j));
    cloud->BoundingSphere(&radius, &a);
    bits.Add(radius), bits.Add(a);
    cloud->BoundingBox(&a, &b);
    bits.Add(a), bits.Add(b);
    bits.Add(cloud->IsNoncoplanar(&indices, 1e-2));
    bits.Add(indices);
    bits.AddOutcome([&] { cloud->ConvexHull(&indices), bits.Add(indices); });
    few.RemoveDuplicate(1.0);
    bits.Add(few);
    bits.AddOutcome([&] { bits.Add(CNuSimplifiedCurve(*cloud, 0.5).GetPoints()); });
  }
}

inline void AddDecompositions(int n, Noise& noise, Bits& bits) {
  CNuMatrix a(n, n), tall(5 * n, n);
  CNuVector b(5 * n);
  for (int i = 0; i < 5 * n; ++i) {
    for (int j = 0; j < n; ++j) tall.Element(i, j) = noise();
    if (i < n) a.SetRowVector(i, tall.GetRowVector(i));
    b[i] = noise();
  }
  CNuMatrix u(a), v, l, p;
  CNuVector w;
  u.SVD(&w, &v);
  bits.Add(u);
  bits.Add(w);
  ENuStatus status{};
  a.EigenValuesVectors(&status, &w, &v);
  bits.Add(w);
  bits.Add(v);
  CNuMatrix symmetric = a + a.Transpose();
  symmetric.EigenValuesVectors(&status, &w, &v);
  bits.Add(v);
  bits.Add(symmetric.EigenValues(&status));
  bits.Add(symmetric.EigenVectors(&status));
  bits.Add(a.Inverse(&status));
  bits.Add(a.Determinant());
  a.LUD2(&l, &v, &p);
  bits.Add(l), bits.Add(v);
  CNuComplexMatrix complex(a, u), q(1, 1), t(1, 1);
  complex.Schur(&q, &t);
  for (const CNuComplexMatrix& m : {q, t, complex * q}) bits.Add(m);
  complex.QR(&q, nullptr);
  bits.Add(q);
  complex.Hessenberg(&q, &t);
  bits.Add(t);
  for (const bool nonnegative : {false, true}) {
    CNuLinearEquSys system(1);
    if (nonnegative) system.SetNonnegative();
    system.Solve(tall, b);
    bits.Add(system.GetSolution());
  }
}

inline void AddTrigonometricRoots(int degree, Noise& noise, Bits& bits) {
  CNuTriagPolynomial p(degree);
  for (int k = 0; k <= degree; ++k) {
    p.Cos(k) = noise();
    p.Sin(k) = noise();
  }
  CNuTriagEqu equation;
  for (const CNuTriagPolynomial& f : {p, p * p}) {
    equation.Solve(f);
    bits.Add(equation.GetRoots());
    bits.Add(f.ValueAt(degree));
  }
}

inline void AddPolynomials(int n, Noise& noise, Bits& bits) {
  CNuDoubleArray x(n), y(n);
  for (int i = 0; i < n; ++i) {
    x.Add(3.0 + noise());
    y.Add(noise());
  }
  for (const int degree : {1, 5, 14}) {
    CNuPolynomial p(degree);
    double sum = 0.0;
    p.Fit(x, y, &sum);
    bits.Add(sum);
    for (int i = 0; i <= degree; ++i) bits.Add(p[i]);
    p.FitMinMax(1.0, 2.0, [](double t) { return 1.0 / t; });
    bits.Add(p.ValueAt(1.25));
    for (int i = 0; i <= degree; ++i) bits.Add(p[i]);
  }
}

inline void AddRoots(int degree, Noise& noise, Bits& bits) {
  CNuPolynomial p(degree);
  CNuComplexArray complex(degree + 1);
  for (int i = 0; i <= degree; ++i) {
    p[i] = noise();
    complex.Add(CNuComplex(p[i], noise()));
  }
  CNuAlgEqu equation;
  for (const CNuPolynomial& f : {p, p * p}) {  // all roots twice
    equation.Solve(f);
    bits.Add(equation.GetRealRoots());
    bits.Add(equation.GetComplexRoots());
  }
  equation.Solve(complex);
  bits.Add(equation.GetComplexRoots());
}

inline void AddAnalysis(int n, Noise& noise, Bits& bits) {
  CNuDoubleArray x(n), y(n);
  CNuMatrix z(n, n);
  for (int i = 0; i < n; ++i) {
    x.Add(i + 0.4 * noise());
    y.Add(noise());
    for (int j = 0; j < n; ++j) z.Element(i, j) = noise();
  }
  const CNuInterpolation curve(x, y);
  const CNuInterpolation2D surface(x, x, z);
  for (int i = 0; i < 9; ++i) {
    const double t = noise.Between(x[0], x[n - 1]);
    double error = 0.0;
    for (const double value : {curve.Linear(t), curve.Polynomial(t, &error), curve.Spline(t), curve.SplineDerivative(t),
                               surface.Bilinear(t, x[1]), surface.Bicubic(t, x[1]), error})
      bits.Add(value);
  }
  CNuIntegral one;
  bits.Add(one.Calculate([](double t) { return 1.0 / (1.0 + t * t); }, 0.0, n, 1e-12));
  CNuIntegral2D two;
  bits.Add(two.Calculate([](double s, double t) { return 1.0 / (1.0 + s * s + t); }, 0.0, n, 0.0, 1.0, 1e-8));
  CNuIntegral3D three;
  bits.Add(three.Calculate([](double r, double s, double t) { return 1.0 / (1.0 + r + s * t); }, 0.0, n, 0.0, 1.0, 0.0,
                           1.0, 1e-6));
}

// Features in any place; every second set is nearly in special position.
struct Features {
  // In braces, which have an order.
  Features(Noise& noise, bool isSpecial)
      : direction{isSpecial ? CNuVector{0.0, 1e-9 * noise(), 1.0} : noise.Vector()},
        line{noise.Point(3.0), noise.Vector()},
        plane{noise.Point(3.0), isSpecial ? direction : noise.Vector()},
        circle{noise.Between(2.0, 5.0), noise.Point(3.0), noise.Vector()},
        ellipse{5.0, noise.Between(2.0, 4.0), noise.Point(2.0), noise.Vector()},
        hyperbola{2.0, noise.Between(1.0, 4.0), noise.Point(2.0), noise.Vector()},
        parabola{noise.Between(1.0, 2.0), noise.Point(2.0), noise.Vector()},
        sphere{noise.Between(2.0, 5.0), noise.Point(3.0)},
        cylinder{noise.Between(2.0, 5.0), isSpecial ? CNuPoint() : noise.Point(3.0), direction},
        cone{noise.Between(10.0, 60.0), isSpecial ? CNuPoint() : noise.Point(3.0), direction},
        torus{6.0, noise.Between(1.0, 2.0), isSpecial ? CNuPoint() : noise.Point(2.0), direction} {}

  CNuVector direction;
  CNuLine line;
  CNuPlane plane;
  CNuCircle circle;
  CNuEllipse ellipse;
  CNuHyperbola hyperbola;
  CNuParabola parabola;
  CNuSphSurf sphere;
  CNuCylSurf cylinder;
  CNuConSurf cone;
  CNuTorSurf torus;
};

template<class A, class B>
void AddIntersection(const A& a, const B& b, Bits& bits) {
  bits.AddOutcome([&] {
    CNuPoint p[2];
    CNuLine line;
    CNuObjArray objects(1);
    if constexpr (requires { a.IntersectWith(b, &objects); }) {
      bits.Add(a.IntersectWith(b, &objects));
      bits.AddObjects(objects);
    } else if constexpr (requires { a.IntersectWith(b, &p[0], &p[1]); }) {
      const int count = a.IntersectWith(b, &p[0], &p[1]);
      bits.Add(count);
      for (int i = 0; i < count; ++i) bits.Add(p[i]);
    } else if constexpr (requires { a.IntersectWith(b, &p[0]); }) {
      bits.Add(a.IntersectWith(b, &p[0]));
      bits.Add(p[0]);
    } else {
      bits.Add(a.IntersectWith(b, &line));
      bits.Add(line);
    }
  });
}

inline void AddIntersections(int count, Noise& noise, Bits& bits) {
  for (int i = 0; i < count; ++i) {
    const Features a(noise, i % 2 == 1), b(noise, i % 4 == 1);
    const auto with = [&](const auto& first, const auto&... others) { (AddIntersection(first, others, bits), ...); };
    with(a.line, b.line, b.plane, b.circle, b.ellipse, b.hyperbola, b.parabola, b.sphere, b.cylinder, b.cone);
    with(a.plane, b.plane, b.sphere, b.cylinder, b.cone);
    with(b.circle, a.circle, a.plane);
    with(b.ellipse, a.plane);
    with(b.hyperbola, a.plane);
    with(b.parabola, a.plane);
    with(a.sphere, b.sphere, b.cylinder, b.cone);
    with(a.cylinder, b.cylinder, b.cone);
    with(a.cone, b.cone);
    with(a.torus, b.plane, b.sphere, b.cylinder, b.cone);
  }
}

inline void AddRelations(int count, Noise& noise, Bits& bits) {
  for (int i = 0; i < count; ++i) {
    const Features a(noise, i % 2 == 1), b(noise, i % 4 == 1);
    const CNuPoint p = noise.Point(8.0);
    const auto distances = [&](const auto& from, const auto&... to) {
      (bits.AddOutcome([&] { bits.Add(from.DistanceTo(to)); }), ...);
    };
    const auto projections = [&](const auto&... on) { (bits.AddOutcome([&] { bits.Add(p.ProjectionOn(on)); }), ...); };
    const auto closest = [&](const auto&... to) {
      CNuPoint q[2];
      (bits.AddOutcome([&] { bits.Add(a.line.ClosestPointsTo(to, &q[0], &q[1])), bits.Add(q[0]), bits.Add(q[1]); }),
       ...);
    };
    distances(p, a.line, a.plane, a.circle, a.ellipse, a.hyperbola, a.parabola, a.sphere, a.cylinder, a.cone, a.torus);
    distances(a.line, b.line, b.circle, b.plane, b.sphere, b.cylinder, b.cone);
    projections(a.line, a.plane, a.sphere, a.cylinder, a.cone, a.torus);
    closest(b.circle, b.sphere, b.cylinder, b.cone);
    bits.AddOutcome([&] { bits.Add(a.line.MidLine(b.line)), bits.Add(a.plane.MidPlane(b.plane)); });
    bits.Add(a.line.AngleWith(b.line)), bits.Add(a.line.AngleWith(b.plane)), bits.Add(a.plane.AngleWith(b.plane));
    bits.Add(a.cone.ToAlgebraicForm()), bits.Add(a.cylinder.ToAlgebraicForm());
    CNuTorSurf turned = a.torus;
    turned.Rotate(30.0, noise.Vector(), p);
    bits.AddObject(turned);
    bits.Add(a.ellipse.ToPointArray(9)), bits.Add(a.hyperbola.ToPointArray(9, -1.0, 1.0, 0));
  }
}

inline void AddChains(int n, Noise& noise, Bits& bits) {
  CNuPointArray corners(n);
  CNuCompositeCurve composite;
  CNuPoint last;
  for (int i = 0; i < n; ++i) {
    const CNuPoint next{last.x() + 1.5 + noise(), 4.0 * noise(), 0.0};
    const CNuPoint middle = last.MidPoint(next) + CNuPoint(0.3, 0.5, 0.0);
    bits.AddOutcome([&] {
      if (i % 3 == 0)
        composite.AddSegment(CNuCircularArc(last, middle, next), NuTrue);
      else
        composite.AddSegment(CNuLineSegment(last, next), NuTrue);
    });
    corners.Add(last);
    last = next;
  }
  constexpr int kRound = 1;
  CNuPolyline polyline(corners);
  const auto add = [&](auto& curve) {
    CNuPoint p, q;
    double radius = 0.0;
    bits.Add(curve.Length());
    bits.Add(curve.DistanceTo(CNuPoint(3.0, 9.0, 1.0)));
    bits.Add(curve.IsSelfIntersecting());
    curve.BoundingCircle(&radius, &p);
    bits.Add(radius), bits.Add(p);
    bits.AddOutcome([&] { bits.Add(curve.DistanceTo(&composite, &p, &q)), bits.Add(p), bits.Add(q); });
    for (const double distance : {0.2, -1.0}) {
      CNuObjArray loops(1);
      bits.AddOutcome([&] {
        bits.Add(curve.OffsetAll(distance, CNuVector(0.0, 0.0, 1.0), kRound, &loops));
        for (int i = 0; i < loops.GetSize(); ++i)
          bits.Add(std::unique_ptr<CNuBoundedCurve>(static_cast<CNuBoundedCurve*>(loops[i]))->Length());
      });
    }
  };
  add(composite);
  add(polyline);
  bits.AddOutcome([&] { bits.Add(composite.ToPolyline(1e-3).GetPoints()); });
  bits.Add(polyline.Area()), bits.Add(polyline.Centroid());
}

// The operations of one kind on inputs of several sizes: few for a sample, all for the fingerprint.
struct Part {
  const char* name;
  void (*add)(int size, Noise& noise, Bits& bits);
  std::vector<int> sample, others;
};

inline std::vector<Part> Parts() {
  std::vector<int> degrees;
  for (int degree = 8; degree <= 40; ++degree) degrees.push_back(degree);
  return {{"fits", AddFits, {5, 40}, {17, 1000, 30000}},
          {"associations", AddAllAssociations, {17}, {200}},
          {"point sets", AddPointSets, {4, 60}, {1000}},
          {"decompositions", AddDecompositions, {3, 4, 9}, {33, 120}},
          {"trigonometric roots", AddTrigonometricRoots, {1, 2, 5}, {16}},
          {"polynomials", AddPolynomials, {4, 100}, {1000, 30000}},
          {"roots", AddRoots, {1, 2, 3, 4, 5, 6, 7}, degrees},
          {"analysis", AddAnalysis, {4}, {9, 30}},
          {"intersections", AddIntersections, {4}, {60}},
          {"relations", AddRelations, {4}, {200}},
          {"chains", AddChains, {12}, {60}}};
}
inline constexpr int kParts = 11;

inline std::uint64_t Of(const Part& part, bool isSample) {
  Noise noise;
  Bits bits;
  const auto add = [&](const std::vector<int>& sizes) {
    for (const int size : sizes) bits.AddOutcome([&] { part.add(size, noise, bits); });
  };
  add(part.sample);
  if (!isSample) add(part.others);
  return bits.Value();
}

// Calls `step` before each of the kParts parts.
template<class Step>
std::uint64_t Of(bool isSample, Step step) {
  std::uint64_t all = 0;
  for (const Part& part : Parts()) {
    step();
    all = (all ^ Of(part, isSample)) * 0x100000001b3u;
  }
  return all;
}

}  // namespace nu::test::fingerprint

#endif
