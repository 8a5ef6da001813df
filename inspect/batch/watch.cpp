#include "batch/watch.h"

#include <algorithm>
#include <filesystem>

#include "input/point_file.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

bool IsPointFile(const fs::path& path) {
  constexpr const char* kEndings[] = {".csv", ".xyz", ".asc", ".txt", ".ply", ".pcd"};
  const fs::path packed = Lower(path.extension().string()) == ".gz" ? path.stem() : path;
  const std::string ending = Lower(packed.extension().string());
  return std::find(std::begin(kEndings), std::end(kEndings), ending) != std::end(kEndings);
}

std::int64_t TimeOf(const fs::path& path, std::error_code& error) {
  return static_cast<std::int64_t>(fs::last_write_time(path, error).time_since_epoch().count());
}

}  // namespace

std::vector<std::string> WatchedDirectory::Look() {
  std::error_code error;
  std::vector<std::string> ready;
  fs::directory_iterator entries(m_path, error);
  if (error) throw InputError(Printable(m_path) + ": cannot be watched: " + error.message());
  for (const fs::directory_entry& entry : entries) {
    std::error_code gone;  // between the look at the directory and that at the file
    const bool isDirectory = entry.is_directory(gone);
    if (gone || isDirectory != m_partsAreDirectories || (!isDirectory && !IsPointFile(entry.path()))) continue;
    State state;
    const auto add = [&](const fs::directory_entry& file) {
      state.size += file.file_size(gone);
      state.time = std::max(state.time, TimeOf(file.path(), gone));
    };
    if (!isDirectory) add(entry);
    if (isDirectory) {
      for (const fs::directory_entry& file : fs::directory_iterator(entry.path(), gone)) {
        if (file.is_regular_file(gone)) add(file);
      }
    }
    if (gone) continue;
    Entry& known = m_entries[entry.path().filename().string()];
    const bool steady = known.seen == state;
    known.seen = state;
    if (!steady || (known.isTold && known.told == state)) continue;
    known.told = state;
    known.isTold = true;
    ready.push_back(entry.path().filename().string());
  }
  std::sort(ready.begin(), ready.end());
  return ready;
}
