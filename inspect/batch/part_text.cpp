#include "batch/part_text.h"

#include <algorithm>
#include <cmath>

#include "report/table.h"
#include "text.h"

namespace {

using Cells = std::vector<std::vector<std::string>>;

std::string Number(const std::optional<double>& value, int decimals) {
  return value ? Fixed(*value, decimals) : "";
}

std::string IndexText(const std::optional<double>& index) {
  constexpr int kDecimals = 2;
  if (!index) return "";
  return std::isfinite(*index) ? Fixed(*index, kDecimals) : *index > 0 ? "inf" : "-inf";
}

std::string Title(const PartPlan& plan) {
  std::string text = Printable(plan.title.empty() ? FileName(plan.path) : plan.title) + "\n";
  for (const auto& [name, value] : plan.remarks) text += "  " + Printable(name) + ": " + Printable(value) + "\n";
  return text;
}

std::string FeaturesText(const PartPlan& plan, const PartResult& part) {
  Cells cells = {{"feature", "type", "criterion", "points", "from", "form"}};
  for (std::size_t i = 0; i < part.features.size(); ++i) {
    const FeatureResult& feature = part.features[i];
    const Terms& terms = plan.features[i].method.terms;
    std::string form = "failed";
    if (feature.inspection) {
      const Terms& found = feature.inspection->terms;
      form = found.form + (found.symbol.empty() ? " " : " " + found.symbol + "t ") +
             Fixed(feature.inspection->form, plan.unit->decimals) + " " + plan.unit->symbol;
    }
    cells.push_back({Printable(feature.name), terms.feature, terms.criterion,
                     std::to_string(feature.points.points.size()), Printable(feature.source), form});
  }
  return "\n" + Grid(cells);
}

std::string FramesText(const PartPlan& plan, const PartResult& part) {
  Cells cells;
  for (const DatumFrameResult& frame : part.frames) {
    if (!frame.failure.empty()) continue;
    std::string origin;
    constexpr const char* kNames[] = {"x ", "y ", "z "};
    for (std::size_t i = 0; i < 3; ++i) {
      origin +=
          (i > 0 ? ", " : "origin ") +
          (frame.originIsFree[i] ? kNames[i] + std::string("free") : Fixed(frame.frame.origin[i], plan.unit->decimals));
    }
    cells.push_back({"datum frame " + Printable(frame.name), Printable(frame.datums), origin,
                     "z " + DirectionName(frame.frame.z),
                     frame.turnIsFree ? "x free" : "x " + DirectionName(frame.frame.x)});
  }
  return cells.empty() ? "" : "\n" + Grid(cells);
}

std::string CharacteristicsText(const PartResult& part) {
  Cells cells = {
      {"characteristic", "measured", "unit", "nominal", "lower", "upper", "deviation", "verdict", "evaluation"}};
  for (const Characteristic& each : part.characteristics) {
    cells.push_back({Printable(each.name), each.measured ? Fixed(*each.measured, each.decimals) : "", each.unit,
                     Number(each.nominal, each.decimals), Number(each.lower, each.decimals),
                     Number(each.upper, each.decimals),
                     each.deviation ? SignedFixed(*each.deviation, each.decimals) : "", VerdictText(each.verdict),
                     each.evaluation});
  }
  return part.characteristics.empty() ? "" : "\n" + Grid(cells);
}

}  // namespace

std::string PartText(const PartPlan& plan, const PartResult& part) {
  return Title(plan) + FeaturesText(plan, part) + FramesText(plan, part) + CharacteristicsText(part);
}

std::string FindingsOf(const PartResult& part) {
  constexpr std::size_t kMost = 4;
  std::string text;
  std::size_t count = 0;
  if (part.isBadInput) return Printable(part.failure);
  for (const Characteristic& each : part.characteristics) {
    if (each.verdict < Verdict::kOutOfTolerance || ++count > kMost) continue;
    text += (text.empty() ? "" : "; ") + Printable(each.name) +
            (each.measured ? " " + Fixed(*each.measured, each.decimals) : " failed");
  }
  return count > kMost ? text + "; and " + std::to_string(count - kMost) + " more" : text;
}

std::string BatchText(const PartReport& report) {
  Cells parts = {{"part", "verdict", "findings"}};
  for (const PartResult& part : report.parts) {
    parts.push_back({Printable(part.name), VerdictText(part.verdict), FindingsOf(part)});
  }
  Cells rows = {{"characteristic", "parts", "mean", "smallest", "largest", "s", "Pp", "Ppk", "Cp", "Cpk", "out"}};
  for (std::size_t i = 0; i < report.capabilities.size(); ++i) {
    const Capability& capability = report.capabilities[i];
    const CharacteristicPlan& plan = report.plan.characteristics[i];
    const int decimals = report.plan.unit->decimals;
    const auto value = [&](double number) { return capability.count > 0 ? Fixed(number, decimals) : ""; };
    const auto isOut = [i](const PartResult& part) {
      return part.characteristics[i].verdict >= Verdict::kOutOfTolerance;
    };
    rows.push_back({Printable(plan.name), std::to_string(capability.count), value(capability.mean),
                    value(capability.smallest), value(capability.largest), value(capability.deviationOverall),
                    IndexText(capability.pp), IndexText(capability.ppk), IndexText(capability.cp),
                    IndexText(capability.cpk),
                    std::to_string(std::count_if(report.parts.begin(), report.parts.end(), isOut))});
  }
  return Title(report.plan) + "\n" + Grid(parts) + (rows.size() > 1 ? "\n" + Grid(rows) : "");
}
