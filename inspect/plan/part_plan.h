#ifndef NU_INSPECT_PART_PLAN_H
#define NU_INSPECT_PART_PLAN_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "evaluate/methods.h"
#include "input/point_file.h"
#include "report/table.h"

// What a plan asks for, read and checked: every name that one entry uses, another one defines. Lengths are in the unit
// of the plan, angles in degrees.

// Which points of which file a feature takes.
struct PointSource {
  std::string file;                                        // empty: that of the plan
  std::string group;                                       // what the column `PartPlan::groupColumn` says; empty: all
  std::vector<std::pair<std::size_t, std::size_t>> lines;  // ranges of lines of the file, both ends counted; empty: all
};

struct FeaturePlan {
  std::string name;
  Method method;
  PointSource source;
  Material material = Material::kInside;
  int filter = 0;        // undulations per revolution at which the roundness filter passes half; 0: unfiltered
  long boxes = 0;        // of the search for a better optimum
  std::size_t line = 0;  // of the plan, for messages
};

// A datum system of ISO 5459: the first datum fixes z, the second and third what it leaves free.
struct DatumFramePlan {
  std::string name;
  std::vector<std::size_t> datums;      // features of the plan, in the order of precedence
  std::optional<std::size_t> zTowards;  // the feature that lies on the positive side
  std::optional<std::size_t> xTowards;
  std::size_t line = 0;
};

enum class CharacteristicKind {
  kForm,
  kDiameter,
  kRadius,
  kParameter,  // any other number of the feature: a semi-angle, a minor radius, a semi-axis
  kCoordinate,
  kDistance,
  kAngle,
  kParallelism,
  kPerpendicularity,
  kAngularity,
  kCoaxiality,
  kConcentricity,
  kSymmetry,
  kCircularRunout,
  kTotalRunout,
  kPosition
};

struct CharacteristicPlan {
  std::string name;
  CharacteristicKind kind = CharacteristicKind::kForm;
  std::string word;                  // the kind as the report calls it: "flatness", "semi-angle"
  std::size_t feature = 0;           // of the plan
  std::optional<std::size_t> datum;  // the feature it relates to
  std::optional<std::size_t> frame;  // the datum frame that coordinates and positions are in
  std::size_t axis = 0;              // of a coordinate
  std::vector<double> at;            // of a position: theoretically exact, two or three coordinates
  Vec3 direction{0, 0, 1};           // of a position: the exact direction of the axis, or the exact normal
  double exactAngle = 0;             // of an angularity: theoretically exact, in degrees
  bool isAngle = false;              // measured in degrees
  std::optional<double> nominal;
  std::optional<double> lower;
  std::optional<double> upper;
  std::size_t line = 0;
};

struct PartPlan {
  std::string path;  // of the plan; file names in it are relative to its directory
  std::string title;
  std::vector<std::pair<std::string, std::string>> remarks;  // drawing, order, operator ...: whatever heads the report
  const LengthUnit* unit = &kMillimetre;
  std::string points;  // the file of features that name none; empty without one
  PointFileOptions reading;
  std::string groupColumn;  // name or number
  std::vector<FeaturePlan> features;
  std::vector<DatumFramePlan> frames;
  std::vector<CharacteristicPlan> characteristics;
  // Files of the report, relative to the directory of the plan, where the command line names none; empty for none.
  std::string html;
  std::string json;
  std::string csv;
  std::string qif;
  std::string svg;
};

#endif
