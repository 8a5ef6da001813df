#ifndef NU_TESTS_SUPPORT_JSON_H
#define NU_TESTS_SUPPORT_JSON_H

#include <cctype>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// JSON as in data/reference: objects, arrays, strings without escapes beyond \" and \\, numbers read as the nearest
// double, and the words null, true and false.
namespace nu::test {

class Json {
 public:
  // A key that is missing, an index out of range or a value of another kind throws, and so fails the test.
  const Json& operator[](const std::string& key) const {
    for (const auto& [name, value] : m_members) {
      if (name == key) return value;
    }
    throw std::out_of_range("no key " + key);
  }
  const Json& operator[](std::size_t i) const { return m_items.at(i); }
  bool Has(const std::string& key) const {
    for (const auto& member : m_members) {
      if (member.first == key) return true;
    }
    return false;
  }
  std::size_t Size() const { return m_items.size(); }
  bool IsNumber() const { return m_isNumber; }
  double Number() const {
    if (!m_isNumber) throw std::invalid_argument("not a number: " + m_text);
    return std::strtod(m_text.c_str(), nullptr);
  }
  // Text of a string, digits of a number, or the word.
  const std::string& Text() const { return m_text; }
  std::vector<double> Numbers() const {
    std::vector<double> numbers;
    for (const Json& item : m_items) numbers.push_back(item.Number());
    return numbers;
  }

  static Json Parse(const std::string& text) {
    const char* at = text.c_str();
    return ParseValue(at);
  }

 private:
  static void Skip(const char*& at) {
    while (std::isspace(static_cast<unsigned char>(*at)) || *at == ',' || *at == ':') ++at;
  }
  static std::string ParseString(const char*& at) {
    std::string text;
    for (++at; *at != '"'; ++at) {
      if (*at == '\\') ++at;
      if (*at == '\0') throw std::invalid_argument("open string");
      text += *at;
    }
    ++at;
    return text;
  }
  static Json ParseValue(const char*& at) {
    Json value;
    Skip(at);
    if (*at == '"') {
      value.m_text = ParseString(at);
    } else if (*at == '[' || *at == '{') {
      const bool isObject = *at == '{';
      for (Skip(++at); *at != (isObject ? '}' : ']'); Skip(at)) {
        if (isObject) {
          std::string key = ParseString(at);
          value.m_members.emplace_back(std::move(key), ParseValue(at));
        } else {
          value.m_items.push_back(ParseValue(at));
        }
      }
      ++at;
    } else {
      while (std::isalnum(static_cast<unsigned char>(*at)) || *at == '.' || *at == '+' || *at == '-')
        value.m_text += *at++;
      if (value.m_text.empty()) throw std::invalid_argument("not JSON: " + std::string(at).substr(0, 20));
      value.m_isNumber = value.m_text.find_first_of("0123456789") != std::string::npos;
    }
    return value;
  }

  bool m_isNumber = false;
  std::string m_text;
  std::vector<Json> m_items;
  std::vector<std::pair<std::string, Json>> m_members;
};

}  // namespace nu::test

#endif
