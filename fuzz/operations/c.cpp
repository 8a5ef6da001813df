// The operations of the interface for C: one line each.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <vector>

#include "nu/c/nu.h"
#include "operations/pool.h"
#include "support/clouds.h"

namespace nu::fuzz {

namespace {

void Free(nu_association* handle) {
  nu_association_free(handle);
}
void Free(nu_report* handle) {
  nu_report_free(handle);
}
void Free(nu_intersection* handle) {
  nu_intersection_free(handle);
}
void Free(nu_curve* handle) {
  nu_curve_free(handle);
}
void Free(nu_part* handle) {
  nu_part_free(handle);
}
void Free(nu_candidates* handle) {
  nu_candidates_free(handle);
}

// Counts, strides and capacities are 40 at most; null pointers, negative numbers and wrong handles come as well.
constexpr int kMostCount = 40, kPlaces = 4;

template<class T>
using Room = std::array<T, kPlaces + 3 * kMostCount>;

// What callers of C have: arrays of each kind, a few places of them as arguments, and handles.
class Values : public Pool::Companion {
 public:
  explicit Values(Pool& pool) : m_pool(pool) {
    test::Random random(pool.Values().Byte());
    for (std::size_t i = 0; i < m_coordinates.size(); i += 3) {
      const double angle = random.Uniform(0.0, 6.0);
      const double xyz[] = {2.0 * std::cos(angle), 2.0 * std::sin(angle), random.Uniform(-1.0, 1.0)};
      std::copy_n(xyz, std::min<std::size_t>(3, m_coordinates.size() - i), m_coordinates.begin() + i);
    }
    for (int left = pool.Values().Below(8); left > 0; --left) {
      m_coordinates[pool.Values().Byte()] = pool.Values().Number();
    }
    m_coordinates[kAxis + 2] = 1.0;
    for (std::size_t i = 0; i < kPlaces; ++i) {
      Fill(Array<nu_feature>()[i]);
      Make(i);
    }
  }
  ~Values() override {
    std::apply([](auto&... handles) { (FreeAll(handles), ...); }, m_handles);
    std::apply([](auto&... handles) { (FreeAll(handles), ...); }, m_returned);
  }

  int Integer() {
    const std::uint8_t choice = m_pool.Values().Byte();
    constexpr int kNumbers[] = {-1,           8, 9, 12, 16, 31, kMostCount, INT32_MIN, NU_KIND_POINT, NU_KIND_LINE,
                                NU_KIND_PLANE};
    return choice < 160 ? choice % 8 : kNumbers[choice % std::size(kNumbers)];
  }
  // Coordinates never change: associations borrow them.
  const double* Coordinates() {
    if (m_pool.IsNull()) return nullptr;
    const int at = m_pool.Values().Below(kPlaces + 1);
    return m_coordinates.data() + (at == kPlaces ? kAxis : std::size_t{3} * at);
  }
  template<class T>
  T* Place() {
    if (m_pool.IsNull()) return nullptr;
    T& place = Array<T>()[static_cast<std::size_t>(m_pool.Values().Below(kPlaces))];
    // A failure leaves all of them but counts, and tells of itself in an error.
    if constexpr (!std::is_same_v<T, std::int32_t> && !std::is_same_v<T, nu_error>) m_pool.WatchBytes(place);
    return &place;
  }
  template<class T>
  T* Handle() {
    return m_pool.IsNull() ? nullptr : Slot<T>();
  }
  template<class T>
  T*& Slot() {
    return std::get<std::array<T*, kPlaces>>(m_handles)[static_cast<std::size_t>(m_pool.Values().Below(kPlaces))];
  }
  template<class T>
  T** Returned() {
    return m_pool.IsNull() ? nullptr : std::get<Room<T*>>(m_returned).data();
  }
  // Handles that a call returned replace others.
  void KeepReturned() {
    std::apply([this](auto&... handles) { (Keep(handles), ...); }, m_returned);
  }

 private:
  // Where the coordinates of the z axis are; from the next number on all are those of a cylinder.
  static constexpr std::size_t kAxis = 150, kCylinder = 300;

