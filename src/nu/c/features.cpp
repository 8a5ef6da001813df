#include "nu/c/internal/features.h"

#include <algorithm>

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

struct Angle {
  template<class A, class B>
  double operator()(const A& a, const B& b) const {
    if constexpr (requires { a.AngleWith(b); })
      return a.AngleWith(b);
    else if constexpr (requires { b.AngleWith(a); })
      return b.AngleWith(a);
    else
      FailKinds("nu_feature_angle");
  }
};

struct Parallel {
  double tol;
  template<class A, class B>
  bool operator()(const A& a, const B& b) const {
    if constexpr (requires { a.IsParallelTo(b, tol); })
      return a.IsParallelTo(b, tol) != NuFalse;
    else if constexpr (requires { b.IsParallelTo(a, tol); })
      return b.IsParallelTo(a, tol) != NuFalse;
    else
      FailKinds("nu_feature_is_parallel");
  }
};

constexpr const char* kMiddle = "nu_feature_middle";

struct MiddlePoint {
  template<class A, class B>
  nu_feature operator()(const A& a, const B& b) const {
    if constexpr (requires { a.MidPoint(b); })
      return ToFeature(a.MidPoint(b));
    else if constexpr (requires { b.MidPoint(a); })
      return ToFeature(b.MidPoint(a));
    else
      FailKinds(kMiddle);
  }
};

struct MiddleLine {
  template<class A, class B>
  nu_feature operator()(const A& a, const B& b) const {
    if constexpr (requires { a.MidLine(b); })
      return ToFeature(a.MidLine(b));
    else if constexpr (requires { b.MidLine(a); })
      return ToFeature(b.MidLine(a));
    else
      FailKinds(kMiddle);
  }
};

struct MiddlePlane {
  template<class A, class B>
  nu_feature operator()(const A& a, const B& b) const {
    if constexpr (requires { a.MidPlane(b); })
      return ToFeature(a.MidPlane(b));
    else if constexpr (requires { b.MidPlane(a); })
      return ToFeature(b.MidPlane(a));
    else
      FailKinds(kMiddle);
  }
};

nu_feature MiddleOf(const nu_feature* first, const nu_feature* second, std::int32_t kind) {
  switch (kind) {
    case NU_KIND_POINT:
      return Relate(first, second, MiddlePoint());
    case NU_KIND_LINE:
      return Relate(first, second, MiddleLine());
    case NU_KIND_PLANE:
      return Relate(first, second, MiddlePlane());
    default:
      FailKinds(kMiddle);
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
      if (form != nullptr)
        *form = {report.GetForm(), report.GetPeak(), report.GetValley(), report.GetRootMeanSquare(),
                 report.GetSumSquares()};
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
  return Guarded([&] {
    Require(distance != nullptr, "distance is null");
    *distance = Relate(first, second, Distance());
  });
}

nu_status nu_feature_angle(const nu_feature* first, const nu_feature* second, double* degrees) {
  return Guarded([&] {
    Require(degrees != nullptr, "degrees is null");
    *degrees = Relate(first, second, Angle());
  });
}

nu_status nu_feature_is_parallel(const nu_feature* first, const nu_feature* second, double tol, int32_t* is_parallel) {
  return Guarded([&] {
    Require(is_parallel != nullptr, "is_parallel is null");
    *is_parallel = Relate(first, second, Parallel{tol}) ? 1 : 0;
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
  return Guarded([&] {
    const CNuPoint p = PointOf(point, "point is null");
    Require(side != nullptr, "side is null");
    *side = std::visit([&](const auto& of) { return SideOf(p, of, tol); }, ClassOf(feature));
  });
}

nu_status nu_feature_middle(const nu_feature* first, const nu_feature* second, int32_t kind, nu_feature* middle) {
  return Guarded([&] {
    Require(middle != nullptr, "middle is null");
    *middle = MiddleOf(first, second, kind);
  });
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
