#include "plan/plan_reader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "evaluate/roundness_filter.h"
#include "plan/characteristic_kinds.h"
#include "plan/plan_entry.h"
#include "text.h"

namespace {

constexpr std::size_t kLargestPlan = 4 << 20;  // bytes; no plan has as many, an endless device has

std::string ReadText(const std::string& path) {
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  const std::string name = Printable(path);
  const std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "rb"));
  if (!file) throw InputError(name + ": cannot be opened: " + std::strerror(errno));
  std::string text(kLargestPlan + 1, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file.get()));
  if (std::ferror(file.get()) != 0) throw InputError(name + ": cannot be read: " + std::strerror(errno));
  if (text.size() > kLargestPlan) throw InputError(name + ": is too large for a plan");
  return text;
}

bool IsUnforeseen(std::string_view text) {
  try {
    static_cast<void>(toml::parse(text));
  } catch (const UnforeseenToml&) {
    return true;
  } catch (const toml::parse_error&) {
    return false;
  }
  return false;
}

// The first line that the reader of TOML did not foresee: text is read in order, so that all shorter beginnings pass.
std::size_t UnforeseenLine(const std::string& text) {
  std::vector<std::size_t> ends;
  for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) ends.push_back(at + 1);
  const auto first = std::partition_point(ends.begin(), ends.end(), [&text](std::size_t end) {
    return !IsUnforeseen(std::string_view(text).substr(0, end));
  });
  return static_cast<std::size_t>(first - ends.begin()) + 1;
}

toml::table ParseToml(const std::string& path) {
  const std::string text = ReadText(path);
  try {
    return toml::parse(std::string_view(text), std::string_view(path));
  } catch (const toml::parse_error& error) {
    throw InputError(Printable(path) + ":" + std::to_string(error.source().begin.line) + ": " +
                     Printable(error.description()));
  } catch (const UnforeseenToml&) {
    throw InputError(Printable(path) + ":" + std::to_string(UnforeseenLine(text)) + ": is not TOML");
  }
}

std::string Quoted(const std::string& text) {
  return "'" + Printable(text) + "'";
}

// The index of a name: exactly so written, or the only one that differs by the case of letters alone.
template<typename Named>
std::optional<std::size_t> FindName(const std::vector<Named>& all, const std::string& name) {
  std::optional<std::size_t> found;
  std::size_t count = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].name == name) return i;
    if (Lower(all[i].name) != Lower(name)) continue;
    found = i;
    ++count;
  }
  return count == 1 ? found : std::nullopt;
}

template<typename Named>
std::string NamesOf(const std::vector<Named>& all) {
  std::string names;
  for (const Named& each : all) names += (names.empty() ? "" : ", ") + Quoted(each.name);
  return names.empty() ? "none" : names;
}

template<typename Named>
void RefuseTwin(const std::vector<Named>& all, const std::string& name, const PlanEntry& entry) {
  for (const Named& each : all) {
    if (each.name == name) {
      entry.Fail("name", Quoted(name) + " is taken by line " + std::to_string(each.line) + "; give another name");
    }
  }
}

class PlanReader {
 public:
  PlanReader(const std::string& path, bool partsAreGiven) : m_table(ParseToml(path)), m_partsAreGiven(partsAreGiven) {
    m_plan.path = path;
  }

  PartPlan Read() {
    PlanEntry top(m_plan.path, m_table, "");
    ReadHead(&top);
    ReadReport(&top);
    for (const toml::table* table : top.Tables("feature")) ReadFeature(*table);
    for (const toml::table* table : top.Tables("datum_frame")) ReadFrame(*table);
    for (const toml::table* table : top.Tables("characteristic")) ReadCharacteristic(*table);
    top.RefuseOtherKeys();
    if (m_plan.features.empty()) {
      top.FailAt(1,
                 "the plan has no feature; expected entries that begin with [[feature]] ('inspect init FILE' writes "
                 "a plan)");
    }
    return std::move(m_plan);
  }

