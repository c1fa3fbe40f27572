// The example queries that the classes declare: they parse, and run on this machine.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Modules/ModuleTable.h"
#include "platform/os/HostEnvironment.h"
#include "query/Evaluate.h"

namespace kestra::test {
namespace {

void Collect(const ClassDecl& decl, std::vector<std::string>& examples) {
  for (const char* pExample : decl.examples) examples.emplace_back(pExample);
  for (const ClassDecl* pChild : decl.children) Collect(*pChild, examples);
}

// Some name files that every Linux has, and Windows has not.
bool NamesFilesOfAnother(const std::string& example) {
  return os::PathSeparator() == '\\' && example.find("'/") != std::string::npos;
}

TEST(Examples, RunOnThisMachine) {
  std::vector<std::string> examples;
  for (const ModuleRow& row : BuiltInModules()) Collect(*row.pClass, examples);
  EXPECT_GT(examples.size(), 1u);
  for (const std::string& example : examples) {
    const auto root = MakeRef<DiagRoot>("*", BuiltInModules(), LiveMachine());
    Value value;
    EvaluateQuery(value, example, root, 0, nullptr);
    EXPECT_TRUE(value.IsUndefined()) << example << ": " << value.asString();
    if (NamesFilesOfAnother(example)) continue;
    // Without the right to change anything an active statement is refused, and that is right; one
    // that finds nothing to change comes to nothing.
    const bool isSelect = example.starts_with("SELECT") || example.starts_with("(SELECT");
    EvaluateQuery(value, example, root, kNoTimeOut, nullptr);
    const bool isHarmless =
        !value.IsError() && value.IsVector() && (isSelect || value.asVector()[0].asLong() == 0);
    EXPECT_TRUE(isHarmless || (value.IsError() && !isSelect))
        << example << ": " << value.asString();
  }
}

}  // namespace
}  // namespace kestra::test
