#ifndef NU_INSPECT_PART_RESULT_H
#define NU_INSPECT_PART_RESULT_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "evaluate/inspection.h"
#include "plan/part_plan.h"

// What was found about a part: plain data, all that reports need. Lengths are in the unit of the plan, angles in
// degrees. Features, frames and characteristics stand in the order of the plan, index by index.

enum class Verdict {
  kNoTolerance,  // a value to be reported only
  kWithinTolerance,
  kOutOfTolerance,
  kFailed  // no value: the points could not be read, or do not determine the feature
};

// "within tolerance", "OUT OF TOLERANCE", "failed"; empty for kNoTolerance.
const char* VerdictText(Verdict verdict);

// The graver of two: failed, out of tolerance, within tolerance, no tolerance.
Verdict GraverVerdict(Verdict a, Verdict b);

// One feature of the part. A feature that failed has its `failure` and no `inspection`.
struct FeatureResult {
  std::string name;
  PointFile points;                      // that it was fitted to, in the unit of the plan, with their lines in the file
  std::string source;                    // "flange.csv, group BORE": where the points are from
  std::optional<Inspection> inspection;  // draw it by the plan's FeaturePlan::method.draw
  std::string failure;                   // a sentence that says why and what helps
  bool isBadInput = false;               // it failed because its points could not be read
  double seconds = 0;                    // of the fit
};

// A value, its limits and the verdict.
struct Characteristic {
  std::string name;     // unique in the plan
  std::string kind;     // "diameter", "flatness", "position"
  std::string symbol;   // of the value in a standard: "FLTt"; mostly empty
  std::string feature;  // the toleranced one
  std::string datum;    // the feature or datum frame it refers to; empty without one
  std::string unit;     // "mm", or the degree sign for angles
  int decimals = 6;     // to show of the value
  std::optional<double> nominal;
  std::optional<double> lower;  // limits of the measured value, both included; either may be missing
  std::optional<double> upper;
  std::optional<double> measured;     // missing if it failed
  std::optional<double> deviation;    // measured - nominal
  std::optional<double> uncertainty;  // the standard one, k = 1, where it is known
  Verdict verdict = Verdict::kNoTolerance;
  std::string evaluation;  // how the value follows from the points, a phrase
  std::string failure;     // a sentence
};

// The axes and the origin that a datum frame has in the coordinates of the files.
struct DatumFrameResult {
  std::string name;
  std::string datums;  // "A | B | C"
  Frame frame;
  bool turnIsFree = false;                             // about z: x is any direction
  std::array<bool, 3> originIsFree{true, true, true};  // along x, y, z
  std::string failure;
};

struct PartResult {
  std::string name;                     // of its file or directory, or the title of the plan
  std::vector<FeatureResult> features;  // none for parts of a batch: their points would fill the memory
  std::vector<DatumFrameResult> frames;
  std::vector<Characteristic> characteristics;
  Verdict verdict = Verdict::kNoTolerance;  // the gravest of all characteristics, and failed if a feature failed
  std::string failure;      // why there is no result at all, or which features of a part of a batch failed
  bool isBadInput = false;  // points could not be read
  double seconds = 0;
};

// The distribution of one characteristic over the parts of a batch, of those that have a value.
//
// Pp and Ppk are the process performance indices of ISO 22514-2 under a normal distribution, from the standard
// deviation of all values: Pp = (U - L) / 6s, Ppk = min(U - mean, mean - L) / 3s. Cp and Cpk are the same with the
// standard deviation within, the mean moving range of successive parts divided by d2 = 2/sqrt(pi); they are process
// capability indices if the process is in statistical control. With one limit, Pp and Cp do not exist. Infinite where
// the parts do not differ.
struct Capability {
  std::size_t count = 0;
  double mean = 0;
  double smallest = 0;
  double largest = 0;
  double deviationOverall = 0;  // s, with count - 1
  double deviationWithin = 0;
  std::optional<double> pp;  // none without limits, or with less than two parts
  std::optional<double> ppk;
  std::optional<double> cp;
  std::optional<double> cpk;
};

// A part, or a batch: then `capabilities` goes with the characteristics of the plan, index by index.
struct PartReport {
  PartPlan plan;
  std::vector<PartResult> parts;
  std::vector<Capability> capabilities;  // empty for a single part
};

#endif
