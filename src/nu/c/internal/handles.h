#ifndef NU_C_INTERNAL_HANDLES_H
#define NU_C_INTERNAL_HANDLES_H

#include "nu/association/association.h"
#include "nu/association/association_part.h"
#include "nu/association/association_report.h"
#include "nu/c/internal/features.h"
#include "nu/curves/composite_curve.h"

// What the handles of C point to.

struct nu_association : nu::internal::c::Handle<nu::internal::c::Tag::kAssociation> {
  CNuAssociation fits;
  nu_monitor monitor = nullptr;
  void* context = nullptr;
};

struct nu_report : nu::internal::c::Handle<nu::internal::c::Tag::kReport> {
  CNuAssociationReport report;
};

struct nu_intersection : nu::internal::c::Handle<nu::internal::c::Tag::kIntersection> {
  nu::internal::c::Objects elements;
};

struct nu_part : nu::internal::c::Handle<nu::internal::c::Tag::kPart> {
  CNuAssociationPart part;
};

struct nu_candidates : nu::internal::c::Handle<nu::internal::c::Tag::kCandidates> {
  CNuAssociationCandidates candidates;
};

struct nu_curve : nu::internal::c::Handle<nu::internal::c::Tag::kCurve> {
  CNuCompositeCurve curve;
};

#endif
