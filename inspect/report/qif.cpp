#include "report/qif.h"

#include <nu/nu.h>

#include <array>
#include <cstdint>
#include <numbers>

#include "report/markup.h"
#include "report/moment.h"
#include "text.h"

namespace {

const char* FeatureWord(const std::string& feature) {
  constexpr std::array<std::pair<const char*, const char*>, 8> kWords = {{{"line", "Line"},
                                                                          {"plane", "Plane"},
                                                                          {"circle", "Circle"},
                                                                          {"sphere", "Sphere"},
                                                                          {"cylinder", "Cylinder"},
                                                                          {"cone", "Cone"},
                                                                          {"torus", "Torus"},
                                                                          {"ellipse", "Ellipse"}}};
  for (const auto& [name, word] : kWords) {
    if (feature == name) return word;
  }
  return "Opaque";
}

const char* FormWord(const std::string& feature) {
  constexpr std::array<std::pair<const char*, const char*>, 6> kWords = {{{"line", "Straightness"},
                                                                          {"plane", "Flatness"},
                                                                          {"circle", "Circularity"},
                                                                          {"sphere", "Sphericity"},
                                                                          {"cylinder", "Cylindricity"},
                                                                          {"cone", "Conicity"}}};
  for (const auto& [name, word] : kWords) {
    if (feature == name) return word;
  }
  return "OtherForm";
}

const char* CharacteristicWord(const CharacteristicPlan& plan, const std::string& feature) {
  switch (plan.kind) {
    case CharacteristicKind::kForm:
      return FormWord(feature);
    case CharacteristicKind::kDiameter:
      return "Diameter";
    case CharacteristicKind::kRadius:
      return "Radius";
    case CharacteristicKind::kParameter:
      return plan.isAngle ? "Angle" : "Length";
    case CharacteristicKind::kCoordinate:
      return "LinearCoordinate";
    case CharacteristicKind::kDistance:
      return "DistanceBetween";
    case CharacteristicKind::kAngle:
      return "AngleBetween";
    case CharacteristicKind::kParallelism:
      return "Parallelism";
    case CharacteristicKind::kPerpendicularity:
      return "Perpendicularity";
    case CharacteristicKind::kAngularity:
      return "Angularity";
    case CharacteristicKind::kSymmetry:
      return "Symmetry";
    case CharacteristicKind::kCircularRunout:
      return "CircularRunout";
    case CharacteristicKind::kTotalRunout:
      return "TotalRunout";
    case CharacteristicKind::kCoaxiality:
      return "Coaxiality";
    case CharacteristicKind::kConcentricity:
      return "Concentricity";
    case CharacteristicKind::kPosition:
      break;
  }
  return "Position";
}

// Whether the tolerance is the width of a zone, not two limits of a dimension.
bool IsZone(CharacteristicKind kind) {
  switch (kind) {
    case CharacteristicKind::kDiameter:
    case CharacteristicKind::kRadius:
    case CharacteristicKind::kParameter:
    case CharacteristicKind::kCoordinate:
    case CharacteristicKind::kDistance:
    case CharacteristicKind::kAngle:
      return false;
    default:
      return true;
  }
}

const char* StatusWord(Verdict verdict) {
  switch (verdict) {
    case Verdict::kWithinTolerance:
      return "PASS";
    case Verdict::kOutOfTolerance:
      return "FAIL";
    case Verdict::kFailed:
      return "NOT_MEASURED";
    case Verdict::kNoTolerance:
      break;
  }
  return "BASIC_OR_NO_TOL";
}

// An identifier that is the same for the same content: a version 8 UUID of its FNV-1a hashes.
std::string Uuid(const std::string& content) {
  constexpr std::uint64_t kPrime = 1099511628211U;
  std::uint64_t hashes[2] = {14695981039346656037U, 1469598103934665603U};
  for (std::uint64_t& hash : hashes) {
    for (const char c : content) hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
  }
  constexpr const char* kHex = "0123456789abcdef";
  std::string text;
  for (unsigned i = 0; i < 32; ++i) {
    if (i == 8 || i == 12 || i == 16 || i == 20) text += '-';
    const auto digit = static_cast<unsigned>(hashes[i / 16] >> (60 - i % 16 * 4)) & 15U;
    text += i == 12 ? '8' : kHex[i == 16 ? (8U | (digit & 3U)) : digit];
  }
  return text;
}

class QifWriter {
 public:
  explicit QifWriter(const PartReport& report) : m_report(report), m_plan(report.plan) {}

