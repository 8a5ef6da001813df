#ifndef NU_INSPECT_TABLE_H
#define NU_INSPECT_TABLE_H

#include <optional>
#include <string>
#include <vector>

#include "evaluate/inspection.h"
#include "input/point_file.h"

struct Row {
  std::string name;
  std::string value;
  std::string unit;
};

// Where the material lies, seen from the feature: peaks point away from it.
enum class Material { kInside, kOutside };

// What is reported beside the inspection itself.
struct ReportContext {
  std::string file;
  const PointFile* points = nullptr;
  std::optional<double> tolerance;
  Material material = Material::kInside;

  bool WithinTolerance(const Inspection& inspection) const { return !tolerance || inspection.form <= *tolerance; }
  double Peak(const Inspection& inspection) const {
    return material == Material::kInside ? inspection.LargestOutwards() : inspection.LargestInwards();
  }
  double Valley(const Inspection& inspection) const {
    return material == Material::kInside ? inspection.LargestInwards() : inspection.LargestOutwards();
  }
};

std::vector<Row> ReportRows(const Inspection& inspection, const ReportContext& context);

// "2 (X [mm]), 3 (Y [mm])", and where the unit is known from.
std::string ColumnsText(const PointFile& file);
std::string UnitText(const PointFile& file);

// "+X", "-Y" or the like, when `direction` lies close to an axis; else its components.
std::string DirectionName(const Vec3& direction);

// "outer side", "upper side" or the like: the boundary of the zone where deviations are largest, or smallest.
std::string BoundaryName(const Inspection& inspection, bool outer);

// The rows below each other, numbers aligned at their decimal points.
std::string Table(const std::vector<Row>& rows);

// A table of one line per row of cells, aligned at the left.
std::string Grid(const std::vector<std::vector<std::string>>& lines);

#endif
