#include "plan/plan_template.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>

#include "evaluate/methods.h"
#include "input/fields.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

// A basic string of TOML.
std::string Quoted(const std::string& text) {
  return "\"" + JsonEscaped(text) + "\"";
}

// The groups of a column that holds words, each of some points: what a report of several features has.
bool AreFeatures(const PointFile& file) {
  constexpr std::size_t kMostFeatures = 200;
  constexpr std::size_t kFewestPoints = 3;
  if (file.groups.empty() || file.groups.size() > kMostFeatures) return false;
  std::vector<std::size_t> counts(file.groups.size());
  for (const std::size_t group : file.groupOfPoint) ++counts[group];
  const bool words = std::none_of(file.groups.begin(), file.groups.end(),
                                  [](const std::string& name) { return name.empty() || LooksLikeNumber(name); });
  return words && *std::min_element(counts.begin(), counts.end()) >= kFewestPoints;
}

struct Grouped {
  PointFile file;
  std::string column;  // its number
};

// The first column that names groups; nothing if there is none.
std::optional<Grouped> ReadGroups(const std::string& path, PointFileOptions reading) {
  constexpr int kMostColumns = 12;
  for (int column = 1; column <= kMostColumns; ++column) {
    reading.groupColumn = std::to_string(column);
    try {
      Grouped grouped{ReadPointFile(path, reading), reading.groupColumn};
      if (AreFeatures(grouped.file)) return grouped;
    } catch (const InputError&) {
      return std::nullopt;  // there are no more columns
    }
  }
  return std::nullopt;
}

struct Guess {
  std::string type;
  Inspection inspection;
};

// Half of the largest extent along an axis.
double ExtentOf(const std::vector<Vec3>& points) {
  double extent = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const auto less = [axis](const Vec3& a, const Vec3& b) { return a[axis] < b[axis]; };
    const auto [low, high] = std::minmax_element(points.begin(), points.end(), less);
    extent = std::max(extent, ((*high)[axis] - (*low)[axis]) / 2);
  }
  return extent;
}

// The points are a curve to which surfaces fit as well: close to a line, or to a circle and its plane.
bool IsCurve(const Guess& guess, double extent) {
  constexpr double kNarrow = 0.01;  // of the extent: a surface is wider
  if (guess.type != "line" && guess.type != "circle") return false;
  double height = 0;
  if (guess.type == "circle") {
    for (const Vec3& local : guess.inspection.local) height = std::max(height, std::fabs(local[2]));
  }
  return std::max(height, guess.inspection.RootMeanSquare()) <= kNarrow * extent;
}

// A line or a circle, if the points are such a curve; else the simplest type that is nearly
// as close to the points as the closest of all. Nothing where none can be fitted.
std::optional<Guess> GuessType(const std::vector<Vec3>& points) {
  constexpr double kNearly = 3;
  std::vector<Guess> guesses;
  for (const char* type : {"line", "circle", "plane", "sphere", "cylinder", "cone", "torus"}) {
    try {
      guesses.push_back({type, Inspect(FindMethods({type}, {"ls"}).front(), points, {})});
    } catch (const FitFailure&) {
      continue;
    }
  }
  double closest = std::numeric_limits<double>::infinity();
  for (const Guess& guess : guesses) closest = std::min(closest, guess.inspection.RootMeanSquare());
  // Of points that lie on several types to the last digit, none is closer.
  const double enough = std::max(kNearly * closest, 1e-9 * SizeOf(points));
  const double extent = ExtentOf(points);
  for (Guess& guess : guesses) {
    const bool isLineOrCircle = guess.type == "line" || guess.type == "circle";
    const bool serves = isLineOrCircle ? IsCurve(guess, extent) : guess.inspection.RootMeanSquare() <= enough;
    if (serves) return std::move(guess);
  }
  return std::nullopt;
}

std::string FeatureText(const std::string& name, const std::string& group, const std::vector<Vec3>& points,
                        const LengthUnit& unit) {
  const std::optional<Guess> guess = GuessType(points);
  std::string text = "[[feature]]\nname = " + Quoted(name) + "\n";
  if (!group.empty()) text += "group = " + Quoted(group) + "\n";
  const std::string form = guess ? guess->inspection.terms.form : "";
  text += "type = \"" + (guess ? guess->type : "plane") + "\"  # " + std::to_string(points.size()) + " points, ";
  text += guess ? form + " " + Fixed(guess->inspection.form, unit.decimals) + " " + unit.symbol + " by least squares\n"
                : "to which no type could be fitted\n";
  return text + "criterion = \"ls\"\n# tolerance = 0.01  # of the " + (guess ? form : "form") + "\n\n";
}

