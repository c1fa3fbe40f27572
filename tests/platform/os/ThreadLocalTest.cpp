#include <gtest/gtest.h>

#include <thread>

#include "platform/os/ThreadLocal.h"

namespace kestra::os {
namespace {

std::atomic<int> s_living{0};

struct Counted {
  Counted() { ++s_living; }
  ~Counted() {
    --s_living;
    mark = 0;
  }
  int mark = 4711;
};

TEST(CThreadLocal, IsEachThreadsOwnUntilItEnds) {
  CThreadLocal<Counted> first;
  CThreadLocal<Counted> second;
  first.Get().mark = 1;
  EXPECT_EQ(second.Get().mark, 4711);
  const int before = s_living;
  for (int i = 0; i < 20; ++i) {
    std::thread([&] {
      EXPECT_EQ(first.Get().mark, 4711);
      first.Get().mark = 2;
      EXPECT_EQ(first.Get().mark, 2);
      EXPECT_EQ(s_living, before + 1);
    }).join();
    EXPECT_EQ(s_living, before);
  }
  EXPECT_EQ(first.Get().mark, 1);
}

}  // namespace
}  // namespace kestra::os
