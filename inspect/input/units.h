#ifndef NU_INSPECT_UNITS_H
#define NU_INSPECT_UNITS_H

#include <string>
#include <string_view>

// The unit in which a file's coordinates are given, and how to show it.
struct LengthUnit {
  const char* name;
  const char* symbol;
  double millimetres;
  int decimals;       // that show a nanometre
  const char* words;  // that mean it in headers, in lower case between blanks
};

extern const LengthUnit& kMillimetre;

// The unit that a word of any letter case means; null if it is none.
const LengthUnit* FindUnit(std::string_view word);

// "mm, um, ..."
std::string UnitNames();

// A unit for small deviations, so that pictures need neither zeros nor powers of ten.
struct DeviationUnit {
  const char* symbol;
  double perLength;  // how many of it make one length unit
};

// The unit in which a picture shows deviations up to `largest`.
DeviationUnit ChooseDeviationUnit(const LengthUnit& unit, double largest);

#endif
