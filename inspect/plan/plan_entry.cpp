#include "plan/plan_entry.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "input/point_file.h"
#include "text.h"

namespace {

std::string Quoted(std::string_view text) {
  return "'" + Printable(text) + "'";
}

std::string KindOf(const toml::node& node) {
  if (node.is_string()) return "a text";
  if (node.is_number()) return "a number";
  if (node.is_boolean()) return "true or false";
  if (node.is_array()) return "a list";
  return node.is_table() ? "a table" : "a date or time";
}

}  // namespace

const toml::node* PlanEntry::Find(std::string_view key) {
  if (std::find(m_asked.begin(), m_asked.end(), key) == m_asked.end()) m_asked.emplace_back(key);
  return m_table.get(key);
}

std::size_t PlanEntry::LineOf(std::string_view key) const {
  const toml::node* node = m_table.get(key);
  return node == nullptr ? Line() : node->source().begin.line;
}

void PlanEntry::FailAt(std::size_t line, const std::string& text) const {
  throw InputError(Printable(m_plan) + ":" + std::to_string(line) + ": " + text);
}

void PlanEntry::Fail(std::string_view key, const std::string& text) const {
  FailAt(LineOf(key), (m_what.empty() ? "" : m_what + ", ") + "key " + Quoted(key) + ": " + text);
}

std::optional<std::string> PlanEntry::Text(std::string_view key) {
  const toml::node* node = Find(key);
  if (node == nullptr) return std::nullopt;
  const auto* text = node->as_string();
  if (text == nullptr) Fail(key, "expected a text in quotes, found " + KindOf(*node));
  if (text->get().empty()) Fail(key, "the text is empty");
  return text->get();
}

std::string PlanEntry::RequiredText(std::string_view key, const std::string& expectation) {
  std::optional<std::string> text = Text(key);
  if (!text) Fail(key, "is missing; expected " + expectation);
  return *std::move(text);
}

std::optional<double> PlanEntry::Number(std::string_view key) {
  const toml::node* node = Find(key);
  if (node == nullptr) return std::nullopt;
  const std::optional<double> number = node->is_number() ? node->value<double>() : std::nullopt;
  if (!number) Fail(key, "expected a number, found " + KindOf(*node));
  if (!std::isfinite(*number)) Fail(key, "the number is not finite");
  return number;
}

std::optional<long> PlanEntry::Whole(std::string_view key, long least, long most) {
  const toml::node* node = Find(key);
  if (node == nullptr) return std::nullopt;
  const std::optional<std::int64_t> number = node->is_integer() ? node->value<std::int64_t>() : std::nullopt;
  if (!number || *number < least || *number > most) {
    Fail(key, "expected a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return static_cast<long>(*number);
}

std::optional<bool> PlanEntry::Flag(std::string_view key) {
  const toml::node* node = Find(key);
  if (node == nullptr) return std::nullopt;
  if (!node->is_boolean()) Fail(key, "expected true or false, found " + KindOf(*node));
  return node->value<bool>();
}

std::vector<std::string> PlanEntry::Texts(std::string_view key) {
  const toml::node* node = Find(key);
  if (node == nullptr) return {};
  if (node->is_string()) return {*Text(key)};
  if (node->is_integer()) return {std::to_string(node->as_integer()->get())};
  if (!node->is_array()) Fail(key, "expected a list, found " + KindOf(*node));
  std::vector<std::string> texts;
  for (const toml::node& element : *node->as_array()) {
    std::string text;
    if (element.is_string()) text = element.as_string()->get();
    if (element.is_integer()) text = std::to_string(element.as_integer()->get());
    if (text.empty()) FailAt(element.source().begin.line, m_what + ", key " + Quoted(key) + ": an element is no name");
    texts.push_back(std::move(text));
  }
  if (texts.empty()) Fail(key, "the list is empty");
  return texts;
}

std::vector<double> PlanEntry::Numbers(std::string_view key, std::size_t least, std::size_t most) {
  const toml::node* node = Find(key);
  if (node == nullptr) return {};
  std::vector<double> numbers;
  const std::string expected = "expected a list of " + std::to_string(least) +
                               (most > least ? " to " + std::to_string(most) : "") + " finite numbers such as [" +
                               (least > 2 ? "10.0, 20.0, 5.0]" : "-0.05, 0.05]");
  if (!node->is_array()) Fail(key, expected + ", found " + KindOf(*node));
  for (const toml::node& element : *node->as_array()) {
    const std::optional<double> number = element.is_number() ? element.value<double>() : std::nullopt;
    if (!number || !std::isfinite(*number)) Fail(key, expected);
    numbers.push_back(*number);
  }
  if (numbers.size() < least || numbers.size() > most) Fail(key, expected);
  return numbers;
}

std::vector<const toml::table*> PlanEntry::Tables(std::string_view key) {
  const toml::node* node = Find(key);
  if (node == nullptr) return {};
  if (!node->is_array_of_tables()) Fail(key, "expected entries that begin with [[" + std::string(key) + "]]");
  std::vector<const toml::table*> tables;
  for (const toml::node& element : *node->as_array()) tables.push_back(element.as_table());
  return tables;
}

const toml::table* PlanEntry::Table(std::string_view key) {
  const toml::node* node = Find(key);
  if (node != nullptr && !node->is_table()) Fail(key, "expected a table that begins with [" + std::string(key) + "]");
  return node == nullptr ? nullptr : node->as_table();
}

void PlanEntry::RefuseOtherKeys() const {
  const std::pair<std::string, const toml::node*>* first = nullptr;
  std::vector<std::pair<std::string, const toml::node*>> others;
  for (const auto& [key, node] : m_table) {
    if (std::find(m_asked.begin(), m_asked.end(), key.str()) == m_asked.end()) others.emplace_back(key.str(), &node);
  }
  for (const auto& other : others) {
    if (first == nullptr || other.second->source().begin.line < first->second->source().begin.line) first = &other;
  }
  if (first == nullptr) return;
  std::string keys;
  for (const std::string& key : m_asked) keys += (keys.empty() ? "" : ", ") + key;
  Fail(first->first, "is unknown; expected " + keys);
}
