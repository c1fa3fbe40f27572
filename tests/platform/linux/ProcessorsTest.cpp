#include <gtest/gtest.h>
#include <sched.h>

#include <thread>

#include "platform/os/Thread.h"

namespace kestra::os {
namespace {

TEST(OnlineProcessors, AreTheMachinesAndNotTheThreads) {
  const uint32_t all = OnlineProcessors();
  EXPECT_GE(all, std::thread::hardware_concurrency());
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
  std::thread([&] {
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(OnlineProcessors(), all);
  }).join();
}

}  // namespace
}  // namespace kestra::os
