#include "batch/run_plan.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <thread>

#include "batch/batch.h"
#include "batch/charts.h"
#include "batch/part_text.h"
#include "batch/statistics.h"
#include "batch/watch.h"
#include "input/progress.h"
#include "plan/plan_reader.h"
#include "report/output_file.h"
#include "report/part_report.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

// A name of the command line or of the plan; what the plan names lies beside it.
std::string OutputPath(const std::string& given, const std::string& planned, const PartPlan& plan) {
  if (!given.empty() || planned.empty()) return given;
  return planned == "-" ? planned : (fs::path(plan.path).parent_path() / planned).string();
}

// A name as a file name: letters, digits, dots and hyphens stay.
std::string FileNameOf(const std::string& name) {
  std::string file;
  for (const char c : name) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                       c == '-' || (static_cast<unsigned char>(c) & 0x80U) != 0;
    file += plain ? c : '-';
  }
  return file.front() == '.' ? "-" + file : file;
}

std::string StemOf(const std::string& path) {
  const fs::path name = fs::path(path).filename().empty() ? fs::path(path).parent_path().filename()  // "parts/7/"
                                                          : fs::path(path).filename();
  std::string stem = name.stem().string();
  if (Lower(name.extension().string()) == ".gz") stem = fs::path(stem).stem().string();
  return stem.empty() ? path : stem;
}

ExitCode CodeOf(const PartResult& part) {
  if (part.isBadInput) return kBadInput;
  if (part.verdict == Verdict::kFailed) return kFitFailed;
  return part.verdict == Verdict::kOutOfTolerance ? kOutOfTolerance : kWithinTolerance;
}

class PlanRun {
 public:
  PlanRun(const Options& options, PartPlan plan) : m_options(options) {
    m_files.html = OutputPath(options.html, plan.html, plan);
    m_files.json = OutputPath(options.json, plan.json, plan);
    m_files.csv = OutputPath(options.csv, plan.csv, plan);
    m_files.qif = OutputPath(options.qif, plan.qif, plan);
    m_svg = OutputPath(options.svg, plan.svg, plan);
    if (!m_svg.empty() && !MeansDirectory(m_svg)) m_svg += "/";
    m_report.plan = std::move(plan);
    m_parts = {options.files.begin() + 1, options.files.end()};
    Check();
  }

  ExitCode Execute() {
    if (!m_options.watch.empty()) return Watch();
    if (m_parts.size() < 2) return InspectPart();
    std::vector<PartFiles> parts;
    for (const std::string& path : m_parts) parts.push_back(FilesOf(path));
    m_report.parts = Evaluate(parts);
    ReportBatch();
    return m_code;
  }

 private:
  // Throws InputError if parts are given as what the plan cannot take, or an output would overwrite something.
  void Check() const {
    const PartPlan& plan = m_report.plan;
    for (const std::string& part : m_parts) {
      if (IsDirectory(part)) continue;
      for (const FeaturePlan& feature : plan.features) {
        if (feature.source.file.empty()) continue;
        throw InputError(Printable(plan.path) + ":" + std::to_string(feature.line) + ": feature '" +
                         Printable(feature.name) + "' names its own point file: give parts as directories that hold " +
                         "such files, not as '" + Printable(part) + "'");
      }
    }
    std::map<std::string, std::string> taken;
    const auto claim = [&taken](const std::string& path, const std::string& what) {
      if (path.empty()) return;
      const auto [place, isNew] = taken.insert({FileKey(path), what});
      if (!isNew) throw InputError(what + " '" + Printable(path) + "' would overwrite " + place->second);
    };
    for (const std::string& file : m_options.files) claim(file, "FILE");
    if (m_parts.empty()) ClaimPoints(claim);
    claim(m_files.html, "--html");
    claim(m_files.json, "--json");
    claim(m_files.csv, "--csv");
    claim(m_files.qif, "--qif");
  }

