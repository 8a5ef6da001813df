#ifndef NU_INSPECT_CLOUD_H
#define NU_INSPECT_CLOUD_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "input/line_reader.h"
#include "input/point_file.h"

// Point clouds in the formats PLY and PCD: a header in text names the numbers of each point and their types; the points
// follow as text or as bytes.

// Whether the file is one, by its first line.
bool IsPly(const LineReader& reader);
bool IsPcd(const LineReader& reader);

// Throw InputError as ReadPointFile() does.
PointFile ReadPly(LineReader& reader, const PointFileOptions& options);
PointFile ReadPcd(LineReader& reader, const PointFileOptions& options);

// How a number is stored.
enum class Storage { kInt8, kUint8, kInt16, kUint16, kInt32, kUint32, kInt64, kUint64, kFloat32, kFloat64 };
std::size_t SizeOf(Storage storage);
double Decode(const char* bytes, Storage storage, bool bigEndian);

struct CloudColumn {
  std::string name;
  Storage storage;
};

// Takes the points of a cloud, one after the other, and keeps the columns that are coordinates.
class CloudBuilder {
 public:
  // The header is read: `comments` may state a unit.
  CloudBuilder(const LineReader& reader, const PointFileOptions& options, const std::vector<std::string>& comments,
               const std::vector<CloudColumn>& columns, bool isBinary);

  // The values of all columns, as bytes of CloudColumn::storage behind one another.
  void AddBytes(const char* row, bool bigEndian);

  // The fields of a line.
  void AddFields(const std::vector<std::string_view>& fields);

  // `expected` as the header has it. Throws InputError if there was no point with coordinates.
  PointFile Finish(std::size_t expected);

 private:
  void Add(const Vec3& point);
  double Number(std::string_view field, std::size_t column) const;
  [[noreturn]] void Fail(const std::string& text) const;

  const LineReader& m_reader;
  std::vector<CloudColumn> m_columns;
  std::vector<std::size_t> m_offsets;
  std::size_t m_taken = 0;
  PointFile m_file;
};

// A number of things in a header; throws InputError for what is none or beyond all memory.
std::size_t CloudCount(const LineReader& reader, std::string_view word);

[[noreturn]] void FailInCloud(const LineReader& reader, const std::string& text);
[[noreturn]] void FailShortCloud(const LineReader& reader, std::size_t found, std::size_t expected);

#endif
