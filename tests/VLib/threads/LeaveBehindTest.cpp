#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "VLib/src/threads/LeaveBehind.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"

namespace kestra {
namespace {

TEST(CallOrLeave, WaitsForTheCall) {
  os::CEvent termination;
  for (const os::CWaitable* pTermination : {static_cast<const os::CWaitable*>(nullptr),
                                            static_cast<const os::CWaitable*>(&termination)}) {
    int answer = 0;
    std::thread::id callThread;
    EXPECT_TRUE(CallOrLeave(
        [&] {
          answer = 7;
          callThread = std::this_thread::get_id();
        },
        pTermination));
    EXPECT_EQ(answer, 7);
    EXPECT_EQ(callThread == std::this_thread::get_id(), pTermination == nullptr);
  }
}

TEST(CallOrLeave, ThrowsOnWhatTheCallThrows) {
  os::CEvent termination;
  const auto call = [] { throw std::runtime_error("x"); };
  EXPECT_THROW(CallOrLeave(call, &termination), std::runtime_error);
  EXPECT_THROW(CallOrLeave(call, nullptr), std::runtime_error);
}

TEST(CallOrLeave, LeavesTheCallOnTermination) {
  struct Shared {
    os::CEvent mayReturn;
    os::CEvent started;
    std::atomic<bool> isDone{false};
  };
  auto shared = std::make_shared<Shared>();
  const std::weak_ptr<Shared> alive = shared;
  os::CEvent termination;
  std::thread canceller([&] {
    os::WaitAny({&shared->started}, 10'000);
    termination.Set();
  });
  const uint32_t start = os::TickCount();
  EXPECT_FALSE(CallOrLeave(
      [shared] {
        shared->started.Set();
        os::WaitAny({&shared->mayReturn}, 10'000);
        shared->isDone = true;
        throw std::runtime_error("nobody hears it");
      },
      &termination));
  EXPECT_LT(os::TickCount() - start, 5000u);
  canceller.join();
  EXPECT_FALSE(shared->isDone);
  shared->mayReturn.Set();
  for (int i = 0; i < 5000 && !shared->isDone; ++i) os::Sleep(1);
  EXPECT_TRUE(shared->isDone);
  shared.reset();
  for (int i = 0; i < 5000 && !alive.expired(); ++i) os::Sleep(1);
  EXPECT_TRUE(alive.expired());  // what the call owned went with it
}

TEST(CallOrLeave, BeginsNothingAfterTermination) {
  os::CEvent termination;
  termination.Set();
  const os::CBorrowedEvent closed(1'000'000);
  bool isCalled = false;
  EXPECT_FALSE(CallOrLeave([&] { isCalled = true; }, &termination));
  EXPECT_FALSE(CallOrLeave([&] { isCalled = true; }, &closed));
  EXPECT_FALSE(isCalled);
}

}  // namespace
}  // namespace kestra
