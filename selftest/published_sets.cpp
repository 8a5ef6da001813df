#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "checks.h"
#include "support/fitted.h"

// Test sets in the layout of the national institutes: NAME.ds holds the points, NAME.fit the parameters of the feature
// in the order of ISO 10360-6:
//   line, plane     point, direction cosines
//   circle          centre, direction cosines of the normal, diameter
//   sphere          centre, diameter
//   cylinder        point of the axis, direction cosines, diameter
//   cone            point of the axis, direction cosines, distance of that point from the surface, semi-angle
//   torus           centre, direction cosines, major diameter, minor diameter
// The parameters of a cone are those of C. M. Shakarji, J. Res. Natl. Inst. Stand. Technol. 103 (1998) 633.

namespace {

namespace fs = std::filesystem;
using nu::test::Shape;

constexpr const char* kPointExtensions[] = {".ds", ".txt", ".xyz", ".asc", ".dat", ".csv", ".pts"};
constexpr double kRadiansToMicroradians = 1e6;

struct FeatureKind {
  const char* name;
  const char* prefix;  // of file names
  std::size_t numbers;
};

constexpr FeatureKind kKinds[] = {{"line", "lin", 6},   {"plane", "pla", 6},    {"circle", "cir", 7},
                                  {"sphere", "sph", 4}, {"cylinder", "cyl", 7}, {"cone", "con", 8},
                                  {"torus", "tor", 8}};

constexpr std::size_t kNumbersOfSphere = 4;  // the only feature without a direction

const FeatureKind* KindOf(const std::string& name) {
  std::string lower = name;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  for (const FeatureKind& kind : kKinds)
    if (lower.rfind(kind.prefix, 0) == 0) return &kind;
  return nullptr;
}

ENuCriterion CriterionOf(const std::string& name) {
  if (name == "ls") return NuLeastSquares;
  if (name == "mz") return NuMinimumZone;
  if (name == "mc") return NuMinimumCircumscribed;
  if (name == "mi") return NuMaximumInscribed;
  throw std::runtime_error("--criterion: '" + name + "' is unknown; expected ls, mz, mc or mi");
}

constexpr std::size_t kLongestLine = 65536;
constexpr std::size_t kShownOfWord = 40;

// What a message shows of a word: not all of a long one, nor bytes that a terminal would obey.
std::string Shown(const std::string& word) {
  std::string shown = word.substr(0, kShownOfWord);
  for (char& c : shown)
    if (c < ' ' || c > '~') c = '?';
  return "'" + shown + (word.size() > kShownOfWord ? "...'" : "'");
}

// The numbers of a line, whatever separates them; comments start with #.
std::vector<double> Numbers(std::string line) {
  line.resize(std::min(line.size(), line.find('#')));
  for (char& c : line)
    if (c == ',' || c == ';' || c == '\t' || c == '\r') c = ' ';
  std::vector<double> numbers;
  std::istringstream words(line);
  for (std::string word; words >> word;) {
    char* end = nullptr;
    const double number = std::strtod(word.c_str(), &end);
    const bool isNumber = end != word.c_str() && end == word.c_str() + word.size();
    if (!isNumber) throw std::runtime_error(Shown(word) + " is not a number");
    if (!std::isfinite(number)) throw std::runtime_error(Shown(word) + " is not finite");
    numbers.push_back(number);
  }
  return numbers;
}

// Calls with the numbers of each line that has any. A byte-order mark is passed over.
template<class Call>
void ForEachLine(const fs::path& file, Call call) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error(file.string() + ": cannot be read");
  std::vector<char> line(kLongestLine + 1);
  int count = 0;
  try {
    for (; stream.getline(line.data(), static_cast<std::streamsize>(line.size())); ++count) {
      const std::size_t read = static_cast<std::size_t>(stream.gcount()) - (stream.eof() ? 0 : 1);  // no line feed
      const std::string text(line.data(), read);
      const bool hasMark = count == 0 && text.rfind("\xEF\xBB\xBF", 0) == 0;
      const std::vector<double> numbers = Numbers(hasMark ? text.substr(3) : text);
      if (!numbers.empty()) call(numbers);
    }
    if (stream.bad()) throw std::runtime_error("cannot be read");
    if (!stream.eof()) throw std::runtime_error("the line is longer than " + std::to_string(kLongestLine) + " bytes");
  } catch (const std::runtime_error& e) {
    throw std::runtime_error(file.string() + ":" + std::to_string(count + 1) + ": " + e.what());
  }
}

