// Fits ideal features to files of measured points and reports their form deviation: as tables, as pictures, as JSON,
// and as the exit code.

#include <nu/nu.h>

#include <exception>
#include <new>

#include "options.h"
#include "report/output_file.h"
#include "run.h"

namespace {

std::string VersionText() {
  return "inspect, on Nu " + std::to_string(NuMajorVersionLabel) + "." + std::to_string(NuMinorVersionLabel) + "." +
         std::to_string(NuBuildVersionLabel) + "\n";
}

}  // namespace

int main(int argc, char** argv) {
  ComplainOfMemoryAtTermination();
  try {
    const Options options = ParseOptions(argc, argv);
    if (!options.help && !options.version) return Run(options);
    Print(options.help ? HelpText() : VersionText());
    return kWithinTolerance;
  } catch (const CNuMemoryException&) {
    return Complain(kOutOfMemory, kBadInput);
  } catch (const std::bad_alloc&) {
    return Complain(kOutOfMemory, kBadInput);
  } catch (const std::exception& error) {
    return Complain(error.what(), kBadInput);
  }
}
