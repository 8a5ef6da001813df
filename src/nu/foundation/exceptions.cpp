#include "nu/foundation/exceptions.h"

#include <atomic>
#include <cstddef>

namespace {

// Added to the cause, so that the stored code tells the kinds apart.
constexpr int kOperation = 100;
constexpr int kBestfit = 200;

template<std::size_t N>
void CopyText(const char* text, char (&field)[N]) {
  if (text == nullptr) return;
  std::size_t i = 0;
  for (; i + 1 < N && text[i] != '\0'; ++i) field[i] = text[i];
  field[i] = '\0';
}

// libc++ has no atomic_ref before its version 19; its compiler has the operations. No atomic_ref takes a constant.
// NOLINTBEGIN(readability-non-const-parameter)
void Store(int* flag, int value) {
#ifdef __cpp_lib_atomic_ref
  std::atomic_ref(*flag).store(value, std::memory_order_relaxed);
#else
  __atomic_store_n(flag, value, __ATOMIC_RELAXED);
#endif
}

int Load(int* flag) {
#ifdef __cpp_lib_atomic_ref
  return std::atomic_ref(*flag).load(std::memory_order_relaxed);
#else
  return __atomic_load_n(flag, __ATOMIC_RELAXED);
#endif
}
// NOLINTEND(readability-non-const-parameter)

}  // namespace

// The destructors stand here to anchor the type information that exceptions are caught by in the library itself.
CNuException::~CNuException() = default;
CNuConstructionException::~CNuConstructionException() = default;
CNuOperationException::~CNuOperationException() = default;
CNuBestfitException::~CNuBestfitException() = default;
CNuMemoryException::~CNuMemoryException() = default;

constinit int CNuException::m_nAssert = 0;

void CNuException::SetAssert() {
  Store(&m_nAssert, 1);
}

int CNuException::IsAssertEnabled() {
  return Load(&m_nAssert);
}

void CNuException::SetWhat(const char* text) {
  CopyText(text, m_szWhat);
}

void CNuException::SetWhere(const char* text) {
  CopyText(text, m_szWhere);
}

CNuConstructionException::CNuConstructionException(int cause, const char* where, const char* what, int lower, int upper)
    : CNuException(0) {
  if (cause == 0) return;
  m_nCause = cause;
  m_nLower = lower;
  m_nUpper = upper;
  SetWhat(what);
  SetWhere(where);
}

int CNuConstructionException::GetCause() const {
  return m_nCause;
}

CNuOperationException::CNuOperationException(int cause, const char* what, const char* where, int lower, int upper,
                                             double dlower, double dupper)
    : CNuException(0) {
  if (cause == 0) return;
  m_nCause = cause + kOperation;
  m_nLower = lower;
  m_nUpper = upper;
  m_dLower = dlower;
  m_dUpper = dupper;
  SetWhat(what);
  SetWhere(where);
}

int CNuOperationException::GetCause() const {
  return m_nCause == 0 ? 0 : m_nCause - kOperation;
}

CNuBestfitException::CNuBestfitException(int cause, const char* where, int size) : CNuException(0) {
  if (cause == 0) return;
  m_nCause = cause + kBestfit;
  m_nLower = size;
  SetWhere(where);
}

int CNuBestfitException::GetCause() const {
  return m_nCause == 0 ? 0 : m_nCause - kBestfit;
}

CNuMemoryException::CNuMemoryException(const char* where) : CNuException(0) {
  if (where == nullptr) return;
  m_nCause = NuMemoryExhausted;
  SetWhere(where);
}

int CNuMemoryException::GetCause() const {
  return m_nCause;
}
