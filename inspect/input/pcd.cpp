#include <algorithm>
#include <map>

#include "input/cloud.h"
#include "input/fields.h"
#include "text.h"

// The point cloud data format, version 0.7: FIELDS names the numbers of a point, SIZE, TYPE and COUNT say how each is
// stored, WIDTH times HEIGHT is the number of points, DATA says how they follow: as text, as bytes point by point
// (binary), or column by column and compressed (binary_compressed). All bytes are little-endian.

namespace {

constexpr bool kLittleEndian = false;

// Marc Lehmann's LZF: a control byte below 32 is followed by that many bytes and one more as they are; any other one
// repeats bytes already written, its upper three bits being their number less 2 (7: the next byte adds to it), its
// lower five bits and the next byte the distance less 1. False if the result does not have `size` bytes.
bool Decompress(const std::vector<char>& from, std::size_t size, std::vector<char>* to) {
  to->clear();
  to->reserve(size);
  const auto byte = [&from](std::size_t at) { return static_cast<std::size_t>(static_cast<unsigned char>(from[at])); };
  for (std::size_t at = 0; at < from.size();) {
    const std::size_t control = byte(at++);
    if (control < 32) {
      const std::size_t count = control + 1;
      if (count > from.size() - at || count > size - to->size()) return false;
      to->insert(to->end(), from.begin() + static_cast<std::ptrdiff_t>(at),
                 from.begin() + static_cast<std::ptrdiff_t>(at + count));
      at += count;
      continue;
    }
    std::size_t count = (control >> 5U) + 2;
    if (count == 9) {
      if (at == from.size()) return false;
      count += byte(at++);
    }
    if (at == from.size()) return false;
    const std::size_t distance = ((control & 31U) << 8U) + byte(at++) + 1;
    if (distance > to->size() || count > size - to->size()) return false;
    for (std::size_t i = 0; i < count; ++i) to->push_back((*to)[to->size() - distance]);
  }
  return to->size() == size;
}

class PcdReader {
 public:
  PcdReader(LineReader& reader, const PointFileOptions& options) : m_reader(reader), m_options(options) {}

  PointFile Read() {
    ReadHeader();
    TakeColumns();
    for (const CloudColumn& column : m_columns) m_rowSize += SizeOf(column.storage);
    const std::string& data = One("DATA");
    const bool isBinary = data != "ascii";
    CloudBuilder builder(m_reader, m_options, m_comments, m_columns, isBinary);
    if (data == "ascii") {
      ReadLines(&builder);
    } else if (data == "binary") {
      ReadRows(&builder);
    } else if (data == "binary_compressed") {
      ReadCompressed(&builder);
    } else {
      FailInCloud(m_reader, "unknown DATA '" + Printable(data) + "'; expected ascii, binary or binary_compressed");
    }
    return builder.Finish(m_count);
  }

 private:
  // The lines up to DATA, by their first word.
  void ReadHeader() {
    std::string_view line;
    std::vector<std::string_view> words;
    while (m_reader.Next(&line)) {
      line = Trimmed(line);
      if (line.starts_with('#')) m_comments.emplace_back(Trimmed(line.substr(1)));
      if (line.empty() || line.starts_with('#')) continue;
      Split(line, kBlanks, &words);
      const std::string name(words[0]);
      constexpr std::string_view kNames[] = {"VERSION", "FIELDS", "SIZE",      "TYPE",   "COUNT",
                                             "WIDTH",   "HEIGHT", "VIEWPOINT", "POINTS", "DATA"};
      if (std::find(std::begin(kNames), std::end(kNames), name) == std::end(kNames)) {
        FailInCloud(m_reader, "unknown line '" + Printable(words[0].substr(0, 40)) + "' in the header");
      }
      m_header[name] = std::vector<std::string>(words.begin() + 1, words.end());
      if (name == "DATA") return;
    }
    FailInCloud(m_reader, "the header has no line DATA");
  }

  const std::string& One(const std::string& name) {
    if (m_header[name].size() != 1) FailInCloud(m_reader, "the header needs one word after " + name);
    return m_header[name][0];
  }

  void TakeColumns() {
    const std::vector<std::string>& fields = m_header["FIELDS"];
    if (m_header["COUNT"].empty()) m_header["COUNT"].assign(fields.size(), "1");
    for (const char* name : {"SIZE", "TYPE", "COUNT"}) {
      if (m_header[name].size() == fields.size()) continue;
      FailInCloud(m_reader, std::string(name) + " has " + std::to_string(m_header[name].size()) + " words, FIELDS " +
                                std::to_string(fields.size()));
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const Storage storage = StorageOf(m_header["TYPE"][i], m_header["SIZE"][i]);
      const std::size_t count = CloudCount(m_reader, m_header["COUNT"][i]);
      if (m_columns.size() + count > kMostColumns) FailInCloud(m_reader, "more than 10000 numbers per point");
      for (std::size_t k = 0; k < count; ++k) {
        m_columns.push_back({count == 1 ? fields[i] : fields[i] + "." + std::to_string(k), storage});
      }
    }
    const std::size_t width = CloudCount(m_reader, One("WIDTH"));
    const std::size_t height = CloudCount(m_reader, One("HEIGHT"));
    m_count = m_header["POINTS"].empty() ? width * height : CloudCount(m_reader, One("POINTS"));
    if (m_count != width * height) FailInCloud(m_reader, "POINTS is not WIDTH times HEIGHT");
  }

