#include "nu/association/association_part.h"
#include "nu/c/internal/features.h"
#include "nu/c/internal/handles.h"

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

// Calls visit(feature) with the object of a feature that is not a point.
template<class Visit>
void VisitGeometry(const nu_feature* feature, const Visit& visit) {
  AnyClass any = ClassOf(feature);
  const auto only = [&]<class Class>(Class& of) {
    if constexpr (std::is_base_of_v<CNuGeometry, Class>)
      visit(of);
    else
      RefuseArgument("no feature of this kind can be fitted");
  };
  std::visit(only, any);
}

}  // namespace

nu_status nu_part_create(const nu_association* association, const nu_feature* feature, const double* middle,
                         nu_part** part) {
  return Create(part, [&] {
    nu_part made;
    if (association == nullptr) return made;
    const CNuAssociation& fits = Deref(association).fits;
    const CNuPoint place = PointOf(middle, "middle is null");
    VisitGeometry(feature, [&](const CNuGeometry& at) { made.part = CNuAssociationPart(fits, at, place); });
    return made;
  });
}

void nu_part_free(nu_part* part) {
  Free(part);
}

nu_status nu_part_join(nu_part* part, const nu_part* other) {
  return Guarded([&] { Deref(part).part.Join(Deref(other).part); });
}

nu_status nu_part_get(const nu_part* part, nu_part_sums* sums) {
  return Give(sums, "sums is null", [&] {
    const CNuAssociationPart& from = Deref(part).part;
    return nu_part_sums{static_cast<std::int64_t>(from.GetNumberPoints()), from.GetSumSquares(),
                        from.GetRootMeanSquare(), from.GetLargestDeviation(), from.GetSmallestDeviation()};
  });
}

nu_status nu_part_step(const nu_part* part, nu_feature* feature, double* length) {
  return Guarded([&] {
    const CNuAssociationPart& from = Deref(part).part;
    VisitGeometry(feature, [&](auto& to) {
      const double step = from.Step(&to);
      *feature = ToFeature(to);
      Output(length, step);
    });
  });
}

nu_status nu_part_write(const nu_part* part, uint8_t* bytes, int32_t capacity, int32_t* count) {
  return Guarded([&] {
    const CNuAssociationPart& from = Deref(part).part;
    if (IsWanted(bytes, capacity, from.GetNumberBytes(), count)) from.GetBytes(bytes);
  });
}

nu_status nu_part_read(const uint8_t* bytes, int32_t count, nu_part** part) {
  return Create(part, [&] { return nu_part{{}, CNuAssociationPart::FromBytes(bytes, count)}; });
}

nu_status nu_candidates_create(nu_candidates** candidates) {
  return Create(candidates, [] { return nu_candidates{}; });
}

void nu_candidates_free(nu_candidates* candidates) {
  Free(candidates);
}

nu_status nu_candidates_add(nu_candidates* candidates, const nu_part* joined) {
  return Guarded([&] { Deref(candidates).candidates.Add(Deref(joined).part); });
}

nu_status nu_candidates_fit(const nu_candidates* candidates, int32_t criterion, nu_feature* feature, double* value) {
  return Guarded([&] {
    const CNuAssociationCandidates& from = Deref(candidates).candidates;
    VisitGeometry(feature, [&](auto& to) {
      const double found = from.Fit(static_cast<ENuCriterion>(criterion), &to);
      *feature = ToFeature(to);
      Output(value, found);
    });
  });
}
