// The first objects of a pool.

#include <cmath>
#include <type_traits>

#include "clouds.h"
#include "operations/pool.h"
#include "support/fitted.h"

namespace nu::fuzz {

namespace {

using namespace nu::test;

// Two points, for what needs some.
CNuPointArray Edge() {
  CNuPointArray points(2);
  points.Add(CNuPoint(0, 0, 0));
  points.Add(CNuPoint(2, 1, 0));
  return points;
}

CNuPointArray Corners(Input& input) {
  CNuPointArray points(0);
  for (int left = input.Below(10); left > 0; --left) {
    const double x = input.Number(), y = input.Number();
    points.Add(CNuPoint(x, y, input.Below(2) == 0 ? 0.0 : input.Number()));
  }
  return points;
}

template<class Array>
Array Elements(Input& input) {
  Array array(0);
  for (int left = input.Size(8); left > 0; --left) {
    if constexpr (std::is_same_v<Array, CNuIntArray>)
      array.Add(input.Integer());
    else
      array.Add(input.Number());
  }
  return array;
}

// Lines and planes; and features with a radius or an angle as well, whose first object may have no place.
template<class T>
inline constexpr bool kIsPlaced = std::is_constructible_v<T, const CNuPoint&, const CNuVector&>;
template<class T>
inline constexpr bool kHasSize = std::is_constructible_v<T, double, const CNuPoint&, const CNuVector&>;

template<class T>
T Made(Input& input) {
  if constexpr (std::is_same_v<T, CNuPointArray>) {
    return input.Below(4) == 0 ? Corners(input) : Cloud(input);
  } else if constexpr (std::is_same_v<T, CNuIntArray> || std::is_same_v<T, CNuDoubleArray>) {
    return Elements<T>(input);
  } else if constexpr (std::is_same_v<T, CNuObjArray>) {
    T array(0);
    for (int left = input.Below(4); left > 0; --left) array.Add(nullptr);
    return array;
  } else if constexpr (std::is_same_v<T, CNuComplex> || std::is_same_v<T, CNuComplexPolar>) {
    const double first = input.Number();
    return T(std::is_same_v<T, CNuComplex> ? first : std::fabs(first), input.Number());
  } else if constexpr (std::is_same_v<T, CNuComplexArray> || std::is_same_v<T, CNuComplexPolarArray>) {
    T array(0);
    for (int left = input.Below(6); left > 0; --left) array.Add(Made<std::decay_t<decltype(array[0])>>(input));
    return array;
  } else if constexpr (std::is_same_v<T, CNuPoint>) {
    const double x = input.Number(), y = input.Number(), z = input.Number();
    return T(x, y, z);
  } else if constexpr (std::is_same_v<T, CNuVector>) {
    const int kind = input.Below(4);
    T v(kind == 0 ? 1 + input.Size(8) : 3);
    if (kind == 1)
      v[input.Below(3)] = 1.0;
    else
      for (int i = 0; i < v.GetSize(); ++i) v[i] = input.Number();
    return v;
  } else if constexpr (std::is_same_v<T, CNuMatrix>) {
    const int rows = 1 + input.Size(6);
    T m(rows, !input.IsLarge() && input.Below(3) != 0 ? rows : 1 + input.Below(6));
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j < m.GetColumnSize(); ++j) m.Element(i, j) = input.Number();
    }
    return m;
  } else if constexpr (std::is_same_v<T, CNuComplexMatrix>) {
    const CNuMatrix real = Made<CNuMatrix>(input);
    return T(real, CNuMatrix(real).Transpose().GetRowSize() == real.GetRowSize() ? real.Transpose() : real);
  } else if constexpr (std::is_same_v<T, CNuComplexVector>) {
    return T(1 + input.Below(5));
  } else if constexpr (std::is_same_v<T, CNuPolynomial>) {
    T p(input.Below(8));
    for (int i = 0; i <= p.GetDegree(); ++i) p[i] = input.Number();
    return p;
  } else if constexpr (std::is_same_v<T, CNuTriagPolynomial>) {
    T p(input.Below(5));
    for (int i = 0; i <= p.GetDegree(); ++i) p.Cos(i) = input.Number(), p.Sin(i) = input.Number();
    return p;
  } else if constexpr (std::is_same_v<T, CNuTriag>) {
    const double a = input.Number(), b = input.Number();
    return T(a, b, input.Number());
  } else if constexpr (std::is_same_v<T, CNuChebyshevPolynomial> ||
                       std::is_same_v<T, CNuChebyshevPolynomialExpression>) {
    return T(input.Below(6));
  } else if constexpr (std::is_same_v<T, CNuLinearEquSys>) {
    T system(input.Below(3));
    CNuMatrix a(3, 3);
    for (int i = 0; i < 3; ++i) a.Element(i, i) = 1.0 + i;
    system.Solve(a, CNuVector(1.0, 2.0, 3.0));
    return system;
  } else if constexpr (std::is_same_v<T, CNuInterpolation> || std::is_same_v<T, CNuInterpolation2D>) {
    CNuDoubleArray x(0);
    double sum = 0.0;
    for (int left = 2 + input.Below(6); left > 0; --left) x.Add(sum += 0.125 * (1 + input.Below(9)));
    if constexpr (std::is_same_v<T, CNuInterpolation>) {
      return T(x, x);
    } else {
      CNuMatrix z(x.GetSize(), x.GetSize());
      for (int i = 0; i < x.GetSize(); ++i) z.Element(i, i) = input.Number();
      return T(x, x, z);
    }
  } else if constexpr (std::is_same_v<T, CNuPCurve>) {
    CNuObjArray found(4);
    CNuCylSurf(1).IntersectWith(CNuCylSurf(2, CNuPoint(), CNuVector(1, 2, 3)), &found);
    T curve(dynamic_cast<CNuPCurve&>(*found[0]));
    for (int i = 0; i < found.GetSize(); ++i) delete found[i];
    return curve;
  } else if constexpr (std::is_same_v<T, CNuPolyline>) {
    CNuPointArray corners = Edge();
    corners.Append(input.IsLarge() ? Cloud(input) : Corners(input));
    return T(corners);
  } else if constexpr (std::is_same_v<T, CNuSimplifiedCurve>) {
    CNuPointArray points = Edge();
    points.Append(Cloud(input, &Input::Below));
    return T(points, 0.1);
  } else if constexpr (std::is_same_v<T, CNuCircularArc>) {
    return T(CNuPoint(), CNuPoint(2, 0, 0), CNuPoint(0, 2, 0), input.Below(2) == 0 ? NuTrue : NuFalse);
  } else if constexpr (std::is_same_v<T, CNuCompositeCurve>) {
    T chain;
    chain.AddSegment(CNuLineSegment(CNuPoint(0, 0, 0), CNuPoint(3, 0, 0)), NuTrue);
    if (input.Below(2) == 0) chain.AddSegment(CNuCircularArc({3, 1, 0}, {3, 0, 0}, {4, 1, 0}, NuTrue), NuTrue);
    return chain;
  } else if constexpr (std::is_same_v<T, CNuAssociation>) {
    T association{nullptr, 0};
    association.Add(Cloud(input));
    association.SetDetails(input.Below(32));
    return association;
  } else if constexpr (std::is_same_v<T, CNuAssociationReport>) {
    const CNuPointArray points = Cloud(input, &Input::Below);
    CNuAssociation association(points);
    association.SetDetails(NuDetailAll);
    CNuCylSurf cylinder(1);
    CNuCircle circle(1);
    const ENuCriterion criterion = input.Integer() % 2 == 0 ? NuMinimumZone : NuLeastSquares;
    switch (input.Below(3)) {
      case 0:
        return association.Fit(criterion, &cylinder);
      case 1:
        return association.Fit(criterion, &circle);
      default:
        return association.ProveGlobally(NuMinimumCircumscribed, &cylinder, 20);
    }
  } else if constexpr (std::is_same_v<T, CNuAssociationPart>) {
    Random random(input.Byte());
    return T(TypicalPoints<CNuCylSurf>(random, 20), CNuCylSurf(5.0, CNuPoint(), CNuVector(0.0, 0.0, 1.0)), CNuPoint());
  } else if constexpr (std::is_same_v<T, CNuAssociationCandidates>) {
    T candidates;
    candidates.Add(Made<CNuAssociationPart>(input));
    return candidates;
  } else if constexpr (std::is_same_v<T, CNuSampledFit>) {
    Random random(input.Byte());
    const CNuPointArray points = TypicalPoints<CNuCircle>(random, 9);
    const CNuAssociation association(points);
    CNuCircle circle(1);
    return association.MonteCarlo(association.Fit(NuLeastSquares, &circle), 1e-3, 3, 1);
  } else if constexpr (std::is_same_v<T, CNuCertificate>) {
    CNuIntArray indices(0);
    CNuDoubleArray multipliers(0);
    for (int i = 0; i < 4; ++i) indices.Add(i), multipliers.Add(0.25);
    return T(NuMinimumZone, indices, indices, multipliers);
  } else if constexpr (std::is_same_v<T, CNuCartesianCoord>) {
    T frame;
    const CNuPoint origin = Made<CNuPoint>(input);
    const CNuVector x = Made<CNuVector>(input);
    frame.SetData(origin, x, Made<CNuVector>(input));
    return frame;
  } else if constexpr (kIsPlaced<T> || kHasSize<T>) {
    if (input.Below(4) == 0) return Start<T>();
    const CNuPoint place = Made<CNuPoint>(input);
    const CNuVector direction = Made<CNuVector>(input);
    if constexpr (kIsPlaced<T>)
      return T(place, direction);
    else
      return T(std::fabs(input.Number()), place, direction);
  } else {
    return Start<T>();
  }
}

template<class T>
void FillOne(Input& input, void* place) {
  auto& object = *static_cast<std::unique_ptr<T>*>(place);
  try {
    object = std::make_unique<T>(Made<T>(input));
  } catch (const CNuException&) {  // of odd numbers
    Input none(nullptr, 0);
    object = std::make_unique<T>(Made<T>(none));
  }
}

template<class Tuple>
struct Fillers;
template<class... Types>
struct Fillers<std::tuple<Types...>> {
  static constexpr void (*kAll[])(Input& input, void* place) = {FillOne<Types>...};
};

}  // namespace

void FillObject(Input& input, std::size_t classAt, void* place) {
  Fillers<Classes>::kAll[classAt](input, place);
}

}  // namespace nu::fuzz
