// What only this system can do to a wait.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <thread>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"

namespace kestra::os {
namespace {

TEST(WaitAny, SignalsDoNotShortenOrLengthenAWait) {
  struct sigaction action {};
  struct sigaction former {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, &former);  // without SA_RESTART
  CEvent stop;
  const pthread_t waiter = pthread_self();
  std::thread sender([&] {
    while (WaitAny({&stop}, 5) == kWaitTimeOut) pthread_kill(waiter, SIGUSR1);
  });
  CEvent never;
  const uint32_t start = TickCount();
  EXPECT_EQ(WaitAny({&never}, 150), kWaitTimeOut);
  const uint32_t taken = TickCount() - start;
  stop.Set();
  sender.join();
  sigaction(SIGUSR1, &former, nullptr);
  EXPECT_GE(taken, 149u);
  EXPECT_LT(taken, 5000u);
}

TEST(WaitAny, FailsOnADescriptorThatIsClosed) {
  const CBorrowedEvent closed(1'000'000);
  CEvent set;
  EXPECT_EQ(WaitAny({&closed}, kInfinite), kWaitFailed);
  EXPECT_EQ(WaitAny({&closed, &set}, 1000), kWaitFailed);
  set.Set();
  EXPECT_EQ(WaitAny({&closed, &set}, kInfinite), 1);
}

TEST(WaitAny, ABorrowedDescriptorIsNeverRead) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const CBorrowedEvent event(ends[0]);
  EXPECT_EQ(WaitAny({&event}, 0), kWaitTimeOut);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  EXPECT_EQ(WaitAny({&event}, 0), 0);
  EXPECT_EQ(WaitAny({&event}, 0), 0);
  const CBorrowedEvent noDescriptor((NativeHandle{1} << 32) + ends[0]);
  EXPECT_EQ(WaitAny({&noDescriptor}, 0), kWaitTimeOut);
  char byte = 0;
  EXPECT_EQ(read(ends[0], &byte, 1), 1);
  close(ends[1]);
  EXPECT_EQ(WaitAny({&event}, 0), 0);  // the host that could have set it is gone
  close(ends[0]);
}

}  // namespace
}  // namespace kestra::os
