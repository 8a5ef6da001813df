#include "input/fields.h"

#include <string>

#include "text.h"

namespace {

std::string_view Unquoted(std::string_view field) {
  field = Trimmed(field);
  const bool quoted = field.size() > 1 && (field.front() == '"' || field.front() == '\'');
  return quoted && field.front() == field.back() ? Trimmed(field.substr(1, field.size() - 2)) : field;
}

}  // namespace

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
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

bool IsNotFiniteWord(std::string_view field) {
  if (field.starts_with('-') || field.starts_with('+')) field.remove_prefix(1);
  const std::string word = Lower(field.substr(0, 16));
  return word == "nan" || word == "inf" || word == "infinity" || word.starts_with("nan(") || word.starts_with("-nan");
}

bool LooksLikeNumber(std::string_view field) {
  if (IsNotFiniteWord(field)) return true;
  std::size_t at = !field.empty() && (field[0] == '-' || field[0] == '+') ? 1 : 0;
  if (at < field.size() && (field[at] == '.' || field[at] == ',')) ++at;
  return at < field.size() && field[at] >= '0' && field[at] <= '9';
}
