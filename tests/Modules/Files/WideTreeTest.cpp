// A real tree with so many directories that several threads fill it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "tests/Modules/Files/FilesFixture.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

namespace fs = std::filesystem;
using test::CTempDirectory;
using test::MakeFiles;

class WideTreeTest : public testing::Test {
 protected:
  static constexpr int kDirectories = 40, kFiles = 50;
  WideTreeTest() {
    for (int d = 0; d < kDirectories; ++d) {
      const std::string name = "d" + std::to_string(d);
      for (int b = 0; b < 10; ++b)
        fs::create_directories(m_dir / (name + "/b" + std::to_string(b)));
      for (int f = 0; f < kFiles; ++f) m_dir.Write(name + "/b3/f" + std::to_string(f), "x");
    }
  }
  // Under Wine and much load it takes longer than the time that a filling has by default.
  Ref<DiagModule> Module(const std::string& more = {}) const {
    return MakeFiles(LiveMachine(),
                     "DirPath='" + m_dir.Path() + "',Levels=9,Timeout=120000" + more);
  }

  const CTempDirectory m_dir;
};

// Paths of files and directories below an item.
void Collect(const CVDiagItem& item, std::vector<std::string>& paths) {
  for (size_t i = 0; i < item.Children.Count(); ++i) {
    CVDiagItem& child = *item.Children.Get(i);
    paths.push_back(child.Params.Find("Path", false)->StringValue);
    Collect(child, paths);
  }
}

TEST_F(WideTreeTest, IsWholeAndInTheSystemsOrder) {
  QueryMessage message;
  const Ref<DiagModule> module = Module();
  ASSERT_TRUE(test::Fill(*module, message));
  const CVDiagItem& top = *module->Children.Get(0);
  std::vector<std::string> order, listed;
  for (size_t i = 0; i < top.Children.Count(); ++i)
    order.push_back(top.Children.Get(i)->Params.Find("Path", false)->StringValue);
  for (const auto& entry : fs::directory_iterator(m_dir.Path()))
    listed.push_back(entry.path().string());
  EXPECT_EQ(order, listed);
  std::vector<std::string> paths, expected;
  Collect(top, paths);
  for (const auto& entry : fs::recursive_directory_iterator(m_dir.Path()))
    expected.push_back(entry.path().string());
  std::sort(paths.begin(), paths.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(paths, expected);
}

// Whatever moment a directory goes at, the rest is there.
TEST_F(WideTreeTest, WhatVanishesMeanwhileIsLeftOut) {
  QueryMessage message;
  const Ref<DiagModule> module = Module();
  CVDiagItem& asItem = *module;
  ASSERT_TRUE(asItem.Init(false, false, message));
  CVDiagItem& top = *module->Children.Get(0);
  ASSERT_TRUE(top.Init(false, false, message));
  fs::remove_all(m_dir / "d7");
  ASSERT_TRUE(top.Init(true, true, message));
  EXPECT_EQ(top.Children.Count(), kDirectories - 1u);
}

}  // namespace
}  // namespace kestra
