#include "input/progress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "text.h"

namespace {

constexpr auto kDelay = std::chrono::milliseconds(500);
constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr int kBarWidth = 40;

bool StandardErrorIsTerminal() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(fileno(stderr)) != 0;
#endif
}

}  // namespace

Progress::Progress(std::string what) : m_what(std::move(what)), m_next(std::chrono::steady_clock::now() + kDelay) {}

Progress::~Progress() {
  if (!m_shown) return;
  const std::string blanks(m_what.size() + kBarWidth + 10, ' ');
  std::fprintf(stderr, "\r%s\r", blanks.c_str());
  std::fflush(stderr);
}

void Progress::Show(double part) {
  static const bool kIsTerminal = StandardErrorIsTerminal();
  if (!kIsTerminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < m_next) return;
  m_next = now + kInterval;
  m_shown = true;
  part = part > 0 ? std::min(part, 1.0) : 0;  // also where it is NaN
  std::string bar(static_cast<std::size_t>(part * kBarWidth), '#');
  bar.resize(kBarWidth, '.');
  std::fprintf(stderr, "\r%s [%s] %3s %%", m_what.c_str(), bar.c_str(), Fixed(100 * part, 0).c_str());
  std::fflush(stderr);
}