CNuPointArray ReadPoints(const fs::path& file) {
  CNuPointArray points(0);
  ForEachLine(file, [&](const std::vector<double>& xyz) {
    if (xyz.size() != 3) throw std::runtime_error("expected three coordinates, not " + std::to_string(xyz.size()));
    points.Add({xyz[0], xyz[1], xyz[2]});
  });
  return points;
}

std::vector<double> ReadResult(const fs::path& file, const FeatureKind& kind) {
  constexpr std::size_t kMost = 64;  // what follows is not kept
  std::vector<double> result;
  ForEachLine(file, [&](const std::vector<double>& numbers) {
    if (result.size() < kMost) result.insert(result.end(), numbers.begin(), numbers.end());
  });
  if (result.size() != kind.numbers)
    throw std::runtime_error(file.string() + ": a " + kind.name + " has " + std::to_string(kind.numbers) +
                             " numbers, not " + std::to_string(result.size()));
  const bool hasDirection = kind.numbers > kNumbersOfSphere;
  if (hasDirection && result[3] == 0.0 && result[4] == 0.0 && result[5] == 0.0)
    throw std::runtime_error(file.string() + ": the direction cosines are all 0");
  return result;
}

template<class F>
Shape FitOf(ENuCriterion criterion, const CNuPointArray& points) {
  F feature = nu::test::Start<F>();
  CNuAssociation(points).Fit(criterion, &feature).Require();
  Shape shape;
  nu::test::Read(feature, shape);
  return shape;
}

Shape FitOf(const std::string& feature, ENuCriterion criterion, const CNuPointArray& points) {
  if (feature == "line") return FitOf<CNuLine>(criterion, points);
  if (feature == "plane") return FitOf<CNuPlane>(criterion, points);
  if (feature == "circle") return FitOf<CNuCircle>(criterion, points);
  if (feature == "sphere") return FitOf<CNuSphSurf>(criterion, points);
  if (feature == "cylinder") return FitOf<CNuCylSurf>(criterion, points);
  if (feature == "cone") return FitOf<CNuConSurf>(criterion, points);
  return FitOf<CNuTorSurf>(criterion, points);
}

// Adds what differs between a fit and a published result.
class SetComparison {
 public:
  SetComparison(const FeatureKind& kind, const std::string& name, const PublishedOptions& options, const Part& part,
                Section& section)
      : m_feature(kind.name), m_name(name), m_options(options), m_part(part), m_section(section) {}

  void Compare(const Shape& f, const std::vector<double>& result) const {
    const CNuPoint place(result[0], result[1], result[2]);
    const bool isSphere = m_feature == "sphere";
    CNuVector axis = isSphere ? CNuVector(0.0, 0.0, 1.0) : CNuVector(result[3], result[4], result[5]);
    axis.Normalise();
    if (!isSphere) Angle("direction", std::min((axis - f.axis).Magnitude(), (axis + f.axis).Magnitude()));
    const double perRadius = m_options.givesRadii ? 1.0 : 2.0;
    const char* width = m_options.givesRadii ? "radius" : "diameter";
    if (m_feature == "line") return Length("position", place.DistanceTo(CNuLine(f.place, f.axis)));
    if (m_feature == "plane") return Length("position", place.DistanceTo(CNuPlane(f.place, f.axis)));
    if (m_feature == "cone") return Cone(f, place, result);
    if (m_feature == "cylinder")
      Length("position", place.DistanceTo(CNuLine(f.place, f.axis)));
    else
      Length("centre", place.DistanceTo(f.place));
    Length(width, std::fabs(perRadius * f.radius - result[isSphere ? 3 : 6]));
    if (m_feature == "torus")
      Length((std::string("minor ") + width).c_str(), std::fabs(perRadius * f.minor - result[7]));
  }

