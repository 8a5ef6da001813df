// Every number that inspect reports of a part against the library called directly: by the plain fits and relations of
// the classes, from points that are read here.

#include <gtest/gtest.h>
#include <nu/nu.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "evaluate/part.h"
#include "plan/plan_reader.h"
#include "report/json.h"
#include "support/json.h"

namespace {

using nu::test::Json;

// With the drive where there are drives: a plan takes paths from the drive that it is on itself.
const std::string kData = std::filesystem::absolute(NU_DATA_DIR).generic_string();
const std::string kParts = kData + "/parts/";
constexpr long kSteps = 1000;
constexpr double kTolerance = 1e-9;  // of the minimax fits
// Both ways lead to one optimum, each as far as its iteration goes; of least squares that is closer.
constexpr double kSame = 2e-8;
constexpr double kSameDirection = 1e-9;

// The points of a file: of the lines whose first field is `group`, all if that is empty, the fields from `first` on.
struct Source {
  const char* file;
  int first;
  const char* group = "";
};

CNuPointArray PointsOf(const Source& source) {
  std::ifstream file(kParts + source.file);
  CNuPointArray points(0);
  for (std::string line; std::getline(file, line);) {
    if (source.group[0] != '\0' && !line.starts_with(std::string(source.group) + ";")) continue;
    const bool decimalComma = line.find(';') != std::string::npos && line.find(',') != std::string::npos;
    for (char& c : line) {
      if (c == ',' && decimalComma) c = '.';
      if (c == ';' || (c == ',' && !decimalComma) || c == '\t' || c == '\r') c = ' ';
    }
    if (source.group[0] != '\0') line.erase(0, std::string(source.group).size());
    std::istringstream fields(line);
    std::vector<double> numbers;
    for (double number = 0; fields >> number;) numbers.push_back(number);
    const auto first = static_cast<std::size_t>(source.first);
    if (numbers.size() < first + 3) continue;
    points.Add(CNuPoint(numbers[first], numbers[first + 1], numbers[first + 2]));
  }
  return points;
}

CNuPoint PointOf(const Json& json) {
  return {json[0].Number(), json[1].Number(), json[2].Number()};
}

CNuVector VectorOf(const Json& json) {
  return CNuVector(json[0].Number(), json[1].Number(), json[2].Number());
}

// What the library says of a feature by its plain fit.
struct Direct {
  double form = 0;
  double sumSquares = -1;  // where the fit gives it
  std::map<std::string, double> lengths;
  std::map<std::string, CNuPoint> places;
  std::map<std::string, CNuVector> directions;
};

CNuPointArray InTheirPlane(const CNuPointArray& points) {
  CNuPlane plane;
  plane.Fit(points);
  CNuPointArray projected(0);
  for (int i = 0; i < points.GetSize(); ++i) projected.Add(points[i].ProjectionOn(plane));
  return projected;
}

Direct DirectLine(const CNuPointArray& points, bool minimumZone) {
  Direct direct;
  CNuLine line;
  if (minimumZone) {
    line.FitMinZone(points, &direct.form, kTolerance, kSteps);
  } else {
    line.Fit(points, &direct.form, &direct.sumSquares);
  }
  direct.directions["direction"] = line.GetDirection();
  return direct;
}

Direct DirectPlane(const CNuPointArray& points, bool minimumZone) {
  Direct direct;
  CNuPlane plane;
  if (minimumZone) {
    plane.FitMinZone(points, &direct.form, kTolerance);
  } else {
    plane.Fit(points, &direct.form, &direct.sumSquares);
  }
  direct.directions["normal"] = plane.GetNormal();
  return direct;
}

// A circle, sphere or cylinder by the criterion; the form of the circumscribed and the inscribed one follows from the
// distances.
template<typename Feature, typename FitMin, typename FitMax>
Direct DirectRound(const CNuPointArray& points, const std::string& criterion, Feature* feature, const FitMin& fitMin,
                   const FitMax& fitMax) {
  Direct direct;
  if (criterion == "ls") feature->Fit(points, &direct.form, &direct.sumSquares, kSteps);
  if (criterion == "mz") feature->FitMinZone(points, &direct.form, kTolerance, kSteps);
  if (criterion == "mc") fitMin();
  if (criterion == "mi") fitMax();
  if (criterion == "mc" || criterion == "mi") {
    for (int i = 0; i < points.GetSize(); ++i) direct.form = std::max(direct.form, points[i].DistanceTo(*feature));
  }
  direct.lengths["radius"] = feature->GetRadius();
  direct.lengths["diameter"] = 2 * feature->GetRadius();
  return direct;
}

Direct DirectCircle(const CNuPointArray& all, const std::string& criterion) {
  const CNuPointArray points = criterion == "ls" ? all : InTheirPlane(all);
  CNuCircle circle(1.0);
  Direct direct = DirectRound(
      points, criterion, &circle, [&] { circle.FitMin(points, kTolerance); },
      [&] { circle.FitMax(points, kTolerance); });
  direct.places["centre"] = circle.GetCentre();
  return direct;
}

Direct DirectSphere(const CNuPointArray& points, const std::string& criterion) {
  CNuSphSurf sphere(1.0);
  Direct direct = DirectRound(
      points, criterion, &sphere, [&] { sphere.FitMin(points, kTolerance); },
      [&] { sphere.FitMax(points, kTolerance); });
  direct.places["centre"] = sphere.GetCentre();
  return direct;
}

Direct DirectCylinder(const CNuPointArray& points, const std::string& criterion) {
  CNuCylSurf cylinder(1.0);
  Direct direct = DirectRound(
      points, criterion, &cylinder, [&] { cylinder.FitMin(points, kTolerance, kSteps); },
      [&] { cylinder.FitMax(points, kTolerance, kSteps); });
  direct.directions["axis"] = cylinder.GetAxis().GetDirection();
  return direct;
}

Direct DirectCone(const CNuPointArray& points, bool minimumZone) {
  Direct direct;
  CNuConSurf cone(1.0);
  if (minimumZone) {
    cone.FitMinZone(points, &direct.form, kTolerance, kSteps);
  } else {
    cone.Fit(points, &direct.form, &direct.sumSquares, kSteps);
  }
  direct.lengths["semi-angle"] = cone.GetSemiAngle();
  direct.directions["axis"] = cone.GetAxisDirection();
  return direct;
}

Direct DirectOf(const std::string& type, const std::string& criterion, const CNuPointArray& points) {
  if (type == "line") return DirectLine(points, criterion == "mz");
  if (type == "plane") return DirectPlane(points, criterion == "mz");
  if (type == "circle") return DirectCircle(points, criterion);
  if (type == "sphere") return DirectSphere(points, criterion);
  if (type == "cylinder") return DirectCylinder(points, criterion);
  return DirectCone(points, criterion == "mz");
}

struct Case {
  std::string type;
  Source source;
  std::vector<std::string> criteria;
};

const std::vector<Case>& Cases() {
  static const std::vector<Case> kCases = {
      {"line", {"edge.xyz", 0}, {"ls", "mz"}},
      {"plane", {"plate.asc", 0}, {"ls", "mz"}},
      {"circle", {"bore.csv", 1}, {"ls", "mz", "mc", "mi"}},
      {"sphere", {"ball.csv", 1}, {"ls", "mz", "mc", "mi"}},
      {"cylinder", {"carrier.csv", 0, "seat"}, {"ls", "mz", "mc", "mi"}},
      {"cone", {"carrier.csv", 0, "chamfer"}, {"ls", "mz"}},
  };
  return kCases;
}

std::string PlanOf(const Case& each) {
  const std::string group = each.source.group;
  std::string plan = each.type == "circle" ? "decimal_comma = true\n" : "";
  if (!group.empty()) plan += "group_column = 1\n";
  for (const std::string& criterion : each.criteria) {
    plan.append("[[feature]]\nname = '").append(criterion).append("'\ntype = '").append(each.type);
    plan.append("'\ncriterion = '").append(criterion);
    plan.append("'\npoints = '").append(kParts).append(each.source.file).append("'\n");
    if (!group.empty()) plan += "group = '" + group + "'\n";
  }
  return plan;
}

// The JSON of a part with these features, which are evaluated by a plan.
Json ReportOf(const std::string& plan, const std::string& name) {
  const std::string path = (std::filesystem::temp_directory_path() / name).string();
  std::ofstream(path) << plan;
  const PartPlan read = ReadPlan(path, false);
  std::filesystem::remove(path);
  return Json::Parse(JsonReport({read, {EvaluatePart(read, {"part", "", ""})}, {}}));
}

void ExpectSame(const Direct& direct, const Json& result) {
  EXPECT_NEAR(result["form"].Number(), direct.form, kSame);
  if (direct.sumSquares >= 0) {
    EXPECT_NEAR(result["sum_of_squares"].Number(), direct.sumSquares, kSame);
  }
  const Json& parameters = result["parameters"];
  for (const auto& [name, length] : direct.lengths) EXPECT_NEAR(parameters[name].Number(), length, kSame) << name;
  for (const auto& [name, place] : direct.places) {
    EXPECT_LT(PointOf(parameters[name]).DistanceTo(place), kSame) << name;
  }
  for (const auto& [name, direction] : direct.directions) {
    const double cosine = VectorOf(parameters[name]) % direction;
    EXPECT_NEAR(std::fabs(cosine), 1, kSameDirection) << name;
  }
}

// The extremes are points of the file, at that distance from the feature of the report; so is the root mean square.
template<typename Feature>
void ExpectDistances(const CNuPointArray& points, const Json& result, const Feature& feature) {
  double largest = 0;
  double squares = 0;
  for (int i = 0; i < points.GetSize(); ++i) {
    const double distance = points[i].DistanceTo(feature);
    largest = std::max(largest, distance);
    squares += distance * distance;
  }
  const double high = result["largest"]["deviation"].Number();
  const double low = result["smallest"]["deviation"].Number();
  EXPECT_NEAR(std::max(std::fabs(high), std::fabs(low)), largest, kSame);
  EXPECT_NEAR(result["root_mean_square"].Number(), std::sqrt(squares / points.GetSize()), kSame);
  EXPECT_NEAR(std::max(high, 0.0) + std::max(-low, 0.0), result["form"].Number(), kSame);
  EXPECT_NEAR(result["peak"].Number() + result["valley"].Number(), result["form"].Number(), kSame);
  for (const char* extreme : {"largest", "smallest"}) {
    const CNuPoint point = PointOf(result[extreme]["point"]);
    EXPECT_NEAR(point.DistanceTo(feature), std::fabs(result[extreme]["deviation"].Number()), kSame);
  }
}

void ExpectDistancesOf(const std::string& type, const CNuPointArray& points, const Json& result) {
  const Json& parameters = result["parameters"];
  const auto length = [&](const char* name) { return parameters[name].Number(); };
  const auto place = [&](const char* name) { return PointOf(parameters[name]); };
  const auto direction = [&](const char* name) { return VectorOf(parameters[name]); };
  if (type == "line") {
    ExpectDistances(points, result, CNuLine(place("point"), direction("direction")));
  }
  if (type == "plane") {
    ExpectDistances(points, result, CNuPlane(place("point"), direction("normal")));
  }
  if (type == "sphere") {
    ExpectDistances(points, result, CNuSphSurf(length("radius"), place("centre")));
  }
  if (type == "cylinder") {
    ExpectDistances(points, result, CNuCylSurf(length("radius"), place("axis point"), direction("axis")));
  }
  if (type == "cone") {
    ExpectDistances(points, result, CNuConSurf(length("semi-angle"), place("apex"), direction("axis")));
  }
}

// By least squares, the standard uncertainties are those of the association, and agree with the covariance.
template<typename Feature>
void ExpectUncertainty(const CNuPointArray& points, const Json& result, Feature feature) {
  CNuAssociation association(points);
  association.SetDetails(NuDetailUncertainty);
  const CNuAssociationReport report = association.Fit(NuLeastSquares, &feature);
  const Json& found = result["uncertainty"];
  EXPECT_EQ(found["degrees_of_freedom"].Number(), report.GetDegreesOfFreedom());
  EXPECT_NEAR(found["standard_deviation"].Number(), report.GetStandardDeviation(), kSame);
  EXPECT_NEAR(found["standard_deviation"].Number(),
              std::sqrt(result["sum_of_squares"].Number() / found["degrees_of_freedom"].Number()), kSame);
  for (int i = 0; i < report.GetNumberParameters(); ++i) {
    const auto at = static_cast<std::size_t>(i);
    const double standard = found["standard"][report.GetParameterName(i)].Number();
    EXPECT_NEAR(standard, report.GetStandardUncertainty(i), 1e-6 * standard) << report.GetParameterName(i);
    EXPECT_NEAR(std::sqrt(found["covariance"][at][at].Number()), standard, 1e-9 * standard);
  }
}

TEST(Agreement, FeaturesAreThoseOfTheLibrary) {
  for (const Case& each : Cases()) {
    const CNuPointArray cloud = PointsOf(each.source);
    ASSERT_GT(cloud.GetSize(), 3) << each.source.file;
    const Json report = ReportOf(PlanOf(each), "nu-inspect-features.toml");
    std::size_t index = 0;
    for (const std::string& criterion : each.criteria) {
      SCOPED_TRACE(each.type + " by " + criterion);
      const Json& result = report["parts"][0]["features"][index++]["result"];
      ASSERT_FALSE(result.Has("error")) << result["error"].Text();
      EXPECT_EQ(result["points"].Number(), cloud.GetSize());
      ExpectSame(DirectOf(each.type, criterion, cloud), result);
      ExpectDistancesOf(each.type, cloud, result);
      if (criterion != "ls") continue;
      if (each.type == "line") ExpectUncertainty(cloud, result, CNuLine());
      if (each.type == "plane") ExpectUncertainty(cloud, result, CNuPlane());
      if (each.type == "circle") ExpectUncertainty(cloud, result, CNuCircle(1.0));
      if (each.type == "sphere") ExpectUncertainty(cloud, result, CNuSphSurf(1.0));
      if (each.type == "cylinder") ExpectUncertainty(cloud, result, CNuCylSurf(1.0));
      if (each.type == "cone") ExpectUncertainty(cloud, result, CNuConSurf(1.0));
    }
  }
}

// The carrier by the relations of the library, step by step.
class Carrier {
 public:
  Carrier() {
    m_a.FitMinZone(Points("A"), &m_zone, kTolerance);
    m_face.Fit(Points("face"));
    m_seat.Fit(Points("seat"), kSteps);
    m_pilot.Fit(Points("pilot"), kSteps);
    SetFrame();
  }

