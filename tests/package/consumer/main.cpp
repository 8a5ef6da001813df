#include <nu/nu.h>

#if __cplusplus != 201703L
#error "Nu changed the language of its host"
#endif

int main() {
  // A cast and a shadowed name that a strict project forbids and a host may have.
  int count = (int)3.0;
  { int count = 1; (void)count; }
  return count - 3;
}
