#include "report/moment.h"

#include <chrono>
#include <cstdlib>

#include "text.h"

namespace {

std::chrono::sys_seconds Now() {
  constexpr long kLatest = 2000000000;  // fits a long of 32 bits
  const char* given = std::getenv("SOURCE_DATE_EPOCH");
  long seconds = 0;
  if (given != nullptr && ParseWhole(given, &seconds) && seconds >= 0 && seconds <= kLatest) {
    return std::chrono::sys_seconds(std::chrono::seconds(seconds));
  }
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::string TwoDigits(long long value) {
  return (value < 10 ? "0" : "") + std::to_string(value);
}

}  // namespace

std::string CurrentMoment(bool iso) {
  const auto now = Now();
  const auto day = std::chrono::floor<std::chrono::days>(now);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(now - day);
  return std::to_string(static_cast<int>(date.year())) + "-" + TwoDigits(static_cast<unsigned>(date.month())) + "-" +
         TwoDigits(static_cast<unsigned>(date.day())) + (iso ? "T" : " ") + TwoDigits(time.hours().count()) + ":" +
         TwoDigits(time.minutes().count()) + ":" + TwoDigits(time.seconds().count()) + (iso ? "Z" : " UTC");
}
