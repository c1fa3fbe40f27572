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
  m_dir.Write("sub/file", "longer than it was before");
  EXPECT_TRUE(file.Delete(message));
  fs::remove_all(m_dir / "sub");
  fs::create_directory(m_dir / "sub");
  EXPECT_FALSE(sub.Delete(message));
  EXPECT_TRUE(fs::exists(m_dir / "sub"));
}

TEST_F(SwappedFileTest, NoDirectoryIsListedInAnothersPlace) {
  const CTempDirectory elsewhere;
  elsewhere.Write("secret", "x");
  QueryMessage message;
  CVDiagItem& sub = *Listed(message).Children.Get(0);
  fs::rename(m_dir / "sub", m_dir / "was");
  fs::create_directory_symlink(elsewhere.Path(), m_dir / "sub");
  EXPECT_TRUE(sub.Init(true, false, message));
  EXPECT_EQ(sub.Children.Count(), 0u);
}

}  // namespace
}  // namespace kestra
