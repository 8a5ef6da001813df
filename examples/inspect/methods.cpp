#include "methods.h"

#include <nu/nu.h>

#include <chrono>
#include <climits>

#include "text.h"

namespace {

// Well-conditioned fits need fewer than ten steps; only hopeless ones come here.
constexpr long kMaxIterations = 200;

Vec3 ToVec3(const CNuPoint& point) {
  return {point.x(), point.y(), point.z()};
}
Vec3 ToVec3(const CNuVector& vector) {
  return {vector[0], vector[1], vector[2]};
}
std::vector<double> Values(const Vec3& v) {
  return {v[0], v[1], v[2]};
}

CNuPointArray ToPointArray(const std::vector<Vec3>& points) {
  if (points.size() > INT_MAX) throw FitFailure("more points than the library can count");
  CNuPointArray array(static_cast<int>(points.size()));
  for (const Vec3& p : points) array.Add(CNuPoint(p[0], p[1], p[2]));
  return array;
}

std::string Explain(const CNuBestfitException& failure) {
  switch (failure.GetCause()) {
    case 1:
      return "too few points: at least " + std::to_string(failure.GetSize()) + " are needed";
    case 2:
      return "the points coincide or have no dominant direction";
    case 3:
      return "the points lie on one line";
    case 4:
      return "the points lie in one plane";
    case 5:
      return "the points do not lie in one plane";
    case 6:
      return "the points do not vary as the feature needs";
    case 9:
      return "the search for the zone failed";
    case 11:
      return "a numerical step failed: the points do not determine the feature";
    case 12:
      return "no convergence within " + std::to_string(kMaxIterations) + " iterations";
    default:
      return "the fit failed with cause " + std::to_string(failure.GetCause());
  }
}

// The time that the library's fit takes, and nothing else.
template<typename Fit>
double TimedSeconds(const Fit& fit) {
  const auto start = std::chrono::steady_clock::now();
  fit();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A unit vector across z, along the global axis `preferred` as far as z permits.
Vec3 AxisAcross(const Vec3& z, std::size_t preferred) {
  constexpr double kNearlyParallel = 0.9;
  if (std::fabs(z[preferred]) > kNearlyParallel) preferred = (preferred + 1) % 3;
  Vec3 x{};
  x[preferred] = 1;
  const double along = z[preferred];
  return Unit({x[0] - along * z[0], x[1] - along * z[1], x[2] - along * z[2]});
}

template<typename Deviation>
void AddDeviations(const std::vector<Vec3>& points, const Deviation& deviation, Inspection* inspection) {
  inspection->local.reserve(points.size());
  inspection->deviations.reserve(points.size());
  for (const Vec3& point : points) {
    inspection->local.push_back(inspection->frame.ToLocal(point));
    inspection->deviations.push_back(deviation(inspection->local.back()));
  }
}

// Tables and pictures rely on it.
void RequireFinite(const Inspection& inspection) {
  bool finite = std::isfinite(inspection.form) && std::isfinite(inspection.sumSquares);
  for (const Vec3& p : inspection.local) finite = finite && std::isfinite(Dot(p, p));
  for (const double deviation : inspection.deviations) finite = finite && std::isfinite(deviation);
  if (!finite) throw FitFailure("the result is not finite: the points do not determine the feature");
}

bool HaveOneZ(const std::vector<Vec3>& points) {
  return std::all_of(points.begin(), points.end(), [&points](const Vec3& p) { return p[2] == points.front()[2]; });
}

// Coordinates that were projected, and the tests of the fits for points that coincide or lie in one plane, are good to
// this part of the size of the part.
constexpr double kSameLength = 1e-9;

double SizeOf(const std::vector<Vec3>& points) {
  double size = 0;
  for (const Vec3& p : points) size = std::max({size, std::fabs(p[0]), std::fabs(p[1]), std::fabs(p[2])});
  return size;
}

template<typename Surface>
CNuPointArray ProjectedOn(const Surface& surface, const CNuPointArray& points) {
  CNuPointArray projected(points.GetSize());
  for (int i = 0; i < points.GetSize(); ++i) projected.Add(points[i].ProjectionOn(surface));
  return projected;
}

void AddLine(const std::vector<Vec3>& points, const CNuLine& line, Inspection* result) {
  const Vec3 point = ToVec3(line.GetPoint());
  const Vec3 direction = ToVec3(line.GetDirection());
  result->parameters = {{"point", Parameter::Kind::kPoint, Values(point)},
                        {"direction", Parameter::Kind::kDirection, Values(direction)}};
  result->zoneIsRound = !HaveOneZ(points);
  const Vec3 up = AxisAcross(direction, 2);
  result->frame = {point, direction, Cross(up, direction), up};
  const bool round = result->zoneIsRound;
  AddDeviations(
      points, [round](const Vec3& p) { return round ? std::hypot(p[1], p[2]) : p[1]; }, result);
}

Inspection LeastSquaresLine(const std::vector<Vec3>& points) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  CNuLine line;
  result.seconds = TimedSeconds([&] { line.Fit(array, &result.form, &result.sumSquares); });
  AddLine(points, line, &result);
  return result;
}

Inspection MinimumZoneLine(const std::vector<Vec3>& points) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  CNuLine line;
  CNuLine sides[2];
  const double tol = kSameLength * SizeOf(points);
  result.seconds =
      TimedSeconds([&] { line.FitMinZone(array, &result.form, &sides[0], &sides[1], tol, kMaxIterations); });
  AddLine(points, line, &result);
  if (result.zoneIsRound) return result;
  result.parameters.push_back({"first boundary", Parameter::Kind::kPoint, Values(ToVec3(sides[0].GetPoint()))});
  result.parameters.push_back({"second boundary", Parameter::Kind::kPoint, Values(ToVec3(sides[1].GetPoint()))});
  return result;
}

