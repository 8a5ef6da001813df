#include "evaluate/part.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <new>

#include "evaluate/datum_frame.h"
#include "evaluate/propagation.h"
#include "evaluate/relations.h"
#include "evaluate/roundness_filter.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string Quoted(const std::string& text) {
  return "'" + Printable(text) + "'";
}

// The point files of one part, each read once.
class PartPoints {
 public:
  PartPoints(const PartPlan& plan, const PartFiles& files) : m_plan(plan), m_files(files) {}

  // Throws InputError.
  void Take(const FeaturePlan& feature, FeatureResult* result) {
    const std::string path = PathOf(feature);
    const PointFile& file = Read(path);
    if (!feature.source.group.empty() && file.groups.empty()) {
      throw InputError(Printable(path) + ": a point cloud has no groups for the feature " + Quoted(feature.name));
    }
    result->points = Selected(file, feature);
    result->source = FileName(path) + SelectionText(feature.source);
    if (result->points.points.empty()) {
      throw InputError(Printable(path) + ": no points for the feature " + Quoted(feature.name) +
                       EmptyText(file, feature));
    }
    Convert(file, &result->points);
  }

 private:
  std::string PathOf(const FeaturePlan& feature) const {
    if (feature.source.file.empty() && !m_files.points.empty()) return m_files.points;
    const std::string& name = feature.source.file.empty() ? m_plan.points : feature.source.file;
    if (name == "-") return name;
    const bool given = !m_files.directory.empty();
    const fs::path directory = given ? fs::path(m_files.directory) : fs::path(m_plan.path).parent_path();
    return (directory / name).string();
  }

  const PointFile& Read(const std::string& path) {
    const auto known = m_read.find(path);
    if (known != m_read.end()) {
      if (!known->second.error.empty()) throw InputError(known->second.error);
      return known->second.file;
    }
    Entry& entry = m_read[path];
    PointFileOptions options = m_plan.reading;
    options.groupColumn = m_plan.groupColumn;
    try {
      entry.file = ReadPointFile(path, options);
    } catch (const InputError& error) {
      entry.error = error.what();
      throw;
    }
    return entry.file;
  }

  static bool IsIn(const PointSource& source, std::size_t line) {
    return source.lines.empty() || std::any_of(source.lines.begin(), source.lines.end(), [line](const auto& range) {
             return line >= range.first && line <= range.second;
           });
  }

  // The index of the group; as many as there are groups if there is none.
  static std::size_t GroupOf(const PointFile& file, const FeaturePlan& feature) {
    const auto found = std::find(file.groups.begin(), file.groups.end(), feature.source.group);
    return static_cast<std::size_t>(found - file.groups.begin());
  }

  static PointFile Selected(const PointFile& file, const FeaturePlan& feature) {
    PointFile selected;
    selected.columns = file.columns;
    selected.place = file.place;
    const bool byGroup = !feature.source.group.empty();
    const std::size_t group = byGroup ? GroupOf(file, feature) : 0;
    for (std::size_t i = 0; i < file.points.size(); ++i) {
      if (byGroup && file.groupOfPoint[i] != group) continue;
      if (!IsIn(feature.source, file.lines[i])) continue;
      selected.points.push_back(file.points[i]);
      selected.lines.push_back(file.lines[i]);
    }
    return selected;
  }

  static std::string SelectionText(const PointSource& source) {
    std::string text = source.group.empty() ? "" : ", group " + source.group;
    for (const auto& [first, last] : source.lines) {
      text += (&first == &source.lines.front().first ? ", lines " : ", ") + std::to_string(first) + "-" +
              std::to_string(last);
    }
    return text;
  }

  static std::string EmptyText(const PointFile& file, const FeaturePlan& feature) {
    constexpr std::size_t kMostGroups = 12;
    const bool known = feature.source.group.empty() || GroupOf(file, feature) < file.groups.size();
    if (known) return ": no point stands in its lines";
    std::string groups;
    for (std::size_t i = 0; i < std::min(kMostGroups, file.groups.size()); ++i) {
      groups += (groups.empty() ? "" : ", ") + Quoted(file.groups[i]);
    }
    return ": no group is called " + Quoted(feature.source.group) + "; the file has " + groups +
           (file.groups.size() > kMostGroups ? ", ..." : "");
  }

  // A file that states no unit is in that of the plan.
  void Convert(const PointFile& file, PointFile* points) const {
    points->unit = m_plan.unit;
    const bool assumed = std::string_view(file.unitSource) == "assumed";
    points->unitSource = "plan";
    if (assumed || file.unit == m_plan.unit) return;
    const double factor = file.unit->millimetres / m_plan.unit->millimetres;
    for (Vec3& point : points->points) point = Times(factor, point);
  }

  struct Entry {
    PointFile file;
    std::string error;
  };

  const PartPlan& m_plan;
  const PartFiles& m_files;
  std::map<std::string, Entry> m_read;
};