 private:
  void Cone(const Shape& f, const CNuPoint& place, const std::vector<double>& result) const {
    const CNuVector fromApex = (place - f.place).To3DVector();
    const double semiAngle = f.angle * nu::test::kDegree;
    const double surface = std::fabs(fromApex % f.axis) * std::sin(semiAngle);
    Length("position", place.DistanceTo(CNuLine(f.place, f.axis)));
    Length("distance from surface", std::fabs(surface - std::fabs(result[6])));
    Angle("semi-angle", std::fabs(semiAngle - result[7] * nu::test::kDegree * (m_options.fullAngle ? 0.5 : 1.0)));
  }
  void Length(const char* what, double error) const {
    m_section.Add(m_feature, m_options.criterion, what, m_name, error * m_part.unit->micrometres, m_options.limit);
  }
  void Angle(const char* what, double radians) const {
    m_section.Add(m_feature, m_options.criterion, std::string(what) + " [urad]", m_name,
                  radians * kRadiansToMicroradians, m_options.limit);
  }

  std::string m_feature, m_name;
  const PublishedOptions& m_options;
  const Part& m_part;
  Section& m_section;
};

bool HoldsPoints(const fs::path& file) {
  const std::string extension = file.extension().string();
  return std::find(std::begin(kPointExtensions), std::end(kPointExtensions), extension) != std::end(kPointExtensions) &&
         fs::exists(fs::path(file).replace_extension(".fit"));
}

std::vector<fs::path> PointFiles(const std::vector<std::string>& paths) {
  std::vector<fs::path> files;
  for (const std::string& path : paths) {
    if (!fs::is_directory(path)) {
      files.emplace_back(path);
      continue;
    }
    const std::size_t before = files.size();
    for (const auto& entry : fs::directory_iterator(path))
      if (HoldsPoints(entry.path())) files.push_back(entry.path());
    if (files.size() == before) throw std::runtime_error(path + ": holds no NAME.ds with NAME.fit beside it");
    std::sort(files.begin() + static_cast<std::ptrdiff_t>(before), files.end());
  }
  return files;
}

}  // namespace

Section CheckPublishedSets(const PublishedOptions& options, const Part& part, Progress& progress) {
  const ENuCriterion criterion = CriterionOf(options.criterion);
  const std::vector<fs::path> files = PointFiles(options.paths);
  std::ostringstream limit;
  limit << options.limit;
  Section section("Your test sets", "Limit of the errors: " + limit.str() + " um, and " + limit.str() +
                                        " urad of directions and angles.");
  progress.Begin("your test sets", files.size());
  for (const fs::path& file : files) {
    const std::string name = file.filename().string();
    const FeatureKind* kind = KindOf(options.feature.empty() ? name : options.feature);
    if (kind == nullptr)
      throw std::runtime_error(file.string() + ": which feature? Its name should start with lin, pla, cir, sph, cyl, " +
                               "con or tor, or give --feature");
    const CNuPointArray points = ReadPoints(file);
    const std::vector<double> result = ReadResult(fs::path(file).replace_extension(".fit"), *kind);
    try {
      SetComparison(*kind, name, options, part, section).Compare(FitOf(kind->name, criterion, points), result);
    } catch (const CNuException& e) {
      section.Check(false, name + ": " + e.m_szWhat + " cause " + std::to_string(e.GetCause()));
    }
    progress.Step();
  }
  return section;
}
