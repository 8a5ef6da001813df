// Fits an ideal feature to a file of measured points and reports its form deviation: as a table, as a picture, as JSON,
// and as the exit code.

#include <cstdio>
#include <exception>
#include <new>

#include "methods.h"
#include "options.h"
#include "output_file.h"
#include "pictures.h"
#include "point_file.h"
#include "report.h"
#include "text.h"

namespace {

enum ExitCode { kWithinTolerance = 0, kOutOfTolerance = 1, kBadInput = 2, kFitFailed = 3 };

void Print(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (!written || std::fflush(stdout) != 0) throw InputError("standard output cannot be written");
}

void RefuseOverwriting(const Options& options) {
  const bool hitsInput = (!options.svg.empty() && SameFile(options.svg, options.file)) ||
                         (!options.json.empty() && SameFile(options.json, options.file));
  if (hitsInput) throw InputError("--svg and --json: would overwrite FILE");
  if (!options.svg.empty() && !options.json.empty() && SameFile(options.svg, options.json)) {
    throw InputError("--svg and --json: name the same file");
  }
}

ExitCode Run(const Options& options) {
  const Method method = FindMethod(options.feature, options.criterion);
  RefuseOverwriting(options);
  const PointFile file = ReadPointFile(options.file, options.reading);
  const Inspection inspection = Inspect(method, file.points);
  const ReportContext context{options.file, options.unit, options.tolerance, &file};
  const std::vector<Row> rows = ReportRows(inspection, context);
  Print(Printable(options.file) + "\n" + Table(rows));
  if (!options.svg.empty())
    WriteFile(options.svg, method.draw(inspection, {FileName(options.file), options.unit, rows}));
  if (!options.json.empty()) WriteFile(options.json, Json(inspection, context));
  return context.WithinTolerance(inspection) ? kWithinTolerance : kOutOfTolerance;
}

ExitCode Complain(const char* text, ExitCode code) {
  std::fprintf(stderr, "inspect: %s\n", text);
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = ParseOptions(argc, argv);
    if (!options.help) return Run(options);
    Print(HelpText());
    return kWithinTolerance;
  } catch (const FitFailure& failure) {
    return Complain(failure.what(), kFitFailed);
  } catch (const InputError& error) {
    return Complain(error.what(), kBadInput);
  } catch (const std::bad_alloc&) {
    return Complain("not enough memory for these points", kBadInput);
  } catch (const std::exception& error) {
    return Complain(error.what(), kBadInput);
  }
}
