#include "input/point_file.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>

#include "input/cloud.h"
#include "input/fields.h"
#include "input/line_reader.h"
#include "text.h"

namespace {

constexpr std::size_t kLongestExcerpt = 40;

// Text behind the marker of a comment line; `line` itself if it is none.
std::string_view CommentText(std::string_view line) {
  if (line.starts_with("//")) return line.substr(2);
  return std::string_view("#;!%").find(line.front()) == std::string_view::npos ? line : line.substr(1);
}

// What is wrong with a field, as the end of a sentence.
std::string Complaint(std::string_view field, bool wellFormed, bool decimalComma) {
  std::string text = "'" + Printable(field.substr(0, kLongestExcerpt)) + (field.size() > kLongestExcerpt ? "..." : "");
  if (IsNotFiniteWord(field)) return text + "' is not a finite number; expected a coordinate";
  if (wellFormed) return text + "' is too large for a coordinate";
  text += std::string("' is not a number; expected a coordinate such as ") + (decimalComma ? "12,345" : "12.345");
  const bool otherPoint = field.find(decimalComma ? '.' : ',') != std::string_view::npos;
  const bool split = field.find_first_of(" \t") != std::string_view::npos;
  if (decimalComma && otherPoint) text += " (--decimal-comma is given)";
  if (!decimalComma && (otherPoint || split)) text += " (is it a decimal comma? then give --decimal-comma)";
  return text;
}

class PointFileParser {
 public:
  PointFileParser(LineReader& reader, const PointFileOptions& options) : m_options(options), m_reader(reader) {}

  PointFile Parse() {
    for (std::string_view line; m_reader.Next(&line);) {
      if (static_cast<long>(m_reader.LineNumber()) > m_options.skipLines) TakeLine(Trimmed(line));
    }
    if (m_file.points.empty()) FailEmpty();
    RefuseCounter();
    return std::move(m_file);
  }

 private:
  void TakeLine(std::string_view line) {
    if (line.empty()) return;
    const std::string_view comment = CommentText(line);
    if (comment.size() < line.size()) {
      if (m_file.points.empty()) m_header.Add(comment);
      return;
    }
    line = line.substr(0, line.find('#'));
    if (m_file.points.empty() && !StartsPoints(line)) return;
    Split(line, m_separator, &m_fields);
    TakePoint();
  }

  // Judges a line before the first point: is it the first? Then its separator and columns hold from here on.
  bool StartsPoints(std::string_view line) {
    m_separator = kBlanks;
    if (!m_options.decimalComma && line.find(',') != std::string_view::npos) m_separator = ',';
    for (const char separator : {'\t', ';'}) {
      if (line.find(separator) != std::string_view::npos) m_separator = separator;
    }
    Split(line, m_separator, &m_fields);
    if (std::none_of(m_fields.begin(), m_fields.end(), LooksLikeNumber)) {
      m_header.Add(line);
      return false;
    }
    const Layout layout = m_header.LayoutOf(m_fields.size(), m_separator, m_options.columns);
    const std::size_t first = std::min(layout.columns[0].number, m_fields.size()) - 1;
    if (!LooksLikeNumber(m_fields[first])) {
      m_header.Add(line);
      return false;
    }
    long count = 0;
    if (m_fields.size() == 1 && !m_pointCountSeen && ParseWhole(m_fields[0], &count)) {
      m_pointCountSeen = true;
      return false;
    }
    m_width = m_fields.size();
    m_firstLine = m_reader.LineNumber();
    TakeLayout(layout);
    return true;
  }

  void TakeLayout(const Layout& layout) {
    std::size_t needed = 0;
    for (const Column& column : layout.columns) needed = std::max(needed, column.number);
    if (m_fields.size() < needed) {
      Fail("expected at least " + std::to_string(needed) + " columns, found " + std::to_string(m_fields.size()));
    }
    if (const std::string problem = layout.Problem(m_options.unit); !problem.empty()) Fail(problem);
    if (!m_options.groupColumn.empty()) TakeGroupColumn();
    m_columnsChosen = layout.chosen;
    TakeColumns(layout, m_options, &m_file);
  }

