// The library with a version resource and strings that is built for the tests.
#pragma once

#include <filesystem>
#include <string>

namespace kestra::test {

// Its full path, as Windows writes it.
inline std::string CommentedLibrary() {
  return std::filesystem::absolute(KESTRA_COMMENTED_LIBRARY).make_preferred().string();
}

}  // namespace kestra::test
