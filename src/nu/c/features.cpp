#include "nu/c/internal/features.h"

#include <type_traits>

#include "nu/association/association.h"
#include "nu/foundation/internal/failures.h"

// Relations are the operations of the classes, of whichever of the two features has one.

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

[[noreturn]] void FailKinds(const char* where) {
  FailOperation(NuOperationUnsupported, "calculation", where);
}

// relation(first, second) with both of their classes.
template<class Relation>
auto Relate(const nu_feature* first, const nu_feature* second, const Relation& relation) {
  return std::visit(relation, ClassOf(first), ClassOf(second));
}

// Conics have the distance of a point themselves, not the point.
struct Distance {
  template<class A, class B>
  double operator()(const A& a, const B& b) const {
    constexpr bool fromSecond = requires {
      b.DistanceTo(a);
    };
    constexpr bool fromFirst = requires {
      a.DistanceTo(b);
    }
    &&!(std::is_same_v<A, CNuPoint> && fromSecond);
    if constexpr (fromFirst)
      return a.DistanceTo(b);
    else if constexpr (fromSecond)
      return b.DistanceTo(a);
    else
      FailKinds("nu_feature_distance");
  }
};

// operation(first, second) with both of their classes, or operation(second, first) where there is only this one.
template<class Result, class Operation>
Result EitherWay(const nu_feature* first, const nu_feature* second, const char* where, const Operation& operation) {
  const auto relate = [&]<class A, class B>(const A& a, const B& b) -> Result {
    if constexpr (std::is_invocable_v<Operation, const A&, const B&>)
      return operation(a, b);
    else if constexpr (std::is_invocable_v<Operation, const B&, const A&>)
      return operation(b, a);
    else
      FailKinds(where);
  };
  return Relate(first, second, relate);
}

nu_feature MiddleOf(const nu_feature* first, const nu_feature* second, std::int32_t kind) {
  constexpr const char* where = "nu_feature_middle";
  const auto point = [](const auto& a, const auto& b) -> decltype(a.MidPoint(b)) { return a.MidPoint(b); };
  const auto line = [](const auto& a, const auto& b) -> decltype(a.MidLine(b)) { return a.MidLine(b); };
  const auto plane = [](const auto& a, const auto& b) -> decltype(a.MidPlane(b)) { return a.MidPlane(b); };
  switch (kind) {
    case NU_KIND_POINT:
      return ToFeature(EitherWay<CNuPoint>(first, second, where, point));
    case NU_KIND_LINE:
      return ToFeature(EitherWay<CNuLine>(first, second, where, line));
    case NU_KIND_PLANE:
      return ToFeature(EitherWay<CNuPlane>(first, second, where, plane));
    default:
      FailKinds(where);
  }
}

template<class Class>
CNuGeometry::ESideType SideOf(const CNuPoint& point, const Class& feature, double tol) {
  if constexpr (std::is_same_v<Class, CNuPoint>)
    FailKinds("nu_feature_side");
  else if constexpr (std::is_same_v<Class, CNuLine>)
    return point.LineSide(feature, tol);
  else if constexpr (std::is_base_of_v<CNuCurve, Class>)
    return point.CurveSide(feature, tol);
  else
    return point.SurfaceSide(feature, tol);
}

struct Closest {
  CNuPoint at[2];
  int count = 0;

  template<class Class>
  void operator()(const CNuLine& line, const Class& feature) {
    if constexpr (requires { line.ClosestPointsTo(feature, at); })
      count = line.ClosestPointsTo(feature, at);
    else if constexpr (requires { line.ClosestPointsTo(feature, at, at + 1); })
      count = line.ClosestPointsTo(feature, at, at + 1);
    else
      FailKinds("nu_feature_closest");
  }
};

}  // namespace

nu_status nu_feature_fit(const double* xyz, int32_t count, int32_t stride, int32_t criterion, nu_feature* feature,
                         nu_form* form) {
  return Guarded([&] {
    RequirePoints(xyz, count, stride);
    Require(feature != nullptr, "the feature is null");
    CNuAssociation fits(xyz, count, stride);
    fits.SetDetails(form != nullptr ? NuDetailForm : NuDetailNone);
    VisitToFit(feature->kind, [&](auto& found) {
      const CNuAssociationReport report = fits.Fit(static_cast<ENuCriterion>(criterion), &found);
      report.Require();
      *feature = ToFeature(found);
      if (form != nullptr) *form = FormOf(report);
    });
  });
}