  std::string Write() {
    AddFeatures();
    AddCharacteristics();
    AddResults();
    const std::string body = m_xml.Take();
    Markup document;
    document.Raw("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    document.Open(
        "QIFDocument",
        {{"xmlns", "http://qifstandards.org/xsd/qif3"}, {"idMax", std::to_string(m_lastId)}, {"versionQIF", "3.0.0"}});
    document.Element("QPId", Uuid(CurrentMoment() + body));
    document.Open("Header");
    document.Open("Application");
    document.Element("Name", "inspect");
    document.Element("Organization", "Nu");
    document.Element("ApplicationVersion", std::to_string(NuMajorVersionLabel) + "." +
                                               std::to_string(NuMinorVersionLabel) + "." +
                                               std::to_string(NuBuildVersionLabel));
    document.Close("Application");
    document.Element("Description", m_plan.title.empty() ? FileName(m_plan.path) : m_plan.title);
    document.Close("Header");
    AddUnits(&document);
    document.Raw(body);
    document.Close("QIFDocument");
    return document.Take();
  }

 private:
  std::size_t NextId() { return ++m_lastId; }

  std::string OpenWithId(const std::string& tag) {
    std::string id = std::to_string(NextId());
    m_xml.Open(tag, {{"id", id}});
    return id;
  }

  void OpenList(const std::string& tag, std::size_t count) { m_xml.Open(tag, {{"n", std::to_string(count)}}); }

  static void AddUnit(Markup* xml, const char* tag, const char* base, const std::string& name, double factor) {
    xml->Open(tag);
    xml->Element("SIUnitName", base);
    xml->Element("UnitName", name);
    xml->Open("UnitConversion");
    xml->Element("Factor", Shortest(factor));
    xml->Close("UnitConversion");
    xml->Close(tag);
  }

  void AddUnits(Markup* xml) const {
    constexpr double kMillimetresPerMetre = 1000;
    xml->Open("FileUnits");
    xml->Open("PrimaryUnits");
    AddUnit(xml, "AngularUnit", "radian", "degree", std::numbers::pi / 180);
    AddUnit(xml, "LinearUnit", "meter", m_plan.unit->name, m_plan.unit->millimetres / kMillimetresPerMetre);
    xml->Close("PrimaryUnits");
    xml->Close("FileUnits");
  }

  std::string FeatureTag(std::size_t feature, const char* role) const {
    return std::string(FeatureWord(m_plan.features[feature].method.terms.feature)) + "Feature" + role;
  }

  std::string CharacteristicTag(std::size_t index, const char* role) const {
    const CharacteristicPlan& plan = m_plan.characteristics[index];
    return CharacteristicWord(plan, m_plan.features[plan.feature].method.terms.feature) +
           std::string("Characteristic") + role;
  }

  void AddFeatures() {
    const std::size_t count = m_plan.features.size();
    std::vector<std::string> definitions;
    std::vector<std::string> nominals;
    m_xml.Open("Features");
    OpenList("FeatureDefinitions", count);
    for (std::size_t i = 0; i < count; ++i) {
      definitions.push_back(OpenWithId(FeatureTag(i, "Definition")));
      m_xml.Close(FeatureTag(i, "Definition"));
    }
    m_xml.Close("FeatureDefinitions");
    OpenList("FeatureNominals", count);
    for (std::size_t i = 0; i < count; ++i) {
      nominals.push_back(OpenWithId(FeatureTag(i, "Nominal")));
      m_xml.Element("FeatureDefinitionId", definitions[i]);
      m_xml.Close(FeatureTag(i, "Nominal"));
    }
    m_xml.Close("FeatureNominals");
    OpenList("FeatureItems", count);
    for (std::size_t i = 0; i < count; ++i) {
      m_featureItems.push_back(OpenWithId(FeatureTag(i, "Item")));
      m_xml.Element("FeatureNominalId", nominals[i]);
      m_xml.Element("FeatureName", m_plan.features[i].name);
      m_xml.Close(FeatureTag(i, "Item"));
    }
    m_xml.Close("FeatureItems");
    m_xml.Close("Features");
  }

  void AddLimits(const CharacteristicPlan& plan) {
    if (!plan.lower && !plan.upper) {
      m_xml.Open("NonTolerance");
      m_xml.Element("NonToleranceEnum", "SET");
      m_xml.Close("NonTolerance");
    } else if (IsZone(plan.kind) && plan.upper) {
      m_xml.Element("ToleranceValue", Shortest(*plan.upper));
    } else {
      m_xml.Open("Tolerance");
      if (plan.upper) m_xml.Element("MaxValue", Shortest(*plan.upper));
      if (plan.lower) m_xml.Element("MinValue", Shortest(*plan.lower));
      m_xml.Element("DefinedAsLimit", "true");
      m_xml.Close("Tolerance");
    }
  }