  Storage StorageOf(const std::string& type, const std::string& size) const {
    struct Type {
      const char* text;
      Storage storage;
    };
    constexpr Type kTypes[] = {{"I1", Storage::kInt8},   {"U1", Storage::kUint8},  {"I2", Storage::kInt16},
                               {"U2", Storage::kUint16}, {"I4", Storage::kInt32},  {"U4", Storage::kUint32},
                               {"I8", Storage::kInt64},  {"U8", Storage::kUint64}, {"F4", Storage::kFloat32},
                               {"F8", Storage::kFloat64}};
    for (const Type& known : kTypes) {
      if (type + size == known.text) return known.storage;
    }
    FailInCloud(m_reader, "unknown TYPE '" + Printable(type) + "' of SIZE '" + Printable(size) +
                              "'; expected I or U of 1, 2, 4, 8 or F of 4, 8");
  }

  void ReadLines(CloudBuilder* builder) {
    std::string_view line;
    std::vector<std::string_view> fields;
    for (std::size_t i = 0; i < m_count; ++i) {
      if (!m_reader.Next(&line)) FailShortCloud(m_reader, i, m_count);
      Split(line, kBlanks, &fields);
      builder->AddFields(fields);
    }
  }

  void ReadRows(CloudBuilder* builder) {
    std::vector<char> row(m_rowSize);
    for (std::size_t i = 0; i < m_count; ++i) {
      if (!m_reader.ReadBytes(row.data(), row.size())) FailShortCloud(m_reader, i, m_count);
      builder->AddBytes(row.data(), kLittleEndian);
    }
  }

  std::size_t ReadSize() {
    char bytes[4] = {};
    if (!m_reader.ReadBytes(bytes, sizeof bytes)) FailShortCloud(m_reader, 0, m_count);
    return static_cast<std::size_t>(Decode(bytes, Storage::kUint32, kLittleEndian));
  }

  // Block by block, so that a damaged size does not fill the memory.
  std::vector<char> ReadBlock(std::size_t size) {
    constexpr std::size_t kBlock = std::size_t{1} << 20;
    std::vector<char> bytes;
    while (bytes.size() < size) {
      const std::size_t begin = bytes.size();
      bytes.resize(begin + std::min(kBlock, size - begin));
      if (!m_reader.ReadBytes(bytes.data() + begin, bytes.size() - begin)) FailShortCloud(m_reader, 0, m_count);
    }
    return bytes;
  }

  void ReadCompressed(CloudBuilder* builder) {
    const std::size_t compressed = ReadSize();
    const std::size_t plain = ReadSize();
    const std::vector<char> bytes = ReadBlock(compressed);
    // Three bytes stand for 264 at most.
    constexpr std::size_t kLargestRatio = 88;
    std::vector<char> columns;
    if (plain != m_count * m_rowSize || plain / kLargestRatio > compressed || !Decompress(bytes, plain, &columns)) {
      FailInCloud(m_reader, "the compressed points are damaged");
    }
    std::vector<char> row(m_rowSize);
    for (std::size_t i = 0; i < m_count; ++i) {
      std::size_t offset = 0;
      for (const CloudColumn& column : m_columns) {
        const std::size_t size = SizeOf(column.storage);
        std::copy_n(columns.data() + m_count * offset + i * size, size, row.data() + offset);
        offset += size;
      }
      builder->AddBytes(row.data(), kLittleEndian);
    }
  }

  static constexpr std::size_t kMostColumns = 10000;

  LineReader& m_reader;
  const PointFileOptions& m_options;
  std::map<std::string, std::vector<std::string>> m_header;
  std::vector<std::string> m_comments;
  std::vector<CloudColumn> m_columns;
  std::size_t m_rowSize = 0;
  std::size_t m_count = 0;
};

}  // namespace

bool IsPcd(const LineReader& reader) {
  const std::string_view start = reader.Ahead();
  return start.starts_with("# .PCD") || start.starts_with("VERSION 0.7") || start.starts_with("VERSION .7");
}

PointFile ReadPcd(LineReader& reader, const PointFileOptions& options) {
  return PcdReader(reader, options).Read();
}
