#ifndef NU_INSPECT_PLAN_ENTRY_H
#define NU_INSPECT_PLAN_ENTRY_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plan/toml.h"

// One table of a plan, read key by key. What is wrong with a key throws InputError with the plan, the line, the entry
// and the key: "flange.toml:12: feature 'bore', key 'type': ...".
class PlanEntry {
 public:
  // Both are borrowed. `what` is the entry for messages: "a feature"; empty for the plan itself.
  PlanEntry(const std::string& plan, const toml::table& table, std::string what)
      : m_plan(plan), m_table(table), m_what(std::move(what)) {}

  // From now on messages call the entry so: "feature 'bore'".
  void Rename(std::string what) { m_what = std::move(what); }
  const std::string& What() const { return m_what; }

  bool Has(std::string_view key) { return Find(key) != nullptr; }
  std::size_t Line() const { return m_table.source().begin.line; }
  std::size_t LineOf(std::string_view key) const;

  // The value of a key; nothing without the key.
  std::optional<std::string> Text(std::string_view key);  // not empty
  std::optional<double> Number(std::string_view key);     // finite
  std::optional<long> Whole(std::string_view key, long least, long most);
  std::optional<bool> Flag(std::string_view key);
  std::vector<std::string> Texts(std::string_view key);  // one text or whole number, or a list of such
  std::vector<double> Numbers(std::string_view key, std::size_t least, std::size_t most);

  std::string RequiredText(std::string_view key, const std::string& expectation);

  // The tables of [[key]], in their order.
  std::vector<const toml::table*> Tables(std::string_view key);
  const toml::table* Table(std::string_view key);

  // Call it when all keys were asked for: throws if there are others, and lists the keys that serve.
  void RefuseOtherKeys() const;

  [[noreturn]] void Fail(std::string_view key, const std::string& text) const;
  [[noreturn]] void FailAt(std::size_t line, const std::string& text) const;

 private:
  const toml::node* Find(std::string_view key);

  const std::string& m_plan;
  const toml::table& m_table;
  std::string m_what;
  std::vector<std::string> m_asked;
};

#endif
