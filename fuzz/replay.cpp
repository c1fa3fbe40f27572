// Stands in for libFuzzer where there is none: runs a fuzz entry over the files of its corpus.
//
//   kestra_fuzz_NAME FOLDER-OR-FILE...            each file, and the small ones cut off at every
//   byte kestra_fuzz_NAME --memory FOLDER-OR-FILE...   each small file, with the n-th allocation
//   failing,
//                                                 for every n, alone and with all that follow
//
// What goes wrong is for the sanitizers, or for a crash, to tell. A corpus that is missing or empty
// is a failure, since then nothing was tested.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <new>
#include <string_view>
#include <vector>

#include "fuzz/support/Require.h"
#include "tests/support/FailingMemory.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;
using kestra::test::CFailingMemory;
using kestra::test::MemoryFault;

constexpr size_t kMostCut = 4096;
constexpr size_t kMostShortOfMemory = 32768;

CFailingMemory* g_pMemory = nullptr;  // while memory may run out

struct MemoryRanOut {};

using Bytes = std::vector<uint8_t>;

void ReplayCutOff(const Bytes& content) {
  size_t length = content.size() <= kMostCut ? 0 : content.size();
  for (; length <= content.size(); ++length) {
    // A block of its own for each length, so that a look behind its end is seen.
    const Bytes part(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(length));
    LLVMFuzzerTestOneInput(part.data(), part.size());
  }
}

// Whether there was an n-th allocation.
bool RunShortOfMemory(const Bytes& content, uint64_t n, MemoryFault fault) {
  CFailingMemory memory(n, fault);
  g_pMemory = &memory;
  try {
    LLVMFuzzerTestOneInput(content.data(), content.size());
  } catch (const std::bad_alloc&) {
  } catch (const MemoryRanOut&) {
  }
  g_pMemory = nullptr;
  return memory.HasFailed();
}

bool ReplayShortOfMemory(const Bytes& content) {
  if (content.size() > kMostShortOfMemory) return true;
  LLVMFuzzerTestOneInput(content.data(), content.size());
  for (const MemoryFault fault : {MemoryFault::Once, MemoryFault::FromThen}) {
    bool hasFailed = true;
    uint64_t n = 1;
    for (; hasFailed; ++n) {
      const auto leavesSomething = [&] {
        const int64_t before = kestra::test::OutstandingBlocks();
        hasFailed = RunShortOfMemory(content, n, fault);
        return kestra::test::OutstandingBlocks() > before;
      };
      // What is made once and kept may be made on the way of an error, and what was learned may be
      // forgotten; what leaks does so each time.
      if (!leavesSomething() || !leavesSomething() || !leavesSomething()) continue;
      std::cerr << "blocks are left when allocation " << n << " fails\n";
      return false;
    }
    if (fault == MemoryFault::Once) std::cout << "  " << n - 2 << " allocations" << std::endl;
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

bool Replay(const fs::path& path, bool isShortOfMemory) {
  std::ifstream file(path, std::ios::binary);
  const Bytes content(std::istreambuf_iterator<char>(file), {});
  if (!file) {
    std::cerr << path << ": cannot be read\n";
    return false;
  }
  if (isShortOfMemory) return ReplayShortOfMemory(content);
  ReplayCutOff(content);
  return true;
}

}  // namespace

void kestra::fuzz::Require(bool holds) {
  if (holds) return;
  if (g_pMemory && g_pMemory->HasFailed()) throw MemoryRanOut();
  std::cerr << "what must hold does not\n";
  abort();
}

int main(int argc, char** argv) {
  size_t count = 0;
  const bool isShortOfMemory = argc > 1 && std::string_view(argv[1]) == "--memory";
  for (int i = isShortOfMemory ? 2 : 1; i < argc; ++i) {
    for (const fs::path& path : FilesOf(argv[i])) {
      std::cout << path.filename().string() << std::endl;
      if (!Replay(path, isShortOfMemory)) return 1;
      ++count;
    }
  }
  if (count == 0) std::cerr << "there is nothing to replay\n";
  return count == 0 ? 1 : 0;
}
