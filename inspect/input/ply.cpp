#include <algorithm>
#include <array>

#include "input/cloud.h"
#include "input/fields.h"
#include "text.h"

// The Stanford polygon format: a header that lists elements with their number and properties, then the elements in
// that order. A property is one number, or a list: a count and as many numbers. Points are the element "vertex".

namespace {

struct Property {
  std::string name;
  Storage storage;
  bool isList = false;
  Storage count = Storage::kUint8;  // of a list
};

struct Element {
  std::string name;
  std::size_t count;
  std::vector<Property> properties;
};

class PlyReader {
 public:
  PlyReader(LineReader& reader, const PointFileOptions& options) : m_reader(reader), m_options(options) {}

  PointFile Read() {
    ReadHeader();
    const auto vertex =
        std::find_if(m_elements.begin(), m_elements.end(), [](const Element& e) { return e.name == "vertex"; });
    if (vertex == m_elements.end()) FailInCloud(m_reader, "the header has no element vertex, which holds the points");
    if (m_format.empty()) FailInCloud(m_reader, "the header has no line 'format'");
    for (auto element = m_elements.begin(); element != vertex; ++element) Skip(*element);
    std::vector<CloudColumn> columns;
    for (const Property& property : vertex->properties) {
      if (property.isList)
        FailInCloud(m_reader, "points with a list, '" + Printable(property.name) + "', are not read");
      columns.push_back({property.name, property.storage});
    }
    CloudBuilder builder(m_reader, m_options, m_comments, columns, IsBinary());
    for (std::size_t i = 0; i < vertex->count; ++i) {
      if (!(IsBinary() ? AddBytes(columns, &builder) : AddLine(&builder))) FailShortCloud(m_reader, i, vertex->count);
    }
    return builder.Finish(vertex->count);
  }

 private:
  bool IsBinary() const { return m_format != "ascii"; }
  bool IsBigEndian() const { return m_format == "binary_big_endian"; }

  void ReadHeader() {
    std::string_view line;
    m_reader.Next(&line);  // "ply"
    while (m_reader.Next(&line)) {
      line = Trimmed(line);
      Split(line, kBlanks, &m_words);
      if (m_words.empty()) continue;
      if (m_words[0] == "end_header") return;
      if (m_words[0] == "comment" || m_words[0] == "obj_info") {
        m_comments.emplace_back(Trimmed(line.substr(m_words[0].size())));
      } else {
        TakeStatement();
      }
    }
    FailInCloud(m_reader, "the header has no end; expected a line 'end_header'");
  }

  void TakeStatement() {
    const std::string_view what = m_words[0];
    if (what == "format" && m_words.size() == 3) return TakeFormat(m_words[1], m_words[2]);
    if (what == "element" && m_words.size() == 3) {
      m_elements.push_back({std::string(m_words[1]), CloudCount(m_reader, m_words[2]), {}});
      return;
    }
    if (what == "property" && !m_elements.empty()) return TakeProperty(&m_elements.back().properties);
    FailInCloud(m_reader, "unknown line '" + Printable(what.substr(0, 40)) +
                              "' in the header; expected format, comment, element, property or end_header");
  }

  void TakeFormat(std::string_view format, std::string_view version) {
    constexpr std::array<std::string_view, 3> kFormats = {"ascii", "binary_little_endian", "binary_big_endian"};
    if (version != "1.0" || std::find(kFormats.begin(), kFormats.end(), format) == kFormats.end()) {
      FailInCloud(m_reader, "unknown format '" + Printable(format) + " " + Printable(version) +
                                "'; expected ascii, binary_little_endian or binary_big_endian, and 1.0");
    }
    m_format = format;
  }

  void TakeProperty(std::vector<Property>* properties) {
    if (m_words.size() == 3) {
      properties->push_back({std::string(m_words[2]), TypeOf(m_words[1])});
    } else if (m_words.size() == 5 && m_words[1] == "list") {
      properties->push_back({std::string(m_words[4]), TypeOf(m_words[3]), true, TypeOf(m_words[2])});
    } else {
      FailInCloud(m_reader, "expected 'property TYPE NAME' or 'property list TYPE TYPE NAME'");
    }
  }

  Storage TypeOf(std::string_view word) const {
    struct Type {
      std::string_view words[2];
      Storage storage;
    };
    constexpr Type kTypes[] = {{{"char", "int8"}, Storage::kInt8},        {{"uchar", "uint8"}, Storage::kUint8},
                               {{"short", "int16"}, Storage::kInt16},     {{"ushort", "uint16"}, Storage::kUint16},
                               {{"int", "int32"}, Storage::kInt32},       {{"uint", "uint32"}, Storage::kUint32},
                               {{"float", "float32"}, Storage::kFloat32}, {{"double", "float64"}, Storage::kFloat64}};
    for (const Type& type : kTypes) {
      if (word == type.words[0] || word == type.words[1]) return type.storage;
    }
    FailInCloud(m_reader, "unknown type '" + Printable(word.substr(0, 40)) + "'; expected float, double, int, ...");
  }

  bool Fill(std::size_t size) {
    m_row.resize(std::max(m_row.size(), size));
    return m_reader.ReadBytes(m_row.data(), size);
  }

  // Passes over an element that stands before the points.
  void Skip(const Element& element) {
    if (element.properties.empty()) return;
    for (std::size_t i = 0; i < element.count; ++i) {
      std::string_view line;
      if (!(IsBinary() ? SkipBytes(element) : m_reader.Next(&line))) {
        throw InputError(m_reader.Name() + ": ends within the elements '" + Printable(element.name) + "'");
      }
    }
  }

  bool TakeListCount(const Property& property, std::size_t* count) {
    constexpr double kMost = 1e9;
    if (!Fill(SizeOf(property.count))) return false;
    const double value = Decode(m_row.data(), property.count, IsBigEndian());
    if (!(value >= 0 && value <= kMost)) FailInCloud(m_reader, "a list with " + Shortest(value) + " numbers");
    *count = static_cast<std::size_t>(value);
    return true;
  }

  bool SkipBytes(const Element& element) {
    for (const Property& property : element.properties) {
      std::size_t count = 1;
      if (property.isList && !TakeListCount(property, &count)) return false;
      for (std::size_t i = 0; i < count; ++i) {
        if (!Fill(SizeOf(property.storage))) return false;
      }
    }
    return true;
  }

  bool AddBytes(const std::vector<CloudColumn>& columns, CloudBuilder* builder) {
    std::size_t size = 0;
    for (const CloudColumn& column : columns) size += SizeOf(column.storage);
    if (!Fill(size)) return false;
    builder->AddBytes(m_row.data(), IsBigEndian());
    return true;
  }

  bool AddLine(CloudBuilder* builder) {
    std::string_view line;
    if (!m_reader.Next(&line)) return false;
    Split(line, kBlanks, &m_words);
    builder->AddFields(m_words);
    return true;
  }

  LineReader& m_reader;
  const PointFileOptions& m_options;
  std::vector<std::string_view> m_words;
  std::vector<char> m_row;
  std::string m_format;
  std::vector<std::string> m_comments;
  std::vector<Element> m_elements;
};

}  // namespace

bool IsPly(const LineReader& reader) {
  const std::string_view start = reader.Ahead();
  return start.starts_with("ply\n") || start.starts_with("ply\r");
}

PointFile ReadPly(LineReader& reader, const PointFileOptions& options) {
  return PlyReader(reader, options).Read();
}
