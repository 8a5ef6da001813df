#include "arguments.h"

namespace nu::python {

namespace {

enum class Kind { construction, operation, bestfit };

// The classes and their texts are in nu/_errors.py.
void Raise(const CNuException& failure, Kind kind) {
  const nb::object make = nb::module_::import_("nu._errors").attr("_from_library");
  const nb::object error =
      make(static_cast<int>(kind), failure.GetCause(), NuCauseName(failure), NuCauseText(failure), failure.m_szWhere,
           failure.m_szWhat, failure.m_nLower, failure.m_nUpper, failure.m_dLower, failure.m_dUpper);
  PyErr_SetObject(error.type().ptr(), error.ptr());
}

void Translate(const std::exception_ptr& thrown, void*) {
  try {
    std::rethrow_exception(thrown);
  } catch (const CNuMemoryException&) {
    PyErr_NoMemory();
  } catch (const CNuConstructionException& failure) {
    Raise(failure, Kind::construction);
  } catch (const CNuOperationException& failure) {
    Raise(failure, Kind::operation);
  } catch (const CNuBestfitException& failure) {
    Raise(failure, Kind::bestfit);
  }
}

}  // namespace

void BindErrors(nb::module_&) {
  nb::register_exception_translator(Translate);
}

}  // namespace nu::python
