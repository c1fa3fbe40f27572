// A directory of plug-ins and a root that reads it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "model/dump/Dump.h"
#include "platform/os/CodeFile.h"
#include "tests/model/TestTree.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {

class PluginTest : public testing::Test {
 protected:
  // Puts a library of libraries/ into the directory, seconds younger than the others.
  void Install(const std::string& library, const std::string& as = {}, int seconds = 0) {
    const std::string name = as.empty() ? library : as;
    const std::string source = std::string(KESTRA_TEST_PLUGINS) + "/" + library;
    std::filesystem::copy_file(source + os::LibraryEnding(), PathOf(name));
    std::filesystem::last_write_time(PathOf(name), m_start + std::chrono::seconds(seconds));
  }
  // Where it lies it may be loaded, so that Windows does not delete it.
  void Remove(const std::string& library) {
    const std::string removed = ".removed" + std::to_string(m_removedCount++);
    std::filesystem::rename(PathOf(library), PathOf(library) + removed);
  }
  std::string PathOf(const std::string& name) const {
    return m_directory / (name + os::LibraryEnding());
  }
  // As a host that starts now; with the modules Keys, Plain, Broken and Last built in.
  Ref<DiagRoot> NewRoot(const char* pModules = "") {
    auto root = MakeRef<DiagRoot>(pModules, TestModuleTable(), LiveMachine());
    EXPECT_TRUE(root->SetPluginsDir(m_directory.Path()));
    return root;
  }
  // Whether the scan finds the module "Faulty".
  bool NamesItsModule() {
    DiagPluginMap map;
    return map.Scan(m_directory.Path(), *LiveMachine()) && map.Find("Faulty");
  }
  // The modules of the class tree: "Keys Plain".
  static std::string Names(DiagRoot& root) {
    std::string names;
    for (const auto& child : root.GetTypeInfo()->ChildClasses()) names += child->Name + " ";
    return names.empty() ? names : names.substr(0, names.size() - 1);
  }
  static std::string DumpOf(CVDiagItem& item) {
    std::string text;
    QueryMessage message;
    Dump(item, text, message, DumpFormat::XmlRaw);
    std::erase(text, '\r');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
  }

  CTempDirectory m_directory;

 private:
  int m_removedCount = 0;
  const std::filesystem::file_time_type m_start = std::filesystem::file_time_type::clock::now();
};

}  // namespace kestra::test
