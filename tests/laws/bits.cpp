// Prints the fingerprint of the library: builds by different compilers and for different instruction sets must print
// the same.

#include <cinttypes>
#include <cstdio>

// Found without the tests' include directory: the full check compiles this source alone.
#include "../support/fingerprint.h"

int main() {
  std::printf("%016" PRIx64 "\n", nu::test::fingerprint::Of([] {}));
  return 0;
}
