#include "arguments.h"

// The extension module nu._core. What users see of it is in the package's __init__.
NB_MODULE(_core, m) {
  m.doc() = "The classes of the C++ library, for the package nu.";
  nu::python::BindErrors(m);
  nu::python::BindFeatures(m);
  nu::python::BindFits(m);
  nu::python::BindParts(m);
  nu::python::BindPolynomial(m);
}
