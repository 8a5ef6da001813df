#include "options.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "evaluate/methods.h"
#include "evaluate/roundness_filter.h"
#include "plan/plan_reader.h"
#include "text.h"

namespace {

using Setter = void (*)(Options&, std::string_view);

constexpr unsigned kFit = static_cast<unsigned>(Mode::kFit);
constexpr unsigned kPlan = static_cast<unsigned>(Mode::kPlan);
constexpr unsigned kInit = static_cast<unsigned>(Mode::kInit);
constexpr unsigned kCompare = static_cast<unsigned>(Mode::kCompare);
constexpr unsigned kReading = kFit | kInit | kCompare;
constexpr unsigned kAll = kReading | kPlan;

struct Option {
  unsigned modes;  // in which it means something
  const char* name;
  const char* argument;  // null: none
  const char* help;
  Setter set;
};

void SetTolerance(Options& options, std::string_view text) {
  double tolerance = 0;
  if (!ParseNumber(text, &tolerance) || tolerance < 0) {
    throw InputError("--tolerance: '" + Printable(text) + "' is not a length; expected a number such as 0.02");
  }
  options.tolerance = tolerance;
}

void SetUnit(Options& options, std::string_view text) {
  options.reading.unit = FindUnit(text);
  if (options.reading.unit == nullptr) {
    throw InputError("--unit: '" + Printable(text) + "' is unknown; expected one of " + UnitNames());
  }
}

void SetMaterial(Options& options, std::string_view text) {
  const std::string side = Lower(text);
  if (side != "inside" && side != "outside") {
    throw InputError("--material: '" + Printable(text) + "' is no side; expected inside or outside");
  }
  options.material = side == "inside" ? Material::kInside : Material::kOutside;
}

// The words between commas; throws InputError if one is empty.
std::vector<std::string> List(const char* option, std::string_view text) {
  std::vector<std::string> words;
  for (;;) {
    const std::size_t comma = text.find(',');
    if (text.substr(0, comma).empty()) throw InputError(std::string(option) + ": a name between commas is empty");
    words.emplace_back(text.substr(0, comma));
    if (comma == std::string_view::npos) return words;
    text.remove_prefix(comma + 1);
  }
}

// A number that counts columns, or a name, which is not a number.
bool MayBeColumn(const std::string& word) {
  constexpr long kLargestColumn = 10000;
  long column = 0;
  double number = 0;
  return ParseWhole(word, &column) ? column >= 1 && column <= kLargestColumn : !ParseNumber(word, &number);
}

void SetColumns(Options& options, std::string_view text) {
  const std::vector<std::string> columns = List("--columns", text);
  const bool good = std::all_of(columns.begin(), columns.end(), MayBeColumn);
  if (!good || columns.size() < 2 || columns.size() > 3) {
    throw InputError("--columns: '" + Printable(text) +
                     "' is not a list of two or three columns such as 2,3,4 or ActX,ActY,ActZ");
  }
  if (std::set<std::string>(columns.begin(), columns.end()).size() < columns.size()) {
    throw InputError("--columns: '" + Printable(text) + "' names a column twice");
  }
  options.reading.columns = columns;
}

void SetBoxes(Options& options, std::string_view text) {
  if (!ParseWhole(text, &options.boxes) || options.boxes < 1) {
    throw InputError("--prove: '" + Printable(text) + "' is not a number of boxes; expected one such as 100000");
  }
}

void SetSkip(Options& options, std::string_view text) {
  if (!ParseWhole(text, &options.reading.skipLines) || options.reading.skipLines < 0) {
    throw InputError("--skip: '" + Printable(text) + "' is not a number of lines");
  }
}

void SetFilter(Options& options, std::string_view text) {
  long cutoff = 0;
  if (!ParseWhole(text, &cutoff) || cutoff < 1 || cutoff > kLargestFilter) {
    throw InputError("--filter: '" + Printable(text) +
                     "' is not a number of undulations per revolution; expected one such as 15, 50 or 150");
  }
  options.filter = static_cast<int>(cutoff);
}

void SetParts(Options& options, std::string_view text) {
  if (!ParseWhole(text, &options.watchParts) || options.watchParts < 1) {
    throw InputError("--parts: '" + Printable(text) + "' is not a number of parts");
  }
}

void SetSeconds(Options& options, std::string_view text) {
  constexpr double kLongest = 1e9;  // some thirty years
  double seconds = 0;
  if (!ParseNumber(text, &seconds) || seconds < 0 || seconds > kLongest) {
    throw InputError("--for: '" + Printable(text) + "' is not a number of seconds");
  }
  options.watchSeconds = seconds;
}

constexpr Option kOptions[] = {
    {kFit | kCompare, "--feature", "NAMES", "line, plane, circle, sphere, ... (required); several between commas",
     [](Options& options, std::string_view text) { options.features = List("--feature", text); }},
    {kFit, "--criterion", "NAMES",
     "ls least squares (default), mz minimum zone, mc minimum circumscribed,\n"
     "mi maximum inscribed, or all; several between commas",
     [](Options& options, std::string_view text) { options.criteria = List("--criterion", text); }},
    {kFit | kCompare, "--tolerance", "T", "largest permitted form deviation, in the unit of the file", SetTolerance},
    {kFit | kPlan | kCompare, "--svg", "FILE",
     "draw the deviations; a directory (DIR/) takes the pictures of several results",
     [](Options& options, std::string_view text) { options.svg = text; }},
    {kFit | kPlan, "--json", "FILE", "write the results for programs",
     [](Options& options, std::string_view text) { options.json = text; }},
    {kReading, "--columns", "I,J,K", "the columns of x, y and perhaps z: numbers from 1 on, or names in the header",
     SetColumns},
    {kReading, "--unit", "U",
     "unit of the coordinates, in place of what the header says, else mm: mm, um, nm, cm, m, in", SetUnit},
    {kReading, "--decimal-comma", nullptr, "numbers are written 12,5",
     [](Options& options, std::string_view) { options.reading.decimalComma = true; }},
    {kReading, "--skip", "N", "pass over the first N lines", SetSkip},
    {kFit | kCompare, "--material", "SIDE",
     "inside the feature, as of a shaft (default), or outside, as of a bore: peaks point away", SetMaterial},
    {kFit | kCompare, "--prove", "N",
     "look for a better minimum zone or circumscribed feature anywhere, in N boxes of\n"
     "parameters at most, and say how far from the best of all the result may be",
     SetBoxes},
    {kFit | kCompare, "--filter", "N",
     "roundness after the Gaussian filter of ISO 16610-21 that passes half of N undulations\n"
     "per revolution, such as 50; circles only",
     SetFilter},
    {kFit | kPlan, "--html", "FILE", "write the report as one page that needs no network",
     [](Options& options, std::string_view text) { options.html = text; }},
    {kFit | kPlan, "--csv", "FILE", "write the results as a table of comma-separated values",
     [](Options& options, std::string_view text) { options.csv = text; }},
    {kFit | kPlan, "--qif", "FILE", "write the results for other software, as QIF 3",
     [](Options& options, std::string_view text) { options.qif = text; }},
    {kPlan, "--watch", "DIR", "inspect by the plan what lies in DIR, and each file that lands there, until interrupted",
     [](Options& options, std::string_view text) { options.watch = text; }},
    {kPlan, "--for", "SECONDS", "watch no longer than that", SetSeconds},
    {kPlan, "--parts", "N", "watch until there are N parts", SetParts},
    {kInit, "--output", "FILE", "where the plan goes, in place of standard output",
     [](Options& options, std::string_view text) { options.output = text; }},
    {kAll, "--help", nullptr, "show this text (-h)", [](Options& options, std::string_view) { options.help = true; }},
    {kAll, "--version", nullptr, "show the version",
     [](Options& options, std::string_view) { options.version = true; }},
};

const Option& FindOption(std::string_view name) {
  if (name == "-h") name = "--help";
  for (const Option& option : kOptions) {
    if (name == option.name) return option;
  }
  throw InputError("unknown option '" + Printable(name) + "'; 'inspect --help' lists the options");
}

void TakeFile(Options& options, const char* file) {
  if (*file == '\0') throw InputError("the name of FILE is empty");
  if (std::find(options.files.begin(), options.files.end(), file) != options.files.end()) {
    throw InputError("FILE is given twice: '" + Printable(file) + "'");
  }
  options.files.emplace_back(file);
}

// Takes the option at argv[at] with its argument, given as the next word or behind '='; returns the last word taken.
int TakeOption(Options& options, int argc, const char* const* argv, int at, std::vector<const Option*>* given) {
  const std::string_view word = argv[at];
  const std::size_t equals = word.find('=');
  const Option& option = FindOption(word.substr(0, equals));
  const bool attached = equals != std::string_view::npos;
  given->push_back(&option);
  if (option.argument == nullptr) {
    if (attached) throw InputError(std::string(option.name) + " takes no argument");
    option.set(options, {});
    return at;
  }
  if (!attached && at + 1 == argc) throw InputError(std::string(option.name) + ": " + option.argument + " is missing");
  const std::string_view argument = attached ? word.substr(equals + 1) : std::string_view(argv[at + 1]);
  if (argument.empty()) throw InputError(std::string(option.name) + ": " + option.argument + " is empty");
  option.set(options, argument);
  return attached ? at : at + 1;
}

Mode ModeOf(std::string_view word) {
  if (word == "init") return Mode::kInit;
  return word == "compare" ? Mode::kCompare : Mode::kFit;
}

std::string NameOf(Mode mode) {
  if (mode == Mode::kPlan) return "a plan, which says it itself";
  if (mode == Mode::kInit) return "'inspect init'";
  return mode == Mode::kCompare ? "'inspect compare'" : "a file of points; it is for plans and other commands";
}

void CheckMode(Options* options, const std::vector<const Option*>& given) {
  const auto isPlan = [](const std::string& file) { return MeansPlan(file); };
  if (options->files.empty()) throw InputError("FILE is missing; 'inspect --help' shows the usage");
  if (options->mode == Mode::kFit && isPlan(options->files.front())) options->mode = Mode::kPlan;
  const auto plans = std::count_if(options->files.begin(), options->files.end(), isPlan);
  if (plans > (options->mode == Mode::kPlan ? 1 : 0)) {
    throw InputError("a plan comes first and alone, the files of parts after it");
  }
  for (const Option* option : given) {
    if ((option->modes & static_cast<unsigned>(options->mode)) != 0) continue;
    throw InputError(std::string(option->name) + " does not go with " + NameOf(options->mode));
  }
  const bool fits = options->mode == Mode::kFit || options->mode == Mode::kCompare;
  if (fits && options->features.empty()) throw InputError("--feature is missing; " + AvailableFits());
  if (!fits && options->mode == Mode::kInit && options->files.size() > 1) {
    throw InputError("'inspect init' takes one FILE");
  }
  if ((options->watchSeconds || options->watchParts > 0) && options->watch.empty()) {
    throw InputError("--for and --parts need --watch DIR");
  }
  if (!options->watch.empty() && options->files.size() > 1) {
    throw InputError("--watch takes the parts from DIR; name no files of parts");
  }
}

}  // namespace

