#ifndef NU_INSPECT_OPTIONS_H
#define NU_INSPECT_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "input/point_file.h"
#include "report/table.h"

// What the program is asked to do.
enum class Mode : unsigned {
  kFit = 1,      // one feature or several of one file or several
  kPlan = 2,     // parts by a plan
  kInit = 4,     // write a plan
  kCompare = 8,  // one feature by all criteria
};

struct Options {
  Mode mode = Mode::kFit;
  bool help = false;
  bool version = false;
  std::vector<std::string> files;
  std::vector<std::string> features;
  std::vector<std::string> criteria = {"ls"};
  std::optional<double> tolerance;
  long boxes = 0;  // of the search for a better optimum
  int filter = 0;  // undulations per revolution; 0 for none
  Material material = Material::kInside;
  std::string svg;
  std::string json;
  PointFileOptions reading;
  // Of plans.
  std::string html;
  std::string csv;
  std::string qif;
  std::string watch;                   // the directory; empty for none
  std::optional<double> watchSeconds;  // without: until the user ends the program
  long watchParts = 0;                 // ends the watch as well; 0 for any number
  // Of init.
  std::string output;
};

// Throws InputError.
Options ParseOptions(int argc, const char* const* argv);

std::string HelpText();

#endif
