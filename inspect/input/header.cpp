#include "input/header.h"

#include <algorithm>
#include <array>

#include "input/fields.h"
#include "text.h"

namespace {

constexpr const char* kWordSeparators = " \t_-.:";
constexpr std::array<const char*, 3> kAxes = {"x", "y", "z"};

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// One name of the header, taken apart: "Act X [mm]" has the axis 0, the qualifier "act" and the unit "mm".
struct Name {
  std::string text;
  std::string bare;  // without the unit
  std::string unit;
  int axis = -1;  // 0, 1, 2 for x, y, z; -1 for any other column
  std::string qualifier;
};

// "X [mm]", "x(inch)"; what only qualifies the name, as in "X (act)", stays with it.
bool TakeUnitInBrackets(Name* name) {
  const std::size_t open = name->bare.find_first_of("[({");
  const std::size_t close = name->bare.find_last_of("])}");
  if (open == std::string::npos || close == std::string::npos || open == 0 || close < open) return false;
  const std::string inside(Trimmed(std::string_view(name->bare).substr(open + 1, close - open - 1)));
  const bool qualifies = IsOneOf(Lower(inside), {"act", "actual", "meas", "measured", "nom", "nominal"});
  if (!qualifies) name->unit = inside;
  name->bare = name->bare.substr(0, open) + (qualifies ? inside : "") + name->bare.substr(close + 1);
  return true;
}

// "x/mm".
bool TakeUnitBehindSlash(Name* name) {
  const std::size_t slash = name->bare.find('/');
  if (slash == std::string::npos || slash == 0 || slash + 1 == name->bare.size()) return false;
  name->unit = Trimmed(std::string_view(name->bare).substr(slash + 1));
  name->bare.resize(slash);
  return true;
}

// "x_mm"; other words there are no units.
void TakeUnitAsLastWord(Name* name) {
  const std::size_t at = name->bare.find_last_of(kWordSeparators);
  if (at == std::string::npos || at == 0 || FindUnit(name->bare.substr(at + 1)) == nullptr) return;
  name->unit = name->bare.substr(at + 1);
  name->bare.resize(at);
}

Name ParseName(std::string_view field) {
  Name name{std::string(field), std::string(field), {}, -1, {}};
  if (!TakeUnitInBrackets(&name) && !TakeUnitBehindSlash(&name)) TakeUnitAsLastWord(&name);
  name.bare = std::string(Trimmed(name.bare));
  std::string word;
  for (const char c : Lower(name.bare)) {
    if (std::string_view(kWordSeparators).find(c) == std::string_view::npos) word += c;
  }
  const auto axisOf = [](char c) { return c >= 'x' && c <= 'z' ? c - 'x' : -1; };
  if (word.empty()) return name;
  const bool last = axisOf(word.back()) >= 0;
  name.axis = axisOf(last ? word.back() : word.front());
  if (name.axis >= 0) name.qualifier = last ? word.substr(0, word.size() - 1) : word.substr(1);
  return name;
}

// The fields of a row of names, none of a row with numbers; between blanks, a unit stays with its name: "X [mm]", "Z /
// mm".
std::vector<std::string> NameFields(std::string_view line, char separator) {
  std::vector<std::string_view> fields;
  Split(line, separator, &fields);
  if (std::any_of(fields.begin(), fields.end(), LooksLikeNumber)) return {};
  std::vector<std::string> names;
  for (const std::string_view field : fields) {
    const bool belongs =
        separator == kBlanks && !names.empty() && !field.empty() &&
        (std::string_view("[({/").find(field.front()) != std::string_view::npos || names.back().ends_with('/'));
    if (belongs) {
      names.back() += " " + std::string(field);
    } else {
      names.emplace_back(field);
    }
  }
  return names;
}

std::vector<Name> ParseNames(std::string_view line, char separator) {
  std::vector<Name> names;
  for (const std::string& field : NameFields(line, separator)) names.push_back(ParseName(field));
  return names;
}

// The columns that have one qualifier, numbered from 1; 0 where there is none.
struct Group {
  std::string qualifier;
  std::array<std::size_t, 3> columns{};

