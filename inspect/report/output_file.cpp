#include "report/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "input/point_file.h"
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

void Print(std::string_view text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (!written || std::fflush(stdout) != 0) throw InputError("standard output cannot be written");
}

void WriteFile(const std::string& path, std::string_view content) {
  if (path == "-") return Print(content);
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

std::string FileKey(const std::string& path) {
  if (path == "-") return path;
  std::error_code error;
  const fs::path key = fs::weakly_canonical(fs::absolute(path), error);
  return error ? path : key.string();
}

bool MeansDirectory(const std::string& path) {
  std::error_code error;
  return path.ends_with('/') || path.ends_with('\\') || fs::is_directory(path, error);
}

void MakeDirectory(const std::string& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) return;
  fs::create_directory(fs::path(path).parent_path(), error);
  if (error) Fail(path, error.message());
}

std::string InDirectory(const std::string& directory, const std::string& file) {
  return (fs::path(directory) / file).string();
}
