#ifndef NU_INSPECT_CHARACTERISTIC_KINDS_H
#define NU_INSPECT_CHARACTERISTIC_KINDS_H

#include <string>
#include <vector>

#include "plan/part_plan.h"

// What a feature is to others: a point (the centre of a sphere, circle, torus or conic), an axis (also a line) or a
// plane.
enum class FeatureShape { kPoint, kAxis, kPlane };

FeatureShape ShapeOf(const FeaturePlan& feature);

// What a characteristic refers to beside its feature, and under which key of the plan.
enum class Reference { kNone, kFeature, kFrame };

// What a plan may say of one kind of characteristic.
struct KindRules {
  CharacteristicKind kind = CharacteristicKind::kForm;
  std::string word;                        // as reports call it
  Reference reference = Reference::kNone;  // which `key` names
  const char* key = "datum";               // "to" of distances and angles
  bool isZone = false;  // the width or diameter of a zone, with one `tolerance`; else limits to either side
  bool isAngle = false;
  std::size_t axis = 0;
};

// The rules for a word of the plan, such as "diameter" or "flatness", for that feature; throws InputError, without the
// place in the plan, where the feature has no such characteristic, and lists those it has.
KindRules FindKind(const std::string& word, const FeaturePlan& feature);

// What speaks against a relation of these two features, as a sentence; empty if nothing does.
std::string ProblemOf(CharacteristicKind kind, const FeaturePlan& feature, const FeaturePlan& datum);

#endif
