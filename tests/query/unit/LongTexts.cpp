#include "tests/query/unit/LongTexts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "platform/os/Thread.h"
#include "query/Evaluate.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

constexpr size_t kSmallStack = 512 * 1024;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr uint32_t kLimitMs = 200000;
#else
constexpr uint32_t kLimitMs = 20000;
#endif

// The most memory that this process had at once, in KiB; nothing where the system does not say.
std::string PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) != 0) continue;
    const size_t begin = line.find_first_of("0123456789");
    return line.substr(begin, line.find(' ', begin) - begin);
  }
  return {};
}

}  // namespace

std::string RunOnSmallStack(const std::string& text) {
  std::string result;
  const auto start = std::chrono::steady_clock::now();
  const auto thread = os::StartThread(
      [&] {
        const auto root =
            MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>()));
        Value value;
        EvaluateQuery(value, text, root, kNoTimeOut, nullptr);
        const size_t count = value.asVector().Count();
        if (!value.IsVector()) {
          result = value.asString();
        } else {
          result =
              count == 1 ? value.asVector()[0].asString() : std::to_string(count) + " elements";
        }
      },
      kSmallStack);
  if (os::WaitAny({thread.get()}, kLimitMs) != 0) {
    // The thread still writes to this frame, so there is nothing to return to.
    fprintf(stderr, "no end within %u ms: %.200s\n", kLimitMs, text.c_str());
    std::abort();
  }
  thread->Join();
  const auto end = std::chrono::steady_clock::now();
  testing::Test::RecordProperty("outcome", result.substr(0, 60));
  testing::Test::RecordProperty(
      "milliseconds",
      std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(end - start).count()));
  testing::Test::RecordProperty("peakKiB", PeakMemory());
  return result;
}

std::string Repeat(const std::string& piece, size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  while (count-- > 0) text += piece;
  return text;
}

// first, then the further piece so often.
std::string Chain(const std::string& first, const std::string& further, size_t count) {
  return first + Repeat(further, count);
}

std::string Nest(const std::string& open, const std::string& core, const std::string& close,
                 size_t depth) {
  return Repeat(open, depth) + core + Repeat(close, depth);
}

}  // namespace kestra::test
