#ifndef NU_INSPECT_TOML_H
#define NU_INSPECT_TOML_H

// The reader of TOML, configured the same wherever it is included.

#include <stdexcept>

// The reader met text that it did not foresee. Some such text, as "[~name]", breaks what it asserts of itself; an
// assertion would end the program, and where those are left out, the reader would go on under a false assumption.
class UnforeseenToml : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

constexpr void RequireForeseen(bool holds, const char* assertion) {
  if (!holds) throw UnforeseenToml(assertion);
}

#define TOML_EXCEPTIONS 1
#define TOML_ENABLE_FORMATTERS 0
#define TOML_ASSERT(expression) RequireForeseen(static_cast<bool>(expression), #expression)
#ifdef NDEBUG
#define NU_INSPECT_NDEBUG
#undef NDEBUG
#endif
#include <toml++/toml.h>
#ifdef NU_INSPECT_NDEBUG
#undef NU_INSPECT_NDEBUG
#define NDEBUG
#endif

#endif
