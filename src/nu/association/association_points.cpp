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

// Points that come and go. Everything is built beside the present points and exchanged last.

using namespace nu::internal;

namespace {

constexpr const char* kWhat = "association";

void Append(PointView points, std::vector<double>* to) {
  to->reserve(to->size() + 3 * points.Size());
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

void Exchange(std::vector<double>& points, std::vector<double>& weights, AssociationState* state) {
  state->own.swap(points);
  state->points = state->OwnPoints();
  state->options.weights.swap(weights);
}

void Join(PointView points, const std::vector<double>& weights, const char* where, AssociationState* state) {
  const std::size_t count = state->points.Size();
  if (count + points.Size() > INT_MAX) FailOperation(NuOperationArgument, kWhat, where);
  WithMemory(where, [&] {
    std::vector<double> joined;
    Append(state->points, &joined);
    Append(points, &joined);
    std::vector<double> joinedWeights;
    const std::vector<double>& own = state->options.weights;
    if (!own.empty() || !weights.empty()) {
      Append(own, count, &joinedWeights);
      Append(weights, points.Size(), &joinedWeights);
    }
    Exchange(joined, joinedWeights, state);
  });
}

void Drop(const std::vector<char>& isDropped, AssociationState* state) {
  std::vector<double> kept;
  std::vector<double> keptWeights;
  const std::vector<double>& weights = state->options.weights;
  for (std::size_t i = 0; i < state->points.Size(); ++i) {
    if (isDropped[i]) continue;
    Append(state->points.Part(i, 1), &kept);
    if (!weights.empty()) keptWeights.push_back(weights[i]);
  }
  Exchange(kept, keptWeights, state);
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
