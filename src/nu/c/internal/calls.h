#ifndef NU_C_INTERNAL_CALLS_H
#define NU_C_INTERNAL_CALLS_H

#include <cstdint>
#include <memory>

#include "nu/c/nu.h"
#include "nu/foundation/internal/outputs.h"

// The way of every call from C into the classes: its arguments are checked, and what is thrown becomes a status with
// the message of the thread.
namespace nu::internal::c {

// The status of the exception that is being handled, which it keeps for nu_error_get. Allocates nothing.
nu_status StatusOfFailure() noexcept;

template<class Call>
nu_status Guarded(const Call& call) noexcept {
  try {
    call();
    return NU_STATUS_OK;
  } catch (...) {
    return StatusOfFailure();
  }
}

// What the layer itself refuses; the text lives as long as the program.
[[noreturn]] void Refuse(nu_status status, const char* text);
[[noreturn]] inline void RefuseArgument(const char* text) {
  Refuse(NU_STATUS_ARGUMENT, text);
}
inline void Require(bool isGiven, const char* text) {
  if (!isGiven) RefuseArgument(text);
}

// A result at the place that the caller has for it.
template<class T, class Find>
nu_status Give(T* place, const char* textOfNull, const Find& find) noexcept {
  return Guarded([&] {
    Require(place != nullptr, textOfNull);
    *place = find();
  });
}

// A block of points. Addresses of all of them must exist.
inline void RequirePoints(const double* xyz, std::int32_t count, std::int32_t stride) {
  Require(count >= 0, "count is negative");
  Require(stride >= 3, "stride is below 3");
  Require(xyz != nullptr || count == 0, "xyz is null");
  constexpr std::uint64_t kMost = PTRDIFF_MAX / sizeof(double);
  const bool fits = count == 0 || static_cast<std::uint64_t>(stride) <= kMost / static_cast<std::uint64_t>(count);
  Require(fits, "count and stride exceed the memory there is");
}

// An array of the caller for `size` elements, of which each is made by element(i). Nothing is written where it is too
// short, but for the count.
inline bool IsWanted(const void* array, std::int32_t capacity, std::int32_t size, std::int32_t* count) {
  Require(capacity >= 0, "capacity is negative");
  Require(array != nullptr || capacity == 0, "the array is null");
  if (count != nullptr) *count = size;
  if (array == nullptr) return false;
  if (capacity < size) Refuse(NU_STATUS_CAPACITY, "the array is too short");
  return true;
}
template<class T, class Element>
void Fill(T* array, std::int32_t capacity, std::int32_t size, std::int32_t* count, const Element& element) {
  if (!IsWanted(array, capacity, size, count)) return;
  for (std::int32_t i = 0; i < size; ++i) array[i] = element(i);
}

// What a handle points to begins with this. The tag tells objects of different kinds apart, which are all the same to
// hosts without types for them.
enum class Tag : std::uint32_t {
  kNone = 0,
  kAssociation = 0x6e750001,
  kReport = 0x6e750002,
  kIntersection = 0x6e750003,
  kCurve = 0x6e750004,
  kPart = 0x6e750005,
  kCandidates = 0x6e750006
};

template<Tag kOwn>
struct Handle {
  static constexpr Tag kTag = kOwn;
  Tag tag = kOwn;
};

template<class Handle>
auto& Deref(Handle* handle) {
  Require(handle != nullptr, "the handle is null");
  Require(handle->tag == Handle::kTag, "the handle is one of another object");
  return *handle;
}

// A new handle, made of make(); null when that fails.
template<class Handle, class Make>
nu_status Create(Handle** place, const Make& make) noexcept {
  Output(place, nullptr);
  return Give(place, "the place of the handle is null", [&] { return std::make_unique<Handle>(make()).release(); });
}

template<class Handle>
void Free(Handle* handle) noexcept {
  if (handle == nullptr || handle->tag != Handle::kTag) return;
  handle->tag = Tag::kNone;
  delete handle;
}

}  // namespace nu::internal::c

#endif