void AddPlane(const std::vector<Vec3>& points, const CNuPlane& plane, Inspection* result) {
  const Vec3 point = ToVec3(plane.GetPoint());
  const Vec3 normal = ToVec3(plane.GetNormal());
  result->parameters = {{"point", Parameter::Kind::kPoint, Values(point)},
                        {"normal", Parameter::Kind::kDirection, Values(normal)}};
  const Vec3 x = AxisAcross(normal, 0);
  result->frame = {point, x, Cross(normal, x), normal};
  AddDeviations(
      points, [](const Vec3& p) { return p[2]; }, result);
}

Inspection LeastSquaresPlane(const std::vector<Vec3>& points) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  CNuPlane plane;
  result.seconds = TimedSeconds([&] { plane.Fit(array, &result.form, &result.sumSquares); });
  AddPlane(points, plane, &result);
  return result;
}

Inspection MinimumZonePlane(const std::vector<Vec3>& points) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  CNuPlane plane;
  CNuPlane sides[2];
  const double tol = kSameLength * SizeOf(points);
  result.seconds = TimedSeconds([&] { plane.FitMinZone(array, &result.form, &sides[0], &sides[1], tol); });
  AddPlane(points, plane, &result);
  result.parameters.push_back({"first boundary", Parameter::Kind::kPoint, Values(ToVec3(sides[0].GetPoint()))});
  result.parameters.push_back({"second boundary", Parameter::Kind::kPoint, Values(ToVec3(sides[1].GetPoint()))});
  return result;
}

void AddCircle(const std::vector<Vec3>& points, const CNuCircle& circle, Inspection* result) {
  const Vec3 centre = ToVec3(circle.GetCentre());
  const Vec3 normal = ToVec3(circle.GetNormal());
  result->radius = circle.GetRadius();
  result->parameters = {{"centre", Parameter::Kind::kPoint, Values(centre)},
                        {"normal", Parameter::Kind::kDirection, Values(normal)},
                        {"radius", Parameter::Kind::kLength, {result->radius}}};
  const Vec3 x = AxisAcross(normal, 0);
  result->frame = {centre, x, Cross(normal, x), normal};
  const double radius = result->radius;
  AddDeviations(
      points, [radius](const Vec3& p) { return std::hypot(p[0], p[1]) - radius; }, result);
}

