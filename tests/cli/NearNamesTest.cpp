// Which names are near to one that there is not.
#include <gtest/gtest.h>

#include "cli/NearNames.h"

namespace kestra::cli {
namespace {

TEST(NearNames, Sentences) {
  const std::vector<std::string> names = {"Files",    "Processes", "Process",
                                          "Registry", "Files",     "Straße"};
  const std::pair<std::string, const char*> cases[] = {
      {"fles", "; did you mean Files?"},
      {"Flies", "; did you mean Files?"},
      {"proc", "; did you mean Processes or Process?"},
      {"Proces", "; did you mean Processes or Process?"},
      {"straße", "; did you mean Straße?"},
      {"zebra", ""},
      {"", ""},
      {std::string(100000, 'F'), ""},
      {"Fi\xFFles", "; did you mean Files?"},
  };
  for (const auto& [wanted, expected] : cases)
    EXPECT_EQ(NearNamesSentence(wanted, names), expected) << wanted.substr(0, 20);
}

}  // namespace
}  // namespace kestra::cli