  std::map<std::string, double> Values() const {
    const CNuPointArray face = Points("face");
    double low = face[0].DistanceTo(m_a);
    double high = low;
    for (int i = 0; i < face.GetSize(); ++i) {
      low = std::min(low, face[i].DistanceTo(m_a));
      high = std::max(high, face[i].DistanceTo(m_a));
    }
    CNuPlane b;
    CNuPlane c;
    b.Fit(Points("B"));
    c.Fit(Points("C"));
    CNuConSurf chamfer(1.0);
    chamfer.Fit(Points("chamfer"), kSteps);
    const CNuCircle dowel1 = Dowel("dowel 1");
    const CNuCircle dowel2 = Dowel("dowel 2");
    const auto [seatLow, seatHigh] = Ends(m_seat, "seat");
    const auto [pilotLow, pilotHigh] = Ends(m_pilot, "pilot");
    const CNuLine seatAxis = m_seat.GetAxis();
    return {
        {"A flatness", m_zone},
        {"seat diameter", 2 * m_seat.GetRadius()},
        {"seat perpendicularity", seatLow.ProjectionOn(m_a).DistanceTo(seatHigh.ProjectionOn(m_a))},
        {"seat position", std::max(OffPlace(seatLow, 60, 45), OffPlace(seatHigh, 60, 45))},
        {"pilot diameter", 2 * m_pilot.GetRadius()},
        {"pilot coaxiality", 2 * std::max(pilotLow.DistanceTo(seatAxis), pilotHigh.DistanceTo(seatAxis))},
        {"chamfer semi-angle", chamfer.GetSemiAngle()},
        {"face parallelism", high - low},
        {"thickness", face.MeanPoint().ProjectionOn(m_face).DistanceTo(m_a)},
        {"B perpendicularity", WidthAlongA(Points("B"))},
        {"B angle", std::min(b.AngleWith(c), 180 - b.AngleWith(c))},
        {"dowel 1 diameter", 2 * dowel1.GetRadius()},
        {"dowel 1 position", OffPlace(dowel1.GetCentre(), 15, 15)},
        {"dowel 2 position", OffPlace(dowel2.GetCentre(), 105, 75)},
        {"dowel distance", dowel1.GetCentre().DistanceTo(dowel2.GetCentre())},
    };
  }

