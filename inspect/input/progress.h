#ifndef NU_INSPECT_PROGRESS_H
#define NU_INSPECT_PROGRESS_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

// The line of the terminal on which progress is shown. One owner has it at a time, whichever thread it runs on: the
// others stay silent.
class ProgressLine {
 public:
  ProgressLine() = default;
  ~ProgressLine() { Release(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // Whether standard error is a terminal and the line is this one's from now on.
  bool Claim();
  // Replaces what stands on the line; only where it was claimed.
  void Write(const std::string& text);
  // Erases it and gives the line back.
  void Release();

 private:
  std::size_t m_width = 0;
};

// A bar on standard error that shows how far long work is; it appears where that is a terminal and only after a while.
// It is erased in the end.
class Progress {
 public:
  enum class Bar { kWhenShown, kFromTheStart };

  // A bar of kFromTheStart keeps the line free for itself: work within its work shows none.
  explicit Progress(std::string what, Bar bar = Bar::kWhenShown);

  // The part of the work that is done, from 0 to 1. Cheap: it writes a few times a second at most.
  void Show(double part);

 private:
  std::string m_what;
  std::chrono::steady_clock::time_point m_next;
  ProgressLine m_line;
};

// The seconds that work takes which does not tell how far it is, shown in the same way until the object goes.
class Waiting {
 public:
  explicit Waiting(std::string what);
  ~Waiting();
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  void Show();

  std::string m_what;
  std::mutex m_mutex;
  std::condition_variable m_end;
  bool m_isOver = false;
  std::thread m_thread;  // none where nothing is to be shown
};

#endif