  void TakeGroupColumn() {
    const Layout layout = m_header.LayoutOf(m_fields.size(), m_separator, {m_options.groupColumn});
    if (!layout.problem.empty()) Fail("groups: " + layout.problem);
    m_groupColumn = layout.columns[0].number;
    if (m_groupColumn > m_fields.size()) {
      Fail("expected the groups in column " + std::to_string(m_groupColumn) + ", found " +
           std::to_string(m_fields.size()) + " columns");
    }
  }

  void TakeGroup() {
    const std::string_view name = m_fields[m_groupColumn - 1];
    // Groups mostly stand together.
    if (m_file.groups.empty() || m_file.groups[m_lastGroup] != name) {
      m_lastGroup = m_groupNumbers.emplace(name, m_file.groups.size()).first->second;
      if (m_lastGroup == m_file.groups.size()) m_file.groups.emplace_back(name);
    }
    m_file.groupOfPoint.push_back(m_lastGroup);
  }

  void TakePoint() {
    if (m_fields.size() != m_width) {
      Fail("expected " + std::to_string(m_width) + " columns as in line " + std::to_string(m_firstLine) + ", found " +
           std::to_string(m_fields.size()));
    }
    Vec3 point{};
    for (std::size_t i = 0; i < m_file.columns.size(); ++i) point[i] = Coordinate(m_file.columns[i].number - 1);
    m_file.points.push_back(point);
    m_file.lines.push_back(m_reader.LineNumber());
    if (m_groupColumn > 0) TakeGroup();
  }

  double Coordinate(std::size_t column) {
    std::string_view field = m_fields[column];
    bool wellFormed = true;
    if (m_options.decimalComma) {
      wellFormed = field.find('.') == std::string_view::npos;
      m_withPoint.assign(field);
      std::replace(m_withPoint.begin(), m_withPoint.end(), ',', '.');
      field = m_withPoint;
    }
    double value = 0;
    wellFormed = wellFormed && ParseNumber(field, &value);
    if (wellFormed && std::fabs(value) <= kLargestCoordinate) return value;
    Fail("column " + std::to_string(column + 1) + ": " +
         Complaint(m_fields[column], wellFormed, m_options.decimalComma));
  }

  // Without names, a first column that only counts the points is more likely their number than their x.
  void RefuseCounter() const {
    if (m_columnsChosen || m_width < 4 || m_file.points.size() < 3) return;
    for (std::size_t i = 1; i < m_file.points.size(); ++i) {
      if (m_file.points[i][0] != m_file.points[i - 1][0] + 1) return;
    }
    throw InputError(m_reader.Name() + ": column 1 only counts the points; expected coordinates, give " +
                     "--columns 2,3,4 (or --columns 1,2,3 if it is x)");
  }

  [[noreturn]] void Fail(const std::string& text) const {
    throw InputError(m_reader.Name() + ":" + std::to_string(m_reader.LineNumber()) + ": " + text);
  }

  [[noreturn]] void FailEmpty() const {
    const std::size_t count = m_reader.LineNumber();
    std::string text = m_reader.Name() + ": no points";
    if (count > 0) text += " in " + std::to_string(count) + (count == 1 ? " line" : " lines");
    throw InputError(text + "; expected lines of two or three coordinates" +
                     (count > 0 ? " (--columns names the columns where names of points come first)" : ""));
  }

  const PointFileOptions& m_options;
  LineReader& m_reader;
  PointFile m_file;
  Header m_header;
  std::string m_withPoint;
  std::vector<std::string_view> m_fields;
  bool m_columnsChosen = false;
  bool m_pointCountSeen = false;
  char m_separator = kBlanks;
  std::size_t m_width = 0;
  std::size_t m_firstLine = 0;
  std::size_t m_groupColumn = 0;  // counted from 1; 0 for none
  std::size_t m_lastGroup = 0;
  std::map<std::string, std::size_t> m_groupNumbers;
};

}  // namespace

void TakeColumns(const Layout& layout, const PointFileOptions& options, PointFile* file) {
  const bool given = options.unit != nullptr;
  const bool stated = layout.unit != nullptr;
  file->columns = layout.columns;
  file->unit = given ? options.unit : stated ? layout.unit : &kMillimetre;
  file->unitSource = given ? "--unit" : stated ? "header" : "assumed";
}

PointFile ReadPointFile(const std::string& path, const PointFileOptions& options) {
  LineReader reader(path);
  if (IsPly(reader)) return ReadPly(reader, options);
  if (IsPcd(reader)) return ReadPcd(reader, options);
  return PointFileParser(reader, options).Parse();
}
