// Judges the library as it is installed on this machine and prints a statement of its accuracy.
// Exit code: 0 all checks hold, 1 some fail, 2 bad usage or input.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <new>
#include <stdexcept>

#include "checks.h"
#include "identity.h"
#include "nu/nu.h"
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
    "  --help, --version  what this is\n"
    "\n"
    "of SETs:\n"
    "  --criterion NAME   ls, mz, mc or mi: how the published results were associated (ls)\n"
    "  --feature NAME     line, plane, circle, sphere, cylinder, cone or torus, where file names do not tell\n"
    "  --limit ERROR      largest permitted error, in micrometres and microradians (0.1)\n"
    "  --radii            results give radii, not diameters\n"
    "  --full-angle       results give the full angle of cones, not the half\n"
    "\n"
    "A value may follow its option after =. What follows -- is a SET.\n"
    "exit code: 0 all checks hold, 1 some fail, 2 bad usage or input\n";

struct Options {
  Part part;
  PublishedOptions published;
  std::string json, html;
  bool isHelp = false, isVersion = false;
};

double Length(const std::string& option, const std::string& text, bool mayBeZero) {
  // Products of two lengths, and lengths in micrometres, stay finite and above rounding to 0.
  constexpr double kLeast = 1e-100, kMost = 1e100;
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  const bool isNumber = !text.empty() && *end == '\0' && std::isfinite(value);
  if (!isNumber || !(mayBeZero || value > 0.0))
    throw std::runtime_error(option + ": '" + text + "' is not " + (mayBeZero ? "a length" : "above 0"));
  if (std::fabs(value) > kMost || (!mayBeZero && value < kLeast))
    throw std::runtime_error(option + ": '" + text + "' is not between 1e-100 and 1e100");
  return value;
}

const LengthUnit* Unit(const std::string& name) {
  for (const LengthUnit& unit : kUnits)
    if (name == unit.name) return &unit;
  throw std::runtime_error("--unit: '" + name + "' is unknown; expected mm, um, m, cm or in");
}

// The words of the command line, options with = as two.
struct Words {
  std::vector<std::string> words;
  std::size_t next = 0;
  bool hasValue = false;  // the next word stood behind =

  Words(int argc, char** argv) : words(argv + std::min(argc, 1), argv + argc) {}
  bool AreLeft() const { return next < words.size(); }
  std::string Option() {
    const std::string word = words[next];
    const std::size_t equals = word.find('=');
    hasValue = word.rfind("--", 0) == 0 && equals != std::string::npos;
    if (!hasValue) return words[next++];
    words[next] = word.substr(equals + 1);
    return word.substr(0, equals);
  }
  std::string ValueOf(const std::string& option) {
    if (!AreLeft()) throw std::runtime_error(option + ": its value is missing");
    hasValue = false;
    return words[next++];
  }
};

bool TakeFlag(const std::string& option, Options& options) {
  if (option == "--help" || option == "-h")
    options.isHelp = true;
  else if (option == "--version")
    options.isVersion = true;
  else if (option == "--radii")
    options.published.givesRadii = true;
  else if (option == "--full-angle")
    options.published.fullAngle = true;
  else
    return false;
  return true;
}

void TakeValue(const std::string& option, Words& words, Options& options) {
  const auto value = [&] { return words.ValueOf(option); };
  if (option == "--size")
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
  else
    throw std::runtime_error("unknown option '" + option + "'; nu-selftest --help lists all");
}

Options Parse(int argc, char** argv) {
  Options options;
  options.part.unit = &kUnits[0];
  bool areSets = false;
  for (Words words(argc, argv); words.AreLeft();) {
    if (areSets || words.words[words.next].rfind('-', 0) != 0) {
      options.published.paths.push_back(words.words[words.next++]);
      continue;
    }
    const std::string option = words.Option();
    areSets = option == "--" && !words.hasValue;
    if (areSets) continue;
    const bool isFlag = TakeFlag(option, options);
    if (!isFlag) TakeValue(option, words, options);
    if (words.hasValue) throw std::runtime_error(option + ": it takes no value");
  }
  return options;
}

// The reference sets have deviations down to 3e-8 of their size. Places up to this many sizes away leave them above the
// rounding of the coordinates.
void RequireResolved(const Part& part) {
  constexpr double kSizes = 1e8;
  char text[200];
  if (part.size < kSizes * NuGetLengthTol()) {
    std::snprintf(text, sizeof text,
                  "--size: %g %s is too small, as the library takes coordinates within %g %s for equal; from %g %s on, "
                  "sizes are judged",
                  part.size, part.unit->name, NuGetLengthTol(), part.unit->name, kSizes * NuGetLengthTol(),
                  part.unit->name);
    throw std::runtime_error(text);
  }
  if (std::fabs(part.offset) > kSizes * part.size) {
    std::snprintf(text, sizeof text,
                  "--offset: at %g %s doubles are %.1g %s apart, too coarse for a part of %g %s; offsets up to 1e8 "
                  "sizes are judged",
                  part.offset, part.unit->name,
                  std::nextafter(std::fabs(part.offset), HUGE_VAL) - std::fabs(part.offset), part.unit->name, part.size,
                  part.unit->name);
    throw std::runtime_error(text);
  }
}

std::string VersionText() {
  return "nu-selftest, on Nu " + std::to_string(NuMajorVersionLabel) + "." + std::to_string(NuMinorVersionLabel) + "." +
         std::to_string(NuBuildVersionLabel) + "\n";
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
    if (options.isVersion) return std::fputs(VersionText().c_str(), stdout), 0;
    if (options.published.paths.empty()) RequireResolved(options.part);
    const Statement statement = Judge(options);
    std::fputs(Text(statement).c_str(), stdout);
    Write(options.json, JsonText(statement));
    Write(options.html, HtmlText(statement));
    return statement.Holds() ? 0 : 1;
  } catch (const std::bad_alloc&) {
    return std::fputs("nu-selftest: not enough memory\n", stderr), 2;
  } catch (const CNuMemoryException&) {
    return std::fputs("nu-selftest: not enough memory\n", stderr), 2;
  } catch (const CNuException& e) {
    return std::fprintf(stderr, "nu-selftest: %s, cause %d\n", e.m_szWhat, e.GetCause()), 2;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "nu-selftest: %s\n", e.what());
    return 2;
  }
}
