#ifndef NU_TESTS_C_LINES_H
#define NU_TESTS_C_LINES_H

#include <stdint.h>

/* What results.c and results.cpp have in common: the lines that they print, and the clouds that these come from. */

#ifdef __cplusplus
extern "C" {
#endif

enum { kPoints = 40, kStride = 4 };

/* Add all bits to the hash of the next line. */
void AddInt(int64_t value);
void Add(double value);
void AddAll(const double* values, int count);
void AddText(const char* text);

/* Prints the hash of what was added since the last line, behind a name and three numbers. */
void Line(const char* name, int first, int second, int third);

/* kPoints points, each kStride numbers from the last one, on a feature of the kind with errors of some 1e-3, and
   turned. Only arithmetic that every language rounds alike. */
void MakeCloud(int kind, double* xyz);

#ifdef __cplusplus
}
#endif

#endif
