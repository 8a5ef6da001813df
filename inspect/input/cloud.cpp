#include "input/cloud.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "input/fields.h"
#include "text.h"

namespace {

// Bytes in the order of this machine.
template<typename T>
T Load(const char* bytes, bool bigEndian) {
  std::array<char, sizeof(T)> copy{};
  std::copy_n(bytes, sizeof(T), copy.begin());
  if (bigEndian != (std::endian::native == std::endian::big)) std::reverse(copy.begin(), copy.end());
  T value;
  std::memcpy(&value, copy.data(), sizeof(T));
  return value;
}

}  // namespace

std::size_t SizeOf(Storage storage) {
  constexpr std::size_t kSizes[] = {1, 1, 2, 2, 4, 4, 8, 8, 4, 8};
  return kSizes[static_cast<std::size_t>(storage)];
}

double Decode(const char* bytes, Storage storage, bool bigEndian) {
  switch (storage) {
    case Storage::kInt8:
      return Load<std::int8_t>(bytes, bigEndian);
    case Storage::kUint8:
      return Load<std::uint8_t>(bytes, bigEndian);
    case Storage::kInt16:
      return Load<std::int16_t>(bytes, bigEndian);
    case Storage::kUint16:
      return Load<std::uint16_t>(bytes, bigEndian);
    case Storage::kInt32:
      return Load<std::int32_t>(bytes, bigEndian);
    case Storage::kUint32:
      return Load<std::uint32_t>(bytes, bigEndian);
    case Storage::kInt64:
      return static_cast<double>(Load<std::int64_t>(bytes, bigEndian));
    case Storage::kUint64:
      return static_cast<double>(Load<std::uint64_t>(bytes, bigEndian));
    case Storage::kFloat32:
      return Load<float>(bytes, bigEndian);
    case Storage::kFloat64:
      break;
  }
  return Load<double>(bytes, bigEndian);
}

CloudBuilder::CloudBuilder(const LineReader& reader, const PointFileOptions& options,
                           const std::vector<std::string>& comments, const std::vector<CloudColumn>& columns,
                           bool isBinary)
    : m_reader(reader), m_columns(columns) {
  Header header;
  for (const std::string& comment : comments) header.Add(comment);
  std::string names;
  for (const CloudColumn& column : columns) names += column.name + " ";
  header.Add(names);
  const Layout layout = header.LayoutOf(columns.size(), kBlanks, options.columns);
  if (const std::string problem = layout.Problem(options.unit); !problem.empty()) Fail(problem);
  if (!layout.chosen) Fail("the header names no x, y and z; found " + (names.empty() ? "nothing" : Printable(names)));
  TakeColumns(layout, options, &m_file);
  for (const Column& column : m_file.columns) {
    if (column.number > columns.size()) {
      Fail("expected at least " + std::to_string(column.number) + " columns, found " + std::to_string(columns.size()));
    }
    std::size_t offset = 0;
    for (std::size_t i = 0; i + 1 < column.number; ++i) offset += SizeOf(columns[i].storage);
    m_offsets.push_back(offset);
  }
  if (isBinary) m_file.place = "point";
}

void CloudBuilder::AddBytes(const char* row, bool bigEndian) {
  Vec3 point{};
  for (std::size_t i = 0; i < m_offsets.size(); ++i) {
    point[i] = Decode(row + m_offsets[i], m_columns[m_file.columns[i].number - 1].storage, bigEndian);
  }
  ++m_taken;
  Add(point);
}

void CloudBuilder::AddFields(const std::vector<std::string_view>& fields) {
  if (fields.size() != m_columns.size()) {
    Fail("expected " + std::to_string(m_columns.size()) + " numbers as the header says, found " +
         std::to_string(fields.size()));
  }
  Vec3 point{};
  for (std::size_t i = 0; i < m_file.columns.size(); ++i) {
    const std::size_t column = m_file.columns[i].number - 1;
    point[i] = Number(fields[column], column);
  }
  ++m_taken;
  Add(point);
}

double CloudBuilder::Number(std::string_view field, std::size_t column) const {
  double value = 0;
  if (ParseNumber(field, &value)) return value;
  if (Lower(field).ends_with("nan")) return std::nan("");
  Fail("column " + std::to_string(column + 1) + ": '" + Printable(field.substr(0, 40)) +
       "' is not a number; expected a coordinate such as 12.345");
}

void CloudBuilder::Add(const Vec3& point) {
  const bool isBinary = *m_file.place == 'p';
  const auto isMissing = [](double value) { return std::isnan(value); };
  // Scanners write NaN where they saw nothing.
  if (std::all_of(point.begin(), point.begin() + static_cast<std::ptrdiff_t>(m_offsets.size()), isMissing)) {
    ++m_file.leftOut;
    return;
  }
  for (const double value : point) {
    if (std::fabs(value) <= kLargestCoordinate) continue;
    Fail((isBinary ? "point " + std::to_string(m_taken) + ": " : std::string()) + "'" + Shortest(value) +
         "' is no coordinate: it is not finite or too large");
  }
  m_file.points.push_back(point);
  m_file.lines.push_back(isBinary ? m_taken : m_reader.LineNumber());
}

PointFile CloudBuilder::Finish(std::size_t expected) {
  if (m_file.points.empty()) {
    throw InputError(m_reader.Name() + ": none of its " + std::to_string(expected) + " points holds coordinates");
  }
  return std::move(m_file);
}

void CloudBuilder::Fail(const std::string& text) const {
  FailInCloud(m_reader, text);
}

std::size_t CloudCount(const LineReader& reader, std::string_view word) {
  constexpr long kMost = 1000000000;
  long count = 0;
  if (ParseWhole(word, &count) && count >= 0 && count <= kMost) return static_cast<std::size_t>(count);
  FailInCloud(reader, "'" + Printable(word.substr(0, 40)) + "' is not a number of things; expected one up to " +
                          std::to_string(kMost));
}

void FailInCloud(const LineReader& reader, const std::string& text) {
  throw InputError(reader.Name() + ":" + std::to_string(reader.LineNumber()) + ": " + text);
}

void FailShortCloud(const LineReader& reader, std::size_t found, std::size_t expected) {
  throw InputError(reader.Name() + ": ends after " + std::to_string(found) + " of " + std::to_string(expected) +
                   " points");
}