  template<class T>
  Room<T>& Array() {
    return std::get<Room<T>>(m_arrays);
  }
  template<class Handles>
  static void FreeAll(Handles& handles) {
    for (auto& handle : handles) Free(handle);
  }
  template<class T>
  void Keep(Room<T*>& returned) {
    for (T*& handle : returned) {
      if (handle == nullptr) continue;
      T*& slot = Slot<T>();
      Free(slot);
      slot = handle;
      handle = nullptr;
    }
  }
  template<class T>
  T*& Handle(std::size_t i) {
    return std::get<std::array<T*, kPlaces>>(m_handles)[i];
  }
  // The i-th handle of each kind, so that calls get somewhere without others before them.
  void Make(std::size_t i) {
    nu_feature cylinder{}, other{};
    cylinder.kind = NU_KIND_CYLINDER;
    other.kind = i % 2 == 0 ? NU_KIND_PLANE : NU_KIND_CYLINDER;
    other.direction[2] = other.direction[0] = cylinder.direction[2] = 1.0;
    cylinder.size[0] = 2.0;
    other.size[0] = i % 2 == 0 ? 0.0 : 1.0;
    nu_association*& association = Handle<nu_association>(i);
    nu_association_create(m_coordinates.data() + kCylinder, kMostCount, 3, &association);
    nu_part_create(association, &cylinder, cylinder.point, &Handle<nu_part>(i));
    nu_candidates_create(&Handle<nu_candidates>(i));
    nu_candidates_add(Handle<nu_candidates>(i), Handle<nu_part>(i));
    nu_intersection_create(&other, &cylinder, &Handle<nu_intersection>(i));
    nu_association_set_details(association, NU_DETAIL_ALL);
    nu_association_fit(association, i % 2 == 0 ? NU_CRITERION_LEAST_SQUARES : NU_CRITERION_MINIMUM_ZONE, &cylinder,
                       &Handle<nu_report>(i));
    const double corners[] = {0.0, 0.0, 0.0, 3.0, 0.0, 0.0, 4.0, 1.0, 0.0}, centre[] = {3.0, 1.0, 0.0};
    nu_curve*& curve = Handle<nu_curve>(i);
    nu_curve_create(&curve);
    nu_curve_add_segment(curve, corners, corners + 3);
    if (i % 2 == 0) nu_curve_add_arc(curve, centre, corners + 3, corners + 6, 1);
  }
  void Fill(nu_feature& feature) {
    constexpr int kKinds[] = {NU_KIND_POINT,
                              NU_KIND_LINE,
                              NU_KIND_PLANE,
                              NU_KIND_CIRCLE,
                              NU_KIND_ELLIPSE,
                              NU_KIND_HYPERBOLA,
                              NU_KIND_PARABOLA,
                              NU_KIND_SPHERE,
                              NU_KIND_CYLINDER,
                              NU_KIND_CONE,
                              NU_KIND_TORUS,
                              NU_KIND_CURVE,
                              -1};
    Input& input = m_pool.Values();
    feature.kind = kKinds[static_cast<std::size_t>(input.Below(static_cast<int>(std::size(kKinds))))];
    feature.is_unit = input.Below(2);
    feature.direction[2] = 1.0;
    feature.size[0] = 2.0;
    feature.size[1] = 1.0;
    if (input.Below(2) == 0) return;
    for (double& number : feature.point) number = input.Number();
    for (double& number : feature.direction) number = input.Number();
    for (double& number : feature.size) number = input.Number();
  }

