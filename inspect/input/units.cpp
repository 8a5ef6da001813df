#include "input/units.h"

#include "text.h"

namespace {

// Micro comes as the micro sign or as the Greek letter, in UTF-8 or in Latin-1.
constexpr LengthUnit kLengthUnits[] = {
    {"mm", "mm", 1, 6, " millimeter millimeters millimetre millimetres "},
    {"um", "\u00B5m", 1e-3, 3, " \u00B5m \u03BCm \xB5m micron microns micrometer micrometers micrometre micrometres "},
    {"nm", "nm", 1e-6, 1, " nanometer nanometers nanometre nanometres "},
    {"cm", "cm", 10, 7, " centimeter centimeters centimetre centimetres "},
    {"m", "m", 1e3, 9, " meter meters metre metres "},
    {"in", "in", 25.4, 8, " inch inches \" "}};

}  // namespace

const LengthUnit& kMillimetre = kLengthUnits[0];

const LengthUnit* FindUnit(std::string_view word) {
  const std::string lower = Lower(word);
  if (lower.empty() || lower.find(' ') != std::string::npos) return nullptr;
  for (const LengthUnit& unit : kLengthUnits) {
    const bool meant = std::string_view(unit.words).find(" " + lower + " ") != std::string_view::npos;
    if (lower == unit.name || meant) return &unit;
  }
  return nullptr;
}

std::string UnitNames() {
  std::string names;
  for (const LengthUnit& unit : kLengthUnits) names += (names.empty() ? "" : ", ") + std::string(unit.name);
  return names;
}

DeviationUnit ChooseDeviationUnit(const LengthUnit& unit, double largest) {
  constexpr double kReadable = 0.5;
  struct Candidate {
    const char* symbol;
    double millimetres;
  };
  constexpr Candidate kMetric[] = {{"m", 1e3}, {"mm", 1}, {"\u00B5m", 1e-3}, {"nm", 1e-6}};
  constexpr Candidate kImperial[] = {{"in", 25.4}, {"\u00B5in", 25.4e-6}};
  const bool imperial = unit.millimetres == 25.4;
  const Candidate* candidate = imperial ? kImperial : kMetric;
  const Candidate* last = imperial ? kImperial + 1 : kMetric + 3;
  while (candidate < last && largest * unit.millimetres < kReadable * candidate->millimetres) ++candidate;
  return {candidate->symbol, unit.millimetres / candidate->millimetres};
}
