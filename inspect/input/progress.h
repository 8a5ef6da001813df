#ifndef NU_INSPECT_PROGRESS_H
#define NU_INSPECT_PROGRESS_H

#include <chrono>
#include <string>

// A bar on standard error that shows how far long work is; it appears where that is a terminal and only after a while.
// The line is erased in the end.
class Progress {
 public:
  explicit Progress(std::string what);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // The part of the work that is done, from 0 to 1. Cheap: it writes a few times a second at most.
  void Show(double part);

 private:
  std::string m_what;
  std::chrono::steady_clock::time_point m_next;
  bool m_shown = false;
};

#endif