  std::size_t Count() const { return 3 - static_cast<std::size_t>(std::count(columns.begin(), columns.end(), 0U)); }
  bool IsPosition() const {
    return !IsOneOf(qualifier, {"n", "normal", "d", "dev", "deviation", "delta", "diff", "error", "v", "u", "sigma"});
  }
};

std::vector<Group> GroupsOf(const std::vector<Name>& names) {
  std::vector<Group> groups;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].axis < 0) continue;
    const auto axis = static_cast<std::size_t>(names[i].axis);
    auto group = std::find_if(groups.begin(), groups.end(), [&](const Group& each) {
      return each.qualifier == names[i].qualifier && each.columns[axis] == 0;
    });
    if (group == groups.end()) group = groups.insert(groups.end(), Group{names[i].qualifier, {}});
    group->columns[axis] = i + 1;
  }
  std::erase_if(groups, [](const Group& group) { return !group.IsPosition(); });
  return groups;
}

std::vector<Group> WithAxes(const std::vector<Group>& groups, std::size_t count) {
  std::vector<Group> found;
  std::copy_if(groups.begin(), groups.end(), std::back_inserter(found),
               [count](const Group& group) { return group.Count() == count; });
  return found;
}

std::vector<Column> ColumnsOf(const Group& group, const std::vector<Name>& names) {
  std::vector<Column> columns;
  for (const std::size_t number : group.columns) {
    if (number > 0) columns.push_back({number, names[number - 1].text});
  }
  return columns;
}

// "ActX,ActY,ActZ", or the numbers where the names stand twice.
std::string Choice(const Group& group, const std::vector<Name>& names) {
  std::string byName;
  std::string byNumber;
  bool unique = true;
  for (const std::size_t number : group.columns) {
    if (number == 0) continue;
    const std::string& bare = names[number - 1].bare;
    unique = unique && std::count_if(names.begin(), names.end(), [&](const Name& n) { return n.bare == bare; }) == 1;
    byName += (byName.empty() ? "" : ",") + Printable(bare);
    byNumber += (byNumber.empty() ? "" : ",") + std::to_string(number);
  }
  return unique && byName.find(' ') == std::string::npos ? byName : byNumber;
}

std::string ListOf(const std::vector<Name>& names) {
  std::string list;
  for (const Name& name : names) list += (list.empty() ? "'" : ", '") + Printable(name.text) + "'";
  return list;
}

std::string ChoicesProblem(const std::vector<Group>& groups, const std::vector<Name>& names) {
  std::string choices;
  for (const Group& group : groups) choices += (choices.empty() ? "" : " or ") + Choice(group, names);
  return "the header names several points; give --columns " + choices;
}

// The columns that a row of names calls x, y and z, or two of them; none if it is no such row.
Layout LayoutByNames(const std::vector<Name>& names) {
  const std::vector<Group> groups = GroupsOf(names);
  Layout layout;
  for (const std::size_t count : {3, 2}) {
    const std::vector<Group> found = WithAxes(groups, count);
    if (found.size() > 1) layout.problem = ChoicesProblem(found, names);
    if (found.empty()) continue;
    layout.columns = ColumnsOf(found.front(), names);
    layout.chosen = true;
    if (count == 3) return layout;
    const auto missing = std::find(found[0].columns.begin(), found[0].columns.end(), 0U) - found[0].columns.begin();
    const bool elsewhere = std::any_of(names.begin(), names.end(), [&](const Name& n) { return n.axis == missing; });
    if (elsewhere)
      layout.problem = "the header does not say which " + std::string(kAxes[missing]) + " belongs to " +
                       Choice(found[0], names) + "; give --columns I,J,K";
    return layout;
  }
  const bool lone = std::any_of(groups.begin(), groups.end(), [](const Group& g) { return g.qualifier.empty(); });
  if (lone) layout.problem = "the header names " + ListOf(names) + ", not x, y and z; give --columns I,J,K";
  return layout;
}

