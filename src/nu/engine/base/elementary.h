#ifndef NU_ENGINE_BASE_ELEMENTARY_H
#define NU_ENGINE_BASE_ELEMENTARY_H

#include "nu/engine/rooms.h"

// Elementary functions with the same bits on every machine; those of the C library differ in the last digit from one
// to the next. Errors stay below 0.52 units in the last place. Special values are those of ISO C, Annex F; there is no
// errno. Square roots, remainders and roundings to integers are exact everywhere and are taken from the standard
// library.
namespace nu::engine::base {

double Sin(double x);
double Cos(double x);
double Tan(double x);

struct SineCosine {
  double sine;
  double cosine;
};
// Gives the bits of Sin and Cos for little more than the time of one of them.
SineCosine SinCos(double x);

double Asin(double x);
double Acos(double x);
double Atan(double x);
double Atan2(double y, double x);

double Exp(double x);
double Log(double x);
double Pow(double x, double y);

double Sinh(double x);
double Cosh(double x);
double Asinh(double x);
double Acosh(double x);

double Cbrt(double x);
// The result is the same for every order of the arguments.
double Hypot(double x, double y);
double Hypot(double x, double y, double z);

}  // namespace nu::engine::base

#endif