constexpr const char* kFeatureComment =
    R"(# Features. type: line, plane, circle, sphere, cylinder, cone, torus, ellipse, hyperbola, parabola.
# criterion: ls least squares, mz minimum zone, mc minimum circumscribed, mi maximum inscribed.
# Further keys: points = "other.csv", lines = ["12-340"], material = "outside" of a bore, prove = 100000,
# filter = 50 of a circle (undulations per revolution).

)";

constexpr const char* kRest =
    R"(# A datum frame from one to three features in the order of precedence. z is the normal or the axis of the first, x
# stands on the second plane or points to the second hole; both are positive where the other features lie, or towards
# the feature that z_towards and x_towards name.
#
# [[datum_frame]]
# name = "ABC"
# datums = ["A", "B", "C"]

# Characteristics. kind: form, diameter, radius, semi-angle, x, y, z, distance, angle, parallelism, perpendicularity,
# angularity, coaxiality, concentricity, symmetry, circular runout, total runout, position. Without limits or tolerance a value is only reported.
#
# [[characteristic]]
# feature = "bore"
# kind = "diameter"
# nominal = 25.0
# deviations = [0.0, 0.021]  # or limits = [25.0, 25.021]
#
# [[characteristic]]
# name = "bore distance"
# feature = "bore"
# kind = "distance"
# to = "A"
# nominal = 40.0
# deviations = [-0.05, 0.05]
#
# [[characteristic]]
# feature = "bore"
# kind = "perpendicularity"
# datum = "A"
# tolerance = 0.02
#
# [[characteristic]]
# feature = "bore"
# kind = "position"
# datum = "ABC"
# at = [30.0, 20.0]  # theoretically exact
# tolerance = 0.1

# Files of the report, beside those that the command line names.
#
# [report]
# html = "report.html"
# csv = "results.csv"
# svg = "pictures/"
)";

std::string HeadOf(const std::string& points, const PointFileOptions& reading, const PointFile& file,
                   const std::string& plan) {
  std::string text =
      "# Plan of an inspection: 'inspect PLAN.toml' reports this part, 'inspect PLAN.toml PART...' a batch.\n\n";
  std::string path = points;
  std::error_code error;
  if (points != "-")
    path = fs::proximate(points, (plan.empty() ? fs::current_path() : fs::absolute(plan).parent_path()), error)
               .generic_string();
  const std::string stem = points == "-" ? "part" : fs::path(points).stem().string();
  text += "title = " + Quoted(stem) + "\n";
  text += "points = " + Quoted(error || path.empty() ? points : path) + "  # relative to this plan\n";
  text += "unit = \"" + std::string(file.unit->name) + "\"  # of all lengths in this plan and its report\n";
  if (reading.unit != nullptr) text += "points_unit = \"" + std::string(reading.unit->name) + "\"\n";
  if (reading.decimalComma) text += "decimal_comma = true\n";
  if (reading.skipLines > 0) text += "skip = " + std::to_string(reading.skipLines) + "\n";
  std::string columns;
  for (const std::string& column : reading.columns) columns += (columns.empty() ? "" : ", ") + Quoted(column);
  return columns.empty() ? text : text + "columns = [" + columns + "]\n";
}

}  // namespace

std::string PlanFor(const std::string& points, const PointFileOptions& reading, const std::string& plan) {
  const std::optional<Grouped> grouped = points == "-" ? std::nullopt : ReadGroups(points, reading);
  const PointFile file = grouped ? grouped->file : ReadPointFile(points, reading);
  std::string text = HeadOf(points, reading, file, plan);
  if (grouped)
    text += "group_column = " + grouped->column + "  # its number or name: says which feature a point belongs to\n";
  text += "\n[remarks]  # any texts, for the head of the report\n# drawing = \"\"\n# operator = \"\"\n\n";
  text += kFeatureComment;
  if (!grouped) return text + FeatureText("A", "", file.points, *file.unit) + kRest;
  for (std::size_t group = 0; group < file.groups.size(); ++group) {
    std::vector<Vec3> own;
    for (std::size_t i = 0; i < file.points.size(); ++i) {
      if (file.groupOfPoint[i] == group) own.push_back(file.points[i]);
    }
    text += FeatureText(file.groups[group], file.groups[group], own, *file.unit);
  }
  return text + kRest;
}
