#ifndef NU_FOUNDATION_CAUSE_TEXT_H
#define NU_FOUNDATION_CAUSE_TEXT_H

#include "nu/export.h"
#include "nu/fwd.h"

// Both return text that lives as long as the program, and never fail. An exception without a cause, or with one that
// the library does not use, gives "unknown cause" and an empty name.

// What happened, for a person: "too few points: at least 3 are needed". Lower case, no full stop, so that it fits
// behind the name of a part or a feature.
NU_EXPORT const char* NuCauseText(const CNuException& failure);

// The enumerator of nu/foundation/causes.h: "NuBestfitTooFewPoints".
NU_EXPORT const char* NuCauseName(const CNuException& failure);

#endif
