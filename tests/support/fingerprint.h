#ifndef NU_TESTS_SUPPORT_FINGERPRINT_H
#define NU_TESTS_SUPPORT_FINGERPRINT_H

#include <cstdint>
#include <cstring>
#include <random>

#include "nu/nu.h"

// One number that depends on every bit of many results: builds by different compilers and for different instruction
// sets must give the same. The input is made without mathematical functions, which are the platform's.
namespace nu::test::fingerprint {

class Bits {
 public:
  void Add(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    m_hash = (m_hash ^ bits) * 0x100000001b3u;  // FNV-1a
    m_hash ^= m_hash >> 29;
  }
  void Add(const CNuPoint& p) {
    for (const double c : {p.x(), p.y(), p.z()}) Add(c);
  }
  void Add(const CNuVector& v) {
    for (int i = 0; i < v.GetSize(); ++i) Add(v[i]);
  }
  void Add(const CNuMatrix& m) {
    for (int i = 0; i < m.GetRowSize(); ++i) Add(m.GetRowVector(i));
  }
  std::uint64_t Value() const { return m_hash; }

 private:
  std::uint64_t m_hash = 0xcbf29ce484222325u;
};

class Noise {
 public:
  // In [-1, 1), exact.
  double operator()() { return static_cast<double>(static_cast<std::int64_t>(m_random()) >> 11) * 0x1p-52; }

