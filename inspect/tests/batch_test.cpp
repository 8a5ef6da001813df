#include "batch/batch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "batch/statistics.h"
#include "batch/watch.h"
#include "plan/plan_reader.h"
#include "report/html.h"
#include "report/json.h"
#include "report/qif.h"

namespace {

namespace fs = std::filesystem;

class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(const std::string& name) : m_path(fs::temp_directory_path() / name) {
    fs::remove_all(m_path);
    fs::create_directories(m_path);
  }
  ~TemporaryDirectory() { fs::remove_all(m_path); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  std::string Path() const { return m_path.string(); }

  // Each change of a file has a time of its own, however coarse the clock of the file system is.
  void Append(const std::string& name, const std::string& text) {
    std::ofstream(m_path / name, std::ios::app) << text;
    m_time += std::chrono::seconds(1);
    fs::last_write_time(m_path / name, m_time);
  }

 private:
  fs::path m_path;
  fs::file_time_type m_time = fs::file_time_type::clock::now() - std::chrono::hours(1);
};

// Without the times that the evaluation took.
std::string WithoutTimes(const std::string& text) {
  std::istringstream lines(text);
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    if (line.find("\"seconds\"") == std::string::npos) kept += line + "\n";
  }
  return kept;
}

std::string ReportBy(unsigned threads, const PartPlan& plan, const std::vector<PartFiles>& parts) {
  PartReport report{plan, EvaluateParts(plan, parts, nullptr, threads), {}};
  report.capabilities = CapabilitiesOf(report.plan, report.parts);
  return WithoutTimes(JsonReport(report)) + HtmlReport(report) + QifReport(report);
}

TEST(Batch, IsTheSameByAnyNumberOfThreads) {
#ifdef _WIN32
  _putenv_s("SOURCE_DATE_EPOCH", "1700000000");
#else
  setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
#endif
  const std::string data = std::string(NU_DATA_DIR) + "/parts/";
  const PartPlan plan = ReadPlan(data + "carrier.toml", true);
  std::vector<PartFiles> parts;
  for (int i = 0; i < 9; ++i) {
    // Every third part fails: it has no groups, or is missing.
    const char* file = i % 3 < 2 ? "carrier.csv" : i == 2 ? "edge.xyz" : "nothing.csv";
    parts.push_back({"part " + std::to_string(i), data + file, ""});
  }
  const std::string one = ReportBy(1, plan, parts);
  EXPECT_NE(one.find("part 8"), std::string::npos);
  for (const unsigned threads : {2U, 3U, 8U, 20U}) EXPECT_EQ(ReportBy(threads, plan, parts), one) << threads;
}

TEST(WatchedDirectory, TellsAPartWhenItIsComplete) {
  TemporaryDirectory directory("nu-inspect-watch");
  WatchedDirectory watched(directory.Path(), false);
  using Names = std::vector<std::string>;
  EXPECT_EQ(watched.Look(), Names{});
  // Two looks find it growing, then it rests.
  for (const char* line : {"X,Y,Z\n", "1,2,3\n", "4,5,9\n"}) {
    directory.Append("a.csv", line);
    EXPECT_EQ(watched.Look(), Names{});
  }
  EXPECT_EQ(watched.Look(), Names{"a.csv"});
  EXPECT_EQ(watched.Look(), Names{});
  // Others beside it; what is no point file is left alone.
  directory.Append("c.xyz", "1 2 3\n");
  directory.Append("b.csv.gz", "1 2 3\n");
  directory.Append("d.csv.part", "1 2 3\n");
  directory.Append("report.html", "<p>");
  EXPECT_EQ(watched.Look(), Names{});
  EXPECT_EQ(watched.Look(), (Names{"b.csv.gz", "c.xyz"}));
  // It lands again.
  directory.Append("a.csv", "7,8,1\n");
  EXPECT_EQ(watched.Look(), Names{});
  EXPECT_EQ(watched.Look(), Names{"a.csv"});
  EXPECT_THROW(WatchedDirectory(directory.Path() + "/nowhere", false).Look(), InputError);
}

TEST(WatchedDirectory, TellsADirectoryWhenAllOfItsFilesRest) {
  TemporaryDirectory directory("nu-inspect-watch-directories");
  fs::create_directories(directory.Path() + "/part");
  WatchedDirectory watched(directory.Path(), true);
  directory.Append("part/a.csv", "1,2,3\n");
  EXPECT_TRUE(watched.Look().empty());
  directory.Append("part/b.csv", "1,2,3\n");
  EXPECT_TRUE(watched.Look().empty());
  EXPECT_EQ(watched.Look(), std::vector<std::string>{"part"});
}

}  // namespace