 private:
  void ReadHead(PlanEntry* top) {
    m_plan.title = top->Text("title").value_or("");
    m_plan.points = top->Text("points").value_or("");
    if (const auto unit = top->Text("unit")) {
      m_plan.unit = FindUnit(*unit);
      if (m_plan.unit == nullptr) top->Fail("unit", Quoted(*unit) + " is unknown; expected one of " + UnitNames());
    }
    m_plan.reading.columns = top->Texts("columns");
    if (top->Has("columns") && (m_plan.reading.columns.size() < 2 || m_plan.reading.columns.size() > 3)) {
      top->Fail("columns", "expected two or three columns such as [2, 3, 4] or [\"ActX\", \"ActY\", \"ActZ\"]");
    }
    m_plan.reading.decimalComma = top->Flag("decimal_comma").value_or(false);
    m_plan.reading.skipLines = top->Whole("skip", 0, 1000000).value_or(0);
    const std::vector<std::string> group = top->Texts("group_column");
    if (group.size() > 1) top->Fail("group_column", "expected the name or the number of one column");
    if (!group.empty()) m_plan.groupColumn = group.front();
    if (const auto unit = top->Text("points_unit")) {
      m_plan.reading.unit = FindUnit(*unit);
      if (m_plan.reading.unit == nullptr)
        top->Fail("points_unit", Quoted(*unit) + " is unknown; expected one of " + UnitNames());
    }
    const toml::table* remarks = top->Table("remarks");
    if (remarks == nullptr) return;
    PlanEntry entry(m_plan.path, *remarks, "remarks");
    std::vector<std::pair<std::size_t, std::string>> inOrder;
    for (const auto& [key, node] : *remarks) inOrder.emplace_back(node.source().begin.line, key.str());
    std::sort(inOrder.begin(), inOrder.end());
    for (const auto& [line, key] : inOrder) m_plan.remarks.emplace_back(key, entry.RequiredText(key, "a text"));
  }

  void ReadReport(PlanEntry* top) {
    const toml::table* report = top->Table("report");
    if (report == nullptr) return;
    PlanEntry entry(m_plan.path, *report, "report");
    m_plan.html = entry.Text("html").value_or("");
    m_plan.json = entry.Text("json").value_or("");
    m_plan.csv = entry.Text("csv").value_or("");
    m_plan.qif = entry.Text("qif").value_or("");
    m_plan.svg = entry.Text("svg").value_or("");
    entry.RefuseOtherKeys();
  }

  void ReadFeature(const toml::table& table) {
    PlanEntry entry(m_plan.path, table, "feature");
    FeaturePlan feature;
    feature.line = entry.Line();
    feature.name = entry.RequiredText("name", "a text such as \"A\"");
    RefuseTwin(m_plan.features, feature.name, entry);
    entry.Rename("feature " + Quoted(feature.name));
    feature.method = ReadMethod(&entry);
    ReadSource(&entry, &feature.source);
    if (const auto side = entry.Text("material")) {
      if (Lower(*side) != "inside" && Lower(*side) != "outside") {
        entry.Fail("material", Quoted(*side) + " is no side; expected \"inside\" or \"outside\"");
      }
      feature.material = Lower(*side) == "inside" ? Material::kInside : Material::kOutside;
    }
    feature.filter = static_cast<int>(entry.Whole("filter", 1, kLargestFilter).value_or(0));
    if (feature.filter > 0 && feature.method.terms.feature != "circle") {
      entry.Fail("filter", "the roundness filter is for circles; a " + feature.method.terms.feature + " has none");
    }
    feature.boxes = entry.Whole("prove", 1, 1000000000).value_or(0);
    const std::optional<double> tolerance = NotNegative(&entry, "tolerance");
    entry.RefuseOtherKeys();
    m_plan.features.push_back(feature);
    if (tolerance) AddForm(m_plan.features.size() - 1, *tolerance, entry.LineOf("tolerance"));
  }

  static Method ReadMethod(PlanEntry* entry) {
    const std::string type = entry->RequiredText("type", "line, plane, circle, sphere, cylinder, cone, torus, ...");
    const std::string criterion = entry->Text("criterion").value_or("ls");
    std::vector<Method> methods;
    try {
      methods = FindMethods({type}, {criterion});
    } catch (const InputError& error) {
      const bool isType = std::string_view(error.what()).starts_with("unknown feature");
      entry->Fail(isType ? "type" : "criterion", error.what());
    }
    if (methods.size() != 1 || Lower(criterion) == "all") {
      entry->Fail("criterion", "a feature of a plan has one; expected ls, mz, mc or mi");
    }
    return methods.front();
  }

  void ReadSource(PlanEntry* entry, PointSource* source) {
    source->file = entry->Text("points").value_or("");
    source->group = entry->Text("group").value_or("");
    if (source->file.empty() && m_plan.points.empty() && !m_partsAreGiven) {
      entry->Fail("points", "is missing; expected the name of a point file, here or at the head of the plan");
    }
    if (!source->group.empty() && m_plan.groupColumn.empty()) {
      entry->Fail("group",
                  "needs the key 'group_column' at the head of the plan: the name or number of the column "
                  "that holds the groups");
    }
    for (const std::string& range : entry->Texts("lines")) source->lines.push_back(ReadRange(*entry, range));
  }