bool IsCalled(const Name& name, std::string_view wanted) {
  return Lower(name.text) == Lower(wanted) || Lower(name.bare) == Lower(wanted);
}

// A column that the user asks for by its number or name; number 0 and the reason if there is none.
Column WantedColumn(const std::vector<Name>& names, const std::string& wanted, std::string* problem) {
  long number = 0;
  if (ParseWhole(wanted, &number)) {
    const auto index = static_cast<std::size_t>(number);
    return {index, index <= names.size() ? names[index - 1].text : ""};
  }
  const auto isCalled = [&](const Name& name) { return IsCalled(name, wanted); };
  const auto count = std::count_if(names.begin(), names.end(), isCalled);
  const auto found = std::find_if(names.begin(), names.end(), isCalled);
  if (count == 1) return {static_cast<std::size_t>(found - names.begin()) + 1, found->text};
  *problem = names.empty() ? "no header names the columns; give their numbers to --columns"
             : count > 1   ? "several columns are called '" + Printable(wanted) + "'; give numbers to --columns"
                           : "no column is called '" + Printable(wanted) + "'; the header names " + ListOf(names);
  return {0, ""};
}

Layout LayoutByWish(const std::vector<Name>& names, const std::vector<std::string>& wanted) {
  Layout layout;
  layout.chosen = true;
  for (const std::string& each : wanted) layout.columns.push_back(WantedColumn(names, each, &layout.problem));
  return layout;
}

// A unit that the header states: known, or a text that is none.
void StateUnit(const std::string& text, Layout* layout) {
  const LengthUnit* unit = FindUnit(text);
  if (unit == nullptr) {
    layout->unknownUnit = text;
  } else if (layout->unit != nullptr && layout->unit != unit) {
    layout->problem =
        std::string("the header gives the columns different units, ") + layout->unit->name + " and " + unit->name;
  } else {
    layout->unit = unit;
  }
}

// A row of names found in the header, empty if there is none.
struct NameRow {
  std::vector<Name> names;
  std::size_t line = 0;  // its place in the header
};

// How far a line of the header is a row of names for points of `width` columns: 0 not at all, 2 without doubt.
int RankOfNames(const std::vector<Name>& names, std::size_t width, char separator,
                const std::vector<std::string>& wanted) {
  if (names.size() != width) return 0;
  const std::vector<Group> groups = GroupsOf(names);
  const bool together = std::any_of(groups.begin(), groups.end(), [](const Group& g) { return g.Count() > 1; });
  const bool called = std::any_of(wanted.begin(), wanted.end(), [&](const std::string& each) {
    return std::any_of(names.begin(), names.end(), [&](const Name& name) { return IsCalled(name, each); });
  });
  return together || called ? 2 : separator != kBlanks || !groups.empty() ? 1 : 0;
}

// Of several such rows the last; the names may be separated by blanks where the points are not.
NameRow FindNames(const std::deque<std::string>& lines, std::size_t width, char separator,
                  const std::vector<std::string>& wanted) {
  NameRow best;
  int rank = 0;
  for (std::size_t i = lines.size(); i-- > 0;) {
    for (const char each : {separator, kBlanks}) {
      std::vector<Name> names = ParseNames(lines[i], each);
      const int found = RankOfNames(names, width, each, wanted);
      if (found > rank) best = {std::move(names), i};
      rank = std::max(rank, found);
    }
  }
  return best;
}

