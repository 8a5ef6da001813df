#ifndef NU_INSPECT_OPTIONS_H
#define NU_INSPECT_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "input/point_file.h"
#include "report/table.h"

struct Options {
  bool help = false;
  bool version = false;
  std::vector<std::string> files;
  std::vector<std::string> features;
  std::vector<std::string> criteria = {"ls"};
  std::optional<double> tolerance;
  long boxes = 0;  // of the search for a better optimum
  Material material = Material::kInside;
  std::string svg;
  std::string json;
  PointFileOptions reading;
};

// Throws InputError.
Options ParseOptions(int argc, const char* const* argv);

std::string HelpText();

#endif
