#include "point_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string_view>

#include "line_reader.h"
#include "text.h"

namespace {

constexpr char kBlanks = ' ';
constexpr std::size_t kLongestExcerpt = 40;
// No length is longer in any unit, and squares of it, summed, stay finite.
constexpr double kLargestCoordinate = 1e100;

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view Unquoted(std::string_view field) {
  field = Trimmed(field);
  const bool quoted = field.size() > 1 && (field.front() == '"' || field.front() == '\'');
  return quoted && field.front() == field.back() ? Trimmed(field.substr(1, field.size() - 2)) : field;
}

// Text behind the marker of a comment line; `line` itself if it is none.
std::string_view CommentText(std::string_view line) {
  if (line.starts_with("//")) return line.substr(2);
  return std::string_view("#;!%").find(line.front()) == std::string_view::npos ? line : line.substr(1);
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

bool IsNotFiniteWord(std::string_view field) {
  if (field.starts_with('-') || field.starts_with('+')) field.remove_prefix(1);
  const std::string word = Lower(field);
  return word == "nan" || word == "inf" || word == "infinity" || word.starts_with("nan(") || word.starts_with("-nan");
}

// Whether a field means to be a number, well-formed or not: only words make a header.
bool LooksLikeNumber(std::string_view field) {
  if (IsNotFiniteWord(field)) return true;
  std::size_t at = !field.empty() && (field[0] == '-' || field[0] == '+') ? 1 : 0;
  if (at < field.size() && (field[at] == '.' || field[at] == ',')) ++at;
  return at < field.size() && IsDigit(field[at]);
}

void Split(std::string_view line, char separator, std::vector<std::string_view>* fields) {
  fields->clear();
  line = Trimmed(line);
  while (!line.empty()) {
    std::size_t end = 0;
    while (end < line.size() && (separator == kBlanks ? !IsBlank(line[end]) : line[end] != separator)) ++end;
    fields->push_back(Unquoted(line.substr(0, end)));
    line = end < line.size() ? Trimmed(line.substr(end + 1)) : std::string_view();
  }
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
  PointFileParser(const std::string& path, const PointFileOptions& options)
      : m_path(path), m_options(options), m_reader(path) {}

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
      if (m_file.points.empty()) m_header = comment;
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
    ChooseColumns();
    const std::size_t first = std::min<std::size_t>(m_columns[0], m_fields.size() - 1);
    if (!LooksLikeNumber(m_fields[first])) {
      m_header = line;
      return false;
    }
    long count = 0;
    if (m_fields.size() == 1 && !m_pointCountSeen && ParseWhole(m_fields[0], &count)) {
      m_pointCountSeen = true;
      return false;
    }
    m_width = m_fields.size();
    m_firstLine = m_reader.LineNumber();
    RequireColumns();
    return true;
  }

  void ChooseColumns() {
    m_columns.clear();
    m_columnsKnown = true;
    for (const int column : m_options.columns) m_columns.push_back(static_cast<std::size_t>(column) - 1);
    if (m_columns.empty()) m_columns = NamedColumns();
    if (!m_columns.empty()) return;
    m_columnsKnown = false;
    m_columns = {0, 1};
    if (m_fields.size() > 2) m_columns.push_back(2);
  }

  // The columns that a header such as "No;X [mm];Y [mm];Z [mm]" calls x, y and z; none without such a header.
  std::vector<std::size_t> NamedColumns() const {
    std::vector<std::string_view> names;
    Split(m_header, m_separator, &names);
    if (names.size() != m_fields.size()) return {};
    std::vector<std::size_t> columns;
    for (const char wanted : {'x', 'y', 'z'}) {
      const auto isWanted = [wanted](std::string_view name) {
        const std::string word = Lower(name.substr(0, name.find_first_of(" \t[(/_")));
        return word.size() == 1 && word[0] == wanted;
      };
      const auto found = std::find_if(names.begin(), names.end(), isWanted);
      if (found != names.end()) columns.push_back(static_cast<std::size_t>(found - names.begin()));
    }
    return columns.size() == 3 || (columns.size() == 2 && names.size() == 2) ? columns : std::vector<std::size_t>();
  }

  void RequireColumns() const {
    const std::size_t needed = *std::max_element(m_columns.begin(), m_columns.end()) + 1;
    if (m_fields.size() >= needed) return;
    Fail("expected at least " + std::to_string(needed) + " columns, found " + std::to_string(m_fields.size()));
  }

  void TakePoint() {
    if (m_fields.size() != m_width) {
      Fail("expected " + std::to_string(m_width) + " columns as in line " + std::to_string(m_firstLine) + ", found " +
           std::to_string(m_fields.size()));
    }
    Vec3 point{};
    for (std::size_t i = 0; i < m_columns.size(); ++i) point[i] = Coordinate(m_columns[i]);
    m_file.points.push_back(point);
    m_file.lines.push_back(m_reader.LineNumber());
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
    if (m_columnsKnown || m_width < 4 || m_file.points.size() < 3) return;
    for (std::size_t i = 1; i < m_file.points.size(); ++i) {
      if (m_file.points[i][0] != m_file.points[i - 1][0] + 1) return;
    }
    throw InputError(Printable(m_path) + ": column 1 only counts the points; expected coordinates, give " +
                     "--columns 2,3,4 (or --columns 1,2,3 if it is x)");
  }

  [[noreturn]] void Fail(const std::string& text) const {
    throw InputError(Printable(m_path) + ":" + std::to_string(m_reader.LineNumber()) + ": " + text);
  }

  [[noreturn]] void FailEmpty() const {
    const std::size_t count = m_reader.LineNumber();
    std::string text = Printable(m_path) + ": no points";
    if (count > 0) text += " in " + std::to_string(count) + (count == 1 ? " line" : " lines");
    throw InputError(text + "; expected lines of two or three coordinates" +
                     (count > 0 ? " (--columns names the columns where names of points come first)" : ""));
  }

  const std::string& m_path;
  const PointFileOptions& m_options;
  LineReader m_reader;
  PointFile m_file;
  std::string m_header;
  std::string m_withPoint;
  std::vector<std::string_view> m_fields;
  std::vector<std::size_t> m_columns;  // of x, y and perhaps z, counted from 0
  bool m_columnsKnown = false;
  bool m_pointCountSeen = false;
  char m_separator = kBlanks;
  std::size_t m_width = 0;
  std::size_t m_firstLine = 0;
};

}  // namespace

PointFile ReadPointFile(const std::string& path, const PointFileOptions& options) {
  return PointFileParser(path, options).Parse();
}