// A row that names x, y and z, but not as many columns as the points have: it serves if it begins with these three.
NameRow FindOtherNames(const std::deque<std::string>& lines, std::size_t width, char separator, std::string* problem) {
  for (std::size_t i = lines.size(); i-- > 0;) {
    std::vector<Name> names = ParseNames(lines[i], separator);
    const std::vector<Group> complete = WithAxes(GroupsOf(names), 3);
    if (complete.empty()) continue;
    const bool leads = complete[0].columns == std::array<std::size_t, 3>{1, 2, 3};
    if (leads && names.size() < width) return {std::move(names), i};
    *problem = "the header names " + std::to_string(names.size()) + " columns, the points have " +
               std::to_string(width) + "; give --columns I,J,K";
    break;
  }
  return {};
}

// Units behind the names of the chosen columns or in a row of units below them.
void StateColumnUnits(const std::deque<std::string>& lines, const NameRow& row, char separator, Layout* layout) {
  for (const Column& column : layout->columns) {
    if (column.number > row.names.size()) continue;
    const std::string& unit = row.names[column.number - 1].unit;
    if (!unit.empty()) StateUnit(unit, layout);
  }
  for (std::size_t i = row.line + 1; i < lines.size(); ++i) {
    std::vector<std::string_view> fields;
    Split(lines[i], separator, &fields);
    if (fields.size() != row.names.size()) continue;
    for (const Column& column : layout->columns) {
      std::string field(column.number <= fields.size() ? fields[column.number - 1] : "");
      std::erase_if(field, [](char c) { return std::string_view("[]()").find(c) != std::string_view::npos; });
      if (FindUnit(field) != nullptr) StateUnit(field, layout);
    }
  }
}

bool IsWordUnit(std::string_view word) {
  return IsOneOf(Lower(word), {"unit", "units", "einheit", "einheiten"});
}

}  // namespace

std::string Layout::Problem(const LengthUnit* given) const {
  if (!problem.empty() || given != nullptr || unknownUnit.empty()) return problem;
  return "the header states the unknown unit '" + Printable(unknownUnit) + "'; give --unit " + UnitNames();
}

void Header::Add(std::string_view line) {
  constexpr std::size_t kMostLines = 16;
  constexpr std::size_t kLongestStatement = 200;
  m_lines.emplace_back(line);
  if (m_lines.size() > kMostLines) m_lines.pop_front();
  // "Units: inch" may stand far above the names.
  std::string text(line.substr(0, kLongestStatement));
  std::replace_if(
      text.begin(), text.end(), [](char c) { return std::string_view(":=;,\"").find(c) != std::string_view::npos; },
      ' ');
  std::vector<std::string_view> words;
  Split(text, kBlanks, &words);
  if (words.size() < 2 || !IsWordUnit(words[0])) return;
  const LengthUnit* stated = nullptr;
  for (const std::string_view word : words) {
    if (FindUnit(word) != nullptr) stated = FindUnit(word);
  }
  if (stated != nullptr || words.size() == 2) m_unit = stated != nullptr ? stated->name : std::string(words[1]);
}

Layout Header::LayoutOf(std::size_t width, char separator, const std::vector<std::string>& wanted) const {
  std::string problem;
  NameRow row = FindNames(m_lines, width, separator, wanted);
  if (wanted.empty() && LayoutByNames(row.names).columns.empty()) {
    const NameRow other = FindOtherNames(m_lines, width, separator, &problem);
    if (!other.names.empty()) row = other;
  }
  Layout layout = wanted.empty() ? LayoutByNames(row.names) : LayoutByWish(row.names, wanted);
  if (layout.problem.empty()) layout.problem = problem;
  const bool known =
      std::all_of(layout.columns.begin(), layout.columns.end(), [](const Column& c) { return c.number > 0; });
  if (layout.columns.empty() || !known) {
    layout.columns = {{1, ""}, {2, ""}};
    if (width > 2) layout.columns.push_back({3, ""});
  }
  StateColumnUnits(m_lines, row, separator, &layout);
  if (!m_unit.empty()) StateUnit(m_unit, &layout);
  return layout;
}
