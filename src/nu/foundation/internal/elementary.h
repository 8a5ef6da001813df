#ifndef NU_FOUNDATION_INTERNAL_ELEMENTARY_H
#define NU_FOUNDATION_INTERNAL_ELEMENTARY_H

#include <cmath>

// The elementary functions whose last digit the C library chooses: all code takes them from here. Square roots, the
// remainders and the roundings to integers are exact in every C library and stay with it.
namespace nu::internal {

inline double Sin(double x) {
  return std::sin(x);
}
inline double Cos(double x) {
  return std::cos(x);
}
inline double Tan(double x) {
  return std::tan(x);
}
inline double Asin(double x) {
  return std::asin(x);
}
inline double Acos(double x) {
  return std::acos(x);
}
inline double Atan(double x) {
  return std::atan(x);
}
inline double Atan2(double y, double x) {
  return std::atan2(y, x);
}
inline double Sinh(double x) {
  return std::sinh(x);
}
inline double Cosh(double x) {
  return std::cosh(x);
}
inline double Asinh(double x) {
  return std::asinh(x);
}
inline double Acosh(double x) {
  return std::acosh(x);
}
inline double Exp(double x) {
  return std::exp(x);
}
inline double Log(double x) {
  return std::log(x);
}
inline double Log2(double x) {
  return std::log2(x);
}
inline double Pow(double x, double y) {
  return std::pow(x, y);
}
inline double Cbrt(double x) {
  return std::cbrt(x);
}
inline double Hypot(double x, double y) {
  return std::hypot(x, y);
}
inline double Hypot(double x, double y, double z) {
  return std::hypot(x, y, z);
}

}  // namespace nu::internal

#endif