  // "12-340", or one line.
  static std::pair<std::size_t, std::size_t> ReadRange(const PlanEntry& entry, const std::string& text) {
    const std::size_t dash = text.find('-');
    long first = 0;
    long last = 0;
    const bool good = ParseWhole(std::string_view(text).substr(0, dash), &first) &&
                      ParseWhole(dash == std::string::npos ? text : text.substr(dash + 1), &last);
    if (!good || first < 1 || last < first) {
      entry.Fail("lines", Quoted(text) + " is no range of lines; expected one such as \"12-340\"");
    }
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(last)};
  }

  static std::optional<double> NotNegative(PlanEntry* entry, const char* key) {
    const std::optional<double> number = entry->Number(key);
    if (number && *number < 0) entry->Fail(key, "the number is negative");
    return number;
  }

  void AddForm(std::size_t index, double tolerance, std::size_t line) {
    const FeaturePlan& feature = m_plan.features[index];
    CharacteristicPlan form;
    form.word = feature.method.terms.form;
    form.name = feature.name + " " + form.word;
    form.feature = index;
    form.upper = tolerance;
    form.line = line;
    m_plan.characteristics.push_back(form);
  }

  std::size_t FeatureCalled(const PlanEntry& entry, const char* key, const std::string& name) const {
    const std::optional<std::size_t> found = FindName(m_plan.features, name);
    if (!found) entry.Fail(key, "no feature is called " + Quoted(name) + "; there are " + NamesOf(m_plan.features));
    return *found;
  }

  void ReadFrame(const toml::table& table) {
    PlanEntry entry(m_plan.path, table, "datum frame");
    DatumFramePlan frame;
    frame.line = entry.Line();
    frame.name = entry.RequiredText("name", "a text such as \"ABC\"");
    RefuseTwin(m_plan.frames, frame.name, entry);
    RefuseTwin(m_plan.features, frame.name, entry);
    entry.Rename("datum frame " + Quoted(frame.name));
    for (const std::string& datum : entry.Texts("datums")) {
      const std::size_t index = FeatureCalled(entry, "datums", datum);
      if (std::find(frame.datums.begin(), frame.datums.end(), index) != frame.datums.end()) {
        entry.Fail("datums", Quoted(datum) + " stands there twice");
      }
      frame.datums.push_back(index);
    }
    if (frame.datums.empty() || frame.datums.size() > 3) {
      entry.Fail("datums", "expected one to three features in the order of precedence, such as [\"A\", \"B\", \"C\"]");
    }
    if (const auto name = entry.Text("z_towards")) frame.zTowards = FeatureCalled(entry, "z_towards", *name);
    if (const auto name = entry.Text("x_towards")) frame.xTowards = FeatureCalled(entry, "x_towards", *name);
    entry.RefuseOtherKeys();
    m_plan.frames.push_back(frame);
  }

  void ReadCharacteristic(const toml::table& table) {
    PlanEntry entry(m_plan.path, table, "characteristic");
    CharacteristicPlan plan;
    plan.line = entry.Line();
    plan.name = entry.Text("name").value_or("");
    if (!plan.name.empty()) entry.Rename("characteristic " + Quoted(plan.name));
    plan.feature = FeatureCalled(entry, "feature", entry.RequiredText("feature", "the name of a feature"));
    const KindRules rules = ReadKind(&entry, m_plan.features[plan.feature]);
    plan.kind = rules.kind;
    plan.word = rules.word;
    plan.axis = rules.axis;
    plan.isAngle = rules.isAngle;
    ReadReference(&entry, rules, &plan);
    if (plan.name.empty()) plan.name = m_plan.features[plan.feature].name + " " + plan.word;
    RefuseTwin(m_plan.characteristics, plan.name, entry);
    if (plan.kind == CharacteristicKind::kPosition) ReadExactPlace(&entry, &plan);
    if (plan.kind == CharacteristicKind::kAngularity) ReadExactAngle(&entry, &plan);
    rules.isZone ? ReadZone(&entry, &plan) : ReadLimits(&entry, &plan);
    entry.RefuseOtherKeys();
    m_plan.characteristics.push_back(plan);
  }

  static KindRules ReadKind(PlanEntry* entry, const FeaturePlan& feature) {
    const std::string word = entry->RequiredText("kind", "one such as \"form\", \"diameter\" or \"position\"");
    try {
      return FindKind(word, feature);
    } catch (const InputError& error) {
      entry->Fail("kind", error.what());
    }
  }

  void ReadReference(PlanEntry* entry, const KindRules& rules, CharacteristicPlan* plan) const {
    if (rules.reference == Reference::kNone) return;
    const std::optional<std::string> name = entry->Text(rules.key);
    if (rules.reference == Reference::kFrame) {
      // Without one, the coordinates are those of the files.
      if (name) plan->frame = FindName(m_plan.frames, *name);
      if (name && !plan->frame) {
        entry->Fail(rules.key, "no datum frame is called " + Quoted(*name) + "; there are " + NamesOf(m_plan.frames));
      }
      return;
    }
    if (!name) entry->Fail(rules.key, "is missing; expected the name of the feature that the " + rules.word + " is to");
    plan->datum = FeatureCalled(*entry, rules.key, *name);
    const std::string problem = ProblemOf(plan->kind, m_plan.features[plan->feature], m_plan.features[*plan->datum]);
    if (!problem.empty()) entry->Fail(rules.key, problem);
  }

  void ReadExactPlace(PlanEntry* entry, CharacteristicPlan* plan) const {
    const FeatureShape shape = ShapeOf(m_plan.features[plan->feature]);
    plan->at = entry->Numbers("at", shape == FeatureShape::kPlane ? 3 : 2, 3);
    if (plan->at.empty()) entry->Fail("at", "is missing; expected the theoretically exact place such as [30.0, 20.0]");
    if (shape == FeatureShape::kPoint) return;
    const std::vector<double> direction = entry->Numbers("direction", 3, 3);
    if (direction.empty()) return;
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    if (!(length > 0 && std::isfinite(length))) entry->Fail("direction", "the direction has no length");
    if (plan->at.size() == 2) plan->at.push_back(0);
    for (std::size_t i = 0; i < 3; ++i) plan->direction[i] = direction[i] / length;
  }

  static void ReadExactAngle(PlanEntry* entry, CharacteristicPlan* plan) {
    constexpr double kRight = 90;
    const std::optional<double> angle = entry->Number("angle");
    if (!angle) entry->Fail("angle", "is missing; expected the theoretically exact angle to the datum in degrees");
    if (!(*angle > 0 && *angle < kRight)) {
      entry->Fail("angle",
                  "expected an angle between 0 and 90 degrees; parallelism and perpendicularity are their own "
                  "kinds");
    }
    plan->exactAngle = *angle;
  }

  static void ReadZone(PlanEntry* entry, CharacteristicPlan* plan) {
    for (const char* key : {"nominal", "deviations", "limits"}) {
      if (entry->Has(key)) entry->Fail(key, "a " + plan->word + " has a zone; expected the key 'tolerance' alone");
    }
    plan->upper = NotNegative(entry, "tolerance");
  }

  // Two limits, or a nominal value with the lower and the upper limit deviation.
  static void ReadLimits(PlanEntry* entry, CharacteristicPlan* plan) {
    if (entry->Has("tolerance")) {
      entry->Fail("tolerance", "a " + plan->word +
                                   " lies between two limits; expected nominal = 25.0 with deviations "
                                   "= [-0.1, 0.1], or limits = [24.9, 25.1]");
    }
    plan->nominal = entry->Number("nominal");
    const std::vector<double> deviations = entry->Numbers("deviations", 2, 2);
    const std::vector<double> limits = entry->Numbers("limits", 2, 2);
    if (!deviations.empty() && !limits.empty()) entry->Fail("limits", "'deviations' gives the limits already");
    if (!deviations.empty() && !plan->nominal) entry->Fail("deviations", "needs the key 'nominal'");
    for (const auto& [key, pair] : {std::pair("deviations", deviations), std::pair("limits", limits)}) {
      if (!pair.empty() && pair[0] > pair[1]) entry->Fail(key, "the first number is larger than the second");
    }
    if (!limits.empty()) {
      plan->lower = limits[0];
      plan->upper = limits[1];
    } else if (!deviations.empty()) {
      plan->lower = *plan->nominal + deviations[0];
      plan->upper = *plan->nominal + deviations[1];
    }
  }

  toml::table m_table;
  bool m_partsAreGiven;
  PartPlan m_plan;
};

}  // namespace

bool MeansPlan(const std::string& path) {
  return Lower(path).ends_with(".toml");
}

PartPlan ReadPlan(const std::string& path, bool partsAreGiven) {
  return PlanReader(path, partsAreGiven).Read();
}
