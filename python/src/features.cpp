#include <memory>
#include <sstream>
#include <string>

#include "arguments.h"
#include "nu/association/internal/feature_access.h"

// The features as classes of Python. They never change there: motions return new ones.
namespace nu::python {

namespace {

using nu::internal::FeatureAccess;

// What a feature consists of for Python, in the order of its constructor.
using Value = std::variant<double, Triple>;
using Field = std::pair<const char*, Value>;
using Fields = std::vector<Field>;

Fields FieldsOf(const CNuLine& f) {
  return {{"point", ToTriple(f.GetPoint())}, {"direction", ToTriple(f.GetDirection())}};
}
Fields FieldsOf(const CNuPlane& f) {
  return {{"point", ToTriple(f.GetPoint())}, {"normal", ToTriple(f.GetNormal())}};
}
Fields FieldsOf(const CNuCircle& f) {
  return {{"radius", f.GetRadius()}, {"centre", ToTriple(f.GetCentre())}, {"normal", ToTriple(f.GetNormal())}};
}
template<class Conic>
Fields FieldsOfConic(const Conic& f) {
  return {{"semi_axis_a", f.GetSemiAxisA()},
          {"semi_axis_b", f.GetSemiAxisB()},
          {"centre", ToTriple(f.GetCentre())},
          {"x_axis", ToTriple(f.GetXaxis())},
          {"normal", ToTriple(f.GetNormal())}};
}
Fields FieldsOf(const CNuEllipse& f) {
  return FieldsOfConic(f);
}
Fields FieldsOf(const CNuHyperbola& f) {
  return FieldsOfConic(f);
}
Fields FieldsOf(const CNuParabola& f) {
  return {{"focal_length", f.GetFocalLength()},
          {"vertex", ToTriple(f.GetVertex())},
          {"x_axis", ToTriple(f.GetXaxis())},
          {"normal", ToTriple(f.GetNormal())}};
}
Fields FieldsOf(const CNuSphSurf& f) {
  return {{"radius", f.GetRadius()}, {"centre", ToTriple(f.GetCentre())}};
}
Fields FieldsOf(const CNuCylSurf& f) {
  return {{"radius", f.GetRadius()},
          {"axis_point", ToTriple(f.GetAxisPoint())},
          {"axis_direction", ToTriple(f.GetAxisDirection())}};
}
Fields FieldsOf(const CNuConSurf& f) {
  return {{"semi_angle", f.GetSemiAngle()},
          {"apex", ToTriple(f.GetApex())},
          {"axis_direction", ToTriple(f.GetAxisDirection())}};
}
Fields FieldsOf(const CNuTorSurf& f) {
  return {{"major_radius", f.GetMajorRadius()},
          {"minor_radius", f.GetMinorRadius()},
          {"centre", ToTriple(f.GetCentre())},
          {"axis_direction", ToTriple(f.GetAxisDirection())}};
}

// Floats for numbers, tuples of floats for points and directions: they compare, hash and print by themselves.
nb::object Plain(const Value& value) {
  if (const double* number = std::get_if<double>(&value)) return nb::float_(*number);
  const auto& xyz = std::get<Triple>(value).xyz;
  return nb::make_tuple(xyz[0], xyz[1], xyz[2]);
}

nb::tuple PlainValues(const Fields& fields) {
  nb::list values;
  for (const Field& field : fields) values.append(Plain(field.second));
  return nb::tuple(values);
}

template<class T>
std::string Repr(const T& feature, const char* name) {
  std::string text = std::string(name) + "(";
  for (const Field& field : FieldsOf(feature)) {
    if (text.back() != '(') text += ", ";
    text += std::string(field.first) + "=" + nb::repr(Plain(field.second)).c_str();
  }
  return text + ")";
}

template<class T>
nb::dict Dict(const T& feature, const char* name) {
  nb::dict all;
  all["type"] = name;
  for (const Field& field : FieldsOf(feature)) all[field.first] = Plain(field.second);
  return all;
}

// The state of a feature to the last bit; the constructors would normalise its directions once more.
using State = std::tuple<std::vector<double>, Triple, Triple, Triple>;

State StateOf(const CNuLine& f) {
  return {{}, ToTriple(f.GetPoint()), {}, ToTriple(f.GetDirection())};
}
State StateOf(const CNuPlane& f) {
  return {{}, ToTriple(f.GetPoint()), {}, ToTriple(f.GetNormal())};
}
template<class T>
State StateOf(const T& f) {
  std::vector<double> sizes;
  for (const Field& field : FieldsOf(f))
    if (const double* size = std::get_if<double>(&field.second)) sizes.push_back(*size);
  CNuPoint origin;
  CNuVector x, z;
  FeatureAccess::GetFrame(f, &origin, &x, &z);
  return {sizes, ToTriple(origin), ToTriple(x), ToTriple(z)};
}

nu::internal::Vec3 Components(const Triple& t) {
  return {t.xyz[0], t.xyz[1], t.xyz[2]};
}

void Restore(const State& state, CNuLine* f) {
  FeatureAccess::Put(nu::internal::Line3{Components(std::get<1>(state)), Components(std::get<3>(state))}, f);
}
void Restore(const State& state, CNuPlane* f) {
  FeatureAccess::Put(nu::internal::Plane3{Components(std::get<1>(state)), Components(std::get<3>(state))}, f);
}
template<class T>
void Restore(const State& state, T* f) {
  const auto& [sizes, origin, x, z] = state;
  if (sizes.empty()) throw nb::value_error("this is no state of the feature");
  FeatureAccess::PutFrame(origin.Point(), x.Vector(), z.Vector(), f);
  FeatureAccess::PutSizes(sizes.front(), sizes.back(), f);
}

nb::tuple ToTuple(const State& state) {
  nb::list sizes;
  for (const double size : std::get<0>(state)) sizes.append(size);
  return nb::make_tuple(nb::tuple(sizes), Plain(std::get<1>(state)), Plain(std::get<2>(state)),
                        Plain(std::get<3>(state)));
}

State FromTuple(const nb::tuple& state) {
  return {nb::cast<std::vector<double>>(state[0]), nb::cast<Triple>(state[1]), nb::cast<Triple>(state[2]),
          nb::cast<Triple>(state[3])};
}

template<class T>
bool AreEqual(const T& a, const T& b) {
  return PlainValues(FieldsOf(a)).equal(PlainValues(FieldsOf(b)));
}

template<class T>
T Translated(const T& feature, const Triple& by) {
  T moved = feature;
  moved.Translate(by.xyz[0], by.xyz[1], by.xyz[2]);
  return moved;
}

template<class T>
T Rotated(const T& feature, double degrees, const Triple& axis, const Triple& centre) {
  T moved = feature;
  moved.Rotate(degrees, axis.Vector(), centre.Point());
  return moved;
}

// Conics measure the distance of a point themselves; of the other features the point does.
template<class T>
double Distance(const CNuPoint& p, const T& feature) {
  constexpr bool isConic =
      std::is_same_v<T, CNuEllipse> || std::is_same_v<T, CNuHyperbola> || std::is_same_v<T, CNuParabola>;
  if constexpr (isConic) {
    return feature.DistanceTo(p);
  } else {
    return p.DistanceTo(feature);
  }
}

template<class T>
Doubles Distances(const T& feature, const PointsArgument& points) {
  const Block block = ToBlock(points);
  std::vector<double> distances(static_cast<std::size_t>(block.count));
  {
    nb::gil_scoped_release released;
    for (int i = 0; i < block.count; ++i) {
      const double* p = block.xyz + static_cast<std::ptrdiff_t>(i) * block.stride;
      distances[static_cast<std::size_t>(i)] = Distance(CNuPoint(p[0], p[1], p[2]), feature);
    }
  }
  const std::size_t n = distances.size();
  return Owning<Doubles>(std::move(distances), {n});
}

std::string ClassDoc(const char* summary, const char* parameters) {
  return std::string(summary) + "\n\nParameters\n----------\n" + parameters +
         "\nRaises\n------\nArgumentError\n    For other sizes, and directions of length 0.\n";
}

template<class T>
nb::class_<T> BindFeature(nb::module_& m, const char* name, const char* summary, const char* parameters) {
  nb::class_<T> bound(m, name, ClassDoc(summary, parameters).c_str());
  bound.def("__repr__", [name](const T& f) { return Repr(f, name); })
      .def(
          "__eq__", [](const T& f, const T& other) { return AreEqual(f, other); }, nb::is_operator(),
          nb::sig("def __eq__(self, other: object, /) -> bool"))
      .def("__hash__", [](const T& f) { return nb::hash(PlainValues(FieldsOf(f))); })
      .def(
          "__getstate__", [](const T& f) { return ToTuple(StateOf(f)); },
          nb::sig("def __getstate__(self) -> tuple[typing.Any, ...]"))
      .def(
          "__setstate__",
          [](T& f, const nb::tuple& state) {
            T restored = Some<T>();
            Restore(FromTuple(state), &restored);
            new (&f) T(restored);
          },
          nb::sig("def __setstate__(self, state: tuple[typing.Any, ...], /) -> None"))
      .def(
          "to_dict", [name](const T& f) { return Dict(f, name); },
          nb::sig("def to_dict(self) -> dict[str, str | float | tuple[float, float, float]]"),
          "Its class under \"type\", its sizes, points and directions as floats and tuples.")
      .def("translated", &Translated<T>, nb::arg("by"), "The feature moved by a vector of three lengths.")
      .def("rotated", &Rotated<T>, nb::arg("degrees"), nb::arg("axis"), nb::arg("centre") = Triple{},
           nb::sig("def rotated(self, degrees: float, axis: numpy.typing.ArrayLike, centre: numpy.typing.ArrayLike = "
                   "(0.0, 0.0, 0.0)) -> typing.Self"),
           "The feature turned about an axis through `centre`, right-handed.\n\nRaises ArgumentError for an axis of "
           "length zero.");
  if constexpr (!std::is_same_v<T, CNuTorSurf>) {
    bound
        .def(
            "distance_to", [](const T& f, const Triple& p) { return Distance(p.Point(), f); }, nb::arg("point"),
            "The least distance of a point, never negative.")
        .def("distances", &Distances<T>, nb::arg("points"),
             "Distances, never negative, of an (n, 3) array of float64, one per point.");
  }
  return bound;
}

// The results of intersections, which may be any of these. A point is an array of three coordinates.
nb::object Take(std::unique_ptr<CNuObject> object) {
  CNuObject* o = object.get();
  if (auto* p = dynamic_cast<CNuPoint*>(o)) return nb::cast(ToArray(*p));
  if (auto* p = dynamic_cast<CNuLine*>(o)) return nb::cast(*p);
  if (auto* p = dynamic_cast<CNuCircle*>(o)) return nb::cast(*p);
  if (auto* p = dynamic_cast<CNuEllipse*>(o)) return nb::cast(*p);
  if (auto* p = dynamic_cast<CNuHyperbola*>(o)) return nb::cast(*p);
  if (auto* p = dynamic_cast<CNuParabola*>(o)) return nb::cast(*p);
  if (auto* p = dynamic_cast<CNuPCurve*>(o)) return nb::cast(*p);
  throw nb::type_error("an intersection of another class");
}

// Arrays own their numbers; a property would refer to the feature.
constexpr auto kMove = nb::rv_policy::move;

using Curves = nb::typed<nb::tuple, nb::any, nb::ellipsis>;
using Places = nb::typed<nb::tuple, Vector3, nb::ellipsis>;
using Lines = nb::typed<nb::tuple, CNuLine, nb::ellipsis>;

// An array of objects that it owns.
class OwnedObjects {
 public:
  OwnedObjects() : m_objects(4) {}
  OwnedObjects(const OwnedObjects&) = delete;
  OwnedObjects& operator=(const OwnedObjects&) = delete;
  ~OwnedObjects() {
    for (int i = 0; i < m_objects.GetSize(); ++i) delete m_objects[i];
  }

