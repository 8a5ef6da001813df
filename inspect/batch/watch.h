#ifndef NU_INSPECT_WATCH_H
#define NU_INSPECT_WATCH_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// What is in a directory from one look to the next: point files (csv, xyz, asc, txt, ply, pcd, and these packed by gz),
// or directories where a part is one.
class WatchedDirectory {
 public:
  WatchedDirectory(std::string path, bool partsAreDirectories)
      : m_path(std::move(path)), m_partsAreDirectories(partsAreDirectories) {}

  // The parts that are new or changed since they were last told, by name. One is told when two looks found it alike: a
  // file that is being written is not read halfway. Throws InputError if the directory cannot be read.
  std::vector<std::string> Look();

 private:
  struct State {
    std::uintmax_t size = 0;  // of all files of the part
    std::int64_t time = 0;    // of the last change
    bool operator==(const State&) const = default;
  };
  struct Entry {
    State seen;
    State told;
    bool isTold = false;
  };

  std::string m_path;
  bool m_partsAreDirectories;
  std::map<std::string, Entry> m_entries;
};

#endif
