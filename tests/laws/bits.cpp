// Prints the fingerprint of the library: builds by different compilers and for different instruction sets must print
// the same. `nu_bits sample` takes the small inputs alone, `nu_bits parts` prints a line for each kind of operation.

#include <cinttypes>
#include <cstdio>
#include <cstring>

// Found without the tests' include directory: the full check compiles this source alone.
#include "../support/fingerprint.h"

using namespace nu::test::fingerprint;

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "parts") == 0) {
    for (const Part& part : Parts()) std::printf("%016" PRIx64 " %s\n", Of(part, false), part.name);
    return 0;
  }
  std::printf("%016" PRIx64 "\n", Of(argc > 1, [] {}));
  return 0;
}
