#ifndef NU_INSPECT_HEADER_H
#define NU_INSPECT_HEADER_H

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "input/units.h"

struct Column {
  std::size_t number;  // counted from 1
  std::string name;    // as the header has it; empty without one
};

// Which columns of a file hold the coordinates, and in what unit.
struct Layout {
  std::vector<Column> columns;  // of x, y and perhaps z
  bool chosen = false;          // by names or by the user; else they are the first ones
  const LengthUnit* unit = nullptr;
  std::string unknownUnit;  // what the header says in place of a unit
  std::string problem;      // why the columns cannot be told, as a sentence that says what to do; mostly empty

  // Why points cannot be read so; empty if they can. `given` is the unit that the user gave, null for none.
  std::string Problem(const LengthUnit* given) const;
};

// The lines of a point file before its first point.
//
// A row of names such as "No;X [mm];Y [mm];Z [mm]", "NomX,NomY,NomZ,ActX,ActY,ActZ" or "x/in y/in z/in" names the
// columns: a letter x, y or z, with what qualifies it before or behind it, and perhaps a unit. The unit may as well
// stand in a row below the names, behind the last name, or in a line such as "Units: inch".
class Header {
 public:
  void Add(std::string_view line);

  // How points with `width` columns are to be read. `wanted` holds names or numbers of columns that the user chose.
  Layout LayoutOf(std::size_t width, char separator, const std::vector<std::string>& wanted) const;

 private:
  std::deque<std::string> m_lines;  // the last ones
  std::string m_unit;               // as a line such as "Units: inch" states it
};

#endif
