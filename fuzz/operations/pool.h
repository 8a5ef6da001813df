#ifndef NU_FUZZ_OPERATIONS_POOL_H
#define NU_FUZZ_OPERATIONS_POOL_H

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "nu/nu.h"
#include "operations/bits.h"
#include "operations/input.h"
#include "operations/operations.h"

namespace nu::fuzz {

// The classes of which a pool has objects.
using Classes =
    std::tuple<CNuInterval, CNuIntArray, CNuDoubleArray, CNuObjArray, CNuConstructionException, CNuOperationException,
               CNuBestfitException, CNuMemoryException, CNuVector, CNuMatrix, CNuLinearEquSys, CNuComplex,
               CNuComplexPolar, CNuComplexArray, CNuComplexPolarArray, CNuComplexVector, CNuComplexMatrix,
               CNuPolynomial, CNuAlgEqu, CNuChebyshevPolynomial, CNuChebyshevPolynomialExpression, CNuTriag,
               CNuTriagPolynomial, CNuTriagEqu, CNuIntegral, CNuIntegral2D, CNuIntegral3D, CNuInterpolation,
               CNuInterpolation2D, CNuPoint, CNuPointArray, CNuCartesianCoord, CNuLine, CNuPlane, CNuCircle, CNuEllipse,
               CNuHyperbola, CNuParabola, CNuSineCurve, CNuCosineCurve, CNuPCurve, CNuLineSegment, CNuCircularArc,
               CNuPolyline, CNuCompositeCurve, CNuSimplifiedCurve, CNuSphSurf, CNuCylSurf, CNuConSurf, CNuTorSurf,
               CNuAssociation, CNuAssociationReport, CNuAssociationPart, CNuAssociationCandidates, CNuSampledFit,
               CNuCertificate, CNuCertificateVerdict>;

template<class T, class Tuple = Classes>
inline constexpr bool kIsPooled = false;
template<class T, class... Types>
inline constexpr bool kIsPooled<T, std::tuple<Types...>> = (... || std::is_same_v<T, Types>);

// Makes the first object of a class in a place for it, a std::unique_ptr.
void FillObject(Input& input, std::size_t classAt, void* place);

// How a call is made: as it is; with one of its allocations failing; or again and again, with the first, the second,
// ... failing, or a few of them, until it ends.
enum class CallMode { kPlain, kOneFailure, kEveryAllocation, kSomeAllocations };

// The objects that operations take as arguments and leave their results in: a few of each class, so that one object is
// often several arguments of a call. An object is made when it is needed first. The pool makes the calls and judges how
// they end.
class Pool {
 public:
  explicit Pool(Input& input);
  ~Pool();
  Pool(const Pool&) = delete;

  void Run(const Operation& operation);
  void SetMode(CallMode mode) { m_mode = mode; }
  // Whether the last call has ended in a result.
  bool HasSucceeded() const { return m_hasSucceeded; }
  // What calls have done that they must not, in words.
  const std::vector<std::string>& Problems() const { return m_problems; }

  Input& Values() { return m_input; }
  // Small numbers for operations whose work grows with what they are given.
  int Small() { return m_input.Below(6); }
  bool IsNull() { return m_input.Byte() >= 224; }
  // The name of a file that operations write and read, the thread's own.
  const char* FileName() const;

  // One of the objects of a class or of the classes derived from it.
  template<class Base>
  Base& Pick() {
    return PickFrom<Base>(*this);
  }
  // The same, to be read.
  template<class Base>
  const Base& Read() {
    return PickFrom<Base>(m_shared == nullptr ? *this : *m_shared);
  }
  // What is read are the objects of another pool from then on, and what calls leave behind is recorded. Several pools
  // may share one that has all its objects.
  void Share(Pool& filled) { m_shared = &filled; }
  void FillAll();
  const Bits& Recorded() const { return m_recorded; }
  template<class Result>
  void Record(const Result& result) {
    // Addresses are not the same the next time.
    if constexpr (!std::is_pointer_v<Result> && !std::is_same_v<Result, CNuObjArray>)
      if (m_shared != nullptr) Put(m_recorded, result);
  }
  // A number that operations write to.
  template<class Number>
  Number& Output() {
    Number& place = std::get<std::array<Number, 4>>(m_numbers)[static_cast<std::size_t>(m_input.Below(4))];
    Watch(place);
    return place;
  }

  // Calls `call` as the mode says and returns whether it has succeeded in the end.
  template<class Call>
  bool Make(const Call& call) {
    m_hasSucceeded = MakeCall([](const void* body) { (*static_cast<const Call*>(body))(); }, &call);
    if (m_shared != nullptr) RecordArguments();
    return m_hasSucceeded;
  }

