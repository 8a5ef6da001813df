#ifndef NU_C_INTERNAL_HANDLES_H
#define NU_C_INTERNAL_HANDLES_H

#include <memory>
#include <vector>

#include "nu/association/association.h"
#include "nu/association/association_part.h"
#include "nu/association/association_report.h"
#include "nu/c/internal/calls.h"
#include "nu/curves/composite_curve.h"

// What the handles of C point to.

struct nu_association {
  static constexpr auto kTag = nu::internal::c::Tag::kAssociation;

  nu::internal::c::Tag tag = kTag;
  CNuAssociation fits;
  nu_monitor monitor = nullptr;
  void* context = nullptr;
};

struct nu_report {
  static constexpr auto kTag = nu::internal::c::Tag::kReport;

  nu::internal::c::Tag tag = kTag;
  CNuAssociationReport report;
};

struct nu_intersection {
  static constexpr auto kTag = nu::internal::c::Tag::kIntersection;

  nu::internal::c::Tag tag = kTag;
  std::vector<std::unique_ptr<const CNuObject>> elements;
};

struct nu_part {
  static constexpr auto kTag = nu::internal::c::Tag::kPart;

  nu::internal::c::Tag tag = kTag;
  CNuAssociationPart part;
};

struct nu_candidates {
  static constexpr auto kTag = nu::internal::c::Tag::kCandidates;

  nu::internal::c::Tag tag = kTag;
  CNuAssociationCandidates candidates;
};

struct nu_curve {
  static constexpr auto kTag = nu::internal::c::Tag::kCurve;

  nu::internal::c::Tag tag = kTag;
  CNuCompositeCurve curve;
};

#endif