Inspection LeastSquaresCircle(const std::vector<Vec3>& points) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  CNuCircle circle(1.0);
  result.seconds = TimedSeconds([&] { circle.Fit(array, &result.form, &result.sumSquares, kMaxIterations); });
  AddCircle(points, circle, &result);
  return result;
}

// The other criteria ask for points in one plane, and roundness is what is seen along the axis: the points go to their
// plane first.
template<typename Fit>
Inspection CircleInPlane(const std::vector<Vec3>& points, const Fit& fit) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  CNuCircle circle(1.0);
  const double tol = kSameLength * SizeOf(points);
  result.seconds = TimedSeconds([&] {
    CNuPlane plane;
    plane.Fit(array);
    fit(ProjectedOn(plane, array), tol, &circle, &result);
  });
  const std::vector<Parameter> boundary = std::move(result.parameters);
  AddCircle(points, circle, &result);
  result.parameters.insert(result.parameters.end(), boundary.begin(), boundary.end());
  return result;
}

Inspection MinimumZoneCircle(const std::vector<Vec3>& points) {
  return CircleInPlane(points, [](const CNuPointArray& array, double tol, CNuCircle* circle, Inspection* result) {
    CNuCircle inner(1.0);
    CNuCircle outer(1.0);
    circle->FitMinZone(array, &result->form, &inner, &outer, tol, kMaxIterations);
    result->parameters = {{"inner radius", Parameter::Kind::kLength, {inner.GetRadius()}},
                          {"outer radius", Parameter::Kind::kLength, {outer.GetRadius()}}};
  });
}

Inspection CircumscribedCircle(const std::vector<Vec3>& points) {
  return CircleInPlane(points, [](const CNuPointArray& array, double tol, CNuCircle* circle, Inspection*) {
    circle->FitMin(array, tol);
  });
}

Inspection InscribedCircle(const std::vector<Vec3>& points) {
  return CircleInPlane(points, [](const CNuPointArray& array, double tol, CNuCircle* circle, Inspection*) {
    circle->FitMax(array, tol);
  });
}

Inspection LeastSquaresSphere(const std::vector<Vec3>& points) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  CNuSphSurf sphere(1.0);
  result.seconds = TimedSeconds([&] { sphere.Fit(array, &result.form, &result.sumSquares, kMaxIterations); });
  const Vec3 centre = ToVec3(sphere.GetCentre());
  result.radius = sphere.GetRadius();
  result.parameters = {{"centre", Parameter::Kind::kPoint, Values(centre)},
                       {"radius", Parameter::Kind::kLength, {result.radius}}};
  result.frame.origin = centre;
  const double radius = result.radius;
  AddDeviations(
      points, [radius](const Vec3& p) { return std::hypot(p[0], p[1], p[2]) - radius; }, &result);
  return result;
}

// What a criterion holds fast: the points that touch the outer side of the zone, its inner side, both or none.
enum class Touching { kNone, kBoth, kOuter, kInner };

// The points whose deviation is extreme. Two of them are equal but for the rounding of the coordinates, of which the
// fit and the deviations here each have a share.
void AddContacts(Touching touching, double size, Inspection* result) {
  constexpr double kRounding = 1e-12;
  const double tol = kRounding * size;
  const double largest = result->deviations[result->IndexOfMax()];
  const double smallest = result->deviations[result->IndexOfMin()];
  const bool outer = touching == Touching::kBoth || touching == Touching::kOuter;
  const bool inner = !result->zoneIsRound && (touching == Touching::kBoth || touching == Touching::kInner);
  for (std::size_t i = 0; i < result->deviations.size(); ++i) {
    const double deviation = result->deviations[i];
    if ((outer && deviation >= largest - tol) || (inner && deviation <= smallest + tol)) result->contacts.push_back(i);
  }
}

// Circumscribed and inscribed features have no form of their own: it is that of the deviations from them.
void AddStatistics(Inspection* result) {
  result->sumSquares = 0;
  for (const double deviation : result->deviations) result->sumSquares += deviation * deviation;
  if (result->form == 0) {
    result->form = result->deviations[result->IndexOfMax()] - result->deviations[result->IndexOfMin()];
  }
}

