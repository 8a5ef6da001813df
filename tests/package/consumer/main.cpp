// What a host does across the border of the library: call, read a constant, catch, cast.
#include <nu/nu.h>

#include <cstdio>

#if __cplusplus != 201703L
#error "Nu changed the language of its host"
#endif

static bool CatchesFromTheLibrary() {
  try {
    nu::acosh(0.5);
  } catch (const CNuException& e) {
    const CNuOperationException* operation = dynamic_cast<const CNuOperationException*>(&e);
    return operation != nullptr && operation->GetCause() == 1;
  }
  return false;
}

int main() {
  // A cast and a hidden name that Nu forbids itself and a host may have: our warnings must not reach here.
  const int failures = (int)0.5;
  {
    const int failures = 1;
    (void)failures;
  }
  if (NuMajorVersionLabel != 3 || NuPythag(3.0, 4.0) != 5.0 || !CatchesFromTheLibrary()) {
    std::puts("Nu does not work as installed");
    return 1;
  }
  return failures;
}