 private:
  static CNuPointArray Points(const char* group) { return PointsOf({"carrier.csv", 0, group}); }

  static CNuCircle Dowel(const char* group) {
    CNuCircle circle(1.0);
    circle.FitMax(InTheirPlane(Points(group)), kTolerance);
    return circle;
  }

  // Of the axis, as far as the points of the group go along it.
  static std::pair<CNuPoint, CNuPoint> Ends(const CNuCylSurf& cylinder, const char* group) {
    const CNuLine axis = cylinder.GetAxis();
    const CNuPointArray points = Points(group);
    CNuPoint low = points[0].ProjectionOn(axis);
    CNuPoint high = low;
    const auto along = [&axis](const CNuPoint& p) { return CNuVector(p.x(), p.y(), p.z()) % axis.GetDirection(); };
    for (int i = 0; i < points.GetSize(); ++i) {
      const CNuPoint foot = points[i].ProjectionOn(axis);
      if (along(foot) < along(low)) low = foot;
      if (along(foot) > along(high)) high = foot;
    }
    return {low, high};
  }

  // Between two planes perpendicular to A.
  double WidthAlongA(const CNuPointArray& points) const {
    CNuVector normal = m_a.GetNormal();
    CNuLine line;
    double width = 0;
    line.FitMinZone(CNuGeometry::Projection2D(points, normal), &width, kTolerance, kSteps);
    return width;
  }