  // The object takes the place of another one of its class.
  template<class T>
  void Store(T&& value) {
    using Class = std::decay_t<T>;
    std::get<Slots<Class>>(m_objects)[Slot()] = std::make_unique<Class>(std::forward<T>(value));
  }
  // An object that is none of the pool and outlives it.
  CNuObject* Lasting();
  // What a table keeps between its calls beside the objects.
  struct Companion {
    virtual ~Companion() = default;
  };
  template<class T>
  T& With() {
    if (m_companion == nullptr) m_companion = std::make_unique<T>(*this);
    return static_cast<T&>(*m_companion);
  }
  // A failure of the call must leave this number as it is.
  template<class Number>
  void Watch(const Number& number) {
    m_arguments.push_back({&number, PutAs<Number>});
  }
  template<class Plain>
  void WatchBytes(const Plain& plain) {
    m_arguments.push_back({&plain, [](Bits& bits, const void* object) {
                             const auto* bytes = static_cast<const unsigned char*>(object);
                             bits.insert(bits.end(), bytes, bytes + sizeof(Plain));
                           }});
  }
  // What operations hand over is the pool's from then on.
  void Own(CNuObject* object);

 private:
  static constexpr int kSlots = 3;
  template<class T>
  using Slots = std::array<std::unique_ptr<T>, kSlots>;
  template<class Tuple>
  struct Filled;
  template<class... Types>
  struct Filled<std::tuple<Types...>> {
    using Objects = std::tuple<Slots<Types>...>;
  };
  struct Argument {
    const void* object;
    void (*put)(Bits& bits, const void* object);
  };
  enum class Ending { kDone, kFailed, kNumericalFailure, kOutOfMemory };

  template<class T>
  static void PutAs(Bits& bits, const void* object) {
    Put(bits, *static_cast<const T*>(object));
  }
  template<class Base, std::size_t kClass>
  static Base* PickOne(Pool& pool, Pool& from) {
    using T = std::tuple_element_t<kClass, Classes>;
    auto& place = std::get<kClass>(from.m_objects)[pool.Slot()];
    if (place == nullptr) pool.Fill(kClass, &place);
    pool.m_arguments.push_back({place.get(), PutAs<T>});
    return place.get();
  }
  template<class Base, std::size_t... kAt>
  static constexpr auto PickersOf(std::index_sequence<kAt...>) {
    constexpr std::size_t kCount = (0 + ... + std::size_t{std::is_base_of_v<Base, std::tuple_element_t<kAt, Classes>>});
    std::array<Base* (*)(Pool&, Pool&), kCount> pickers{};
    std::size_t next = 0;
    const auto add = [&]<std::size_t kClass>(std::integral_constant<std::size_t, kClass>) {
      if constexpr (std::is_base_of_v<Base, std::tuple_element_t<kClass, Classes>>)
        pickers[next++] = PickOne<Base, kClass>;
    };
    (add(std::integral_constant<std::size_t, kAt>()), ...);
    return pickers;
  }

  template<class Base>
  Base& PickFrom(Pool& from) {
    static constexpr auto kPickers = PickersOf<Base>(std::make_index_sequence<std::tuple_size_v<Classes>>());
    return *kPickers[m_input.Byte() % kPickers.size()](*this, from);
  }

  std::size_t Slot() { return static_cast<std::size_t>(m_input.Below(kSlots)); }
  void Fill(std::size_t classAt, void* place);

  bool MakeCall(void (*call)(const void* body), const void* body);
  bool MakeWithFailures(void (*call)(const void* body), const void* body);
  Ending MakeOnce(void (*call)(const void* body), const void* body);
  Ending Problem(const char* what);
  void JudgeFailure(long kept, const char* changes);
  void TakeNewObjects();
  void Snapshot(Bits& bits) const;
  void RecordArguments();

  Input& m_input;
  CallMode m_mode = CallMode::kPlain;
  bool m_hasSucceeded = false;
  const Operation* m_operation = nullptr;
  Filled<Classes>::Objects m_objects;
  std::tuple<std::array<double, 4>, std::array<int, 4>, std::array<ENuStatus, 4>> m_numbers{};
  std::vector<Argument> m_arguments;  // of the call
  std::vector<std::unique_ptr<CNuObject>> m_owned;
  std::unique_ptr<Companion> m_companion;  // of one table alone
  Bits m_before, m_after, m_recorded;
  Pool* m_shared = nullptr;
  std::vector<std::string> m_problems;
};

}  // namespace nu::fuzz

#endif
