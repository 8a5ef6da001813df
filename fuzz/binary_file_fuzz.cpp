// Any bytes after a sound tag end in true or false, never in an exception or an allocation beyond the file's size.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"
#include "support/scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string name = nu::test::ScratchFile("binary_file_fuzz").string();
  for (const char* tag : {"Matrix", "Vector", ""}) {
    {
      std::ofstream file(name, std::ios::binary);
      file.write(tag, *tag == '\0' ? 0 : 7);
      file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    CNuMatrix matrix;
    CNuVector vector;
    const bool isMatrix = matrix.BinaryRead(name.c_str());
    const bool isVector = vector.BinaryRead(name.c_str());
    if (isMatrix && static_cast<std::size_t>(matrix.GetRowSize()) * matrix.GetColumnSize() * 8 > size) std::abort();
    if (isVector && static_cast<std::size_t>(vector.GetSize()) * 8 > size) std::abort();
  }
  std::remove(name.c_str());
  return 0;
}