 private:
  std::mt19937_64 m_random{7};
};

inline void AddFits(int n, Noise& noise, Bits& bits) {
  CNuPointArray flat(n), space(n), taper(n), shaft(n);
  for (int i = 0; i < n; ++i) {
    const double t = noise();
    const double s = noise();
    const double r = (25.0 + 1e-3 * noise()) / (1.0 + t * t);
    const CNuPoint p(r * (1.0 - t * t) + 400.0, 2.0 * r * t - 80.0, 3.0);
    flat.Add(p);
    space.Add(CNuPoint(p.x() * s, p.y(), p.z() + 20.0 * s));
    taper.Add(CNuPoint((p.x() - 400.0) * (1.5 + s), (p.y() + 80.0) * (1.5 + s), 30.0 * s));
    shaft.Add(CNuPoint(p.x(), p.y(), p.z() + 20.0 * s));
  }
  double form = 0.0, sumsq = 0.0;
  CNuLine line;
  line.Fit(space, &form, &sumsq);
  bits.Add(line.GetPoint());
  bits.Add(line.GetDirection());
  for (const CNuPointArray& points : {space, flat}) {
    line.FitMinZone(points, &form, 1e-9, 1000);
    bits.Add(line.GetPoint());
    bits.Add(line.GetDirection());
    bits.Add(form);
  }
  CNuPlane plane;
  plane.Fit(space, &form, &sumsq);
  bits.Add(plane.GetNormal());
  bits.Add(sumsq);
  plane.FitMinZone(space, &form, 1e-9);
  bits.Add(plane.GetNormal());
  bits.Add(form);
  CNuCircle circle(1.0);
  circle.Fit(flat, &form, &sumsq, 100);
  bits.Add(circle.GetCentre());
  bits.Add(form);
  circle.FitMin(flat, 1e-9);
  bits.Add(circle.GetCentre());
  circle.FitMax(flat, 1e-9);
  bits.Add(circle.GetCentre());
  circle.FitMinZone(flat, &form, 1e-9, 1000);
  bits.Add(circle.GetCentre());
  for (int i = 0; i < n; ++i) flat[i].y() *= 0.75;
  CNuEllipse ellipse(2.0, 1.0);
  if (ellipse.FitEx(flat, &form, &sumsq, 1000) == NuFitSuccess) bits.Add(ellipse.GetXaxis());
  bits.Add(sumsq);
  CNuSineCurve sine(1.0, 1.0, 0.0, 0.0);
  sine.FitEx(space, &form, &sumsq, 1000);
  bits.Add(sine.ValueAt(7.0));
  for (int i = 0; i < n; ++i) flat[i].y() /= 0.75;
  CNuSphSurf sphere(1.0);
  sphere.Fit(space, &form, &sumsq, 1000);
  bits.Add(sphere.GetCentre());
  bits.Add(sumsq);
  CNuCylSurf cylinder(1.0);
  const auto addCylinder = [&] {
    bits.Add(cylinder.GetTransformation());
    bits.Add(cylinder.GetRadius());
  };
  cylinder.Fit(shaft, &form, &sumsq, 1000), addCylinder();
  cylinder.FitMin(shaft, 1e-9, 1000), addCylinder();
  cylinder.FitMaxEx(shaft, 1e-9, 1000), addCylinder();  // half of the circumference may hold none
  cylinder.FitMinZone(shaft, &form, 1e-9, 1000), addCylinder();
  CNuTorSurf torus(2.0, 1.0);
  for (const CNuPointArray& points : {space, flat}) {
    torus.FitMin(points, 1e-9, 1000);
    bits.Add(torus.GetTransformation());
    bits.Add(torus.GetMajorRadius());
    bits.Add(torus.GetMinorRadius());
  }
  CNuConSurf cone(45.0);
  cone.FitEx(taper, &form, &sumsq, 1000);  // five points are too few
  bits.Add(cone.GetApex());
  bits.Add(sumsq);
  if (cone.FitMinZoneEx(taper, &form, 1e-9, 1000) == NuFitSuccess) bits.Add(form);
  bits.Add(cone.GetApex());
  bits.Add(cone.GetSemiAngle());
  int i = 0, j = 0;
  bits.Add(space.MeanPoint());
  bits.Add(space.MaxEdge(&i, &j));
  bits.Add(space.MinEdge(&i, &j));
}

inline void AddDecompositions(int n, Noise& noise, Bits& bits) {
  CNuMatrix a(n, n), tall(5 * n, n);
  CNuVector b(5 * n);
  for (int i = 0; i < 5 * n; ++i) {
    for (int j = 0; j < n; ++j) tall.Element(i, j) = noise();
    if (i < n) a.SetRowVector(i, tall.GetRowVector(i));
    b[i] = noise();
  }
  CNuMatrix u(a), v;
  CNuVector w;
  u.SVD(&w, &v);
  bits.Add(u);
  bits.Add(w);
  ENuStatus status{};
  a.EigenValuesVectors(&status, &w, &v);
  bits.Add(w);
  bits.Add(v);
  (a + a.Transpose()).EigenValuesVectors(&status, &w, &v);
  bits.Add(v);
  bits.Add(a.Inverse(&status));
  bits.Add(a.Determinant());
  CNuComplexMatrix complex(a, u), q(1, 1), t(1, 1);
  complex.Schur(&q, &t);
  for (const CNuComplexMatrix& m : {q, t, complex * q}) {
    bits.Add(m.RealPart());
    bits.Add(m.ImaginaryPart());
  }
  complex.QR(&q, nullptr);
  bits.Add(q.RealPart());
  CNuLinearEquSys system(1);
  system.Solve(tall, b);
  bits.Add(system.GetSolution());
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
    const CNuDoubleArray roots = equation.GetRoots();
    for (int i = 0; i < roots.GetSize(); ++i) bits.Add(roots[i]);
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
  for (int i = 0; i <= degree; ++i) p[i] = noise();
  CNuAlgEqu equation;
  equation.Solve(p);
  const CNuDoubleArray real = equation.GetRealRoots();
  const CNuComplexArray complex = equation.GetComplexRoots();
  for (int i = 0; i < real.GetSize(); ++i) bits.Add(real[i]);
  for (int i = 0; i < complex.GetSize(); ++i) {
    bits.Add(complex[i].r());
    bits.Add(complex[i].i());
  }
}

// Calls `step` before each of the kSteps parts.
inline constexpr int kSteps = 5;
template<class Step>
std::uint64_t Of(Step step) {
  Noise noise;
  Bits bits;
  step();
  for (const int n : {5, 17, 1000, 30000}) AddFits(n, noise, bits);
  step();
  for (const int n : {3, 4, 9, 33, 120}) AddDecompositions(n, noise, bits);
  step();
  for (const int n : {1, 2, 5, 16}) AddTrigonometricRoots(n, noise, bits);
  step();
  for (const int n : {4, 1000, 30000}) AddPolynomials(n, noise, bits);
  step();
  for (int degree = 1; degree <= 40; ++degree) AddRoots(degree, noise, bits);
  return bits.Value();
}

}  // namespace nu::test::fingerprint

#endif
