#ifndef NU_LINALG_INTERNAL_BINARY_FILE_H
#define NU_LINALG_INTERNAL_BINARY_FILE_H

#include <cstdint>
#include <fstream>
#include <vector>

#include "nu/foundation/internal/failures.h"

// The files of matrices and vectors: a seven-byte tag, 32-bit dimensions and doubles, little-endian on every machine.
// The file of a composite curve has a longer tag and records that take the stream.
namespace nu::internal {

inline constexpr int kTagLength = 7;

void WriteInt(std::ostream& out, int value);
bool ReadInt(std::istream& in, int* value);

// While one lives, files are opened for the interface for C on its thread: their names are UTF-8, and readers throw for
// lack of memory. Otherwise names are in the encoding of the platform, which makes a difference on Windows alone.
class FilesOfC {
 public:
  FilesOfC();
  FilesOfC(const FilesOfC&) = delete;
  FilesOfC& operator=(const FilesOfC&) = delete;
  ~FilesOfC();

  static bool AreOpened();
};

class BinaryFileWriter {
 public:
  enum class Outcome { kWritten, kNotOpened, kReadOnly };

  explicit BinaryFileWriter(const char* fileName);

  // Writes the tag through to the file, so that a file which cannot be written shows here.
  void Tag(const char* tag, int length = kTagLength);
  void Int(int value) { WriteInt(m_file, value); }
  void Doubles(const double* values, int n);
  // Closes the file; only what has reached it counts as written.
  Outcome Close();
  std::ofstream& Stream() { return m_file; }

 private:
  std::ofstream m_file;
  bool m_exists = false;
};

class BinaryFileReader {
 public:
  explicit BinaryFileReader(const char* fileName);

  bool Tag(const char* tag, int length = kTagLength);
  bool Int(int* value) { return ReadInt(m_file, value); }
  // Whether count1 x count2 more doubles are really there: heads that promise more are refused before the caller
  // allocates. A pipe cannot tell; of that the doubles are read here, in memory that grows with what has come.
  bool HoldsDoubles(int count1, int count2);
  bool Doubles(double* values, int n);
  std::ifstream& Stream() { return m_file; }

 private:
  bool ReadAhead(std::uint64_t count);
  bool ReadDoubles(double* values, int n);

  std::ifstream m_file;
  std::vector<double> m_ahead;  // the doubles of a pipe, of which `m_taken` have been handed out
  std::size_t m_taken = 0;
};

// Closes the file, with the failures of the class whose file it is.
inline bool RequireWritten(BinaryFileWriter& file, const char* className) {
  switch (file.Close()) {
    case BinaryFileWriter::Outcome::kReadOnly:
      FailOperation(NuOperationFileReadOnly, "Read only file.. Unable to write into file", className);
    case BinaryFileWriter::Outcome::kNotOpened:
      FailOperation(NuOperationFileOpen, "Open a Binary file", className);
    case BinaryFileWriter::Outcome::kWritten:
      break;
  }
  return true;
}

// Readers throw nothing, but for C: lack of memory is a failure like any other.
template<class Read>
bool ReadUnlessNoMemory(const Read& read) {
  try {
    return WithMemory("", read);
  } catch (const CNuMemoryException&) {
    if (FilesOfC::AreOpened()) throw;
    return false;
  }
}

}  // namespace nu::internal

#endif
