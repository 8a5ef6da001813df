#ifndef NU_SELFTEST_STATEMENT_H
#define NU_SELFTEST_STATEMENT_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// What the program found: sections of rows, each with the worst error of one quantity over many cases.

struct LengthUnit {
  const char* name;
  double micrometres;
};

// The part that the user measures.
struct Part {
  double size = 100.0;  // its largest extent, in the unit
  double offset = 0.0;  // of each coordinate, in the unit
  const LengthUnit* unit = nullptr;
};

// Of all cases the one whose error is largest against its bound. Errors of angles are those at half of the part's size,
// so that all are lengths, in micrometres.
struct Row {
  std::string feature, criterion, quantity;
  int cases = 0;
  double largest = 0.0;  // error of all cases
  double error = 0.0;    // of the worst case against its bound
  double bound = 0.0;
  double ratio = 0.0;
  std::string worst;  // the name of that case

  bool Holds() const { return ratio <= 1.0; }
};

class Section {
 public:
  Section(std::string title, std::string note) : m_title(std::move(title)), m_note(std::move(note)) {}

  // A case of the row with these names. An error that is not finite does not hold.
  void Add(const std::string& feature, const std::string& criterion, const std::string& quantity,
           const std::string& name, double error, double bound);
  // A check without a number.
  void Check(bool holds, const std::string& problem);
  // By feature, then by criterion.
  void SortRows();
  // What the reader should know of this run.
  void Remark(const std::string& text) { m_note += " " + text; }

  const std::string& Title() const { return m_title; }
  const std::string& Note() const { return m_note; }
  const std::vector<Row>& Rows() const { return m_rows; }
  const std::vector<std::string>& Problems() const { return m_problems; }
  int Checks() const { return m_checks; }
  bool Holds() const { return m_problems.empty(); }

 private:
  std::string m_title, m_note;
  std::vector<Row> m_rows;
  std::vector<std::string> m_problems;
  int m_checks = 0;
};

struct Statement {
  Part part;
  std::vector<std::pair<std::string, std::string>> identity;
  std::vector<Section> sections;
  double seconds = 0.0;

  bool Holds() const;
};

// Counts on a terminal, and is silent elsewhere.
class Progress {
 public:
  Progress();
  ~Progress();
  void Begin(const std::string& what, std::size_t steps);
  void Step();

 private:
  void Show() const;

  bool m_isShown;
  std::string m_what;
  std::size_t m_step = 0, m_steps = 0;
};

#endif
