#include <algorithm>
#include <climits>
#include <map>
#include <tuple>
#include <vector>

#include "nu/association/association.h"
#include "nu/association/internal/association_state.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"

// Points that come and go. All memory is had before anything changes. Many small additions take time in proportion to
// the points added, one removal in proportion to all points.

using namespace nu::internal;

namespace {

constexpr const char* kWhat = "association";

void Append(PointView points, std::vector<double>* to) {
  for (std::size_t i = 0; i < points.Size(); ++i)
    for (int k = 0; k < 3; ++k) to->push_back(points[i][k]);
}

// Empty weights are 1 each.
void Append(const std::vector<double>& weights, std::size_t count, std::vector<double>* to) {
  if (weights.empty())
    to->resize(to->size() + count, 1.0);
  else
    to->insert(to->end(), weights.begin(), weights.end());
}

void MakeRoom(std::size_t size, std::vector<double>* values) {
  const std::size_t capacity = values->capacity();
  if (size > capacity) values->reserve(std::max(size, capacity + capacity / 2));
}

// The points may not be those of the state.
void Join(PointView points, const std::vector<double>& weights, const char* where, AssociationState* state) {
  const std::size_t count = state->points.Size();
  const std::size_t total = count + points.Size();
  if (total > INT_MAX) FailOperation(NuOperationArgument, kWhat, where);
  WithMemory(where, [&] {
    std::vector<double>& own = state->own;
    std::vector<double>& ownWeights = state->options.weights;
    const bool isWeighted = !ownWeights.empty() || !weights.empty();
    if (isWeighted) MakeRoom(total, &ownWeights);
    MakeRoom(3 * total, &own);
    if (own.empty()) Append(state->points, &own);
    Append(points, &own);
    if (isWeighted && ownWeights.empty()) ownWeights.resize(count, 1.0);
    if (isWeighted) Append(weights, points.Size(), &ownWeights);
    state->points = state->OwnPoints();
  });
}

void Drop(const std::vector<char>& isDropped, AssociationState* state) {
  const std::size_t left = static_cast<std::size_t>(std::count(isDropped.begin(), isDropped.end(), 0));
  const std::vector<double>& weights = state->options.weights;
  std::vector<double> kept;
  std::vector<double> keptWeights;
  kept.reserve(3 * left);
  if (!weights.empty()) keptWeights.reserve(left);
  for (std::size_t i = 0; i < state->points.Size(); ++i) {
    if (isDropped[i]) continue;
    Append(state->points.Part(i, 1), &kept);
    if (!weights.empty()) keptWeights.push_back(weights[i]);
  }
  state->own.swap(kept);
  state->points = state->OwnPoints();
  state->options.weights.swap(keptWeights);
}

using Coordinates = std::tuple<double, double, double>;

Coordinates CoordinatesOf(const double* p) {
  return {p[0], p[1], p[2]};
}

}  // namespace

void CNuAssociation::Add(const CNuPointArray& points) {
  Join(ViewOf(points), {}, "Add", m_state.get());
}

void CNuAssociation::Add(const double* xyz, int count, int stride) {
  Join(BlockView(xyz, count, stride, "Add"), {}, "Add", m_state.get());
}

void CNuAssociation::Merge(const CNuAssociation& other) {
  if (this == &other) return Merge(WithMemory("Merge", [&] { return CNuAssociation(other); }));
  Join(other.m_state->points, other.m_state->options.weights, "Merge", m_state.get());
}

void CNuAssociation::Remove(const CNuIntArray& indices) {
  constexpr const char* where = "Remove";
  for (int k = 0; k < indices.GetSize(); ++k) RequireIndex(indices[k], GetNumberPoints(), kWhat, where);
  WithMemory(where, [&] {
    std::vector<char> isDropped(m_state->points.Size(), 0);
    for (int k = 0; k < indices.GetSize(); ++k) isDropped[indices[k]] = 1;
    Drop(isDropped, m_state.get());
  });
}

// NaN has no order: such a point is not found.
void CNuAssociation::Remove(const CNuPointArray& points) {
  constexpr const char* where = "Remove";
  WithMemory(where, [&] {
    const PointView wanted = ViewOf(points);
    const PointView present = m_state->points;
    std::map<Coordinates, int> count;
    for (std::size_t i = 0; i < wanted.Size(); ++i) {
      if (!IsFinite(LoadVec3(wanted[i]))) FailOperation(NuOperationData, kWhat, where);
      ++count[CoordinatesOf(wanted[i])];
    }
    std::vector<char> isDropped(present.Size(), 0);
    std::size_t dropped = 0;
    for (std::size_t i = 0; i < present.Size(); ++i) {
      if (!IsFinite(LoadVec3(present[i]))) continue;
      const auto found = count.find(CoordinatesOf(present[i]));
      if (found == count.end() || found->second == 0) continue;
      --found->second;
      isDropped[i] = 1;
      ++dropped;
    }
    if (dropped != wanted.Size()) FailOperation(NuOperationData, kWhat, where);
    Drop(isDropped, m_state.get());
  });
}
