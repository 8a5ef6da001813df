#ifndef NU_INSPECT_MARKUP_H
#define NU_INSPECT_MARKUP_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Text of HTML under construction. Whatever comes in as text is escaped.
class Markup {
 public:
  using Attributes = std::vector<std::pair<std::string_view, std::string>>;

  void Open(std::string_view tag, const Attributes& attributes = {});
  void Close(std::string_view tag);
  // An element with nothing but text.
  void Element(std::string_view tag, std::string_view text, const Attributes& attributes = {});
  void Text(std::string_view text);
  // Markup already.
  void Raw(std::string_view markup) { m_text += markup; }

  std::string Take() { return std::move(m_text); }

 private:
  std::string m_text;
};

// A cell of a table: numbers stand at the right and carry their full value.
struct Cell {
  std::string text;
  std::string value;  // as a number in full; empty for words
  std::string link;   // to an element of the page; mostly empty
  std::string style;  // the class of a verdict; mostly empty
};

// A table whose first column heads the rows. Columns in which every cell is empty are left out.
struct HtmlTable {
  std::string caption;
  std::string style;  // its classes
  std::vector<std::string> heads;
  std::vector<std::vector<Cell>> rows;
};

void AddTable(const HtmlTable& table, Markup* markup);

#endif
