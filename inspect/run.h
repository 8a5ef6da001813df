#ifndef NU_INSPECT_RUN_H
#define NU_INSPECT_RUN_H

#include "options.h"

enum ExitCode { kWithinTolerance = 0, kOutOfTolerance = 1, kBadInput = 2, kFitFailed = 3 };

// Says on standard error what went wrong; returns the code.
ExitCode Complain(const char* text, ExitCode code);

constexpr const char* kOutOfMemory = "not enough memory";
// The reader of TOML has allocating functions that must not throw, so that lack of memory calls std::terminate. From
// now on that ends the program with the message and kBadInput; other causes end it as before.
void ComplainOfMemoryAtTermination();

ExitCode GraverCode(ExitCode a, ExitCode b);

// Inspects every file by every method, writes all that was asked for, and goes on with the rest where one part fails.
// Returns the gravest of what happened. Throws InputError for options that contradict each other, before any work.
ExitCode Run(const Options& options);

#endif