  template<typename Claim>
  void ClaimPoints(const Claim& claim) const {
    const PartPlan& plan = m_report.plan;
    std::set<std::string> names = {plan.points};
    for (const FeaturePlan& feature : plan.features) names.insert(feature.source.file);
    for (const std::string& name : names) {
      if (!name.empty() && name != "-") claim((fs::path(plan.path).parent_path() / name).string(), "the points");
    }
  }

  static bool IsDirectory(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
  }

  PartFiles FilesOf(const std::string& path) const {
    PartFiles files;
    files.name = StemOf(path);
    const auto sameName = [&](const std::string& other) { return other != path && StemOf(other) == files.name; };
    if (std::any_of(m_parts.begin(), m_parts.end(), sameName)) files.name = path;
    (IsDirectory(path) ? files.directory : files.points) = path;
    return files;
  }

  template<typename Step>
  void Attempt(const Step& step) {
    try {
      step();
    } catch (const std::exception& error) {
      Complain(error.what(), kBadInput);
      m_code = kBadInput;
    }
  }

  void Take(ExitCode code) { m_code = GraverCode(m_code, code); }

  // To standard error where standard output carries a report.
  void Say(const std::string& text) {
    const bool isTaken = m_files.html == "-" || m_files.json == "-" || m_files.csv == "-" || m_files.qif == "-";
    if (isTaken) {
      std::fwrite(text.data(), 1, text.size(), stderr);
    } else {
      Attempt([&text] { Print(text); });
    }
  }

  // What failed, a line each; what follows from another failure is left out.
  void Explain(const PartResult& part) const {
    const auto tell = [this, &part](const std::string& failure) {
      const std::string subject = m_report.parts.size() > 1 ? Printable(part.name) + ": " : "";
      Complain((subject + failure).c_str(), kFitFailed);
    };
    const auto follows = [](const std::string& failure) { return failure.find("' failed") != std::string::npos; };
    if (!part.failure.empty()) tell(part.failure);
    for (const std::string& failure : FeatureFailures(part)) tell(failure);
    for (const DatumFrameResult& frame : part.frames) {
      if (!frame.failure.empty() && !follows(frame.failure)) tell(frame.failure);
    }
    for (const Characteristic& each : part.characteristics) {
      if (each.failure.empty() || follows(each.failure) || each.failure == part.failure) continue;
      tell("'" + Printable(each.name) + "': " + each.failure);
    }
  }

  ExitCode InspectPart() {
    const PartPlan& plan = m_report.plan;
    PartFiles files;
    if (m_parts.empty()) {
      files.name = plan.title.empty() ? StemOf(plan.path) : plan.title;
    } else {
      files = FilesOf(m_parts.front());
    }
    {
      Progress progress("features");
      const auto count = static_cast<double>(plan.features.size());
      m_report.parts = {
          EvaluatePart(plan, files, [&](std::size_t done) { progress.Show(static_cast<double>(done) / count); })};
    }
    const PartResult& part = m_report.parts.front();
    Say(PartText(plan, part));
    Explain(part);
    Take(CodeOf(part));
    if (!m_svg.empty()) DrawFeatures(part);
    Attempt([this] { WriteReport(m_report, m_files); });
    return m_code;
  }

  void DrawFeatures(const PartResult& part) {
    const PartPlan& plan = m_report.plan;
    Attempt([this] { MakeDirectory(m_svg); });
    for (std::size_t i = 0; i < part.features.size(); ++i) {
      const FeatureResult& feature = part.features[i];
      if (!feature.inspection) continue;
      const ReportContext context{feature.source, &feature.points, FormTolerance(i), plan.features[i].material};
      const PictureLabels labels{
          feature.name, *plan.unit, ReportRows(*feature.inspection, context),
          feature.source + "; columns " + ColumnsText(feature.points) + "; unit " + UnitText(feature.points)};
      Attempt([&] {
        WriteFile(InDirectory(m_svg, FileNameOf(feature.name) + ".svg"),
                  plan.features[i].method.draw(*feature.inspection, labels));
      });
    }
  }

