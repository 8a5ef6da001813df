#!/usr/bin/env python3
"""Writes src/nu/engine/base/elementary_tables.h from mpmath: python3 cmake/elementary_tables.py > THE_HEADER."""
from mpmath import mp, mpf, atan, asin, cos, exp, log, nint, pi, sin, sqrt

mp.prec = 1400


def rounded(x, bits=53):
    """The nearest multiple of a unit `bits` binary places below the leading digit of x."""
    if x == 0:
        return mpf(0)
    unit = mpf(2) ** (mp.mag(x) - bits)
    return nint(x / unit) * unit


def on_grid(x, places):
    return nint(x * 2**places) / mpf(2) ** places


def literal(x):
    text = float(x).hex().replace("0x0.0p+0", "0.0")
    if "." in text and "p" in text:
        digits, exponent = text.split("p")
        text = digits.rstrip("0").rstrip(".") + "p" + exponent.replace("+", "")
    return text


def parts(x, *widths):
    """x as a sum of doubles with these numbers of digits; the last takes 53."""
    result = []
    for width in (*widths, 53):
        result.append(rounded(x, width))
        x -= result[-1]
    return result


def table(comment, name, kind, rows):
    print(f"\n// {comment}\ninline constexpr {kind} {name}[{len(rows)}] = {{")
    for row in rows:
        print("    {" + ", ".join(literal(x) for x in row) + "},")
    print("};")


def constants(comment, **values):
    print(f"\n// {comment}")
    for name, value in values.items():
        print(f"inline constexpr double {name} = {literal(value)};")


print("""#ifndef NU_ENGINE_BASE_ELEMENTARY_TABLES_H
#define NU_ENGINE_BASE_ELEMENTARY_TABLES_H

#include <cstdint>

#include "nu/engine/rooms.h"

// Written by cmake/elementary_tables.py. A value of two or more doubles is their exact sum.
namespace nu::engine::base {

struct SineAndCosine {
  double sine, sineLow, cosine, cosineLow;
};
struct Angle {
  double high, low;
};
struct PowerOfTwo {
  double high, low;
};
struct Reciprocal {
  double inverse, logarithm, logarithmLow;
};""")

constants("pi and its parts", kPiHigh=parts(pi)[0], kPiLow=parts(pi, 53)[1])
one = parts(pi / 256, 26, 26)
constants("pi / 256: as two doubles, and in parts of which the first two have 26 digits",
          kStepHigh=parts(pi / 256)[0], kStepLow=parts(pi / 256, 53)[1],
          kStep1=one[0], kStep2=one[1], kStep3=one[2], kStepInverse=256 / pi)
two = parts(log(2) / 128, 34)
constants("log(2) / 128, of which the first part has 34 digits", kLog2Step1=two[0], kLog2Step2=two[1],
          kLog2StepInverse=128 / log(2))
constants("log(2), of which the first part is a multiple of 2^-42",
          kLog2High=on_grid(log(2), 42), kLog2Low=log(2) - on_grid(log(2), 42))

bits = int(mp.floor(2 / pi * mpf(2) ** (64 * 19)))
words = [0] + [(bits >> (64 * (18 - k))) & (2**64 - 1) for k in range(19)]
print("\n// 2 / pi: a word before the binary point, and the digits behind it.")
print(f"inline constexpr std::uint64_t kTwoOverPi[{len(words)}] = {{")
for k in range(0, len(words), 4):
    print("    " + " ".join(f"{word:#018x}," for word in words[k:k + 4]))
print("};")

table("Sine and cosine of i pi / 256.", "kSines", "SineAndCosine",
      [parts(sin(i * pi / 256), 53) + parts(cos(i * pi / 256), 53) for i in range(65)])
table("atan(i / 64).", "kArcTangents", "Angle", [parts(atan(mpf(i) / 64), 53) for i in range(65)])
table("asin(i / 64).", "kArcSines", "Angle", [parts(asin(mpf(i) / 64), 53) for i in range(33)])
table("2^(i / 128).", "kPowersOfTwo", "PowerOfTwo", [parts(mpf(2) ** (mpf(i) / 128), 53) for i in range(128)])

rows = []
for i in range(129):
    # The centres c: from 0.70703125 to the double of that, 128 to a binade.
    step = 53 + i
    centre = (1 + mpf(step) / 128) / 2 if step < 128 else 1 + mpf(step - 128) / 128
    inverse = on_grid(1 / centre, 10)
    high = on_grid(-log(inverse), 42)
    rows.append([inverse, high, -log(inverse) - high])
table("1 / c to ten binary places, and the logarithm of the inverse of that: the first part a multiple of 2^-42.",
      "kReciprocals", "Reciprocal", rows)
print("\n}  // namespace nu::engine::base\n\n#endif")