  Pool& m_pool;
  std::array<double, kMostCount*(kMostCount + 4)> m_coordinates;
  std::tuple<Room<double>, Room<std::int32_t>, Room<char>, Room<nu_error>, Room<nu_feature>, Room<nu_form>,
             Room<nu_summary>, Room<nu_contact>, Room<nu_parameter>, Room<nu_uncertainty>, Room<nu_weakness>,
             Room<nu_bound>, Room<nu_spread>, Room<nu_verdict>, Room<nu_segment>, Room<nu_complex>, Room<nu_part_sums>,
             Room<std::uint8_t>>
      m_arrays{};
  std::tuple<std::array<nu_association*, kPlaces>, std::array<nu_report*, kPlaces>,
             std::array<nu_intersection*, kPlaces>, std::array<nu_curve*, kPlaces>, std::array<nu_part*, kPlaces>,
             std::array<nu_candidates*, kPlaces>>
      m_handles{};
  std::tuple<Room<nu_association*>, Room<nu_report*>, Room<nu_intersection*>, Room<nu_curve*>, Room<nu_part*>,
             Room<nu_candidates*>>
      m_returned{};
};

template<class T>
inline constexpr bool kIsHandle =
    std::is_same_v<T, nu_association> || std::is_same_v<T, nu_report> || std::is_same_v<T, nu_intersection> ||
    std::is_same_v<T, nu_curve> || std::is_same_v<T, nu_part> || std::is_same_v<T, nu_candidates>;

template<class T>
T Given(Pool& pool, Values& values) {
  if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(values.Integer());
  } else if constexpr (std::is_floating_point_v<T>) {
    return pool.Values().Number();
  } else if constexpr (std::is_same_v<T, const double*>) {
    return values.Coordinates();
  } else if constexpr (std::is_same_v<T, const char*>) {
    return pool.IsNull() ? nullptr : pool.FileName();
  } else {
    using Object = std::remove_const_t<std::remove_pointer_t<T>>;
    if constexpr (std::is_pointer_v<Object>)
      return values.Returned<std::remove_pointer_t<Object>>();
    else if constexpr (kIsHandle<Object>)
      return values.Handle<Object>();
    else
      return values.Place<Object>();
  }
}

// Statuses are failures to the pool.
void Require(nu_status status) {
  if (status == NU_STATUS_MEMORY) throw CNuMemoryException("C");
  if (status < NU_STATUS_OK || status >= NU_STATUS_UNEXPECTED) throw status;
  if (status != NU_STATUS_OK) throw CNuOperationException(NuOperationFailed, "status", "C", 0, 0, 0.0, 0.0);
}

template<auto kFunction>
struct CalledInC;
template<class... Arguments, nu_status (*kFunction)(Arguments...)>
struct CalledInC<kFunction> {
  static void Run(Pool& pool) {
    Values& values = pool.With<Values>();
    std::tuple<Arguments...> arguments{Given<Arguments>(pool, values)...};
    pool.Make([&] { Require(std::apply(kFunction, arguments)); });
    values.KeepReturned();
  }
};

template<class T>
void Release(Pool& pool) {
  T*& slot = pool.With<Values>().Slot<T>();
  pool.Make([&] { Free(slot); });
  slot = nullptr;
}

void Texts(Pool& pool) {
  pool.Make([] {
    if (nu_version_text()[0] == '\0') throw nu_error_message();
  });
}

// As bytes and back; of a damaged byte as well. Some kilobytes are more than places have.
void WriteAndReadPart(Pool& pool) {
  Values& values = pool.With<Values>();
  const nu_part* part = values.Handle<nu_part>();
  nu_part** read = values.Returned<nu_part>();
  std::int32_t count = 0;
  if (!pool.Make([&] { Require(nu_part_write(part, nullptr, 0, &count)); })) return;
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(count));
  pool.Make([&] { Require(nu_part_write(part, bytes.data(), count, nullptr)); });
  if (pool.IsNull() && count > 0) bytes[static_cast<std::size_t>(pool.Values().Byte() % count)] ^= 1;
  pool.Make([&] { Require(nu_part_read(bytes.data(), count, read)); });
  values.KeepReturned();
}

void WriteAndReadCurve(Pool& pool) {
  Values& values = pool.With<Values>();
  const nu_curve* written = values.Handle<nu_curve>();
  nu_curve* read = values.Handle<nu_curve>();
  const char* name = pool.IsNull() ? nullptr : pool.FileName();
  pool.Make([&] { Require(nu_curve_write(written, name)); });
  pool.Make([&] { Require(nu_curve_read(read, name)); });
}

std::int32_t Monitor(void* steps, std::int64_t step, double, double) {
  return step < *static_cast<const std::int64_t*>(steps) ? 1 : 0;
}

