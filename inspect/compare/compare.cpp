#include "compare/compare.h"

#include <algorithm>
#include <cstdio>

#include "compare/comparison_picture.h"
#include "evaluate/methods.h"
#include "report/output_file.h"
#include "report/table.h"
#include "text.h"

namespace {

// A line for each quantity with a column for each criterion.
class ComparisonTable {
 public:
  void Add(const std::vector<Row>& rows) {
    ++m_columns;
    for (const Row& row : rows) {
      if (!IsCompared(row.name)) continue;
      auto line = std::find_if(m_lines.begin(), m_lines.end(), [&](const auto& each) { return each[0] == row.name; });
      if (line == m_lines.end()) line = m_lines.insert(m_lines.end(), {row.name});
      line->resize(m_columns);
      line->push_back(row.unit.empty() || row.unit == " " ? row.value : row.value + " " + row.unit);
    }
  }

  std::string Text() const { return Grid(m_lines); }

 private:
  // The rest is the same for all, or about one alone.
  static bool IsCompared(const std::string& name) {
    constexpr const char* kOthers[] = {
        "feature",     "points",      "columns",         "unit",       "filter", "uncertainties", "degrees of freedom",
        "certificate", "explanation", "time of the fit", "peaks point"};
    return !name.starts_with("u(") && !name.starts_with("on the ") &&
           std::find(std::begin(kOthers), std::end(kOthers), name) == std::end(kOthers);
  }

  std::size_t m_columns = 0;
  std::vector<std::vector<std::string>> m_lines;
};

}  // namespace

ExitCode RunCompare(const Options& options) {
  if (options.files.size() != 1 || options.features.size() != 1) {
    throw InputError("'inspect compare' takes one FILE and one feature");
  }
  const std::string& file = options.files.front();
  const std::string shown = file == "-" ? "standard input" : Printable(FileName(file));
  const std::vector<Method> methods = FindMethods(options.features, {"all"});
  if (!options.svg.empty() && FileKey(options.svg) == FileKey(file)) throw InputError("--svg would overwrite FILE");
  const PointFile points = ReadPointFile(file, options.reading);
  ExitCode code = kWithinTolerance;
  ComparisonTable table;
  std::vector<Inspection> inspections;
  for (const Method& method : methods) {
    try {
      inspections.push_back(Inspect(method, points.points, {options.boxes, options.filter}));
    } catch (const FitFailure& failure) {
      code = Complain((shown + ", " + method.terms.criterion + ": " + failure.what()).c_str(), kFitFailed);
      continue;
    }
    const ReportContext context{file, &points, options.tolerance, options.material};
    table.Add(ReportRows(inspections.back(), context));
    if (!context.WithinTolerance(inspections.back())) code = GraverCode(code, kOutOfTolerance);
  }
  const std::string head = shown + ", " + methods.front().terms.feature + ", " + std::to_string(points.points.size()) +
                           " points, columns " + ColumnsText(points) + ", unit " + UnitText(points) + "\n";
  const std::string text = head + table.Text();
  if (options.svg == "-") {
    std::fwrite(text.data(), 1, text.size(), stderr);
  } else {
    Print(text);
  }
  const bool drawn = !inspections.empty() && inspections.front().terms.letter == "G";
  if (!options.svg.empty() && drawn) {
    const std::string path = MeansDirectory(options.svg) ? InDirectory(options.svg, "comparison.svg") : options.svg;
    if (MeansDirectory(options.svg)) MakeDirectory(options.svg);
    WriteFile(path, DrawComparison(inspections, shown, *points.unit));
  }
  return code;
}
