#include "output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "point_file.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
  throw InputError(Printable(path) + ": cannot be written: " + why);
}

// Mode "x" keeps an existing file; false with errno set when anything failed, even the closing.
bool WriteAll(const std::string& path, const char* mode, std::string_view content) {
  std::FILE* file = std::fopen(path.c_str(), mode);
  if (file == nullptr) return false;
  const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
  const int error = errno;
  const bool closed = std::fclose(file) == 0;
  if (!written) errno = error;
  return written && closed;
}

}  // namespace

void WriteFile(const std::string& path, std::string_view content) {
  std::error_code error;
  const fs::path target = fs::weakly_canonical(path, error);
  if (error) Fail(path, error.message());
  if (fs::exists(target, error) && !fs::is_regular_file(target, error)) {
    // A device or pipe takes the text as it comes; only files can be replaced.
    if (!WriteAll(path, "wb", content)) Fail(path, std::strerror(errno));
    return;
  }
  const std::string part = target.string() + ".part";
  if (!WriteAll(part, "wbx", content)) {
    const int number = errno;
    if (number != EEXIST) fs::remove(part, error);
    Fail(path, number == EEXIST ? "'" + Printable(part) + "' is in the way" : std::strerror(number));
  }
  fs::rename(part, target, error);
  if (!error) return;
  const std::string why = error.message();
  fs::remove(part, error);
  Fail(path, why);
}

bool SameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  const fs::path first = fs::weakly_canonical(fs::absolute(a), error);
  if (error) return false;
  const fs::path second = fs::weakly_canonical(fs::absolute(b), error);
  return !error && first == second;
}
