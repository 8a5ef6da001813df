#include "statement.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

bool IsTerminal() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(fileno(stderr)) != 0;
#endif
}

}  // namespace

void Section::Add(const std::string& feature, const std::string& criterion, const std::string& quantity,
                  const std::string& name, double error, double bound) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  auto row = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& r) {
    return r.feature == feature && r.criterion == criterion && r.quantity == quantity;
  });
  if (row == m_rows.end()) row = m_rows.insert(row, {feature, criterion, quantity, 0, 0.0, 0.0, 0.0, 0.0, ""});
  const bool holds = error <= bound;
  const double ratio = holds && error == 0.0 ? 0.0 : holds || error / bound > 1.0 ? error / bound : kInfinity;
  if (row->cases == 0 || ratio > row->ratio) {
    row->error = error;
    row->bound = bound;
    row->ratio = ratio;
    row->worst = name;
  }
  if (!(error <= row->largest)) row->largest = error;
  ++row->cases;
  ++m_checks;
  if (!holds) {
    const char* unit = quantity.find('[') == std::string::npos ? " um" : "";  // others say theirs
    char text[96];
    std::snprintf(text, sizeof text, ": error %.3g%s, bound %.3g%s", error, unit, bound, unit);
    m_problems.push_back(name + ": " + feature + ", " + criterion + ", " + quantity + text);
  }
}

void Section::SortRows() {
  std::stable_sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) {
    return a.feature != b.feature ? a.feature < b.feature : a.criterion < b.criterion;
  });
}

void Section::Check(bool holds, const std::string& problem) {
  ++m_checks;
  if (!holds) m_problems.push_back(problem);
}

bool Statement::Holds() const {
  return std::all_of(sections.begin(), sections.end(), [](const Section& s) { return s.Holds(); });
}

Progress::Progress() : m_isShown(IsTerminal()) {}

Progress::~Progress() {
  if (m_isShown) std::fprintf(stderr, "\r%60s\r", "");
}

void Progress::Begin(const std::string& what, std::size_t steps) {
  m_what = what;
  m_step = 0;
  m_steps = steps;
  Show();
}

void Progress::Step() {
  if (m_step < m_steps) ++m_step;
  Show();
}

void Progress::Show() const {
  if (!m_isShown) return;
  std::fprintf(stderr, "\r%-40s %5zu of %zu ", m_what.c_str(), m_step, m_steps);
  std::fflush(stderr);
}
