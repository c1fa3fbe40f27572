#include <gtest/gtest.h>

#include "platform/os/Event.h"
#include "platform/os/Thread.h"

namespace kestra::os {
namespace {

TEST(StartThread, SignalsItsEndAfterWhatItHeldIsGone) {
  struct Held : CCounted<Held> {
    explicit Held(std::atomic<bool>& flag) : isGone(flag) {}
    ~Held() { isGone = true; }
    std::atomic<bool>& isGone;
  };
  for (int round = 0; round < 50; ++round) {
    std::atomic<bool> isGone{false};
    uint32_t id = 0;
    CEvent mayEnd;
    auto held = MakeRef<Held>(isGone);
    const auto thread = StartThread(
        [&, held] {
          id = CurrentThreadId();
          WaitAny({&mayEnd}, kInfinite);
        },
        0);
    ASSERT_TRUE(thread);
    held = nullptr;
    EXPECT_EQ(WaitAny({thread.get()}, 0), kWaitTimeOut);
    mayEnd.Set();
    ASSERT_EQ(WaitAny({thread.get()}, 10000), 0);
    EXPECT_TRUE(isGone);
    thread->Join();
    EXPECT_EQ(thread->Id(), id);
    EXPECT_NE(id, CurrentThreadId());
  }
}

// Uses some stack on each level, and tells how much RemainingStack says it used.
size_t UseStack(int levels, size_t before) {
  volatile char block[1024] = {};
  block[0] = static_cast<char>(levels);
  if (levels > 0) return UseStack(levels - 1, before) + static_cast<size_t>(block[1]);
  return before - RemainingStack();
}

TEST(RemainingStack, FallsWithTheDepth) {
  constexpr size_t kStack = 4 * 1024 * 1024;  // sanitizers take some of it, and the
                                              // system may give more
  size_t atStart = 0;
  size_t used = 0;
  const auto thread = StartThread(
      [&] {
        atStart = RemainingStack();
        used = UseStack(50, atStart);
      },
      kStack);
  ASSERT_TRUE(thread);
  ASSERT_EQ(WaitAny({thread.get()}, 10000), 0);
  thread->Join();
  EXPECT_GT(atStart, kStack / 2);
  EXPECT_GE(used, 50u * 1024);
  EXPECT_LT(used, kStack);
  EXPECT_GT(RemainingStack(), 16u * 1024);
}

}  // namespace
}  // namespace kestra::os