Options ParseOptions(int argc, const char* const* argv) {
  Options options;
  bool onlyFiles = false;
  std::vector<const Option*> given;
  int first = 1;
  if (argc > 1) options.mode = ModeOf(argv[1]);
  if (options.mode != Mode::kFit) ++first;
  for (int at = first; at < argc; ++at) {
    const std::string_view word = argv[at];
    if (!onlyFiles && word == "--") {
      onlyFiles = true;
    } else if (!onlyFiles && word.starts_with("-") && word.size() > 1) {
      at = TakeOption(options, argc, argv, at, &given);
    } else {
      TakeFile(options, argv[at]);
    }
  }
  if (options.help || options.version) return options;
  CheckMode(&options, given);
  return options;
}

std::string HelpText() {
  constexpr std::size_t kIndent = 21;
  std::string text =
      "usage: inspect FILE... --feature NAMES [options]\n"
      "       inspect PLAN.toml [PART...] [options]\n"
      "       inspect init FILE [--output PLAN.toml]\n"
      "       inspect compare FILE --feature NAME [options]\n\n"
      "Fits ideal features to the measured points of each FILE and reports their form deviation. FILE and the files "
      "of\n"
      "--svg, --json, --html, --csv and --qif may be -, standard input and output; the report then goes to standard "
      "error.\n"
      "Names go in any letter case.\n\n";
  for (const Option& option : kOptions) {
    std::string left = std::string("  ") + option.name + (option.argument != nullptr ? " " : "") +
                       (option.argument != nullptr ? option.argument : "");
    left.resize(kIndent, ' ');
    std::string help = option.help;
    const std::size_t end = help.find('\n');
    if (end != std::string::npos) help.insert(end + 1, kIndent, ' ');
    text += left + help + "\n";
  }
  return text +
         "\nFILE holds one point per line: two or three coordinates separated by semicolons, commas, tabs or blanks.\n"
         "Empty lines, comments (# // ; ! %) and text before the first point are skipped; a header that names the\n"
         "columns x, y and z, and their unit, is followed. Other columns are passed over. Point clouds (PLY, PCD) are\n"
         "read too, and what gzip has compressed.\n\n" +
         AvailableFits() +
         "\n\nExit code: 0 within tolerance or none given, 1 out of tolerance, 2 bad input or usage, 3 fit failed; of "
         "several\nresults the gravest: 2, then 3, then 1.\n";
}
