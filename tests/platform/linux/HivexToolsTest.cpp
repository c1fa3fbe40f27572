// The same hives, as hivex's own tools show them.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>

#include "platform/image/registry/hive/HiveTree.h"
#include "platform/image/registry/wine/WineText.h"
#include "tests/support/TempDirectory.h"

namespace kestra::image {
namespace {

// By key and value name: "type:data", or "" for the key itself.
using Content = std::map<std::string, std::string>;

std::string OutputOf(const std::string& command) {
  std::string output;
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  char buffer[4096];
  while (const size_t count = pipe ? fread(buffer, 1, sizeof buffer, pipe.get()) : 0) {
    output.append(buffer, count);
  }
  return output;
}

// A line "name"=... or @=..., with the backslashes of the name doubled. Values are written as Wine
// writes them.
void ReadValueLine(const std::string& key, const std::string& line, Content& content) {
  size_t end = 1;
  std::string name;
  uint32_t type = 0;
  std::string data;
  CLineCursor none("");
  ASSERT_TRUE(line[0] == '@' || ReadEscaped(line, end, '"', name)) << line;
  ASSERT_TRUE(ReadWineValue(line.substr(end + 1), none, type, data)) << line;
  content[key + "|" + name] = fmt::format("{:x}:{}", type, data);
}

Content ShownByTool(const std::string& path) {
  const std::string text =
      OutputOf("PERL_UNICODE=S hivexregedit --export '" + path + "' '\\' 2>/dev/null");
  Content content;
  std::string key;
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find('\n', at);
    const std::string line = text.substr(at, end - at);
    at = end + 1;
    if (line.starts_with("[\\")) {
      key = line.substr(2, line.size() - 3);
      content[key] = "";
    } else if (line.starts_with("\"") || line.starts_with("@")) {
      ReadValueLine(key, line, content);
    }
  }
  return content;
}

void Read(const CKeyTree& tree, TreeId key, const std::string& path, Content& content) {
  content[path] = "";
  std::vector<TreeEntry> entries;
  EXPECT_EQ(tree.Values(key, entries), kErrorSuccess);
  for (const TreeEntry& value : entries) {
    uint32_t type = 0;
    std::string data;
    EXPECT_EQ(tree.ReadValue(value.id, type, data), kErrorSuccess);
    content[path + "|" + value.name] = fmt::format("{:x}:{}", type, data);
  }
  EXPECT_EQ(tree.SubKeys(key, entries), kErrorSuccess);
  for (const TreeEntry& each : entries) {
    Read(tree, each.id, path.empty() ? each.name : path + "\\" + each.name, content);
  }
}

TEST(HivexTools, ShowTheSame) {
  const std::string config = KESTRA_MADE_VOLUMES "/wide/Windows/System32/config/";
  for (const std::string& path :
       {config + "SOFTWARE", config + "SYSTEM", config + "SAM",
        std::string(KESTRA_MADE_HIVES "/lists"), std::string(KESTRA_MADE_HIVES "/big_data")}) {
    std::unique_ptr<os::CMemoryFile> file;
    ASSERT_EQ(os::MakeMemoryFile(file), kErrorSuccess);
    ASSERT_EQ(file->Write(test::ReadWholeFile(path)), kErrorSuccess);
    ASSERT_EQ(file->Seal(), kErrorSuccess);
    std::shared_ptr<CKeyTree> tree;
    ASSERT_EQ(OpenHive(
                  std::move(file), [&](HiveFault) { ADD_FAILURE() << path; }, tree),
              kErrorSuccess);
    Content content;
    Read(*tree, tree->Root(), "", content);
    EXPECT_EQ(content, ShownByTool(path)) << path;
  }
}

}  // namespace
}  // namespace kestra::image