class PartEvaluation {
 public:
  PartEvaluation(const PartPlan& plan, const PartFiles& files) : m_plan(plan), m_points(plan, files) {
    m_result.name = files.name;
  }

  PartResult Evaluate(const std::function<void(std::size_t)>& progress) {
    const auto start = std::chrono::steady_clock::now();
    m_result.features.reserve(m_plan.features.size());
    for (const FeaturePlan& feature : m_plan.features) {
      AddFeature(feature);
      if (progress) progress(m_result.features.size());
    }
    for (const auto& geometry : m_geometry) m_known.push_back(geometry ? &*geometry : nullptr);
    for (const DatumFramePlan& frame : m_plan.frames) AddFrame(frame);
    for (const CharacteristicPlan& plan : m_plan.characteristics) AddCharacteristic(plan);
    m_result.seconds = SecondsSince(start);
    return std::move(m_result);
  }

 private:
  // Runs a step; one that fails returns why.
  template<typename Step>
  static std::string Attempt(const Step& step) {
    try {
      step();
      return "";
    } catch (const CNuMemoryException&) {
      throw;
    } catch (const CNuException& failure) {
      return NuCauseText(failure);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& failure) {
      return failure.what();
    }
  }

  void AddFeature(const FeaturePlan& plan) {
    FeatureResult& feature = m_result.features.emplace_back();
    m_geometry.emplace_back();
    feature.name = plan.name;
    feature.failure = Attempt([&] { m_points.Take(plan, &feature); });
    feature.isBadInput = !feature.failure.empty();
    m_result.isBadInput = m_result.isBadInput || feature.isBadInput;
    if (feature.isBadInput) return Worsen(Verdict::kFailed);
    feature.failure = Attempt([&] {
      feature.inspection = Inspect(plan.method, feature.points.points, {plan.boxes, plan.filter});
      feature.seconds = feature.inspection->seconds;
      m_geometry.back() = GeometryOf(plan, feature.points.points, *feature.inspection);
    });
    if (!feature.failure.empty()) Worsen(Verdict::kFailed);
  }

  void AddFrame(const DatumFramePlan& plan) {
    DatumFrameResult frame;
    const std::string failure = Attempt([&] { frame = BuildDatumFrame(plan, m_plan, m_known); });
    frame.name = plan.name;
    frame.failure = failure;
    m_result.frames.push_back(frame);
  }

  void AddCharacteristic(const CharacteristicPlan& plan) {
    Characteristic& result = m_result.characteristics.emplace_back();
    result.name = plan.name;
    result.kind = plan.word;
    result.feature = m_plan.features[plan.feature].name;
    if (plan.datum) result.datum = m_plan.features[*plan.datum].name;
    if (plan.frame) result.datum = m_plan.frames[*plan.frame].name;
    result.unit = plan.isAngle ? "\u00B0" : m_plan.unit->symbol;
    result.decimals = m_plan.unit->decimals;
    result.nominal = plan.nominal;
    result.lower = plan.lower;
    result.upper = plan.upper;
    result.failure = Attempt([&] { Measure(plan, &result); });
    result.verdict = VerdictOf(result);
    Worsen(result.verdict);
  }

  void Measure(const CharacteristicPlan& plan, Characteristic* result) const {
    const FeatureResult& feature = m_result.features[plan.feature];
    if (!feature.inspection) throw FitFailure("the feature " + Quoted(feature.name) + " failed: " + feature.failure);
    if (plan.datum && m_known[*plan.datum] == nullptr) {
      throw FitFailure("the feature " + Quoted(result->datum) + " failed: " + m_result.features[*plan.datum].failure);
    }
    if (plan.frame && !m_result.frames[*plan.frame].failure.empty()) {
      throw FitFailure("the datum frame " + Quoted(result->datum) + " failed: " + m_result.frames[*plan.frame].failure);
    }
    const Measured measured =
        IsOfFeature(plan.kind) ? OfFeature(plan, *feature.inspection, result) : Related(plan, result);
    if (!std::isfinite(measured.value)) throw FitFailure("the value is not finite");
    result->measured = measured.value;
    result->evaluation = measured.evaluation;
    if (plan.nominal) result->deviation = measured.value - *plan.nominal;
  }

  static bool IsOfFeature(CharacteristicKind kind) {
    using enum CharacteristicKind;
    return kind == kForm || kind == kDiameter || kind == kRadius || kind == kParameter;
  }

  static Measured OfFeature(const CharacteristicPlan& plan, const Inspection& inspection, Characteristic* result) {
    const std::string criterion = EvaluationText(inspection);
    if (plan.kind == CharacteristicKind::kForm) {
      if (!inspection.terms.symbol.empty()) result->symbol = inspection.terms.symbol + "t";
      return {inspection.form, criterion};
    }
    const bool isDiameter = plan.kind == CharacteristicKind::kDiameter;
    const std::string name = isDiameter ? "radius" : plan.word;
    const auto isIt = [&name](const Parameter& parameter) { return parameter.name == name; };
    const auto found = std::find_if(inspection.parameters.begin(), inspection.parameters.end(), isIt);
    if (found == inspection.parameters.end()) throw FitFailure("the feature has no " + plan.word);
    result->uncertainty = UncertaintyOf(inspection, name, isDiameter ? 2 : 1);
    return {(isDiameter ? 2 : 1) * found->values[0], criterion};
  }