  static CNuVector From(const CNuPoint& a, const CNuPoint& b) {
    return CNuVector(b.x() - a.x(), b.y() - a.y(), b.z() - a.z());
  }

  // z is the normal of A, x that of B where it stands on A, C gives the origin along y; all towards the part.
  void SetFrame() {
    const CNuPoint inside = Points("seat").MeanPoint();
    m_z = m_a.GetNormal();
    if (From(m_a.GetPoint(), inside) % m_z < 0) m_z = -1.0 * m_z;
    const CNuPointArray b = Points("B");
    m_origin = b.MeanPoint();
    const CNuVector any = m_z * CNuVector(1.0, 0.0, 0.0);
    const CNuVector u = (1 / any.Magnitude()) * any;
    const CNuVector v = m_z * u;
    CNuLine trace;
    trace.Fit(CNuGeometry::Projection2D(b, m_origin, u, v));
    m_x = -trace.GetDirection()[1] * u + trace.GetDirection()[0] * v;
    if (From(m_origin, inside) % m_x < 0) m_x = -1.0 * m_x;
    m_y = m_z * m_x;
    m_yOfC = From(m_origin, Points("C").MeanPoint()) % m_y;
  }

  double OffPlace(const CNuPoint& point, double x, double y) const {
    const CNuVector v = From(m_origin, point);
    return 2 * std::hypot(v % m_x - x, v % m_y - m_yOfC - y);
  }

