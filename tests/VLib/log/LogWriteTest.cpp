#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/VLib/log/LogTestHost.h"

namespace kestra {
namespace {

using namespace test;

size_t CountOf(const std::string& content, const std::string& what) {
  size_t count = 0;
  for (size_t at = content.find(what); at != std::string::npos; at = content.find(what, at + 1))
    ++count;
  return count;
}

// What stands behind the last heading of a file.
std::string LastEntry(const std::string& content) {
  const size_t heading = content.rfind("\t\r\n");
  return heading == std::string::npos ? "" : content.substr(heading + 3);
}

class LogWriteTest : public testing::Test {
 protected:
  void SetUp() override { m_log.Open(m_directory.Path(), "n"); }
  std::string Content() const { return ReadWholeFile(m_directory / "n.log"); }

  CTempDirectory m_directory;
  CVLog m_log{"", false, MakeLogHost({})};
};

TEST_F(LogWriteTest, WritesErrorsOnlyByDefault) {
  const std::string before = Content();
  m_log.Warning("w");
  m_log.Info("i");
  m_log.Success("s");
  EXPECT_EQ(Content(), before);
  m_log.ErrorsOnly = false;
  m_log.Warning("w");
  m_log.Info("i");
  m_log.Success("s");
  for (const char* label : {"\r\n\r\nWARNING\t", "\r\n\r\nINFO\t", "\r\n\r\nSUCCESS\t"})
    EXPECT_EQ(CountOf(Content(), label), 1u) << label;
}

TEST_F(LogWriteTest, ALevelThatIsNoneWritesNothing) {
  m_log.ErrorsOnly = false;
  const std::string before = Content();
  m_log.Log(4, "x", nullptr);
  m_log.Log(4294967295u, "x", nullptr);
  EXPECT_EQ(Content(), before);
}

TEST_F(LogWriteTest, Texts) {
  m_log.ErrorText("100% %s %n\r\n");
  EXPECT_EQ(LastEntry(Content()), "100% %s %n\r\r\n");  // LF becomes CR LF, CR stays
  m_log.Log(3, "%d", nullptr);
  EXPECT_EQ(LastEntry(Content()), "%d");
  m_log.Log(3, nullptr, nullptr);
  EXPECT_EQ(LastEntry(Content()), "");
  m_log.Error("%s|%5.2f|%c", "text", 1.5, 'x');
  EXPECT_EQ(LastEntry(Content()), "text| 1.50|x");
  const std::string longText(100'000, 'y');
  m_log.Error("%s", longText.c_str());
  EXPECT_EQ(LastEntry(Content()), longText);
}

TEST_F(LogWriteTest, WideStringsUnderTheirOwnFormat) {
  // The compiler knows no "%b", so it must not see the format.
  const auto write = [this](const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    m_log.Log(3, format, &arguments);
    va_end(arguments);
  };
  write("[%b] and [%b]", L"wide", L"text");
  EXPECT_EQ(LastEntry(Content()), "[wide] and [text]");
}

TEST_F(LogWriteTest, RollsOverBeforeTheEntryThatFindsItFull) {
  m_log.MaxSize = 1;
  m_log.ErrorText(std::string(1024, 'a'));
  EXPECT_EQ(CountOf(Content(), "START\t"), 1u);
  EXPECT_GT(Content().size(), 1024u);  // an entry may carry the file past the limit
  m_log.Error("after");
  const std::string content = Content();
  EXPECT_EQ(content.find(SettingsBlock("1", "1", "0") + "\r\n\r\nERROR\t"), 0u);
  EXPECT_EQ(LastEntry(content), "after");
  EXPECT_EQ(CountOf(content, "START\t"), 0u);
}

TEST_F(LogWriteTest, NoLimit) {
  m_log.MaxSize = 0;
  for (int i = 0; i < 20; ++i) m_log.ErrorText(std::string(10'000, 'a'));
  EXPECT_GT(Content().size(), 200'000u);
  EXPECT_EQ(CountOf(Content(), "START\t"), 1u);
}

TEST_F(LogWriteTest, ManyThreads) {
  m_log.MaxSize = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this] {
      for (int i = 0; i < 100; ++i) m_log.Error("<%s>", "entry") << "+";
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(CountOf(Content(), "<entry>"), 400u);
  EXPECT_EQ(CountOf(Content(), "+"), 400u);
}

TEST_F(LogWriteTest, ManyThreadsRollingOver) {
  m_log.MaxSize = 2;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this] {
      for (int i = 0; i < 200; ++i) m_log.Error("%d", i);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_LT(Content().size(), 8192u);
}

// A disk that has room for so many bytes.
class CFullDiskFile final : public os::CHostFile {
 public:
  CFullDiskFile(size_t room, std::string& content) : m_room(room), m_content(content) {}
  SystemError Write(std::string_view data, size_t& written) override {
    written = std::min(data.size(), m_room - std::min(m_room, m_content.size()));
    m_content.append(data.substr(0, written));
    return written == data.size() ? kErrorSuccess : kErrorDiskFull;
  }
  SystemError Seek(uint64_t) override { return kErrorGenFailure; }
  SystemError SetEnd(uint64_t) override { return kErrorDiskFull; }
  SystemError Size(uint64_t&) override { return kErrorGenFailure; }

 private:
  size_t m_room;
  std::string& m_content;
};

TEST(CVLog, AFullDiskLosesEntriesQuietly) {
  const CTempDirectory directory;
  std::string content;
  LogHost host = MakeLogHost({});
  host.openExclusive = [&](const std::string&, std::unique_ptr<os::CHostFile>& file) {
    file = std::make_unique<CFullDiskFile>(150, content);
    return kErrorSuccess;
  };
  CVLog log("", false, host);
  log.Open(directory.Path(), "n");
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(log.Error("lost").IsOpen());
  EXPECT_EQ(log.Error("lost").Size(), 150u);  // what reached the disk
  EXPECT_EQ(content.size(), 150u);
}

TEST(CVLog, ClosedDropsEverything) {
  const CTempDirectory directory;
  CVLog log("", false, MakeLogHost({}));
  log.Error("before");
  log.Open(directory.Path(), "n");
  log.Close();
  const std::string content = ReadWholeFile(directory / "n.log");
  log.Error("after") << "too";
  log.Close();
  EXPECT_EQ(ReadWholeFile(directory / "n.log"), content);
  EXPECT_EQ(CountOf(content, "FINISH\t"), 1u);
}

}  // namespace
}  // namespace kestra
