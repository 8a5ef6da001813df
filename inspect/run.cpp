#include "run.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <map>
#include <new>
#include <utility>

#include "batch/run_plan.h"
#include "compare/compare.h"
#include "evaluate/methods.h"
#include "picture/pictures.h"
#include "plan/plan_template.h"
#include "report/json.h"
#include "report/output_file.h"
#include "report/part_report.h"
#include "report/table.h"
#include "text.h"

namespace {

std::string Stem(const std::string& file) {
  const std::string name = file == "-" ? "stdin" : FileName(file);
  const std::size_t dot = name.find_last_of('.');
  return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// Where the picture of a result goes; empty for none.
std::string PicturePath(const Options& options, const std::string& file, const Method& method) {
  if (options.svg.empty() || !MeansDirectory(options.svg)) return options.svg;
  return InDirectory(options.svg, Stem(file) + "-" + method.terms.feature + "-" + method.option + ".svg");
}

// Throws InputError if an output would be written over an input or over another output.
void RefuseOverwriting(const Options& options, const std::vector<Method>& methods) {
  std::map<std::string, const char*> taken;
  const auto claim = [&taken](const std::string& path, const char* what) {
    const auto [place, isNew] = taken.insert({FileKey(path), what});
    if (!isNew) throw InputError(std::string(what) + " '" + Printable(path) + "' would overwrite " + place->second);
  };
  for (const std::string& file : options.files) {
    if (file != "-") claim(file, "FILE");
  }
  if (!options.json.empty()) claim(options.json, "--json");
  if (!options.html.empty()) claim(options.html, "--html");
  if (!options.csv.empty()) claim(options.csv, "--csv");
  if (!options.qif.empty()) claim(options.qif, "--qif");
  if (options.svg.empty()) return;
  const std::size_t pictures = options.files.size() * methods.size();
  if (pictures > 1 && !MeansDirectory(options.svg)) {
    throw InputError("--svg: " + std::to_string(pictures) + " pictures need a directory; give --svg DIR/");
  }
  for (const std::string& file : options.files) {
    for (const Method& method : methods) claim(PicturePath(options, file, method), "--svg");
  }
}

// The forms of separate features as the report of a part, each a characteristic.
class FormReport {
 public:
  void Add(const Method& method, const std::string& file, const PointFile& points, std::optional<Inspection> inspection,
           const std::string& error, const Options& options) {
    PartPlan& plan = m_report.plan;
    PartResult& part = m_report.parts[0];
    if (part.features.empty()) plan.unit = points.unit;
    plan.title = plan.title.empty() || plan.title == FileName(file) ? FileName(file) : "Form deviations";
    part.name = plan.title;
    FeaturePlan feature;
    feature.name = FileName(file) + ", " + method.terms.feature + ", " + method.terms.criterion;
    feature.method = method;
    feature.material = options.material;
    Characteristic form = FormOf(feature, points, inspection, options);
    form.failure = error;
    CharacteristicPlan characteristic;
    characteristic.name = form.name;
    characteristic.feature = plan.features.size();
    characteristic.upper = options.tolerance;
    FeatureResult result;
    result.name = feature.name;
    result.points = points;
    result.source = file;
    result.failure = error;
    result.inspection = std::move(inspection);
    part.verdict = GraverVerdict(part.verdict, form.verdict);
    part.features.push_back(std::move(result));
    part.characteristics.push_back(std::move(form));
    plan.features.push_back(std::move(feature));
    plan.characteristics.push_back(std::move(characteristic));
  }

  const PartReport& Report() const { return m_report; }

 private:
  static Characteristic FormOf(const FeaturePlan& feature, const PointFile& points,
                               const std::optional<Inspection>& inspection, const Options& options) {
    Characteristic form;
    form.name = feature.method.terms.form + " of " + feature.name;
    form.kind = feature.method.terms.form;
    form.feature = feature.name;
    form.unit = points.unit->symbol;
    form.decimals = points.unit->decimals;
    form.upper = options.tolerance;
    form.verdict = Verdict::kFailed;
    if (inspection) {
      form.symbol = inspection->terms.symbol.empty() ? "" : inspection->terms.symbol + "t";
      form.measured = inspection->form;
      form.evaluation = EvaluationText(*inspection);
      form.verdict = !options.tolerance                       ? Verdict::kNoTolerance
                     : inspection->form <= *options.tolerance ? Verdict::kWithinTolerance
                                                              : Verdict::kOutOfTolerance;
    }
    return form;
  }

  PartReport m_report{{}, {PartResult{}}, {}};
};

class Inspector {
 public:
  Inspector(const Options& options, std::vector<Method> methods)
      : m_options(options),
        m_methods(std::move(methods)),
        m_stdoutIsTaken(options.svg == "-" || options.json == "-" || options.html == "-" || options.csv == "-" ||
                        options.qif == "-") {}

  ExitCode Execute() {
    if (!m_options.svg.empty() && MeansDirectory(m_options.svg)) Attempt([this] { MakeDirectory(m_options.svg); });
    for (const std::string& file : m_options.files) InspectFile(file);
    if (m_summary.size() > 1) Say("\nsummary\n" + Grid(m_summary));
    if (!m_options.json.empty()) Attempt([this] { WriteFile(m_options.json, JsonDocument(m_results)); });
    if (WantsPage())
      Attempt([this] { WriteReport(m_page.Report(), {m_options.html, "", m_options.csv, m_options.qif}); });
    return m_code;
  }

 private:
  // Runs a step; one that fails is told to the user and counts for the exit code. Returns what went wrong, empty if
  // nothing did.
  template<typename Step>
  std::string Attempt(const Step& step) {
    try {
      step();
      return "";
    } catch (const FitFailure& failure) {
      return Take(failure.what(), kFitFailed);
    } catch (const CNuMemoryException&) {
      return Take(kNoMemory, kBadInput);
    } catch (const std::bad_alloc&) {
      return Take(kNoMemory, kBadInput);
    } catch (const std::exception& error) {
      return Take(error.what(), kBadInput);
    }
  }

  std::string Take(const std::string& error, ExitCode code) {
    m_code = GraverCode(m_code, Complain(error.c_str(), code));
    return error;
  }

  // To standard error where standard output carries a picture or JSON.
  void Say(const std::string& text) {
    if (m_stdoutIsTaken) {
      std::fwrite(text.data(), 1, text.size(), stderr);
    } else if (!m_stdoutFailed) {
      m_stdoutFailed = !Attempt([&text] { Print(text); }).empty();
    }
  }

  void InspectFile(const std::string& file) {
    PointFile points;
    const std::string error = Attempt([&] {
      points = ReadPointFile(file, m_options.reading);
      RequireUnitOfTolerance(*points.unit, file);
    });
    if (!error.empty()) {
      for (const Method& method : m_methods) AddToPage(method, file, {}, std::nullopt, error);
      return AddFailure(file, "", "", error);
    }
    for (const Method& method : m_methods) InspectBy(method, file, points);
  }

  // The tolerance is one number for all files.
  void RequireUnitOfTolerance(const LengthUnit& unit, const std::string& file) {
    if (!m_options.tolerance) return;
    if (m_unit == nullptr) m_unit = &unit;
    if (m_unit == &unit) return;
    throw InputError(Printable(file) + ": is in " + unit.name + ", the files before in " + m_unit->name +
                     ": --tolerance cannot serve both, inspect this one alone");
  }

  void InspectBy(const Method& method, const std::string& file, const PointFile& points) {
    Inspection inspection;
    const std::string error = Attempt([&] { inspection = InspectNamingFile(method, file, points); });
    if (!error.empty()) {
      AddToPage(method, file, points, std::nullopt, error);
      return AddFailure(file, method.terms.feature, method.terms.criterion, error);
    }
    const ReportContext context{file, &points, m_options.tolerance, m_options.material};
    const std::vector<Row> rows = ReportRows(inspection, context);
    Say((m_summary.empty() ? "" : "\n") + Printable(ShownName(file)) + "\n" + Table(rows));
    if (!m_options.svg.empty()) {
      const PictureLabels labels{FileName(ShownName(file)), *points.unit, rows,
                                 "columns " + ColumnsText(points) + "; unit " + UnitText(points)};
      Attempt([&] { WriteFile(PicturePath(m_options, file, method), method.draw(inspection, labels)); });
    }
    if (!context.WithinTolerance(inspection)) m_code = GraverCode(m_code, kOutOfTolerance);
    AddResult(inspection, context);
    AddToPage(method, file, points, std::move(inspection), "");
  }

  bool WantsPage() const { return !m_options.html.empty() || !m_options.csv.empty() || !m_options.qif.empty(); }

  void AddToPage(const Method& method, const std::string& file, const PointFile& points,
                 std::optional<Inspection> inspection, const std::string& error) {
    if (!WantsPage()) return;
    m_page.Add(method, ShownName(file), points, std::move(inspection), error, m_options);
  }

  Inspection InspectNamingFile(const Method& method, const std::string& file, const PointFile& points) const {
    try {
      return Inspect(method, points.points, {m_options.boxes, m_options.filter});
    } catch (const FitFailure& failure) {
      throw FitFailure(Printable(ShownName(file)) + ", " + method.terms.criterion + ": " + failure.what());
    }
  }

  static std::string ShownName(const std::string& file) { return file == "-" ? "standard input" : file; }

  void AddResult(const Inspection& inspection, const ReportContext& context) {
    const LengthUnit& unit = *context.points->unit;
    const char* verdict = !m_options.tolerance                  ? ""
                          : context.WithinTolerance(inspection) ? "within tolerance"
                                                                : "OUT OF TOLERANCE";
    m_summary.push_back({Printable(ShownName(context.file)), inspection.terms.feature, inspection.terms.criterion,
                         inspection.terms.form, Fixed(inspection.form, unit.decimals) + " " + unit.symbol, verdict});
    if (!m_options.json.empty()) m_results.push_back(JsonResult(inspection, context));
  }

  void AddFailure(const std::string& file, const std::string& feature, const std::string& criterion,
                  const std::string& error) {
    m_summary.push_back({Printable(ShownName(file)), feature, criterion, "failed"});
    m_results.push_back(JsonFailure(file, feature, criterion, error));
  }

  const Options& m_options;
  std::vector<Method> m_methods;
  bool m_stdoutIsTaken;
  bool m_stdoutFailed = false;
  ExitCode m_code = kWithinTolerance;
  const LengthUnit* m_unit = nullptr;
  std::vector<std::vector<std::string>> m_summary;
  std::vector<std::string> m_results;  // JSON
  FormReport m_page;
};

}  // namespace

ExitCode Complain(const char* text, ExitCode code) {
  std::fprintf(stderr, "inspect: %s\n", text);
  return code;
}

namespace {

std::terminate_handler formerHandler = nullptr;

[[noreturn]] void Terminate() {
  try {
    if (const std::exception_ptr cause = std::current_exception()) std::rethrow_exception(cause);
  } catch (const std::bad_alloc&) {
    std::_Exit(Complain(kOutOfMemory, kBadInput));
  } catch (...) {
    // the former handler names it
  }
  if (formerHandler != nullptr) formerHandler();
  std::abort();
}

}  // namespace

void ComplainOfMemoryAtTermination() {
  formerHandler = std::set_terminate(Terminate);
}

namespace {

// A plan that is there already holds somebody's work.
ExitCode WritePlan(const Options& options) {
  const std::string& output = options.output;
  if (!output.empty() && output != "-" && std::filesystem::exists(output)) {
    throw InputError("--output: '" + Printable(output) + "' is there already; remove it or give another name");
  }
  const std::string plan = PlanFor(options.files.front(), options.reading, output == "-" ? "" : output);
  if (output.empty() || output == "-") {
    Print(plan);
  } else {
    WriteFile(output, plan);
  }
  return kWithinTolerance;
}

}  // namespace

ExitCode GraverCode(ExitCode a, ExitCode b) {
  constexpr ExitCode kByGravity[] = {kBadInput, kFitFailed, kOutOfTolerance};
  for (const ExitCode code : kByGravity) {
    if (a == code || b == code) return code;
  }
  return kWithinTolerance;
}

ExitCode Run(const Options& options) {
  if (options.mode == Mode::kPlan) return RunPlan(options);
  if (options.mode == Mode::kInit) return WritePlan(options);
  if (options.mode == Mode::kCompare) return RunCompare(options);
  std::vector<Method> methods = FindMethods(options.features, options.criteria);
  RefuseOverwriting(options, methods);
  return Inspector(options, std::move(methods)).Execute();
}
