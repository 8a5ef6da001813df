#include "nu/c/internal/features.h"
#include "nu/c/internal/handles.h"
#include "nu/curves/pcurve.h"
#include "nu/foundation/internal/failures.h"

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

template<class... Found>
Objects ElementsOf(int count, const Found&... objects) {
  Objects elements;
  const auto add = [&](const auto& object) {
    if (static_cast<int>(elements.size()) < count)
      elements.push_back(std::make_unique<std::decay_t<decltype(object)>>(object));
  };
  (add(objects), ...);
  return elements;
}

template<class A, class B>
constexpr bool CanIntersect() {
  return requires(const A& a, const B& b, CNuPoint* p, CNuLine* l, CNuObjArray* c) {
    a.IntersectWith(b, p);
  }
  || requires(const A& a, const B& b, CNuPoint* p) {
    a.IntersectWith(b, p, p);
  }
  || requires(const A& a, const B& b, CNuLine* l) {
    a.IntersectWith(b, l);
  }
  || requires(const A& a, const B& b, CNuObjArray* c) {
    a.IntersectWith(b, c);
  };
}

template<class A, class B>
Objects Intersect(const A& a, const B& b) {
  CNuPoint p, q;
  CNuLine line;
  CNuObjArray curves(0);
  if constexpr (requires { a.IntersectWith(b, &p); }) {
    const int count = a.IntersectWith(b, &p);
    return ElementsOf(count, p);
  } else if constexpr (requires { a.IntersectWith(b, &p, &q); }) {
    const int count = a.IntersectWith(b, &p, &q);
    return ElementsOf(count, p, q);
  } else if constexpr (requires { a.IntersectWith(b, &line); }) {
    const int count = a.IntersectWith(b, &line);
    return ElementsOf(count, line);
  } else {
    a.IntersectWith(b, &curves);
    return Taken(curves);
  }
}

struct Intersection {
  template<class A, class B>
  Objects operator()(const A& a, const B& b) const {
    if constexpr (CanIntersect<A, B>())
      return Intersect(a, b);
    else if constexpr (CanIntersect<B, A>())
      return Intersect(b, a);
    else
      FailOperation(NuOperationUnsupported, "calculation", "nu_intersection_create");
  }
};

Objects ElementsOf(const nu_feature* first, const nu_feature* second) {
  return std::visit(Intersection(), ClassOf(first), ClassOf(second));
}

const CNuObject& ElementAt(const nu_intersection* intersection, std::int32_t i) {
  const Objects& elements = Deref(intersection).elements;
  RequireIndex(i, static_cast<int>(elements.size()), "operation", "nu_intersection_get");
  return *elements[static_cast<std::size_t>(i)];
}

const CNuPCurve& CurveAt(const nu_intersection* intersection, std::int32_t i) {
  const auto* curve = dynamic_cast<const CNuPCurve*>(&ElementAt(intersection, i));
  if (curve == nullptr) FailOperation(NuOperationUnsupported, "calculation", "nu_intersection_range");
  return *curve;
}

}  // namespace

nu_status nu_feature_intersect(const nu_feature* first, const nu_feature* second, nu_feature* found, int32_t capacity,
                               int32_t* count) {
  return Guarded([&] {
    const Objects elements = ElementsOf(first, second);
    Fill(found, capacity, static_cast<std::int32_t>(elements.size()), count,
         [&](std::int32_t i) { return ToFeatureOfAny(*elements[static_cast<std::size_t>(i)]); });
  });
}

nu_status nu_intersection_create(const nu_feature* first, const nu_feature* second, nu_intersection** intersection) {
  return Create(intersection, [&] { return nu_intersection{{}, ElementsOf(first, second)}; });
}

void nu_intersection_free(nu_intersection* intersection) {
  Free(intersection);
}

nu_status nu_intersection_count(const nu_intersection* intersection, int32_t* count) {
  return Give(count, "count is null", [&] { return static_cast<std::int32_t>(Deref(intersection).elements.size()); });
}

nu_status nu_intersection_get(const nu_intersection* intersection, int32_t i, nu_feature* feature) {
  return Give(feature, "the feature is null", [&] { return ToFeatureOfAny(ElementAt(intersection, i)); });
}

nu_status nu_intersection_range(const nu_intersection* intersection, int32_t i, double* lower, double* upper,
                                int32_t* is_closed) {
  return Guarded([&] {
    const CNuPCurve& curve = CurveAt(intersection, i);
    const CNuInterval range = curve.GetRange();
    range.GetBounds(lower, upper);
    Output(is_closed, curve.IsClosed() != NuFalse ? 1 : 0);
  });
}

nu_status nu_intersection_sample(const nu_intersection* intersection, int32_t i, int32_t n, double* xyz) {
  return Guarded([&] {
    Require(xyz != nullptr, "xyz is null");
    Write(CurveAt(intersection, i).ToPointArray(n), xyz);
  });
}

nu_status nu_intersection_closest(const nu_intersection* intersection, int32_t i, const double* point, double* closest,
                                  double* parameter) {
  return Guarded([&] {
    double u = 0.0;
    const CNuPoint found = CurveAt(intersection, i).ClosestPoint(PointOf(point, "point is null"), &u);
    Write(found, closest);
    Output(parameter, u);
  });
}