nu_status nu_feature_normalise(nu_feature* feature) {
  return Guarded([&] { *feature = std::visit([](const auto& made) { return ToFeature(made); }, ClassOf(feature)); });
}

nu_status nu_feature_translate(nu_feature* feature, const double* by) {
  return Guarded([&] {
    const CNuPoint step = PointOf(by, "the vector is null");
    AnyClass any = ClassOf(feature);
    std::visit([&](auto& made) { made.Translate(step.x(), step.y(), step.z()); }, any);
    *feature = std::visit([](const auto& made) { return ToFeature(made); }, any);
  });
}

nu_status nu_feature_rotate(nu_feature* feature, double degrees, const double* axis, const double* centre) {
  return Guarded([&] {
    const CNuVector about = VectorOf(axis, "the axis is null");
    AnyClass any = ClassOf(feature);
    if (centre == nullptr)
      std::visit([&](auto& made) { made.Rotate(degrees, about); }, any);
    else
      std::visit([&](auto& made) { made.Rotate(degrees, about, CNuPoint(centre[0], centre[1], centre[2])); }, any);
    *feature = std::visit([](const auto& made) { return ToFeature(made); }, any);
  });
}

nu_status nu_feature_distance(const nu_feature* first, const nu_feature* second, double* distance) {
  return Give(distance, "distance is null", [&] { return Relate(first, second, Distance()); });
}

nu_status nu_feature_angle(const nu_feature* first, const nu_feature* second, double* degrees) {
  return Give(degrees, "degrees is null", [&] {
    const auto angle = [](const auto& a, const auto& b) -> decltype(a.AngleWith(b)) { return a.AngleWith(b); };
    return EitherWay<double>(first, second, "nu_feature_angle", angle);
  });
}

nu_status nu_feature_is_parallel(const nu_feature* first, const nu_feature* second, double tol, int32_t* is_parallel) {
  return Give(is_parallel, "is_parallel is null", [&] {
    const auto parallel = [tol](const auto& a, const auto& b) -> decltype(a.IsParallelTo(b, 0.0)) {
      return a.IsParallelTo(b, tol);
    };
    return EitherWay<ENuBoolean>(first, second, "nu_feature_is_parallel", parallel) != NuFalse ? 1 : 0;
  });
}

nu_status nu_feature_project(const double* point, const nu_feature* feature, double* closest) {
  return Guarded([&] {
    const CNuPoint p = PointOf(point, "point is null");
    Require(closest != nullptr, "closest is null");
    const auto project = [&]<class Class>(const Class& on) -> CNuPoint {
      if constexpr (requires { p.ProjectionOn(on); })
        return p.ProjectionOn(on);
      else
        FailKinds("nu_feature_project");
    };
    Write(std::visit(project, ClassOf(feature)), closest);
  });
}

nu_status nu_feature_side(const double* point, const nu_feature* feature, double tol, int32_t* side) {
  return Give(side, "side is null", [&] {
    const CNuPoint p = PointOf(point, "point is null");
    return std::visit([&](const auto& of) { return SideOf(p, of, tol); }, ClassOf(feature));
  });
}

nu_status nu_feature_middle(const nu_feature* first, const nu_feature* second, int32_t kind, nu_feature* middle) {
  return Give(middle, "middle is null", [&] { return MiddleOf(first, second, kind); });
}

nu_status nu_feature_closest(const nu_feature* line, const nu_feature* feature, double* xyz, int32_t* count) {
  return Guarded([&] {
    Require(xyz != nullptr && count != nullptr, "xyz or count is null");
    const AnyClass from = ClassOf(line);
    Require(std::holds_alternative<CNuLine>(from), "the first feature is no line");
    Closest closest;
    std::visit([&](const auto& to) { closest(std::get<CNuLine>(from), to); }, ClassOf(feature));
    for (int i = 0; i < closest.count; ++i) Write(closest.at[i], xyz + 3 * i);
    *count = closest.count;
  });
}
