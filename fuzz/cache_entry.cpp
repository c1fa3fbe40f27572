// The directory of the result cache. The first byte says what the rest is: the index, a whole
// entry, or the dump of an entry whose head line is right.
#include <fmt/format.h>

#include <cstdint>
#include <string>

#include "VLib/src/data/Checksum.h"
#include "fuzz/support/Require.h"
#include "model/cache/ResultCache.h"
#include "model/cache/SameContent.h"
#include "model/root/Root.h"
#include "platform/os/Clock.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace {

using namespace kestra;

constexpr char kDirectory[] = "/cache";
constexpr char kEntryPath[] = "/cache/Test_0.cfg";
constexpr int32_t kTimeToLive = 60;

// What an entry holds can be held by it, and comes back the same.
void ReadWriteAndReadAgain(ResultCache& cache, DiagRoot& root, QueryMessage& message) {
  ResultCache::Entry entry{.path = kEntryPath, .key = "key"};
  const Ref<DiagModule> module = root.GetDiagModule("Test", "");
  const Ref<DiagModule> copy = root.GetDiagModule("Test", "First=2");
  if (!cache.ReadEntry(entry, kTimeToLive, *module, message)) return;
  if (!cache.WriteEntry(entry, *module, message)) return;  // a line end in a value, say
  fuzz::Require(cache.ReadEntry(entry, kTimeToLive, *copy, message));
  fuzz::Require(IsSameContent(*module, *copy, message));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto machine = MakeRef<test::CFakeMachine>(SystemFamily::Linux);
  machine->files.now = os::SystemTimeAsFileTime();
  const bool isIndex = data[0] % 3 == 0;
  if (data[0] % 3 == 2) {
    const uint32_t checksum = Checksum(bytes, Checksum("key"));
    bytes.insert(0, fmt::format("; kestra {} {:08x}\r\n", bytes.size(), checksum));
  }
  machine->files.Add(isIndex ? "/cache/CACHE.CFG" : kEntryPath,
                     {.lastWriteTime = machine->files.now, .content = bytes});
  const auto root = MakeRef<DiagRoot>("*", test::ModulesWithTests(), Ref<CMachine>(machine));
  ResultCache cache{Ref<CMachine>(machine)};
  fuzz::Require(cache.Open(kDirectory));
  QueryMessage message;
  if (!isIndex) {
    ReadWriteAndReadAgain(cache, *root, message);
    return 0;
  }
  ResultCache::Entry entry;
  const Ref<DiagModule> module = root->GetDiagModule("Test", "");
  const auto found = [&] { return cache.FindEntry(*module, "code", true, message, entry); };
  if (!found()) return 0;
  const std::string path = entry.path;
  fuzz::Require(found() && entry.path == path);
  cache.ClearEntries("Test", module->Args.get(), message);
  cache.ClearEntries("*", nullptr, message);
  return 0;
}