  CNuObjArray* Get() { return &m_objects; }
  Curves ToTuple() {
    nb::list all;
    for (int i = 0; i < m_objects.GetSize(); ++i) {
      std::unique_ptr<CNuObject> object(m_objects[i]);
      m_objects[i] = nullptr;
      all.append(Take(std::move(object)));
    }
    return Curves(nb::tuple(all));
  }

 private:
  CNuObjArray m_objects;
};

template<class A, class B>
Curves CommonCurves(const A& a, const B& b) {
  OwnedObjects found;
  a.IntersectWith(b, found.Get());
  return found.ToTuple();
}

Places FirstPoints(int count, const CNuPoint& p, const CNuPoint& q) {
  if (count <= 0) return Places(nb::tuple());
  return Places(count == 1 ? nb::make_tuple(ToArray(p)) : nb::make_tuple(ToArray(p), ToArray(q)));
}

template<class A, class B>
Places CommonPoints(const A& a, const B& b) {
  CNuPoint p, q;
  const int count = a.IntersectWith(b, &p, &q);
  return FirstPoints(count, p, q);
}

template<class B>
Places CommonPoint(const CNuLine& line, const B& b) {
  CNuPoint p;
  const int count = line.IntersectWith(b, &p);
  return FirstPoints(count, p, p);
}

Lines CommonLine(const CNuPlane& a, const CNuPlane& b) {
  CNuLine line;
  return Lines(a.IntersectWith(b, &line) == 0 ? nb::tuple() : nb::make_tuple(line));
}

template<class B>
Places ClosestPoints(const CNuLine& line, const B& b) {
  CNuPoint p, q;
  if constexpr (std::is_same_v<B, CNuLine>) {
    const int count = line.ClosestPointsTo(b, &p);
    return FirstPoints(count, p, p);
  } else {
    const int count = line.ClosestPointsTo(b, &p, &q);
    return FirstPoints(count, p, q);
  }
}

template<class T>
Vector3 Projected(const T& feature, const Triple& p) {
  return ToArray(p.Point().ProjectionOn(feature));
}

constexpr const char* kCommonPoints =
    "The common points, arrays of shape (3,), in a tuple; empty for parallel features.\n\n"
    "Raises CalculationError where rounding decides.";
constexpr const char* kCommonCurves =
    "The common points and curves in a tuple: arrays of shape (3,), lines, circles, conics and intersection curves.\n\n"
    "Raises CalculationError where rounding decides.";
constexpr const char* kClosest = "The points of the line that are closest to the feature: none, one or two in a tuple.";
constexpr const char* kDistance = "The least distance, never negative and 0 where they meet.";
constexpr const char* kAngle = "Degrees in [0, 180] between directions of lines and normals of planes.";
constexpr const char* kParallel =
    "Whether directions of lines, or lines and planes, are parallel within so many degrees.";
constexpr const char* kMidLine =
    "The line half-way to a point, a line or a plane.\n\nRaises ArgumentError where there is none.";
constexpr const char* kMidPlane =
    "The plane half-way to a point, a line or a plane.\n\nRaises ArgumentError where there is none.";

// Both directions of relations that the library has in one of the two classes.
template<class A, class B>
void BindCurves(nb::class_<A>& a, nb::class_<B>& b) {
  a.def("intersect", &CommonCurves<A, B>, nb::arg("other"), kCommonCurves);
  if constexpr (!std::is_same_v<A, B>)
    b.def(
        "intersect", [](const B& self, const A& other) { return CommonCurves(other, self); }, nb::arg("other"),
        kCommonCurves);
}
template<class A, class B>
void BindPoints(nb::class_<A>& a, nb::class_<B>& b) {
  a.def("intersect", &CommonPoints<A, B>, nb::arg("other"), kCommonPoints);
  if constexpr (!std::is_same_v<A, B>)
    b.def(
        "intersect", [](const B& self, const A& other) { return CommonPoints(other, self); }, nb::arg("other"),
        kCommonPoints);
}
template<class B>
void BindClosest(nb::class_<CNuLine>& line, nb::class_<B>& b) {
  line.def("closest_points", &ClosestPoints<B>, nb::arg("other"), kClosest);
  line.def(
      "distance_to", [](const CNuLine& self, const B& other) { return self.DistanceTo(other); }, nb::arg("other"),
      kDistance);
  if constexpr (!std::is_same_v<B, CNuLine>)
    b.def(
        "distance_to", [](const B& self, const CNuLine& other) { return other.DistanceTo(self); }, nb::arg("other"),
        kDistance);
}

template<class T>
void BindConic(nb::class_<T>& bound) {
  bound
      .def(
          "__init__",
          [](T* f, double a, double b, const Triple& centre, const Triple& x, const Triple& normal) {
            new (f) T(a, b, centre.Point(), x.Vector(), normal.Vector());
          },
          nb::arg("semi_axis_a"), nb::arg("semi_axis_b"), nb::arg("centre"), nb::arg("x_axis"), nb::arg("normal"))
      .def_prop_ro("semi_axis_a", &T::GetSemiAxisA, "The semi-axis along `x_axis`.")
      .def_prop_ro("semi_axis_b", &T::GetSemiAxisB, "The semi-axis across `x_axis`.")
      .def_prop_ro(
          "centre", [](const T& f) { return ToArray(f.GetCentre()); }, kMove, "The centre, shape (3,).")
      .def_prop_ro(
          "x_axis", [](const T& f) { return ToArray(f.GetXaxis()); }, kMove,
          "The unit direction of the x axis, shape (3,).")
      .def_prop_ro(
          "normal", [](const T& f) { return ToArray(f.GetNormal()); }, kMove, "The unit normal, shape (3,).");
}

void BindCurve(nb::module_& m) {
  nb::class_<CNuPCurve>(m, "IntersectionCurve",
                        "The curve in which two quadrics meet: one connected branch, with a parameter u in radians "
                        "about the axis of one of them.")
      .def_prop_ro(
          "range",
          [](const CNuPCurve& c) {
            double lower = 0.0, upper = 0.0;
            c.GetRange().GetBounds(&lower, &upper);
            return std::make_tuple(lower, upper);
          },
          "The least and the largest parameter, in radians.")
      .def_prop_ro(
          "is_closed", [](const CNuPCurve& c) { return c.IsClosed() != NuFalse; }, "Whether the end is the start.")
      .def(
          "point_at", [](const CNuPCurve& c, double u) { return ToArray(c.ValueAt(u)); }, nb::arg("u"),
          "The point of the parameter u, radians, shape (3,).")
      .def(
          "points", [](const CNuPCurve& c, int n) { return ToArray(c.ToPointArray(n)); }, nb::arg("n"),
          "n points in equal steps of u, both ends included: an (n, 3) array.")
      .def(
          "points_within", [](const CNuPCurve& c, double tol) { return ToArray(c.ToPointArrayWithin(tol)); },
          nb::arg("tolerance"), "Points whose polyline is within the tolerance of the curve: an (n, 3) array.")
      .def(
          "distance_to", [](const CNuPCurve& c, const Triple& p) { return c.DistanceTo(p.Point()); }, nb::arg("point"),
          "The least distance of a point, never negative.")
      .def("__repr__", [](const CNuPCurve& c) {
        double lower = 0.0, upper = 0.0;
        c.GetRange().GetBounds(&lower, &upper);
        std::ostringstream text;
        text << "IntersectionCurve(" << (c.IsClosed() != NuFalse ? "closed" : "open") << ", u from " << lower << " to "
             << upper << ")";
        return text.str();
      });
}

}  // namespace

void BindFeatures(nb::module_& m) {
  BindCurve(m);
  auto line = BindFeature<CNuLine>(m, "Line", "An infinite straight line.",
                                   "point : array-like, shape (3,)\n"
                                   "    Any point of it.\n"
                                   "direction : array-like, shape (3,)\n"
                                   "    Of any length but 0.\n");
  auto plane = BindFeature<CNuPlane>(m, "Plane", "An infinite plane.",
                                     "point : array-like, shape (3,)\n"
                                     "    Any point of it.\n"
                                     "normal : array-like, shape (3,)\n"
                                     "    Of any length but 0.\n");
  auto circle = BindFeature<CNuCircle>(m, "Circle", "A circle in space.",
                                       "radius : float\n"
                                       "    Above 0.\n"
                                       "centre, normal : array-like, shape (3,)\n"
                                       "    The centre and the normal of its plane.\n");
  auto ellipse =
      BindFeature<CNuEllipse>(m, "Ellipse", "An ellipse in space.",
                              "semi_axis_a, semi_axis_b : float\n"
                              "    Above 0, the first one along the x axis and not the smaller one.\n"
                              "centre, x_axis, normal : array-like, shape (3,)\n"
                              "    The centre, the direction of the larger axis, the normal of the plane.\n");
  auto hyperbola = BindFeature<CNuHyperbola>(m, "Hyperbola", "A hyperbola in space, with both branches.",
                                             "semi_axis_a, semi_axis_b : float\n"
                                             "    Above 0, the first one through the vertices.\n"
                                             "centre, x_axis, normal : array-like, shape (3,)\n"
                                             "    The centre, the direction to a vertex, the normal of the plane.\n");
  auto parabola =
      BindFeature<CNuParabola>(m, "Parabola", "A parabola y^2 = 4 f x in space.",
                               "focal_length : float\n"
                               "    f, above 0.\n"
                               "vertex, x_axis, normal : array-like, shape (3,)\n"
                               "    The vertex, the direction in which it opens, the normal of the plane.\n");
  auto sphere = BindFeature<CNuSphSurf>(m, "Sphere", "A sphere.",
                                        "radius : float\n"
                                        "    Above 0.\n"
                                        "centre : array-like, shape (3,)\n"
                                        "    The centre.\n");
  auto cylinder = BindFeature<CNuCylSurf>(m, "Cylinder", "An infinite circular cylinder.",
                                          "radius : float\n"
                                          "    Above 0.\n"
                                          "axis_point, axis_direction : array-like, shape (3,)\n"
                                          "    A point of the axis, and its direction.\n");
  auto cone = BindFeature<CNuConSurf>(m, "Cone", "An infinite circular cone with both nappes.",
                                      "semi_angle : float\n"
                                      "    Degrees in (0, 90), between axis and surface.\n"
                                      "apex, axis_direction : array-like, shape (3,)\n"
                                      "    The apex, and the direction of the axis.\n");
  auto torus = BindFeature<CNuTorSurf>(m, "Torus", "A torus.",
                                       "major_radius, minor_radius : float\n"
                                       "    Above 0, the minor one below the major one.\n"
                                       "centre, axis_direction : array-like, shape (3,)\n"
                                       "    The centre, and the direction of the axis.\n");

  line.def(
          "__init__",
          [](CNuLine* f, const Triple& point, const Triple& direction) {
            new (f) CNuLine(point.Point(), direction.Vector());
          },
          nb::arg("point"), nb::arg("direction"))
      .def_prop_ro(
          "point", [](const CNuLine& f) { return ToArray(f.GetPoint()); }, kMove, "A point of it, shape (3,).")
      .def_prop_ro(
          "direction", [](const CNuLine& f) { return ToArray(f.GetDirection()); }, kMove,
          "The unit direction, shape (3,).")
      .def("project", &Projected<CNuLine>, nb::arg("point"), "The closest point of the line.")
      .def(
          "angle_with", [](const CNuLine& f, const CNuLine& other) { return f.AngleWith(other); }, nb::arg("other"),
          kAngle)
      .def(
          "angle_with", [](const CNuLine& f, const CNuPlane& other) { return f.AngleWith(other); }, nb::arg("other"),
          kAngle)
      .def(
          "is_parallel_to",
          [](const CNuLine& f, const CNuLine& other, double degrees) {
            return f.IsParallelTo(other, degrees) != NuFalse;
          },
          nb::arg("other"), nb::arg("degrees"), kParallel)
      .def(
          "is_parallel_to",
          [](const CNuLine& f, const CNuPlane& other, double degrees) {
            return f.IsParallelTo(other, degrees) != NuFalse;
          },
          nb::arg("other"), nb::arg("degrees"), kParallel)
      .def(
          "mid_line", [](const CNuLine& f, const Triple& p) { return f.MidLine(p.Point()); }, nb::arg("other"),
          kMidLine)
      .def(
          "mid_line", [](const CNuLine& f, const CNuLine& other) { return f.MidLine(other); }, nb::arg("other"),
          kMidLine)
      .def(
          "mid_line", [](const CNuLine& f, const CNuPlane& other) { return f.MidLine(other); }, nb::arg("other"),
          kMidLine)
      .def(
          "mid_plane", [](const CNuLine& f, const CNuLine& other) { return f.MidPlane(other); }, nb::arg("other"),
          kMidPlane)
      .def("intersect", &CommonPoint<CNuLine>, nb::arg("other"), kCommonPoints)
      .def("intersect", &CommonPoint<CNuPlane>, nb::arg("other"), kCommonPoints);
  plane
      .def(
          "__init__",
          [](CNuPlane* f, const Triple& point, const Triple& normal) {
            new (f) CNuPlane(point.Point(), normal.Vector());
          },
          nb::arg("point"), nb::arg("normal"))
      .def_prop_ro(
          "point", [](const CNuPlane& f) { return ToArray(f.GetPoint()); }, kMove, "A point of it, shape (3,).")
      .def_prop_ro(
          "normal", [](const CNuPlane& f) { return ToArray(f.GetNormal()); }, kMove, "The unit normal, shape (3,).")
      .def("project", &Projected<CNuPlane>, nb::arg("point"), "The closest point of the plane.")
      .def(
          "angle_with", [](const CNuPlane& f, const CNuPlane& other) { return f.AngleWith(other); }, nb::arg("other"),
          kAngle)
      .def(
          "angle_with", [](const CNuPlane& f, const CNuLine& other) { return other.AngleWith(f); }, nb::arg("other"),
          kAngle)
      .def(
          "is_parallel_to",
          [](const CNuPlane& f, const CNuPlane& other, double degrees) {
            return f.IsParallelTo(other, degrees) != NuFalse;
          },
          nb::arg("other"), nb::arg("degrees"), kParallel)
      .def(
          "mid_plane", [](const CNuPlane& f, const Triple& p) { return f.MidPlane(p.Point()); }, nb::arg("other"),
          kMidPlane)
      .def(
          "mid_plane", [](const CNuPlane& f, const CNuPlane& other) { return f.MidPlane(other); }, nb::arg("other"),
          kMidPlane)
      .def(
          "mid_plane", [](const CNuPlane& f, const CNuLine& other) { return f.MidPlane(other); }, nb::arg("other"),
          kMidPlane)
      .def(
          "distance_to", [](const CNuPlane& f, const CNuPlane& other) { return f.DistanceTo(other); }, nb::arg("other"),
          kDistance)
      .def(
          "intersect", [](const CNuPlane& f, const CNuLine& other) { return CommonPoint(other, f); }, nb::arg("other"),
          kCommonPoints)
      .def("intersect", &CommonLine, nb::arg("other"), "Their common line in a tuple, empty for parallel planes.");
  circle
      .def(
          "__init__",
          [](CNuCircle* f, double radius, const Triple& centre, const Triple& normal) {
            new (f) CNuCircle(radius, centre.Point(), normal.Vector());
          },
          nb::arg("radius"), nb::arg("centre"), nb::arg("normal"))
      .def_prop_ro("radius", &CNuCircle::GetRadius, "The radius.")
      .def_prop_ro(
          "centre", [](const CNuCircle& f) { return ToArray(f.GetCentre()); }, kMove, "The centre, shape (3,).")
      .def_prop_ro(
          "normal", [](const CNuCircle& f) { return ToArray(f.GetNormal()); }, kMove, "The unit normal, shape (3,).")
      .def(
          "points", [](const CNuCircle& f, int n) { return ToArray(f.ToPointArray(n)); }, nb::arg("n"),
          "n points in equal steps, both ends of the turn included: an (n, 3) array.");
  BindConic(ellipse);
  BindConic(hyperbola);
  parabola
      .def(
          "__init__",
          [](CNuParabola* f, double focalLength, const Triple& vertex, const Triple& x, const Triple& normal) {
            new (f) CNuParabola(focalLength, vertex.Point(), x.Vector(), normal.Vector());
          },
          nb::arg("focal_length"), nb::arg("vertex"), nb::arg("x_axis"), nb::arg("normal"))
      .def_prop_ro("focal_length", &CNuParabola::GetFocalLength, "The distance of the focus from the vertex.")
      .def_prop_ro(
          "vertex", [](const CNuParabola& f) { return ToArray(f.GetVertex()); }, kMove, "The vertex, shape (3,).")
      .def_prop_ro(
          "x_axis", [](const CNuParabola& f) { return ToArray(f.GetXaxis()); }, kMove,
          "The unit direction of the x axis, shape (3,).")
      .def_prop_ro(
          "normal", [](const CNuParabola& f) { return ToArray(f.GetNormal()); }, kMove, "The unit normal, shape (3,).");
  sphere
      .def(
          "__init__",
          [](CNuSphSurf* f, double radius, const Triple& centre) { new (f) CNuSphSurf(radius, centre.Point()); },
          nb::arg("radius"), nb::arg("centre"))
      .def_prop_ro("radius", &CNuSphSurf::GetRadius, "The radius.")
      .def_prop_ro(
          "centre", [](const CNuSphSurf& f) { return ToArray(f.GetCentre()); }, kMove, "The centre, shape (3,).")
      .def("project", &Projected<CNuSphSurf>, nb::arg("point"),
           "The closest point of the sphere; raises ArgumentError at its centre.");
  cylinder
      .def(
          "__init__",
          [](CNuCylSurf* f, double radius, const Triple& point, const Triple& direction) {
            new (f) CNuCylSurf(radius, point.Point(), direction.Vector());
          },
          nb::arg("radius"), nb::arg("axis_point"), nb::arg("axis_direction"))
      .def_prop_ro("radius", &CNuCylSurf::GetRadius, "The radius.")
      .def_prop_ro(
          "axis_point", [](const CNuCylSurf& f) { return ToArray(f.GetAxisPoint()); }, kMove,
          "A point of the axis, shape (3,).")
      .def_prop_ro(
          "axis_direction", [](const CNuCylSurf& f) { return ToArray(f.GetAxisDirection()); }, kMove,
          "The unit direction of the axis, shape (3,).")
      .def_prop_ro("axis", &CNuCylSurf::GetAxis, "The axis as a line.")
      .def("project", &Projected<CNuCylSurf>, nb::arg("point"),
           "The closest point of the cylinder; raises ArgumentError on its axis.");
  cone.def(
          "__init__",
          [](CNuConSurf* f, double semiAngle, const Triple& apex, const Triple& direction) {
            new (f) CNuConSurf(semiAngle, apex.Point(), direction.Vector());
          },
          nb::arg("semi_angle"), nb::arg("apex"), nb::arg("axis_direction"))
      .def_prop_ro("semi_angle", &CNuConSurf::GetSemiAngle, "The angle between axis and surface, in degrees.")
      .def_prop_ro(
          "apex", [](const CNuConSurf& f) { return ToArray(f.GetApex()); }, kMove, "The apex, shape (3,).")
      .def_prop_ro(
          "axis_direction", [](const CNuConSurf& f) { return ToArray(f.GetAxisDirection()); }, kMove,
          "The unit direction of the axis, shape (3,).")
      .def_prop_ro("axis", &CNuConSurf::GetAxis, "The axis as a line.")
      .def("project", &Projected<CNuConSurf>, nb::arg("point"),
           "The closest point of the cone; raises ArgumentError on its axis.");
  torus
      .def(
          "__init__",
          [](CNuTorSurf* f, double majorRadius, double minorRadius, const Triple& centre, const Triple& direction) {
            new (f) CNuTorSurf(majorRadius, minorRadius, centre.Point(), direction.Vector());
          },
          nb::arg("major_radius"), nb::arg("minor_radius"), nb::arg("centre"), nb::arg("axis_direction"))
      .def_prop_ro("major_radius", &CNuTorSurf::GetMajorRadius, "The radius of the circle of centres.")
      .def_prop_ro("minor_radius", &CNuTorSurf::GetMinorRadius, "The radius of the tube.")
      .def_prop_ro(
          "centre", [](const CNuTorSurf& f) { return ToArray(f.GetCentre()); }, kMove, "The centre, shape (3,).")
      .def_prop_ro(
          "axis_direction", [](const CNuTorSurf& f) { return ToArray(f.GetAxisDirection()); }, kMove,
          "The unit direction of the axis, shape (3,).")
      .def_prop_ro("axis", &CNuTorSurf::GetAxis, "The axis as a line.");

  BindPoints(line, circle);
  BindPoints(line, ellipse);
  BindPoints(line, hyperbola);
  BindPoints(line, parabola);
  BindPoints(line, sphere);
  BindPoints(line, cylinder);
  BindPoints(line, cone);
  BindPoints(circle, circle);
  BindPoints(circle, plane);
  BindPoints(ellipse, plane);
  BindPoints(hyperbola, plane);
  BindPoints(parabola, plane);
  BindCurves(plane, sphere);
  BindCurves(plane, cylinder);
  BindCurves(plane, cone);
  BindCurves(sphere, sphere);
  BindCurves(sphere, cylinder);
  BindCurves(sphere, cone);
  BindCurves(cylinder, cylinder);
  BindCurves(cylinder, cone);
  BindCurves(cone, cone);
  BindClosest(line, line);
  BindClosest(line, circle);
  BindClosest(line, sphere);
  BindClosest(line, cylinder);
  BindClosest(line, cone);
  line.def(
      "distance_to", [](const CNuLine& f, const CNuPlane& other) { return f.DistanceTo(other); }, nb::arg("other"),
      kDistance);
  plane.def(
      "distance_to", [](const CNuPlane& f, const CNuLine& other) { return other.DistanceTo(f); }, nb::arg("other"),
      kDistance);
}

}  // namespace nu::python
