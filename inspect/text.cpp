#include "text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace {

// Beyond this, digits after the point mean nothing and would only fill the line.
constexpr double kLargestFixed = 1e12;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::string ToText(double value, std::chars_format format, int precision) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format, precision).ptr;
  return {buffer.data(), end};
}

bool IsContinuation(std::string_view text, std::size_t at) {
  return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
}

// Length of the well-formed UTF-8 sequence at `at`, 0 if there is none: no overlong forms, surrogates or values above
// U+10FFFF.
std::size_t SequenceLength(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < 0x80U) return 1;
  if (lead < 0xC2U || lead > 0xF4U || !IsContinuation(text, at + 1)) return 0;
  if (lead < 0xE0U) return 2;
  const auto second = static_cast<unsigned char>(text[at + 1]);
  if (!IsContinuation(text, at + 2)) return 0;
  if (lead < 0xF0U) return (lead == 0xE0U && second < 0xA0U) || (lead == 0xEDU && second > 0x9FU) ? 0 : 3;
  if ((lead == 0xF0U && second < 0x90U) || (lead == 0xF4U && second > 0x8FU)) return 0;
  return IsContinuation(text, at + 3) ? 4 : 0;
}

// Reads all of the text; decimal digits only where a standard library cannot read doubles, as libc++ before its version
// 20. No locale is ever set, so strtod takes a point there.
bool ReadDouble(std::string_view text, double* value) {
#ifdef __cpp_lib_to_chars
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return error == std::errc() && end == text.data() + text.size();
#else
  const std::string copy(text);
  if (copy.empty() || copy[0] == '+' || copy.find_first_not_of("+-.0123456789eE") != std::string::npos) return false;
  char* end = nullptr;
  *value = std::strtod(copy.c_str(), &end);
  return end == copy.c_str() + copy.size();
#endif
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20U || c == 0x7F;
}

}  // namespace

std::string Fixed(double value, int decimals) {
  if (!(std::fabs(value) < kLargestFixed)) return ToText(value, std::chars_format::scientific, 9);
  std::string text = ToText(value, std::chars_format::fixed, decimals);
  if (text.front() == '-' && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
  return text;
}

std::string SignedFixed(double value, int decimals) {
  const std::string text = Fixed(value, decimals);
  return text.front() == '-' ? text : "+" + text;
}

std::string General(double value, int significantDigits) {
  return ToText(value, std::chars_format::general, significantDigits);
}

std::string Shortest(double value) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  return {buffer.data(), end};
}

std::string WithMinusSign(std::string text) {
  if (text.front() == '-') text.replace(0, 1, "\u2212");
  return text;
}

bool ParseNumber(std::string_view text, double* value) {
  if (text.starts_with('+') && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
  return ReadDouble(text, value) && std::isfinite(*value);
}

bool ParseWhole(std::string_view text, long* value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return error == std::errc() && end == text.data() + text.size();
}

std::string Printable(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = SequenceLength(text, at);
    if (length == 0) {
      clean += kReplacement;
    } else if (IsControl(text[at])) {
      clean += ' ';
    } else {
      clean += text.substr(at, length);
    }
    at += length == 0 ? 1 : length;
  }
  return clean;
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::string JsonEscaped(std::string_view text) {
  std::string escaped;
  for (const char c : Printable(text)) {
    if (c == '"' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string XmlEscaped(std::string_view text) {
  std::string escaped;
  for (const char c : Printable(text)) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&apos;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string FileName(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos || slash + 1 == path.size() ? path : path.substr(slash + 1);
}