  double m_zone = 0;
  CNuPlane m_a;
  CNuPlane m_face;
  CNuCylSurf m_seat{1.0};
  CNuCylSurf m_pilot{1.0};
  CNuPoint m_origin;
  CNuVector m_x;
  CNuVector m_y;
  CNuVector m_z;
  double m_yOfC = 0;
};

TEST(Agreement, CharacteristicsAreThoseOfTheLibrary) {
  const PartPlan plan = ReadPlan(kParts + "carrier.toml", false);
  const Json report = Json::Parse(JsonReport({plan, {EvaluatePart(plan, {"carrier", "", ""})}, {}}));
  const Json& characteristics = report["parts"][0]["characteristics"];
  std::map<std::string, double> expected = Carrier().Values();
  for (std::size_t i = 0; i < characteristics.Size(); ++i) {
    const Json& each = characteristics[i];
    const std::string& name = each["name"].Text();
    const double measured = each["measured"].Number();
    if (expected.contains(name)) {
      EXPECT_NEAR(measured, expected[name], kSame) << name;
      expected.erase(name);
    }
    const bool within = (!each["lower"].IsNumber() || measured >= each["lower"].Number()) &&
                        (!each["upper"].IsNumber() || measured <= each["upper"].Number());
    EXPECT_EQ(each["verdict"].Text(), within ? "within tolerance" : "out of tolerance") << name;
    if (each["nominal"].IsNumber()) {
      EXPECT_EQ(each["deviation"].Number(), measured - each["nominal"].Number()) << name;
    }
  }
  for (const auto& [name, value] : expected) ADD_FAILURE() << name << " is not in the report, expected " << value;
}

// The plate and the ball stand far apart: the distance of the centre from the plane is as uncertain as the plane is at
// the centre, along its normal, and as the centre is along that normal; the coordinate as the centre alone.
TEST(Agreement, UncertaintiesOfRelationsArePropagated) {
  const std::string plan = "[[feature]]\nname = 'plate'\ntype = 'plane'\npoints = '" + kParts +
                           "plate.asc'\n[[feature]]\nname = 'ball'\ntype = 'sphere'\npoints = '" + kParts +
                           "ball.csv'\n[[characteristic]]\nfeature = 'ball'\nkind = 'distance'\nto = 'plate'\n"
                           "[[characteristic]]\nfeature = 'ball'\nkind = 'y'\n"
                           "[[characteristic]]\nfeature = 'ball'\nkind = 'form'\n";
  const Json report = ReportOf(plan, "nu-inspect-relations.toml");
  const Json& characteristics = report["parts"][0]["characteristics"];
  CNuPlane plane;
  CNuSphSurf sphere(1.0);
  const CNuPointArray onPlane = PointsOf({"plate.asc", 0});
  const CNuPointArray onSphere = PointsOf({"ball.csv", 1});
  CNuAssociation ofPlane(onPlane);
  CNuAssociation ofSphere(onSphere);
  ofPlane.SetDetails(NuDetailUncertainty);
  ofSphere.SetDetails(NuDetailUncertainty);
  const CNuAssociationReport planeReport = ofPlane.Fit(NuLeastSquares, &plane);
  const CNuAssociationReport sphereReport = ofSphere.Fit(NuLeastSquares, &sphere);
  CNuPoint origin;
  CNuVector axes[3];
  sphereReport.GetParameterFrame(&origin, &axes[0], &axes[1], &axes[2]);
  const CNuMatrix covariance = sphereReport.GetCovariance();
  const auto ofCentre = [&](const CNuVector& direction) {
    double variance = 0;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        variance += (axes[i] % direction) * (axes[j] % direction) * covariance.GetElement(i, j);
      }
    }
    return std::sqrt(variance);
  };
  const double expected =
      std::hypot(planeReport.GetSurfaceUncertainty(sphere.GetCentre()), ofCentre(plane.GetNormal()));
  EXPECT_NEAR(characteristics[0]["measured"].Number(), sphere.GetCentre().DistanceTo(plane), kSame);
  EXPECT_NEAR(characteristics[0]["uncertainty"].Number(), expected, 1e-5 * expected);
  const double ofY = ofCentre(CNuVector(0.0, 1.0, 0.0));
  EXPECT_NEAR(characteristics[1]["uncertainty"].Number(), ofY, 1e-5 * ofY);
  EXPECT_FALSE(characteristics[2]["uncertainty"].IsNumber());
}

