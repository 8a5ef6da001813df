#ifndef NU_INSPECT_POINT_FILE_H
#define NU_INSPECT_POINT_FILE_H

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "input/header.h"
#include "input/units.h"

using Vec3 = std::array<double, 3>;

// Bad input or usage; the text is complete: it names the file, the line and what was expected.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct PointFileOptions {
  bool decimalComma = false;
  std::vector<std::string> columns;  // of x, y and perhaps z, by number or name; empty: as the header names them
  long skipLines = 0;
  const LengthUnit* unit = nullptr;  // null: as the header says
  std::string groupColumn;           // that says which group a point belongs to, by number or name; empty: none
};

struct PointFile {
  std::vector<Vec3> points;
  std::vector<std::size_t> lines;  // where each point stands, counted from 1: its line, or its place among the points
  const char* place = "line";      // or "point", in a binary file
  std::size_t leftOut = 0;         // points of a cloud that hold no coordinates (NaN)
  std::vector<Column> columns;
  const LengthUnit* unit = &kMillimetre;
  const char* unitSource = "";            // "--unit", "header" or "assumed"
  std::vector<std::string> groups;        // in the order of their first points; none without a group column
  std::vector<std::size_t> groupOfPoint;  // index into `groups`; empty without a group column
};

// No length is longer in any unit, and squares of it, summed, stay finite.
inline constexpr double kLargestCoordinate = 1e100;

// Notes which columns are read and in what unit.
void TakeColumns(const Layout& layout, const PointFileOptions& options, PointFile* file);

// Reads the points of a text file as measuring software exports it (CSV, XYZ, ASC), or of a point cloud in the formats
// PLY and PCD, which are known by their first line; what gzip has compressed is read as well. "-" is standard input.
//
// Text: one point per line, two or three coordinates (z = 0 for two), separated by semicolons, commas, tabs or blanks;
// which of them, the first point's line decides, and every line has as many columns as that one. Skipped are empty
// lines, comments (# // ; ! %), text before the first point and a lone point count there. Byte order mark, quotes
// around fields and any line end are understood. The columns are those that the user or the header names, else the
// first.
//
// Throws InputError: unreadable, not text, no points, a line after the first point that is not a point, a header that
// leaves open which columns hold the coordinates, units that are unknown or differ, a cloud that ends too early.
PointFile ReadPointFile(const std::string& path, const PointFileOptions& options);

#endif
