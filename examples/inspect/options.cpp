#include "options.h"

#include <algorithm>
#include <string_view>

#include "methods.h"
#include "text.h"

namespace {

using Setter = void (*)(Options&, std::string_view);

struct Option {
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
  const auto* unit = std::find_if(std::begin(kLengthUnits), std::end(kLengthUnits),
                                  [text](const LengthUnit& candidate) { return text == candidate.option; });
  if (unit == std::end(kLengthUnits)) {
    throw InputError("--unit: '" + Printable(text) + "' is unknown; expected mm, um, m or in");
  }
  options.unit = *unit;
}

void SetColumns(Options& options, std::string_view text) {
  constexpr long kLargestColumn = 10000;
  const std::string wrong = "--columns: '" + Printable(text) + "' is not a list of two or three columns such as 2,3,4";
  std::vector<int> columns;
  for (std::string_view rest = text; columns.size() < 4;) {
    const std::size_t comma = rest.find(',');
    long column = 0;
    if (!ParseWhole(rest.substr(0, comma), &column) || column < 1 || column > kLargestColumn) throw InputError(wrong);
    columns.push_back(static_cast<int>(column));
    if (comma == std::string_view::npos) break;
    rest.remove_prefix(comma + 1);
  }
  if (columns.size() < 2 || columns.size() > 3) throw InputError(wrong);
  options.reading.columns = columns;
}

void SetSkip(Options& options, std::string_view text) {
  if (!ParseWhole(text, &options.reading.skipLines) || options.reading.skipLines < 0) {
    throw InputError("--skip: '" + Printable(text) + "' is not a number of lines");
  }
}

constexpr Option kOptions[] = {
    {"--feature", "NAME", "line, plane, circle, sphere, ... (required)",
     [](Options& options, std::string_view text) { options.feature = text; }},
    {"--criterion", "NAME",
     "ls least squares (default), mz minimum zone, mc minimum circumscribed, mi maximum inscribed",
     [](Options& options, std::string_view text) { options.criterion = text; }},
    {"--tolerance", "T", "largest permitted form deviation, in the unit of the file", SetTolerance},
    {"--svg", "FILE", "draw the deviations", [](Options& options, std::string_view text) { options.svg = text; }},
    {"--json", "FILE", "write the result for programs",
     [](Options& options, std::string_view text) { options.json = text; }},
    {"--unit", "U", "unit of the coordinates: mm (default), um, m, in", SetUnit},
    {"--decimal-comma", nullptr, "numbers are written 12,5",
     [](Options& options, std::string_view) { options.reading.decimalComma = true; }},
    {"--columns", "I,J,K", "the columns of x, y and perhaps z, counted from 1", SetColumns},
    {"--skip", "N", "pass over the first N lines", SetSkip},
    {"--help", nullptr, "show this text", [](Options& options, std::string_view) { options.help = true; }},
};

const Option& FindOption(std::string_view name) {
  for (const Option& option : kOptions) {
    if (name == option.name) return option;
  }
  throw InputError("unknown option '" + Printable(name) + "'; 'inspect --help' lists the options");
}

void TakeFile(Options& options, const char* file) {
  if (!options.file.empty()) throw InputError("one FILE is expected, also given: '" + Printable(file) + "'");
  if (*file == '\0') throw InputError("the name of FILE is empty");
  options.file = file;
}

// Takes the option at argv[at] with its argument, given as the next word or behind '='; returns the last word taken.
int TakeOption(Options& options, int argc, const char* const* argv, int at) {
  const std::string_view word = argv[at];
  const std::size_t equals = word.find('=');
  const Option& option = FindOption(word.substr(0, equals));
  const bool attached = equals != std::string_view::npos;
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

}  // namespace

Options ParseOptions(int argc, const char* const* argv) {
  Options options;
  bool onlyFiles = false;
  for (int at = 1; at < argc; ++at) {
    const std::string_view word = argv[at];
    if (!onlyFiles && word == "--") {
      onlyFiles = true;
    } else if (!onlyFiles && word.starts_with("-") && word.size() > 1) {
      at = TakeOption(options, argc, argv, at);
    } else {
      TakeFile(options, argv[at]);
    }
  }
  if (options.help) return options;
  if (options.file.empty()) throw InputError("FILE is missing; 'inspect --help' shows the usage");
  if (options.feature.empty()) throw InputError("--feature is missing; " + AvailableFits());
  return options;
}

std::string HelpText() {
  std::string text =
      "usage: inspect FILE --feature NAME [options]\n\n"
      "Fits an ideal feature to the measured points of FILE and reports its form deviation.\n\n";
  for (const Option& option : kOptions) {
    std::string left = std::string("  ") + option.name + (option.argument != nullptr ? " " : "") +
                       (option.argument != nullptr ? option.argument : "");
    left.resize(std::max<std::size_t>(left.size() + 2, 21), ' ');
    text += left + option.help + "\n";
  }
  return text +
         "\nFILE holds one point per line: two or three coordinates separated by semicolons, commas, tabs or blanks.\n"
         "Empty lines, comments (# // ; ! %) and text before the first point are skipped; a header that names the\n"
         "columns x, y and z is followed. Other columns are passed over.\n\n" +
         AvailableFits() +
         "\n\nExit code: 0 within tolerance or none given, 1 out of tolerance, 2 bad input or usage, 3 fit failed.\n";
}
