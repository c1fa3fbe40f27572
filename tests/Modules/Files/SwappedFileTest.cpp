// Between a look at a real tree and what is done after it, somebody else changes the tree.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/Modules/Files/FilesFixture.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

namespace fs = std::filesystem;
using test::CTempDirectory;
using test::MakeFiles;

class SwappedFileTest : public testing::Test {
 protected:
  SwappedFileTest() {
    fs::create_directories(m_dir / "sub");
    m_dir.Write("sub/file", "listed");
  }
  // The module's directory item, with what is below it listed and not filled.
  CVDiagItem& Listed(QueryMessage& message) {
    m_module = MakeFiles(LiveMachine(), "DirPath='" + m_dir.Path() + "',Levels=9");
    CVDiagItem& module = *m_module;
    EXPECT_TRUE(module.Init(false, false, message));
    CVDiagItem& top = *module.Children.Get(0);
    EXPECT_TRUE(top.Init(false, false, message));
    return top;
  }

  FileTime TimeOfCreation(const char* pName) const {
    FileInfo info;
    EXPECT_EQ(LiveMachine()->Files()->Info(m_dir / pName, info), kErrorSuccess);
    return info.creationTime;
  }

  const CTempDirectory m_dir;
  Ref<DiagModule> m_module;
};

TEST_F(SwappedFileTest, WhatWasListedIsWhatIsChanged) {
  QueryMessage message;
  message.AllowActive = true;
  CVDiagItem& sub = *Listed(message).Children.Get(0);
  ASSERT_TRUE(sub.Init(true, false, message));
  CVDiagItem& file = *sub.Children.Get(0);
  // As an editor saves, or a rotation of logs.
  m_dir.Write("new", "of somebody else");
  fs::rename(m_dir / "new", m_dir / "sub/file");
  EXPECT_FALSE(file.Delete(message));
  EXPECT_EQ(message.SystemError, kErrorFileNotFound);
  DiagParams params{Ref<const DiagParamDefs>(file.GetTypeInfo()->Params)};
  params.SetText("FileName", "other");
  EXPECT_FALSE(file.Update(params, message));
  EXPECT_EQ(test::ReadWholeFile(m_dir / "sub/file"), "of somebody else");
  EXPECT_FALSE(fs::exists(m_dir / "other"));
  // A new content of the same file changes nothing about which one it is.
  ASSERT_TRUE(file.Init(true, true, message));
  const FileTime made = TimeOfCreation("sub/file");
  m_dir.Write("sub/file", "longer than it was before");
  // Wine makes that time out of the others, so that it takes the file for another one.
  const bool isTimeKept = TimeOfCreation("sub/file") == made;
  EXPECT_EQ(file.Delete(message), isTimeKept);
  fs::remove_all(m_dir / "sub");
  fs::create_directory(m_dir / "sub");
  EXPECT_FALSE(sub.Delete(message));
  EXPECT_TRUE(fs::exists(m_dir / "sub"));
}

TEST_F(SwappedFileTest, NoDirectoryIsListedInAnothersPlace) {
  const CTempDirectory elsewhere;
  fs::create_directory(elsewhere / "other");
  elsewhere.Write("other/secret", "x");
  QueryMessage message;
  CVDiagItem& sub = *Listed(message).Children.Get(0);
  fs::rename(m_dir / "sub", m_dir / "was");
  // Where nobody may make a link, the other directory comes itself.
  std::error_code error;
  fs::create_directory_symlink(elsewhere / "other", m_dir / "sub", error);
  if (error) fs::rename(elsewhere / "other", m_dir / "sub");
  EXPECT_TRUE(sub.Init(true, false, message));
  EXPECT_EQ(sub.Children.Count(), 0u);
}

}  // namespace
}  // namespace kestra