// Measured points with a published fit by orthogonal distances, data/measured/README.md: an ellipse as
// B3 (x - B1)^2 + 2 B4 (x - B1)(y - B2) + B5 (y - B2)^2 = 1.
TEST(Agreement, MeasuredPointsGiveThePublishedEllipse) {
  constexpr double kPublished[] = {-0.9993809167281279, -2.9310484652026476, 0.0875730502693354, 0.0162299708984738,
                                   0.0797537982976416};
  constexpr double kDeviationOfCentre[] = {0.1113840353364371, 0.1097673310686467};
  constexpr double kWhereTheirIterationEnds = 2e-6;
  const Json report = ReportOf(
      std::string("[[feature]]\nname = 'ball'\ntype = 'ellipse'\npoints = '") + kData + "/measured/prosthesis.csv'\n",
      "nu-inspect-measured.toml");
  const Json& result = report["parts"][0]["features"][0]["result"];
  ASSERT_FALSE(result.Has("error")) << result["error"].Text();
  const Json& parameters = result["parameters"];
  const CNuPoint centre = PointOf(parameters["centre"]);
  EXPECT_NEAR(centre.x(), kPublished[0], kWhereTheirIterationEnds);
  EXPECT_NEAR(centre.y(), kPublished[1], kWhereTheirIterationEnds);
  // The semi-axes belong to the eigenvalues of the form.
  const double mean = (kPublished[2] + kPublished[4]) / 2;
  const double spread = std::hypot((kPublished[2] - kPublished[4]) / 2, kPublished[3]);
  EXPECT_NEAR(parameters["semi-axis a"].Number(), 1 / std::sqrt(mean - spread), kWhereTheirIterationEnds);
  EXPECT_NEAR(parameters["semi-axis b"].Number(), 1 / std::sqrt(mean + spread), kWhereTheirIterationEnds);
  // In any frame, the variances of the centre have one sum.
  const Json& standard = result["uncertainty"]["standard"];
  const double published = std::hypot(kDeviationOfCentre[0], kDeviationOfCentre[1]);
  EXPECT_NEAR(std::hypot(standard["shift x"].Number(), standard["shift y"].Number()), published, 5e-5 * published);
}

}  // namespace