  void AddCharacteristics() {
    const std::size_t count = m_plan.characteristics.size();
    std::vector<std::string> definitions;
    std::vector<std::string> nominals;
    m_xml.Open("Characteristics");
    OpenList("CharacteristicDefinitions", count);
    for (std::size_t i = 0; i < count; ++i) {
      definitions.push_back(OpenWithId(CharacteristicTag(i, "Definition")));
      AddLimits(m_plan.characteristics[i]);
      m_xml.Close(CharacteristicTag(i, "Definition"));
    }
    m_xml.Close("CharacteristicDefinitions");
    OpenList("CharacteristicNominals", count);
    for (std::size_t i = 0; i < count; ++i) {
      const CharacteristicPlan& plan = m_plan.characteristics[i];
      nominals.push_back(OpenWithId(CharacteristicTag(i, "Nominal")));
      m_xml.Element("CharacteristicDefinitionId", definitions[i]);
      if (plan.nominal) m_xml.Element("TargetValue", Shortest(*plan.nominal));
      m_xml.Close(CharacteristicTag(i, "Nominal"));
    }
    m_xml.Close("CharacteristicNominals");
    OpenList("CharacteristicItems", count);
    for (std::size_t i = 0; i < count; ++i) {
      const CharacteristicPlan& plan = m_plan.characteristics[i];
      m_characteristicItems.push_back(OpenWithId(CharacteristicTag(i, "Item")));
      m_xml.Element("Name", plan.name);
      OpenList("FeatureItemIds", plan.datum ? 2 : 1);
      m_xml.Element("Id", m_featureItems[plan.feature]);
      if (plan.datum) m_xml.Element("Id", m_featureItems[*plan.datum]);
      m_xml.Close("FeatureItemIds");
      m_xml.Element("CharacteristicNominalId", nominals[i]);
      m_xml.Close(CharacteristicTag(i, "Item"));
    }
    m_xml.Close("CharacteristicItems");
    m_xml.Close("Characteristics");
  }

  void AddResults() {
    OpenList("MeasurementResultsSet", m_report.parts.size());
    for (const PartResult& part : m_report.parts) {
      OpenWithId("MeasurementResults");
      m_xml.Element("ActualComponentName", part.name);
      if (!part.features.empty()) AddMeasuredFeatures(part);
      m_xml.Open("MeasuredCharacteristics");
      OpenList("CharacteristicMeasurements", part.characteristics.size());
      for (std::size_t i = 0; i < part.characteristics.size(); ++i) AddMeasurement(i, part.characteristics[i]);
      m_xml.Close("CharacteristicMeasurements");
      m_xml.Close("MeasuredCharacteristics");
      m_xml.Close("MeasurementResults");
    }
    m_xml.Close("MeasurementResultsSet");
  }

  void AddMeasuredFeatures(const PartResult& part) {
    OpenList("MeasuredFeatures", part.features.size());
    for (std::size_t i = 0; i < part.features.size(); ++i) {
      OpenWithId(FeatureTag(i, "Measurement"));
      m_xml.Element("FeatureItemId", m_featureItems[i]);
      if (part.features[i].inspection) AddParameters(*part.features[i].inspection);
      m_xml.Close(FeatureTag(i, "Measurement"));
    }
    m_xml.Close("MeasuredFeatures");
  }

  // A place, a direction and a diameter, which most features have; the frame is theirs.
  void AddParameters(const Inspection& inspection) {
    const auto vector = [](const Vec3& v) { return Shortest(v[0]) + " " + Shortest(v[1]) + " " + Shortest(v[2]); };
    const std::string& feature = inspection.terms.feature;
    m_xml.Element("Location", vector(inspection.frame.origin));
    if (feature == "plane" || feature == "circle" || feature == "ellipse") {
      m_xml.Element("Normal", vector(inspection.frame.z));
    } else if (feature == "cylinder" || feature == "cone" || feature == "torus") {
      m_xml.Element("Axis", vector(inspection.frame.z));
    } else if (feature == "line") {
      m_xml.Element("Vector", vector(inspection.frame.x));
    }
    if (feature == "circle" || feature == "sphere" || feature == "cylinder") {
      m_xml.Element("Diameter", Shortest(2 * inspection.radius));
    }
  }

  void AddMeasurement(std::size_t index, const Characteristic& each) {
    OpenWithId(CharacteristicTag(index, "Measurement"));
    m_xml.Open("Status");
    m_xml.Element("CharacteristicStatusEnum", StatusWord(each.verdict));
    m_xml.Close("Status");
    m_xml.Element("CharacteristicItemId", m_characteristicItems[index]);
    if (each.measured) {
      Markup::Attributes attributes;
      if (each.uncertainty && *each.uncertainty < kLargestCoordinate) {
        attributes.emplace_back("combinedUncertainty", Shortest(*each.uncertainty));
      }
      m_xml.Element("Value", Shortest(*each.measured), attributes);
    }
    m_xml.Close(CharacteristicTag(index, "Measurement"));
  }

  const PartReport& m_report;
  const PartPlan& m_plan;
  Markup m_xml;
  std::size_t m_lastId = 0;
  std::vector<std::string> m_featureItems;
  std::vector<std::string> m_characteristicItems;
};

}  // namespace

std::string QifReport(const PartReport& report) {
  return QifWriter(report).Write();
}
