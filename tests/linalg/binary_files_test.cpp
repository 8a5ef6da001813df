#include <gtest/gtest.h>
#if defined(__linux__)
#include <sys/stat.h>
#endif

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"
#include "support/failures.h"
#include "support/scratch_file.h"

namespace {

class BinaryFiles : public testing::Test {
 protected:
  BinaryFiles() : m_path(nu::test::ScratchFile(testing::UnitTest::GetInstance()->current_test_info()->name())) {}
  ~BinaryFiles() override {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
  }

  std::string Name() const { return m_path.string(); }
  std::string Bytes() const {
    std::ifstream file(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void Put(const std::string& bytes) const { std::ofstream(m_path, std::ios::binary) << bytes; }

  std::filesystem::path m_path;
};

std::string IntBytes(std::initializer_list<unsigned> values) {
  std::string bytes;
  for (unsigned v : values) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(v >> shift & 0xffu);
  }
  return bytes;
}

TEST_F(BinaryFiles, BytesAreTheFormatAndComeBack) {
  CNuMatrix m(2, 3);
  for (int i = 0; i < 6; ++i) m.Element(i / 3, i % 3) = i == 5 ? -0.0 : 1.0 / (i + 1);
  ASSERT_TRUE(m.BinaryDump(Name().c_str()));
  std::string expected = std::string("Matrix\0", 7) + IntBytes({2, 3});
  for (int i = 0; i < 6; ++i) {
    const double value = m.Element(i / 3, i % 3);
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    expected += IntBytes({static_cast<unsigned>(bits), static_cast<unsigned>(bits >> 32)});
  }
  EXPECT_EQ(Bytes(), expected);
  EXPECT_EQ(Bytes().size(), 63u);
  CNuMatrix read(5, 5);
  EXPECT_TRUE(read.BinaryRead(Name().c_str()));
  EXPECT_TRUE(read.IsEqual(m, 1e-300));
  CNuVector other(7);
  EXPECT_FALSE(other.BinaryRead(Name().c_str()));
  EXPECT_EQ(other.GetSize(), 7);

  ASSERT_TRUE(CNuVector(1, 2, 3).BinaryDump(Name().c_str()));
  EXPECT_EQ(Bytes().size(), 35u);
  EXPECT_TRUE(other.BinaryRead(Name().c_str()));
  EXPECT_TRUE(other.IsEqual(CNuVector(1, 2, 3), 1e-300));
  EXPECT_FALSE(read.BinaryRead(Name().c_str()));
}

TEST_F(BinaryFiles, HostileFilesAreRefusedAndChangeNothing) {
  const std::string matrix("Matrix\0", 7), vector("Vector\0", 7), three(24, '\1');
  const unsigned max = 0x7fffffffu;
  const std::string files[] = {"",
                               "Matri",
                               matrix,
                               matrix + IntBytes({2}),
                               matrix + IntBytes({max, max}) + three,
                               matrix + IntBytes({0, 3}) + three,
                               matrix + IntBytes({3, 0xffffffffu}) + three,
                               matrix + IntBytes({2, 2}) + three,
                               vector,
                               vector + IntBytes({max}) + three,
                               vector + IntBytes({4}) + three,
                               vector + IntBytes({0x80000000u})};
  CNuMatrix m(1, 1);
  CNuVector v(1);
  for (const std::string& bytes : files) {
    Put(bytes);
    EXPECT_FALSE(m.BinaryRead(Name().c_str())) << bytes;
    EXPECT_FALSE(v.BinaryRead(Name().c_str())) << bytes;
  }
  const std::string missing = Name() + "_missing", folder = std::filesystem::temp_directory_path().string();
  for (const char* name : {missing.c_str(), folder.c_str(), static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(m.BinaryRead(name));
  }
  EXPECT_EQ(m.GetRowSize(), 1);
  EXPECT_EQ(v.GetSize(), 1);
}

#if defined(__linux__)
// A pipe has no length to check the head against: what has come bounds the memory.
TEST_F(BinaryFiles, PipesAreRead) {
  ASSERT_EQ(mkfifo(Name().c_str(), 0600), 0);
  const auto readFromPipe = [this](const std::string& bytes, auto& target) {
    std::thread writer([&] { Put(bytes); });
    const bool read = target.BinaryRead(Name().c_str());
    writer.join();
    return read;
  };
  const std::string doubles(3 * 40000 * 8, '\1');
  CNuMatrix m(1, 1);
  EXPECT_TRUE(readFromPipe(std::string("Matrix\0", 7) + IntBytes({40000, 3}) + doubles, m));
  EXPECT_TRUE(m.GetRowSize() == 40000 && m.GetElement(39999, 2) == m.GetElement(0, 0) && m.GetElement(0, 0) != 0.0);
  CNuVector v(1);
  EXPECT_TRUE(readFromPipe(std::string("Vector\0", 7) + IntBytes({120000}) + doubles, v));
  EXPECT_EQ(v.GetSize(), 120000);
  EXPECT_FALSE(readFromPipe(std::string("Matrix\0", 7) + IntBytes({0x7fffffffu, 0x7fffffffu}) + doubles, m));
  EXPECT_EQ(m.GetRowSize(), 40000);
}
#endif

TEST_F(BinaryFiles, WritingTellsUnopenedFromUnwritable) {
  const std::string nowhere = Name() + "/no/such/folder";
  const std::string folder = std::filesystem::temp_directory_path().string();
  const std::string unopened = "operation 47 Open a Binary file|CNuMatrix [0,0]";
  const std::string unwritable = "operation 48 Read only file.. Unable to write into file|";
  const CNuMatrix m(3, 3);
  EXPECT_EQ(FailureOf([&] { m.BinaryDump(nowhere.c_str()); }), unopened);
  EXPECT_EQ(FailureOf([&] { m.BinaryDump(nullptr); }), unopened);
  EXPECT_EQ(FailureOf([&] { m.BinaryDump(folder.c_str()); }), unwritable + "CNuMatrix [0,0]");
#if defined(__linux__)
  // A device that is always full takes the tag into its buffer and loses it.
  EXPECT_EQ(FailureOf([&] { m.BinaryDump("/dev/full"); }), unwritable + "CNuMatrix [0,0]");
  EXPECT_EQ(FailureOf([] { CNuVector(100000).BinaryDump("/dev/full"); }), unwritable + "CNuVector [0,0]");
#endif
}

}  // namespace
