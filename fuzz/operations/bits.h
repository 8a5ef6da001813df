#ifndef NU_FUZZ_OPERATIONS_BITS_H
#define NU_FUZZ_OPERATIONS_BITS_H

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "nu/nu.h"

// What an object holds, as far as its operations show it, bit for bit.
namespace nu::fuzz {

using Bits = std::vector<std::uint64_t>;

template<class T>
void Put(Bits& bits, const T& value);

inline void PutAll(Bits&) {}
template<class First, class... Rest>
void PutAll(Bits& bits, const First& first, const Rest&... rest) {
  Put(bits, first);
  PutAll(bits, rest...);
}

template<class T>
void PutNumber(Bits& bits, T value) {
  std::uint64_t word = 0;
  std::memcpy(&word, &value, sizeof value);
  bits.push_back(word);
}

template<class Array>
void PutElements(Bits& bits, const Array& array, int size) {
  bits.push_back(static_cast<std::uint64_t>(size));
  for (int i = 0; i < size; ++i) Put(bits, array[i]);
}

template<class Matrix>
void PutMatrix(Bits& bits, const Matrix& m) {
  PutAll(bits, m.GetRowSize(), m.GetColumnSize());
  for (int i = 0; i < m.GetRowSize(); ++i) {
    for (int j = 0; j < m.GetColumnSize(); ++j) Put(bits, m.Element(i, j));
  }
}

template<class Coordinates>
void PutCoordinates(Bits& bits, const Coordinates& coordinates) {
  CNuPoint origin;
  CNuVector x, z;
  coordinates.GetData(&origin, &x, &z);
  PutAll(bits, origin, x, z);
}

template<class Curve>
void PutEnds(Bits& bits, const Curve& curve) {
  PutAll(bits, curve.GetStartPoint(), curve.GetEndPoint());
}

template<class T>
void Put(Bits& bits, const T& value) {
  if constexpr (std::is_arithmetic_v<T> || std::is_pointer_v<T> || std::is_enum_v<T>)
    PutNumber(bits, value);
  else if constexpr (std::is_base_of_v<CNuException, T>)
    PutAll(bits, value.m_nCause, value.m_nLower, value.m_nUpper, value.m_dLower, value.m_dUpper);
  else if constexpr (std::is_same_v<T, CNuPoint>)
    PutAll(bits, value.x(), value.y(), value.z());
  else if constexpr (std::is_same_v<T, CNuComplex>)
    PutAll(bits, value.r(), value.i());
  else if constexpr (std::is_same_v<T, CNuComplexPolar>)
    PutAll(bits, value.Modulus(), value.Argument());
  else if constexpr (requires { value.GetRowSize(); })
    PutMatrix(bits, value);
  else if constexpr (requires {
                       value.GetCentre();
                       value.Length();
                     })
    PutEnds(bits, value), PutAll(bits, value.GetCentre(), value.Length());
  else if constexpr (requires { value.GetNumberSegments(); })
    PutAll(bits, value.GetNumberSegments(), value.Length());
  else if constexpr (requires {
                       value[0];
                       value.GetSize();
                     })
    PutElements(bits, value, value.GetSize());
  else if constexpr (requires { value.GetStartPoint(); })
    PutEnds(bits, value);
  else if constexpr (requires { value.GetNumberRealRoots(); })
    PutAll(bits, value.GetRealRoots(), value.GetComplexRoots());
  else if constexpr (requires { value.GetRoots(); })
    Put(bits, value.GetRoots());
  else if constexpr (std::is_same_v<T, CNuCartesianCoord>)
    PutCoordinates(bits, value);
  else if constexpr (requires { value.GetSolution(); })
    Put(bits, value.GetSolution());
  else if constexpr (requires { value.GetCosData(); })
    for (int i = 0; i <= value.GetDegree(); ++i) PutAll(bits, value.GetCosData()[i], value.GetSinData()[i]);
  else if constexpr (requires {
                       value.GetDegree();
                       value.GetData();
                     })
    for (int i = 0; i <= value.GetDegree(); ++i) Put(bits, value.GetData()[i]);
  else if constexpr (requires {
                       value.GetPoint();
                       value.GetNormal();
                     })
    PutAll(bits, value.GetPoint(), value.GetNormal());
  else if constexpr (requires {
                       value.GetPoint();
                       value.GetDirection();
                     })
    PutAll(bits, value.GetPoint(), value.GetDirection());
  else if constexpr (requires { value.GetSemiAngle(); })
    PutAll(bits, value.GetSemiAngle(), value.GetTransformation());
  else if constexpr (requires { value.GetMajorRadius(); })
    PutAll(bits, value.GetMajorRadius(), value.GetMinorRadius(), value.GetTransformation());
  else if constexpr (requires {
                       value.GetRadius();
                       value.GetTransformation();
                     })
    PutAll(bits, value.GetRadius(), value.GetTransformation());
  else if constexpr (requires { value.GetSemiAxisA(); })
    PutAll(bits, value.GetSemiAxisA(), value.GetSemiAxisB(), value.GetTransformation());
  else if constexpr (requires { value.GetTransformation(); })
    Put(bits, value.GetTransformation());
  else if constexpr (requires {
                       value.ValueAt(0.0);
                       value.Period();
                     })
    PutAll(bits, value.ValueAt(0.0), value.Period());
  else if constexpr (requires { value.GetValue(); })
    Put(bits, value.GetValue());
  else if constexpr (requires { value.GetNumberPoints(); })
    Put(bits, value.GetNumberPoints());
}

}  // namespace nu::fuzz

#endif
