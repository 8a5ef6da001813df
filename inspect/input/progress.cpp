#include "input/progress.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <system_error>
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
  static const bool kIsTerminal = _isatty(_fileno(stderr)) != 0;
#else
  static const bool kIsTerminal = isatty(fileno(stderr)) != 0;
#endif
  return kIsTerminal;
}

std::atomic<const ProgressLine*> lineOwner{nullptr};

}  // namespace

bool ProgressLine::Claim() {
  if (!StandardErrorIsTerminal()) return false;
  const ProgressLine* owner = nullptr;
  return lineOwner.compare_exchange_strong(owner, this) || owner == this;
}

void ProgressLine::Write(const std::string& text) {
  const std::size_t blanks = m_width > text.size() ? m_width - text.size() : 0;
  std::fprintf(stderr, "\r%s%s", text.c_str(), std::string(blanks, ' ').c_str());
  std::fflush(stderr);
  m_width = text.size();
}

void ProgressLine::Release() {
  if (lineOwner.load() != this) return;
  if (m_width > 0) {
    Write("");
    std::fputs("\r", stderr);
    std::fflush(stderr);
  }
  lineOwner = nullptr;
}

Progress::Progress(std::string what, Bar bar)
    : m_what(std::move(what)), m_next(std::chrono::steady_clock::now() + kDelay) {
  if (bar == Bar::kFromTheStart) m_line.Claim();
}

void Progress::Show(double part) {
  const auto now = std::chrono::steady_clock::now();
  if (now < m_next || !m_line.Claim()) return;
  m_next = now + kInterval;
  part = part > 0 ? std::min(part, 1.0) : 0;  // also where it is NaN
  std::string bar(static_cast<std::size_t>(part * kBarWidth), '#');
  bar.resize(kBarWidth, '.');
  const std::string percent = Fixed(100 * part, 0);
  m_line.Write(m_what + " [" + bar + "] " + std::string(3 - std::min<std::size_t>(3, percent.size()), ' ') + percent +
               " %");
}

Waiting::Waiting(std::string what) : m_what(std::move(what)) {
  if (!StandardErrorIsTerminal() || lineOwner.load() != nullptr) return;
  try {
    m_thread = std::thread([this] { Show(); });
  } catch (const std::system_error&) {
    // Without a thread the work is done all the same.
  }
}

Waiting::~Waiting() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isOver = true;
  }
  m_end.notify_one();
  if (m_thread.joinable()) m_thread.join();
}

void Waiting::Show() {
  ProgressLine line;
  const auto start = std::chrono::steady_clock::now();
  std::unique_lock<std::mutex> lock(m_mutex);
  for (auto wait = kDelay; !m_end.wait_for(lock, wait, [this] { return m_isOver; }); wait = kInterval) {
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (line.Claim()) line.Write(m_what + ", " + Fixed(seconds, 0) + " s");
  }
}
