#ifndef NU_INSPECT_PICTURES_H
#define NU_INSPECT_PICTURES_H

#include <string>
#include <vector>

#include "evaluate/inspection.h"
#include "input/units.h"
#include "report/table.h"

// What a picture says beside what it shows.
struct PictureLabels {
  std::string file;
  LengthUnit unit;
  std::vector<Row> rows;  // as in the table
  std::string source;     // the columns and the unit that the points were taken from
  // Where the points stand, for pictures that tell about the point under a pointer; null for none.
  const PointFile* readOut = nullptr;
};

// Each returns a complete SVG document.
std::string DrawStraightness(const Inspection& inspection, const PictureLabels& labels);
std::string DrawFlatness(const Inspection& inspection, const PictureLabels& labels);
std::string DrawRoundness(const Inspection& inspection, const PictureLabels& labels);
std::string DrawSphericity(const Inspection& inspection, const PictureLabels& labels);
std::string DrawUnrolled(const Inspection& inspection, const PictureLabels& labels);
std::string DrawConic(const Inspection& inspection, const PictureLabels& labels);

#endif
