#ifndef NU_INSPECT_UNITS_H
#define NU_INSPECT_UNITS_H

// The unit in which a file's coordinates are given, and how to show it.
struct LengthUnit {
  const char* option;
  const char* symbol;
  double millimetres;
  int decimals;  // that show a nanometre
};

inline constexpr LengthUnit kLengthUnits[] = {
    {"mm", "mm", 1, 6}, {"um", "\u00B5m", 1e-3, 3}, {"m", "m", 1e3, 9}, {"in", "in", 25.4, 8}};

// A unit for small deviations, so that pictures need neither zeros nor powers of ten.
struct DeviationUnit {
  const char* symbol;
  double perLength;  // how many of it make one length unit
};

// The unit in which a picture shows deviations up to `largest`.
inline DeviationUnit ChooseDeviationUnit(const LengthUnit& unit, double largest) {
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

#endif
