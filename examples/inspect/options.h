#ifndef NU_INSPECT_OPTIONS_H
#define NU_INSPECT_OPTIONS_H

#include <optional>
#include <string>

#include "point_file.h"
#include "units.h"

struct Options {
  bool help = false;
  std::string file;
  std::string feature;
  std::string criterion = "ls";
  std::optional<double> tolerance;
  std::string svg;
  std::string json;
  LengthUnit unit = kLengthUnits[0];
  PointFileOptions reading;
};

// Throws InputError.
Options ParseOptions(int argc, const char* const* argv);

std::string HelpText();

#endif
