#include "report.h"

#include <cmath>
#include <cstdio>

namespace {

std::string Number(double value, const char* format = "%.3g") {
  char text[40];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string Escaped(const std::string& text, bool html) {
  std::string escaped;
  for (const char c : text) {
    if (html && c == '<')
      escaped += "&lt;";
    else if (html && c == '&')
      escaped += "&amp;";
    else if (!html && (c == '"' || c == '\\'))
      escaped += std::string("\\") + c;
    else if (static_cast<unsigned char>(c) < ' ')
      escaped += ' ';
    else
      escaped += c;
  }
  return escaped;
}

std::string Quoted(const std::string& text) {
  return "\"" + Escaped(text, false) + "\"";
}

// JSON has no number for what is not finite.
std::string JsonNumber(double value) {
  return std::isfinite(value) ? Number(value, "%.17g") : "null";
}

std::string PartText(const Part& part) {
  return "size " + Number(part.size, "%.6g") + " " + part.unit->name + ", every coordinate of its middle " +
         Number(part.offset, "%.6g") + " " + part.unit->name;
}

std::string Verdict(const Section& section) {
  const std::string checks = std::to_string(section.Checks());
  if (section.Holds() && checks == "1") return "the check holds";
  if (section.Holds()) return "all " + checks + " checks hold";
  return std::to_string(section.Problems().size()) + " of " + checks + " checks FAIL";
}

std::string Padded(const std::string& text, std::size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

constexpr std::size_t kProblemsShown = 20;

}  // namespace

std::string Text(const Statement& statement) {
  std::string text = "Statement of accuracy\n\n";
  for (const auto& [name, value] : statement.identity) text += "  " + Padded(name, 18) + value + "\n";
  text += "  " + Padded("part", 18) + PartText(statement.part) + "\n";
  for (const Section& section : statement.sections) {
    text += "\n" + section.Title() + ": " + Verdict(section) + "\n  " + section.Note() + "\n";
    if (!section.Rows().empty()) {
      text += "\n  " + Padded("feature", 14) + Padded("criterion", 28) + Padded("quantity", 24) + Padded("cases", 7) +
              Padded("error [um]", 12) + Padded("bound [um]", 12) + Padded("used", 8) + "worst case\n";
    }
    for (const Row& row : section.Rows()) {
      text += "  " + Padded(row.feature, 14) + Padded(row.criterion, 28) + Padded(row.quantity, 24) +
              Padded(std::to_string(row.cases), 7) + Padded(Number(row.error), 12) + Padded(Number(row.bound), 12) +
              Padded(Number(100.0 * row.ratio, "%.0f") + " %", 8) + row.worst + "\n";
    }
    for (std::size_t i = 0; i < section.Problems().size() && i < kProblemsShown; ++i)
      text += "  FAILS  " + section.Problems()[i] + "\n";
    if (section.Problems().size() > kProblemsShown) text += "  and more; the JSON file has them all\n";
  }
  text += std::string("\n") + (statement.Holds() ? "All checks hold" : "There are checks that FAIL") + " (" +
          Number(statement.seconds, "%.1f") + " s)\n";
  return text;
}

std::string JsonText(const Statement& statement) {
  const Part& part = statement.part;
  std::string text = "{\n \"version\": 1,\n \"holds\": " + std::string(statement.Holds() ? "true" : "false") +
                     ",\n \"seconds\": " + JsonNumber(statement.seconds) +
                     ",\n \"part\": {\"size\": " + JsonNumber(part.size) + ", \"offset\": " + JsonNumber(part.offset) +
                     ", \"unit\": " + Quoted(part.unit->name) + "},\n \"identity\": {";
  const char* separator = "";
  for (const auto& [name, value] : statement.identity) {
    text += separator + ("\n  " + Quoted(name)) + ": " + Quoted(value);
    separator = ",";
  }
  text += "\n },\n \"sections\": [";
  separator = "";
  for (const Section& section : statement.sections) {
    text += separator + ("\n  {\"title\": " + Quoted(section.Title())) +
            ", \"holds\": " + (section.Holds() ? "true" : "false") +
            ", \"checks\": " + std::to_string(section.Checks()) + ",\n   \"rows\": [";
    separator = "";
    for (const Row& row : section.Rows()) {
      text += separator + ("\n    {\"feature\": " + Quoted(row.feature)) + ", \"criterion\": " + Quoted(row.criterion) +
              ", \"quantity\": " + Quoted(row.quantity) + ", \"cases\": " + std::to_string(row.cases) +
              ", \"largest_error\": " + JsonNumber(row.largest) + ", \"error\": " + JsonNumber(row.error) +
              ", \"bound\": " + JsonNumber(row.bound) + ", \"worst_case\": " + Quoted(row.worst) + "}";
      separator = ",";
    }
    text += "],\n   \"problems\": [";
    separator = "";
    for (const std::string& problem : section.Problems()) {
      text += separator + ("\n    " + Quoted(problem));
      separator = ",";
    }
    text += "]}";
    separator = ",";
  }
  return text + "\n ]\n}\n";
}

std::string HtmlText(const Statement& statement) {
  const auto cell = [](const std::string& text) { return "<td>" + Escaped(text, true) + "</td>"; };
  const std::string verdict = statement.Holds() ? "All checks hold" : "There are checks that fail";
  // A phone scrolls the tables, and the page stays where it is.
  const std::string table = "<div class=\"wide\" tabindex=\"0\">\n<table>\n", end = "</table>\n</div>\n";
  std::string page =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<meta name=\"viewport\" "
      "content=\"width=device-width\">\n<title>Statement of accuracy</title>\n"
      "<style>\nbody{font:15px/1.45 system-ui,sans-serif;margin:2rem auto;max-width:70rem;padding:0 "
      "1rem;color:#22272e}\n.wide{overflow-x:auto}\n"
      "table{border-collapse:collapse;margin:.6rem 0;font-size:13px}th,td{text-align:left;padding:.2rem .7rem;"
      "border-bottom:1px solid #dde1e6}\ntd.n{text-align:right;font-variant-numeric:tabular-nums}\n"
      ".yes,.no{color:#fff;padding:.3rem .8rem;border-radius:.3rem;display:inline-block}.yes{background:#1b7f4b}"
      ".no{background:#c0392b}\nmeter{width:6rem}\n:root{color-scheme:light dark}\n@media(prefers-color-scheme:dark){"
      "body{background:#16191d;color:#d7dce2}td,th{border-color:#3a4149}}\n</style>\n</head>\n<body>\n<h1>Statement of "
      "accuracy</h1>\n<p "
      "class=\"" +
      std::string(statement.Holds() ? "yes" : "no") + "\">" + verdict + "</p>\n" + table;
  for (const auto& [name, value] : statement.identity) page += "<tr>" + cell(name) + cell(value) + "</tr>\n";
  page += "<tr>" + cell("part") + cell(PartText(statement.part)) + "</tr>\n" + end;
  page +=
      "<p>Errors are lengths in micrometres, those of angles at half of the size. Each row shows the case whose "
      "error is largest against its bound.</p>\n";
  for (const Section& section : statement.sections) {
    page += "<h2>" + Escaped(section.Title(), true) + "</h2>\n<p>" + Escaped(section.Note(), true) + " <b>" +
            Escaped(Verdict(section), true) + ".</b></p>\n";
    if (!section.Rows().empty()) {
      page += table +
              "<tr><th>feature</th><th>criterion</th><th>quantity</th><th>cases</th><th>error [um]</th>"
              "<th>bound [um]</th><th>used</th><th>worst case</th></tr>\n";
    }
    for (const Row& row : section.Rows()) {
      const auto number = [](const std::string& text) { return "<td class=\"n\">" + text + "</td>"; };
      page += "<tr>" + cell(row.feature) + cell(row.criterion) + cell(row.quantity) +
              number(std::to_string(row.cases)) + number(Number(row.error)) + number(Number(row.bound)) +
              "<td><meter max=\"1\" value=\"" + Number(std::fmin(row.ratio, 1.0)) + "\"></meter> " +
              Number(100.0 * row.ratio, "%.0f") + " %</td>" + cell(row.worst) + "</tr>\n";
    }
    if (!section.Rows().empty()) page += end;
    for (const std::string& problem : section.Problems())
      page += "<p class=\"no\">" + Escaped(problem, true) + "</p>\n";
  }
  return page + "</body>\n</html>\n";
}