  static std::optional<double> UncertaintyOf(const Inspection& inspection, const std::string& name, double factor) {
    if (!inspection.uncertainty) return std::nullopt;
    for (const Uncertainty::Change& change : inspection.uncertainty->changes) {
      if (change.name == name && std::isfinite(change.standard)) return factor * change.standard;
    }
    return std::nullopt;
  }

  Measured Related(const CharacteristicPlan& plan, Characteristic* result) const {
    const FeatureGeometry& feature = *m_known[plan.feature];
    const FeatureGeometry* datum = plan.datum ? m_known[*plan.datum] : nullptr;
    if (IsOfFittedGeometry(plan)) {
      result->uncertainty = PropagatedUncertainty(
          {&feature, UncertaintyOfFeature(plan.feature)},
          {datum, plan.datum ? UncertaintyOfFeature(*plan.datum) : nullptr},
          [&](const FeatureGeometry& a, const FeatureGeometry* b) { return Relation(plan, a, b).value; });
    }
    return Relation(plan, feature, datum);
  }

  // Distances, angles and coordinates in the file follow from the fitted features alone; zones hold points, and datum
  // frames are fitted again.
  static bool IsOfFittedGeometry(const CharacteristicPlan& plan) {
    using enum CharacteristicKind;
    return plan.kind == kDistance || plan.kind == kAngle || (plan.kind == kCoordinate && !plan.frame);
  }

  const Uncertainty* UncertaintyOfFeature(std::size_t index) const {
    const std::optional<Inspection>& inspection = m_result.features[index].inspection;
    return inspection && inspection->uncertainty ? &*inspection->uncertainty : nullptr;
  }

  Measured Relation(const CharacteristicPlan& plan, const FeatureGeometry& feature, const FeatureGeometry* to) const {
    constexpr double kRight = 90;
    const DatumFrameResult* frame = plan.frame ? &m_result.frames[*plan.frame] : nullptr;
    if (plan.kind == CharacteristicKind::kCoordinate) return MeasureCoordinate(feature, frame, plan.axis);
    if (plan.kind == CharacteristicKind::kPosition) return MeasurePosition(feature, frame, plan);
    if (to == nullptr) throw FitFailure("the characteristic has no datum");
    const FeatureGeometry& datum = *to;
    switch (plan.kind) {
      case CharacteristicKind::kDistance:
        return MeasureDistance(feature, datum);
      case CharacteristicKind::kAngle:
        return MeasureAngle(feature, datum, plan.nominal.value_or(plan.lower.value_or(0)) > kRight);
      case CharacteristicKind::kParallelism:
        return MeasureParallelism(feature, datum);
      case CharacteristicKind::kPerpendicularity:
        return MeasurePerpendicularity(feature, datum);
      case CharacteristicKind::kAngularity:
        return MeasureAngularity(feature, datum, plan.exactAngle);
      case CharacteristicKind::kSymmetry:
        return MeasureSymmetry(feature, datum);
      case CharacteristicKind::kCircularRunout:
      case CharacteristicKind::kTotalRunout:
        return MeasureRunout(feature, datum);
      case CharacteristicKind::kCoaxiality:
        return MeasureCoaxiality(feature, datum);
      default:
        return MeasureConcentricity(feature, datum);
    }
  }

  // The limits themselves are within tolerance.
  static Verdict VerdictOf(const Characteristic& result) {
    if (!result.measured) return Verdict::kFailed;
    if (!result.lower && !result.upper) return Verdict::kNoTolerance;
    const bool within =
        (!result.lower || *result.measured >= *result.lower) && (!result.upper || *result.measured <= *result.upper);
    return within ? Verdict::kWithinTolerance : Verdict::kOutOfTolerance;
  }

  void Worsen(Verdict verdict) { m_result.verdict = GraverVerdict(m_result.verdict, verdict); }

  const PartPlan& m_plan;
  PartPoints m_points;
  PartResult m_result;
  std::vector<std::optional<FeatureGeometry>> m_geometry;
  std::vector<const FeatureGeometry*> m_known;  // null where the feature failed
};

}  // namespace

const char* VerdictText(Verdict verdict) {
  switch (verdict) {
    case Verdict::kWithinTolerance:
      return "within tolerance";
    case Verdict::kOutOfTolerance:
      return "OUT OF TOLERANCE";
    case Verdict::kFailed:
      return "failed";
    default:
      return "";
  }
}

Verdict GraverVerdict(Verdict a, Verdict b) {
  return std::max(a, b);  // they stand in that order
}

PartResult EvaluatePart(const PartPlan& plan, const PartFiles& files,
                        const std::function<void(std::size_t)>& progress) {
  return PartEvaluation(plan, files).Evaluate(progress);
}