  std::optional<double> FormTolerance(std::size_t feature) const {
    for (const CharacteristicPlan& plan : m_report.plan.characteristics) {
      if (plan.feature == feature && plan.kind == CharacteristicKind::kForm && plan.upper) return plan.upper;
    }
    return std::nullopt;
  }

  std::vector<PartResult> Evaluate(const std::vector<PartFiles>& parts) const {
    Progress progress("parts", Progress::Bar::kFromTheStart);
    const auto count = static_cast<double>(parts.size());
    return EvaluateParts(m_report.plan, parts,
                         [&](std::size_t done) { progress.Show(static_cast<double>(done) / count); });
  }

  void ReportBatch() {
    m_report.capabilities = CapabilitiesOf(m_report.plan, m_report.parts);
    Say(BatchText(m_report));
    for (const PartResult& part : m_report.parts) {
      Explain(part);
      Take(CodeOf(part));
    }
    if (!m_svg.empty()) DrawBatch();
    Attempt([this] { WriteReport(m_report, m_files); });
  }

  void DrawBatch() {
    Attempt([this] { MakeDirectory(m_svg); });
    for (std::size_t i = 0; i < m_report.plan.characteristics.size(); ++i) {
      const std::string name = FileNameOf(m_report.plan.characteristics[i].name);
      Attempt([&] { WriteFile(InDirectory(m_svg, name + "-trend.svg"), DrawTrend(m_report, i)); });
      Attempt([&] { WriteFile(InDirectory(m_svg, name + "-histogram.svg"), DrawHistogram(m_report, i)); });
    }
  }

  // Until there are as many parts as the user waits for, the time given is over, or the user ends the program.
  ExitCode Watch() {
    constexpr auto kPause = std::chrono::milliseconds(250);
    using Clock = std::chrono::steady_clock;
    const bool own = std::any_of(m_report.plan.features.begin(), m_report.plan.features.end(),
                                 [](const FeaturePlan& feature) { return !feature.source.file.empty(); });
    WatchedDirectory directory(m_options.watch, own);
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(m_options.watchSeconds.value_or(0)));
    for (;;) {
      const std::vector<std::string> names = directory.Look();
      if (!names.empty()) TakeLanded(names);
      const auto parts = static_cast<long>(m_report.parts.size());
      if (m_options.watchParts > 0 && parts >= m_options.watchParts) return m_code;
      if (m_options.watchSeconds && Clock::now() >= end) return m_code;
      std::this_thread::sleep_for(kPause);
    }
  }

  // A part that landed again takes its old place.
  void TakeLanded(const std::vector<std::string>& names) {
    std::vector<PartFiles> landed;
    for (const std::string& name : names) {
      landed.push_back(FilesOf(InDirectory(m_options.watch, name)));
      landed.back().name = name;
    }
    for (PartResult& part : Evaluate(landed)) {
      const auto isSame = [&part](const PartResult& other) { return other.name == part.name; };
      const auto old = std::find_if(m_report.parts.begin(), m_report.parts.end(), isSame);
      if (old == m_report.parts.end()) {
        m_report.parts.push_back(std::move(part));
      } else {
        *old = std::move(part);
      }
    }
    m_code = kWithinTolerance;
    ReportBatch();
  }

  const Options& m_options;
  PartReport m_report;
  ReportFiles m_files;
  std::string m_svg;
  std::vector<std::string> m_parts;
  ExitCode m_code = kWithinTolerance;
};

}  // namespace

ExitCode RunPlan(const Options& options) {
  const bool partsAreGiven = options.files.size() > 1 || !options.watch.empty();
  return PlanRun(options, ReadPlan(options.files.front(), partsAreGiven)).Execute();
}
