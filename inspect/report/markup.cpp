#include "report/markup.h"

#include <algorithm>

#include "text.h"

void Markup::Open(std::string_view tag, const Attributes& attributes) {
  m_text.append("<").append(tag);
  for (const auto& [name, value] : attributes) {
    m_text.append(" ").append(name).append("=\"").append(XmlEscaped(value)).append("\"");
  }
  m_text += ">";
}

void Markup::Close(std::string_view tag) {
  m_text.append("</").append(tag).append(">\n");
}

void Markup::Element(std::string_view tag, std::string_view text, const Attributes& attributes) {
  Open(tag, attributes);
  Text(text);
  Close(tag);
}

void Markup::Text(std::string_view text) {
  m_text += XmlEscaped(text);
}

namespace {

bool IsEmptyColumn(const HtmlTable& table, std::size_t column) {
  return std::all_of(table.rows.begin(), table.rows.end(),
                     [column](const std::vector<Cell>& row) { return row[column].text.empty(); });
}

bool IsNumberColumn(const HtmlTable& table, std::size_t column) {
  return std::any_of(table.rows.begin(), table.rows.end(),
                     [column](const std::vector<Cell>& row) { return !row[column].value.empty(); });
}

void AddCell(const Cell& cell, bool headsRow, Markup* markup) {
  Markup::Attributes attributes;
  if (headsRow) attributes.emplace_back("scope", "row");
  if (!cell.value.empty()) {
    attributes.emplace_back("class", "number");
    attributes.emplace_back("data-value", cell.value);
  }
  const char* tag = headsRow ? "th" : "td";
  markup->Open(tag, attributes);
  if (!cell.link.empty()) {
    markup->Element("a", cell.text, {{"href", "#" + cell.link}});
  } else if (!cell.style.empty()) {
    markup->Element("span", cell.text, {{"class", cell.style}});
  } else {
    markup->Text(cell.value.empty() ? cell.text : WithMinusSign(cell.text));
  }
  markup->Close(tag);
}

}  // namespace

void AddTable(const HtmlTable& table, Markup* markup) {
  std::vector<std::size_t> columns;
  for (std::size_t i = 0; i < table.heads.size(); ++i) {
    if (!IsEmptyColumn(table, i)) columns.push_back(i);
  }
  // A table that is wider than the window is moved by the keyboard, too.
  markup->Open("div", {{"class", "scroll"}, {"role", "group"}, {"tabindex", "0"}, {"aria-label", table.caption}});
  markup->Open("table", {{"class", table.style}});
  markup->Element("caption", table.caption);
  markup->Raw("<thead><tr>");
  for (const std::size_t column : columns) {
    Markup::Attributes attributes = {{"scope", "col"}};
    if (IsNumberColumn(table, column)) attributes.emplace_back("class", "number");
    markup->Element("th", table.heads[column], attributes);
  }
  markup->Raw("</tr></thead>\n<tbody>\n");
  for (const std::vector<Cell>& row : table.rows) {
    markup->Raw("<tr>");
    for (const std::size_t column : columns) AddCell(row[column], column == columns.front(), markup);
    markup->Raw("</tr>\n");
  }
  markup->Raw("</tbody></table></div>\n");
}
