#include "input/line_reader.h"

#include <algorithm>

#include "input/point_file.h"
#include "text.h"

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;
// Far beyond any line of an export; a file without line ends is refused before it fills the memory.
constexpr std::size_t kLongestLine = std::size_t{1} << 16;

}  // namespace

LineReader::LineReader(const std::string& path) : m_source(path), m_buffer(kBufferSize) {
  FillBuffer();
  SkipMark();
}

void LineReader::SkipMark() {
  const std::string_view start(m_buffer.data(), m_end);
  if (start.starts_with("\xEF\xBB\xBF")) m_begin = 3;
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF")) {
    throw InputError(Name() + ": UTF-16 text; expected UTF-8 or plain ASCII, export it as such");
  }
}

// Moves what is left to the front and reads behind it; false at the end of the file.
bool LineReader::FillBuffer() {
  std::copy(m_buffer.begin() + m_begin, m_buffer.begin() + m_end, m_buffer.begin());
  m_end -= m_begin;
  m_begin = 0;
  const std::size_t count = m_source.Read(m_buffer.data() + m_end, m_buffer.size() - m_end);
  m_end += count;
  return count > 0;
}

// Where the line that starts at m_begin ends; m_end for a last line without an end.
std::size_t LineReader::FindLineEnd() {
  std::size_t at = m_begin;
  for (;;) {
    while (at < m_end && m_buffer[at] != '\n' && m_buffer[at] != '\r') ++at;
    if (at - m_begin > kLongestLine) {
      throw InputError(Name() + ":" + std::to_string(m_lineNumber) + ": longer than " + std::to_string(kLongestLine) +
                       " characters; expected one point per line");
    }
    if (at < m_end) return at;
    const std::size_t searched = at - m_begin;
    const bool more = FillBuffer();
    at = m_begin + searched;
    if (!more) return at;
  }
}

// The second half of a line end of two characters; false at the end of the file.
bool LineReader::SkipLineFeed() {
  if (m_begin == m_end && !FillBuffer()) return false;
  if (m_afterCarriageReturn && m_buffer[m_begin] == '\n') {
    m_endsAreCrLf = true;
    ++m_begin;
  }
  m_afterCarriageReturn = false;
  return m_begin < m_end || FillBuffer();
}

bool LineReader::Next(std::string_view* line) {
  if (!SkipLineFeed()) return false;
  ++m_lineNumber;
  const std::size_t end = FindLineEnd();
  *line = std::string_view(m_buffer.data() + m_begin, end - m_begin);
  m_afterCarriageReturn = end < m_end && m_buffer[end] == '\r';
  m_begin = std::min(end + 1, m_end);
  if (line->find('\0') != std::string_view::npos) {
    throw InputError(Name() + ":" + std::to_string(m_lineNumber) + ": holds a NUL byte; expected text");
  }
  return true;
}

bool LineReader::ReadBytes(char* to, std::size_t count) {
  // A byte that happens to be a line feed belongs to the data where lines end with CR alone.
  if (m_afterCarriageReturn && m_endsAreCrLf) SkipLineFeed();
  m_afterCarriageReturn = false;
  while (count > 0) {
    if (m_begin == m_end && !FillBuffer()) return false;
    const std::size_t part = std::min(count, m_end - m_begin);
    std::copy_n(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin), part, to);
    m_begin += part;
    to += part;
    count -= part;
  }
  return true;
}
