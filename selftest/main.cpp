// Judges the library as it is installed on this machine and prints a statement of its accuracy.
// Exit code: 0 all checks hold, 1 some fail, 2 bad usage or input.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>

#include "checks.h"
#include "identity.h"
#include "report.h"

namespace {

constexpr LengthUnit kUnits[] = {{"mm", 1e3}, {"um", 1.0}, {"m", 1e6}, {"cm", 1e4}, {"in", 25.4e3}};

constexpr const char* kHelp =
    "usage: nu-selftest [OPTION]... [SET]...\n"
    "\n"
    "Judges the library that is installed on this machine: reference sets, laws of the fits, proofs of the minimax\n"
    "fits, and every bit of many results. With SETs, test sets of others are compared instead: point files NAME.ds\n"
    "with results NAME.fit beside them, or directories of such files.\n"
    "\n"
    "  --size LENGTH      largest extent of your part (100)\n"
    "  --unit UNIT        of all lengths: mm, um, m, cm, in (mm)\n"
    "  --offset LENGTH    each coordinate of the middle of your part (0)\n"
    "  --json FILE        the statement as JSON\n"
    "  --html FILE        the statement as a page\n"
    "\n"
    "of SETs:\n"
    "  --criterion NAME   ls, mz, mc or mi: how the published results were associated (ls)\n"
    "  --feature NAME     line, plane, circle, sphere, cylinder, cone or torus, where file names do not tell\n"
    "  --limit ERROR      largest permitted error, in micrometres and microradians (0.1)\n"
    "  --radii            results give radii, not diameters\n"
    "  --full-angle       results give the full angle of cones, not the half\n"
    "\n"
    "exit code: 0 all checks hold, 1 some fail, 2 bad usage or input\n";

struct Options {
  Part part;
  PublishedOptions published;
  std::string json, html;
  bool isHelp = false;
};

double Length(const std::string& option, const std::string& text, bool mayBeZero) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(value) || !(mayBeZero || value > 0.0))
    throw std::runtime_error(option + ": '" + text + "' is not " + (mayBeZero ? "a length" : "above 0"));
  return value;
}

const LengthUnit* Unit(const std::string& name) {
  for (const LengthUnit& unit : kUnits)
    if (name == unit.name) return &unit;
  throw std::runtime_error("--unit: '" + name + "' is unknown; expected mm, um, m, cm or in");
}

Options Parse(int argc, char** argv) {
  Options options;
  options.part.unit = &kUnits[0];
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    const auto value = [&]() -> std::string {
      if (i + 1 == argc) throw std::runtime_error(option + ": its value is missing");
      return argv[++i];
    };
    if (option == "--help" || option == "-h")
      options.isHelp = true;
    else if (option == "--size")
      options.part.size = Length(option, value(), false);
    else if (option == "--offset")
      options.part.offset = Length(option, value(), true);
    else if (option == "--unit")
      options.part.unit = Unit(value());
    else if (option == "--json")
      options.json = value();
    else if (option == "--html")
      options.html = value();
    else if (option == "--criterion")
      options.published.criterion = value();
    else if (option == "--feature")
      options.published.feature = value();
    else if (option == "--limit")
      options.published.limit = Length(option, value(), false);
    else if (option == "--radii")
      options.published.givesRadii = true;
    else if (option == "--full-angle")
      options.published.fullAngle = true;
    else if (option.rfind("--", 0) == 0)
      throw std::runtime_error("unknown option '" + option + "'; nu-selftest --help lists all");
    else
      options.published.paths.push_back(option);
  }
  return options;
}

void Write(const std::string& file, const std::string& text) {
  if (file.empty()) return;
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  stream.close();
  if (!stream) throw std::runtime_error(file + ": cannot be written");
}

Statement Judge(const Options& options) {
  const auto start = std::chrono::steady_clock::now();
  Statement statement;
  statement.part = options.part;
  statement.identity = Identity();
  Progress progress;
  if (!options.published.paths.empty()) {
    statement.sections.push_back(CheckPublishedSets(options.published, options.part, progress));
  } else {
    statement.sections.push_back(CheckAtPart(options.part, progress));
    statement.sections.push_back(CheckReferenceSets(progress));
    statement.sections.push_back(CheckCertificates(options.part, progress));
    statement.sections.push_back(CheckLaws(options.part, progress));
    statement.sections.push_back(CheckBits(progress, statement.identity));
  }
  statement.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return statement;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = Parse(argc, argv);
    if (options.isHelp) return std::fputs(kHelp, stdout), 0;
    const Statement statement = Judge(options);
    std::fputs(Text(statement).c_str(), stdout);
    Write(options.json, JsonText(statement));
    Write(options.html, HtmlText(statement));
    return statement.Holds() ? 0 : 1;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "nu-selftest: %s\n", e.what());
    return 2;
  }
}