void Watch(Pool& pool) {
  Values& values = pool.With<Values>();
  nu_association* association = values.Handle<nu_association>();
  std::int64_t steps = pool.Small();
  nu_feature* feature = values.Place<nu_feature>();
  const int criterion = values.Integer();
  pool.Make([&] { Require(nu_association_set_monitor(association, Monitor, &steps)); });
  pool.Make([&] { Require(nu_association_fit(association, criterion, feature, nullptr)); });
  nu_association_set_monitor(association, nullptr, nullptr);
}

#define NU_C(name) \
  { #name, CalledInC < name> ::Run }

constexpr Operation kOperations[] = {
    {"nu_association_free", Release<nu_association>},
    {"nu_report_free", Release<nu_report>},
    {"nu_intersection_free", Release<nu_intersection>},
    {"nu_curve_free", Release<nu_curve>},
    {"nu_part_free", Release<nu_part>},
    {"nu_candidates_free", Release<nu_candidates>},
    {"nu_version_text", Texts},
    {"nu_error_message", Texts},
    {"nu_association_set_monitor", Watch},
    {"nu_part_write", WriteAndReadPart},
    {"nu_part_read", WriteAndReadPart},
    {"nu_curve_write", WriteAndReadCurve},
    {"nu_curve_read", WriteAndReadCurve},
    NU_C(nu_version_get),
    NU_C(nu_error_get),
    NU_C(nu_tolerance_get),
    NU_C(nu_tolerance_set),
    NU_C(nu_feature_fit),
    NU_C(nu_feature_normalise),
    NU_C(nu_feature_translate),
    NU_C(nu_feature_rotate),
    NU_C(nu_feature_distance),
    NU_C(nu_feature_angle),
    NU_C(nu_feature_is_parallel),
    NU_C(nu_feature_project),
    NU_C(nu_feature_side),
    NU_C(nu_feature_middle),
    NU_C(nu_feature_closest),
    NU_C(nu_feature_intersect),
    NU_C(nu_intersection_create),
    NU_C(nu_intersection_count),
    NU_C(nu_intersection_get),
    NU_C(nu_intersection_range),
    NU_C(nu_intersection_sample),
    NU_C(nu_intersection_closest),
    NU_C(nu_association_create),
    NU_C(nu_association_count),
    NU_C(nu_association_add),
    NU_C(nu_association_remove),
    NU_C(nu_association_merge),
    NU_C(nu_association_set_weights),
    NU_C(nu_association_fix),
    NU_C(nu_association_release),
    NU_C(nu_association_set_side),
    NU_C(nu_association_set_start),
    NU_C(nu_association_set_max_steps),
    NU_C(nu_association_set_tolerance),
    NU_C(nu_association_set_details),
    NU_C(nu_association_fit),
    NU_C(nu_association_refit),
    NU_C(nu_association_prove),
    NU_C(nu_association_sensitivity),
    NU_C(nu_association_sample),
    NU_C(nu_part_create),
    NU_C(nu_part_join),
    NU_C(nu_part_get),
    NU_C(nu_part_step),
    NU_C(nu_candidates_create),
    NU_C(nu_candidates_add),
    NU_C(nu_candidates_fit),
    NU_C(nu_report_get),
    NU_C(nu_report_require),
    NU_C(nu_report_form),
    NU_C(nu_report_deviations),
    NU_C(nu_report_contacts),
    NU_C(nu_report_uncertainty),
    NU_C(nu_report_parameter),
    NU_C(nu_report_frame),
    NU_C(nu_report_covariance),
    NU_C(nu_report_axis_uncertainty),
    NU_C(nu_report_surface_uncertainty),
    NU_C(nu_report_bound),
    NU_C(nu_report_weakness),
    NU_C(nu_report_explain),
    NU_C(nu_report_check),
    NU_C(nu_certificate_check),
    NU_C(nu_polynomial_roots),
    NU_C(nu_polynomial_complex_roots),
    NU_C(nu_curve_create),
    NU_C(nu_curve_add_segment),
    NU_C(nu_curve_add_arc),
    NU_C(nu_curve_count),
    NU_C(nu_curve_get),
    NU_C(nu_curve_length),
    NU_C(nu_curve_distance),
    NU_C(nu_curve_offset),
    NU_C(nu_curve_polyline),
};

}  // namespace

std::span<const Operation> COperations() {
  return kOperations;
}

}  // namespace nu::fuzz
