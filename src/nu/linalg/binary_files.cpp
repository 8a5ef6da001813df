#include <utility>

#include "nu/linalg/internal/binary_file.h"
#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"

using namespace nu::internal;

namespace {

constexpr char kMatrixTag[] = "Matrix";
constexpr char kVectorTag[] = "Vector";

}  // namespace

bool CNuMatrix::BinaryDump(const char* fileName) const {
  return WithMemory("CNuMatrix::BinaryDump()", [&] {
    if (m_rows < 1 || m_columns < 1) return false;
    BinaryFileWriter file(fileName);
    file.Tag(kMatrixTag);
    file.Int(m_rows);
    file.Int(m_columns);
    for (int i = 0; i < m_rows; ++i) file.Doubles(m_data[i], m_columns);
    return RequireWritten(file, "CNuMatrix");
  });
}

// The elements are read into a matrix of their own: whatever fails leaves this one as it was.
bool CNuMatrix::BinaryRead(const char* fileName) {
  return ReadUnlessNoMemory([&] {
    BinaryFileReader file(fileName);
    int rows = 0;
    int columns = 0;
    if (!file.Tag(kMatrixTag) || !file.Int(&rows) || !file.Int(&columns)) return false;
    if (rows < 1 || columns < 1 || !file.HoldsDoubles(rows, columns)) return false;
    CNuMatrix read(rows, columns);
    for (int i = 0; i < rows; ++i) {
      if (!file.Doubles(read.m_data[i], columns)) return false;
    }
    *this = std::move(read);
    return true;
  });
}

bool CNuVector::BinaryDump(const char* fileName) const {
  return WithMemory("CNuVector::BinaryDump()", [&] {
    if (m_size < 1) return false;
    BinaryFileWriter file(fileName);
    file.Tag(kVectorTag);
    file.Int(m_size);
    file.Doubles(m_data, m_size);
    return RequireWritten(file, "CNuVector");
  });
}

bool CNuVector::BinaryRead(const char* fileName) {
  return ReadUnlessNoMemory([&] {
    BinaryFileReader file(fileName);
    int size = 0;
    if (!file.Tag(kVectorTag) || !file.Int(&size)) return false;
    if (size < 1 || !file.HoldsDoubles(1, size)) return false;
    CNuVector read(size);
    if (!file.Doubles(read.m_data, size)) return false;
    *this = std::move(read);
    return true;
  });
}
