#include "nu/linalg/complex_array.h"

#include "nu/foundation/internal/array_definitions.h"

using namespace nu::internal;

namespace {

// An empty CNuComplexArray names the class, not the operation.
constexpr ArrayTexts kComplexTexts = [] {
  ArrayTexts texts = NU_ARRAY_TEXTS("CNuComplexArray");
  texts.first = texts.last = texts.className;
  return texts;
}();

constexpr ArrayTexts kPolarTexts = NU_ARRAY_TEXTS("CNuComplexPolarArray");

}  // namespace

NU_DEFINE_ARRAY(CNuComplexArray, CNuComplex, const CNuComplex&, kComplexTexts)
NU_DEFINE_ARRAY_PARTS(CNuComplexArray, CNuComplex, kComplexTexts)

NU_DEFINE_ARRAY(CNuComplexPolarArray, CNuComplexPolar, const CNuComplexPolar&, kPolarTexts)
NU_DEFINE_ARRAY_PARTS(CNuComplexPolarArray, CNuComplexPolar, kPolarTexts)
