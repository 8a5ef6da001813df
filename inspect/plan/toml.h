#ifndef NU_INSPECT_TOML_H
#define NU_INSPECT_TOML_H

// The reader of TOML, configured the same wherever it is included.

#define TOML_EXCEPTIONS 1
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

#endif
