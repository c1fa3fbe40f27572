// Stands in for libFuzzer where there is none: runs a fuzz entry over the files of its corpus, and
// over the small ones cut off at every byte.
//
//   kestra_fuzz_NAME FOLDER-OR-FILE...
//
// What goes wrong is for the sanitizers, or for a crash, to tell. A corpus that is missing or empty
// is a failure, since then nothing was tested.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

constexpr size_t kMostCut = 4096;

bool Replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<uint8_t> content(std::istreambuf_iterator<char>(file), {});
  if (!file) {
    std::cerr << path << ": cannot be read\n";
    return false;
  }
  size_t length = content.size() <= kMostCut ? 0 : content.size();
  for (; length <= content.size(); ++length) {
    // A block of its own for each length, so that a look behind its end is seen.
    const std::vector<uint8_t> part(content.begin(),
                                    content.begin() + static_cast<std::ptrdiff_t>(length));
    LLVMFuzzerTestOneInput(part.data(), part.size());
  }
  return true;
}

std::vector<fs::path> FilesOf(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& path : FilesOf(argv[i])) {
      std::cout << path.filename().string() << std::endl;
      if (!Replay(path)) return 1;
      ++count;
    }
  }
  if (count == 0) std::cerr << "there is nothing to replay\n";
  return count == 0 ? 1 : 0;
}
