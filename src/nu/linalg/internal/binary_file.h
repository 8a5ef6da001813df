#ifndef NU_LINALG_INTERNAL_BINARY_FILE_H
#define NU_LINALG_INTERNAL_BINARY_FILE_H

#include <cstdint>
#include <fstream>

// The files of matrices and vectors: a seven-byte tag, 32-bit dimensions and doubles, little-endian on every machine.
namespace nu::internal {

inline constexpr int kTagLength = 7;

class BinaryFileWriter {
 public:
  enum class Outcome { kWritten, kNotOpened, kReadOnly };

  explicit BinaryFileWriter(const char* fileName);

  // Writes the tag through to the file, so that a file which cannot be written shows here.
  void Tag(const char* tag);
  void Int(int value);
  void Doubles(const double* values, int n);
  // Closes the file; only what has reached it counts as written.
  Outcome Close();

 private:
  std::ofstream m_file;
  bool m_exists = false;
};

class BinaryFileReader {
 public:
  explicit BinaryFileReader(const char* fileName);

  bool Tag(const char* tag);
  bool Int(int* value);
  // Whether count1 x count2 more doubles are really there: heads that promise more are refused before any allocation.
  bool HoldsDoubles(int count1, int count2);
  bool Doubles(double* values, int n);

 private:
  std::ifstream m_file;
};

}  // namespace nu::internal

#endif
