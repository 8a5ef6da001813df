/* The bits of results as lines, and the clouds that they come from: what results.c and results.cpp have in common. */

#include "lines.h"

#include <stdio.h>
#include <string.h>

#include "nu/c/nu.h"

static uint64_t hash = 0xcbf29ce484222325u;
static uint64_t state;

void AddInt(int64_t value) {
  hash = (hash ^ (uint64_t)value) * 0x100000001b3u;
}

void Add(double value) {
  uint64_t bits;
  memcpy(&bits, &value, sizeof bits);
  hash = (hash ^ bits) * 0x100000001b3u;
}

void AddAll(const double* values, int count) {
  int i;
  for (i = 0; i < count; ++i) Add(values[i]);
}

void AddText(const char* text) {
  for (; *text; ++text) AddInt((unsigned char)*text);
}

/* The hash of what was added since the last line, behind a name and three numbers. */
void Line(const char* name, int first, int second, int third) {
  printf("%s %d %d %d %08x%08x\n", name, first, second, third, (unsigned)(hash >> 32), (unsigned)(hash & 0xffffffffu));
  hash = 0xcbf29ce484222325u;
}

static double Uniform(void) {
  state = state * 6364136223846793005u + 1442695040888963407u;
  return (double)(state >> 11) / 9007199254740992.0;
}

/* Points on a feature of the kind with errors of some 1e-3, and turned. Only arithmetic that every language rounds
 * alike. */
void MakeCloud(int kind, double* xyz) {
  int i;
  state = (uint64_t)kind;
  for (i = 0; i < kPoints; ++i) {
    const double t = 2.0 * Uniform() - 1.0, h = Uniform(), w = 2.0 * Uniform() - 1.0, e = 1e-3 * Uniform();
    const double side = Uniform() < 0.5 ? -1.0 : 1.0;
    const double c = side * (1.0 - t * t) / (1.0 + t * t), s = 2.0 * t / (1.0 + t * t);
    const double p = (1.0 - w * w) / (1.0 + w * w), q = 2.0 * w / (1.0 + w * w);
    double x = 0.0, y = 0.0, z = 0.0;
    switch (kind) {
      case NU_KIND_LINE:
        x = 10.0 * h, y = e, z = 1e-3 * t;
        break;
      case NU_KIND_PLANE:
        x = 10.0 * t, y = 10.0 * h, z = e;
        break;
      case NU_KIND_CIRCLE:
        x = (5.0 + e) * c, y = (5.0 + e) * s;
        break;
      case NU_KIND_ELLIPSE:
        x = 7.0 * c + e, y = 4.0 * s;
        break;
      case NU_KIND_HYPERBOLA:
        x = 3.0 / p + e, y = 2.0 * q / p;
        break;
      case NU_KIND_PARABOLA:
        x = 2.0 * w * w + e, y = 4.0 * w;
        break;
      case NU_KIND_SPHERE:
        x = (6.0 + e) * c * p, y = (6.0 + e) * s * p, z = (6.0 + e) * q;
        break;
      case NU_KIND_CYLINDER:
        x = (5.0 + e) * c, y = (5.0 + e) * s, z = 10.0 * h;
        break;
      case NU_KIND_CONE:
        x = (2.0 + h + e) * c, y = (2.0 + h + e) * s, z = 4.0 * h;
        break;
      default:
        x = (8.0 + 2.0 * p) * c + e, y = (8.0 + 2.0 * p) * s, z = 2.0 * q;
        break;
    }
    xyz[kStride * i] = (2.0 * x - y + 2.0 * z) / 3.0 + 100.0;
    xyz[kStride * i + 1] = (2.0 * x + 2.0 * y - z) / 3.0 - 50.0;
    xyz[kStride * i + 2] = (2.0 * y + 2.0 * z - x) / 3.0 + 20.0;
    xyz[kStride * i + 3] = 0.0;
  }
}