struct Criterion {
  const char* option;
  const char* name;
  Touching touching;
};

constexpr std::size_t kNumberCriteria = 4;
constexpr Criterion kCriteria[kNumberCriteria] = {{"ls", "least squares", Touching::kNone},
                                                  {"mz", "minimum zone", Touching::kBoth},
                                                  {"mc", "minimum circumscribed", Touching::kOuter},
                                                  {"mi", "maximum inscribed", Touching::kInner}};

struct Feature {
  const char* name;
  const char* formName;
  decltype(Method::draw) draw;
  decltype(Method::fit) fits[kNumberCriteria];  // in the order of kCriteria; null: not available
};

constexpr Feature kFeatures[] = {
    {"line", "straightness", DrawStraightness, {LeastSquaresLine, MinimumZoneLine}},
    {"plane", "flatness", DrawFlatness, {LeastSquaresPlane, MinimumZonePlane}},
    {"circle",
     "roundness",
     DrawRoundness,
     {LeastSquaresCircle, MinimumZoneCircle, CircumscribedCircle, InscribedCircle}},
    {"sphere", "sphericity", DrawSphericity, {LeastSquaresSphere}},
    {"cylinder", "cylindricity", nullptr, {}},
    {"cone", "conicity", nullptr, {}},
    {"torus", "toricity", nullptr, {}},
    {"ellipse", "form", nullptr, {}},
    {"hyperbola", "form", nullptr, {}},
    {"parabola", "form", nullptr, {}},
};

}  // namespace

std::string AvailableFits() {
  std::string text = "available are";
  for (std::size_t i = 0; i < kNumberCriteria; ++i) {
    std::string features;
    for (const Feature& feature : kFeatures) {
      if (feature.fits[i] != nullptr) features += (features.empty() ? " " : ", ") + std::string(feature.name);
    }
    if (!features.empty()) text += features + " (" + kCriteria[i].option + ", " + kCriteria[i].name + ");";
  }
  text.back() = '.';
  return text;
}

Method FindMethod(const std::string& feature, const std::string& criterion) {
  const auto* entry = std::find_if(std::begin(kFeatures), std::end(kFeatures),
                                   [&feature](const Feature& candidate) { return feature == candidate.name; });
  if (entry == std::end(kFeatures)) {
    throw InputError("unknown feature '" + Printable(feature) + "'; " + AvailableFits());
  }
  const auto* by = std::find_if(std::begin(kCriteria), std::end(kCriteria),
                                [&criterion](const Criterion& candidate) { return criterion == candidate.option; });
  if (by == std::end(kCriteria)) {
    throw InputError("unknown criterion '" + Printable(criterion) + "'; expected ls, mz, mc or mi");
  }
  const auto fit = entry->fits[by - kCriteria];
  if (fit == nullptr) {
    throw InputError("the " + std::string(entry->name) + " by " + by->name + " is not available yet; " +
                     AvailableFits());
  }
  return {entry->name, by->name, entry->formName, fit, entry->draw};
}

Inspection Inspect(const Method& method, const std::vector<Vec3>& points) {
  try {
    Inspection inspection = method.fit(points);
    const auto* by = std::find_if(std::begin(kCriteria), std::end(kCriteria),
                                  [&method](const Criterion& each) { return method.criterion == each.name; });
    if (by->touching != Touching::kNone) {
      AddStatistics(&inspection);
      AddContacts(by->touching, SizeOf(points), &inspection);
    }
    RequireFinite(inspection);
    inspection.feature = method.feature;
    inspection.criterion = method.criterion;
    inspection.formName = method.formName;
    return inspection;
  } catch (const CNuBestfitException& failure) {
    throw FitFailure(std::string("the ") + method.feature + " cannot be fitted: " + Explain(failure));
  } catch (const CNuException& failure) {
    throw FitFailure(std::string("the library reports: ") + failure.m_szWhere + " " + failure.m_szWhat);
  }
}
